// The published classes in Python: a loop over the member table.
#pragma once

#include <pybind11/pybind11.h>

namespace binding {

namespace py = pybind11;

/// Adds the published classes, interfaces and enumerations to the extension module.
void BindMembers(py::module_& module);

}  // namespace binding
