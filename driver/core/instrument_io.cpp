#include "driver/core/instrument_io.h"

#include <algorithm>
#include <utility>

#include "driver/core/number_text.h"
#include "driver/core/raise.h"
#include "driver/core/reply_status.h"
#include "host/host.h"

namespace qkel4x {
namespace {

constexpr std::string_view kErrorQueueQuery = "SYST:ERR?";
constexpr std::string_view kErrorQueueEmpty = "0,\"No error\"";
constexpr std::string_view kFrontPanel = "QPort.clsGUI";
constexpr std::string_view kLogTag = "KEL";
constexpr std::string_view kSendTimedOut = "send timed out";
constexpr float kRepetitionWait = 1.0F;

bool ContainsInAnyCase(std::string_view text, std::string_view lower_case) {
  const auto same = [](char left, char right) {
    return (left >= 'A' && left <= 'Z' ? left | 0x20 : left) == right;
  };
  return std::search(text.begin(), text.end(), lower_case.begin(), lower_case.end(), same) != text.end();
}

/// Whether a failed transfer may be tried again: the link was busy or timed out, and the command did get
/// through.
bool MayRepeat(const std::exception& failure, bool also_after_timeout) {
  const auto* error = dynamic_cast<const host::AutomationError*>(&failure);
  if (error == nullptr) return false;
  const std::int32_t code = error->Code();
  if (code != host::kLinkBusy && !(also_after_timeout && code == host::kLinkTimeout)) return false;
  return !ContainsInAnyCase(error->Description(), kSendTimedOut);
}

bool IsTypeMismatch(const std::exception& failure) {
  const auto* error = dynamic_cast<const host::AutomationError*>(&failure);
  return error != nullptr && error->Number() == host::kTypeMismatch;
}

bool IsAccepted(std::string_view reply, std::optional<std::string_view> choices) {
  if (!choices) return reply.find(kNoStatus) == std::string_view::npos;
  bool accepted = false;
  ForEachPiece(*choices, ',', [&](std::size_t, std::string_view choice) {
    accepted = accepted || reply.find(choice) != std::string_view::npos;
  });
  return accepted;
}

bool SettingBoolean(host::ParameterNode& node) {
  const host::Value& value = node.GetValue(-1, -1);
  if (const auto* text = std::get_if<std::string>(&value)) return BooleanFromText(*text);
  if (const auto* flag = std::get_if<bool>(&value)) return *flag;
  if (const auto* number = std::get_if<std::int16_t>(&value)) return *number != 0;
  if (const auto* number = std::get_if<std::int32_t>(&value)) return *number != 0;
  if (const auto* number = std::get_if<double>(&value)) return *number != 0.0;
  return false;
}

}  // namespace

std::string SettingText(host::ParameterNode& node) {
  const host::Value& value = node.GetValue(-1, -1);
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* number = std::get_if<std::int16_t>(&value)) return std::string(DecimalText(*number));
  if (const auto* number = std::get_if<std::int32_t>(&value)) return std::string(DecimalText(*number));
  if (const auto* number = std::get_if<double>(&value)) return std::string(GeneralText(*number));
  if (std::holds_alternative<std::monostate>(value)) return {};
  RaiseFault(host::kTypeMismatch);
}

void InstrumentIo::UseSettings(std::shared_ptr<host::ParameterNode> remote_control,
                               std::shared_ptr<host::ParameterNode> log_messages) {
  remote_control_ = std::move(remote_control);
  log_messages_ = std::move(log_messages);
}

host::Transport& InstrumentIo::Port() const {
  if (!transport) RaiseFault(host::kNoObject);
  return *transport;
}

std::string InstrumentIo::RemoteControl() const { return SettingText(*remote_control_); }

template <class Transfer>
bool InstrumentIo::Repeat(bool also_after_timeout, const Transfer& transfer) {
  for (std::int16_t attempts = 0;; ++attempts) {
    try {
      transfer();
      return true;
    } catch (const std::exception& failure) {
      if (SimulationActive()) return false;
      if (attempts >= retry_limit || !MayRepeat(failure, also_after_timeout)) throw;
    }
    host::CurrentHost().Runtime().Wait(kRepetitionWait);
  }
}

void InstrumentIo::SendCommand(std::string_view command) {
  DrainErrorQueue();
  LogSent(command);
  Repeat(true, [&] { Port().Write(command); });
}

void InstrumentIo::Exchange(std::string_view command, std::string* reply,
                            std::optional<std::string_view> choices) {
  for (std::int16_t attempts = 0;;) {
    DrainErrorQueue();
    LogSent(command);
    try {
      Port().Exchange(command, reply);
      if (reply == nullptr) return;
      LogReceived(*reply);
      if (IsAccepted(*reply, choices)) return;
    } catch (const std::exception& failure) {
      if (attempts >= retry_limit || !(IsTypeMismatch(failure) || MayRepeat(failure, true))) throw;
    }
    if (SimulationActive()) return;
    if (++attempts > retry_limit) return;
    host::CurrentHost().Runtime().Wait(kRepetitionWait);
  }
}

std::string InstrumentIo::QueryText(std::optional<std::string_view> command) {
  if (command) {
    DrainErrorQueue();
    LogSent(*command);
  }
  std::string reply;
  if (Repeat(true, [&] { reply = Port().Query(command); })) LogReceived(reply);
  return reply;
}

std::vector<std::uint8_t> InstrumentIo::ReadBinaryBlock(std::int16_t count,
                                                        std::optional<std::string_view> command) {
  if (command) {
    DrainErrorQueue();
    LogSent(*command);
  }
  std::vector<std::uint8_t> bytes;
  const bool read = Repeat(true, [&] {
    host::BlockTransfer* blocks = Port().Blocks();
    if (blocks == nullptr) RaiseFault(host::kTypeMismatch);
    bytes = blocks->ReadBlock(count, command);
  });
  if (read) LogReceived(Join(DecimalText(static_cast<std::int32_t>(bytes.size())), " bytes"));
  return bytes;
}

void InstrumentIo::WriteBinaryBlock(std::int16_t format, std::span<const std::uint8_t> data,
                                    std::optional<std::string_view> command) {
  if (command) {
    DrainErrorQueue();
    LogSent(*command);
  }
  Repeat(true, [&] {
    host::BlockTransfer* blocks = Port().Blocks();
    if (blocks == nullptr) RaiseFault(host::kTypeMismatch);
    blocks->WriteBlock(format, data, command);
  });
}

std::string InstrumentIo::ReadErrorQueue() {
  LogSent(kErrorQueueQuery);
  std::string reply;
  if (Repeat(false, [&] { reply = Port().Query(kErrorQueueQuery); })) LogReceived(reply);
  return reply;
}

void InstrumentIo::DrainErrorQueue() {
  const auto* port = std::get_if<std::string>(&remote_control_->GetValue(-1, -1));
  if (port != nullptr && *port == kFrontPanel) return;
  // No limit of rounds: the queue counts as empty only when the instrument says so in just these words.
  for (;;) {
    const std::string reply = ReadErrorQueue();
    if (SimulationActive() || reply == kErrorQueueEmpty) return;
  }
}

void InstrumentIo::LogMessage(std::int32_t kind, std::string_view sent, std::string_view received) const {
  try {
    if (SettingBoolean(*log_messages_)) host::CurrentHost().Log().Append(kind, kLogTag, sent, received);
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): a broken log must not fail a measurement
  }
}

void InstrumentIo::LogSent(std::string_view text) const { LogMessage(host::kTextSent, text, {}); }

void InstrumentIo::LogReceived(std::string_view text) const { LogMessage(host::kReplyReceived, {}, text); }

}  // namespace qkel4x
