#include "workbench/text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace workbench {

std::string SecondsText(double seconds) {
  std::array<char, 64> digits{};
  const auto written =
      std::to_chars(digits.data(), digits.data() + digits.size(), seconds, std::chars_format::fixed, 3);
  std::string text(digits.data(), written.ptr);
  if (text.find('.') != std::string::npos) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
  }
  return text + " s";
}

void AppendVisible(std::string& out, std::string_view bytes) {
  static constexpr std::string_view kHex = "0123456789abcdef";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      out += "\\n";
    } else if (c == '\r') {
      out += "\\r";
    } else if (c == '\\' || c == '"') {
      out += '\\';
      out += c;
    } else if (byte < 0x20 || byte > 0x7e) {
      out += "\\x";
      out += kHex[byte >> 4U];
      out += kHex[byte & 15U];
    } else {
      out += c;
    }
  }
}

std::string Quoted(std::string_view bytes, std::size_t most) {
  std::string text = "\"";
  AppendVisible(text, bytes.substr(0, most));
  text += '"';
  if (bytes.size() > most) text += " and " + ByteCount(bytes.size() - most) + " more";
  return text;
}

std::string ByteCount(std::size_t count) { return std::to_string(count) + (count == 1 ? " byte" : " bytes"); }

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return lower;
}

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace workbench
