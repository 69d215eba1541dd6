// kel4x: the command-line tool for the KEL model 40/43 TV test receiver.
#include <exception>
#include <string>
#include <vector>

#include "arguments.h"
#include "exit_code.h"
#include "host/automation_error.h"
#include "output.h"
#include "terminal.h"
#include "verbs.h"

int main(int argc, char** argv) {
  using namespace kel4x;
  terminal::Prepare();
  try {
    Run run;
    run.line.assign(argv + 1, argv + argc);
    const auto arguments = ParseArguments(run.line);
    if (!arguments) return kDone;
    run.arguments = *arguments;
    Complete(run);
    Session::ListenForInterrupts();
    const ExitCode code = RunVerb(run);
    if (terminal::OutputFailed()) {
      Complain("standard output cannot be written");
      return Worse(code, kRefused);
    }
    return code;
  } catch (const UsageError& error) {
    Complain(error.what());
    return kUsage;
  } catch (const NoLinkError& error) {
    Complain(error.what());
    return Session::Interrupted() ? kInterrupted : kNoLink;
  } catch (const host::AutomationError& error) {
    Complain(error.Description());
    return kRefused;
  } catch (const std::exception& error) {
    Complain(error.what());
    return kRefused;
  }
}
