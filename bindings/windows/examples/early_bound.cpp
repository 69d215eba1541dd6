// Reads the level and the modulation error ratio over TCP, early-bound. usage: early_bound HOST PORT
#include <cstdio>

#include "qkel4x.h"  // made from qkel4x.idl; carries the platform's headers

namespace {

/// Fails with what the component said.
void Require(HRESULT result) {
  if (SUCCEEDED(result)) return;
  IErrorInfo* information = nullptr;
  BSTR description = nullptr;
  if (GetErrorInfo(0, &information) == S_OK) {
    information->GetDescription(&description);
    information->Release();
  }
  std::fprintf(stderr, "0x%08lX %ls\n", static_cast<unsigned long>(result), description ? description : L"");
  SysFreeString(description);
  TerminateProcess(GetCurrentProcess(), 1);
}

/// settings.Item(name).Value = value, late-bound: the settings belong to the host.
void Set(IDispatch* settings, const wchar_t* name, const wchar_t* value) {
  const auto call = [](IDispatch* object, const wchar_t* member, WORD flags, const wchar_t* text) {
    DISPID id = 0;
    auto* asked = const_cast<LPOLESTR>(member);
    Require(object->GetIDsOfNames({}, &asked, 1, LOCALE_USER_DEFAULT, &id));
    VARIANT argument;
    V_VT(&argument) = VT_BSTR;
    V_BSTR(&argument) = SysAllocString(text);
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS list{&argument, &put, 1, flags == DISPATCH_PROPERTYPUT ? 1U : 0U};
    VARIANT result;
    VariantInit(&result);
    Require(object->Invoke(id, {}, LOCALE_USER_DEFAULT, flags, &list, &result, nullptr, nullptr));
    VariantClear(&argument);
    return V_VT(&result) == VT_DISPATCH ? V_DISPATCH(&result) : nullptr;
  };
  IDispatch* node = call(settings, L"Item", DISPATCH_PROPERTYGET, name);
  call(node, L"Value", DISPATCH_PROPERTYPUT, value);
  node->Release();
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count != 3) return 2;
  Require(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
  _clsKEL4x* kel = nullptr;
  IDriverSetup* setup = nullptr;
  IDispatch* settings = nullptr;
  CLSID class_id{};
  Require(CLSIDFromProgID(L"QKEL4x.clsKEL4x", &class_id));
  Require(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&kel)));
  Require(kel->QueryInterface(IID_PPV_ARGS(&setup)));
  Require(setup->get_Settings(&settings));
  Set(settings, L"Remote Control", L"QPort.clsEthernet");
  Set(settings, L"TCP/IP.Host", arguments[1]);
  Set(settings, L"TCP/IP.Port", arguments[2]);
  Require(setup->put_OnLine(VARIANT_TRUE));
  double level = 0.0;
  double ratio = 0.0;
  Require(kel->put_Mode(kelATSC));
  Require(kel->put_MeasureMode(kelNORM));
  Require(kel->get_MeasureRfLevel(&level));
  Require(kel->get_MeasureVsbMerRmsDb(&ratio));
  std::printf("level %.1f dBm, MER %.1f dB\n", level, ratio);
  Require(setup->put_OnLine(VARIANT_FALSE));
  settings->Release();
  setup->Release();
  kel->Release();
  CoUninitialize();
  return 0;
}
