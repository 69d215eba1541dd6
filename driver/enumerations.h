// The published enumerations: names and values exactly as hosts know them. Error constants live in
// error_constants.h.
#pragma once

#include <cstdint>

namespace qkel4x {

/// Operating mode (the demodulation standard). Only kelATSC can be written.
enum KelModes : std::int32_t {
  kelNYQI = 1,
  kelNYQM = 2,
  kelNYQN = 3,
  kelQAM = 4,
  kelQAMA = 5,
  kelJ83A = 6,
  kelJ83B = 7,
  kelJ83C = 8,
  kelMPEG = 9,
  kelM83A = 10,
  kelM83B = 11,
  kelM83C = 12,
  kelDVBT = 13,
  kelATSC = 14,
  kelNTSC = 15,
};

/// Measurement mode within the ATSC mode.
enum KelMeasureModes : std::int32_t {
  kelUndefined = -1,
  kelNORM = 0,
  kelPAR = 1,
  kelCCDF = 2,
  kelSP_2 = 3,
  kelCDI = 4,
  kelSP_1 = 5,
  kelSP_3 = 6,
  kelAPH = 7,
  kelAGD = 8,
  kelPOL = 9,
  kelADIS = 10,
  kelEPAT = 11,
  kelEYEM = 12,
  kelHIST = 13,
  kelHII = 14,
  kelHIQ = 15,
  kelPV = 16,
  kelAJIT = 17,
  kelPJIT = 18,
  kelCENV = 19,
};

/// Input port. Bit 1 is set for every receiver variant, bit 2 only for the demodulator input.
enum KelInputPorts : std::int32_t {
  kelReceiver = 2,
  kelDemod = 4,
  kelIF = 128,
  kelReceiver50ohm = 50,
  kelReceiver75ohm = 75,
};

/// Receiver attenuation in dB, or automatic.
enum KelInputAttenuations : std::int32_t {
  kelAttenAuto = 255,
  kelAtten00 = 0,
  kelAtten05 = 5,
  kelAtten10 = 10,
  kelAtten15 = 15,
  kelAtten20 = 20,
  kelAtten25 = 25,
  kelAtten30 = 30,
  kelAtten35 = 35,
  kelAtten40 = 40,
  kelAtten45 = 45,
  kelAtten50 = 50,
  kelAtten55 = 55,
};

/// Noise and distortion trade-off of the receiver attenuator.
enum KelRxAttenModes : std::int32_t {
  kelRxAttenLoNoise = 0,
  kelRxAttenNormal = 1,
  kelRxAttenLoDistn = 2,
  kelRxAttenLowestDistn = 3,
};

/// Demodulator attenuation setting.
enum KelDemodAttenuations : std::int32_t {
  kelDemodAttenAuto = 1,
  kelDemodManualLowAtten = 2,
  kelDemodManualLowPreamp = 3,
  kelDemodManualHigh = 4,
};

/// What the demodulator attenuator uses at the moment.
enum KelDemodAttenVals : std::int32_t {
  kelDAVManualLowPreamp = 0,
  kelDAVManualLowAtten = 1,
  kelDAVManualHigh = 2,
  kelDAVAutoLowPreamp = 10,
  kelDAVAutoLowAtten = 11,
  kelDAVAutoHigh = 12,
};

/// Speed of the demodulator's gain control.
enum KelSpecFuncLoopAgcs : std::int32_t { kelLasSlow = 0, kelLasFast = 1 };

/// Bandwidth of the carrier and symbol-rate loops.
enum KelSpecFuncLoopBandwidths : std::int32_t { kelLbsLo = 0, kelLbsMed = 1, kelLbsHi = 2 };

/// Minimum integration of the bit error ratio.
enum KelSpecFuncMinBerIntegrations : std::int32_t {
  kelBerEXT = 0,
  kelBer1 = 1,
  kelBer10 = 10,
  kelBer100 = 100,
  kelBer1000 = 1000,
};

/// State of the equalizer.
enum KelSpecFuncEqualizers : std::int32_t { kelEqualizerOff = 0, kelEqualizerOn = 1, kelEqualizerFreeze = 2 };

/// Complex or real equalizer.
enum KelSpecFuncEqualizerModes : std::int32_t { kelEquModeComp = 0, kelEquModeReal = 1 };

/// Adaptation speed of the equalizer.
enum KelSpecFuncEqualizerAdaptations : std::int32_t {
  kelEquAdapSlow = 0,
  kelEquAdapMed = 1,
  kelEquAdapFast = 2
};

/// Which of the two RF frequencies stays when the other settings change.
enum KelSpecFuncFreqRfFixed : std::int32_t { kelRfFixedCenter = 0, kelRfFixedPilot = 1 };

/// Position of the sideband.
enum KelSpecFuncFreqSidePos : std::int32_t { kelSidePosNorm = 0, kelSidePosInv = 1 };

/// Bandwidth of the SAW filter; the value is the bandwidth in MHz.
enum KelStatusSawFilterBWs : std::int32_t {
  kelSawOFF = 0,
  kelSaw2MHz = 2,
  kelSaw6MHz = 6,
  kelSaw7MHz = 7,
  kelSaw8MHz = 8,
};

/// Source of the 10 MHz reference.
enum KelReferenceSources : std::int32_t { kelInternal = 0, kelExternal = 1 };

/// Unit of the level display.
enum KelSetupLevelUnits : std::int32_t {
  kelDBMV = 0,
  kelDBPW = 1,
  kelDBUW = 2,
  kelDBM = 3,
  kelDBUV = 4,
  kelMV = 5,
};

/// A switch.
enum KelSwitchStates : std::int32_t { kelOff = 0, kelOn = 1 };

/// Width of the rejection filter's notch.
enum KelStatusRejFilterNotchWidths : std::int32_t { kel100Hz = 0, kel1kHz = 1, kel10kHz = 2, kel100kHz = 3 };

/// Detector of the spectrum display.
enum KelFdSpectrumDetectors : std::int32_t { kelMIN = 0, kelRMS = 1, kelMAX = 2 };

/// Range of the echo-pattern display.
enum KelEchoPatternRanges : std::int32_t {
  kelFULL = 0,
  kelRG1 = 1,
  kelRG2 = 2,
  kelRG3 = 3,
  kelZOOM1 = 4,
  kelZOOM2 = 5,
};

/// Scale of the echo-pattern display.
enum KelEchoPatternScales : std::int32_t { kelMicroSec = 0, kelKilometres = 1, kelMiles = 2 };

/// Detector of the frequency-response display.
enum KelFdDetectors : std::int32_t { kelFdRMS = 0, kelFdPEAK = 1 };

/// Interval of the eye monitor.
enum KelEmIntervals : std::int32_t {
  kel20sec = 0,
  kel40sec = 1,
  kel1min = 2,
  kel2min = 3,
  kel4min = 4,
  kel10min = 5,
  kel20min = 6,
  kel40min = 7,
  kel1hrs = 8,
  kel2hrs = 9,
  kel4hrs = 10,
  kel12hrs = 11,
  kel1days = 12,
  kel2days = 13,
  kel4days = 14,
  kel10days = 15,
  kel20days = 16,
  kel50days = 17,
  kel100days = 18,
  kel200days = 19,
  kel500days = 20,
  kel1000days = 21,
};

/// What the jitter measurement is applied to.
enum KelFdJitterApplications : std::int32_t { kelFdJitterCW = 0, kelFdJitterNoise = 1 };

/// What ScreenShot does; the members are bits of one value.
enum KelScreenShotModes : std::int32_t { kelCapture = 1, kelTransfer = 2, kelIncludeHeader = 4 };

}  // namespace qkel4x
