// The marker values of the frequency-response traces. One reply carries two numbers; it is asked for again
// until it does.
#include "driver/clsKEL4x.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"
#include "host/host.h"

namespace qkel4x {

bool clsKEL4x::DecodePair(std::string_view reply) {
  status_.prefix = kNoStatus;
  try {
    const std::string_view value_text = status_.Decode(reply);
    const std::string_view first = PieceAt(value_text, ',', 0);
    if (first.data() == nullptr) return false;
    frequency_response_.amplitude = LeadingNumber(TrimBlanks(first));
    const std::string_view second = PieceAt(value_text, ',', 1);
    if (second.data() == nullptr) return false;
    frequency_response_.phase_or_group_delay = LeadingNumber(TrimBlanks(second));
    return true;
  } catch (const std::exception&) {
    return false;  // a number out of range is a reply that cannot be read, like any other
  }
}

// Fills the pair; false when the host simulates and there is nothing to fill it from.
bool clsKEL4x::MeasureFrequencyResponse(const MemberTexts& texts) {
  constexpr int kAttempts = 10;
  std::string reply;
  for (int attempt = 1; attempt <= kAttempts; ++attempt) {
    enum class Outcome { kSimulated, kDecoded, kFailed };
    const Outcome outcome = Armed(texts, [&] {
      status_.prefix = kNoStatus;
      io_.ExchangeCommand("READ:ATSC:AMPL_PHAS_GD:VALUE?", reply);
      if (SimulationActive()) return Outcome::kSimulated;
      if (DecodePair(reply)) return Outcome::kDecoded;
      if (attempt < kAttempts) host::CurrentHost().Runtime().Wait(1.0F);
      return Outcome::kFailed;
    });
    if (outcome != Outcome::kFailed) return outcome == Outcome::kDecoded;
  }
  Raise(qkelQueryFailed, texts.source, Join("Invalid KEL response string (", reply, ")"));
}

// MeasureFdAmplitudeResponse --------------------------------------------------------------------------------
double clsKEL4x::MeasureFdAmplitudeResponse() {
  static constexpr MemberTexts kGet = ReadTexts("MeasureFdAmplitudeResponse");
  status_.prefix = kNoStatus;
  RequireMeasureMode(kGet, AnyOf(kelAPH, kelAGD));
  return MeasureFrequencyResponse(kGet) ? frequency_response_.amplitude : 0.0;
}

// MeasureFdPhaseResponse ------------------------------------------------------------------------------------
double clsKEL4x::MeasureFdPhaseResponse() {
  static constexpr MemberTexts kGet = ReadTexts("MeasureFdPhaseResponse");
  status_.prefix = kNoStatus;
  RequireMeasureMode(kGet, AnyOf(kelAPH));
  return MeasureFrequencyResponse(kGet) ? frequency_response_.phase_or_group_delay : 0.0;
}

// MeasureFdGroupDelayResponse -------------------------------------------------------------------------------
double clsKEL4x::MeasureFdGroupDelayResponse() {
  static constexpr MemberTexts kGet = ReadTexts("MeasureFdGroupDelayResponse");
  status_.prefix = kNoStatus;
  RequireMeasureMode(kGet, AnyOf(kelAGD));
  return MeasureFrequencyResponse(kGet) ? frequency_response_.phase_or_group_delay : 0.0;
}

}  // namespace qkel4x
