// Serial lines over the COM ports of Windows.
#include <windows.h>

#include <algorithm>
#include <array>
#include <system_error>
#include <thread>
#include <utility>

#include "workbench/ports/serial_link.h"

namespace workbench {
namespace {

constexpr double kLongestQuiet = 0.5;  // seconds without a byte after which a line counts as quiet
constexpr auto kLongestDrain = std::chrono::milliseconds(1000);
constexpr DWORD kQueueSize = 16384;
constexpr int kMostDrops = 64;  // reads after which a line counts as one that does not stop talking

std::string ErrorText(DWORD error) { return std::system_category().message(static_cast<int>(error)); }

class Device {
 public:
  explicit Device(const std::string& name)
      : handle_(
            CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr)) {}
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;
  Device(Device&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
  Device& operator=(Device&&) = delete;
  ~Device() {
    if (Opened()) CloseHandle(handle_);
  }
  bool Opened() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE Handle() const { return handle_; }

 private:
  HANDLE handle_;
};

BYTE ParityCode(Parity parity) {
  switch (parity) {
    case Parity::kEven:
      return EVENPARITY;
    case Parity::kOdd:
      return ODDPARITY;
    case Parity::kMark:
      return MARKPARITY;
    case Parity::kSpace:
      return SPACEPARITY;
    case Parity::kNone:
      break;
  }
  return NOPARITY;
}

bool SetLine(HANDLE device, const LineSettings& settings, std::string& why) {
  DCB line{};
  line.DCBlength = sizeof line;
  if (GetCommState(device, &line) == 0) {
    why = "it is no serial device: " + ErrorText(GetLastError());
    return false;
  }
  const bool hardware = settings.handshake == Handshake::kHardware;
  const bool software = settings.handshake == Handshake::kXonXoff;
  line.BaudRate = static_cast<DWORD>(settings.baud_rate);
  line.ByteSize = static_cast<BYTE>(std::clamp(settings.data_bits, 5, 8));
  line.Parity = ParityCode(settings.parity);
  line.StopBits = settings.stop_bits == 2 ? TWOSTOPBITS : ONESTOPBIT;
  line.fBinary = TRUE;
  line.fParity = settings.parity == Parity::kNone ? FALSE : TRUE;
  line.fOutxCtsFlow = hardware ? TRUE : FALSE;
  line.fRtsControl = hardware ? RTS_CONTROL_HANDSHAKE : RTS_CONTROL_ENABLE;
  line.fDtrControl = DTR_CONTROL_ENABLE;
  line.fOutxDsrFlow = FALSE;
  line.fDsrSensitivity = FALSE;
  line.fOutX = software ? TRUE : FALSE;
  line.fInX = software ? TRUE : FALSE;
  line.fNull = FALSE;
  line.fErrorChar = FALSE;
  line.fAbortOnError = FALSE;
  line.XonChar = 0x11;
  line.XoffChar = 0x13;
  line.XonLim = kQueueSize / 8;
  line.XoffLim = kQueueSize / 8;
  // A read returns with what there is, or waits a slice for the first byte.
  COMMTIMEOUTS slices{};
  slices.ReadIntervalTimeout = MAXDWORD;
  slices.ReadTotalTimeoutMultiplier = MAXDWORD;
  slices.ReadTotalTimeoutConstant = static_cast<DWORD>(kSlice.count());
  slices.WriteTotalTimeoutConstant = static_cast<DWORD>(kSlice.count());
  SetupComm(device, kQueueSize, kQueueSize);
  if (SetCommState(device, &line) == 0 || SetCommTimeouts(device, &slices) == 0) {
    why = "the device does not take these line settings: " + ErrorText(GetLastError());
    return false;
  }
  return true;
}

class SerialLink final : public Link {
 public:
  SerialLink(Device device, std::string peer) : device_(std::move(device)), peer_(std::move(peer)) {}
  SerialLink(const SerialLink&) = delete;
  SerialLink& operator=(const SerialLink&) = delete;

  ~SerialLink() override {
    // The last command, often the one that gives the instrument back to its operator, still goes out; a line
    // that is held by a handshake does not keep the program.
    const auto end = Deadline::Clock::now() + kLongestDrain;
    COMSTAT state{};
    while (ClearCommError(device_.Handle(), nullptr, &state) != 0 && state.cbOutQue > 0 &&
           Deadline::Clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    PurgeComm(device_.Handle(), PURGE_TXABORT | PURGE_TXCLEAR | PURGE_RXCLEAR);
  }

  std::string_view Peer() const override { return peer_; }
  std::string Fault() const override { return fault_; }

  Attempt Send(std::string_view rest) override {
    DWORD sent = 0;
    if (WriteFile(device_.Handle(), rest.data(), static_cast<DWORD>(rest.size()), &sent, nullptr) == 0) {
      return Lost();
    }
    return sent > 0 ? Attempt{Attempt::Outcome::kDone, sent, false} : Attempt{};
  }

  Attempt Receive(std::span<char> into) override {
    DWORD received = 0;
    if (ReadFile(device_.Handle(), into.data(), static_cast<DWORD>(into.size()), &received, nullptr) == 0) {
      return Lost();
    }
    return received > 0 ? Attempt{Attempt::Outcome::kDone, received, false} : Attempt{};
  }

  Cleared Clear(const Deadline& deadline, double since) override {
    PurgeComm(device_.Handle(), PURGE_TXABORT | PURGE_TXCLEAR);
    const double quiet = std::min(kLongestQuiet, deadline.Seconds() / 2);
    double silent = since;
    auto last = Deadline::Clock::now();
    std::array<char, 4096> arrived;
    for (;;) {
      const Attempt attempt = Receive(arrived);
      if (attempt.outcome == Attempt::Outcome::kLost) return Cleared::kFailed;
      if (attempt.outcome == Attempt::Outcome::kDone) {
        silent = 0;
        last = Deadline::Clock::now();
      } else if (silent + std::chrono::duration<double>(Deadline::Clock::now() - last).count() >= quiet) {
        return Cleared::kClean;
      }
      if (deadline.Expired() || deadline.Interrupted()) {
        fault_ = "the line did not fall silent";
        return Cleared::kFailed;
      }
    }
  }

  Attempt DropArrived() override {
    std::array<char, 4096> arrived;
    std::size_t dropped = 0;
    char last = '\n';
    for (int i = 0; i < kMostDrops; ++i) {
      COMSTAT state{};
      if (ClearCommError(device_.Handle(), nullptr, &state) == 0) return Lost();
      if (state.cbInQue == 0) {
        return {EndsLine(last) ? Attempt::Outcome::kDone : Attempt::Outcome::kNothingYet, dropped, false};
      }
      const Attempt attempt =
          Receive(std::span(arrived).first(std::min<std::size_t>(state.cbInQue, arrived.size())));
      if (attempt.outcome != Attempt::Outcome::kDone) return attempt;
      dropped += attempt.bytes;
      last = arrived[attempt.bytes - 1];
    }
    return {Attempt::Outcome::kNothingYet, dropped, false};
  }

 private:
  Attempt Lost() {
    fault_ = ErrorText(GetLastError());
    return {Attempt::Outcome::kLost, 0, false};
  }

  Device device_;
  std::string peer_;
  std::string fault_;
};

/// A line that takes everything and says nothing.
class SilentLink final : public Link {
 public:
  std::string_view Peer() const override { return "the virtual COM1"; }
  std::string Fault() const override { return {}; }
  Attempt Send(std::string_view rest) override { return {Attempt::Outcome::kDone, rest.size(), false}; }
  Attempt Receive(std::span<char>) override {
    std::this_thread::sleep_for(kSlice);
    return {};
  }
  Cleared Clear(const Deadline&, double) override { return Cleared::kClean; }
  Attempt DropArrived() override { return {Attempt::Outcome::kDone, 0, false}; }
};

}  // namespace

SerialDevices DefaultSerialDevices() {
  SerialDevices devices;
  // The prefix is needed from COM10 on and allowed before.
  for (std::size_t i = 0; i < devices.size(); ++i) devices[i] = R"(\\.\COM)" + std::to_string(i + 1);
  return devices;
}

std::unique_ptr<Link> OpenSerial(const std::string& device, const LineSettings& settings, std::string& why) {
  Device opened(device);
  if (!opened.Opened()) {
    const DWORD error = GetLastError();
    why =
        error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION ? "it is in use" : ErrorText(error);
    return nullptr;
  }
  if (!SetLine(opened.Handle(), settings, why)) return nullptr;
  PurgeComm(opened.Handle(), PURGE_RXCLEAR | PURGE_TXCLEAR);
  return std::make_unique<SerialLink>(std::move(opened), device);
}

std::unique_ptr<Link> OpenVirtualSerial(const LineSettings&, std::string&) {
  return std::make_unique<SilentLink>();
}

bool SerialDeviceOpens(const std::string& device) {
  if (device.empty()) return false;
  const Device opened(device);
  DCB line{};
  line.DCBlength = sizeof line;
  return opened.Opened() && GetCommState(opened.Handle(), &line) != 0;
}

}  // namespace workbench
