// The report of a survey: one HTML page that needs nothing else, made to be printed and signed.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "survey.h"

namespace kel4x {

/// One message of the run.
struct ReportMessage {
  std::chrono::system_clock::time_point time;
  std::int32_t kind = 0;  ///< 6 sent, 5 received
  std::string text;
};

/// What a report shows beside the readings.
struct ReportFacts {
  std::vector<std::pair<std::string, std::string>> settings;  ///< of the driver: path and value
  std::vector<ReportMessage> messages;
  bool simulated = false;  ///< whether the readings come from the embedded instrument
};

/// The whole page as UTF-8.
std::string ReportPage(const SurveyResult& result, const ReportFacts& facts);

/// A text with the characters that HTML reserves replaced; control characters and bytes that are no UTF-8
/// shown as such.
std::string HtmlText(std::string_view text);

}  // namespace kel4x
