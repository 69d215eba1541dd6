// The member table against the headers, the published enumerations and the ids that were given out.
#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "automation/call.h"
#include "automation/enumeration_table.h"
#include "automation/member_table.h"
#include "automation/tests/stub_port.h"
#include "host/automation_error.h"

namespace automation {
namespace {

std::string FileText(const std::string& path) {
  std::ifstream file(std::string(QKEL4X_SOURCE_DIR "/") + path);
  EXPECT_TRUE(file) << path;
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

struct Declared {
  std::string result;
  std::string name;
  std::vector<std::string> argument_types;
  std::vector<std::string> argument_names;
};

/// The member functions that a class declares as public, constructors and what is deleted left out.
std::vector<Declared> PublicMembers(const std::string& header, const std::string& class_name) {
  std::string text = FileText(header);
  text = std::regex_replace(text, std::regex("//[^\n]*"), "");
  const std::size_t begin = text.find("public:", text.find("class QKEL4X_EXPORT " + class_name));
  const std::size_t end = text.find("private:", begin);
  text = text.substr(begin + 7, (end == std::string::npos ? text.find("\n};", begin) : end) - begin - 7);
  text = std::regex_replace(text, std::regex("\\{[^{}]*\\}"), ";");
  text = std::regex_replace(text, std::regex("\\s+"), " ");
  const std::regex declaration(
      R"((?:virtual )?([\w:<>& ]+[ >&])(\w+)\(([^)]*)\)( const)?( override)?( = 0)?\s*$)");
  std::vector<Declared> members;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line, ';');) {
    std::smatch parts;
    if (line.find('~') != std::string::npos || line.find("delete") != std::string::npos) continue;
    if (!std::regex_search(line, parts, declaration)) {
      EXPECT_TRUE(
          std::all_of(line.begin(), line.end(), [](unsigned char c) { return std::isspace(c) != 0; }) ||
          line.find(" " + class_name + "()") != std::string::npos)
          << "not understood: " << line;
      continue;
    }
    Declared member{std::regex_replace(parts[1].str(), std::regex("^ +| +$"), ""), parts[2], {}, {}};
    std::istringstream arguments(parts[3]);
    for (std::string argument; std::getline(arguments, argument, ',');) {
      const std::size_t gap = argument.find_last_of(' ');
      member.argument_types.push_back(std::regex_replace(argument.substr(0, gap), std::regex("^ +| +$"), ""));
      member.argument_names.push_back(argument.substr(gap + 1));
    }
    members.push_back(member);
  }
  return members;
}

/// The published name of a C++ type.
std::string PublishedName(const std::string& type) {
  static const std::map<std::string, std::string> names{
      {"void", "nothing"},
      {"bool", "boolean"},
      {"double", "64-bit float"},
      {"std::int16_t", "16-bit integer"},
      {"const std::int16_t&", "16-bit integer"},
      {"std::int32_t", "32-bit integer"},
      {"std::string", "text"},
      {"const std::string&", "text"},
      {"std::string_view", "text"},
      {"DateTime", "date-time"},
      {"std::vector<std::uint8_t>&", "array of bytes"},
      {"std::shared_ptr<clsStatistics>", "clsStatistics"},
      {"std::shared_ptr<host::ParameterNode>", "ParameterNode"},
      {"std::shared_ptr<ParameterNode>", "ParameterNode"},
  };
  const auto name = names.find(type);
  return name == names.end() ? type : name->second;
}

/// Holds a class's rows against its header: every member, in order, with its kind and its types.
void ExpectSame(const Class& published, const std::vector<Declared>& declared) {
  std::vector<std::string> order;
  for (const Declared& function : declared) {
    const std::string& name = function.name;
    const Member* member = published.Find(name);
    ASSERT_NE(member, nullptr) << "add a row for " << published.name << "." << name
                               << " to automation/member_table.cpp, with the next free id";
    ASSERT_EQ(member->name, name);
    if (std::find(order.begin(), order.end(), name) == order.end()) order.push_back(name);
    const bool readable = std::any_of(declared.begin(), declared.end(), [&](const Declared& other) {
      return other.name == name && other.result != "void";
    });
    if (function.result == "void" && readable) {
      EXPECT_TRUE(member->Writable()) << name;
      ASSERT_EQ(function.argument_types.size(), 1U) << name;
      EXPECT_EQ(TypeName(member->access.type), PublishedName(function.argument_types[0])) << name;
      continue;
    }
    const bool writable = std::count_if(declared.begin(), declared.end(),
                                        [&](const Declared& other) { return other.name == name; }) == 2;
    EXPECT_EQ(member->Writable(), writable) << name;
    EXPECT_EQ(member->access.kind, function.result == "void"         ? Kind::kMethod
                                   : function.argument_types.empty() ? Kind::kProperty
                                                                     : Kind::kIndexedProperty)
        << name;
    EXPECT_EQ(TypeName(member->access.type), PublishedName(function.result)) << name;
    ASSERT_EQ(member->Parameters().size(), function.argument_types.size()) << name;
    for (std::size_t i = 0; i < function.argument_types.size(); ++i) {
      EXPECT_EQ(TypeName(member->Parameters()[i]), PublishedName(function.argument_types[i])) << name;
      EXPECT_EQ(member->arguments[i], function.argument_names[i]) << name;
      EXPECT_EQ(member->Parameters()[i].by_reference, function.argument_types[i].back() == '&') << name;
    }
  }
  ASSERT_EQ(order.size(), published.members.size()) << published.name << " has rows that no header declares";
  for (std::size_t i = 0; i < order.size(); ++i) EXPECT_EQ(published.members[i].name, order[i]);
}

std::vector<Declared> Only(std::vector<Declared> members, bool host_setup) {
  std::erase_if(members, [host_setup](const Declared& member) {
    const bool setup = member.name == "Name" || member.name == "Settings" || member.name == "OnLine";
    return setup != host_setup;
  });
  return members;
}

TEST(MemberTable, HoldsTheDriverClass) {
  const std::vector<Declared> declared = PublicMembers("driver/clsKEL4x.h", "clsKEL4x");
  ASSERT_GT(declared.size(), 100U);
  ExpectSame(kDriverClass, Only(declared, false));
  ExpectSame(kSetupInterface, Only(declared, true));
}

TEST(MemberTable, HoldsTheStatisticsClass) {
  ExpectSame(kStatisticsClass, PublicMembers("driver/statistics/clsStatistics.h", "clsStatistics"));
}

TEST(MemberTable, HoldsTheInterfaces) {
  const auto names = [](const Class& published) {
    std::vector<std::string> list;
    for (const Member& member : published.members) list.emplace_back(member.name);
    return list;
  };
  EXPECT_EQ(names(kIdentifyInterface),
            (std::vector<std::string>{"Manufacturer", "ModelNumber", "SerialNumber", "FirmwareVersion",
                                      "InstalledHardware"}));
  EXPECT_EQ(names(kRegisterInterface), (std::vector<std::string>{"GetClassDescription", "GetClassName"}));
  EXPECT_EQ(names(kRegisterClass),
            (std::vector<std::string>{"IRegister_GetClassDescription", "IRegister_GetClassName"}));
  for (const Member& member : kRegisterClass.members) EXPECT_EQ(member.access.kind, Kind::kMethod);
}

TEST(MemberTable, FindsEveryMemberInAnyLetterCaseAndById) {
  for (const Class* published : AllClasses()) {
    for (const Member& member : published->members) {
      std::string upper(member.name);
      std::string lower(member.name);
      for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
      for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      EXPECT_EQ(published->Find(upper), &member);
      EXPECT_EQ(published->Find(lower), &member);
      EXPECT_EQ(published->Find(member.id), &member);
      EXPECT_EQ(published->Find(lower + "x"), nullptr);
    }
    EXPECT_EQ(published->Find(0), nullptr);
  }
}

TEST(MemberTable, KeepsEveryIdThatWasGivenOut) {
  std::istringstream given(FileText("automation/tests/dispatch_ids.txt"));
  std::string now;
  for (const Class* published : AllClasses()) {
    for (const Member& member : published->members) {
      now += std::string(published->name) + "." + std::string(member.name) + " " + std::to_string(member.id) +
             "\n";
    }
  }
  std::string listed;
  for (std::string line; std::getline(given, line);) {
    if (line.empty() || line[0] == '#') continue;
    listed += line + "\n";
    EXPECT_NE(now.find(line + "\n"), std::string::npos)
        << "clients rely on \"" << line << "\": an id is never changed or used again";
  }
  std::istringstream rows(now);
  for (std::string line; std::getline(rows, line);) {
    EXPECT_NE(listed.find(line + "\n"), std::string::npos)
        << "add \"" << line << "\" to automation/tests/dispatch_ids.txt";
  }
}

TEST(MemberTable, SaysSomethingAboutEveryMember) {
  for (const Class* published : AllClasses()) {
    for (const Member& member : published->members) {
      EXPECT_FALSE(member.doc.empty()) << member.name;
      EXPECT_EQ(member.doc.back(), '.') << member.name;
      if (member.Writable() && member.access.type.enumeration != nullptr) {
        EXPECT_FALSE(member.range.empty()) << member.name;
      }
      EXPECT_EQ(member.hidden, member.name == "MeasureNoiseGenerator");
    }
  }
}

// The gates are the driver's; the table only tells of them. Every mode is tried on every member.
TEST(MemberTable, TellsTheMeasurementModesThatTheDriverAllows) {
  automation_tests::OnLineDriver driver;
  driver.wire.replies["SENSE:ATSC:EQU?"] = "ON";
  driver.wire.replies["SENSE:ATSC:SYMBOLRATE:VALUE?"] = "10762237.76";
  driver.wire.replies["SENS:ATSC:SPEC:FREQ:STAR?"] = "-4.48";
  driver.wire.replies["SENS:ATSC:SPEC:FREQ:STOP?"] = "4.48";
  driver.wire.replies["*IDN?"] = "HALVERN&TOSKE,KEL 40,100123,5.05";
  const auto refused = [](const auto& work) {
    try {
      work();
    } catch (const host::AutomationError& error) {
      return error.Code() == 2016 && error.Description() == "Wrong measurement mode selected";
    }
    return false;
  };
  for (std::int32_t mode = 0; mode <= 19; ++mode) {
    const auto measure_mode = static_cast<qkel4x::KelMeasureModes>(mode);
    for (const Member& member : kDriverClass.members) {
      if (member.access.kind == Kind::kIndexedProperty || member.name == "Mode" ||
          member.name == "MeasureMode" || member.name == "Reset") {
        continue;
      }
      driver->MeasureMode(measure_mode);
      const bool allowed = member.modes.Empty() || member.modes.Has(measure_mode);
      EXPECT_EQ(refused([&] { Call(*driver, member); }), !allowed) << member.name << " in mode " << mode;
      if (!member.Writable()) continue;
      EXPECT_EQ(refused([&] { Put(*driver, member, 1); }), !allowed)
          << "write of " << member.name << " in mode " << mode;
    }
  }
}

// A row that reached another member than it names would fail with that member's source.
TEST(MemberTable, ReachesTheMemberThatItNames) {
  automation_tests::OnLineDriver driver;
  const auto source = [](const auto& work) -> std::string {
    try {
      work();
    } catch (const host::AutomationError& error) {
      return error.Source();
    }
    return "no failure";
  };
  // What these do first, or do alone, is another member's.
  const std::map<std::string, std::string, std::less<>> read_by{
      {"Manufacturer", "IDriverIdentify_Manufacturer"},
      {"ModelNumber", "IDriverIdentify_ModelNumber"},
      {"SerialNumber", "IDriverIdentify_SerialNumber"},
      {"FirmwareVersion", "IDriverIdentify_FirmwareVersion"},
      {"InstalledHardware", "IDriverIdentify_InstalledHardware"},
      {"InputAttenuation_Receiver", "InputPort"},
      {"InputAttenuation", "InputPort"},
      {"InputAttenuationValue_Receiver", "InputPort"},
      {"InputAttenuationValue", "InputPort"},
      {"InputAttenuationMode_Receiver", "InputPort"},
      {"InputAttenuation_Demod", "InputPort"},
      {"InputAttenuationValue_Demod", "IDriverIdentify_FirmwareVersion"},
      {"MeasureVsbPvPilotValue", "SpecFuncEqualizer"},
      {"MeasureVsbPvAmplErr", "SpecFuncEqualizer"},
      {"MeasureVsbPvSigPilotRatio", "SpecFuncEqualizer"},
      {"MeasureNoiseGenerator", "MeasureCdAddNoiseCn"},
      {"MeasureTdGhostPattern", "SpecFuncEqualizer"},
  };
  const std::map<std::string, std::string, std::less<>> written_by{
      {"InputAttenuation_Receiver", "InputPort"},
      {"InputAttenuation", "InputPort"},
      {"InputAttenuationMode_Receiver", "InputPort"},
      {"InputAttenuation_Demod", "InputPort"},
      {"MeasureCdAddNoiseCn", "StatusSymbolRate"},
      {"MeasureNoiseGenerator", "StatusSymbolRate"},
      {"MeasureFdSpectrumStartFreq", "MeasureFdSpectrumStopFreq"},
      {"MeasureFdSpectrumStopFreq", "MeasureFdSpectrumStartFreq"},
      {"MeasureTdEchoPatRange", "IDriverIdentify_FirmwareVersion"},
  };
  const auto expected = [](const auto& others, std::string_view name) {
    const auto other = others.find(name);
    return "clsKEL4x." + (other == others.end() ? std::string(name) : other->second);
  };
  for (const Member& member : kDriverClass.members) {
    if (member.access.kind == Kind::kIndexedProperty || member.name == "Prefix" || member.name == "Postfix" ||
        member.name == "ResponseString") {
      continue;
    }
    driver.wire.broken = false;
    for (std::int32_t mode = 0; mode <= 19; ++mode) {
      const auto measure_mode = static_cast<qkel4x::KelMeasureModes>(mode);
      if (!member.modes.Has(measure_mode)) continue;
      driver->MeasureMode(measure_mode);
      break;
    }
    if (member.name == "MeasureMode") driver->Mode(qkel4x::kelATSC);  // forgets the mode
    driver.wire.broken = true;
    EXPECT_EQ(source([&] { Call(*driver, member); }), expected(read_by, member.name));
    if (member.Writable()) {
      const Value value = member.name == "Mode" ? Value(14) : Value(1);
      EXPECT_EQ(source([&] { Put(*driver, member, value); }), expected(written_by, member.name));
    }
  }
}

struct Published {
  std::string name;
  std::vector<std::pair<std::string, std::int32_t>> members;
};

const std::vector<Published> kPublished = {
    {"ErrorConstants",
     {{"qkelInvalidPropertyValue", 380},
      {"qkelArgumentNotOptional", 449},
      {"qkelQueryFailed", 2004},
      {"qkelCommandFailed", 2005},
      {"qkelBadMeasureMode", 2016},
      {"qkelBadInputPort", 2018},
      {"qkelFuntionNotAvailable", 2019},
      {"qkelBadEqualiserMode", 2023},
      {"qkelBadRemoteControlPort", 2024}}},
    {"KelModes",
     {{"kelNYQI", 1},
      {"kelNYQM", 2},
      {"kelNYQN", 3},
      {"kelQAM", 4},
      {"kelQAMA", 5},
      {"kelJ83A", 6},
      {"kelJ83B", 7},
      {"kelJ83C", 8},
      {"kelMPEG", 9},
      {"kelM83A", 10},
      {"kelM83B", 11},
      {"kelM83C", 12},
      {"kelDVBT", 13},
      {"kelATSC", 14},
      {"kelNTSC", 15}}},
    {"KelMeasureModes",
     {{"kelUndefined", -1}, {"kelNORM", 0},  {"kelPAR", 1},   {"kelCCDF", 2}, {"kelSP_2", 3}, {"kelCDI", 4},
      {"kelSP_1", 5},       {"kelSP_3", 6},  {"kelAPH", 7},   {"kelAGD", 8},  {"kelPOL", 9},  {"kelADIS", 10},
      {"kelEPAT", 11},      {"kelEYEM", 12}, {"kelHIST", 13}, {"kelHII", 14}, {"kelHIQ", 15}, {"kelPV", 16},
      {"kelAJIT", 17},      {"kelPJIT", 18}, {"kelCENV", 19}}},
    {"KelInputPorts",
     {{"kelReceiver", 2},
      {"kelDemod", 4},
      {"kelIF", 128},
      {"kelReceiver50ohm", 50},
      {"kelReceiver75ohm", 75}}},
    {"KelInputAttenuations",
     {{"kelAttenAuto", 255},
      {"kelAtten00", 0},
      {"kelAtten05", 5},
      {"kelAtten10", 10},
      {"kelAtten15", 15},
      {"kelAtten20", 20},
      {"kelAtten25", 25},
      {"kelAtten30", 30},
      {"kelAtten35", 35},
      {"kelAtten40", 40},
      {"kelAtten45", 45},
      {"kelAtten50", 50},
      {"kelAtten55", 55}}},
    {"KelRxAttenModes",
     {{"kelRxAttenLoNoise", 0},
      {"kelRxAttenNormal", 1},
      {"kelRxAttenLoDistn", 2},
      {"kelRxAttenLowestDistn", 3}}},
    {"KelDemodAttenuations",
     {{"kelDemodAttenAuto", 1},
      {"kelDemodManualLowAtten", 2},
      {"kelDemodManualLowPreamp", 3},
      {"kelDemodManualHigh", 4}}},
    {"KelDemodAttenVals",
     {{"kelDAVManualLowPreamp", 0},
      {"kelDAVManualLowAtten", 1},
      {"kelDAVManualHigh", 2},
      {"kelDAVAutoLowPreamp", 10},
      {"kelDAVAutoLowAtten", 11},
      {"kelDAVAutoHigh", 12}}},
    {"KelSpecFuncLoopAgcs", {{"kelLasSlow", 0}, {"kelLasFast", 1}}},
    {"KelSpecFuncLoopBandwidths", {{"kelLbsLo", 0}, {"kelLbsMed", 1}, {"kelLbsHi", 2}}},
    {"KelSpecFuncMinBerIntegrations",
     {{"kelBerEXT", 0}, {"kelBer1", 1}, {"kelBer10", 10}, {"kelBer100", 100}, {"kelBer1000", 1000}}},
    {"KelSpecFuncEqualizers", {{"kelEqualizerOff", 0}, {"kelEqualizerOn", 1}, {"kelEqualizerFreeze", 2}}},
    {"KelSpecFuncEqualizerModes", {{"kelEquModeComp", 0}, {"kelEquModeReal", 1}}},
    {"KelSpecFuncEqualizerAdaptations", {{"kelEquAdapSlow", 0}, {"kelEquAdapMed", 1}, {"kelEquAdapFast", 2}}},
    {"KelSpecFuncFreqRfFixed", {{"kelRfFixedCenter", 0}, {"kelRfFixedPilot", 1}}},
    {"KelSpecFuncFreqSidePos", {{"kelSidePosNorm", 0}, {"kelSidePosInv", 1}}},
    {"KelStatusSawFilterBWs",
     {{"kelSawOFF", 0}, {"kelSaw2MHz", 2}, {"kelSaw6MHz", 6}, {"kelSaw7MHz", 7}, {"kelSaw8MHz", 8}}},
    {"KelReferenceSources", {{"kelInternal", 0}, {"kelExternal", 1}}},
    {"KelSetupLevelUnits",
     {{"kelDBMV", 0}, {"kelDBPW", 1}, {"kelDBUW", 2}, {"kelDBM", 3}, {"kelDBUV", 4}, {"kelMV", 5}}},
    {"KelSwitchStates", {{"kelOff", 0}, {"kelOn", 1}}},
    {"KelStatusRejFilterNotchWidths", {{"kel100Hz", 0}, {"kel1kHz", 1}, {"kel10kHz", 2}, {"kel100kHz", 3}}},
    {"KelFdSpectrumDetectors", {{"kelMIN", 0}, {"kelRMS", 1}, {"kelMAX", 2}}},
    {"KelEchoPatternRanges",
     {{"kelFULL", 0}, {"kelRG1", 1}, {"kelRG2", 2}, {"kelRG3", 3}, {"kelZOOM1", 4}, {"kelZOOM2", 5}}},
    {"KelEchoPatternScales", {{"kelMicroSec", 0}, {"kelKilometres", 1}, {"kelMiles", 2}}},
    {"KelFdDetectors", {{"kelFdRMS", 0}, {"kelFdPEAK", 1}}},
    {"KelEmIntervals",
     {{"kel20sec", 0},    {"kel40sec", 1},    {"kel1min", 2},    {"kel2min", 3},     {"kel4min", 4},
      {"kel10min", 5},    {"kel20min", 6},    {"kel40min", 7},   {"kel1hrs", 8},     {"kel2hrs", 9},
      {"kel4hrs", 10},    {"kel12hrs", 11},   {"kel1days", 12},  {"kel2days", 13},   {"kel4days", 14},
      {"kel10days", 15},  {"kel20days", 16},  {"kel50days", 17}, {"kel100days", 18}, {"kel200days", 19},
      {"kel500days", 20}, {"kel1000days", 21}}},
    {"KelFdJitterApplications", {{"kelFdJitterCW", 0}, {"kelFdJitterNoise", 1}}},
    {"KelScreenShotModes", {{"kelCapture", 1}, {"kelTransfer", 2}, {"kelIncludeHeader", 4}}},
};

TEST(EnumerationTable, HoldsThePublishedNamesAndValues) {
  ASSERT_EQ(kEnumerations.size(), kPublished.size());
  for (const Published& published : kPublished) {
    const Enumeration* enumeration = FindEnumeration(published.name);
    ASSERT_NE(enumeration, nullptr) << published.name;
    EXPECT_EQ(enumeration->name, published.name);
    std::vector<std::pair<std::string, std::int32_t>> members;
    for (const Enumerator& enumerator : enumeration->enumerators) {
      members.emplace_back(enumerator.name, enumerator.value);
    }
    EXPECT_EQ(members, published.members) << published.name;
  }
}

}  // namespace
}  // namespace automation
