// Texts for programs: times, JSON texts and base64, as traces and the message log have them.
#pragma once

#include <array>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace workbench {

/// Writes times as "2026-03-01T12:00:00.123456Z". What does not change within a second is made once for it.
class TimeText {
 public:
  void Append(std::string& out, std::chrono::system_clock::time_point time);

 private:
  std::chrono::sys_seconds second_ = std::chrono::sys_seconds::min();
  std::array<char, 20> text_{};  // "2026-03-01T12:00:00."
};

/// Appends one such time.
void AppendTime(std::string& out, std::chrono::system_clock::time_point time);

/// Appends a JSON text in its quotes. Bytes that are no UTF-8 become U+FFFD, each of them.
void AppendJsonText(std::string& out, std::string_view text);

void AppendBase64(std::string& out, std::string_view bytes);
std::string EncodeBase64(std::string_view bytes);
/// Nothing where the text is no base64.
std::optional<std::string> DecodeBase64(std::string_view text);

}  // namespace workbench
