// Serves an instrument on a pseudo-terminal, as if it hung on a serial line.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "simulator/shared_instrument.h"

namespace simulator {

struct PtyServerOptions {
  std::string link;                   ///< path of a symbolic link to the terminal to make; empty: none
  std::size_t longest_line = 65'536;  ///< bytes; a longer line is dropped with error -363
};

/// Opens a pseudo-terminal in raw mode at construction and serves it in a thread of its own until Stop() or
/// destruction. Clients may open and close the terminal as often as they like.
class PtyServer {
 public:
  /// Throws std::runtime_error when no terminal can be made, or when the link's path is taken by something
  /// that is not a symbolic link.
  explicit PtyServer(SharedInstrument& instrument, PtyServerOptions options = {});
  ~PtyServer();
  PtyServer(const PtyServer&) = delete;
  PtyServer& operator=(const PtyServer&) = delete;

  /// The terminal that a client opens, for example /dev/pts/7.
  const std::string& Path() const;
  /// Closes the terminal and removes the link; may be called from any thread and more than once.
  void Stop();

 private:
  class Service;
  std::unique_ptr<Service> service_;
};

}  // namespace simulator
