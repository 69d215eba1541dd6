// The verbs of kel4x. Each prints its results and returns how it went.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "arguments.h"
#include "configuration.h"
#include "exit_code.h"
#include "session.h"
#include "trace_file.h"

namespace kel4x {

/// One run of the tool: what was asked for, and what the environment and the configuration file add to it.
struct Run {
  std::vector<std::string> line;  ///< the command line, without the program
  Arguments arguments;
  ConfigurationFile file;
  SessionOptions session;       ///< complete: resource, time-out, settings
  std::string resource_origin;  ///< where the resource string came from
  std::shared_ptr<workbench::TraceWriter> trace;

  ~Run();
};

/// Reads environment and configuration file and fills in the rest of the run. Throws a UsageError.
void Complete(Run& run);

/// A session that is not on line yet, with the traffic shown and recorded as asked for.
std::unique_ptr<Session> Prepare(Run& run);
/// The same, on line. Throws a NoLinkError.
std::unique_ptr<Session> Connect(Run& run);

/// The worse of two outcomes.
ExitCode Worse(ExitCode a, ExitCode b);
/// What a failure means for the process.
ExitCode CodeOf(const Failure& failure);

/// Runs the verb of the run. Throws UsageError, NoLinkError, host::AutomationError.
ExitCode RunVerb(Run& run);

/// Verbs that need an instrument, on a session that is on line.
ExitCode Get(const Arguments& arguments, Session& session);
ExitCode Set(const Arguments& arguments, Session& session);
ExitCode Call(const Arguments& arguments, Session& session);
ExitCode Statistics(const Arguments& arguments, Session& session);
ExitCode ScreenShot(const Arguments& arguments, Session& session);
ExitCode Watch(const Arguments& arguments, Session& session);
/// Runs a verb of these, or members. Throws a UsageError for another.
ExitCode RunOnSession(const Arguments& arguments, Session& session);

ExitCode Members(const Arguments& arguments);
ExitCode Settings(Run& run);
ExitCode Survey(Run& run);
ExitCode Simulate(const Arguments& arguments);
ExitCode Shell(Run& run);
ExitCode Doctor(Run& run);
ExitCode List(Run& run);
ExitCode Replay(Run& run);
ExitCode Completion(const Arguments& arguments);

}  // namespace kel4x
