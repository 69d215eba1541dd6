// Takes a reply apart: value text, status word and trailing remark.
#pragma once

#include <string>
#include <string_view>

namespace qkel4x {

/// A reply or text without valid status.
inline constexpr std::string_view kNoStatus = "---";

/// The last decoded reply, as the public properties ResponseString, Prefix and Postfix show it.
struct ReplyStatus {
  std::string response;  ///< the reply as received
  std::string prefix;    ///< "<", ">", "*", "---", "UNDER", "OVER", "NORF" or empty
  std::string postfix;   ///< the remark from its "(" on, trimmed

  /// Records a reply and returns its value text: without quotes, status word and remark, trimmed. The view
  /// lives until the next call. Raises nothing: a status word is reported through `prefix`.
  std::string_view Decode(std::string_view reply);
};

/// The text without a leading double quote, and then without a trailing one.
std::string_view WithoutQuotes(std::string_view text);

/// Calls `visit(position, piece)` for every piece of the text between separators; empty pieces count, and a
/// text without any separator is one piece. The pieces of an empty text are none.
template <class Visit>
void ForEachPiece(std::string_view text, char separator, Visit&& visit) {
  if (text.empty()) return;
  for (std::size_t position = 0;; ++position) {
    const std::size_t end = text.find(separator);
    visit(position, text.substr(0, end));
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + 1);
  }
}

/// The piece at a position counted from 0, or no text (a null view) where there are fewer.
inline std::string_view PieceAt(std::string_view text, char separator, std::size_t wanted) {
  std::string_view found;
  ForEachPiece(text, separator, [&](std::size_t position, std::string_view piece) {
    if (position == wanted) found = piece;
  });
  return found;
}

}  // namespace qkel4x
