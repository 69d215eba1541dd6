// One client's conversation with the instrument over a byte stream: lines in, replies out, memory bounded.
#pragma once

#include <array>
#include <asio/buffer.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "simulator/shared_instrument.h"

namespace simulator {

/// `Stream` is a non-blocking socket or descriptor of Asio. A client that does not read its replies is not
/// read from either, and is dropped after `stall`.
template <typename Stream>
class Session : public std::enable_shared_from_this<Session<Stream>> {
 public:
  Session(Stream stream, SharedInstrument& instrument, std::size_t longest_line,
          std::chrono::milliseconds stall, std::function<void()> on_end)
      : stream_(std::move(stream)),
        stall_timer_(stream_.get_executor()),
        instrument_(instrument),
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
  static constexpr std::size_t kOutputTurn = 65'536;
  static constexpr int kLinesTurn = 32;

  void Read() {
    stream_.async_read_some(asio::buffer(chunk_), [self = this->shared_from_this()](
                                                      const asio::error_code& error, std::size_t size) {
      if (error) return;
      self->input_.append(self->chunk_.data(), size);
      self->Run();
    });
  }

  // Executes the complete lines that are there, as many as one turn allows, then writes or reads on.
  void Run() {
    output_.clear();
    int lines = 0;
    std::size_t begin = 0;
    while (lines < kLinesTurn && output_.size() < kOutputTurn) {
      const std::size_t end = input_.find('\n', begin);
      if (end == std::string::npos) break;
      ++lines;
      Line(std::string_view(input_).substr(begin, end - begin));
      begin = end + 1;
    }
    input_.erase(0, begin);
    const bool more = input_.find('\n') != std::string::npos;
    if (!more && input_.size() > longest_line_) {
      overlong_ = true;
      input_.clear();
    }
    Write(more);
  }

  // Carriage returns before or after the line feed are white space to the instrument.
  void Line(std::string_view line) {
    if (overlong_ || line.size() > longest_line_) {
      overlong_ = false;
      instrument_.InputOverrun();
      return;
    }
    instrument_.Execute(line, answer_);
    if (!answer_.has_reply) return;
    output_.append(answer_.bytes);
    output_.push_back('\n');
  }

  void Write(bool more) {
    std::size_t written = 0;
    if (!output_.empty()) {
      asio::error_code error;
      written = stream_.write_some(asio::buffer(output_), error);
      if (error && error != asio::error::would_block && error != asio::error::try_again) return;
      if (error) written = 0;
    }
    if (written == output_.size()) return Continue(more);
    stall_timer_.expires_after(stall_);
    stall_timer_.async_wait([self = this->shared_from_this()](const asio::error_code& error) {
      asio::error_code ignored;
      if (!error) self->stream_.close(ignored);
    });
    asio::async_write(stream_, asio::buffer(output_) + written,
                      [self = this->shared_from_this(), more](const asio::error_code& error, std::size_t) {
                        self->stall_timer_.cancel();
                        if (!error) self->Continue(more);
                      });
  }

  void Continue(bool more) {
    if (!more) return Read();
    asio::post(stream_.get_executor(), [self = this->shared_from_this()] { self->Run(); });
  }

  Stream stream_;
  asio::steady_timer stall_timer_;
  SharedInstrument& instrument_;
  std::size_t longest_line_;
  std::chrono::milliseconds stall_;
  std::function<void()> on_end_;
  std::array<char, 4096> chunk_{};
  std::string input_;
  std::string output_;
  Instrument::Answer answer_;
  bool overlong_ = false;
};

}  // namespace simulator
