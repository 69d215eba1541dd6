// The settings that are one mnemonic out of a short list, and the two read-only states beside them.
// They check neither mode nor input port. Their differences are the instrument's and are kept member by
// member.
#include "driver/clsKEL4x.h"
#include "driver/config/enum_setting.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"

namespace qkel4x {

// SpecFuncLoopAgc -------------------------------------------------------------------------------------------
static constexpr Mnemonic kSpecFuncLoopAgcMnemonics[] = {
    {kelLasSlow, "SLOW"},
    {kelLasFast, "FAST"},
};
static constexpr EnumSetting kSpecFuncLoopAgc{
    .let = WriteTexts("SpecFuncLoopAgc"),
    .get = ReadTexts("SpecFuncLoopAgc"),
    .write = "SENSE:ATSC:AGC ",
    .query = "SENSE:ATSC:AGC?",
    .choices = "SLOW,FAST",
    .mnemonics = kSpecFuncLoopAgcMnemonics,
    .refused = {"Invalid property value (SpecFuncLoopAgc = ", ")"},
    .refusing_source = "clsKEL4x.SpecFuncLoopAgc",
};
KelSpecFuncLoopAgcs clsKEL4x::SpecFuncLoopAgc() {
  return static_cast<KelSpecFuncLoopAgcs>(ReadSetting(kSpecFuncLoopAgc));
}
void clsKEL4x::SpecFuncLoopAgc(KelSpecFuncLoopAgcs value) { WriteSetting(kSpecFuncLoopAgc, value); }

// SpecFuncLoopBandwidth -------------------------------------------------------------------------------------
static constexpr Mnemonic kSpecFuncLoopBandwidthMnemonics[] = {
    {kelLbsLo, "LO"},
    {kelLbsMed, "MED"},
    {kelLbsHi, "HI"},
};
static constexpr EnumSetting kSpecFuncLoopBandwidth{
    .let = WriteTexts("SpecFuncLoopBandwidth"),
    .get = ReadTexts("SpecFuncLoopBandwidth"),
    .write = "SENSE:ATSC:CFLB ",
    .query = "SENSE:ATSC:CFLB?",
    .choices = "LO,MED,HI",
    .mnemonics = kSpecFuncLoopBandwidthMnemonics,
    .refused = {"Invalid property value (SpecFuncLoopBandwidth = ", ")"},
    .refusing_source = "clsKEL4x.SpecFuncLoopBandwidth",
};
KelSpecFuncLoopBandwidths clsKEL4x::SpecFuncLoopBandwidth() {
  return static_cast<KelSpecFuncLoopBandwidths>(ReadSetting(kSpecFuncLoopBandwidth));
}
void clsKEL4x::SpecFuncLoopBandwidth(KelSpecFuncLoopBandwidths value) {
  WriteSetting(kSpecFuncLoopBandwidth, value);
}

// SpecFuncLoopBaudBandwidth ---------------------------------------------------------------------------------
static constexpr Mnemonic kSpecFuncLoopBaudBandwidthMnemonics[] = {
    {kelLbsLo, "LO"},
    {kelLbsMed, "MED"},
    {kelLbsHi, "HI"},
};
static constexpr EnumSetting kSpecFuncLoopBaudBandwidth{
    .let = WriteTexts("SpecFuncLoopBaudBandwidth"),
    .get = ReadTexts("SpecFuncLoopBaudBandwidth"),
    .write = "SENSE:ATSC:BRLB ",
    .query = "SENSE:ATSC:BRLB?",
    .choices = "LO,MED,HI",
    .mnemonics = kSpecFuncLoopBaudBandwidthMnemonics,
    .refused = {"Invalid property value (SpecFuncLoopBaudBandwidth = ", ")"},
    .refusing_source = "clsKEL4x.SpecFuncLoopBaudBandwidth",
};
KelSpecFuncLoopBandwidths clsKEL4x::SpecFuncLoopBaudBandwidth() {
  return static_cast<KelSpecFuncLoopBandwidths>(ReadSetting(kSpecFuncLoopBaudBandwidth));
}
void clsKEL4x::SpecFuncLoopBaudBandwidth(KelSpecFuncLoopBandwidths value) {
  WriteSetting(kSpecFuncLoopBaudBandwidth, value);
}

// SpecFuncMinBerIntegration
// ------------------------------------------------------------------------------------ IRREGULAR: the value
// itself is the mnemonic, and any integer is sent.
KelSpecFuncMinBerIntegrations clsKEL4x::SpecFuncMinBerIntegration() {
  static constexpr MemberTexts kGet = ReadTexts("SpecFuncMinBerIntegration");
  return Armed(kGet, [this] {
    std::string reply;
    io_.ExchangeCommand("SENSE:ATSC:BER:INTEGRATION?", reply, "1,10,100,1000");
    if (SimulationActive()) return kelBerEXT;
    const std::int16_t integration = RoundToInt16(NumberFromText(status_.Decode(reply)));
    return static_cast<KelSpecFuncMinBerIntegrations>(integration);
  });
}
void clsKEL4x::SpecFuncMinBerIntegration(KelSpecFuncMinBerIntegrations value) {
  static constexpr MemberTexts kLet = WriteTexts("SpecFuncMinBerIntegration");
  Armed(kLet, [&] { io_.ExchangeCommand(Join("SENS:ATSC:BER:INT ", DecimalText(value))); });
}

// SpecFuncEqualizer -----------------------------------------------------------------------------------------
static constexpr Mnemonic kSpecFuncEqualizerMnemonics[] = {
    {kelEqualizerOff, "OFF"},
    {kelEqualizerOn, "ON"},
    {kelEqualizerFreeze, "FREEZE", "FRE"},
};
static constexpr EnumSetting kSpecFuncEqualizer{
    .let = WriteTexts("SpecFuncEqualizer"),
    .get = ReadTexts("SpecFuncEqualizer"),
    .write = "SENS:ATSC:EQU ",
    .query = "SENSE:ATSC:EQU?",
    .choices = "ON,FRE,OFF",
    .mnemonics = kSpecFuncEqualizerMnemonics,
    .refused = {"Invalid Property Value"},
    .refusing_source = "clsKEL4x.SpecFuncEqualizer",
    .unrecognised_number = qkelInvalidPropertyValue,
    .unrecognised = {"Device reported an unrecognised equalizer setting (", ")"},
};
KelSpecFuncEqualizers clsKEL4x::SpecFuncEqualizer() {
  return static_cast<KelSpecFuncEqualizers>(ReadSetting(kSpecFuncEqualizer));
}
void clsKEL4x::SpecFuncEqualizer(KelSpecFuncEqualizers value) {
  WriteSetting(kSpecFuncEqualizer, value);
  echo_pattern_.valid = false;
}

// SpecFuncEqualizerMode -------------------------------------------------------------------------------------
static constexpr Mnemonic kSpecFuncEqualizerModeMnemonics[] = {
    {kelEquModeComp, "COMP"},
    {kelEquModeReal, "REAL"},
};
static constexpr EnumSetting kSpecFuncEqualizerMode{
    .let = WriteTexts("SpecFuncEqualizerMode"),
    .get = ReadTexts("SpecFuncEqualizerMode"),
    .write = "SENS:ATSC:EQU:MODE ",
    .query = "SENS:ATSC:EQU:MODE?",
    .choices = std::nullopt,
    .mnemonics = kSpecFuncEqualizerModeMnemonics,
    .refused = {"Invalid property value (Equalizer Mode = ", ")"},
    .refusing_source = "clsKEL4x.SpecFuncEqualizerMode",
    .unrecognised_number = qkelQueryFailed,
    .unrecognised = {"Device reported an unrecognised equalizer mode ( ", " )"},
};
KelSpecFuncEqualizerModes clsKEL4x::SpecFuncEqualizerMode() {
  return static_cast<KelSpecFuncEqualizerModes>(ReadSetting(kSpecFuncEqualizerMode));
}
void clsKEL4x::SpecFuncEqualizerMode(KelSpecFuncEqualizerModes value) {
  WriteSetting(kSpecFuncEqualizerMode, value);
}

// SpecFuncEqualizerAdaptation -------------------------------------------------------------------------------
static constexpr Mnemonic kSpecFuncEqualizerAdaptationMnemonics[] = {
    {kelEquAdapSlow, "SLOW"},
    {kelEquAdapMed, "MED"},
    {kelEquAdapFast, "FAST"},
};
static constexpr EnumSetting kSpecFuncEqualizerAdaptation{
    .let = WriteTexts("SpecFuncEqualizerAdaptation"),
    .get = ReadTexts("SpecFuncEqualizerAdaptation"),
    .write = "SENS:ATSC:EQU:ADAP ",
    .query = "SENS:ATSC:EQU:ADAP?",
    .choices = std::nullopt,
    .mnemonics = kSpecFuncEqualizerAdaptationMnemonics,
    .refused = {"Invalid property value (Equalizer Adaptation = ", ")"},
    .refusing_source = "clsKEL4x.SpecFuncEqualizerAdaptations",  // IRREGULAR: plural
    .unrecognised_number = qkelQueryFailed,
    .unrecognised = {"Device reported an unrecognised equalizer Adaptation ( ", " )"},
};
KelSpecFuncEqualizerAdaptations clsKEL4x::SpecFuncEqualizerAdaptation() {
  return static_cast<KelSpecFuncEqualizerAdaptations>(ReadSetting(kSpecFuncEqualizerAdaptation));
}
void clsKEL4x::SpecFuncEqualizerAdaptation(KelSpecFuncEqualizerAdaptations value) {
  WriteSetting(kSpecFuncEqualizerAdaptation, value);
}

// SpecFuncFreqRfFixed ---------------------------------------------------------------------------------------
static constexpr Mnemonic kSpecFuncFreqRfFixedMnemonics[] = {
    {kelRfFixedCenter, "CENT"},
    {kelRfFixedPilot, "PIL"},
};
static constexpr EnumSetting kSpecFuncFreqRfFixed{
    .let = WriteTexts("SpecFuncFreqRfFixed"),
    .get = ReadTexts("SpecFuncFreqRfFixed"),
    .write = "SENS:ATSC:FIX:FREQ ",
    .query = "SENS:ATSC:FIX:FREQ?",
    .choices = std::nullopt,
    .mnemonics = kSpecFuncFreqRfFixedMnemonics,
    .refused = {"Invalid property value (RF Fixed = ", ")"},
    .refusing_source = "clsKEL4x.SpecFuncFreqRfFixed",
    .unrecognised_number = qkelQueryFailed,
    .unrecognised = {"Device reported an unrecognised RF fixed ( ", " )"},
};
KelSpecFuncFreqRfFixed clsKEL4x::SpecFuncFreqRfFixed() {
  return static_cast<KelSpecFuncFreqRfFixed>(ReadSetting(kSpecFuncFreqRfFixed));
}
void clsKEL4x::SpecFuncFreqRfFixed(KelSpecFuncFreqRfFixed value) {
  WriteSetting(kSpecFuncFreqRfFixed, value);
}

// SpecFuncFreqSidePos ---------------------------------------------------------------------------------------
static constexpr Mnemonic kSpecFuncFreqSidePosMnemonics[] = {
    {kelSidePosNorm, "NORM"},
    {kelSidePosInv, "INV"},
};
static constexpr EnumSetting kSpecFuncFreqSidePos{
    .let = WriteTexts("SpecFuncFreqSidePos"),
    .get = ReadTexts("SpecFuncFreqSidePos"),
    .write = "SENS:ATSC:SID:POS ",
    .query = "SENS:ATSC:SID:POS?",
    .choices = std::nullopt,
    .mnemonics = kSpecFuncFreqSidePosMnemonics,
    .refused = {"Invalid property value (Sideband Position = ", ")"},
    .refusing_source = "clsKEL4x.SpecFuncFreqSidePos",
    .unrecognised_number = qkelQueryFailed,
    .unrecognised = {"Device reported an unrecognised sideband position ( ", " )"},
};
KelSpecFuncFreqSidePos clsKEL4x::SpecFuncFreqSidePos() {
  return static_cast<KelSpecFuncFreqSidePos>(ReadSetting(kSpecFuncFreqSidePos));
}
void clsKEL4x::SpecFuncFreqSidePos(KelSpecFuncFreqSidePos value) {
  WriteSetting(kSpecFuncFreqSidePos, value);
}

// StatusSawFilterBW -----------------------------------------------------------------------------------------
static constexpr Mnemonic kStatusSawFilterBWMnemonics[] = {
    {kelSawOFF, "OFF", "OFF", "0"}, {kelSaw2MHz, "MHZ2"}, {kelSaw6MHz, "MHZ6"},
    {kelSaw7MHz, "MHZ7"},           {kelSaw8MHz, "MHZ8"},
};
static constexpr EnumSetting kStatusSawFilterBW{
    .let = WriteTexts("StatusSawFilterBW"),
    .get = ReadTexts("StatusSawFilterBW"),
    .write = "SENSE:ATSC:FILTER:SAW ",
    .query = "SENSE:ATSC:FILTER:SAW?",
    .choices = "0,OFF,MHZ2,MHZ6,MHZ7,MHZ8",
    .mnemonics = kStatusSawFilterBWMnemonics,
    .refused = {"Invalid property value (Filter Bandwidth = ", ")"},
    .refusing_source = "clsKEL4x.StatusSawFilterBW",
    .unrecognised_number = qkelQueryFailed,
    .unrecognised = {"Device reported an invalid filter bandwidth ( ", " )"},
};
KelStatusSawFilterBWs clsKEL4x::StatusSawFilterBW() {
  return static_cast<KelStatusSawFilterBWs>(ReadSetting(kStatusSawFilterBW));
}
void clsKEL4x::StatusSawFilterBW(KelStatusSawFilterBWs value) {
  WriteSetting(kStatusSawFilterBW, value);
  echo_pattern_.valid = false;
}

// Setup10MhzRef ---------------------------------------------------------------------------------------------
static constexpr Mnemonic kSetup10MhzRefMnemonics[] = {
    {kelInternal, "INT"},
    {kelExternal, "EXT"},
};
static constexpr EnumSetting kSetup10MhzRef{
    .let = WriteTexts("Setup10MhzRef"),
    .get = ReadTexts("Setup10MhzRef"),
    .write = "SENS:REF ",
    .query = "SENS:REF?",
    .choices = "EXT,INT",
    .mnemonics = kSetup10MhzRefMnemonics,
    .refused = {"Invalid Property Value"},
    .refusing_source = "clsKEL4x.Setup10MhzRef",
    .unrecognised_number = qkelInvalidPropertyValue,
    .unrecognised = {"Device reported an unrecognised equalizer setting (", ")"},
};
KelReferenceSources clsKEL4x::Setup10MhzRef() {
  return static_cast<KelReferenceSources>(ReadSetting(kSetup10MhzRef));
}
void clsKEL4x::Setup10MhzRef(KelReferenceSources value) { WriteSetting(kSetup10MhzRef, value); }

// SetupLevelUnit --------------------------------------------------------------------------------------------
static constexpr Mnemonic kSetupLevelUnitMnemonics[] = {
    {kelDBMV, "DBMV"}, {kelDBPW, "DBPW"}, {kelDBUW, "DBUW"},
    {kelDBM, "DBM"},   {kelDBUV, "DBUV"}, {kelMV, "MV"},
};
KelSetupLevelUnits clsKEL4x::SetupLevelUnit() {
  static constexpr MemberTexts kGet = ReadTexts("SetupLevelUnit");
  return Armed(kGet, [this] {
    std::string reply;
    io_.ExchangeCommand("UNIT:LEVEL:POWER?", reply, "DBMV,DBPW,DBUW,DBM,DBUV,MV");
    if (SimulationActive()) return kelDBMV;
    const std::string_view answered = status_.Decode(reply);
    for (const Mnemonic& mnemonic : kSetupLevelUnitMnemonics) {
      if (answered == mnemonic.answered) return static_cast<KelSetupLevelUnits>(mnemonic.value);
    }
    return kelDBMV;
  });
}
// IRREGULAR: no value is refused; one without a mnemonic sends the header alone, which the instrument
// refuses.
void clsKEL4x::SetupLevelUnit(KelSetupLevelUnits value) {
  static constexpr MemberTexts kLet = WriteTexts("SetupLevelUnit");
  Armed(kLet, [&] {
    std::string_view unit;
    for (const Mnemonic& mnemonic : kSetupLevelUnitMnemonics) {
      if (mnemonic.value == value) unit = mnemonic.sent;
    }
    io_.ExchangeCommand(Join("UNIT:LEVEL:POWER ", unit));
  });
}

// StatusRejFilter -------------------------------------------------------------------------------------------
static constexpr Mnemonic kStatusRejFilterMnemonics[] = {
    {kelOff, "OFF", "OFF", "0"},
    {kelOn, "ON", "ON", "1"},
};
static constexpr EnumSetting kStatusRejFilter{
    .let = WriteTexts("StatusRejFilter"),
    .get = ReadTexts("StatusRejFilter"),
    .write = "SENSE:ATSC:FILTER:REJECTION ",
    .query = "SENSE:ATSC:FILTER:REJECTION?",
    .choices = "0,OFF,1,ON",
    .mnemonics = kStatusRejFilterMnemonics,
    .refused = {"StatusRejFilter value out of range"},
    .refusing_source = "clsKEL4x.StatusRejFilter",
};
KelSwitchStates clsKEL4x::StatusRejFilter() {
  return static_cast<KelSwitchStates>(ReadSetting(kStatusRejFilter));
}
void clsKEL4x::StatusRejFilter(KelSwitchStates value) { WriteSetting(kStatusRejFilter, value); }

// StatusRejFilterNotchWidth ---------------------------------------------------------------------------------
static constexpr Mnemonic kStatusRejFilterNotchWidthMnemonics[] = {
    {kel100Hz, "H100"},
    {kel1kHz, "K1"},
    {kel10kHz, "K10"},
    {kel100kHz, "K100"},
};
static constexpr EnumSetting kStatusRejFilterNotchWidth{
    .let = WriteTexts("StatusRejFilterNotchWidth"),
    .get = ReadTexts("StatusRejFilterNotchWidth"),
    .write = "SENSE:ATSC:FILTER:REJECTION:BW ",
    .query = "SENSE:ATSC:FILTER:REJECTION:BW?",
    .choices = "H100,K1,K10,K100",
    .mnemonics = kStatusRejFilterNotchWidthMnemonics,
    .refused = {"StatusRejFilterNotchWidth value out of range"},
    .refusing_source = "clsKEL4x.StatusRejFilterNotchWidth",
};
KelStatusRejFilterNotchWidths clsKEL4x::StatusRejFilterNotchWidth() {
  return static_cast<KelStatusRejFilterNotchWidths>(ReadSetting(kStatusRejFilterNotchWidth));
}
void clsKEL4x::StatusRejFilterNotchWidth(KelStatusRejFilterNotchWidths value) {
  WriteSetting(kStatusRejFilterNotchWidth, value);
}

// InputAttenHighAdjChanPower --------------------------------------------------------------------------------
static constexpr Mnemonic kInputAttenHighAdjChanPowerMnemonics[] = {
    {kelOff, "OFF", "OFF", "0"},
    {kelOn, "ON", "ON", "1"},
};
static constexpr EnumSetting kInputAttenHighAdjChanPower{
    .let = WriteTexts("InputAttenHighAdjChanPower"),
    .get = ReadTexts("InputAttenHighAdjChanPower"),
    .write = "INPUT:ATSC:HIGH:ADJ:CHANNEL:POWER ",
    .query = "INPUT:ATSC:HIGH:ADJ:CHANNEL:POWER?",
    .choices = "0,OFF,1,ON",
    .mnemonics = kInputAttenHighAdjChanPowerMnemonics,
    .refused = {"InputAttenHighAdjChanPower value out of range"},
    .refusing_source = "clsKEL4x.InputAttenHighAdjChanPower",
};
KelSwitchStates clsKEL4x::InputAttenHighAdjChanPower() {
  return static_cast<KelSwitchStates>(ReadSetting(kInputAttenHighAdjChanPower));
}
void clsKEL4x::InputAttenHighAdjChanPower(KelSwitchStates value) {
  WriteSetting(kInputAttenHighAdjChanPower, value);
}

// ReferenceLocked
// ---------------------------------------------------------------------------------------------- IRREGULAR:
// the instrument answers whether the reference is unlocked.
bool clsKEL4x::ReferenceLocked() {
  static constexpr MemberTexts kGet = ReadTexts("ReferenceLocked");
  std::string reply;
  const std::optional<double> unlocked = Armed(kGet, [&]() -> std::optional<double> {
    io_.ExchangeCommand("SENS:REF:UNL?", reply, "0,1");
    if (SimulationActive()) return std::nullopt;
    return LeadingNumber(status_.Decode(reply));
  });
  if (!unlocked || *unlocked == 1.0) return false;
  if (*unlocked == 0.0) return true;
  // IRREGULAR: the text speaks of the equalizer.
  Raise(qkelInvalidPropertyValue, kGet.source,
        Join("Device reported an unrecognised equalizer setting (", reply, ")"));
}

// StateSignal -----------------------------------------------------------------------------------------------
bool clsKEL4x::StateSignal() {
  static constexpr MemberTexts kGet = ReadTexts("StateSignal");
  return Armed(kGet, [this] {
    std::string reply;
    io_.ExchangeCommand("READ:SIGN:RF?", reply, "OK,UND,NORF,OVER");
    return !SimulationActive() && status_.Decode(reply) == "OK";
  });
}

}  // namespace qkel4x
