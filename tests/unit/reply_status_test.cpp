// The decoder of replies; readings see the same through the case files.
#include "driver/core/reply_status.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qkel4x {
namespace {

struct Decoded {
  const char* reply;
  const char* value;
  const char* prefix;
  const char* postfix;
};

class Decode : public testing::TestWithParam<Decoded> {};

TEST_P(Decode, TakesTheReplyApart) {
  ReplyStatus status{.response = "before", .prefix = "before", .postfix = "before"};
  EXPECT_EQ(status.Decode(GetParam().reply), GetParam().value);
  EXPECT_EQ(status.response, GetParam().reply);
  EXPECT_EQ(status.prefix, GetParam().prefix);
  EXPECT_EQ(status.postfix, GetParam().postfix);
}

INSTANTIATE_TEST_SUITE_P(
    Replies, Decode,
    testing::Values(Decoded{"\"12.5\"", "12.5", "", ""}, Decoded{"12.5", "12.5", "", ""},
                    Decoded{"UND-3.2", "-3.2", "UNDER", ""}, Decoded{"UNDER-3.2", "-3.2", "UNDER", ""},
                    Decoded{"<0.1", "0.1", "<", ""}, Decoded{">40", "40", ">", ""},
                    Decoded{"*5", "5", "*", ""}, Decoded{"-45.3 (dBm)", "-45.3", "", "(dBm)"},
                    Decoded{"", "", "---", ""}, Decoded{"---", "", "---", ""},
                    Decoded{"NORF", "F", "NORF", ""}, Decoded{"OVER", "", "OVER", ""},
                    Decoded{"OVER 7 (x) y ", "7", "OVER", "(x) y"}, Decoded{"\"\"", "", "---", ""},
                    Decoded{"\"", "", "---", ""}, Decoded{"a\"", "a", "", ""}, Decoded{"\"a", "a", "", ""},
                    Decoded{"\"\"a\"\"", "\"a\"", "", ""}, Decoded{"  ", "", "---", ""},
                    Decoded{"(x)", "", "---", "(x)"}, Decoded{"<", "", "<", ""}, Decoded{"<<", "<", "<", ""},
                    Decoded{"UNDUNDER", "UNDER", "UNDER", ""}, Decoded{"ON", "ON", "", ""}));

TEST(Pieces, CountEmptyOnesAndAnEmptyTextHasNone) {
  const auto pieces = [](std::string_view text) {
    std::vector<std::string> all;
    ForEachPiece(text, ',', [&](std::size_t, std::string_view piece) { all.emplace_back(piece); });
    return all;
  };
  EXPECT_EQ(pieces("a,,b,"), (std::vector<std::string>{"a", "", "b", ""}));
  EXPECT_EQ(pieces("a"), (std::vector<std::string>{"a"}));
  EXPECT_TRUE(pieces("").empty());
  EXPECT_EQ(PieceAt("a,b", ',', 1), "b");
  EXPECT_EQ(PieceAt("a,b", ',', 2).data(), nullptr);
  EXPECT_NE(PieceAt("a,", ',', 1).data(), nullptr);
}

}  // namespace
}  // namespace qkel4x
