#include "workbench/ports/gpib_adapter.h"

#include <array>
#include <chrono>
#include <utility>

#include "workbench/text.h"

namespace workbench {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr char kEscape = '\x1b';
// For so long the adapter waits for the next byte of the instrument before it gives up one "++read"; it does
// not say so, and is asked again a little later.
constexpr milliseconds kReadTimeout{500};
constexpr milliseconds kReadMargin{250};

class AdapterLink final : public Link {
 public:
  AdapterLink(std::unique_ptr<Link> stream, int address)
      : stream_(std::move(stream)),
        peer_("GPIB address " + std::to_string(address) + " behind " + std::string(stream_->Peer())) {}

  std::string_view Peer() const override { return peer_; }
  std::string Fault() const override { return fault_.empty() ? stream_->Fault() : fault_; }
  void Release(const Deadline& deadline) override { Command("++loc\n", deadline); }

  Attempt Send(std::string_view rest) override {
    if (outgoing_.empty()) AppendAdapterText(outgoing_, rest);
    asked_ = false;
    const Attempt attempt = Flush();
    // The adapter takes a text as a whole or not at all.
    return attempt.outcome == Attempt::Outcome::kDone ? Attempt{Attempt::Outcome::kDone, rest.size(), false}
                                                      : attempt;
  }

  Attempt Receive(std::span<char> into) override {
    if (!asked_ || steady_clock::now() - asked_at_ > kReadTimeout + kReadMargin) {
      if (outgoing_.empty()) outgoing_ = "++read eoi\n";
      if (const Attempt attempt = Flush(); attempt.outcome != Attempt::Outcome::kDone) return attempt;
      asked_ = true;
      asked_at_ = steady_clock::now();
    }
    const Attempt attempt = stream_->Receive(into);
    if (attempt.outcome == Attempt::Outcome::kDone) asked_at_ = steady_clock::now();
    return attempt;
  }

  Cleared Clear(const Deadline& deadline, double) override {
    outgoing_.clear();
    fault_.clear();
    // A "++read" that is still going on may bring a late reply until the adapter gives it up.
    if (asked_) Discard();
    while (asked_ && steady_clock::now() - asked_at_ < kReadTimeout + kReadMargin) {
      if (deadline.Expired() || deadline.Interrupted()) {
        fault_ = "the adapter is still reading for the transfer before";
        return Cleared::kBusy;
      }
      Discard();
    }
    if (!Command("++clr\n", deadline)) return Cleared::kFailed;
    asked_ = false;
    return Cleared::kClean;
  }

  Attempt DropArrived() override { return stream_->DropArrived(); }

  /// Sends a command to the adapter itself.
  bool Command(std::string_view text, const Deadline& deadline) {
    outgoing_.assign(text);
    while (!outgoing_.empty()) {
      const Attempt attempt = Flush();
      if (attempt.outcome == Attempt::Outcome::kDone) return true;
      if (attempt.outcome != Attempt::Outcome::kNothingYet) {
        fault_ = "the adapter is gone: " + stream_->Fault();
        return false;
      }
      if (deadline.Expired() || deadline.Interrupted()) {
        fault_ = "the adapter took no command within " + SecondsText(deadline.Seconds());
        return false;
      }
    }
    return true;
  }

 private:
  Attempt Flush() {
    while (!outgoing_.empty()) {
      const Attempt attempt = stream_->Send(outgoing_);
      outgoing_.erase(0, attempt.bytes);
      if (attempt.outcome != Attempt::Outcome::kDone) return attempt;
    }
    return {Attempt::Outcome::kDone, 0, false};
  }

  /// Receives and forgets for a slice. After a part of a reply the adapter goes on reading.
  void Discard() {
    std::array<char, 4096> arrived;
    const std::size_t bytes = stream_->Receive(arrived).bytes;
    if (bytes > 0 && !EndsLine(arrived[bytes - 1])) asked_at_ = steady_clock::now();
  }

  std::unique_ptr<Link> stream_;
  std::string peer_;
  std::string outgoing_;
  std::string fault_;
  bool asked_ = false;  // a "++read" was sent for the reply that is awaited
  steady_clock::time_point asked_at_;
};

}  // namespace

void AppendAdapterText(std::string& out, std::string_view text) {
  if (text.ends_with('\n')) text.remove_suffix(1);
  for (const char c : text) {
    if (c == '\r' || c == '\n' || c == kEscape || c == '+') out += kEscape;
    out += c;
  }
  out += '\n';
}

std::unique_ptr<Link> OpenGpibAdapter(std::unique_ptr<Link> stream, int address, const Deadline& deadline,
                                      std::string& why) {
  auto link = std::make_unique<AdapterLink>(std::move(stream), address);
  // In charge of the bus, replies only when asked for, LF and EOI after each text; nothing of it is stored in
  // the adapter for good.
  const std::string commands =
      "++savecfg 0\n++mode 1\n++auto 0\n++ifc\n++eoi 1\n++eos 2\n++eot_enable 0\n"
      "++read_tmo_ms " +
      std::to_string(kReadTimeout.count()) + "\n++addr " + std::to_string(address) + "\n";
  if (!link->Command(commands, deadline)) {
    why = link->Fault();
    return nullptr;
  }
  return link;
}

}  // namespace workbench
