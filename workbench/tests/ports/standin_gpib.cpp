// A stand-in for a GPIB library: the functions and variables of the NI-488.2 shape over devices that a test
// attaches.
#include "workbench/tests/ports/standin_gpib.h"

#include <array>
#include <map>
#include <mutex>

namespace {

constexpr int kError = 0x8000;
constexpr int kTimedOut = 0x4000;
constexpr int kEnd = 0x2000;
constexpr int kDone = 0x0100;

constexpr int kInvalidArgument = 4;
constexpr int kNoListener = 2;
constexpr int kAborted = 6;

struct Opened {
  int address;
  int timeout_code;
};

std::mutex mutex;
std::map<int, StandinDevice> devices;
std::map<int, Opened> opened;
int next_descriptor = 100;

long Microseconds(int code) {
  constexpr std::array<long, 18> kTimes = {1'000'000'000, 10,          30,           100,        300,
                                           1'000,         3'000,       10'000,       30'000,     100'000,
                                           300'000,       1'000'000,   3'000'000,    10'000'000, 30'000'000,
                                           100'000'000,   300'000'000, 1'000'000'000};
  return kTimes.at(static_cast<std::size_t>(code));
}

bool Find(int descriptor, StandinDevice& device, long& timeout_us) {
  const std::lock_guard lock(mutex);
  const auto open = opened.find(descriptor);
  if (open == opened.end()) return false;
  timeout_us = Microseconds(open->second.timeout_code);
  const auto found = devices.find(open->second.address);
  if (found == devices.end()) return false;
  device = found->second;
  return true;
}

}  // namespace

#define EXPORTED __attribute__((visibility("default")))

extern "C" {

EXPORTED int ibsta = 0;
EXPORTED int iberr = 0;
EXPORTED int ibcnt = 0;

static int Finish(int status, int error, long count) {
  ibsta = status | kDone;
  iberr = error;
  ibcnt = static_cast<int>(count);
  return ibsta;
}

EXPORTED void standin_attach(int address, const StandinDevice* device) {
  const std::lock_guard lock(mutex);
  if (device == nullptr) {
    devices.erase(address);
  } else {
    devices[address] = *device;
  }
}

EXPORTED int ibdev(int board, int address, int, int timeout, int, int) {
  if (board != 0) {
    Finish(kError, 7, 0);
    return -1;
  }
  const std::lock_guard lock(mutex);
  opened[next_descriptor] = {address, timeout};
  Finish(0, 0, 0);
  return next_descriptor++;
}

EXPORTED int ibwrt(int descriptor, const void* bytes, long size) {
  StandinDevice device{};
  long timeout_us = 0;
  if (!Find(descriptor, device, timeout_us)) return Finish(kError, kNoListener, 0);
  device.write(device.context, static_cast<const char*>(bytes), size);
  return Finish(0, 0, size);
}

EXPORTED int ibrd(int descriptor, void* bytes, long most) {
  StandinDevice device{};
  long timeout_us = 0;
  if (!Find(descriptor, device, timeout_us)) return Finish(kError | kTimedOut, kAborted, 0);
  int end = 0;
  const long count = device.read(device.context, static_cast<char*>(bytes), most, timeout_us, &end);
  if (end == 0 && count < most) return Finish(kError | kTimedOut, kAborted, count);
  return Finish(end != 0 ? kEnd : 0, 0, count);
}

EXPORTED int ibtmo(int descriptor, int code) {
  const std::lock_guard lock(mutex);
  const auto open = opened.find(descriptor);
  if (open == opened.end()) return Finish(kError, kInvalidArgument, 0);
  open->second.timeout_code = code;
  return Finish(0, 0, 0);
}

EXPORTED int ibclr(int descriptor) {
  StandinDevice device{};
  long timeout_us = 0;
  if (!Find(descriptor, device, timeout_us)) return Finish(kError, kNoListener, 0);
  device.clear(device.context);
  return Finish(0, 0, 0);
}

EXPORTED int ibloc(int descriptor) {
  StandinDevice device{};
  long timeout_us = 0;
  if (!Find(descriptor, device, timeout_us)) return Finish(kError, kNoListener, 0);
  device.go_to_local(device.context);
  return Finish(0, 0, 0);
}

EXPORTED int ibonl(int descriptor, int on_line) {
  const std::lock_guard lock(mutex);
  if (on_line == 0) opened.erase(descriptor);
  return Finish(0, 0, 0);
}
}
