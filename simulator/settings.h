// Everything that commands can set, with the mnemonics of the choices.
#pragma once

#include <string_view>

namespace simulator {

/// One choice of a setting: what a query answers and what a command accepts beside that.
struct Mnemonic {
  std::string_view answer;
  std::string_view also = {};
};

enum class MeasureMode {
  kNorm,
  kCdi,
  kSp1,
  kSp2,
  kSp3,
  kAph,
  kAgd,
  kPjit,
  kAjit,
  kPol,
  kAdis,
  kCcdf,
  kCenv,
  kEpat,
  kEyem,
  kHist,
  kHii,
  kHiq,
  kPar,
  kPv,
};

enum class InputPort { kRf, kDemodulator, kIf };
enum class Equalizer { kOff, kOn, kFreeze };
enum class EqualizerMode { kComplex, kReal };
enum class Saw { kOff, kMhz2, kMhz6, kMhz7, kMhz8 };
enum class LevelUnit { kDbmv, kDbpw, kDbuw, kDbm, kDbuv, kMv };
enum class DemodAttenuator { kAuto, kLowAttenuation, kLowPreamplifier, kHigh };
enum class ReceiverMode { kLowNoise, kNormal, kLowDistortion, kLowestDistortion };
enum class NotchWidth { k100Hz, k1kHz, k10kHz, k100kHz };
enum class EchoRange { kFull, kRange1, kRange2, kRange3, kZoom1, kZoom2 };
enum class EchoScale { kMicroseconds, kKilometres, kMiles };
enum class Speed { kSlow, kMedium, kFast };
enum class LoopWidth { kLow, kMedium, kHigh };
enum class Detector { kMinimum, kRms, kMaximum };
enum class ResponseDetector { kRms, kPeak };
enum class Impedance { k50Ohm, k75Ohm };
enum class FixedFrequency { kCentre, kPilot };
enum class Sideband { kNormal, kInverted };
enum class Reference { kInternal, kExternal };
enum class OnOff { kOff, kOn };
enum class AgcSpeed { kSlow, kFast };

inline constexpr Mnemonic kOperatingModes[] = {{"NYQI"}, {"NYQM"}, {"NYQN"}, {"QAM"},  {"QAMA"},
                                               {"J83A"}, {"J83B"}, {"J83C"}, {"MPEG"}, {"M83A"},
                                               {"M83B"}, {"M83C"}, {"DVBT"}, {"ATSC"}, {"NTSC"}};
inline constexpr int kAtsc = 13;
inline constexpr Mnemonic kMeasureModes[] = {
    {"NORM", "NORMAL"}, {"CDI"},  {"SP_1"}, {"SP_2"}, {"SP_3"}, {"APH"},  {"AGD"},
    {"PJIT"},           {"AJIT"}, {"POL"},  {"ADIS"}, {"CCDF"}, {"CENV"}, {"EPAT"},
    {"EYEM"},           {"HIST"}, {"HII"},  {"HIQ"},  {"PAR"},  {"PV"}};
inline constexpr Mnemonic kOnOff[] = {{"OFF", "0"}, {"ON", "1"}};
inline constexpr Mnemonic kAgcSpeeds[] = {{"SLOW"}, {"FAST"}};
inline constexpr Mnemonic kSpeeds[] = {{"SLOW"}, {"MED", "MEDIUM"}, {"FAST"}};
inline constexpr Mnemonic kLoopWidths[] = {{"LO", "LOW"}, {"MED", "MEDIUM"}, {"HI", "HIGH"}};
inline constexpr Mnemonic kEqualizers[] = {{"OFF", "0"}, {"ON", "1"}, {"FRE", "FREEZE"}};
inline constexpr Mnemonic kEqualizerModes[] = {{"COMP", "COMPLEX"}, {"REAL"}};
inline constexpr Mnemonic kFixedFrequencies[] = {{"CENT", "CENTER"}, {"PIL", "PILOT"}};
inline constexpr Mnemonic kSidebands[] = {{"NORM", "NORMAL"}, {"INV", "INVERTED"}};
inline constexpr Mnemonic kSaws[] = {{"OFF", "0"}, {"MHZ2"}, {"MHZ6"}, {"MHZ7"}, {"MHZ8"}};
inline constexpr Mnemonic kReferences[] = {{"INT", "INTERNAL"}, {"EXT", "EXTERNAL"}};
inline constexpr Mnemonic kLevelUnits[] = {{"DBMV"}, {"DBPW"}, {"DBUW"}, {"DBM"}, {"DBUV"}, {"MV"}};
inline constexpr Mnemonic kNotchWidths[] = {{"H100"}, {"K1"}, {"K10"}, {"K100"}};
inline constexpr Mnemonic kInputPorts[] = {{"RF"}, {"DEM", "DEMODULATOR"}, {"IF"}};
inline constexpr Mnemonic kImpedances[] = {{"O50"}, {"O75"}};
inline constexpr Mnemonic kReceiverModes[] = {{"LNO"}, {"IGN"}, {"LDIS"}, {"LSD"}};
inline constexpr Mnemonic kSwitchedReceiverModes[] = {{"LNO"}, {"NORM", "NORMAL"}, {"LDIS"}};
inline constexpr Mnemonic kDemodAttenuators[] = {{"AUTO"}, {"MNLW"}, {"MNLE"}, {"MNHI"}};
inline constexpr Mnemonic kDetectors[] = {{"MIN", "MINIMUM"}, {"RMS"}, {"MAX", "MAXIMUM"}};
inline constexpr Mnemonic kResponseDetectors[] = {{"RMS"}, {"PEAK"}};
inline constexpr Mnemonic kEchoRanges[] = {{"FULL"}, {"RG1"}, {"RG2"}, {"RG3"}, {"SP_1"}, {"SP_2"}};
inline constexpr Mnemonic kEchoScales[] = {{"EP1"}, {"EP2"}, {"EP3"}};
inline constexpr Mnemonic kBerIntegrations[] = {{"0", "EXT"}, {"1"}, {"10"}, {"100"}, {"1000"}};

/// The state after power-on, SYST:RES and *RST.
struct Settings {
  int operating_mode = kAtsc;
  MeasureMode measure_mode = MeasureMode::kNorm;

  InputPort input_port = InputPort::kRf;
  Impedance impedance = Impedance::k50Ohm;
  OnOff attenuation_auto = OnOff::kOn;
  double attenuation_db = 10.0;  ///< the manual step
  ReceiverMode receiver_mode = ReceiverMode::kNormal;
  DemodAttenuator demod_attenuator = DemodAttenuator::kAuto;
  OnOff high_adjacent_channel = OnOff::kOff;

  double center_frequency_hz = 500e6;
  double symbol_rate = 10762237.8;
  FixedFrequency fixed_frequency = FixedFrequency::kCentre;
  Sideband sideband = Sideband::kNormal;
  Reference reference = Reference::kInternal;
  Saw saw = Saw::kMhz6;
  OnOff notch = OnOff::kOff;
  NotchWidth notch_width = NotchWidth::k1kHz;
  double notch_frequency_hz = 1750000.0;

  AgcSpeed agc = AgcSpeed::kSlow;
  LoopWidth carrier_loop = LoopWidth::kMedium;
  LoopWidth symbol_loop = LoopWidth::kMedium;
  Equalizer equalizer = Equalizer::kOn;
  EqualizerMode equalizer_mode = EqualizerMode::kComplex;
  Speed equalizer_adaptation = Speed::kMedium;
  int ber_integration = 3;  ///< position in kBerIntegrations
  LevelUnit level_unit = LevelUnit::kDbm;

  OnOff noise = OnOff::kOff;
  double noise_cn_db = 30.0;
  double symbol_count = 10000.0;
  OnOff spectrum_average = OnOff::kOn;
  double spectrum_average_count = 10.0;
  Detector spectrum_detector = Detector::kRms;
  double spectrum_start_mhz = -4.48;
  double spectrum_stop_mhz = 4.48;
  EchoRange echo_range = EchoRange::kFull;
  OnOff echo_values = OnOff::kOff;
  EchoScale echo_scale = EchoScale::kMicroseconds;
  double eye_interval = 2.0;
  ResponseDetector response_detector = ResponseDetector::kRms;
  double jitter_application = 0.0;  ///< 0 discrete lines, 1 noise
};

/// The ATSC pilot lies a quarter of the symbol rate below the channel centre, above it in an inverted signal
/// (ATSC A/53 part 2: vestigial sideband with its pilot at the lower edge).
inline double PilotFrequency(const Settings& settings) {
  const double quarter = settings.symbol_rate / 4.0;
  return settings.center_frequency_hz + (settings.sideband == Sideband::kNormal ? -quarter : quarter);
}

}  // namespace simulator
