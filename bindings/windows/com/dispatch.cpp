#include "com/dispatch.h"

#include <wrl/client.h>

#include <array>
#include <cstdint>
#include <optional>

#include "com/errors.h"
#include "com/module.h"
#include "com/variant.h"

using Microsoft::WRL::ComPtr;

namespace com {
namespace {

constexpr std::size_t kMostArguments = 8;

/// The type that a by-reference parameter points to; nothing for other parameters and for plain values.
std::optional<VARTYPE> ReferencedType(const ELEMDESC& parameter) {
  if (parameter.tdesc.vt != VT_PTR || (parameter.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) != 0) return {};
  const TYPEDESC& target = *parameter.tdesc.lptdesc;
  if (target.vt == VT_SAFEARRAY) return static_cast<VARTYPE>(VT_ARRAY | target.lpadesc->tdescElem.vt);
  if (target.vt == VT_VARIANT || target.vt == VT_USERDEFINED || target.vt == VT_PTR) return {};
  return target.vt;
}

/// One argument for a typed by-reference parameter, held here for the call in the parameter's own type.
class Reference {
 public:
  /// Takes the caller's value and makes `argument` point here.
  void Take(VARIANT& argument, VARTYPE type) {
    given_ = argument;
    const VARIANT& value = V_VT(&given_) == (VT_BYREF | VT_VARIANT) ? *V_VARIANTREF(&given_) : given_;
    if (type == (VT_ARRAY | VT_UI1)) {
      caller_holds_bytes_ = (V_VT(&value) & ~VT_BYREF) == (VT_ARRAY | VT_UI1);
      V_ARRAY(held_.Get()) = NewByteArray(BytesOf(value));
      V_VT(held_.Get()) = type;
    } else {
      held_ = Converted(value, type);
    }
    V_VT(&argument) = static_cast<VARTYPE>(VT_BYREF | type);
    V_BYREF(&argument) = &V_I4(held_.Get());
    taken_ = true;
  }
  /// Gives the value back to a variable of the caller. Script engines index arrays of values alone.
  void GiveBack() {
    if (!taken_ || V_VT(&given_) != (VT_BYREF | VT_VARIANT)) return;
    Variant result;
    if (V_VT(held_.Get()) == (VT_ARRAY | VT_UI1) && !caller_holds_bytes_) {
      V_ARRAY(result.Get()) = NewValueArray(BytesOf(*held_));
      V_VT(result.Get()) = VT_ARRAY | VT_VARIANT;
    } else {
      result = std::move(held_);
    }
    VARIANT* variable = V_VARIANTREF(&given_);
    VariantClear(variable);
    *variable = result.Release();
  }

 private:
  VARIANT given_{};  // the caller's, which owns it
  Variant held_;
  bool taken_ = false;
  bool caller_holds_bytes_ = false;
};

/// The description of the member that a call means.
class MemberDescription {
 public:
  MemberDescription(ITypeInfo& type, DISPID member, WORD flags) : type_(type) {
    TYPEATTR* attributes = nullptr;
    if (FAILED(type_.GetTypeAttr(&attributes))) return;
    const WORD count = attributes->cFuncs;
    type_.ReleaseTypeAttr(attributes);
    for (UINT index = 0; index < count && function_ == nullptr; ++index) {
      FUNCDESC* candidate = nullptr;
      if (FAILED(type_.GetFuncDesc(index, &candidate))) continue;
      if (candidate->memid == member && (candidate->invkind & flags) != 0) {
        function_ = candidate;
      } else {
        type_.ReleaseFuncDesc(candidate);
      }
    }
  }
  ~MemberDescription() {
    if (function_ != nullptr) type_.ReleaseFuncDesc(function_);
  }
  MemberDescription(const MemberDescription&) = delete;
  MemberDescription& operator=(const MemberDescription&) = delete;

  /// The parameter that the argument at that place of the argument list is for; the list stands backwards,
  /// named arguments first.
  const ELEMDESC* ParameterOf(const DISPPARAMS& arguments, UINT place) const {
    if (function_ == nullptr) return nullptr;
    UINT position = arguments.cArgs - 1 - place;
    if (place < arguments.cNamedArgs) {
      const DISPID named = arguments.rgdispidNamedArgs[place];
      if (named == DISPID_PROPERTYPUT) return nullptr;
      position = static_cast<UINT>(named);
    }
    return position < static_cast<UINT>(function_->cParams) ? &function_->lprgelemdescParam[position]
                                                            : nullptr;
  }

 private:
  ITypeInfo& type_;
  FUNCDESC* function_ = nullptr;
};

/// The arguments of a call with everything converted that a typed by-reference parameter needs.
class References {
 public:
  References(const DISPPARAMS& given, ITypeInfo& type, DISPID member, WORD flags) : arguments_(given) {
    if (given.cArgs == 0 || given.cArgs > kMostArguments) return;
    const MemberDescription description(type, member, flags);
    for (UINT place = 0; place < given.cArgs; ++place) {
      copies_[place] = given.rgvarg[place];
      const ELEMDESC* parameter = description.ParameterOf(given, place);
      const std::optional<VARTYPE> wanted = parameter == nullptr ? std::nullopt : ReferencedType(*parameter);
      if (wanted && V_VT(&copies_[place]) != (VT_BYREF | *wanted)) held_[place].Take(copies_[place], *wanted);
    }
    arguments_.rgvarg = copies_.data();
  }

  DISPPARAMS* Arguments() { return &arguments_; }
  void GiveBack() {
    for (Reference& reference : held_) reference.GiveBack();
  }

 private:
  DISPPARAMS arguments_;
  std::array<VARIANT, kMostArguments> copies_{};
  std::array<Reference, kMostArguments> held_;
};

}  // namespace

HRESULT TypeInformationOf(REFIID interface_id, UINT index, ITypeInfo** information) {
  if (information == nullptr) return E_POINTER;
  *information = nullptr;
  return index == 0 ? TypeInformation(interface_id, information) : DISP_E_BADINDEX;
}

HRESULT IdsOfNames(REFIID interface_id, LPOLESTR* names, UINT count, DISPID* ids) {
  ComPtr<ITypeInfo> type;
  const HRESULT result = TypeInformation(interface_id, &type);
  return FAILED(result) ? result : DispGetIDsOfNames(type.Get(), names, count, ids);
}

HRESULT InvokeMember(REFIID interface_id, void* target, DISPID member, WORD flags, DISPPARAMS* arguments,
                     VARIANT* result, EXCEPINFO* information, UINT* bad_argument) {
  if (arguments == nullptr) return E_POINTER;
  ComPtr<ITypeInfo> type;
  if (const HRESULT found = TypeInformation(interface_id, &type); FAILED(found)) return found;
  SetErrorInfo(0, nullptr);
  try {
    References references(*arguments, *type.Get(), member, flags);
    const HRESULT called =
        type->Invoke(target, member, flags, references.Arguments(), result, information, bad_argument);
    if (SUCCEEDED(called)) references.GiveBack();
    return called;
  } catch (const host::AutomationError& error) {
    return error.Number() == host::kOverflow ? DISP_E_OVERFLOW : DISP_E_TYPEMISMATCH;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

}  // namespace com
