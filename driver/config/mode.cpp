// Operating mode, measurement mode, and the gates that other members apply.
#include <array>

#include "driver/clsKEL4x.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"
#include "host/host.h"

namespace qkel4x {
namespace {

constexpr std::string_view kModeChoices =
    "NYQI,NYQM,NYQN,QAM,QAMA,J83A,J83B,J83C,MPEG,M83A,M83B,M83C,DVBT,ATSC,NTSC";

// In the order of KelModes, whose values count from 1.
constexpr std::array<std::string_view, 15> kModeMnemonics = {
    "NYQI", "NYQM", "NYQN", "QAM",  "QAMA", "J83A", "J83B", "J83C",
    "MPEG", "M83A", "M83B", "M83C", "DVBT", "ATSC", "NTSC",
};
static_assert(kModeMnemonics[kelATSC - 1] == "ATSC");

// The choices stand in the instrument's own order; replies are matched by name.
constexpr std::string_view kMeasureModeChoices =
    "NORM,CDI,SP_1,SP_2,SP_3,APH,AGD,PJIT,AJIT,POL,ADIS,CCDF,CENV,EPAT,EYEM,HIST,HII,HIQ,PAR,PV";

struct MeasureModeRow {
  KelMeasureModes mode;
  std::string_view mnemonic;
  float settling;  // seconds to wait after switching to it
  bool answered;   // whether a reply with this mnemonic is recognised
};

// In the order of KelMeasureModes.
constexpr std::array<MeasureModeRow, 20> kMeasureModes = {{
    {kelNORM, "NORM", 5, true},
    {kelPAR, "PAR", 9, true},
    {kelCCDF, "CCDF", 0, true},
    {kelSP_2, "SP_2", 10, true},
    {kelCDI, "CDI", 3, true},
    {kelSP_1, "SP_1", 10, true},
    {kelSP_3, "SP_3", 10, true},
    {kelAPH, "APH", 0, true},
    {kelAGD, "AGD", 0, true},
    {kelPOL, "POL", 3, true},
    {kelADIS, "ADIS", 3, true},
    {kelEPAT, "EPAT", 0, true},
    {kelEYEM, "EYEM", 3, true},
    {kelHIST, "HIST", 3, true},
    {kelHII, "HII", 3, true},
    {kelHIQ, "HIQ", 3, true},
    {kelPV, "PV", 3, true},
    {kelAJIT, "AJIT", 3, false},  // IRREGULAR: written, but not recognised in a reply
    {kelPJIT, "PJIT", 3, false},  // IRREGULAR: likewise
    {kelCENV, "CENV", 3, true},
}};

constexpr bool RowsAreInOrder() {
  for (std::size_t i = 0; i < kMeasureModes.size(); ++i) {
    if (kMeasureModes[i].mode != static_cast<std::int32_t>(i)) return false;
  }
  return true;
}
static_assert(RowsAreInOrder());

}  // namespace

// Mode ------------------------------------------------------------------------------------------------------
KelModes clsKEL4x::Mode() {
  static constexpr MemberTexts kGet = ReadTexts("Mode");
  std::string reply;
  std::string_view answered;
  const bool decoded = Armed(kGet, [&] {
    io_.ExchangeCommand("SYST:MODE?", reply, kModeChoices);
    if (SimulationActive()) return false;
    answered = status_.Decode(reply);
    return true;
  });
  if (!decoded) return KelModes{};
  for (std::size_t i = 0; i < kModeMnemonics.size(); ++i) {
    if (answered == kModeMnemonics[i]) return static_cast<KelModes>(i + 1);
  }
  Raise(qkelInvalidPropertyValue, kGet.source, Join("Device reported an unrecognised mode (", reply, ")"));
}

void clsKEL4x::Mode(KelModes mode) {
  static constexpr MemberTexts kLet = WriteTexts("Mode");
  if (mode < kelNYQI || mode > kelNTSC) {
    Raise(qkelInvalidPropertyValue, kLet.source,
          Join("Invalid property value (Mode = ", DecimalText(mode), ")"));
  }
  if (mode != kelATSC) {
    // The enumeration lists every operating mode; this driver sets one of them.
    const std::string_view mnemonic = kModeMnemonics[static_cast<std::size_t>(mode - 1)];
    Raise(qkelInvalidPropertyValue, kLet.source, Join("Invalid property value (Mode = ", mnemonic, ")"));
  }
  Armed(kLet, [this] {
    measure_mode_.valid = false;
    echo_pattern_.valid = false;
    RaisedTimeout timeout(io_.Port(), 10.0F);
    io_.ExchangeCommand("SYST:MODE ATSC");
    timeout.Restore();
    host::CurrentHost().Runtime().Wait(10.0F);
  });
}

// MeasureMode -----------------------------------------------------------------------------------------------
KelMeasureModes clsKEL4x::MeasureMode() {
  static constexpr MemberTexts kGet = ReadTexts("MeasureMode");
  if (measure_mode_.valid) return measure_mode_.mode;
  std::string reply;
  std::string_view answered;
  const bool decoded = Armed(kGet, [&] {
    io_.ExchangeCommand("SENS:ATSC:MEAS?", reply, kMeasureModeChoices);
    if (SimulationActive()) return false;
    answered = status_.Decode(reply);
    return true;
  });
  if (!decoded) return measure_mode_.mode;
  if (answered == "0") {
    measure_mode_ = {kelUndefined, true};
    return kelUndefined;
  }
  for (const MeasureModeRow& row : kMeasureModes) {
    if (row.answered && answered == row.mnemonic) {
      measure_mode_ = {row.mode, true};
      return row.mode;
    }
  }
  Raise(qkelInvalidPropertyValue, kGet.source,
        Join("Device reported an unrecognised measurement mode (", reply, ")"));
}

void clsKEL4x::MeasureMode(KelMeasureModes measure_mode) {
  static constexpr MemberTexts kLet = WriteTexts("MeasureMode");
  if (measure_mode < kelNORM || measure_mode > kelCENV) {
    Raise(qkelInvalidPropertyValue, kLet.source,
          Join("Invalid property value (MeasureMode = ", DecimalText(measure_mode), ")"));
  }
  const MeasureModeRow& row = kMeasureModes[static_cast<std::size_t>(measure_mode)];
  Armed(kLet, [&] {
    RaisedTimeout timeout(io_.Port(), 100.0F);
    io_.ExchangeCommand(Join("SENS:ATSC:MEAS ", row.mnemonic));
    timeout.Restore();
    host::CurrentHost().Runtime().Wait(row.settling);
    measure_mode_ = {measure_mode, true};
  });
}

// Gates -----------------------------------------------------------------------------------------------------
void clsKEL4x::RequireMeasureMode(const MemberTexts& texts, ModeSet modes, Simulation simulation) {
  if (simulation == Simulation::kSkipsGate && SimulationActive()) return;
  if (!modes.Has(MeasureMode())) Raise(qkelBadMeasureMode, texts.source, "Wrong measurement mode selected");
}

void clsKEL4x::RequireInputPort(const MemberTexts& texts, std::int32_t bit, Simulation simulation) {
  if (simulation == Simulation::kSkipsGate && SimulationActive()) return;
  if ((InputPort() & bit) == 0) Raise(qkelBadInputPort, texts.source, "Wrong input port selected");
}

}  // namespace qkel4x
