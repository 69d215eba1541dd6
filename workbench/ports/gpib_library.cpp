#include "workbench/ports/gpib_library.h"

#include <array>
#include <cstddef>
#include <mutex>
#include <utility>
#include <vector>

#include "workbench/ports/dynamic_library.h"

namespace workbench {
namespace {

// The status word that every call returns.
constexpr int kError = 0x8000;
constexpr int kTimedOut = 0x4000;
constexpr int kEnd = 0x2000;

constexpr int kOperationAborted = 6;  // EABO: what a time-out shows up as
constexpr int kNoListener = 2;        // ENOL
constexpr int kAbsurdCount = -1;      // none of the library's own

#ifdef _WIN32
constexpr std::array<const char*, 2> kUsualLibraries = {"ni4882.dll", "gpib-32.dll"};
#define QKEL4X_GPIB_CALL __stdcall
#else
constexpr std::array<const char*, 3> kUsualLibraries = {"libgpib.so.0", "libgpib.so", "libni4882.so"};
#define QKEL4X_GPIB_CALL
#endif

using Count = std::ptrdiff_t;
using OpenDevice = int QKEL4X_GPIB_CALL(int board, int address, int secondary, int timeout, int end, int eos);
using WriteBytes = int QKEL4X_GPIB_CALL(int device, const void* data, Count size);
using ReadBytes = int QKEL4X_GPIB_CALL(int device, void* data, Count size);
using SetNumber = int QKEL4X_GPIB_CALL(int device, int value);
using Act = int QKEL4X_GPIB_CALL(int device);
using Ask = int QKEL4X_GPIB_CALL();
using AskCount = long QKEL4X_GPIB_CALL();

/// The functions of one loaded library. Status, error and count come per thread where the library offers
/// that, else from its variables, which all threads share: then one call at a time goes through.
class Bus {
 public:
  static std::shared_ptr<Bus> Load(const std::string& path, std::string& why) {
    auto library = DynamicLibrary::Load(path, why);
    if (!library) return nullptr;
    auto bus = std::make_shared<Bus>();
    bus->open_ = library->Symbol<OpenDevice>("ibdev");
    bus->write_ = library->Symbol<WriteBytes>("ibwrt");
    bus->read_ = library->Symbol<ReadBytes>("ibrd");
    bus->timeout_ = library->Symbol<SetNumber>("ibtmo");
    bus->clear_ = library->Symbol<Act>("ibclr");
    bus->local_ = library->Symbol<Act>("ibloc");
    bus->online_ = library->Symbol<SetNumber>("ibonl");
    bus->status_ = library->Symbol<int>("ibsta");
    bus->error_ = library->Symbol<int>("iberr");
    bus->count_ = library->Symbol<int>("ibcnt");
    bus->long_count_ = library->Symbol<long>("ibcntl");
    bus->thread_error_ = library->Symbol<Ask>("ThreadIberr");
    bus->thread_count_ = library->Symbol<AskCount>("ThreadIbcntl");
    const bool per_thread = bus->thread_error_ != nullptr && bus->thread_count_ != nullptr;
    if (bus->open_ == nullptr || bus->write_ == nullptr || bus->read_ == nullptr ||
        bus->timeout_ == nullptr || bus->clear_ == nullptr || bus->local_ == nullptr ||
        bus->online_ == nullptr || (!per_thread && (bus->error_ == nullptr || bus->count_ == nullptr))) {
      why = path +
            ": it lacks functions of a GPIB library (ibdev, ibwrt, ibrd, ibtmo, ibclr, ibloc, ibonl, "
            "ibsta, iberr, ibcnt)";
      return nullptr;
    }
    bus->library_ = std::move(library);
    return bus;
  }

  struct Status {
    int word;
    int error;
    std::size_t count;
  };

  int Open(int board, int address, int timeout_code, Status& status) {
    int device = -1;
    status = Call([&] {
      device = open_(board, address, 0, timeout_code, 1, 0);
      return device < 0 ? kError : 0;
    });
    return device;
  }
  Status Write(int device, const char* data, std::size_t size) {
    return Call([&] { return write_(device, data, static_cast<Count>(size)); });
  }
  Status Read(int device, char* data, std::size_t size) {
    return Call([&] { return read_(device, data, static_cast<Count>(size)); });
  }
  Status Timeout(int device, int code) {
    return Call([&] { return timeout_(device, code); });
  }
  Status Clear(int device) {
    return Call([&] { return clear_(device); });
  }
  Status Local(int device) {
    return Call([&] { return local_(device); });
  }
  Status Close(int device) {
    return Call([&] { return online_(device, 0); });
  }

 private:
  template <typename Function>
  Status Call(Function function) {
    const bool per_thread = thread_error_ != nullptr && thread_count_ != nullptr;
    std::unique_lock lock(mutex_, std::defer_lock);
    if (!per_thread) lock.lock();
    const int word = function();
    if (per_thread) return {word, thread_error_(), static_cast<std::size_t>(thread_count_())};
    return {word, *error_, static_cast<std::size_t>(long_count_ != nullptr ? *long_count_ : *count_)};
  }

  std::unique_ptr<DynamicLibrary> library_;
  OpenDevice* open_ = nullptr;
  WriteBytes* write_ = nullptr;
  ReadBytes* read_ = nullptr;
  SetNumber* timeout_ = nullptr;
  Act* clear_ = nullptr;
  Act* local_ = nullptr;
  SetNumber* online_ = nullptr;
  int* status_ = nullptr;
  int* error_ = nullptr;
  int* count_ = nullptr;
  long* long_count_ = nullptr;
  Ask* thread_error_ = nullptr;
  AskCount* thread_count_ = nullptr;
  std::mutex mutex_;
};

class GpibLink final : public Link {
 public:
  GpibLink(std::shared_ptr<Bus> bus, int device, std::string peer)
      : bus_(std::move(bus)), device_(device), peer_(std::move(peer)) {}
  GpibLink(const GpibLink&) = delete;
  GpibLink& operator=(const GpibLink&) = delete;
  ~GpibLink() override { bus_->Close(device_); }

  std::string_view Peer() const override { return peer_; }
  std::string Fault() const override {
    if (error_ == kAbsurdCount) return "the library reports more bytes than it was asked for";
    return GpibErrorText(error_);
  }
  bool MarksEnd() const override { return true; }
  void Release(const Deadline&) override { bus_->Local(device_); }

  Attempt Send(std::string_view rest) override {
    const Attempt attempt = Result(bus_->Write(device_, rest.data(), rest.size()), rest.size());
    // An absent instrument is no reason to let go of the bus.
    if (attempt.outcome == Attempt::Outcome::kLost && error_ == kNoListener) {
      return {Attempt::Outcome::kRefused, 0, false};
    }
    return attempt;
  }

  Attempt Receive(std::span<char> into) override {
    return Result(bus_->Read(device_, into.data(), into.size()), into.size());
  }

  Cleared Clear(const Deadline&, double) override {
    const Bus::Status status = bus_->Clear(device_);
    error_ = status.error;
    return (status.word & kError) == 0 ? Cleared::kClean : Cleared::kFailed;
  }
  /// What the instrument still has to say cannot be seen from here.
  Attempt DropArrived() override { return {}; }

 private:
  Attempt Result(const Bus::Status& status, std::size_t most) {
    const bool aborted = (status.word & kTimedOut) != 0 || status.error == kOperationAborted;
    if ((status.word & kError) != 0 && !aborted) {
      error_ = status.error;
      return {Attempt::Outcome::kLost, 0, false};
    }
    // A negative count has become a large one.
    if (status.count > most) {
      error_ = kAbsurdCount;
      return {Attempt::Outcome::kLost, 0, false};
    }
    if (status.count == 0) return {};
    return {Attempt::Outcome::kDone, status.count, (status.word & kEnd) != 0};
  }

  std::shared_ptr<Bus> bus_;
  int device_;
  std::string peer_;
  int error_ = 0;
};

}  // namespace

int GpibTimeoutCode(std::chrono::microseconds duration) {
  using std::chrono::microseconds;
  constexpr std::array<std::int64_t, 17> kMicroseconds = {
      10,      30,        100,       300,        1'000,      3'000,       10'000,      30'000,       100'000,
      300'000, 1'000'000, 3'000'000, 10'000'000, 30'000'000, 100'000'000, 300'000'000, 1'000'000'000};
  int code = 1;
  for (const std::int64_t length : kMicroseconds) {
    if (duration <= microseconds(length)) return code;
    ++code;
  }
  return 17;
}

std::string GpibErrorText(int error) {
  switch (error) {
    case 0:
      return "EDVR (the system refused the operation)";
    case 1:
      return "ECIC (the interface is not in charge of the bus)";
    case 2:
      return "ENOL (no listener at that address)";
    case 3:
      return "EADR (the interface is not addressed)";
    case 4:
      return "EARG (an argument is invalid)";
    case 5:
      return "ESAC (the interface is not the system controller)";
    case 6:
      return "EABO (the operation was aborted)";
    case 7:
      return "ENEB (there is no such interface board)";
    case 8:
      return "EDMA (a DMA error)";
    case 10:
      return "EOIP (another operation is in progress)";
    case 11:
      return "ECAP (the interface cannot do that)";
    case 12:
      return "EFSO (a file system error)";
    case 14:
      return "EBUS (a bus error while sending commands)";
    case 15:
      return "ESTB (serial poll bytes were lost)";
    case 16:
      return "ESRQ (the service request line is stuck)";
    case 20:
      return "ETAB (a table problem)";
    default:
      return "GPIB error " + std::to_string(error);
  }
}

std::unique_ptr<Link> OpenGpibLibrary(const std::string& library, int board, int address, std::string& why) {
  std::vector<std::string> candidates;
  if (library.empty()) {
    candidates.assign(kUsualLibraries.begin(), kUsualLibraries.end());
  } else {
    candidates.push_back(library);
  }
  std::shared_ptr<Bus> bus;
  std::string reasons;
  for (const std::string& candidate : candidates) {
    std::string reason;
    bus = Bus::Load(candidate, reason);
    if (bus) break;
    reasons += (reasons.empty() ? "" : "; ") + reason;
  }
  if (!bus) {
    why = "no GPIB library could be loaded (" + reasons + ")";
    return nullptr;
  }
  Bus::Status status{};
  const int device = bus->Open(board, address, GpibTimeoutCode(kSlice), status);
  if (device < 0) {
    why = GpibErrorText(status.error);
    return nullptr;
  }
  return std::make_unique<GpibLink>(std::move(bus), device,
                                    "GPIB" + std::to_string(board) + " address " + std::to_string(address));
}

}  // namespace workbench
