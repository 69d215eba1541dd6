// Showing and remembering the traffic.
#include "traffic.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace kel4x {
namespace {

constexpr std::size_t kLongestShown = 400;

}  // namespace

std::string_view StatusWordOf(std::string_view reply) {
  // In the order in which the driver tests them; a short form of underrange has the name of the long one.
  static constexpr std::pair<std::string_view, std::string_view> kWords[] = {
      {"<", "<"},         {">", ">"},       {"*", "*"},       {"---", "---"},
      {"UNDER", "UNDER"}, {"UND", "UNDER"}, {"OVER", "OVER"}, {"NORF", "NORF"}};
  if (reply.starts_with('"')) reply.remove_prefix(1);
  for (const auto& [start, word] : kWords) {
    if (reply.starts_with(start)) return word;
  }
  return {};
}

std::string Visible(std::string_view text) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string visible;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7F) {
      visible += c;
    } else {
      visible += {'\\', 'x', kHex[byte >> 4U], kHex[byte & 0xFU]};
    }
  }
  return visible;
}

void Traffic::Heading(std::string_view text) const {
  if (!shown_) return;
  std::fprintf(stderr, "%s-- %.*s%s\n", colour_ ? "\033[2m" : "", static_cast<int>(text.size()), text.data(),
               colour_ ? "\033[0m" : "");
}

void Traffic::BeginCall() {
  transfers_ = 0;
  link_failed_ = false;
  link_text_.clear();
  answered_count_ = 0;
}

std::string_view Traffic::StatusWord() const {
  for (std::size_t i = 0; i < answered_count_; ++i) {
    if (const std::string_view word = StatusWordOf(answered_[i].reply); !word.empty()) return word;
  }
  return {};
}

void Traffic::Print(const workbench::TransferRecord& record) const {
  using Kind = workbench::TransferRecord::Kind;
  const char* dim = colour_ ? "\033[2m" : "";
  const char* red = colour_ ? "\033[31m" : "";
  const char* plain = colour_ ? "\033[0m" : "";
  if (record.kind == Kind::kOpened || record.kind == Kind::kClosed || record.kind == Kind::kCleared) {
    const char* what = record.kind == Kind::kOpened   ? "opened"
                       : record.kind == Kind::kClosed ? "closed"
                                                      : "cleared";
    if (record.error_number == 0) {
      std::fprintf(stderr, "%s-- %s %s%s\n", dim, what, std::string(record.peer).c_str(), plain);
    }
  } else {
    if (!record.sent.empty()) std::fprintf(stderr, "> %s\n", Visible(record.sent).c_str());
    if (record.kind == Kind::kBlock) {
      std::fprintf(stderr, "< %zu bytes %s(%.3f ms)%s\n", record.received.size(), dim, record.seconds * 1e3,
                   plain);
    } else if (record.kind == Kind::kExchange && record.error_number == 0) {
      std::fprintf(stderr, "< %s %s(%.3f ms)%s\n", Visible(record.received.substr(0, kLongestShown)).c_str(),
                   dim, record.seconds * 1e3, plain);
    }
  }
  if (record.error_number != 0) {
    std::fprintf(stderr, "%s! %s%s\n", red, Visible(record.error).c_str(), plain);
  }
}

void Traffic::Observe(const workbench::TransferRecord& record) noexcept {
  using Kind = workbench::TransferRecord::Kind;
  if (writer_ != nullptr) writer_->Observe(record);
  try {
    if (shown_) Print(record);
    if (record.kind == Kind::kClosed || record.kind == Kind::kCleared) return;
    ++transfers_;
    link_failed_ = record.error_number != 0;
    if (link_failed_) {
      if (link_text_.empty()) link_text_ = record.error;
      return;
    }
    if (record.kind != Kind::kExchange || record.sent.empty()) return;
    const auto end = answered_.begin() + static_cast<std::ptrdiff_t>(answered_count_);
    const auto known = std::find_if(answered_.begin(), end,
                                    [&](const Answered& entry) { return entry.query == record.sent; });
    if (known != end) {
      known->reply = record.received;
      return;
    }
    if (answered_count_ == answered_.size()) answered_.emplace_back();
    answered_[answered_count_].query = record.sent;
    answered_[answered_count_].reply = record.received.substr(0, kLongestShown);
    ++answered_count_;
  } catch (const std::exception&) {
    // Without memory nothing is shown; the transfer itself is not disturbed.
    answered_count_ = 0;
  }
}

}  // namespace kel4x
