// Published names count in any letter case.
#pragma once

#include <cstddef>
#include <string_view>

namespace automation {

constexpr char Lower(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A')) : character;
}

constexpr bool SameName(std::string_view left, std::string_view right) {
  if (left.size() != right.size()) return false;
  for (std::size_t i = 0; i < left.size(); ++i) {
    if (Lower(left[i]) != Lower(right[i])) return false;
  }
  return true;
}

}  // namespace automation
