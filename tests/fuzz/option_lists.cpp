// Option lists, in the driver and in the settings of the workbench. First line: the list; the rest: a value.
#include <string>

#include "driver/settings/option_list.h"
#include "host/automation_error.h"
#include "host/host.h"
#include "tests/fuzz/input.h"
#include "workbench/parameters/option_list.h"
#include "workbench/parameters/parameter.h"
#include "workbench/workbench.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static workbench::Workbench bench({.virtual_clock = true});
  host::SetCurrentHost(&bench);
  std::string_view rest = fuzz::Text(data, size);
  const std::string list(fuzz::TakeLine(rest));
  const auto options = workbench::SplitOptions(list);
  for (std::size_t i = 0; i < options.size() && i < 1000; ++i) {
    fuzz::Require(qkel4x::GetDisplayValue(list, static_cast<std::int16_t>(i)) == options[i].display,
                  "driver and host agree on the display name of an entry");
    fuzz::Require(qkel4x::GetSelectedValue(list, static_cast<std::int16_t>(i)) == options[i].value,
                  "driver and host agree on the value of an entry");
  }
  try {
    qkel4x::GetDisplayValue(list,
                            static_cast<std::int16_t>(options.size() < 30'000 ? options.size() : 30'000));
    fuzz::Require(options.size() >= 30'000, "there is no entry past the last");
  } catch (const host::AutomationError&) {
  }
  for (const int codes : {1, 3}) {
    workbench::Parameter node;
    node.Initialise("Node", codes, 2, list, "");
    try {
      node.SetValue(std::string(rest), -1, -1);
      static_cast<void>(workbench::ValueText(node.GetValue(-1, -1)));
    } catch (const host::AutomationError& error) {
      fuzz::Require(!error.Description().empty(), "a refused value is explained");
    }
  }
  return 0;
}
