// Calls by name on dual interfaces: the type library finds the method, and arguments that script engines
// cannot pass as published are converted and written back.
#pragma once

#include <ole2.h>

namespace com {

HRESULT TypeInformationOf(REFIID interface_id, UINT index, ITypeInfo** information);
HRESULT IdsOfNames(REFIID interface_id, LPOLESTR* names, UINT count, DISPID* ids);
/// `target` is the object as the interface of that id.
HRESULT InvokeMember(REFIID interface_id, void* target, DISPID member, WORD flags, DISPPARAMS* arguments,
                     VARIANT* result, EXCEPINFO* information, UINT* bad_argument);

/// The calls by name of one dual interface. A class with several has one of these for each.
template <class DualInterface>
class Dual : public DualInterface {
 public:
  using Interface = DualInterface;

  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    if (count == nullptr) return E_POINTER;
    *count = 1;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** information) override {
    return TypeInformationOf(__uuidof(Interface), index, information);
  }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
    return IdsOfNames(__uuidof(Interface), names, count, ids);
  }
  STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* arguments, VARIANT* result,
                      EXCEPINFO* information, UINT* bad_argument) override {
    return InvokeMember(__uuidof(Interface), static_cast<Interface*>(this), member, flags, arguments, result,
                        information, bad_argument);
  }
};

}  // namespace com
