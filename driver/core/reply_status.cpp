#include "driver/core/reply_status.h"

#include "driver/core/number_text.h"

namespace qkel4x {
namespace {

struct StatusWord {
  std::string_view starts_with;
  std::string_view prefix;
  std::size_t removed;
};

// Tested in this order; the first match wins.
constexpr StatusWord kStatusWords[] =
    {
        {"<", "<", 1},       {">", ">", 1},         {"*", "*", 1},
        {"---", "---", 3},   {"UNDER", "UNDER", 5}, {"UND", "UNDER", 3},
        {"OVER", "OVER", 4}, {"NORF", "NORF", 3},  // IRREGULAR: the F stays in the value text
};

}  // namespace

std::string_view WithoutQuotes(std::string_view text) {
  if (text.starts_with('"')) text.remove_prefix(1);
  if (text.ends_with('"')) text.remove_suffix(1);
  return text;
}

std::string_view ReplyStatus::Decode(std::string_view reply) {
  prefix.clear();
  postfix.clear();
  response.assign(reply);
  std::string_view rest = WithoutQuotes(response);
  for (const StatusWord& word : kStatusWords) {
    if (rest.starts_with(word.starts_with)) {
      prefix = word.prefix;
      rest.remove_prefix(word.removed);
      break;
    }
  }
  if (const std::size_t remark = rest.find('('); remark != std::string_view::npos) {
    postfix = TrimBlanks(rest.substr(remark));
    rest = rest.substr(0, remark);
  }
  rest = TrimBlanks(rest);
  if (prefix.empty() && rest.empty()) prefix = kNoStatus;
  return rest;
}

}  // namespace qkel4x
