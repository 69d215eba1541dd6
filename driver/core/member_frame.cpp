// What happens to a failure inside the armed part of a member.
#include "driver/clsKEL4x.h"
#include "driver/core/raise.h"

namespace qkel4x {
namespace {

constexpr std::int32_t kPassedOnUntouched = 40006;

}  // namespace

void clsKEL4x::Fail(const MemberTexts& texts, const std::exception& failure) {
  const auto* error = dynamic_cast<const host::AutomationError*>(&failure);
  if (error != nullptr) {
    if (error->Number() == kPassedOnUntouched) throw;
    if (error->Code() >= 2010 && error->Code() <= 2013) {
      Raise(texts.long_number, texts.source, Join(texts.long_description, io_.ReadErrorQueue()));
    }
  }
  Raise(texts.short_number, texts.source, texts.short_description);
}

}  // namespace qkel4x
