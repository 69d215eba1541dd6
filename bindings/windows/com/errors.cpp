#include "com/errors.h"

#include <wrl/client.h>

#include <string>

#include "com/module.h"
#include "com/text.h"

using Microsoft::WRL::ComPtr;

namespace com {
namespace {

constexpr std::uint32_t kPlainNumbers = 0x800A0000U;

struct FaultCode {
  HRESULT result;
  std::int32_t number;
};
constexpr FaultCode kFaultCodes[] = {
    {DISP_E_OVERFLOW, host::kOverflow},
    {DISP_E_BADINDEX, host::kSubscriptOutOfRange},
    {DISP_E_TYPEMISMATCH, host::kTypeMismatch},
    {DISP_E_UNKNOWNNAME, host::kMemberNotFound},
    {DISP_E_MEMBERNOTFOUND, host::kMemberNotFound},
    {DISP_E_BADPARAMCOUNT, host::kWrongArgumentCount},
    {REGDB_E_CLASSNOTREG, host::kCannotCreateObject},
    {CO_E_CLASSSTRING, host::kCannotCreateObject},
    {CLASS_E_CLASSNOTAVAILABLE, host::kCannotCreateObject},
    {E_INVALIDARG, host::kInvalidProcedureCall},
};

std::string TakeText(BSTR& text) {
  std::string taken = Text(text);
  SysFreeString(text);
  text = nullptr;
  return taken;
}

void SetInformation(REFIID interface_id, std::string_view source, std::string_view description,
                    std::string_view help_file, DWORD help_context) {
  ComPtr<ICreateErrorInfo> creation;
  if (FAILED(CreateErrorInfo(&creation))) return;
  creation->SetGUID(interface_id);
  creation->SetSource(Wide(source).data());
  creation->SetDescription(Wide(description).data());
  if (!help_file.empty()) creation->SetHelpFile(Wide(help_file).data());
  creation->SetHelpContext(help_context);
  ComPtr<IErrorInfo> information;
  if (SUCCEEDED(creation.As(&information))) SetErrorInfo(0, information.Get());
}

}  // namespace

HRESULT ResultOf(std::int32_t number) {
  if (number < 0) return number;
  if (number == 0 || number > 0xFFFF) return E_FAIL;
  return static_cast<HRESULT>(kPlainNumbers + static_cast<std::uint32_t>(number));
}

std::int32_t NumberOf(HRESULT result) {
  const auto code = static_cast<std::uint32_t>(result);
  if ((code & 0xFFFF0000U) == kPlainNumbers) return static_cast<std::int32_t>(code & 0xFFFFU);
  for (const FaultCode& fault : kFaultCodes) {
    if (fault.result == result) return fault.number;
  }
  return result;
}

HRESULT Report(const host::AutomationError& error, REFIID interface_id) noexcept {
  try {
    const std::string_view help_file = error.HelpFile().empty() ? kModule.help_file : error.HelpFile();
    SetInformation(interface_id, error.Source(), error.Description(), help_file,
                   static_cast<DWORD>(error.HelpContext()));
  } catch (const std::exception&) {
    SetErrorInfo(0, nullptr);  // no memory for the texts: the number alone
  }
  return ResultOf(error.Number());
}

HRESULT Report(const std::exception& error, REFIID interface_id) noexcept {
  try {
    SetInformation(interface_id, kModule.name, error.what(), kModule.help_file, 0);
  } catch (const std::exception&) {
    SetErrorInfo(0, nullptr);
  }
  return E_FAIL;
}

void ThrowIfFailed(HRESULT result, EXCEPINFO& information, const char* what) {
  if (SUCCEEDED(result)) return;
  if (result != DISP_E_EXCEPTION) {
    throw host::AutomationError(NumberOf(result), kModule.name, std::string(what) + " failed");
  }
  if (information.pfnDeferredFillIn != nullptr) information.pfnDeferredFillIn(&information);
  const std::int32_t number =
      information.wCode != 0 ? static_cast<std::int32_t>(information.wCode) : NumberOf(information.scode);
  std::string source = TakeText(information.bstrSource);
  std::string description = TakeText(information.bstrDescription);
  std::string help_file = TakeText(information.bstrHelpFile);
  throw host::AutomationError(number, std::move(source), std::move(description), std::move(help_file),
                              static_cast<std::int32_t>(information.dwHelpContext));
}

void ThrowIfFailed(HRESULT result, const char* what) {
  if (SUCCEEDED(result)) return;
  EXCEPINFO texts{};
  ComPtr<IErrorInfo> information;
  if (GetErrorInfo(0, &information) != S_OK) {
    throw host::AutomationError(NumberOf(result), kModule.name, std::string(what) + " failed");
  }
  texts.scode = result;
  information->GetSource(&texts.bstrSource);
  information->GetDescription(&texts.bstrDescription);
  information->GetHelpFile(&texts.bstrHelpFile);
  information->GetHelpContext(&texts.dwHelpContext);
  ThrowIfFailed(DISP_E_EXCEPTION, texts, what);
}

}  // namespace com
