// The decoder of the instrument's alarm statistics report.
#pragma once

#include <string>
#include <string_view>

#include "driver/core/date_time.h"
#include "host/export.h"

namespace qkel4x {

/// Decodes model 1x statistics report. Every member is 0, or empty, in a new object; writing Statistics sets
/// them all.
class QKEL4X_EXPORT clsStatistics {
 public:
  /// Stores the report and decodes it: comma-separated fields, at least 15, durations as
  /// hours:minutes:seconds. Fails with 9 at the first missing field, 13 where a count is no number, 6 where a
  /// number is out of range; what was decoded before the failure stays.
  void Statistics(std::string_view report);
  /// The report as it was written.
  const std::string& Statistics() const { return report_; }

  DateTime MonitoringTime() const { return monitoring_time_; }  ///< how long the instrument has monitored
  DateTime Level() const { return level_; }                     ///< duration of the level alarm
  DateTime MpegTsSync() const { return mpeg_ts_sync_; }  ///< duration of the transport-stream sync alarm
  DateTime MerDb() const { return mer_db_; }             ///< duration of the MER (dB) alarm
  DateTime EvmMerPercent() const { return evm_mer_percent_; }  ///< duration of the EVM / MER (%) alarm
  DateTime BerBeforeRs() const { return ber_before_rs_; }  ///< duration of the BER before Reed-Solomon alarm
  DateTime MpegDataError() const { return mpeg_data_error_; }  ///< duration of the MPEG data error alarm
  double CorrCntBeforeRs() const {
    return corr_cnt_before_rs_;
  }  ///< corrections before Reed-Solomon, a count
  /// Errors left after Reed-Solomon, a count.
  double MpegDataErrorCntAfterRs() const { return mpeg_data_error_cnt_after_rs_; }

 private:
  std::string report_;
  DateTime monitoring_time_;
  DateTime level_;
  DateTime mpeg_ts_sync_;
  DateTime mer_db_;
  DateTime evm_mer_percent_;
  DateTime ber_before_rs_;
  DateTime mpeg_data_error_;
  double corr_cnt_before_rs_ = 0.0;
  double mpeg_data_error_cnt_after_rs_ = 0.0;
};

}  // namespace qkel4x
