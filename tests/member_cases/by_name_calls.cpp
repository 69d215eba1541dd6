// Calls by name: names in another letter case, numbers as automation clients have them.
#include <algorithm>
#include <cctype>
#include <stdexcept>

#include "automation/call.h"
#include "calls.h"

namespace member_cases {
namespace {

using automation::Value;

// Clients without the type library write names as they please.
std::string InCapitals(std::string name) {
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
  return name;
}

automation::Object ObjectOf(qkel4x::clsKEL4x& driver, const std::string& interface_name) {
  if (interface_name.empty()) return driver;
  if (interface_name == "IDriverSetup") return static_cast<host::IDriverSetup&>(driver);
  if (interface_name == "IDriverIdentify") return static_cast<host::IDriverIdentify&>(driver);
  throw std::logic_error("no interface " + interface_name);
}

Value AsClientsHaveIt(const CaseValue& value) {
  if (const auto* flag = std::get_if<bool>(&value)) return *flag;
  if (const auto* whole = std::get_if<std::int64_t>(&value)) return static_cast<std::int32_t>(*whole);
  if (const auto* real = std::get_if<double>(&value)) return *real;
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  return {};
}

class ByName final : public CallsInProcess {
 public:
  Value Get(const std::string& interface_name, const std::string& member,
            std::span<Value> arguments) override {
    return automation::Get(ObjectOf(Driver(), interface_name), InCapitals(member), arguments);
  }

  void Put(const std::string& interface_name, const std::string& member, const CaseValue& value) override {
    automation::Put(ObjectOf(Driver(), interface_name), InCapitals(member), AsClientsHaveIt(value));
  }

  void Call(const std::string& member) override { automation::Call(Driver(), InCapitals(member)); }

  Value GetField(qkel4x::clsStatistics& statistics, const std::string& member) override {
    return automation::Get(statistics, InCapitals(member));
  }

  void WriteStatistics(qkel4x::clsStatistics& statistics, const std::string& report) override {
    automation::Put(statistics, "STATISTICS", report);
  }
};

}  // namespace

Calls& ByNameCalls() {
  static ByName calls;
  return calls;
}

}  // namespace member_cases
