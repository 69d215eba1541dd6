// The scripted host: its tree, its transports and the comparison of what happens with the script.
#include "scripted_host.h"

#include <charconv>
#include <utility>

namespace member_cases {
namespace {

constexpr std::string_view kNoError = "0,\"No error\"";

std::string NumberLine(double number) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
  return {text.data(), end};
}

std::string ValueText(const host::Value& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* number = std::get_if<std::int16_t>(&value)) return std::to_string(*number);
  if (const auto* number = std::get_if<std::int32_t>(&value)) return std::to_string(*number);
  return {};
}

}  // namespace

std::string Line(const Event& event) {
  switch (event.kind) {
    case Event::Kind::kSend:
      return ">> " + event.text;
    case Event::Kind::kBlock:
      return "block " + NumberLine(event.number);
    case Event::Kind::kWait:
      return "wait " + NumberLine(event.number);
    case Event::Kind::kTimeout:
      return "timeout " + NumberLine(event.number);
    case Event::Kind::kOpen:
      return "open";
    case Event::Kind::kClose:
      return "close";
    case Event::Kind::kReporting:
      return event.on ? "reporting on" : "reporting off";
    case Event::Kind::kLogKind:
      return "kind " + NumberLine(event.number) + (event.on ? " on" : " off");
  }
  return {};
}

// The tree ------------------------------------------------------------------

void ScriptedNode::Initialise(std::string_view name, std::int32_t code1, std::int32_t code2,
                              std::string_view option_list, std::string_view text) {
  name_ = name;
  codes = {code1, code2};
  option_list_ = option_list;
  description = text;
}

std::shared_ptr<host::ParameterNode> ScriptedNode::Item(std::string_view path) {
  const std::size_t dot = path.find('.');
  for (const auto& child : children_) {
    if (child->name_ != path.substr(0, dot)) continue;
    if (dot == std::string_view::npos) return child;
    return child->Item(path.substr(dot + 1));
  }
  throw host::AutomationError(host::kInvalidProcedureCall, "ParameterNode.Item",
                              "No setting \"" + std::string(path) + "\" below \"" + name_ + "\"");
}

std::shared_ptr<host::ParameterNode> ScriptedNode::AddChild(std::string_view name, std::int32_t code1,
                                                            std::int32_t code2, std::string_view option_list,
                                                            std::string_view text) {
  auto child = std::make_shared<ScriptedNode>();
  child->Initialise(name, code1, code2, option_list, text);
  children_.push_back(child);
  return child;
}

std::shared_ptr<ScriptedNode> ScriptedNode::Copy() const {
  auto copy = std::make_shared<ScriptedNode>(*this);
  for (auto& child : copy->children_) child = child->Copy();
  return copy;
}

void ScriptedNode::AddTree(const std::shared_ptr<host::ParameterNode>& tree, std::int32_t index1,
                           std::int32_t index2) {
  if (index1 != -1 || index2 != -1) {
    throw host::AutomationError(host::kInvalidProcedureCall, "ParameterNode.AddTree",
                                "Indices are -1 and -1");
  }
  children_.push_back(static_cast<const ScriptedNode&>(*tree).Copy());
}

const host::Value& ScriptedNode::GetValue(std::int32_t index1, std::int32_t index2) {
  if (index1 != -1 || index2 != -1) {
    throw host::AutomationError(host::kInvalidProcedureCall, "ParameterNode.Value", "Indices are -1 and -1");
  }
  return value_;
}

void ScriptedNode::SetValue(const host::Value& value, std::int32_t index1, std::int32_t index2) {
  if (index1 != -1 || index2 != -1) {
    throw host::AutomationError(host::kInvalidProcedureCall, "ParameterNode.Value", "Indices are -1 and -1");
  }
  const std::string wanted = ValueText(value);
  std::string_view rest = option_list_;
  while (!rest.empty()) {
    const std::string_view entry = rest.substr(0, rest.find(','));
    rest.remove_prefix(std::min(entry.size() + 1, rest.size()));
    const std::size_t equals = entry.find('=');
    if (equals == std::string_view::npos) continue;
    std::string_view display = entry.substr(0, equals);
    const std::string_view half = entry.substr(equals + 1);
    if (display.starts_with(' ')) display.remove_prefix(1);
    if (wanted == display || wanted == half) {
      value_ = std::string(half);
      return;
    }
  }
  value_ = value;
}

// The transports --------------------------------------------------------------

ScriptedTransport::ScriptedTransport(ScriptedHost& owner, std::string_view class_name)
    : owner_(owner), class_name_(class_name), settings_(std::make_shared<ScriptedNode>()) {
  const auto add = [this](std::string_view name, const host::Value& value) {
    settings_->AddChild(name, 1, 4, "", "")->SetValue(value, -1, -1);
  };
  if (class_name == "QPort.clsGPIB") {
    settings_->Initialise("GPIB", 4, 3, "", "");
    add("Primary Address", std::int16_t{1});
    add("Secondary Address", std::int16_t{0});
  } else if (class_name == "QPort.clsComm") {
    settings_->Initialise("RS232", 4, 3, "", "");
    for (const std::string_view name :
         {"Comm Port", "Baud Rate", "Data Bits", "Parity", "Stop Bits", "Handshaking"}) {
      add(name, std::string("untouched"));
    }
  } else if (class_name == "QPort.clsEthernet") {
    settings_->Initialise("TCP/IP", 4, 3, "", "");
    add("Address", std::string("192.0.2.1"));
  } else {
    settings_->Initialise("GUI", 4, 3, "", "");
  }
  owner_.port_ = this;
}

ScriptedTransport::~ScriptedTransport() {
  if (owner_.port_ == this) owner_.port_ = nullptr;
}

void ScriptedTransport::OnLine(bool on_line) {
  Event event{.kind = on_line ? Event::Kind::kOpen : Event::Kind::kClose,
              .text = {},
              .reply = {},
              .on = true,
              .bytes = {},
              .failure = {}};
  if (owner_.passing_ && class_name_ == "QPort.clsComm") {
    const std::string port = ValueText(settings_->Item("Comm Port")->GetValue(-1, -1));
    owner_.events.push_back(Line(event) + " " + port);
    int number = 0;
    std::from_chars(port.data(), port.data() + port.size(), number);
    if (on_line && !owner_.serial_ports.contains(number)) {
      throw host::AutomationError(host::kObjectErrorBase + host::kLinkNotOpen, "QPort", "No such port");
    }
    on_line_ = on_line;
    return;
  }
  on_line_ = owner_.Next(event).on && on_line;
}

void ScriptedTransport::Timeout(float seconds) {
  owner_.Next({.kind = Event::Kind::kTimeout,
               .text = {},
               .reply = {},
               .number = seconds,
               .bytes = {},
               .failure = {}});
  timeout_ = seconds;
}

void ScriptedTransport::Write(std::string_view command) { Exchange(command, nullptr); }

void ScriptedTransport::Exchange(std::string_view command, std::string* reply) {
  Event sent{.text = std::string(command), .reply = {}, .bytes = {}, .failure = {}};
  if (reply) sent.reply.emplace();
  const Event answered = owner_.Next(sent);
  if (reply) *reply = answered.reply.value_or("");
}

std::string ScriptedTransport::Query(std::optional<std::string_view> command) {
  std::string reply;
  Exchange(command.value_or(""), &reply);
  return reply;
}

std::vector<std::uint8_t> ScriptedTransport::ReadBlock(std::int16_t count,
                                                       std::optional<std::string_view> command) {
  if (command) Exchange(*command, nullptr);
  return owner_
      .Next({.kind = Event::Kind::kBlock,
             .text = {},
             .reply = {},
             .number = static_cast<double>(count),
             .bytes = {},
             .failure = {}})
      .bytes;
}

void ScriptedTransport::WriteBlock(std::int16_t, std::span<const std::uint8_t>,
                                   std::optional<std::string_view> command) {
  Exchange(command.value_or(""), nullptr);
}

// The host ------------------------------------------------------------------

ScriptedHost::ScriptedHost() : before_(host::SetCurrentHost(this)) {}
ScriptedHost::~ScriptedHost() { host::SetCurrentHost(before_); }

std::shared_ptr<host::ParameterNode> ScriptedHost::CreateParameterNode() {
  return std::make_shared<ScriptedNode>();
}

std::shared_ptr<host::Transport> ScriptedHost::CreateTransport(std::string_view class_name) {
  for (const std::string_view known :
       {"QPort.clsGPIB", "QPort.clsComm", "QPort.clsEthernet", "QPort.clsGUI"}) {
    if (class_name == known && !unregistered.contains(class_name)) {
      return std::make_shared<ScriptedTransport>(*this, class_name);
    }
  }
  throw host::AutomationError(host::kCannotCreateObject, "Host", "Cannot create " + std::string(class_name));
}

void ScriptedHost::LetPass() {
  passing_ = true;
  events.clear();
}

void ScriptedHost::Expect(std::vector<Event> script) {
  passing_ = false;
  script_ = std::move(script);
  position_ = 0;
  complaint_.clear();
  log.clear();
  raised.clear();
}

std::string ScriptedHost::Complaint() const {
  if (!complaint_.empty()) return complaint_;
  if (!passing_ && position_ < script_.size()) {
    return "event " + std::to_string(position_ + 1) + " did not happen: " + Line(script_[position_]);
  }
  return {};
}

Event ScriptedHost::Next(const Event& happened) {
  if (passing_) {
    events.push_back(Line(happened));
    Event answer = happened;
    if (answer.reply) answer.reply = kNoError;
    return answer;
  }
  const auto complain = [this](std::string what) {
    if (complaint_.empty()) complaint_ = std::move(what);
    throw host::AutomationError(host::kObjectErrorBase + 2009, "script", complaint_);
  };
  if (!complaint_.empty()) complain({});
  if (position_ == script_.size()) complain("nothing more was expected, but: " + Line(happened));
  const Event& expected = script_[position_];
  const std::string where = "event " + std::to_string(position_ + 1) + ": ";
  if (Line(happened) != Line(expected)) {
    complain(where + "expected " + Line(expected) + ", but: " + Line(happened));
  }
  if (!expected.failure && happened.reply.has_value() != expected.reply.has_value()) {
    complain(where + Line(happened) + (happened.reply ? " asks for a reply" : " leaves the reply unread"));
  }
  ++position_;
  if (expected.failure) {
    throw host::AutomationError(expected.failure->number, "QPort", expected.failure->description, "QPORT.HLP",
                                7);
  }
  return expected;
}

void ScriptedHost::Raise(std::int32_t number, std::string_view source, std::string_view description,
                         std::optional<std::string_view> help_file,
                         std::optional<std::int32_t> help_context) {
  const host::AutomationError error(number, std::string(source), std::string(description),
                                    std::string(help_file.value_or("")), help_context.value_or(0));
  raised.push_back(error);
  throw error;
}

void ScriptedHost::ReportingEnabled(bool enabled) {
  reporting = enabled;
  Next({.kind = Event::Kind::kReporting, .text = {}, .reply = {}, .on = enabled, .bytes = {}, .failure = {}});
}

void ScriptedHost::Wait(float seconds) {
  Next({.kind = Event::Kind::kWait, .text = {}, .reply = {}, .number = seconds, .bytes = {}, .failure = {}});
}

void ScriptedHost::Append(std::int32_t kind, std::string_view source_tag, std::string_view text,
                          std::string_view detail) {
  std::string line = std::to_string(kind) + " " + std::string(kind == host::kTextSent ? text : detail);
  if (source_tag != "KEL") line += " [tag " + std::string(source_tag) + "]";
  if (!(kind == host::kTextSent ? detail : text).empty()) line += " [both halves]";
  log.push_back(std::move(line));
}

void ScriptedHost::KindEnabled(std::int32_t kind, bool enabled) {
  Next({.kind = Event::Kind::kLogKind,
        .text = {},
        .reply = {},
        .number = static_cast<double>(kind),
        .on = enabled,
        .bytes = {},
        .failure = {}});
}

}  // namespace member_cases
