// Option lists: positions, blanks and the error of a position that is none.
#include "driver/settings/option_list.h"

#include <gtest/gtest.h>

#include <string>

#include "../member_cases/scripted_host.h"

namespace qkel4x {
namespace {

class OptionList : public testing::Test {
 protected:
  template <class Call>
  static void ExpectInvalid(const Call& call, const char* source, const char* description) {
    try {
      call();
      ADD_FAILURE() << "expected an error";
    } catch (const host::AutomationError& error) {
      EXPECT_EQ(error.Code(), 380);
      EXPECT_EQ(error.Source(), source);
      EXPECT_EQ(error.Description(), description);
    }
  }

  member_cases::ScriptedHost host_;
};

TEST_F(OptionList, GivesTheDisplayNameAtAPosition) {
  EXPECT_EQ(GetDisplayValue("Yes=-1,No=0", 0), "Yes");
  EXPECT_EQ(GetDisplayValue("Yes=-1,No=0", 1), "No");
}

TEST_F(OptionList, TrimsNothing) {
  EXPECT_EQ(GetDisplayValue("GPIB=QPort.clsGPIB, RS232=QPort.clsComm", 1), " RS232");
}

TEST_F(OptionList, TakesTheTextBeforeTheFirstEqualsSign) {
  EXPECT_EQ(GetDisplayValue("A", 0), "A");
  EXPECT_EQ(GetDisplayValue("A=B=C", 0), "A");
  EXPECT_EQ(GetDisplayValue("=B", 0), "");
  EXPECT_EQ(GetDisplayValue("A,,B", 1), "");
}

TEST_F(OptionList, RefusesAPositionThatIsNone) {
  const char* source = "modParameterUtilities.GetDisplayValue";
  ExpectInvalid([] { GetDisplayValue("Yes=-1,No=0", 2); }, source, "Invalid Property Value (intIndex = 2)");
  ExpectInvalid([] { GetDisplayValue("Yes=-1,No=0", -1); }, source, "Invalid Property Value (intIndex = -1)");
  ExpectInvalid([] { GetDisplayValue("", 0); }, source, "Invalid Property Value (intIndex = 0)");
  ExpectInvalid([] { GetDisplayValue("Yes=-1,No=0", 5); }, source, "Invalid Property Value (intIndex = 5)");
  EXPECT_EQ(host_.raised.size(), 4U);
}

TEST_F(OptionList, GivesTheValueAtAPosition) {
  EXPECT_EQ(GetSelectedValue("Yes=-1,No=0", 0), "-1");
  EXPECT_EQ(GetSelectedValue("GPIB=QPort.clsGPIB, RS232=QPort.clsComm", 1), "QPort.clsComm");
  ExpectInvalid([] { GetSelectedValue("Yes=-1", 1); }, "modParameterUtilities.GetSelectedValue",
                "Invalid Property Value (intIndex = 1)");
}

}  // namespace
}  // namespace qkel4x
