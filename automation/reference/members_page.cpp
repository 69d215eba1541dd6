// Writes the reference page of all members: the member table, and what each member really sends, recorded on
// the line to a simulated instrument. usage: members_page > docs/members.md, or members_page --compare
// docs/members.md to see whether the page is up to date.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "automation/call.h"
#include "automation/enumeration_table.h"
#include "driver/clsKEL4x.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"
#include "host/automation_error.h"
#include "simulator/instrument.h"
#include "workbench/workbench.h"

namespace {

using automation::Class;
using automation::Kind;
using automation::Member;
using automation::Object;
using automation::Value;
using automation::ValueType;
using qkel4x::Join;

/// A port to a simulated instrument that remembers what the driver sends, error queries left out.
class RecordingPort final : public host::Transport, private host::BlockTransfer {
 public:
  RecordingPort(simulator::Instrument& instrument, std::vector<std::string>& sent,
                std::shared_ptr<host::ParameterNode> settings)
      : instrument_(instrument), sent_(sent), settings_(std::move(settings)) {}

  std::string Name() override { return name_; }
  void Name(std::string_view name) override { name_ = name; }
  std::shared_ptr<host::ParameterNode> Settings() override { return settings_; }
  bool OnLine() override { return on_line_; }
  void OnLine(bool on_line) override { on_line_ = on_line; }
  float Timeout() override { return timeout_; }
  void Timeout(float seconds) override { timeout_ = seconds; }
  void Write(std::string_view command) override { Send(command); }
  void Exchange(std::string_view command, std::string* reply) override {
    Send(command);
    if (reply != nullptr) *reply = Reply();
  }
  std::string Query(std::optional<std::string_view> command) override {
    if (command) Send(*command);
    return Reply();
  }
  host::BlockTransfer* Blocks() override { return this; }

 private:
  std::vector<std::uint8_t> ReadBlock(std::int16_t count, std::optional<std::string_view> command) override {
    if (command) Send(*command);
    const auto size = static_cast<std::size_t>(count);
    if (size > answer_.bytes.size()) {
      throw host::AutomationError(host::kObjectErrorBase + host::kLinkTimeout, "QPort",
                                  "the block is too short");
    }
    std::vector<std::uint8_t> bytes(answer_.bytes.begin(), answer_.bytes.begin() + count);
    answer_.bytes.erase(0, size);
    return bytes;
  }
  void WriteBlock(std::int16_t /*format*/, std::span<const std::uint8_t> /*data*/,
                  std::optional<std::string_view> command) override {
    if (command) Send(*command);
  }

  void Send(std::string_view command) {
    if (command != "SYST:ERR?") sent_.emplace_back(command);
    instrument_.Execute(command, answer_);
  }
  std::string Reply() const {
    if (!answer_.has_reply) {
      throw host::AutomationError(host::kObjectErrorBase + host::kLinkTimeout, "QPort", "no reply");
    }
    return answer_.bytes;
  }

  simulator::Instrument& instrument_;
  std::vector<std::string>& sent_;
  std::shared_ptr<host::ParameterNode> settings_;
  simulator::Instrument::Answer answer_;
  std::string name_;
  float timeout_ = 5.0F;
  bool on_line_ = false;
};

/// The instruments that the page is recorded with. Their results are valid at once and their clocks start on
/// 5 January 2009.
struct Variant {
  std::string_view label;  ///< empty for the first, which every line shows
  std::string_view firmware;
  std::int32_t options;
};
constexpr std::int32_t kImpedanceOption = 1;
constexpr Variant kVariants[] = {
    {"", "5.10", kImpedanceOption + 16 + 32},
    {"without KEL-B3", "5.10", 16 + 32},
    {"firmware 4.70", "4.70", kImpedanceOption + 16 + 32},
};

simulator::Configuration Configured(const Variant& variant) {
  simulator::Configuration configuration;
  configuration.firmware = variant.firmware;
  configuration.options = variant.options;
  configuration.settle_scale = 0.0;
  configuration.clock_start = 1231164189;
  return configuration;
}

/// A driver on line with a recorded simulated instrument, in virtual time.
class Bench {
 public:
  explicit Bench(const Variant& variant)
      : workbench_({.virtual_clock = true}),
        before_(host::SetCurrentHost(&workbench_)),
        instrument_(Configured(variant), [this] { return workbench_.Runtime().Now(); }) {
    workbench_.RegisterTransport("QPort.clsEthernet", [this] {
      auto settings = workbench_.CreateParameterNode();
      settings->Initialise("TCP/IP", 4, 3, "", "");
      return std::make_shared<RecordingPort>(instrument_, sent, std::move(settings));
    });
    driver = std::make_unique<qkel4x::clsKEL4x>();
    driver->Settings()->Item("Remote Control")->SetValue(std::string("QPort.clsEthernet"), -1, -1);
    driver->Settings()->Item("Log Messages")->SetValue(std::string("No"), -1, -1);
    driver->OnLine(true);
    driver->Mode(qkel4x::kelATSC);
    driver->SpecFuncEqualizer(qkel4x::kelEqualizerOn);
    driver->InputPort(qkel4x::kelReceiver);
  }
  ~Bench() {
    driver.reset();
    host::SetCurrentHost(before_);
  }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  double Now() { return workbench_.Runtime().Now(); }
  void Wait(float seconds) { workbench_.Runtime().Wait(seconds); }

  std::vector<std::string> sent;
  std::unique_ptr<qkel4x::clsKEL4x> driver;

 private:
  workbench::Workbench workbench_;
  host::Host* before_;
  simulator::Instrument instrument_;
};

std::string Modes(const qkel4x::ModeSet& modes) {
  std::string text;
  for (const automation::Enumerator& mode : automation::kEnumerators<qkel4x::KelMeasureModes>) {
    if (modes.Has(static_cast<qkel4x::KelMeasureModes>(mode.value))) {
      text += Join(text.empty() ? "" : ", ", mode.name);
    }
  }
  return text;
}

std::string_view KindName(const Member& member) {
  switch (member.access.kind) {
    case Kind::kMethod:
      return "method";
    case Kind::kIndexedProperty:
      return "indexed property, read-only";
    case Kind::kProperty:
      break;
  }
  if (!member.Readable()) return "property, write-only";
  return member.Writable() ? "property" : "property, read-only";
}

constexpr std::string_view kRefused = "refused: ";

/// What one access sends to one instrument: "`A`, then `B`", and how long the driver waits; or its refusal.
template <class Work>
std::string RecordedOn(const Variant& variant, const Member& member, const Work& access) {
  std::string refusal;
  // The state that a member needs is found by trying; the first one is that of most members.
  std::vector<std::optional<qkel4x::KelMeasureModes>> modes;
  if (member.modes.Empty()) modes.emplace_back();
  for (std::int32_t mode = qkel4x::kelNORM; mode <= qkel4x::kelCENV; ++mode) {
    const auto measure_mode = static_cast<qkel4x::KelMeasureModes>(mode);
    if (member.modes.Empty() || member.modes.Has(measure_mode)) modes.emplace_back(measure_mode);
  }
  const bool identifies =
      member.name == "Identity" || automation::kIdentifyInterface.Find(member.name) != nullptr;
  for (const qkel4x::KelInputPorts input : {qkel4x::kelReceiver, qkel4x::kelDemod}) {
    for (const std::optional<qkel4x::KelMeasureModes> mode : modes) {
      Bench bench(variant);
      bench.driver->InputPort(input);
      if (mode) bench.driver->MeasureMode(*mode);
      if (!identifies) static_cast<void>(bench.driver->InstalledHardware());
      bench.Wait(100.0F);  // longer than any error ratio takes to its first value
      bench.sent.clear();
      const double start = bench.Now();
      try {
        access(bench);
      } catch (const host::AutomationError& error) {
        refusal = Join(kRefused, error.Description());
        if (error.Code() == qkel4x::qkelBadInputPort || error.Code() == qkel4x::qkelBadMeasureMode) continue;
        return refusal;
      }
      std::string text;
      for (const std::string& command : bench.sent) {
        text += Join(text.empty() ? "" : ", then ", "`", command, "`");
      }
      if (text.empty()) text = "nothing";
      const double waited = bench.Now() - start;
      if (waited >= 0.5) {
        text += Join("; waits ", qkel4x::GeneralText(qkel4x::RoundToDecimals(waited, 0)), " s");
      }
      return text;
    }
  }
  return refusal;
}

/// What one access sends; what it sends to another instrument where that differs.
template <class Work>
std::string Recorded(const Member& member, const Work& access) {
  std::string text;
  std::string first;
  for (const Variant& variant : kVariants) {
    const std::string line = RecordedOn(variant, member, access);
    if (variant.label.empty()) {
      text = first = line;
    } else if (line != first) {
      text += Join("; ", variant.label, ": ", line);
    }
  }
  return text;
}

std::vector<Value> ExampleArguments(const Member& member) {
  std::vector<Value> arguments;
  for (const automation::Type& type : member.Parameters()) {
    Value argument = 1;
    if (type.value == ValueType::kBytes) argument = automation::Bytes();
    if (type.enumeration != nullptr) argument = qkel4x::kelCapture + qkel4x::kelTransfer;
    arguments.push_back(std::move(argument));
  }
  return arguments;
}

void DescribeWrites(const Member& member, std::string& page) {
  const automation::Type& type = member.access.type;
  if (type.enumeration != nullptr) {
    page += "- Written as:\n";
    for (const automation::Enumerator& enumerator : type.enumeration->enumerators) {
      const std::string line =
          Recorded(member, [&](Bench& bench) { Put(*bench.driver, member, enumerator.value); });
      page += Join("  - `", enumerator.name, "`: ", line, "\n");
    }
    return;
  }
  std::string shown;
  const std::string line = Recorded(member, [&](Bench& bench) {
    // A date whose fields all differ; else what the instrument has, which is in range.
    const Value value = type.value == ValueType::kDateTime
                            ? Value(qkel4x::DateTime{39818.0 + 50589.0 / 86400.0})
                            : Get(*bench.driver, member);
    shown = automation::ValueText(value);
    bench.sent.clear();
    Put(*bench.driver, member, value);
  });
  page += Join("- Written as ", shown, ": ", line, "\n");
}

void Describe(const Member& member, std::string& page) {
  page += Join("\n### ", member.name, "\n\n", member.doc, member.hidden ? " Hidden." : "", "\n\n- ",
               KindName(member));
  if (member.access.type.value != ValueType::kNothing) page += Join(": ", TypeName(member.access.type));
  if (!member.unit.empty()) page += Join(", ", member.unit);
  page += "\n";
  for (std::size_t i = 0; i < member.Parameters().size(); ++i) {
    const automation::Type& type = member.Parameters()[i];
    page += Join("- Argument `", member.arguments[i], "`: ", TypeName(type),
                 type.written_back   ? ", by reference, replaced"
                 : type.by_reference ? ", by reference"
                                     : "",
                 "\n");
  }
  if (!member.range.empty()) page += Join("- Range: ", member.range, "\n");
  if (!member.modes.Empty()) page += Join("- Measurement modes: ", Modes(member.modes), "\n");
  const std::string read = Recorded(member, [&](Bench& bench) {
    std::vector<Value> arguments = ExampleArguments(member);
    Call(*bench.driver, member, arguments);
  });
  if (read.starts_with(kRefused)) throw std::runtime_error(Join(member.name, " ", read));
  page += Join(member.access.kind == Kind::kMethod ? "- Sends: " : "- Read: ", read, "\n");
  if (member.Writable()) DescribeWrites(member, page);
  if (!member.errors.empty()) page += Join("- Errors: ", member.errors, "\n");
  if (!member.oddities.empty()) page += Join("- Note: ", member.oddities, "\n");
}

void DescribeTable(const Class& published, std::string& page) {
  page += Join("\n## ", published.name, "\n\n", published.doc, published.doc.back() == '.' ? "" : ".",
               "\n\n| id | member | kind | type | unit |\n|---|---|---|---|---|\n");
  for (const Member& member : published.members) {
    page += Join("| ", qkel4x::DecimalText(member.id), " | ", member.name, " | ", KindName(member), " | ",
                 member.access.type.value == ValueType::kNothing ? "" : TypeName(member.access.type), " | ",
                 member.unit, " |\n");
  }
}

constexpr std::string_view kIntroduction =
    R"(<!-- Written by members_page from the member table and a recorded line. Do not edit; see below. -->
# Members

Every published member: what it is, what it really sends, and what it refuses. The texts behind "Read", "Written
as" and "Sends" were recorded on the line to a simulated instrument with firmware 5.10 and the options KEL-B3,
KEL-B2 and KEL-B1, in a measurement mode that the member allows; where an instrument without KEL-B3 or one with
firmware 4.70 gets something else, that stands behind it.

Before every text the driver empties the instrument's error queue with `SYST:ERR?` until it answers `0,"No error"`;
these queries are left out. Where the driver does not know the measurement mode yet, a member with measurement
modes asks for it first with `SENS:ATSC:MEAS?`. Identity and installed hardware are asked for once, by the member
that first needs them; the other members are shown as they are afterwards.

Every member can fail as follows; the numbers are published as `ErrorConstants` and raised with the object-error
base added.

- 2004 (reads) or 2005 (writes and methods): "Get", "Let" or nothing, the member's name, and " failed"; followed by
  "  Error : " and the instrument's error-queue entry where the link failed.
- 380 where a written value is out of range; nothing is sent.
- 2016 "Wrong measurement mode selected" where the measurement mode is none of those listed; nothing is sent.

What a member refuses beyond these stands under "Errors". To write this page anew after a change:
`cmake --build build/release --target members_page && build/release/automation/members_page > docs/members.md`
)";

std::string Page() {
  std::string page(kIntroduction);
  DescribeTable(automation::kDriverClass, page);
  for (const Member& member : automation::kDriverClass.members) Describe(member, page);
  for (const Class* published : automation::AllClasses()) {
    if (published == &automation::kDriverClass) continue;
    DescribeTable(*published, page);
    for (const Member& member : published->members) {
      page += Join("\n- `", member.name, "`: ", member.doc);
      if (!member.range.empty()) page += Join(" Range: ", member.range, ".");
      if (!member.errors.empty()) page += Join(" Errors: ", member.errors);
      if (!member.oddities.empty()) page += Join(" ", member.oddities);
    }
    page += "\n";
  }
  page += "\n## Enumerations\n";
  for (const automation::Enumeration* enumeration : automation::kEnumerations) {
    page +=
        Join("\n### ", enumeration->name, "\n\n", enumeration->doc, "\n\n| member | value |\n|---|---|\n");
    for (const automation::Enumerator& enumerator : enumeration->enumerators) {
      page += Join("| ", enumerator.name, " | ", qkel4x::DecimalText(enumerator.value), " |\n");
    }
  }
  return page;
}

int Compare(const std::string& page, const char* path) {
  std::ifstream file(path, std::ios::binary);
  const std::string there((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (there == page) return 0;
  const auto [now, before] = std::mismatch(page.begin(), page.end(), there.begin(), there.end());
  const std::size_t at = page.rfind('\n', static_cast<std::size_t>(now - page.begin()));
  const std::size_t begin = at == std::string::npos ? 0 : at + 1;
  std::fprintf(stderr, "members_page: %s does not have this line any more:\n%s\n", path,
               page.substr(begin, page.find('\n', begin) - begin).c_str());
  std::fprintf(stderr, "To write the page anew: %s > docs/members.md\n",
               "cmake --build build/release --target members_page && build/release/automation/members_page");
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const std::string page = Page();
    if (argc == 3 && std::string_view(argv[1]) == "--compare") return Compare(page, argv[2]);
    std::fwrite(page.data(), 1, page.size(), stdout);
  } catch (const host::AutomationError& error) {
    std::fprintf(stderr, "members_page: %s: %s\n", error.Source().c_str(), error.what());
    return 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "members_page: %s\n", error.what());
    return 1;
  }
  return 0;
}
