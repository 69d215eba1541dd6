// How a trace looks over the shoulder of the ports.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace workbench {

/// One thing that a port did. The texts are valid during the call only.
struct TransferRecord {
  enum class Kind {
    kOpened,    ///< the port went on line
    kClosed,    ///< the port went off line
    kWrite,     ///< a command was sent
    kExchange,  ///< a reply line was read, after a command where one is given
    kBlock,     ///< bytes of a reply were read, after a command where one is given
    kCleared,   ///< what belonged to a failed transfer was discarded
  };
  Kind kind = Kind::kWrite;
  std::string_view port;      ///< the programmatic name, for example "QPort.clsEthernet"
  std::string_view peer;      ///< who is at the other end, for example "127.0.0.1:5025"
  std::string_view sent;      ///< without the terminator; empty where nothing was sent
  std::string_view received;  ///< the reply line without its terminator, or the bytes of a block
  std::chrono::system_clock::time_point begin;
  double seconds = 0;
  std::int32_t error_number = 0;  ///< as raised; 0 where the transfer succeeded
  std::string_view error;         ///< the description of the error; empty where the transfer succeeded
  std::span<const std::pair<std::string, std::string>> settings;  ///< of the port, when it went on line
};

/// Sees every transfer of every port of a workbench, on the thread that makes it.
class TransferObserver {
 public:
  virtual ~TransferObserver() = default;
  virtual void Observe(const TransferRecord& record) noexcept = 0;
};

}  // namespace workbench
