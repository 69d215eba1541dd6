#include "workbench/ports/port.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <utility>

#include "workbench/text.h"

namespace workbench {
namespace {

constexpr std::int32_t kInvalidPropertyValue = 380;
constexpr std::size_t kFirstBuffer = 16UL * 1024UL;
constexpr std::size_t kLargestKeptBuffer = 64UL * 1024UL;
constexpr std::size_t kBlockStart = 128;  // the header of a block, or the error text in its place
constexpr std::size_t kTerminator = 16;   // the terminator of a block, and a little more
constexpr std::size_t kLongestTail = 512;
constexpr double kTail = 0.25;  // seconds that the end mark of a complete block may take
constexpr std::chrono::milliseconds kPause{10};
constexpr double kGoodbye = 0.2;  // seconds that giving the instrument back may take
constexpr double kDoubt =
    0.05;  // seconds for which a reply after a doubtful clearing is watched for a second one

/// IEEE 488.2, 8.7: response data other than blocks are 7-bit ASCII.
constexpr bool IsReplyText(char c) { return (c >= ' ' && c <= '~') || c == '\t' || c == '\r'; }

}  // namespace

struct Port::Transfer {
  Transfer(TransferRecord::Kind what, std::optional<std::string_view> text, double seconds,
           const Runtime& runtime)
      : kind(what), command(text), deadline(seconds, runtime) {}

  TransferRecord::Kind kind;
  std::optional<std::string_view> command;
  Deadline deadline;
  bool started = false;  // something may have gone over the link
  std::size_t sent = 0;
  std::size_t received = 0;
};

Port::Port(std::shared_ptr<Services> services, std::string_view class_name, std::string_view group)
    : services_(std::move(services)), class_name_(class_name), settings_(std::make_shared<Parameter>()) {
  settings_->Initialise(group, 4, 3, "", "");
}

// Settings --------------------------------------------------------------------------------------------------

std::string Port::TextOf(std::string_view setting) const {
  return ValueText(settings_->Item(setting)->GetValue(-1, -1));
}

std::int32_t Port::NumberOf(std::string_view setting) const {
  const std::string text = TextOf(setting);
  const auto number = ValueNumber(text);
  if (!number) {
    NotOpened(settings_->Name(),
              "setting " + Quoted(setting) + " is " + Quoted(text) + ", which is no whole number");
  }
  return *number;
}

Parameter& Port::AddPlain(std::string_view name, const host::Value& value, std::string_view description) {
  const auto node = settings_->AddChild(name, 1, 4, "", description);
  node->SetValue(value, -1, -1);
  return static_cast<Parameter&>(*node);
}

Parameter& Port::AddChoice(std::string_view name, std::string_view options, std::string_view value,
                           std::string_view description) {
  const auto node = settings_->AddChild(name, 1, 2, options, description);
  node->SetValue(std::string(value), -1, -1);
  return static_cast<Parameter&>(*node);
}

// Opening and closing ---------------------------------------------------------------------------------------

void Port::OnLine(bool on_line) {
  if (!on_line) lost_.clear();
  if (on_line == OnLine()) return;
  const Deadline deadline(OpenTimeout(), Host().runtime);
  if (!on_line) {
    ReportState(TransferRecord::Kind::kClosed, deadline, 0, {});
    link_->Release(Deadline(kGoodbye, Host().runtime));
    link_.reset();
    return;
  }
  try {
    Connect(deadline);
  } catch (const host::AutomationError& error) {
    ReportState(TransferRecord::Kind::kOpened, deadline, error.Number(), error.Description());
    throw;
  }
  DropBuffer();
  dirty_ = doubtful_ = terminator_owed_ = end_owed_ = message_ended_ = room_filled_ = false;
  block_.Forget();
  lost_.clear();
  ReportState(TransferRecord::Kind::kOpened, deadline, 0, {});
}

void Port::Connect(const Deadline& deadline) {
  link_ = Open(deadline);
  if (services_->wrap_link) link_ = services_->wrap_link(std::move(link_));
}

void Port::NotOpened(std::string_view what, std::string_view why) const {
  std::string text(class_name_);
  text.append(" cannot open ").append(what).append(": ").append(why);
  Host().errors.Raise(host::kObjectErrorBase + host::kLinkNotOpen, class_name_, text);
}

void Port::Timeout(float seconds) {
  if (!(seconds >= 0) || !std::isfinite(seconds)) {
    Host().errors.Raise(host::kObjectErrorBase + kInvalidPropertyValue, class_name_,
                        "The time-out of a port is a number of seconds from 0 on");
  }
  timeout_ = static_cast<double>(seconds);
}

// Transfers -------------------------------------------------------------------------------------------------

void Port::Write(std::string_view command) {
  Transfer transfer(TransferRecord::Kind::kWrite, command, timeout_, Host().runtime);
  Begin(transfer);
  SendText(transfer);
  Report(transfer, transfer.kind, {});
}

void Port::Exchange(std::string_view command, std::string* reply) {
  if (reply == nullptr) {
    Write(command);
    return;
  }
  Transfer transfer(TransferRecord::Kind::kExchange, command, timeout_, Host().runtime);
  Begin(transfer);
  SendText(transfer);
  const std::string_view line = ReceiveLine(transfer);
  reply->assign(line);
  FinishLine(transfer, line);
}

std::string Port::Query(std::optional<std::string_view> command) {
  Transfer transfer(TransferRecord::Kind::kExchange, command, timeout_, Host().runtime);
  Begin(transfer);
  if (command) SendText(transfer);
  const std::string_view line = ReceiveLine(transfer);
  std::string reply(line);
  FinishLine(transfer, line);
  return reply;
}

std::vector<std::uint8_t> Port::ReadBlock(std::int16_t count, std::optional<std::string_view> command) {
  if (count < 0) {
    Host().errors.Raise(host::kInvalidProcedureCall, class_name_,
                        "A block cannot have " + std::to_string(count) + " bytes");
  }
  Transfer transfer(TransferRecord::Kind::kBlock, command, timeout_, Host().runtime);
  Begin(transfer);
  if (command) {
    SendText(transfer);
    block_.Begin();
  }
  std::vector<std::uint8_t> bytes = ReceiveBytes(transfer, static_cast<std::size_t>(count));
  block_.Consume(bytes);
  if (block_.Now() == BlockProgress::State::kComplete) {
    if (link_->MarksEnd()) FetchTail(transfer);
    if (!Unread().empty() && !EndsLine(Unread().front())) {
      Fail(transfer, host::kLinkBadReply, "more came than the header of the block announces");
    }
  }
  Report(transfer, transfer.kind, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  return bytes;
}

void Port::WriteBlock(std::int16_t format, std::span<const std::uint8_t> data,
                      std::optional<std::string_view> command) {
  if (format != 0 && format != 1) {
    Host().errors.Raise(host::kInvalidProcedureCall, class_name_,
                        "Block format " + std::to_string(format) +
                            " does not exist: 0 sends the data as it is, 1 with a definite-length header");
  }
  std::string text(command.value_or(""));
  if (format == 1) {
    const std::string length = std::to_string(data.size());
    text += '#';
    text += std::to_string(length.size());
    text += length;
  }
  text.append(reinterpret_cast<const char*>(data.data()), data.size());
  Transfer transfer(TransferRecord::Kind::kWrite, text, timeout_, Host().runtime);
  // The data may hold line feeds, so that the check of a command line is not for it.
  transfer.kind = TransferRecord::Kind::kBlock;
  Begin(transfer);
  SendText(transfer);
  Report(transfer, TransferRecord::Kind::kWrite, {});
}

void Port::Begin(Transfer& transfer) {
  if (!link_) {
    Fail(transfer, host::kLinkNotOpen,
         lost_.empty() ? std::string("the port is not open") : "the port is not open any more: " + lost_);
  }
  if (transfer.deadline.Interrupted()) FailInterrupted(transfer);
  if (transfer.kind != TransferRecord::Kind::kBlock && transfer.command &&
      transfer.command->find('\n') != std::string_view::npos) {
    Fail(transfer, host::kLinkSendFailed, "a command is one line, and this text holds a line feed");
  }
}

/// No more of a block reply will be read: after a complete one only its terminator may be left.
void Port::LeaveBlock() {
  using State = BlockProgress::State;
  const State block = block_.Now();
  block_.Forget();
  if (block == State::kHeader || block == State::kData || block == State::kDamaged) MarkDirty();
  if (block == State::kText && Unread().empty() && !message_ended_) MarkDirty();
  if (block == State::kComplete) {
    terminator_owed_ = true;
    SkipTerminators();
    if (message_ended_) terminator_owed_ = false;
  }
}

/// Before a text is sent: nothing that arrived earlier may answer it.
void Port::MakeReady(Transfer& transfer) {
  const std::span<char> unread = Unread();
  if (!message_ended_ && !unread.empty() && !EndsLine(unread.back())) MarkDirty();
  if (!dirty_ && !message_ended_) DropArrived(transfer);
  if (dirty_) Resynchronise(transfer);
  DropBuffer();
}

void Port::DropArrived(Transfer& transfer) {
  if (link_->MarksEnd()) {
    if (end_owed_ || !Unread().empty()) MarkDirty();
    return;
  }
  const Attempt attempt = link_->DropArrived();
  if (attempt.bytes > 0) terminator_owed_ = false;
  if (attempt.outcome == Attempt::Outcome::kNothingYet) MarkDirty();
  if (attempt.outcome == Attempt::Outcome::kClosed || attempt.outcome == Attempt::Outcome::kLost) {
    FailLost(transfer, attempt, "the link was lost before the command was sent");
  }
}

void Port::FailLost(Transfer& transfer, const Attempt& attempt, std::string_view when) {
  lost_ = attempt.outcome == Attempt::Outcome::kClosed ? std::string("the other end closed the connection")
                                                       : link_->Fault();
  Fail(transfer, host::kLinkNotOpen, std::string(when) + ": " + lost_);
}

void Port::MarkDirty() {
  dirty_ = true;
  failed_at_ = Deadline::Clock::now();
}

void Port::Resynchronise(Transfer& transfer) {
  const double since = std::chrono::duration<double>(Deadline::Clock::now() - failed_at_).count();
  const Link::Cleared cleared = link_->Clear(transfer.deadline, since);
  if (transfer.deadline.Interrupted()) FailInterrupted(transfer);
  if (cleared == Link::Cleared::kBusy) {
    Fail(transfer, host::kLinkBusy, link_->Fault());
  }
  if (cleared == Link::Cleared::kFailed) {
    Fail(transfer, host::kLinkSendFailed,
         "the link could not be cleared after a failed transfer (" + link_->Fault() +
             "), so that nothing was sent");
  }
  if (cleared == Link::Cleared::kReopen) {
    lost_ = "it could not be opened again after a failed transfer";
    link_.reset();
    const Deadline reopening(std::min(OpenTimeout(), transfer.deadline.Remaining()), Host().runtime);
    try {
      Connect(reopening);
    } catch (const host::AutomationError& error) {
      ReportState(TransferRecord::Kind::kOpened, reopening, error.Number(), error.Description());
      throw;
    }
    lost_.clear();
  }
  dirty_ = false;
  doubtful_ = true;
  terminator_owed_ = false;
  DropBuffer();
  if (services_->observer.load(std::memory_order_acquire) != nullptr) {
    ReportState(TransferRecord::Kind::kCleared, transfer.deadline, 0, {});
  }
}

void Port::SendText(Transfer& transfer) {
  // In a rapid sequence a port that has not failed, holds no byte and has left none behind is clean. After a
  // pause a look at what has arrived meanwhile costs nothing that anyone would notice.
  const bool paused = transfer.deadline.Begun() - last_begun_ > kPause;
  if (block_.Now() != BlockProgress::State::kNone) LeaveBlock();
  const bool clean = begin_ == end_ && !dirty_ && !end_owed_ && !terminator_owed_ && !room_filled_;
  if (!clean || paused) [[unlikely]] {
    MakeReady(transfer);
  }
  last_begun_ = transfer.deadline.Begun();
  transfer.started = true;
  message_ended_ = end_owed_ = room_filled_ = false;
  outgoing_.assign(*transfer.command);
  outgoing_ += '\n';
  std::string_view rest = outgoing_;
  for (;;) {
    const Attempt attempt = link_->Send(rest);
    transfer.sent += attempt.bytes;
    rest.remove_prefix(attempt.bytes);
    if (rest.empty()) return;
    if (attempt.outcome == Attempt::Outcome::kRefused) {
      Fail(transfer, host::kLinkSendFailed, "the command could not be delivered: " + link_->Fault());
    }
    if (attempt.outcome == Attempt::Outcome::kClosed || attempt.outcome == Attempt::Outcome::kLost) {
      FailLost(transfer, attempt, "the link was lost while sending");
    }
    if (transfer.deadline.Interrupted()) FailInterrupted(transfer);
    if (transfer.deadline.Expired()) {
      Fail(transfer, host::kLinkSendFailed,
           "send timed out after " + SecondsText(transfer.deadline.Elapsed()) + ": the other end took " +
               std::to_string(transfer.sent) + " of " + ByteCount(outgoing_.size()));
    }
  }
}

std::size_t Port::ReceiveInto(Transfer& transfer, std::span<char> into) {
  for (;;) {
    const Attempt attempt = link_->Receive(into);
    if (attempt.outcome == Attempt::Outcome::kDone) [[likely]] {
      transfer.received += attempt.bytes;
      message_ended_ = attempt.end;
      room_filled_ = attempt.bytes == into.size();
      return attempt.bytes;
    }
    if (attempt.outcome == Attempt::Outcome::kSilent) {
      Fail(transfer, host::kLinkTimeout,
           transfer.received == 0 ? "no reply, and none will come"
                                  : "only a part of the reply came, and no more will");
    }
    if (attempt.outcome == Attempt::Outcome::kClosed && transfer.received > 0) {
      lost_ = "the other end closed the connection";
      Fail(transfer, host::kLinkBadReply, "the reply was cut short: " + lost_);
    }
    if (attempt.outcome == Attempt::Outcome::kClosed || attempt.outcome == Attempt::Outcome::kLost) {
      FailLost(transfer, attempt, "the link was lost while waiting for the reply");
    }
    CheckDeadline(transfer);
  }
}

void Port::CheckDeadline(Transfer& transfer) {
  if (transfer.deadline.Interrupted()) FailInterrupted(transfer);
  if (!transfer.deadline.Expired()) return;
  const std::string within = " within " + SecondsText(transfer.deadline.Seconds());
  Fail(transfer, host::kLinkTimeout,
       transfer.received == 0 ? "no reply" + within : "only a part of the reply came" + within);
}

/// Where the next bytes go, behind those that were not consumed.
std::span<char> Port::MakeRoom() {
  if (begin_ == end_) {
    begin_ = end_ = 0;
  } else if (end_ == buffer_.size() && begin_ > 0) {
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
  }
  if (end_ == buffer_.size()) buffer_.resize(std::max(kFirstBuffer, buffer_.size() * 2));
  return std::span(buffer_).subspan(end_);
}

void Port::ReceiveMore(Transfer& transfer, std::size_t at_most) {
  const std::span<char> room = MakeRoom();
  end_ += ReceiveInto(transfer, room.first(std::min(at_most, room.size())));
}

/// Passes over what may precede a reply: the CR of a terminator LF CR, and the terminator of a block.
void Port::SkipTerminators() {
  while (begin_ != end_) {
    const char c = buffer_[begin_];
    if (c == '\n' && terminator_owed_) {
      terminator_owed_ = false;
    } else if (c != '\r') {
      terminator_owed_ = false;
      return;
    }
    ++begin_;
  }
}

/// The next reply line without its terminator. It stays in the buffer until FinishLine.
std::string_view Port::ReceiveLine(Transfer& transfer) {
  transfer.started = true;
  std::size_t searched = 0;
  for (bool first = true;; first = false) {
    if (searched == 0) SkipTerminators();
    std::string_view unread(buffer_.data() + begin_, end_ - begin_);
    const std::size_t feed = unread.find('\n', searched);
    if (std::min(feed, unread.size()) > kLongestLine) {
      Fail(transfer, host::kLinkBadReply, "the reply line is longer than " + ByteCount(kLongestLine));
    }
    if (feed != std::string_view::npos || (message_ended_ && !unread.empty())) {
      if (doubtful_) WatchForSecondReply(transfer);
      line_bytes_ = std::min(feed, unread.size() - 1) + 1;
      std::string_view line = unread.substr(0, feed);
      if (line.ends_with('\r')) line.remove_suffix(1);
      if (const auto odd = std::ranges::find_if_not(line, IsReplyText); odd != line.end()) [[unlikely]] {
        FailNoText(transfer, static_cast<std::size_t>(odd - line.begin()), *odd);
      }
      if (line_bytes_ != unread.size() && transfer.command) [[unlikely]] {
        CheckSurplus(transfer, line, unread.substr(line_bytes_));
      }
      return line;
    }
    searched = unread.size();
    if (!first) CheckDeadline(transfer);
    ReceiveMore(transfer);
  }
}

/// A program that decodes numbers would stop at such a byte and take the beginning for the whole.
void Port::FailNoText(Transfer& transfer, std::size_t place, char byte) {
  std::array<char, 8> hex{};
  std::snprintf(hex.data(), hex.size(), "0x%02X", static_cast<unsigned>(static_cast<unsigned char>(byte)));
  Fail(transfer, host::kLinkBadReply,
       "byte " + std::to_string(place + 1) + " of the reply is " + hex.data() +
           ", and a reply is plain ASCII text: the line is disturbed, or set differently at its two ends");
}

/// One command has one reply. The same line again does no harm; of two that differ, one belongs elsewhere.
void Port::CheckSurplus(Transfer& transfer, std::string_view line, std::string_view behind) {
  while (!behind.empty() && EndsLine(behind.front())) behind.remove_prefix(1);
  const std::string_view second = behind.substr(0, behind.find_first_of("\r\n"));
  if (line.starts_with(second)) return;
  Fail(transfer, host::kLinkBadReply,
       "two replies came that differ; which of them answers this query cannot be told");
}

void Port::FinishLine(Transfer& transfer, std::string_view line) {
  Report(transfer, transfer.kind, line);
  begin_ += line_bytes_;
  end_owed_ = !message_ended_ && link_->MarksEnd();
  if (begin_ == end_ && buffer_.size() > kLargestKeptBuffer) DropBuffer();
}

/// A second reply in a row means that the first was a late one, or that the instrument says everything twice;
/// which of the two answers the query cannot be told.
void Port::WatchForSecondReply(Transfer& transfer) {
  doubtful_ = false;
  std::array<char, 256> more{};
  const Deadline watch(std::min(kDoubt, transfer.deadline.Remaining()), Host().runtime);
  bool second = std::ranges::count(Unread(), '\n') > 1 || (!Unread().empty() && Unread().back() != '\n');
  while (!second && !watch.Expired() && !watch.Interrupted()) {
    const Attempt attempt = link_->ReceiveUnasked(more);
    if (attempt.outcome == Attempt::Outcome::kRefused) {
      Fail(transfer, host::kLinkSendFailed, "the command could not be delivered: " + link_->Fault());
    }
    if (attempt.outcome != Attempt::Outcome::kDone && attempt.outcome != Attempt::Outcome::kNothingYet)
      return;
    second = std::any_of(more.begin(), more.begin() + static_cast<std::ptrdiff_t>(attempt.bytes),
                         [](char c) { return c != '\r'; });
  }
  if (second) {
    Fail(transfer, host::kLinkBadReply,
         "two replies came, one of them late; which answers this query cannot be told");
  }
}

/// The next bytes of a block reply, received where they belong. What comes with them from behind, usually the
/// terminator, goes into the buffer.
std::vector<std::uint8_t> Port::ReceiveBytes(Transfer& transfer, std::size_t count) {
  transfer.started = true;
  std::vector<std::uint8_t> bytes(count + kTerminator);
  std::size_t have = 0;
  for (bool first = true;; first = false) {
    const bool at_start = block_.AtStart() && have == 0;
    if (at_start) SkipTerminators();
    const std::span<char> unread = Unread().first(std::min(end_ - begin_, count - have));
    std::ranges::copy(unread, bytes.begin() + static_cast<std::ptrdiff_t>(have));
    have += unread.size();
    begin_ += unread.size();
    if (have == count) break;
    if (message_ended_) {
      Fail(transfer, host::kLinkBadReply,
           "the reply ended after " + std::to_string(have) + " of " + ByteCount(count));
    }
    if (!first) CheckDeadline(transfer);
    if (at_start) {
      ReceiveMore(transfer, kBlockStart);
      continue;
    }
    have += ReceiveInto(transfer, {reinterpret_cast<char*>(bytes.data()) + have, bytes.size() - have});
    if (have > count) {
      begin_ = 0;
      end_ = have - count;
      buffer_.resize(std::max(kFirstBuffer, buffer_.size()));
      std::ranges::copy(std::span(bytes).subspan(count, end_), buffer_.begin());
      break;
    }
  }
  bytes.resize(count);
  return bytes;
}

/// Where the bus marks the end of a message, the instrument keeps the terminator of a block until it is
/// fetched. A block that is complete does not fail for want of that mark; the port is then cleared before the
/// next text.
void Port::FetchTail(Transfer& transfer) {
  const Deadline tail(std::min(kTail, transfer.deadline.Remaining()), Host().runtime);
  while (!message_ended_ && Unread().size() < kLongestTail && !tail.Expired() && !tail.Interrupted()) {
    const std::span<char> room = MakeRoom();
    const Attempt attempt = link_->Receive(room);
    if (attempt.outcome != Attempt::Outcome::kDone && attempt.outcome != Attempt::Outcome::kNothingYet) break;
    end_ += attempt.bytes;
    transfer.received += attempt.bytes;
    message_ended_ = attempt.end;
  }
  if (!message_ended_) MarkDirty();
}

void Port::DropBuffer() {
  begin_ = end_ = 0;
  if (buffer_.size() > kLargestKeptBuffer) std::vector<char>().swap(buffer_);
}

// Reports ---------------------------------------------------------------------------------------------------

void Port::Report(const Transfer& transfer, TransferRecord::Kind kind, std::string_view received,
                  std::int32_t number, std::string_view error) const {
  TransferObserver* const observer = services_->observer.load(std::memory_order_acquire);
  if (observer == nullptr) return;
  TransferRecord record;
  record.kind = kind;
  record.port = class_name_;
  if (link_) record.peer = link_->Peer();
  record.sent = transfer.command.value_or("");
  record.received = received;
  record.seconds = transfer.deadline.Elapsed();
  record.begin =
      std::chrono::system_clock::now() - std::chrono::duration_cast<std::chrono::system_clock::duration>(
                                             std::chrono::duration<double>(record.seconds));
  record.error_number = number;
  record.error = error;
  SettingTexts settings;
  if (kind == TransferRecord::Kind::kOpened) {
    settings = SettingTextsOf(*settings_, settings_->Name());
    record.settings = settings;
  }
  observer->Observe(record);
}

void Port::ReportState(TransferRecord::Kind kind, const Deadline& deadline, std::int32_t number,
                       std::string_view error) const {
  Transfer nothing(kind, std::nullopt, 0, Host().runtime);
  nothing.deadline = deadline;
  Report(nothing, kind, {}, number, error);
}

void Port::FailInterrupted(Transfer& transfer) {
  Fail(transfer, host::kLinkNotOpen, "the host interrupted the transfer");
}

void Port::Fail(Transfer& transfer, host::LinkError error, std::string_view what) {
  const double seconds = transfer.deadline.Elapsed();
  std::string text(class_name_);
  if (link_) text.append(" to ").append(link_->Peer());
  text.append(": ").append(what).append(". ");
  const bool unsent = !transfer.command || !transfer.started;
  if (transfer.command) {
    text.append(unsent ? "Not sent: " : "Sent: ").append(Quoted(*transfer.command));
  } else {
    text.append("Nothing was sent before");
  }
  text.append("; ").append(ByteCount(transfer.received)).append(" came back");
  std::string_view partial;
  if (transfer.kind == TransferRecord::Kind::kExchange && transfer.received > 0) {
    partial = {buffer_.data() + begin_, end_ - begin_};
    text.append(" (").append(Quoted(partial)).append(")");
  }
  text.append(" in ").append(SecondsText(seconds));

  const std::int32_t number = host::kObjectErrorBase + error;
  Report(transfer, transfer.kind, partial, number, text);
  if (transfer.started) MarkDirty();
  if (!lost_.empty()) link_.reset();
  Host().errors.Raise(number, class_name_, text);
}

}  // namespace workbench
