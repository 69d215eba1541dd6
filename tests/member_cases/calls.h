// The ways into the driver that the cases are run through.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "automation/value.h"
#include "case_file.h"
#include "driver/clsKEL4x.h"
#include "driver/statistics/clsStatistics.h"

namespace member_cases {

/// One driver object and one statistics object, reached in one way.
class Calls {
 public:
  virtual ~Calls() = default;

  /// Makes the driver on the current host, in place of the one before.
  virtual void Create() = 0;
  virtual void Release() = 0;
  virtual std::shared_ptr<host::ParameterNode> Settings() = 0;

  /// `interface_name` is empty for the class's own members.
  virtual automation::Value Get(const std::string& interface_name, const std::string& member,
                                std::span<automation::Value> arguments) = 0;
  virtual void Put(const std::string& interface_name, const std::string& member, const CaseValue& value) = 0;
  virtual void Call(const std::string& member) = 0;

  virtual automation::Statistics NewStatistics() = 0;
  virtual automation::Value GetField(qkel4x::clsStatistics& statistics, const std::string& member) = 0;
  virtual void WriteStatistics(qkel4x::clsStatistics& statistics, const std::string& report) = 0;

  /// The help file that this way gives to an error without one.
  virtual std::string HelpFile() const { return {}; }
};

/// What the ways within this process share: the typed object itself.
class CallsInProcess : public Calls {
 public:
  void Create() override { driver_ = std::make_unique<qkel4x::clsKEL4x>(); }
  void Release() override { driver_.reset(); }
  std::shared_ptr<host::ParameterNode> Settings() override { return driver_->Settings(); }
  automation::Statistics NewStatistics() override { return std::make_shared<qkel4x::clsStatistics>(); }

 protected:
  qkel4x::clsKEL4x& Driver() const { return *driver_; }

 private:
  std::unique_ptr<qkel4x::clsKEL4x> driver_;
};

/// Through the method pointers of the member table, with values of exactly the published types.
Calls& TypedCalls();
/// By name, with the values as an automation client has them: numbers as 32-bit integers and doubles.
Calls& ByNameCalls();

}  // namespace member_cases
