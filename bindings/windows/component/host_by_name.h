// The host as this component finds it on Windows: classes created by programmatic name and called late-bound,
// whatever library provides them.
#pragma once

#include <memory>
#include <string_view>

#include "com/late_bound.h"
#include "host/host.h"

namespace component {

/// The host's singletons are created on first use, once a thread, and never released.
class HostByName final : public host::Host {
 public:
  host::ErrorReporter& Errors() override;
  host::HostRuntime& Runtime() override;
  host::MessageLog& Log() override;
  std::shared_ptr<host::ParameterNode> CreateParameterNode() override;
  std::shared_ptr<host::Transport> CreateTransport(std::string_view class_name) override;
};

/// A parameter node of the host.
class NodeByName final : public host::ParameterNode {
 public:
  explicit NodeByName(com::LateBound node) : node_(std::move(node)) {}

  void Initialise(std::string_view name, std::int32_t code1, std::int32_t code2, std::string_view option_list,
                  std::string_view description) override;
  std::string Name() override;
  std::shared_ptr<host::ParameterNode> Item(std::string_view path) override;
  std::size_t Count() override;
  std::shared_ptr<host::ParameterNode> Child(std::size_t position) override;
  std::shared_ptr<host::ParameterNode> AddChild(std::string_view name, std::int32_t code1, std::int32_t code2,
                                                std::string_view option_list,
                                                std::string_view description) override;
  void AddTree(const std::shared_ptr<host::ParameterNode>& tree, std::int32_t index1,
               std::int32_t index2) override;
  bool ReadOnly() override;
  void ReadOnly(bool read_only) override;
  std::string OptionList() override;
  void OptionList(std::string_view option_list) override;
  const host::Value& GetValue(std::int32_t index1, std::int32_t index2) override;
  void SetValue(const host::Value& value, std::int32_t index1, std::int32_t index2) override;

  /// The host's own object.
  IDispatch* Object() const { return node_.Get(); }

 private:
  com::LateBound node_;
  host::Value value_;  // what GetValue refers to
};

}  // namespace component
