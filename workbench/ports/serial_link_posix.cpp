// Serial lines over termios: devices and pseudo-terminals.
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "workbench/ports/serial_link.h"
#include "workbench/text.h"

namespace workbench {
namespace {

constexpr double kLongestQuiet = 0.5;  // seconds without a byte after which a line counts as quiet
constexpr int kMostDrops = 64;
constexpr std::chrono::milliseconds kPatience{100};  // with a port that is in use
constexpr auto kLongestDrain = std::chrono::milliseconds(1000);

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&&) = delete;
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  int Number() const { return number_; }

 private:
  int number_;
};

std::string SystemError() { return std::generic_category().message(errno); }

struct Baud {
  std::int32_t rate;
  speed_t code;
};
constexpr Baud kBauds[] = {
    {300, B300},     {600, B600},     {1200, B1200},   {2400, B2400},     {4800, B4800},     {9600, B9600},
    {19200, B19200}, {38400, B38400}, {57600, B57600}, {115200, B115200}, {230400, B230400},
};

std::optional<speed_t> BaudCode(std::int32_t rate) {
  for (const Baud& baud : kBauds) {
    if (baud.rate == rate) return baud.code;
  }
  return std::nullopt;
}

/// A pseudo-terminal carries bytes, not bits: it has no parity and no character size.
bool IsPseudoTerminal(int number) {
  std::array<char, 64> name{};
  return ::ttyname_r(number, name.data(), name.size()) == 0 &&
         std::string_view(name.data()).starts_with("/dev/pts/");
}

void Describe(termios& line, const LineSettings& settings) {
  ::cfmakeraw(&line);
  line.c_cflag |= static_cast<tcflag_t>(CREAD | CLOCAL);
  line.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | PARODD | CSTOPB | CRTSCTS | HUPCL);
  constexpr tcflag_t kSizes[] = {CS5, CS6, CS7, CS8};
  line.c_cflag |= kSizes[std::clamp(settings.data_bits, 5, 8) - 5];
  if (settings.stop_bits == 2) line.c_cflag |= static_cast<tcflag_t>(CSTOPB);
  line.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF | IXANY | INPCK);
  switch (settings.parity) {
    case Parity::kNone:
      break;
    case Parity::kEven:
      line.c_cflag |= static_cast<tcflag_t>(PARENB);
      break;
    case Parity::kOdd:
      line.c_cflag |= static_cast<tcflag_t>(PARENB | PARODD);
      break;
#ifdef CMSPAR
    case Parity::kMark:
      line.c_cflag |= static_cast<tcflag_t>(PARENB | PARODD | CMSPAR);
      break;
    case Parity::kSpace:
      line.c_cflag |= static_cast<tcflag_t>(PARENB | CMSPAR);
      break;
#else
    case Parity::kMark:
    case Parity::kSpace:
      break;
#endif
  }
  if (settings.parity != Parity::kNone) line.c_iflag |= static_cast<tcflag_t>(INPCK);
  switch (settings.handshake) {
    case Handshake::kNone:
      break;
    case Handshake::kXonXoff:
      line.c_iflag |= static_cast<tcflag_t>(IXON | IXOFF);
      break;
    case Handshake::kHardware:
      line.c_cflag |= static_cast<tcflag_t>(CRTSCTS);
      break;
  }
  line.c_cc[VMIN] = 0;
  line.c_cc[VTIME] = 0;
}

bool SetLine(int number, const LineSettings& settings, std::string& why) {
  termios line{};
  if (::tcgetattr(number, &line) != 0) {
    why = "it is no serial device: " + SystemError();
    return false;
  }
  const auto baud = BaudCode(settings.baud_rate);
  if (!baud) {
    why = "no serial line here runs at " + std::to_string(settings.baud_rate) + " baud";
    return false;
  }
  Describe(line, settings);
  ::cfsetispeed(&line, *baud);
  ::cfsetospeed(&line, *baud);
  if (::tcsetattr(number, TCSANOW, &line) != 0) {
    why = "its settings were refused: " + SystemError();
    return false;
  }
  // tcsetattr succeeds when any one of the settings was taken, so that all of them are looked at again.
  termios taken{};
  ::tcgetattr(number, &taken);
  constexpr tcflag_t kBits = CSIZE | PARENB | PARODD;
  const tcflag_t watched =
      static_cast<tcflag_t>(CSTOPB | CRTSCTS) | (IsPseudoTerminal(number) ? tcflag_t{0} : kBits);
  if (::cfgetospeed(&taken) != *baud || ((taken.c_cflag ^ line.c_cflag) & watched) != 0 ||
      ((taken.c_iflag ^ line.c_iflag) & static_cast<tcflag_t>(IXON | IXOFF)) != 0) {
    why = "the device does not take these line settings";
    return false;
  }
  return true;
}

class SerialLink final : public Link {
 public:
  SerialLink(Descriptor device, std::string peer, std::optional<Descriptor> other_end)
      : device_(std::move(device)), other_end_(std::move(other_end)), peer_(std::move(peer)) {}
  SerialLink(const SerialLink&) = delete;
  SerialLink& operator=(const SerialLink&) = delete;

  ~SerialLink() override {
    // The last command, often the one that gives the instrument back to its operator, still goes out; a line
    // that is held by a handshake does not keep the program.
    const auto end = Deadline::Clock::now() + kLongestDrain;
    int waiting = 0;
    while (::ioctl(device_.Number(), TIOCOUTQ, &waiting) == 0 && waiting > 0 &&
           Deadline::Clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    ::tcflush(device_.Number(), TCIOFLUSH);
    ::ioctl(device_.Number(), TIOCNXCL);
  }

  std::string_view Peer() const override { return peer_; }
  std::string Fault() const override { return fault_; }

  Attempt Send(std::string_view rest) override {
    const ssize_t sent = ::write(device_.Number(), rest.data(), rest.size());
    if (sent > 0) return {Attempt::Outcome::kDone, static_cast<std::size_t>(sent), false};
    return NotReady(sent, POLLOUT);
  }

  Attempt Receive(std::span<char> into) override {
    for (bool again = true;; again = false) {
      const ssize_t received = ::read(device_.Number(), into.data(), into.size());
      if (received > 0) return {Attempt::Outcome::kDone, static_cast<std::size_t>(received), false};
      const Attempt attempt = NotReady(received, POLLIN);
      if (!again || attempt.outcome != Attempt::Outcome::kDone) {
        return attempt.outcome == Attempt::Outcome::kDone ? Attempt{} : attempt;
      }
    }
  }

  Cleared Clear(const Deadline& deadline, double since) override {
    ::tcflush(device_.Number(), TCOFLUSH);
    const double quiet = std::min(kLongestQuiet, deadline.Seconds() / 2);
    double silent = since;
    auto last = Deadline::Clock::now();
    std::array<char, 4096> arrived;
    for (;;) {
      const ssize_t received = ::read(device_.Number(), arrived.data(), arrived.size());
      if (received > 0) {
        silent = 0;
        last = Deadline::Clock::now();
      } else {
        if (silent + std::chrono::duration<double>(Deadline::Clock::now() - last).count() >= quiet) {
          return Cleared::kClean;
        }
        if (NotReady(received, POLLIN).outcome == Attempt::Outcome::kLost) return Cleared::kFailed;
      }
      if (deadline.Expired() || deadline.Interrupted()) {
        fault_ = "the line has not fallen silent since the transfer before";
        return Cleared::kBusy;
      }
    }
  }

  Attempt DropArrived() override {
    std::array<char, 4096> arrived;
    std::size_t dropped = 0;
    char last = '\n';
    for (int i = 0; i < kMostDrops; ++i) {
      const ssize_t received = ::read(device_.Number(), arrived.data(), arrived.size());
      if (received <= 0) {
        if (received < 0 && errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
          fault_ = SystemError();
          return {Attempt::Outcome::kLost, dropped, false};
        }
        return {EndsLine(last) ? Attempt::Outcome::kDone : Attempt::Outcome::kNothingYet, dropped, false};
      }
      dropped += static_cast<std::size_t>(received);
      last = arrived[static_cast<std::size_t>(received) - 1];
    }
    return {Attempt::Outcome::kNothingYet, dropped, false};
  }

 private:
  /// Waits a slice for the device: kDone when it has become ready.
  Attempt NotReady(ssize_t result, short events) {
    if (result < 0 && errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
      fault_ = SystemError();
      return {Attempt::Outcome::kLost, 0, false};
    }
    pollfd entry{device_.Number(), events, 0};
    const int ready = ::poll(&entry, 1, static_cast<int>(kSlice.count()));
    if (ready <= 0) return {};
    if ((entry.revents & events) != 0) return {Attempt::Outcome::kDone, 0, false};
    fault_ = "the device is gone";
    return {Attempt::Outcome::kLost, 0, false};
  }

  Descriptor device_;
  std::optional<Descriptor> other_end_;
  std::string peer_;
  std::string fault_;
};

/// Opens the device for this user alone. The terminal's own exclusion does not hold against the superuser;
/// the lock does, among well-behaved programs.
Descriptor OpenAlone(const std::string& device, std::string& why) {
  const auto end = Deadline::Clock::now() + kPatience;
  for (;;) {
    Descriptor descriptor(::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    const bool locked = descriptor.Number() >= 0 && ::flock(descriptor.Number(), LOCK_EX | LOCK_NB) == 0;
    if (locked && ::ioctl(descriptor.Number(), TIOCEXCL) == 0) return descriptor;
    const int error = errno;
    if (error != EBUSY && error != EWOULDBLOCK) {
      why = locked ? "it is no serial device: " + SystemError() : SystemError();
      return Descriptor(-1);
    }
    // Another driver object may be looking which ports open just now.
    if (Deadline::Clock::now() >= end) {
      why = "it is in use";
      return Descriptor(-1);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

std::unique_ptr<Link> OpenDevice(const std::string& device, const LineSettings& settings,
                                 const std::string& peer, std::optional<Descriptor> other_end,
                                 std::string& why) {
  Descriptor descriptor = OpenAlone(device, why);
  if (descriptor.Number() < 0) return nullptr;
  if (!SetLine(descriptor.Number(), settings, why)) {
    ::ioctl(descriptor.Number(), TIOCNXCL);
    return nullptr;
  }
  ::tcflush(descriptor.Number(), TCIOFLUSH);
  return std::make_unique<SerialLink>(std::move(descriptor), peer, std::move(other_end));
}

}  // namespace

SerialDevices DefaultSerialDevices() {
  SerialDevices devices;
  for (std::size_t i = 0; i < devices.size(); ++i) {
    if (i < 4) {
      devices[i] = "/dev/ttyS" + std::to_string(i);
    } else if (i < 10) {
      devices[i] = "/dev/ttyUSB" + std::to_string(i - 4);
    } else {
      devices[i] = "/dev/ttyACM" + std::to_string(i - 10);
    }
  }
  return devices;
}

std::unique_ptr<Link> OpenSerial(const std::string& device, const LineSettings& settings, std::string& why) {
  return OpenDevice(device, settings, device, std::nullopt, why);
}

std::unique_ptr<Link> OpenVirtualSerial(const LineSettings& settings, std::string& why) {
  Descriptor other_end(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  std::array<char, 64> name{};
  if (other_end.Number() < 0 || ::grantpt(other_end.Number()) != 0 || ::unlockpt(other_end.Number()) != 0 ||
      ::ptsname_r(other_end.Number(), name.data(), name.size()) != 0) {
    why = "no pseudo-terminal could be made: " + SystemError();
    return nullptr;
  }
  return OpenDevice(name.data(), settings, std::string("the virtual COM1 (") + name.data() + ")",
                    std::move(other_end), why);
}

bool SerialDeviceOpens(const std::string& device) {
  if (device.empty()) return false;
  const Descriptor descriptor(::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  termios line{};
  return descriptor.Number() >= 0 && ::tcgetattr(descriptor.Number(), &line) == 0;
}

}  // namespace workbench
