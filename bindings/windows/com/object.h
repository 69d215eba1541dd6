// Objects of this module as the platform sees them: counted, with any number of dual interfaces.
#pragma once

#include <ole2.h>

#include <atomic>
#include <type_traits>

#include "com/dispatch.h"
#include "com/errors.h"
#include "com/module.h"

namespace com {

/// A counted object that answers to the dual interfaces of its bases; the first is the default one.
template <class First, class... Others>
class Object : public First, public Others..., public ISupportErrorInfo {
 public:
  Object() { Hold(); }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() { LetGo(); }

  STDMETHODIMP QueryInterface(REFIID interface_id, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (interface_id == IID_IUnknown || interface_id == IID_IDispatch) {
      *object = static_cast<typename First::Interface*>(this);
    } else if (interface_id == IID_ISupportErrorInfo) {
      *object = static_cast<ISupportErrorInfo*>(this);
    } else {
      Offer<First>(interface_id, object);
      (Offer<Others>(interface_id, object), ...);
    }
    if (*object == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }
  STDMETHODIMP InterfaceSupportsErrorInfo(REFIID) override { return S_OK; }

 private:
  template <class Base>
  void Offer(REFIID interface_id, void** object) {
    if (interface_id == __uuidof(typename Base::Interface)) {
      *object = static_cast<typename Base::Interface*>(this);
    }
  }

  std::atomic<ULONG> references_{1};
};

/// Makes an object and hands out one of its interfaces.
template <class Class, class... Arguments>
void Create(REFIID interface_id, void** object, Arguments&&... arguments) {
  auto* made = new Class(std::forward<Arguments>(arguments)...);
  const HRESULT result = made->QueryInterface(interface_id, object);
  made->Release();
  ThrowIfFailed(result, "Asking a new object for its interface");
}

}  // namespace com
