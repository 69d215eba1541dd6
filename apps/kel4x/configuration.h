// Where each option comes from: flag, environment, configuration file, default, in this order.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kel4x {

/// What a configuration file holds. All of it is optional.
struct ConfigurationFile {
  std::filesystem::path path;  ///< empty where there is no file
  std::optional<std::string> resource;
  std::optional<double> timeout;                                ///< seconds
  std::vector<std::pair<std::string, std::string>> settings;    ///< of the driver: path and value
  std::map<std::string, std::string, std::less<>> instruments;  ///< name and resource string
};

/// Reads a configuration file. Throws a UsageError with file, line and reason on what is no such file.
ConfigurationFile ReadConfiguration(const std::filesystem::path& path);

/// The same out of a text; `path` is for messages.
ConfigurationFile ParseConfiguration(std::string_view text, const std::filesystem::path& path);

/// The file that is read when none is named: kel4x/kel4x.toml in the user's configuration folder.
std::filesystem::path DefaultConfigurationPath();

/// The text of a configuration file with one driver setting added or replaced; everything else, comments
/// included, stays as it is.
std::string WithSetting(std::string_view text, std::string_view name, std::string_view value);

/// Stores one driver setting in the file, which is created where it does not exist. Throws a UsageError.
void StoreSetting(const std::filesystem::path& path, std::string_view name, std::string_view value);

/// A value and where it came from, for messages.
struct Sourced {
  std::string value;
  std::string origin;
};

/// The resource string that counts: flag, then KEL4X_RESOURCE, then the file, then SIM. A name under
/// [instruments] stands for its resource string.
Sourced ChooseResource(const std::optional<std::string>& flag, const std::optional<std::string>& environment,
                       const ConfigurationFile& file);

}  // namespace kel4x
