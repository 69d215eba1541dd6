#include "workbench/ports/front_panel_port.h"

#include <algorithm>
#include <cstring>
#include <thread>
#include <utility>

namespace workbench {
namespace {

class EmbeddedLink final : public Link {
 public:
  EmbeddedLink(EmbeddedInstrument instrument, std::string peer)
      : instrument_(std::move(instrument)), peer_(std::move(peer)) {}

  std::string_view Peer() const override { return peer_; }
  std::string Fault() const override { return fault_; }

  Attempt Send(std::string_view rest) override {
    std::string_view line = rest;
    if (line.ends_with('\n')) line.remove_suffix(1);
    try {
      std::optional<std::string> answer = instrument_(line);
      reply_ = std::move(answer).value_or(std::string());
    } catch (const std::exception& error) {
      fault_ = error.what();
      return {Attempt::Outcome::kLost, 0, false};
    }
    read_ = 0;
    return {Attempt::Outcome::kDone, rest.size(), false};
  }

  Attempt Receive(std::span<char> into) override {
    const std::size_t bytes = std::min(into.size(), reply_.size() - read_);
    if (bytes == 0) {
      std::this_thread::sleep_for(kSlice);
      return {};
    }
    std::memcpy(into.data(), reply_.data() + read_, bytes);
    read_ += bytes;
    return {Attempt::Outcome::kDone, bytes, read_ == reply_.size()};
  }

  Cleared Clear(const Deadline&, double) override {
    DropArrived();
    return Cleared::kClean;
  }
  bool DropArrived() override {
    reply_.clear();
    read_ = 0;
    return true;
  }

 private:
  EmbeddedInstrument instrument_;
  std::string peer_;
  std::string reply_;
  std::size_t read_ = 0;
  std::string fault_;
};

}  // namespace

FrontPanelPort::FrontPanelPort(std::shared_ptr<Services> services, InstrumentSource source)
    : Port(std::move(services), "QPort.clsGUI", "GUI"), source_(std::move(source)) {
  AddPlain("Instrument", std::string("SIM"), "Name of the embedded instrument");
}

std::unique_ptr<Link> FrontPanelPort::Open(const Deadline&) {
  const std::string name = TextOf("Instrument");
  auto instrument = source_(name);
  if (!instrument) NotOpened("the front panel " + name, "there is no instrument of that name");
  return std::make_unique<EmbeddedLink>(std::move(instrument), "the front panel of " + name);
}

}  // namespace workbench
