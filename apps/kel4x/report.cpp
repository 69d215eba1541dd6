// The report page. Its style is for paper first: light, sober, nothing that needs colour to be understood.
#include "report.h"

#include <algorithm>
#include <cstdio>
#include <optional>

#include "driver/core/error_constants.h"
#include "output.h"
#include "pcx.h"
#include "plot.h"
#include "png.h"
#include "traffic.h"
#include "version.h"
#include "workbench/encoding.h"

namespace kel4x {
namespace {

using automation::Member;

constexpr char kStyle[] = R"css(
:root { --ink: #1b1f24; --soft: #59636e; --rule: #c9d0d7; --faint: #eef1f4; --mark: #12507b; --bad: #9a2a1f; }
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 14mm 12mm; max-width: 200mm; color: var(--ink); background: #fff;
  font: 10pt/1.42 "Source Sans 3", "Source Sans Pro", "Liberation Sans", Arial, Helvetica, sans-serif;
  font-variant-numeric: tabular-nums; }
header { display: flex; justify-content: space-between; align-items: flex-end; border-bottom: 2px solid var(--ink);
  padding-bottom: 3mm; }
h1 { margin: 0; font-size: 19pt; font-weight: 600; letter-spacing: -0.01em; line-height: 1.15; }
header p { margin: 0; color: var(--soft); text-align: right; }
h2 { font-size: 12.5pt; font-weight: 600; margin: 8mm 0 2mm; padding-bottom: 1mm; border-bottom: 1px solid var(--rule); }
h3 { font-size: 10pt; font-weight: 600; margin: 4mm 0 1mm; }
.kicker { text-transform: uppercase; letter-spacing: 0.09em; font-size: 8pt; color: var(--soft); }
table { border-collapse: collapse; width: 100%; }
th { text-align: left; font-weight: 600; font-size: 8.5pt; color: var(--soft); border-bottom: 1px solid var(--ink); }
th, td { padding: 0.7mm 2.5mm 0.7mm 0; vertical-align: baseline; }
tbody td { border-bottom: 1px solid var(--faint); }
td.number, th.number { text-align: right; white-space: nowrap; }
td.note { color: var(--soft); font-size: 9pt; }
tr.failed td.note { color: var(--bad); }
td small { display: block; color: var(--soft); font-size: 8.5pt; }
.facts { display: grid; grid-template-columns: repeat(2, minmax(0, 1fr)); gap: 0 10mm; margin-top: 4mm; }
.facts div { display: flex; border-bottom: 1px solid var(--faint); padding: 1mm 0; }
.facts dt { flex: 0 0 38mm; overflow-wrap: anywhere; padding-right: 2mm; color: var(--soft); }
.facts dd { margin: 0; overflow-wrap: anywhere; }
.key { display: grid; grid-template-columns: repeat(6, minmax(0, 1fr)); border: 1px solid var(--rule); margin: 5mm 0 0; }
.key div { padding: 2mm 3mm; border-left: 1px solid var(--rule); }
.key div:first-child { border-left: 0; }
.key b { display: block; font-size: 13pt; font-weight: 600; white-space: nowrap; }
.key b span { font-size: 9pt; font-weight: 400; color: var(--soft); }
.key i { font-style: normal; font-size: 8.5pt; color: var(--soft); }
.notice { border-left: 3px solid var(--bad); padding: 1.5mm 3mm; margin: 4mm 0 0; background: #fbf3f2; }
.summary { margin: 4mm 0 0; }
figure { margin: 3mm 0 4mm; }
figcaption { color: var(--soft); font-size: 9pt; margin-top: 1mm; }
figure img { width: 118mm; max-width: 100%; height: auto; border: 1px solid var(--rule); image-rendering: auto; display: block; }
.plot { width: 100%; height: auto; display: block; font-size: 11px; }
.plot text { fill: var(--ink); } .plot .mark { fill: var(--soft); font-size: 10px; }
.plot .grid { stroke: var(--faint); } .plot .axis { stroke: var(--ink); }
.plot .stem { stroke: var(--mark); stroke-width: 2; } .plot .head { fill: var(--mark); }
.side { display: grid; grid-template-columns: repeat(2, minmax(0, 1fr)); gap: 0 8mm; }
.log { font: 6.5pt/1.35 "Source Code Pro", "Liberation Mono", Consolas, monospace; columns: 3; column-gap: 6mm;
  max-height: 90mm; overflow: auto; border: 1px solid var(--rule); padding: 2mm 3mm; }
.log div { break-inside: avoid; overflow-wrap: anywhere; padding-left: 4mm; text-indent: -4mm; }
.log time { color: var(--soft); }
.sign { display: grid; grid-template-columns: repeat(3, minmax(0, 1fr)); gap: 8mm; margin-top: 14mm; break-inside: avoid; }
.sign div { border-top: 1px solid var(--ink); padding-top: 1mm; color: var(--soft); font-size: 8.5pt; margin-top: 12mm; }
footer { margin-top: 6mm; color: var(--soft); font-size: 8.5pt; }
@page { size: A4; margin: 14mm 12mm; }
@media print { body { padding: 0; max-width: none; } .log { max-height: none; overflow: visible; border: 0; padding: 0; }
  h2, h3 { break-after: avoid; } tr, figure, .key, .notice { break-inside: avoid; } thead { display: table-header-group; } }
@media (max-width: 160mm) { .key { grid-template-columns: repeat(3, minmax(0, 1fr)); }
  .facts, .side { grid-template-columns: minmax(0, 1fr); } .log { columns: 1; } }
)css";

std::string TimeText(std::chrono::system_clock::time_point time) {
  std::string text;
  workbench::AppendTime(text, time);
  text.resize(19);
  text[10] = ' ';
  return text + " UTC";
}

std::string SecondsText(double seconds) {
  char text[32];
  if (seconds < 90) {
    std::snprintf(text, sizeof text, "%.1f s", seconds);
  } else {
    std::snprintf(text, sizeof text, "%d min %02d s", static_cast<int>(seconds) / 60,
                  static_cast<int>(seconds) % 60);
  }
  return text;
}

// Units as print has them.
std::string PrintUnit(std::string unit) {
  if (unit == "deg") return "°";
  if (unit == "us") return "µs";
  return unit;
}

class Page {
 public:
  Page(const SurveyResult& result, const ReportFacts& facts) : result_(result), facts_(facts) {}

  std::string Text() {
    Head();
    Identity();
    KeyFigures();
    Summary();
    Screen();
    Measurements();
    Echoes();
    Jitter();
    Statistics();
    InstrumentSettings();
    DriverSettings();
    Signatures();
    Log();
    Foot();
    return std::move(page_);
  }

 private:
  const Reading* Find(std::string_view name, int index = 0) const {
    const auto found =
        std::find_if(result_.readings.begin(), result_.readings.end(), [&](const Reading& reading) {
          return reading.target.member->name == name && reading.target.index == index;
        });
    return found == result_.readings.end() ? nullptr : &*found;
  }

  std::string ValueOf(std::string_view name) const {
    const Reading* reading = Find(name);
    return reading == nullptr ? std::string() : BareValueText(*reading);
  }

  static std::string UnitOf(const Reading& reading) { return PrintUnit(reading.unit); }

  void Head() {
    const std::string model = ValueOf("ModelNumber");
    page_ +=
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
        HtmlText((model.empty() ? "Instrument" : model) + " survey " + TimeText(result_.started)) +
        "</title>\n<style>" + kStyle +
        "</style></head>\n<body>\n<header><div><div class=\"kicker\">"
        "Measurement report</div><h1>" +
        HtmlText(model.empty() ? "Survey" : model + " survey") + "</h1></div><p>" +
        HtmlText(TimeText(result_.started)) + "<br>kel4x " + kVersion + "</p></header>\n";
    if (facts_.simulated) {
      page_ +=
          "<p class=\"notice\"><b>Simulated instrument.</b> These readings come from a simulation, not from "
          "a "
          "device.</p>\n";
    }
    if (!result_.lost.empty()) {
      page_ += "<p class=\"notice\"><b>Incomplete.</b> " + HtmlText(Sentence(result_.lost)) + "</p>\n";
    }
    if (result_.interrupted) {
      page_ += "<p class=\"notice\"><b>Incomplete.</b> The survey was interrupted.</p>\n";
    }
    for (const auto& [what, failure] : result_.setup_failures) {
      page_ += "<p class=\"notice\"><b>" + HtmlText(what) + "</b> " + HtmlText(failure.Text()) + "</p>\n";
    }
  }

  static std::string Sentence(std::string text) {
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
    return text;
  }

  void Fact(const std::string& label, const std::string& value) {
    page_ += "<div><dt>" + HtmlText(label) + "</dt><dd>" + (value.empty() ? "–" : HtmlText(value)) +
             "</dd></div>\n";
  }

  void Identity() {
    const double seconds = std::chrono::duration<double>(result_.ended - result_.started).count();
    page_ += "<dl class=\"facts\">\n";
    Fact("Manufacturer", ValueOf("Manufacturer"));
    Fact("Resource", result_.resource);
    Fact("Model", ValueOf("ModelNumber"));
    Fact("Started", TimeText(result_.started));
    Fact("Serial number", ValueOf("SerialNumber"));
    Fact("Duration", SecondsText(seconds));
    Fact("Firmware", ValueOf("FirmwareVersion"));
    const Reading* center = Find("RfCenterFrequency");
    Fact("Centre frequency", center != nullptr && center->Valid() ? BareValueText(*center) + " Hz" : "");
    Fact("Options", ValueOf("InstalledHardware"));
    std::string modes;
    for (const std::string& mode : result_.modes) modes += (modes.empty() ? "" : ", ") + mode.substr(3);
    Fact("Modes measured", modes);
    page_ += "</dl>\n";
  }

  void KeyFigures() {
    static constexpr std::pair<std::string_view, std::string_view> kFigures[] = {
        {"MeasureRfLevel", "RF level"},          {"MeasureVsbMerRmsDb", "MER (rms)"},
        {"MeasureVsbEvmRms", "EVM (rms)"},       {"MeasureVsbSignalToNoiseRatio", "Signal to noise"},
        {"MeasureBerBeforeRS", "BER before RS"}, {"MeasureSegErrPerSec", "Segment errors"}};
    page_ += "<div class=\"key\">\n";
    for (const auto& [name, label] : kFigures) {
      const Reading* reading = Find(name);
      const bool given = reading != nullptr && !reading->failure;
      page_ += "<div><i>" + std::string(label) + "</i><b>" + (given ? HtmlText(ValueText(*reading)) : "–") +
               (given && reading->Valid() ? " <span>" + HtmlText(UnitOf(*reading)) + "</span>" : "") +
               "</b></div>\n";
    }
    page_ += "</div>\n";
  }

  void Summary() {
    std::size_t valid = 0;
    std::size_t worded = 0;
    std::size_t refused = 0;
    for (const Reading& reading : result_.readings) {
      if (reading.failure) {
        ++refused;
      } else if (!reading.status.empty()) {
        ++worded;
      } else {
        ++valid;
      }
    }
    page_ += "<p class=\"summary\">" + std::to_string(result_.readings.size()) +
             " readings: " + std::to_string(valid) + " valid, " + std::to_string(worded) +
             " with a status word of the instrument, " + std::to_string(refused) +
             " not given, each with its reason in its row.</p>\n";
  }

  void Screen() {
    page_ += "<h2>Screen</h2>\n";
    const Reading* reading = Find("ScreenShot");
    if (result_.screen.empty()) {
      page_ += "<p>No screen shot" +
               (reading != nullptr && reading->failure ? ": " + HtmlText(reading->failure->Text()) : "") +
               "</p>\n";
      return;
    }
    try {
      const Image image = DecodePcx(result_.screen);
      const std::vector<std::uint8_t> png = EncodePng(image);
      const std::string_view bytes(reinterpret_cast<const char*>(png.data()), png.size());
      page_ += "<figure><img alt=\"Screen of the instrument\" width=\"" + std::to_string(image.width) +
               "\" height=\"" + std::to_string(image.height) + "\" src=\"data:image/png;base64," +
               workbench::EncodeBase64(bytes) + "\"><figcaption>The instrument's own screen, " +
               std::to_string(image.width) + " by " + std::to_string(image.height) + " pixels" +
               (reading != nullptr ? ", in mode " + HtmlText(reading->mode) : "") +
               ".</figcaption></figure>\n";
    } catch (const std::runtime_error& error) {
      page_ += "<p>The screen shot cannot be shown: " + HtmlText(error.what()) + "</p>\n";
    }
  }

  void OpenTable() {
    page_ +=
        "<table><thead><tr><th>Reading</th><th class=\"number\">Value</th><th>Unit</th><th>Status</th>"
        "<th>Mode</th><th>Remark</th></tr></thead><tbody>\n";
  }

  void Row(const Reading& reading) {
    std::string note = reading.remark;
    if (reading.failure) note = reading.failure->Text();
    if (reading.status == "---") note = "no valid value";
    page_ += std::string("<tr") + (reading.failure ? " class=\"failed\"" : "") + "><td>" +
             HtmlText(reading.target.Label()) + "<small>" + HtmlText(reading.target.member->doc) +
             "</small></td><td class=\"number\">" + HtmlText(ValueText(reading)) + "</td><td>" +
             HtmlText(reading.failure ? "" : UnitOf(reading)) + "</td><td>" + HtmlText(reading.status) +
             "</td><td>" + HtmlText(reading.mode.empty() ? "" : reading.mode.substr(3)) +
             "</td><td class=\"note\">" + HtmlText(note) + "</td></tr>\n";
  }

  static bool IsMeasurement(const Reading& reading) {
    const Member& member = *reading.target.member;
    return !member.Writable() && reading.target.index == 0 && IsNumberOrFlag(member);
  }
  static bool IsNumberOrFlag(const Member& member) {
    const auto type = member.access.type.value;
    return member.Parameters().empty() && member.access.type.enumeration == nullptr &&
           (type == automation::ValueType::kDouble || type == automation::ValueType::kInt16 ||
            type == automation::ValueType::kInt32 || type == automation::ValueType::kBool);
  }

  void Measurements() {
    page_ += "<h2>Measurements</h2>\n";
    OpenTable();
    for (const Reading& reading : result_.readings) {
      if (IsMeasurement(reading)) Row(reading);
    }
    page_ += "</tbody></table>\n";
  }

  // The readings of two indexed members as one table, and the stems of the pairs that are valid.
  std::vector<Stem> Pairs(std::string_view of_y, std::string_view of_x, const std::string& caption,
                          const std::string& y_unit, const std::string& x_unit) {
    std::vector<Stem> stems;
    page_ += "<table><thead><tr><th>" + caption + "</th><th class=\"number\">" + y_unit +
             "</th><th class=\"number\">" + x_unit + "</th><th>Remark</th></tr></thead><tbody>\n";
    for (const Reading& y : result_.readings) {
      if (y.target.member->name != of_y) continue;
      const Reading* x = Find(of_x, y.target.index);
      if (x == nullptr) continue;
      std::string note;
      if (y.failure || x->failure) note = (y.failure ? y.failure : x->failure)->Text();
      if (note.empty() && (!y.Valid() || !x->Valid())) note = "none";
      page_ += std::string("<tr") + (y.failure ? " class=\"failed\"" : "") + "><td>" +
               std::to_string(y.target.index) + "</td><td class=\"number\">" + HtmlText(ValueText(y)) +
               "</td><td class=\"number\">" + HtmlText(ValueText(*x)) + "</td><td class=\"note\">" +
               HtmlText(note) + "</td></tr>\n";
      const double* y_number = std::get_if<double>(&y.value);
      const double* x_number = std::get_if<double>(&x->value);
      if (note.empty() && y_number != nullptr && x_number != nullptr) {
        stems.push_back({*x_number, *y_number, std::to_string(y.target.index)});
      }
    }
    page_ += "</tbody></table>\n";
    return stems;
  }

  void Figure(std::size_t at, const StemPlot& plot, const std::string& caption) {
    const std::string figure = plot.stems.empty() ? "<p>Nothing to plot.</p>\n"
                                                  : "<figure>" + PlotSvg(plot) + "<figcaption>" +
                                                        HtmlText(caption) + "</figcaption></figure>\n";
    page_.insert(at, figure);
  }

  void Echoes() {
    page_ += "<h2>Echo pattern</h2>\n";
    const std::size_t at = page_.size();
    const Reading* first = Find("GhostPatternDelay", 1);
    const std::string unit = first == nullptr ? "" : UnitOf(*first);
    std::vector<Stem> stems =
        Pairs("GhostPatternAtten", "GhostPatternDelay", "Echo", "Attenuation / dB", "Delay / " + unit);
    if (!stems.empty()) stems.push_back({0, 0, "main"});
    Figure(at,
           {.title = "Echo pattern",
            .x_label = "Delay / " + unit,
            .y_label = "Attenuation / dB",
            .stems = std::move(stems),
            .logarithmic_x = false,
            .downwards = true},
           "Attenuation below the main path over delay; the numbers are those of the table.");
  }

  void Jitter() {
    page_ += "<h2>Jitter</h2>\n<h3>Amplitude</h3>\n";
    std::size_t at = page_.size();
    const std::string value_unit = UnitOfFirst("AmplitudeJitterValue");
    Figure(at,
           {.title = "Amplitude jitter",
            .x_label = "Frequency / Hz",
            .y_label = "Amplitude jitter / " + value_unit,
            .stems = Pairs("AmplitudeJitterValue", "AmplitudeJitterFreq", "Line", "Value / " + value_unit,
                           "Frequency / Hz"),
            .logarithmic_x = true},
           "The strongest lines of the amplitude jitter.");
    page_ += "<h3>Phase</h3>\n";
    at = page_.size();
    const std::string phase_unit = UnitOfFirst("PhaseJitterValue");
    Figure(at,
           {.title = "Phase jitter",
            .x_label = "Frequency / Hz",
            .y_label = "Phase jitter / " + phase_unit,
            .stems = Pairs("PhaseJitterValue", "PhaseJitterFreq", "Line", "Value / " + phase_unit,
                           "Frequency / Hz"),
            .logarithmic_x = true},
           "The strongest lines of the phase jitter.");
  }

  std::string UnitOfFirst(std::string_view name) const {
    const Reading* first = Find(name, 1);
    return first == nullptr ? std::string() : UnitOf(*first);
  }

  void Statistics() {
    const Reading* reading = Find("AlarmStatistics");
    if (reading == nullptr) return;
    page_ += "<h2>Alarm statistics</h2>\n";
    const auto* statistics = std::get_if<automation::Statistics>(&reading->value);
    if (statistics == nullptr || !*statistics) {
      page_ += "<p>Not read" + (reading->failure ? ": " + HtmlText(reading->failure->Text()) : "") + "</p>\n";
      return;
    }
    page_ += "<dl class=\"facts\">\n";
    for (const auto& [name, text] : StatisticsRows(**statistics)) Fact(name, text);
    page_ += "</dl>\n";
  }

  void InstrumentSettings() {
    page_ += "<h2>Instrument settings</h2>\n";
    OpenTable();
    for (const Reading& reading : result_.readings) {
      const Member& member = *reading.target.member;
      const bool setting = member.Writable() || member.access.type.enumeration != nullptr;
      if (setting && reading.target.index == 0 && !IsMeasurement(reading)) Row(reading);
    }
    page_ += "</tbody></table>\n";
  }

  void DriverSettings() {
    page_ += "<h2>Driver settings</h2>\n<dl class=\"facts\">\n";
    for (const auto& [name, value] : facts_.settings) Fact(name, value);
    page_ += "</dl>\n";
  }

  void Log() {
    page_ += "<h2>Message log</h2>\n<div class=\"log\">\n";
    for (const ReportMessage& message : facts_.messages) {
      std::string time;
      workbench::AppendTime(time, message.time);
      page_ += "<div><time>" + time.substr(11, 12) + "</time> " + (message.kind == 6 ? "&gt; " : "&lt; ") +
               HtmlText(message.text.substr(0, 400)) + "</div>\n";
    }
    page_ += "</div>\n";
  }

  // Before the log, so that what is signed stands above the signature.
  void Signatures() {
    page_ +=
        "<div class=\"sign\"><div>Measured by</div><div>Date</div><div>Signature</div></div>\n"
        "<footer>Status words are the instrument's own, as received; “---” stands for no valid value. Made "
        "by "
        "kel4x " +
        std::string(kVersion) + " on " + HtmlText(TimeText(result_.ended)) + ".</footer>\n";
  }

  void Foot() { page_ += "</body></html>\n"; }

  const SurveyResult& result_;
  const ReportFacts& facts_;
  std::string page_;
};

// How many bytes of `text` are one character of UTF-8; 0 where they are none.
std::size_t CharacterLength(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  const std::size_t length = lead < 0x80                   ? 1
                             : lead >= 0xC2 && lead < 0xE0 ? 2
                             : lead >= 0xE0 && lead < 0xF0 ? 3
                             : lead >= 0xF0 && lead < 0xF5 ? 4
                                                           : 0;
  if (length == 0 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80U) return 0;
  }
  return length;
}

}  // namespace

std::string HtmlText(std::string_view text) {
  std::string html;
  html.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = CharacterLength(text);
    const char c = text[0];
    if (length == 0 || (length == 1 && (static_cast<unsigned char>(c) < 0x20 || c == 0x7F))) {
      html += Visible(text.substr(0, 1));
    } else if (c == '&') {
      html += "&amp;";
    } else if (c == '<') {
      html += "&lt;";
    } else if (c == '>') {
      html += "&gt;";
    } else if (c == '"') {
      html += "&quot;";
    } else {
      html += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return html;
}

std::string ReportPage(const SurveyResult& result, const ReportFacts& facts) {
  return Page(result, facts).Text();
}

}  // namespace kel4x
