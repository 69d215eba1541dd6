// The identification of the instrument and its fields.
#include "driver/clsKEL4x.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"

namespace qkel4x {
namespace {

// IRREGULAR: its long form carries the number of a failed command, its short form that of a failed query.
consteval MemberTexts IdentityTexts() {
  MemberTexts texts = ReadTexts("Identity");
  texts.long_number = qkelCommandFailed;
  return texts;
}

}  // namespace

// Identity --------------------------------------------------------------------------------------------------
std::string clsKEL4x::Identity() {
  static constexpr MemberTexts kGet = IdentityTexts();
  status_.prefix = kNoStatus;
  return Armed(kGet, [this]() -> std::string {
    if (identity_.valid) return identity_.text;
    const std::string reply = io_.QueryText("*IDN?");
    if (SimulationActive()) return {};
    identity_ = {std::string(status_.Decode(reply)), true};
    return identity_.text;
  });
}

std::string clsKEL4x::IdentityField(std::size_t position, std::string_view source,
                                    std::string_view description) {
  try {
    return std::string(PieceAt(Identity(), ',', position));
  } catch (const std::exception&) {
    Raise(qkelQueryFailed, source, description);
  }
}

// Manufacturer ----------------------------------------------------------------------------------------------
std::string clsKEL4x::Manufacturer() {
  return IdentityField(0, "clsKEL4x.IDriverIdentify_Manufacturer", "Get Manufacturer failed");
}

// ModelNumber -----------------------------------------------------------------------------------------------
std::string clsKEL4x::ModelNumber() {
  return IdentityField(1, "clsKEL4x.IDriverIdentify_ModelNumber", "Get ModelNumber failed");
}

// SerialNumber ----------------------------------------------------------------------------------------------
std::string clsKEL4x::SerialNumber() {
  return IdentityField(2, "clsKEL4x.IDriverIdentify_SerialNumber", "Get SerialNumber failed");
}

// FirmwareVersion -------------------------------------------------------------------------------------------
std::string clsKEL4x::FirmwareVersion() {
  return IdentityField(3, "clsKEL4x.IDriverIdentify_FirmwareVersion", "Get FirmwareVersion failed");
}

double clsKEL4x::FirmwareNumber() { return LeadingNumber(FirmwareVersion()); }

}  // namespace qkel4x
