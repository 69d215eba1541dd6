// What goes over the link, as the verbs need to know it: shown, recorded, and remembered for the last call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/trace_writer.h"
#include "workbench/transfer_observer.h"

namespace kel4x {

/// Watches every transfer of the workbench.
class Traffic final : public workbench::TransferObserver {
 public:
  /// Shows the traffic on standard error from now on.
  void Show(bool colour) {
    shown_ = true;
    colour_ = colour;
  }
  /// Records it; null for no longer.
  void Record(workbench::TraceWriter* writer) { writer_ = writer; }

  /// A heading of the shown traffic.
  void Heading(std::string_view text) const;

  /// Forgets what the last call did.
  void BeginCall();
  /// How many transfers the call made.
  std::size_t Transfers() const { return transfers_; }
  /// Whether the last transfer of the call failed.
  bool LinkFailed() const { return link_failed_; }
  /// What the port said of the first transfer of the call that failed; empty where none did.
  const std::string& LinkText() const { return link_text_; }
  /// The status word of the call's measurement: of the last reply to each query, the first that has one. A
  /// member that asks for more than its own value leaves the driver's own status field with another reply's.
  std::string_view StatusWord() const;

  void Observe(const workbench::TransferRecord& record) noexcept override;

 private:
  struct Answered {
    std::string query;
    std::string reply;
  };

  void Print(const workbench::TransferRecord& record) const;

  bool shown_ = false;
  bool colour_ = false;
  workbench::TraceWriter* writer_ = nullptr;
  std::size_t transfers_ = 0;
  bool link_failed_ = false;
  std::string link_text_;
  std::vector<Answered> answered_;
  std::size_t answered_count_ = 0;  // the entries in use: their memory is used again
};

/// The status word at the start of a reply, as the driver would name it; empty where there is none.
std::string_view StatusWordOf(std::string_view reply);

/// Control characters and bytes that are no ASCII made visible, as in "\x0A".
std::string Visible(std::string_view text);

}  // namespace kel4x
