// Which operation of the transport each private operation uses, and the rules that no member shows.
#include "driver/core/instrument_io.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "../member_cases/scripted_host.h"

namespace qkel4x {
namespace {

using Lines = std::vector<std::string>;

// Answers from a list and keeps what it was asked, operation by operation.
class RecordingTransport final : public host::Transport, public host::BlockTransfer {
 public:
  std::string Name() override { return {}; }
  void Name(std::string_view) override {}
  std::shared_ptr<host::ParameterNode> Settings() override { return nullptr; }
  bool OnLine() override { return true; }
  void OnLine(bool) override {}
  float Timeout() override { return 5.0F; }
  void Timeout(float) override {}
  void Write(std::string_view command) override { Happens("Write", command); }
  void Exchange(std::string_view command, std::string* reply) override {
    Happens(reply ? "Exchange with reply" : "Exchange", command);
    if (reply) *reply = Next();
  }
  std::string Query(std::optional<std::string_view> command) override {
    if (command == "SYST:ERR?") {
      ++error_queries;
      return "0,\"No error\"";
    }
    Happens("Query", command.value_or("nothing"));
    return Next();
  }
  host::BlockTransfer* Blocks() override { return has_blocks ? this : nullptr; }
  std::vector<std::uint8_t> ReadBlock(std::int16_t count, std::optional<std::string_view> command) override {
    Happens("ReadBlock " + std::to_string(count), command.value_or("nothing"));
    return std::vector<std::uint8_t>(static_cast<std::size_t>(count), 7);
  }
  void WriteBlock(std::int16_t format, std::span<const std::uint8_t> data,
                  std::optional<std::string_view> command) override {
    Happens("WriteBlock " + std::to_string(format) + " " + std::to_string(data.size()),
            command.value_or("nothing"));
  }

  Lines happened;
  std::vector<std::string> replies;
  std::optional<host::AutomationError> failure;
  int error_queries = 0;
  bool has_blocks = true;

 private:
  void Happens(std::string operation, std::string_view command) {
    happened.push_back(std::move(operation) + ": " + std::string(command));
    if (failure) throw host::AutomationError(*failure);
  }
  std::string Next() {
    if (replies.empty()) return "reply";
    std::string reply = replies.front();
    replies.erase(replies.begin());
    return reply;
  }
};

class InstrumentIoTest : public testing::Test {
 protected:
  InstrumentIoTest() {
    remote_control_->SetValue(std::string("QPort.clsEthernet"), -1, -1);
    log_messages_->SetValue(std::string("0"), -1, -1);
    io_.UseSettings(remote_control_, log_messages_);
    io_.transport = port_;
    io_.retry_limit = 10;
    host_.LetPass();
  }

  Lines Waits() const {
    Lines waits;
    for (const std::string& line : host_.events) {
      if (line.starts_with("wait")) waits.push_back(line);
    }
    return waits;
  }

  member_cases::ScriptedHost host_;
  std::shared_ptr<member_cases::ScriptedNode> remote_control_ =
      std::make_shared<member_cases::ScriptedNode>();
  std::shared_ptr<member_cases::ScriptedNode> log_messages_ = std::make_shared<member_cases::ScriptedNode>();
  std::shared_ptr<RecordingTransport> port_ = std::make_shared<RecordingTransport>();
  InstrumentIo io_;
};

TEST_F(InstrumentIoTest, EachOperationUsesItsOwn) {
  std::string reply;
  io_.SendCommand("A");
  io_.ExchangeCommand("B");
  io_.ExchangeCommand("C?", reply);
  EXPECT_EQ(io_.QueryText("D?"), "reply");
  io_.ReadBinaryBlock(3, "E?");
  io_.ReadBinaryBlock(2, std::nullopt);
  const std::vector<std::uint8_t> data{1, 2};
  io_.WriteBinaryBlock(5, data, "F");
  EXPECT_EQ(port_->happened, (Lines{"Write: A", "Exchange: B", "Exchange with reply: C?", "Query: D?",
                                    "ReadBlock 3: E?", "ReadBlock 2: nothing", "WriteBlock 5 2: F"}));
  EXPECT_EQ(reply, "reply");
  EXPECT_EQ(port_->error_queries, 6) << "one drain for each command, none without a command";
}

TEST_F(InstrumentIoTest, AQueryWithoutCommandReadsWithoutADrain) {
  EXPECT_EQ(io_.QueryText(std::nullopt), "reply");
  EXPECT_EQ(port_->happened, (Lines{"Query: nothing"}));
  EXPECT_EQ(port_->error_queries, 0);
}

TEST_F(InstrumentIoTest, AWriteOfABlockWithoutCommandDoesNotDrain) {
  io_.WriteBinaryBlock(1, {}, std::nullopt);
  EXPECT_EQ(port_->happened, (Lines{"WriteBlock 1 0: nothing"}));
  EXPECT_EQ(port_->error_queries, 0);
}

TEST_F(InstrumentIoTest, ChoicesAreTakenFromAnywhereInTheReply) {
  port_->replies = {"xx", "off", "xxOFFxx"};
  std::string reply;
  io_.ExchangeCommand("A?", reply, "OFF,ON");
  EXPECT_EQ(reply, "xxOFFxx");
  EXPECT_EQ(Waits(), (Lines{"wait 1", "wait 1"}));
}

TEST_F(InstrumentIoTest, AnEmptyChoiceMatchesAnyReply) {
  for (const std::string_view choices : {"A,,B", ",A", "A,"}) {
    port_->replies = {"xyz"};
    std::string reply;
    io_.ExchangeCommand("A?", reply, choices);
    EXPECT_EQ(reply, "xyz");
  }
  EXPECT_TRUE(Waits().empty());
}

TEST_F(InstrumentIoTest, AnEmptyChoiceListHasNoChoices) {
  io_.retry_limit = 1;
  port_->replies = {"xyz", "uvw"};
  std::string reply;
  io_.ExchangeCommand("A?", reply, "");
  EXPECT_EQ(reply, "uvw") << "nothing matches, so that the query is repeated";
}

TEST_F(InstrumentIoTest, WithoutChoicesDashesAreRepeated) {
  port_->replies = {"---", "1---", "x"};
  std::string reply;
  io_.ExchangeCommand("A?", reply);
  EXPECT_EQ(reply, "x");
  EXPECT_EQ(port_->happened.size(), 3U);
}

TEST_F(InstrumentIoTest, ALimitOfZeroRepeatsNothing) {
  io_.retry_limit = 0;
  port_->replies = {"---"};
  std::string reply;
  io_.ExchangeCommand("A?", reply);
  EXPECT_EQ(reply, "---");
  port_->failure = host::AutomationError(host::kObjectErrorBase + 2015, "QPort", "busy");
  EXPECT_THROW(io_.SendCommand("A"), host::AutomationError);
  EXPECT_THROW(io_.ExchangeCommand("A"), host::AutomationError);
  EXPECT_EQ(port_->happened.size(), 3U);
  EXPECT_TRUE(Waits().empty());
}

TEST_F(InstrumentIoTest, BlocksAreRepeatedLikeCommands) {
  port_->failure = host::AutomationError(host::kObjectErrorBase + 2013, "QPort", "timeout");
  EXPECT_THROW(io_.ReadBinaryBlock(1, "A?"), host::AutomationError);
  EXPECT_EQ(port_->happened.size(), 11U);
  EXPECT_THROW(io_.WriteBinaryBlock(1, {}, "A"), host::AutomationError);
  EXPECT_EQ(port_->happened.size(), 22U);
  EXPECT_EQ(Waits().size(), 20U);
  EXPECT_EQ(port_->error_queries, 2);
}

TEST_F(InstrumentIoTest, AnUnrepeatedErrorComesOutUnchanged) {
  port_->failure = host::AutomationError(host::kObjectErrorBase + 2011, "QPort.Any", "gone", "HELP", 3);
  try {
    io_.SendCommand("A");
    FAIL();
  } catch (const host::AutomationError& error) {
    EXPECT_EQ(error.Code(), 2011);
    EXPECT_EQ(error.Source(), "QPort.Any");
    EXPECT_EQ(error.Description(), "gone");
    EXPECT_EQ(error.HelpFile(), "HELP");
    EXPECT_EQ(error.HelpContext(), 3);
  }
  EXPECT_TRUE(host_.raised.empty()) << "raised again as it is, not through the reporter";
}

TEST_F(InstrumentIoTest, ATransportWithoutBlocksFails) {
  port_->has_blocks = false;
  EXPECT_THROW(io_.ReadBinaryBlock(1, "A?"), host::AutomationError);
}

TEST_F(InstrumentIoTest, WithoutATransportEveryTransferFailsWith91) {
  io_.transport.reset();
  try {
    io_.SendCommand("A");
    FAIL();
  } catch (const host::AutomationError& error) {
    EXPECT_EQ(error.Number(), host::kNoObject);
  }
}

TEST_F(InstrumentIoTest, OnlyTheWholeNameIsTheFrontPanel) {
  for (const std::string name : {"QPort.clsgui", "QPort.clsGUI2", "clsGUI", ""}) {
    port_->error_queries = 0;
    remote_control_->SetValue(name, -1, -1);
    io_.SendCommand("A");
    EXPECT_EQ(port_->error_queries, 1) << name;
  }
  port_->error_queries = 0;
  remote_control_->SetValue(std::string("QPort.clsGUI"), -1, -1);
  io_.SendCommand("A");
  EXPECT_EQ(port_->error_queries, 0);
}

TEST_F(InstrumentIoTest, LogMessagesIsReadAsABoolean) {
  const std::vector<std::pair<host::Value, bool>> values{{std::string("-1"), true},
                                                         {std::string("0"), false},
                                                         {std::string("True"), true},
                                                         {std::string("1"), true},
                                                         {std::string("nonsense"), false},
                                                         {std::int16_t{-1}, true},
                                                         {std::int32_t{0}, false},
                                                         {true, true},
                                                         {0.0, false}};
  for (const auto& [value, logs] : values) {
    host_.log.clear();
    log_messages_->SetValue(value, -1, -1);
    io_.SendCommand("A");
    EXPECT_EQ(!host_.log.empty(), logs);
  }
}

}  // namespace
}  // namespace qkel4x
