// The version of this build.
#pragma once

namespace kel4x {

inline constexpr char kVersion[] = QKEL4X_VERSION;

}  // namespace kel4x
