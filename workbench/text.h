// Texts for people: durations, counts and what came over a line, written so that every byte can be seen.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace workbench {

/// "0.25 s", "5 s": at most three decimals, none where they are zero.
std::string SecondsText(double seconds);

/// Appends `bytes` with everything outside printable ASCII, the backslash and the double quote escaped: "\n",
/// "\r", "\\", "\"", "\x00".
void AppendVisible(std::string& out, std::string_view bytes);

/// The same in double quotes; after `most` bytes the rest is given as a count.
std::string Quoted(std::string_view bytes, std::size_t most = 80);

/// "1 byte", "2 bytes".
std::string ByteCount(std::size_t count);

/// ASCII letters lowered, whatever the locale.
std::string Lower(std::string_view text);

/// Without the blanks at both ends.
std::string_view Trimmed(std::string_view text);

}  // namespace workbench
