// The instrument link: whole texts in and out. Terminators, framing, time-outs and reconnection belong to the
// port.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/driver_setup.h"

namespace host {

/// Binary transfers, the second interface of a transport.
class BlockTransfer {
 public:
  virtual ~BlockTransfer() = default;

  /// Sends the command, where one is given, and returns exactly `count` bytes of the reply.
  virtual std::vector<std::uint8_t> ReadBlock(std::int16_t count,
                                              std::optional<std::string_view> command) = 0;
  /// Sends the command, where one is given, and the data after it. The meaning of `format` is the transport's
  /// own.
  virtual void WriteBlock(std::int16_t format, std::span<const std::uint8_t> data,
                          std::optional<std::string_view> command) = 0;
};

/// One port to one instrument. Every failure is an AutomationError: a failed transfer kObjectErrorBase plus a
/// LinkError; a description that contains "send timed out" says that the command was never delivered.
class Transport : public IDriverSetup {
 public:
  /// How long one transfer may take, in seconds.
  virtual float Timeout() = 0;
  virtual void Timeout(float seconds) = 0;

  /// Sends one command line.
  virtual void Write(std::string_view command) = 0;
  /// Sends one command line; reads one reply line into `reply` where a holder is passed.
  virtual void Exchange(std::string_view command, std::string* reply) = 0;
  /// Sends one command line, where one is given, and returns one reply line.
  virtual std::string Query(std::optional<std::string_view> command) = 0;

  /// The block interface, or none where the transport has no such interface.
  virtual BlockTransfer* Blocks() = 0;
};

}  // namespace host
