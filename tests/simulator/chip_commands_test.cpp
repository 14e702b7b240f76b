// The simulated chip answers every command of its command set: Poll Field, Listen and Send
// with their card-mode rules, Idle with its wake-up reason, the baud rate's pseudo-response,
// the sub-frequency, filter, test-mode and sleep commands, ARC_B kept per protocol, and an
// error code, never silence, for anything else.
#include <gtest/gtest.h>

#include "simulator/chip.h"

namespace {

using sim::Air;
using sim::AirFrame;
using sim::Chip;

hex::Bytes bytes(std::string_view text) { return *hex::toBytes(hex::withoutBlanks(text)); }

// A tag that lies in the field and keeps silent: enough to load the antenna.
class SilentTag : public sim::Tag {
 public:
  explicit SilentTag(bool inField = true)
      : Tag(sim::TagSetup{"silent", Air::Iso15693, sim::Json{{"type", "silent"}, {"inField", inField}}, 0, 0, {}}) {}
  std::optional<hex::Bytes> receive(const AirFrame&) override { return std::nullopt; }
};

class ChipCommandsTest : public ::testing::Test {
 protected:
  Chip chip;
  sim::FieldContents field = sim::defaultField();

  void SetUp() override { field.antenna.detectLevel = 31; }
  std::string run(std::string_view frame) { return chip.execute(bytes(frame), field); }
  void addTag(bool inField = true) { field.tags.push_back(std::make_unique<SilentTag>(inField)); }
  // An Idle frame with these wake-up sources and detector band, the other bytes those of
  // the calibration example.
  std::string idle(std::string_view sources, std::string_view low, std::string_view high) {
    return run("070E" + std::string(sources) + "A100F8011800206060" + std::string(low) + std::string(high) + "3F01");
  }
};

TEST_F(ChipCommandsTest, EveryCommandOfTheSetAnswers) {
  run("0202 010D");
  EXPECT_EQ(run("0100").substr(0, 2), "00");
  EXPECT_EQ(run("0300"), "000100");
  EXPECT_EQ(run("0500"), "8300");
  EXPECT_EQ(run("0601 AA"), "8300");
  EXPECT_EQ(run("070E 0121003800180060600000000008"), "000101");
  EXPECT_EQ(run("0803 620100"), "000101");
  EXPECT_EQ(run("0903 680001"), "0000");
  EXPECT_EQ(run("0A01 00"), "5500");
  EXPECT_EQ(run("0B00"), "000100");
  EXPECT_EQ(run("0D00"), "0000");
  EXPECT_EQ(run("0E02 0000"), "0000");
  EXPECT_EQ(run("0F01 00"), "0000");
  EXPECT_EQ(run("55"), "5500");
}

TEST_F(ChipCommandsTest, UnknownCodesAnswerInvalidLengthNeverSilence) {
  const std::string known = "01 02 03 04 05 06 07 08 09 0A 0B 0D 0E 0F 55";
  for (int code = 0; code < 256; ++code) {
    const std::string c = hex::byte(static_cast<std::uint8_t>(code));
    if (known.find(c) != std::string::npos) continue;
    EXPECT_EQ(run(c + "00"), "8200") << c;
  }
}

TEST_F(ChipCommandsTest, AWrongLengthByteIsAnsweredNotMisread) {
  EXPECT_EQ(run("0805 620100"), "8200");
  EXPECT_EQ(run("0701 00"), "8200");
  EXPECT_EQ(run("0A02 00"), "8200");
}

TEST_F(ChipCommandsTest, PollFieldFindsNoOutsideReader) {
  EXPECT_EQ(run("0300"), "000100");
  EXPECT_EQ(run("0303 020101"), "000100");  // wait for a field: it times out
  EXPECT_EQ(run("0301 00"), "8200");
}

TEST_F(ChipCommandsTest, ListenNeedsACardProtocol) {
  EXPECT_EQ(run("0500"), "8300");
  run("0202 010D");
  EXPECT_EQ(run("0500"), "8300");
  ASSERT_EQ(run("0202 1200"), "0000");
  // Bit 3 of byte 0 off: return an error if there is no field.
  EXPECT_EQ(run("0500"), "8F00");
  ASSERT_EQ(run("0202 1408"), "0000");
  EXPECT_EQ(run("0500"), "0000");
  EXPECT_EQ(run("0501 00"), "8200");
}

TEST_F(ChipCommandsTest, SendNeedsDataAndACardProtocol) {
  EXPECT_EQ(run("0600"), "8200");
  EXPECT_EQ(run("0601 AA"), "8300");
  ASSERT_EQ(run("0202 1301"), "0000");
  EXPECT_EQ(run("0602 AABB"), "0000");
}

TEST_F(ChipCommandsTest, IdleWakesByTimeOutAndRegister62KeepsTheReason) {
  // Example "back to Ready state after time out (7 sec)".
  EXPECT_EQ(run("070E 01 21 00 38 00 18 00 60 60 00 00 00 00 08"), "000101");
  EXPECT_EQ(run("0803 620100"), "000101");
}

TEST_F(ChipCommandsTest, IdleWakesByTagDetectWhenTheReadingLeavesTheBand) {
  // No tag: the detector reads 31 (1F).
  EXPECT_EQ(Chip::detectorLevel(field), 31);
  EXPECT_EQ(idle("03", "00", "00"), "000102");  // 1F above the band 00..00
  EXPECT_EQ(idle("03", "00", "FC"), "000101");  // inside 00..FC: the time-out wakes it
  EXPECT_EQ(idle("03", "00", "1F"), "000101");
  EXPECT_EQ(idle("03", "00", "1E"), "000102");
  EXPECT_EQ(run("0803 620100"), "000102");
  // A tag in the field lowers the reading by 16, below the band 14..24.
  EXPECT_EQ(idle("0B", "14", "24"), "000101");
  addTag();
  EXPECT_EQ(Chip::detectorLevel(field), 15);
  EXPECT_EQ(idle("0B", "14", "24"), "000102");
  // A tag described in the file but lying outside the field loads nothing.
  field.tags.clear();
  addTag(false);
  EXPECT_EQ(idle("0B", "14", "24"), "000101");
}

TEST_F(ChipCommandsTest, DetectorReadingStopsAtZero) {
  for (int i = 0; i < 3; ++i) addTag();
  EXPECT_EQ(Chip::detectorLevel(field), 0);
  EXPECT_EQ(idle("03", "00", "00"), "000101");
}

TEST_F(ChipCommandsTest, IdleWithoutAutomaticSourceIsWokenByAPulse) {
  // Hibernate, woken on IRQ_IN; sleep, woken on SPI_SS.
  EXPECT_EQ(run("070E 08 04 00 04 00 18 00 00 00 00 00 00 00 00"), "000108");
  EXPECT_EQ(run("070E 10 01 00 38 00 18 00 00 60 00 00 00 00 00"), "000110");
  EXPECT_EQ(run("0803 620100"), "000110");
  // Tag detector or IRQ_IN: the reading 1F lies inside 00..FF, so IRQ_IN wakes it.
  EXPECT_EQ(idle("0A", "00", "FF"), "000108");
}

TEST_F(ChipCommandsTest, IdleTakesFourteenBytesAndSwitchesTheFieldOff) {
  EXPECT_EQ(run("0700"), "8200");
  EXPECT_EQ(run("070F 0121003800180060600000000008 00"), "8200");
  ASSERT_EQ(run("0202 010D"), "0000");
  EXPECT_EQ(chip.protocol(), 0x01);
  EXPECT_EQ(idle("01", "00", "00"), "000101");
  EXPECT_EQ(chip.protocol(), Chip::kFieldOff);
  EXPECT_EQ(run("0403 260100"), "8700");
}

TEST_F(ChipCommandsTest, BaudRateAnswersThePseudoResponse) {
  EXPECT_EQ(run("0A01 75"), "5500");
  EXPECT_EQ(run("0A00"), "8200");
}

TEST_F(ChipCommandsTest, SubFrequencyOfTheProtocolInForce) {
  EXPECT_EQ(run("0B00"), "000100");
  run("0202 010D");
  EXPECT_EQ(run("0B00"), "000120");
  run("0204 02000180");
  EXPECT_EQ(run("0B00"), "000110");
  run("0202 0451");
  EXPECT_EQ(run("0B00"), "000100");
  EXPECT_EQ(run("0B01 00"), "8200");
}

TEST_F(ChipCommandsTest, AntiCollisionFilterTakesOneTwoOrThreeCascadeLevels) {
  EXPECT_EQ(run("0D07 4400 00 04A1B2C3"), "0000");
  EXPECT_EQ(chip.antiCollisionFilter(), bytes("440000 04A1B2C3"));
  EXPECT_EQ(run("0D0B 4400 88 04A1B2C3 D4E5F6A7"), "0000");
  EXPECT_EQ(run("0D0F 4400 88 04A1B288 C3D4E5F6 A7B8C9DA"), "0000");
  EXPECT_EQ(chip.antiCollisionFilter().size(), 15u);
  EXPECT_EQ(run("0D08 4400 00 04A1B2C3 00"), "8200");
  EXPECT_EQ(chip.antiCollisionFilter().size(), 15u);
  EXPECT_EQ(run("0D00"), "0000");
  EXPECT_TRUE(chip.antiCollisionFilter().empty());
}

TEST_F(ChipCommandsTest, TestModeAndSleepModeConfirm) {
  EXPECT_EQ(run("0E02 0100"), "0000");
  EXPECT_EQ(run("0E01 01"), "8200");
  EXPECT_EQ(run("0F01 01"), "0000");
  EXPECT_EQ(run("0F02 0105"), "0000");
  EXPECT_EQ(run("0F00"), "8200");
  EXPECT_EQ(run("0F03 010500"), "8200");
}

TEST_F(ChipCommandsTest, ArcBIsKeptForEachProtocol) {
  ASSERT_EQ(run("0202 010D"), "0000");
  ASSERT_EQ(run("0904 680101 D1"), "0000");
  EXPECT_EQ(run("0803 690100"), "0001D1");
  ASSERT_EQ(run("0204 02000180"), "0000");
  EXPECT_EQ(run("0803 690100"), "0001D3");  // ISO 14443-A still has its power-on value
  ASSERT_EQ(run("0904 680101 30"), "0000");
  EXPECT_EQ(run("0803 690100"), "000130");
  ASSERT_EQ(run("0202 010D"), "0000");
  EXPECT_EQ(run("0803 690100"), "0001D1");
  EXPECT_EQ(chip.arc(Chip::kArcB), 0xD1);
  // Other analogue registers are one for all protocols.
  ASSERT_EQ(run("0904 68010755"), "0000");
  run("0204 02000180");
  EXPECT_EQ(run("0903 680107"), "0000");
  EXPECT_EQ(run("0803 690100"), "000155");
}

TEST_F(ChipCommandsTest, PowerOnForgetsTheWakeUpReasonAndTheFilter) {
  idle("01", "00", "00");
  run("0D07 4400 00 04A1B2C3");
  chip.powerOn(field);
  EXPECT_EQ(run("0803 620100"), "000100");
  EXPECT_TRUE(chip.antiCollisionFilter().empty());
}

}  // namespace
