// The same two exchanges through standalone Asio, as a peer.
#include <asio/buffer.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/read.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>
#include <charconv>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/allocations.h"
#include "benchmarks/wire/wire.h"

namespace {

class Client {
 public:
  explicit Client(std::uint16_t port) : socket_(context_) {
    socket_.connect({asio::ip::address_v4::loopback(), port});
    socket_.set_option(asio::ip::tcp::no_delay(true));
  }

  double Reading() {
    while (Query("SYST:ERR?\n") != "0,\"No error\"") {
    }
    const std::string_view reply = Query("READ:RF:LEVEL?\n");
    double number = 0;
    std::from_chars(reply.data(), reply.data() + reply.size(), number);
    return number;
  }

  void Screen() {
    Query("SYST:ERR?\n");
    asio::write(socket_, asio::buffer(std::string_view("READ:BUFFER:PCX?\n")));
    block_.resize(7 + 32000 + 1);
    asio::read(socket_, asio::buffer(block_));
  }

 private:
  std::string_view Query(std::string_view line) {
    received_.clear();
    asio::write(socket_, asio::buffer(line));
    const std::size_t size = asio::read_until(socket_, asio::dynamic_buffer(received_), '\n');
    return std::string_view(received_).substr(0, size - 1);
  }

  asio::io_context context_;
  asio::ip::tcp::socket socket_;
  std::string received_;
  std::vector<char> block_;
};

}  // namespace

int main(int argc, char** argv) {
  const arguments asked = parse_arguments(argc, argv, "reading screen");
  Client client(asked.port);
  const bool screen = std::string_view(asked.what) == "screen";
  const auto rounds = [&](long count) {
    for (long i = 0; i < count; ++i) {
      if (screen) {
        client.Screen();
      } else if (client.Reading() == 0) {
        std::exit(1);
      }
    }
  };
  rounds(asked.count / 10 + 1);
  const auto before = benchmarks::Heap::Now().allocations;
  const stopwatch watch = start_stopwatch();
  rounds(asked.count);
  const auto allocations = static_cast<double>(benchmarks::Heap::Now().allocations - before);
  report(watch, asked.count, allocations / static_cast<double>(asked.count));
}
