// The command line: verbs, flags, help.
#include "arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>

#include "exit_code.h"
#include "terminal.h"
#include "version.h"

namespace kel4x {
namespace {

constexpr char kEveryVerb[] = "Every verb";

constexpr char kFooter[] = R"(
Resources: TCPIP::192.168.0.40::5025::SOCKET   TCPIP::[fe80::1]::5025::SOCKET
           ASRL::/dev/ttyUSB0::INSTR           ASRL1::INSTR
           GPIB0::6::INSTR                     SIM (the embedded simulated instrument)
A flag counts before the environment (KEL4X_RESOURCE), that before the configuration
file ($XDG_CONFIG_HOME/kel4x/kel4x.toml), that before the default (SIM).

Exit codes: 0 done, 1 the driver refused, 2 usage, 3 no link, 130 interrupted.

Examples:
  kel4x --resource TCPIP::192.168.0.40::5025::SOCKET get MeasureVsbMerRmsDb
  kel4x set MeasureMode kelNORM
  kel4x survey --center 575e6 --report acceptance.html
  kel4x VERB --help)";

// The flags that every verb takes, before or after it.
void AddEveryVerb(CLI::App& app, Arguments& into) {
  app.add_option("--resource", into.resource,
                 "The instrument, as a resource string or a name of [instruments]")
      ->type_name("RESOURCE")
      ->group(kEveryVerb);
  app.add_option("--timeout", into.timeout, "Seconds that one transfer may take (default 5)")
      ->type_name("S")
      ->check(CLI::PositiveNumber)
      ->group(kEveryVerb);
  app.add_option("--setting", into.settings,
                 "A setting of the driver for this run, as \"RS232.Baud Rate=9600\"")
      ->type_name("NAME=VALUE")
      ->allow_extra_args(false)
      ->group(kEveryVerb);
  app.add_option("--config", into.config, "Configuration file instead of the user's")
      ->type_name("FILE")
      ->group(kEveryVerb);
  app.add_flag("--json", into.json, "Results as JSON, one object a line")->group(kEveryVerb);
  app.add_flag("--trace", into.trace, "Show the traffic with the instrument on standard error")
      ->group(kEveryVerb);
  app.add_option("--trace-file", into.trace_file,
                 "Write the traffic to a file that kel4x replay takes; %p in its name is the process")
      ->type_name("FILE")
      ->group(kEveryVerb);
  app.add_flag("--simulate-host", into.simulate_host, "Set the host's simulation flag: nothing is decoded")
      ->group(kEveryVerb);
  app.add_flag("--virtual-time", into.virtual_time,
               "Waits of the host take no time: for simulated instruments that settle at once")
      ->group(kEveryVerb);
}

void AddTuning(CLI::App& verb, Arguments& into) {
  verb.add_option("--center", into.center, "Tune to this centre frequency first")->type_name("HZ");
  verb.add_option("--pilot", into.pilot, "Tune to this pilot frequency first")->type_name("HZ");
  verb.add_option("--symbol-rate", into.symbol_rate, "Set this symbol rate first")->type_name("SYMB/S");
}

void AddReadingVerbs(CLI::App& app, Arguments& into) {
  CLI::App* get = app.add_subcommand("get", "Read properties");
  get->add_option("NAME", into.words, "Members; GhostPatternAtten(1) for one echo, without a number for all")
      ->required();
  get->footer(
      "\nExamples:\n  kel4x get MeasureVsbMerRmsDb MeasureRfLevel\n  kel4x get GhostPatternAtten --json\n"
      "  kel4x get MeasureVsbMerRmsDb --trace");

  CLI::App* set = app.add_subcommand("set", "Write a property");
  set->add_option("NAME and VALUE", into.words, "Member and value; an enumeration by name or number")
      ->required()
      ->expected(2);
  set->footer(
      "\nExamples:\n  kel4x set MeasureMode kelNORM\n  kel4x set RfCenterFrequency 575e6\n"
      "  kel4x set SetupTime 14:03:09");

  CLI::App* call = app.add_subcommand("call", "Call a method");
  call->add_option("NAME and ARGUMENTS", into.words, "Method, and its arguments")->required();
  call->footer("\nExamples:\n  kel4x call MeasureResetBer\n  kel4x call Reset");

  CLI::App* members = app.add_subcommand("members", "List the members of the driver, or describe one");
  members->add_option("NAME", into.words, "A member")->expected(0, 1);
  members->add_flag("--all", into.all, "Hidden members too");
  members->add_flag("--names", into.names, "Names only");
  members->footer("\nExamples:\n  kel4x members\n  kel4x members MeasureMode");

  CLI::App* settings = app.add_subcommand("settings", "Show the driver's settings, or store one");
  settings
      ->add_option("NAME[=VALUE]", into.words, "A setting; with a value it goes to the configuration file")
      ->expected(0, 1);
  settings->footer(
      "\nExamples:\n  kel4x settings\n  kel4x settings \"RS232.Baud Rate\"\n"
      "  kel4x settings \"RS232.Baud Rate=9600\"");

  CLI::App* survey = app.add_subcommand("survey", "Read everything that the instrument can tell");
  AddTuning(*survey, into);
  survey->add_option("--report", into.report, "Write a report, one HTML page for the browser and the printer")
      ->type_name("FILE");
  survey->add_option("--csv", into.csv, "Write the table as CSV; - for standard output")->type_name("FILE");
  survey->footer(
      "\nExamples:\n  kel4x survey --report survey.html\n"
      "  kel4x survey --center 575e6 --csv survey.csv\n  kel4x survey --json | jq .name");

  CLI::App* screenshot = app.add_subcommand("screenshot", "Save the instrument's screen");
  screenshot->add_option("FILE", into.words, "A name that ends in .png or .pcx")->required()->expected(1);
  screenshot->footer("\nExample:\n  kel4x screenshot screen.png");

  CLI::App* statistics = app.add_subcommand("statistics", "Read the alarm statistics");
  statistics->footer("\nExample:\n  kel4x statistics --json");

  CLI::App* watch = app.add_subcommand("watch", "Read properties again and again");
  watch->add_option("NAME", into.words, "Members to watch")->required();
  watch->add_option("--interval", into.interval, "Seconds from one reading to the next")
      ->type_name("S")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  watch->add_option("--count", into.count, "Stop after so many readings")
      ->type_name("N")
      ->check(CLI::PositiveNumber);
  watch->add_flag("--csv", into.csv_lines,
                  "CSV instead of one JSON object a line, where there is no terminal");
  watch->footer(
      "\nExamples:\n  kel4x watch MeasureVsbMerRmsDb MeasureRfLevel --interval 2\n"
      "  kel4x watch MeasureRfLevel --csv > level.csv");
}

void AddOtherVerbs(CLI::App& app, Arguments& into) {
  CLI::App* shell = app.add_subcommand("shell", "Read commands and keep the instrument on line between them");
  shell->footer("\nExample:\n  printf 'set MeasureMode kelPAR\\nget MeasureVsbEvmPeak\\n' | kel4x shell");

  CLI::App* simulate = app.add_subcommand("simulate", "Be the instrument, for other programs");
  simulate->add_option("--address", into.address, "Address to listen on")->capture_default_str();
  simulate->add_option("--port", into.port, "TCP port; 0 takes a free one")
      ->check(CLI::Range(0, 65535))
      ->capture_default_str();
  simulate->add_option("--pty", into.pty, "Also be a serial device, reached by this link")->type_name("PATH");
  simulate->add_flag("--no-tcp", into.no_tcp, "No TCP, the serial device only");
  simulate->add_option("--firmware", into.firmware, "Firmware version")->capture_default_str();
  simulate->add_option("--options", into.options, "Mask of the installed options")->capture_default_str();
  simulate->add_option("--carrier-to-noise", into.carrier_to_noise, "C/N of the signal")
      ->type_name("DB")
      ->capture_default_str();
  simulate->add_option("--level", into.level, "Level of the signal")->type_name("DBM")->capture_default_str();
  simulate
      ->add_option("--settle", into.settle, "Multiplies the times that modes take to settle; 0 for at once")
      ->type_name("FACTOR")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  simulate
      ->add_option("--time-scale", into.time_scale, "Seconds of the instrument in a second of the machine")
      ->type_name("FACTOR")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  simulate->add_option("--seed", into.seed, "Seed of the measurement noise")->capture_default_str();
  simulate->footer(
      "\nExamples:\n  kel4x simulate\n  kel4x simulate --port 0 --json\n"
      "  kel4x simulate --no-tcp --pty /tmp/kel40");

  CLI::App* doctor = app.add_subcommand("doctor", "Try each layer of the link and say which one fails");
  doctor->footer("\nExample:\n  kel4x doctor --resource TCPIP::192.168.0.40::5025::SOCKET");

  CLI::App* list = app.add_subcommand("list", "List ports and configured instruments of this machine");
  list->footer("\nExample:\n  kel4x list --json");

  CLI::App* replay = app.add_subcommand("replay", "Run a recording again and report the first difference");
  replay
      ->add_option("FILE", into.words,
                   "A file that --trace-file wrote; a verb behind -- runs in the place of its own")
      ->required()
      ->expected(1)
      ->type_name("FILE [-- VERB ARGUMENTS]");
  replay->footer(
      "\nExamples:\n  kel4x survey --trace-file survey.ndjson && kel4x replay survey.ndjson\n"
      "  kel4x replay host.ndjson -- get MeasureRfLevel");

  CLI::App* completion = app.add_subcommand("completion", "Print the completion script of a shell");
  completion->add_option("SHELL", into.words, "bash, zsh or fish")
      ->required()
      ->expected(1)
      ->check(CLI::IsMember({"bash", "zsh", "fish"}));
  completion->footer(
      "\nExamples:\n  source <(kel4x completion bash)\n"
      "  kel4x completion fish > ~/.config/fish/completions/kel4x.fish");
}

void Build(CLI::App& app, Arguments& into) {
  app.name("kel4x");
  app.description("Measures with a KEL model 40/43 TV test receiver.");
  app.footer(kFooter);
  app.set_version_flag("--version", std::string("kel4x ") + kVersion);
  app.require_subcommand(1);
  app.fallthrough();
  app.get_formatter()->column_width(34);
  AddEveryVerb(app, into);
  AddReadingVerbs(app, into);
  AddOtherVerbs(app, into);
}

}  // namespace

std::optional<Arguments> ParseArguments(const std::vector<std::string>& line) {
  // What stands behind "--" on a line of replay is a line of its own.
  const auto dashes = std::ranges::find(line, "--");
  if (dashes != line.end() && std::find(line.begin(), dashes, "replay") != dashes) {
    auto replay = ParseArguments({line.begin(), dashes});
    if (!replay || replay->verb == "replay") {
      if (replay) replay->command.assign(dashes + 1, line.end());
      return replay;
    }
  }
  Arguments arguments;
  CLI::App app;
  Build(app, arguments);
  std::vector<std::string> reversed(line.rbegin(), line.rend());
  try {
    app.parse(reversed);
  } catch (const CLI::Success& asked) {
    // Help and version; the formatter's text goes to standard output.
    const auto* version = dynamic_cast<const CLI::CallForVersion*>(&asked);
    const auto verbs = app.get_subcommands();
    const CLI::App* about = verbs.empty() ? &app : verbs.front();
    terminal::WriteOutput(version != nullptr ? std::string(version->what()) + "\n"
                                             : about->help(about == &app ? "" : "kel4x"));
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    throw UsageError(error.what());
  }
  arguments.verb = app.get_subcommands().front()->get_name();
  return arguments;
}

std::vector<VerbSummary> SummariseVerbs() {
  Arguments unused;
  CLI::App app;
  Build(app, unused);
  const auto flags_of = [](const CLI::App& from, std::vector<std::string> flags) {
    for (const CLI::Option* option : from.get_options()) {
      for (const std::string& name : option->get_lnames()) flags.push_back("--" + name);
    }
    return flags;
  };
  const std::vector<std::string> common = flags_of(app, {});
  std::vector<VerbSummary> verbs;
  for (const CLI::App* verb : app.get_subcommands({})) {
    verbs.push_back({verb->get_name(), verb->get_description(), flags_of(*verb, {})});
    for (const std::string& flag : common) {
      if (flag != "--version" && flag != "--help") verbs.back().flags.push_back(flag);
    }
  }
  return verbs;
}

}  // namespace kel4x
