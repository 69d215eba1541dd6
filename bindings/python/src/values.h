// Values on their way between Python and the component.
#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "automation/value.h"
#include "driver/core/date_time.h"
#include "host/value.h"

namespace binding {

namespace py = pybind11;

/// Bytes that are no UTF-8 count as Latin-1: an instrument's remark must not make its reading unreadable.
py::str TextToPython(std::string_view text);
/// Fails with TypeError on anything but a str.
std::string PythonToText(py::handle text);

/// A 32-bit float as the shortest decimal number that it stands for: 0.1 stays 0.1.
py::float_ SecondsToPython(float seconds);

/// Dates as datetime, to the millisecond.
py::object DateTimeToPython(qkel4x::DateTime date_time);
/// From datetime, date or time (whose time zone is left aside) or from days as a number.
qkel4x::DateTime PythonToDateTime(py::handle value);
/// Durations as timedelta.
py::object DurationToPython(qkel4x::DateTime duration);

/// A setting's value: None, bool, int, float or str.
py::object SettingToPython(const host::Value& value);
host::Value PythonToSetting(py::handle value);

/// The published IntEnum of an enumeration.
py::object EnumerationClass(const automation::Enumeration& enumeration);

/// A published value: enumerations as IntEnum, or as plain int where the instrument knows more than they do.
py::object ToPython(const automation::Value& value, const automation::Type& type);
/// As that type. Fails with TypeError, which names `member`, on what is of another kind, and with the
/// automation error 6 on a whole number that the type cannot hold.
automation::Value FromPython(py::handle value, const automation::Type& type, std::string_view member);

}  // namespace binding
