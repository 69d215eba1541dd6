// The installed options: from a bit mask, and the SAW filters from the boards or by trying each.
#include "driver/clsKEL4x.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"
#include "host/host.h"

namespace qkel4x {
namespace {

struct OptionBits {
  std::uint32_t bits;
  std::string_view code;
};

// Bit 23 and bits 26 to 31 stand for nothing, and there is no K24.
constexpr OptionBits kOptions[] = {
    {0x0000001, "KEL-B3,"},  {0x0000002, "EAMOD,"},   {0x0000004, "RB,"},      {0x0000008, "AD,"},
    {0x0000010, "KEL-B2,"},  {0x0000020, "KEL-B1,"},  {0x0000040, "KEL-B4,"},  {0x0000080, "KEL-B6,"},
    {0x0000100, "KEL-B8,"},  {0x0000200, "KEL-B5,"},  {0x0000400, "KEL-B10,"}, {0x0000800, "KEL-B7,"},
    {0x0001000, "KEL-B20,"}, {0x0002000, "KEL-K21,"}, {0x0004000, "KEL-K22,"}, {0x0008000, "KEL-K23,"},
    {0x07F0000, "EXTMEM,"},  {0x1000000, "KEL-K25,"}, {0x2000000, "EXTREF,"},
};

struct SawFilter {
  KelStatusSawFilterBWs bandwidth;
  std::string_view board_text;
  std::string_view code;
  bool present = false;
};

constexpr std::int32_t kProbedLogKind = 4;

/// The piece of a board report from `board` up to the next ";", or no text (a null view) where the board is
/// not in it.
std::string_view BoardPiece(std::string_view report, std::string_view board) {
  const std::size_t start = report.find(board);
  if (start == std::string_view::npos) return {};
  return report.substr(start, report.find(';', start) - start);
}

/// Runs a step whose errors are dropped.
template <class Step>
void IgnoringErrors(const Step& step) {
  try {
    step();
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): that is what it is for
  }
}

}  // namespace

// InstalledHardware -----------------------------------------------------------------------------------------
std::string clsKEL4x::InstalledHardware() {
  try {
    return FindInstalledHardware();
  } catch (const std::exception&) {
    Raise(qkelQueryFailed, "clsKEL4x.IDriverIdentify_InstalledHardware", "Get InstalledHardware failed");
  }
}

std::string clsKEL4x::FindInstalledHardware() {
  if (installed_hardware_.valid) return installed_hardware_.text;
  std::string reply;
  io_.ExchangeCommand("READ:INFO:DATA?", reply);
  if (SimulationActive()) return {};
  const auto mask = static_cast<std::uint32_t>(RoundToInt32(LeadingNumber(reply)));
  std::string& text = installed_hardware_.text;
  text.clear();
  for (const OptionBits& option : kOptions) {
    if ((mask & option.bits) != 0) text += option.code;
  }

  // In the order in which their codes are appended and in which they are tried.
  SawFilter filters[] = {
      {kelSaw6MHz, "6.0", "KEL-B11,"},
      {kelSaw7MHz, "7.0", "KEL-B12,"},
      {kelSaw8MHz, "8.0", "KEL-B13,"},
      {kelSaw2MHz, "2.0", "KEL-B14,"},
  };
  bool board_found = false;
  if (FirmwareNumber() >= 5.0) {
    io_.ExchangeCommand("SYSTEM:SERVICE:GET:BOARD:INFO?", reply);
    if (SimulationActive()) return {};
    std::string_view report = reply;
    for (const std::string_view board : {"0x83", "0x84"}) {
      const std::string_view piece = BoardPiece(report, board);
      if (piece.data() == nullptr) continue;
      board_found = true;
      report =
          piece;  // IRREGULAR: after the first board the second is looked for in the first one's piece only
      for (SawFilter& filter : filters) {
        if (piece.find(filter.board_text) != std::string_view::npos) filter.present = true;
      }
    }
  }

  if (!board_found) {
    host::Host& host = host::CurrentHost();
    std::optional<KelStatusSawFilterBWs> before;
    bool reporting = true;
    // An error up to here skips the probe as a whole; only the log is switched on again.
    IgnoringErrors([&] {
      host.Log().KindEnabled(kProbedLogKind, false);
      const KelStatusSawFilterBWs bandwidth = StatusSawFilterBW();
      reporting = host.Errors().ReportingEnabled();
      host.Errors().ReportingEnabled(false);
      before = bandwidth;
    });
    if (before) {
      for (SawFilter& filter : filters) {
        IgnoringErrors([&] { StatusSawFilterBW(filter.bandwidth); });
        IgnoringErrors([&] { filter.present = StatusSawFilterBW() == filter.bandwidth; });
      }
      IgnoringErrors([&] { host.Errors().ReportingEnabled(reporting); });
      StatusSawFilterBW(*before);
    }
    host.Log().KindEnabled(kProbedLogKind, true);
  }

  for (const SawFilter& filter : filters) {
    if (filter.present) text += filter.code;
  }
  if (!text.empty()) text.pop_back();
  installed_hardware_.valid = true;
  return text;
}

}  // namespace qkel4x
