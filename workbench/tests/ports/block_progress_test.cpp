#include "workbench/ports/block_progress.h"

#include <gtest/gtest.h>

#include <string_view>

namespace workbench {
namespace {

using State = BlockProgress::State;

State After(std::string_view bytes, std::size_t piece) {
  BlockProgress block;
  block.Begin();
  while (!bytes.empty()) {
    const std::string_view part = bytes.substr(0, piece);
    block.Consume({reinterpret_cast<const std::uint8_t*>(part.data()), part.size()});
    bytes.remove_prefix(part.size());
  }
  return block.Now();
}

TEST(BlockProgressTest, FollowsABlockInPiecesOfAnySize) {
  for (const std::size_t piece : {1U, 2U, 3U, 100U}) {
    EXPECT_EQ(After("", piece), State::kHeader);
    EXPECT_EQ(After("#", piece), State::kHeader);
    EXPECT_EQ(After("#2", piece), State::kHeader);
    EXPECT_EQ(After("#21", piece), State::kHeader);
    EXPECT_EQ(After("#210", piece), State::kData);
    EXPECT_EQ(After("#210123456789", piece), State::kData);
    EXPECT_EQ(After("#2100123456789", piece), State::kComplete);
    EXPECT_EQ(After("#2100123456789\n", piece), State::kDamaged);
    EXPECT_EQ(After("#10", piece), State::kComplete);
  }
}

TEST(BlockProgressTest, TellsATextFromADamagedHeader) {
  EXPECT_EQ(After("-410,\"Query INTERRUPTED\"", 1), State::kText);
  EXPECT_EQ(After("#0abc", 1), State::kDamaged);
  EXPECT_EQ(After("#x", 1), State::kDamaged);
  EXPECT_EQ(After("#3 12", 1), State::kDamaged);
}

TEST(BlockProgressTest, CountsWhatIsToCome) {
  BlockProgress block;
  block.Begin();
  EXPECT_TRUE(block.AtStart());
  const std::string_view bytes = "#9000032767abc";
  block.Consume({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  EXPECT_FALSE(block.AtStart());
  EXPECT_EQ(block.Remaining(), 32764U);
}

}  // namespace
}  // namespace workbench
