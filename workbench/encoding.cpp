#include "workbench/encoding.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace workbench {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Twelve bits are two characters: half as many look-ups for a block of 32 000 bytes as one by one.
constexpr auto kPairs = [] {
  std::array<std::array<char, 2>, 4096> pairs{};
  for (std::size_t i = 0; i < pairs.size(); ++i) pairs[i] = {kAlphabet[i >> 6U], kAlphabet[i & 0x3FU]};
  return pairs;
}();

void PutDigits(char* at, unsigned value, unsigned width) {
  for (unsigned i = width; i-- > 0; value /= 10) at[i] = static_cast<char>('0' + value % 10);
}

bool NeedsNoEscape(unsigned char byte) { return byte >= 0x20 && byte < 0x80 && byte != '"' && byte != '\\'; }

/// How many bytes the UTF-8 character at the start of `text` has; 0 where there is none.
std::size_t CharacterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(0);
  std::size_t length = 1;
  unsigned char least = 0x80;  // of the second byte, so that nothing is written longer than it need be
  unsigned char most = 0xBF;   // and no surrogate or number above U+10FFFF comes about
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first <= 0xDF) {
    length = 2;
  } else if (first >= 0xE0 && first <= 0xEF) {
    length = 3;
    if (first == 0xE0) least = 0xA0;
    if (first == 0xED) most = 0x9F;
  } else if (first >= 0xF0 && first <= 0xF4) {
    length = 4;
    if (first == 0xF0) least = 0x90;
    if (first == 0xF4) most = 0x8F;
  } else {
    return 0;
  }
  if (text.size() < length || byte(1) < least || byte(1) > most) return 0;
  for (std::size_t i = 2; i < length; ++i) {
    if (byte(i) < 0x80 || byte(i) > 0xBF) return 0;
  }
  return length;
}

}  // namespace

void TimeText::Append(std::string& out, std::chrono::system_clock::time_point time) {
  const auto second = std::chrono::floor<std::chrono::seconds>(time);
  if (second != second_) {
    second_ = second;
    const auto day = std::chrono::floor<std::chrono::days>(second);
    const std::chrono::year_month_day date(day);
    const auto of_day = static_cast<unsigned>((second - day).count());
    std::memcpy(text_.data(), "0000-00-00T00:00:00.", text_.size());
    PutDigits(text_.data(), static_cast<unsigned>(static_cast<int>(date.year())), 4);
    PutDigits(text_.data() + 5, static_cast<unsigned>(date.month()), 2);
    PutDigits(text_.data() + 8, static_cast<unsigned>(date.day()), 2);
    PutDigits(text_.data() + 11, of_day / 3600, 2);
    PutDigits(text_.data() + 14, of_day / 60 % 60, 2);
    PutDigits(text_.data() + 17, of_day % 60, 2);
  }
  const auto micros = std::chrono::duration_cast<std::chrono::microseconds>(time - second).count();
  std::array<char, 27> whole;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled at once
  std::memcpy(whole.data(), text_.data(), text_.size());
  PutDigits(whole.data() + text_.size(), static_cast<unsigned>(micros), 6);
  whole.back() = 'Z';
  out.append(whole.data(), whole.size());
}

void AppendTime(std::string& out, std::chrono::system_clock::time_point time) {
  TimeText().Append(out, time);
}

void AppendJsonText(std::string& out, std::string_view text) {
  out += '"';
  while (!text.empty()) {
    std::size_t plain = 0;
    while (plain < text.size() && NeedsNoEscape(static_cast<unsigned char>(text[plain]))) ++plain;
    out.append(text.data(), plain);
    text.remove_prefix(plain);
    if (text.empty()) break;
    const auto byte = static_cast<unsigned char>(text.front());
    std::size_t length = 1;
    if (byte == '"' || byte == '\\') {
      out += '\\';
      out += text.front();
    } else if (byte < 0x20) {
      static constexpr char kHex[] = "0123456789abcdef";
      out += "\\u00";
      out += kHex[byte >> 4U];
      out += kHex[byte & 0xFU];
    } else if (const std::size_t character = CharacterLength(text); character > 0) {
      length = character;
      out.append(text.data(), length);
    } else {
      out += "\xEF\xBF\xBD";
    }
    text.remove_prefix(length);
  }
  out += '"';
}

void AppendBase64(std::string& out, std::string_view bytes) {
  const std::size_t before = out.size();
  out.resize(before + (bytes.size() + 2) / 3 * 4);
  char* to = out.data() + before;
  const auto put = [&to](std::uint32_t group) {
    std::memcpy(to, kPairs[group >> 12U].data(), 2);
    std::memcpy(to + 2, kPairs[group & 0xFFFU].data(), 2);
    to += 4;
  };
  const auto byte = [&bytes](std::size_t i) { return std::uint32_t{static_cast<unsigned char>(bytes[i])}; };
  std::size_t at = 0;
  for (; at + 3 <= bytes.size(); at += 3) put(byte(at) << 16U | byte(at + 1) << 8U | byte(at + 2));
  const std::size_t rest = bytes.size() - at;
  if (rest == 0) return;
  put(byte(at) << 16U | (rest == 2 ? byte(at + 1) << 8U : 0U));
  for (std::size_t i = rest; i < 3; ++i) to[static_cast<std::ptrdiff_t>(i) - 3] = '=';
}

std::string EncodeBase64(std::string_view bytes) {
  std::string text;
  AppendBase64(text, bytes);
  return text;
}

std::optional<std::string> DecodeBase64(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  for (std::size_t at = 0; at < text.size(); at += 4) {
    std::uint32_t group = 0;
    std::size_t padding = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      const char c = text[at + i];
      const char* found = c == '\0' ? nullptr : std::strchr(kAlphabet, c);
      if (c == '=' && i >= 2 && at + 4 == text.size()) {
        ++padding;
      } else if (found == nullptr || padding > 0) {
        return std::nullopt;
      }
      group = group << 6U | (c == '=' ? 0U : static_cast<std::uint32_t>(found - kAlphabet));
    }
    for (std::size_t i = 0; i + padding < 3; ++i) bytes += static_cast<char>(group >> (16 - 8 * i) & 0xFFU);
  }
  return bytes;
}

}  // namespace workbench
