// RF frequencies, symbol rate and notch frequency: range-checked numbers.
#include "driver/clsKEL4x.h"
#include "driver/config/frequency_setting.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"
#include "host/host.h"

namespace qkel4x {
namespace {

/// Rounded to a tenth, in the sign-position form: a blank stands before the digits.
NumberText TenthsText(double number) { return SignPositionText(RoundToDecimals(number, 1)); }

void RequireRange(const FrequencySetting& setting, double number) {
  if (number >= setting.lowest && number <= setting.highest) return;
  if (setting.refused.ends_with("= ")) {
    Raise(qkelInvalidPropertyValue, setting.let.source, Join(setting.refused, GeneralText(number), " Hz)"));
  }
  Raise(qkelInvalidPropertyValue, setting.let.source, setting.refused);
}

}  // namespace

double clsKEL4x::ReadFrequency(const FrequencySetting& setting) {
  return Armed(setting.get, [&] {
    std::string reply;
    io_.ExchangeCommand(setting.query, reply);
    return SimulationActive() ? 0.0 : LeadingNumber(status_.Decode(reply));
  });
}

// RfCenterFrequency -----------------------------------------------------------------------------------------
static constexpr FrequencySetting kRfCenterFrequency{
    .let = WriteTexts("RfCenterFrequency"),
    .get = ReadTexts("RfCenterFrequency"),
    .lowest = 42'000'000,
    .highest = 10'000'000'009,  // IRREGULAR: nine hertz above the round number
    .refused = "Invalid property value (RfCenterFrequency = ",
    .write = "SENS:FREQ:CENT",
    .query = "SENS:FREQ:CENT?",
};
double clsKEL4x::RfCenterFrequency() { return ReadFrequency(kRfCenterFrequency); }
void clsKEL4x::RfCenterFrequency(double hertz) {
  RequireRange(kRfCenterFrequency, hertz);
  Armed(kRfCenterFrequency.let, [&] {
    io_.ExchangeCommand(Join(kRfCenterFrequency.write, TenthsText(hertz)));
    echo_pattern_.valid = false;
  });
}

// RfPilotFrequency ------------------------------------------------------------------------------------------
static constexpr FrequencySetting kRfPilotFrequency{
    .let = WriteTexts("RfPilotFrequency"),
    .get = ReadTexts("RfPilotFrequency"),
    .lowest = 3'000'000,
    .highest = 1'000'000'000,
    .refused = "Invalid property value (RfPilotFrequency = ",
    .write = "SENS:ATSC:FREQUENCY:PILOT",
    .query = "SENS:ATSC:FREQUENCY:PILOT?",
};
double clsKEL4x::RfPilotFrequency() { return ReadFrequency(kRfPilotFrequency); }
void clsKEL4x::RfPilotFrequency(double hertz) {
  RequireRange(kRfPilotFrequency, hertz);
  Armed(kRfPilotFrequency.let, [&] {
    io_.ExchangeCommand(Join(kRfPilotFrequency.write, TenthsText(hertz)));
    echo_pattern_.valid = false;
  });
}

// StatusSymbolRate ------------------------------------------------------------------------------------------
static constexpr FrequencySetting kStatusSymbolRate{
    .let = WriteTexts("StatusSymbolRate"),
    .get = ReadTexts("StatusSymbolRate"),
    .lowest = 2'000'000,
    .highest = 11'000'000,
    .refused = "Specified symbol rate is outside the range 2 Msymb/s to 11 Msymb/s",
    .write = "SENSE:ATSC:SYMBOLRATE:VALUE ",  // IRREGULAR: its blank and the number's make two
    .query = "SENSE:ATSC:SYMBOLRATE:VALUE?",
};
double clsKEL4x::StatusSymbolRate() { return ReadFrequency(kStatusSymbolRate); }
void clsKEL4x::StatusSymbolRate(double rate) {
  RequireRange(kStatusSymbolRate, rate);
  Armed(kStatusSymbolRate.let, [&] {
    io_.ExchangeCommand(Join(kStatusSymbolRate.write, TenthsText(rate)));
    echo_pattern_.valid = false;
    host::CurrentHost().Runtime().Wait(1.0F);
  });
}

// StatusRejFilterNotchFreq ----------------------------------------------------------------------------------
static constexpr FrequencySetting kStatusRejFilterNotchFreq{
    .let = WriteTexts("StatusRejFilterNotchFreq"),
    .get = ReadTexts("StatusRejFilterNotchFreq"),
    .lowest = 1'666'000,
    .highest = 1'834'000,
    .refused = "StatusRejFilterNotchFreq value out of range",
    .write = "SENSE:ATSC:FILTER:REJECTION:VC ",
    .query = "SENSE:ATSC:FILTER:REJECTION:VC?",
};
double clsKEL4x::StatusRejFilterNotchFreq() { return ReadFrequency(kStatusRejFilterNotchFreq); }
// IRREGULAR: neither rounded nor with a blank of its own, and a stored echo pattern stays valid.
void clsKEL4x::StatusRejFilterNotchFreq(double hertz) {
  RequireRange(kStatusRejFilterNotchFreq, hertz);
  Armed(kStatusRejFilterNotchFreq.let,
        [&] { io_.ExchangeCommand(Join(kStatusRejFilterNotchFreq.write, GeneralText(hertz))); });
}

}  // namespace qkel4x
