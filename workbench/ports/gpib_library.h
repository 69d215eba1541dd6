// A GPIB bus through a library of the NI-488.2 shape, loaded at run time.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "workbench/ports/link.h"

namespace workbench {

/// The smallest time-out code of such a library that lasts at least so long: 1 is 10 us, 8 is 30 ms, 17 is
/// 1000 s; 17 also for more.
int GpibTimeoutCode(std::chrono::microseconds duration);

/// What an error number of such a library (iberr) means, with its name: "ENOL (no listener at that address)".
std::string GpibErrorText(int error);

/// Opens the device at that address. `library` is a file name; empty for the usual ones of this system. None
/// on failure, with the reason in `why`.
std::unique_ptr<Link> OpenGpibLibrary(const std::string& library, int board, int address, std::string& why);

}  // namespace workbench
