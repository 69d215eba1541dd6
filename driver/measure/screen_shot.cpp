// The picture of the instrument's screen, as a definite-length block.
#include <utility>

#include "driver/clsKEL4x.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"

namespace qkel4x {
namespace {

/// How long a transfer may take over the port, or nothing for a time-out that stays as it is.
std::optional<float> TransferTimeout(std::string_view port, std::string_view baud_rate) {
  if (port == "QPort.clsGPIB") return 9.0F;
  if (port == "QPort.clsEthernet") return 60.0F;
  if (baud_rate == "1200") return 60.0F;
  if (baud_rate == "2400") return 34.0F;
  if (baud_rate == "4800") return 22.0F;
  if (baud_rate == "9600") return 15.0F;
  if (baud_rate == "19200") return 12.0F;
  return std::nullopt;
}

/// Puts a port's time-out back when the transfer is over, also when it failed.
class KeptTimeout {
 public:
  explicit KeptTimeout(host::Transport& port) : port_(port), seconds_(port.Timeout()) {}
  ~KeptTimeout() {
    try {
      port_.Timeout(seconds_);
    } catch (
        const std::exception&) {  // NOLINT(bugprone-empty-catch): the outcome of the transfer comes first
    }
  }
  KeptTimeout(const KeptTimeout&) = delete;
  KeptTimeout& operator=(const KeptTimeout&) = delete;

 private:
  host::Transport& port_;
  float seconds_;
};

bool CarriesBlocks(std::string_view port) {
  return port == "QPort.clsGPIB" || port == "QPort.clsComm" || port == "QPort.clsEthernet";
}

/// The block's length: digit by digit in 16 bits. IRREGULAR: a step that overflows is dropped, and the length
/// keeps the value that it had.
std::int16_t LengthOf(const std::vector<std::uint8_t>& digits) {
  std::int16_t length = 0;
  for (const std::uint8_t digit : digits) {
    if (digit < '0' || digit > '9') continue;
    const int longer = length * 10 + (digit - '0');
    if (longer <= INT16_MAX) length = static_cast<std::int16_t>(longer);
  }
  return length;
}

}  // namespace

// ScreenShot ------------------------------------------------------------------------------------------------
bool clsKEL4x::ScreenShot(KelScreenShotModes udtMode, std::vector<std::uint8_t>& bytBuffer) {
  static constexpr MemberTexts kGet = ReadTexts("ScreenShot");
  enum class Outcome { kRefused, kDone, kWrongPort, kBadBlock, kHeaderRead };
  status_.prefix = kNoStatus;
  std::vector<std::uint8_t> header;
  std::int16_t length_digits = 0;
  std::optional<KeptTimeout> timeout;

  const Outcome outcome = Armed(kGet, [&] {
    if ((udtMode & kelCapture) != 0) {
      std::string reply;
      io_.ExchangeCommand("READ:SCREEN:BUFFER?", reply);
      if (SimulationActive() || status_.Decode(reply) != "0") return Outcome::kRefused;
    }
    if ((udtMode & kelTransfer) == 0) return Outcome::kDone;

    host::Transport& port = io_.Port();
    const std::string remote_control = io_.RemoteControl();
    if (!CarriesBlocks(remote_control)) return Outcome::kWrongPort;
    timeout.emplace(port);
    std::string baud_rate;
    if (remote_control == "QPort.clsComm") baud_rate = SettingText(*settings_->Item("RS232.Baud Rate"));
    if (const auto seconds = TransferTimeout(remote_control, baud_rate)) port.Timeout(*seconds);

    header = io_.ReadBinaryBlock(1, "READ:BUFFER:PCX?");
    if (header.empty() || header.front() != '#') return Outcome::kBadBlock;
    const std::vector<std::uint8_t> count = io_.ReadBinaryBlock(1, std::nullopt);
    header.insert(header.end(), count.begin(), count.end());
    const char character = count.empty() ? '0' : static_cast<char>(count.front());
    length_digits = RoundToInt16(LeadingNumber({&character, 1}));
    return length_digits == 0 ? Outcome::kBadBlock : Outcome::kHeaderRead;
  });
  switch (outcome) {
    case Outcome::kRefused:
      return false;
    case Outcome::kDone:
      return true;
    case Outcome::kWrongPort:
      Raise(qkelBadRemoteControlPort, kGet.source, "Remote Control Port does not support operation");
    case Outcome::kBadBlock:
      Raise(qkelQueryFailed, kGet.source, "Get ScreenShot failed");
    case Outcome::kHeaderRead:
      break;
  }

  // From here on a failed step is dropped and the next one goes on with what there is.
  const auto read_block = [this](std::int16_t count) -> std::vector<std::uint8_t> {
    try {
      return io_.ReadBinaryBlock(count, std::nullopt);
    } catch (const std::exception&) {
      return {};
    }
  };
  const std::vector<std::uint8_t> digits = read_block(length_digits);
  const std::int16_t length = LengthOf(digits);
  if (length == 0) Raise(qkelQueryFailed, kGet.source, "Get ScreenShot failed");
  std::vector<std::uint8_t> image = read_block(length);
  if ((udtMode & kelIncludeHeader) != 0) {
    bytBuffer = header;
    bytBuffer.insert(bytBuffer.end(), digits.begin(), digits.end());
    bytBuffer.insert(bytBuffer.end(), image.begin(), image.end());
    bytBuffer.resize(static_cast<std::size_t>(2 + length_digits + length));
  } else {
    bytBuffer = std::move(image);
  }
  return true;
}

}  // namespace qkel4x
