// The model behind the readings: what belongs together stays together, in time and over the settings.
#include <gtest/gtest.h>

#include <cmath>

#include "simulator/signal_model.h"
#include "simulator/tests/fixture.h"

namespace simulator {
namespace {

// Quality --------------------------------------------------------------------

TEST(DecoderErrorsTest, MeetTheThresholdOfVisibilityAt14Point9Db) {
  // ATSC A/54: 2.5 segment errors a second, a segment error ratio of 1.93e-4, at a signal-to-noise ratio
  // of 14.9 dB.
  EXPECT_NEAR(DecoderErrors(FromDb(14.9)).segment_error_ratio, 1.93e-4, 0.05e-4);
}

TEST(DecoderErrorsTest, FallWithTheRatioAndStayInRange) {
  ErrorRatios before{0.5, 0.5, 1.0};
  for (int step = 0; step <= 220; ++step) {
    const double db = -10.0 + 0.25 * step;
    const ErrorRatios now = DecoderErrors(FromDb(db));
    constexpr double kRounding = 1.0 + 1e-9;
    EXPECT_LE(now.ber_before_rs, before.ber_before_rs * kRounding) << db;
    EXPECT_LE(now.ber_after_rs, before.ber_after_rs * kRounding) << db;
    EXPECT_LE(now.segment_error_ratio, before.segment_error_ratio * kRounding) << db;
    EXPECT_LE(now.ber_after_rs, now.ber_before_rs) << db;
    EXPECT_GE(now.segment_error_ratio, 0.0) << db;
    before = now;
  }
}

TEST(QualityTest, MerEvmAndPeaksOfOneIntervalAgree) {
  Bench bench;
  bench.Enter("PAR");
  const double mer_pct = bench.Number("READ:ATSC:MERP:RMS?");
  EXPECT_NEAR(bench.Number("READ:ATSC:MER:RMS?"), -20.0 * std::log10(mer_pct / 100.0), 0.1);
  const double evm = bench.Number("READ:ATSC:EVM:RMS?");
  EXPECT_NEAR(evm / mer_pct, std::sqrt(21.0) / 7.0, 0.01);
  EXPECT_NEAR(bench.Number("READ:ATSC:EVM:PEAK?") / evm, bench.Number("READ:ATSC:MERP:PEAK?") / mer_pct,
              0.05);
  EXPECT_GT(bench.Number("READ:ATSC:SIGNAL:NOISE?"), bench.Number("READ:ATSC:MER:RMS?"))
      << "the signal-to-noise ratio leaves echoes and jitter out";
}

TEST(QualityTest, AddedNoiseSetsMerBerAndSegmentErrors) {
  Bench bench;
  bench.Ask("SENS:ATSC:NOISE:MODE ON;:SENS:ATSC:NOISE  20;:SENS:ATSC:BER:INT 1000");
  bench.Wait(120.0);
  EXPECT_NEAR(bench.Number("READ:ATSC:MER:RMS?"), 19.6, 0.5);
  const double ber_at_20 = bench.Number("READ:ATSC:BER:BRS?");
  EXPECT_EQ(bench.Number("READ:ATSC:SEGMENT:ERROR?"), 0.0);
  bench.Ask("SENS:ATSC:NOISE  15");
  bench.Wait(1.0);
  EXPECT_NEAR(bench.Number("READ:ATSC:MER:RMS?"), 14.9, 0.3);
  EXPECT_GT(bench.Number("READ:ATSC:BER:BRS?"), 1000.0 * ber_at_20);
  EXPECT_NEAR(bench.Number("READ:ATSC:SEGMENT:ERROR?"),
              12935.4 * bench.Number("READ:ATSC:SEGMENT:ERROR:RATIO?"), 1.0);
  EXPECT_GT(bench.Number("READ:ATSC:BER:BRS?"), bench.Number("READ:ATSC:BER:ARS?"));
  EXPECT_EQ(bench.Ask("READ:ATSC:FEC:LOCK?"), "1");
  bench.Ask("SENS:ATSC:NOISE  8");
  bench.Wait(1.0);
  EXPECT_EQ(bench.Ask("READ:ATSC:DEM:LOCK?"), "1") << "the carrier is recovered far below the data threshold";
  EXPECT_EQ(bench.Ask("READ:ATSC:FEC:LOCK?"), "0");
  EXPECT_EQ(bench.Ask("READ:ATSC:TS:BITRATE?"), "---");
}

TEST(QualityTest, ReadingsRepeatWithTheSeedAndDifferBetweenIntervals) {
  const auto trace = [](std::uint64_t seed) {
    Configuration configuration;
    configuration.seed = seed;
    Bench bench(configuration);
    std::string all;
    for (int i = 0; i < 20; ++i) {
      bench.Wait(1.0);
      all += bench.Ask("READ:ATSC:MERP:RMS?;:READ:ATSC:FREQ:OFFSET?") + "\n";
    }
    return all;
  };
  EXPECT_EQ(trace(1), trace(1));
  EXPECT_NE(trace(1), trace(2));
  Bench bench;
  const std::string first = bench.Ask("READ:ATSC:FREQ:OFFSET?");
  EXPECT_EQ(bench.Ask("READ:ATSC:FREQ:OFFSET?"), first);
  bench.Wait(10.0);
  EXPECT_NE(bench.Ask("READ:ATSC:FREQ:OFFSET?"), first);
}

TEST(QualityTest, ErrorRatiosAreBoundedByTheBitsThatWereCounted) {
  Bench bench;
  bench.Ask("SENS:ATSC:BER:INT 1000");
  EXPECT_EQ(bench.Ask("READ:ATSC:BER:BRS?"), "---") << "nothing counted yet";
  bench.Wait(1.0);
  EXPECT_EQ(bench.Ask("READ:ATSC:BER:BRS?"), "<4.7E-08") << "21.35 Mbit in the first second";
  bench.Wait(10.0);
  EXPECT_EQ(bench.Ask("READ:ATSC:BER:BRS?"), "<4.3E-09");
  bench.Ask("SENS:ATSC:BER:INT 10");
  EXPECT_EQ(bench.Ask("READ:ATSC:BER:ARS?"), "<1.0E-07") << "the window of 10 Mbit";
  bench.Ask("SENS:ATSC:BER:RES");
  EXPECT_EQ(bench.Ask("READ:ATSC:BER:BRS?"), "---");
}

TEST(QualityTest, TheTransportRateFollowsTheSymbolRate) {
  Bench bench;
  EXPECT_NEAR(bench.Number("READ:ATSC:TS:BITRATE?"), 19.392658, 0.0001);
}

// Equalizer ------------------------------------------------------------------

TEST(EqualizerTest, TakesTheEchoesAwayWhileItIsOnOrFrozenOnThem) {
  Bench bench;
  const double on = bench.Number("READ:ATSC:MER:RMS?");
  bench.Ask("SENS:ATSC:EQU FREEZE");
  EXPECT_NEAR(bench.Number("READ:ATSC:MER:RMS?"), on, 0.5);
  bench.Ask("SENS:ATSC:EQU OFF");
  EXPECT_LT(bench.Number("READ:ATSC:MER:RMS?"), on - 10.0);
  bench.Ask("SENS:ATSC:EQU ON");
  EXPECT_NEAR(bench.Number("READ:ATSC:MER:RMS?"), on, 0.5);
}

TEST(EqualizerTest, FrozenOnAnotherChannelItMakesThingsWorse) {
  Bench bench;
  const double on = bench.Number("READ:ATSC:MER:RMS?");
  bench.Ask("SENS:ATSC:EQU FREEZE;:SENS:FREQ:CENT 600000000");
  bench.Wait(10.0);
  EXPECT_LT(bench.Number("READ:ATSC:MER:RMS?"), on - 10.0);
  bench.Ask("SENS:ATSC:EQU ON");
  EXPECT_NEAR(bench.Number("READ:ATSC:MER:RMS?"), on, 0.5);
}

TEST(EqualizerTest, FrozenBeforeItAdaptedItDoesNotHelp) {
  Bench bench;
  const double on = bench.Number("READ:ATSC:MER:RMS?");
  bench.Ask("SENS:ATSC:EQU OFF;EQU FREEZE");
  EXPECT_LT(bench.Number("READ:ATSC:MER:RMS?"), on - 10.0);
}

// Level ----------------------------------------------------------------------

TEST(LevelTest, IsShownInTheSelectedUnitAtTheSelectedImpedance) {
  Bench bench;
  EXPECT_EQ(bench.Ask("READ:RF:LEVEL?").substr(5), " (dBm)");
  const double dbm = bench.Number("READ:RF:LEVEL?");
  const auto in = [&](std::string_view unit) {
    bench.Ask("UNIT:LEVEL:POWER " + std::string(unit));
    return bench.Number("READ:RF:LEVEL?");
  };
  EXPECT_NEAR(in("DBUV"), dbm + 107.0, 0.11);
  EXPECT_NEAR(in("DBMV"), dbm + 47.0, 0.11);
  EXPECT_NEAR(in("DBPW"), dbm + 90.0, 0.11);
  EXPECT_NEAR(in("DBUW"), dbm + 30.0, 0.11);
  EXPECT_NEAR(in("MV"), std::pow(10.0, (dbm + 47.0) / 20.0), 0.02);
  bench.Ask("INP:ATT:IMP O75");
  EXPECT_NEAR(in("DBUV"), dbm + 108.75, 0.11);
}

TEST(LevelTest, TellsNoSignalTooWeakAndTooStrong) {
  Bench bench;
  EXPECT_EQ(bench.Ask("READ:SIGN:RF?"), "OK");
  Signal signal;
  signal.present = false;
  bench.Box().ReplaceSignal(signal);
  EXPECT_EQ(bench.Ask("READ:SIGN:RF?;:READ:RF:LEVEL?;:READ:ATSC:DEM:LOCK?"), "NORF;NORF;0");
  signal.present = true;
  signal.level_dbm = -90.0;
  bench.Box().ReplaceSignal(signal);
  EXPECT_EQ(bench.Ask("READ:SIGN:RF?"), "UND");
  EXPECT_EQ(bench.Ask("READ:RF:LEVEL?").substr(0, 5), "UND -");
  signal.level_dbm = -10.0;
  bench.Box().ReplaceSignal(signal);
  bench.Ask("INPUT:ATTENUATION 0");
  EXPECT_EQ(bench.Ask("READ:SIGN:RF?"), "OVER");
  EXPECT_EQ(bench.Ask("READ:RF:LEVEL?").substr(0, 6), "OVER -");
  bench.Ask("INPUT:ATTENUATION:AUTO ON");
  EXPECT_EQ(bench.Ask("READ:SIGN:RF?;:INPUT:ATTENUATION?"), "OK;30");
}

TEST(LevelTest, TheAutomaticAttenuatorFollowsItsMode) {
  Configuration configuration;
  configuration.signal.level_dbm = -21.0;
  Bench bench(configuration);
  EXPECT_EQ(bench.Ask("INPUT:ATTENUATION?"), "20");
  EXPECT_EQ(bench.Ask("INPUT:ATTENUATION:MODE LNO;:INPUT:ATTENUATION?"), "15");
  EXPECT_EQ(bench.Ask("INPUT:ATTENUATION:MODE LDIS;:INPUT:ATTENUATION?"), "25");
  EXPECT_EQ(bench.Ask("INPUT:ATTENUATION:MODE LSD;:INPUT:ATTENUATION?;:INP:ATT:REC?"), "30;LDIS");
  EXPECT_EQ(bench.Ask("INPUT:ATSC:HIGH:ADJ:CHANNEL:POWER ON;:INPUT:ATTENUATION?"), "35");
}

// Tuning ---------------------------------------------------------------------

TEST(TuningTest, ThePilotLiesAQuarterOfTheSymbolRateBesideTheCentre) {
  Bench bench;
  bench.Ask("SENS:FREQ:CENT 500000000;:SENSE:ATSC:SYMBOLRATE:VALUE 10000000");
  EXPECT_EQ(bench.Ask("SENS:ATSC:FREQUENCY:PILOT?"), "497500000");
  bench.Ask("SENS:ATSC:FIX:FREQ PIL;:SENSE:ATSC:SYMBOLRATE:VALUE 8000000");
  EXPECT_EQ(bench.Ask("SENS:ATSC:FREQUENCY:PILOT?;:SENS:FREQ:CENT?"), "497500000;499500000");
  bench.Ask("SENS:ATSC:SID:POS INV");
  EXPECT_EQ(bench.Ask("SENS:ATSC:FREQUENCY:PILOT?"), "501500000");
}

TEST(TuningTest, LockNeedsTheRightFrequencySymbolRateSidebandAndFilter) {
  Configuration configuration;
  configuration.signal.center_frequency_hz = 473e6;
  configuration.saw_filters.mhz2 = true;
  Bench bench(configuration);
  const auto locked = [&](std::string_view command) {
    bench.Ask(command);
    EXPECT_EQ(bench.Error(), kNoError) << command;
    bench.Wait(5.0);
    return bench.Ask("READ:ATSC:DEM:LOCK?") == "1";
  };
  EXPECT_FALSE(locked("SENS:FREQ:CENT 500000000"));
  EXPECT_EQ(bench.Ask("READ:SIGN:RF?"), "NORF");
  EXPECT_TRUE(locked("SENS:FREQ:CENT 473000000"));
  EXPECT_NEAR(bench.Number("READ:ATSC:FREQ:OFFSET?"), 85.0, 5.0);
  EXPECT_TRUE(locked("SENS:FREQ:CENT 472990000"));
  EXPECT_NEAR(bench.Number("READ:ATSC:FREQ:OFFSET?"), 10085.0, 5.0);
  EXPECT_FALSE(locked("SENS:FREQ:CENT 472000000"));
  EXPECT_TRUE(locked("SENS:FREQ:CENT 473000000"));
  EXPECT_FALSE(locked("SENSE:ATSC:SYMBOLRATE:VALUE  10000000"));
  EXPECT_TRUE(locked("SENSE:ATSC:SYMBOLRATE:VALUE  10762237.8"));
  EXPECT_FALSE(locked("SENS:ATSC:SID:POS INV"));
  EXPECT_TRUE(locked("SENS:ATSC:SID:POS NORM"));
  EXPECT_FALSE(locked("SENSE:ATSC:FILTER:SAW MHZ2"));
  EXPECT_TRUE(locked("SENSE:ATSC:FILTER:SAW MHZ8"));
  EXPECT_FALSE(locked("SYST:MODE NTSC"));
}

// Settle times ---------------------------------------------------------------

struct Settling {
  std::string_view mode;
  std::string_view query;
  double within;  ///< seconds after which users count on a result
};

void PrintTo(const Settling& settling, std::ostream* out) { *out << settling.mode; }

class SettlingTest : public testing::TestWithParam<Settling> {};

TEST_P(SettlingTest, ResultsAreMissingAtFirstAndThereInTime) {
  Bench bench;
  bench.Ask("SENS:ATSC:MEAS " + std::string(GetParam().mode));
  if (GetParam().within > 0.0) {
    EXPECT_EQ(bench.Ask(GetParam().query), "---");
  }
  EXPECT_EQ(bench.Ask("READ:ATSC:DEM:LOCK?"), "1") << "the demodulator stays locked";
  bench.Wait(GetParam().within);
  EXPECT_NE(bench.Ask(GetParam().query), "---");
}

INSTANTIATE_TEST_SUITE_P(
    All, SettlingTest,
    testing::Values(
        Settling{"NORM", "READ:ATSC:MER:RMS?", 5.0}, Settling{"PAR", "READ:ATSC:EVM:PEAK?", 9.0},
        Settling{"SP_1", "READ:ATSC:SPECTRUM:SHO:LOW?", 10.0},
        Settling{"SP_2", "READ:ATSC:SPECTRUM:SHO:LOW?", 10.0},
        Settling{"SP_3", "READ:ATSC:SPECTRUM:SHO:LOW?", 10.0}, Settling{"CCDF", "READ:ATSC:CCDF:PAPR?", 5.0},
        Settling{"APH", "READ:ATSC:AMPL_PHAS_GD:VALUE?", 5.0},
        Settling{"AGD", "READ:ATSC:AMPL_PHAS_GD:VALUE?", 5.0}, Settling{"POL", "READ:ATSC:MER:RMS?", 3.0},
        Settling{"PV", "READ:ATSC:PVALUE?", 3.0}, Settling{"AJIT", "READ:ATSC:JITT:VAL?", 3.0},
        Settling{"PJIT", "READ:ATSC:JITT:VAL?", 3.0}, Settling{"CENV", "READ:ATSC:CREST:MAX?", 3.0},
        Settling{"ADIS", "READ:ATSC:CREST:MAX?", 3.0}, Settling{"HIST", "READ:ATSC:MER:RMS?", 3.0},
        // Asked once and without a wait, so the pattern must be there at once.
        Settling{"EPAT", "READ:ATSC:EPATTERN:PEAK?", 0.0}));

TEST(SettleTest, AnOperatingModeNeedsTenSecondsAtMost) {
  Bench bench;
  bench.Ask("SYST:MODE NTSC");
  EXPECT_EQ(bench.Ask("SENS:ATSC:MEAS?;:READ:ATSC:MER:RMS?;:READ:ATSC:DEM:LOCK?"), "0;---;0");
  bench.Ask("SYST:MODE ATSC");
  EXPECT_EQ(bench.Ask("READ:ATSC:MER:RMS?;:READ:ATSC:BER:BRS?;:READ:ATSC:DEM:LOCK?"), "---;---;0");
  bench.Wait(10.0);
  EXPECT_EQ(bench.Ask("SENS:ATSC:MEAS?;:READ:ATSC:DEM:LOCK?"), "NORM;1");
  EXPECT_NE(bench.Ask("READ:ATSC:MER:RMS?"), "---");
}

TEST(SettleTest, TuningLosesTheLockForAMoment) {
  Bench bench;
  bench.Ask("SENS:FREQ:CENT 600000000");
  EXPECT_EQ(bench.Ask("READ:ATSC:DEM:LOCK?;:READ:ATSC:MER:RMS?"), "0;---");
  bench.Wait(1.0);
  EXPECT_EQ(bench.Ask("READ:ATSC:DEM:LOCK?"), "1");
}

TEST(SettleTest, ARestartPresetsEverythingAndTakesFifteenSecondsAtMost) {
  Bench bench;
  bench.Ask("SYST:REM;:SENS:ATSC:MEAS PAR;:SENS:ATSC:EQU OFF;:FOO");
  bench.Ask("SYST:RES");
  EXPECT_EQ(bench.Ask("SYST:ERR?;:SENS:ATSC:MEAS?;EQU?;:READ:ATSC:MER:RMS?;:READ:SCREEN:BUFFER?"),
            "0,\"No error\";NORM;ON;---;1");
  bench.Wait(15.0);
  EXPECT_NE(bench.Ask("READ:ATSC:MER:RMS?"), "---");
  EXPECT_EQ(bench.Ask("READ:SCREEN:BUFFER?"), "0");
}

TEST(SettleTest, CanBeSwitchedOff) {
  Configuration configuration;
  configuration.settle_scale = 0.0;
  Bench bench(configuration);
  EXPECT_NE(bench.Ask("SENS:ATSC:MEAS PAR;:READ:ATSC:EVM:PEAK?"), "---");
}

// Generations and hardware ---------------------------------------------------

TEST(GenerationTest, TheOlderOneReportsThePilotOffsetInKilohertz) {
  Configuration configuration;
  configuration.signal.carrier_offset_hz = 1500.0;
  configuration.firmware = "4.70";
  Bench older(configuration);
  EXPECT_NEAR(older.Number("READ:ATSC:FREQ:OFFSET?"), 1.5, 0.005);
  EXPECT_NE(older.Ask("READ:ATSC:FREQ:OFFSET?").find("(kHz)"), std::string::npos);
  configuration.firmware = "4.80";
  EXPECT_NEAR(Bench(configuration).Number("READ:ATSC:FREQ:OFFSET?"), 1500.0, 5.0);
}

TEST(GenerationTest, TheOlderOneHasNoBoardInfoNorZoom) {
  Configuration configuration;
  configuration.firmware = "4.90";
  Bench bench(configuration);
  EXPECT_EQ(bench.Ask("*IDN?"), "HALVERN&TOSKE,KEL 40,100123,4.90");
  EXPECT_EQ(bench.Ask("SYSTEM:SERVICE:GET:BOARD:INFO?"), kNoReply);
  EXPECT_EQ(bench.Error(), "-113,\"Undefined header\"");
  bench.Ask("SENS:ATSC:EPAT:RANG SP_1");
  EXPECT_EQ(bench.Error(), "-224,\"Illegal parameter value\"");
  bench.Ask("SENS:ATSC:EPAT:RANG RG3");
  EXPECT_EQ(bench.Error(), kNoError);
}

TEST(GenerationTest, TheDemodulatorAttenuatorIsReportedFrom505On) {
  Configuration configuration;
  configuration.firmware = "5.04";
  EXPECT_EQ(Bench(configuration).Ask("INPUT:ATTENUATION:DEM:VAL?"), kNoReply);
  configuration.firmware = "5.05";
  EXPECT_EQ(Bench(configuration).Ask("INPUT:ATTENUATION:DEM:VAL?"), "11");
  configuration.signal.level_dbm = -60.0;
  EXPECT_EQ(Bench(configuration).Ask("INPUT:ATTENUATION:DEM:VAL?"), "10");
  configuration.signal.level_dbm = -25.0;
  EXPECT_EQ(Bench(configuration).Ask("INPUT:ATTENUATION:DEM:VAL?"), "12");
}

TEST(HardwareTest, OptionsAndBoardsFollowTheConfiguration) {
  Configuration configuration;
  configuration.options = 33;
  configuration.saw_filters = {true, true, false, false};
  Bench bench(configuration);
  EXPECT_EQ(bench.Ask("READ:INFO:DATA?"), "33");
  EXPECT_EQ(bench.Ask("SYSTEM:SERVICE:GET:BOARD:INFO?"), "0x80 CPU;0x83 SAW 2.0 6.0;0x90 DEMOD");
  configuration.boards = "0x83 2.0 6.0;0x84 7.0";
  EXPECT_EQ(Bench(configuration).Ask("SYSTEM:SERVICE:GET:BOARD:INFO?"), "0x83 2.0 6.0;0x84 7.0");
}

TEST(HardwareTest, WithoutTheImpedanceOptionNothingSwitches) {
  Configuration configuration;
  configuration.options = 0;
  Bench bench(configuration);
  bench.Ask("INP:ATT:IMP O75");
  EXPECT_EQ(bench.Error(), "-241,\"Hardware missing\"");
  EXPECT_EQ(bench.Ask("INPUT:ATTENUATION:IMP?"), "O50");
  bench.Ask("INP:ATT:REC LNO");
  EXPECT_EQ(bench.Error(), "-241,\"Hardware missing\"");
}

TEST(HardwareTest, AMissingFilterIsRefusedAndTheOldOneKept) {
  Configuration configuration;
  configuration.saw_filters = {false, false, false, true};
  Bench bench(configuration);
  EXPECT_EQ(bench.Ask("SENSE:ATSC:FILTER:SAW?"), "MHZ8");
  bench.Ask("SENSE:ATSC:FILTER:SAW MHZ6");
  EXPECT_EQ(bench.Error(), "-241,\"Hardware missing\"");
  EXPECT_EQ(bench.Ask("SENSE:ATSC:FILTER:SAW?"), "MHZ8");
}

TEST(HardwareTest, TheExternalReferenceLocksWhereThereIsOne) {
  Configuration configuration;
  configuration.external_reference_present = true;
  EXPECT_EQ(Bench(configuration).Ask("SENS:REF EXT;:SENS:REF:UNL?"), "0");
}

// Clock ----------------------------------------------------------------------

TEST(ClockTest, RunsInTheInstrumentsTimeAcrossMidnight) {
  Configuration configuration;
  configuration.clock_start = 1231113600;  // 2009-01-05 00:00:00 UTC
  Bench bench(configuration);
  EXPECT_EQ(bench.Ask("SYST:DATE?;TIME?"), "2009,1,5;0,0,0");
  bench.Ask("SYST:Time 23,59,58");
  bench.Wait(3.0);
  EXPECT_EQ(bench.Ask("SYST:DATE?;TIME?"), "2009,1,6;0,0,1");
  bench.Ask("SYST:DATE 12,2,29");
  EXPECT_EQ(bench.Ask("SYST:DATE?;TIME?"), "2012,2,29;0,0,1");
}

// Traces ---------------------------------------------------------------------

TEST(EchoPatternTest, ReportsTenEchoesStrongestFirst) {
  Bench bench;
  bench.Enter("EPAT");
  const auto fields = Fields(bench.Ask("READ:ATSC:EPATTERN:PEAK?"));
  ASSERT_EQ(fields.size(), 20U);
  EXPECT_NEAR(NumberIn(fields[0]), 19.5, 0.3);
  EXPECT_NEAR(NumberIn(fields[1]), 1.35, 0.01);
  EXPECT_NEAR(NumberIn(fields[3]), -0.62, 0.01);
  for (std::size_t i = 2; i < 20; i += 2) EXPECT_GT(NumberIn(fields[i]), NumberIn(fields[i - 2]) - 0.3);
}

TEST(EchoPatternTest, RangeAndScaleChooseAndConvert) {
  Bench bench;
  bench.Enter("EPAT");
  bench.Ask("SENS:ATSC:EPAT:RANG RG3;SCAL EP2");
  auto fields = Fields(bench.Ask("READ:ATSC:EPATTERN:PEAK?"));
  ASSERT_EQ(fields.size(), 20U);
  EXPECT_NEAR(NumberIn(fields[1]), 27.35 * 0.299792, 0.01);
  EXPECT_NEAR(NumberIn(fields[3]), 36.2 * 0.299792, 0.01);
  for (std::size_t i = 4; i < 20; ++i) EXPECT_EQ(fields[i], "---");
  bench.Ask("SENS:ATSC:EPAT:SCAL EP3");
  fields = Fields(bench.Ask("READ:ATSC:EPATTERN:PEAK?"));
  EXPECT_NEAR(NumberIn(fields[1]), 27.35 * 0.186282, 0.01);
}

TEST(EchoPatternTest, NeedsTheEqualizersTaps) {
  Bench bench;
  bench.Enter("EPAT");
  const std::string on = bench.Ask("READ:ATSC:EPATTERN:PEAK?");
  bench.Ask("SENS:ATSC:EQU FREEZE");
  EXPECT_EQ(bench.Ask("READ:ATSC:EPATTERN:PEAK?"), on);
  bench.Ask("SENS:ATSC:EQU OFF");
  for (const auto& field : Fields(bench.Ask("READ:ATSC:EPATTERN:PEAK?"))) EXPECT_EQ(field, "---");
}

TEST(JitterTest, LinesAndTotalComeFromOneModel) {
  Configuration configuration;
  configuration.signal.phase_lines = {{50.0, 0.1}, {1000.0, 2.0}};
  configuration.signal.phase_noise_deg = 0.0;
  Bench bench(configuration);
  bench.Enter("PJIT");
  const auto fields = Fields(bench.Ask("READ:ATSC:JITT:VAL?"));
  ASSERT_EQ(fields.size(), 14U);
  EXPECT_EQ(fields[0] + " " + fields[1] + " " + fields[2] + " " + fields[3] + " " + fields[4],
            "2.000 1000.0 0.100 50.0 ---");
  bench.Enter("PAR");
  EXPECT_NEAR(bench.Number("READ:ATSC:JITTER?"), 2.0 / std::sqrt(2.0), 0.1)
      << "rms of a line of 2 degrees peak";
  bench.Enter("PJIT");
  bench.Ask("SENSE:ATSC:CFLB HI");
  EXPECT_EQ(Fields(bench.Ask("READ:ATSC:JITT:VAL?"))[0], "1.600") << "a wide loop follows the jitter";
}

TEST(JitterTest, AmplitudeAndPhaseDifferAndNoiseIsASpectrumOfItsOwn) {
  Bench bench;
  bench.Enter("AJIT");
  const std::string amplitude = bench.Ask("READ:ATSC:JITT:VAL?");
  EXPECT_EQ(Fields(amplitude).size(), 14U);
  bench.Ask("SENS:ATSC:JITT:APPL 1");
  EXPECT_NE(bench.Ask("READ:ATSC:JITT:VAL?"), amplitude);
  EXPECT_EQ(Fields(bench.Ask("READ:ATSC:JITT:VAL?")).size(), 14U);
  bench.Ask("SENS:ATSC:JITT:APPL 0");
  bench.Enter("PJIT");
  EXPECT_NE(bench.Ask("READ:ATSC:JITT:VAL?"), amplitude);
}

TEST(ResponseTest, ASingleEchoGivesTheRippleOfTheTextbook) {
  Configuration configuration;
  // One echo of amplitude 0.1: |H| between 0.9 and 1.1, that is 20 log10(1.1 / 0.9) = 1.74 dB peak to peak.
  configuration.signal.echoes = {{20.0, 2.0, 0.0}};
  Bench bench(configuration);
  bench.Enter("APH");
  bench.Ask("SENS:ATSC:RESP:DET PEAK");
  auto fields = Fields(bench.Ask("READ:ATSC:AMPL_PHAS_GD:VALUE?"));
  ASSERT_EQ(fields.size(), 2U);
  EXPECT_NEAR(NumberIn(fields[0]), 0.92, 0.08);
  EXPECT_NEAR(NumberIn(fields[1]), 5.74, 0.5) << "asin 0.1 in degrees";
  bench.Ask("SENS:ATSC:RESP:DET RMS");
  fields = Fields(bench.Ask("READ:ATSC:AMPL_PHAS_GD:VALUE?"));
  EXPECT_NEAR(NumberIn(fields[0]), 0.87 / std::sqrt(2.0), 0.05);
  bench.Enter("AGD");
  bench.Ask("SENS:ATSC:RESP:DET PEAK");
  fields = Fields(bench.Ask("READ:ATSC:AMPL_PHAS_GD:VALUE?"));
  EXPECT_NEAR(NumberIn(fields[1]), 2000.0 * 0.1 / 0.9, 10.0) << "nanoseconds";
}

TEST(ResponseTest, WithoutEchoesTheChannelIsFlat) {
  Configuration configuration;
  configuration.signal.echoes.clear();
  Bench bench(configuration);
  bench.Enter("APH");
  EXPECT_EQ(bench.Ask("READ:ATSC:AMPL_PHAS_GD:VALUE?"), "0.00,0.0");
}

// Alarm statistics -----------------------------------------------------------

TEST(AlarmTest, CountsNothingButTimeOnAGoodSignal) {
  Bench bench;
  bench.Wait(3661.0);
  EXPECT_EQ(bench.Ask("READ:ATSC:ALAR:STAT?"),
            "01:01:01,00:00:00,0,00:00:00,0,00:00:00,0,00:00:00,0,00:00:00,0,00:00:00,0,0,0");
}

TEST(AlarmTest, CountsEachConditionWhileItLasts) {
  Bench bench;
  bench.Wait(100.0);
  bench.Ask("SENS:ATSC:NOISE:MODE ON;:SENS:ATSC:NOISE  14");
  bench.Wait(60.0);
  bench.Ask("SENS:ATSC:NOISE:MODE OFF");
  bench.Wait(100.0);
  auto fields = Fields(bench.Ask("READ:ATSC:ALAR:STAT?"));
  ASSERT_EQ(fields.size(), 15U);
  EXPECT_EQ(fields[0], "00:04:20");
  EXPECT_EQ(fields[1], "00:00:00") << "level";
  EXPECT_EQ(fields[3], "00:00:00") << "sync";
  EXPECT_EQ(fields[5] + " " + fields[6], "00:01:00 1") << "MER";
  EXPECT_EQ(fields[7], "00:01:00") << "EVM";
  EXPECT_EQ(fields[9], "00:01:00") << "BER";
  EXPECT_EQ(fields[11], "00:01:00") << "data errors";
  EXPECT_GT(NumberIn(fields[13]), 1e6);
  EXPECT_GT(NumberIn(fields[14]), 1e4);
  Signal signal;
  signal.present = false;
  bench.Box().ReplaceSignal(signal);
  bench.Wait(30.0);
  fields = Fields(bench.Ask("READ:ATSC:ALAR:STAT?"));
  EXPECT_EQ(fields[1], "00:00:30");
  EXPECT_EQ(fields[3], "00:00:30");
  EXPECT_EQ(fields[5], "00:01:00") << "no MER without a signal";
}

TEST(AlarmTest, CountsTheLossOfLockByTuningButNotTheLoadingOfADemodulator) {
  Bench bench;
  bench.Ask("SYST:MODE ATSC");
  bench.Wait(18.0);
  EXPECT_EQ(bench.Ask("READ:ATSC:ALAR:STAT?"),
            "00:00:10,00:00:00,0,00:00:00,0,00:00:00,0,00:00:00,0,00:00:00,0,00:00:00,0,0,0");
  for (int i = 0; i < 4; ++i) {
    bench.Ask("SENS:FREQ:CENT 600000000");
    bench.Wait(10.0);
  }
  const auto fields = Fields(bench.Ask("READ:ATSC:ALAR:STAT?"));
  EXPECT_EQ(fields[0], "00:00:50");
  EXPECT_EQ(fields[3] + " " + fields[4], "00:00:02 4") << "half a second each time";
}

TEST(AlarmTest, IsClearedByCommand) {
  Bench bench;
  bench.Wait(100.0);
  bench.Ask("CONF:ALAR:RES");
  bench.Wait(7.0);
  EXPECT_EQ(Fields(bench.Ask("READ:ATSC:ALAR:STAT?"))[0], "00:00:07");
}

TEST(AlarmTest, HoursGrowBeyondTwoDigits) {
  Bench bench;
  bench.Wait(360000.0);
  EXPECT_EQ(Fields(bench.Ask("READ:ATSC:ALAR:STAT?"))[0], "100:00:00");
}

}  // namespace
}  // namespace simulator
