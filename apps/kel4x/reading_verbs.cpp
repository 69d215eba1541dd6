// get, set, call, statistics, screenshot.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "automation/call.h"
#include "output.h"
#include "pcx.h"
#include "png.h"
#include "terminal.h"
#include "verbs.h"

namespace kel4x {
namespace {

// Tells a failure in the way that was asked for and says what it means for the process.
ExitCode Tell(const Arguments& arguments, std::string_view name, const Failure& failure) {
  if (arguments.json) PrintLine(FailureJson(name, failure));
  Complain(Session::Interrupted() ? std::string(name) + ": interrupted"
                                  : std::string(name) + ": " + failure.Text());
  return CodeOf(failure);
}

void WriteFile(const std::string& path, const std::vector<std::uint8_t>& bytes) {
  struct Close {
    void operator()(FILE* file) const { std::fclose(file); }
  };
  const std::unique_ptr<FILE, Close> file(std::fopen(path.c_str(), "wb"));
  if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size() ||
      std::fflush(file.get()) != 0) {
    throw UsageError(path + ": " + std::strerror(errno));
  }
}

}  // namespace

ExitCode Get(const Arguments& arguments, Session& session) {
  std::vector<Target> targets;
  for (const std::string& name : arguments.words) {
    const auto found = FindTargets(name);
    targets.insert(targets.end(), found.begin(), found.end());
  }
  ExitCode code = kDone;
  for (const Target& target : targets) {
    session.Link().Heading("get " + target.Label());
    const Reading reading = Read(session, target);
    if (reading.failure) {
      if (arguments.json) PrintLine(ReadingJson(reading));
      Complain(target.Label() + ": " + (Session::Interrupted() ? "interrupted" : reading.failure->Text()));
      code = Worse(code, CodeOf(*reading.failure));
      if (Session::Interrupted()) break;
      if (reading.failure->link_lost && !session.OnLine()) break;
      continue;
    }
    if (arguments.json) {
      PrintLine(ReadingJson(reading));
      continue;
    }
    std::string line = ValueText(reading);
    if (const auto* statistics = std::get_if<automation::Statistics>(&reading.value);
        statistics && *statistics) {
      line = (*statistics)->Statistics();
    }
    if (!reading.unit.empty() && reading.Valid()) line += " " + reading.unit;
    if (!reading.remark.empty()) line += " " + reading.remark;
    // One value stands alone, so that a script can take it; several need their names.
    PrintLine(targets.size() == 1 ? line : target.Label() + ": " + line);
  }
  return code;
}

ExitCode Set(const Arguments& arguments, Session& session) {
  const automation::Member& member = FindMember(arguments.words[0]);
  const std::string name(member.name);
  if (!member.Writable()) throw UsageError(name + " cannot be written");
  const automation::Value value = ParseValue(arguments.words[1], member.access.type, name);
  session.Link().Heading("set " + name);
  const auto failure = session.Attempt([&] { automation::Put(session.Driver(), member, value); });
  if (failure) return Tell(arguments, name, *failure);
  if (arguments.json) PrintLine(TextsJson({{"name", name}, {"set", automation::ValueText(value)}}));
  return kDone;
}

ExitCode Call(const Arguments& arguments, Session& session) {
  const automation::Member& member = FindMember(arguments.words[0]);
  const std::string name(member.name);
  if (member.access.kind == automation::Kind::kProperty) {
    throw UsageError(name + " is a property: kel4x get " + name + ", kel4x set " + name + " VALUE");
  }
  const auto parameters = member.Parameters();
  if (arguments.words.size() - 1 != parameters.size()) {
    throw UsageError(name + " takes " + std::to_string(parameters.size()) + " arguments, not " +
                     std::to_string(arguments.words.size() - 1));
  }
  std::vector<automation::Value> values;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (parameters[i].value == automation::ValueType::kBytes)
      throw UsageError(name + ": kel4x screenshot FILE");
    values.push_back(ParseValue(arguments.words[i + 1], parameters[i], name));
  }
  session.Link().Heading("call " + name);
  automation::Value result;
  const auto failure = session.Attempt([&] { result = automation::Call(session.Driver(), member, values); });
  if (failure) return Tell(arguments, name, *failure);
  const bool has_result = automation::TypeOf(result) != automation::ValueType::kNothing;
  if (arguments.json) {
    std::vector<std::pair<std::string, std::string>> fields{{"name", name}};
    if (has_result) fields.emplace_back("result", automation::ValueText(result));
    PrintLine(TextsJson(fields));
  } else if (has_result) {
    PrintLine(automation::ValueText(result));
  }
  return kDone;
}

ExitCode Statistics(const Arguments& arguments, Session& session) {
  const Target target{&FindMember("AlarmStatistics"), 0};
  session.Link().Heading("statistics");
  const Reading reading = Read(session, target);
  if (reading.failure) return Tell(arguments, target.Label(), *reading.failure);
  if (arguments.json) {
    PrintLine(ReadingJson(reading));
    return kDone;
  }
  TextTable table({{"ALARM", TextTable::Lean::kLeft}, {"DURATION OR COUNT", TextTable::Lean::kRight}});
  for (const auto& [name, text] : StatisticsRows(*std::get<automation::Statistics>(reading.value))) {
    table.Add({name, text});
  }
  terminal::WriteOutput(table.Text(0, terminal::WantsColour(terminal::Stream::kOutput)));
  return kDone;
}

ExitCode ScreenShot(const Arguments& arguments, Session& session) {
  const std::string& path = arguments.words.at(0);
  const bool png = path.ends_with(".png");
  if (!png && !path.ends_with(".pcx")) {
    throw UsageError("\"" + path + "\": the name must end in .png or .pcx");
  }
  session.Link().Heading("screenshot");
  std::vector<std::uint8_t> bytes;
  bool captured = false;
  const auto failure = session.Attempt([&] {
    captured = session.Driver().ScreenShot(
        static_cast<qkel4x::KelScreenShotModes>(qkel4x::kelCapture | qkel4x::kelTransfer), bytes);
  });
  if (failure) return Tell(arguments, "ScreenShot", *failure);
  if (!captured) {
    Complain("ScreenShot: the instrument refused to capture its screen");
    return kRefused;
  }
  std::vector<std::pair<std::string, std::string>> fields{{"file", path}};
  if (png) {
    const Image image = DecodePcx(bytes);
    bytes = EncodePng(image);
    fields.emplace_back("size", std::to_string(image.width) + " x " + std::to_string(image.height));
  }
  if (!arguments.discard) WriteFile(path, bytes);
  fields.emplace_back("bytes", std::to_string(bytes.size()));
  if (arguments.json) {
    PrintLine(TextsJson(fields));
  } else {
    PrintLine(path);
  }
  return kDone;
}

}  // namespace kel4x
