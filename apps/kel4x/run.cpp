// From the command line to a session: precedence of options, and which verb runs.
#include <algorithm>

#include "host/automation_error.h"
#include "output.h"
#include "terminal.h"
#include "verbs.h"
#include "version.h"

namespace kel4x {
namespace {

bool NeedsResource(std::string_view verb) {
  return verb != "members" && verb != "completion" && verb != "simulate" && verb != "list" &&
         verb != "replay" && verb != "settings";
}

// Settings that say which instrument and how to reach it belong to the resource string.
void Apply(std::vector<std::pair<std::string, std::string>>& settings, const std::string& text) {
  const auto equals = text.find('=');
  if (equals == std::string::npos || equals == 0) {
    throw UsageError("--setting \"" + text + "\": must be NAME=VALUE, as in \"RS232.Baud Rate=9600\"");
  }
  settings.emplace_back(text.substr(0, equals), text.substr(equals + 1));
}

}  // namespace

Run::~Run() {
  if (!trace) return;
  trace->Flush();
  if (!trace->Lost().empty()) Complain("the trace file is not complete: " + trace->Lost());
}

void Complete(Run& run) {
  const Arguments& arguments = run.arguments;
  if (arguments.config) {
    run.file = ReadConfiguration(*arguments.config);
  } else if (const auto path = DefaultConfigurationPath(); !path.empty()) {
    std::error_code error;
    if (std::filesystem::is_regular_file(path, error)) run.file = ReadConfiguration(path);
  }

  if (run.arguments.trace_file.empty()) run.arguments.trace_file = workbench::TraceFileOfEnvironment();

  const Sourced resource =
      ChooseResource(arguments.resource, terminal::Environment("KEL4X_RESOURCE"), run.file);
  run.resource_origin = resource.origin;
  if (NeedsResource(arguments.verb)) {
    try {
      run.session.resource = ParseResource(resource.value);
    } catch (const UsageError& error) {
      throw UsageError(resource.origin + ": " + error.what());
    }
    if (resource.origin == "default") {
      Complain("no --resource, KEL4X_RESOURCE or configuration file: using SIM, the simulated instrument");
    }
  }
  run.session.timeout = arguments.timeout ? arguments.timeout : run.file.timeout;
  run.session.settings = run.file.settings;
  for (const std::string& text : arguments.settings) Apply(run.session.settings, text);
  run.session.simulate_host = arguments.simulate_host;
  run.session.virtual_time = arguments.virtual_time;
}

std::unique_ptr<Session> Prepare(Run& run) {
  auto session = std::make_unique<Session>(run.session);
  if (run.arguments.trace) session->Link().Show(terminal::WantsColour(terminal::Stream::kErrors));
  if (!run.arguments.trace_file.empty()) {
    try {
      run.trace =
          workbench::TraceWriter::Open(run.arguments.trace_file, {.program = "kel4x",
                                                                  .version = kVersion,
                                                                  .command = run.line,
                                                                  .resource = run.session.resource.text,
                                                                  .settings = session->Settings()});
    } catch (const host::AutomationError& error) {
      throw UsageError(error.Description());
    }
    session->Link().Record(run.trace.get());
  }
  return session;
}

std::unique_ptr<Session> Connect(Run& run) {
  auto session = Prepare(run);
  session->GoOnLine();
  return session;
}

ExitCode Worse(ExitCode a, ExitCode b) {
  // In rising order of badness.
  static constexpr ExitCode kOrder[] = {kDone, kRefused, kUsage, kNoLink, kInterrupted};
  const auto rank = [](ExitCode code) { return std::find(std::begin(kOrder), std::end(kOrder), code); };
  return rank(a) < rank(b) ? b : a;
}

ExitCode CodeOf(const Failure& failure) {
  if (Session::Interrupted()) return kInterrupted;
  return failure.link_lost ? kNoLink : kRefused;
}

ExitCode RunOnSession(const Arguments& arguments, Session& session) {
  if (arguments.verb == "get") return Get(arguments, session);
  if (arguments.verb == "set") return Set(arguments, session);
  if (arguments.verb == "call") return Call(arguments, session);
  if (arguments.verb == "statistics") return Statistics(arguments, session);
  if (arguments.verb == "screenshot") return ScreenShot(arguments, session);
  if (arguments.verb == "watch") return Watch(arguments, session);
  if (arguments.verb == "members") return Members(arguments);
  throw UsageError("\"" + arguments.verb + "\" cannot be used here");
}

ExitCode RunVerb(Run& run) {
  const std::string& verb = run.arguments.verb;
  if (verb == "members") return Members(run.arguments);
  if (verb == "settings") return Settings(run);
  if (verb == "survey") return Survey(run);
  if (verb == "simulate") return Simulate(run.arguments);
  if (verb == "shell") return Shell(run);
  if (verb == "doctor") return Doctor(run);
  if (verb == "list") return List(run);
  if (verb == "replay") return Replay(run);
  if (verb == "completion") return Completion(run.arguments);

  // A mistyped name is told before the instrument is touched.
  if (verb == "get" || verb == "watch") {
    for (const std::string& name : run.arguments.words) FindTargets(name);
  } else if (verb == "set" || verb == "call") {
    FindMember(run.arguments.words.front());
  }
  const auto session = Connect(run);
  return RunOnSession(run.arguments, *session);
}

}  // namespace kel4x
