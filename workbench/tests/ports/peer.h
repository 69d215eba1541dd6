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
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "host/parameter_node.h"
#include "workbench/services.h"

namespace workbench::test {

/// What a script does to the line back to the host.
class Wire {
 public:
  virtual ~Wire() = default;
  /// On a GPIB bus, bytes that end with LF or CR end with the mark too, unless more waits behind them.
  virtual void Send(std::string_view bytes) = 0;
  /// Sends bytes that end with this mark anyway.
  virtual void SendAndMark(std::string_view bytes) { Send(bytes); }
  virtual void Pause(std::chrono::milliseconds time) = 0;
  /// Ends the connection, where the bus has one: in order, or with a reset.
  virtual void Close() {}
  virtual void Reset() { Close(); }
};

/// Called with each command line, without its terminator.
using Script = std::function<void(std::string_view line, Wire& wire)>;
/// Called with what has come in, in whatever pieces.
struct Stream {
  std::function<void(std::string_view bytes, Wire& wire)> take;
};

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
  /// Ends every connection from this side.
  void Disconnect();

 private:
  struct Served {
    std::thread thread;
    int descriptor;
    std::atomic<bool> over{false};
  };

  void Accept();

  Session session_;
  bool ipv6_;
  int listener_ = -1;
  std::uint16_t port_ = 0;
  std::atomic<int> connections_{0};
  std::mutex mutex_;
  std::list<Served> served_;
  std::thread acceptor_;
};

/// The far end of a pseudo-terminal, as COM3.
class PtyPeer : public Peer {
 public:
  explicit PtyPeer(Script script);
  explicit PtyPeer(Stream stream);
  ~PtyPeer() override;
  void Configure(host::ParameterNode& settings) override;
  const std::string& Path() const { return path_; }
  /// Pulls the plug.
  void Unplug();

  /// The settings of the line as its user has set them.
  termios Line() const;

 private:
  void Serve(const Stream& stream);

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
    bool mark;
  };

  Script script_;
  std::mutex mutex_;
  std::string incoming_;
  std::deque<Chunk> outgoing_;
  std::atomic<int> clears_{0};
  std::atomic<int> locals_{0};
};

/// A "++" adapter with one device on its bus, at address 6, as it is after a connection was made.
class Adapter {
 public:
  /// It gives a read up once it is `abandoned`, for another connection for instance.
  explicit Adapter(BusDevice& device, std::function<bool()> abandoned = {})
      : device_(device), abandoned_(std::move(abandoned)) {}
  void Take(std::string_view bytes, Wire& wire);
  /// Its next answer to "++ver" gets lost.
  void LoseVersion() { loses_version_ = true; }
  /// From now on it does not wait for the instrument.
  void GiveUpAtOnce() { gives_up_ = true; }
  int Reads() const { return reads_; }

 private:
  void Obey(Wire& wire);
  void Read(Wire& wire);

  BusDevice& device_;
  std::function<bool()> abandoned_;
  std::atomic<bool> loses_version_{false};
  std::atomic<bool> gives_up_{false};
  std::atomic<int> reads_{0};
  int address_ = -1;
  bool in_charge_ = false;
  std::chrono::milliseconds read_timeout_{1000};
  std::string line_;
  bool escaped_ = false;
  bool has_escape_ = false;
};

/// Such an adapter over TCP.
class AdapterPeer : public Peer {
 public:
  /// Deaf to what comes within the first moments of a connection.
  explicit AdapterPeer(Script script, std::chrono::milliseconds deaf = {});
  void Configure(host::ParameterNode& settings) override;
  BusDevice& Device() { return device_; }
  void Disconnect() { server_.Disconnect(); }

 private:
  BusDevice device_;
  std::atomic<int> sessions_{0};  // the last one has the adapter
  TcpPeer server_;
};

/// Such an adapter at a serial line.
class SerialAdapterPeer : public Peer {
 public:
  explicit SerialAdapterPeer(Script script);
  void Configure(host::ParameterNode& settings) override;
  class Adapter& Adapter() {
    return adapter_;
  }

 private:
  BusDevice device_;
  class Adapter adapter_;
  PtyPeer line_;
};

/// Between a front panel and its instrument: the script answers instead. Give Between() to the workbench.
class FrontPanelPeer : public Peer {
 public:
  explicit FrontPanelPeer(Script script) : script_(std::move(script)) {}
  void Configure(host::ParameterNode&) override {}
  LinkWrapper Between();

 private:
  Script script_;
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
