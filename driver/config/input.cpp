// Input port and attenuation. Each attenuation member refuses to run on the wrong input.
#include "driver/clsKEL4x.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"
#include "host/host.h"

namespace qkel4x {
namespace {

constexpr std::string_view kImpedanceOption = "KEL-B3";
constexpr std::int32_t kReceiverBit = 2;
constexpr std::int32_t kDemodBit = 4;
constexpr std::string_view kAttenuationQuery = "INPUT:ATTENUATION?";
constexpr std::string_view kAttenuationChoices = "55,50,45,40,35,30,25,20,15,10,5,0";

/// Whether a number is one of the attenuator's 5 dB steps.
bool IsAttenuatorStep(std::int16_t decibels) { return decibels >= 0 && decibels <= 55 && decibels % 5 == 0; }

[[noreturn]] void RaiseUnrecognised(std::string_view source, std::string_view before,
                                    std::string_view reply) {
  Raise(qkelInvalidPropertyValue, source, Join(before, reply, ")"));
}

constexpr std::string_view kUnrecognisedAttenuator = "Device reported an unrecognised attenuator setting (";
constexpr std::string_view kUnrecognisedDemodAttenuator =
    "Device reported an unrecognised demod attenuator setting (";

}  // namespace

// InputPort -------------------------------------------------------------------------------------------------
KelInputPorts clsKEL4x::InputPort() {
  static constexpr MemberTexts kGet = ReadTexts("InputPort");
  std::string reply;
  const std::optional<KelInputPorts> port = Armed(kGet, [&]() -> std::optional<KelInputPorts> {
    io_.ExchangeCommand("ROUTE:ISELECT?", reply, "RF,DEM,IF");
    if (SimulationActive()) return KelInputPorts{};
    std::string_view answered = status_.Decode(reply);
    if (answered == "DEM") return kelDemod;
    if (answered == "IF") return kelIF;
    if (answered != "RF") return std::nullopt;
    if (InstalledHardware().find(kImpedanceOption) == std::string::npos) return kelReceiver;
    io_.ExchangeCommand("INPUT:ATTENUATION:IMP?", reply, "O50,O75");
    if (SimulationActive()) return KelInputPorts{};
    answered = status_.Decode(reply);
    if (answered == "O50") return kelReceiver50ohm;
    if (answered == "O75") return kelReceiver75ohm;
    return std::nullopt;
  });
  if (port) return *port;
  // IRREGULAR: two blanks before the parenthesis, unlike the write.
  RaiseUnrecognised(kGet.source, "Invalid Property Value  (InputPort = ", reply);
}

void clsKEL4x::InputPort(KelInputPorts port) {
  static constexpr MemberTexts kLet = WriteTexts("InputPort");
  std::string_view command;
  std::string_view impedance;
  switch (port) {
    case kelReceiver:
      command = "ROUT:ISEL RF";
      break;
    case kelReceiver50ohm:
      command = "ROUT:ISEL RF";
      impedance = "INP:ATT:IMP O50";
      break;
    case kelReceiver75ohm:
      command = "ROUT:ISEL RF";
      impedance = "INP:ATT:IMP O75";
      break;
    case kelDemod:
      command = "ROUT:ISEL DEM";
      break;
    case kelIF:
      command = "ROUT:ISEL IF";
      break;
    default:
      Raise(qkelInvalidPropertyValue, kLet.source,
            Join("Invalid Property Value (InputPort = ", DecimalText(port), ")"));
  }
  Armed(kLet, [&] {
    // Without the option the impedance request is dropped silently.
    if (!impedance.empty() && InstalledHardware().find(kImpedanceOption) == std::string::npos) impedance = {};
    io_.ExchangeCommand(command);
    echo_pattern_.valid = false;
    host::CurrentHost().Runtime().Wait(1.0F);
    if (!impedance.empty()) io_.ExchangeCommand(impedance);
  });
}

// InputAttenuation_Receiver ---------------------------------------------------------------------------------
KelInputAttenuations clsKEL4x::InputAttenuation_Receiver() {
  static constexpr MemberTexts kGet = ReadTexts("InputAttenuation_Receiver");
  RequireInputPort(kGet, kReceiverBit);
  std::string reply;
  const std::optional<KelInputAttenuations> attenuation =
      Armed(kGet, [&]() -> std::optional<KelInputAttenuations> {
        io_.ExchangeCommand("INPUT:ATTENUATION:AUTO?", reply, "0,OFF,1,ON");
        if (SimulationActive()) return KelInputAttenuations{};
        const std::string_view automatic = status_.Decode(reply);
        if (automatic == "1" || automatic == "ON") return kelAttenAuto;
        if (automatic != "0" && automatic != "OFF") return std::nullopt;
        io_.ExchangeCommand(kAttenuationQuery, reply, kAttenuationChoices);
        if (SimulationActive()) return KelInputAttenuations{};
        const std::int16_t decibels = RoundToInt16(NumberFromText(status_.Decode(reply)));
        if (!IsAttenuatorStep(decibels)) return std::nullopt;
        return static_cast<KelInputAttenuations>(decibels);
      });
  if (attenuation) return *attenuation;
  RaiseUnrecognised(kGet.source, kUnrecognisedAttenuator, reply);
}

void clsKEL4x::InputAttenuation_Receiver(KelInputAttenuations attenuation) {
  static constexpr MemberTexts kLet = WriteTexts("InputAttenuation_Receiver");
  RequireInputPort(kLet, kReceiverBit);
  Armed(kLet, [&] {
    if (attenuation == kelAttenAuto) {
      io_.ExchangeCommand("INPUT:ATTENUATION:AUTO ON");
    } else {
      // The steps are not checked here: the instrument refuses what it cannot set.
      io_.ExchangeCommand("INPUT:ATTENUATION:AUTO OFF");
      io_.ExchangeCommand(Join("INPUT:ATTENUATION ", DecimalText(attenuation)));
    }
    echo_pattern_.valid = false;
  });
}

// InputAttenuation ------------------------------------------------------------------------------------------
KelInputAttenuations clsKEL4x::InputAttenuation() { return InputAttenuation_Receiver(); }
void clsKEL4x::InputAttenuation(KelInputAttenuations attenuation) { InputAttenuation_Receiver(attenuation); }

// InputAttenuationValue_Receiver ----------------------------------------------------------------------------
KelInputAttenuations clsKEL4x::InputAttenuationValue_Receiver() {
  static constexpr MemberTexts kGet = ReadTexts("InputAttenuationValue_Receiver");
  RequireInputPort(kGet, kReceiverBit);
  std::string reply;
  const std::optional<KelInputAttenuations> attenuation =
      Armed(kGet, [&]() -> std::optional<KelInputAttenuations> {
        io_.ExchangeCommand(kAttenuationQuery, reply, kAttenuationChoices);
        if (SimulationActive()) return KelInputAttenuations{};
        const std::int16_t decibels = RoundToInt16(NumberFromText(status_.Decode(reply)));
        if (!IsAttenuatorStep(decibels)) return std::nullopt;
        return static_cast<KelInputAttenuations>(decibels);
      });
  if (attenuation) return *attenuation;
  RaiseUnrecognised(kGet.source, kUnrecognisedAttenuator, reply);
}

// InputAttenuationValue -------------------------------------------------------------------------------------
KelInputAttenuations clsKEL4x::InputAttenuationValue() { return InputAttenuationValue_Receiver(); }

// InputAttenuationMode_Receiver
// ------------------------------------------------------------------------------------- IRREGULAR: the gate
// holds under simulation too, and the port that it reads chooses between two sets of commands.
KelRxAttenModes clsKEL4x::InputAttenuationMode_Receiver() {
  static constexpr MemberTexts kGet = ReadTexts("InputAttenuationMode_Receiver");
  const KelInputPorts port = InputPort();
  if ((port & kReceiverBit) == 0) Raise(qkelBadInputPort, kGet.source, "Wrong input port selected");
  std::string reply;
  std::string_view answered;
  const bool decoded = Armed(kGet, [&] {
    io_.ExchangeCommand(port == kelReceiver ? "INP:ATT:MODE?" : "INP:ATT:REC?", reply);
    if (SimulationActive()) return false;
    answered = status_.Decode(reply);
    return true;
  });
  if (!decoded) return KelRxAttenModes{};
  if (answered == "LNO") return kelRxAttenLoNoise;
  if (answered == "IGN" || answered == "NORM") return kelRxAttenNormal;
  if (answered == "LDIS") return kelRxAttenLoDistn;
  if (answered == "LSD") return kelRxAttenLowestDistn;
  // IRREGULAR: the text speaks of the demodulator's attenuator.
  RaiseUnrecognised(kGet.source, kUnrecognisedDemodAttenuator, reply);
}

void clsKEL4x::InputAttenuationMode_Receiver(KelRxAttenModes mode) {
  static constexpr MemberTexts kLet = WriteTexts("InputAttenuationMode_Receiver");
  const KelInputPorts port = InputPort();
  if ((port & kReceiverBit) == 0) Raise(qkelBadInputPort, kLet.source, "Wrong input port selected");
  std::string_view command;
  switch (mode) {
    case kelRxAttenLoNoise:
      command = port == kelReceiver ? "INPUT:ATTENUATION:MODE LNO" : "INP:ATT:REC LNO";
      break;
    case kelRxAttenNormal:
      command = port == kelReceiver ? "INPUT:ATTENUATION:MODE IGN" : "INP:ATT:REC NORM";
      break;
    case kelRxAttenLoDistn:
      command = port == kelReceiver ? "INPUT:ATTENUATION:MODE LDIS" : "INP:ATT:REC LDIS";
      break;
    case kelRxAttenLowestDistn:
      if (port == kelReceiver) command = "INPUT:ATTENUATION:MODE LSD";
      break;
  }
  if (command.empty()) {
    Raise(qkelInvalidPropertyValue, kLet.source, Join("Invalid Property Value (", DecimalText(mode), ")"));
  }
  Armed(kLet, [&] { io_.ExchangeCommand(command); });
}

// InputAttenuation_Demod ------------------------------------------------------------------------------------
KelDemodAttenuations clsKEL4x::InputAttenuation_Demod() {
  static constexpr MemberTexts kGet = ReadTexts("InputAttenuation_Demod");
  RequireInputPort(kGet, kDemodBit);
  std::string reply;
  std::string_view answered;
  const bool decoded = Armed(kGet, [&] {
    io_.ExchangeCommand("INPUT:ATTENUATION:DEM?", reply, "AUTO,MNLW,MNLE,MNHI");
    if (SimulationActive()) return false;
    answered = status_.Decode(reply);
    return true;
  });
  if (!decoded) return KelDemodAttenuations{};
  if (answered == "AUTO") return kelDemodAttenAuto;
  if (answered == "MNLW") return kelDemodManualLowAtten;
  if (answered == "MNLE") return kelDemodManualLowPreamp;
  if (answered == "MNHI") return kelDemodManualHigh;
  RaiseUnrecognised(kGet.source, kUnrecognisedDemodAttenuator, reply);
}

void clsKEL4x::InputAttenuation_Demod(KelDemodAttenuations attenuation) {
  static constexpr MemberTexts kLet = WriteTexts("InputAttenuation_Demod");
  RequireInputPort(kLet, kDemodBit);
  std::string_view command;
  switch (attenuation) {
    case kelDemodAttenAuto:
      command = "INPUT:ATTENUATION:DEM AUTO";
      break;
    case kelDemodManualLowAtten:
      command = "INPUT:ATTENUATION:DEM MNLW";
      break;
    case kelDemodManualLowPreamp:
      command = "INPUT:ATTENUATION:DEM MNLE";
      break;
    case kelDemodManualHigh:
      command = "INPUT:ATTENUATION:DEM MNHI";
      break;
    default:
      Raise(qkelInvalidPropertyValue, kLet.source,
            Join("Invalid Property Value (InputAttenuation_Demod = ", DecimalText(attenuation), ")"));
  }
  Armed(kLet, [&] { io_.ExchangeCommand(command); });
}

// InputAttenuationValue_Demod
// --------------------------------------------------------------------------------------- IRREGULAR: the
// firmware is checked before the input, and the input also under simulation.
KelDemodAttenVals clsKEL4x::InputAttenuationValue_Demod() {
  static constexpr MemberTexts kGet = ReadTexts("InputAttenuationValue_Demod");
  if (FirmwareNumber() < 5.05) {
    Raise(qkelFuntionNotAvailable, kGet.source,
          "InputAttenuationValue_Demod is not supported by current firmware.");
  }
  RequireInputPort(kGet, kDemodBit, Simulation::kKeepsGate);
  std::string reply;
  std::string_view answered;
  const bool decoded = Armed(kGet, [&] {
    io_.ExchangeCommand("INPUT:ATTENUATION:DEM:VAL?", reply);
    if (SimulationActive()) return false;
    answered = status_.Decode(reply);
    return true;
  });
  if (!decoded) return KelDemodAttenVals{};
  if (answered == "0") return kelDAVManualLowPreamp;
  if (answered == "1") return kelDAVManualLowAtten;
  if (answered == "2") return kelDAVManualHigh;
  if (answered == "10") return kelDAVAutoLowPreamp;
  if (answered == "11") return kelDAVAutoLowAtten;
  if (answered == "12") return kelDAVAutoHigh;
  RaiseUnrecognised(kGet.source, kUnrecognisedDemodAttenuator, reply);
}

}  // namespace qkel4x
