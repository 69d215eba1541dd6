#include "automation/enumeration_table.h"

#include "automation/names.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"
#include "host/automation_error.h"

namespace automation {
namespace {

std::optional<std::int32_t> OneValue(const Enumeration& enumeration, std::string_view name) {
  for (const Enumerator& enumerator : enumeration.enumerators) {
    if (SameName(enumerator.name, name)) return enumerator.value;
  }
  return {};
}

}  // namespace

const Enumeration* FindEnumeration(std::string_view name) {
  for (const Enumeration* enumeration : kEnumerations) {
    if (SameName(enumeration->name, name)) return enumeration;
  }
  return nullptr;
}

std::optional<std::int32_t> EnumeratorValue(const Enumeration& enumeration, std::string_view name) {
  if (!enumeration.flags) return OneValue(enumeration, qkel4x::TrimBlanks(name));
  std::int32_t sum = 0;
  for (;;) {
    const std::size_t end = name.find_first_of("+|");
    const auto value = OneValue(enumeration, qkel4x::TrimBlanks(name.substr(0, end)));
    if (!value) return {};
    sum |= *value;
    if (end == std::string_view::npos) return sum;
    name.remove_prefix(end + 1);
  }
}

std::int32_t ParseEnumerator(const Enumeration& enumeration, std::string_view text) {
  if (const auto value = EnumeratorValue(enumeration, text)) return *value;
  if (const auto number = qkel4x::WholeNumberText(text)) return qkel4x::RoundToInt32(*number);
  std::string names;
  for (const Enumerator& enumerator : enumeration.enumerators) {
    names += qkel4x::Join(names.empty() ? "" : ", ", enumerator.name);
  }
  throw host::AutomationError(
      host::kTypeMismatch, "QKEL4x",
      qkel4x::Join("\"", text, "\" is no ", enumeration.name, "; there are ", names, ", or their numbers"));
}

std::string EnumeratorName(const Enumeration& enumeration, std::int32_t value) {
  for (const Enumerator& enumerator : enumeration.enumerators) {
    if (enumerator.value == value) return std::string(enumerator.name);
  }
  if (!enumeration.flags) return {};
  std::string names;
  for (const Enumerator& enumerator : enumeration.enumerators) {
    if ((value & enumerator.value) == 0) continue;
    names += qkel4x::Join(names.empty() ? "" : "+", enumerator.name);
    value &= ~enumerator.value;
  }
  return value == 0 ? names : std::string();
}

}  // namespace automation
