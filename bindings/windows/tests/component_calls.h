// The two ways into the component: by name, as script engines call, and through the virtual table.
#pragma once

#include "calls.h"

namespace member_cases {

Calls& LateBoundCalls();
Calls& EarlyBoundCalls();

/// Offers the current host of this process under the names that the component looks for.
void OfferCurrentHost();

}  // namespace member_cases
