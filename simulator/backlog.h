// Work that has to wait: done piece by piece, whatever else is ready first.
#pragma once

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <deque>
#include <functional>
#include <utility>

namespace simulator {

/// For the one thread that runs `context`. Only one piece at a time stands among the context's other
/// handlers, so that a client with a short question waits for one piece and not for everybody's.
class Backlog {
 public:
  explicit Backlog(asio::io_context& context) : context_(context) {}
  Backlog(const Backlog&) = delete;
  Backlog& operator=(const Backlog&) = delete;

  void Add(std::function<void()> piece) {
    pieces_.push_back(std::move(piece));
    if (pieces_.size() == 1) Post();
  }

 private:
  void Post() {
    asio::post(context_, [this] {
      // Adds to the end when it needs another turn.
      pieces_.front()();
      pieces_.pop_front();
      if (!pieces_.empty()) Post();
    });
  }

  asio::io_context& context_;
  std::deque<std::function<void()>> pieces_;
};

}  // namespace simulator
