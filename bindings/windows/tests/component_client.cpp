// Clients of the component as other languages are: early-bound through the generated header, from another
// apartment, and a reader of the type library. usage: component_client early|apartment|library
// FILE|without-registry
#include <initguid.h>
#include <ole2.h>
#include <wrl/client.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "automation/enumeration_table.h"
#include "automation/member_table.h"
#include "qkel4x.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr GUID kNoInterface{};

int failures = 0;

void Check(bool holds, const std::string& claim) {
  if (holds) return;
  ++failures;
  std::printf("not so: %s\n", claim.c_str());
}

void Succeeds(HRESULT result, const std::string& call) {
  char code[16];
  std::snprintf(code, sizeof code, "0x%08lX", static_cast<unsigned long>(result));
  Check(SUCCEEDED(result), call + " succeeds, it gives " + code);
}

/// ASCII alone travels here.
std::string Plain(BSTR text) {
  std::string plain;
  for (UINT i = 0; i < SysStringLen(text); ++i) plain += static_cast<char>(text[i]);
  SysFreeString(text);
  return plain;
}

struct Text {
  explicit Text(const wchar_t* text) : bstr(SysAllocString(text)) {}
  ~Text() { SysFreeString(bstr); }
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;
  BSTR bstr;
};

VARIANT Whole(long number) {
  VARIANT value;
  VariantInit(&value);
  V_VT(&value) = VT_I4;
  V_I4(&value) = number;
  return value;
}

/// Sets one setting by name, the way every client without the host's library does.
void Choose(IDriverSetup& setup, const wchar_t* name, const wchar_t* choice) {
  ComPtr<IDispatch> settings;
  Succeeds(setup.get_Settings(&settings), "get_Settings");
  const Text name_text(name);
  const Text choice_text(choice);
  auto call = [](IDispatch& object, const wchar_t* member, WORD flags, BSTR argument, VARIANT* result) {
    DISPID id = 0;
    auto* asked = const_cast<LPOLESTR>(member);
    HRESULT found = object.GetIDsOfNames(kNoInterface, &asked, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(found)) return found;
    VARIANT value;
    V_VT(&value) = VT_BSTR;
    V_BSTR(&value) = argument;
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS list{&value, &put, 1, flags == DISPATCH_PROPERTYPUT ? 1U : 0U};
    return object.Invoke(id, kNoInterface, LOCALE_USER_DEFAULT, flags, &list, result, nullptr, nullptr);
  };
  VARIANT node;
  VariantInit(&node);
  Succeeds(call(*settings.Get(), L"Item", DISPATCH_PROPERTYGET, name_text.bstr, &node), "Item");
  if (V_VT(&node) == VT_DISPATCH) {
    Succeeds(call(*V_DISPATCH(&node), L"Value", DISPATCH_PROPERTYPUT, choice_text.bstr, nullptr), "Value");
  }
  VariantClear(&node);
}

/// The thread's error information: source, description, help file.
std::vector<std::string> ErrorTexts() {
  ComPtr<IErrorInfo> information;
  if (GetErrorInfo(0, &information) != S_OK) return {};
  BSTR source = nullptr;
  BSTR description = nullptr;
  BSTR help_file = nullptr;
  information->GetSource(&source);
  information->GetDescription(&description);
  information->GetHelpFile(&help_file);
  return {Plain(source), Plain(description), Plain(help_file)};
}

/// On the front panel, through the virtual table. Error information crosses no apartment in every Wine, so
/// that only the codes are compared there.
void UseDriver(bool same_apartment) {
  ComPtr<_clsKEL4x> kel;
  Succeeds(CoCreateInstance(CLSID_clsKEL4x, nullptr, CLSCTX_INPROC_SERVER, __uuidof(_clsKEL4x), &kel),
           "CoCreateInstance");
  if (kel == nullptr) return;
  ComPtr<IDriverSetup> setup;
  ComPtr<IDriverIdentify> identify;
  Succeeds(kel.As(&setup), "IDriverSetup");
  Succeeds(kel.As(&identify), "IDriverIdentify");
  if (setup == nullptr || identify == nullptr) return;
  Choose(*setup.Get(), L"Remote Control", L"GUI");
  Succeeds(setup->put_OnLine(VARIANT_TRUE), "put_OnLine");
  VARIANT_BOOL on_line = VARIANT_FALSE;
  Succeeds(setup->get_OnLine(&on_line), "get_OnLine");
  Check(on_line == VARIANT_TRUE, "the driver is on line");
  Check(setup->put_OnLine(VARIANT_TRUE) == static_cast<HRESULT>(0x800A07D2), "on line twice is 0x800A07D2");

  BSTR text = nullptr;
  Succeeds(identify->get_Manufacturer(&text), "get_Manufacturer");
  Check(Plain(text) == "HALVERN&TOSKE", "the manufacturer");
  Succeeds(kel->put_Mode(kelATSC), "put_Mode");
  Succeeds(kel->put_RfCenterFrequency(615e6), "put_RfCenterFrequency");
  Succeeds(kel->put_SpecFuncEqualizer(kelEqualizerOn), "put_SpecFuncEqualizer");
  Succeeds(kel->put_MeasureMode(kelEPAT), "put_MeasureMode");
  KelMeasureModes mode = kelNORM;
  Succeeds(kel->get_MeasureMode(&mode), "get_MeasureMode");
  Check(mode == kelEPAT, "the measurement mode reads back");
  double number = 0.0;
  Succeeds(kel->get_RfCenterFrequency(&number), "get_RfCenterFrequency");
  Check(number == 615e6, "the frequency reads back");
  Succeeds(kel->get_MeasureVsbMerRmsDb(&number), "get_MeasureVsbMerRmsDb");  // repeats until there is a value
  Check(number > 20.0 && number < 45.0, "the modulation error ratio");
  Succeeds(kel->MeasureTdGhostPattern(), "MeasureTdGhostPattern");
  short index = 1;
  Succeeds(kel->get_GhostPatternAtten(&index, &number), "get_GhostPatternAtten");
  Check(number > 0 && index == 1, "the first echo");
  DATE date = 0.0;
  Succeeds(kel->put_SetupDate(39818.0), "put_SetupDate");
  Succeeds(kel->get_SetupDate(&date), "get_SetupDate");
  Check(date == 39818.0, "the date reads back");
  VARIANT prefix;
  VariantInit(&prefix);
  Succeeds(kel->get_Prefix(&prefix), "get_Prefix");
  Check(V_VT(&prefix) == VT_BSTR, "the prefix is a value that holds a text");
  VariantClear(&prefix);

  Check(kel->put_RfPilotFrequency(1.0) == static_cast<HRESULT>(0x8004017C), "an argument out of range");
  if (same_apartment) {
    const std::vector<std::string> texts = ErrorTexts();
    Check(texts.size() == 3 && texts[0] == "clsKEL4x.RfPilotFrequency" &&
              texts[1].find("RfPilotFrequency") != std::string::npos && texts[2] == "QKEL4X.HLP",
          "its error information");
    ComPtr<ISupportErrorInfo> support;
    Succeeds(kel.As(&support), "ISupportErrorInfo");
    Check(support->InterfaceSupportsErrorInfo(__uuidof(_clsKEL4x)) == S_OK, "errors come with information");
    Check(kel->get_RfCenterFrequency(nullptr) == E_POINTER, "no place for the result");
  }
  SAFEARRAY* bytes = SafeArrayCreateVector(VT_UI1, 0, 3);
  VARIANT_BOOL done = VARIANT_TRUE;
  Check(kel->get_ScreenShot(kelTransfer, &bytes, &done) == static_cast<HRESULT>(0x800407E8),
        "no block on the front panel");
  Check(bytes != nullptr && bytes->rgsabound[0].cElements == 3, "the buffer is left alone");
  SafeArrayDestroy(bytes);
  ComPtr<_clsStatistics> report;
  Succeeds(kel->get_AlarmStatistics(&report), "get_AlarmStatistics");
  if (report != nullptr) {
    const Text statistics(L"01:00:00,0,9,0,9,0,9,0,9,0,9,0,9,17,---");
    Succeeds(report->put_Statistics(statistics.bstr), "put_Statistics");
    Succeeds(report->get_CorrCntBeforeRs(&number), "get_CorrCntBeforeRs");
    Check(number == 17.0, "a count of the report");
    const Text cut(L"01:00:00");
    Check(report->put_Statistics(cut.bstr) == static_cast<HRESULT>(0x800A0009), "a report cut short");
  }

  // By name on the same object: what a failed call leaves.
  DISPID id = 0;
  wchar_t name[] = L"RfPilotFrequency";
  LPOLESTR names = name;
  Succeeds(kel->GetIDsOfNames(kNoInterface, &names, 1, LOCALE_USER_DEFAULT, &id), "GetIDsOfNames");
  VARIANT value = Whole(1);
  DISPID put = DISPID_PROPERTYPUT;
  DISPPARAMS list{&value, &put, 1, 1};
  EXCEPINFO information{};
  Check(kel->Invoke(id, kNoInterface, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &list, nullptr, &information,
                    nullptr) == DISP_E_EXCEPTION,
        "a failed call by name is an exception");
  Check(information.scode == static_cast<SCODE>(0x8004017C), "its code");
  Check(Plain(information.bstrSource) == "clsKEL4x.RfPilotFrequency", "its source");
  Check(Plain(information.bstrHelpFile) == "QKEL4X.HLP", "its help file");
  SysFreeString(information.bstrDescription);
  Succeeds(setup->put_OnLine(VARIANT_FALSE), "put_OnLine");
}

// ---- The type library against the member table ------------------------------------------------------------

std::string Name(ITypeInfo& type, MEMBERID member, std::string* help = nullptr) {
  BSTR name = nullptr;
  BSTR text = nullptr;
  if (FAILED(type.GetDocumentation(member, &name, &text, nullptr, nullptr))) return {};
  if (help != nullptr) {
    *help = Plain(text);
  } else {
    SysFreeString(text);
  }
  return Plain(name);
}

/// A type as the library has it, in the words of an interface definition.
std::string Described(ITypeInfo& owner, const TYPEDESC& type) {
  switch (type.vt) {
    case VT_PTR:
      return Described(owner, *type.lptdesc) + "*";
    case VT_SAFEARRAY:
      return "SAFEARRAY(" + Described(owner, type.lpadesc->tdescElem) + ")";
    case VT_USERDEFINED: {
      ComPtr<ITypeInfo> other;
      if (FAILED(owner.GetRefTypeInfo(type.hreftype, &other))) return "?";
      return Name(*other.Get(), MEMBERID_NIL);
    }
    case VT_I2:
      return "short";
    case VT_I4:
      return "long";
    case VT_R8:
      return "double";
    case VT_DATE:
      return "DATE";
    case VT_BSTR:
      return "BSTR";
    case VT_BOOL:
      return "VARIANT_BOOL";
    case VT_VARIANT:
      return "VARIANT";
    case VT_UI1:
      return "unsigned char";
    case VT_DISPATCH:
      return "IDispatch*";
    case VT_VOID:
      return "void";
    default:
      return "type " + std::to_string(type.vt);
  }
}

std::string Published(const automation::Type& type, std::string_view member) {
  using automation::ValueType;
  if (type.enumeration != nullptr) return std::string(type.enumeration->name);
  switch (type.value) {
    case ValueType::kBool:
      return "VARIANT_BOOL";
    case ValueType::kInt16:
      return "short";
    case ValueType::kInt32:
      return "long";
    case ValueType::kDouble:
      return "double";
    case ValueType::kDateTime:
      return "DATE";
    case ValueType::kText:
      return member == "Prefix" || member == "Postfix" || member == "ResponseString" ? "VARIANT" : "BSTR";
    case ValueType::kBytes:
      return "SAFEARRAY(unsigned char)";
    case ValueType::kStatistics:
      return "_clsStatistics*";
    case ValueType::kSettings:
      return "IDispatch*";
    default:
      return "void";
  }
}

struct LibraryMethod {
  MEMBERID id;
  std::string name;
  std::string type;  // of the result, or of the value written
  std::vector<std::string> parameters;
  bool hidden;
  std::string help;
};

std::map<std::string, LibraryMethod> Methods(ITypeInfo& type) {
  std::map<std::string, LibraryMethod> methods;
  TYPEATTR* attributes = nullptr;
  type.GetTypeAttr(&attributes);
  const WORD count = attributes->cFuncs;
  type.ReleaseTypeAttr(attributes);
  for (UINT i = 0; i < count; ++i) {
    FUNCDESC* function = nullptr;
    type.GetFuncDesc(i, &function);
    const bool inherited = function->memid >= 0x60000000;
    if (!inherited) {
      LibraryMethod method{function->memid, "", Described(type, function->elemdescFunc.tdesc), {}, false, ""};
      method.name = Name(type, function->memid, &method.help);
      method.hidden = (function->wFuncFlags & FUNCFLAG_FHIDDEN) != 0;
      const bool put = function->invkind == INVOKE_PROPERTYPUT;
      BSTR names[8] = {};
      UINT named = 0;
      type.GetNames(function->memid, names, 8, &named);
      for (UINT n = 0; n < named; ++n) {
        const std::string parameter = Plain(names[n]);
        if (n == 0 || put || static_cast<SHORT>(n) > function->cParams) continue;
        method.parameters.push_back(Described(type, function->lprgelemdescParam[n - 1].tdesc) + " " +
                                    parameter);
      }
      if (put) method.type = Described(type, function->lprgelemdescParam[0].tdesc);
      const char* kind = put ? "write " : function->invkind == INVOKE_PROPERTYGET ? "read " : "call ";
      methods[kind + method.name] = method;
    }
    type.ReleaseFuncDesc(function);
  }
  return methods;
}

void CompareMethod(const std::string& where, const automation::Member& member,
                   const std::map<std::string, LibraryMethod>& methods, const std::string& key) {
  const auto found = methods.find(key);
  Check(found != methods.end(), "the library has " + where + " " + key);
  if (found == methods.end()) return;
  const LibraryMethod& method = found->second;
  const std::string claim = where + " " + key;
  Check(method.id == member.id, claim + ": id " + std::to_string(member.id));
  Check(method.type == Published(member.access.type, member.name),
        claim + ": type " + Published(member.access.type, member.name) + ", not " + method.type);
  Check(method.hidden == member.hidden, claim + ": hidden or not");
  Check(method.help.find(member.doc) == 0, claim + ": help \"" + std::string(member.doc) + "\"");
  Check(member.unit.empty() || method.help.find(member.unit) != std::string::npos,
        claim + ": unit in the help");
  if (key.starts_with("write ")) return;
  std::vector<std::string> parameters;
  for (std::size_t i = 0; i < member.Parameters().size(); ++i) {
    const automation::Type& type = member.Parameters()[i];
    parameters.push_back(Published(type, "") + (type.by_reference ? "* " : " ") +
                         std::string(member.arguments[i]));
  }
  Check(method.parameters == parameters, claim + ": parameters");
}

void CompareLibrary(const wchar_t* file) {
  ComPtr<ITypeLib> library;
  Succeeds(LoadTypeLibEx(file, REGKIND_NONE, &library), "loading the library");
  if (library == nullptr) return;
  BSTR help_file = nullptr;
  library->GetDocumentation(-1, nullptr, nullptr, nullptr, &help_file);
  const std::string help = Plain(help_file);
  Check(help.size() >= 10 && help.substr(help.size() - 10) == "QKEL4X.HLP",
        "the help file is QKEL4X.HLP, not " + help);

  std::set<std::string> names;
  std::map<std::string, ComPtr<ITypeInfo>> types;
  for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
    ComPtr<ITypeInfo> type;
    library->GetTypeInfo(i, &type);
    names.insert(Name(*type.Get(), MEMBERID_NIL));
    types[Name(*type.Get(), MEMBERID_NIL)] = type;
  }
  std::set<std::string> expected;

  for (const automation::Enumeration* enumeration : automation::kEnumerations) {
    const std::string name(enumeration->name);
    expected.insert(name);
    if (!types.contains(name)) continue;
    ITypeInfo& type = *types[name].Get();
    TYPEATTR* attributes = nullptr;
    type.GetTypeAttr(&attributes);
    Check(attributes->typekind == TKIND_ENUM, name + " is an enumeration");
    Check(attributes->cVars == enumeration->enumerators.size(), name + ": number of constants");
    const UINT count = attributes->cVars;
    type.ReleaseTypeAttr(attributes);
    for (UINT i = 0; i < count && i < enumeration->enumerators.size(); ++i) {
      VARDESC* constant = nullptr;
      type.GetVarDesc(i, &constant);
      const automation::Enumerator& wanted = enumeration->enumerators[i];
      Check(Name(type, constant->memid) == wanted.name, name + ": the name " + std::string(wanted.name));
      Check(V_VT(constant->lpvarValue) == VT_I4 && V_I4(constant->lpvarValue) == wanted.value,
            name + ": the value of " + std::string(wanted.name));
      type.ReleaseVarDesc(constant);
    }
  }

  for (const automation::Class* published : automation::AllClasses()) {
    const bool creatable = !published->program_id.empty();
    const std::string name = (creatable ? std::string("_") : std::string()) + std::string(published->name);
    expected.insert(name);
    if (creatable) {
      expected.insert(std::string(published->name));
      std::string class_help;
      if (types.contains(std::string(published->name))) {
        Name(*types[std::string(published->name)].Get(), MEMBERID_NIL, &class_help);
      }
      Check(class_help == published->doc,
            std::string(published->name) + ": description, it is " + class_help);
    }
    if (!types.contains(name)) continue;
    ITypeInfo& type = *types[name].Get();
    TYPEATTR* attributes = nullptr;
    type.GetTypeAttr(&attributes);
    Check(attributes->typekind == TKIND_DISPATCH && (attributes->wTypeFlags & TYPEFLAG_FDUAL) != 0 &&
              (attributes->wTypeFlags & TYPEFLAG_FNONEXTENSIBLE) != 0,
          name + " is dual and complete");
    Check(((attributes->wTypeFlags & TYPEFLAG_FHIDDEN) != 0) == creatable, name + ": hidden or not");
    type.ReleaseTypeAttr(attributes);
    const std::map<std::string, LibraryMethod> methods = Methods(type);
    std::size_t wanted = 0;
    for (const automation::Member& member : published->members) {
      const bool method = member.access.kind == automation::Kind::kMethod;
      if (member.access.read != nullptr) {
        ++wanted;
        CompareMethod(name, member, methods, (method ? "call " : "read ") + std::string(member.name));
      }
      if (member.Writable()) {
        ++wanted;
        CompareMethod(name, member, methods, "write " + std::string(member.name));
      }
    }
    Check(methods.size() == wanted,
          name + ": " + std::to_string(wanted) + " methods, not " + std::to_string(methods.size()));
    std::printf("%s: %zu methods\n", name.c_str(), methods.size());
  }
  Check(names == expected, "the library holds what the member table holds, no more and no less");
  for (const std::string& name : names) Check(expected.contains(name), name + " is in the member table");
}

/// Straight out of the file, with no entry in the registry.
void UseWithoutRegistry(const char* file) {
  HMODULE module = LoadLibraryA(file);
  Check(module != nullptr, "the library loads");
  if (module == nullptr) return;
  using GetClassObject = HRESULT(STDMETHODCALLTYPE*)(REFCLSID, REFIID, void**);
  using CanUnloadNow = HRESULT(STDMETHODCALLTYPE*)();
  GetClassObject get = nullptr;
  CanUnloadNow can_unload = nullptr;
  const FARPROC found_get = GetProcAddress(module, "DllGetClassObject");
  const FARPROC found_unload = GetProcAddress(module, "DllCanUnloadNow");
  std::memcpy(&get, &found_get, sizeof get);
  std::memcpy(&can_unload, &found_unload, sizeof can_unload);
  Check(get != nullptr && can_unload != nullptr, "the entry points are there");
  if (get == nullptr || can_unload == nullptr) return;
  Check(can_unload() == S_OK, "a library without objects can go");
  {
    ComPtr<IClassFactory> factory;
    ComPtr<_clsStatistics> statistics;
    Succeeds(get(CLSID_clsStatistics, IID_PPV_ARGS(&factory)), "DllGetClassObject");
    Succeeds(factory->CreateInstance(nullptr, __uuidof(_clsStatistics), &statistics), "CreateInstance");
    Check(can_unload() == S_FALSE, "a library with an object stays");
    IDispatch* by_name = statistics.Get();
    DISPID id = 0;
    wchar_t name[] = L"merdb";
    LPOLESTR names = name;
    Succeeds(by_name->GetIDsOfNames(kNoInterface, &names, 1, LOCALE_USER_DEFAULT, &id),
             "a name in small letters");
    void* none = nullptr;
    Check(get(kNoInterface, IID_IClassFactory, &none) == CLASS_E_CLASSNOTAVAILABLE, "an unknown class");
    by_name = nullptr;
    Check(factory->CreateInstance(statistics.Get(), IID_IUnknown, &none) == CLASS_E_NOAGGREGATION,
          "no aggregation");
  }
  Check(can_unload() == S_OK, "the library can go after its last object");
  FreeLibrary(module);
}

}  // namespace

int main(int count, char** arguments) {
  const std::string_view action = count > 1 ? arguments[1] : "";
  CoInitializeEx(nullptr, action == "apartment" ? COINIT_MULTITHREADED : COINIT_APARTMENTTHREADED);
  if (action == "early" || action == "apartment") {
    UseDriver(action == "early");
    if (action == "early") {
      using CanUnloadNow = HRESULT(STDMETHODCALLTYPE*)();
      CanUnloadNow can_unload = nullptr;
      const FARPROC found = GetProcAddress(GetModuleHandleA("QKEL4x.dll"), "DllCanUnloadNow");
      std::memcpy(&can_unload, &found, sizeof can_unload);
      Check(can_unload != nullptr && can_unload() == S_OK, "the component can go after its last object");
    }
  } else if (action == "library" && count == 3) {
    const std::string file = arguments[2];
    CompareLibrary(std::wstring(file.begin(), file.end()).c_str());
  } else if (action == "without-registry" && count == 3) {
    UseWithoutRegistry(arguments[2]);
  } else {
    std::fputs("usage: component_client early | apartment | library FILE | without-registry FILE\n", stderr);
    return 2;
  }
  CoUninitialize();
  std::printf("%d failures\n", failures);
  return failures == 0 ? 0 : 1;
}
