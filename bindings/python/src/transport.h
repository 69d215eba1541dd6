// A transport that a host wrote in Python, as the driver sees it.
#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <string>

#include "host/transport.h"

namespace binding {

namespace py = pybind11;

/// Wraps an object with Name, Settings, OnLine, Timeout, Write, Exchange, Query, ReadBlock and WriteBlock.
///
/// What the object leaves out is made up for where that makes sense: without Settings it has those of the
/// workbench's port of the same class, or an empty group; Write, Exchange and Query stand in for each other;
/// without ReadBlock and WriteBlock a block transfer fails with 13. What its methods raise travels as
/// InPython says. Needs the interpreter lock.
std::shared_ptr<host::Transport> WrapTransport(std::string class_name, py::object object);

}  // namespace binding
