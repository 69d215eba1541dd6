// A GPIB bus behind an adapter that takes "++" commands over TCP or a serial line.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "workbench/ports/link.h"

namespace workbench {

/// A text as such an adapter passes it on: CR, LF, ESC and + each with an ESC before them, then the LF that
/// ends it. One LF at the end of `text` is the adapter's to add and is left out.
void AppendAdapterText(std::string& out, std::string_view text);

/// Puts the adapter at the other end of `stream` in charge of the bus and addresses the instrument. None on
/// failure, with the reason in `why`.
std::unique_ptr<Link> OpenGpibAdapter(std::unique_ptr<Link> stream, int address, const Deadline& deadline,
                                      std::string& why);

}  // namespace workbench
