// Every command and query of the instrument, spelled as its users send them, and what goes wrong with others.
#include "simulator/commands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "simulator/tests/fixture.h"

namespace simulator {
namespace {

// Settings -------------------------------------------------------------------

struct Setting {
  std::string_view command;  ///< complete, as sent
  std::string_view query;
  std::string_view answer;
};

void PrintTo(const Setting& setting, std::ostream* out) { *out << setting.command; }

class SettingTest : public testing::TestWithParam<Setting> {};

TEST_P(SettingTest, IsTakenAndReadBack) {
  Configuration configuration;
  configuration.saw_filters = {true, true, true, true};
  Bench bench(configuration);
  EXPECT_EQ(bench.Ask(GetParam().command), kNoReply);
  EXPECT_EQ(bench.Error(), kNoError);
  EXPECT_EQ(bench.Ask(GetParam().query), GetParam().answer);
  EXPECT_EQ(bench.Error(), kNoError);
}

INSTANTIATE_TEST_SUITE_P(
    OperatingMode, SettingTest,
    testing::Values(
        Setting{"SYST:MODE NYQI", "SYST:MODE?", "NYQI"}, Setting{"SYST:MODE NYQM", "SYST:MODE?", "NYQM"},
        Setting{"SYST:MODE NYQN", "SYST:MODE?", "NYQN"}, Setting{"SYST:MODE QAM", "SYST:MODE?", "QAM"},
        Setting{"SYST:MODE QAMA", "SYST:MODE?", "QAMA"}, Setting{"SYST:MODE J83A", "SYST:MODE?", "J83A"},
        Setting{"SYST:MODE J83B", "SYST:MODE?", "J83B"}, Setting{"SYST:MODE J83C", "SYST:MODE?", "J83C"},
        Setting{"SYST:MODE MPEG", "SYST:MODE?", "MPEG"}, Setting{"SYST:MODE M83A", "SYST:MODE?", "M83A"},
        Setting{"SYST:MODE M83B", "SYST:MODE?", "M83B"}, Setting{"SYST:MODE M83C", "SYST:MODE?", "M83C"},
        Setting{"SYST:MODE DVBT", "SYST:MODE?", "DVBT"}, Setting{"SYST:MODE ATSC", "SYST:MODE?", "ATSC"},
        Setting{"SYST:MODE NTSC", "SYST:MODE?", "NTSC"}));

INSTANTIATE_TEST_SUITE_P(MeasureMode, SettingTest,
                         testing::Values(Setting{"SENS:ATSC:MEAS NORM", "SENS:ATSC:MEAS?", "NORM"},
                                         Setting{"SENS:ATSC:MEAS PAR", "SENS:ATSC:MEAS?", "PAR"},
                                         Setting{"SENS:ATSC:MEAS CCDF", "SENS:ATSC:MEAS?", "CCDF"},
                                         Setting{"SENS:ATSC:MEAS SP_1", "SENS:ATSC:MEAS?", "SP_1"},
                                         Setting{"SENS:ATSC:MEAS SP_2", "SENS:ATSC:MEAS?", "SP_2"},
                                         Setting{"SENS:ATSC:MEAS SP_3", "SENS:ATSC:MEAS?", "SP_3"},
                                         Setting{"SENS:ATSC:MEAS CDI", "SENS:ATSC:MEAS?", "CDI"},
                                         Setting{"SENS:ATSC:MEAS APH", "SENS:ATSC:MEAS?", "APH"},
                                         Setting{"SENS:ATSC:MEAS AGD", "SENS:ATSC:MEAS?", "AGD"},
                                         Setting{"SENS:ATSC:MEAS POL", "SENS:ATSC:MEAS?", "POL"},
                                         Setting{"SENS:ATSC:MEAS ADIS", "SENS:ATSC:MEAS?", "ADIS"},
                                         Setting{"SENS:ATSC:MEAS EPAT", "SENS:ATSC:MEAS?", "EPAT"},
                                         Setting{"SENS:ATSC:MEAS EYEM", "SENS:ATSC:MEAS?", "EYEM"},
                                         Setting{"SENS:ATSC:MEAS HIST", "SENS:ATSC:MEAS?", "HIST"},
                                         Setting{"SENS:ATSC:MEAS HII", "SENS:ATSC:MEAS?", "HII"},
                                         Setting{"SENS:ATSC:MEAS HIQ", "SENS:ATSC:MEAS?", "HIQ"},
                                         Setting{"SENS:ATSC:MEAS PV", "SENS:ATSC:MEAS?", "PV"},
                                         Setting{"SENS:ATSC:MEAS AJIT", "SENS:ATSC:MEAS?", "AJIT"},
                                         Setting{"SENS:ATSC:MEAS PJIT", "SENS:ATSC:MEAS?", "PJIT"},
                                         Setting{"SENS:ATSC:MEAS CENV", "SENS:ATSC:MEAS?", "CENV"}));

INSTANTIATE_TEST_SUITE_P(
    Input, SettingTest,
    testing::Values(
        Setting{"ROUT:ISEL RF", "ROUTE:ISELECT?", "RF"}, Setting{"ROUT:ISEL DEM", "ROUTE:ISELECT?", "DEM"},
        Setting{"ROUT:ISEL IF", "ROUTE:ISELECT?", "IF"},
        Setting{"INP:ATT:IMP O50", "INPUT:ATTENUATION:IMP?", "O50"},
        Setting{"INP:ATT:IMP O75", "INPUT:ATTENUATION:IMP?", "O75"},
        Setting{"INPUT:ATTENUATION:AUTO ON", "INPUT:ATTENUATION:AUTO?", "ON"},
        Setting{"INPUT:ATTENUATION:AUTO OFF", "INPUT:ATTENUATION:AUTO?", "OFF"},
        Setting{"INPUT:ATTENUATION 0", "INPUT:ATTENUATION?", "0"},
        Setting{"INPUT:ATTENUATION 5", "INPUT:ATTENUATION?", "5"},
        Setting{"INPUT:ATTENUATION 55", "INPUT:ATTENUATION?", "55"},
        Setting{"INPUT:ATTENUATION:MODE LNO", "INP:ATT:MODE?", "LNO"},
        Setting{"INPUT:ATTENUATION:MODE IGN", "INP:ATT:MODE?", "IGN"},
        Setting{"INPUT:ATTENUATION:MODE LDIS", "INP:ATT:MODE?", "LDIS"},
        Setting{"INPUT:ATTENUATION:MODE LSD", "INP:ATT:MODE?", "LSD"},
        Setting{"INP:ATT:REC LNO", "INP:ATT:REC?", "LNO"},
        Setting{"INP:ATT:REC NORM", "INP:ATT:REC?", "NORM"},
        Setting{"INP:ATT:REC LDIS", "INP:ATT:REC?", "LDIS"},
        Setting{"INPUT:ATTENUATION:DEM AUTO", "INPUT:ATTENUATION:DEM?", "AUTO"},
        Setting{"INPUT:ATTENUATION:DEM MNLW", "INPUT:ATTENUATION:DEM?", "MNLW"},
        Setting{"INPUT:ATTENUATION:DEM MNLE", "INPUT:ATTENUATION:DEM?", "MNLE"},
        Setting{"INPUT:ATTENUATION:DEM MNHI", "INPUT:ATTENUATION:DEM?", "MNHI"},
        Setting{"INPUT:ATTENUATION:DEM MNLE", "INPUT:ATTENUATION:DEM:VAL?", "0"},
        Setting{"INPUT:ATTENUATION:DEM MNLW", "INPUT:ATTENUATION:DEM:VAL?", "1"},
        Setting{"INPUT:ATTENUATION:DEM MNHI", "INPUT:ATTENUATION:DEM:VAL?", "2"},
        Setting{"INPUT:ATTENUATION:DEM AUTO", "INPUT:ATTENUATION:DEM:VAL?", "11"},
        Setting{"INPUT:ATSC:HIGH:ADJ:CHANNEL:POWER ON", "INPUT:ATSC:HIGH:ADJ:CHANNEL:POWER?", "ON"},
        Setting{"INPUT:ATSC:HIGH:ADJ:CHANNEL:POWER OFF", "INPUT:ATSC:HIGH:ADJ:CHANNEL:POWER?", "OFF"}));

INSTANTIATE_TEST_SUITE_P(
    Demodulator, SettingTest,
    testing::Values(Setting{"SENSE:ATSC:AGC SLOW", "SENSE:ATSC:AGC?", "SLOW"},
                    Setting{"SENSE:ATSC:AGC FAST", "SENSE:ATSC:AGC?", "FAST"},
                    Setting{"SENSE:ATSC:CFLB LO", "SENSE:ATSC:CFLB?", "LO"},
                    Setting{"SENSE:ATSC:CFLB MED", "SENSE:ATSC:CFLB?", "MED"},
                    Setting{"SENSE:ATSC:CFLB HI", "SENSE:ATSC:CFLB?", "HI"},
                    Setting{"SENSE:ATSC:BRLB LO", "SENSE:ATSC:BRLB?", "LO"},
                    Setting{"SENSE:ATSC:BRLB MED", "SENSE:ATSC:BRLB?", "MED"},
                    Setting{"SENSE:ATSC:BRLB HI", "SENSE:ATSC:BRLB?", "HI"},
                    Setting{"SENS:ATSC:BER:INT 0", "SENSE:ATSC:BER:INTEGRATION?", "0"},
                    Setting{"SENS:ATSC:BER:INT 1", "SENSE:ATSC:BER:INTEGRATION?", "1"},
                    Setting{"SENS:ATSC:BER:INT 10", "SENSE:ATSC:BER:INTEGRATION?", "10"},
                    Setting{"SENS:ATSC:BER:INT 100", "SENSE:ATSC:BER:INTEGRATION?", "100"},
                    Setting{"SENS:ATSC:BER:INT 1000", "SENSE:ATSC:BER:INTEGRATION?", "1000"},
                    Setting{"SENS:ATSC:EQU OFF", "SENSE:ATSC:EQU?", "OFF"},
                    Setting{"SENS:ATSC:EQU ON", "SENSE:ATSC:EQU?", "ON"},
                    Setting{"SENS:ATSC:EQU FREEZE", "SENSE:ATSC:EQU?", "FRE"},
                    Setting{"SENS:ATSC:EQU:MODE COMP", "SENS:ATSC:EQU:MODE?", "COMP"},
                    Setting{"SENS:ATSC:EQU:MODE REAL", "SENS:ATSC:EQU:MODE?", "REAL"},
                    Setting{"SENS:ATSC:EQU:ADAP SLOW", "SENS:ATSC:EQU:ADAP?", "SLOW"},
                    Setting{"SENS:ATSC:EQU:ADAP MED", "SENS:ATSC:EQU:ADAP?", "MED"},
                    Setting{"SENS:ATSC:EQU:ADAP FAST", "SENS:ATSC:EQU:ADAP?", "FAST"},
                    Setting{"SENS:ATSC:FIX:FREQ CENT", "SENS:ATSC:FIX:FREQ?", "CENT"},
                    Setting{"SENS:ATSC:FIX:FREQ PIL", "SENS:ATSC:FIX:FREQ?", "PIL"},
                    Setting{"SENS:ATSC:SID:POS NORM", "SENS:ATSC:SID:POS?", "NORM"},
                    Setting{"SENS:ATSC:SID:POS INV", "SENS:ATSC:SID:POS?", "INV"},
                    Setting{"SENSE:ATSC:FILTER:SAW OFF", "SENSE:ATSC:FILTER:SAW?", "OFF"},
                    Setting{"SENSE:ATSC:FILTER:SAW MHZ2", "SENSE:ATSC:FILTER:SAW?", "MHZ2"},
                    Setting{"SENSE:ATSC:FILTER:SAW MHZ6", "SENSE:ATSC:FILTER:SAW?", "MHZ6"},
                    Setting{"SENSE:ATSC:FILTER:SAW MHZ7", "SENSE:ATSC:FILTER:SAW?", "MHZ7"},
                    Setting{"SENSE:ATSC:FILTER:SAW MHZ8", "SENSE:ATSC:FILTER:SAW?", "MHZ8"},
                    Setting{"SENSE:ATSC:FILTER:REJECTION OFF", "SENSE:ATSC:FILTER:REJECTION?", "OFF"},
                    Setting{"SENSE:ATSC:FILTER:REJECTION ON", "SENSE:ATSC:FILTER:REJECTION?", "ON"},
                    Setting{"SENSE:ATSC:FILTER:REJECTION:BW H100", "SENSE:ATSC:FILTER:REJECTION:BW?", "H100"},
                    Setting{"SENSE:ATSC:FILTER:REJECTION:BW K1", "SENSE:ATSC:FILTER:REJECTION:BW?", "K1"},
                    Setting{"SENSE:ATSC:FILTER:REJECTION:BW K10", "SENSE:ATSC:FILTER:REJECTION:BW?", "K10"},
                    Setting{"SENSE:ATSC:FILTER:REJECTION:BW K100", "SENSE:ATSC:FILTER:REJECTION:BW?", "K100"},
                    Setting{"SENSE:ATSC:FILTER:REJECTION:VC 1834000", "SENSE:ATSC:FILTER:REJECTION:VC?",
                            "1834000"},
                    Setting{"SENSE:ATSC:FILTER:REJECTION:VC 1700000.25", "SENSE:ATSC:FILTER:REJECTION:VC?",
                            "1700000.25"}));

INSTANTIATE_TEST_SUITE_P(System, SettingTest,
                         testing::Values(Setting{"SENS:REF INT", "SENS:REF?", "INT"},
                                         Setting{"SENS:REF EXT", "SENS:REF?", "EXT"},
                                         Setting{"SENS:REF INT", "SENS:REF:UNL?", "0"},
                                         Setting{"SENS:REF EXT", "SENS:REF:UNL?", "1"},
                                         Setting{"UNIT:LEVEL:POWER DBMV", "UNIT:LEVEL:POWER?", "DBMV"},
                                         Setting{"UNIT:LEVEL:POWER DBPW", "UNIT:LEVEL:POWER?", "DBPW"},
                                         Setting{"UNIT:LEVEL:POWER DBUW", "UNIT:LEVEL:POWER?", "DBUW"},
                                         Setting{"UNIT:LEVEL:POWER DBM", "UNIT:LEVEL:POWER?", "DBM"},
                                         Setting{"UNIT:LEVEL:POWER DBUV", "UNIT:LEVEL:POWER?", "DBUV"},
                                         Setting{"UNIT:LEVEL:POWER MV", "UNIT:LEVEL:POWER?", "MV"},
                                         Setting{"SYST:Time 14,3,9", "SYST:TIME?", "14,3,9"},
                                         Setting{"SYST:DATE 09,1,5", "SYST:DATE?", "2009,1,5"},
                                         Setting{"SYST:DATE 2031,12,31", "SYST:DATE?", "2031,12,31"},
                                         Setting{"SYST:DATE 98,2,28", "SYST:DATE?", "1998,2,28"},
                                         Setting{"*SRE 0", "*SRE?", "0"}, Setting{"*ESE 32", "*ESE?", "32"}));

INSTANTIATE_TEST_SUITE_P(
    Frequencies, SettingTest,
    testing::Values(
        Setting{"SENS:FREQ:CENT 42000000", "SENS:FREQ:CENT?", "42000000"},
        Setting{"SENS:FREQ:CENT 10000000009", "SENS:FREQ:CENT?", "10000000009"},
        Setting{"SENS:FREQ:CENT 473000000.3", "SENS:FREQ:CENT?", "473000000.3"},
        Setting{"SENS:FREQ:CENT 473 MHZ", "SENS:FREQ:CENT?", "473000000"},
        Setting{"SENS:ATSC:FREQUENCY:PILOT 470309440", "SENS:ATSC:FREQUENCY:PILOT?", "470309440"},
        Setting{"SENS:ATSC:FREQUENCY:PILOT 3000000", "SENS:ATSC:FREQUENCY:PILOT?", "3000000"},
        Setting{"SENSE:ATSC:SYMBOLRATE:VALUE  10762237.8", "SENSE:ATSC:SYMBOLRATE:VALUE?", "10762237.8"},
        Setting{"SENSE:ATSC:SYMBOLRATE:VALUE  2000000", "SENSE:ATSC:SYMBOLRATE:VALUE?", "2000000"}));

INSTANTIATE_TEST_SUITE_P(
    Measurements, SettingTest,
    testing::Values(Setting{"SENS:ATSC:NOISE:MODE OFF", "SENS:ATSC:NOISE:MODE?", "OFF"},
                    Setting{"SENS:ATSC:NOISE:MODE ON", "SENS:ATSC:NOISE:MODE?", "ON"},
                    Setting{"SENS:ATSC:NOISE  25", "SENS:ATSC:NOISE?", "25"},
                    Setting{"SENS:ATSC:NOISE  5.5", "SENS:ATSC:NOISE?", "5.5"},
                    Setting{"SENS:ATSC:CD:INT:COUN  99999", "SENS:ATSC:CD:INT:COUN?", "99999"},
                    Setting{"SENS:ATSC:SPEC:AVG OFF", "SENS:ATSC:SPEC:AVG?", "OFF"},
                    Setting{"SENS:ATSC:SPEC:AVG ON", "SENS:ATSC:SPEC:AVG?", "ON"},
                    Setting{"SENS:ATSC:SPEC:AVG:COUN 10", "SENS:ATSC:SPEC:AVG:COUN?", "10"},
                    Setting{"SENS:ATSC:SPEC:DET MIN", "SENS:ATSC:SPEC:DET?", "MIN"},
                    Setting{"SENS:ATSC:SPEC:DET RMS", "SENS:ATSC:SPEC:DET?", "RMS"},
                    Setting{"SENS:ATSC:SPEC:DET MAX", "SENS:ATSC:SPEC:DET?", "MAX"},
                    Setting{"SENS:ATSC:SPEC:FREQ:STAR -4.48", "SENS:ATSC:SPEC:FREQ:STAR?", "-4.48"},
                    Setting{"SENS:ATSC:SPEC:FREQ:STAR  2.5", "SENS:ATSC:SPEC:FREQ:STAR?", "2.5"},
                    Setting{"SENS:ATSC:SPEC:FREQ:STAR -.5", "SENS:ATSC:SPEC:FREQ:STAR?", "-0.5"},
                    Setting{"SENS:ATSC:SPEC:FREQ:STOP  .5", "SENS:ATSC:SPEC:FREQ:STOP?", "0.5"},
                    Setting{"SENS:ATSC:EPAT:RANG FULL", "SENS:ATSC:EPAT:RANG?", "FULL"},
                    Setting{"SENS:ATSC:EPAT:RANG RG1", "SENS:ATSC:EPAT:RANG?", "RG1"},
                    Setting{"SENS:ATSC:EPAT:RANG RG2", "SENS:ATSC:EPAT:RANG?", "RG2"},
                    Setting{"SENS:ATSC:EPAT:RANG RG3", "SENS:ATSC:EPAT:RANG?", "RG3"},
                    Setting{"SENS:ATSC:EPAT:RANG SP_1", "SENS:ATSC:EPAT:RANG?", "SP_1"},
                    Setting{"SENS:ATSC:EPAT:RANG SP_2", "SENS:ATSC:EPAT:RANG?", "SP_2"},
                    Setting{"SENS:ATSC:EPAT:NUMV OFF", "SENS:ATSC:EPAT:NUMV?", "OFF"},
                    Setting{"SENS:ATSC:EPAT:NUMV ON", "SENS:ATSC:EPAT:NUMV?", "ON"},
                    Setting{"SENS:ATSC:EPAT:SCAL EP1", "SENS:ATSC:EPAT:SCAL?", "EP1"},
                    Setting{"SENS:ATSC:EPAT:SCAL EP2", "SENS:ATSC:EPAT:SCAL?", "EP2"},
                    Setting{"SENS:ATSC:EPAT:SCAL EP3", "SENS:ATSC:EPAT:SCAL?", "EP3"},
                    Setting{"SENS:ATSC:EYEM:INT  5", "SENS:ATSC:EYEM:INT?", "5"},
                    Setting{"SENS:ATSC:EYEM:INT  21", "SENS:ATSC:EYEM:INT?", "21"},
                    Setting{"SENS:ATSC:RESP:DET RMS", "SENS:ATSC:RESP:DET?", "RMS"},
                    Setting{"SENS:ATSC:RESP:DET PEAK", "SENS:ATSC:RESP:DET?", "PEAK"},
                    Setting{"SENS:ATSC:JITT:APPL 0", "SENS:ATSC:JITT:APPL?", "0"},
                    Setting{"SENS:ATSC:JITT:APPL 1", "SENS:ATSC:JITT:APPL?", "1"}));

// The same settings by other spellings of the same headers.
INSTANTIATE_TEST_SUITE_P(
    Spellings, SettingTest,
    testing::Values(Setting{"system:mode ntsc", "SYSTEM:MODE?", "NTSC"},
                    Setting{"SENSE:ATSC:MEASURE par", "sens:atsc:meas?", "PAR"},
                    Setting{":ROUTE:ISELECT DEM", ":ROUT:ISEL?", "DEM"},
                    Setting{"INPUT:ATTENUATION:IMPEDANCE O75", "INP:ATT:IMP?", "O75"},
                    Setting{"SENS:ATSC:FILT:SAW MHZ8", "SENS:ATSC:FILT:SAW?", "MHZ8"},
                    Setting{"SENS:ATSC:FILT:REJ:BW K10", "SENS:ATSC:FILT:REJ:BW?", "K10"},
                    Setting{"SENSE:ATSC:EQUALIZER FRE", "SENS:ATSC:EQU?", "FRE"},
                    Setting{"SENS:ATSC:SYMB:VAL 10000000", "SENSE:ATSC:SYMBOLRATE:VALUE?", "10000000"},
                    Setting{"SENS:ATSC:FREQ:PIL 500000000", "SENSE:ATSC:FREQUENCY:PILOT?", "500000000"},
                    Setting{"\tUNIT:LEV:POW\tDBUV ", "UNIT:LEV:POW?", "DBUV"}));

// Actions --------------------------------------------------------------------

class ActionTest : public testing::TestWithParam<std::string_view> {};

TEST_P(ActionTest, IsTakenWithoutReplyOrError) {
  Bench bench;
  EXPECT_EQ(bench.Ask(GetParam()), kNoReply);
  EXPECT_EQ(bench.Error(), kNoError);
}

INSTANTIATE_TEST_SUITE_P(All, ActionTest,
                         testing::Values("*CLS;*SRE 0;*ESE 0", "SYST:REM", "SYST:LOC", "SYST:RES",
                                         "CONF:ALAR:RES", "SENS:ATSC:BER:RES", "*RST", "*OPC", "*WAI", "*CLS",
                                         "", " ", ";;"));

// Readings -------------------------------------------------------------------

struct Reading {
  std::string_view query;
  std::string_view modes;  ///< comma-separated; empty: every one
};

void PrintTo(const Reading& reading, std::ostream* out) { *out << reading.query; }

constexpr std::string_view kAllModes =
    "NORM,CDI,SP_1,SP_2,SP_3,APH,AGD,PJIT,AJIT,POL,ADIS,CCDF,CENV,EPAT,EYEM,HIST,HII,HIQ,PAR,PV";

class ReadingTest : public testing::TestWithParam<Reading> {};

TEST_P(ReadingTest, IsAnsweredInItsMeasurementModesAndInNoOther) {
  Bench bench;
  const auto allowed = Fields(GetParam().modes.empty() ? kAllModes : GetParam().modes);
  for (const std::string& mode : Fields(kAllModes)) {
    bench.Enter(mode);
    const bool expected = std::find(allowed.begin(), allowed.end(), mode) != allowed.end();
    const std::string reply = bench.Ask(GetParam().query);
    EXPECT_NE(reply, kNoReply) << mode;
    EXPECT_EQ(reply != "---", expected) << mode << ": " << reply;
    EXPECT_EQ(bench.Error(), kNoError);
  }
}

constexpr std::string_view kMer = "NORM,PAR,APH,AGD,POL,EPAT,HIST";
constexpr std::string_view kCrest = "CENV,ADIS,CCDF";

INSTANTIATE_TEST_SUITE_P(
    All, ReadingTest,
    testing::Values(
        Reading{"READ:ATSC:TS:BITRATE?", ""}, Reading{"READ:ATSC:CREST:MARGIN?", kCrest},
        Reading{"READ:ATSC:CREST:MAX?", kCrest}, Reading{"READ:ATSC:CREST:CURRENT?", kCrest},
        Reading{"READ:ATSC:CRES:ACQ?", kCrest}, Reading{"READ:ATSC:CCDF:PAPR?", "CENV,CCDF"},
        Reading{"READ:ATSC:CCDF:PAPR:DELT?", "CENV,CCDF"},
        Reading{"READ:ATSC:SPEC:AVG:COUN?", "SP_1,SP_2,SP_3,AJIT,PJIT"},
        Reading{"READ:ATSC:SPECTRUM:SHO:LOW?", "SP_1,SP_2,SP_3"},
        Reading{"READ:ATSC:SPECTRUM:SHO:UPP?", "SP_1,SP_2,SP_3"}, Reading{"READ:ATSC:FREQ:OFFSET?", "NORM"},
        Reading{"READ:RF:LEVEL?", ""}, Reading{"READ:ATSC:MER:RMS?", kMer},
        Reading{"READ:ATSC:MERP:RMS?", kMer}, Reading{"READ:ATSC:MERP:PEAK?", "PAR"},
        Reading{"READ:ATSC:EVM:PEAK?", "PAR"}, Reading{"READ:ATSC:EVM:RMS?", kMer},
        Reading{"READ:ATSC:SYMBOL:OFFSET?", "NORM"}, Reading{"READ:ATSC:JITTER?", "PAR"},
        Reading{"READ:ATSC:SIGNAL:NOISE?", "PAR"}, Reading{"READ:ATSC:BER:BRS?", ""},
        Reading{"READ:ATSC:BER:ARS?", ""}, Reading{"READ:ATSC:DEM:LOCK?", ""},
        Reading{"READ:ATSC:FEC:LOCK?", ""}, Reading{"READ:ATSC:SEGMENT:ERROR:RATIO?", "NORM"},
        Reading{"READ:ATSC:SEGMENT:ERROR?", "NORM"}, Reading{"READ:ATSC:PVALUE?", "PV"},
        Reading{"READ:ATSC:PERROR?", "PV"}, Reading{"READ:ATSC:SIGNAL:PILOT?", "PV"},
        Reading{"READ:ATSC:AMPL_PHAS_GD:VALUE?", "APH,AGD"}, Reading{"READ:ATSC:EPATTERN:PEAK?", "EPAT"},
        Reading{"READ:ATSC:JITT:VAL?", "AJIT,PJIT"}, Reading{"READ:ATSC:ALAR:STAT?", ""},
        Reading{"READ:SIGN:RF?", ""}, Reading{"READ:INFO:DATA?", ""}, Reading{"READ:SCREEN:BUFFER?", ""},
        Reading{"READ:BUFFER:PCX?", ""}, Reading{"SYSTEM:SERVICE:GET:BOARD:INFO?", ""}, Reading{"*IDN?", ""},
        Reading{"*OPC?", ""}, Reading{"*TST?", ""}, Reading{"*ESR?", ""}, Reading{"*STB?", ""}));

// Errors ---------------------------------------------------------------------

struct Refusal {
  std::string_view line;
  std::string_view error;
};

void PrintTo(const Refusal& refusal, std::ostream* out) { *out << refusal.line; }

class RefusalTest : public testing::TestWithParam<Refusal> {};

TEST_P(RefusalTest, QueuesItsErrorAndGivesNoReply) {
  Bench bench;
  EXPECT_EQ(bench.Ask(GetParam().line), kNoReply);
  EXPECT_EQ(bench.Error(), GetParam().error);
  EXPECT_EQ(bench.Error(), kNoError);
}

constexpr std::string_view kUndefined = "-113,\"Undefined header\"";
constexpr std::string_view kRange = "-222,\"Data out of range\"";
constexpr std::string_view kIllegal = "-224,\"Illegal parameter value\"";
constexpr std::string_view kMissing = "-109,\"Missing parameter\"";
constexpr std::string_view kTooMany = "-108,\"Parameter not allowed\"";
constexpr std::string_view kType = "-104,\"Data type error\"";
constexpr std::string_view kConflict = "-221,\"Settings conflict\"";

INSTANTIATE_TEST_SUITE_P(
    All, RefusalTest,
    testing::Values(
        Refusal{"FOO", kUndefined}, Refusal{"FOO:BAR?", kUndefined}, Refusal{"*FOO?", kUndefined},
        Refusal{"SENS:ATSC", kUndefined}, Refusal{"SENS:ATSC:MEA NORM", kUndefined}, Refusal{":", kUndefined},
        Refusal{"*IDN", kUndefined}, Refusal{"*CLS?", kUndefined}, Refusal{"READ:RF:LEVEL", kUndefined},
        Refusal{"SYST:REM?", kUndefined}, Refusal{"?", kUndefined},
        Refusal{"SYST\xFF:ERR?", "-101,\"Invalid character\""}, Refusal{"{}", "-101,\"Invalid character\""},
        Refusal{"SENS:ATSC:MEAS", kMissing}, Refusal{"UNIT:LEVEL:POWER ", kMissing},
        Refusal{"SYST:Time 14,3", kMissing}, Refusal{"SYST:Time 14,,9", kMissing},
        Refusal{"SENS:ATSC:EQU ON,", kMissing}, Refusal{"SENS:ATSC:MEAS NORM,PAR", kTooMany},
        Refusal{"*IDN? 1", kTooMany}, Refusal{"*CLS 1", kTooMany}, Refusal{"SYST:Time 1,2,3,4", kTooMany},
        Refusal{"SYST:Time 1,2,3,4,5,6,7", kTooMany}, Refusal{"SENS:ATSC:MEAS WRONG", kIllegal},
        Refusal{"SENS:ATSC:EQU 2", kIllegal}, Refusal{"SENS:ATSC:BER:INT 7", kIllegal},
        Refusal{"INPUT:ATTENUATION 12", kIllegal}, Refusal{"INPUT:ATTENUATION 60", kRange},
        Refusal{"SENS:FREQ:CENT 41999999", kRange}, Refusal{"SENS:FREQ:CENT 10000000010", kRange},
        Refusal{"SENS:FREQ:CENT many", kType}, Refusal{"SENS:FREQ:CENT nan", kType},
        Refusal{"SENS:FREQ:CENT inf", kType}, Refusal{"SENS:FREQ:CENT 1e999", kType},
        Refusal{"SENS:FREQ:CENT 500 MV", "-131,\"Invalid suffix\""}, Refusal{"SENS:ATSC:NOISE  4.9", kRange},
        Refusal{"SENS:ATSC:NOISE  56.01", kRange}, Refusal{"SENS:ATSC:CD:INT:COUN  100000", kRange},
        Refusal{"SENSE:ATSC:SYMBOLRATE:VALUE  11000000.1", kRange},
        Refusal{"SENSE:ATSC:FILTER:REJECTION:VC 1665999", kRange}, Refusal{"SENS:ATSC:EYEM:INT  22", kRange},
        Refusal{"SENS:ATSC:JITT:APPL 2", kRange}, Refusal{"SENS:ATSC:SPEC:AVG:COUN 0", kRange},
        Refusal{"SENS:ATSC:SPEC:FREQ:STAR  3.2", kConflict},
        Refusal{"SENS:ATSC:SPEC:FREQ:STOP -4", kConflict}, Refusal{"SENS:ATSC:SPEC:FREQ:STAR -4.49", kRange},
        Refusal{"SYST:Time 24,0,0", kRange}, Refusal{"SYST:DATE 09,2,29", kRange},
        Refusal{"SYST:DATE 1900,1,1", kRange},
        Refusal{"SENSE:ATSC:FILTER:SAW MHZ7", "-241,\"Hardware missing\""},
        Refusal{"SYST:MODE NTSC;:SENS:ATSC:MEAS PAR", kConflict}));

TEST(ErrorQueueTest, KeepsTheOrderAndMarksTheOverflow) {
  Bench bench;
  bench.Ask("SENS:ATSC:MEAS WRONG");
  for (int i = 0; i < 30; ++i) bench.Ask("FOO");
  EXPECT_EQ(bench.Error(), kIllegal);
  for (int i = 0; i < 18; ++i) ASSERT_EQ(bench.Error(), kUndefined);
  EXPECT_EQ(bench.Error(), "-350,\"Queue overflow\"");
  EXPECT_EQ(bench.Error(), kNoError);
}

TEST(ErrorQueueTest, IsEmptiedByClearStatus) {
  Bench bench;
  bench.Ask("FOO;BAR");
  bench.Ask("*CLS");
  EXPECT_EQ(bench.Error(), kNoError);
}

TEST(ErrorQueueTest, SetsTheEventStatusBitsUntilTheyAreRead) {
  Bench bench;
  EXPECT_EQ(bench.Ask("*ESR?"), "128") << "power on";
  bench.Ask("FOO;SENS:ATSC:NOISE  99;*OPC;*ESE 32;*SRE 32");
  EXPECT_EQ(bench.Ask("*STB?"), "100") << "error queue 4, event summary 32, service request 64";
  EXPECT_EQ(bench.Ask("*ESR?"), "49") << "command error 32, execution error 16, operation complete 1";
  EXPECT_EQ(bench.Ask("*ESR?"), "0");
}

// The table ------------------------------------------------------------------

// A header with every node in its short form: the capitals of the pattern.
std::string ShortForm(std::string_view pattern) {
  std::string header;
  for (const char c : pattern) {
    if (c < 'a' || c > 'z') header.push_back(c);
  }
  return header;
}

TEST(TableTest, EveryQueryAnswersToItsShortAndItsLongForm) {
  for (const Command& command : Commands()) {
    if (command.get == nullptr) continue;
    for (const std::string& header : {ShortForm(command.header), std::string(command.header)}) {
      Bench bench;
      EXPECT_NE(bench.Ask(header + "?"), kNoReply) << header;
      EXPECT_EQ(bench.Error(), kNoError) << header;
    }
  }
}

TEST(TableTest, EveryCommandWithAValueRefusesNoneAndTooMany) {
  for (const Command& command : Commands()) {
    if (command.set == nullptr) continue;
    Bench bench;
    const std::string header = ShortForm(command.header);
    bench.Ask(header + " 1,1,1,1");
    EXPECT_EQ(bench.Error(), kTooMany) << header;
    bench.Ask(header);
    EXPECT_EQ(bench.Error(), command.parameters == 0 ? kNoError : kMissing) << header;
  }
}

// Lines ----------------------------------------------------------------------

TEST(LineTest, RepliesOfSeveralQueriesAreJoined) {
  Bench bench;
  EXPECT_EQ(bench.Ask("*OPC?;SYST:ERR?;*OPC?"), "1;0,\"No error\";1");
}

TEST(LineTest, AnErrorDoesNotStopTheRestOfTheLine) {
  Bench bench;
  EXPECT_EQ(bench.Ask("FOO?;*OPC?"), "1");
  EXPECT_EQ(bench.Error(), kUndefined);
}

TEST(LineTest, HeadersContinueAtThePathOfTheLastOneOrStartAtTheRoot) {
  Bench bench;
  EXPECT_EQ(bench.Ask("SENS:ATSC:EQU OFF;EQU?;*OPC?;EQU:MODE?;:SYST:ERR?"), "OFF;1;COMP;0,\"No error\"");
  EXPECT_EQ(bench.Ask("SENS:ATSC:EQU ON;SYST:ERR?"), kNoError);
}

TEST(LineTest, TooMuchReplyIsDroppedWithAnError) {
  Bench bench;
  bench.Ask("READ:SCREEN:BUFFER?");
  std::string line;
  for (int i = 0; i < 1000; ++i) line += ":READ:BUFFER:PCX?;";
  const Instrument::Answer answer = bench.Box().Execute(line);
  EXPECT_FALSE(answer.has_reply);
  EXPECT_TRUE(answer.bytes.empty());
  EXPECT_EQ(bench.Error(), "-430,\"Query DEADLOCKED\"");
}

TEST(LineTest, IsTheSameInPieces) {
  std::string deadlock = "READ:SCREEN:BUFFER?;*CLS";
  for (int i = 0; i < 100; ++i) deadlock += ";:READ:BUFFER:PCX?";
  const std::string lines[] = {
      "",
      ";;;;;;;;;;;;;",
      "*IDN?",
      "SENS:ATSC:NOIS 21;NOIS?;EQU OFF;EQU?;:UNIT:LEV:POW DBUV;POW?;SENS:ATSC:EQU?;NOIS:MODE "
      "ON;MODE?;BW?;MODE?",
      "SENS:ATSC:EQU:MODE REAL;;NONSENSE;MODE?;*OPC?;MODE?;1,2;\";\";MODE?;ADAP "
      "FAST;ADAP?;SYST:ERR?;ERR?;ERR?",
      deadlock + ";:SENS:ATSC:EQU OFF",
      "SENS:ATSC:EQU?;:SYST:ERR?",
  };
  Configuration configuration;
  configuration.clock_start = 0;
  Bench whole(configuration);
  Bench pieces(configuration);
  for (const std::string& line : lines) EXPECT_EQ(pieces.AskInPieces(line), whole.Ask(line)) << line;
  EXPECT_EQ(pieces.Error(), whole.Error());
}

TEST(LineTest, EightCommandsAreNotTornApart) {
  Bench bench;
  int pieces = 0;
  EXPECT_EQ(bench.AskInPieces("*OPC?;*OPC?;*OPC?;*OPC?;*OPC?;*OPC?;*OPC?;*OPC?", &pieces), "1;1;1;1;1;1;1;1");
  EXPECT_EQ(pieces, 1);
  EXPECT_EQ(bench.AskInPieces("*OPC?;*OPC?;*OPC?;*OPC?;*OPC?;*OPC?;*OPC?;*OPC?;*OPC?;*OPC?", &pieces),
            "1;1;1;1;1;1;1;1;1;1");
  EXPECT_EQ(pieces, 3);
}

// Whatever arrives, the instrument stays sane: fragments of real commands in any mixture with junk.
TEST(LineTest, SurvivesAnything) {
  Bench bench;
  static constexpr std::array<std::string_view, 24> kPieces = {"SENS:ATSC:",  "READ:",
                                                               "MEAS",        "?",
                                                               " ",           ";",
                                                               ",",           ":",
                                                               "*IDN",        "NORM",
                                                               "1e308",       "-",
                                                               "\"",          "#0",
                                                               "\xFF",        "\n",
                                                               "SYST:ERR?",   "SENS:FREQ:CENT ",
                                                               "10000000009", "SYST:DATE ",
                                                               "99,12,31",    "SENS:ATSC:EQU FREEZE",
                                                               "_",           "GHZ"};
  unsigned state = 7;
  const auto next = [&](unsigned bound) {
    state = state * 1664525U + 1013904223U;
    return (state >> 16) % bound;
  };
  for (int round = 0; round < 20'000; ++round) {
    std::string line;
    for (unsigned i = next(12); i > 0; --i) line += kPieces[next(kPieces.size())];
    if (next(4) == 0) line.push_back(static_cast<char>(next(256)));
    bench.Wait(next(10));
    const Instrument::Answer answer = bench.Box().Execute(line);
    ASSERT_TRUE(answer.has_reply || answer.bytes.empty());
  }
  EXPECT_EQ(bench.Ask("*CLS;*OPC?"), "1");
}

}  // namespace
}  // namespace simulator
