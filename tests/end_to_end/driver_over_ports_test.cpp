// Driver, real port, simulated instrument: the same short working day over every bus.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "host/automation_error.h"
#include "tests/end_to_end/bench.h"

namespace end_to_end {
namespace {

class DriverOverPortsTest : public testing::TestWithParam<Bus> {
 protected:
  Bench bench_{GetParam()};
  clsKEL4x& driver_ = bench_.Driver();
};

TEST_P(DriverOverPortsTest, GoesOnLineMeasuresAndGoesOffLine) {
  driver_.OnLine(true);
  ASSERT_TRUE(driver_.OnLine()) << bench_.LastLinkError();
  EXPECT_NE(driver_.Identity().find("HALVERN&TOSKE"), std::string::npos);
  driver_.MeasureMode(qkel4x::kelNORM);
  EXPECT_EQ(driver_.MeasureMode(), qkel4x::kelNORM);
  const double mer = driver_.MeasureVsbMerRmsDb();
  EXPECT_GT(mer, 20.0);
  EXPECT_LT(mer, 45.0);
  const double level = driver_.MeasureRfLevel();
  EXPECT_GT(level, -60.0);
  EXPECT_LT(level, -30.0);

  std::vector<std::uint8_t> screen;
  const auto capture_and_transfer =
      static_cast<qkel4x::KelScreenShotModes>(qkel4x::kelCapture | qkel4x::kelTransfer);
  if (GetParam() == Bus::kFrontPanel) {
    EXPECT_THROW(driver_.ScreenShot(capture_and_transfer, screen), host::AutomationError);
  } else {
    EXPECT_TRUE(driver_.ScreenShot(capture_and_transfer, screen));
    ASSERT_GT(screen.size(), 1000U);
    EXPECT_EQ(screen[0], 10U);  // the first byte of a PCX file
  }
  EXPECT_NEAR(driver_.MeasureRfLevel(), level, 1.0);

  driver_.OnLine(false);
  EXPECT_FALSE(driver_.OnLine());
  driver_.OnLine(true);
  EXPECT_TRUE(driver_.OnLine());
}

TEST_P(DriverOverPortsTest, AnInterruptionReachesTheCallerAndTheNextReadingIsRight) {
  driver_.OnLine(true);
  ASSERT_TRUE(driver_.OnLine());
  EXPECT_NEAR(driver_.MeasureRfLevel(), -43.2, 2.0);
  bench_.Host().Interrupt();
  try {
    driver_.MeasureRfLevel();
    FAIL() << "the interruption was lost";
  } catch (const host::AutomationError& error) {
    EXPECT_EQ(error.Code(), 2010);
    EXPECT_NE(error.Description().find("interrupted"), std::string::npos) << error.Description();
  }
  bench_.Host().ClearInterrupt();
  EXPECT_NEAR(driver_.MeasureRfLevel(), -43.2, 2.0);
}

INSTANTIATE_TEST_SUITE_P(AllBuses, DriverOverPortsTest, testing::ValuesIn(kBuses),
                         [](const auto& test) { return NameOf(test.param); });

}  // namespace
}  // namespace end_to_end
