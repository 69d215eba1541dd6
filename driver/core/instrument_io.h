// All traffic with the instrument: commands, exchanges, queries, blocks, the error queue and the log of them.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/parameter_node.h"
#include "host/transport.h"

namespace qkel4x {

/// The instrument link of one driver object. Every transfer but ReadErrorQueue drains the instrument's error
/// queue first. Failures are the transport's own errors, unchanged; with no transport every transfer fails
/// with 91.
class InstrumentIo {
 public:
  /// The settings that are read at every transfer: "Remote Control" and "Log Messages".
  void UseSettings(std::shared_ptr<host::ParameterNode> remote_control,
                   std::shared_ptr<host::ParameterNode> log_messages);

  /// The port: present only while on line.
  std::shared_ptr<host::Transport> transport;
  /// How often an exchange is repeated: 10 on line, 0 while going on line or off line and after a failed
  /// measurement of echo pattern or jitter.
  std::int16_t retry_limit = 0;

  /// The port, or error 91 while there is none.
  host::Transport& Port() const;
  /// The programmatic name in "Remote Control", for example "QPort.clsEthernet".
  std::string RemoteControl() const;

  /// Sends a command. A busy link or a time-out is repeated after 1 s, up to the retry limit.
  void SendCommand(std::string_view command);
  /// Sends a command with the exchange's own rule of repetition.
  void ExchangeCommand(std::string_view command) { Exchange(command, nullptr, std::nullopt); }
  /// Sends a query and reads its reply. A reply is accepted when one of the comma-separated choices occurs in
  /// it, or, without choices, when it holds no "---". Others are repeated after 1 s up to the retry limit,
  /// and then returned.
  void ExchangeCommand(std::string_view command, std::string& reply,
                       std::optional<std::string_view> choices = std::nullopt) {
    Exchange(command, &reply, choices);
  }
  /// Sends the command, where one is given, and returns one reply, whatever it is.
  std::string QueryText(std::optional<std::string_view> command);
  /// Sends the command, where one is given, and returns exactly `count` bytes of the reply.
  std::vector<std::uint8_t> ReadBinaryBlock(std::int16_t count, std::optional<std::string_view> command);
  /// Sends the command, where one is given, and the data.
  void WriteBinaryBlock(std::int16_t format, std::span<const std::uint8_t> data,
                        std::optional<std::string_view> command);
  /// Reads the oldest entry of the instrument's error queue, as it stands.
  std::string ReadErrorQueue();

 private:
  void DrainErrorQueue();
  void Exchange(std::string_view command, std::string* reply, std::optional<std::string_view> choices);
  /// Runs one transfer under the rule of repetition; false when its failure was dropped under simulation.
  template <class Transfer>
  bool Repeat(bool also_after_timeout, const Transfer& transfer);
  void LogMessage(std::int32_t kind, std::string_view sent, std::string_view received) const;
  void LogSent(std::string_view text) const;
  void LogReceived(std::string_view text) const;

  std::shared_ptr<host::ParameterNode> remote_control_;
  std::shared_ptr<host::ParameterNode> log_messages_;
};

/// The value of a setting as text. Fails with 13 where it holds no text and no number.
std::string SettingText(host::ParameterNode& node);

/// Raises the time-out of a transport, and puts it back only when told to: a failed transfer leaves it
/// raised.
class RaisedTimeout {
 public:
  RaisedTimeout(host::Transport& transport, float seconds)
      : transport_(transport), before_(transport.Timeout()) {
    transport_.Timeout(seconds);
  }
  void Restore() { transport_.Timeout(before_); }

 private:
  host::Transport& transport_;
  float before_;
};

}  // namespace qkel4x
