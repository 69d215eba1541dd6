// Reads the case files. Unknown keys and malformed lines are errors: a misspelt key must not weaken a case.
#include "case_file.h"

#include <toml++/toml.h>

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <set>
#include <stdexcept>
#include <string_view>

#include "host/automation_error.h"

namespace member_cases {
namespace {

[[noreturn]] void Fail(const toml::node& where, const std::string& what) {
  const std::string file = where.source().path ? *where.source().path : "case file";
  throw std::runtime_error(file + ":" + std::to_string(where.source().begin.line) + ": " + what);
}

void OnlyKeys(const toml::table& table, const std::set<std::string_view>& known) {
  for (const auto& [key, node] : table) {
    if (!known.contains(key.str())) Fail(node, "unknown key \"" + std::string(key.str()) + "\"");
  }
}

template <class T>
T Required(const toml::node& node, std::string_view what) {
  const std::optional<T> value = node.value_exact<T>();
  if (!value) Fail(node, "expected " + std::string(what));
  return *value;
}

template <class T>
T Get(const toml::table& table, std::string_view key, T otherwise, std::string_view what) {
  const toml::node* node = table.get(key);
  return node ? Required<T>(*node, what) : otherwise;
}

std::optional<std::string> Text(const toml::table& table, std::string_view key) {
  const toml::node* node = table.get(key);
  if (!node) return std::nullopt;
  return Required<std::string>(*node, "a text");
}

CaseValue ValueOf(const toml::node& node) {
  if (const auto value = node.value_exact<bool>()) return *value;
  if (const auto value = node.value_exact<std::int64_t>()) return *value;
  if (const auto value = node.value_exact<double>()) return *value;
  if (const auto value = node.value_exact<std::string>()) return *value;
  Fail(node, "expected a boolean, a number or a text");
}

double NumberOf(const toml::node& node, std::string_view text) {
  double number = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) {
    Fail(node, "expected a number instead of \"" + std::string(text) + "\"");
  }
  return number;
}

std::vector<std::string_view> Words(std::string_view text) {
  std::vector<std::string_view> words;
  while (!text.empty()) {
    const std::size_t blank = std::min(text.find(' '), text.size());
    if (blank > 0) words.push_back(text.substr(0, blank));
    text.remove_prefix(std::min(blank + 1, text.size()));
  }
  return words;
}

// "23 33 AA*100": bytes in hexadecimal, "*" repeats.
void AppendBytes(const toml::node& node, std::string_view word, Bytes& bytes) {
  const std::size_t star = std::min(word.find('*'), word.size());
  std::uint8_t byte = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + star, byte, 16);
  if (error != std::errc() || end != word.data() + star) {
    Fail(node, "expected a byte in hexadecimal instead of \"" + std::string(word) + "\"");
  }
  const double times = star < word.size() ? NumberOf(node, word.substr(star + 1)) : 1.0;
  bytes.insert(bytes.end(), static_cast<std::size_t>(times), byte);
}

Bytes BytesOf(const toml::node& node) {
  const auto text = Required<std::string>(node, "bytes in hexadecimal");
  Bytes bytes;
  for (const std::string_view word : Words(text)) AppendBytes(node, word, bytes);
  return bytes;
}

bool OnOff(const toml::node& node, std::string_view word) {
  if (word != "on" && word != "off") Fail(node, "expected \"on\" or \"off\"");
  return word == "on";
}

class TalkReader {
 public:
  explicit TalkReader(bool drains) : drains_(drains) {}

  void Read(const toml::node& node) {
    const auto line = Required<std::string>(node, "a line of the conversation");
    if (TakesRest(line, ">> ")) {
      Send(rest_);
    } else if (TakesRest(line, "> ")) {
      if (drains_) {
        Send("SYST:ERR?");
        events_.back().reply = "0,\"No error\"";
      }
      Send(rest_);
    } else if (line == "<" || TakesRest(line, "< ")) {
      if (events_.empty() || events_.back().kind != Event::Kind::kSend || events_.back().reply) {
        Fail(node, "a reply belongs to the text above it");
      }
      events_.back().reply = line == "<" ? std::string() : rest_;
    } else if (TakesRest(line, "!! ")) {
      FailLast(node, 0);
    } else if (TakesRest(line, "! ")) {
      FailLast(node, host::kObjectErrorBase);
    } else {
      ReadEvent(node, line);
    }
  }

  std::vector<Event> Take() { return std::move(events_); }

 private:
  bool TakesRest(const std::string& line, std::string_view mark) {
    if (!line.starts_with(mark)) return false;
    rest_ = line.substr(mark.size());
    return true;
  }

  void Send(std::string text) {
    events_.push_back(
        {.kind = Event::Kind::kSend, .text = std::move(text), .reply = {}, .bytes = {}, .failure = {}});
  }

  void FailLast(const toml::node& node, std::int32_t base) {
    if (events_.empty() || events_.back().failure) Fail(node, "a failure belongs to the event above it");
    const std::size_t blank = std::min(rest_.find(' '), rest_.size());
    const double number = NumberOf(node, std::string_view(rest_).substr(0, blank));
    events_.back().failure = Failure{.number = base + static_cast<std::int32_t>(number),
                                     .description = rest_.substr(std::min(blank + 1, rest_.size()))};
  }

  void ReadEvent(const toml::node& node, const std::string& line) {
    const std::vector<std::string_view> words = Words(line);
    const auto is = [&](std::string_view first, std::size_t count) {
      return !words.empty() && words[0] == first && words.size() == count;
    };
    Event event;
    if (is("wait", 2)) {
      event.kind = Event::Kind::kWait;
      event.number = NumberOf(node, words[1]);
    } else if (is("timeout", 2)) {
      event.kind = Event::Kind::kTimeout;
      event.number = NumberOf(node, words[1]);
    } else if (is("open", 1) || line == "open in vain") {
      event.kind = Event::Kind::kOpen;
      event.on = words.size() == 1;
    } else if (is("close", 1)) {
      event.kind = Event::Kind::kClose;
    } else if (is("reporting", 2)) {
      event.kind = Event::Kind::kReporting;
      event.on = OnOff(node, words[1]);
    } else if (is("kind", 3)) {
      event.kind = Event::Kind::kLogKind;
      event.number = NumberOf(node, words[1]);
      event.on = OnOff(node, words[2]);
    } else if (words.size() >= 2 && words[0] == "block") {
      event.kind = Event::Kind::kBlock;
      event.number = NumberOf(node, words[1]);
      for (std::size_t i = 2; i < words.size(); ++i) AppendBytes(node, words[i], event.bytes);
    } else {
      Fail(node, "no such event: \"" + line + "\"");
    }
    events_.push_back(std::move(event));
  }

  bool drains_;
  std::string rest_;
  std::vector<Event> events_;
};

const toml::array& ArrayOf(const toml::node& node) {
  const toml::array* array = node.as_array();
  if (!array) Fail(node, "expected an array");
  return *array;
}

ExpectedError ErrorOf(const toml::node& node) {
  const toml::table* table = node.as_table();
  if (!table) Fail(node, "expected a table");
  OnlyKeys(*table, {"code", "number", "source", "description"});
  ExpectedError error;
  if (const toml::node* code = table->get("code")) {
    error.number =
        host::kObjectErrorBase + static_cast<std::int32_t>(Required<std::int64_t>(*code, "a number"));
  }
  if (const toml::node* number = table->get("number")) {
    error.number = static_cast<std::int32_t>(Required<std::int64_t>(*number, "a number"));
  }
  error.source = Text(*table, "source");
  error.description = Text(*table, "description");
  if (!error.number) Fail(node, "an error has a \"code\" or a \"number\"");
  return error;
}

struct ActionKey {
  std::string_view key;
  Step::Action action;
};
constexpr ActionKey kActionKeys[] = {
    {"get", Step::Action::kGet},         {"put", Step::Action::kPut},
    {"call", Step::Action::kCall},       {"simulation", Step::Action::kSimulation},
    {"setting", Step::Action::kSetting}, {"statistics", Step::Action::kStatistics},
    {"release", Step::Action::kRelease},
};

Step StepOf(const toml::node& node, bool drains) {
  const toml::table* table = node.as_table();
  if (!table) Fail(node, "a step is a table");
  OnlyKeys(*table, {"get",     "put",       "call",    "simulation",    "setting", "write",  "statistics",
                    "release", "interface", "args",    "value",         "fields",  "buffer", "buffer_after",
                    "prefix",  "response",  "postfix", "timeout_after", "talk",    "log",    "error"});
  Step step;
  int actions = 0;
  for (const ActionKey& row : kActionKeys) {
    const toml::node* action = table->get(row.key);
    if (!action) continue;
    ++actions;
    step.action = row.action;
    if (row.action == Step::Action::kSimulation) {
      step.value = Required<bool>(*action, "true or false");
    } else if (row.action != Step::Action::kRelease) {
      step.member = Required<std::string>(*action, "a text");
    }
  }
  if (actions != 1) Fail(node, "a step does exactly one thing");

  step.interface_name = Get<std::string>(*table, "interface", "", "a text");
  if (const toml::node* arguments = table->get("args")) {
    for (const toml::node& argument : ArrayOf(*arguments)) {
      step.arguments.push_back(Required<std::int64_t>(argument, "a whole number"));
    }
  }
  if (const toml::node* value = table->get("value")) step.value = ValueOf(*value);
  if (const toml::node* write = table->get("write")) step.write = ValueOf(*write);
  if (const toml::node* fields = table->get("fields")) {
    if (!fields->is_table()) Fail(*fields, "expected a table");
    for (const auto& [key, field] : *fields->as_table()) {
      step.fields.emplace(std::string(key.str()), ValueOf(field));
    }
  }
  if (const toml::node* buffer = table->get("buffer")) step.buffer = BytesOf(*buffer);
  if (const toml::node* buffer = table->get("buffer_after")) step.buffer_after = BytesOf(*buffer);
  step.prefix = Text(*table, "prefix");
  step.response = Text(*table, "response");
  step.postfix = Text(*table, "postfix");
  if (const toml::node* timeout = table->get("timeout_after")) {
    step.timeout_after = timeout->value<double>();
    if (!step.timeout_after) Fail(*timeout, "expected seconds");
  }
  if (const toml::node* talk = table->get("talk")) {
    TalkReader reader(drains);
    for (const toml::node& line : ArrayOf(*talk)) reader.Read(line);
    step.talk = reader.Take();
  }
  if (const toml::node* log = table->get("log")) {
    for (const toml::node& line : ArrayOf(*log)) step.log.push_back(Required<std::string>(line, "a text"));
  }
  if (const toml::node* error = table->get("error")) step.error = ErrorOf(*error);
  return step;
}

void AddCases(const toml::node& node, const std::string& file, std::vector<Case>& cases) {
  const toml::table* table = node.as_table();
  if (!table) Fail(node, "a case is a table");
  OnlyKeys(*table, {"name", "port", "start", "modes", "simulation", "log", "timeout", "steps"});
  Case one;
  one.file = file;
  one.line = static_cast<int>(node.source().begin.line);
  one.name = Get<std::string>(*table, "name", "", "a text");
  if (one.name.empty()) Fail(node, "a case has a name");
  one.port = Get<std::string>(*table, "port", one.port, "a text");
  const auto start = Get<std::string>(*table, "start", "on line", "a text");
  if (start != "on line" && start != "off line") Fail(node, "start is \"on line\" or \"off line\"");
  one.on_line = start == "on line";
  one.simulation = Get<bool>(*table, "simulation", false, "true or false");
  one.log = Get<bool>(*table, "log", false, "true or false");
  if (const toml::node* timeout = table->get("timeout")) one.timeout = timeout->value<double>().value();
  const toml::node* steps = table->get("steps");
  if (!steps || ArrayOf(*steps).empty()) Fail(node, "a case has steps");
  for (const toml::node& step : ArrayOf(*steps))
    one.steps.push_back(StepOf(step, one.port != "QPort.clsGUI"));

  const toml::node* modes = table->get("modes");
  if (!modes) {
    cases.push_back(std::move(one));
    return;
  }
  const std::string name = one.name;
  for (const toml::node& mode : ArrayOf(*modes)) {
    one.mode = static_cast<std::int32_t>(Required<std::int64_t>(mode, "a measurement mode"));
    one.name = name + "/" + std::to_string(*one.mode);
    cases.push_back(one);
  }
}

}  // namespace

std::vector<Case> ReadCases(const std::filesystem::path& file) {
  std::vector<Case> cases;
  try {
    const toml::table table = toml::parse_file(file.string());
    OnlyKeys(table, {"case"});
    const toml::node* list = table.get("case");
    if (!list) Fail(table, "no [[case]]");
    for (const toml::node& node : ArrayOf(*list)) AddCases(node, file.stem().string(), cases);
  } catch (const toml::parse_error& error) {
    throw std::runtime_error(file.string() + ":" + std::to_string(error.source().begin.line) + ": " +
                             std::string(error.description()));
  }
  std::set<std::string> names;
  for (const Case& one : cases) {
    if (!names.insert(one.name).second) {
      throw std::runtime_error(file.string() + ":" + std::to_string(one.line) + ": second case named " +
                               one.name);
    }
  }
  return cases;
}

std::vector<Case> ReadAllCases(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".toml") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  std::vector<Case> cases;
  for (const auto& file : files) {
    std::vector<Case> more = ReadCases(file);
    cases.insert(cases.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
  }
  return cases;
}

}  // namespace member_cases
