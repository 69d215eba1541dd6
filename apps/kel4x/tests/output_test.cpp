// Formatting: readings, CSV, JSON, tables, sparklines, plots, words, traces.
#include "apps/kel4x/output.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "apps/kel4x/exit_code.h"
#include "apps/kel4x/plot.h"
#include "apps/kel4x/report.h"
#include "apps/kel4x/sparkline.h"
#include "apps/kel4x/survey.h"
#include "apps/kel4x/trace_file.h"
#include "apps/kel4x/words.h"

namespace kel4x {
namespace {

Reading Of(std::string_view name, automation::Value value, std::string status = {}) {
  Reading reading;
  reading.target.member = &FindMember(name);
  reading.value = std::move(value);
  reading.status = std::move(status);
  return reading;
}

TEST(ValueText, ShowsTheStatusWordWithTheValue) {
  EXPECT_EQ(ValueText(Of("MeasureRfLevel", -43.25)), "-43.25");
  EXPECT_EQ(ValueText(Of("MeasureBerBeforeRS", 1e-6, "<")), "<1e-06");
  EXPECT_EQ(ValueText(Of("MeasureRfLevel", 0.0, "---")), "---");
  EXPECT_EQ(ValueText(Of("MeasureRfLevel", 0.0, "OVER")), "OVER");
  EXPECT_EQ(ValueText(Of("MeasureRfLevel", -12.5, "UNDER")), "UNDER -12.5");
  EXPECT_EQ(ValueText(Of("StateSignal", false, "NORF")), "no (NORF)");
  EXPECT_EQ(ValueText(Of("MeasureMode", std::int32_t{16})), "kelPV");
  EXPECT_EQ(ValueText(Of("MeasureMode", std::int32_t{77})), "77");
  EXPECT_EQ(BareValueText(Of("MeasureRfLevel", 0.0, "---")), "");
}

TEST(StatusWordOf, KnowsTheWordsOfTheInstrument) {
  EXPECT_EQ(StatusWordOf("\"UND-3.2\""), "UNDER");
  EXPECT_EQ(StatusWordOf("UNDER-3.2"), "UNDER");
  EXPECT_EQ(StatusWordOf("OVER"), "OVER");
  EXPECT_EQ(StatusWordOf("NORF"), "NORF");
  EXPECT_EQ(StatusWordOf("NORM"), "");
  EXPECT_EQ(StatusWordOf("---"), "---");
  EXPECT_EQ(StatusWordOf("-3"), "");
  EXPECT_EQ(StatusWordOf(""), "");
}

TEST(FindTargets, GivesEveryIndexOrOne) {
  EXPECT_EQ(FindTargets("ghostpatternatten").size(), 10U);
  EXPECT_EQ(FindTargets("PhaseJitterFreq").size(), 7U);
  EXPECT_EQ(FindTargets("GhostPatternAtten(3)").at(0).Label(), "GhostPatternAtten(3)");
  EXPECT_EQ(FindTargets("MeasureRfLevel").at(0).Label(), "MeasureRfLevel");
  EXPECT_THROW(FindTargets("MeasureRfLevel(1)"), UsageError);
  EXPECT_THROW(FindTargets("GhostPatternAtten(x)"), UsageError);
  EXPECT_THROW(FindTargets("MeasureResetBer"), UsageError);
  EXPECT_THROW(FindTargets("ScreenShot"), UsageError);
}

TEST(FindMember, NamesTheNearest) {
  try {
    FindMember("MeasureRfLevl");
    FAIL();
  } catch (const UsageError& error) {
    EXPECT_STREQ(error.what(), "there is no member \"MeasureRfLevl\"; the nearest is MeasureRfLevel");
  }
}

TEST(Json, IsOneObjectAReading) {
  Reading reading = Of("MeasureRfLevel", -43.25);
  reading.unit = "dBm";
  EXPECT_EQ(ReadingJson(reading), R"({"name":"MeasureRfLevel","value":-43.25,"unit":"dBm","seconds":0.0})");
  EXPECT_EQ(ReadingJson(Of("MeasureMode", std::int32_t{0})),
            R"({"name":"MeasureMode","value":0,"text":"kelNORM","seconds":0.0})");
  EXPECT_EQ(ReadingJson(Of("MeasureRfLevel", 0.0, "---")),
            R"({"name":"MeasureRfLevel","value":null,"status":"---","seconds":0.0})");
  reading.failure = Failure{.number = -2147219488, .source = "s", .description = "d", .link = {}};
  EXPECT_NE(ReadingJson(reading).find(R"("error":{"number":-2147219488,"code":2016)"), std::string::npos);
}

TEST(Csv, QuotesWhatNeedsIt) {
  EXPECT_EQ(CsvField("plain"), "plain");
  EXPECT_EQ(CsvField("a,b"), "\"a,b\"");
  EXPECT_EQ(CsvField("say \"x\"\n"), "\"say \"\"x\"\"\n\"");
  EXPECT_EQ(CsvLine(Of("MeasureRfLevel", -43.25)), "MeasureRfLevel,,-43.25,,,,,0.000000,,");
}

TEST(TextTable, CountsCharactersNotBytes) {
  TextTable table({{"A", TextTable::Lean::kLeft}, {"B", TextTable::Lean::kRight}});
  table.Add({"µs", "1"});
  table.Add({"xyz", "20"});
  EXPECT_EQ(table.Text(0, false), "A     B\nµs    1\nxyz  20\n");
  EXPECT_EQ(Shortened("µµµµ", 3), "µµ…");
}

TEST(Sparkline, LeavesABlankWhereThereIsNoNumber) {
  EXPECT_EQ(Sparkline({0, 7, std::numeric_limits<double>::quiet_NaN(), 3.5}), "▁█ ▅");
  EXPECT_EQ(Sparkline({2, 2}), "▅▅");
}

TEST(Ticks, StepByOneTwoOrFive) {
  EXPECT_EQ(Ticks(0, 45, 5), (std::vector<double>{0, 10, 20, 30, 40, 50}));
  EXPECT_EQ(Ticks(-3, 37, 10), (std::vector<double>{-5, 0, 5, 10, 15, 20, 25, 30, 35, 40}));
}

TEST(Plot, LeavesOutWhatIsNoNumber) {
  const std::string svg = PlotSvg({.title = "T",
                                   .x_label = "x",
                                   .y_label = "y",
                                   .stems = {{1, 2, "a"}, {std::nan(""), 1, "b"}},
                                   .logarithmic_x = false,
                                   .downwards = false});
  EXPECT_NE(svg.find(">a<"), std::string::npos);
  EXPECT_EQ(svg.find(">b<"), std::string::npos);
  EXPECT_EQ(svg.find("nan"), std::string::npos);
}

TEST(HtmlText, LetsNothingThroughThatIsMarkup) {
  EXPECT_EQ(HtmlText("<b>&\"x\""), "&lt;b&gt;&amp;&quot;x&quot;");
  EXPECT_EQ(HtmlText("a\x01µ\xFF"), "a\\x01µ\\xFF");
}

TEST(SplitWords, KeepsQuotedBlanks) {
  EXPECT_EQ(SplitWords("set  'a b' \"c d\" e\\ f # remark"),
            (std::vector<std::string>{"set", "a b", "c d", "e f"}));
  EXPECT_TRUE(SplitWords("  ").empty());
  EXPECT_THROW(SplitWords("get 'x"), UsageError);
}

TEST(PlanModes, TakesEachModeOnceAndBeginsWithTheCurrentOne) {
  const auto members = automation::kDriverClass.members;
  const auto plan = PlanModes(members, qkel4x::kelEPAT);
  EXPECT_EQ(plan.front(), qkel4x::kelEPAT);
  for (const automation::Member& member : members) {
    if (member.modes.Empty() || member.hidden) continue;
    EXPECT_TRUE(std::any_of(plan.begin(), plan.end(), [&](auto mode) { return member.modes.Has(mode); }))
        << member.name;
  }
  // Eight modes have members of their own; one more serves the crest factors and one the spectrum.
  EXPECT_EQ(plan.size(), 10U);
}

TEST(Base64, ReadsBackWhatItWrote) {
  EXPECT_EQ(workbench::EncodeBase64("Man"), "TWFu");
  EXPECT_EQ(workbench::EncodeBase64("Ma"), "TWE=");
  EXPECT_EQ(workbench::EncodeBase64("M"), "TQ==");
  for (const std::string& text : {std::string(), std::string("\0\xFF", 2), std::string("abcde")}) {
    EXPECT_EQ(workbench::DecodeBase64(workbench::EncodeBase64(text)), text);
  }
  for (const char* bad : {"TWF", "TW=u", "T===", "TWF\x01"})
    EXPECT_FALSE(workbench::DecodeBase64(bad)) << bad;
}

TEST(Trace, SaysWhichLineIsNone) {
  const auto refusal = [](std::string_view text) -> std::string {
    try {
      ParseTrace(text, "t");
    } catch (const UsageError& error) {
      return error.what();
    }
    return "accepted";
  };
  const std::string head = "{\"trace\":\"kel4x\",\"format\":1,\"command\":[\"get\"]}\n";
  EXPECT_EQ(refusal(head + "{\"direction\":\"sent\",\"text\":\"*IDN?\"}\n"), "accepted");
  EXPECT_EQ(refusal(""), "t: is empty");
  EXPECT_EQ(refusal("x\n"), "t:1: is no JSON object");
  EXPECT_EQ(refusal("{}\n"), "t:1: does not begin like a recording of kel4x");
  EXPECT_EQ(refusal(head + "{\"direction\":\"up\"}\n"),
            "t:2: \"direction\" must be opened, closed, sent, received or cleared");
  EXPECT_EQ(refusal(head + "{\"direction\":\"sent\",\"bytes\":\"?\"}\n"), "t:2: \"bytes\" is no base64 text");
}

}  // namespace
}  // namespace kel4x
