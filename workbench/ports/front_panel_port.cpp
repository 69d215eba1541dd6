#include "workbench/ports/front_panel_port.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace workbench {
namespace {

class EmbeddedLink final : public Link {
 public:
  EmbeddedLink(std::shared_ptr<simulator::SharedInstrument> instrument, std::string peer)
      : instrument_(std::move(instrument)), peer_(std::move(peer)) {}

  std::string_view Peer() const override { return peer_; }
  std::string Fault() const override { return {}; }

  Attempt Send(std::string_view rest) override {
    std::string_view line = rest;
    if (line.ends_with('\n')) line.remove_suffix(1);
    instrument_->Execute(line, answer_);
    if (answer_.has_reply) answer_.bytes += '\n';
    unread_ = answer_.has_reply ? std::string_view(answer_.bytes) : std::string_view();
    return {Attempt::Outcome::kDone, rest.size(), false};
  }

  Attempt Receive(std::span<char> into) override {
    if (unread_.empty()) return {Attempt::Outcome::kSilent, 0, false};
    const std::size_t bytes = std::min(into.size(), unread_.size());
    std::memcpy(into.data(), unread_.data(), bytes);
    unread_.remove_prefix(bytes);
    return {Attempt::Outcome::kDone, bytes, unread_.empty()};
  }

  Cleared Clear(const Deadline&, double) override {
    unread_ = {};
    return Cleared::kClean;
  }
  Attempt DropArrived() override {
    const std::size_t dropped = unread_.size();
    unread_ = {};
    return {Attempt::Outcome::kDone, dropped, false};
  }

 private:
  std::shared_ptr<simulator::SharedInstrument> instrument_;
  std::string peer_;
  simulator::Instrument::Answer answer_;
  std::string_view unread_;
};

}  // namespace

FrontPanelPort::FrontPanelPort(std::shared_ptr<Services> services, InstrumentSource source,
                               std::string_view class_name, std::string_view group)
    : Port(std::move(services), class_name, group), source_(std::move(source)) {
  AddPlain("Instrument", std::string("SIM"), "Name of the simulated instrument");
}

std::unique_ptr<Link> FrontPanelPort::Open(const Deadline&) {
  const std::string name = TextOf("Instrument");
  return std::make_unique<EmbeddedLink>(source_(name), "the simulated instrument " + name);
}

}  // namespace workbench
