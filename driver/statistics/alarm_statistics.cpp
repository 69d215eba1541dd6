// Reading the alarm statistics report and clearing the alarm registers.
#include "driver/clsKEL4x.h"
#include "driver/core/raise.h"
#include "driver/statistics/clsStatistics.h"
#include "host/host.h"

namespace qkel4x {

// AlarmStatistics -------------------------------------------------------------------------------------------
std::shared_ptr<clsStatistics> clsKEL4x::AlarmStatistics() {
  static constexpr MemberTexts kGet = ReadTexts("AlarmStatistics");
  status_.prefix = kNoStatus;
  return Armed(kGet, [this] {
    const std::string reply = io_.QueryText("READ:ATSC:ALAR:STAT?");
    auto statistics = std::make_shared<clsStatistics>();
    statistics->Statistics(status_.Decode(reply));
    return statistics;
  });
}

// AlarmRegisterClear
// ------------------------------------------------------------------------------------------------ IRREGULAR:
// its descriptions call it a method.
void clsKEL4x::AlarmRegisterClear() {
  static constexpr MemberTexts kTexts =
      TextsOf("AlarmRegisterClear", "AlarmRegisterClear method", qkelCommandFailed);
  Armed(kTexts, [this] {
    io_.ExchangeCommand("CONF:ALAR:RES");
    host::CurrentHost().Runtime().Wait(3.0F);
  });
}

}  // namespace qkel4x
