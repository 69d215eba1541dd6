// The one error class of this system, and the error numbers that are not a member's own.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

#include "host/export.h"

namespace host {

/// Added to every published error number when it is raised; a host that catches an error subtracts it again.
inline constexpr std::int32_t kObjectErrorBase = static_cast<std::int32_t>(0x80040000U);

/// Numbers that the platform itself gives to faults of a running program. Raised plain, without the base.
enum RuntimeFault : std::int32_t {
  kInvalidProcedureCall = 5,
  kOverflow = 6,
  kSubscriptOutOfRange = 9,
  kTypeMismatch = 13,
  kNoObject = 91,
  kCannotCreateObject = 429,
  kPropertyReadOnly = 383,
  kMemberNotFound = 438,
  kWrongArgumentCount = 450,
};

/// What a transport says of a failed transfer, as offsets from kObjectErrorBase.
/// A driver member completes 2010 to 2013 with the instrument's own error-queue entry.
enum LinkError : std::int32_t {
  kLinkNotOpen =
      2010,  ///< the port is closed, cannot be opened, was lost, or the host interrupted the transfer
  kLinkSendFailed = 2011,  ///< the command could not be delivered
  kLinkBadReply = 2012,    ///< what came back is no reply: too long, cut short, malformed
  kLinkTimeout = 2013,     ///< no reply, or only a part of one, within the time-out
  kLinkBusy = 2015,        ///< the port is not ready for a transfer; trying again may help
};

/// An automation error: what a failed call of this system throws, and the only thing that it throws on
/// purpose.
class QKEL4X_EXPORT AutomationError : public std::exception {
 public:
  AutomationError(std::int32_t number, std::string source, std::string description,
                  std::string help_file = {}, std::int32_t help_context = 0)
      : number_(number),
        source_(std::move(source)),
        description_(std::move(description)),
        help_file_(std::move(help_file)),
        help_context_(help_context) {}

  /// The number as raised: signed, with kObjectErrorBase where the error has it.
  std::int32_t Number() const { return number_; }
  /// The number less kObjectErrorBase, as the published enumeration has it. Plain numbers come out unusable
  /// here.
  std::int32_t Code() const {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number_) -
                                     static_cast<std::uint32_t>(kObjectErrorBase));
  }
  /// Which member failed, for example "clsKEL4x.MeasureRfLevel".
  const std::string& Source() const { return source_; }
  const std::string& Description() const { return description_; }
  const std::string& HelpFile() const { return help_file_; }
  std::int32_t HelpContext() const { return help_context_; }

  const char* what() const noexcept override { return description_.c_str(); }

 private:
  std::int32_t number_;
  std::string source_;
  std::string description_;
  std::string help_file_;
  std::int32_t help_context_;
};

}  // namespace host
