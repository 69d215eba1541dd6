#include "members.h"

#include <array>
#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "automation/enumeration_table.h"
#include "automation/member_table.h"
#include "call.h"
#include "driver/clsKEL4x.h"
#include "driver/settings/clsRegister.h"
#include "driver/statistics/clsStatistics.h"
#include "python_host.h"
#include "values.h"

namespace binding {
namespace {

using automation::Class;
using automation::Kind;
using automation::Member;
using automation::Type;
using automation::Value;
using automation::ValueType;

constexpr std::chrono::milliseconds kLockSlice{20};

/// A driver object as Python holds it. The lock makes calls from several Python threads wait for each other;
/// a host's own code may call the driver again from within a call.
struct Driver {
  explicit Driver(std::shared_ptr<workbench::Workbench> own_bench)
      : bench(std::move(own_bench)), driver(InComponent([this] {
          const PythonHost::OnBench chosen(bench.get());
          return std::make_unique<qkel4x::clsKEL4x>();
        })) {}

  std::shared_ptr<workbench::Workbench> bench;  // null where the process's own serves
  std::unique_ptr<qkel4x::clsKEL4x> driver;
  std::recursive_timed_mutex busy;
};

/// One of the driver's host interfaces; keeps the driver alive.
struct SetupInterface {
  py::object owner;
  Driver* driver;
};
struct IdentifyInterface {
  py::object owner;
  Driver* driver;
};

/// The C++ object behind a Python one: as the class of the member table that `Access` casts back to, and the
/// driver whose turn it must be, if any.
struct Target {
  void* object;
  Driver* driver;
};

template <class Bound>
Target TargetOf(PyObject* self) {
  auto& bound = py::handle(self).cast<Bound&>();
  if constexpr (std::is_same_v<Bound, Driver>) {
    return {bound.driver.get(), &bound};
  } else if constexpr (std::is_same_v<Bound, SetupInterface>) {
    return {static_cast<host::IDriverSetup*>(bound.driver->driver.get()), bound.driver};
  } else if constexpr (std::is_same_v<Bound, IdentifyInterface>) {
    return {static_cast<host::IDriverIdentify*>(bound.driver->driver.get()), bound.driver};
  } else {
    return {&bound, nullptr};
  }
}

/// What a descriptor of a published member knows.
struct BoundMember {
  const Member* member;
  const Class* of;
  Target (*target)(PyObject* self);
  bool durations;  // its times are durations

  std::string FullName() const { return std::string(of->name) + "." + std::string(member->name); }
};

/// Takes the driver's turn on this thread.
class Turn {
 public:
  explicit Turn(Driver& driver) : bench_(driver.bench.get()), lock_(driver.busy, std::defer_lock) {
    while (!lock_.try_lock_for(kLockSlice)) {
      if (Call::Interrupted()) {
        throw host::AutomationError(host::kObjectErrorBase + host::kLinkNotOpen, "clsKEL4x",
                                    "The host interrupted the call");
      }
    }
  }

 private:
  PythonHost::OnBench bench_;
  std::unique_lock<std::recursive_timed_mutex> lock_;
};

Value Invoke(automation::Invoke invoke, const Target& target, std::span<Value> arguments) {
  if (target.driver == nullptr) return Quickly([&] { return invoke(target.object, arguments); });
  return InComponent([&] {
    const Turn turn(*target.driver);
    return invoke(target.object, arguments);
  });
}

py::object Result(const BoundMember& bound, const Value& value, const Type& type) {
  if (bound.durations && type.value == ValueType::kDateTime) {
    return DurationToPython(std::get<qkel4x::DateTime>(value));
  }
  return ToPython(value, type);
}

/// Runs a slot function of the interpreter: C++ exceptions end here and become Python's.
template <class Failed, class Work>
Failed AtInterpreter(Failed failed, const Work& work) {
  try {
    return work();
  } catch (py::error_already_set& raised) {
    raised.restore();
  } catch (const py::builtin_exception& raised) {
    raised.set_error();
  } catch (const host::AutomationError&) {
    try {
      ThrowIntoPython(std::current_exception());
    } catch (py::error_already_set& raised) {
      raised.restore();
    }
  } catch (const std::exception& failure) {
    PyErr_SetString(PyExc_RuntimeError, failure.what());
  }
  return failed;
}

PyObject* ReadProperty(PyObject* self, void* closure) {
  const auto& bound = *static_cast<const BoundMember*>(closure);
  return AtInterpreter<PyObject*>(nullptr, [&] {
    const Value value = Invoke(bound.member->access.read, bound.target(self), {});
    return Result(bound, value, bound.member->access.type).release().ptr();
  });
}

int WriteProperty(PyObject* self, PyObject* value, void* closure) {
  const auto& bound = *static_cast<const BoundMember*>(closure);
  return AtInterpreter<int>(-1, [&] {
    if (value == nullptr) throw py::attribute_error(bound.FullName() + " cannot be deleted");
    if (!bound.member->Writable()) throw py::attribute_error(bound.FullName() + " can only be read");
    Value converted = Quickly([&] { return FromPython(value, bound.member->access.type, bound.FullName()); });
    Invoke(bound.member->access.write, bound.target(self), {&converted, 1});
    return 0;
  });
}

/// A method, or an indexed property, which Python reads by a call. What the call replaces comes back beside
/// the result, None where the call left it alone.
py::object CallMember(const BoundMember& bound, py::handle self, const py::args& given,
                      const py::kwargs& named) {
  // Stands for an argument that is only written back; no instrument sends just these bytes.
  static const automation::Bytes kUntouched{'u', 'n', 't',  'o',  'u',  'c', 'h',
                                            'e', 'd', 0x00, 0xD1, 0x2B, 0x96};
  const std::span<const Type> parameters = bound.member->Parameters();
  std::array<Value, 2> values;
  std::size_t next = 0;
  std::size_t used = 0;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (parameters[i].written_back) {
      values.at(i) = kUntouched;
      continue;
    }
    const std::string name(bound.member->arguments.at(i));
    py::object argument;
    if (next < given.size()) {
      argument = given[next++];
    } else if (named.contains(name)) {
      argument = named[name.c_str()];
      ++used;
    } else {
      throw py::type_error(bound.FullName() + "() needs its argument '" + name + "'");
    }
    values.at(i) =
        Quickly([&] { return FromPython(argument, parameters[i], bound.FullName() + "(" + name + ")"); });
  }
  if (next < given.size() || used < named.size()) {
    throw py::type_error(bound.FullName() + "() takes " +
                         (next + used == 0 ? "no" : "only " + std::to_string(next + used)) + " argument" +
                         (next + used == 1 ? "" : "s"));
  }
  const Value result =
      Invoke(bound.member->access.read, bound.target(self.ptr()), std::span(values).first(parameters.size()));
  py::object answer = Result(bound, result, bound.member->access.type);
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (!parameters[i].written_back) continue;
    const bool untouched = std::get<automation::Bytes>(values.at(i)) == kUntouched;
    return py::make_tuple(answer, untouched ? py::none() : Result(bound, values.at(i), parameters[i]));
  }
  return answer;
}

// Docstrings --------------------------------------------------------------------------------------

std::string PythonType(const BoundMember& bound, const Type& type) {
  if (type.enumeration != nullptr) return std::string(type.enumeration->name);
  switch (type.value) {
    case ValueType::kNothing:
      return "None";
    case ValueType::kBool:
      return "bool";
    case ValueType::kInt16:
    case ValueType::kInt32:
      return "int";
    case ValueType::kDouble:
      return "float";
    case ValueType::kDateTime:
      return bound.durations ? "datetime.timedelta" : "datetime.datetime";
    case ValueType::kText:
      return "str";
    case ValueType::kBytes:
      return "bytes";
    case ValueType::kStatistics:
      return "clsStatistics";
    case ValueType::kSettings:
      return "ParameterNode";
  }
  return "object";
}

/// "(udtMode: KelScreenShotModes) -> tuple[bool, bytes | None]"
std::string SignatureText(const BoundMember& bound) {
  std::string text = "(";
  std::string result = PythonType(bound, bound.member->access.type);
  const std::span<const Type> parameters = bound.member->Parameters();
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const std::string type = PythonType(bound, parameters[i]);
    if (parameters[i].written_back) {
      result = "tuple[" + result + ", " + type + " | None]";
      continue;
    }
    if (text.size() > 1) text += ", ";
    text += std::string(bound.member->arguments.at(i)) + ": " + type;
  }
  return text + ") -> " + result;
}

std::string ModesText(const Member& member) {
  std::string modes;
  for (const automation::Enumerator& mode : automation::kEnumerators<qkel4x::KelMeasureModes>) {
    if (mode.value < 0 || !member.modes.Has(static_cast<qkel4x::KelMeasureModes>(mode.value))) continue;
    if (!modes.empty()) modes += ", ";
    modes += mode.name;
  }
  return modes;
}

std::string DocText(const BoundMember& bound) {
  const Member& member = *bound.member;
  std::string text(member.doc);
  text += "\n";
  const auto line = [&](std::string_view heading, std::string_view content) {
    if (!content.empty()) text.append("\n").append(heading).append(": ").append(content);
  };
  if (member.access.kind == Kind::kProperty) {
    line("Type",
         PythonType(bound, member.access.type) + (member.Writable() ? ", read and write" : ", read only"));
  }
  if (!bound.durations || member.access.type.value != ValueType::kDateTime) line("Unit", member.unit);
  line("Range", member.range);
  std::string errors(member.errors);
  if (!member.modes.Empty()) {
    line("Measurement modes", ModesText(member));
    errors = "2016 in any other measurement mode. " + errors;
  }
  const bool is_number =
      member.access.type.enumeration == nullptr && member.access.type.value != ValueType::kDateTime;
  if (member.Writable() && is_number && !member.range.empty() && errors.find("380") == std::string::npos) {
    errors = "380 outside the range. " + errors;
  }
  line("Errors", errors.empty()
                     ? std::string_view("AutomationError where the driver or the instrument's link fails.")
                     : std::string_view(errors));
  line("Note", member.oddities);
  return text;
}

// Attributes --------------------------------------------------------------------------------------

const Class* PublishedClass(PyTypeObject* type) {
  const auto known = py::handle(reinterpret_cast<PyObject*>(type)).attr("_published_class");
  return known.cast<py::capsule>().get_pointer<const Class>();
}

[[noreturn]] void ThrowUnknown(PyObject* self, PyObject* name) {
  const Class& published = *PublishedClass(Py_TYPE(self));
  const std::string wanted = PythonToText(name);
  std::string nearest(published.Nearest(wanted).name);
  if (&published == &automation::kDriverClass) {
    for (const char* const interface : {"IDriverSetup", "IDriverIdentify"}) {
      const Class& other = interface[7] == 'S' ? automation::kSetupInterface : automation::kIdentifyInterface;
      if (other.Find(wanted) != nullptr && published.Find(wanted) == nullptr) {
        nearest = std::string(interface) + "." + std::string(other.Find(wanted)->name);
      }
    }
  }
  throw py::attribute_error(std::string(published.name) + " has no member '" + wanted +
                            "'; the nearest is '" + nearest + "'");
}

PyObject* GetAttribute(PyObject* self, PyObject* name) {
  PyObject* const found = PyObject_GenericGetAttr(self, name);
  if (found != nullptr || PyErr_ExceptionMatches(PyExc_AttributeError) == 0) return found;
  PyObject* const type = reinterpret_cast<PyObject*>(Py_TYPE(self));
  const std::string_view text = PyUnicode_AsUTF8(name) != nullptr ? PyUnicode_AsUTF8(name) : "";
  // The member is there and failed by itself, or Python asks for one of its own.
  if (text.starts_with("__") || PyObject_HasAttr(type, name) != 0) return nullptr;
  PyErr_Clear();
  return AtInterpreter<PyObject*>(nullptr, [&]() -> PyObject* { ThrowUnknown(self, name); });
}

int SetAttribute(PyObject* self, PyObject* name, PyObject* value) {
  PyObject* const type = reinterpret_cast<PyObject*>(Py_TYPE(self));
  const std::string_view text = PyUnicode_AsUTF8(name) != nullptr ? PyUnicode_AsUTF8(name) : "";
  if (text.starts_with("_") || PyObject_HasAttr(type, name) != 0)
    return PyObject_GenericSetAttr(self, name, value);
  return AtInterpreter<int>(-1, [&]() -> int { ThrowUnknown(self, name); });
}

/// The names that dir() shows: all but the hidden ones.
py::list VisibleNames(const py::object& names) {
  py::list visible;
  for (const py::handle name : names) {
    const std::string text = py::str(name);
    bool hidden = text == "_published_class";
    for (const Class* const published : automation::AllClasses()) {
      const Member* const member = published->Find(text);
      if (member != nullptr && member->name == text) hidden = hidden || member->hidden;
    }
    if (!hidden) visible.append(name);
  }
  return visible;
}

/// A metaclass whose classes leave the hidden members out of dir() too.
py::object Metaclass() {
  static PyObject* const metaclass = [] {
    py::dict body;
    const py::object type = py::reinterpret_borrow<py::object>(reinterpret_cast<PyObject*>(&PyType_Type));
    body["__dir__"] =
        py::cpp_function([type](const py::object& self) { return VisibleNames(type.attr("__dir__")(self)); },
                         py::is_method(py::none()));
    body["__module__"] = "qkel4x";
    const py::object base = py::reinterpret_borrow<py::object>(
        reinterpret_cast<PyObject*>(py::detail::get_internals().default_metaclass));
    return type("published", py::make_tuple(base), body).release().ptr();
  }();
  return py::reinterpret_borrow<py::object>(metaclass);
}

// Classes -----------------------------------------------------------------------------------------

template <class Bound>
void AddMembers(py::handle type, const Class& published) {
  // Descriptors keep pointers into these for as long as the process lives.
  static auto* const bound_members = new std::deque<BoundMember>;
  static auto* const texts = new std::deque<std::string>;
  static auto* const definitions = new std::deque<PyGetSetDef>;
  const auto keep = [](std::string text) { return texts->emplace_back(std::move(text)).c_str(); };
  for (const Member& member : published.members) {
    BoundMember& bound = bound_members->emplace_back(
        BoundMember{&member, &published, &TargetOf<Bound>, &published == &automation::kStatisticsClass});
    const char* const name = keep(std::string(member.name));
    const std::string doc = DocText(bound);
    if (member.access.kind == Kind::kProperty) {
      PyGetSetDef& definition =
          definitions->emplace_back(PyGetSetDef{name, &ReadProperty, &WriteProperty, keep(doc), &bound});
      type.attr(name) = py::reinterpret_steal<py::object>(
          PyDescr_NewGetSet(reinterpret_cast<PyTypeObject*>(type.ptr()), &definition));
      continue;
    }
    type.attr(name) = py::cpp_function(
        [&bound](const py::object& self, const py::args& given, const py::kwargs& named) {
          return CallMember(bound, self, given, named);
        },
        py::name(name), py::is_method(type), keep(std::string(name) + SignatureText(bound) + "\n\n" + doc));
  }
}

void InheritSlot(PyTypeObject* type, const char* name, void* function) {
  const auto of_object =
      py::reinterpret_borrow<py::object>(PyDict_GetItemString(PyBaseObject_Type.tp_dict, name));
  auto* const wrapper = reinterpret_cast<PyWrapperDescrObject*>(of_object.ptr());
  const auto own = py::reinterpret_steal<py::object>(PyDescr_NewWrapper(type, wrapper->d_base, function));
  if (!own || PyDict_SetItemString(type->tp_dict, name, own.ptr()) != 0) throw py::error_already_set();
}

template <class Bound, class... Holder>
py::class_<Bound, Holder...> Publish(py::module_& module, const Class& published) {
  py::class_<Bound, Holder...> type(module, std::string(published.name).c_str(),
                                    std::string(published.doc).c_str(), py::metaclass(Metaclass()));
  type.attr("__module__") = "qkel4x";
  type.attr("_published_class") = py::capsule(&published, "automation.Class");
  AddMembers<Bound>(type, published);
  type.def("__dir__", [](const py::object& self) {
    const py::object plain =
        py::reinterpret_borrow<py::object>(reinterpret_cast<PyObject*>(&PyBaseObject_Type))
            .attr("__dir__")(self);
    return VisibleNames(plain);
  });
  auto* const slots = reinterpret_cast<PyTypeObject*>(type.ptr());
  slots->tp_getattro = &GetAttribute;
  slots->tp_setattro = &SetAttribute;
  // Subclasses written in Python find the slots through these names.
  InheritSlot(slots, "__getattribute__", reinterpret_cast<void*>(&GetAttribute));
  InheritSlot(slots, "__setattr__", reinterpret_cast<void*>(&SetAttribute));
  InheritSlot(slots, "__delattr__", reinterpret_cast<void*>(&SetAttribute));
  PyType_Modified(slots);
  return type;
}

py::dict Described(const Class& published) {
  py::dict described;
  described["name"] = TextToPython(published.name);
  described["doc"] = TextToPython(published.doc);
  py::list members;
  for (const Member& member : published.members) {
    const BoundMember bound{&member, &published, nullptr, &published == &automation::kStatisticsClass};
    py::dict row;
    row["name"] = TextToPython(member.name);
    row["kind"] = member.access.kind == Kind::kProperty          ? "property"
                  : member.access.kind == Kind::kIndexedProperty ? "indexed property"
                                                                 : "method";
    row["type"] = PythonType(bound, member.access.type);
    row["signature"] = SignatureText(bound);
    row["writable"] = member.Writable();
    row["hidden"] = member.hidden;
    row["unit"] = TextToPython(member.unit);
    row["range"] = TextToPython(member.range);
    py::list modes;
    for (const automation::Enumerator& mode : automation::kEnumerators<qkel4x::KelMeasureModes>) {
      if (mode.value >= 0 && member.modes.Has(static_cast<qkel4x::KelMeasureModes>(mode.value))) {
        modes.append(mode.value);
      }
    }
    row["modes"] = modes;
    row["doc"] = TextToPython(DocText(bound));
    members.append(row);
  }
  described["members"] = members;
  return described;
}

}  // namespace

void BindMembers(py::module_& module) {
  for (const automation::Enumeration* const enumeration : automation::kEnumerations) {
    module.attr(std::string(enumeration->name).c_str()) = EnumerationClass(*enumeration);
  }
  Publish<qkel4x::clsStatistics, std::shared_ptr<qkel4x::clsStatistics>>(module, automation::kStatisticsClass)
      .def(py::init<>());
  auto names = Publish<qkel4x::clsRegister>(module, automation::kRegisterClass);
  names.def(py::init<>());
  names.def("GetClassDescription", &qkel4x::clsRegister::GetClassDescription, "What the host shows people.");
  names.def("GetClassName", &qkel4x::clsRegister::GetClassName, "The class that the host is to create.");
  Publish<SetupInterface>(module, automation::kSetupInterface);
  Publish<IdentifyInterface>(module, automation::kIdentifyInterface);
  Publish<Driver>(module, automation::kDriverClass)
      .def(py::init([] { return std::make_unique<Driver>(nullptr); }),
           "Builds the settings tree and finds the serial ports that open. Fails with 380 when none does.")
      .def(py::init<std::shared_ptr<workbench::Workbench>>(), py::arg("bench"))
      .def_property_readonly(
          "IDriverSetup",
          [](const py::object& self) {
            return SetupInterface{self, &self.cast<Driver&>()};
          },
          "How a host sets up the driver: Name, Settings and OnLine.")
      .def_property_readonly(
          "IDriverIdentify",
          [](const py::object& self) {
            return IdentifyInterface{self, &self.cast<Driver&>()};
          },
          "How a host asks the driver what instrument it is talking to.");
  module.attr("ParameterNode").attr("__module__") = "qkel4x";
  py::list names_of_all;
  for (const char* const name : {"GetDisplayValue", "ParameterNode"}) names_of_all.append(name);
  for (const Class* const of : automation::AllClasses()) {
    if (py::hasattr(module, std::string(of->name).c_str())) names_of_all.append(TextToPython(of->name));
  }
  for (const automation::Enumeration* const of : automation::kEnumerations) {
    names_of_all.append(TextToPython(of->name));
  }
  module.attr("__all__") = names_of_all;
  module.def("enumerations", [] {
    py::list published_ones;
    for (const automation::Enumeration* const of : automation::kEnumerations) {
      published_ones.append(EnumerationClass(*of));
    }
    return published_ones;
  });
  module.def("member_table", [] {
    py::list classes;
    for (const Class* const published : automation::AllClasses()) classes.append(Described(*published));
    return classes;
  });
}

}  // namespace binding
