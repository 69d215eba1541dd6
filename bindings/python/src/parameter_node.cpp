#include "parameter_node.h"

#include <pybind11/stl.h>

#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "call.h"
#include "driver/settings/option_list.h"
#include "host/host.h"
#include "values.h"

namespace binding {
namespace {

/// A node that is a Python object.
class PythonNode final : public host::ParameterNode {
 public:
  explicit PythonNode(py::object node) : node_(std::move(node)) {}

  void Initialise(std::string_view name, std::int32_t code1, std::int32_t code2, std::string_view option_list,
                  std::string_view description) override {
    With([&](const py::object& node) {
      node.attr("Initialise")(TextToPython(name), code1, code2, TextToPython(option_list),
                              TextToPython(description));
    });
  }
  std::string Name() override {
    return With([](const py::object& node) { return PythonToText(node.attr("Name")); });
  }
  NodePointer Item(std::string_view path) override {
    return With([&](const py::object& node) { return PythonToNode(node.attr("Item")(TextToPython(path))); });
  }
  std::size_t Count() override {
    return With([](const py::object& node) { return py::list(node).size(); });
  }
  NodePointer Child(std::size_t position) override {
    return With([&](const py::object& node) {
      const py::list children(node);
      if (position >= children.size()) {
        throw host::AutomationError(host::kSubscriptOutOfRange, "ParameterNode", "Subscript out of range");
      }
      return PythonToNode(children[position]);
    });
  }
  NodePointer AddChild(std::string_view name, std::int32_t code1, std::int32_t code2,
                       std::string_view option_list, std::string_view description) override {
    return With([&](const py::object& node) {
      return PythonToNode(node.attr("AddChild")(TextToPython(name), code1, code2, TextToPython(option_list),
                                                TextToPython(description)));
    });
  }
  void AddTree(const NodePointer& tree, std::int32_t index1, std::int32_t index2) override {
    With([&](const py::object& node) { node.attr("AddTree")(NodeToPython(tree), index1, index2); });
  }
  bool ReadOnly() override {
    return With([](const py::object& node) { return node.attr("ReadOnly").cast<bool>(); });
  }
  void ReadOnly(bool read_only) override {
    With([&](const py::object& node) { node.attr("ReadOnly") = read_only; });
  }
  std::string OptionList() override {
    return With([](const py::object& node) { return PythonToText(node.attr("OptionList")); });
  }
  void OptionList(std::string_view option_list) override {
    With([&](const py::object& node) { node.attr("OptionList") = TextToPython(option_list); });
  }
  const host::Value& GetValue(std::int32_t index1, std::int32_t index2) override {
    value_ =
        With([&](const py::object& node) { return PythonToSetting(node.attr("GetValue")(index1, index2)); });
    return value_;
  }
  void SetValue(const host::Value& value, std::int32_t index1, std::int32_t index2) override {
    With([&](const py::object& node) { node.attr("SetValue")(index1, index2, SettingToPython(value)); });
  }

  py::object Object() const { return node_.Get(); }

 private:
  template <class Work>
  std::invoke_result_t<Work, const py::object&> With(const Work& work) {
    return InPython("ParameterNode", [&] { return work(node_.Get()); });
  }

  Held node_;
  host::Value value_;
};

/// Walks over the children of a node as they were when the walk began.
py::iterator Children(host::ParameterNode& node) {
  return Quickly([&] {
    py::list children;
    for (std::size_t i = 0; i < node.Count(); ++i) children.append(NodeToPython(node.Child(i)));
    return py::iter(children);
  });
}

}  // namespace

py::object NodeToPython(const NodePointer& node) {
  if (!node) return py::none();
  if (const auto* const written = dynamic_cast<const PythonNode*>(node.get())) return written->Object();
  return py::cast(node);
}

NodePointer PythonToNode(py::object node) {
  if (py::isinstance<host::ParameterNode>(node)) return node.cast<NodePointer>();
  return std::make_shared<PythonNode>(std::move(node));
}

void BindParameterNode(py::module_& module) {
  using host::ParameterNode;
  using std::string;
  py::class_<ParameterNode, NodePointer>(
      module, "ParameterNode",
      "A setting or a group of settings: a name, a value, an option list, a "
      "read-only flag and children.\n\n"
      "An option list is one text, 'display=value,display=value'. A value is "
      "written as either half and always read as the value half.")
      .def(py::init([] { return Quickly([] { return host::CurrentHost().CreateParameterNode(); }); }),
           "Makes an empty group without a name.")
      .def(
          "Initialise",
          [](ParameterNode& node, const string& name, std::int32_t code1, std::int32_t code2,
             const string& option_list, const string& description) {
            Quickly([&] { node.Initialise(name, code1, code2, option_list, description); });
          },
          py::arg("name"), py::arg("code1"), py::arg("code2"), py::arg("option_list") = "",
          py::arg("description") = "",
          "Gives the node its name and its kind: codes (4, 3) for a group, (1, 4) for a plain text, (1, 2) "
          "for one "
          "choice out of the option list, (3, 2) for any number of choices.")
      .def_property_readonly(
          "Name", [](ParameterNode& node) { return Quickly([&] { return TextToPython(node.Name()); }); },
          "The node's name.")
      .def(
          "Item",
          [](ParameterNode& node, const string& path) {
            return Quickly([&] { return NodeToPython(node.Item(path)); });
          },
          py::arg("path"),
          "The child of that name, or the descendant of a dotted path such as 'RS232.Baud Rate'. Fails with "
          "9 where "
          "there is none.")
      .def(
          "AddChild",
          [](ParameterNode& node, const string& name, std::int32_t code1, std::int32_t code2,
             const string& option_list, const string& description) {
            return Quickly(
                [&] { return NodeToPython(node.AddChild(name, code1, code2, option_list, description)); });
          },
          py::arg("name"), py::arg("code1"), py::arg("code2"), py::arg("option_list") = "",
          py::arg("description") = "", "Adds a child and returns it. Codes as for Initialise.")
      .def(
          "AddTree",
          [](ParameterNode& node, py::object tree, std::int32_t index1, std::int32_t index2) {
            if (tree.is_none()) throw py::type_error("AddTree takes a ParameterNode, not None");
            Quickly([&] { node.AddTree(PythonToNode(std::move(tree)), index1, index2); });
          },
          py::arg("tree"), py::arg("index1") = -1, py::arg("index2") = -1,
          "Adds a copy of another node, with all below it, as a child.")
      .def_property(
          "ReadOnly", [](ParameterNode& node) { return Quickly([&] { return node.ReadOnly(); }); },
          [](ParameterNode& node, bool read_only) { Quickly([&] { node.ReadOnly(read_only); }); },
          "Whether SetValue is refused (with 383).")
      .def_property(
          "OptionList",
          [](ParameterNode& node) { return Quickly([&] { return TextToPython(node.OptionList()); }); },
          [](ParameterNode& node, const string& list) { Quickly([&] { node.OptionList(list); }); },
          "What the setting offers: 'display=value,display=value'.")
      .def(
          "GetValue",
          [](ParameterNode& node, std::int32_t i, std::int32_t j) {
            return Quickly([&] { return SettingToPython(node.GetValue(i, j)); });
          },
          py::arg("i") = -1, py::arg("j") = -1,
          "The value; the value half where the node has an option list.")
      .def(
          "SetValue",
          [](ParameterNode& node, std::int32_t i, std::int32_t j, py::handle value) {
            Quickly([&] { node.SetValue(PythonToSetting(value), i, j); });
          },
          py::arg("i"), py::arg("j"), py::arg("value"),
          "Sets the value, as a display name or as a value. Fails with 380 on what the list does not offer "
          "and with "
          "383 on a read-only node.")
      .def("__iter__", &Children)
      .def("__repr__", [](ParameterNode& node) {
        return Quickly([&] {
          py::str text("<ParameterNode {!r}: {}>");
          if (node.Count() != 0)
            return text.format(TextToPython(node.Name()), py::str("{} settings").format(node.Count()));
          return text.format(TextToPython(node.Name()), py::repr(SettingToPython(node.GetValue(-1, -1))));
        });
      });
  module.def(
      "GetDisplayValue",
      [](const string& list, py::handle index) {
        return Quickly([&] {
          const automation::Type type{.value = automation::ValueType::kInt16};
          const automation::Value position = FromPython(index, type, "GetDisplayValue");
          return TextToPython(qkel4x::GetDisplayValue(list, std::get<std::int16_t>(position)));
        });
      },
      py::arg("list"), py::arg("index"),
      "The display name of the entry at a position, counted from 0, of an option list. Fails with 380 where "
      "there is "
      "none.");
}

}  // namespace binding
