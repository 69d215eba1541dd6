// The echo pattern: ten echoes, each an attenuation and a delay.
#include "driver/clsKEL4x.h"
#include "driver/core/raise.h"

namespace qkel4x {

// The query is tried once. IRREGULAR: when it fails the retry limit stays 0 for all that comes after.
void clsKEL4x::ExchangeOnce(std::string_view query, std::string& reply) {
  const std::int16_t before = io_.retry_limit;
  io_.retry_limit = 0;
  io_.ExchangeCommand(query, reply);
  io_.retry_limit = before;
}

// The leading number of a stored text; nothing where the instrument reported no value, which Prefix then
// says.
std::optional<double> clsKEL4x::StoredValue(const StoredTexts& texts, std::span<const std::string> stored,
                                            std::int16_t number) {
  if (SimulationActive()) return 0.0;
  if (number < 1 || static_cast<std::size_t>(number) > stored.size()) {
    Raise(qkelQueryFailed, texts.source, texts.out_of_range);
  }
  const std::string& text = stored[static_cast<std::size_t>(number - 1)];
  if (text.empty()) Raise(qkelQueryFailed, texts.source, texts.no_value);
  if (text == kNoStatus) {
    status_.prefix = kNoStatus;
    return std::nullopt;
  }
  status_.prefix.clear();
  return LeadingNumber(text);
}

// MeasureTdGhostPattern
// -------------------------------------------------------------------------------------------- IRREGULAR: a
// method that fails with the texts and the number of a read, and an equalizer gate that simulation keeps.
void clsKEL4x::MeasureTdGhostPattern() {
  static constexpr MemberTexts kTexts = ReadTexts("MeasureTdGhostPattern");
  status_.prefix = kNoStatus;
  RequireMeasureMode(kTexts, AnyOf(kelEPAT));
  if (SpecFuncEqualizer() != kelEqualizerOn) {
    Raise(qkelBadMeasureMode, kTexts.source, "Wrong equalizer mode selected");
  }
  echo_pattern_.valid = false;
  Armed(kTexts, [this] {
    std::string reply;
    ExchangeOnce("READ:ATSC:EPATTERN:PEAK?", reply);
    if (!SimulationActive()) echo_pattern_.Store(reply);
  });
}

// GhostPatternAtten -----------------------------------------------------------------------------------------
double clsKEL4x::GhostPatternAtten(const std::int16_t& intNumber) {
  static constexpr StoredTexts kTexts{
      .source = "clsKEL4x.GhostPatternAtten",
      .out_of_range = "Get GhostPatternAtten: index value out of range",
      .no_value = "Get GhostPatternAtten: no value available",
  };
  if (!echo_pattern_.valid) MeasureTdGhostPattern();
  const std::optional<double> value = StoredValue(kTexts, echo_pattern_.first, intNumber);
  // IRREGULAR: unlike a jitter line, an echo without a value also shows as the last reply.
  if (!value) status_.response = kNoStatus;
  return value.value_or(0.0);
}

// GhostPatternDelay -----------------------------------------------------------------------------------------
double clsKEL4x::GhostPatternDelay(const std::int16_t& intNumber) {
  static constexpr StoredTexts kTexts{
      .source = "clsKEL4x.GhostPatternDelay",
      .out_of_range = "Get GhostPatternDelay: index value out of range",
      .no_value = "Get GhostPatternDelay: no value available",
  };
  if (!echo_pattern_.valid) MeasureTdGhostPattern();
  const std::optional<double> value = StoredValue(kTexts, echo_pattern_.second, intNumber);
  // IRREGULAR: unlike a jitter line, an echo without a value also shows as the last reply.
  if (!value) status_.response = kNoStatus;
  return value.value_or(0.0);
}

}  // namespace qkel4x
