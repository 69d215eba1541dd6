// Settings trees in both directions: qkel4x.ParameterNode, and nodes that a host writes in Python.
#pragma once

#include <pybind11/pybind11.h>

#include <memory>

#include "host/parameter_node.h"

namespace binding {

namespace py = pybind11;

using NodePointer = std::shared_ptr<host::ParameterNode>;

/// A ParameterNode, or the object itself where a host wrote it in Python.
py::object NodeToPython(const NodePointer& node);
/// From a ParameterNode or from any object with the methods of one.
NodePointer PythonToNode(py::object node);

void BindParameterNode(py::module_& module);

}  // namespace binding
