// The jitter spectra: seven lines of amplitude jitter and seven of phase jitter, each a value and a
// frequency.
#include "driver/clsKEL4x.h"
#include "driver/core/raise.h"

namespace qkel4x {

// MeasureFdJitterAmplitude
// ----------------------------------------------------------------------------------------- IRREGULAR: a
// method that fails with the texts and the number of a read.
void clsKEL4x::MeasureFdJitterAmplitude() {
  static constexpr MemberTexts kTexts = ReadTexts("MeasureFdJitterAmplitude");
  status_.prefix = kNoStatus;
  RequireMeasureMode(kTexts, AnyOf(kelAJIT), Simulation::kKeepsGate);
  amplitude_jitter_.valid = false;
  Armed(kTexts, [this] {
    std::string reply;
    ExchangeOnce("READ:ATSC:JITT:VAL?", reply);
    if (!SimulationActive()) amplitude_jitter_.Store(reply);
  });
}

// MeasureFdJitterPhase
// --------------------------------------------------------------------------------------------- IRREGULAR: a
// method that fails with the texts and the number of a read.
void clsKEL4x::MeasureFdJitterPhase() {
  static constexpr MemberTexts kTexts = ReadTexts("MeasureFdJitterPhase");
  status_.prefix = kNoStatus;
  RequireMeasureMode(kTexts, AnyOf(kelPJIT), Simulation::kKeepsGate);
  phase_jitter_.valid = false;
  Armed(kTexts, [this] {
    std::string reply;
    ExchangeOnce("READ:ATSC:JITT:VAL?", reply);
    if (!SimulationActive()) phase_jitter_.Store(reply);
  });
}

// AmplitudeJitterValue --------------------------------------------------------------------------------------
double clsKEL4x::AmplitudeJitterValue(const std::int16_t& intNumber) {
  static constexpr StoredTexts kTexts{
      .source = "clsKEL4x.AmplitudeJitterValue",
      .out_of_range = "Get AmplitudeJitterValue: index value out of range",
      .no_value = "Get AmplitudeJitterValue: no value available",
  };
  if (!amplitude_jitter_.valid) MeasureFdJitterAmplitude();
  return StoredValue(kTexts, amplitude_jitter_.first, intNumber).value_or(0.0);
}

// AmplitudeJitterFreq ---------------------------------------------------------------------------------------
double clsKEL4x::AmplitudeJitterFreq(const std::int16_t& intNumber) {
  static constexpr StoredTexts kTexts{
      .source = "clsKEL4x.AmplitudeJitterFreq",
      .out_of_range = "Get AmplitudeJitterFreq: index value out of range",
      .no_value = "Get AmplitudeJitterFreq: no value available",
  };
  if (!amplitude_jitter_.valid) MeasureFdJitterAmplitude();
  return StoredValue(kTexts, amplitude_jitter_.second, intNumber).value_or(0.0);
}

// PhaseJitterValue ------------------------------------------------------------------------------------------
double clsKEL4x::PhaseJitterValue(const std::int16_t& intNumber) {
  static constexpr StoredTexts kTexts{
      .source = "clsKEL4x.PhaseJitterValue",
      .out_of_range = "Get PhaseJitterValue: index value out of range",
      .no_value = "Get PhaseJitterValue: no value available",
  };
  if (!phase_jitter_.valid) MeasureFdJitterPhase();
  return StoredValue(kTexts, phase_jitter_.first, intNumber).value_or(0.0);
}

// PhaseJitterFreq -------------------------------------------------------------------------------------------
double clsKEL4x::PhaseJitterFreq(const std::int16_t& intNumber) {
  static constexpr StoredTexts kTexts{
      .source = "clsKEL4x.PhaseJitterFreq",
      .out_of_range = "Get PhaseJitterFreq: index value out of range",
      .no_value = "Get PhaseJitterFreq: no value available",
  };
  if (!phase_jitter_.valid) MeasureFdJitterPhase();
  return StoredValue(kTexts, phase_jitter_.second, intNumber).value_or(0.0);
}

}  // namespace qkel4x
