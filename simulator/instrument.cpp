// The simulated instrument: takes command lines apart and runs the rows of the command table.
#include "simulator/instrument.h"

#include <algorithm>
#include <array>
#include <utility>

#include "simulator/commands.h"
#include "simulator/header_tree.h"
#include "simulator/model.h"
#include "simulator/number_text.h"

namespace simulator {
namespace {

constexpr std::size_t kReplyLimit = 262'144;
constexpr std::size_t kMostParameters = 4;

const HeaderTree& Headers() {
  static const HeaderTree tree = [] {
    HeaderTree built;
    const auto commands = Commands();
    for (std::size_t i = 0; i < commands.size(); ++i) built.Add(commands[i].header, static_cast<int>(i));
    return built;
  }();
  return tree;
}

bool HeaderCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == ':' ||
         c == '*';
}

// Cuts the text before the next `separator` outside double quotes off `rest`.
std::string_view TakePiece(std::string_view& rest, char separator) {
  bool quoted = false;
  for (std::size_t i = 0; i < rest.size(); ++i) {
    if (rest[i] == '"') quoted = !quoted;
    if (rest[i] == separator && !quoted) {
      const std::string_view piece = rest.substr(0, i);
      rest.remove_prefix(i + 1);
      return piece;
    }
  }
  return std::exchange(rest, std::string_view());
}

}  // namespace

class Instrument::Interpreter {
 public:
  Interpreter(Configuration configuration, std::function<double()> now_seconds)
      : model_(std::move(configuration), std::move(now_seconds)) {}

  /// Executes commands off the front of `rest`, at least one, until it is empty or `enough()` after one of
  /// them. What belongs to the line and not to a command stands in `path` and `answer`.
  template <class Enough>
  void Execute(std::string_view& rest, int& path, Answer& answer, const Enough& enough) {
    model_.Advance();
    while (!rest.empty()) {
      const std::string_view unit = Trimmed(TakePiece(rest, ';'));
      const ScpiError error = unit.empty() ? ScpiError::kNone : ExecuteUnit(unit, path, answer);
      if (error != ScpiError::kNone) model_.Fail(error);
      if (answer.bytes.size() > kReplyLimit) {
        answer = {};
        model_.Fail(ScpiError::kQueryDeadlocked);
        rest = {};
      }
      if (enough()) return;
    }
  }

  Model& State() { return model_; }

 private:
  ScpiError ExecuteUnit(std::string_view unit, int& path, Answer& answer) {
    std::size_t size = 0;
    while (size < unit.size() && HeaderCharacter(unit[size])) ++size;
    std::string_view header = unit.substr(0, size);
    std::string_view rest = unit.substr(size);
    const bool query = rest.starts_with('?');
    if (query) rest.remove_prefix(1);
    if (!rest.empty() && static_cast<unsigned char>(rest.front()) > ' ') return ScpiError::kInvalidCharacter;

    const Command* const command = FindCommand(header, path);
    if (command == nullptr || (query ? command->get == nullptr : command->set == nullptr) ||
        model_.FirmwareVersion() < command->since_firmware) {
      return ScpiError::kUndefinedHeader;
    }

    std::array<std::string_view, kMostParameters> parameters;
    std::size_t count = 0;
    rest = Trimmed(rest);
    for (bool more = !rest.empty(); more; ++count) {
      if (count == kMostParameters) return ScpiError::kParameterNotAllowed;
      const std::size_t before = rest.size();
      const std::string_view piece = TakePiece(rest, ',');
      more = piece.size() != before;
      parameters[count] = Trimmed(piece);
      if (parameters[count].empty()) return ScpiError::kMissingParameter;
    }
    const std::size_t wanted = query ? 0 : command->parameters;
    if (count > wanted) return ScpiError::kParameterNotAllowed;
    if (count < wanted) return ScpiError::kMissingParameter;

    if (query) {
      if (answer.has_reply) answer.bytes.push_back(';');
      answer.has_reply = true;
      if (Available(*command)) {
        command->get(model_, answer.bytes);
      } else {
        answer.bytes.append("---");
      }
      return ScpiError::kNone;
    }
    const ScpiError error = command->set(model_, Parameters(parameters).first(count));
    if (error == ScpiError::kNone) model_.Changed(command->effect);
    return error;
  }

  // A header is looked for below the previous header's path, as SCPI-99 has it, and then from the root, so
  // that lines whose commands all start at the root are understood without a leading colon.
  static const Command* FindCommand(std::string_view header, int& path) {
    HeaderTree::Match match;
    const bool common = header.starts_with('*');
    if (header.starts_with(':')) {
      match = Headers().Find(header.substr(1), HeaderTree::kRoot);
    } else {
      if (!common) match = Headers().Find(header, path);
      if (match.command == HeaderTree::kNoCommand) match = Headers().Find(header, HeaderTree::kRoot);
    }
    if (match.command == HeaderTree::kNoCommand) return nullptr;
    if (!common) path = match.path;
    return &Commands()[static_cast<std::size_t>(match.command)];
  }

  bool Available(const Command& command) {
    if (command.modes != 0) {
      if (model_.Set().operating_mode != kAtsc || !model_.MeasureModeSettled()) return false;
      if ((command.modes & In(model_.Set().measure_mode)) == 0) return false;
    }
    switch (command.needs) {
      case Needs::kNothing:
        return true;
      case Needs::kCarrier:
        return model_.CarrierLocked();
      case Needs::kFec:
        return model_.FecLocked();
    }
    return true;
  }

  Model model_;
};

Instrument::Instrument(Configuration configuration, std::function<double()> now_seconds)
    : interpreter_(std::make_unique<Interpreter>(std::move(configuration), std::move(now_seconds))) {}

Instrument::~Instrument() = default;

Instrument::Answer Instrument::Execute(std::string_view line) {
  Answer answer;
  Execute(line, answer);
  return answer;
}

void Instrument::Execute(std::string_view line, Answer& answer) {
  answer.has_reply = false;
  answer.bytes.clear();
  int path = HeaderTree::kRoot;
  interpreter_->Execute(line, path, answer, [] { return false; });
}

void Instrument::Begin(std::string_view line, Execution& execution) {
  execution.rest = line;
  execution.path = HeaderTree::kRoot;
  execution.executed = 0;
  execution.answer.has_reply = false;
  execution.answer.bytes.clear();
}

bool Instrument::Continue(Execution& execution, std::chrono::steady_clock::time_point until) {
  interpreter_->Execute(execution.rest, execution.path, execution.answer, [&] {
    return ++execution.executed >= kCommandsTogether && std::chrono::steady_clock::now() >= until;
  });
  return execution.rest.empty();
}

void Instrument::InputOverrun() { interpreter_->State().Fail(ScpiError::kInputBufferOverrun); }

void Instrument::ReplaceSignal(Signal signal) {
  interpreter_->State().Advance();
  interpreter_->State().ReplaceSignal(std::move(signal));
}

}  // namespace simulator
