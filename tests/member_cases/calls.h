// The ways into the driver that the cases are run through.
#pragma once

#include <span>
#include <string>

#include "automation/value.h"
#include "case_file.h"
#include "driver/clsKEL4x.h"
#include "driver/statistics/clsStatistics.h"

namespace member_cases {

/// Calls members of one driver object. `interface` is empty for the class's own members.
class Calls {
 public:
  virtual ~Calls() = default;

  virtual automation::Value Get(qkel4x::clsKEL4x& driver, const std::string& interface,
                                const std::string& member, std::span<automation::Value> arguments) = 0;
  virtual void Put(qkel4x::clsKEL4x& driver, const std::string& interface, const std::string& member,
                   const CaseValue& value) = 0;
  virtual void Call(qkel4x::clsKEL4x& driver, const std::string& member) = 0;
  virtual automation::Value GetField(qkel4x::clsStatistics& statistics, const std::string& member) = 0;
  virtual void WriteStatistics(qkel4x::clsStatistics& statistics, const std::string& report) = 0;
};

/// Through the method pointers of the member table, with values of exactly the published types.
Calls& TypedCalls();
/// By name, with the values as an automation client has them: numbers as 32-bit integers and doubles.
Calls& ByNameCalls();

}  // namespace member_cases
