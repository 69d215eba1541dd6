#include "transport.h"

#include <optional>
#include <type_traits>
#include <utility>

#include "call.h"
#include "host/host.h"
#include "parameter_node.h"
#include "python_host.h"
#include "values.h"

namespace binding {
namespace {

class PythonTransport final : public host::Transport, public host::BlockTransfer {
 public:
  PythonTransport(std::string class_name, py::object object)
      : class_name_(std::move(class_name)), object_(std::move(object)) {}

  std::string Name() override {
    return With([](const py::object& port) {
      return py::hasattr(port, "Name") ? PythonToText(port.attr("Name")) : std::string();
    });
  }

  void Name(std::string_view name) override {
    With([&](const py::object& port) {
      try {
        port.attr("Name") = TextToPython(name);
      } catch (py::error_already_set& refused) {
        // A port whose name is fixed, or that has none, works as well as any.
        if (!refused.matches(PyExc_AttributeError)) throw;
      }
    });
  }

  std::shared_ptr<host::ParameterNode> Settings() override {
    return With([&](const py::object& port) {
      const py::object settings = py::getattr(port, "Settings", py::none());
      if (settings.is_none()) {
        if (!own_settings_) own_settings_ = PythonHost::Instance().DefaultSettings(class_name_);
        return own_settings_;
      }
      NodePointer node = PythonToNode(settings);
      // A group without a name could not be found again among the driver's settings.
      if (py::isinstance<host::ParameterNode>(settings) && node->Name().empty()) {
        node->Initialise(class_name_, 4, 3, "", "");
      }
      return node;
    });
  }

  bool OnLine() override {
    return With([](const py::object& port) {
      const py::object on_line = py::getattr(port, "OnLine", py::none());
      const int truth = PyObject_IsTrue(on_line.ptr());
      if (truth < 0) throw py::error_already_set();
      return truth != 0;
    });
  }
  void OnLine(bool on_line) override {
    With([&](const py::object& port) { port.attr("OnLine") = py::bool_(on_line); });
  }

  float Timeout() override {
    return With([&](const py::object& port) {
      const py::object seconds = py::getattr(port, "Timeout", py::none());
      return seconds.is_none() ? timeout_ : static_cast<float>(py::float_(seconds));
    });
  }
  void Timeout(float seconds) override {
    timeout_ = seconds;
    With([&](const py::object& port) {
      try {
        port.attr("Timeout") = SecondsToPython(seconds);
      } catch (py::error_already_set& refused) {
        // A port that knows no time-out; one that has it read-only must say so.
        if (!refused.matches(PyExc_AttributeError) || py::hasattr(port, "Timeout")) throw;
      }
    });
  }

  void Write(std::string_view command) override {
    Transfer([&](const py::object& port) {
      if (py::hasattr(port, "Write") || !py::hasattr(port, "Exchange")) {
        port.attr("Write")(TextToPython(command));
      } else {
        port.attr("Exchange")(TextToPython(command), false);
      }
    });
  }

  void Exchange(std::string_view command, std::string* reply) override {
    Transfer([&](const py::object& port) {
      py::object answer;
      if (py::hasattr(port, "Exchange")) {
        answer = port.attr("Exchange")(TextToPython(command), reply != nullptr);
      } else if (reply != nullptr) {
        answer = port.attr("Query")(TextToPython(command));
      } else {
        port.attr("Write")(TextToPython(command));
      }
      if (reply != nullptr) *reply = Line(answer, "Exchange");
    });
  }

  std::string Query(std::optional<std::string_view> command) override {
    return Transfer([&](const py::object& port) {
      if (!command) return Line(port.attr("Query")(), "Query");
      if (py::hasattr(port, "Query") || !py::hasattr(port, "Exchange")) {
        return Line(port.attr("Query")(TextToPython(*command)), "Query");
      }
      return Line(port.attr("Exchange")(TextToPython(*command), true), "Exchange");
    });
  }

  host::BlockTransfer* Blocks() override {
    const bool transfers_blocks = With([](const py::object& port) {
      return py::hasattr(port, "ReadBlock") || py::hasattr(port, "WriteBlock");
    });
    return transfers_blocks ? this : nullptr;
  }

  std::vector<std::uint8_t> ReadBlock(std::int16_t count, std::optional<std::string_view> command) override {
    return Transfer([&](const py::object& port) {
      RequireMethod(port, "ReadBlock");
      const py::object read = port.attr("ReadBlock");
      const py::object block = command ? read(count, TextToPython(*command)) : read(count);
      return Bytes(block);
    });
  }

  void WriteBlock(std::int16_t format, std::span<const std::uint8_t> data,
                  std::optional<std::string_view> command) override {
    Transfer([&](const py::object& port) {
      RequireMethod(port, "WriteBlock");
      const py::object write = port.attr("WriteBlock");
      const py::bytes bytes(reinterpret_cast<const char*>(data.data()), data.size());
      if (command) {
        write(format, bytes, TextToPython(*command));
      } else {
        write(format, bytes);
      }
    });
  }

 private:
  template <class Work>
  std::invoke_result_t<Work, const py::object&> With(const Work& work) {
    return InPython(class_name_, [&] { return work(object_.Get()); });
  }

  /// As With, but not any more once the call is interrupted.
  template <class Work>
  std::invoke_result_t<Work, const py::object&> Transfer(const Work& work) {
    if (const Call* const call = Call::Current(); call != nullptr && call->IsInterrupted()) {
      throw host::AutomationError(host::kObjectErrorBase + host::kLinkNotOpen, class_name_,
                                  "The host interrupted the transfer");
    }
    return With(work);
  }

  [[noreturn]] void RaiseTypeMismatch(const std::string& what) const {
    throw host::AutomationError(host::kTypeMismatch, class_name_, "Type mismatch: " + what);
  }

  std::string Line(const py::object& reply, const std::string& method) const {
    if (!PyUnicode_Check(reply.ptr())) {
      RaiseTypeMismatch(method + " returned '" + std::string(py::str(py::type::of(reply).attr("__name__"))) +
                        "' instead of a str");
    }
    return PythonToText(reply);
  }

  std::vector<std::uint8_t> Bytes(const py::object& block) const {
    if (!PyObject_CheckBuffer(block.ptr())) {
      RaiseTypeMismatch("ReadBlock returned '" + std::string(py::str(py::type::of(block).attr("__name__"))) +
                        "' instead of bytes");
    }
    const auto bytes = py::reinterpret_steal<py::bytes>(PyBytes_FromObject(block.ptr()));
    if (!bytes) throw py::error_already_set();
    const std::string_view view = bytes;
    return {view.begin(), view.end()};
  }

  void RequireMethod(const py::object& port, const char* method) const {
    if (!py::hasattr(port, method)) RaiseTypeMismatch("the port has no " + std::string(method));
  }

  std::string class_name_;
  Held object_;
  NodePointer own_settings_;
  float timeout_ = 5.0F;
};

}  // namespace

std::shared_ptr<host::Transport> WrapTransport(std::string class_name, py::object object) {
  return std::make_shared<PythonTransport>(std::move(class_name), std::move(object));
}

}  // namespace binding
