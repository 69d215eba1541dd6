// survey: runs it, follows it on the terminal, and writes what it found.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "driver/core/error_constants.h"
#include "output.h"
#include "report.h"
#include "survey.h"
#include "terminal.h"
#include "verbs.h"

namespace kel4x {
namespace {

// One line on standard error that grows; gone when the survey ends.
class ProgressBar {
 public:
  ProgressBar() : wanted_(terminal::IsInteractive(terminal::Stream::kErrors)) {}

  void Show(std::size_t done, std::size_t total, const std::string& doing) {
    if (!wanted_) return;
    constexpr std::size_t kLength = 30;
    const std::size_t filled = total == 0 ? 0 : done * kLength / total;
    std::string line;
    for (std::size_t i = 0; i < kLength; ++i) line += i < filled ? "━" : "╌";
    line += " " + std::to_string(done) + "/" + std::to_string(total) + "  " + doing;
    std::fprintf(stderr, "\r\033[K%s",
                 Shortened(line, static_cast<std::size_t>(terminal::Width()) - 1).c_str());
    std::fflush(stderr);
  }
  void Clear() const {
    if (wanted_) std::fputs("\r\033[K", stderr);
  }

 private:
  bool wanted_;
};

std::string Note(const Reading& reading) {
  if (reading.failure) return reading.failure->Text();
  if (reading.status == "---") return "no valid value";
  return reading.remark;
}

std::string Table(const SurveyResult& result) {
  TextTable table({{"NAME", TextTable::Lean::kLeft},
                   {"VALUE", TextTable::Lean::kRight},
                   {"UNIT", TextTable::Lean::kLeft},
                   {"STATUS", TextTable::Lean::kLeft},
                   {"MODE", TextTable::Lean::kLeft},
                   {"NOTE", TextTable::Lean::kLeft}});
  constexpr std::size_t kWidestValue = 36;
  for (const Reading& reading : result.readings) {
    if (const auto* statistics = std::get_if<automation::Statistics>(&reading.value);
        statistics && *statistics) {
      for (const auto& [name, text] : StatisticsRows(**statistics)) {
        table.Add({reading.target.Label() + "." + name, text, "", "", reading.mode, ""});
      }
      continue;
    }
    table.Add({reading.target.Label(), Shortened(ValueText(reading), kWidestValue),
               reading.failure ? std::string() : reading.unit, reading.status, reading.mode, Note(reading)});
  }
  const bool on_terminal = terminal::IsInteractive(terminal::Stream::kOutput);
  return table.Text(on_terminal ? static_cast<std::size_t>(terminal::Width()) : 0,
                    terminal::WantsColour(terminal::Stream::kOutput));
}

// Some members exclude each other: an attenuator of an input that is not selected, for instance. That such a
// reading is refused is no fault of the run.
bool IsRefusedByState(const Failure& failure) {
  switch (failure.Code()) {
    case qkel4x::qkelBadMeasureMode:
    case qkel4x::qkelBadInputPort:
    case qkel4x::qkelFuntionNotAvailable:
    case qkel4x::qkelBadEqualiserMode:
    case qkel4x::qkelBadRemoteControlPort:
      return true;
    default:
      return false;
  }
}

bool WriteText(const std::string& path, const std::string& text) {
  struct Close {
    void operator()(FILE* file) const { std::fclose(file); }
  };
  const std::unique_ptr<FILE, Close> file(std::fopen(path.c_str(), "wb"));
  if (file && std::fwrite(text.data(), 1, text.size(), file.get()) == text.size() &&
      std::fflush(file.get()) == 0) {
    return true;
  }
  Complain(path + ": " + std::strerror(errno));
  return false;
}

void CheckWritable(const std::string& path) {
  // Told before the measurement, not after it. What is there stays there until there is something to replace
  // it.
  struct Close {
    void operator()(FILE* file) const { std::fclose(file); }
  };
  if (path.empty() || path == "-") return;
  const std::unique_ptr<FILE, Close> file(std::fopen(path.c_str(), "ab"));
  if (!file) throw UsageError(path + ": " + std::strerror(errno));
}

}  // namespace

ExitCode Survey(Run& run) {
  const Arguments& arguments = run.arguments;
  CheckWritable(arguments.report);
  CheckWritable(arguments.csv);

  std::vector<ReportMessage> messages;
  ProgressBar bar;
  SurveyWatcher watcher;
  watcher.progress = [&](std::size_t done, std::size_t total, const std::string& doing) {
    if (!arguments.trace) bar.Show(done, total, doing);
  };
  if (arguments.json) {
    watcher.reading = [](const Reading& reading) { PrintLine(ReadingJson(reading)); };
  }

  ReportFacts facts;
  SurveyResult result;
  {
    const auto session = Prepare(run);
    if (!arguments.report.empty()) {
      session->Host().Log().AddSink([&](const workbench::LogMessage& message, std::string_view) {
        messages.push_back(
            {message.time, message.kind, std::string(message.text.empty() ? message.detail : message.text)});
      });
    }
    facts.settings = session->Settings();
    session->GoOnLine();
    result = RunSurvey(*session, {arguments.center, arguments.pilot, arguments.symbol_rate}, watcher);
    bar.Show(result.readings.size(), result.readings.size(), "back to local");
  }
  bar.Clear();

  ExitCode code = kDone;
  for (const auto& [what, failure] : result.setup_failures) {
    Complain(what + ": " + failure.Text());
    code = Worse(code, kRefused);
  }
  for (const Reading& reading : result.readings) {
    if (reading.failure && result.lost.empty() && !result.interrupted &&
        !IsRefusedByState(*reading.failure)) {
      code = Worse(code, kRefused);
    }
  }
  if (!arguments.json && arguments.csv != "-") terminal::WriteOutput(Table(result));
  if (!arguments.csv.empty()) {
    std::string csv = CsvHeading() + "\n";
    for (const Reading& reading : result.readings) csv += CsvLine(reading) + "\n";
    if (arguments.csv == "-") {
      terminal::WriteOutput(csv);
    } else if (!WriteText(arguments.csv, csv)) {
      code = Worse(code, kUsage);
    }
  }
  if (!arguments.report.empty()) {
    facts.messages = std::move(messages);
    facts.simulated = run.session.resource.port == Resource::Port::kSimulated;
    if (!WriteText(arguments.report, ReportPage(result, facts))) code = Worse(code, kUsage);
  }
  if (!result.lost.empty()) {
    Complain(result.lost);
    code = Worse(code, kNoLink);
  }
  if (result.interrupted) {
    Complain("interrupted; the instrument is back in local control");
    code = Worse(code, kInterrupted);
  }
  return code;
}

}  // namespace kel4x
