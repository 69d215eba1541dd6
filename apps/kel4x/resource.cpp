// Parsing of resource strings.
#include "resource.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <vector>

#include "exit_code.h"

namespace kel4x {
namespace {

constexpr std::size_t kLongest = 1024;

char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

std::string Upper(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(), [](char c) { return Upper(c); });
  return upper;
}

// Whole texts of decimal digits only.
std::optional<int> WholeNumber(std::string_view text, int lowest, int highest) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size() || number < lowest || number > highest) {
    return std::nullopt;
  }
  return number;
}

// Splits at "::", except within brackets: an IPv6 address holds colons of its own.
std::vector<std::string_view> Pieces(std::string_view text) {
  std::vector<std::string_view> pieces;
  std::size_t begin = 0;
  int depth = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '[') ++depth;
    if (text[at] == ']' && depth > 0) --depth;
    if (depth == 0 && text.substr(at, 2) == "::") {
      pieces.push_back(text.substr(begin, at - begin));
      begin = at + 2;
      ++at;
    }
  }
  pieces.push_back(text.substr(begin));
  return pieces;
}

[[noreturn]] void Refuse(std::string_view text, const std::string& reason) {
  std::string shown;
  for (const char c : text.substr(0, 80)) {
    shown += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
  }
  throw UsageError("resource \"" + shown + "\": " + reason);
}

void NeedSuffix(std::string_view text, const std::vector<std::string_view>& pieces, std::size_t at,
                std::string_view suffix, const std::string& example) {
  if (pieces.size() <= at || Upper(pieces[at]) != suffix) {
    Refuse(text, "must end in ::" + std::string(suffix) + ", as in " + example);
  }
  if (pieces.size() > at + 1) {
    Refuse(text, "nothing may follow ::" + std::string(suffix) + ", as in " + example);
  }
}

Resource ParseTcp(std::string_view text, const std::vector<std::string_view>& pieces) {
  static constexpr char kExample[] = "TCPIP::192.168.0.40::5025::SOCKET";
  Resource resource;
  resource.port = Resource::Port::kTcp;
  std::string_view host = pieces.size() > 1 ? pieces[1] : std::string_view{};
  if (host.size() >= 2 && host.front() == '[' && host.back() == ']') {
    host = host.substr(1, host.size() - 2);
  } else if (host.find_first_of("[]") != std::string_view::npos) {
    Refuse(text, "the brackets of the address do not match, as in TCPIP::[fe80::1]::5025::SOCKET");
  } else if (host.find(':') != std::string_view::npos) {
    Refuse(text, "an IPv6 address stands in brackets, as in TCPIP::[fe80::1]::5025::SOCKET");
  }
  if (host.empty()) Refuse(text, std::string("the host is missing, as in ") + kExample);
  if (host.find_first_of(" \t\r\n") != std::string_view::npos) Refuse(text, "a host name holds no blanks");
  if (pieces.size() > 2 && Upper(pieces.back()) == "INSTR") {
    Refuse(text, std::string("this instrument has a raw socket, not VXI-11: write ") +
                     "TCPIP::" + std::string(pieces[1]) + "::5025::SOCKET");
  }
  if (pieces.size() < 3 || Upper(pieces[2]) == "SOCKET") {
    Refuse(text, std::string("the port number is missing, as in ") + kExample);
  }
  const auto port = WholeNumber(pieces[2], 1, 65535);
  if (!port) {
    Refuse(text, "\"" + std::string(pieces[2]) + "\" is no port number (1 to 65535), as in " + kExample);
  }
  NeedSuffix(text, pieces, 3, "SOCKET", kExample);
  resource.host = host;
  resource.tcp_port = static_cast<std::uint16_t>(*port);
  return resource;
}

Resource ParseSerial(std::string_view text, std::string_view number,
                     const std::vector<std::string_view>& pieces) {
  static constexpr char kExample[] = "ASRL::/dev/ttyUSB0::INSTR or ASRL1::INSTR";
  Resource resource;
  resource.port = Resource::Port::kSerial;
  if (!number.empty()) {
    // VISA also writes ASRL/dev/ttyUSB0::INSTR, without the first separator.
    if (number.front() == '/') {
      resource.device = number;
    } else {
      const auto port = WholeNumber(number, 1, 16);
      if (!port) Refuse(text, "\"" + std::string(number) + "\" is no serial port number (1 to 16)");
      resource.comm_port = *port;
    }
    NeedSuffix(text, pieces, 1, "INSTR", kExample);
    return resource;
  }
  if (pieces.size() < 2 || pieces[1].empty() || Upper(pieces[1]) == "INSTR") {
    Refuse(text, std::string("the device is missing, as in ") + kExample);
  }
  const std::string name = Upper(pieces[1]);
  if (name.starts_with("COM")) {
    const auto port = WholeNumber(std::string_view(name).substr(3), 1, 16);
    if (!port) Refuse(text, "\"" + std::string(pieces[1]) + "\" is none of COM1 to COM16");
    resource.comm_port = *port;
  } else if (const auto port = WholeNumber(name, 1, 16)) {
    resource.comm_port = *port;
  } else {
    resource.device = pieces[1];
  }
  NeedSuffix(text, pieces, 2, "INSTR", kExample);
  return resource;
}

Resource ParseGpib(std::string_view text, int board, const std::vector<std::string_view>& pieces) {
  static constexpr char kExample[] = "GPIB0::6::INSTR";
  Resource resource;
  resource.port = Resource::Port::kGpib;
  resource.gpib_board = board;
  if (pieces.size() < 2 || pieces[1].empty() || Upper(pieces[1]) == "INSTR") {
    Refuse(text, std::string("the address is missing, as in ") + kExample);
  }
  const auto address = WholeNumber(pieces[1], 0, 30);
  if (!address) {
    Refuse(text, "\"" + std::string(pieces[1]) + "\" is no primary address (0 to 30), as in " + kExample);
  }
  resource.gpib_address = *address;
  if (pieces.size() > 2 && Upper(pieces[2]) != "INSTR") {
    Refuse(text, std::string("this instrument has no secondary address: write ") + "GPIB" +
                     std::to_string(board) + "::" + std::string(pieces[1]) + "::INSTR");
  }
  if (pieces.size() > 2) NeedSuffix(text, pieces, 2, "INSTR", kExample);
  return resource;
}

}  // namespace

Resource ParseResource(std::string_view text) {
  if (text.size() > kLongest) Refuse(text, "longer than " + std::to_string(kLongest) + " characters");
  if (text.find('\0') != std::string_view::npos) Refuse(text, "holds a NUL character");
  const std::vector<std::string_view> pieces = Pieces(text);
  const std::string kind = Upper(pieces[0]);

  Resource resource;
  if (kind == "SIM" && pieces.size() == 1) {
    resource.port = Resource::Port::kSimulated;
  } else if (kind.starts_with("TCPIP")) {
    const std::string_view board = pieces[0].substr(5);
    if (!board.empty() && !WholeNumber(board, 0, 99)) {
      Refuse(text, "\"" + std::string(pieces[0]) + "\" is no interface: TCPIP, or TCPIP0 to TCPIP99");
    }
    resource = ParseTcp(text, pieces);
  } else if (kind.starts_with("ASRL")) {
    resource = ParseSerial(text, pieces[0].substr(4), pieces);
  } else if (kind.starts_with("GPIB")) {
    const std::string_view number = pieces[0].substr(4);
    const auto board = number.empty() ? std::optional<int>(0) : WholeNumber(number, 0, 99);
    if (!board) Refuse(text, "\"" + std::string(pieces[0]) + "\" is no bus: GPIB, or GPIB0 to GPIB99");
    resource = ParseGpib(text, *board, pieces);
  } else {
    Refuse(text,
           "is none of SIM, TCPIP::host::5025::SOCKET, ASRL::/dev/ttyUSB0::INSTR, ASRL1::INSTR, "
           "GPIB0::6::INSTR");
  }
  resource.text = text;
  return resource;
}

}  // namespace kel4x
