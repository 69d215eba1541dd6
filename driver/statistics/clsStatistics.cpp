#include "driver/statistics/clsStatistics.h"

#include "driver/core/number_text.h"
#include "driver/core/raise.h"
#include "driver/core/reply_status.h"

namespace qkel4x {
namespace {

std::string_view FieldAt(std::string_view report, std::size_t position) {
  const std::string_view field = PieceAt(report, ',', position);
  if (field.data() == nullptr) RaiseFault(host::kSubscriptOutOfRange);
  return field;
}

/// Hours, minutes or seconds of a duration: 0 where the piece is missing or no number.
std::int16_t DurationPiece(std::string_view field, std::size_t position) {
  return RoundToInt16(WholeNumberText(PieceAt(field, ':', position)).value_or(0.0));
}

DateTime Duration(std::string_view field) {
  const int hours = DurationPiece(field, 0);
  const int minutes = DurationPiece(field, 1);
  const int seconds = DurationPiece(field, 2);
  return {static_cast<double>(hours * 3600 + minutes * 60 + seconds) / 86400.0};
}

void StoreCount(std::string_view field, double& count) {
  if (field != kNoStatus) count = NumberFromText(field);
}

}  // namespace

void clsStatistics::Statistics(std::string_view report) {
  report_ = report;
  // IRREGULAR: the fields between these are not read.
  monitoring_time_ = Duration(FieldAt(report_, 0));
  level_ = Duration(FieldAt(report_, 1));
  mpeg_ts_sync_ = Duration(FieldAt(report_, 3));
  mer_db_ = Duration(FieldAt(report_, 5));
  evm_mer_percent_ = Duration(FieldAt(report_, 7));
  ber_before_rs_ = Duration(FieldAt(report_, 9));
  mpeg_data_error_ = Duration(FieldAt(report_, 11));
  StoreCount(FieldAt(report_, 13), corr_cnt_before_rs_);
  StoreCount(FieldAt(report_, 14), mpeg_data_error_cnt_after_rs_);
}

}  // namespace qkel4x
