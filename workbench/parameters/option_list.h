// Reads option lists: "display=value,display=value".
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// One entry of an option list. An entry without "=" is its own display name and its own value.
struct Option {
  std::string_view display;
  std::string_view value;
};

/// The entries in their order, nothing trimmed; none for an empty list. They point into `list`.
std::vector<Option> SplitOptions(std::string_view list);

/// The entry that `text` names: by its display name, else by its value, exactly; failing that, the same with
/// the blanks around both left aside.
std::optional<Option> FindOption(const std::vector<Option>& options, std::string_view text);

/// For messages: "EVEN (E), NO (N)"; the value half only where it differs from the display name.
std::string ListedOptions(const std::vector<Option>& options);

}  // namespace workbench
