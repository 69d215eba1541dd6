// Reading and writing settings of the regular shape.
#include "driver/config/enum_setting.h"

#include "driver/clsKEL4x.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"

namespace qkel4x {

std::int32_t clsKEL4x::ReadSetting(const EnumSetting& setting) {
  std::string reply;
  std::string_view value_text;
  const bool decoded = Armed(setting.get, [&] {
    io_.ExchangeCommand(setting.query, reply, setting.choices);
    if (SimulationActive()) return false;
    value_text = status_.Decode(reply);
    return true;
  });
  if (!decoded) return 0;
  for (const Mnemonic& mnemonic : setting.mnemonics) {
    if (value_text == mnemonic.answered || value_text == mnemonic.also_answered) return mnemonic.value;
  }
  if (setting.unrecognised_number == ErrorConstants{}) return 0;
  Raise(setting.unrecognised_number, setting.get.source,
        Join(setting.unrecognised.before, reply, setting.unrecognised.after));
}

void clsKEL4x::WriteSetting(const EnumSetting& setting, std::int32_t value) {
  for (const Mnemonic& mnemonic : setting.mnemonics) {
    if (mnemonic.value == value) {
      Armed(setting.let, [&] { io_.ExchangeCommand(Join(setting.write, mnemonic.sent)); });
      return;
    }
  }
  if (setting.refused.after.data() == nullptr) {
    Raise(qkelInvalidPropertyValue, setting.refusing_source, setting.refused.before);
  }
  Raise(qkelInvalidPropertyValue, setting.refusing_source,
        Join(setting.refused.before, DecimalText(value), setting.refused.after));
}

}  // namespace qkel4x
