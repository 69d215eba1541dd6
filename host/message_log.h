// The host's message log.
#pragma once

#include <cstdint>
#include <string_view>

namespace host {

/// Kinds of message that the driver writes.
enum LogKind : std::int32_t { kReplyReceived = 5, kTextSent = 6 };

class MessageLog {
 public:
  virtual ~MessageLog() = default;

  /// Sent texts come as `text` with an empty detail, replies as `detail` with an empty text.
  virtual void Append(std::int32_t kind, std::string_view source_tag, std::string_view text,
                      std::string_view detail) = 0;
  /// Switches logging of one kind off and on.
  virtual void KindEnabled(std::int32_t kind, bool enabled) = 0;
};

}  // namespace host
