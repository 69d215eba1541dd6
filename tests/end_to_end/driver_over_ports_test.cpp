// Driver, real port, simulated instrument: the same short working day over every bus.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "driver/clsKEL4x.h"
#include "host/automation_error.h"
#include "host/host.h"
#include "simulator/pty_server.h"
#include "simulator/tcp_server.h"
#include "workbench/tests/ports/peer.h"
#include "workbench/workbench.h"

namespace {

using qkel4x::clsKEL4x;

enum class Way { kTcp, kSerial, kGpibLibrary, kGpibAdapter, kFrontPanel };

std::string NameOf(Way way) {
  switch (way) {
    case Way::kTcp:
      return "Tcp";
    case Way::kSerial:
      return "Serial";
    case Way::kGpibLibrary:
      return "GpibLibrary";
    case Way::kGpibAdapter:
      return "GpibAdapter";
    case Way::kFrontPanel:
      return "FrontPanel";
  }
  return {};
}

/// A workbench in simulated time, one simulated instrument, and a driver that is set up to reach it.
class DriverOverPortsTest : public testing::TestWithParam<Way> {
 protected:
  void SetUp() override {
    workbench::Options options;
    options.virtual_clock = true;
    options.serial_devices = {};
    if (GetParam() == Way::kSerial) {
      pty_ = std::make_unique<simulator::PtyServer>(*instrument_);
      options.serial_devices[2] = pty_->Path();
    }
    host_ = std::make_unique<workbench::Workbench>(options);
    clock_.store(host_.get(), std::memory_order_release);
    host::SetCurrentHost(host_.get());
    driver_ = std::make_unique<clsKEL4x>();
    switch (GetParam()) {
      case Way::kTcp:
        tcp_ = std::make_unique<simulator::TcpServer>(*instrument_);
        Set("Remote Control", "TCP/IP");
        Set("TCP/IP.Port", std::to_string(tcp_->Port()));
        break;
      case Way::kSerial:
        Set("Remote Control", "RS232");
        Set("RS232.Comm Port", "COM3");
        break;
      case Way::kGpibLibrary:
        Set("Remote Control", "GPIB");
        library_ = std::make_unique<workbench::test::LibraryPeer>(Instrument());
        library_->Configure(*driver_->Settings()->Item("GPIB"));
        break;
      case Way::kGpibAdapter:
        Set("Remote Control", "GPIB");
        adapter_ = std::make_unique<workbench::test::AdapterPeer>(Instrument());
        adapter_->Configure(*driver_->Settings()->Item("GPIB"));
        break;
      case Way::kFrontPanel:
        Set("Remote Control", "GUI");
        break;
    }
  }

  void TearDown() override {
    driver_.reset();
    host::SetCurrentHost(nullptr);
  }

  void Set(std::string_view path, const std::string& value) {
    driver_->Settings()->Item(path)->SetValue(value, -1, -1);
  }

  /// The simulated instrument as a device on a bus.
  workbench::test::Script Instrument() {
    return [this](std::string_view line, workbench::test::Wire& wire) {
      simulator::Instrument::Answer answer;
      instrument_->Execute(line, answer);
      if (answer.has_reply) wire.Send(answer.bytes + "\n");
    };
  }

  std::unique_ptr<workbench::Workbench> host_;         // before the instrument, which reads its clock
  std::atomic<workbench::Workbench*> clock_{nullptr};  // a server's thread may ask before there is a host
  std::shared_ptr<simulator::SharedInstrument> instrument_ =
      std::make_shared<simulator::SharedInstrument>(simulator::Configuration{}, [this] {
        workbench::Workbench* clock = clock_.load(std::memory_order_acquire);
        return clock != nullptr ? clock->Runtime().Now() : 0.0;
      });
  std::unique_ptr<simulator::PtyServer> pty_;
  std::unique_ptr<simulator::TcpServer> tcp_;
  std::unique_ptr<workbench::test::LibraryPeer> library_;
  std::unique_ptr<workbench::test::AdapterPeer> adapter_;
  std::unique_ptr<clsKEL4x> driver_;
};

TEST_P(DriverOverPortsTest, GoesOnLineMeasuresAndGoesOffLine) {
  driver_->OnLine(true);
  ASSERT_TRUE(driver_->OnLine()) << (host_->Errors().Recorded().empty()
                                         ? ""
                                         : host_->Errors().Recorded().back().description);
  EXPECT_NE(driver_->Identity().find("HALVERN&TOSKE"), std::string::npos);
  driver_->MeasureMode(qkel4x::kelNORM);
  EXPECT_EQ(driver_->MeasureMode(), qkel4x::kelNORM);
  const double mer = driver_->MeasureVsbMerRmsDb();
  EXPECT_GT(mer, 20.0);
  EXPECT_LT(mer, 45.0);
  const double level = driver_->MeasureRfLevel();
  EXPECT_GT(level, -60.0);
  EXPECT_LT(level, -30.0);

  std::vector<std::uint8_t> screen;
  const auto capture_and_transfer =
      static_cast<qkel4x::KelScreenShotModes>(qkel4x::kelCapture | qkel4x::kelTransfer);
  if (GetParam() == Way::kFrontPanel) {
    EXPECT_THROW(driver_->ScreenShot(capture_and_transfer, screen), host::AutomationError);
  } else {
    EXPECT_TRUE(driver_->ScreenShot(capture_and_transfer, screen));
    ASSERT_GT(screen.size(), 1000U);
    EXPECT_EQ(screen[0], 10U);  // the first byte of a PCX file
  }
  EXPECT_NEAR(driver_->MeasureRfLevel(), level, 1.0);

  driver_->OnLine(false);
  EXPECT_FALSE(driver_->OnLine());
  driver_->OnLine(true);
  EXPECT_TRUE(driver_->OnLine());
}

TEST_P(DriverOverPortsTest, AnInterruptionReachesTheCallerAndTheNextReadingIsRight) {
  driver_->OnLine(true);
  ASSERT_TRUE(driver_->OnLine());
  EXPECT_NEAR(driver_->MeasureRfLevel(), -43.2, 2.0);
  host_->Interrupt();
  try {
    driver_->MeasureRfLevel();
    FAIL() << "the interruption was lost";
  } catch (const host::AutomationError& error) {
    EXPECT_EQ(error.Code(), 2010);
    EXPECT_NE(error.Description().find("interrupted"), std::string::npos) << error.Description();
  }
  host_->ClearInterrupt();
  EXPECT_NEAR(driver_->MeasureRfLevel(), -43.2, 2.0);
}

INSTANTIATE_TEST_SUITE_P(AllWays, DriverOverPortsTest,
                         testing::Values(Way::kTcp, Way::kSerial, Way::kGpibLibrary, Way::kGpibAdapter,
                                         Way::kFrontPanel),
                         [](const auto& test) { return NameOf(test.param); });

}  // namespace
