// A client of the servers, for the tests.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace simulator {

inline constexpr int kPatienceMs = 10'000;

// A plain blocking client of a descriptor.
class Client {
 public:
  explicit Client(int descriptor) : descriptor_(descriptor) {}
  explicit Client(std::uint16_t port, int receive_buffer = 0)
      : descriptor_(::socket(AF_INET, SOCK_STREAM, 0)) {
    if (receive_buffer > 0) {
      ::setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &receive_buffer, sizeof receive_buffer);
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    connected_ = ::connect(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }
  ~Client() { ::close(descriptor_); }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  bool Connected() const { return connected_; }

  bool Send(std::string_view bytes) {
    while (!bytes.empty()) {
      pollfd ready{descriptor_, POLLOUT, 0};
      if (::poll(&ready, 1, kPatienceMs) <= 0) return false;
      const ssize_t sent = ::write(descriptor_, bytes.data(), bytes.size());
      if (sent <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }

  // As much as can be sent at once without waiting for the other side.
  std::size_t SendWhatFits(std::string_view bytes) {
    std::size_t total = 0;
    while (total < bytes.size()) {
      const ssize_t sent =
          ::send(descriptor_, bytes.data() + total, bytes.size() - total, MSG_DONTWAIT | MSG_NOSIGNAL);
      if (sent <= 0) break;
      total += static_cast<std::size_t>(sent);
    }
    return total;
  }

  // The next line without its line feed; "(end)" when the other side closed, "(silence)" when nothing came.
  std::string Line() {
    for (;;) {
      const std::size_t end = received_.find('\n');
      if (end != std::string::npos) {
        std::string line = received_.substr(0, end);
        received_.erase(0, end + 1);
        return line;
      }
      pollfd ready{descriptor_, POLLIN, 0};
      if (::poll(&ready, 1, kPatienceMs) <= 0) return "(silence)";
      char chunk[4096];
      const ssize_t size = ::read(descriptor_, chunk, sizeof chunk);
      if (size <= 0) return "(end)";
      received_.append(chunk, static_cast<std::size_t>(size));
    }
  }

  std::string Ask(std::string_view query) { return Send(query) ? Line() : "(cannot send)"; }

 private:
  int descriptor_;
  bool connected_ = true;
  std::string received_;
};

inline constexpr std::string_view kIdentity = "HALVERN&TOSKE,KEL 40,100123,5.10";

}  // namespace simulator
