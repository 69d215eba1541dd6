// The names under which a host lists this driver.
#pragma once

#include <string>

#include "host/export.h"
#include "host/register.h"

namespace qkel4x {

class QKEL4X_EXPORT clsRegister final : public host::IRegister {
 public:
  std::string GetClassDescription() override { return "KEL4x"; }
  std::string GetClassName() override { return "clsKEL4x"; }
};

}  // namespace qkel4x
