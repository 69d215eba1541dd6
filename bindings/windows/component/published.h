// The step from a vtable method to the typed member behind it: arguments and results change their form,
// errors leave as error information.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "com/dispatch.h"
#include "com/errors.h"
#include "com/text.h"
#include "com/variant.h"
#include "driver/core/date_time.h"
#include "host/parameter_node.h"

struct _clsStatistics;

namespace qkel4x {
class clsStatistics;
}

namespace component {

inline void Form(bool from, VARIANT_BOOL* to) { *to = from ? VARIANT_TRUE : VARIANT_FALSE; }
inline void Form(std::int16_t from, short* to) { *to = from; }
inline void Form(std::int32_t from, long* to) { *to = from; }
inline void Form(double from, double* to) { *to = from; }
inline void Form(qkel4x::DateTime from, DATE* to) { *to = from.days; }
inline void Form(const std::string& from, BSTR* to) { *to = com::NewBstr(from); }
inline void Form(const std::string& from, VARIANT* to) { *to = com::Variant(from).Release(); }
/// A new object over the report.
void Form(const std::shared_ptr<qkel4x::clsStatistics>& from, ::_clsStatistics** to);
/// The host's own object.
void Form(const std::shared_ptr<host::ParameterNode>& from, IDispatch** to);
template <class Enumeration, class Published>
requires std::is_enum_v<Enumeration>
void Form(Enumeration from, Published* to) { *to = static_cast<Published>(from); }

/// An argument that is published by reference and only read.
inline std::int16_t Referenced(const short* value) {
  if (value == nullptr) throw host::AutomationError(host::kTypeMismatch, "QKEL4x", "Type mismatch");
  return *value;
}

/// Runs `work` on the bytes of an array and puts what it made of them in the array's place.
template <class Work>
auto Replacing(SAFEARRAY** array, const Work& work) {
  if (array == nullptr) throw host::AutomationError(host::kTypeMismatch, "QKEL4x", "Type mismatch");
  const std::vector<std::uint8_t> before = com::BytesOf(*array);
  std::vector<std::uint8_t> bytes = before;
  const auto result = work(bytes);
  if (bytes != before) {
    SAFEARRAY* made = com::NewByteArray(bytes);
    if (const HRESULT destroyed = *array == nullptr ? S_OK : SafeArrayDestroy(*array); FAILED(destroyed)) {
      SafeArrayDestroy(made);
      com::ThrowIfFailed(destroyed, "Replacing the array");
    }
    *array = made;
  }
  return result;
}

/// One dual interface over the object of the typed interface that it publishes.
template <class DualInterface, class Typed>
class Published : public com::Dual<DualInterface> {
 protected:
  Typed& Target() const { return *target_; }
  void SetTarget(Typed* target) { target_ = target; }

  template <class Work>
  HRESULT Do(const Work& work) const {
    return com::Guarded(__uuidof(DualInterface), work);
  }
  template <class Result, class Work>
  HRESULT Give(Result* result, const Work& work) const {
    if (result == nullptr) return E_POINTER;
    *result = Result();
    return com::Guarded(__uuidof(DualInterface), [&] { Form(work(), result); });
  }

 private:
  Typed* target_ = nullptr;
};

}  // namespace component
