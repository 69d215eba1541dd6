// watch: the same members again and again; a live table with sparklines on a terminal, lines otherwise.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <deque>
#include <limits>
#include <thread>

#include "output.h"
#include "sparkline.h"
#include "terminal.h"
#include "verbs.h"
#include "workbench/encoding.h"

namespace kel4x {
namespace {

constexpr std::size_t kHistory = 40;

struct Watched {
  Target target;
  Reading last;
  std::deque<double> history;  // no number where a reading gave none
};

std::optional<double> NumberOf(const Reading& reading) {
  if (!reading.Valid()) return std::nullopt;
  if (const auto* number = std::get_if<double>(&reading.value)) return *number;
  if (const auto* number = std::get_if<std::int16_t>(&reading.value)) return *number;
  if (const auto* number = std::get_if<std::int32_t>(&reading.value)) return *number;
  if (const auto* flag = std::get_if<bool>(&reading.value)) return *flag ? 1.0 : 0.0;
  return std::nullopt;
}

std::string Now() {
  std::string text;
  workbench::AppendTime(text, std::chrono::system_clock::now());
  return text;
}

void Linger(double seconds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (std::chrono::steady_clock::now() < end && !Session::Interrupted()) {
    std::this_thread::sleep_for(
        std::min(std::chrono::duration<double>(0.05),
                 std::chrono::duration<double>(end - std::chrono::steady_clock::now())));
  }
}

// Takes the place of the lines that were drawn before.
class LiveTable {
 public:
  void Draw(const std::vector<Watched>& rows, bool colour) {
    TextTable table({{"NAME", TextTable::Lean::kLeft},
                     {"VALUE", TextTable::Lean::kRight},
                     {"UNIT", TextTable::Lean::kLeft},
                     {"STATUS", TextTable::Lean::kLeft},
                     {"LEAST", TextTable::Lean::kRight},
                     {"GREATEST", TextTable::Lean::kRight},
                     {"LAST " + std::to_string(kHistory), TextTable::Lean::kLeft}});
    for (const Watched& row : rows) {
      if (row.last.failure) {
        table.Add({row.target.Label(), "", "", "", "", "", row.last.failure->Text()});
        continue;
      }
      const Extent extent = ExtentOf(row.history);
      table.Add({row.target.Label(), ValueText(row.last), row.last.unit, row.last.status,
                 extent.Empty() ? "" : ShortNumber(extent.least),
                 extent.Empty() ? "" : ShortNumber(extent.greatest), Sparkline(row.history)});
    }
    std::string text;
    if (lines_ > 0) text = "\033[" + std::to_string(lines_) + "A";
    const std::string body =
        table.Text(static_cast<std::size_t>(terminal::Width()), colour) + Now() + "  Ctrl-C ends\n";
    lines_ = 0;
    for (const char c : body) {
      if (c == '\n') {
        text += "\033[K";
        ++lines_;
      }
      text += c;
    }
    terminal::WriteOutput(text);
  }

 private:
  int lines_ = 0;
};

}  // namespace

ExitCode Watch(const Arguments& arguments, Session& session) {
  std::vector<Watched> rows;
  for (const std::string& name : arguments.words) {
    for (const Target& target : FindTargets(name)) rows.push_back({target, {}, {}});
  }
  const bool live =
      terminal::IsInteractive(terminal::Stream::kOutput) && !arguments.json && !arguments.csv_lines;
  const bool colour = terminal::WantsColour(terminal::Stream::kOutput);
  LiveTable table;
  if (arguments.csv_lines && !arguments.json) PrintLine("time," + CsvHeading());

  ExitCode code = kDone;
  for (int round = 0; arguments.count == 0 || round < arguments.count; ++round) {
    // The pace is kept by the clock, so that the time of the readings does not add to the interval.
    const double begin = session.Host().Runtime().Now();
    for (Watched& row : rows) {
      row.last = Read(session, row.target);
      if (Session::Interrupted()) return code;
      if (row.last.failure) {
        code = Worse(code, CodeOf(*row.last.failure));
        if (!live) Complain(row.target.Label() + ": " + row.last.failure->Text());
      }
      row.history.push_back(NumberOf(row.last).value_or(std::numeric_limits<double>::quiet_NaN()));
      if (row.history.size() > kHistory) row.history.pop_front();
      if (live) continue;
      const std::string time = Now();
      if (arguments.csv_lines && !arguments.json) {
        PrintLine(time + "," + CsvLine(row.last));
      } else {
        PrintLine("{\"time\":\"" + time + "\"," + ReadingJson(row.last).substr(1));
      }
    }
    if (live) {
      table.Draw(rows, colour);
    } else if (terminal::OutputFailed()) {
      Complain("standard output cannot be written");
      return Worse(code, kRefused);
    }
    if (!session.OnLine()) {
      Complain("the link was lost: " + session.Link().LinkText());
      return Worse(code, kNoLink);
    }
    if (arguments.count != 0 && round + 1 == arguments.count) break;
    const double left = arguments.interval - (session.Host().Runtime().Now() - begin);
    if (left <= 0) continue;
    if (session.Attempt([&] { session.Host().Runtime().Wait(static_cast<float>(left)); })) break;
    // People watch in their own time, whatever clock the waits run on.
    if (live && session.Host().Runtime().IsVirtual()) Linger(arguments.interval);
  }
  return code;
}

}  // namespace kel4x
