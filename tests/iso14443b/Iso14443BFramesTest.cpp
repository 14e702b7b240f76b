// The ISO 14443-B panel's knowledge without its window: REQB, WUPB and ATTRIB frames and
// labels, the family's frames, the slot inventory's cells and the block read and write.
#include <gtest/gtest.h>

#include "iso14443b/Iso14443BFrames.h"

using namespace iso14443b;

namespace {
// An ATQB as the simulated card answers it: 50, PUPI, application data, protocol info,
// CRC_B, tail.
const std::string kAtqbAnswer = "800F" "50" "A1B2C3D4" "11223344" "008171" "9C3E" "00";
}  // namespace

// --- REQB, WUPB, ATTRIB --------------------------------------------------------------------

TEST(Iso14443BFrames, NFromTheThreeBoxesWithIndexTwoHigh) {
  EXPECT_EQ(slotParameter({"1", "0", "1"}), 5);
  EXPECT_EQ(slotParameter({"0", "0", "1"}), 4);
  EXPECT_EQ(slotParameter({"1", "0", "0"}), 1);
  EXPECT_EQ(slotParameter({"0", "0", "0"}), 0);
  EXPECT_EQ(slotParameter({"", "x", "1"}), 4);  // anything but 1 counts 0
}

TEST(Iso14443BFrames, NFiveGivesF5ForReqbAndFdForWupb) {
  EXPECT_EQ(reqbFrame("00", 5), "0500F5");
  EXPECT_EQ(wupbFrame("00", 5), "0500FD");
}

TEST(Iso14443BFrames, DefaultReqbIs0500F0) {
  EXPECT_EQ(reqbFrame("00", slotParameter({"0", "0", "0"})), "0500F0");
  EXPECT_EQ(wupbFrame("00", 0), "0500F8");
  EXPECT_EQ(reqbFrame("12", 7), "0512F7");
  EXPECT_EQ(wupbFrame("", 7), "05FF");  // the AFI box as it stands
}

TEST(Iso14443BFrames, LabelsOfAGoodAtqb) {
  const ReqbLabels l = reqbLabels(kAtqbAnswer);
  EXPECT_EQ(l.answer, "Answer : 50A1B2C3D411223344008171" "9C3E00");
  EXPECT_EQ(l.firstByte, "First Byte : 50");
  EXPECT_EQ(l.pupi, "Pupi : A1B2C3D4");
  EXPECT_EQ(l.applicationData, "Application data : 11223344");
  // Eight characters: the protocol info and the first CRC byte; the CRC starts behind.
  EXPECT_EQ(l.protocolInfo, "Protocol Info : 0081719C");
  EXPECT_EQ(l.crc, "Crc : 3E00");
  EXPECT_EQ(pupiOf(kAtqbAnswer), "A1B2C3D4");
}

TEST(Iso14443BFrames, AnswerLabelTakesThirtyTwoCharacters) {
  const std::string longer = "8011" "50A1B2C3D41122334400817155667788" "9C3E00";
  EXPECT_EQ(reqbLabels(longer).answer, "Answer : 50A1B2C3D41122334400817155667788");
}

TEST(Iso14443BFrames, AFirstByteOtherThan50IsShownWithoutComplaint) {
  const ReqbLabels l = reqbLabels("800F" "1D" "A1B2C3D4" "11223344" "008171" "9C3E" "00");
  EXPECT_EQ(l.firstByte, "First Byte : 1D");
  EXPECT_EQ(l.pupi, "Pupi : A1B2C3D4");
}

TEST(Iso14443BFrames, BadAnswersLeaveTheCaptionsBare) {
  const ReqbLabels bare;
  EXPECT_EQ(bare.answer, "Answer : ");
  EXPECT_EQ(bare.firstByte, "First Byte : ");
  EXPECT_EQ(bare.pupi, "Pupi : ");
  EXPECT_EQ(bare.applicationData, "Application data : ");
  EXPECT_EQ(bare.protocolInfo, "Protocol Info : ");
  EXPECT_EQ(bare.crc, "Crc : ");
  EXPECT_EQ(reqbLabels("8700"), bare);
  EXPECT_EQ(reqbLabels("8600"), bare);
  // An "80" whose tail flags an error is a failure too.
  EXPECT_EQ(reqbLabels("800F" "50A1B2C3D411223344008171" "9C3E" "02"), bare);
}

TEST(Iso14443BFrames, GoodAnswerNeeds80AtTheStartAnd00AtTheEnd) {
  EXPECT_TRUE(goodAnswer(kAtqbAnswer));
  EXPECT_TRUE(goodAnswer("8000"));
  EXPECT_FALSE(goodAnswer("80035701"));
  EXPECT_FALSE(goodAnswer("80"));
  EXPECT_FALSE(goodAnswer("9000"));
  EXPECT_FALSE(goodAnswer(""));
}

TEST(Iso14443BFrames, AttribFrameWithTheDefaults) {
  EXPECT_EQ(attribFrame(AttribFields{}), "1D" "00000000" "00" "07" "01" "00");
  AttribFields f;
  f.pupi = "A1B2C3D4";
  f.cid = "3";  // no check of the lengths
  EXPECT_EQ(attribFrame(f), "1DA1B2C3D40007013");
}

TEST(Iso14443BFrames, AttribLabelsSplitMbliAndCidAndShowOneCrcByte) {
  const AttribLabels l = attribLabels("8004" "03" "C1D2" "00");
  EXPECT_EQ(l.mbliCid, "MBLI(4 bits) CID(4 bits) : 0 3");
  EXPECT_EQ(l.crc, "CRC : C1");
  const AttribLabels bare;
  EXPECT_EQ(bare.mbliCid, "MBLI(4 bits) CID(4 bits) : ");
  EXPECT_EQ(bare.crc, "CRC : ");
  EXPECT_EQ(attribLabels("8700"), bare);
}

TEST(Iso14443BFrames, BoxesOnLeaving) {
  EXPECT_EQ(binaryBoxOnLeave(""), "0");
  EXPECT_EQ(binaryBoxOnLeave("1"), "1");
  EXPECT_EQ(binaryBoxOnLeave("0"), "0");
  EXPECT_EQ(binaryBoxOnLeave("3"), "1");   // pasted: the lowest bit of its hexadecimal value
  EXPECT_EQ(binaryBoxOnLeave("A"), "0");
  EXPECT_EQ(binaryBoxOnLeave("11"), "1");
  EXPECT_EQ(hexBoxOnLeave("7", 2), "07");
  EXPECT_EQ(hexBoxOnLeave("", 2), "00");
  EXPECT_EQ(hexBoxOnLeave("ab", 2), "AB");
  EXPECT_EQ(hexBoxOnLeave("1A2B", 8), "00001A2B");
  EXPECT_EQ(hexBoxOnLeave("FFFFFFFF", 8), "FFFFFFFF");
}

// --- the family's commands ---------------------------------------------------------------------

TEST(Iso14443BFrames, FamilyTableHasEveryCommandOnce) {
  const auto& rows = familyCommands();
  ASSERT_EQ(rows.size(), 7u);
  for (std::size_t i = 0; i < rows.size(); ++i)
    for (std::size_t j = i + 1; j < rows.size(); ++j) {
      EXPECT_NE(rows[i].command, rows[j].command);
      EXPECT_STRNE(rows[i].control, rows[j].control);
    }
  EXPECT_STREQ(familyRow(FamilyCommand::Initiate).frame, "0600");
  EXPECT_STREQ(familyRow(FamilyCommand::Initiate).title, "INITIATE");
  EXPECT_STREQ(familyRow(FamilyCommand::Pcall16).frame, "0604");
  EXPECT_STREQ(familyRow(FamilyCommand::Pcall16).title, "PCALL16");
  EXPECT_STREQ(familyRow(FamilyCommand::SlotMarker).caption, "Slot Marker (SN)");
  EXPECT_STREQ(familyRow(FamilyCommand::SlotMarker).title, "SLOT MARKER");
  EXPECT_STREQ(familyRow(FamilyCommand::Select).caption, "Select(Chip_Id)");
  EXPECT_STREQ(familyRow(FamilyCommand::Completion).frame, "0F");
  EXPECT_STREQ(familyRow(FamilyCommand::ResetToInventory).frame, "0C");
  EXPECT_STREQ(familyRow(FamilyCommand::ResetToInventory).title, "RESET TO INVENTORY");
  EXPECT_STREQ(familyRow(FamilyCommand::GetUid).frame, "0B");
  EXPECT_STREQ(familyRow(FamilyCommand::GetUid).title, "GET UID");
}

TEST(Iso14443BFrames, SlotMarkerFrames) {
  EXPECT_EQ(slotMarkerFrame(slotNumber({"0", "0", "0", "0"})), "06");
  EXPECT_EQ(slotMarkerFrame(slotNumber({"1", "0", "1", "0"})), "56");
  EXPECT_EQ(slotMarkerFrame(slotNumber({"1", "1", "1", "1"})), "F6");
  EXPECT_EQ(slotNumber({"0", "0", "0", "1"}), 8);  // index 3 is the high bit
}

TEST(Iso14443BFrames, SelectWithAnEmptyChipIdIs0EAlone) {
  EXPECT_EQ(selectFrame(""), "0E");
  EXPECT_EQ(selectFrame("57"), "0E57");
}

TEST(Iso14443BFrames, InitiateReadsTheChipIdAtFive) { EXPECT_EQ(chipIdOf("80035712AB00"), "57"); }

TEST(Iso14443BFrames, GetUidReversesTheBytes) {
  EXPECT_EQ(reversedUid("800B" "78563412003302D0" "1234" "00"), "D002330012345678");
}

TEST(Iso14443BFrames, GetUidOfAShortAnswerGivesWhatThereIs) {
  // Three tag bytes, CRC and tail: positions 19 to 15 lie past the end.
  EXPECT_EQ(reversedUid("8006" "AABBCC" "1234" "00"), "003412CCBBAA");
  EXPECT_EQ(reversedUid("8000"), "");
}

// --- the slot inventory ---------------------------------------------------------------------------

TEST(Iso14443BFrames, CellsFillColumnsOfThree) {
  EXPECT_EQ(cellOf(1).row, 0);
  EXPECT_EQ(cellOf(1).column, 0);
  EXPECT_EQ(cellOf(3).row, 2);
  EXPECT_EQ(cellOf(3).column, 0);
  EXPECT_EQ(cellOf(4).row, 0);
  EXPECT_EQ(cellOf(4).column, 1);
  EXPECT_EQ(cellOf(7).row, 0);
  EXPECT_EQ(cellOf(7).column, 2);
  EXPECT_EQ(cellOf(15).row, 2);
  EXPECT_EQ(cellOf(15).column, 4);
}

TEST(Iso14443BFrames, CellLabelsEntriesAndTitles) {
  EXPECT_EQ(cellLabel(1), "1: ");
  EXPECT_EQ(cellLabel(15), "15: ");
  EXPECT_EQ(slotMarkerTitle(7), "SLOT MARKER (7)");
  EXPECT_EQ(slotEntry("80035712AB00"), " ChipID = 57 ");
  EXPECT_EQ(cellLabel(7) + slotEntry("80035712AB00"), "7:  ChipID = 57 ");
  EXPECT_EQ(chipIdOfEntry(" ChipID = 57 "), "57");
  for (int slot = 1; slot <= 15; ++slot)
    EXPECT_EQ(slotMarkerFrame(slot), std::string(1, "0123456789ABCDEF"[slot]) + "6");
}

// --- block memory ------------------------------------------------------------------------------

TEST(Iso14443BFrames, AddressWidthFromTheLastAddress) {
  EXPECT_EQ(addressWidth(63), 2);    // PDX51, PDT52: 64 bytes
  EXPECT_EQ(addressWidth(255), 2);   // ISO14443-B: 2 kbit
  EXPECT_EQ(addressWidth(511), 3);   // PDX53, PDX54: 4 kbit
  EXPECT_EQ(addressWidth(1023), 3);  // PDY55: 8 kbit
}

TEST(Iso14443BFrames, ARangeOfOneBlockReadsOneBlock) {
  EXPECT_EQ(blockCount(5, 5, 127), 1);
  EXPECT_EQ(blockCount(0, 15, 15), 16);
  // An end before the start wraps through the last block.
  EXPECT_EQ(blockCount(14, 1, 15), 4);
}

TEST(Iso14443BFrames, ReadAndWriteFrames) {
  EXPECT_EQ(readFrame(5, 1), "0805");
  EXPECT_EQ(readFrame(0x7F, 1), "087F");
  EXPECT_EQ(readFrame(0x1234, 2), "083412");  // low byte first
  EXPECT_EQ(writeFrame(5, 1, "DE AD BE EF "), "0905DEADBEEF");
}

TEST(Iso14443BFrames, ReadRowsAndWriteRows) {
  EXPECT_EQ(readRow("8007" "0A0B0C0D" "1234" "00", 4), "0A 0B 0C 0D ");
  EXPECT_EQ(readRow("8700", 4), "error code returned");
  EXPECT_EQ(readRow("8007" "0A0B0C0D" "1234" "02", 4), "error code returned");
  EXPECT_EQ(writeRow("8000"), "(00) No error during Prog sequence");
  EXPECT_EQ(writeRow("8700"), "Error code");
}

TEST(Iso14443BFrames, FaceByTheReference) {
  EXPECT_TRUE(standardFace("ISO14443-B"));
  EXPECT_FALSE(standardFace("PDX54"));
  EXPECT_FALSE(standardFace("ISO14443-B2"));
  EXPECT_STREQ(kStandardTitle, "ISO14443-B user interface : ");
  EXPECT_STREQ(kFamilyTitle, "ISO14443-B Cards user interface (PDYxxx) :");
}
