// A node of a settings tree that lives on the C side.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "library/border.h"

namespace border {

class NodeByName final : public host::ParameterNode {
 public:
  explicit NodeByName(Reference node) : node_(std::move(node)) {}

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

  const Reference& Object() const { return node_; }

 private:
  Reference node_;
  host::Value value_;  // what GetValue refers to
};

/// A host's value as an automation value, and back. Fails with 13 on what a setting cannot hold.
Value Wide(const host::Value& value);
host::Value Narrow(const Value& value);

}  // namespace border
