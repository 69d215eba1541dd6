// What kel4x needs of the platform: terminals, interruption, standard folders, processes. Nothing else in
// this folder calls the platform.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kel4x::terminal {

enum class Stream { kInput, kOutput, kErrors };

/// Whether a person sits at the other end.
bool IsInteractive(Stream stream);

/// Columns of the terminal at standard output or standard error; 80 where there is none.
int Width();

/// Whether colours are wanted on that stream: a terminal, and NO_COLOR is not set.
bool WantsColour(Stream stream);

/// Calls `handler` on Ctrl-C, on a hang-up and when the process is asked to end, from a signal handler or
/// another thread; it may store atomics and nothing else.
void OnInterrupt(void (*handler)());

/// Makes the screen understand escape sequences and UTF-8 where that has to be asked for.
void Prepare();

/// The variable of the environment; nothing where it is not set or empty.
std::optional<std::string> Environment(const char* name);

/// The folder of the user's configuration files: $XDG_CONFIG_HOME or ~/.config; %APPDATA% on Windows. Empty
/// where none is known.
std::filesystem::path ConfigurationFolder();

/// Serial devices of this machine, for example "/dev/ttyUSB0" or "COM3".
std::vector<std::string> SerialDevices();

/// Devices or libraries of this machine that stand for a GPIB interface, as people know them.
std::vector<std::string> GpibDevices();

/// Bytes to standard output, unchanged and at once; an interruption does not cut them short.
void WriteOutput(std::string_view text);
/// Whether some of them could not be written.
bool OutputFailed();

}  // namespace kel4x::terminal
