// The command line of kel4x.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace kel4x {

/// What was asked for: flags as they were given, before the environment and the configuration file are looked
/// at.
struct Arguments {
  std::string verb;
  std::vector<std::string> words;  ///< the positional arguments of the verb

  // Every verb.
  std::optional<std::string> resource;
  std::optional<std::string> config;
  std::optional<double> timeout;      ///< seconds
  std::vector<std::string> settings;  ///< NAME=VALUE of the driver, this run only
  std::filesystem::path trace_file;
  bool json = false;
  bool trace = false;
  bool simulate_host = false;
  bool virtual_time = false;

  // survey, watch
  std::optional<double> center;       ///< Hz
  std::optional<double> pilot;        ///< Hz
  std::optional<double> symbol_rate;  ///< symbols per second
  std::string report;
  std::string csv;
  bool csv_lines = false;
  double interval = 1.0;  ///< seconds
  int count = 0;          ///< readings of watch; 0: until interrupted

  bool discard = false;  ///< write no screen shot; set while replaying, not by a flag

  std::vector<std::string> command;  ///< of replay: what to run in the place of the recorded command line

  // members
  bool all = false;
  bool names = false;

  // simulate
  std::string address = "127.0.0.1";
  int port = 5025;
  std::string pty;
  bool no_tcp = false;
  std::string firmware = "5.10";
  int options = 49;
  double carrier_to_noise = 34.0;
  double level = -43.2;
  double settle = 1.0;
  double time_scale = 1.0;
  unsigned seed = 1;
};

/// Reads a command line, without the name of the program. Help and version are printed and give nothing.
/// Throws a UsageError.
std::optional<Arguments> ParseArguments(const std::vector<std::string>& line);

/// The verbs with one sentence each, and the long flags of each verb; for completion.
struct VerbSummary {
  std::string name;
  std::string sentence;
  std::vector<std::string> flags;
};
std::vector<VerbSummary> SummariseVerbs();

}  // namespace kel4x
