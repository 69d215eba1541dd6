// The alarm statistics report.
#include <cmath>

#include "driver/statistics/clsStatistics.h"
#include "host/automation_error.h"
#include "tests/fuzz/input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qkel4x::clsStatistics statistics;
  try {
    statistics.Statistics(fuzz::Text(data, size));
  } catch (const host::AutomationError& error) {
    fuzz::Require(error.Number() == host::kSubscriptOutOfRange || error.Number() == host::kTypeMismatch ||
                      error.Number() == host::kOverflow,
                  "a report that is none fails with 9, 13 or 6");
  }
  fuzz::Require(
      std::isfinite(statistics.MonitoringTime().days) && std::isfinite(statistics.CorrCntBeforeRs()),
      "what is decoded is a number");
  return 0;
}
