// The parameter library: codes, both halves of a choice, paths, and errors that say what is allowed.
#include "workbench/parameters/parameter.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "host/automation_error.h"

namespace workbench {
namespace {

using host::Value;

std::string Text(host::ParameterNode& node) { return std::get<std::string>(node.GetValue(-1, -1)); }

template <typename Call>
host::AutomationError ErrorOf(Call call) {
  try {
    call();
  } catch (const host::AutomationError& error) {
    return error;
  }
  ADD_FAILURE() << "no error was raised";
  return {0, "", ""};
}

class ParameterTest : public testing::Test {
 protected:
  ParameterTest() { root_->Initialise("General", 4, 3, "", ""); }

  std::shared_ptr<host::ParameterNode> AddChoice(const char* name, const char* list) {
    return root_->AddChild(name, 1, 2, list, "");
  }

  std::shared_ptr<Parameter> root_ = std::make_shared<Parameter>();
};

TEST_F(ParameterTest, ChoiceTakesDisplayNameOrValueAndReadsAsValue) {
  const auto node = AddChoice("Log Messages", "Yes=-1,No=0");
  node->SetValue(std::string("Yes"), -1, -1);
  EXPECT_EQ(Text(*node), "-1");
  node->SetValue(std::string("0"), -1, -1);
  EXPECT_EQ(Text(*node), "0");
  node->SetValue(true, -1, -1);
  EXPECT_EQ(Text(*node), "-1");
}

TEST_F(ParameterTest, ChoiceTakesNumbers) {
  const auto node = AddChoice("Comm Port", "COM1=1,COM6=6,COM500000=500000");
  node->SetValue(std::int16_t{6}, -1, -1);
  EXPECT_EQ(Text(*node), "6");
  node->SetValue(1.0, -1, -1);
  EXPECT_EQ(Text(*node), "1");
  node->SetValue(500000.0, -1, -1);
  EXPECT_EQ(Text(*node), "500000");
}

TEST_F(ParameterTest, DisplayNameWithABlankIsAcceptedWithAndWithoutIt) {
  const auto node =
      AddChoice("Remote Control", "GPIB=QPort.clsGPIB, RS232=QPort.clsComm, TCP/IP=QPort.clsEthernet");
  node->SetValue(std::string("RS232"), -1, -1);
  EXPECT_EQ(Text(*node), "QPort.clsComm");
  node->SetValue(std::string(" TCP/IP"), -1, -1);
  EXPECT_EQ(Text(*node), "QPort.clsEthernet");
  node->SetValue(std::string("QPort.clsGPIB"), -1, -1);
  EXPECT_EQ(Text(*node), "QPort.clsGPIB");
}

TEST_F(ParameterTest, DisplayNameGoesBeforeValue) {
  const auto node = AddChoice("Swapped", "1=2,2=1");
  node->SetValue(std::string("1"), -1, -1);
  EXPECT_EQ(Text(*node), "2");
}

TEST_F(ParameterTest, ChoiceOutsideTheListIsRefusedWithTheList) {
  const auto node = AddChoice("Parity", "EVEN=E,NO=N,7=7");
  node->SetValue(std::string("NO"), -1, -1);
  const auto error = ErrorOf([&] { node->SetValue(std::string("MARK"), -1, -1); });
  EXPECT_EQ(error.Number(), 380);
  EXPECT_EQ(error.Description(),
            "Setting \"Parity\" does not offer \"MARK\": allowed are EVEN (E), NO (N), 7");
  EXPECT_EQ(Text(*node), "N");
}

TEST_F(ParameterTest, ReplacedOptionListKeepsTheValue) {
  const auto node = AddChoice("Comm Port", "COM7=7");
  node->SetValue(std::string("7"), -1, -1);
  node->OptionList("COM1=1,COM3=3");
  EXPECT_EQ(node->OptionList(), "COM1=1,COM3=3");
  EXPECT_EQ(Text(*node), "7");
  node->SetValue(std::string("COM3"), -1, -1);
  EXPECT_EQ(Text(*node), "3");
}

TEST_F(ParameterTest, SeveralChoicesAreJoinedInTheOrderOfTheList) {
  const auto node = root_->AddChild("Options", 3, 2, "KEL-B1=KEL-B1,KEL-B2=KEL-B2,KEL-B3=KEL-B3", "");
  EXPECT_EQ(Text(*node), "");
  node->SetValue(std::string("KEL-B3,KEL-B1"), -1, -1);
  EXPECT_EQ(Text(*node), "KEL-B1,KEL-B3");
  EXPECT_EQ(ErrorOf([&] { node->SetValue(std::string("KEL-B1,KEL-B9"), -1, -1); }).Number(), 380);
  node->SetValue(std::string(), -1, -1);
  EXPECT_EQ(Text(*node), "");
}

TEST_F(ParameterTest, PlainNodeKeepsTheTypeItWasGiven) {
  const auto node = root_->AddChild("Primary Address", 1, 4, "", "");
  node->SetValue(std::int16_t{6}, -1, -1);
  EXPECT_EQ(node->GetValue(-1, -1), Value(std::int16_t{6}));
  node->SetValue(2.5, -1, -1);
  EXPECT_EQ(node->GetValue(-1, -1), Value(2.5));
  node->SetValue(std::string("KEL"), -1, -1);
  EXPECT_EQ(node->GetValue(-1, -1), Value(std::string("KEL")));
}

TEST_F(ParameterTest, RangedNodeSaysWhatIsAllowed) {
  Parameter node;
  node.Initialise("Primary Address", 1, 4, "", "");
  node.WholeNumbers(0, 30);
  node.SetValue(std::string("30"), -1, -1);
  EXPECT_EQ(node.GetValue(-1, -1), Value(std::string("30")));
  for (const Value& bad :
       {Value(std::int16_t{31}), Value(std::int32_t{-1}), Value(1.5), Value(std::string("six"))}) {
    const auto error = ErrorOf([&] { node.SetValue(bad, -1, -1); });
    EXPECT_EQ(error.Number(), 380);
    EXPECT_NE(error.Description().find("whole numbers from 0 to 30"), std::string::npos);
  }
}

TEST_F(ParameterTest, ReadOnlyNodeRefusesAndSaysWhatItIs) {
  const auto node = root_->AddChild("Type", 1, 4, "", "");
  node->SetValue(std::string("KEL"), -1, -1);
  node->ReadOnly(true);
  const auto error = ErrorOf([&] { node->SetValue(std::string("X"), -1, -1); });
  EXPECT_EQ(error.Number(), 383);
  EXPECT_EQ(error.Description(), "Setting \"Type\" is read-only and stays \"KEL\"");
  EXPECT_EQ(Text(*node), "KEL");
}

TEST_F(ParameterTest, PathsReachDescendantsAndAnExactNameGoesFirst) {
  Parameter port;
  const auto tree = std::make_shared<Parameter>();
  tree->Initialise("RS232", 4, 3, "", "");
  tree->AddChild("Baud Rate", 1, 4, "", "")->SetValue(std::string("19200"), -1, -1);
  root_->AddTree(tree, -1, -1);
  EXPECT_EQ(Text(*root_->Item("RS232.Baud Rate")), "19200");
  root_->AddChild("RS232.Baud Rate", 1, 4, "", "")->SetValue(std::string("exact"), -1, -1);
  EXPECT_EQ(Text(*root_->Item("RS232.Baud Rate")), "exact");
  EXPECT_EQ(Text(*root_->Item("RS232")->Item("Baud Rate")), "19200");
}

TEST_F(ParameterTest, UnknownItemListsWhatThereIs) {
  root_->AddChild("Type", 1, 4, "", "");
  root_->AddChild("Options", 3, 2, "", "");
  const auto error = ErrorOf([&] { root_->Item("Typ"); });
  EXPECT_EQ(error.Number(), 9);
  EXPECT_EQ(error.Description(),
            "There is no setting \"Typ\" in \"General\"; there is \"Type\", \"Options\"");
  EXPECT_EQ(ErrorOf([&] { root_->Child(2); }).Number(), 9);
}

TEST_F(ParameterTest, AddedTreeIsACopyWithItsRangeAndReadOnlyFlags) {
  const auto tree = std::make_shared<Parameter>();
  tree->Initialise("GPIB", 4, 3, "", "");
  const auto address = tree->AddChild("Primary Address", 1, 4, "", "");
  static_cast<Parameter&>(*address).WholeNumbers(0, 30);
  address->SetValue(std::int16_t{6}, -1, -1);
  tree->AddChild("Fixed", 1, 4, "", "")->ReadOnly(true);
  root_->AddTree(tree, -1, -1);
  address->SetValue(std::int16_t{7}, -1, -1);
  EXPECT_EQ(root_->Item("GPIB.Primary Address")->GetValue(-1, -1), Value(std::int16_t{6}));
  EXPECT_EQ(
      ErrorOf([&] { root_->Item("GPIB.Primary Address")->SetValue(std::int16_t{31}, -1, -1); }).Number(),
      380);
  EXPECT_TRUE(root_->Item("GPIB.Fixed")->ReadOnly());
  EXPECT_EQ(ErrorOf([&] { root_->AddTree(tree, -1, -1); }).Number(), 5);
}

TEST_F(ParameterTest, CodesWithoutAMeaningAreRefused) {
  EXPECT_EQ(ErrorOf([&] { root_->AddChild("X", 2, 2, "", ""); }).Number(), 5);
  EXPECT_EQ(ErrorOf([&] { root_->SetValue(std::string("x"), -1, -1); }).Number(), 380);
  EXPECT_EQ(ErrorOf([&] { root_->GetValue(0, -1); }).Number(), 9);
}

}  // namespace
}  // namespace workbench
