// Writes the Windows interfaces out of the member table: the interface definition (idl), the method bodies
// behind it (methods), and the methods as an early-bound client sees them (client). All are checked in; a
// test compares them.
#include <initializer_list>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>

#include "automation/enumeration_table.h"
#include "automation/member_table.h"

namespace {

using automation::Class;
using automation::Member;
using automation::Type;
using automation::ValueType;

struct Identity {
  const Class* published;
  std::string_view interface_id;
  std::string_view class_id;  // empty where clients cannot create it
  std::string_view target;    // the C++ class behind it
};

// The order is that of the library; identities are given once and never changed.
const Identity kIdentities[] = {
    {&automation::kSetupInterface, "2F1B5C84-6E0A-4C0B-9C41-7D3E5A8B1F10", "", "host::IDriverSetup"},
    {&automation::kIdentifyInterface, "2F1B5C84-6E0A-4C0B-9C41-7D3E5A8B1F11", "", "host::IDriverIdentify"},
    {&automation::kRegisterInterface, "2F1B5C84-6E0A-4C0B-9C41-7D3E5A8B1F12", "", "host::IRegister"},
    {&automation::kStatisticsClass, "2F1B5C84-6E0A-4C0B-9C41-7D3E5A8B1F20",
     "2F1B5C84-6E0A-4C0B-9C41-7D3E5A8B1F21", "qkel4x::clsStatistics"},
    {&automation::kRegisterClass, "2F1B5C84-6E0A-4C0B-9C41-7D3E5A8B1F22",
     "2F1B5C84-6E0A-4C0B-9C41-7D3E5A8B1F23", "host::IRegister"},
    {&automation::kDriverClass, "2F1B5C84-6E0A-4C0B-9C41-7D3E5A8B1F24",
     "2F1B5C84-6E0A-4C0B-9C41-7D3E5A8B1F25", "qkel4x::clsKEL4x"},
};
constexpr std::string_view kLibraryId = "2F1B5C84-6E0A-4C0B-9C41-7D3E5A8B1F00";

/// The status fields are published as values that hold a text.
bool IsStatusField(std::string_view member) {
  return member == "ResponseString" || member == "Prefix" || member == "Postfix";
}

std::string Joined(std::initializer_list<std::string_view> parts) {
  std::string all;
  for (const std::string_view part : parts) all += part;
  return all;
}

std::string InterfaceName(const Identity& identity) {
  return Joined({identity.class_id.empty() ? "" : "_", identity.published->name});
}

std::string AutomationType(const Type& type, std::string_view member) {
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
      return IsStatusField(member) ? "VARIANT" : "BSTR";
    case ValueType::kBytes:
      return "SAFEARRAY(unsigned char)";
    case ValueType::kStatistics:
      return "_clsStatistics*";
    case ValueType::kSettings:
      return "IDispatch*";
    case ValueType::kNothing:
      break;
  }
  return "void";
}

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

std::string HelpText(const Member& member) {
  std::string text(member.doc);
  if (!member.unit.empty()) text += Joined({" Unit: ", member.unit, "."});
  return text;
}

/// What both texts say of one method: its name in C++, its parameters in either language and the C++ call.
struct Method {
  std::string attributes;  // "propget", "propput" or nothing
  std::string cpp_name;
  std::string idl_parameters;
  std::string cpp_parameters;
  std::string cpp_body;
};

void AddToList(std::string& list, std::initializer_list<std::string_view> item) {
  if (!list.empty()) list += ", ";
  list += Joined(item);
}

/// An argument as the typed call takes it.
std::string Argument(const Type& type, const std::string& name) {
  if (type.enumeration != nullptr) {
    return Joined({"static_cast<qkel4x::", type.enumeration->name, ">(", name, ")"});
  }
  switch (type.value) {
    case ValueType::kBool:
      return Joined({name, " != VARIANT_FALSE"});
    case ValueType::kDateTime:
      return Joined({"qkel4x::DateTime{", name, "}"});
    case ValueType::kText:
      return Joined({"com::Text(", name, ")"});
    default:
      return type.by_reference ? Joined({"Referenced(", name, ")"}) : name;
  }
}

/// In C++ an enumeration of the library stands beside the driver's own of the same name.
std::string CppType(const Type& type, std::string_view member) {
  if (type.value == ValueType::kBytes) return "SAFEARRAY*";
  const std::string name = AutomationType(type, member);
  const bool ours = type.enumeration != nullptr || type.value == ValueType::kStatistics;
  return Joined({ours ? "::" : "", name});
}

Method Getter(const Member& member) {
  Method method;
  const bool property = member.access.kind != automation::Kind::kMethod;
  method.attributes = property ? "propget" : "";
  method.cpp_name = Joined({property ? "get_" : "", member.name});
  std::string call_arguments;
  std::string replaced;
  for (std::size_t i = 0; i < member.Parameters().size(); ++i) {
    const Type& type = member.Parameters()[i];
    const std::string name(member.arguments[i]);
    const std::string star = type.by_reference ? "*" : "";
    AddToList(method.idl_parameters,
              {type.by_reference ? "[in, out] " : "[in] ", AutomationType(type, ""), star, " ", name});
    AddToList(method.cpp_parameters, {CppType(type, ""), star, " ", name});
    const bool bytes = type.value == ValueType::kBytes;
    if (bytes) replaced = name;
    AddToList(call_arguments, {bytes ? "bytes" : Argument(type, name)});
  }
  // IRegister's two operations appear in the class's own interface under the interface's name.
  constexpr std::string_view kOfRegister = "IRegister_";
  const std::string_view called =
      member.name.starts_with(kOfRegister) ? member.name.substr(kOfRegister.size()) : member.name;
  const std::string call = Joined({"Target().", called, "(", call_arguments, ")"});
  const Type& result = member.access.type;
  if (result.value == ValueType::kNothing) {
    method.cpp_body = Joined({"return Do([&] { ", call, "; });"});
    return method;
  }
  AddToList(method.idl_parameters, {"[out, retval] ", AutomationType(result, member.name), "* result"});
  AddToList(method.cpp_parameters, {CppType(result, member.name), "* result"});
  method.cpp_body = replaced.empty() ? Joined({"return Give(result, [&] { return ", call, "; });"})
                                     : Joined({"return Give(result, [&] { return Replacing(", replaced,
                                               ", [&](auto& bytes) { return ", call, "; }); });"});
  return method;
}

Method Setter(const Member& member) {
  const Type& type = member.access.type;
  return {"propput", Joined({"put_", member.name}), Joined({"[in] ", AutomationType(type, ""), " value"}),
          Joined({CppType(type, ""), " value"}),
          Joined({"return Do([&] { Target().", member.name, "(", Argument(type, "value"), "); });"})};
}

/// Calls `write(member, method)` for each method of a class, in the order of the virtual table. The report is
/// the one property whose write stands first.
template <class Write>
void ForEachMethod(const Class& published, const Write& write) {
  for (const Member& member : published.members) {
    const bool write_first = member.name == "Statistics";
    if (member.Writable() && write_first) write(member, Setter(member));
    if (member.access.read != nullptr) write(member, Getter(member));
    if (member.Writable() && !write_first) write(member, Setter(member));
  }
}

void WriteEnumeration(std::ostream& out, const automation::Enumeration& enumeration) {
  out << "  typedef [helpstring(" << Quoted(enumeration.doc) << ")] enum " << enumeration.name << " {\n";
  for (const automation::Enumerator& enumerator : enumeration.enumerators) {
    out << "    " << enumerator.name << " = " << enumerator.value
        << (&enumerator == &enumeration.enumerators.back() ? "\n" : ",\n");
  }
  out << "  } " << enumeration.name << ";\n\n";
}

void WriteInterface(std::ostream& out, const Identity& identity) {
  const Class& published = *identity.published;
  out << "  [object, uuid(" << identity.interface_id << "), dual, oleautomation, nonextensible,"
      << (identity.class_id.empty() ? "" : " hidden,") << " pointer_default(unique),\n   helpstring("
      << Quoted(published.doc) << ")]\n  interface " << InterfaceName(identity) << " : IDispatch {\n";
  ForEachMethod(published, [&](const Member& member, const Method& method) {
    out << "    [id(" << member.id << ")" << (method.attributes.empty() ? "" : ", ") << method.attributes
        << (member.hidden ? ", hidden" : "") << ", helpstring(" << Quoted(HelpText(member)) << ")]\n"
        << "    HRESULT " << member.name << "(" << method.idl_parameters << ");\n";
  });
  out << "  };\n\n";
}

void WriteClass(std::ostream& out, const Identity& identity) {
  const Class& published = *identity.published;
  out << "  [uuid(" << identity.class_id << "), helpstring(" << Quoted(published.doc) << ")]\n  coclass "
      << published.name << " {\n    [default] interface " << InterfaceName(identity) << ";\n";
  if (&published == &automation::kDriverClass) {
    out << "    interface IDriverSetup;\n    interface IDriverIdentify;\n";
  }
  if (&published == &automation::kRegisterClass) out << "    interface IRegister;\n";
  out << "  };\n\n";
}

std::string Idl() {
  std::ostringstream out;
  out << "// Made from the member table by interface_text; do not edit.\n"
         "import \"oaidl.idl\";\n\n"
         "[uuid("
      << kLibraryId
      << "), version(1.0), helpfile(\"QKEL4X.HLP\"),\n"
         " helpstring(\"Driver for the KEL model 40/43 TV test receiver\")]\n"
         "library QKEL4x {\n"
         "  importlib(\"stdole2.tlb\");\n\n";
  for (const automation::Enumeration* enumeration : automation::kEnumerations) {
    WriteEnumeration(out, *enumeration);
  }
  for (const Identity& identity : kIdentities) WriteInterface(out, identity);
  for (const Identity& identity : kIdentities) {
    if (!identity.class_id.empty()) WriteClass(out, identity);
  }
  out << "};\n";
  return out.str();
}

std::string Methods() {
  std::ostringstream out;
  out << "// Made from the member table by interface_text; do not edit.\n// clang-format off\n"
         "#pragma once\n\n"
         "#include \"component/published.h\"\n"
         "#include \"driver/clsKEL4x.h\"\n"
         "#include \"driver/statistics/clsStatistics.h\"\n"
         "#include \"host/register.h\"\n"
         "#include \"qkel4x.h\"\n\n"
         "namespace component {\n";
  for (const Identity& identity : kIdentities) {
    out << "\nclass " << identity.published->name
        << "Methods : public Published<::" << InterfaceName(identity) << ", " << identity.target
        << "> {\n public:\n";
    ForEachMethod(*identity.published, [&](const Member&, const Method& method) {
      out << "  STDMETHODIMP " << method.cpp_name << "(" << method.cpp_parameters << ") override { "
          << method.cpp_body << " }\n";
    });
    out << "};\n";
  }
  out << "\n}  // namespace component\n";
  return out.str();
}

std::string Client() {
  std::ostringstream out;
  out << "// Made from the member table by interface_text; do not edit.\n// clang-format off\n"
         "#pragma once\n\n"
         "#include \"early_member.h\"\n"
         "#include \"qkel4x.h\"\n\n"
         "namespace member_cases {\n";
  for (const Identity& identity : kIdentities) {
    out << "\ninline constexpr EarlyMember kEarly_" << identity.published->name << "[] = {\n";
    for (const Member& member : identity.published->members) {
      const auto pointer = [&](bool exists, const Method& method) {
        return exists ? Joined({"&::", InterfaceName(identity), "::", method.cpp_name})
                      : std::string("nullptr");
      };
      out << "    Early<" << pointer(member.access.read != nullptr, Getter(member)) << ", "
          << pointer(member.Writable(), Setter(member)) << ">(\"" << member.name << "\"),\n";
    }
    out << "};\n";
  }
  out << "\n}  // namespace member_cases\n";
  return out.str();
}

}  // namespace

int main(int count, char** arguments) {
  const std::string_view wanted = count == 2 ? arguments[1] : "";
  if (wanted == "idl") {
    std::cout << Idl();
  } else if (wanted == "methods") {
    std::cout << Methods();
  } else if (wanted == "client") {
    std::cout << Client();
  } else {
    std::cerr << "usage: interface_text idl|methods|client\n";
    return 2;
  }
  return 0;
}
