#include "workbench/parameters/parameter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

#include "host/automation_error.h"
#include "workbench/parameters/option_list.h"
#include "workbench/text.h"

namespace workbench {
namespace {

constexpr std::int32_t kInvalidPropertyValue = 380;

std::optional<ParameterKind> KindOf(std::int32_t code1, std::int32_t code2) {
  if (code1 == 4 && code2 == 3) return ParameterKind::kGroup;
  if (code1 == 1 && code2 == 4) return ParameterKind::kPlain;
  if (code1 == 1 && code2 == 2) return ParameterKind::kChoice;
  if (code1 == 3 && code2 == 2) return ParameterKind::kMultiChoice;
  return std::nullopt;
}

struct AsText {
  std::string operator()(std::monostate) const { return {}; }
  std::string operator()(bool value) const { return value ? "-1" : "0"; }
  std::string operator()(std::int16_t value) const { return std::to_string(value); }
  std::string operator()(std::int32_t value) const { return std::to_string(value); }
  std::string operator()(double value) const {
    std::array<char, 32> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return {digits.data(), written.ptr};
  }
  std::string operator()(const std::string& value) const { return value; }
};

}  // namespace

std::string ValueText(const host::Value& value) {
  // A whole double chooses like the whole number that it is: "500000", where to_chars would say "5e+05".
  if (const auto* number = std::get_if<double>(&value)) {
    if (const auto whole = ValueNumber(*number)) return std::to_string(*whole);
  }
  return std::visit(AsText{}, value);
}

std::optional<std::int32_t> ValueNumber(const host::Value& value) {
  if (const auto* number = std::get_if<std::int16_t>(&value)) return *number;
  if (const auto* number = std::get_if<std::int32_t>(&value)) return *number;
  if (const auto* number = std::get_if<double>(&value)) {
    if (std::abs(*number) <= std::numeric_limits<std::int32_t>::max() && std::trunc(*number) == *number) {
      return static_cast<std::int32_t>(*number);
    }
    return std::nullopt;
  }
  if (const auto* text = std::get_if<std::string>(&value)) {
    const std::string_view digits = Trimmed(*text);
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error == std::errc() && end == digits.data() + digits.size()) return number;
  }
  return std::nullopt;
}

SettingTexts SettingTextsOf(host::ParameterNode& node, const std::string& path) {
  SettingTexts texts;
  for (std::size_t i = 0; i < node.Count(); ++i) {
    const auto child = node.Child(i);
    const std::string name = path.empty() ? child->Name() : path + "." + child->Name();
    if (child->Count() > 0) {
      for (auto& below : SettingTextsOf(*child, name)) texts.push_back(std::move(below));
    } else {
      texts.emplace_back(name, ValueText(child->GetValue(-1, -1)));
    }
  }
  return texts;
}

void Parameter::Initialise(std::string_view name, std::int32_t code1, std::int32_t code2,
                           std::string_view option_list, std::string_view description) {
  const auto kind = KindOf(code1, code2);
  if (!kind) {
    Raise(host::kInvalidProcedureCall, "The codes (" + std::to_string(code1) + ", " + std::to_string(code2) +
                                           ") of setting " + Quoted(name) +
                                           " mean nothing: (4, 3) is a group, (1, 4) a plain text, (1, 2) "
                                           "one choice, (3, 2) several choices");
  }
  name_ = name;
  kind_ = *kind;
  option_list_ = option_list;
  description_ = description;
  if (kind_ != ParameterKind::kGroup && std::holds_alternative<std::monostate>(value_))
    value_ = std::string();
}

std::shared_ptr<host::ParameterNode> Parameter::Find(std::string_view path) const {
  for (const auto& child : children_) {
    if (child->name_ == path) return child;
  }
  for (std::size_t dot = path.find('.'); dot != std::string_view::npos; dot = path.find('.', dot + 1)) {
    for (const auto& child : children_) {
      if (child->name_ != path.substr(0, dot)) continue;
      if (auto found = child->Find(path.substr(dot + 1))) return found;
    }
  }
  return nullptr;
}

std::shared_ptr<host::ParameterNode> Parameter::Item(std::string_view path) {
  if (auto found = Find(path)) return found;
  std::string names;
  for (const auto& child : children_) names += (names.empty() ? "" : ", ") + Quoted(child->name_);
  Raise(host::kSubscriptOutOfRange, "There is no setting " + Quoted(path) + " in " + Quoted(name_) +
                                        "; there is " + (names.empty() ? "none at all" : names));
}

std::shared_ptr<host::ParameterNode> Parameter::Child(std::size_t position) {
  if (position >= children_.size()) {
    Raise(host::kSubscriptOutOfRange, "There is no setting at position " + std::to_string(position) + " of " +
                                          Quoted(name_) + ", which has " + std::to_string(children_.size()));
  }
  return children_[position];
}

void Parameter::Adopt(std::shared_ptr<Parameter> child) {
  for (const auto& other : children_) {
    if (other->name_ == child->name_) {
      Raise(host::kInvalidProcedureCall,
            "There is a setting " + Quoted(child->name_) + " in " + Quoted(name_) + " already");
    }
  }
  children_.push_back(std::move(child));
}

std::shared_ptr<host::ParameterNode> Parameter::AddChild(std::string_view name, std::int32_t code1,
                                                         std::int32_t code2, std::string_view option_list,
                                                         std::string_view description) {
  auto child = std::make_shared<Parameter>();
  child->Initialise(name, code1, code2, option_list, description);
  Adopt(child);
  return child;
}

std::shared_ptr<Parameter> Parameter::Copy() const {
  auto copy = std::make_shared<Parameter>(*this);
  for (auto& child : copy->children_) child = child->Copy();
  return copy;
}

void Parameter::AddTree(const std::shared_ptr<host::ParameterNode>& tree, std::int32_t index1,
                        std::int32_t index2) {
  CheckIndices(index1, index2);
  if (!tree) Raise(host::kNoObject, "No tree was given to add to " + Quoted(name_));
  if (const auto own = std::dynamic_pointer_cast<Parameter>(tree)) {
    Adopt(own->Copy());
    return;
  }
  // A node of another library does not tell its codes: what it has says what it is.
  auto copy = std::make_shared<Parameter>();
  copy->name_ = tree->Name();
  copy->option_list_ = tree->OptionList();
  copy->read_only_ = tree->ReadOnly();
  for (std::size_t i = 0; i < tree->Count(); ++i) copy->AddTree(tree->Child(i), index1, index2);
  if (tree->Count() == 0) {
    copy->kind_ = copy->option_list_.empty() ? ParameterKind::kPlain : ParameterKind::kChoice;
    copy->value_ = tree->GetValue(-1, -1);
  }
  Adopt(std::move(copy));
}

void Parameter::CheckIndices(std::int32_t index1, std::int32_t index2) const {
  if (index1 == -1 && index2 == -1) return;
  Raise(host::kSubscriptOutOfRange, "Setting " + Quoted(name_) +
                                        " has no elements: its indices are -1 and -1, not " +
                                        std::to_string(index1) + " and " + std::to_string(index2));
}

const host::Value& Parameter::GetValue(std::int32_t index1, std::int32_t index2) {
  CheckIndices(index1, index2);
  return value_;
}

void Parameter::SetValue(const host::Value& value, std::int32_t index1, std::int32_t index2) {
  CheckIndices(index1, index2);
  if (read_only_) {
    Raise(host::kPropertyReadOnly,
          "Setting " + Quoted(name_) + " is read-only and stays " + Quoted(ValueText(value_)));
  }
  switch (kind_) {
    case ParameterKind::kGroup:
      Raise(kInvalidPropertyValue, "Setting " + Quoted(name_) + " is a group and takes no value");
    case ParameterKind::kChoice:
      value_ = ChosenValue(ValueText(value));
      return;
    case ParameterKind::kMultiChoice:
      value_ = ChosenValues(ValueText(value));
      return;
    case ParameterKind::kPlain:
      break;
  }
  if (range_) {
    const auto number = ValueNumber(value);
    if (!number || *number < range_->least || *number > range_->greatest) {
      Raise(kInvalidPropertyValue, "Setting " + Quoted(name_) + " cannot be " + Quoted(ValueText(value)) +
                                       ": allowed are whole numbers from " + std::to_string(range_->least) +
                                       " to " + std::to_string(range_->greatest));
    }
  }
  value_ = value;
}

void Parameter::WholeNumbers(std::int32_t least, std::int32_t greatest) {
  range_ = WholeRange{least, greatest};
}

std::string Parameter::ChosenValue(std::string_view text) const {
  if (option_list_.empty()) return std::string(text);
  const auto options = SplitOptions(option_list_);
  const auto chosen = FindOption(options, text);
  if (!chosen) {
    Raise(kInvalidPropertyValue, "Setting " + Quoted(name_) + " does not offer " + Quoted(text) +
                                     ": allowed are " + ListedOptions(options));
  }
  return std::string(chosen->value);
}

std::string Parameter::ChosenValues(std::string_view text) const {
  const auto options = SplitOptions(option_list_);
  std::vector<std::string_view> chosen;
  for (const Option& wanted : SplitOptions(text)) {
    const auto found = FindOption(options, wanted.display);
    if (!found) {
      Raise(kInvalidPropertyValue, "Setting " + Quoted(name_) + " does not offer " + Quoted(wanted.display) +
                                       ": allowed are any of " + ListedOptions(options) +
                                       ", joined by commas");
    }
    chosen.push_back(found->value);
  }
  std::string joined;
  for (const Option& option : options) {
    if (std::find(chosen.begin(), chosen.end(), option.value) == chosen.end()) continue;
    if (!joined.empty()) joined += ',';
    joined += option.value;
  }
  return joined;
}

void Parameter::Raise(std::int32_t number, const std::string& description) const {
  throw host::AutomationError(number, "ParameterNode", description);
}

}  // namespace workbench
