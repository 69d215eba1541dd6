// The configuration file: reading through toml++, and storing one setting without touching the rest.
#include "configuration.h"

#include <cmath>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow"
#pragma GCC diagnostic ignored "-Wconversion"
#endif
#define TOML_EXCEPTIONS 0
#define TOML_HEADER_ONLY 1
#define TOML_ENABLE_FORMATTERS 0
#include <toml++/toml.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#include "exit_code.h"
#include "terminal.h"

namespace kel4x {
namespace {

[[noreturn]] void Refuse(const std::filesystem::path& path, const toml::source_region& where,
                         const std::string& reason) {
  throw UsageError(path.string() + ":" + std::to_string(where.begin.line) + ": " + reason);
}

std::string TextOf(const toml::node& node, const std::filesystem::path& path, std::string_view name) {
  if (const auto* text = node.as_string()) return text->get();
  if (const auto* number = node.as_integer()) return std::to_string(number->get());
  if (const auto* flag = node.as_boolean()) return flag->get() ? "Yes" : "No";
  Refuse(path, node.source(), std::string(name) + " must be a text, a whole number, true or false");
}

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  quoted += '"';
  return quoted;
}

std::string_view Trimmed(std::string_view text) {
  const auto begin = text.find_first_not_of(" \t\r");
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

// The key that a line of the file gives a value to, without its quotes; empty for any other line.
std::string_view KeyOf(std::string_view line) {
  line = Trimmed(line);
  if (line.empty() || line.front() == '#' || line.front() == '[') return {};
  if (line.front() == '"' || line.front() == '\'') {
    const auto end = line.find(line.front(), 1);
    return end == std::string_view::npos ? std::string_view{} : line.substr(1, end - 1);
  }
  return Trimmed(line.substr(0, line.find('=')));
}

std::string ReadText(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw UsageError(path.string() + ": cannot be read");
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

ConfigurationFile ParseConfiguration(std::string_view text, const std::filesystem::path& path) {
  const toml::parse_result parsed = toml::parse(text, path.string());
  if (!parsed) Refuse(path, parsed.error().source(), std::string(parsed.error().description()));

  ConfigurationFile file;
  file.path = path;
  for (const auto& [key, node] : parsed.table()) {
    const std::string_view name = key.str();
    if (name == "resource") {
      file.resource = TextOf(node, path, name);
    } else if (name == "timeout") {
      const auto seconds = node.value<double>();
      if (!seconds || !std::isfinite(*seconds) || *seconds <= 0) {
        Refuse(path, node.source(), "timeout must be a number of seconds above 0, as in timeout = 5");
      }
      file.timeout = seconds;
    } else if (name == "settings" && node.is_table()) {
      for (const auto& [setting, value] : *node.as_table()) {
        // A dotted name without quotes arrives as a table in a table: "RS232"."Baud Rate".
        if (const auto* group = value.as_table()) {
          for (const auto& [member, inner] : *group) {
            file.settings.emplace_back(std::string(setting.str()) + "." + std::string(member.str()),
                                       TextOf(inner, path, member.str()));
          }
        } else {
          file.settings.emplace_back(setting.str(), TextOf(value, path, setting.str()));
        }
      }
    } else if (name == "instruments" && node.is_table()) {
      for (const auto& [instrument, value] : *node.as_table()) {
        file.instruments.emplace(instrument.str(), TextOf(value, path, instrument.str()));
      }
    } else {
      Refuse(
          path, key.source(),
          std::string(name) + " is unknown here; known are resource, timeout, [settings] and [instruments]");
    }
  }
  return file;
}

ConfigurationFile ReadConfiguration(const std::filesystem::path& path) {
  return ParseConfiguration(ReadText(path), path);
}

std::filesystem::path DefaultConfigurationPath() {
  const std::filesystem::path folder = terminal::ConfigurationFolder();
  return folder.empty() ? folder : folder / "kel4x" / "kel4x.toml";
}

std::string WithSetting(std::string_view text, std::string_view name, std::string_view value) {
  std::string line = Quoted(name);
  line.append(" = ").append(Quoted(value)).append("\n");
  std::string result;
  bool in_settings = false;
  bool done = false;
  std::size_t end_of_table = std::string::npos;  // in result: behind the last line that belongs to [settings]
  while (!text.empty()) {
    const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
    const std::string_view old = text.substr(0, length);
    text.remove_prefix(length);
    const std::string_view bare = Trimmed(old.substr(0, old.find_last_not_of('\n') + 1));
    if (!bare.empty() && bare.front() == '[') in_settings = bare.starts_with("[settings]");
    if (in_settings && !done && KeyOf(bare) == name) {
      result += line;
      done = true;
    } else {
      result += old;
      if (!result.ends_with('\n')) result += '\n';
    }
    if (in_settings && !bare.empty()) end_of_table = result.size();
  }
  if (done) return result;
  if (end_of_table != std::string::npos) return result.insert(end_of_table, line);
  if (!result.empty()) result.append("\n");
  return result.append("[settings]\n").append(line);
}

void StoreSetting(const std::filesystem::path& path, std::string_view name, std::string_view value) {
  if (path.empty()) throw UsageError("no place for a configuration file is known: set HOME or give --config");
  std::error_code error;
  const std::string old = std::filesystem::exists(path, error) ? ReadText(path) : std::string();
  const std::string text = WithSetting(old, name, value);
  ParseConfiguration(text, path);  // never replace a file by one that cannot be read again

  std::filesystem::create_directories(path.parent_path(), error);
  std::filesystem::path fresh = path;
  fresh += ".new";
  {
    std::ofstream file(fresh, std::ios::binary | std::ios::trunc);
    file << text;
    if (!file.flush()) throw UsageError(fresh.string() + ": cannot be written");
  }
  std::filesystem::rename(fresh, path, error);
  if (error) throw UsageError(path.string() + ": " + error.message());
}

Sourced ChooseResource(const std::optional<std::string>& flag, const std::optional<std::string>& environment,
                       const ConfigurationFile& file) {
  Sourced chosen{"SIM", "default"};
  if (flag) {
    chosen = {*flag, "--resource"};
  } else if (environment) {
    chosen = {*environment, "KEL4X_RESOURCE"};
  } else if (file.resource) {
    chosen = {*file.resource, file.path.string()};
  }
  if (const auto named = file.instruments.find(chosen.value); named != file.instruments.end()) {
    chosen = {named->second, chosen.value + " in " + file.path.string()};
  }
  return chosen;
}

}  // namespace kel4x
