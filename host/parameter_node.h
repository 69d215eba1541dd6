// One node of a settings tree, as the host's parameter library offers it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/value.h"

namespace host {

/// A setting or a group of settings: a name, a current value, an option list, a read-only flag and children.
///
/// An option list is one text, "display=value,display=value": people see and may write the display half,
/// programs write either half and always read the value half.
class ParameterNode {
 public:
  virtual ~ParameterNode() = default;

  /// Gives this node its name and its kind. The two codes are (4, 3) for a group, (1, 4) for a plain text,
  /// (1, 2) for one choice out of a list and (3, 2) for any number of choices out of a list.
  virtual void Initialise(std::string_view name, std::int32_t code1, std::int32_t code2,
                          std::string_view option_list, std::string_view description) = 0;
  virtual std::string Name() = 0;

  /// The child of that name, or the descendant of a dotted path such as "RS232.Baud Rate".
  /// Fails when there is none.
  virtual std::shared_ptr<ParameterNode> Item(std::string_view path) = 0;
  /// How many children the node has, and the child at a position counted from 0.
  virtual std::size_t Count() = 0;
  virtual std::shared_ptr<ParameterNode> Child(std::size_t position) = 0;

  /// Adds a child and returns it. Codes as in Initialise.
  virtual std::shared_ptr<ParameterNode> AddChild(std::string_view name, std::int32_t code1,
                                                  std::int32_t code2, std::string_view option_list,
                                                  std::string_view description) = 0;
  /// Adds a copy of another node, with all below it, as a child. The driver passes -1 and -1.
  virtual void AddTree(const std::shared_ptr<ParameterNode>& tree, std::int32_t index1,
                       std::int32_t index2) = 0;

  virtual bool ReadOnly() = 0;
  virtual void ReadOnly(bool read_only) = 0;

  virtual std::string OptionList() = 0;
  virtual void OptionList(std::string_view option_list) = 0;

  /// The current value: the value half where the node has an option list. The driver passes -1 and -1.
  /// The reference holds until the node is next called, so that reading a setting copies nothing.
  virtual const Value& GetValue(std::int32_t index1, std::int32_t index2) = 0;
  /// Sets the value from a display name or a value. Fails on a read-only node and on what the list does not
  /// offer.
  virtual void SetValue(const Value& value, std::int32_t index1, std::int32_t index2) = 0;
};

}  // namespace host
