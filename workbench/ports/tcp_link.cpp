#include "workbench/ports/tcp_link.h"

#include <array>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "workbench/ports/sockets.h"
#include "workbench/text.h"

namespace workbench {
namespace {

using sockets::Socket;

constexpr int kMostDrops = 64;

/// Closes the socket that it holds.
class OwnedSocket {
 public:
  explicit OwnedSocket(Socket socket) : socket_(socket) {}
  OwnedSocket(const OwnedSocket&) = delete;
  OwnedSocket& operator=(const OwnedSocket&) = delete;
  OwnedSocket(OwnedSocket&& other) noexcept : socket_(std::exchange(other.socket_, sockets::kNone)) {}
  OwnedSocket& operator=(OwnedSocket&&) = delete;
  ~OwnedSocket() {
    if (socket_ != sockets::kNone) sockets::Close(socket_);
  }
  Socket Get() const { return socket_; }

 private:
  Socket socket_;
};

class TcpLink final : public Link {
 public:
  TcpLink(OwnedSocket socket, std::string peer) : socket_(std::move(socket)), peer_(std::move(peer)) {}

  std::string_view Peer() const override { return peer_; }
  std::string Fault() const override { return sockets::ErrorText(error_); }

  Attempt Send(std::string_view rest) override {
    const auto sent = sockets::Send(socket_.Get(), rest.data(), rest.size());
    if (sent >= 0) return {Attempt::Outcome::kDone, static_cast<std::size_t>(sent), false};
    return Failed();
  }

  Attempt Receive(std::span<char> into) override {
    const auto received = sockets::Receive(socket_.Get(), into.data(), into.size());
    if (received > 0) return {Attempt::Outcome::kDone, static_cast<std::size_t>(received), false};
    if (received == 0) return {Attempt::Outcome::kClosed, 0, false};
    return Failed();
  }

  /// What was sent over the old connection can be answered over the old connection only.
  Cleared Clear(const Deadline&, double) override { return Cleared::kReopen; }

  Attempt DropArrived() override {
    std::array<char, 4096> arrived;
    std::size_t dropped = 0;
    char last = '\n';
    for (int i = 0; i < kMostDrops; ++i) {
      const auto received = sockets::ReceiveArrived(socket_.Get(), arrived.data(), arrived.size());
      if (received == 0) return {Attempt::Outcome::kClosed, dropped, false};
      if (received < 0) {
        Attempt attempt = Failed();
        attempt.bytes = dropped;
        if (attempt.outcome == Attempt::Outcome::kNothingYet && EndsLine(last)) {
          attempt.outcome = Attempt::Outcome::kDone;
        }
        return attempt;
      }
      dropped += static_cast<std::size_t>(received);
      last = arrived[static_cast<std::size_t>(received) - 1];
    }
    return {Attempt::Outcome::kNothingYet, dropped, false};
  }

 private:
  Attempt Failed() {
    error_ = sockets::LastError();
    if (sockets::WouldBlock(error_) || sockets::Signalled(error_)) return {};
    return {Attempt::Outcome::kLost, 0, false};
  }

  OwnedSocket socket_;
  std::string peer_;
  int error_ = 0;
};

struct FreeAddresses {
  void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

struct Resolution {
  int error = 0;
  Addresses addresses;
};

Resolution Resolve(const std::string& host_name, const std::string& port, int flags) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = flags | AI_NUMERICSERV;
  addrinfo* list = nullptr;
  Resolution resolution;
  resolution.error = ::getaddrinfo(host_name.c_str(), port.c_str(), &hints, &list);
  if (resolution.error == 0) resolution.addresses.reset(list);
  return resolution;
}

/// Looks the name up on a thread of its own: the system's look-up knows no deadline.
std::optional<Resolution> ResolveInTime(const std::string& host_name, const std::string& port,
                                        const Deadline& deadline) {
  if (auto numeric = Resolve(host_name, port, AI_NUMERICHOST); numeric.error == 0) return numeric;
  struct Shared {
    std::mutex mutex;
    std::optional<Resolution> result;
  };
  const auto shared = std::make_shared<Shared>();
  std::thread([shared, host_name, port] {
    auto result = Resolve(host_name, port, 0);
    const std::lock_guard lock(shared->mutex);
    shared->result = std::move(result);
  }).detach();
  for (auto pause = std::chrono::milliseconds(1);; pause = std::min(2 * pause, kSlice)) {
    {
      const std::lock_guard lock(shared->mutex);
      if (shared->result) return std::move(shared->result);
    }
    if (deadline.Expired() || deadline.Interrupted()) return std::nullopt;
    std::this_thread::sleep_for(pause);
  }
}

std::string Numeric(const addrinfo& address) {
  std::array<char, NI_MAXHOST> host_text{};
  std::array<char, NI_MAXSERV> port_text{};
  ::getnameinfo(address.ai_addr, static_cast<socklen_t>(address.ai_addrlen), host_text.data(),
                static_cast<socklen_t>(host_text.size()), port_text.data(),
                static_cast<socklen_t>(port_text.size()), NI_NUMERICHOST | NI_NUMERICSERV);
  return PeerName(host_text.data(), port_text.data());
}

struct Refusal {
  std::string why;
  bool reached = false;  // the host is there, the port is not
};

/// None where the address did not take the connection; says why.
std::optional<OwnedSocket> Connect(const addrinfo& address, const Deadline& deadline, Refusal& refusal) {
  const auto refused = [&refusal](int error) {
    refusal = {sockets::ErrorText(error), sockets::Refused(error)};
    return std::nullopt;
  };
#ifdef SOCK_CLOEXEC
  const int type = address.ai_socktype | SOCK_CLOEXEC;
#else
  const int type = address.ai_socktype;
#endif
  OwnedSocket socket(::socket(address.ai_family, type, address.ai_protocol));
  if (socket.Get() == sockets::kNone) {
    return refused(sockets::LastError());
  }
  sockets::Blocking(socket.Get(), false);
  if (::connect(socket.Get(), address.ai_addr, static_cast<socklen_t>(address.ai_addrlen)) != 0) {
    if (const int error = sockets::LastError(); !sockets::Connecting(error)) return refused(error);
    for (;;) {
      pollfd entry{};
      entry.fd = socket.Get();
      entry.events = POLLOUT;
      if (sockets::Poll(&entry, static_cast<int>(kSlice.count())) > 0) break;
      if (deadline.Interrupted()) {
        refusal.why = "the host interrupted";
        return std::nullopt;
      }
      if (deadline.Expired()) {
        refusal.why = "no answer within " + SecondsText(deadline.Seconds());
        return std::nullopt;
      }
    }
    int error = 0;
    socklen_t size = sizeof error;
    ::getsockopt(socket.Get(), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size);
    if (error != 0) return refused(error);
  }
  sockets::Blocking(socket.Get(), true);
  sockets::Flag(socket.Get(), IPPROTO_TCP, TCP_NODELAY, 1);
  sockets::Flag(socket.Get(), SOL_SOCKET, SO_KEEPALIVE, 1);
#ifdef TCP_KEEPIDLE
  sockets::Flag(socket.Get(), IPPROTO_TCP, TCP_KEEPIDLE, 30);
  sockets::Flag(socket.Get(), IPPROTO_TCP, TCP_KEEPINTVL, 10);
  sockets::Flag(socket.Get(), IPPROTO_TCP, TCP_KEEPCNT, 3);
#endif
  sockets::SliceOption(socket.Get(), SO_RCVTIMEO, kSlice);
  sockets::SliceOption(socket.Get(), SO_SNDTIMEO, kSlice);
  return socket;
}

}  // namespace

std::string PeerName(std::string_view host_name, std::string_view port) {
  std::string text;
  if (host_name.find(':') != std::string_view::npos) {
    text.append("[").append(host_name).append("]");
  } else {
    text.append(host_name);
  }
  return text.append(":").append(port);
}

namespace {

/// Connects to the first address that takes it, and says how far it got.
std::unique_ptr<Link> ConnectTcp(const std::string& host_name, const std::string& port,
                                 const Deadline& deadline, TcpLayers& layers) {
  using Layer = TcpLayers::Layer;
  sockets::Start();
  layers.fails = Layer::kName;
  if (deadline.Interrupted()) {
    layers.why = "the host interrupted";
    return nullptr;
  }
  const auto resolution = ResolveInTime(host_name, port, deadline);
  if (!resolution) {
    layers.why = deadline.Interrupted() ? "the host interrupted the look-up of the name"
                                        : "the name was not found within " + SecondsText(deadline.Seconds());
    return nullptr;
  }
  if (resolution->error != 0) {
    layers.why = std::string("the name was not found (") + ::gai_strerror(resolution->error) + ")";
    return nullptr;
  }
  layers.fails = Layer::kReachability;
  for (const addrinfo* address = resolution->addresses.get(); address != nullptr;
       address = address->ai_next) {
    Refusal refusal;
    auto socket = Connect(*address, deadline, refusal);
    const std::string numeric = Numeric(*address);
    layers.addresses.append(layers.addresses.empty() ? "" : ", ").append(numeric);
    if (socket) {
      layers.fails = Layer::kAll;
      return std::make_unique<TcpLink>(std::move(*socket), numeric);
    }
    if (refusal.reached) layers.fails = Layer::kPort;
    if (!layers.why.empty()) layers.why += "; ";
    layers.why.append(numeric).append(": ").append(refusal.why);
    if (deadline.Expired() || deadline.Interrupted()) break;
  }
  return nullptr;
}

}  // namespace

std::unique_ptr<Link> ConnectTcp(const std::string& host_name, const std::string& port,
                                 const Deadline& deadline, std::string& why) {
  TcpLayers layers;
  auto link = ConnectTcp(host_name, port, deadline, layers);
  why = layers.why;
  return link;
}

TcpLayers ExamineTcp(const std::string& host_name, const std::string& port, const Deadline& deadline) {
  TcpLayers layers;
  ConnectTcp(host_name, port, deadline, layers);
  return layers;
}

}  // namespace workbench
