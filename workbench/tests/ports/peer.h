// Instruments with faults, for tests of the ports: a script that says what each command line provokes, and
// the far ends of every bus that such a script can sit behind.
#pragma once

#include <termios.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "host/parameter_node.h"

namespace workbench::test {

/// What a script does to the line back to the host.
class Wire {
 public:
  virtual ~Wire() = default;
  virtual void Send(std::string_view bytes) = 0;
  virtual void Pause(std::chrono::milliseconds time) = 0;
  /// Ends the connection, where the bus has one: in order, or with a reset.
  virtual void Close() {}
  virtual void Reset() { Close(); }
};

/// Called with each command line, without its terminator.
using Script = std::function<void(std::string_view line, Wire& wire)>;

/// A far end.
class Peer {
 public:
  virtual ~Peer() = default;
  /// Points the settings of a fresh port at this far end.
  virtual void Configure(host::ParameterNode& settings) = 0;
};

/// Listens on loopback and serves each connection on a thread of its own.
class TcpPeer : public Peer {
 public:
  /// Handles one connection on its descriptor until that ends.
  using Session = std::function<void(int descriptor)>;

  explicit TcpPeer(Script script, bool ipv6 = false);
  explicit TcpPeer(Session session, bool ipv6 = false);
  ~TcpPeer() override;
  void Configure(host::ParameterNode& settings) override;
  std::uint16_t Port() const { return port_; }
  int Connections() const { return connections_; }

 private:
  void Accept();

  Session session_;
  bool ipv6_;
  int listener_ = -1;
  std::uint16_t port_ = 0;
  std::atomic<int> connections_{0};
  std::mutex mutex_;
  std::vector<int> open_;
  std::vector<std::thread> threads_;
  std::thread acceptor_;
};

/// The far end of a pseudo-terminal, as COM3.
class PtyPeer : public Peer {
 public:
  explicit PtyPeer(Script script);
  ~PtyPeer() override;
  void Configure(host::ParameterNode& settings) override;
  const std::string& Path() const { return path_; }
  /// Pulls the plug.
  void Unplug();

  /// The settings of the line as its user has set them.
  termios Line() const;

 private:
  void Serve(const Script& script);

  int master_ = -1;
  std::string path_;
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

/// A device on a GPIB bus: what the script sends waits here until it is fetched.
class BusDevice {
 public:
  explicit BusDevice(Script script) : script_(std::move(script)) {}

  void Write(std::string_view bytes);
  /// Up to `most` bytes that are ready within `timeout`; `end` where the last of them ends the message.
  std::string Read(std::size_t most, std::chrono::microseconds timeout, bool& end);
  void Clear();
  int Clears() const { return clears_; }
  int Locals() const { return locals_; }
  void GoToLocal() { ++locals_; }

 private:
  struct Chunk {
    std::chrono::steady_clock::time_point ready;
    std::string bytes;
  };

  Script script_;
  std::mutex mutex_;
  std::string incoming_;
  std::deque<Chunk> outgoing_;
  std::atomic<int> clears_{0};
  std::atomic<int> locals_{0};
};

/// A "++" adapter over TCP with one device on its bus, at address 6.
class AdapterPeer : public Peer {
 public:
  explicit AdapterPeer(Script script);
  void Configure(host::ParameterNode& settings) override;
  BusDevice& Device() { return device_; }

 private:
  void Serve(int descriptor);

  BusDevice device_;
  TcpPeer server_;
};

/// A library of the NI-488.2 shape with one device on its bus, at address 6.
class LibraryPeer : public Peer {
 public:
  explicit LibraryPeer(Script script);
  ~LibraryPeer() override;
  void Configure(host::ParameterNode& settings) override;
  BusDevice& Device() { return device_; }

 private:
  BusDevice device_;
  void* library_ = nullptr;
};

}  // namespace workbench::test
