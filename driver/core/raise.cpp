#include "driver/core/raise.h"

#include "host/host.h"

namespace qkel4x {

void RaisePlain(std::int32_t number, std::string_view source, std::string_view description) {
  host::CurrentHost().Errors().Raise(number, source, description);
  // A reporter of a foreign host may only record; the call fails all the same.
  throw host::AutomationError(number, std::string(source), std::string(description));
}

void Raise(ErrorConstants number, std::string_view source, std::string_view description) {
  RaisePlain(host::kObjectErrorBase + number, source, description);
}

void RaiseFault(host::RuntimeFault fault) {
  const char* description = "";
  switch (fault) {
    case host::kInvalidProcedureCall:
      description = "Invalid procedure call or argument";
      break;
    case host::kOverflow:
      description = "Overflow";
      break;
    case host::kSubscriptOutOfRange:
      description = "Subscript out of range";
      break;
    case host::kTypeMismatch:
      description = "Type mismatch";
      break;
    case host::kNoObject:
      description = "Object variable not set";
      break;
    default:
      description = "Runtime fault";
      break;
  }
  throw host::AutomationError(fault, "QKEL4x", description);
}

bool SimulationActive() { return host::CurrentHost().Runtime().SimulationActive(); }

}  // namespace qkel4x
