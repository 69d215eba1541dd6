// Where an option comes from, and the configuration file.
#include "apps/kel4x/configuration.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "apps/kel4x/exit_code.h"

namespace kel4x {
namespace {

ConfigurationFile Parse(std::string_view text) { return ParseConfiguration(text, "/etc/kel4x.toml"); }

std::string Refusal(std::string_view text) {
  try {
    Parse(text);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "accepted";
}

TEST(ChooseResource, TakesFlagBeforeEnvironmentBeforeFileBeforeDefault) {
  const ConfigurationFile file = Parse("resource = \"GPIB0::6::INSTR\"");
  EXPECT_EQ(ChooseResource("ASRL1::INSTR", "ASRL2::INSTR", file).value, "ASRL1::INSTR");
  EXPECT_EQ(ChooseResource("ASRL1::INSTR", "ASRL2::INSTR", file).origin, "--resource");
  EXPECT_EQ(ChooseResource({}, "ASRL2::INSTR", file).value, "ASRL2::INSTR");
  EXPECT_EQ(ChooseResource({}, "ASRL2::INSTR", file).origin, "KEL4X_RESOURCE");
  EXPECT_EQ(ChooseResource({}, {}, file).value, "GPIB0::6::INSTR");
  EXPECT_EQ(ChooseResource({}, {}, file).origin, "/etc/kel4x.toml");
  EXPECT_EQ(ChooseResource({}, {}, {}).value, "SIM");
  EXPECT_EQ(ChooseResource({}, {}, {}).origin, "default");
}

TEST(ChooseResource, LooksUpTheNameOfAnInstrument) {
  const ConfigurationFile file = Parse("[instruments]\nbench = \"TCPIP::kel40::5025::SOCKET\"");
  EXPECT_EQ(ChooseResource("bench", {}, file).value, "TCPIP::kel40::5025::SOCKET");
  EXPECT_EQ(ChooseResource("bank", {}, file).value, "bank");
}

TEST(Configuration, ReadsEverythingThatItMayHold) {
  const ConfigurationFile file = Parse(
      "resource = \"bench\"\ntimeout = 7.5\n[settings]\n\"RS232.Baud Rate\" = 9600\nRS232.Parity = \"EVEN\"\n"
      "\"Log Messages\" = false\n[instruments]\nbench = \"SIM\"\n");
  EXPECT_EQ(file.resource, "bench");
  EXPECT_EQ(file.timeout, 7.5);
  const std::vector<std::pair<std::string, std::string>> settings{
      {"Log Messages", "No"}, {"RS232.Parity", "EVEN"}, {"RS232.Baud Rate", "9600"}};
  EXPECT_EQ(file.settings.size(), settings.size());
  for (const auto& setting : settings) {
    EXPECT_NE(std::find(file.settings.begin(), file.settings.end(), setting), file.settings.end())
        << setting.first;
  }
  EXPECT_EQ(file.instruments.at("bench"), "SIM");
}

TEST(Configuration, NamesFileAndLineOfWhatIsWrong) {
  EXPECT_EQ(Refusal("\nresorce = \"SIM\"\n"),
            "/etc/kel4x.toml:2: resorce is unknown here; known are resource, timeout, [settings] and "
            "[instruments]");
  EXPECT_EQ(Refusal("timeout = 0"),
            "/etc/kel4x.toml:1: timeout must be a number of seconds above 0, as in timeout = 5");
  EXPECT_TRUE(Refusal("timeout = ").starts_with("/etc/kel4x.toml:1: "));
}

TEST(WithSetting, AddsReplacesAndLeavesTheRestAlone) {
  EXPECT_EQ(WithSetting("", "RS232.Baud Rate", "9600"), "[settings]\n\"RS232.Baud Rate\" = \"9600\"\n");
  EXPECT_EQ(WithSetting("resource = \"SIM\" # mine\n", "Log Messages", "No"),
            "resource = \"SIM\" # mine\n\n[settings]\n\"Log Messages\" = \"No\"\n");
  EXPECT_EQ(WithSetting("[settings]\n# speed\n\"RS232.Baud Rate\" = 1200\n\n[instruments]\na = \"SIM\"\n",
                        "RS232.Baud Rate", "9600"),
            "[settings]\n# speed\n\"RS232.Baud Rate\" = \"9600\"\n\n[instruments]\na = \"SIM\"\n");
  EXPECT_EQ(WithSetting("[settings]\nA = \"1\"\n\n[instruments]\nb = \"SIM\"", "C", "a\"b\\c"),
            "[settings]\nA = \"1\"\n\"C\" = \"a\\\"b\\\\c\"\n\n[instruments]\nb = \"SIM\"\n");
}

}  // namespace
}  // namespace kel4x
