// Splitting a line into words, as a shell does.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kel4x {

/// The words of a line; single and double quotes keep blanks together, a backslash takes the next character
/// as it is, # starts a remark. Throws a UsageError for a quote that is not closed.
std::vector<std::string> SplitWords(std::string_view line);

}  // namespace kel4x
