// The settings tree of the workbench: one class for groups, plain settings and choices.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/parameter_node.h"

namespace workbench {

/// What a node is, as its two codes say.
enum class ParameterKind {
  kGroup,        ///< (4, 3): children, no value
  kPlain,        ///< (1, 4): any value, kept with the type it was given
  kChoice,       ///< (1, 2): one entry of the option list; reads as its value half, a text
  kMultiChoice,  ///< (3, 2): any entries of the option list; reads as their value halves, joined by commas
};

/// A node of a settings tree. Errors are plain runtime numbers with the node's path in the text: 9 an item
/// that is not there (the text lists what is), 380 a value that is not allowed (the text lists what is), 383
/// a read-only node, 5 codes that mean nothing or a second child of one name.
///
/// A tree belongs to one thread at a time.
class Parameter final : public host::ParameterNode {
 public:
  /// An empty group without a name.
  Parameter() = default;

  void Initialise(std::string_view name, std::int32_t code1, std::int32_t code2, std::string_view option_list,
                  std::string_view description) override;
  std::string Name() override { return name_; }

  std::shared_ptr<host::ParameterNode> Item(std::string_view path) override;
  std::size_t Count() override { return children_.size(); }
  std::shared_ptr<host::ParameterNode> Child(std::size_t position) override;

  std::shared_ptr<host::ParameterNode> AddChild(std::string_view name, std::int32_t code1, std::int32_t code2,
                                                std::string_view option_list,
                                                std::string_view description) override;
  /// The copy is deep: the two trees share nothing afterwards.
  void AddTree(const std::shared_ptr<host::ParameterNode>& tree, std::int32_t index1,
               std::int32_t index2) override;

  bool ReadOnly() override { return read_only_; }
  void ReadOnly(bool read_only) override { read_only_ = read_only; }

  std::string OptionList() override { return option_list_; }
  /// The value stays as it is, offered by the new list or not.
  void OptionList(std::string_view option_list) override { option_list_ = option_list; }

  const host::Value& GetValue(std::int32_t index1, std::int32_t index2) override;
  /// On a choice: a display name or a value, as a text or as a number ("COM3", "3", 3; true is "-1" and false
  /// is "0"). On a multiple choice: any of these, joined by commas; an empty text for none.
  void SetValue(const host::Value& value, std::int32_t index1, std::int32_t index2) override;

  ParameterKind Kind() const { return kind_; }
  const std::string& Description() const { return description_; }
  /// Lets a plain node take whole numbers from `least` to `greatest` only, as numbers or as texts.
  void WholeNumbers(std::int32_t least, std::int32_t greatest);

 private:
  struct WholeRange {
    std::int32_t least;
    std::int32_t greatest;
  };

  std::shared_ptr<host::ParameterNode> Find(std::string_view path) const;
  std::shared_ptr<Parameter> Copy() const;
  void CheckIndices(std::int32_t index1, std::int32_t index2) const;
  void Adopt(std::shared_ptr<Parameter> child);
  std::string ChosenValue(std::string_view text) const;
  std::string ChosenValues(std::string_view text) const;
  [[noreturn]] void Raise(std::int32_t number, const std::string& description) const;

  std::string name_;
  ParameterKind kind_ = ParameterKind::kGroup;
  std::string option_list_;
  std::string description_;
  bool read_only_ = false;
  host::Value value_;
  std::optional<WholeRange> range_;
  std::vector<std::shared_ptr<Parameter>> children_;
};

/// The value of a setting as a text: numbers in plain digits, true "-1" and false "0", nothing for no value.
std::string ValueText(const host::Value& value);

/// The same as a whole number, or none where it is not one.
std::optional<std::int32_t> ValueNumber(const host::Value& value);

/// Paths and values of settings.
using SettingTexts = std::vector<std::pair<std::string, std::string>>;

/// The settings below a node as dotted paths and texts, in the order of the tree; `path` stands before them.
SettingTexts SettingTextsOf(host::ParameterNode& node, const std::string& path = {});

}  // namespace workbench
