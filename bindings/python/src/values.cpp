#include "values.h"

#include <datetime.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <unordered_map>
#include <utility>

#include "automation/enumeration_table.h"
#include "host/automation_error.h"
#include "parameter_node.h"

namespace binding {
namespace {

constexpr double kMillisecondsPerDay = 86400000.0;
constexpr double kMicrosecondsPerDay = 86400000000.0;
constexpr long long kEpochOrdinal = 693594;  // 30 December 1899 as datetime.date.toordinal counts

struct PublishedEnumeration {
  py::object type;
  std::unordered_map<std::int32_t, py::object> members;
};

std::map<const automation::Enumeration*, PublishedEnumeration>& Enumerations() {
  static auto* const enumerations = new std::map<const automation::Enumeration*, PublishedEnumeration>;
  return *enumerations;
}

void PrepareDates() {
  if (PyDateTimeAPI == nullptr) PyDateTime_IMPORT;
  if (PyDateTimeAPI == nullptr) throw py::error_already_set();
}

[[noreturn]] void RaiseOverflow() { throw host::AutomationError(host::kOverflow, "QKEL4x", "Overflow"); }

[[noreturn]] void RaiseWrongType(py::handle value, std::string_view member, std::string_view expected) {
  const std::string given = py::str(py::type::handle_of(value).attr("__name__"));
  throw py::type_error(std::string(member) + " takes " + std::string(expected) + ", not '" + given + "'");
}

template <class Integer>
Integer WholeNumber(py::handle value, std::string_view member, std::string_view expected) {
  if (!PyIndex_Check(value.ptr())) RaiseWrongType(value, member, expected);
  const auto number = py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr()));
  if (!number) throw py::error_already_set();
  int overflow = 0;
  const long long whole = PyLong_AsLongLongAndOverflow(number.ptr(), &overflow);
  if (overflow != 0 || whole < std::numeric_limits<Integer>::min() ||
      whole > std::numeric_limits<Integer>::max()) {
    RaiseOverflow();
  }
  return static_cast<Integer>(whole);
}

double FloatingNumber(py::handle value, std::string_view member, std::string_view expected) {
  if (PyFloat_Check(value.ptr())) return PyFloat_AS_DOUBLE(value.ptr());
  const PyNumberMethods* const methods = Py_TYPE(value.ptr())->tp_as_number;
  if (methods == nullptr || (methods->nb_float == nullptr && methods->nb_index == nullptr)) {
    RaiseWrongType(value, member, expected);
  }
  const double number = PyFloat_AsDouble(value.ptr());
  if (number == -1.0 && PyErr_Occurred() != nullptr) {
    if (PyErr_ExceptionMatches(PyExc_OverflowError) == 0) throw py::error_already_set();
    PyErr_Clear();
    RaiseOverflow();
  }
  return number;
}

}  // namespace

py::str TextToPython(std::string_view text) {
  const auto size = static_cast<Py_ssize_t>(text.size());
  PyObject* decoded = PyUnicode_DecodeUTF8(text.data(), size, nullptr);
  if (decoded == nullptr) {
    PyErr_Clear();
    decoded = PyUnicode_DecodeLatin1(text.data(), size, nullptr);
  }
  if (decoded == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(decoded);
}

std::string PythonToText(py::handle text) {
  if (!PyUnicode_Check(text.ptr())) {
    throw py::type_error("expected a str, not '" +
                         std::string(py::str(py::type::handle_of(text).attr("__name__"))) + "'");
  }
  Py_ssize_t size = 0;
  if (const char* const utf8 = PyUnicode_AsUTF8AndSize(text.ptr(), &size)) {
    return {utf8, static_cast<std::size_t>(size)};
  }
  // A lone surrogate; the text still goes out as far as it can be written.
  PyErr_Clear();
  const auto bytes =
      py::reinterpret_steal<py::bytes>(PyUnicode_AsEncodedString(text.ptr(), "utf-8", "surrogatepass"));
  if (!bytes) throw py::error_already_set();
  return bytes;
}

py::float_ SecondsToPython(float seconds) {
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, seconds).ptr;
  double shortest = 0.0;
  std::from_chars(digits, end, shortest);
  return py::float_(shortest);
}

// Dates and durations -----------------------------------------------------------------------------

py::object DateTimeToPython(qkel4x::DateTime date_time) {
  PrepareDates();
  // Left of the epoch the date counts down while the time of day still counts up.
  const double date = std::trunc(date_time.days);
  double milliseconds = std::round(std::abs(date_time.days - date) * kMillisecondsPerDay);
  long long ordinal = kEpochOrdinal;
  if (!(std::abs(date) < 4e6)) RaiseOverflow();
  ordinal += static_cast<long long>(date);
  if (milliseconds >= kMillisecondsPerDay) {
    milliseconds = 0;
    ++ordinal;
  }
  if (ordinal < 1 || ordinal > 3652059) RaiseOverflow();
  const auto day = py::reinterpret_steal<py::object>(
      PyObject_CallMethod(reinterpret_cast<PyObject*>(PyDateTimeAPI->DateType), "fromordinal", "L", ordinal));
  if (!day) throw py::error_already_set();
  const int of_day = static_cast<int>(milliseconds);
  PyObject* const result = PyDateTime_FromDateAndTime(
      PyDateTime_GET_YEAR(day.ptr()), PyDateTime_GET_MONTH(day.ptr()), PyDateTime_GET_DAY(day.ptr()),
      of_day / 3600000, of_day / 60000 % 60, of_day / 1000 % 60, of_day % 1000 * 1000);
  if (result == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(result);
}

qkel4x::DateTime PythonToDateTime(py::handle value) {
  PrepareDates();
  PyObject* const object = value.ptr();
  double days = 0.0;
  double of_day = 0.0;
  if (PyTime_Check(object)) {
    of_day = PyDateTime_TIME_GET_HOUR(object) * 3600.0 + PyDateTime_TIME_GET_MINUTE(object) * 60.0 +
             PyDateTime_TIME_GET_SECOND(object) + PyDateTime_TIME_GET_MICROSECOND(object) / 1e6;
    return {of_day / 86400.0};
  }
  days = static_cast<double>(value.attr("toordinal")().cast<long long>() - kEpochOrdinal);
  if (PyDateTime_Check(object)) {
    of_day = PyDateTime_DATE_GET_HOUR(object) * 3600.0 + PyDateTime_DATE_GET_MINUTE(object) * 60.0 +
             PyDateTime_DATE_GET_SECOND(object) + PyDateTime_DATE_GET_MICROSECOND(object) / 1e6;
  }
  return {days < 0 ? days - of_day / 86400.0 : days + of_day / 86400.0};
}

py::object DurationToPython(qkel4x::DateTime duration) {
  PrepareDates();
  const double microseconds = std::round(duration.days * kMicrosecondsPerDay);
  if (!(std::abs(microseconds) < 9e18)) RaiseOverflow();
  const auto whole = static_cast<long long>(microseconds);
  constexpr long long kPerDay = 86400000000LL;
  long long days = whole / kPerDay;
  long long rest = whole % kPerDay;
  if (rest < 0) {
    rest += kPerDay;
    --days;
  }
  PyObject* const result = PyDelta_FromDSU(static_cast<int>(days), static_cast<int>(rest / 1000000),
                                           static_cast<int>(rest % 1000000));
  if (result == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(result);
}

// Settings ----------------------------------------------------------------------------------------

py::object SettingToPython(const host::Value& value) {
  struct Visitor {
    py::object operator()(std::monostate) const { return py::none(); }
    py::object operator()(bool flag) const { return py::bool_(flag); }
    py::object operator()(std::int16_t number) const { return py::int_(number); }
    py::object operator()(std::int32_t number) const { return py::int_(number); }
    py::object operator()(double number) const { return py::float_(number); }
    py::object operator()(const std::string& text) const { return TextToPython(text); }
  };
  return std::visit(Visitor{}, value);
}

host::Value PythonToSetting(py::handle value) {
  if (value.is_none()) return std::monostate{};
  if (PyBool_Check(value.ptr())) return value.ptr() == Py_True;
  if (PyUnicode_Check(value.ptr())) return PythonToText(value);
  if (PyFloat_Check(value.ptr())) return PyFloat_AS_DOUBLE(value.ptr());
  constexpr std::string_view kExpected = "None, a bool, an int, a float or a str";
  return WholeNumber<std::int32_t>(value, "A setting", kExpected);
}

// Published values --------------------------------------------------------------------------------

py::object EnumerationClass(const automation::Enumeration& enumeration) {
  PublishedEnumeration& published = Enumerations()[&enumeration];
  if (!published.type) {
    py::list members;
    for (const automation::Enumerator& enumerator : enumeration.enumerators) {
      members.append(py::make_tuple(TextToPython(enumerator.name), enumerator.value));
    }
    published.type = py::module_::import("enum").attr("IntEnum")(TextToPython(enumeration.name), members,
                                                                 py::arg("module") = "qkel4x");
    published.type.attr("__doc__") = TextToPython(enumeration.doc);
    for (const automation::Enumerator& enumerator : enumeration.enumerators) {
      published.members[enumerator.value] = published.type.attr(TextToPython(enumerator.name));
    }
  }
  return published.type;
}

py::object ToPython(const automation::Value& value, const automation::Type& type) {
  struct Visitor {
    const automation::Type& type;
    py::object operator()(std::monostate) const { return py::none(); }
    py::object operator()(bool flag) const { return py::bool_(flag); }
    py::object operator()(std::int16_t number) const { return py::int_(number); }
    py::object operator()(std::int32_t number) const {
      if (type.enumeration != nullptr) {
        EnumerationClass(*type.enumeration);
        const auto& members = Enumerations()[type.enumeration].members;
        if (const auto found = members.find(number); found != members.end()) return found->second;
      }
      return py::int_(number);
    }
    py::object operator()(double number) const { return py::float_(number); }
    py::object operator()(qkel4x::DateTime date_time) const { return DateTimeToPython(date_time); }
    py::object operator()(const std::string& text) const { return TextToPython(text); }
    py::object operator()(const automation::Bytes& bytes) const {
      return py::bytes(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    py::object operator()(const automation::Statistics& statistics) const { return py::cast(statistics); }
    py::object operator()(const automation::Settings& settings) const { return NodeToPython(settings); }
  };
  return std::visit(Visitor{type}, value);
}

automation::Value FromPython(py::handle value, const automation::Type& type, std::string_view member) {
  using automation::ValueType;
  switch (type.value) {
    case ValueType::kBool:
      if (PyBool_Check(value.ptr())) return value.ptr() == Py_True;
      return WholeNumber<std::int32_t>(value, member, "a bool") != 0;
    case ValueType::kInt16:
      return WholeNumber<std::int16_t>(value, member, "a whole number (int)");
    case ValueType::kInt32:
      if (type.enumeration != nullptr) {
        return WholeNumber<std::int32_t>(
            value, member, "a member of " + std::string(type.enumeration->name) + " or a whole number (int)");
      }
      return WholeNumber<std::int32_t>(value, member, "a whole number (int)");
    case ValueType::kDouble:
      return FloatingNumber(value, member, "a number (float or int)");
    case ValueType::kDateTime: {
      PrepareDates();
      if (PyDate_Check(value.ptr()) || PyTime_Check(value.ptr())) return PythonToDateTime(value);
      return qkel4x::DateTime{
          FloatingNumber(value, member, "a datetime, a date, a time or days since 30 December 1899 (float)")};
    }
    case ValueType::kText:
      if (!PyUnicode_Check(value.ptr())) RaiseWrongType(value, member, "a str");
      return PythonToText(value);
    default:
      RaiseWrongType(value, member, "no argument of this kind");
  }
}

}  // namespace binding
