// Both servers with real sockets and terminals.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "simulator/pty_server.h"
#include "simulator/tcp_server.h"
#include "simulator/tests/client.h"

namespace simulator {
namespace {

std::size_t ResidentBytes() {
  std::ifstream statm("/proc/self/statm");
  std::size_t all = 0;
  std::size_t resident = 0;
  statm >> all >> resident;
  return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

class ServerTest : public testing::Test {
 protected:
  SharedInstrument instrument_{Configuration(), [] { return 0.0; }};
};

TEST_F(ServerTest, TcpAnswersOnAPortThatItPicked) {
  TcpServer server(instrument_);
  ASSERT_NE(server.Port(), 0);
  Client client(server.Port());
  EXPECT_EQ(client.Ask("*IDN?\n"), kIdentity);
}

TEST_F(ServerTest, LinesMayEndInAnyOfTheThreeWays) {
  TcpServer server(instrument_);
  Client client(server.Port());
  EXPECT_EQ(client.Ask("*IDN?\r\n"), kIdentity);
  EXPECT_EQ(client.Ask("*IDN?\n\r*OPC?\n\r"), kIdentity);
  EXPECT_EQ(client.Line(), "1");
}

TEST_F(ServerTest, ALineMayArriveByteByByte) {
  TcpServer server(instrument_);
  Client client(server.Port());
  for (const char c : std::string_view("*IDN?")) ASSERT_TRUE(client.Send(std::string_view(&c, 1)));
  EXPECT_EQ(client.Ask("\n"), kIdentity);
}

TEST_F(ServerTest, CommandsGetNoReplyAndShareOneInstrument) {
  TcpServer server(instrument_);
  Client one(server.Port());
  Client other(server.Port());
  EXPECT_EQ(one.Ask("SENS:ATSC:EQU OFF\nSENS:ATSC:EQU?\n"), "OFF");
  EXPECT_EQ(other.Ask("SENS:ATSC:EQU?\n"), "OFF");
}

TEST_F(ServerTest, ManyClientsAreServedAtOnceAndOneTooManyIsClosed) {
  TcpServerOptions options;
  options.most_clients = 100;
  TcpServer server(instrument_, options);
  std::vector<std::unique_ptr<Client>> clients;
  clients.reserve(100);
  for (int i = 0; i < 100; ++i) clients.push_back(std::make_unique<Client>(server.Port()));
  for (const auto& client : clients) ASSERT_TRUE(client->Send("*IDN?\n"));
  for (const auto& client : clients) ASSERT_EQ(client->Line(), kIdentity);
  EXPECT_EQ(server.Clients(), 100U);
  Client surplus(server.Port());
  EXPECT_EQ(surplus.Line(), "(end)");
  clients.pop_back();
  // The server learns of the end in its own time.
  for (int i = 0; i < 200 && server.Clients() == 100; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  Client next(server.Port());
  EXPECT_EQ(next.Ask("*IDN?\n"), kIdentity);
}

TEST_F(ServerTest, BinaryJunkIsAnErrorAndNothingMore) {
  TcpServer server(instrument_);
  Client client(server.Port());
  std::string junk;
  unsigned state = 1;
  for (int i = 0; i < 200'000; ++i) {
    state = state * 1664525U + 1013904223U;
    junk.push_back(static_cast<char>(state >> 24));
  }
  ASSERT_TRUE(client.Send(junk));
  EXPECT_EQ(client.Ask("\n*CLS;*OPC?\n"), "1");
  EXPECT_EQ(client.Ask("*IDN?;SYST:ERR?\n"), std::string(kIdentity) + ";0,\"No error\"");
}

TEST_F(ServerTest, AGiantLineIsDroppedWithAnErrorAndCostsNoMemory) {
  TcpServer server(instrument_);
  Client client(server.Port());
  const std::size_t before = ResidentBytes();
  const std::string chunk(1 << 20, 'A');
  for (int i = 0; i < 64; ++i) ASSERT_TRUE(client.Send(chunk));
  EXPECT_EQ(client.Ask("\nSYST:ERR?\n"), "-363,\"Input buffer overrun\"");
  EXPECT_LT(ResidentBytes(), before + (8U << 20));
  EXPECT_EQ(client.Ask("*IDN?\n"), kIdentity);
}

TEST_F(ServerTest, AClientThatNeverReadsNeitherGrowsMemoryNorStallsTheOthers) {
  TcpServer server(instrument_);
  Client lazy(server.Port(), 4096);
  std::string queries;
  for (int i = 0; i < 20'000; ++i) queries += "*IDN?\n";
  const std::size_t before = ResidentBytes();
  std::size_t sent = 0;
  for (int i = 0; i < 200; ++i) sent += lazy.SendWhatFits(queries);
  Client quick(server.Port());
  EXPECT_EQ(quick.Ask("*IDN?\n"), kIdentity);
  EXPECT_LT(sent, 200 * queries.size()) << "the server read everything although its replies were not taken";
  EXPECT_LT(ResidentBytes(), before + (8U << 20));
}

TEST_F(ServerTest, AClientThatReadsNothingIsDroppedInTheEnd) {
  TcpServerOptions options;
  options.stall = std::chrono::milliseconds(50);
  TcpServer server(instrument_, options);
  Client lazy(server.Port(), 4096);
  std::string queries;
  for (int i = 0; i < 20'000; ++i) queries += "*IDN?\n";
  for (int i = 0; i < 2000 && server.Clients() > 0; ++i) {
    lazy.SendWhatFits(queries);
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  EXPECT_EQ(server.Clients(), 0U);
}

TEST_F(ServerTest, AClientThatReadsSlowlyIsNotDropped) {
  TcpServerOptions options;
  options.stall = std::chrono::seconds(2);
  TcpServer server(instrument_, options);
  Client slow(server.Port(), 4096);
  constexpr int kQueries = 20'000;
  std::string queries;
  for (int i = 0; i < kQueries; ++i) queries += "*IDN?\n";
  std::jthread sender([&] { slow.Send(queries); });
  // Longer than the stall time altogether, but never so long without taking anything.
  for (int i = 0; i < 40; ++i) {
    for (int line = 0; line < kQueries / 40; ++line) ASSERT_EQ(slow.Line(), kIdentity) << i;
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
  }
  sender.join();
  EXPECT_EQ(slow.Ask("*OPC?\n"), "1");
}

TEST_F(ServerTest, RepliesKeepTheOrderOfTheLinesAroundALongOne) {
  TcpServer server(instrument_);
  Client client(server.Port());
  std::string line = "*OPC?";
  std::string reply = "1";
  while (line.size() < 60'000) {
    line += ";*OPC?";
    reply += ";1";
  }
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(client.Send("*IDN?\n" + line + "\n*TST?\n"));
    EXPECT_EQ(client.Line(), kIdentity);
    EXPECT_EQ(client.Line(), reply);
    EXPECT_EQ(client.Line(), "0");
  }
}

TEST_F(ServerTest, StopsInTheMiddleOfALongLine) {
  std::string line;
  while (line.size() < 65'000) line += ":SENS:ATSC:NOIS 20;:READ:SIGN:RF?;:READ:SCR:BUFF?;";
  for (int i = 0; i < 5; ++i) {
    TcpServer server(instrument_);
    Client client(server.Port());
    ASSERT_TRUE(client.Send(line + "\n"));
    server.Stop();
    EXPECT_EQ(server.Clients(), 0U);
    EXPECT_EQ(client.Line(), "(end)");
  }
}

TEST_F(ServerTest, StoppingClosesTheConnectionsAndThePort) {
  TcpServer server(instrument_);
  Client client(server.Port());
  ASSERT_EQ(client.Ask("*IDN?\n"), kIdentity);
  std::thread other([&] { server.Stop(); });
  other.join();
  server.Stop();
  EXPECT_EQ(client.Line(), "(end)");
  EXPECT_FALSE(Client(server.Port()).Connected());
  EXPECT_EQ(server.Clients(), 0U);
}

TEST_F(ServerTest, AnAddressThatCannotBeUsedIsNamed) {
  TcpServerOptions options;
  options.address = "not an address";
  try {
    TcpServer server(instrument_, options);
    FAIL() << "listening on a wrong address succeeded";
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("not an address"), std::string::npos);
  }
  TcpServer first(instrument_);
  options.address = "127.0.0.1";
  options.port = first.Port();
  EXPECT_THROW(TcpServer(instrument_, options), std::runtime_error);
}

class PtyServerTest : public ServerTest {};

TEST_F(PtyServerTest, AnswersEveryClientThatOpensTheTerminal) {
  PtyServer server(instrument_);
  for (int i = 0; i < 2; ++i) {
    Client client(::open(server.Path().c_str(), O_RDWR | O_NOCTTY));
    EXPECT_EQ(client.Ask("*IDN?\n"), kIdentity);
  }
}

TEST_F(PtyServerTest, IsRawSoThatNothingIsEchoedOrTranslated) {
  PtyServer server(instrument_);
  Client client(::open(server.Path().c_str(), O_RDWR | O_NOCTTY));
  EXPECT_EQ(client.Ask("SENS:ATSC:EQU FREEZE\r\nSENS:ATSC:EQU?\r\n"), "FRE");
}

TEST_F(PtyServerTest, MakesALinkAndTakesItAwayAgain) {
  const auto directory = std::filesystem::temp_directory_path() / ("kel-pty-" + std::to_string(::getpid()));
  std::filesystem::create_directory(directory);
  PtyServerOptions options;
  options.link = directory / "com1";
  {
    PtyServer server(instrument_, options);
    Client client(::open(options.link.c_str(), O_RDWR | O_NOCTTY));
    EXPECT_EQ(client.Ask("*IDN?\n"), kIdentity);
  }
  EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(options.link)));
  std::ofstream(options.link) << "a file of somebody else";
  EXPECT_THROW(PtyServer(instrument_, options), std::runtime_error);
  EXPECT_TRUE(std::filesystem::is_regular_file(options.link));
  std::filesystem::remove_all(directory);
}

}  // namespace
}  // namespace simulator
