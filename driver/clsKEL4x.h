// The driver class: the table of contents of the component, chapter by chapter. Each chapter is one source
// file.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "driver/core/date_time.h"
#include "driver/core/instrument_io.h"
#include "driver/core/member_texts.h"
#include "driver/core/mode_set.h"
#include "driver/core/reply_status.h"
#include "driver/enumerations.h"
#include "driver/measure/pair_store.h"
#include "host/driver_identify.h"
#include "host/driver_setup.h"
#include "host/export.h"

namespace qkel4x {

class clsStatistics;
struct EnumSetting;
struct FrequencySetting;
struct Reading;

/// Driver for one KEL model 40/43 TV test receiver and demodulator (8-VSB).
///
/// A read and a write of a property share its name. Every failure is a host::AutomationError raised through
/// the host's error reporter: an argument or a state that a member refuses with its own number and text
/// before anything is sent, any other failure wrapped once as "Get <member> failed", "Let <member> failed" or
/// "<member> failed" (reads 2004, writes and methods 2005; plus host::kObjectErrorBase), completed by the
/// instrument's error-queue entry where the link itself failed. A measurement without a valid value is no
/// error: it reads 0, and Prefix tells.
///
/// One thread at a time may use an object; objects on different threads are independent.
class QKEL4X_EXPORT clsKEL4x final : public host::IDriverSetup, public host::IDriverIdentify {
 public:
  /// Builds the settings tree and finds the serial ports that open. Fails with 380 when none does.
  clsKEL4x();
  /// Releases the port without a word to the instrument.
  ~clsKEL4x() override;
  clsKEL4x(const clsKEL4x&) = delete;
  clsKEL4x& operator=(const clsKEL4x&) = delete;

  // Host interfaces: core/lifecycle.cpp, identify/ ----------------------------------------------------------

  std::string Name() override;
  void Name(std::string_view name) override;
  std::shared_ptr<host::ParameterNode> Settings() override;
  bool OnLine() override;
  /// Connects or disconnects. A port that does not open is no error: OnLine then reads false. Fails with 2002
  /// when already on line and 2003 when already off line, both without the object-error base. Takes a second.
  void OnLine(bool on_line) override;

  // Last reply and reset: core/ -----------------------------------------------------------------------------

  /// The last decoded reply as received.
  const std::string& ResponseString() const { return status_.response; }
  /// Status word of the last reply: "<", ">", "*", "---", "UNDER", "OVER", "NORF" or empty.
  const std::string& Prefix() const { return status_.prefix; }
  /// Remark of the last reply from its "(" on.
  const std::string& Postfix() const { return status_.postfix; }
  void Reset();  ///< restarts the instrument; takes 15 s

  // Identity and installed hardware: identify/ --------------------------------------------------------------

  std::string Identity();                    ///< the whole identification, asked for once
  std::string Manufacturer() override;       ///< field 0 of the identification; empty where there is none
  std::string ModelNumber() override;        ///< field 1
  std::string SerialNumber() override;       ///< field 2
  std::string FirmwareVersion() override;    ///< field 3
  std::string InstalledHardware() override;  ///< option codes such as "KEL-B1,KEL-B3,EXTREF", found once

  // Alarm statistics: statistics/ ---------------------------------------------------------------------------

  std::shared_ptr<clsStatistics> AlarmStatistics();  ///< a new decoded report at every read
  void AlarmRegisterClear();                         ///< clears the alarm registers; takes 3 s

  // Mode and measurement mode: config/mode.cpp --------------------------------------------------------------

  KelModes Mode();                                 ///< operating mode, asked for at every read
  void Mode(KelModes mode);                        ///< kelATSC only; takes 10 s
  KelMeasureModes MeasureMode();                   ///< measurement mode, from memory once known
  void MeasureMode(KelMeasureModes measure_mode);  ///< takes up to 10 s while the instrument settles

  // Input port and attenuation: config/input.cpp ------------------------------------------------------------

  KelInputPorts InputPort();
  void InputPort(KelInputPorts port);                ///< 50 and 75 ohm need KEL-B3; takes 1 s
  KelInputAttenuations InputAttenuation_Receiver();  ///< setting, dB or automatic; receiver input only
  void InputAttenuation_Receiver(
      KelInputAttenuations attenuation);                    ///< 0 to 55 dB in steps of 5, or automatic
  KelInputAttenuations InputAttenuation();                  ///< the same as InputAttenuation_Receiver
  void InputAttenuation(KelInputAttenuations attenuation);  ///< the same as InputAttenuation_Receiver
  KelInputAttenuations InputAttenuationValue_Receiver();    ///< dB now in use; receiver input only
  KelInputAttenuations InputAttenuationValue();             ///< the same as InputAttenuationValue_Receiver
  KelRxAttenModes InputAttenuationMode_Receiver();
  void InputAttenuationMode_Receiver(
      KelRxAttenModes mode);                      ///< lowest distortion not on the 50/75 ohm inputs
  KelDemodAttenuations InputAttenuation_Demod();  ///< demodulator input only
  void InputAttenuation_Demod(KelDemodAttenuations attenuation);
  KelDemodAttenVals InputAttenuationValue_Demod();  ///< in use now; firmware 5.05 on, demodulator input only

  // Enumerated settings: config/enumerated_settings.cpp -----------------------------------------------------

  KelSpecFuncLoopAgcs SpecFuncLoopAgc();
  void SpecFuncLoopAgc(KelSpecFuncLoopAgcs speed);
  KelSpecFuncLoopBandwidths SpecFuncLoopBandwidth();
  void SpecFuncLoopBandwidth(KelSpecFuncLoopBandwidths bandwidth);
  KelSpecFuncLoopBandwidths SpecFuncLoopBaudBandwidth();
  void SpecFuncLoopBaudBandwidth(KelSpecFuncLoopBandwidths bandwidth);
  KelSpecFuncMinBerIntegrations SpecFuncMinBerIntegration();
  void SpecFuncMinBerIntegration(KelSpecFuncMinBerIntegrations integration);  ///< any integer is sent
  KelSpecFuncEqualizers SpecFuncEqualizer();
  void SpecFuncEqualizer(KelSpecFuncEqualizers state);
  KelSpecFuncEqualizerModes SpecFuncEqualizerMode();
  void SpecFuncEqualizerMode(KelSpecFuncEqualizerModes mode);
  KelSpecFuncEqualizerAdaptations SpecFuncEqualizerAdaptation();
  void SpecFuncEqualizerAdaptation(KelSpecFuncEqualizerAdaptations adaptation);
  KelSpecFuncFreqRfFixed SpecFuncFreqRfFixed();
  void SpecFuncFreqRfFixed(KelSpecFuncFreqRfFixed fixed);
  KelSpecFuncFreqSidePos SpecFuncFreqSidePos();
  void SpecFuncFreqSidePos(KelSpecFuncFreqSidePos position);
  KelStatusSawFilterBWs StatusSawFilterBW();
  void StatusSawFilterBW(KelStatusSawFilterBWs bandwidth);
  KelReferenceSources Setup10MhzRef();
  void Setup10MhzRef(KelReferenceSources source);
  KelSetupLevelUnits SetupLevelUnit();
  void SetupLevelUnit(KelSetupLevelUnits unit);  ///< not range-checked: the instrument refuses what is none
  KelSwitchStates StatusRejFilter();
  void StatusRejFilter(KelSwitchStates state);
  KelStatusRejFilterNotchWidths StatusRejFilterNotchWidth();
  void StatusRejFilterNotchWidth(KelStatusRejFilterNotchWidths width);
  KelSwitchStates InputAttenHighAdjChanPower();
  void InputAttenHighAdjChanPower(KelSwitchStates state);
  bool ReferenceLocked();  ///< whether the 10 MHz reference is locked
  bool StateSignal();      ///< whether the RF level is in range

  // Frequencies and symbol rate: config/frequencies.cpp -----------------------------------------------------

  double RfCenterFrequency();                   ///< Hz
  void RfCenterFrequency(double hertz);         ///< 42 000 000 to 10 000 000 009 Hz
  double RfPilotFrequency();                    ///< Hz
  void RfPilotFrequency(double hertz);          ///< 3 000 000 to 1 000 000 000 Hz
  double StatusSymbolRate();                    ///< symbols per second
  void StatusSymbolRate(double rate);           ///< 2 000 000 to 11 000 000 symbols per second; takes 1 s
  double StatusRejFilterNotchFreq();            ///< Hz
  void StatusRejFilterNotchFreq(double hertz);  ///< 1 666 000 to 1 834 000 Hz

  // Date and time: config/clock.cpp -------------------------------------------------------------------------

  DateTime SetupTime();           ///< time of day of the instrument's clock
  void SetupTime(DateTime time);  ///< only the time of day is used
  DateTime SetupDate();           ///< date of the instrument's clock
  void SetupDate(DateTime date);  ///< only the date is used; the year is sent with two digits

  // Scalar measurements: measure/scalar_measurements.cpp ----------------------------------------------------
  // Units are the instrument's. Prefix tells a value that is out of range or not valid.

  double MeasureTsBitrate();
  double MeasureTdCcdfCrestFactorMargin();
  double MeasureTdCcdfCrestFactorMax();
  double MeasureTdCcdfCrestFactorCurrent();
  std::int16_t MeasureTdCrestFactorAqu();
  double MeasureTdCcdfPapr();
  double MeasureTdCcdfPaprDelta();
  std::int16_t MeasureFdSpectrumAverage();
  double MeasureFdSpectrumShoulderLower();
  double MeasureFdSpectrumShoulderUpper();
  double MeasurePilotFreqOffset();  ///< Hz, whatever the firmware
  double MeasureRfLevel();
  double MeasureVsbMerRmsDb();
  double MeasureVsbMerRmsPct();
  double MeasureVsbMerPeakPct();
  double MeasureVsbEvmPeak();
  double MeasureVsbEvmRms();
  double MeasureSymbolRateOffset();
  double MeasureVsbPhaseJitter();
  double MeasureVsbSignalToNoiseRatio();
  void MeasureResetBer();  ///< starts the bit error ratio anew
  double MeasureBerBeforeRS();
  double MeasureBerAfterRS();
  bool MeasureCarrierLoopOutOfLock();  ///< true also makes the next echo value measure again
  bool MeasureMpegTsUnSync();          ///< true also makes the next echo value measure again
  double MeasureSegErrRatio();
  std::int32_t MeasureSegErrPerSec();
  double MeasureVsbPvPilotValue();
  double MeasureVsbPvAmplErr();
  double MeasureVsbPvSigPilotRatio();

  // Measurement settings: measure/measurement_settings.cpp --------------------------------------------------

  KelSwitchStates MeasureCdAddNoise();
  void MeasureCdAddNoise(KelSwitchStates state);
  double MeasureCdAddNoiseCn();                            ///< dB
  void MeasureCdAddNoiseCn(double decibels);               ///< up to 56 dB, from 5 or 10 dB by symbol rate
  double MeasureNoiseGenerator();                          ///< the same as MeasureCdAddNoiseCn; hidden
  void MeasureNoiseGenerator(double decibels);             ///< the same as MeasureCdAddNoiseCn; hidden
  std::int32_t MeasureCdSymbolCount();                     ///< symbols
  void MeasureCdSymbolCount(std::int32_t count);           ///< 1 to 99999
  std::int16_t MeasureFdSpectrumAverageCount();            ///< 0 while averaging is off
  void MeasureFdSpectrumAverageCount(std::int16_t count);  ///< 0 (off) to 999
  KelFdSpectrumDetectors MeasureFdSpectrumDetector();
  void MeasureFdSpectrumDetector(KelFdSpectrumDetectors detector);
  double MeasureFdSpectrumStartFreq();  ///< Hz from the channel centre
  void MeasureFdSpectrumStartFreq(
      double hertz);                   ///< from -4 480 000 Hz to 1 340 000 Hz below the stop frequency
  double MeasureFdSpectrumStopFreq();  ///< Hz from the channel centre
  void MeasureFdSpectrumStopFreq(
      double hertz);  ///< from 1 340 000 Hz above the start frequency to 4 480 000 Hz
  KelEchoPatternRanges MeasureTdEchoPatRange();
  void MeasureTdEchoPatRange(KelEchoPatternRanges range);  ///< firmware below 5.0 takes the zoom ranges only
  KelSwitchStates MeasureTdEchoPatNumValues();
  void MeasureTdEchoPatNumValues(KelSwitchStates state);
  KelEchoPatternScales MeasureTdEchoPatScale();
  void MeasureTdEchoPatScale(KelEchoPatternScales scale);
  KelEmIntervals MeasureTdEmInterval();
  void MeasureTdEmInterval(KelEmIntervals interval);  ///< all but kel20sec
  KelFdDetectors MeasureFdDetector();
  void MeasureFdDetector(KelFdDetectors detector);
  KelFdJitterApplications MeasureFdJitterApplication();
  void MeasureFdJitterApplication(KelFdJitterApplications application);

  // Frequency-response traces: measure/frequency_response.cpp -----------------------------------------------

  double MeasureFdAmplitudeResponse();   ///< amplitude at the marker; kelAPH or kelAGD
  double MeasureFdPhaseResponse();       ///< phase at the marker; kelAPH
  double MeasureFdGroupDelayResponse();  ///< group delay at the marker; kelAGD

  // Echo pattern: measure/echo_pattern.cpp ------------------------------------------------------------------

  void MeasureTdGhostPattern();  ///< measures and stores ten echoes; kelEPAT with the equalizer on
  double GhostPatternAtten(
      const std::int16_t& intNumber);  ///< attenuation of echo 1 to 10; measures where none is stored
  double GhostPatternDelay(
      const std::int16_t& intNumber);  ///< delay of echo 1 to 10; measures where none is stored

  // Jitter: measure/jitter.cpp ------------------------------------------------------------------------------

  void MeasureFdJitterAmplitude();  ///< measures and stores seven lines; kelAJIT
  void MeasureFdJitterPhase();      ///< measures and stores seven lines; kelPJIT
  double AmplitudeJitterValue(
      const std::int16_t& intNumber);  ///< value of line 1 to 7; measures where none is stored
  double AmplitudeJitterFreq(const std::int16_t& intNumber);  ///< frequency of line 1 to 7
  double PhaseJitterValue(const std::int16_t& intNumber);     ///< value of line 1 to 7
  double PhaseJitterFreq(const std::int16_t& intNumber);      ///< frequency of line 1 to 7

  // Screen shot: measure/screen_shot.cpp --------------------------------------------------------------------

  /// Captures the screen (kelCapture) and transfers it as a PCX image (kelTransfer), with the block header in
  /// front where asked for (kelIncludeHeader). False when the instrument refuses the capture; `bytBuffer` is
  /// replaced by a transfer and left alone otherwise. Fails with 2024 on the front panel and 2004 on a
  /// malformed block.
  bool ScreenShot(KelScreenShotModes udtMode, std::vector<std::uint8_t>& bytBuffer);

 private:
  // Construction: settings/driver_settings.cpp.
  void BuildSettings();

  // The frame: core/member_frame.cpp. Runs the armed part of a member; a failure in it is raised anew, once,
  // with the member's number and texts. What is raised before or after it reaches the caller as raised.
  template <class Work>
  decltype(auto) Armed(const MemberTexts& texts, const Work& work) {
    try {
      return work();
    } catch (const std::exception& failure) {
      Fail(texts, failure);
    }
  }
  [[noreturn]] void Fail(const MemberTexts& texts, const std::exception& failure);

  // Gates: config/mode.cpp. Each raises at once, with the member's source. The first is skipped while the
  // host simulates, unless the member says otherwise.
  enum class Simulation { kSkipsGate, kKeepsGate };
  void RequireMeasureMode(const MemberTexts& texts, ModeSet modes,
                          Simulation simulation = Simulation::kSkipsGate);
  void RequireInputPort(const MemberTexts& texts, std::int32_t bit,
                        Simulation simulation = Simulation::kSkipsGate);

  // Going on line and off line: core/lifecycle.cpp.
  std::shared_ptr<host::Transport> OpenTransport();
  void GoOffLine();

  // Identity: identify/.
  std::string IdentityField(std::size_t position, std::string_view source, std::string_view description);
  std::string FindInstalledHardware();
  double FirmwareNumber();

  // Shapes of regular members: config/enum_setting.h, config/frequencies.cpp, measure/reading.h.
  std::int32_t ReadSetting(const EnumSetting& setting);
  void WriteSetting(const EnumSetting& setting, std::int32_t value);
  double ReadFrequency(const FrequencySetting& setting);
  double Read(const Reading& reading);
  double ReadNumber(const Reading& reading);
  std::int16_t ReadInt16(const Reading& reading);
  std::int32_t ReadInt32(const Reading& reading);
  bool ReadLossOfLock(const Reading& reading);
  double ReadPilotValue(const Reading& reading);

  // Stored measurements: measure/echo_pattern.cpp.
  struct StoredTexts {
    std::string_view source;
    std::string_view out_of_range;
    std::string_view no_value;
  };
  void ExchangeOnce(std::string_view query, std::string& reply);
  std::optional<double> StoredValue(const StoredTexts& texts, std::span<const std::string> stored,
                                    std::int16_t number);

  // Frequency response: measure/frequency_response.cpp.
  bool DecodePair(std::string_view reply);
  bool MeasureFrequencyResponse(const MemberTexts& texts);

  struct MeasureModeCache {
    KelMeasureModes mode = kelNORM;
    bool valid = false;
  };
  struct CachedText {
    std::string text;
    bool valid = false;
  };
  struct FrequencyResponse {
    double amplitude = 0.0;
    double phase_or_group_delay = 0.0;  // which of the two depends on the measurement mode it was read in
  };
  using EchoPattern = PairStore<10>;
  using JitterLines = PairStore<7>;

  std::string name_;
  std::shared_ptr<host::ParameterNode> settings_;
  InstrumentIo io_;
  ReplyStatus status_;
  MeasureModeCache measure_mode_;
  CachedText identity_;
  CachedText installed_hardware_;
  FrequencyResponse frequency_response_;
  EchoPattern echo_pattern_;
  JitterLines amplitude_jitter_;
  JitterLines phase_jitter_;
};

}  // namespace qkel4x
