// The ports one by one: opening, texts of errors, what goes over the line, traces.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/socket.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "workbench/ports/gpib_adapter.h"
#include "workbench/ports/gpib_library.h"
#include "workbench/tests/ports/bench.h"
#include "workbench/workbench.h"

namespace workbench::test {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

void Echo(std::string_view line, Wire& wire) { wire.Send(std::string(line) + "\n"); }

TEST(TcpPortTest, SettingsAndTheirFirstValues) {
  Workbench host;
  const auto settings = host.CreateTransport("QPort.clsEthernet")->Settings();
  EXPECT_EQ(settings->Item("Port")->GetValue(-1, -1), host::Value(std::int32_t{5025}));
  EXPECT_EQ(ErrorOf([&] { settings->Item("Port")->SetValue(std::int32_t{65536}, -1, -1); }).Number(), 380);
  EXPECT_NO_THROW(settings->Item("Host"));
  EXPECT_NO_THROW(settings->Item("Connect Timeout"));
}

TEST(TcpPortTest, CommandAndTerminatorGoOutInOneSegment) {
  std::mutex mutex;
  std::vector<std::string> segments;
  std::atomic<bool> done{false};
  TcpPeer peer(TcpPeer::Session([&](int descriptor) {
    char bytes[1024];
    for (;;) {
      const ssize_t size = ::recv(descriptor, bytes, sizeof bytes, 0);
      if (size <= 0) break;
      const std::lock_guard lock(mutex);
      segments.emplace_back(bytes, static_cast<std::size_t>(size));
      done = true;
    }
  }));
  Workbench host;
  const auto port = host.CreateTransport("QPort.clsEthernet");
  peer.Configure(*port->Settings());
  port->OnLine(true);
  port->Write("SENS:ATSC:MEAS NORM");
  while (!done) std::this_thread::sleep_for(1ms);
  const std::lock_guard lock(mutex);
  EXPECT_EQ(segments, std::vector<std::string>{"SENS:ATSC:MEAS NORM\n"});
}

TEST(TcpPortTest, ConnectsOverIpv6) {
  TcpPeer peer(Echo, true);
  Workbench host;
  const auto port = host.CreateTransport("QPort.clsEthernet");
  peer.Configure(*port->Settings());
  port->OnLine(true);
  EXPECT_EQ(port->Query("A?"), "A?");
}

TEST(TcpPortTest, ConnectsByName) {
  TcpPeer peer(Echo);
  Workbench host;
  const auto port = host.CreateTransport("QPort.clsEthernet");
  peer.Configure(*port->Settings());
  port->Settings()->Item("Host")->SetValue(std::string("localhost"), -1, -1);
  port->OnLine(true);
  EXPECT_EQ(port->Query("A?"), "A?");
}

TEST(TcpPortTest, RefusedConnectionAndUnknownNameSayWhatAndWhere) {
  std::uint16_t closed = 0;
  { closed = TcpPeer(Echo).Port(); }
  Workbench host;
  const auto port = host.CreateTransport("QPort.clsEthernet");
  port->Settings()->Item("Port")->SetValue(std::int32_t{closed}, -1, -1);
  const auto refused = ErrorOf([&] { port->OnLine(true); });
  const std::string peer = "127.0.0.1:" + std::to_string(closed);
  EXPECT_EQ(refused.Code(), 2010);
  EXPECT_EQ(refused.Source(), "QPort.clsEthernet");
  EXPECT_EQ(refused.Description(),
            "QPort.clsEthernet cannot open " + peer + ": " + peer + ": Connection refused");
  EXPECT_FALSE(port->OnLine());
  ASSERT_EQ(host.Errors().Recorded().size(), 1U);
  EXPECT_EQ(host.Errors().Recorded()[0].description, refused.Description());

  port->Settings()->Item("Host")->SetValue(std::string("no-such-host.invalid"), -1, -1);
  const auto unknown = ErrorOf([&] { port->OnLine(true); });
  EXPECT_EQ(unknown.Code(), 2010);
  EXPECT_NE(unknown.Description().find("the name was not found"), std::string::npos) << unknown.Description();
}

TEST(TcpPortTest, TimeoutSaysWhatWasSentToWhomAndWhatCameBack) {
  Bench bench(Bus::kTcp, [](std::string_view, Wire& wire) { wire.Send("-23."); });
  bench.port->Timeout(0.1F);
  const auto error = ErrorOf([&] { bench.port->Query("READ:RF:LEVEL?"); });
  EXPECT_EQ(error.Code(), 2013);
  EXPECT_EQ(error.Description().find("QPort.clsEthernet to 127.0.0.1:"), 0U) << error.Description();
  EXPECT_NE(
      error.Description().find(": only a part of the reply came within 0.1 s. Sent: \"READ:RF:LEVEL?\"; 4 "
                               "bytes came back (\"-23.\") in 0.1"),
      std::string::npos)
      << error.Description();
}

TEST(TcpPortTest, ClosedPortSaysSoAndWhy) {
  Bench bench(Bus::kTcp, [](std::string_view, Wire& wire) { wire.Close(); });
  EXPECT_EQ(ErrorOf([&] { bench.port->Query("A?"); }).Code(), 2010);
  EXPECT_FALSE(bench.port->OnLine());
  const auto error = ErrorOf([&] { bench.port->Write("SYST:LOC"); });
  EXPECT_EQ(error.Code(), 2010);
  EXPECT_EQ(
      error.Description(),
      "QPort.clsEthernet: the port is not open any more: the other end closed the connection. Not sent: "
      "\"SYST:LOC\"; 0 bytes came back in 0 s");
  bench.port->OnLine(false);
  EXPECT_NE(ErrorOf([&] { bench.port->Write("X"); }).Description().find("the port is not open. Not sent"),
            std::string::npos);
}

TEST(TcpPortTest, SendThatNobodyTakesTimesOut) {
  std::atomic<bool> stop{false};
  TcpPeer peer(TcpPeer::Session([&](int) {
    while (!stop) std::this_thread::sleep_for(5ms);
  }));
  Workbench host;
  const auto port = host.CreateTransport("QPort.clsEthernet");
  peer.Configure(*port->Settings());
  port->OnLine(true);
  port->Timeout(0.2F);
  const std::vector<std::uint8_t> data(16UL * 1024UL * 1024UL);
  const auto begin = steady_clock::now();
  const auto error = ErrorOf([&] { port->Blocks()->WriteBlock(1, data, "DATA "); });
  EXPECT_LT(SecondsSince(begin), 0.25 + kSlack);
  EXPECT_EQ(error.Code(), 2011);
  EXPECT_NE(error.Description().find("send timed out"), std::string::npos) << error.Description();
  stop = true;
}

TEST(TcpPortTest, LostConnectionIsOpenedAnewByTheNextOnLineWrite) {
  Bench bench(Bus::kTcp, [](std::string_view line, Wire& wire) {
    if (line == "END") {
      wire.Close();
    } else {
      wire.Send("OK\n");
    }
  });
  bench.port->Write("END");
  std::this_thread::sleep_for(30ms);
  const auto error = ErrorOf([&] { bench.port->Query("A?"); });
  EXPECT_EQ(error.Code(), 2010);
  EXPECT_NE(error.Description().find("the link was lost before the command was sent"), std::string::npos)
      << error.Description();
  EXPECT_FALSE(bench.port->OnLine());
  bench.port->OnLine(true);
  EXPECT_EQ(bench.port->Query("A?"), "OK");
}

TEST(TcpPortTest, CommandWithALineFeedIsNotSent) {
  Bench bench(Bus::kTcp, Echo);
  EXPECT_EQ(ErrorOf([&] { bench.port->Write("A\nB"); }).Code(), 2011);
  EXPECT_EQ(bench.port->Query("A?"), "A?");
}

TEST(TcpPortTest, CountsFormatsAndTimeoutsOutOfRangeAreRefused) {
  Bench bench(Bus::kTcp, Echo);
  EXPECT_EQ(ErrorOf([&] { bench.port->Blocks()->ReadBlock(-1, "A?"); }).Number(), 5);
  EXPECT_EQ(ErrorOf([&] { bench.port->Blocks()->WriteBlock(2, {}, "A"); }).Number(), 5);
  EXPECT_EQ(ErrorOf([&] { bench.port->Timeout(-1.0F); }).Code(), 380);
  EXPECT_FLOAT_EQ(bench.port->Timeout(), 5.0F);
  const std::uint8_t data[] = {'x', '\n', 'y'};
  bench.port->Blocks()->WriteBlock(1, data, "DATA ");
  EXPECT_EQ(bench.port->Query(std::nullopt), "DATA #13x");
  EXPECT_EQ(bench.port->Query(std::nullopt), "y");
}

TEST(TcpPortTest, SignalEndsATransfer) {
  static Workbench* interrupted = nullptr;
  Bench bench(Bus::kTcp, [](std::string_view, Wire&) {});
  interrupted = bench.host.get();
  const auto before = std::signal(SIGUSR1, [](int) { interrupted->Interrupt(); });
  const auto self = ::pthread_self();
  std::thread other([self] {
    std::this_thread::sleep_for(50ms);
    ::pthread_kill(self, SIGUSR1);
  });
  const auto begin = steady_clock::now();
  EXPECT_EQ(ErrorOf([&] { bench.port->Query("A?"); }).Code(), 2010);
  EXPECT_LT(SecondsSince(begin), 0.15 + kSlack);
  other.join();
  std::signal(SIGUSR1, before);
}

TEST(TcpPortTest, ManyPortsOnManyThreads) {
  TcpPeer peer(Echo);
  Workbench host;
  std::vector<std::thread> threads;
  threads.reserve(16);
  std::atomic<int> right{0};
  for (int t = 0; t < 16; ++t) {
    threads.emplace_back([&, t] {
      const auto port = host.CreateTransport("QPort.clsEthernet");
      peer.Configure(*port->Settings());
      port->OnLine(true);
      for (int i = 0; i < 50; ++i) {
        const std::string text = std::to_string(t) + ":" + std::to_string(i);
        if (port->Query(text) == text) ++right;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(right, 16 * 50);
}

TEST(TraceTest, ObserverSeesEveryTransferWithItsOutcome) {
  struct Line {
    TransferRecord::Kind kind;
    std::string sent, received;
    std::int32_t number;
    bool operator==(const Line&) const = default;
  };
  class Recorder final : public TransferObserver {
   public:
    void Observe(const TransferRecord& record) noexcept override {
      EXPECT_EQ(record.port, "QPort.clsEthernet");
      EXPECT_GE(record.seconds, 0.0);
      EXPECT_EQ(record.error.empty(), record.error_number == 0);
      lines.push_back(
          {record.kind, std::string(record.sent), std::string(record.received), record.error_number});
    }
    std::vector<Line> lines;
  };
  Recorder recorder;
  TcpPeer peer([](std::string_view line, Wire& wire) {
    if (line == "A?") wire.Send("1\n");
    if (line == "B?") wire.Send("#12xy\n");
  });
  Workbench host;
  host.Observe(&recorder);
  const auto port = host.CreateTransport("QPort.clsEthernet");
  peer.Configure(*port->Settings());
  port->OnLine(true);
  port->Write("*CLS");
  EXPECT_EQ(port->Query("A?"), "1");
  port->Blocks()->ReadBlock(5, "B?");
  port->Timeout(0.05F);
  EXPECT_THROW(port->Query("C?"), host::AutomationError);
  port->Timeout(5.0F);
  EXPECT_EQ(port->Query("A?"), "1");
  port->OnLine(false);
  host.Observe(nullptr);
  using Kind = TransferRecord::Kind;
  EXPECT_EQ(recorder.lines, (std::vector<Line>{{Kind::kOpened, "", "", 0},
                                               {Kind::kWrite, "*CLS", "", 0},
                                               {Kind::kExchange, "A?", "1", 0},
                                               {Kind::kBlock, "B?", "#12xy", 0},
                                               {Kind::kExchange, "C?", "", host::kObjectErrorBase + 2013},
                                               {Kind::kCleared, "", "", 0},
                                               {Kind::kExchange, "A?", "1", 0},
                                               {Kind::kClosed, "", "", 0}}));
}

TEST(FrontPanelPortTest, TalksToTheSimulatedInstrumentInSimulatedTime) {
  Options options;
  options.virtual_clock = true;
  options.simulator.serial_number = "424242";
  Workbench host(options);
  const auto port = host.CreateTransport("QPort.clsGUI");
  port->OnLine(true);
  EXPECT_NE(port->Query("*IDN?").find("424242"), std::string::npos);
  EXPECT_EQ(port->Query("SYST:ERR?"), "0,\"No error\"");
  port->Write("NO:SUCH:HEADER");
  EXPECT_EQ(port->Query("SYST:ERR?").substr(0, 5), "-113,");
  const auto other = host.CreateTransport("QPort.clsGUI");
  other->Settings()->Item("Instrument")->SetValue(std::string("SECOND"), -1, -1);
  other->OnLine(true);
  EXPECT_EQ(other->Query("SYST:ERR?"), "0,\"No error\"");
  EXPECT_NE(host.FrontPanel("SIM"), host.FrontPanel("SECOND"));
}

TEST(FrontPanelPortTest, CommandWithoutAReplyFailsAtOnceAndLeavesNothingBehind) {
  Workbench host;
  const auto port = host.CreateTransport("QPort.clsGUI");
  port->OnLine(true);
  const auto begin = steady_clock::now();
  const auto error = ErrorOf([&] { port->Query("*CLS"); });
  EXPECT_LT(SecondsSince(begin), 1.0);
  EXPECT_EQ(error.Code(), 2013);
  EXPECT_NE(error.Description().find("QPort.clsGUI to the simulated instrument SIM"), std::string::npos)
      << error.Description();
  EXPECT_EQ(port->Query("SYST:ERR?"), "0,\"No error\"");
}

TEST(FrontPanelPortTest, InstrumentCanStandBehindAnotherClass) {
  Workbench host;
  host.RegisterEmbedded("QPort.clsEthernet", "TCP/IP");
  const auto port = host.CreateTransport("QPort.clsEthernet");
  EXPECT_EQ(port->Settings()->Name(), "TCP/IP");
  port->OnLine(true);
  EXPECT_EQ(port->Query("SYST:ERR?"), "0,\"No error\"");
}

TEST(FrontPanelPortTest, PortMayOutliveTheWorkbench) {
  std::shared_ptr<host::Transport> port;
  {
    Workbench host;
    port = host.CreateTransport("QPort.clsGUI");
  }
  port->OnLine(true);
  EXPECT_EQ(port->Query("SYST:ERR?"), "0,\"No error\"");
}

TEST(GpibPortTest, AddressesOutsideTheBusAreRefused) {
  Workbench host;
  const auto address = host.CreateTransport("QPort.clsGPIB")->Settings()->Item("Primary Address");
  EXPECT_EQ(ErrorOf([&] { address->SetValue(std::int16_t{31}, -1, -1); }).Number(), 380);
  address->SetValue(std::int16_t{6}, -1, -1);
  EXPECT_EQ(address->GetValue(-1, -1), host::Value(std::int16_t{6}));
}

TEST(GpibPortTest, TimeoutCodesAreRoundedUp) {
  EXPECT_EQ(GpibTimeoutCode(1us), 1);
  EXPECT_EQ(GpibTimeoutCode(10us), 1);
  EXPECT_EQ(GpibTimeoutCode(11us), 2);
  EXPECT_EQ(GpibTimeoutCode(20ms), 8);
  EXPECT_EQ(GpibTimeoutCode(30ms), 8);
  EXPECT_EQ(GpibTimeoutCode(31ms), 9);
  EXPECT_EQ(GpibTimeoutCode(1s), 11);
  EXPECT_EQ(GpibTimeoutCode(5s), 13);
  EXPECT_EQ(GpibTimeoutCode(1000s), 17);
  EXPECT_EQ(GpibTimeoutCode(5000s), 17);
}

TEST(GpibPortTest, MissingLibraryAndMissingInstrumentSaySo) {
  Workbench host;
  const auto port = host.CreateTransport("QPort.clsGPIB");
  port->Settings()->Item("Library")->SetValue(std::string("/nonexistent/libgpib.so"), -1, -1);
  const auto missing = ErrorOf([&] { port->OnLine(true); });
  EXPECT_EQ(missing.Code(), 2010);
  EXPECT_NE(missing.Description().find("/nonexistent/libgpib.so"), std::string::npos)
      << missing.Description();

  LibraryPeer peer(Echo);
  peer.Configure(*port->Settings());
  port->Settings()->Item("Primary Address")->SetValue(std::int16_t{7}, -1, -1);
  port->OnLine(true);
  const auto absent = ErrorOf([&] { port->Query("*IDN?"); });
  EXPECT_EQ(absent.Code(), 2011);
  EXPECT_NE(absent.Description().find("GPIB0 address 7: the command could not be delivered: ENOL"),
            std::string::npos)
      << absent.Description();
  EXPECT_TRUE(port->OnLine());

  port->OnLine(false);
  port->Settings()->Item("Board")->SetValue(std::int16_t{3}, -1, -1);
  EXPECT_NE(ErrorOf([&] { port->OnLine(true); }).Description().find("ENEB"), std::string::npos);
}

TEST(GpibPortTest, FailedTransferIsFollowedByADeviceClearAndClosingByGoToLocal) {
  LibraryPeer peer([](std::string_view line, Wire& wire) {
    if (line != "SILENT?") Echo(line, wire);
  });
  Workbench host;
  auto port = host.CreateTransport("QPort.clsGPIB");
  peer.Configure(*port->Settings());
  port->OnLine(true);
  EXPECT_EQ(port->Query("A?"), "A?");
  EXPECT_EQ(peer.Device().Clears(), 0);
  port->Timeout(0.1F);
  EXPECT_EQ(ErrorOf([&] { port->Query("SILENT?"); }).Code(), 2013);
  EXPECT_EQ(port->Query("A?"), "A?");
  EXPECT_EQ(peer.Device().Clears(), 1);
  port->OnLine(false);
  EXPECT_EQ(peer.Device().Locals(), 1);
  port->OnLine(true);
  port.reset();
  EXPECT_EQ(peer.Device().Locals(), 1);
}

TEST(GpibAdapterTest, TextsAreEscaped) {
  std::string text;
  AppendAdapterText(text, "A+B\r\x1b\nC\n");
  EXPECT_EQ(text, "A\x1b+B\x1b\r\x1b\x1b\x1b\nC\n");
}

TEST(GpibAdapterTest, CommandsWithPlusSignsReachTheInstrument) {
  Bench bench(Bus::kAdapter, Echo);
  EXPECT_EQ(bench.port->Query("++addr 3"), "++addr 3");
  EXPECT_EQ(bench.port->Query("FREQ +5E8"), "FREQ +5E8");
}

/// A GPIB port behind the adapter that `peer` is.
std::shared_ptr<host::Transport> PortTo(Workbench& host, Peer& peer) {
  auto port = host.CreateTransport("QPort.clsGPIB");
  peer.Configure(*port->Settings());
  return port;
}

TEST(GpibLibraryTest, WhatFollowsABlockWithoutAnEndMarkIsClearedAway) {
  Bench bench(Bus::kLibrary, [](std::string_view line, Wire& wire) {
    if (line == "BLOCK?") {
      wire.Send("#210xxxxxxxxxx");
      wire.Pause(400ms);
      wire.Send("STALE\n");
    } else {
      wire.Send(std::string(line) + "\n");
    }
  });
  EXPECT_EQ(bench.port->Blocks()->ReadBlock(14, "BLOCK?").size(), 14U);
  EXPECT_EQ(bench.port->Query("AFTER?"), "AFTER?");
}

TEST(GpibAdapterTest, OneThatGivesReadsUpAtOnceIsNotAskedWithoutEnd) {
  SerialAdapterPeer peer([](std::string_view, Wire&) {});
  Workbench host;
  const auto port = PortTo(host, peer);
  port->OnLine(true);
  peer.Adapter().GiveUpAtOnce();
  port->Timeout(0.5F);
  EXPECT_EQ(ErrorOf([&] { port->Query("A?"); }).Code(), 2013);
  EXPECT_GE(peer.Adapter().Reads(), 2);
  EXPECT_LE(peer.Adapter().Reads(), 6);
}

TEST(GpibAdapterTest, WhatDoesNotSayItsVersionIsNoAdapter) {
  TcpPeer silent([](std::string_view, Wire&) {});
  Workbench host;
  const auto port = host.CreateTransport("QPort.clsGPIB");
  port->Settings()->Item("Interface")->SetValue(std::string("tcp"), -1, -1);
  port->Settings()->Item("Adapter Port")->SetValue(std::int32_t{silent.Port()}, -1, -1);
  port->Timeout(0.2F);
  const auto begin = steady_clock::now();
  const auto error = ErrorOf([&] { port->OnLine(true); });
  EXPECT_LT(SecondsSince(begin), 0.25 + kSlack);
  EXPECT_EQ(error.Code(), 2010);
  EXPECT_NE(error.Description().find("did not answer \"++ver\" within 0.2 s"), std::string::npos)
      << error.Description();
}

TEST(GpibAdapterTest, AdapterThatRestartsWhenItIsOpenedIsSpokenToAgain) {
  AdapterPeer peer(Echo, 200ms);
  Workbench host;
  const auto port = PortTo(host, peer);
  port->OnLine(true);
  EXPECT_EQ(port->Query("A?"), "A?");
}

TEST(GpibAdapterTest, ReadWhoseMarkGotLostIsOverAfterAWhile) {
  SerialAdapterPeer peer(Echo);
  Workbench host;
  const auto port = PortTo(host, peer);
  port->OnLine(true);
  peer.Adapter().LoseVersion();
  EXPECT_EQ(port->Query("A?"), "A?");
  port->Timeout(1.0F);
  std::vector<int> errors;
  std::string reply;
  while (reply.empty() && errors.size() < 5) {
    try {
      reply = port->Query("B?");
    } catch (const host::AutomationError& error) {
      errors.push_back(error.Code());
    }
  }
  EXPECT_EQ(reply, "B?");
  ASSERT_FALSE(errors.empty());
  EXPECT_EQ(errors.front(), 2011) << "the next text was sent before the read was known to be over";
}

TEST(GpibAdapterTest, LostConnectionIsALinkErrorInEachPhaseAndOverWithTheNextOnLine) {
  AdapterPeer* peer = nullptr;
  AdapterPeer adapter([&peer](std::string_view line, Wire& wire) {
    if (line == "PART?") wire.Send("PA");
    if (line == "BLOCK?") wire.Send("#210abc");
    if (line == "BEFORE?") peer->Disconnect();
    if (line == "A?") wire.Send("A\n");
  });
  peer = &adapter;
  Workbench host;
  const auto port = PortTo(host, adapter);
  port->Timeout(2.0F);
  const std::vector<std::function<void()>> phases = {
      [&] { port->Query("BEFORE?"); },
      [&] { port->Query("PART?"); },
      [&] { port->Blocks()->ReadBlock(14, "BLOCK?"); },
      [&] { port->Query("A?"), adapter.Disconnect(), port->Query("A?"); },
  };
  for (const auto& phase : phases) {
    port->OnLine(true);
    std::thread other([&] {
      std::this_thread::sleep_for(100ms);
      if (&phase == &phases[1] || &phase == &phases[2]) adapter.Disconnect();
    });
    const auto error = ErrorOf(phase);
    other.join();
    EXPECT_TRUE(error.Code() == 2010 || error.Code() == 2012) << error.Description();
    EXPECT_FALSE(port->OnLine());
    port->OnLine(true);
    EXPECT_EQ(port->Query("A?"), "A");
    port->OnLine(false);
  }
}

TEST(GpibAdapterTest, ReplyThatTakesLongerThanOneReadOfTheAdapterIsAskedForAgain) {
  Bench bench(Bus::kAdapter, [](std::string_view, Wire& wire) {
    wire.Pause(1200ms);
    wire.Send("SLOW\n");
  });
  bench.port->Timeout(4.0F);
  EXPECT_EQ(bench.port->Query("A?"), "SLOW");
}

}  // namespace
}  // namespace workbench::test
