#include "component_calls.h"

#include <initguid.h>
#include <wrl/client.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <stdexcept>

#include "automation/member_table.h"
#include "com/late_bound.h"
#include "com/module.h"
#include "com/object.h"
#include "component/host_by_name.h"
#include "early_members.h"
#include "host/host.h"
#include "qhost.h"
#include "qhost/objects.h"
#include "qkel4x.h"

using com::LateBound;
using com::Variant;
using Microsoft::WRL::ComPtr;

namespace member_cases {
namespace {

template <std::size_t kPosition>
com::PublishedClass Port() {
  const qhost::TransportClass& transport = qhost::kTransportClasses[kPosition];
  return {
      transport.id, transport.program_name, transport.description, [](REFIID interface_id, void** object) {
        qhost::CreateTransport(host::CurrentHost().CreateTransport(qhost::kTransportClasses[kPosition].name),
                               interface_id, object);
      }};
}

const com::PublishedClass kClasses[] = {
    {&CLSID_ParameterNode, L"", L"",
     [](REFIID interface_id, void** object) {
       qhost::CreateNode(host::CurrentHost().CreateParameterNode(), interface_id, object);
     }},
    {&CLSID_ErrorReporter, L"", L"", qhost::CreateReporter},
    {&CLSID_HostRuntime, L"", L"", qhost::CreateRuntime},
    {&CLSID_MessageLog, L"", L"", qhost::CreateLog},
    Port<0>(),
    Port<1>(),
    Port<2>(),
    Port<3>(),
};

// The component's statistics objects by what stands for them in the cases.
std::map<const qkel4x::clsStatistics*, ComPtr<IDispatch>> statistics_objects;

Variant InClientTerms(const CaseValue& value) {
  if (const auto* flag = std::get_if<bool>(&value)) return Variant(*flag);
  if (const auto* whole = std::get_if<std::int64_t>(&value)) {
    return Variant(static_cast<std::int32_t>(*whole));
  }
  if (const auto* real = std::get_if<double>(&value)) return Variant(*real);
  if (const auto* text = std::get_if<std::string>(&value)) return Variant(std::string_view(*text));
  return {};
}

// The type that a script sees must be the published one.
Value InCaseTerms(const Variant& value) {
  switch (value->vt) {
    case VT_EMPTY:
      return {};
    case VT_BOOL:
      return V_BOOL(&*value) != VARIANT_FALSE;
    case VT_I2:
      return static_cast<std::int16_t>(V_I2(&*value));
    case VT_I4:
      return static_cast<std::int32_t>(V_I4(&*value));
    case VT_R8:
      return V_R8(&*value);
    case VT_DATE:
      return qkel4x::DateTime{V_DATE(&*value)};
    case VT_BSTR:
      return com::TextOf(*value);
    case VT_DISPATCH:
      return StandInFor(V_DISPATCH(&*value));
    default:
      throw std::logic_error("a value of the unexpected type " + std::to_string(value->vt));
  }
}

// Clients without the type library write names as they please.
std::wstring InCapitals(const std::string& name) {
  std::wstring capitals = com::Wide(name);
  std::transform(capitals.begin(), capitals.end(), capitals.begin(), towupper);
  return capitals;
}

/// What both ways share: the component's objects.
class ComponentCalls : public Calls {
 public:
  void Create() override { driver_ = LateBound::Create("QKEL4x.clsKEL4x"); }
  void Release() override {
    driver_ = LateBound();
    statistics_objects.clear();
  }
  std::shared_ptr<host::ParameterNode> Settings() override {
    const LateBound setup(Interface("IDriverSetup"));
    return std::make_shared<component::NodeByName>(com::ObjectOf(*setup.Read(L"Settings")));
  }
  automation::Statistics NewStatistics() override {
    return StandInFor(LateBound::Create("QKEL4x.clsStatistics").Get());
  }
  std::string HelpFile() const override { return "QKEL4X.HLP"; }

 protected:
  ComPtr<IDispatch> Interface(const std::string& name) const {
    ComPtr<IDispatch> found;
    HRESULT result = E_NOINTERFACE;
    if (name.empty()) {
      result = driver_.Get()->QueryInterface(__uuidof(::_clsKEL4x), &found);
    } else if (name == "IDriverSetup") {
      result = driver_.Get()->QueryInterface(__uuidof(::IDriverSetup), &found);
    } else if (name == "IDriverIdentify") {
      result = driver_.Get()->QueryInterface(__uuidof(::IDriverIdentify), &found);
    }
    if (FAILED(result)) throw std::logic_error("no interface " + name);
    return found;
  }
  static ComPtr<IDispatch> ObjectOf(const qkel4x::clsStatistics& statistics) {
    return statistics_objects.at(&statistics);
  }

 private:
  LateBound driver_;
};

class LateBoundWay final : public ComponentCalls {
 public:
  Value Get(const std::string& interface_name, const std::string& member,
            std::span<Value> arguments) override {
    const LateBound object(Interface(interface_name));
    const std::wstring name = InCapitals(member);
    if (arguments.empty()) return InCaseTerms(object.Read(name.c_str()));
    // Variables, as a script engine passes them.
    Variant first(std::get<std::int32_t>(arguments[0]));
    if (arguments.size() == 1) {
      const Variant result = object.Read(name.c_str(), Variant::Reference(first));
      if (first->vt != VT_I2) throw std::logic_error("the index was not written back in its own type");
      return InCaseTerms(result);
    }
    Variant bytes;
    V_ARRAY(bytes.Get()) = com::NewValueArray(std::get<automation::Bytes>(arguments[1]));
    V_VT(bytes.Get()) = VT_ARRAY | VT_VARIANT;
    struct Keep {
      Value& argument;
      Variant& bytes;
      ~Keep() { argument = com::BytesOf(*bytes); }
    } keep{arguments[1], bytes};
    return InCaseTerms(object.Read(name.c_str(), std::move(first), Variant::Reference(bytes)));
  }
  void Put(const std::string& interface_name, const std::string& member, const CaseValue& value) override {
    LateBound(Interface(interface_name)).Write(InCapitals(member).c_str(), InClientTerms(value));
  }
  void Call(const std::string& member) override { LateBound(Interface("")).Call(InCapitals(member).c_str()); }
  Value GetField(qkel4x::clsStatistics& statistics, const std::string& member) override {
    return InCaseTerms(LateBound(ObjectOf(statistics)).Read(InCapitals(member).c_str()));
  }
  void WriteStatistics(qkel4x::clsStatistics& statistics, const std::string& report) override {
    LateBound(ObjectOf(statistics)).Write(L"STATISTICS", report);
  }
};

class EarlyBoundWay final : public ComponentCalls {
 public:
  Value Get(const std::string& interface_name, const std::string& member,
            std::span<Value> arguments) override {
    const auto [early, row] = Find(interface_name, member);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      const auto* whole = std::get_if<std::int32_t>(&arguments[i]);
      if (whole != nullptr && row.Parameters()[i].value == automation::ValueType::kInt16) {
        arguments[i] = static_cast<std::int16_t>(*whole);
      }
    }
    return early.get(Interface(interface_name).Get(), arguments, row.access.type);
  }
  void Put(const std::string& interface_name, const std::string& member, const CaseValue& value) override {
    const auto [early, row] = Find(interface_name, member);
    early.put(Interface(interface_name).Get(), Exactly(value, row.access.type));
  }
  void Call(const std::string& member) override {
    const auto [early, row] = Find("", member);
    early.get(Interface("").Get(), {}, row.access.type);
  }
  Value GetField(qkel4x::clsStatistics& statistics, const std::string& member) override {
    const EarlyMember& early = Named(kEarly_clsStatistics, member);
    ComPtr<::_clsStatistics> object;
    com::ThrowIfFailed(ObjectOf(statistics).As(&object), "the interface");
    return early.get(object.Get(), {}, automation::kStatisticsClass.Find(member)->access.type);
  }
  void WriteStatistics(qkel4x::clsStatistics& statistics, const std::string& report) override {
    ComPtr<::_clsStatistics> object;
    com::ThrowIfFailed(ObjectOf(statistics).As(&object), "the interface");
    Named(kEarly_clsStatistics, "Statistics").put(object.Get(), report);
  }

 private:
  static const EarlyMember& Named(std::span<const EarlyMember> members, const std::string& name) {
    for (const EarlyMember& member : members) {
      if (member.name == name) return member;
    }
    throw std::logic_error("no member " + name);
  }
  static std::pair<const EarlyMember&, const automation::Member&> Find(const std::string& interface_name,
                                                                       const std::string& member) {
    if (interface_name == "IDriverSetup") {
      return {Named(kEarly_IDriverSetup, member), *automation::kSetupInterface.Find(member)};
    }
    if (interface_name == "IDriverIdentify") {
      return {Named(kEarly_IDriverIdentify, member), *automation::kIdentifyInterface.Find(member)};
    }
    return {Named(kEarly_clsKEL4x, member), *automation::kDriverClass.Find(member)};
  }
  static Value Exactly(const CaseValue& value, const Type& type) {
    const auto* whole = std::get_if<std::int64_t>(&value);
    const auto* real = std::get_if<double>(&value);
    const double number = real != nullptr ? *real : whole != nullptr ? static_cast<double>(*whole) : 0.0;
    switch (type.value) {
      case automation::ValueType::kBool:
        return std::get<bool>(value);
      case automation::ValueType::kInt16:
        return static_cast<std::int16_t>(std::get<std::int64_t>(value));
      case automation::ValueType::kInt32:
        return static_cast<std::int32_t>(std::get<std::int64_t>(value));
      case automation::ValueType::kDouble:
        return number;
      case automation::ValueType::kDateTime:
        return qkel4x::DateTime{number};
      default:
        return std::get<std::string>(value);
    }
  }
};

}  // namespace

automation::Statistics StandInFor(IDispatch* statistics) {
  for (const auto& [stand_in, object] : statistics_objects) {
    if (object.Get() == statistics) throw std::logic_error("the same statistics object again");
  }
  auto stand_in = std::make_shared<qkel4x::clsStatistics>();
  statistics_objects[stand_in.get()] = statistics;
  return stand_in;
}

Calls& LateBoundCalls() {
  static LateBoundWay calls;
  return calls;
}

Calls& EarlyBoundCalls() {
  static EarlyBoundWay calls;
  return calls;
}

void OfferCurrentHost() {
  for (const com::PublishedClass& published : kClasses) {
    ComPtr<IUnknown> factory;
    DWORD registration = 0;
    com::ThrowIfFailed(com::ClassObject(published, IID_PPV_ARGS(&factory)), "the class object");
    com::ThrowIfFailed(CoRegisterClassObject(*published.id, factory.Get(), CLSCTX_INPROC_SERVER,
                                             REGCLS_MULTIPLEUSE, &registration),
                       "CoRegisterClassObject");
  }
}

}  // namespace member_cases

namespace com {

const Module kModule{"Cases", "", &LIBID_QHost, member_cases::kClasses};

}  // namespace com
