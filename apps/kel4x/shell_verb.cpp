// shell: verbs line by line over one link.
#include <cstdio>
#include <iostream>
#include <string>

#include "output.h"
#include "terminal.h"
#include "verbs.h"
#include "words.h"

namespace kel4x {

namespace {

constexpr char kHelp[] =
    "get NAME...            read properties\n"
    "set NAME VALUE         write a property\n"
    "call NAME [ARGUMENTS]  call a method\n"
    "members [NAME]         list or describe members\n"
    "statistics             read the alarm statistics\n"
    "screenshot FILE        save the screen\n"
    "watch NAME...          read again and again\n"
    "exit                   make the instrument local and leave\n";

ExitCode RunLine(const Run& run, Session& session, const std::string& line) {
  try {
    const std::vector<std::string> words = SplitWords(line);
    if (words.empty()) return kDone;
    if (words[0] == "help") {
      terminal::WriteOutput(kHelp);
      return kDone;
    }
    auto arguments = ParseArguments(words);
    if (!arguments) return kDone;
    arguments->json = arguments->json || run.arguments.json;
    return RunOnSession(*arguments, session);
  } catch (const UsageError& error) {
    Complain(error.what());
    return kUsage;
  } catch (const std::exception& error) {
    Complain(error.what());
    return kRefused;
  }
}

}  // namespace

ExitCode Shell(Run& run) {
  const auto session = Connect(run);
  const bool prompt = terminal::IsInteractive(terminal::Stream::kInput);
  ExitCode code = kDone;
  std::string line;
  for (;;) {
    if (prompt) terminal::WriteOutput("kel4x> ");
    if (!std::getline(std::cin, line) || Session::Interrupted()) break;
    if (line == "exit" || line == "quit") break;
    const ExitCode outcome = RunLine(run, *session, line);
    // What a person mistypes is seen at once; what a script does must show at its end.
    if (!prompt || outcome == kNoLink) code = Worse(code, outcome);
    if (!session->OnLine()) {
      Complain("the link was lost");
      return kNoLink;
    }
    if (Session::Interrupted()) break;
  }
  if (prompt) PrintLine("");
  return code;
}

}  // namespace kel4x
