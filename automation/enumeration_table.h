// The published enumerations as data: names, values and what they are for. The values come from the driver's
// own declarations; the names are the published ones, misspellings included.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "driver/core/error_constants.h"
#include "driver/enumerations.h"
#include "host/export.h"

namespace automation {

struct Enumerator {
  std::string_view name{};
  std::int32_t value;
};

struct Enumeration {
  std::string_view name{};
  std::string_view doc{};
  std::span<const Enumerator> enumerators{};
  bool flags = false;  ///< values may be combined bit by bit
};

/// The enumerators of one enumeration, in published order.
template <class E>
inline constexpr std::array<Enumerator, 0> kEnumerators{};

template <>
inline constexpr auto kEnumerators<qkel4x::KelModes> = std::to_array<Enumerator>({
    {"kelNYQI", qkel4x::kelNYQI},
    {"kelNYQM", qkel4x::kelNYQM},
    {"kelNYQN", qkel4x::kelNYQN},
    {"kelQAM", qkel4x::kelQAM},
    {"kelQAMA", qkel4x::kelQAMA},
    {"kelJ83A", qkel4x::kelJ83A},
    {"kelJ83B", qkel4x::kelJ83B},
    {"kelJ83C", qkel4x::kelJ83C},
    {"kelMPEG", qkel4x::kelMPEG},
    {"kelM83A", qkel4x::kelM83A},
    {"kelM83B", qkel4x::kelM83B},
    {"kelM83C", qkel4x::kelM83C},
    {"kelDVBT", qkel4x::kelDVBT},
    {"kelATSC", qkel4x::kelATSC},
    {"kelNTSC", qkel4x::kelNTSC},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelMeasureModes> = std::to_array<Enumerator>({
    {"kelUndefined", qkel4x::kelUndefined},
    {"kelNORM", qkel4x::kelNORM},
    {"kelPAR", qkel4x::kelPAR},
    {"kelCCDF", qkel4x::kelCCDF},
    {"kelSP_2", qkel4x::kelSP_2},
    {"kelCDI", qkel4x::kelCDI},
    {"kelSP_1", qkel4x::kelSP_1},
    {"kelSP_3", qkel4x::kelSP_3},
    {"kelAPH", qkel4x::kelAPH},
    {"kelAGD", qkel4x::kelAGD},
    {"kelPOL", qkel4x::kelPOL},
    {"kelADIS", qkel4x::kelADIS},
    {"kelEPAT", qkel4x::kelEPAT},
    {"kelEYEM", qkel4x::kelEYEM},
    {"kelHIST", qkel4x::kelHIST},
    {"kelHII", qkel4x::kelHII},
    {"kelHIQ", qkel4x::kelHIQ},
    {"kelPV", qkel4x::kelPV},
    {"kelAJIT", qkel4x::kelAJIT},
    {"kelPJIT", qkel4x::kelPJIT},
    {"kelCENV", qkel4x::kelCENV},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelInputPorts> = std::to_array<Enumerator>({
    {"kelReceiver", qkel4x::kelReceiver},
    {"kelDemod", qkel4x::kelDemod},
    {"kelIF", qkel4x::kelIF},
    {"kelReceiver50ohm", qkel4x::kelReceiver50ohm},
    {"kelReceiver75ohm", qkel4x::kelReceiver75ohm},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelInputAttenuations> = std::to_array<Enumerator>({
    {"kelAttenAuto", qkel4x::kelAttenAuto},
    {"kelAtten00", qkel4x::kelAtten00},
    {"kelAtten05", qkel4x::kelAtten05},
    {"kelAtten10", qkel4x::kelAtten10},
    {"kelAtten15", qkel4x::kelAtten15},
    {"kelAtten20", qkel4x::kelAtten20},
    {"kelAtten25", qkel4x::kelAtten25},
    {"kelAtten30", qkel4x::kelAtten30},
    {"kelAtten35", qkel4x::kelAtten35},
    {"kelAtten40", qkel4x::kelAtten40},
    {"kelAtten45", qkel4x::kelAtten45},
    {"kelAtten50", qkel4x::kelAtten50},
    {"kelAtten55", qkel4x::kelAtten55},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelRxAttenModes> = std::to_array<Enumerator>({
    {"kelRxAttenLoNoise", qkel4x::kelRxAttenLoNoise},
    {"kelRxAttenNormal", qkel4x::kelRxAttenNormal},
    {"kelRxAttenLoDistn", qkel4x::kelRxAttenLoDistn},
    {"kelRxAttenLowestDistn", qkel4x::kelRxAttenLowestDistn},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelDemodAttenuations> = std::to_array<Enumerator>({
    {"kelDemodAttenAuto", qkel4x::kelDemodAttenAuto},
    {"kelDemodManualLowAtten", qkel4x::kelDemodManualLowAtten},
    {"kelDemodManualLowPreamp", qkel4x::kelDemodManualLowPreamp},
    {"kelDemodManualHigh", qkel4x::kelDemodManualHigh},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelDemodAttenVals> = std::to_array<Enumerator>({
    {"kelDAVManualLowPreamp", qkel4x::kelDAVManualLowPreamp},
    {"kelDAVManualLowAtten", qkel4x::kelDAVManualLowAtten},
    {"kelDAVManualHigh", qkel4x::kelDAVManualHigh},
    {"kelDAVAutoLowPreamp", qkel4x::kelDAVAutoLowPreamp},
    {"kelDAVAutoLowAtten", qkel4x::kelDAVAutoLowAtten},
    {"kelDAVAutoHigh", qkel4x::kelDAVAutoHigh},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelSpecFuncLoopAgcs> = std::to_array<Enumerator>({
    {"kelLasSlow", qkel4x::kelLasSlow},
    {"kelLasFast", qkel4x::kelLasFast},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelSpecFuncLoopBandwidths> = std::to_array<Enumerator>({
    {"kelLbsLo", qkel4x::kelLbsLo},
    {"kelLbsMed", qkel4x::kelLbsMed},
    {"kelLbsHi", qkel4x::kelLbsHi},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelSpecFuncMinBerIntegrations> = std::to_array<Enumerator>({
    {"kelBerEXT", qkel4x::kelBerEXT},
    {"kelBer1", qkel4x::kelBer1},
    {"kelBer10", qkel4x::kelBer10},
    {"kelBer100", qkel4x::kelBer100},
    {"kelBer1000", qkel4x::kelBer1000},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelSpecFuncEqualizers> = std::to_array<Enumerator>({
    {"kelEqualizerOff", qkel4x::kelEqualizerOff},
    {"kelEqualizerOn", qkel4x::kelEqualizerOn},
    {"kelEqualizerFreeze", qkel4x::kelEqualizerFreeze},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelSpecFuncEqualizerModes> = std::to_array<Enumerator>({
    {"kelEquModeComp", qkel4x::kelEquModeComp},
    {"kelEquModeReal", qkel4x::kelEquModeReal},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelSpecFuncEqualizerAdaptations> = std::to_array<Enumerator>({
    {"kelEquAdapSlow", qkel4x::kelEquAdapSlow},
    {"kelEquAdapMed", qkel4x::kelEquAdapMed},
    {"kelEquAdapFast", qkel4x::kelEquAdapFast},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelSpecFuncFreqRfFixed> = std::to_array<Enumerator>({
    {"kelRfFixedCenter", qkel4x::kelRfFixedCenter},
    {"kelRfFixedPilot", qkel4x::kelRfFixedPilot},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelSpecFuncFreqSidePos> = std::to_array<Enumerator>({
    {"kelSidePosNorm", qkel4x::kelSidePosNorm},
    {"kelSidePosInv", qkel4x::kelSidePosInv},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelStatusSawFilterBWs> = std::to_array<Enumerator>({
    {"kelSawOFF", qkel4x::kelSawOFF},
    {"kelSaw2MHz", qkel4x::kelSaw2MHz},
    {"kelSaw6MHz", qkel4x::kelSaw6MHz},
    {"kelSaw7MHz", qkel4x::kelSaw7MHz},
    {"kelSaw8MHz", qkel4x::kelSaw8MHz},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelReferenceSources> = std::to_array<Enumerator>({
    {"kelInternal", qkel4x::kelInternal},
    {"kelExternal", qkel4x::kelExternal},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelSetupLevelUnits> = std::to_array<Enumerator>({
    {"kelDBMV", qkel4x::kelDBMV},
    {"kelDBPW", qkel4x::kelDBPW},
    {"kelDBUW", qkel4x::kelDBUW},
    {"kelDBM", qkel4x::kelDBM},
    {"kelDBUV", qkel4x::kelDBUV},
    {"kelMV", qkel4x::kelMV},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelSwitchStates> = std::to_array<Enumerator>({
    {"kelOff", qkel4x::kelOff},
    {"kelOn", qkel4x::kelOn},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelStatusRejFilterNotchWidths> = std::to_array<Enumerator>({
    {"kel100Hz", qkel4x::kel100Hz},
    {"kel1kHz", qkel4x::kel1kHz},
    {"kel10kHz", qkel4x::kel10kHz},
    {"kel100kHz", qkel4x::kel100kHz},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelFdSpectrumDetectors> = std::to_array<Enumerator>({
    {"kelMIN", qkel4x::kelMIN},
    {"kelRMS", qkel4x::kelRMS},
    {"kelMAX", qkel4x::kelMAX},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelEchoPatternRanges> = std::to_array<Enumerator>({
    {"kelFULL", qkel4x::kelFULL},
    {"kelRG1", qkel4x::kelRG1},
    {"kelRG2", qkel4x::kelRG2},
    {"kelRG3", qkel4x::kelRG3},
    {"kelZOOM1", qkel4x::kelZOOM1},
    {"kelZOOM2", qkel4x::kelZOOM2},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelEchoPatternScales> = std::to_array<Enumerator>({
    {"kelMicroSec", qkel4x::kelMicroSec},
    {"kelKilometres", qkel4x::kelKilometres},
    {"kelMiles", qkel4x::kelMiles},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelFdDetectors> = std::to_array<Enumerator>({
    {"kelFdRMS", qkel4x::kelFdRMS},
    {"kelFdPEAK", qkel4x::kelFdPEAK},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelEmIntervals> = std::to_array<Enumerator>({
    {"kel20sec", qkel4x::kel20sec},     {"kel40sec", qkel4x::kel40sec},
    {"kel1min", qkel4x::kel1min},       {"kel2min", qkel4x::kel2min},
    {"kel4min", qkel4x::kel4min},       {"kel10min", qkel4x::kel10min},
    {"kel20min", qkel4x::kel20min},     {"kel40min", qkel4x::kel40min},
    {"kel1hrs", qkel4x::kel1hrs},       {"kel2hrs", qkel4x::kel2hrs},
    {"kel4hrs", qkel4x::kel4hrs},       {"kel12hrs", qkel4x::kel12hrs},
    {"kel1days", qkel4x::kel1days},     {"kel2days", qkel4x::kel2days},
    {"kel4days", qkel4x::kel4days},     {"kel10days", qkel4x::kel10days},
    {"kel20days", qkel4x::kel20days},   {"kel50days", qkel4x::kel50days},
    {"kel100days", qkel4x::kel100days}, {"kel200days", qkel4x::kel200days},
    {"kel500days", qkel4x::kel500days}, {"kel1000days", qkel4x::kel1000days},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelFdJitterApplications> = std::to_array<Enumerator>({
    {"kelFdJitterCW", qkel4x::kelFdJitterCW},
    {"kelFdJitterNoise", qkel4x::kelFdJitterNoise},
});
template <>
inline constexpr auto kEnumerators<qkel4x::KelScreenShotModes> = std::to_array<Enumerator>({
    {"kelCapture", qkel4x::kelCapture},
    {"kelTransfer", qkel4x::kelTransfer},
    {"kelIncludeHeader", qkel4x::kelIncludeHeader},
});
template <>
inline constexpr auto kEnumerators<qkel4x::ErrorConstants> = std::to_array<Enumerator>({
    {"qkelInvalidPropertyValue", qkel4x::qkelInvalidPropertyValue},
    {"qkelArgumentNotOptional", qkel4x::qkelArgumentNotOptional},
    {"qkelQueryFailed", qkel4x::qkelQueryFailed},
    {"qkelCommandFailed", qkel4x::qkelCommandFailed},
    {"qkelBadMeasureMode", qkel4x::qkelBadMeasureMode},
    {"qkelBadInputPort", qkel4x::qkelBadInputPort},
    {"qkelFuntionNotAvailable", qkel4x::qkelFuntionNotAvailable},
    {"qkelBadEqualiserMode", qkel4x::qkelBadEqualiserMode},
    {"qkelBadRemoteControlPort", qkel4x::qkelBadRemoteControlPort},
});

/// The published description of one enumeration.
template <class E>
inline constexpr Enumeration kEnumeration{};

template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelModes>{
    .name = "KelModes",
    .doc = "Operating mode (the demodulation standard).",
    .enumerators = kEnumerators<qkel4x::KelModes>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelMeasureModes>{
    .name = "KelMeasureModes",
    .doc = "Measurement mode within the ATSC mode.",
    .enumerators = kEnumerators<qkel4x::KelMeasureModes>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelInputPorts>{
    .name = "KelInputPorts", .doc = "Input port.", .enumerators = kEnumerators<qkel4x::KelInputPorts>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelInputAttenuations>{
    .name = "KelInputAttenuations",
    .doc = "Receiver attenuation in dB, or automatic.",
    .enumerators = kEnumerators<qkel4x::KelInputAttenuations>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelRxAttenModes>{
    .name = "KelRxAttenModes",
    .doc = "Noise and distortion trade-off of the receiver attenuator.",
    .enumerators = kEnumerators<qkel4x::KelRxAttenModes>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelDemodAttenuations>{
    .name = "KelDemodAttenuations",
    .doc = "Demodulator attenuation setting.",
    .enumerators = kEnumerators<qkel4x::KelDemodAttenuations>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelDemodAttenVals>{
    .name = "KelDemodAttenVals",
    .doc = "What the demodulator attenuator uses at the moment.",
    .enumerators = kEnumerators<qkel4x::KelDemodAttenVals>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelSpecFuncLoopAgcs>{
    .name = "KelSpecFuncLoopAgcs",
    .doc = "Speed of the demodulator's gain control.",
    .enumerators = kEnumerators<qkel4x::KelSpecFuncLoopAgcs>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelSpecFuncLoopBandwidths>{
    .name = "KelSpecFuncLoopBandwidths",
    .doc = "Bandwidth of the carrier and symbol-rate loops.",
    .enumerators = kEnumerators<qkel4x::KelSpecFuncLoopBandwidths>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelSpecFuncMinBerIntegrations>{
    .name = "KelSpecFuncMinBerIntegrations",
    .doc = "Minimum integration of the bit error ratio.",
    .enumerators = kEnumerators<qkel4x::KelSpecFuncMinBerIntegrations>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelSpecFuncEqualizers>{
    .name = "KelSpecFuncEqualizers",
    .doc = "State of the equalizer.",
    .enumerators = kEnumerators<qkel4x::KelSpecFuncEqualizers>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelSpecFuncEqualizerModes>{
    .name = "KelSpecFuncEqualizerModes",
    .doc = "Complex or real equalizer.",
    .enumerators = kEnumerators<qkel4x::KelSpecFuncEqualizerModes>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelSpecFuncEqualizerAdaptations>{
    .name = "KelSpecFuncEqualizerAdaptations",
    .doc = "Adaptation speed of the equalizer.",
    .enumerators = kEnumerators<qkel4x::KelSpecFuncEqualizerAdaptations>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelSpecFuncFreqRfFixed>{
    .name = "KelSpecFuncFreqRfFixed",
    .doc = "Which of the two RF frequencies stays when the other settings change.",
    .enumerators = kEnumerators<qkel4x::KelSpecFuncFreqRfFixed>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelSpecFuncFreqSidePos>{
    .name = "KelSpecFuncFreqSidePos",
    .doc = "Position of the sideband.",
    .enumerators = kEnumerators<qkel4x::KelSpecFuncFreqSidePos>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelStatusSawFilterBWs>{
    .name = "KelStatusSawFilterBWs",
    .doc = "Bandwidth of the SAW filter; the value is the bandwidth in MHz.",
    .enumerators = kEnumerators<qkel4x::KelStatusSawFilterBWs>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelReferenceSources>{
    .name = "KelReferenceSources",
    .doc = "Source of the 10 MHz reference.",
    .enumerators = kEnumerators<qkel4x::KelReferenceSources>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelSetupLevelUnits>{
    .name = "KelSetupLevelUnits",
    .doc = "Unit of the level display.",
    .enumerators = kEnumerators<qkel4x::KelSetupLevelUnits>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelSwitchStates>{
    .name = "KelSwitchStates", .doc = "A switch.", .enumerators = kEnumerators<qkel4x::KelSwitchStates>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelStatusRejFilterNotchWidths>{
    .name = "KelStatusRejFilterNotchWidths",
    .doc = "Width of the rejection filter's notch.",
    .enumerators = kEnumerators<qkel4x::KelStatusRejFilterNotchWidths>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelFdSpectrumDetectors>{
    .name = "KelFdSpectrumDetectors",
    .doc = "Detector of the spectrum display.",
    .enumerators = kEnumerators<qkel4x::KelFdSpectrumDetectors>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelEchoPatternRanges>{
    .name = "KelEchoPatternRanges",
    .doc = "Range of the echo-pattern display.",
    .enumerators = kEnumerators<qkel4x::KelEchoPatternRanges>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelEchoPatternScales>{
    .name = "KelEchoPatternScales",
    .doc = "Scale of the echo-pattern display.",
    .enumerators = kEnumerators<qkel4x::KelEchoPatternScales>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelFdDetectors>{
    .name = "KelFdDetectors",
    .doc = "Detector of the frequency-response display.",
    .enumerators = kEnumerators<qkel4x::KelFdDetectors>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelEmIntervals>{
    .name = "KelEmIntervals",
    .doc = "Interval of the eye monitor.",
    .enumerators = kEnumerators<qkel4x::KelEmIntervals>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelFdJitterApplications>{
    .name = "KelFdJitterApplications",
    .doc = "What the jitter measurement is applied to.",
    .enumerators = kEnumerators<qkel4x::KelFdJitterApplications>};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::KelScreenShotModes>{
    .name = "KelScreenShotModes",
    .doc = "What ScreenShot does; the members are bits of one value.",
    .enumerators = kEnumerators<qkel4x::KelScreenShotModes>,
    .flags = true};
template <>
inline constexpr Enumeration kEnumeration<qkel4x::ErrorConstants>{
    .name = "ErrorConstants",
    .doc = "Error numbers of this driver.",
    .enumerators = kEnumerators<qkel4x::ErrorConstants>};

/// All published enumerations.
inline constexpr std::array kEnumerations{
    &kEnumeration<qkel4x::KelModes>,
    &kEnumeration<qkel4x::KelMeasureModes>,
    &kEnumeration<qkel4x::KelInputPorts>,
    &kEnumeration<qkel4x::KelInputAttenuations>,
    &kEnumeration<qkel4x::KelRxAttenModes>,
    &kEnumeration<qkel4x::KelDemodAttenuations>,
    &kEnumeration<qkel4x::KelDemodAttenVals>,
    &kEnumeration<qkel4x::KelSpecFuncLoopAgcs>,
    &kEnumeration<qkel4x::KelSpecFuncLoopBandwidths>,
    &kEnumeration<qkel4x::KelSpecFuncMinBerIntegrations>,
    &kEnumeration<qkel4x::KelSpecFuncEqualizers>,
    &kEnumeration<qkel4x::KelSpecFuncEqualizerModes>,
    &kEnumeration<qkel4x::KelSpecFuncEqualizerAdaptations>,
    &kEnumeration<qkel4x::KelSpecFuncFreqRfFixed>,
    &kEnumeration<qkel4x::KelSpecFuncFreqSidePos>,
    &kEnumeration<qkel4x::KelStatusSawFilterBWs>,
    &kEnumeration<qkel4x::KelReferenceSources>,
    &kEnumeration<qkel4x::KelSetupLevelUnits>,
    &kEnumeration<qkel4x::KelSwitchStates>,
    &kEnumeration<qkel4x::KelStatusRejFilterNotchWidths>,
    &kEnumeration<qkel4x::KelFdSpectrumDetectors>,
    &kEnumeration<qkel4x::KelEchoPatternRanges>,
    &kEnumeration<qkel4x::KelEchoPatternScales>,
    &kEnumeration<qkel4x::KelFdDetectors>,
    &kEnumeration<qkel4x::KelEmIntervals>,
    &kEnumeration<qkel4x::KelFdJitterApplications>,
    &kEnumeration<qkel4x::KelScreenShotModes>,
    &kEnumeration<qkel4x::ErrorConstants>,
};

/// The enumeration of that name, in any letter case; null where there is none.
QKEL4X_EXPORT const Enumeration* FindEnumeration(std::string_view name);

/// The value of an enumerator by its name, in any letter case; names joined by "+" or "|" where the values
/// are flags. Nothing where a name is unknown.
QKEL4X_EXPORT std::optional<std::int32_t> EnumeratorValue(const Enumeration& enumeration,
                                                          std::string_view name);

/// As EnumeratorValue, or a whole number. Fails with 13 and the list of the names on anything else.
QKEL4X_EXPORT std::int32_t ParseEnumerator(const Enumeration& enumeration, std::string_view text);

/// The name of a value; flags joined by "+"; empty where the enumeration has no such value.
QKEL4X_EXPORT std::string EnumeratorName(const Enumeration& enumeration, std::int32_t value);

}  // namespace automation
