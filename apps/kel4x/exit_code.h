// How kel4x ends, and the error that ends it with a message of its own.
#pragma once

#include <stdexcept>
#include <string>

namespace kel4x {

/// What the process returns. The worst outcome of a run wins: kInterrupted, kNoLink, kUsage, kRefused, kDone.
enum ExitCode : int {
  kDone = 0,           ///< everything asked for was done
  kRefused = 1,        ///< the driver or the instrument refused something
  kUsage = 2,          ///< the command line, a file named on it or the configuration is wrong
  kNoLink = 3,         ///< there is no link to the instrument, or it was lost
  kInterrupted = 130,  ///< stopped by Ctrl-C or by being asked to end, where that is not the way to end it
};

/// Something that the user asked for wrongly. The text says what was wrong, where, and what would be right.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The link could not be had, or was lost. The text says which, to whom and why.
class NoLinkError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace kel4x
