#include "workbench/parameters/option_list.h"

#include "workbench/text.h"

namespace workbench {

std::vector<Option> SplitOptions(std::string_view list) {
  std::vector<Option> options;
  // A comma at the end has an empty entry behind it, as it has for the driver.
  for (bool more = !list.empty(); more;) {
    const std::size_t comma = list.find(',');
    const std::string_view entry = list.substr(0, comma);
    const std::size_t equals = entry.find('=');
    options.push_back(
        {entry.substr(0, equals), equals == std::string_view::npos ? entry : entry.substr(equals + 1)});
    more = comma != std::string_view::npos;
    if (more) list.remove_prefix(comma + 1);
  }
  return options;
}

std::optional<Option> FindOption(const std::vector<Option>& options, std::string_view text) {
  for (const Option& option : options) {
    if (option.display == text) return option;
  }
  for (const Option& option : options) {
    if (option.value == text) return option;
  }
  const std::string_view bare = Trimmed(text);
  for (const Option& option : options) {
    if (Trimmed(option.display) == bare) return option;
  }
  for (const Option& option : options) {
    if (Trimmed(option.value) == bare) return option;
  }
  return std::nullopt;
}

std::string ListedOptions(const std::vector<Option>& options) {
  std::string text;
  for (const Option& option : options) {
    if (!text.empty()) text += ", ";
    text += Trimmed(option.display);
    if (option.value != option.display) text.append(" (").append(option.value).append(")");
  }
  return text.empty() ? "nothing" : text;
}

}  // namespace workbench
