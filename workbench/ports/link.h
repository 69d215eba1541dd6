// A connection to one instrument over one kind of bus, as the framing of a port sees it.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "workbench/ports/deadline.h"

namespace workbench {

/// How one attempt to send or to receive came out.
struct Attempt {
  enum class Outcome {
    kDone,        ///< `bytes` were taken or delivered, at least one
    kNothingYet,  ///< the bus was not ready within a slice; trying again may help
    kSilent,      ///< there is nothing to receive, and waiting would not change that
    kRefused,     ///< the bus did not take the text, but stands; Fault() says why
    kClosed,      ///< the other end closed the connection
    kLost,        ///< the connection is broken; Fault() says how
  };
  Outcome outcome = Outcome::kNothingYet;
  std::size_t bytes = 0;
  bool end = false;  ///< the bus marked the last byte as the end of the message
};

/// Whether `c` is part of a line terminator.
inline bool EndsLine(char c) { return c == '\n' || c == '\r'; }

/// An open connection; destroying it closes it. Send and Receive block for one slice at most, so that the
/// caller can look at its deadline; they neither throw nor allocate in the usual case.
class Link {
 public:
  /// How thoroughly Clear got rid of what belongs to a failed transfer.
  enum class Cleared {
    kClean,   ///< as thoroughly as the bus allows
    kReopen,  ///< only opening the connection anew helps
    kBusy,    ///< it is not over yet; a later try may help
    kFailed,  ///< the bus did not take it; Fault() says why
  };

  virtual ~Link() = default;

  /// Who is at the other end, for messages: "127.0.0.1:5025".
  virtual std::string_view Peer() const = 0;
  /// Sends a part of a message from its first byte on. The text given ends the message.
  virtual Attempt Send(std::string_view rest) = 0;
  /// Receives what there is, as far as it fits.
  virtual Attempt Receive(std::span<char> into) = 0;
  /// The same, without fetching anything from an instrument that must be asked for it.
  virtual Attempt ReceiveUnasked(std::span<char> into) { return Receive(into); }
  /// Why the last attempt or Clear failed.
  virtual std::string Fault() const = 0;

  /// Gives the instrument back to its operator where the bus has a way to say so, before the port is closed
  /// in order.
  virtual void Release(const Deadline& deadline) { static_cast<void>(deadline); }

  /// Discards what belongs to a failed transfer that ended `since` seconds ago.
  virtual Cleared Clear(const Deadline& deadline, double since) = 0;
  /// Takes away what has arrived without having been asked for, and never waits: kDone when nothing or whole
  /// lines were there, kNothingYet when more must be on its way or cannot be seen, kClosed and kLost as in
  /// Receive.
  virtual Attempt DropArrived() = 0;
  /// Whether the bus marks the end of a message, so that the rest of one must be fetched before the next
  /// text.
  virtual bool MarksEnd() const { return false; }
};

/// A link around another one that passes everything on, for those that change a part of it.
class WrappedLink : public Link {
 public:
  explicit WrappedLink(std::unique_ptr<Link> link) : link_(std::move(link)) {}

  std::string_view Peer() const override { return link_->Peer(); }
  Attempt Send(std::string_view rest) override { return link_->Send(rest); }
  Attempt Receive(std::span<char> into) override { return link_->Receive(into); }
  Attempt ReceiveUnasked(std::span<char> into) override { return link_->ReceiveUnasked(into); }
  std::string Fault() const override { return link_->Fault(); }
  void Release(const Deadline& deadline) override { link_->Release(deadline); }
  Cleared Clear(const Deadline& deadline, double since) override { return link_->Clear(deadline, since); }
  Attempt DropArrived() override { return link_->DropArrived(); }
  bool MarksEnd() const override { return link_->MarksEnd(); }

 protected:
  Link& Wrapped() { return *link_; }

 private:
  std::unique_ptr<Link> link_;
};

/// Puts something between a port and its link.
using LinkWrapper = std::function<std::unique_ptr<Link>(std::unique_ptr<Link>)>;

}  // namespace workbench
