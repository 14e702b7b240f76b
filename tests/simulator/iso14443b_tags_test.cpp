// The simulated ISO 14443-B cards through the chip's Send Receive: the standard card's
// REQB, WUPB, slots, AFI, ATQB, ATTRIB, HLTB and DESELECT with its states (ISO/IEC
// 14443-3), and the PDX51 to PDY55 family's inventory, selection, UID and block memory;
// CRC_B on every frame, the chip's tail byte, collisions.
#include <gtest/gtest.h>

#include "SimSupport.h"
#include "simulator/chip.h"
#include "simulator/fieldfile.h"
#include "simulator/tags/iso14443b.h"
#include "simulator/tags/pdyfamily.h"

namespace {

using sim::Iso14443BTag;
using sim::PdyTag;

hex::Bytes bytes(std::string_view text) { return *hex::toBytes(hex::withoutBlanks(text)); }

// What the chip reports for a card's frame: "80", length, the frame, its CRC_B (computed
// here by the standard's own bitwise routine), the tail "00".
std::string cardAnswer(const std::string& frame, const std::string& tail = "00") {
  const hex::Bytes b = bytes(frame);
  const std::uint16_t crc = simtest::referenceCrc13239(std::string(b.begin(), b.end()));
  return "80" + hex::byte(static_cast<std::uint8_t>(b.size() + 3)) + hex::upper(frame) +
         hex::byte(static_cast<std::uint8_t>(crc & 0xFF)) + hex::byte(static_cast<std::uint8_t>(crc >> 8)) + tail;
}

class ChipWithField : public ::testing::Test {
 protected:
  sim::Chip chip;
  sim::FieldContents field;

  void load(const char* json) {
    sim::ParseOutcome out = sim::parseField(json, "field text");
    ASSERT_EQ(out.error, "");
    field = std::move(out.contents);
    // The panel's selection: ISO 14443-B, parameter 01 ("append CRC"), 01, 80.
    ASSERT_EQ(chip.execute(bytes("0204 03010180"), field), "0000");
  }
  std::string send(const std::string& frame) {
    const hex::Bytes f = bytes(frame);
    hex::Bytes command{0x04, static_cast<std::uint8_t>(f.size())};
    command.insert(command.end(), f.begin(), f.end());
    return chip.execute(command, field);
  }
};

// --- the standard card -------------------------------------------------------------------------

constexpr const char* kCard = R"({ "tags": [
  { "type": "iso14443b", "pupi": "A1B2C3D4", "applicationData": "11223344", "protocolInfo": "008171", "afi": "12" }
]})";
const std::string kAtqb = "50A1B2C3D4" "11223344" "008171";

class StandardCardTest : public ChipWithField {
 protected:
  void SetUp() override { load(kCard); }
  Iso14443BTag& card() { return dynamic_cast<Iso14443BTag&>(*field.tags[0]); }
};

TEST_F(StandardCardTest, LoaderMakesAStandardCardInIdle) {
  EXPECT_EQ(card().pupi(), bytes("A1B2C3D4"));
  EXPECT_EQ(card().state(), Iso14443BTag::State::Idle);
}

TEST_F(StandardCardTest, ReqbWithOneSlotAnswersTheFullAtqb) {
  const std::string answer = send("0500F0");
  EXPECT_EQ(answer, cardAnswer(kAtqb));
  // Fifteen bytes: 50, PUPI, application data, protocol info, CRC_B and the tail.
  EXPECT_EQ(answer.substr(0, 6), "800F50");
  EXPECT_EQ(card().state(), Iso14443BTag::State::ReadyDeclared);
}

TEST_F(StandardCardTest, AfiReachesTheCardByFamilyAndSubFamily) {
  EXPECT_EQ(send("0512F0"), cardAnswer(kAtqb));
  EXPECT_EQ(send("0510F0"), cardAnswer(kAtqb));  // family 1, any sub-family
  EXPECT_EQ(send("0502F0"), cardAnswer(kAtqb));  // any family, sub-family 2
  EXPECT_EQ(send("0513F0"), "8700");
  EXPECT_EQ(send("0520F0"), "8700");
}

TEST_F(StandardCardTest, ReservedSlotCodesAreNotAnswered) {
  EXPECT_EQ(send("0500F5"), "8700");
  EXPECT_EQ(send("0500FD"), "8700");
  EXPECT_EQ(send("0500F7"), "8700");
}

TEST_F(StandardCardTest, WithSixteenSlotsTheCardAnswersInTheSlotItDrew) {
  int answers = 0;
  int answeredIn = 0;
  if (send("0500F4") == cardAnswer(kAtqb)) {
    ++answers;
    answeredIn = 1;
  }
  // Slot-MARKER n: (n - 1) in the high nibble, 5 in the low one.
  for (int slot = 2; slot <= 16; ++slot) {
    const std::string marker = hex::byte(static_cast<std::uint8_t>(((slot - 1) << 4) | 0x05));
    const std::string answer = send(marker);
    if (answer == cardAnswer(kAtqb)) {
      ++answers;
      answeredIn = slot;
    } else {
      EXPECT_EQ(answer, "8700") << "slot " << slot;
    }
  }
  EXPECT_EQ(answers, 1);
  EXPECT_EQ(answeredIn, card().slot());
  EXPECT_EQ(card().state(), Iso14443BTag::State::ReadyDeclared);
}

TEST_F(StandardCardTest, AttribWithThePupiActivatesAndAnswersMbliAndCid) {
  send("0500F0");
  // Param 1 to 4: 00, 07 (frame size and bit rates), 01 (ISO 14443-4), 03 (CID).
  EXPECT_EQ(send("1D" "A1B2C3D4" "00070103"), cardAnswer("03"));
  EXPECT_EQ(card().state(), Iso14443BTag::State::Active);
  EXPECT_EQ(card().cid(), 3);
  // An active card no longer answers REQB or WUPB.
  EXPECT_EQ(send("0500F0"), "8700");
  EXPECT_EQ(send("0500F8"), "8700");
}

TEST_F(StandardCardTest, AttribNeedsThePupiAndAnAnsweredRequest) {
  EXPECT_EQ(send("1D" "A1B2C3D4" "00070100"), "8700");  // still idle
  send("0500F0");
  EXPECT_EQ(send("1D" "00000000" "00070100"), "8700");
  EXPECT_EQ(card().state(), Iso14443BTag::State::ReadyDeclared);
  EXPECT_EQ(send("1D" "A1B2C3D4" "00070100"), cardAnswer("00"));
}

TEST_F(StandardCardTest, ACardWithoutCidAnswersCidZero) {
  load(R"({ "tags": [ { "type": "iso14443b", "pupi": "01020304", "protocolInfo": "008170" } ]})");
  send("0500F0");
  EXPECT_EQ(send("1D" "01020304" "00070105"), cardAnswer("00"));
}

TEST_F(StandardCardTest, HltbHaltsAndOnlyWupbWakes) {
  send("0500F0");
  EXPECT_EQ(send("50" "A1B2C3D4"), cardAnswer("00"));
  EXPECT_EQ(card().state(), Iso14443BTag::State::Halt);
  EXPECT_EQ(send("0500F0"), "8700");
  EXPECT_EQ(send("0500F8"), cardAnswer(kAtqb));
  EXPECT_EQ(card().state(), Iso14443BTag::State::ReadyDeclared);
}

TEST_F(StandardCardTest, DeselectEndsTheActivationInHalt) {
  send("0500F0");
  send("1D" "A1B2C3D4" "00070100");
  EXPECT_EQ(send("C2"), cardAnswer("C2"));
  EXPECT_EQ(card().state(), Iso14443BTag::State::Halt);
}

TEST_F(StandardCardTest, FieldOffReturnsTheCardToIdle) {
  send("0500F0");
  send("50" "A1B2C3D4");
  chip.execute(bytes("0201 00"), field);
  EXPECT_EQ(card().state(), Iso14443BTag::State::Idle);
  ASSERT_EQ(chip.execute(bytes("0204 03010180"), field), "0000");
  EXPECT_EQ(send("0500F0"), cardAnswer(kAtqb));
}

TEST_F(StandardCardTest, AFrameWithoutCrcIsNotHeard) {
  // Parameter 00: the chip sends the frame without CRC_B.
  ASSERT_EQ(chip.execute(bytes("0202 0300"), field), "0000");
  EXPECT_EQ(send("0500F0"), "8700");
  EXPECT_EQ(card().state(), Iso14443BTag::State::Idle);
}

TEST_F(StandardCardTest, TwoCardsAnsweringAtOnceAreACommunicationError) {
  load(R"({ "tags": [ { "type": "iso14443b", "pupi": "A1B2C3D4" }, { "type": "iso14443b", "pupi": "0A0B0C0D" } ]})");
  EXPECT_EQ(send("0500F0"), "8600");
}

// --- the family ----------------------------------------------------------------------------------

constexpr const char* kFamily = R"({ "tags": [
  { "type": "pdy", "product": "PDX54", "uid": "D002330012345678", "chipId": "57",
    "memory": "0A0B0C0D 11223344 55667788", "lockedBlocks": [2] }
]})";
const std::string kUidOnAir = "78563412003302D0";

class FamilyTagTest : public ChipWithField {
 protected:
  void SetUp() override { load(kFamily); }
  PdyTag& tag(int i = 0) { return dynamic_cast<PdyTag&>(*field.tags[static_cast<std::size_t>(i)]); }
  void selectIt() {
    ASSERT_EQ(send("0600"), cardAnswer("57"));
    ASSERT_EQ(send("0E57"), cardAnswer("57"));
  }
};

TEST_F(FamilyTagTest, InitiateAnswersTheChipIdentifierAndEntersTheInventory) {
  EXPECT_EQ(tag().state(), PdyTag::State::Ready);
  EXPECT_EQ(send("0C"), "8700");  // Reset to Inventory means nothing to a ready tag
  EXPECT_EQ(send("0600"), cardAnswer("57"));
  EXPECT_EQ(tag().state(), PdyTag::State::Inventory);
  EXPECT_EQ(tag().slot(), 7);
}

TEST_F(FamilyTagTest, SlotMarkerAnswersOnlyInTheSlotOfTheLowBits) {
  send("0600");
  for (int slot = 0; slot <= 15; ++slot) {
    const std::string marker = hex::byte(static_cast<std::uint8_t>(16 * slot + 6));
    EXPECT_EQ(send(marker), slot == 7 ? cardAnswer("57") : std::string("8700")) << "slot " << slot;
  }
}

TEST_F(FamilyTagTest, Pcall16AnswersInSlotZeroOnly) {
  send("0600");
  EXPECT_EQ(send("0604"), "8700");  // 57 lies in slot 7
  load(R"({ "tags": [ { "type": "pdy", "uid": "D002000000000001", "chipId": "A0" } ]})");
  EXPECT_EQ(send("0604"), "8700");  // not yet in the inventory
  send("0600");
  EXPECT_EQ(send("0604"), cardAnswer("A0"));
}

TEST_F(FamilyTagTest, SelectGetUidReadAndWrite) {
  selectIt();
  EXPECT_EQ(tag().state(), PdyTag::State::Selected);
  EXPECT_EQ(send("0B"), cardAnswer(kUidOnAir));
  EXPECT_EQ(send("0801"), cardAnswer("11223344"));
  // A write is never answered; the block changes.
  EXPECT_EQ(send("0905" "DEADBEEF"), "8700");
  EXPECT_EQ(send("0805"), cardAnswer("DEADBEEF"));
  const sim::Json dumped = tag().toJson();
  EXPECT_EQ(dumped["memory"].get<std::string>().substr(0, 48), "0A0B0C0D" "11223344" "55667788" "00000000" "00000000"
                                                               "DEADBEEF");
}

TEST_F(FamilyTagTest, ALockedBlockKeepsItsBytes) {
  selectIt();
  send("0902" "00000000");
  EXPECT_EQ(send("0802"), cardAnswer("55667788"));
}

TEST_F(FamilyTagTest, MemoryEndsWithTheProduct) {
  load(R"({ "tags": [ { "type": "pdy", "product": "PDX51", "uid": "D002000000000001", "chipId": "01" } ]})");
  EXPECT_EQ(tag().usableBlocks(), 16);
  send("0600");
  send("0E01");
  EXPECT_EQ(send("080F"), cardAnswer("00000000"));
  EXPECT_EQ(send("0810"), "8700");
  EXPECT_EQ(send("0910" "01020304"), "8700");
}

TEST_F(FamilyTagTest, CommandsOfTheSelectedStateNeedTheSelection) {
  send("0600");
  EXPECT_EQ(send("0B"), "8700");
  EXPECT_EQ(send("0800"), "8700");
  EXPECT_EQ(send("0E58"), "8700");  // another identifier: nothing happens
  EXPECT_EQ(tag().state(), PdyTag::State::Inventory);
}

TEST_F(FamilyTagTest, AnotherSelectDeselectsAndItsOwnSelectsAgain) {
  selectIt();
  EXPECT_EQ(send("0E12"), "8700");
  EXPECT_EQ(tag().state(), PdyTag::State::Deselected);
  EXPECT_EQ(send("0800"), "8700");
  EXPECT_EQ(send("0E57"), cardAnswer("57"));
  EXPECT_EQ(send("0800"), cardAnswer("0A0B0C0D"));
}

TEST_F(FamilyTagTest, ResetToInventoryAndCompletion) {
  selectIt();
  EXPECT_EQ(send("0C"), "8700");
  EXPECT_EQ(tag().state(), PdyTag::State::Inventory);
  EXPECT_EQ(send("0E57"), cardAnswer("57"));
  EXPECT_EQ(send("0F"), "8700");
  EXPECT_EQ(tag().state(), PdyTag::State::Deactivated);
  // Deactivated until the field goes off.
  EXPECT_EQ(send("0600"), "8700");
  EXPECT_EQ(send("0E57"), "8700");
  chip.execute(bytes("0201 00"), field);
  ASSERT_EQ(chip.execute(bytes("0204 03010180"), field), "0000");
  EXPECT_EQ(send("0600"), cardAnswer("57"));
}

TEST_F(FamilyTagTest, TwoTagsInOneSlotCollideAndTwoSlotsDoNot) {
  load(R"({ "tags": [
    { "type": "pdy", "uid": "D002000000000001", "chipId": "32" },
    { "type": "pdy", "uid": "D002000000000002", "chipId": "A9" },
    { "type": "pdy", "uid": "D002000000000003", "chipId": "C9" } ]})");
  EXPECT_EQ(send("0600"), "8600");  // everyone answers Initiate at once
  EXPECT_EQ(send("26"), cardAnswer("32"));
  EXPECT_EQ(send("96"), "8600");    // A9 and C9 share slot 9
  EXPECT_EQ(send("0EA9"), cardAnswer("A9"));
  EXPECT_EQ(send("0B"), cardAnswer("02000000000002D0"));
}

TEST_F(FamilyTagTest, WithoutAFixedIdentifierTheDrawsRepeatFromTheUid) {
  const char* json = R"({ "tags": [ { "type": "pdy", "uid": "D002AABBCCDDEEFF" } ]})";
  load(json);
  const std::string first = send("0600");
  const std::uint8_t id = tag().chipId();
  EXPECT_EQ(first, cardAnswer(hex::byte(id)));
  if (tag().slot() != 0) EXPECT_EQ(send(hex::byte(static_cast<std::uint8_t>(16 * tag().slot() + 6))), first);
  load(json);
  EXPECT_EQ(send("0600"), first);
}

TEST_F(FamilyTagTest, TheStandardCardAndTheFamilyIgnoreEachOthersFrames) {
  load(R"({ "tags": [
    { "type": "iso14443b", "pupi": "A1B2C3D4" },
    { "type": "pdy", "uid": "D002000000000001", "chipId": "57" } ]})");
  EXPECT_EQ(send("0500F0"), cardAnswer("50A1B2C3D4" "00000000" "008171"));
  EXPECT_EQ(send("0600"), cardAnswer("57"));
  EXPECT_EQ(send("76"), cardAnswer("57"));
}

}  // namespace
