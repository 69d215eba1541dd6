// Faults of a running program: the platform's numbers and words, not through the reporter.
#include "driver/core/raise.h"

#include <gtest/gtest.h>

#include <string>

#include "../member_cases/scripted_host.h"

namespace qkel4x {
namespace {

TEST(RaiseFault, HasThePlatformsNumbersAndWords) {
  struct Fault {
    host::RuntimeFault number;
    const char* description;
  };
  const Fault faults[] = {{host::kInvalidProcedureCall, "Invalid procedure call or argument"},
                          {host::kOverflow, "Overflow"},
                          {host::kSubscriptOutOfRange, "Subscript out of range"},
                          {host::kTypeMismatch, "Type mismatch"},
                          {host::kNoObject, "Object variable not set"},
                          {host::kMemberNotFound, "Runtime fault"}};
  member_cases::ScriptedHost host;
  for (const Fault& fault : faults) {
    try {
      RaiseFault(fault.number);
    } catch (const host::AutomationError& error) {
      EXPECT_EQ(error.Number(), fault.number);
      EXPECT_EQ(error.Source(), "QKEL4x");
      EXPECT_EQ(error.Description(), fault.description);
    }
  }
  EXPECT_TRUE(host.raised.empty());
}

TEST(Raise, AddsTheBaseToAPublishedNumberAlone) {
  member_cases::ScriptedHost host;
  try {
    Raise(qkelBadMeasureMode, "source", "description");
  } catch (const host::AutomationError& error) {
    EXPECT_EQ(error.Number(), static_cast<std::int32_t>(0x800407E0U));
  }
  try {
    RaisePlain(2002, "source", "description");
  } catch (const host::AutomationError& error) {
    EXPECT_EQ(error.Number(), 2002);
  }
  EXPECT_EQ(host.raised.size(), 2U);
}

}  // namespace
}  // namespace qkel4x
