// Measurements of one value each. A status word instead of a value reads 0, and Prefix tells.
#include "driver/clsKEL4x.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"
#include "driver/measure/reading.h"

namespace qkel4x {
namespace {

constexpr ModeSet kCrestFactorModes = AnyOf(kelADIS, kelCENV, kelCCDF);
constexpr ModeSet kPaprModes = AnyOf(kelCENV, kelCCDF);
constexpr ModeSet kSpectrumModes = AnyOf(kelSP_1, kelSP_2, kelSP_3);
constexpr ModeSet kMerModes = AnyOf(kelNORM, kelPAR, kelAPH, kelAGD, kelPOL, kelEPAT, kelHIST);

}  // namespace

double clsKEL4x::Read(const Reading& reading) {
  status_.prefix = kNoStatus;
  if (!reading.modes.Empty()) {
    RequireMeasureMode(reading.texts, reading.modes,
                       reading.gate_in_simulation ? Simulation::kKeepsGate : Simulation::kSkipsGate);
  }
  return ReadNumber(reading);
}

// The armed part of a reading: one query and its leading number.
double clsKEL4x::ReadNumber(const Reading& reading) {
  return Armed(reading.texts, [&] {
    std::string reply;
    io_.ExchangeCommand(reading.query, reply);
    return SimulationActive() ? 0.0 : LeadingNumber(status_.Decode(reply));
  });
}

// Narrow results are rounded inside the frame, so that an overflow is the member's failure like any other.
std::int16_t clsKEL4x::ReadInt16(const Reading& reading) {
  const double number = Read(reading);
  return Armed(reading.texts, [&] { return RoundToInt16(number); });
}

std::int32_t clsKEL4x::ReadInt32(const Reading& reading) {
  const double number = Read(reading);
  return Armed(reading.texts, [&] { return RoundToInt32(number); });
}

// Whether the instrument reports a loop as not locked; a stored echo pattern does not outlive that.
bool clsKEL4x::ReadLossOfLock(const Reading& reading) {
  status_.prefix = kNoStatus;
  return Armed(reading.texts, [&] {
    std::string reply;
    io_.ExchangeCommand(reading.query, reply);
    if (SimulationActive()) return false;
    const bool lost = !BooleanFromText(status_.Decode(reply));
    if (lost) echo_pattern_.valid = false;
    return lost;
  });
}

// MeasureTsBitrate ------------------------------------------------------------------------------------------
static constexpr Reading kMeasureTsBitrate{
    .texts = ReadTexts("MeasureTsBitrate"),
    .query = "READ:ATSC:TS:BITRATE?",
};
double clsKEL4x::MeasureTsBitrate() { return Read(kMeasureTsBitrate); }

// MeasureTdCcdfCrestFactorMargin ----------------------------------------------------------------------------
static constexpr Reading kMeasureTdCcdfCrestFactorMargin{
    .texts = ReadTexts("MeasureTdCcdfCrestFactorMargin"),
    .query = "READ:ATSC:CREST:MARGIN?",
    .modes = kCrestFactorModes,
};
double clsKEL4x::MeasureTdCcdfCrestFactorMargin() { return Read(kMeasureTdCcdfCrestFactorMargin); }

// MeasureTdCcdfCrestFactorMax -------------------------------------------------------------------------------
static constexpr Reading kMeasureTdCcdfCrestFactorMax{
    .texts = ReadTexts("MeasureTdCcdfCrestFactorMax"),
    .query = "READ:ATSC:CREST:MAX?",
    .modes = kCrestFactorModes,
};
double clsKEL4x::MeasureTdCcdfCrestFactorMax() { return Read(kMeasureTdCcdfCrestFactorMax); }

// MeasureTdCcdfCrestFactorCurrent ---------------------------------------------------------------------------
static constexpr Reading kMeasureTdCcdfCrestFactorCurrent{
    .texts = ReadTexts("MeasureTdCcdfCrestFactorCurrent"),
    .query = "READ:ATSC:CREST:CURRENT?",
    .modes = kCrestFactorModes,
};
double clsKEL4x::MeasureTdCcdfCrestFactorCurrent() { return Read(kMeasureTdCcdfCrestFactorCurrent); }

// MeasureTdCrestFactorAqu -----------------------------------------------------------------------------------
static constexpr Reading kMeasureTdCrestFactorAqu{
    .texts = ReadTexts("MeasureTdCrestFactorAqu"),
    .query = "READ:ATSC:CRES:ACQ?",
    .modes = kCrestFactorModes,
};
std::int16_t clsKEL4x::MeasureTdCrestFactorAqu() { return ReadInt16(kMeasureTdCrestFactorAqu); }

// MeasureTdCcdfPapr
// ------------------------------------------------------------------------------------------------ IRREGULAR:
// a wrong mode is refused under simulation too.
static constexpr Reading kMeasureTdCcdfPapr{
    .texts = ReadTexts("MeasureTdCcdfPapr"),
    .query = "READ:ATSC:CCDF:PAPR?",
    .modes = kPaprModes,
    .gate_in_simulation = true,
};
double clsKEL4x::MeasureTdCcdfPapr() { return Read(kMeasureTdCcdfPapr); }

// MeasureTdCcdfPaprDelta
// ------------------------------------------------------------------------------------------- IRREGULAR: a
// wrong mode is refused under simulation too.
static constexpr Reading kMeasureTdCcdfPaprDelta{
    .texts = ReadTexts("MeasureTdCcdfPaprDelta"),
    .query = "READ:ATSC:CCDF:PAPR:DELT?",
    .modes = kPaprModes,
    .gate_in_simulation = true,
};
double clsKEL4x::MeasureTdCcdfPaprDelta() { return Read(kMeasureTdCcdfPaprDelta); }

// MeasureFdSpectrumAverage ----------------------------------------------------------------------------------
static constexpr Reading kMeasureFdSpectrumAverage{
    .texts = ReadTexts("MeasureFdSpectrumAverage"),
    .query = "READ:ATSC:SPEC:AVG:COUN?",
    .modes = AnyOf(kelSP_1, kelSP_2, kelSP_3, kelAJIT, kelPJIT),
};
std::int16_t clsKEL4x::MeasureFdSpectrumAverage() { return ReadInt16(kMeasureFdSpectrumAverage); }

// MeasureFdSpectrumShoulderLower ----------------------------------------------------------------------------
static constexpr Reading kMeasureFdSpectrumShoulderLower{
    .texts = ReadTexts("MeasureFdSpectrumShoulderLower"),
    .query = "READ:ATSC:SPECTRUM:SHO:LOW?",
    .modes = kSpectrumModes,
};
double clsKEL4x::MeasureFdSpectrumShoulderLower() { return Read(kMeasureFdSpectrumShoulderLower); }

// MeasureFdSpectrumShoulderUpper ----------------------------------------------------------------------------
static constexpr Reading kMeasureFdSpectrumShoulderUpper{
    .texts = ReadTexts("MeasureFdSpectrumShoulderUpper"),
    .query = "READ:ATSC:SPECTRUM:SHO:UPP?",
    .modes = kSpectrumModes,
};
double clsKEL4x::MeasureFdSpectrumShoulderUpper() { return Read(kMeasureFdSpectrumShoulderUpper); }

// MeasurePilotFreqOffset
// ------------------------------------------------------------------------------------------- IRREGULAR:
// firmware before 4.8 reports kilohertz.
static constexpr Reading kMeasurePilotFreqOffset{
    .texts = ReadTexts("MeasurePilotFreqOffset"),
    .query = "READ:ATSC:FREQ:OFFSET?",
    .modes = AnyOf(kelNORM),
};
double clsKEL4x::MeasurePilotFreqOffset() {
  status_.prefix = kNoStatus;
  RequireMeasureMode(kMeasurePilotFreqOffset.texts, kMeasurePilotFreqOffset.modes);
  return Armed(kMeasurePilotFreqOffset.texts, [this] {
    std::string reply;
    io_.ExchangeCommand(kMeasurePilotFreqOffset.query, reply);
    if (SimulationActive()) return 0.0;
    const double offset = LeadingNumber(status_.Decode(reply));
    return FirmwareNumber() < 4.8 ? offset * 1000.0 : offset;
  });
}

// MeasureRfLevel --------------------------------------------------------------------------------------------
static constexpr Reading kMeasureRfLevel{
    .texts = ReadTexts("MeasureRfLevel"),
    .query = "READ:RF:LEVEL?",
};
double clsKEL4x::MeasureRfLevel() { return Read(kMeasureRfLevel); }

// MeasureVsbMerRmsDb ----------------------------------------------------------------------------------------
static constexpr Reading kMeasureVsbMerRmsDb{
    .texts = ReadTexts("MeasureVsbMerRmsDb"),
    .query = "READ:ATSC:MER:RMS?",
    .modes = kMerModes,
};
double clsKEL4x::MeasureVsbMerRmsDb() { return Read(kMeasureVsbMerRmsDb); }

// MeasureVsbMerRmsPct ---------------------------------------------------------------------------------------
static constexpr Reading kMeasureVsbMerRmsPct{
    .texts = ReadTexts("MeasureVsbMerRmsPct"),
    .query = "READ:ATSC:MERP:RMS?",
    .modes = kMerModes,
};
double clsKEL4x::MeasureVsbMerRmsPct() { return Read(kMeasureVsbMerRmsPct); }

// MeasureVsbMerPeakPct
// --------------------------------------------------------------------------------------------- IRREGULAR: a
// wrong mode is refused under simulation too.
static constexpr Reading kMeasureVsbMerPeakPct{
    .texts = ReadTexts("MeasureVsbMerPeakPct"),
    .query = "READ:ATSC:MERP:PEAK?",
    .modes = AnyOf(kelPAR),
    .gate_in_simulation = true,
};
double clsKEL4x::MeasureVsbMerPeakPct() { return Read(kMeasureVsbMerPeakPct); }

// MeasureVsbEvmPeak -----------------------------------------------------------------------------------------
static constexpr Reading kMeasureVsbEvmPeak{
    .texts = ReadTexts("MeasureVsbEvmPeak"),
    .query = "READ:ATSC:EVM:PEAK?",
    .modes = AnyOf(kelPAR),
};
double clsKEL4x::MeasureVsbEvmPeak() { return Read(kMeasureVsbEvmPeak); }

// MeasureVsbEvmRms ------------------------------------------------------------------------------------------
static constexpr Reading kMeasureVsbEvmRms{
    .texts = ReadTexts("MeasureVsbEvmRms"),
    .query = "READ:ATSC:EVM:RMS?",
    .modes = kMerModes,
};
double clsKEL4x::MeasureVsbEvmRms() { return Read(kMeasureVsbEvmRms); }

// MeasureSymbolRateOffset -----------------------------------------------------------------------------------
static constexpr Reading kMeasureSymbolRateOffset{
    .texts = ReadTexts("MeasureSymbolRateOffset"),
    .query = "READ:ATSC:SYMBOL:OFFSET?",
    .modes = AnyOf(kelNORM),
};
double clsKEL4x::MeasureSymbolRateOffset() { return Read(kMeasureSymbolRateOffset); }

// MeasureVsbPhaseJitter -------------------------------------------------------------------------------------
static constexpr Reading kMeasureVsbPhaseJitter{
    .texts = ReadTexts("MeasureVsbPhaseJitter"),
    .query = "READ:ATSC:JITTER?",
    .modes = AnyOf(kelPAR),
};
double clsKEL4x::MeasureVsbPhaseJitter() { return Read(kMeasureVsbPhaseJitter); }

// MeasureVsbSignalToNoiseRatio ------------------------------------------------------------------------------
static constexpr Reading kMeasureVsbSignalToNoiseRatio{
    .texts = ReadTexts("MeasureVsbSignalToNoiseRatio"),
    .query = "READ:ATSC:SIGNAL:NOISE?",
    .modes = AnyOf(kelPAR),
};
double clsKEL4x::MeasureVsbSignalToNoiseRatio() { return Read(kMeasureVsbSignalToNoiseRatio); }

// MeasureResetBer -------------------------------------------------------------------------------------------
void clsKEL4x::MeasureResetBer() {
  static constexpr MemberTexts kTexts = MethodTexts("MeasureResetBer");
  status_.prefix = kNoStatus;
  Armed(kTexts, [this] { io_.ExchangeCommand("SENS:ATSC:BER:RES"); });
}

// MeasureBerBeforeRS ----------------------------------------------------------------------------------------
static constexpr Reading kMeasureBerBeforeRS{
    .texts = ReadTexts("MeasureBerBeforeRS"),
    .query = "READ:ATSC:BER:BRS?",
};
double clsKEL4x::MeasureBerBeforeRS() { return Read(kMeasureBerBeforeRS); }

// MeasureBerAfterRS -----------------------------------------------------------------------------------------
static constexpr Reading kMeasureBerAfterRS{
    .texts = ReadTexts("MeasureBerAfterRS"),
    .query = "READ:ATSC:BER:ARS?",
};
double clsKEL4x::MeasureBerAfterRS() { return Read(kMeasureBerAfterRS); }

// MeasureCarrierLoopOutOfLock
// -------------------------------------------------------------------------------------- IRREGULAR: the
// instrument answers whether it is locked, the member whether the lock is lost.
static constexpr Reading kMeasureCarrierLoopOutOfLock{
    .texts = ReadTexts("MeasureCarrierLoopOutOfLock"),
    .query = "READ:ATSC:DEM:LOCK?",
};
bool clsKEL4x::MeasureCarrierLoopOutOfLock() { return ReadLossOfLock(kMeasureCarrierLoopOutOfLock); }

// MeasureMpegTsUnSync
// ---------------------------------------------------------------------------------------------- IRREGULAR:
// the instrument answers whether it is in sync, the member whether the sync is lost.
static constexpr Reading kMeasureMpegTsUnSync{
    .texts = ReadTexts("MeasureMpegTsUnSync"),
    .query = "READ:ATSC:FEC:LOCK?",
};
bool clsKEL4x::MeasureMpegTsUnSync() { return ReadLossOfLock(kMeasureMpegTsUnSync); }

// MeasureSegErrRatio ----------------------------------------------------------------------------------------
static constexpr Reading kMeasureSegErrRatio{
    .texts = ReadTexts("MeasureSegErrRatio"),
    .query = "READ:ATSC:SEGMENT:ERROR:RATIO?",
    .modes = AnyOf(kelNORM),
};
double clsKEL4x::MeasureSegErrRatio() { return Read(kMeasureSegErrRatio); }

// MeasureSegErrPerSec ---------------------------------------------------------------------------------------
static constexpr Reading kMeasureSegErrPerSec{
    .texts = ReadTexts("MeasureSegErrPerSec"),
    .query = "READ:ATSC:SEGMENT:ERROR?",
    .modes = AnyOf(kelNORM),
};
std::int32_t clsKEL4x::MeasureSegErrPerSec() { return ReadInt32(kMeasureSegErrPerSec); }

// The pilot values need a running equalizer besides their measurement mode.
double clsKEL4x::ReadPilotValue(const Reading& reading) {
  status_.prefix = kNoStatus;
  RequireMeasureMode(reading.texts, reading.modes);
  if (!SimulationActive() && SpecFuncEqualizer() == kelEqualizerFreeze) {
    Raise(qkelBadEqualiserMode, reading.texts.source, "Wrong equaliser mode selected");
  }
  return ReadNumber(reading);
}

// MeasureVsbPvPilotValue ------------------------------------------------------------------------------------
static constexpr Reading kMeasureVsbPvPilotValue{
    .texts = ReadTexts("MeasureVsbPvPilotValue"),
    .query = "READ:ATSC:PVALUE?",
    .modes = AnyOf(kelPV),
};
double clsKEL4x::MeasureVsbPvPilotValue() { return ReadPilotValue(kMeasureVsbPvPilotValue); }

// MeasureVsbPvAmplErr ---------------------------------------------------------------------------------------
static constexpr Reading kMeasureVsbPvAmplErr{
    .texts = ReadTexts("MeasureVsbPvAmplErr"),
    .query = "READ:ATSC:PERROR?",
    .modes = AnyOf(kelPV),
};
double clsKEL4x::MeasureVsbPvAmplErr() { return ReadPilotValue(kMeasureVsbPvAmplErr); }

// MeasureVsbPvSigPilotRatio ---------------------------------------------------------------------------------
static constexpr Reading kMeasureVsbPvSigPilotRatio{
    .texts = ReadTexts("MeasureVsbPvSigPilotRatio"),
    .query = "READ:ATSC:SIGNAL:PILOT?",
    .modes = AnyOf(kelPV),
};
double clsKEL4x::MeasureVsbPvSigPilotRatio() { return ReadPilotValue(kMeasureVsbPvSigPilotRatio); }

}  // namespace qkel4x
