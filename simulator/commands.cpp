// The command language: one row for each header, the irregular setters and queries written out above the
// table.
#include "simulator/commands.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <type_traits>
#include <vector>

#include "simulator/channel.h"
#include "simulator/number_text.h"

namespace simulator {
namespace {

// Choices --------------------------------------------------------------------

int Position(std::span<const Mnemonic> mnemonics, std::string_view text) {
  for (std::size_t i = 0; i < mnemonics.size(); ++i) {
    const Mnemonic& mnemonic = mnemonics[i];
    if (EqualInAnyCase(text, mnemonic.answer) ||
        (!mnemonic.also.empty() && EqualInAnyCase(text, mnemonic.also))) {
      return static_cast<int>(i);
    }
  }
  return -1;
}

template <auto kMember, const auto& kMnemonics>
ScpiError SetChoice(Model& model, Parameters parameters) {
  const int position = Position(kMnemonics, parameters[0]);
  if (position < 0) return ScpiError::kIllegalParameterValue;
  auto& setting = model.Set().*kMember;
  setting = static_cast<std::remove_reference_t<decltype(setting)>>(position);
  return ScpiError::kNone;
}

template <auto kMember, const auto& kMnemonics>
void GetChoice(Model& model, std::string& reply) {
  reply.append(kMnemonics[static_cast<std::size_t>(model.Set().*kMember)].answer);
}

// Numbers --------------------------------------------------------------------

enum class Unit { kNone, kHertz, kMegahertz, kDecibel };

struct Range {
  double low;
  double high;
  Unit unit = Unit::kNone;
  bool whole = false;
};

// The factor that brings a number with `suffix` to the unit of the setting; 0 for a suffix that does not fit.
double SuffixFactor(Unit unit, std::string_view suffix) {
  if (suffix.empty()) return 1.0;
  if (unit == Unit::kDecibel) return EqualInAnyCase(suffix, "DB") ? 1.0 : 0.0;
  if (unit == Unit::kNone) return 0.0;
  const double own = unit == Unit::kHertz ? 1.0 : 1e-6;
  if (EqualInAnyCase(suffix, "HZ")) return own;
  if (EqualInAnyCase(suffix, "KHZ")) return own * 1e3;
  if (EqualInAnyCase(suffix, "MHZ")) return own * 1e6;
  if (EqualInAnyCase(suffix, "GHZ")) return own * 1e9;
  return 0.0;
}

ScpiError ReadNumber(std::string_view text, const Range& range, double& value) {
  std::string_view suffix;
  const auto number = LeadingNumber(text, suffix);
  if (!number) return ScpiError::kDataType;
  const double factor = SuffixFactor(range.unit, suffix);
  if (factor == 0.0) return ScpiError::kInvalidSuffix;
  const double wanted = range.whole ? std::nearbyint(*number * factor) : *number * factor;
  if (!(wanted >= range.low && wanted <= range.high)) return ScpiError::kDataOutOfRange;
  value = wanted;
  return ScpiError::kNone;
}

template <auto kMember, const Range& kRange>
ScpiError SetNumber(Model& model, Parameters parameters) {
  return ReadNumber(parameters[0], kRange, model.Set().*kMember);
}

template <auto kMember>
void GetNumber(Model& model, std::string& reply) {
  AppendPlain(reply, model.Set().*kMember);
}

constexpr Range kCenterRange{42e6, 10000000009.0, Unit::kHertz};
constexpr Range kPilotRange{3e6, 1e9, Unit::kHertz};
constexpr Range kSymbolRateRange{2e6, 11e6};
constexpr Range kNotchRange{1666000.0, 1834000.0, Unit::kHertz};
constexpr Range kNoiseRange{5.0, 56.0, Unit::kDecibel};
constexpr Range kSymbolCountRange{1.0, 99999.0, Unit::kNone, true};
constexpr Range kAverageCountRange{1.0, 999.0, Unit::kNone, true};
constexpr Range kEyeIntervalRange{0.0, 21.0, Unit::kNone, true};
constexpr Range kJitterApplicationRange{0.0, 1.0, Unit::kNone, true};
constexpr Range kAttenuationRange{0.0, 55.0, Unit::kDecibel};
constexpr Range kSpectrumRange{-4.48, 4.48, Unit::kMegahertz};
constexpr Range kRegisterRange{0.0, 255.0, Unit::kNone, true};

// Readings -------------------------------------------------------------------

struct Shown {
  int decimals;
  std::string_view unit = {};
};
constexpr Shown kDb1{1, " (dB)"};
constexpr Shown kDb2{2, " (dB)"};
constexpr Shown kPct2{2, " (%)"};
constexpr Shown kDegrees2{2, " (deg)"};
constexpr Shown kSymbols2{2, " (Sym/s)"};
constexpr Shown kMbit6{6, " (MBit/s)"};
constexpr Shown kRatio3{3};
constexpr Shown kWhole{0};

template <auto kMember, const Shown& kShown>
void GetReading(Model& model, std::string& reply) {
  AppendFixed(reply, model.Current().*kMember, kShown.decimals);
  reply.append(kShown.unit);
}

constexpr std::string_view kLevelUnitNames[] = {"dBmV", "dBpW", "dBuW", "dBm", "dBuV", "mV"};

void GetLevel(Model& model, std::string& reply) {
  switch (model.Received().rf_state) {
    case RfState::kNoSignal:
      reply.append("NORF");
      return;
    case RfState::kUnder:
      reply.append("UND ");
      break;
    case RfState::kOver:
      reply.append("OVER ");
      break;
    case RfState::kOk:
      break;
  }
  const LevelUnit unit = model.Set().level_unit;
  AppendFixed(reply, LevelIn(unit, model.Current().level_dbm, model.InputOhm()),
              unit == LevelUnit::kMv ? 4 : 1);
  reply.append(" (").append(kLevelUnitNames[static_cast<std::size_t>(unit)]).push_back(')');
}

void GetRfState(Model& model, std::string& reply) {
  static constexpr std::string_view kNames[] = {"OK", "UND", "NORF", "OVER"};
  reply.append(kNames[static_cast<std::size_t>(model.Received().rf_state)]);
}

void GetPilotOffset(Model& model, std::string& reply) {
  const double hertz = model.Current().carrier_offset_hz;
  // Firmware before 4.8 reports kilohertz.
  if (model.FirmwareVersion() < 4.8) {
    AppendFixed(reply, hertz / 1000.0, 4);
    reply.append(" (kHz)");
  } else {
    AppendFixed(reply, hertz, 1);
    reply.append(" (Hz)");
  }
}

void GetBerBefore(Model& model, std::string& reply) {
  AppendErrorRatio(reply, model.Current().errors.ber_before_rs, model.BerBits());
}

void GetBerAfter(Model& model, std::string& reply) {
  AppendErrorRatio(reply, model.Current().errors.ber_after_rs, model.BerBits());
}

void GetSegmentErrorRatio(Model& model, std::string& reply) {
  constexpr double kSegmentBits = 207.0 * 8.0;
  AppendErrorRatio(reply, model.Current().errors.segment_error_ratio, model.BerBits() / kSegmentBits);
}

void GetCarrierLock(Model& model, std::string& reply) { reply.push_back(model.CarrierLocked() ? '1' : '0'); }
void GetFecLock(Model& model, std::string& reply) { reply.push_back(model.FecLocked() ? '1' : '0'); }

void GetReferenceUnlocked(Model& model, std::string& reply) {
  const bool external = model.Set().reference == Reference::kExternal;
  reply.push_back(external && !model.Setup().external_reference_present ? '1' : '0');
}

void GetAcquisitions(Model& model, std::string& reply) {
  AppendInteger(reply, static_cast<long long>(std::min(32767.0, 1.0 + model.ModeSeconds() * 5.0)));
}

void GetSpectrumAverages(Model& model, std::string& reply) {
  const double wanted = model.Set().spectrum_average == OnOff::kOn ? model.Set().spectrum_average_count : 1.0;
  AppendInteger(reply, static_cast<long long>(std::min(wanted, 1.0 + model.ModeSeconds() * 4.0)));
}

// Modes ----------------------------------------------------------------------

ScpiError SetMeasureMode(Model& model, Parameters parameters) {
  if (model.Set().operating_mode != kAtsc) return ScpiError::kSettingsConflict;
  return SetChoice<&Settings::measure_mode, kMeasureModes>(model, parameters);
}

void GetMeasureMode(Model& model, std::string& reply) {
  if (model.Set().operating_mode != kAtsc) {
    reply.push_back('0');
    return;
  }
  GetChoice<&Settings::measure_mode, kMeasureModes>(model, reply);
}

// Input ----------------------------------------------------------------------

ScpiError SetImpedance(Model& model, Parameters parameters) {
  if (!model.HasImpedanceSwitch()) return ScpiError::kHardwareMissing;
  return SetChoice<&Settings::impedance, kImpedances>(model, parameters);
}

ScpiError SetSwitchedReceiverMode(Model& model, Parameters parameters) {
  if (!model.HasImpedanceSwitch()) return ScpiError::kHardwareMissing;
  return SetChoice<&Settings::receiver_mode, kSwitchedReceiverModes>(model, parameters);
}

void GetSwitchedReceiverMode(Model& model, std::string& reply) {
  // The switched input has no lowest-distortion setting of its own.
  const ReceiverMode mode = model.Set().receiver_mode == ReceiverMode::kLowestDistortion
                                ? ReceiverMode::kLowDistortion
                                : model.Set().receiver_mode;
  reply.append(kSwitchedReceiverModes[static_cast<std::size_t>(mode)].answer);
}

ScpiError SetAttenuation(Model& model, Parameters parameters) {
  double wanted = 0.0;
  const ScpiError error = ReadNumber(parameters[0], kAttenuationRange, wanted);
  if (error != ScpiError::kNone) return error;
  if (std::fmod(wanted, 5.0) != 0.0) return ScpiError::kIllegalParameterValue;
  model.Set().attenuation_db = wanted;
  model.Set().attenuation_auto = OnOff::kOff;
  return ScpiError::kNone;
}

void GetAttenuation(Model& model, std::string& reply) {
  AppendInteger(reply, std::lround(model.Received().attenuation_db));
}

void GetDemodAttenuation(Model& model, std::string& reply) {
  AppendInteger(reply, model.Received().demod_attenuator);
}

// Frequencies ----------------------------------------------------------------

ScpiError SetPilot(Model& model, Parameters parameters) {
  double pilot = 0.0;
  const ScpiError error = ReadNumber(parameters[0], kPilotRange, pilot);
  if (error != ScpiError::kNone) return error;
  model.Set().center_frequency_hz += pilot - PilotFrequency(model.Set());
  return ScpiError::kNone;
}

void GetPilot(Model& model, std::string& reply) {
  AppendPlain(reply, std::round(PilotFrequency(model.Set()) * 100.0) / 100.0);
}

ScpiError SetSymbolRate(Model& model, Parameters parameters) {
  const double pilot = PilotFrequency(model.Set());
  const ScpiError error = ReadNumber(parameters[0], kSymbolRateRange, model.Set().symbol_rate);
  if (error == ScpiError::kNone && model.Set().fixed_frequency == FixedFrequency::kPilot) {
    model.Set().center_frequency_hz += pilot - PilotFrequency(model.Set());
  }
  return error;
}

ScpiError SetSaw(Model& model, Parameters parameters) {
  const int position = Position(kSaws, parameters[0]);
  if (position < 0) return ScpiError::kIllegalParameterValue;
  if (!model.HasSaw(static_cast<Saw>(position))) return ScpiError::kHardwareMissing;
  model.Set().saw = static_cast<Saw>(position);
  return ScpiError::kNone;
}

ScpiError SetEqualizer(Model& model, Parameters parameters) {
  const Equalizer before = model.Set().equalizer;
  const ScpiError error = SetChoice<&Settings::equalizer, kEqualizers>(model, parameters);
  if (error != ScpiError::kNone) return error;
  // Only taps that were adapting are right for the present channel when they are frozen.
  const bool frozen = model.Set().equalizer == Equalizer::kFreeze;
  if (!frozen || before != Equalizer::kFreeze) model.EqualizerFits(!frozen || before == Equalizer::kOn);
  return error;
}

// Spectrum and echo pattern --------------------------------------------------

constexpr double kLeastSpanMhz = 1.34;

ScpiError SetSpectrumStart(Model& model, Parameters parameters) {
  double start = 0.0;
  const ScpiError error = ReadNumber(parameters[0], kSpectrumRange, start);
  if (error != ScpiError::kNone) return error;
  if (start > model.Set().spectrum_stop_mhz - kLeastSpanMhz + 1e-9) return ScpiError::kSettingsConflict;
  model.Set().spectrum_start_mhz = start;
  return ScpiError::kNone;
}

ScpiError SetSpectrumStop(Model& model, Parameters parameters) {
  double stop = 0.0;
  const ScpiError error = ReadNumber(parameters[0], kSpectrumRange, stop);
  if (error != ScpiError::kNone) return error;
  if (stop < model.Set().spectrum_start_mhz + kLeastSpanMhz - 1e-9) return ScpiError::kSettingsConflict;
  model.Set().spectrum_stop_mhz = stop;
  return ScpiError::kNone;
}

ScpiError SetEchoRange(Model& model, Parameters parameters) {
  const int position = Position(kEchoRanges, parameters[0]);
  if (position < 0) return ScpiError::kIllegalParameterValue;
  // The zoom ranges came with the 5.x generation.
  if (position >= static_cast<int>(EchoRange::kZoom1) && model.FirmwareVersion() < 5.0) {
    return ScpiError::kIllegalParameterValue;
  }
  model.Set().echo_range = static_cast<EchoRange>(position);
  return ScpiError::kNone;
}

// Traces ---------------------------------------------------------------------

constexpr int kEchoes = 10;
constexpr int kJitterLines = 7;

void AppendPair(std::string& reply, bool first, double value, int decimals, double second_value,
                int second_decimals) {
  if (!first) reply.push_back(',');
  AppendFixed(reply, value, decimals);
  reply.push_back(',');
  AppendFixed(reply, second_value, second_decimals);
}

void AppendMissingPairs(std::string& reply, int from, int to) {
  for (int i = from; i < to; ++i) reply.append(i == 0 ? "---,---" : ",---,---");
}

void GetEchoes(Model& model, std::string& reply) {
  // The echoes are read from the equalizer's taps: without taps there is nothing to report.
  std::vector<Echo> echoes;
  if (model.Set().equalizer != Equalizer::kOff) {
    echoes = VisibleEchoes(model.Setup().signal, model.Set().echo_range);
  }
  int count = 0;
  for (const Echo& echo : echoes) {
    const double noise =
        0.05 * NormalDeviate(model.Setup().seed, model.Interval(), 100U + static_cast<unsigned>(count));
    AppendPair(reply, count == 0, echo.attenuation_db + noise, 1,
               DelayIn(model.Set().echo_scale, echo.delay_us), 2);
    ++count;
  }
  AppendMissingPairs(reply, count, kEchoes);
}

void GetJitterLines(Model& model, std::string& reply) {
  const auto lines = model.Set().measure_mode == MeasureMode::kPjit
                         ? PhaseLines(model.Setup().signal, model.Set())
                         : AmplitudeLines(model.Setup().signal, model.Set());
  int count = 0;
  for (const JitterLine& line : lines) {
    AppendPair(reply, count == 0, line.peak, 3, line.frequency_hz, 1);
    ++count;
  }
  AppendMissingPairs(reply, count, kJitterLines);
}

void GetResponse(Model& model, std::string& reply) {
  const ChannelResponse& response = model.Response();
  const ResponseDetector detector = model.Set().response_detector;
  const bool phase = model.Set().measure_mode == MeasureMode::kAph;
  AppendPair(reply, true, Detected(response.amplitude_db, detector), 2,
             Detected(phase ? response.phase_deg : response.group_delay_ns, detector), 1);
}

// Alarm statistics and screen ------------------------------------------------

void GetAlarmStatistics(Model& model, std::string& reply) { model.Alarms().AppendReport(reply); }

ScpiError ClearAlarms(Model& model, Parameters) {
  model.Alarms().Clear();
  return ScpiError::kNone;
}

void CaptureScreen(Model& model, std::string& reply) {
  if (!model.Restarted()) {
    reply.push_back('1');
    return;
  }
  model.CaptureScreen();
  reply.push_back('0');
}

// A definite-length block of IEEE 488.2; one of length 0 before the first capture.
void GetScreen(Model& model, std::string& reply) {
  const std::string& screen = model.Screen();
  std::string length;
  AppendInteger(length, static_cast<long long>(screen.size()));
  reply.push_back('#');
  AppendInteger(reply, static_cast<long long>(length.size()));
  reply.append(length).append(screen);
}

// System ---------------------------------------------------------------------

ScpiError Restart(Model& model, Parameters) {
  model.Preset();
  model.Errors().Clear();
  model.remote = false;
  return ScpiError::kNone;
}

ScpiError Preset(Model& model, Parameters) {
  model.Preset();
  return ScpiError::kNone;
}

ScpiError GoRemote(Model& model, Parameters) {
  model.remote = true;
  return ScpiError::kNone;
}

ScpiError GoLocal(Model& model, Parameters) {
  model.remote = false;
  return ScpiError::kNone;
}

ScpiError ResetBer(Model& model, Parameters) {
  model.RestartBer();
  return ScpiError::kNone;
}

void GetError(Model& model, std::string& reply) { AppendError(reply, model.Errors().Pop()); }

// The three whole numbers of a time or a date.
ScpiError ReadThree(Parameters parameters, const Range (&ranges)[3], int (&values)[3]) {
  for (std::size_t i = 0; i < 3; ++i) {
    double value = 0.0;
    const ScpiError error = ReadNumber(parameters[i], ranges[i], value);
    if (error != ScpiError::kNone) return error;
    values[i] = static_cast<int>(value);
  }
  return ScpiError::kNone;
}

constexpr std::int64_t kDay = 86400;

std::int64_t DayOf(std::int64_t seconds) {
  return std::chrono::floor<std::chrono::days>(std::chrono::seconds(seconds)).count();
}

ScpiError SetTime(Model& model, Parameters parameters) {
  static constexpr Range kRanges[3] = {
      {0.0, 23.0, Unit::kNone, true}, {0.0, 59.0, Unit::kNone, true}, {0.0, 59.0, Unit::kNone, true}};
  int parts[3];
  const ScpiError error = ReadThree(parameters, kRanges, parts);
  if (error != ScpiError::kNone) return error;
  const int time = parts[0] * 3600 + parts[1] * 60 + parts[2];
  model.SetCalendar(DayOf(model.Calendar()) * kDay + time);
  return ScpiError::kNone;
}

void GetTime(Model& model, std::string& reply) {
  const std::int64_t seconds = model.Calendar() - DayOf(model.Calendar()) * kDay;
  AppendInteger(reply, seconds / 3600);
  reply.push_back(',');
  AppendInteger(reply, seconds / 60 % 60);
  reply.push_back(',');
  AppendInteger(reply, seconds % 60);
}

ScpiError SetDate(Model& model, Parameters parameters) {
  static constexpr Range kRanges[3] = {
      {0.0, 2099.0, Unit::kNone, true}, {1.0, 12.0, Unit::kNone, true}, {1.0, 31.0, Unit::kNone, true}};
  int parts[3];
  const ScpiError error = ReadThree(parameters, kRanges, parts);
  if (error != ScpiError::kNone) return error;
  if (parts[0] < 30) {
    parts[0] += 2000;
  } else if (parts[0] < 100) {
    parts[0] += 1900;
  }
  if (parts[0] < 1930) return ScpiError::kDataOutOfRange;
  const std::chrono::year_month_day date(std::chrono::year(parts[0]),
                                         std::chrono::month(static_cast<unsigned>(parts[1])),
                                         std::chrono::day(static_cast<unsigned>(parts[2])));
  if (!date.ok()) return ScpiError::kDataOutOfRange;
  const std::int64_t time_of_day = model.Calendar() - DayOf(model.Calendar()) * kDay;
  model.SetCalendar(std::chrono::sys_days(date).time_since_epoch().count() * kDay + time_of_day);
  return ScpiError::kNone;
}

void GetDate(Model& model, std::string& reply) {
  const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(DayOf(model.Calendar())))};
  AppendInteger(reply, static_cast<int>(date.year()));
  reply.push_back(',');
  AppendInteger(reply, static_cast<unsigned>(date.month()));
  reply.push_back(',');
  AppendInteger(reply, static_cast<unsigned>(date.day()));
}

void GetOptions(Model& model, std::string& reply) { AppendInteger(reply, model.Setup().options); }

void GetBoards(Model& model, std::string& reply) {
  if (!model.Setup().boards.empty()) {
    reply.append(model.Setup().boards);
    return;
  }
  reply.append("0x80 CPU;0x83 SAW");
  const SawFilters& fitted = model.Setup().saw_filters;
  if (fitted.mhz2) reply.append(" 2.0");
  if (fitted.mhz6) reply.append(" 6.0");
  if (fitted.mhz7) reply.append(" 7.0");
  if (fitted.mhz8) reply.append(" 8.0");
  reply.append(";0x90 DEMOD");
}

// Common commands of IEEE 488.2 ----------------------------------------------

void GetIdentity(Model& model, std::string& reply) {
  const Configuration& setup = model.Setup();
  reply.append(setup.manufacturer).push_back(',');
  reply.append(setup.model).push_back(',');
  reply.append(setup.serial_number).push_back(',');
  reply.append(setup.firmware);
}

ScpiError ClearStatus(Model& model, Parameters) {
  model.Errors().Clear();
  model.event_status = 0;
  return ScpiError::kNone;
}

template <auto kRegister>
ScpiError SetRegister(Model& model, Parameters parameters) {
  double value = 0.0;
  const ScpiError error = ReadNumber(parameters[0], kRegisterRange, value);
  if (error == ScpiError::kNone) model.*kRegister = static_cast<unsigned>(value);
  return error;
}

template <auto kRegister>
void GetRegister(Model& model, std::string& reply) {
  AppendInteger(reply, model.*kRegister);
}

void GetEventStatus(Model& model, std::string& reply) {
  AppendInteger(reply, model.event_status);
  model.event_status = 0;
}

void GetStatusByte(Model& model, std::string& reply) {
  unsigned status = model.Errors().Empty() ? 0U : 1U << 2;
  if ((model.event_status & model.event_enable) != 0) status |= 1U << 5;
  if ((status & model.service_enable) != 0) status |= 1U << 6;
  AppendInteger(reply, status);
}

ScpiError OperationComplete(Model& model, Parameters) {
  model.event_status |= 1;
  return ScpiError::kNone;
}

ScpiError Nothing(Model&, Parameters) { return ScpiError::kNone; }
void GetOne(Model&, std::string& reply) { reply.push_back('1'); }
void GetZero(Model&, std::string& reply) { reply.push_back('0'); }

// The table ------------------------------------------------------------------

using enum MeasureMode;
constexpr ModeSet kMerModes = In(kNorm, kPar, kAph, kAgd, kPol, kEpat, kHist);
constexpr ModeSet kCrestModes = In(kCenv, kAdis, kCcdf);
constexpr ModeSet kPaprModes = In(kCenv, kCcdf);
constexpr ModeSet kSpectrumModes = In(kSp1, kSp2, kSp3);

constexpr Command kCommands[] = {
    {.header = "*IDN", .get = GetIdentity},
    {.header = "*CLS", .set = ClearStatus, .parameters = 0},
    {.header = "*ESE", .set = SetRegister<&Model::event_enable>, .get = GetRegister<&Model::event_enable>},
    {.header = "*SRE",
     .set = SetRegister<&Model::service_enable>,
     .get = GetRegister<&Model::service_enable>},
    {.header = "*ESR", .get = GetEventStatus},
    {.header = "*STB", .get = GetStatusByte},
    {.header = "*OPC", .set = OperationComplete, .get = GetOne, .parameters = 0},
    {.header = "*WAI", .set = Nothing, .parameters = 0},
    {.header = "*TST", .get = GetZero},
    {.header = "*RST", .set = Preset, .effect = Effect::kOperatingMode, .parameters = 0},

    {.header = "SYSTem:ERRor", .get = GetError},
    {.header = "SYSTem:ERRor:NEXT", .get = GetError},
    {.header = "SYSTem:REMote", .set = GoRemote, .parameters = 0},
    {.header = "SYSTem:LOCal", .set = GoLocal, .parameters = 0},
    {.header = "SYSTem:RESet", .set = Restart, .effect = Effect::kRestart, .parameters = 0},
    {.header = "SYSTem:MODE",
     .set = SetChoice<&Settings::operating_mode, kOperatingModes>,
     .get = GetChoice<&Settings::operating_mode, kOperatingModes>,
     .effect = Effect::kOperatingMode},
    {.header = "SYSTem:TIME", .set = SetTime, .get = GetTime, .parameters = 3},
    {.header = "SYSTem:DATE", .set = SetDate, .get = GetDate, .parameters = 3},
    {.header = "SYSTem:SERVice:GET:BOARd:INFO", .get = GetBoards, .since_firmware = 5.0},
    {.header = "READ:INFO:DATA", .get = GetOptions},

    {.header = "ROUTe:ISELect",
     .set = SetChoice<&Settings::input_port, kInputPorts>,
     .get = GetChoice<&Settings::input_port, kInputPorts>,
     .effect = Effect::kAcquire},
    {.header = "INPut:ATTenuation", .set = SetAttenuation, .get = GetAttenuation, .effect = Effect::kSignal},
    {.header = "INPut:ATTenuation:AUTO",
     .set = SetChoice<&Settings::attenuation_auto, kOnOff>,
     .get = GetChoice<&Settings::attenuation_auto, kOnOff>,
     .effect = Effect::kSignal},
    {.header = "INPut:ATTenuation:IMPedance",
     .set = SetImpedance,
     .get = GetChoice<&Settings::impedance, kImpedances>,
     .effect = Effect::kSignal},
    {.header = "INPut:ATTenuation:MODE",
     .set = SetChoice<&Settings::receiver_mode, kReceiverModes>,
     .get = GetChoice<&Settings::receiver_mode, kReceiverModes>,
     .effect = Effect::kSignal},
    {.header = "INPut:ATTenuation:RECeiver",
     .set = SetSwitchedReceiverMode,
     .get = GetSwitchedReceiverMode,
     .effect = Effect::kSignal},
    {.header = "INPut:ATTenuation:DEModulator",
     .set = SetChoice<&Settings::demod_attenuator, kDemodAttenuators>,
     .get = GetChoice<&Settings::demod_attenuator, kDemodAttenuators>,
     .effect = Effect::kSignal},
    {.header = "INPut:ATTenuation:DEModulator:VALue", .get = GetDemodAttenuation, .since_firmware = 5.05},
    {.header = "INPut:ATSC:HIGH:ADJ:CHANnel:POWer",
     .set = SetChoice<&Settings::high_adjacent_channel, kOnOff>,
     .get = GetChoice<&Settings::high_adjacent_channel, kOnOff>,
     .effect = Effect::kSignal},
    {.header = "UNIT:LEVel:POWer",
     .set = SetChoice<&Settings::level_unit, kLevelUnits>,
     .get = GetChoice<&Settings::level_unit, kLevelUnits>},

    {.header = "SENSe:FREQuency:CENTer",
     .set = SetNumber<&Settings::center_frequency_hz, kCenterRange>,
     .get = GetNumber<&Settings::center_frequency_hz>,
     .effect = Effect::kAcquire},
    {.header = "SENSe:ATSC:FREQuency:PILot", .set = SetPilot, .get = GetPilot, .effect = Effect::kAcquire},
    {.header = "SENSe:ATSC:SYMBolrate:VALue",
     .set = SetSymbolRate,
     .get = GetNumber<&Settings::symbol_rate>,
     .effect = Effect::kAcquire},
    {.header = "SENSe:REFerence",
     .set = SetChoice<&Settings::reference, kReferences>,
     .get = GetChoice<&Settings::reference, kReferences>},
    {.header = "SENSe:REFerence:UNLock", .get = GetReferenceUnlocked},

    {.header = "SENSe:ATSC:MEASure",
     .set = SetMeasureMode,
     .get = GetMeasureMode,
     .effect = Effect::kMeasureMode},
    {.header = "SENSe:ATSC:AGC",
     .set = SetChoice<&Settings::agc, kAgcSpeeds>,
     .get = GetChoice<&Settings::agc, kAgcSpeeds>,
     .effect = Effect::kSignal},
    {.header = "SENSe:ATSC:CFLB",
     .set = SetChoice<&Settings::carrier_loop, kLoopWidths>,
     .get = GetChoice<&Settings::carrier_loop, kLoopWidths>,
     .effect = Effect::kSignal},
    {.header = "SENSe:ATSC:BRLB",
     .set = SetChoice<&Settings::symbol_loop, kLoopWidths>,
     .get = GetChoice<&Settings::symbol_loop, kLoopWidths>,
     .effect = Effect::kSignal},
    {.header = "SENSe:ATSC:BER:INTegration",
     .set = SetChoice<&Settings::ber_integration, kBerIntegrations>,
     .get = GetChoice<&Settings::ber_integration, kBerIntegrations>},
    {.header = "SENSe:ATSC:BER:RESet", .set = ResetBer, .parameters = 0},
    {.header = "SENSe:ATSC:EQUalizer",
     .set = SetEqualizer,
     .get = GetChoice<&Settings::equalizer, kEqualizers>,
     .effect = Effect::kSignal},
    {.header = "SENSe:ATSC:EQUalizer:MODE",
     .set = SetChoice<&Settings::equalizer_mode, kEqualizerModes>,
     .get = GetChoice<&Settings::equalizer_mode, kEqualizerModes>,
     .effect = Effect::kSignal},
    {.header = "SENSe:ATSC:EQUalizer:ADAPtation",
     .set = SetChoice<&Settings::equalizer_adaptation, kSpeeds>,
     .get = GetChoice<&Settings::equalizer_adaptation, kSpeeds>,
     .effect = Effect::kSignal},
    {.header = "SENSe:ATSC:FIXed:FREQuency",
     .set = SetChoice<&Settings::fixed_frequency, kFixedFrequencies>,
     .get = GetChoice<&Settings::fixed_frequency, kFixedFrequencies>},
    {.header = "SENSe:ATSC:SIDeband:POSition",
     .set = SetChoice<&Settings::sideband, kSidebands>,
     .get = GetChoice<&Settings::sideband, kSidebands>,
     .effect = Effect::kAcquire},
    {.header = "SENSe:ATSC:FILTer:SAW",
     .set = SetSaw,
     .get = GetChoice<&Settings::saw, kSaws>,
     .effect = Effect::kAcquire},
    {.header = "SENSe:ATSC:FILTer:REJection",
     .set = SetChoice<&Settings::notch, kOnOff>,
     .get = GetChoice<&Settings::notch, kOnOff>,
     .effect = Effect::kSignal},
    {.header = "SENSe:ATSC:FILTer:REJection:BW",
     .set = SetChoice<&Settings::notch_width, kNotchWidths>,
     .get = GetChoice<&Settings::notch_width, kNotchWidths>,
     .effect = Effect::kSignal},
    {.header = "SENSe:ATSC:FILTer:REJection:VC",
     .set = SetNumber<&Settings::notch_frequency_hz, kNotchRange>,
     .get = GetNumber<&Settings::notch_frequency_hz>,
     .effect = Effect::kSignal},

    {.header = "SENSe:ATSC:NOISe",
     .set = SetNumber<&Settings::noise_cn_db, kNoiseRange>,
     .get = GetNumber<&Settings::noise_cn_db>,
     .effect = Effect::kSignal},
    {.header = "SENSe:ATSC:NOISe:MODE",
     .set = SetChoice<&Settings::noise, kOnOff>,
     .get = GetChoice<&Settings::noise, kOnOff>,
     .effect = Effect::kSignal},
    {.header = "SENSe:ATSC:CD:INTegration:COUNt",
     .set = SetNumber<&Settings::symbol_count, kSymbolCountRange>,
     .get = GetNumber<&Settings::symbol_count>,
     .effect = Effect::kSignal},
    {.header = "SENSe:ATSC:SPECtrum:AVG",
     .set = SetChoice<&Settings::spectrum_average, kOnOff>,
     .get = GetChoice<&Settings::spectrum_average, kOnOff>},
    {.header = "SENSe:ATSC:SPECtrum:AVG:COUNt",
     .set = SetNumber<&Settings::spectrum_average_count, kAverageCountRange>,
     .get = GetNumber<&Settings::spectrum_average_count>},
    {.header = "SENSe:ATSC:SPECtrum:DETector",
     .set = SetChoice<&Settings::spectrum_detector, kDetectors>,
     .get = GetChoice<&Settings::spectrum_detector, kDetectors>},
    {.header = "SENSe:ATSC:SPECtrum:FREQuency:STARt",
     .set = SetSpectrumStart,
     .get = GetNumber<&Settings::spectrum_start_mhz>},
    {.header = "SENSe:ATSC:SPECtrum:FREQuency:STOP",
     .set = SetSpectrumStop,
     .get = GetNumber<&Settings::spectrum_stop_mhz>},
    {.header = "SENSe:ATSC:EPATtern:RANGe",
     .set = SetEchoRange,
     .get = GetChoice<&Settings::echo_range, kEchoRanges>},
    {.header = "SENSe:ATSC:EPATtern:NUMValues",
     .set = SetChoice<&Settings::echo_values, kOnOff>,
     .get = GetChoice<&Settings::echo_values, kOnOff>},
    {.header = "SENSe:ATSC:EPATtern:SCALe",
     .set = SetChoice<&Settings::echo_scale, kEchoScales>,
     .get = GetChoice<&Settings::echo_scale, kEchoScales>},
    {.header = "SENSe:ATSC:EYEMonitor:INTerval",
     .set = SetNumber<&Settings::eye_interval, kEyeIntervalRange>,
     .get = GetNumber<&Settings::eye_interval>},
    {.header = "SENSe:ATSC:RESPonse:DETector",
     .set = SetChoice<&Settings::response_detector, kResponseDetectors>,
     .get = GetChoice<&Settings::response_detector, kResponseDetectors>},
    {.header = "SENSe:ATSC:JITTer:APPLication",
     .set = SetNumber<&Settings::jitter_application, kJitterApplicationRange>,
     .get = GetNumber<&Settings::jitter_application>},

    {.header = "CONFigure:ALARm:RESet", .set = ClearAlarms, .parameters = 0},
    {.header = "READ:ATSC:ALARm:STATistics", .get = GetAlarmStatistics},
    {.header = "READ:ATSC:AMPL_PHAS_GD:VALue",
     .get = GetResponse,
     .modes = In(kAph, kAgd),
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:EPATtern:PEAK", .get = GetEchoes, .modes = In(kEpat), .needs = Needs::kCarrier},
    {.header = "READ:ATSC:JITTer:VALue",
     .get = GetJitterLines,
     .modes = In(kAjit, kPjit),
     .needs = Needs::kCarrier},
    {.header = "READ:SCReen:BUFFer", .get = CaptureScreen},
    {.header = "READ:BUFFer:PCX", .get = GetScreen},
    {.header = "READ:SIGNal:RF", .get = GetRfState},
    {.header = "READ:RF:LEVel", .get = GetLevel},
    {.header = "READ:ATSC:DEModulator:LOCK", .get = GetCarrierLock},
    {.header = "READ:ATSC:FEC:LOCK", .get = GetFecLock},
    {.header = "READ:ATSC:TS:BITRate",
     .get = GetReading<&Readings::ts_bitrate_mbit, kMbit6>,
     .needs = Needs::kFec},
    {.header = "READ:ATSC:BER:BRS", .get = GetBerBefore, .needs = Needs::kCarrier},
    {.header = "READ:ATSC:BER:ARS", .get = GetBerAfter, .needs = Needs::kCarrier},
    {.header = "READ:ATSC:CRESt:MARGin",
     .get = GetReading<&Readings::crest_margin_db, kDb2>,
     .modes = kCrestModes,
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:CRESt:MAXimum",
     .get = GetReading<&Readings::crest_max_db, kDb2>,
     .modes = kCrestModes,
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:CRESt:CURRent",
     .get = GetReading<&Readings::crest_current_db, kDb2>,
     .modes = kCrestModes,
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:CRESt:ACQuisition",
     .get = GetAcquisitions,
     .modes = kCrestModes,
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:CCDF:PAPR",
     .get = GetReading<&Readings::papr_db, kDb2>,
     .modes = kPaprModes,
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:CCDF:PAPR:DELTa",
     .get = GetReading<&Readings::papr_delta_db, kDb2>,
     .modes = kPaprModes,
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:SPECtrum:AVG:COUNt",
     .get = GetSpectrumAverages,
     .modes = kSpectrumModes | In(kAjit, kPjit)},
    {.header = "READ:ATSC:SPECtrum:SHOulder:LOWer",
     .get = GetReading<&Readings::shoulder_lower_db, kDb1>,
     .modes = kSpectrumModes},
    {.header = "READ:ATSC:SPECtrum:SHOulder:UPPer",
     .get = GetReading<&Readings::shoulder_upper_db, kDb1>,
     .modes = kSpectrumModes},
    {.header = "READ:ATSC:FREQuency:OFFSet",
     .get = GetPilotOffset,
     .modes = In(kNorm),
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:SYMBol:OFFSet",
     .get = GetReading<&Readings::symbol_rate_offset, kSymbols2>,
     .modes = In(kNorm),
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:MER:RMS",
     .get = GetReading<&Readings::mer_rms_db, kDb1>,
     .modes = kMerModes,
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:MERP:RMS",
     .get = GetReading<&Readings::mer_rms_pct, kPct2>,
     .modes = kMerModes,
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:MERP:PEAK",
     .get = GetReading<&Readings::mer_peak_pct, kPct2>,
     .modes = In(kPar),
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:EVM:RMS",
     .get = GetReading<&Readings::evm_rms_pct, kPct2>,
     .modes = kMerModes,
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:EVM:PEAK",
     .get = GetReading<&Readings::evm_peak_pct, kPct2>,
     .modes = In(kPar),
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:JITTer",
     .get = GetReading<&Readings::phase_jitter_deg, kDegrees2>,
     .modes = In(kPar),
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:SIGNal:NOISe",
     .get = GetReading<&Readings::snr_db, kDb1>,
     .modes = In(kPar),
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:SEGMent:ERRor:RATio",
     .get = GetSegmentErrorRatio,
     .modes = In(kNorm),
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:SEGMent:ERRor",
     .get = GetReading<&Readings::segment_errors_per_s, kWhole>,
     .modes = In(kNorm),
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:PVALue",
     .get = GetReading<&Readings::pilot_value, kRatio3>,
     .modes = In(kPv),
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:PERRor",
     .get = GetReading<&Readings::pilot_error_db, kDb2>,
     .modes = In(kPv),
     .needs = Needs::kCarrier},
    {.header = "READ:ATSC:SIGNal:PILot",
     .get = GetReading<&Readings::signal_to_pilot_db, kDb2>,
     .modes = In(kPv),
     .needs = Needs::kCarrier},
};

}  // namespace

std::span<const Command> Commands() { return kCommands; }

}  // namespace simulator
