#include "qhost/objects.h"

#include <initguid.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "com/errors.h"
#include "com/object.h"
#include "com/text.h"
#include "com/variant.h"
#include "host/automation_error.h"
#include "qhost.h"

namespace qhost {
namespace {

// How a node knows another node of this module, to copy it.
constexpr GUID kOwnNode = {0x6d0b7a52, 0x93c1, 0x4e6f, {0x8a, 0x4d, 0x51, 0xe0, 0xc3, 0xb7, 0xf9, 0xff}};

/// Runs the work of a method and puts its result in its place.
template <class Interface, class Result, class Work>
HRESULT Give(Result* result, const Work& work) {
  if (result == nullptr) return E_POINTER;
  *result = Result();
  return com::Guarded(__uuidof(Interface), [&] { *result = work(); });
}

VARIANT_BOOL Flag(bool flag) { return flag ? VARIANT_TRUE : VARIANT_FALSE; }

/// An optional text: nothing where the argument was left out.
std::optional<std::string> OptionalText(const VARIANT& value) {
  if (com::IsMissing(value) || V_VT(&value) == VT_EMPTY) return {};
  return com::TextOf(value);
}
std::optional<std::string_view> View(const std::optional<std::string>& text) {
  if (!text) return {};
  return std::string_view(*text);
}

class Node final : public com::Object<com::Dual<::_ParameterNode>> {
 public:
  explicit Node(std::shared_ptr<host::ParameterNode> node) : node_(std::move(node)) {}

  STDMETHODIMP QueryInterface(REFIID interface_id, void** object) override {
    if (object != nullptr && interface_id == kOwnNode) {
      AddRef();
      *object = this;
      return S_OK;
    }
    return Object::QueryInterface(interface_id, object);
  }

  STDMETHODIMP get_Item(VARIANT path, ::_ParameterNode** result) override {
    return Give(result, [&] { return Shell(node_->Item(com::TextOf(path))); });
  }
  STDMETHODIMP put_ReadOnly(VARIANT_BOOL value) override {
    return Do([&] { node_->ReadOnly(value != VARIANT_FALSE); });
  }
  STDMETHODIMP get_ReadOnly(VARIANT_BOOL* result) override {
    return Give(result, [&] { return Flag(node_->ReadOnly()); });
  }
  STDMETHODIMP get_OptionList(BSTR* result) override {
    return Give(result, [&] { return com::NewBstr(node_->OptionList()); });
  }
  STDMETHODIMP put_OptionList(BSTR value) override {
    return Do([&] { node_->OptionList(com::Text(value)); });
  }
  STDMETHODIMP get_Value(long index1, long index2, VARIANT* result) override {
    return Give(result, [&] { return com::Variant::Of(node_->GetValue(index1, index2)).Release(); });
  }
  STDMETHODIMP put_Value(long index1, long index2, VARIANT value) override {
    return Do([&] { node_->SetValue(com::ValueOf(value), index1, index2); });
  }
  STDMETHODIMP AddChild(BSTR name, long code1, long code2, BSTR option_list, BSTR description,
                        ::_ParameterNode** result) override {
    return Give(result, [&] {
      return Shell(
          node_->AddChild(com::Text(name), code1, code2, com::Text(option_list), com::Text(description)));
    });
  }
  STDMETHODIMP Initialise(BSTR name, long code1, long code2, BSTR option_list, BSTR description) override {
    return Do([&] {
      node_->Initialise(com::Text(name), code1, code2, com::Text(option_list), com::Text(description));
    });
  }
  STDMETHODIMP AddTree(IDispatch* tree, long index1, long index2) override {
    return Do([&] {
      void* own = nullptr;
      if (tree == nullptr || FAILED(tree->QueryInterface(kOwnNode, &own))) {
        throw host::AutomationError(host::kTypeMismatch, "QHost", "AddTree takes a node of this host");
      }
      auto* other = static_cast<Node*>(own);
      const std::shared_ptr<host::ParameterNode> node = other->node_;
      other->Release();
      node_->AddTree(node, index1, index2);
    });
  }
  STDMETHODIMP get_Name(BSTR* result) override {
    return Give(result, [&] { return com::NewBstr(node_->Name()); });
  }
  STDMETHODIMP get_Count(long* result) override {
    return Give(result, [&] { return static_cast<long>(node_->Count()); });
  }
  STDMETHODIMP get_Child(long position, ::_ParameterNode** result) override {
    return Give(result, [&] {
      if (position < 0 || static_cast<std::size_t>(position) >= node_->Count()) {
        throw host::AutomationError(host::kSubscriptOutOfRange, "QHost",
                                    "There is no child at position " + std::to_string(position));
      }
      return Shell(node_->Child(static_cast<std::size_t>(position)));
    });
  }

 private:
  template <class Work>
  static HRESULT Do(const Work& work) {
    return com::Guarded(__uuidof(Interface), work);
  }
  template <class Result, class Work>
  static HRESULT Give(Result* result, const Work& work) {
    return qhost::Give<Interface>(result, work);
  }
  static ::_ParameterNode* Shell(std::shared_ptr<host::ParameterNode> node) {
    return new Node(std::move(node));
  }

  const std::shared_ptr<host::ParameterNode> node_;
};

class Transport final : public com::Object<com::Dual<::_Transport>> {
 public:
  explicit Transport(std::shared_ptr<host::Transport> transport) : transport_(std::move(transport)) {}
  ~Transport() override {
    if (settings_ != nullptr) settings_->Release();
  }

  STDMETHODIMP get_Name(BSTR* result) override {
    return Give(result, [&] { return com::NewBstr(transport_->Name()); });
  }
  STDMETHODIMP put_Name(BSTR value) override {
    return Do([&] { transport_->Name(com::Text(value)); });
  }
  STDMETHODIMP get_Settings(::_ParameterNode** result) override {
    return Give(result, [&] {
      if (settings_ == nullptr) settings_ = new Node(transport_->Settings());
      settings_->AddRef();
      return settings_;
    });
  }
  STDMETHODIMP get_OnLine(VARIANT_BOOL* result) override {
    return Give(result, [&] { return Flag(transport_->OnLine()); });
  }
  STDMETHODIMP put_OnLine(VARIANT_BOOL value) override {
    return Do([&] { transport_->OnLine(value != VARIANT_FALSE); });
  }
  STDMETHODIMP get_Timeout(float* result) override {
    return Give(result, [&] { return transport_->Timeout(); });
  }
  STDMETHODIMP put_Timeout(float value) override {
    return Do([&] { transport_->Timeout(value); });
  }
  STDMETHODIMP Write(BSTR command) override {
    return Do([&] { transport_->Write(com::Text(command)); });
  }
  STDMETHODIMP Exchange(BSTR command, VARIANT* reply) override {
    return Do([&] {
      if (reply == nullptr || com::IsMissing(*reply)) {
        transport_->Exchange(com::Text(command), nullptr);
        return;
      }
      std::string text;
      transport_->Exchange(com::Text(command), &text);
      com::Variant made{std::string_view(text)};
      VARIANT* holder = V_VT(reply) == (VT_BYREF | VT_VARIANT) ? V_VARIANTREF(reply) : reply;
      VariantClear(holder);
      *holder = made.Release();
    });
  }
  STDMETHODIMP Query(VARIANT command, BSTR* result) override {
    return Give(result, [&] { return com::NewBstr(transport_->Query(View(OptionalText(command)))); });
  }
  STDMETHODIMP ReadBlock(short count, VARIANT command, SAFEARRAY** result) override {
    return Give(result,
                [&] { return com::NewByteArray(Blocks().ReadBlock(count, View(OptionalText(command)))); });
  }
  STDMETHODIMP WriteBlock(short format, VARIANT data, VARIANT command) override {
    return Do([&] { Blocks().WriteBlock(format, com::BytesOf(data), View(OptionalText(command))); });
  }

 private:
  template <class Work>
  static HRESULT Do(const Work& work) {
    return com::Guarded(__uuidof(Interface), work);
  }
  template <class Result, class Work>
  static HRESULT Give(Result* result, const Work& work) {
    return qhost::Give<Interface>(result, work);
  }
  host::BlockTransfer& Blocks() const {
    host::BlockTransfer* blocks = transport_->Blocks();
    if (blocks == nullptr) {
      throw host::AutomationError(host::kMemberNotFound, "QHost", "This port transfers no blocks");
    }
    return *blocks;
  }

  const std::shared_ptr<host::Transport> transport_;
  ::_ParameterNode* settings_ = nullptr;  // the same object every time
};

class Reporter final : public com::Object<com::Dual<::_ErrorReporter>> {
 public:
  STDMETHODIMP Raise(long number, BSTR source, BSTR description, VARIANT help_file,
                     VARIANT help_context) override {
    return com::Guarded(__uuidof(Interface), [&] {
      std::optional<std::int32_t> context;
      if (!com::IsMissing(help_context)) context = V_I4(&*com::Converted(help_context, VT_I4));
      host::CurrentHost().Errors().Raise(number, com::Text(source), com::Text(description),
                                         View(OptionalText(help_file)), context);
    });
  }
  STDMETHODIMP get_ReportingEnabled(VARIANT_BOOL* result) override {
    return Give<Interface>(result, [] { return Flag(host::CurrentHost().Errors().ReportingEnabled()); });
  }
  STDMETHODIMP put_ReportingEnabled(VARIANT_BOOL value) override {
    return com::Guarded(__uuidof(Interface),
                        [&] { host::CurrentHost().Errors().ReportingEnabled(value != VARIANT_FALSE); });
  }
};

class Runtime final : public com::Object<com::Dual<::_HostRuntime>> {
 public:
  STDMETHODIMP get_SimulationActive(VARIANT_BOOL* result) override {
    return Give<Interface>(result, [] { return Flag(host::CurrentHost().Runtime().SimulationActive()); });
  }
  STDMETHODIMP Wait(float seconds) override {
    return com::Guarded(__uuidof(Interface), [&] { host::CurrentHost().Runtime().Wait(seconds); });
  }
};

class Log final : public com::Object<com::Dual<::_MessageLog>> {
 public:
  STDMETHODIMP Append(long kind, BSTR source_tag, BSTR text, BSTR detail) override {
    return com::Guarded(__uuidof(Interface), [&] {
      host::CurrentHost().Log().Append(kind, com::Text(source_tag), com::Text(text), com::Text(detail));
    });
  }
  STDMETHODIMP put_KindEnabled(long kind, VARIANT_BOOL value) override {
    return com::Guarded(__uuidof(Interface),
                        [&] { host::CurrentHost().Log().KindEnabled(kind, value != VARIANT_FALSE); });
  }
};

}  // namespace

const TransportClass kTransportClasses[4] = {
    {&CLSID_clsGPIB, L"QPort.clsGPIB", "QPort.clsGPIB", L"GPIB port"},
    {&CLSID_clsComm, L"QPort.clsComm", "QPort.clsComm", L"Serial port"},
    {&CLSID_clsEthernet, L"QPort.clsEthernet", "QPort.clsEthernet", L"TCP port"},
    {&CLSID_clsGUI, L"QPort.clsGUI", "QPort.clsGUI", L"Front panel"},
};

void CreateNode(std::shared_ptr<host::ParameterNode> node, REFIID interface_id, void** object) {
  com::Create<Node>(interface_id, object, std::move(node));
}
void CreateTransport(std::shared_ptr<host::Transport> transport, REFIID interface_id, void** object) {
  com::Create<Transport>(interface_id, object, std::move(transport));
}
void CreateReporter(REFIID interface_id, void** object) { com::Create<Reporter>(interface_id, object); }
void CreateRuntime(REFIID interface_id, void** object) { com::Create<Runtime>(interface_id, object); }
void CreateLog(REFIID interface_id, void** object) { com::Create<Log>(interface_id, object); }

}  // namespace qhost
