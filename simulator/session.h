// One client's conversation with the instrument over a byte stream: lines in, replies out, memory and turns
// bounded.
#pragma once

#include <array>
#include <asio/buffer.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "simulator/backlog.h"
#include "simulator/shared_instrument.h"

namespace simulator {

/// `Stream` is a non-blocking socket or descriptor of Asio. A line is executed when it arrives, up to its
/// first eight commands; the rest of a longer one and lines that came with it wait in `backlog` for turns of
/// about a tenth of a millisecond. A client that does not read its replies is not read from either, and is
/// dropped when it takes nothing for `stall`.
template <typename Stream>
class Session : public std::enable_shared_from_this<Session<Stream>> {
 public:
  Session(Stream stream, SharedInstrument& instrument, Backlog& backlog, std::size_t longest_line,
          std::chrono::milliseconds stall, std::function<void()> on_end)
      : stream_(std::move(stream)),
        stall_timer_(stream_.get_executor()),
        instrument_(instrument),
        backlog_(backlog),
        longest_line_(longest_line),
        stall_(stall),
        on_end_(std::move(on_end)) {}
  ~Session() { on_end_(); }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  void Start() { Read(); }
  /// Ends the conversation; only in the thread that runs the stream's context.
  void Close() {
    asio::error_code ignored;
    stream_.close(ignored);
  }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::microseconds kTurn{100};
  static constexpr std::size_t kOutputTurn = 65'536;
  static constexpr std::size_t kKeptMemory = 16'384;

  // What a long line or a big reply needed is not kept while the client may be silent.
  void Read() {
    for (std::string* const bytes : {&input_, &output_, &execution_.answer.bytes}) {
      if (bytes->capacity() > kKeptMemory && (bytes != &input_ || input_.empty())) *bytes = std::string();
    }
    stream_.async_read_some(asio::buffer(chunk_), [self = this->shared_from_this()](
                                                      const asio::error_code& error, std::size_t size) {
      if (error) return;
      self->input_.append(self->chunk_.data(), size);
      self->Run(Clock::duration::zero());
    });
  }

  // One turn: a line, and as much of the lines that are there as the time and the room for replies allow.
  void Run(Clock::duration turn) {
    if (!stream_.is_open()) return;
    output_.clear();
    written_ = 0;
    const Clock::time_point until = Clock::now() + turn;
    bool more = executing_ || NextLine();
    while (more) {
      if (executing_ && instrument_.Continue(execution_, until)) {
        executing_ = false;
        TakeReply();
      }
      more = executing_ || NextLine();
      if (output_.size() >= kOutputTurn || Clock::now() >= until) break;
    }
    Write(more);
  }

  // Takes up the next complete line; false when there is none. Carriage returns before or after the line feed
  // are white space to the instrument.
  bool NextLine() {
    const std::size_t end = input_.find('\n', searched_);
    if (end == std::string::npos) {
      input_.erase(0, begin_);
      if (input_.size() > longest_line_) {
        overlong_ = true;
        input_.clear();
      }
      begin_ = 0;
      searched_ = input_.size();
      return false;
    }
    const std::string_view line = std::string_view(input_).substr(begin_, end - begin_);
    begin_ = searched_ = end + 1;
    if (std::exchange(overlong_, false) || line.size() > longest_line_) {
      instrument_.InputOverrun();
    } else {
      Instrument::Begin(line, execution_);
      executing_ = true;
    }
    return true;
  }

  void TakeReply() {
    Instrument::Answer& answer = execution_.answer;
    if (!answer.has_reply) return;
    if (output_.empty()) {
      output_.swap(answer.bytes);
    } else {
      output_.append(answer.bytes);
    }
    output_.push_back('\n');
  }

  // Sends what the client takes at once and waits until it takes the rest.
  void Write(bool more) {
    if (written_ < output_.size()) {
      asio::error_code error;
      const std::size_t sent = stream_.write_some(asio::buffer(output_) + written_, error);
      if (!error) {
        written_ += sent;
      } else if (error != asio::error::would_block && error != asio::error::try_again) {
        return;
      }
    }
    if (written_ == output_.size()) return Continue(more);
    stall_timer_.expires_after(stall_);
    stall_timer_.async_wait([self = this->shared_from_this()](const asio::error_code& error) {
      // A timer that was set anew may have run out before.
      if (!error && self->stall_timer_.expiry() <= Clock::now()) self->Close();
    });
    stream_.async_write_some(
        asio::buffer(output_) + written_,
        [self = this->shared_from_this(), more](const asio::error_code& error, std::size_t size) {
          self->stall_timer_.expires_at(Clock::time_point::max());
          if (error) return;
          self->written_ += size;
          self->Write(more);
        });
  }

  void Continue(bool more) {
    if (!more) return Read();
    backlog_.Add([self = this->shared_from_this()] { self->Run(kTurn); });
  }

  Stream stream_;
  asio::steady_timer stall_timer_;
  SharedInstrument& instrument_;
  Backlog& backlog_;
  std::size_t longest_line_;
  std::chrono::milliseconds stall_;
  std::function<void()> on_end_;
  std::array<char, 4096> chunk_{};
  std::string input_;
  std::size_t begin_ = 0;     // of the first line that has not been taken up
  std::size_t searched_ = 0;  // up to here holds no end of that line
  bool overlong_ = false;
  Instrument::Execution execution_;  // of a line in input_
  bool executing_ = false;
  std::string output_;
  std::size_t written_ = 0;
};

}  // namespace simulator
