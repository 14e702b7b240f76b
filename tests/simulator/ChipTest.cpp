// The chip's command table: registers, Protocol Select, and Send Receive routed to tags
// that answer as a test tells them.
#include <gtest/gtest.h>

#include <functional>

#include "simulator/chip.h"

namespace {

using sim::Air;
using sim::AirFrame;
using sim::Chip;
using sim::FieldContents;

hex::Bytes bytes(std::string_view text) { return *hex::toBytes(hex::withoutBlanks(text)); }

// A tag that records what reached it and answers what the test gives it.
class ScriptedTag : public sim::Tag {
 public:
  ScriptedTag(Air air, std::function<std::optional<hex::Bytes>(const AirFrame&)> answer, bool inField = true)
      : Tag(sim::TagSetup{"scripted", air, sim::Json{{"type", "scripted"}, {"inField", inField}}, 0, 0, {}}),
        answer_(std::move(answer)) {}
  std::optional<hex::Bytes> receive(const AirFrame& frame) override {
    frames.push_back(frame);
    return answer_(frame);
  }
  void fieldOff() override { ++fieldOffs; }

  std::vector<AirFrame> frames;
  int fieldOffs = 0;

 private:
  std::function<std::optional<hex::Bytes>(const AirFrame&)> answer_;
};

// The tag's bytes followed by the CRC its protocol puts behind them.
hex::Bytes withCrc(Air air, hex::Bytes frame) {
  const hex::Bytes check = sim::airCrc(air, frame.data(), frame.size());
  frame.insert(frame.end(), check.begin(), check.end());
  return frame;
}

class ChipTest : public ::testing::Test {
 protected:
  Chip chip;
  FieldContents field = sim::defaultField();

  std::string run(std::string_view frame) { return chip.execute(bytes(frame), field); }

  ScriptedTag& addTag(Air air, std::function<std::optional<hex::Bytes>(const AirFrame&)> answer, bool inField = true) {
    auto tag = std::make_unique<ScriptedTag>(air, std::move(answer), inField);
    ScriptedTag& ref = *tag;
    field.tags.push_back(std::move(tag));
    return ref;
  }
};

TEST_F(ChipTest, EchoAnswers5500WithoutLengthByte) { EXPECT_EQ(run("55"), "5500"); }

TEST_F(ChipTest, MalformedOrUnknownCommandsAnswerInvalidLength) {
  EXPECT_EQ(chip.execute({}, field), "8200");
  EXPECT_EQ(run("01"), "8200");
  EXPECT_EQ(run("0101"), "8200");        // length 1, no data
  EXPECT_EQ(run("010000"), "8200");      // length 0, one byte of data
  EXPECT_EQ(run("0100 00"), "8200");
  EXPECT_EQ(run("0C00"), "8200");        // 0C is no command of the chip
  EXPECT_EQ(run("070D08040004001800000000000000"), "8200");  // Idle takes fourteen bytes
  EXPECT_EQ(run("FF00"), "8200");
}

TEST_F(ChipTest, IdnWithDataIsRefused) { EXPECT_EQ(run("010100"), "8200"); }

TEST_F(ChipTest, ProtocolSelectKeepsProtocolAndParameters) {
  EXPECT_EQ(run("0204 02000180"), "0000");
  EXPECT_EQ(chip.protocol(), 0x02);
  EXPECT_EQ(chip.protocolParameters(), bytes("000180"));
  EXPECT_EQ(run("0202 0451"), "0000");
  EXPECT_EQ(chip.protocol(), 0x04);
  EXPECT_EQ(chip.protocolParameters(), bytes("51"));
}

TEST_F(ChipTest, ProtocolSelectRefusesUnknownProtocolsAndWrongParameterCounts) {
  EXPECT_EQ(run("0202 0501"), "8300");
  EXPECT_EQ(run("0202 FF00"), "8300");
  EXPECT_EQ(run("0200"), "8200");
  EXPECT_EQ(run("0201 01"), "8200");          // ISO 15693 needs its parameter byte
  EXPECT_EQ(run("0203 010D00"), "8200");
  EXPECT_EQ(run("0203 020001"), "8200");      // ISO 14443-A: one or three parameter bytes
  EXPECT_EQ(run("0204 04510000"), "8200");
  EXPECT_EQ(chip.protocol(), Chip::kFieldOff);
}

TEST_F(ChipTest, FieldOffSelectionSwitchesTheTagsOff) {
  ScriptedTag& tag = addTag(Air::Iso15693, [](const AirFrame&) { return std::nullopt; });
  ASSERT_EQ(run("0202 010D"), "0000");
  EXPECT_EQ(run("0202 0000"), "0000");
  EXPECT_EQ(chip.protocol(), Chip::kFieldOff);
  EXPECT_EQ(tag.fieldOffs, 1);
  chip.fieldOff(field);
  EXPECT_EQ(tag.fieldOffs, 2);
}

TEST_F(ChipTest, RegistersStartAtTheirPowerOnValues) {
  EXPECT_EQ(run("0803 620100"), "000100");
  EXPECT_EQ(run("0803 680100"), "000100");
  EXPECT_EQ(run("0803 690100"), "000100");  // index 00: ARC_A
  ASSERT_EQ(run("0903 680001"), "0000");
  EXPECT_EQ(run("0803 690100"), "0001D3");  // ARC_B
}

TEST_F(ChipTest, WriteWithIncrementFlagSelectsArcBAndWritesItThroughRegister69) {
  EXPECT_EQ(run("0904 680101D1"), "0000");
  EXPECT_EQ(chip.arc(Chip::kArcB), 0xD1);
  EXPECT_EQ(chip.readRegister(0x68), 0x01);
  EXPECT_EQ(run("0803 690100"), "0001D1");
  // Another index, then back: ARC_B kept its value.
  EXPECT_EQ(run("0904 68010700"), "0000");
  EXPECT_EQ(run("0803 690100"), "000100");
  EXPECT_EQ(run("0903 680001"), "0000");
  EXPECT_EQ(run("0803 690100"), "0001D1");
}

TEST_F(ChipTest, WriteWithoutIncrementFlagPutsEveryByteAtTheSameAddress) {
  EXPECT_EQ(run("0905 30 00 111213"), "0000");
  EXPECT_EQ(run("0803 300300"), "00031300" "00");
  EXPECT_EQ(run("0905 30 01 111213"), "0000");
  EXPECT_EQ(run("0803 300300"), "0003111213");
}

TEST_F(ChipTest, RegisterAccessOutsideTheFileIsRefused) {
  EXPECT_EQ(run("0803 FF0200"), "8200");
  EXPECT_EQ(run("0802 6201"), "8200");
  EXPECT_EQ(run("0904 FF01 0102"), "8200");
  EXPECT_EQ(run("0902 6201"), "8200");
  EXPECT_EQ(run("0903 FF00 01"), "0000");
  EXPECT_EQ(run("0803 FF0100"), "000101");
}

TEST_F(ChipTest, PowerOnClearsRegistersArcAndProtocol) {
  run("0904 680101D1");
  run("0202 010D");
  chip.powerOn(field);
  EXPECT_EQ(chip.arc(Chip::kArcB), 0xD3);
  EXPECT_EQ(chip.readRegister(0x68), 0x00);
  EXPECT_EQ(chip.protocol(), Chip::kFieldOff);
}

TEST_F(ChipTest, SendRecvWithoutReaderProtocolAnswersNoTag) {
  ScriptedTag& tag = addTag(Air::Iso15693, [](const AirFrame&) { return hex::Bytes{0x00}; });
  EXPECT_EQ(run("0403 260100"), "8700");
  ASSERT_EQ(run("0202 1200"), "0000");  // card emulation: no reader field
  EXPECT_EQ(run("0403 260100"), "8700");
  EXPECT_TRUE(tag.frames.empty());
}

TEST_F(ChipTest, SendRecvWithoutDataIsRefused) {
  ASSERT_EQ(run("0202 010D"), "0000");
  EXPECT_EQ(run("0400"), "8200");
}

TEST_F(ChipTest, Iso15693FrameGetsTheReaderCrcAndTheAnswerItsTail) {
  const hex::Bytes reply = withCrc(Air::Iso15693, bytes("00 00 78563412002A02E0"));
  ScriptedTag& tag = addTag(Air::Iso15693, [&](const AirFrame&) { return reply; });
  ASSERT_EQ(run("0202 010D"), "0000");  // bit 0 of 0D: append CRC
  const std::string answer = run("0403 260100");
  EXPECT_EQ(answer, "800D" + hex::fromBytes(reply) + "00");
  ASSERT_EQ(tag.frames.size(), 1u);
  EXPECT_EQ(tag.frames[0].bytes, withCrc(Air::Iso15693, bytes("260100")));
  EXPECT_EQ(tag.frames[0].lastByteBits, 8);
}

TEST_F(ChipTest, WithoutAppendCrcTheFrameGoesOutAsGiven) {
  ScriptedTag& tag = addTag(Air::Iso15693, [](const AirFrame&) { return std::nullopt; });
  ASSERT_EQ(run("0202 010C"), "0000");
  EXPECT_EQ(run("0403 260100"), "8700");
  ASSERT_EQ(tag.frames.size(), 1u);
  EXPECT_EQ(tag.frames[0].bytes, bytes("260100"));
}

TEST_F(ChipTest, AnswerWithABadCrcIsFlaggedInTheLastByte) {
  addTag(Air::Iso15693, [](const AirFrame&) { return bytes("00 AA BBBB"); });
  ASSERT_EQ(run("0202 010D"), "0000");
  EXPECT_EQ(run("0403 260100"), "800500AABBBB02");
}

TEST_F(ChipTest, Iso14443AFrameEndsInTheTransmissionFlag) {
  ScriptedTag& tag = addTag(Air::Iso14443A, [](const AirFrame& f) -> std::optional<hex::Bytes> {
    if (f.bytes == hex::Bytes{0x26}) return withCrc(Air::Iso14443A, {0x44, 0x00});
    return std::nullopt;
  });
  ASSERT_EQ(run("0204 02000180"), "0000");
  const hex::Bytes reply = withCrc(Air::Iso14443A, {0x44, 0x00});
  // The ISO 14443-A tail: eight bits in the first byte, no error, no collision.
  EXPECT_EQ(run("0402 2607"), "8007" + hex::fromBytes(reply) + "080000");
  ASSERT_EQ(tag.frames.size(), 1u);
  EXPECT_EQ(tag.frames[0].lastByteBits, 7);
  // Flag 28: eight bits and the CRC_A appended.
  EXPECT_EQ(run("0407 9370 04A1B29F 28"), "8700");
  ASSERT_EQ(tag.frames.size(), 2u);
  EXPECT_EQ(tag.frames[1].bytes, withCrc(Air::Iso14443A, bytes("937004A1B29F")));
  EXPECT_EQ(tag.frames[1].lastByteBits, 8);
}

TEST_F(ChipTest, OnlyTagsOfTheSelectedAirInTheFieldAreAsked) {
  ScriptedTag& a = addTag(Air::Iso14443A, [](const AirFrame&) { return std::nullopt; });
  ScriptedTag& out = addTag(Air::Iso14443B, [](const AirFrame&) { return std::nullopt; }, false);
  ScriptedTag& b = addTag(Air::Iso14443B, [](const AirFrame&) { return std::nullopt; });
  ASSERT_EQ(run("0204 03010180"), "0000");
  EXPECT_EQ(run("0403 050000"), "8700");
  EXPECT_TRUE(a.frames.empty());
  EXPECT_TRUE(out.frames.empty());
  ASSERT_EQ(b.frames.size(), 1u);
  EXPECT_EQ(b.frames[0].bytes, withCrc(Air::Iso14443B, bytes("050000")));
}

TEST_F(ChipTest, FelicaCrcTravelsHighByteFirst) {
  // JIS X 6319-4: CRC-16 0x1021 from 0; "123456789" gives 31C3.
  const std::string digits = "123456789";
  const hex::Bytes check = sim::airCrc(Air::Felica, reinterpret_cast<const std::uint8_t*>(digits.data()), digits.size());
  EXPECT_EQ(check, (hex::Bytes{0x31, 0xC3}));
}

TEST_F(ChipTest, SameAnswerFromTwoTagsIsOneAnswer) {
  const hex::Bytes reply = withCrc(Air::Iso14443B, bytes("50A1B2C3D4000000000081 71"));
  addTag(Air::Iso14443B, [&](const AirFrame&) { return reply; });
  addTag(Air::Iso14443B, [&](const AirFrame&) { return reply; });
  ASSERT_EQ(run("0202 0301"), "0000");
  EXPECT_EQ(run("0403 050000"), "80" + hex::byte(static_cast<std::uint8_t>(reply.size() + 1)) + hex::fromBytes(reply) + "00");
}

TEST_F(ChipTest, DifferentAnswersAtOnceAreACommunicationError) {
  addTag(Air::Iso14443B, [](const AirFrame&) { return withCrc(Air::Iso14443B, {0x01}); });
  addTag(Air::Iso14443B, [](const AirFrame&) { return withCrc(Air::Iso14443B, {0x02}); });
  ASSERT_EQ(run("0202 0301"), "0000");
  EXPECT_EQ(run("0403 050000"), "8600");
}

TEST_F(ChipTest, AnswerTooLongForTheBufferIsAnOverflow) {
  addTag(Air::Iso15693, [](const AirFrame&) { return hex::Bytes(125, 0x11); });
  addTag(Air::Iso15693, [](const AirFrame&) { return std::nullopt; });
  ASSERT_EQ(run("0202 010D"), "0000");
  EXPECT_EQ(run("0403 260100"), "8900");
  field.tags.erase(field.tags.begin());
  addTag(Air::Iso15693, [](const AirFrame&) { return hex::Bytes(124, 0x11); });
  const std::string answer = run("0403 260100");
  EXPECT_EQ(answer.size(), 254u);
  EXPECT_EQ(answer.substr(0, 4), "807D");
}

}  // namespace
