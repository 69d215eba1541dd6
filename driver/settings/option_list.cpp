#include "driver/settings/option_list.h"

#include "driver/core/number_text.h"
#include "driver/core/raise.h"
#include "driver/core/reply_status.h"

namespace qkel4x {
namespace {

std::string_view EntryAt(std::string_view list, std::int16_t index, std::string_view source) {
  std::string_view entry;
  if (index >= 0) entry = PieceAt(list, ',', static_cast<std::size_t>(index));
  if (entry.data() == nullptr) {
    Raise(qkelInvalidPropertyValue, source,
          Join("Invalid Property Value (intIndex = ", DecimalText(index), ")"));
  }
  return entry;
}

}  // namespace

std::string GetDisplayValue(std::string_view strList, std::int16_t intIndex) {
  const std::string_view entry = EntryAt(strList, intIndex, "modParameterUtilities.GetDisplayValue");
  return std::string(entry.substr(0, entry.find('=')));
}

std::string GetSelectedValue(std::string_view strList, std::int16_t intIndex) {
  const std::string_view entry = EntryAt(strList, intIndex, "modParameterUtilities.GetSelectedValue");
  return std::string(
      entry.substr(entry.find('=') + 1));  // npos + 1 is 0: an entry without "=" is its own value
}

}  // namespace qkel4x
