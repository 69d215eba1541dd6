// What arrives at a port: reply lines, blocks, late and doubled replies, adapters. Nothing of it may do more
// than fail the transfer. The first byte is the size of the pieces that arrive.
#include "workbench/ports/port.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <utility>

#include "host/automation_error.h"
#include "tests/fuzz/input.h"
#include "workbench/ports/gpib_adapter.h"
#include "workbench/services.h"

namespace {

constexpr std::string_view kGreeting = "Adapter 1.0\r\nAdapter 1.0\r\n";

/// Delivers the input in pieces, silent for a moment after the greeting; then the other end closes.
class InputLink final : public workbench::Link {
 public:
  InputLink(std::string_view& input, std::size_t piece, std::size_t greeting = 0)
      : input_(input), piece_(piece), greeting_(greeting) {}

  std::string_view Peer() const override { return "input"; }
  workbench::Attempt Send(std::string_view rest) override {
    return {workbench::Attempt::Outcome::kDone, rest.size(), false};
  }
  workbench::Attempt Receive(std::span<char> into) override {
    if (greeting_ > 0 && greeting_ == given_) {
      greeting_ = 0;
      return {};
    }
    if (input_.empty()) return {workbench::Attempt::Outcome::kClosed, 0, false};
    std::size_t size = std::min({piece_, into.size(), input_.size()});
    if (greeting_ > 0) size = std::min(size, greeting_ - given_);
    given_ += size;
    std::copy_n(input_.begin(), size, into.begin());
    const bool end = input_.substr(0, size).back() == '\x04';
    input_.remove_prefix(size);
    return {workbench::Attempt::Outcome::kDone, size, end};
  }
  std::string Fault() const override { return "fault"; }
  Cleared Clear(const workbench::Deadline&, double) override { return Cleared::kClean; }
  workbench::Attempt DropArrived() override {
    char dropped[16];
    const workbench::Attempt attempt = Receive(dropped);
    return attempt.outcome == workbench::Attempt::Outcome::kDone ? workbench::Attempt{} : attempt;
  }

 private:
  std::string_view& input_;
  std::size_t piece_;
  std::size_t greeting_;
  std::size_t given_ = 0;
};

class InputPort final : public workbench::Port {
 public:
  InputPort(std::shared_ptr<workbench::Services> services, std::string_view input, std::size_t piece)
      : Port(std::move(services), "QPort.clsInput", "Input"), input_(input), piece_(piece) {}

 protected:
  std::unique_ptr<workbench::Link> Open(const workbench::Deadline&) override {
    return std::make_unique<InputLink>(input_, piece_);
  }

 private:
  std::string_view input_;
  std::size_t piece_;
};

template <class Transfer>
bool Done(const Transfer& transfer) {
  try {
    transfer();
    return true;
  } catch (const host::AutomationError& error) {
    fuzz::Require(error.Code() >= host::kLinkNotOpen && error.Code() <= host::kLinkBusy,
                  "a link error has its number");
    return false;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const auto services = std::make_shared<workbench::Services>(workbench::Runtime::Clock::kVirtual);
  std::string_view input = fuzz::Text(data + 1, size - 1);
  const std::size_t piece = data[0] % 16U + 1;

  InputPort port(services, input, piece);
  port.OnLine(true);
  for (int round = 0; round < 4 && port.OnLine(); ++round) {
    Done([&] {
      const std::string reply = port.Query("QUERY?");
      fuzz::Require(reply.find('\n') == std::string::npos, "a reply line holds no line feed");
    });
    if (Done([&] { port.ReadBlock(1, "BLOCK?"); })) {
      Done([&] { fuzz::Require(port.ReadBlock(7, std::nullopt).size() == 7, "a block has the asked size"); });
    }
  }

  // Behind an adapter, once that may say anything, and once after it has said who it is.
  for (const std::string_view greeting : {std::string_view(), kGreeting}) {
    const std::string answers = std::string(greeting) + std::string(input);
    std::string_view rest = answers;
    const workbench::Deadline deadline(0.01, services->runtime);
    std::string why;
    const auto adapter = workbench::OpenGpibAdapter(std::make_unique<InputLink>(rest, piece, greeting.size()),
                                                    6, deadline, why);
    fuzz::Require((adapter == nullptr) == !why.empty(), "a link that did not open says why");
    for (int round = 0; adapter && round < 4; ++round) {
      std::array<char, 64> into{};
      adapter->Send("QUERY?\n");
      for (int i = 0; i < 8; ++i) {
        const workbench::Attempt attempt = adapter->Receive(into);
        fuzz::Require(attempt.bytes <= into.size(), "no more is delivered than there is room for");
      }
      if (round == 2) adapter->Clear(workbench::Deadline(0, services->runtime), 0);
    }
  }
  std::string passed_on;
  workbench::AppendAdapterText(passed_on, input);
  fuzz::Require(passed_on.ends_with('\n'), "a text for an adapter ends with a line feed");
  return 0;
}
