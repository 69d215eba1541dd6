// The settings of the measurements: noise, spectrum, echo pattern, eye monitor, response detector, jitter.
#include "driver/clsKEL4x.h"
#include "driver/config/enum_setting.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"

namespace qkel4x {
namespace {

constexpr ModeSet kSpectrumModes = AnyOf(kelSP_2, kelSP_1, kelSP_3);
constexpr ModeSet kSpectrumAverageModes = AnyOf(kelSP_2, kelSP_1, kelSP_3, kelAJIT, kelPJIT);
constexpr ModeSet kEchoPatternModes = AnyOf(kelEPAT);
constexpr ModeSet kFrequencyResponseModes = AnyOf(kelAPH, kelAGD);

constexpr double kSpectrumLowest = -4'480'000;
constexpr double kSpectrumHighest = 4'480'000;
constexpr double kSpectrumNarrowest = 1'340'000;
constexpr double kHertzPerMegahertz = 1'000'000;

/// A frequency in megahertz with at most two decimals, in the sign-position form.
NumberText MegahertzText(double hertz) {
  return SignPositionText(RoundToDecimals(hertz / kHertzPerMegahertz, 2));
}

// IRREGULAR: a failed write of the noise switch or ratio carries the number of a failed query.
consteval MemberTexts NoiseWriteTexts(std::string_view member, std::string_view access) {
  return TextsOf(member, access, qkelQueryFailed);
}

}  // namespace

// MeasureCdAddNoise -----------------------------------------------------------------------------------------
KelSwitchStates clsKEL4x::MeasureCdAddNoise() {
  static constexpr MemberTexts kGet = ReadTexts("MeasureCdAddNoise");
  std::string reply;
  const std::optional<KelSwitchStates> state = Armed(kGet, [&]() -> std::optional<KelSwitchStates> {
    io_.ExchangeCommand("SENS:ATSC:NOISE:MODE?", reply);
    if (SimulationActive()) return kelOff;
    const std::string_view answered = status_.Decode(reply);
    if (answered == "OFF" || answered == "0") return kelOff;
    if (answered == "ON" || answered == "1") return kelOn;
    return std::nullopt;
  });
  if (state) return *state;
  // IRREGULAR: the text speaks of a measurement mode.
  Raise(qkelInvalidPropertyValue, kGet.source,
        Join("Device reported an unrecognised measurement mode (", reply, ")"));
}

void clsKEL4x::MeasureCdAddNoise(KelSwitchStates state) {
  static constexpr MemberTexts kLet = NoiseWriteTexts("MeasureCdAddNoise", "Let MeasureCdAddNoise");
  if (state != kelOff && state != kelOn) {
    Raise(qkelInvalidPropertyValue, kLet.source,
          Join("Invalid property value (MeasureCdAddNoise = ", DecimalText(state), ")"));
  }
  Armed(kLet, [&] {
    io_.ExchangeCommand(state == kelOn ? "SENS:ATSC:NOISE:MODE ON" : "SENS:ATSC:NOISE:MODE OFF");
  });
}

// MeasureCdAddNoiseCn
// ---------------------------------------------------------------------------------------------- IRREGULAR:
// two blanks before "failed" in all four texts.
double clsKEL4x::MeasureCdAddNoiseCn() {
  static constexpr MemberTexts kGet =
      TextsOf("MeasureCdAddNoiseCn", "Get MeasureCdAddNoiseCn ", qkelQueryFailed);
  return Armed(kGet, [this] {
    std::string reply;
    io_.ExchangeCommand("SENS:ATSC:NOISE?", reply);
    return SimulationActive() ? 0.0 : LeadingNumber(status_.Decode(reply));
  });
}

void clsKEL4x::MeasureCdAddNoiseCn(double decibels) {
  static constexpr MemberTexts kLet = NoiseWriteTexts("MeasureCdAddNoiseCn", "Let MeasureCdAddNoiseCn ");
  const double lowest = StatusSymbolRate() < 6.0 ? 10.0 : 5.0;
  if (!(decibels >= lowest && decibels <= 56.0)) {
    Raise(qkelInvalidPropertyValue, kLet.source,
          Join("Invalid property value (MeasureCdAddNoiseCn = ", GeneralText(decibels), ")"));
  }
  Armed(kLet, [&] { io_.ExchangeCommand(Join("SENS:ATSC:NOISE ", SignPositionText(decibels))); });
}

// MeasureNoiseGenerator -------------------------------------------------------------------------------------
double clsKEL4x::MeasureNoiseGenerator() { return MeasureCdAddNoiseCn(); }
void clsKEL4x::MeasureNoiseGenerator(double decibels) { MeasureCdAddNoiseCn(decibels); }

// MeasureCdSymbolCount --------------------------------------------------------------------------------------
std::int32_t clsKEL4x::MeasureCdSymbolCount() {
  static constexpr MemberTexts kGet = ReadTexts("MeasureCdSymbolCount");
  return Armed(kGet, [this] {
    std::string reply;
    io_.ExchangeCommand("SENS:ATSC:CD:INT:COUN?", reply);
    return SimulationActive() ? 0 : RoundToInt32(LeadingNumber(status_.Decode(reply)));
  });
}

void clsKEL4x::MeasureCdSymbolCount(std::int32_t count) {
  static constexpr MemberTexts kLet = WriteTexts("MeasureCdSymbolCount");
  if (count < 1 || count > 99999) {
    Raise(qkelInvalidPropertyValue, kLet.source,
          Join("Invalid property value (MeasureCdSymbolCount = ", DecimalText(count), ")"));
  }
  Armed(kLet, [&] { io_.ExchangeCommand(Join("SENS:ATSC:CD:INT:COUN ", SignPositionText(count))); });
}

// MeasureFdSpectrumAverageCount -----------------------------------------------------------------------------
std::int16_t clsKEL4x::MeasureFdSpectrumAverageCount() {
  static constexpr MemberTexts kGet = ReadTexts("MeasureFdSpectrumAverageCount");
  RequireMeasureMode(kGet, kSpectrumAverageModes);
  return Armed(kGet, [this]() -> std::int16_t {
    std::string reply;
    io_.ExchangeCommand("SENS:ATSC:SPEC:AVG?", reply);
    if (SimulationActive()) return 0;
    const std::string_view answered = status_.Decode(reply);
    if (answered != "1" && answered != "ON") return 0;
    io_.ExchangeCommand("SENS:ATSC:SPEC:AVG:COUN?", reply);
    return SimulationActive() ? std::int16_t{0} : RoundToInt16(LeadingNumber(status_.Decode(reply)));
  });
}

void clsKEL4x::MeasureFdSpectrumAverageCount(std::int16_t count) {
  static constexpr MemberTexts kLet = WriteTexts("MeasureFdSpectrumAverageCount");
  RequireMeasureMode(kLet, kSpectrumAverageModes);
  if (count < 0 || count > 999) {
    Raise(qkelInvalidPropertyValue, kLet.source, "MeasureFdSpectrumAverageCount value out of range");
  }
  Armed(kLet, [&] {
    // Off leaves the instrument's count as it was.
    if (count == 0) {
      io_.ExchangeCommand("SENS:ATSC:SPEC:AVG OFF");
    } else {
      io_.ExchangeCommand("SENS:ATSC:SPEC:AVG ON");
      io_.ExchangeCommand(Join("SENS:ATSC:SPEC:AVG:COUN ", DecimalText(count)));
    }
  });
}

// MeasureFdSpectrumDetector ---------------------------------------------------------------------------------
static constexpr Mnemonic kMeasureFdSpectrumDetectorMnemonics[] = {
    {kelMIN, "MIN"},
    {kelRMS, "RMS"},
    {kelMAX, "MAX"},
};
static constexpr EnumSetting kMeasureFdSpectrumDetector{
    .let = WriteTexts("MeasureFdSpectrumDetector"),
    .get = ReadTexts("MeasureFdSpectrumDetector"),
    .write = "SENS:ATSC:SPEC:DET ",
    .query = "SENS:ATSC:SPEC:DET?",
    .choices = std::nullopt,
    .mnemonics = kMeasureFdSpectrumDetectorMnemonics,
    .refused = {"MeasureFdSpectrumDetector value out of range"},
    .refusing_source = "clsKEL4x.MeasureFdSpectrumDetector",
};
KelFdSpectrumDetectors clsKEL4x::MeasureFdSpectrumDetector() {
  RequireMeasureMode(kMeasureFdSpectrumDetector.get, kSpectrumModes);
  return static_cast<KelFdSpectrumDetectors>(ReadSetting(kMeasureFdSpectrumDetector));
}
void clsKEL4x::MeasureFdSpectrumDetector(KelFdSpectrumDetectors value) {
  RequireMeasureMode(kMeasureFdSpectrumDetector.let, kSpectrumModes);
  WriteSetting(kMeasureFdSpectrumDetector, value);
}

// MeasureFdSpectrumStartFreq --------------------------------------------------------------------------------
double clsKEL4x::MeasureFdSpectrumStartFreq() {
  static constexpr MemberTexts kGet = ReadTexts("MeasureFdSpectrumStartFreq");
  RequireMeasureMode(kGet, kSpectrumModes);
  return Armed(kGet, [this] {
    std::string reply;
    io_.ExchangeCommand("SENS:ATSC:SPEC:FREQ:STAR?", reply);
    return SimulationActive() ? 0.0 : LeadingNumber(status_.Decode(reply)) * kHertzPerMegahertz;
  });
}

// IRREGULAR: simulation lifts the range check, which needs the other end of the span from the instrument.
void clsKEL4x::MeasureFdSpectrumStartFreq(double hertz) {
  static constexpr MemberTexts kLet = WriteTexts("MeasureFdSpectrumStartFreq");
  RequireMeasureMode(kLet, kSpectrumModes);
  const double stop = MeasureFdSpectrumStopFreq();
  const bool in_range = hertz >= kSpectrumLowest && hertz <= stop - kSpectrumNarrowest;
  if (!in_range && !SimulationActive()) {
    Raise(qkelInvalidPropertyValue, kLet.source, "MeasureFdSpectrumStartFreq value out of range");
  }
  Armed(kLet, [&] { io_.ExchangeCommand(Join("SENS:ATSC:SPEC:FREQ:STAR ", MegahertzText(hertz))); });
}

// MeasureFdSpectrumStopFreq ---------------------------------------------------------------------------------
double clsKEL4x::MeasureFdSpectrumStopFreq() {
  static constexpr MemberTexts kGet = ReadTexts("MeasureFdSpectrumStopFreq");
  RequireMeasureMode(kGet, kSpectrumModes);
  return Armed(kGet, [this] {
    std::string reply;
    io_.ExchangeCommand("SENS:ATSC:SPEC:FREQ:STOP?", reply);
    return SimulationActive() ? 0.0 : LeadingNumber(status_.Decode(reply)) * kHertzPerMegahertz;
  });
}

// IRREGULAR: simulation lifts the range check, which needs the other end of the span from the instrument.
void clsKEL4x::MeasureFdSpectrumStopFreq(double hertz) {
  static constexpr MemberTexts kLet = WriteTexts("MeasureFdSpectrumStopFreq");
  RequireMeasureMode(kLet, kSpectrumModes);
  const double start = MeasureFdSpectrumStartFreq();
  const bool in_range = hertz >= start + kSpectrumNarrowest && hertz <= kSpectrumHighest;
  if (!in_range && !SimulationActive()) {
    Raise(qkelInvalidPropertyValue, kLet.source, "MeasureFdSpectrumStopFreq value out of range");
  }
  Armed(kLet, [&] { io_.ExchangeCommand(Join("SENS:ATSC:SPEC:FREQ:STOP ", MegahertzText(hertz))); });
}

// MeasureTdEchoPatRange -------------------------------------------------------------------------------------
static constexpr Mnemonic kMeasureTdEchoPatRangeMnemonics[] = {
    {kelFULL, "FULL"}, {kelRG1, "RG1"},    {kelRG2, "RG2"},
    {kelRG3, "RG3"},   {kelZOOM1, "SP_1"}, {kelZOOM2, "SP_2"},
};
static constexpr EnumSetting kMeasureTdEchoPatRange{
    .let = WriteTexts("MeasureTdEchoPatRange"),
    .get = ReadTexts("MeasureTdEchoPatRange"),
    .write = "SENS:ATSC:EPAT:RANG ",
    .query = "SENS:ATSC:EPAT:RANG?",
    .choices = std::nullopt,
    .mnemonics = kMeasureTdEchoPatRangeMnemonics,
    .refused = {"MeasureTdEchoPatRange value out of range"},
    .refusing_source = "clsKEL4x.MeasureTdEchoPatRange",
};
KelEchoPatternRanges clsKEL4x::MeasureTdEchoPatRange() {
  RequireMeasureMode(kMeasureTdEchoPatRange.get, kEchoPatternModes);
  return static_cast<KelEchoPatternRanges>(ReadSetting(kMeasureTdEchoPatRange));
}
// IRREGULAR: firmware below 5.0 is refused the ranges that are not a zoom, with a text that says the
// opposite.
void clsKEL4x::MeasureTdEchoPatRange(KelEchoPatternRanges value) {
  RequireMeasureMode(kMeasureTdEchoPatRange.let, kEchoPatternModes);
  const bool in_range = value >= kelFULL && value <= kelZOOM2;
  if (in_range && FirmwareNumber() < 5.0 && value != kelZOOM1 && value != kelZOOM2) {
    Raise(qkelFuntionNotAvailable, kMeasureTdEchoPatRange.let.source,
          "Ghost Pattern Ranges ZOOM1 and ZOOM2 are not supported by current firmware.");
  }
  WriteSetting(kMeasureTdEchoPatRange, value);
}

// MeasureTdEchoPatNumValues ---------------------------------------------------------------------------------
static constexpr Mnemonic kMeasureTdEchoPatNumValuesMnemonics[] = {
    {kelOff, "OFF"},
    {kelOn, "ON"},
};
static constexpr EnumSetting kMeasureTdEchoPatNumValues{
    .let = WriteTexts("MeasureTdEchoPatNumValues"),
    .get = ReadTexts("MeasureTdEchoPatNumValues"),
    .write = "SENS:ATSC:EPAT:NUMV ",
    .query = "SENS:ATSC:EPAT:NUMV?",
    .choices = std::nullopt,
    .mnemonics = kMeasureTdEchoPatNumValuesMnemonics,
    .refused = {"MeasureTdEchoPatNumValues value out of range"},
    .refusing_source = "clsKEL4x.MeasureTdEchoPatNumValues",
};
KelSwitchStates clsKEL4x::MeasureTdEchoPatNumValues() {
  RequireMeasureMode(kMeasureTdEchoPatNumValues.get, kEchoPatternModes);
  return static_cast<KelSwitchStates>(ReadSetting(kMeasureTdEchoPatNumValues));
}
void clsKEL4x::MeasureTdEchoPatNumValues(KelSwitchStates value) {
  RequireMeasureMode(kMeasureTdEchoPatNumValues.let, kEchoPatternModes);
  WriteSetting(kMeasureTdEchoPatNumValues, value);
}

// MeasureTdEchoPatScale -------------------------------------------------------------------------------------
static constexpr Mnemonic kMeasureTdEchoPatScaleMnemonics[] = {
    {kelMicroSec, "EP1"},
    {kelKilometres, "EP2"},
    {kelMiles, "EP3"},
};
static constexpr EnumSetting kMeasureTdEchoPatScale{
    .let = WriteTexts("MeasureTdEchoPatScale"),
    .get = ReadTexts("MeasureTdEchoPatScale"),
    .write = "SENS:ATSC:EPAT:SCAL ",
    .query = "SENS:ATSC:EPAT:SCAL?",
    .choices = std::nullopt,
    .mnemonics = kMeasureTdEchoPatScaleMnemonics,
    .refused = {"MeasureTdEchoPatScale value out of range"},
    .refusing_source = "clsKEL4x.MeasureTdEchoPatScale",
};
KelEchoPatternScales clsKEL4x::MeasureTdEchoPatScale() {
  RequireMeasureMode(kMeasureTdEchoPatScale.get, kEchoPatternModes);
  return static_cast<KelEchoPatternScales>(ReadSetting(kMeasureTdEchoPatScale));
}
void clsKEL4x::MeasureTdEchoPatScale(KelEchoPatternScales value) {
  RequireMeasureMode(kMeasureTdEchoPatScale.let, kEchoPatternModes);
  WriteSetting(kMeasureTdEchoPatScale, value);
}

// MeasureTdEmInterval
// ---------------------------------------------------------------------------------------------- IRREGULAR:
// kel20sec (0) is refused although the enumeration has it; the number itself is sent.
KelEmIntervals clsKEL4x::MeasureTdEmInterval() {
  static constexpr MemberTexts kGet = ReadTexts("MeasureTdEmInterval");
  return Armed(kGet, [this] {
    std::string reply;
    io_.ExchangeCommand("SENS:ATSC:EYEM:INT?", reply);
    if (SimulationActive()) return KelEmIntervals{};
    return static_cast<KelEmIntervals>(RoundToInt32(LeadingNumber(status_.Decode(reply))));
  });
}

void clsKEL4x::MeasureTdEmInterval(KelEmIntervals interval) {
  static constexpr MemberTexts kLet = WriteTexts("MeasureTdEmInterval");
  if (interval < kel40sec || interval > kel1000days) {
    Raise(qkelInvalidPropertyValue, kLet.source,
          Join("Invalid property value (MeasureTdEmInterval = ", DecimalText(interval), ")"));
  }
  Armed(kLet, [&] { io_.ExchangeCommand(Join("SENS:ATSC:EYEM:INT ", SignPositionText(interval))); });
}

// MeasureFdDetector -----------------------------------------------------------------------------------------
static constexpr Mnemonic kMeasureFdDetectorMnemonics[] = {
    {kelFdRMS, "RMS"},
    {kelFdPEAK, "PEAK"},
};
static constexpr EnumSetting kMeasureFdDetector{
    .let = WriteTexts("MeasureFdDetector"),
    .get = ReadTexts("MeasureFdDetector"),
    .write = "SENS:ATSC:RESP:DET ",
    .query = "SENS:ATSC:RESP:DET?",
    .choices = std::nullopt,
    .mnemonics = kMeasureFdDetectorMnemonics,
    .refused = {"MeasureFdDetector value out of range"},
    .refusing_source = "clsKEL4x.MeasureFdDetector",
};
KelFdDetectors clsKEL4x::MeasureFdDetector() {
  RequireMeasureMode(kMeasureFdDetector.get, kFrequencyResponseModes);
  return static_cast<KelFdDetectors>(ReadSetting(kMeasureFdDetector));
}
void clsKEL4x::MeasureFdDetector(KelFdDetectors value) {
  RequireMeasureMode(kMeasureFdDetector.let, kFrequencyResponseModes);
  WriteSetting(kMeasureFdDetector, value);
}

// MeasureFdJitterApplication --------------------------------------------------------------------------------
KelFdJitterApplications clsKEL4x::MeasureFdJitterApplication() {
  static constexpr MemberTexts kGet = ReadTexts("MeasureFdJitterApplication");
  return Armed(kGet, [this] {
    std::string reply;
    io_.ExchangeCommand("SENS:ATSC:JITT:APPL?", reply);
    if (SimulationActive()) return KelFdJitterApplications{};
    return static_cast<KelFdJitterApplications>(RoundToInt32(NumberFromText(status_.Decode(reply))));
  });
}

void clsKEL4x::MeasureFdJitterApplication(KelFdJitterApplications application) {
  static constexpr MemberTexts kLet = WriteTexts("MeasureFdJitterApplication");
  if (application != kelFdJitterCW && application != kelFdJitterNoise) {
    Raise(qkelInvalidPropertyValue, kLet.source, "MeasureFdJitterApplication value out of range");
  }
  Armed(kLet, [&] { io_.ExchangeCommand(Join("SENS:ATSC:JITT:APPL ", DecimalText(application))); });
}

}  // namespace qkel4x
