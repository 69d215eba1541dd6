// What a reading may cost, as counts: no heap allocation, and over TCP four system calls.
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "automation/call.h"
#include "benchmarks/allocations.h"
#include "benchmarks/bench_host.h"
#include "benchmarks/tests/system_calls.h"

namespace benchmarks {
namespace {

constexpr int kReadings = 200;

/// An instrument in another process that answers at once.
class Responder {
 public:
  Responder() {
    int to[2];
    int from[2];
    if (::pipe(to) != 0 || ::pipe(from) != 0) throw std::runtime_error("no pipe");
    process_ = ::fork();
    if (process_ == 0) {
      ::dup2(to[0], 0);
      ::dup2(from[1], 1);
      for (const int end : {to[0], to[1], from[0], from[1]}) ::close(end);
      ::execl(RESPONDER, RESPONDER, nullptr);
      ::_exit(127);
    }
    ::close(to[0]);
    ::close(from[1]);
    input_ = to[1];
    char text[16] = {};
    std::size_t have = 0;
    while (have + 1 < sizeof text && ::read(from[0], text + have, 1) == 1 && text[have] != '\n') ++have;
    ::close(from[0]);
    port_ = static_cast<std::uint16_t>(std::atoi(text));
    if (port_ == 0) throw std::runtime_error("the responder does not start");
  }
  ~Responder() {
    ::close(input_);
    ::waitpid(process_, nullptr, 0);
  }
  Responder(const Responder&) = delete;
  Responder& operator=(const Responder&) = delete;

  std::uint16_t Port() const { return port_; }

 private:
  pid_t process_ = -1;
  int input_ = -1;
  std::uint16_t port_ = 0;
};

template <class Reading>
std::uint64_t AllocationsOf(const Reading& reading) {
  for (int i = 0; i < 3; ++i) EXPECT_EQ(reading(), -45.3);
  const std::uint64_t before = Heap::Now().allocations;
  double sum = 0;
  for (int i = 0; i < kReadings; ++i) sum += reading();
  const std::uint64_t made = Heap::Now().allocations - before;
  EXPECT_NEAR(sum, -45.3 * kReadings, 1e-6);
  return made;
}

TEST(Counts, AllocationsAreCounted) {
  const std::uint64_t before = Heap::Now().allocations;
  const auto kept = std::make_unique<std::string>(100, 'x');
  EXPECT_EQ(Heap::Now().allocations - before, 2U) << kept->size();
}

TEST(Counts, TypedReadingInProcess_AllocatesNothing) {
  const BenchHost host(BenchHost::Ethernet::kInProcess);
  const auto driver = BenchHost::NewDriverOnLine();
  EXPECT_EQ(AllocationsOf([&] { return driver->MeasureRfLevel(); }), 0U);
}

TEST(Counts, ReadingByNameInProcess_AllocatesNothing) {
  const BenchHost host(BenchHost::Ethernet::kInProcess);
  const auto driver = BenchHost::NewDriverOnLine();
  const auto by_name = [&] { return std::get<double>(automation::Get(*driver, "MeasureRfLevel")); };
  EXPECT_EQ(AllocationsOf(by_name), 0U);
}

TEST(Counts, TypedReadingOverTcp_AllocatesNothing) {
  const Responder responder;
  const BenchHost host(BenchHost::Ethernet::kReal);
  const auto driver = BenchHost::NewDriverOnLine(responder.Port());
  EXPECT_EQ(AllocationsOf([&] { return driver->MeasureRfLevel(); }), 0U);
}

TEST(Counts, ReadingByNameOverTcp_AllocatesNothing) {
  const Responder responder;
  const BenchHost host(BenchHost::Ethernet::kReal);
  const auto driver = BenchHost::NewDriverOnLine(responder.Port());
  const auto by_name = [&] { return std::get<double>(automation::Get(*driver, "MeasureRfLevel")); };
  EXPECT_EQ(AllocationsOf(by_name), 0U);
}

TEST(Counts, LoggedReadingOverTcp_AllocatesNothing) {
  const Responder responder;
  BenchHost host(BenchHost::Ethernet::kReal);
  host.Get().Log().AddSink(workbench::FileSink("/dev/null"));
  const auto driver = BenchHost::NewDriverOnLine(responder.Port());
  driver->Settings()->Item("Log Messages")->SetValue(std::string("-1"), -1, -1);
  EXPECT_EQ(AllocationsOf([&] { return driver->MeasureRfLevel(); }), 0U);
}

TEST(Counts, TracedReadingOverTcp_AllocatesNothing) {
  const Responder responder;
  const BenchHost host(BenchHost::Ethernet::kReal, "/dev/null");
  const auto driver = BenchHost::NewDriverOnLine(responder.Port());
  EXPECT_EQ(AllocationsOf([&] { return driver->MeasureRfLevel(); }), 0U);
}

/// After a pause of 10 ms a port looks at what has arrived meanwhile; a busy machine makes such pauses.
void ExpectTwoSendsAndTwoReceives(std::map<long, int>& counts) {
  EXPECT_EQ(counts[SYS_sendto], 2 * kReadings);
  EXPECT_GE(counts[SYS_recvfrom], 2 * kReadings);
  EXPECT_LT(counts[SYS_recvfrom], 2 * kReadings + kReadings / 4);
}

TEST(Counts, ReadingOverTcp_TakesTwoSendsAndTwoReceives) {
  const Responder responder;
  std::unique_ptr<BenchHost> host;
  std::unique_ptr<qkel4x::clsKEL4x> driver;
  auto counts = CountSystemCalls(
      [&] {
        host = std::make_unique<BenchHost>(BenchHost::Ethernet::kReal);
        driver = BenchHost::NewDriverOnLine(responder.Port());
        driver->MeasureRfLevel();
      },
      [&] {
        for (int i = 0; i < kReadings; ++i) driver->MeasureRfLevel();
      });
  ExpectTwoSendsAndTwoReceives(counts);
  EXPECT_EQ(counts.size(), 2U) << "there are other calls";
}

/// A trace writes 64 KiB at a time, and four times a second where less has come: a few calls in all.
TEST(Counts, TracedReadingOverTcp_TakesTwoSendsTwoReceivesAndAFewWrites) {
  const Responder responder;
  std::unique_ptr<BenchHost> host;
  std::unique_ptr<qkel4x::clsKEL4x> driver;
  auto counts = CountSystemCalls(
      [&] {
        host = std::make_unique<BenchHost>(BenchHost::Ethernet::kReal, "/dev/null");
        driver = BenchHost::NewDriverOnLine(responder.Port());
        driver->MeasureRfLevel();
      },
      [&] {
        for (int i = 0; i < kReadings; ++i) driver->MeasureRfLevel();
      });
  ExpectTwoSendsAndTwoReceives(counts);
  EXPECT_GE(counts[SYS_write], 1);
  EXPECT_LT(counts[SYS_write], kReadings / 4);
}

/// Three receives where a picture arrives in one piece; now and then the system delivers one in two.
TEST(Counts, ScreenShotOverTcp_TakesTwoSendsAndThreeReceives) {
  const Responder responder;
  std::unique_ptr<BenchHost> host;
  std::unique_ptr<qkel4x::clsKEL4x> driver;
  std::vector<std::uint8_t> picture;
  auto counts = CountSystemCalls(
      [&] {
        host = std::make_unique<BenchHost>(BenchHost::Ethernet::kReal);
        driver = BenchHost::NewDriverOnLine(responder.Port());
        driver->ScreenShot(qkel4x::kelTransfer, picture);
      },
      [&] {
        for (int i = 0; i < kReadings; ++i) driver->ScreenShot(qkel4x::kelTransfer, picture);
      });
  EXPECT_EQ(counts[SYS_sendto], 2 * kReadings);
  EXPECT_GE(counts[SYS_recvfrom], 3 * kReadings);
  EXPECT_LT(counts[SYS_recvfrom], 4 * kReadings);
}

TEST(Counts, DriverOnLine_TakesLessThan64KiB) {
  const Responder responder;
  const BenchHost host(BenchHost::Ethernet::kReal);
  const std::int64_t before = Heap::Now().bytes_in_use;
  const auto driver = BenchHost::NewDriverOnLine(responder.Port());
  driver->MeasureRfLevel();
  const std::int64_t taken = Heap::Now().bytes_in_use - before;
  RecordProperty("bytes", std::to_string(taken));
  EXPECT_GT(taken, 1024);
  EXPECT_LT(taken, 64 * 1024);
}

}  // namespace
}  // namespace benchmarks
