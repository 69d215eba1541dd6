// A connection to one instrument over one kind of bus, as the framing of a port sees it.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "workbench/ports/deadline.h"

namespace workbench {

/// How one attempt to send or to receive came out.
struct Attempt {
  enum class Outcome {
    kDone,        ///< `bytes` were taken or delivered, at least one
    kNothingYet,  ///< the bus was not ready within a slice; trying again may help
    kClosed,      ///< the other end closed the connection
    kLost,        ///< the connection is broken; Fault() says how
  };
  Outcome outcome = Outcome::kNothingYet;
  std::size_t bytes = 0;
  bool end = false;  ///< the bus marked the last byte as the end of the message
};

/// An open connection; destroying it closes it. Send and Receive block for one slice at most, so that the
/// caller can look at its deadline; they neither throw nor allocate in the usual case.
class Link {
 public:
  /// How thoroughly Clear got rid of what belongs to a failed transfer.
  enum class Cleared {
    kClean,   ///< nothing of it can arrive any more
    kQuiet,   ///< nothing has arrived for a while, but a very late reply still may
    kReopen,  ///< only opening the connection anew helps
    kFailed,  ///< the bus did not take it; Fault() says why
  };

  virtual ~Link() = default;

  /// Who is at the other end, for messages: "127.0.0.1:5025".
  virtual std::string_view Peer() const = 0;
  /// Sends a part of a message from its first byte on. The text given ends the message.
  virtual Attempt Send(std::string_view rest) = 0;
  /// Receives what there is, as far as it fits.
  virtual Attempt Receive(std::span<char> into) = 0;
  /// Why the last attempt or Clear failed.
  virtual std::string Fault() const = 0;

  /// Discards what belongs to a failed transfer that ended `since` seconds ago.
  virtual Cleared Clear(const Deadline& deadline, double since) = 0;
  /// Takes away what has arrived and was not asked for. False where that did not end.
  virtual bool DropArrived() = 0;
  /// Whether the bus marks the end of a message, so that the rest of one must be fetched before the next
  /// text.
  virtual bool MarksEnd() const { return false; }
};

}  // namespace workbench
