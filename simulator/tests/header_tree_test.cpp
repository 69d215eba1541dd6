// Header matching: short and long forms, any letter case, nothing in between.
#include "simulator/header_tree.h"

#include <gtest/gtest.h>

namespace simulator {
namespace {

class HeaderTreeTest : public testing::Test {
 protected:
  HeaderTreeTest() {
    tree_.Add("SENSe:ATSC:MEASure", 1);
    tree_.Add("SENSe:ATSC:EQUalizer", 2);
    tree_.Add("SENSe:ATSC:EQUalizer:MODE", 3);
    tree_.Add("READ:ATSC:AMPL_PHAS_GD:VALue", 4);
  }
  int Find(std::string_view header) const { return tree_.Find(header, HeaderTree::kRoot).command; }

  HeaderTree tree_;
};

TEST_F(HeaderTreeTest, ShortAndLongFormsMatchInAnyLetterCaseAndMix) {
  EXPECT_EQ(Find("SENS:ATSC:MEAS"), 1);
  EXPECT_EQ(Find("SENSE:ATSC:MEASURE"), 1);
  EXPECT_EQ(Find("sense:Atsc:mEAS"), 1);
  EXPECT_EQ(Find("SENS:ATSC:MEASURE"), 1);
}

TEST_F(HeaderTreeTest, FormsBetweenShortAndLongDoNotMatch) {
  EXPECT_EQ(Find("SEN:ATSC:MEAS"), HeaderTree::kNoCommand);
  EXPECT_EQ(Find("SENS:ATSC:MEASU"), HeaderTree::kNoCommand);
  EXPECT_EQ(Find("SENS:ATSC:MEASURED"), HeaderTree::kNoCommand);
}

TEST_F(HeaderTreeTest, ANodeMayBeACommandAndAPath) {
  EXPECT_EQ(Find("SENS:ATSC:EQU"), 2);
  EXPECT_EQ(Find("SENS:ATSC:EQU:MODE"), 3);
  EXPECT_EQ(Find("SENS:ATSC"), HeaderTree::kNoCommand);
}

TEST_F(HeaderTreeTest, UnderscoresBelongToTheWord) { EXPECT_EQ(Find("READ:ATSC:AMPL_PHAS_GD:VALUE"), 4); }

TEST_F(HeaderTreeTest, EmptyNodesNeverMatch) {
  EXPECT_EQ(Find(""), HeaderTree::kNoCommand);
  EXPECT_EQ(Find(":"), HeaderTree::kNoCommand);
  EXPECT_EQ(Find("SENS::MEAS"), HeaderTree::kNoCommand);
  EXPECT_EQ(Find("SENS:ATSC:MEAS:"), HeaderTree::kNoCommand);
}

TEST_F(HeaderTreeTest, TheNextHeaderMayStartAtThePathOfTheLast) {
  const auto first = tree_.Find("SENS:ATSC:MEAS", HeaderTree::kRoot);
  EXPECT_EQ(tree_.Find("EQU", first.path).command, 2);
}

}  // namespace
}  // namespace simulator
