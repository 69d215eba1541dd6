// Runs one member case through one way into the driver.
#pragma once

#include <string>

#include "calls.h"
#include "case_file.h"

namespace member_cases {

/// Runs the case on a new driver. Empty where all agreed, else what differed first and in which step.
std::string RunCase(const Case& one, Calls& calls);

}  // namespace member_cases
