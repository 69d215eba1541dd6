// What all ports have in common: command and reply lines, blocks, the deadline, resynchronisation, and the
// texts of link errors. What differs between them is their settings and their Link.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/automation_error.h"
#include "host/transport.h"
#include "workbench/parameters/parameter.h"
#include "workbench/ports/block_progress.h"
#include "workbench/ports/deadline.h"
#include "workbench/ports/link.h"
#include "workbench/services.h"

namespace workbench {

/// A transport over a Link. Used by one thread at a time.
///
/// A transfer ends when it is done, when its time-out has passed (50 ms later at most), or in under 100 ms
/// when the host interrupts. After a transfer that failed, what belongs to it is discarded before the next
/// text is sent: a late reply never answers another query.
class Port : public host::Transport, public host::BlockTransfer {
 public:
  /// A reply line longer than this is a link error.
  static constexpr std::size_t kLongestLine = 1024UL * 1024UL;

  std::string Name() override { return name_; }
  void Name(std::string_view name) override { name_ = name; }
  std::shared_ptr<host::ParameterNode> Settings() override { return settings_; }
  bool OnLine() override { return link_ != nullptr; }
  /// True opens the port with its settings, anew where it was lost; nothing happens where it is open. Fails
  /// with kLinkNotOpen.
  void OnLine(bool on_line) override;

  float Timeout() override { return static_cast<float>(timeout_); }
  /// From 0 s on; 5 s at first. Anything else fails with 380.
  void Timeout(float seconds) override;

  void Write(std::string_view command) override;
  void Exchange(std::string_view command, std::string* reply) override;
  std::string Query(std::optional<std::string_view> command) override;

  host::BlockTransfer* Blocks() override { return this; }
  /// Without a command the reply that is being read goes on. A negative count fails with 5.
  std::vector<std::uint8_t> ReadBlock(std::int16_t count, std::optional<std::string_view> command) override;
  /// Format 0 sends the data as it is, format 1 puts a definite-length header "#<n><length>" before it; any
  /// other fails with 5.
  void WriteBlock(std::int16_t format, std::span<const std::uint8_t> data,
                  std::optional<std::string_view> command) override;

 protected:
  /// `class_name` is the programmatic name, `group` the name of the settings tree.
  Port(std::shared_ptr<Services> services, std::string_view class_name, std::string_view group);

  /// Connects with the settings as they are. Fails through NotOpened.
  virtual std::unique_ptr<Link> Open(const Deadline& deadline) = 0;
  /// How long opening may take, in seconds.
  virtual double OpenTimeout() const { return timeout_; }

  /// Fails with kLinkNotOpen: "<class> cannot open <what>: <why>".
  [[noreturn]] void NotOpened(std::string_view what, std::string_view why) const;

  Services& Host() const { return *services_; }
  Parameter& Tree() const { return *settings_; }
  /// The value of a setting of this port, as a text or as a whole number.
  std::string TextOf(std::string_view setting) const;
  std::int32_t NumberOf(std::string_view setting) const;
  /// Adds settings to the tree, with a first value.
  Parameter& AddPlain(std::string_view name, const host::Value& value, std::string_view description);
  Parameter& AddChoice(std::string_view name, std::string_view options, std::string_view value,
                       std::string_view description);

 private:
  struct Transfer;

  void Connect(const Deadline& deadline);
  void Begin(Transfer& transfer);
  void LeaveBlock();
  void MakeReady(Transfer& transfer);
  void DropArrived(Transfer& transfer);
  [[noreturn]] void FailLost(Transfer& transfer, const Attempt& attempt, std::string_view when);
  void Resynchronise(Transfer& transfer);
  void SendText(Transfer& transfer);
  std::size_t ReceiveInto(Transfer& transfer, std::span<char> into);
  std::span<char> MakeRoom();
  void ReceiveMore(Transfer& transfer, std::size_t at_most = kLongestLine);
  std::string_view ReceiveLine(Transfer& transfer);
  [[noreturn]] void FailNoText(Transfer& transfer, std::size_t place, char byte);
  void CheckSurplus(Transfer& transfer, std::string_view line, std::string_view behind);
  void FinishLine(Transfer& transfer, std::string_view line);
  void WatchForSecondReply(Transfer& transfer);
  std::vector<std::uint8_t> ReceiveBytes(Transfer& transfer, std::size_t count);
  void FetchTail(Transfer& transfer);
  void SkipTerminators();
  void CheckDeadline(Transfer& transfer);
  void MarkDirty();
  void DropBuffer();
  void Report(const Transfer& transfer, TransferRecord::Kind kind, std::string_view received,
              std::int32_t number = 0, std::string_view error = {}) const;
  void ReportState(TransferRecord::Kind kind, const Deadline& deadline, std::int32_t number,
                   std::string_view error) const;
  [[noreturn]] void Fail(Transfer& transfer, host::LinkError error, std::string_view what);
  [[noreturn]] void FailInterrupted(Transfer& transfer);

  std::span<char> Unread() { return std::span(buffer_).subspan(begin_, end_ - begin_); }

  std::shared_ptr<Services> services_;
  const std::string class_name_;
  std::string name_;
  std::shared_ptr<Parameter> settings_;
  double timeout_ = 5;
  std::unique_ptr<Link> link_;
  std::string lost_;  // why there is no link any more; empty where it was closed in order

  std::string outgoing_;      // reused: the command with its terminator
  std::vector<char> buffer_;  // what has arrived and was not consumed lies in [begin_, end_)
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  std::size_t line_bytes_ = 0;    // of the line that ReceiveLine found, with its terminator
  bool message_ended_ = false;    // the bus marked the byte before end_ as the last one
  bool end_owed_ = false;         // the bus marks ends, and the reply that was read did not have one yet
  bool terminator_owed_ = false;  // the terminator of a reply that was otherwise consumed may still come
  bool room_filled_ = false;      // by the last receive, so that more may be waiting
  BlockProgress block_;

  Deadline::Clock::time_point last_begun_{};  // the last transfer that sent something

  // The transfer that failed last, until what belongs to it is discarded.
  bool dirty_ = false;
  bool doubtful_ = false;  // discarded, but on some buses its reply may still come, very late
  Deadline::Clock::time_point failed_at_;
};

}  // namespace workbench
