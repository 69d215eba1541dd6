// Option lists: texts such as "Yes=-1,No=0" that pair what people see with what programs store.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qkel4x {

/// The display name of the entry at a position counted from 0: the text before its first "=", untrimmed.
/// Fails with 380 where there is no such entry.
std::string GetDisplayValue(std::string_view strList, std::int16_t intIndex);

/// The value of the entry at a position counted from 0: the text after its first "=", untrimmed; an entry
/// without "=" is its own value. Fails with 380 where there is no such entry.
std::string GetSelectedValue(std::string_view strList, std::int16_t intIndex);

}  // namespace qkel4x
