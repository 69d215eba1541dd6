// The platform calls of kel4x, for POSIX systems and for Windows.
#include "terminal.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#endif

namespace kel4x::terminal {
namespace {

void (*interrupt_handler)() = nullptr;
bool output_failed = false;

FILE* File(Stream stream) {
  switch (stream) {
    case Stream::kInput:
      return stdin;
    case Stream::kOutput:
      return stdout;
    case Stream::kErrors:
      break;
  }
  return stderr;
}

}  // namespace

bool WantsColour(Stream stream) { return IsInteractive(stream) && !Environment("NO_COLOR"); }

std::optional<std::string> Environment(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr || *value == '\0') return std::nullopt;
  return value;
}

bool OutputFailed() { return output_failed; }

#ifdef _WIN32

void WriteOutput(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
    output_failed = true;
  }
}

bool IsInteractive(Stream stream) { return _isatty(_fileno(File(stream))) != 0; }

int Width() {
  CONSOLE_SCREEN_BUFFER_INFO info;
  for (const DWORD handle : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
    if (GetConsoleScreenBufferInfo(GetStdHandle(handle), &info) != 0) {
      return info.srWindow.Right - info.srWindow.Left + 1;
    }
  }
  return 80;
}

static BOOL WINAPI HandleConsole(DWORD) {
  if (interrupt_handler != nullptr) interrupt_handler();
  return TRUE;
}

void OnInterrupt(void (*handler)()) {
  interrupt_handler = handler;
  SetConsoleCtrlHandler(HandleConsole, TRUE);
}

void Prepare() {
  SetConsoleOutputCP(CP_UTF8);
  _setmode(_fileno(stdout), _O_BINARY);
  for (const DWORD name : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
    DWORD mode = 0;
    const HANDLE handle = GetStdHandle(name);
    if (GetConsoleMode(handle, &mode) != 0) {
      SetConsoleMode(handle, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    }
  }
}

std::filesystem::path ConfigurationFolder() { return Environment("APPDATA").value_or(""); }

std::vector<std::string> SerialDevices() {
  std::vector<std::string> devices;
  for (int number = 1; number <= 16; ++number) {
    char target[256];
    const std::string name = "COM" + std::to_string(number);
    if (QueryDosDeviceA(name.c_str(), target, sizeof target) != 0) devices.push_back(name);
  }
  return devices;
}

std::vector<std::string> GpibDevices() {
  std::vector<std::string> devices;
  for (const char* library : {"gpib-32.dll", "ni4882.dll"}) {
    char path[MAX_PATH];
    if (SearchPathA(nullptr, library, nullptr, MAX_PATH, path, nullptr) != 0) devices.emplace_back(path);
  }
  return devices;
}

#else

void WriteOutput(std::string_view text) {
  while (!text.empty() && !output_failed) {
    const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      output_failed = true;
    }
  }
}

bool IsInteractive(Stream stream) { return isatty(fileno(File(stream))) != 0; }

int Width() {
  winsize size{};
  for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO}) {
    if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  }
  return 80;
}

static void HandleSignal(int) {
  if (interrupt_handler != nullptr) interrupt_handler();
}

void OnInterrupt(void (*handler)()) {
  interrupt_handler = handler;
  struct sigaction action {};
  action.sa_handler = HandleSignal;
  sigemptyset(&action.sa_mask);
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) sigaction(number, &action, nullptr);
}

void Prepare() {
  // A reader of the output that goes away is noticed where the output is written.
  std::signal(SIGPIPE, SIG_IGN);
}

std::filesystem::path ConfigurationFolder() {
  // The base directory rule: a relative path there is not valid and is not used.
  if (const auto folder = Environment("XDG_CONFIG_HOME"); folder && folder->starts_with('/')) return *folder;
  if (const auto home = Environment("HOME")) return std::filesystem::path(*home) / ".config";
  return {};
}

std::vector<std::string> SerialDevices() {
  std::vector<std::string> devices;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator("/sys/class/tty", ignored)) {
    const std::string name = entry.path().filename().string();
    // A serial driver stands behind a real port; consoles and pseudo-terminals have none.
    if (!std::filesystem::exists(entry.path() / "device" / "driver", ignored)) continue;
    const std::filesystem::path device = std::filesystem::path("/dev") / name;
    if (std::filesystem::exists(device, ignored)) devices.push_back(device.string());
  }
  std::sort(devices.begin(), devices.end());
  return devices;
}

std::vector<std::string> GpibDevices() {
  std::vector<std::string> devices;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator("/dev", ignored)) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with("gpib")) devices.push_back(entry.path().string());
  }
  for (const char* folder : {"/usr/lib", "/usr/local/lib", "/usr/lib/x86_64-linux-gnu", "/usr/lib64"}) {
    for (const char* library : {"libgpib.so", "libgpib.so.0", "libni4882.so"}) {
      const std::filesystem::path path = std::filesystem::path(folder) / library;
      if (std::filesystem::exists(path, ignored)) devices.push_back(path.string());
    }
  }
  std::sort(devices.begin(), devices.end());
  return devices;
}

#endif

}  // namespace kel4x::terminal
