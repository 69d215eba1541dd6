#include "workbench/ports/gpib_adapter.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "workbench/text.h"

namespace workbench {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr char kEscape = '\x1b';
// For so long the adapter waits for the next byte of the instrument before it gives up one "++read".
constexpr milliseconds kReadTimeout{500};
// An adapter that gives up sooner is not asked more often than this.
constexpr milliseconds kReadPause{100};
// After so much silence the mark of a read is taken for lost, and the adapter for one that must be opened
// anew.
constexpr milliseconds kLost = 2 * kReadTimeout;
// A serial adapter may restart when its line is opened, and is spoken to again after this.
constexpr milliseconds kIntroduction{1000};

/// The adapter obeys in order, so that its answer to "++ver", sent along with each "++read", marks the place
/// up to which all that comes belongs to that read.
class AdapterLink final : public Link {
 public:
  AdapterLink(std::unique_ptr<Link> stream, int address)
      : stream_(std::move(stream)),
        peer_("GPIB address " + std::to_string(address) + " behind " + std::string(stream_->Peer())) {}

  std::string_view Peer() const override { return peer_; }
  std::string Fault() const override { return fault_.empty() ? stream_->Fault() : fault_; }
  void Release(const Deadline& deadline) override { Command("++loc\n", deadline); }

  /// Puts the adapter in charge of the bus; it must say who it is.
  bool Introduce(std::string_view commands, const Deadline& deadline) {
    std::string answers;
    auto quiet = milliseconds(0);
    do {
      if (!Command(std::string(commands) + "++ver\n++ver\n", deadline)) return false;
      const auto again = steady_clock::now() + kIntroduction;
      auto heard = steady_clock::now();
      while (mark_.empty() && steady_clock::now() < again && !deadline.Expired() && !deadline.Interrupted()) {
        const Attempt attempt = ReceiveBehind(answers);
        if (attempt.outcome == Attempt::Outcome::kClosed) {
          fault_ = "it closed the connection";
          return false;
        }
        if (attempt.outcome == Attempt::Outcome::kLost) return false;
        if (attempt.outcome == Attempt::Outcome::kDone) {
          heard = steady_clock::now();
        } else if (steady_clock::now() - heard >= quiet) {
          mark_ = Repeated(answers);
        }
      }
      // The answers to both introductions may come now, and none of them later.
      quiet = kIntroduction / 4;
    } while (mark_.empty() && !deadline.Expired() && !deadline.Interrupted());
    if (!mark_.empty()) return true;
    fault_ = deadline.Interrupted()
                 ? std::string("the host interrupted")
                 : "what is there did not answer \"++ver\" within " + SecondsText(deadline.Seconds());
    return false;
  }

  Attempt Send(std::string_view rest) override {
    // What is left of the read before must not reach the reply to this text.
    if (reading_) {
      const Attempt attempt = ReceiveBehind(arrived_);
      if (attempt.outcome != Attempt::Outcome::kDone && attempt.outcome != Attempt::Outcome::kNothingYet) {
        return attempt;
      }
      DropBeforeMark();
      if (reading_) return {};
    }
    arrived_.clear();
    asked_at_ = {};
    if (outgoing_.empty()) AppendAdapterText(outgoing_, rest);
    const Attempt attempt = Flush();
    // The adapter takes a text as a whole or not at all.
    return attempt.outcome == Attempt::Outcome::kDone ? Attempt{Attempt::Outcome::kDone, rest.size(), false}
                                                      : attempt;
  }

  Attempt Receive(std::span<char> into) override {
    if (Deliverable() == 0 && !reading_ && steady_clock::now() - asked_at_ >= kReadPause) {
      if (outgoing_.empty()) outgoing_ = "++read eoi\n++ver\n";
      if (const Attempt attempt = Flush(); attempt.outcome != Attempt::Outcome::kDone) return attempt;
      reading_ = true;
      asked_at_ = heard_at_ = steady_clock::now();
    }
    return ReceiveUnasked(into);
  }

  Attempt ReceiveUnasked(std::span<char> into) override {
    if (Deliverable() == 0) {
      if (const Attempt attempt = ReceiveBehind(arrived_); attempt.outcome != Attempt::Outcome::kDone) {
        return attempt;
      }
      TakeMark();
    }
    const std::size_t bytes = std::min(Deliverable(), into.size());
    if (bytes == 0) return {};
    std::copy_n(arrived_.begin(), bytes, into.begin());
    arrived_.erase(0, bytes);
    // After a text that was answered, an adapter may be asked again at once.
    if (!reading_) asked_at_ = {};
    return {Attempt::Outcome::kDone, bytes, false};
  }

  Cleared Clear(const Deadline& deadline, double) override {
    outgoing_.clear();
    fault_.clear();
    while (reading_) {
      const Attempt attempt = ReceiveBehind(arrived_);
      DropBeforeMark();
      if (!reading_) break;
      if (attempt.outcome == Attempt::Outcome::kClosed || attempt.outcome == Attempt::Outcome::kLost) {
        fault_ = "the adapter is gone: " + stream_->Fault();
        return Cleared::kFailed;
      }
      if (steady_clock::now() - heard_at_ > kLost) return Cleared::kReopen;
      if (deadline.Expired() || deadline.Interrupted()) {
        fault_ = "the adapter is still reading for the transfer before";
        return Cleared::kBusy;
      }
    }
    arrived_.clear();
    return Command("++clr\n", deadline) ? Cleared::kClean : Cleared::kFailed;
  }

  Attempt DropArrived() override {
    // While a read goes on, the next text waits for its mark anyway.
    if (reading_) return {Attempt::Outcome::kDone, 0, false};
    arrived_.clear();
    return stream_->DropArrived();
  }

 private:
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

  Attempt Flush() {
    while (!outgoing_.empty()) {
      const Attempt attempt = stream_->Send(outgoing_);
      outgoing_.erase(0, attempt.bytes);
      if (attempt.outcome != Attempt::Outcome::kDone) return attempt;
    }
    return {Attempt::Outcome::kDone, 0, false};
  }

  /// Receives for a slice, behind what is in `text`.
  Attempt ReceiveBehind(std::string& text) {
    std::array<char, 4096> bytes;
    const Attempt attempt = stream_->Receive(bytes);
    text.append(bytes.data(), attempt.bytes);
    if (attempt.bytes > 0) heard_at_ = steady_clock::now();
    return attempt;
  }

  /// Takes the mark out of what has arrived, which ends the read.
  void TakeMark() {
    for (std::size_t at = arrived_.find(mark_); at != std::string::npos; at = arrived_.find(mark_, at)) {
      arrived_.erase(at, mark_.size());
      reading_ = false;
    }
  }

  void DropBeforeMark() {
    TakeMark();
    arrived_.erase(0, Deliverable());
  }

  /// How much of what has arrived cannot be the beginning of the mark.
  std::size_t Deliverable() const {
    if (!reading_) return arrived_.size();
    std::size_t held = std::min(arrived_.size(), mark_.size() - 1);
    while (held > 0 && !arrived_.ends_with(std::string_view(mark_).substr(0, held))) --held;
    return arrived_.size() - held;
  }

  /// The lines with which `text` ends twice; empty where it does not.
  static std::string Repeated(std::string_view text) {
    for (std::size_t size = 2; 2 * size <= text.size(); ++size) {
      const std::string_view last = text.substr(text.size() - size);
      if (EndsLine(last.back()) && !EndsLine(last.front()) &&
          text.substr(0, text.size() - size).ends_with(last)) {
        return std::string(last);
      }
    }
    return {};
  }

  std::unique_ptr<Link> stream_;
  std::string peer_;
  std::string mark_;      // the adapter's answer to "++ver", with its terminator
  std::string outgoing_;  // not yet taken by the stream
  std::string arrived_;   // not yet delivered
  std::string fault_;
  bool reading_ = false;  // a "++read" was sent whose mark has not come
  steady_clock::time_point asked_at_{};
  steady_clock::time_point heard_at_{};
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
  if (!link->Introduce(commands, deadline)) {
    why = link->Fault();
    return nullptr;
  }
  return link;
}

}  // namespace workbench
