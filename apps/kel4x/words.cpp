// Splitting of lines into words.
#include "words.h"

#include "exit_code.h"

namespace kel4x {

std::vector<std::string> SplitWords(std::string_view line) {
  std::vector<std::string> words;
  std::string word;
  bool in_word = false;
  char quote = '\0';
  for (std::size_t at = 0; at < line.size(); ++at) {
    const char c = line[at];
    if (c == '\\' && quote != '\'' && at + 1 < line.size()) {
      word += line[++at];
      in_word = true;
    } else if (quote != '\0') {
      if (c == quote) {
        quote = '\0';
      } else {
        word += c;
      }
    } else if (c == '"' || c == '\'') {
      quote = c;
      in_word = true;
    } else if (c == ' ' || c == '\t' || c == '\r') {
      if (in_word) words.push_back(std::move(word));
      word.clear();
      in_word = false;
    } else if (c == '#' && !in_word) {
      break;
    } else {
      word += c;
      in_word = true;
    }
  }
  if (quote != '\0') throw UsageError(std::string("the quote ") + quote + " is not closed");
  if (in_word) words.push_back(std::move(word));
  return words;
}

}  // namespace kel4x
