#include "workbench/tests/ports/peer.h"

#include <arpa/inet.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdlib.h>  // NOLINT: posix_openpt and its kin are not in <cstdlib>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <stdexcept>
#include <utility>

#include "workbench/tests/ports/standin_gpib.h"

namespace workbench::test {
namespace {

using std::chrono::steady_clock;

class SocketWire final : public Wire {
 public:
  explicit SocketWire(int descriptor) : descriptor_(descriptor) {}
  void Send(std::string_view bytes) override {
    while (!bytes.empty()) {
      const ssize_t sent = ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent <= 0) return;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
  }
  void Pause(std::chrono::milliseconds time) override { std::this_thread::sleep_for(time); }
  void Close() override { ::shutdown(descriptor_, SHUT_RDWR); }
  void Reset() override {
    // Closing with this set sends a reset; an unconnected address makes the same of a descriptor still in
    // use.
    const linger abort{1, 0};
    ::setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
    sockaddr nothing{};
    nothing.sa_family = AF_UNSPEC;
    static_cast<void>(::connect(descriptor_, &nothing, sizeof nothing));
  }

 private:
  int descriptor_;
};

/// Calls `line` for each complete line of what comes in.
template <typename Line>
void ForEachLine(std::string& incoming, Line line) {
  for (std::size_t end = incoming.find('\n'); end != std::string::npos; end = incoming.find('\n')) {
    const std::string text = incoming.substr(0, end);
    incoming.erase(0, end + 1);
    line(text);
  }
}

TcpPeer::Session SessionOf(Script script) {
  return [script = std::move(script)](int descriptor) {
    SocketWire wire(descriptor);
    std::string incoming;
    std::array<char, 4096> bytes{};
    for (;;) {
      const ssize_t received = ::recv(descriptor, bytes.data(), bytes.size(), 0);
      if (received <= 0) return;
      incoming.append(bytes.data(), static_cast<std::size_t>(received));
      ForEachLine(incoming, [&](const std::string& line) { script(line, wire); });
    }
  };
}

}  // namespace

TcpPeer::TcpPeer(Script script, bool ipv6) : TcpPeer(SessionOf(std::move(script)), ipv6) {}

TcpPeer::TcpPeer(Session session, bool ipv6) : session_(std::move(session)), ipv6_(ipv6) {
  listener_ = ::socket(ipv6 ? AF_INET6 : AF_INET, SOCK_STREAM, 0);
  sockaddr_storage address{};
  socklen_t size = ipv6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
  if (ipv6) {
    auto& v6 = reinterpret_cast<sockaddr_in6&>(address);
    v6.sin6_family = AF_INET6;
    v6.sin6_addr = in6addr_loopback;
  } else {
    auto& v4 = reinterpret_cast<sockaddr_in&>(address);
    v4.sin_family = AF_INET;
    v4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  }
  if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(listener_, 64) != 0) {
    throw std::runtime_error("no loopback port");
  }
  ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
  port_ = ntohs(ipv6 ? reinterpret_cast<sockaddr_in6&>(address).sin6_port
                     : reinterpret_cast<sockaddr_in&>(address).sin_port);
  acceptor_ = std::thread([this] { Accept(); });
}

TcpPeer::~TcpPeer() {
  ::shutdown(listener_, SHUT_RDWR);
  acceptor_.join();
  for (Served& client : served_) {
    ::shutdown(client.descriptor, SHUT_RDWR);
    client.thread.join();
    ::close(client.descriptor);
  }
  ::close(listener_);
}

void TcpPeer::Accept() {
  for (;;) {
    const int descriptor = ::accept(listener_, nullptr, nullptr);
    if (descriptor < 0) return;
    const int on = 1;
    ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    ++connections_;
    const std::lock_guard lock(mutex_);
    std::erase_if(served_, [](Served& client) {
      if (!client.over) return false;
      client.thread.join();
      ::close(client.descriptor);
      return true;
    });
    Served& client = served_.emplace_back();
    client.descriptor = descriptor;
    client.thread = std::thread([this, &client] {
      session_(client.descriptor);
      ::shutdown(client.descriptor, SHUT_RDWR);
      client.over = true;
    });
  }
}

void TcpPeer::Disconnect() {
  const std::lock_guard lock(mutex_);
  for (const Served& client : served_) ::shutdown(client.descriptor, SHUT_RDWR);
}

void TcpPeer::Configure(host::ParameterNode& settings) {
  settings.Item("Host")->SetValue(std::string(ipv6_ ? "::1" : "127.0.0.1"), -1, -1);
  settings.Item("Port")->SetValue(std::int32_t{port_}, -1, -1);
}

PtyPeer::PtyPeer(Script script)
    : PtyPeer(Stream{
          [script = std::move(script), incoming = std::string()](std::string_view bytes, Wire& wire) mutable {
            incoming.append(bytes);
            ForEachLine(incoming, [&](const std::string& line) { script(line, wire); });
          }}) {}

PtyPeer::PtyPeer(Stream stream) {
  master_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  std::array<char, 64> name{};
  if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0 ||
      ::ptsname_r(master_, name.data(), name.size()) != 0) {
    throw std::runtime_error("no pseudo-terminal");
  }
  path_ = name.data();
  // Opened once and closed again, the line is in raw mode before the first byte.
  const int slave = ::open(path_.c_str(), O_RDWR | O_NOCTTY);
  termios line{};
  ::tcgetattr(slave, &line);
  ::cfmakeraw(&line);
  ::tcsetattr(slave, TCSANOW, &line);
  ::close(slave);
  thread_ = std::thread([this, stream = std::move(stream)] { Serve(stream); });
}

termios PtyPeer::Line() const {
  termios line{};
  if (::tcgetattr(master_, &line) != 0) throw std::runtime_error("the line cannot be looked at");
  return line;
}

PtyPeer::~PtyPeer() { Unplug(); }

void PtyPeer::Unplug() {
  stop_ = true;
  if (thread_.joinable()) thread_.join();
  if (master_ >= 0) ::close(master_);
  master_ = -1;
}

void PtyPeer::Serve(const Stream& stream) {
  class PtyWire final : public Wire {
   public:
    explicit PtyWire(int descriptor) : descriptor_(descriptor) {}
    void Send(std::string_view bytes) override {
      while (!bytes.empty()) {
        const ssize_t sent = ::write(descriptor_, bytes.data(), bytes.size());
        if (sent <= 0) return;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
      }
    }
    void Pause(std::chrono::milliseconds time) override { std::this_thread::sleep_for(time); }

   private:
    int descriptor_;
  };
  PtyWire wire(master_);
  std::array<char, 4096> bytes{};
  while (!stop_) {
    pollfd entry{master_, POLLIN, 0};
    if (::poll(&entry, 1, 10) <= 0) continue;
    if ((entry.revents & POLLIN) == 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));  // nobody has the other end open
      continue;
    }
    const ssize_t received = ::read(master_, bytes.data(), bytes.size());
    if (received > 0) stream.take({bytes.data(), static_cast<std::size_t>(received)}, wire);
  }
}

void PtyPeer::Configure(host::ParameterNode& settings) {
  settings.Item("Comm Port")->SetValue(std::string("COM3"), -1, -1);
}

void BusDevice::Write(std::string_view bytes) {
  class QueueWire final : public Wire {
   public:
    explicit QueueWire(std::deque<Chunk>& queue) : queue_(queue) {}
    void Send(std::string_view sent) override {
      queue_.push_back({ready_, std::string(sent), !sent.empty() && EndsLine(sent.back())});
    }
    void SendAndMark(std::string_view sent) override { queue_.push_back({ready_, std::string(sent), true}); }
    void Pause(std::chrono::milliseconds time) override { ready_ += time; }

   private:
    std::deque<Chunk>& queue_;
    steady_clock::time_point ready_ = steady_clock::now();
  };
  const std::lock_guard lock(mutex_);
  QueueWire wire(outgoing_);
  incoming_.append(bytes);
  ForEachLine(incoming_, [&](const std::string& line) { script_(line, wire); });
}

std::string BusDevice::Read(std::size_t most, std::chrono::microseconds timeout, bool& end) {
  const auto until = steady_clock::now() + timeout;
  std::string bytes;
  end = false;
  for (;;) {
    {
      const std::lock_guard lock(mutex_);
      while (!outgoing_.empty() && outgoing_.front().ready <= steady_clock::now() && bytes.size() < most) {
        std::string& front = outgoing_.front().bytes;
        const std::size_t taken = std::min(front.size(), most - bytes.size());
        bytes.append(front, 0, taken);
        front.erase(0, taken);
        if (!front.empty()) break;
        const bool mark = outgoing_.front().mark;
        outgoing_.pop_front();
        if (outgoing_.empty()) end = mark;
      }
    }
    if (end || bytes.size() == most || steady_clock::now() >= until) return bytes;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

void BusDevice::Clear() {
  const std::lock_guard lock(mutex_);
  ++clears_;
  incoming_.clear();
  outgoing_.clear();
}

void Adapter::Take(std::string_view bytes, Wire& wire) {
  for (const char c : bytes) {
    if (!escaped_ && c == '\x1b') {
      escaped_ = has_escape_ = true;
    } else if (!escaped_ && c == '\n') {
      Obey(wire);
      line_.clear();
      has_escape_ = false;
    } else {
      line_ += c;
      escaped_ = false;
    }
  }
}

void Adapter::Obey(Wire& wire) {
  if (has_escape_ || !line_.starts_with("++")) {
    if (in_charge_ && address_ == 6) device_.Write(line_ + "\n");
    return;
  }
  if (line_ == "++ver" && !loses_version_.exchange(false)) wire.Send("Test adapter, version 1.0\r\n");
  if (line_.starts_with("++addr ")) address_ = std::stoi(line_.substr(7));
  if (line_ == "++mode 1") in_charge_ = true;
  if (line_.starts_with("++read_tmo_ms ")) {
    read_timeout_ = std::chrono::milliseconds(std::stoi(line_.substr(14)));
  }
  if (line_ == "++clr" && address_ == 6) device_.Clear();
  if (line_ == "++loc" && address_ == 6) device_.GoToLocal();
  if (line_ == "++read eoi" && address_ == 6) Read(wire);
}

/// The time-out runs anew with each byte.
void Adapter::Read(Wire& wire) {
  constexpr std::chrono::milliseconds kSlice{10};
  ++reads_;
  if (gives_up_) return;
  auto until = steady_clock::now() + read_timeout_;
  for (bool end = false; !end && steady_clock::now() < until && !(abandoned_ && abandoned_());) {
    const std::string part = device_.Read(256, kSlice, end);
    if (part.empty()) continue;
    wire.Send(part);
    until = steady_clock::now() + read_timeout_;
  }
}

AdapterPeer::AdapterPeer(Script script, std::chrono::milliseconds deaf)
    : device_(std::move(script)), server_(TcpPeer::Session([this, deaf](int descriptor) {
        SocketWire wire(descriptor);
        const int session = ++sessions_;
        Adapter adapter(device_, [this, session] { return sessions_ != session; });
        const auto awake = steady_clock::now() + deaf;
        std::array<char, 4096> bytes{};
        for (;;) {
          const ssize_t received = ::recv(descriptor, bytes.data(), bytes.size(), 0);
          if (received <= 0) return;
          if (steady_clock::now() < awake) continue;
          adapter.Take({bytes.data(), static_cast<std::size_t>(received)}, wire);
        }
      })) {}

void AdapterPeer::Configure(host::ParameterNode& settings) {
  settings.Item("Interface")->SetValue(std::string("tcp"), -1, -1);
  settings.Item("Primary Address")->SetValue(std::int16_t{6}, -1, -1);
  settings.Item("Adapter Host")->SetValue(std::string("127.0.0.1"), -1, -1);
  settings.Item("Adapter Port")->SetValue(std::int32_t{server_.Port()}, -1, -1);
}

SerialAdapterPeer::SerialAdapterPeer(Script script)
    : device_(std::move(script)),
      adapter_(device_),
      line_(Stream{[this](std::string_view bytes, Wire& wire) { adapter_.Take(bytes, wire); }}) {}

void SerialAdapterPeer::Configure(host::ParameterNode& settings) {
  settings.Item("Interface")->SetValue(std::string("serial"), -1, -1);
  settings.Item("Primary Address")->SetValue(std::int16_t{6}, -1, -1);
  settings.Item("Adapter Device")->SetValue(line_.Path(), -1, -1);
}

namespace {

/// A link in whose place a script answers, within the caller's thread.
class ScriptedLink final : public WrappedLink {
 public:
  ScriptedLink(std::unique_ptr<Link> link, Script script)
      : WrappedLink(std::move(link)), script_(std::move(script)), wire_(*this) {}

  std::string Fault() const override { return "the connection was reset"; }

  Attempt Send(std::string_view rest) override {
    if (ended_) return {*ended_, 0, false};
    wire_.ready = steady_clock::now();
    incoming_.append(rest);
    ForEachLine(incoming_, [&](const std::string& line) { script_(line, wire_); });
    return {Attempt::Outcome::kDone, rest.size(), false};
  }

  Attempt Receive(std::span<char> into) override {
    if (queue_.empty()) return {ended_.value_or(Attempt::Outcome::kSilent), 0, false};
    if (queue_.front().ready > steady_clock::now()) {
      std::this_thread::sleep_until(
          std::min(queue_.front().ready, steady_clock::now() + std::chrono::milliseconds(20)));
      return {};
    }
    std::string& bytes = queue_.front().bytes;
    const std::size_t size = std::min(bytes.size(), into.size());
    std::copy_n(bytes.begin(), size, into.begin());
    bytes.erase(0, size);
    if (bytes.empty()) queue_.pop_front();
    return {Attempt::Outcome::kDone, size, false};
  }

  Attempt ReceiveUnasked(std::span<char> into) override { return Receive(into); }

  Cleared Clear(const Deadline& deadline, double since) override {
    queue_.clear();
    return WrappedLink::Clear(deadline, since);
  }

  Attempt DropArrived() override {
    const std::string dropped = Drop();
    const bool whole = dropped.empty() || EndsLine(dropped.back());
    return {whole ? Attempt::Outcome::kDone : Attempt::Outcome::kNothingYet, dropped.size(), false};
  }

 private:
  struct Chunk {
    steady_clock::time_point ready;
    std::string bytes;
  };

  class QueueWire final : public Wire {
   public:
    explicit QueueWire(ScriptedLink& link) : link_(link) {}
    void Send(std::string_view bytes) override {
      if (!link_.ended_) link_.queue_.push_back({ready, std::string(bytes)});
    }
    void Pause(std::chrono::milliseconds time) override { ready += time; }
    void Close() override { link_.ended_ = Attempt::Outcome::kClosed; }
    void Reset() override { link_.ended_ = Attempt::Outcome::kLost; }

    steady_clock::time_point ready;

   private:
    ScriptedLink& link_;
  };

  std::string Drop() {
    std::string dropped;
    while (!queue_.empty() && queue_.front().ready <= steady_clock::now()) {
      dropped += queue_.front().bytes;
      queue_.pop_front();
    }
    return dropped;
  }

  Script script_;
  QueueWire wire_;
  std::string incoming_;
  std::deque<Chunk> queue_;
  std::optional<Attempt::Outcome> ended_;
};

}  // namespace

LinkWrapper FrontPanelPeer::Between() {
  return
      [this](std::unique_ptr<Link> link) { return std::make_unique<ScriptedLink>(std::move(link), script_); };
}

LibraryPeer::LibraryPeer(Script script) : device_(std::move(script)) {
  library_ = ::dlopen(STANDIN_GPIB_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  if (library_ == nullptr) throw std::runtime_error(::dlerror());
  const StandinDevice device{
      &device_,
      [](void* context, const char* bytes, long size) {
        static_cast<BusDevice*>(context)->Write({bytes, static_cast<std::size_t>(size)});
      },
      [](void* context, char* bytes, long most, long timeout_us, int* end) {
        bool ended = false;
        const std::string read = static_cast<BusDevice*>(context)->Read(
            static_cast<std::size_t>(most), std::chrono::microseconds(timeout_us), ended);
        std::copy(read.begin(), read.end(), bytes);
        *end = ended ? 1 : 0;
        return static_cast<long>(read.size());
      },
      [](void* context) { static_cast<BusDevice*>(context)->Clear(); },
      [](void* context) { static_cast<BusDevice*>(context)->GoToLocal(); },
  };
  reinterpret_cast<StandinAttach*>(::dlsym(library_, "standin_attach"))(6, &device);
}

LibraryPeer::~LibraryPeer() {
  reinterpret_cast<StandinAttach*>(::dlsym(library_, "standin_attach"))(6, nullptr);
  ::dlclose(library_);
}

void LibraryPeer::Configure(host::ParameterNode& settings) {
  settings.Item("Interface")->SetValue(std::string("library"), -1, -1);
  settings.Item("Library")->SetValue(std::string(STANDIN_GPIB_LIBRARY), -1, -1);
  settings.Item("Primary Address")->SetValue(std::int16_t{6}, -1, -1);
}

}  // namespace workbench::test
