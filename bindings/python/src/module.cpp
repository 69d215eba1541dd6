// The extension module qkel4x._core.
#include <pybind11/pybind11.h>

#include "call.h"
#include "members.h"
#include "parameter_node.h"
#include "python_host.h"

PYBIND11_MODULE(_core, module) {
  namespace py = pybind11;
  py::options options;
  options.disable_function_signatures();
  module.doc() = "The compiled part of qkel4x; import qkel4x instead.";
  module.attr("__version__") = QKEL4X_VERSION;
  binding::PrepareCalls(py::module_::import("qkel4x._errors").attr("AutomationError"));
  binding::BindHost(module);
  binding::BindParameterNode(module);
  binding::BindMembers(module);
}
