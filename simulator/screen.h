// The instrument's screen: what a capture holds.
#pragma once

#include "simulator/model.h"
#include "simulator/pcx.h"

namespace simulator {

inline constexpr int kScreenWidth = 640;
inline constexpr int kScreenHeight = 480;

/// Draws title, set-up, the table of present results and the plot of the measurement mode.
Picture DrawScreen(Model& model);

}  // namespace simulator
