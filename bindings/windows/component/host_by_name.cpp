#include "component/host_by_name.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "com/text.h"
#include "qkel4x.h"

using com::LateBound;
using com::Variant;

namespace component {
namespace {

bool Flag(const Variant& value) { return V_BOOL(&*com::Converted(*value, VT_BOOL)) != VARIANT_FALSE; }

std::shared_ptr<host::ParameterNode> Node(const Variant& value) {
  return std::make_shared<NodeByName>(com::ObjectOf(*value));
}

/// The host's error reporter. What it raises comes back as this call's own failure.
class ReporterByName final : public host::ErrorReporter {
 public:
  explicit ReporterByName(LateBound reporter) : reporter_(std::move(reporter)) {}

  void Raise(std::int32_t number, std::string_view source, std::string_view description,
             std::optional<std::string_view> help_file, std::optional<std::int32_t> help_context) override {
    if (help_file) {
      reporter_.Call(L"Raise", number, source, description, *help_file, help_context.value_or(0));
    } else {
      reporter_.Call(L"Raise", number, source, description);
    }
  }
  bool ReportingEnabled() override { return Flag(reporter_.Read(L"ReportingEnabled")); }
  void ReportingEnabled(bool enabled) override { reporter_.Write(L"ReportingEnabled", enabled); }

 private:
  LateBound reporter_;
};

class RuntimeByName final : public host::HostRuntime {
 public:
  explicit RuntimeByName(LateBound runtime) : runtime_(std::move(runtime)) {}

  bool SimulationActive() override { return Flag(runtime_.Read(L"SimulationActive")); }
  void Wait(float seconds) override { runtime_.Call(L"Wait", seconds); }

 private:
  LateBound runtime_;
};

class LogByName final : public host::MessageLog {
 public:
  explicit LogByName(LateBound log) : log_(std::move(log)) {}

  void Append(std::int32_t kind, std::string_view source_tag, std::string_view text,
              std::string_view detail) override {
    log_.Call(L"Append", kind, source_tag, text, detail);
  }
  void KindEnabled(std::int32_t kind, bool enabled) override { log_.Write(L"KindEnabled", kind, enabled); }

 private:
  LateBound log_;
};

/// A transport of the host. Its settings and its connection may stand on a second interface of its own.
class TransportByName final : public host::Transport, private host::BlockTransfer {
 public:
  explicit TransportByName(LateBound transport) : transport_(std::move(transport)), setup_(transport_) {
    Microsoft::WRL::ComPtr<::IDriverSetup> setup;
    if (!transport_.Has(L"OnLine") &&
        SUCCEEDED(transport_.Get()->QueryInterface(__uuidof(::IDriverSetup), &setup))) {
      setup_ = LateBound(setup);
    }
  }

  std::string Name() override { return com::TextOf(*setup_.Read(L"Name")); }
  void Name(std::string_view name) override { setup_.Write(L"Name", name); }
  std::shared_ptr<host::ParameterNode> Settings() override {
    if (settings_ == nullptr) settings_ = Node(setup_.Read(L"Settings"));
    return settings_;
  }
  bool OnLine() override { return Flag(setup_.Read(L"OnLine")); }
  void OnLine(bool on_line) override { setup_.Write(L"OnLine", on_line); }

  float Timeout() override { return V_R4(&*com::Converted(*transport_.Read(L"Timeout"), VT_R4)); }
  void Timeout(float seconds) override { transport_.Write(L"Timeout", seconds); }

  void Write(std::string_view command) override { transport_.Call(L"Write", command); }
  void Exchange(std::string_view command, std::string* reply) override {
    if (reply == nullptr) {
      transport_.Call(L"Exchange", command);
      return;
    }
    Variant holder;
    transport_.Call(L"Exchange", command, Variant::Reference(holder));
    *reply = com::TextOf(*holder);
  }
  std::string Query(std::optional<std::string_view> command) override {
    return com::TextOf(command ? *transport_.Call(L"Query", *command) : *transport_.Call(L"Query"));
  }
  host::BlockTransfer* Blocks() override { return transport_.Has(L"ReadBlock") ? this : nullptr; }

 private:
  std::vector<std::uint8_t> ReadBlock(std::int16_t count, std::optional<std::string_view> command) override {
    return com::BytesOf(command ? *transport_.Call(L"ReadBlock", count, *command)
                                : *transport_.Call(L"ReadBlock", count));
  }
  void WriteBlock(std::int16_t format, std::span<const std::uint8_t> data,
                  std::optional<std::string_view> command) override {
    Variant bytes;
    V_ARRAY(bytes.Get()) = com::NewByteArray(data);
    V_VT(bytes.Get()) = VT_ARRAY | VT_UI1;
    if (command) {
      transport_.Call(L"WriteBlock", format, std::move(bytes), *command);
    } else {
      transport_.Call(L"WriteBlock", format, std::move(bytes));
    }
  }

  LateBound transport_;
  LateBound setup_;
  std::shared_ptr<host::ParameterNode> settings_;
};

/// An object that serves the calling thread until the process ends: the platform ties objects to the thread
/// that made them.
template <class Service>
Service& OnThisThread(std::string_view program_name) {
  thread_local Service* service = nullptr;
  if (service == nullptr) service = new Service(LateBound::Create(program_name));
  return *service;
}

}  // namespace

host::ErrorReporter& HostByName::Errors() { return OnThisThread<ReporterByName>("QAppInt.ErrorReporter"); }
host::HostRuntime& HostByName::Runtime() { return OnThisThread<RuntimeByName>("QAppInt.HostRuntime"); }
host::MessageLog& HostByName::Log() { return OnThisThread<LogByName>("QAppInt.MessageLog"); }

std::shared_ptr<host::ParameterNode> HostByName::CreateParameterNode() {
  return std::make_shared<NodeByName>(LateBound::Create("QAppPar.ParameterNode"));
}
std::shared_ptr<host::Transport> HostByName::CreateTransport(std::string_view class_name) {
  return std::make_shared<TransportByName>(LateBound::Create(class_name));
}

void NodeByName::Initialise(std::string_view name, std::int32_t code1, std::int32_t code2,
                            std::string_view option_list, std::string_view description) {
  node_.Call(L"Initialise", name, code1, code2, option_list, description);
}
std::string NodeByName::Name() { return com::TextOf(*node_.Read(L"Name")); }
std::shared_ptr<host::ParameterNode> NodeByName::Item(std::string_view path) {
  return Node(node_.Read(L"Item", path));
}
std::size_t NodeByName::Count() {
  return static_cast<std::size_t>(V_I4(&*com::Converted(*node_.Read(L"Count"), VT_I4)));
}
std::shared_ptr<host::ParameterNode> NodeByName::Child(std::size_t position) {
  return Node(node_.Read(L"Child", static_cast<std::int32_t>(position)));
}
std::shared_ptr<host::ParameterNode> NodeByName::AddChild(std::string_view name, std::int32_t code1,
                                                          std::int32_t code2, std::string_view option_list,
                                                          std::string_view description) {
  return Node(node_.Call(L"AddChild", name, code1, code2, option_list, description));
}
void NodeByName::AddTree(const std::shared_ptr<host::ParameterNode>& tree, std::int32_t index1,
                         std::int32_t index2) {
  const auto node = std::dynamic_pointer_cast<NodeByName>(tree);
  node_.Call(L"AddTree", node == nullptr ? nullptr : node->Object(), index1, index2);
}
bool NodeByName::ReadOnly() { return Flag(node_.Read(L"ReadOnly")); }
void NodeByName::ReadOnly(bool read_only) { node_.Write(L"ReadOnly", read_only); }
std::string NodeByName::OptionList() { return com::TextOf(*node_.Read(L"OptionList")); }
void NodeByName::OptionList(std::string_view option_list) { node_.Write(L"OptionList", option_list); }
const host::Value& NodeByName::GetValue(std::int32_t index1, std::int32_t index2) {
  value_ = com::ValueOf(*node_.Read(L"Value", index1, index2));
  return value_;
}
void NodeByName::SetValue(const host::Value& value, std::int32_t index1, std::int32_t index2) {
  node_.Write(L"Value", index1, index2, Variant::Of(value));
}

}  // namespace component
