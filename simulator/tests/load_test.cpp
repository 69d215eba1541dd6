// The server under load: 500 clients of all kinds at once, while what an ordinary client meets, what the
// server takes and what it gives back are measured. QKEL4X_ENDURANCE=100 makes each second a hundred times
// longer and prints a table.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/tcp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "simulator/tcp_server.h"
#include "simulator/tests/client.h"

namespace simulator {
namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SIMULATOR_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define SIMULATOR_SANITIZED 1
#endif
#endif
#ifdef SIMULATOR_SANITIZED
constexpr bool kSanitized = true;  // slower, and freed memory is kept for a while
#else
constexpr bool kSanitized = false;
#endif

constexpr double kLongestWait = kSanitized ? 10.0 : 1.0;  // seconds, on a busy machine
constexpr Seconds kAllLeft{kSanitized ? 180.0 : 60.0};

double Endurance() {
  const char* const factor = std::getenv("QKEL4X_ENDURANCE");
  return factor == nullptr ? 0.0 : std::atof(factor);
}

// The server in a process of its own, so that its memory, descriptors and threads can be told from the
// clients'.
class ServerProcess {
 public:
  ServerProcess() {
    int stop[2];
    int ready[2];
    if (::pipe2(stop, O_CLOEXEC) != 0 || ::pipe2(ready, O_CLOEXEC) != 0) std::abort();
    std::fflush(stdout);  // or it would be written twice
    child_ = ::fork();
    if (child_ == 0) {
      ::close(stop[1]);
      Serve(stop[0], ready[1]);
    }
    ::close(stop[0]);
    ::close(ready[1]);
    stop_ = stop[1];
    std::string text;
    char chunk[256];
    for (ssize_t size = 0; (size = ::read(ready[0], chunk, sizeof chunk)) > 0;) {
      text.append(chunk, static_cast<std::size_t>(size));
    }
    ::close(ready[0]);
    std::istringstream(text) >> port_ >> second_port_;
  }
  ~ServerProcess() {
    ::close(stop_);
    int status = -1;
    ::waitpid(child_, &status, 0);
    EXPECT_EQ(status, 0) << "the server ended badly";
  }
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  std::uint16_t Port() const { return port_; }
  /// Of another server of the same instrument, with a thread of its own.
  std::uint16_t SecondPort() const { return second_port_; }

  double Megabytes() const {
    std::ifstream statm(Proc("statm"));
    double all = 0.0;
    double resident = 0.0;
    statm >> all >> resident;
    return resident * static_cast<double>(::sysconf(_SC_PAGESIZE)) * 1e-6;
  }
  std::size_t Descriptors() const { return Entries("fd"); }
  std::size_t Threads() const { return Entries("task"); }

 private:
  [[noreturn]] static void Serve(int stop, int ready) {
    {
      SharedInstrument instrument(Configuration(),
                                  [start = Clock::now()] { return Seconds(Clock::now() - start).count(); });
      TcpServer server(instrument);
      TcpServer second(instrument);
      const std::string text = std::to_string(server.Port()) + " " + std::to_string(second.Port());
      if (::write(ready, text.data(), text.size()) < 0) ::_exit(1);
      ::close(ready);
      char byte = 0;
      while (::read(stop, &byte, 1) > 0) {
      }
    }
    ::_exit(0);
  }
  std::string Proc(const char* entry) const { return "/proc/" + std::to_string(child_) + "/" + entry; }
  std::size_t Entries(const char* directory) const {
    std::error_code error;
    std::filesystem::directory_iterator entries(Proc(directory), error);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
  }

  pid_t child_ = 0;
  int stop_ = -1;
  std::uint16_t port_ = 0;
  std::uint16_t second_port_ = 0;
};

// What the system holds for all TCP connections.
double SocketMegabytes() {
  std::ifstream sockstat("/proc/net/sockstat");
  std::string word;
  while (sockstat >> word && word != "TCP:") {
  }
  while (sockstat >> word && word != "mem") {
  }
  double pages = 0.0;
  sockstat >> pages;
  return pages * static_cast<double>(::sysconf(_SC_PAGESIZE)) * 1e-6;
}

// Requests of the crowd -------------------------------------------------------------------------------------

std::string IdentityLine() { return std::string(kIdentity) + "\n"; }

// 64 KiB of commands, each of which makes the instrument compute anew; and what they answer.
struct Exchange {
  std::string request;
  std::string reply;
};
Exchange GiantCommands() {
  static constexpr std::string_view kCommands = ":SENS:ATSC:NOIS 20;:READ:SIGN:RF?;:READ:SCR:BUFF?";
  Exchange exchange;
  while (exchange.request.size() + kCommands.size() + 2 <= 65'536) {
    if (!exchange.request.empty()) {
      exchange.request += ';';
      exchange.reply += ';';
    }
    exchange.request += kCommands;
    exchange.reply += "OK;0";
  }
  exchange.request += '\n';
  exchange.reply += '\n';
  return exchange;
}

// As many long texts as a reply may hold.
Exchange BigReply() {
  Exchange exchange;
  while (exchange.reply.size() + kIdentity.size() + 2 <= 262'144) {
    if (!exchange.request.empty()) {
      exchange.request += ';';
      exchange.reply += ';';
    }
    exchange.request += "*IDN?";
    exchange.reply += kIdentity;
  }
  exchange.request += '\n';
  exchange.reply += '\n';
  return exchange;
}

std::string Junk() {
  std::string junk;
  unsigned state = 1;
  for (int i = 0; i < 200'000; ++i) {
    state = state * 1664525U + 1013904223U;
    junk.push_back(static_cast<char>(state >> 24));
  }
  return junk;
}

// One kind of client: sends its request over and over.
struct Kind {
  std::string request;
  std::string reply;      // to each request
  bool reads = true;      // its replies at once, or at the end only
  bool waits = true;      // for the reply before the next request
  double byte_pause = 0;  // seconds between two bytes; 0: as fast as they are taken
};

class Guest {
 public:
  Guest(const Kind& kind, std::uint16_t port) : kind_(&kind), descriptor_(::socket(AF_INET, SOCK_STREAM, 0)) {
    // Little room on this side, so that what the system holds is the server's.
    const int small = 4096;
    ::setsockopt(descriptor_, SOL_SOCKET, SO_SNDBUF, &small, sizeof small);
    if (!kind.reads) ::setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    alive_ = ::connect(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    const int on = 1;
    ::setsockopt(descriptor_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    ::fcntl(descriptor_, F_SETFL, O_NONBLOCK);
  }
  ~Guest() { ::close(descriptor_); }
  Guest(const Guest&) = delete;
  Guest& operator=(const Guest&) = delete;

  bool Right() const { return alive_ && right_; }
  bool Reads() const { return kind_->reads || ending_; }
  bool Ended() const { return !alive_ || (ending_ && end_at_ == end_.size() && received_ == expected_); }

  // What to poll for.
  pollfd Wanted() const {
    if (!alive_) return {-1, 0, 0};
    short events = 0;
    if (Reads()) events |= POLLIN;
    if (HasToSend()) events |= POLLOUT;
    return {descriptor_, events, 0};
  }

  // From now on: finishes its request where that has a reply, asks one last question and reads what is due.
  void End() {
    ending_ = true;
    if (kind_->reply.empty()) at_ = 0;
    end_ = "\n*IDN?\n";
  }

  void Send() {
    const double pause = ending_ ? 0.0 : kind_->byte_pause;
    const bool last = ending_ && at_ == 0;
    const std::string& text = last ? end_ : kind_->request;
    std::size_t& at = last ? end_at_ : at_;
    const std::size_t size = pause > 0.0 ? 1 : text.size() - at;
    const ssize_t sent = ::send(descriptor_, text.data() + at, size, MSG_NOSIGNAL);
    if (sent < 0) {
      alive_ = errno == EAGAIN;
      return;
    }
    if (pause > 0.0) next_byte_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(Seconds(pause));
    at += static_cast<std::size_t>(sent);
    if (at < text.size()) return;
    if (last) {
      expected_ += IdentityLine().size();
    } else {
      at_ = 0;
      ++requests_;
      expected_ += kind_->reply.size();
    }
  }

  void Receive() {
    static const std::string identity = IdentityLine();
    char chunk[65'536];
    const ssize_t size = ::read(descriptor_, chunk, sizeof chunk);
    if (size <= 0) {
      alive_ = size < 0 && errno == EAGAIN;
      return;
    }
    const std::size_t replies = requests_ * kind_->reply.size();
    for (std::size_t i = 0; i < static_cast<std::size_t>(size); ++i, ++received_) {
      const char due = received_ < replies                ? kind_->reply[received_ % kind_->reply.size()]
                       : received_ < expected_ && ending_ ? identity[received_ - replies]
                                                          : '\0';
      right_ = right_ && chunk[i] == due;
    }
  }

 private:
  bool HasToSend() const {
    if (ending_) return end_at_ < end_.size();
    if (kind_->byte_pause > 0.0 && Clock::now() < next_byte_) return false;
    return !kind_->waits || at_ > 0 || received_ == expected_;
  }

  const Kind* kind_;
  int descriptor_;
  bool alive_ = false;
  bool right_ = true;
  bool ending_ = false;
  std::size_t at_ = 0;  // in the request
  std::string end_;
  std::size_t end_at_ = 0;
  std::size_t requests_ = 0;
  std::size_t expected_ = 0;
  std::size_t received_ = 0;
  Clock::time_point next_byte_{};
};

// Many clients in one thread.
class Crowd {
 public:
  void Add(const Kind& kind, std::size_t count, std::uint16_t port) {
    for (std::size_t i = 0; i < count; ++i) guests_.push_back(std::make_unique<Guest>(kind, port));
  }

  // Serves the clients until `done()`; false when that took longer than `longest`.
  template <class Done>
  bool Run(Seconds longest, const Done& done) {
    std::vector<pollfd> polled;
    for (const auto end = Clock::now() + longest; !done();) {
      if (Clock::now() > end) return false;
      polled.clear();
      for (const auto& guest : guests_) polled.push_back(guest->Wanted());
      if (::poll(polled.data(), polled.size(), 2) <= 0) continue;
      for (std::size_t i = 0; i < polled.size(); ++i) {
        if ((polled[i].revents & (POLLIN | POLLHUP | POLLERR)) != 0) guests_[i]->Receive();
        if ((polled[i].revents & POLLOUT) != 0) guests_[i]->Send();
      }
    }
    return true;
  }

  // Every client asks one last question and reads all that is due; of those who never read, one in ten.
  void End() {
    std::size_t lazy = 0;
    std::erase_if(guests_, [&](const auto& guest) { return !guest->Reads() && lazy++ % 10 != 0; });
    for (const auto& guest : guests_) guest->End();
  }
  bool Ended() const {
    return std::all_of(guests_.begin(), guests_.end(), [](const auto& guest) { return guest->Ended(); });
  }
  std::size_t Wrong() const {
    return static_cast<std::size_t>(
        std::count_if(guests_.begin(), guests_.end(), [](const auto& guest) { return !guest->Right(); }));
  }

 private:
  std::vector<std::unique_ptr<Guest>> guests_;
};

// Connects and leaves again and again, at any point of an exchange.
class Comers {
 public:
  void Run(std::uint16_t port, const std::atomic<bool>& stop) {
    const std::string giant = GiantCommands().request;
    while (!stop) {
      Client client(port);
      switch (visits_++ % 5) {
        case 0:
          break;
        case 1:
          client.SendWhatFits("*IDN");
          break;
        case 2:
          client.SendWhatFits("*IDN?\n*IDN?\n");
          break;
        case 3:
          client.SendWhatFits(giant);
          break;
        default:
          const std::string answer = client.Ask("*IDN?\n");
          // Where those who left have lines under way, all places may be taken.
          if (answer == "(end)") {
            ++turned_away_;
          } else if (answer != kIdentity) {
            ++wrong_;
          }
      }
      // At most a thousand a second, or the system runs out of ports that it has not just used.
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  std::size_t Visits() const { return visits_; }
  std::size_t TurnedAway() const { return turned_away_; }
  std::size_t Wrong() const { return wrong_; }

 private:
  std::size_t visits_ = 0;
  std::size_t turned_away_ = 0;
  std::size_t wrong_ = 0;
};

// An ordinary client: asks, checks and notes how long each answer took. Eight commands of one line stay
// together whatever the others do.
class Asker {
 public:
  void Run(Client& client, const std::atomic<bool>& stop) {
    static constexpr std::string_view kTogether =
        "SENS:ATSC:NOIS 33;NOIS?;NOIS?;NOIS?;NOIS?;NOIS?;NOIS?;NOIS?\n";
    for (bool identity = true; !stop; identity = !identity) {
      const auto asked = Clock::now();
      const std::string answer = client.Ask(identity ? "*IDN?\n" : kTogether);
      waits_.push_back(Seconds(Clock::now() - asked).count());
      if (answer != (identity ? kIdentity : "33;33;33;33;33;33;33")) ++wrong_;
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    std::sort(waits_.begin(), waits_.end());
  }
  std::size_t Asked() const { return waits_.size(); }
  std::size_t Wrong() const { return wrong_; }
  double Wait(double share) const {
    if (waits_.empty()) return -1.0;
    return waits_[static_cast<std::size_t>(share * static_cast<double>(waits_.size() - 1))];
  }

 private:
  std::vector<double> waits_;
  std::size_t wrong_ = 0;
};

// The loads
// --------------------------------------------------------------------------------------------------

const Exchange kGiant = GiantCommands();
const Exchange kBig = BigReply();
const Kind kAsks{.request = "*IDN?\n", .reply = IdentityLine()};
const Kind kNeverReads{.request = "*IDN?\n", .reply = IdentityLine(), .reads = false, .waits = false};
const Kind kNeverReadsBig{.request = kBig.request, .reply = kBig.reply, .reads = false, .waits = false};
const Kind kGiantCommands{.request = kGiant.request, .reply = kGiant.reply};
const Kind kNoLineEnd{.request = std::string(1 << 20, 'A'), .reply = "", .waits = false};
const Kind kJunk{.request = Junk(), .reply = "", .waits = false};
const Kind kTrickles{.request = "*IDN?\n", .reply = IdentityLine(), .byte_pause = 1.0};

struct Share {
  const Kind* kind;
  std::size_t clients;
};
struct Load {
  const char* name;
  const char* description;
  double most_megabytes;  // that the server may grow
  std::vector<Share> shares;
  bool comers = false;
};

// The ordinary client is one of the 500.
const Load kLoads[] = {
    {"AllAsk", "499 ask and read", 24, {{&kAsks, 499}}},
    {"NoneReads", "499 never read", 48, {{&kNeverReads, 499}}},
    {"NoneReadsBigReplies", "499 ask for 256 KiB at once and never read", 320, {{&kNeverReadsBig, 499}}},
    {"GiantCommandLines", "499 send lines of 64 KiB full of commands", 96, {{&kGiantCommands, 499}}},
    {"NoLineEnd", "499 send megabytes without a line end", 96, {{&kNoLineEnd, 499}}},
    {"Junk", "499 send binary junk", 48, {{&kJunk, 499}}},
    {"Trickle", "499 send a byte a second", 24, {{&kTrickles, 499}}},
    {"ComeAndGo", "400 ask, others come and go", 48, {{&kAsks, 400}}, true},
    {"AllAtOnce",
     "60 of each kind, others come and go",
     160,
     {{&kAsks, 60},
      {&kNeverReads, 60},
      {&kGiantCommands, 60},
      {&kNoLineEnd, 60},
      {&kJunk, 60},
      {&kTrickles, 60}},
     true},
};

class ServerLoad : public testing::TestWithParam<Load> {
 protected:
  static void SetUpTestSuite() {
    if (Endurance() == 0.0) return;
    std::puts(
        "| load | answers | 99 % within | longest wait | longest at a second server | grown by | system's "
        "buffers |\n"
        "|---|---|---|---|---|---|---|");
  }
};

TEST_P(ServerLoad, NeitherGrowsNorStallsTheOthers) {
  const Load& load = GetParam();
  const Seconds duration(0.3 * std::max(1.0, Endurance()));
  ServerProcess server;
  ASSERT_NE(server.Port(), 0);
  const std::size_t descriptors = server.Descriptors();
  const std::size_t threads = server.Threads();
  const double memory = server.Megabytes();
  const double buffers = SocketMegabytes();

  double most_memory = memory;
  double most_buffers = buffers;
  Asker asker;
  Asker elsewhere;
  Comers comers;
  {
    Client client(server.Port());
    ASSERT_EQ(client.Ask("*IDN?\n"), kIdentity);
    Client neighbour(server.SecondPort());
    ASSERT_EQ(neighbour.Ask("*IDN?\n"), kIdentity);
    Crowd crowd;
    for (const Share& share : load.shares) crowd.Add(*share.kind, share.clients, server.Port());

    std::atomic<bool> stop = false;
    std::vector<std::thread> others;
    others.emplace_back([&] { asker.Run(client, stop); });
    others.emplace_back([&] { elsewhere.Run(neighbour, stop); });
    if (load.comers) others.emplace_back([&] { comers.Run(server.Port(), stop); });
    const auto end = Clock::now() + duration;
    auto look = Clock::now();
    crowd.Run(2 * duration, [&] {
      const auto now = Clock::now();
      if (now >= look) {
        look = now + std::chrono::milliseconds(20);
        most_memory = std::max(most_memory, server.Megabytes());
        most_buffers = std::max(most_buffers, SocketMegabytes());
      }
      return now >= end;
    });
    stop = true;
    for (std::thread& other : others) other.join();

    crowd.End();
    EXPECT_TRUE(crowd.Run(kAllLeft, [&] { return crowd.Ended(); })) << "some got no answer in the end";
    most_memory = std::max(most_memory, server.Megabytes());
    EXPECT_EQ(crowd.Wrong(), 0U) << "clients with a wrong answer or a lost connection";
  }

  EXPECT_EQ(asker.Wrong(), 0U);
  EXPECT_EQ(elsewhere.Wrong(), 0U);
  EXPECT_EQ(comers.Wrong(), 0U);
  EXPECT_GT(asker.Asked(), 0U);
  EXPECT_GT(elsewhere.Asked(), 0U);
  EXPECT_LT(asker.Wait(1.0), kLongestWait);
  EXPECT_LT(elsewhere.Wait(1.0), kLongestWait);
  if (!kSanitized) {
    EXPECT_LT(most_memory, memory + load.most_megabytes);
  }

  // What the others sent last may still be under way.
  for (const auto end = Clock::now() + kAllLeft; server.Descriptors() > descriptors && Clock::now() < end;) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  EXPECT_EQ(server.Descriptors(), descriptors);
  EXPECT_EQ(server.Threads(), threads);
  Client next(server.Port());
  EXPECT_EQ(next.Ask("*IDN?\n"), kIdentity);

  if (Endurance() == 0.0) return;
  std::printf("| %s | %zu | %.1f ms | %.1f ms | %.1f ms | %.1f MB, later %.1f MB | %.1f MB |\n",
              load.description, asker.Asked(), 1e3 * asker.Wait(0.99), 1e3 * asker.Wait(1.0),
              1e3 * elsewhere.Wait(1.0), most_memory - memory, server.Megabytes() - memory,
              most_buffers - buffers);
  if (load.comers) {
    std::printf("(came and went: %zu, turned away as all places were taken: %zu)\n", comers.Visits(),
                comers.TurnedAway());
  }
}

INSTANTIATE_TEST_SUITE_P(Loads, ServerLoad, testing::ValuesIn(kLoads),
                         [](const auto& entry) { return std::string(entry.param.name); });

}  // namespace
}  // namespace simulator
