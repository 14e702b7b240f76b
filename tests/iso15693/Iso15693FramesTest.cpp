// The request side of the ISO 15693 panel: flags, the command table, block fields, the
// inventory and anticollision frames, the UID order and the rules of the boxes.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "iso15693/Iso15693Frames.h"

using namespace iso15693;

namespace {
FlagControls rate(int index) {
  FlagControls f;
  f.dataRate = index;
  return f;
}

const std::string kUid = "E00212345678" "9ABC";
}  // namespace

TEST(Iso15693Flags, DataRateBitsOfTheFourOptions) {
  EXPECT_EQ(dataRateBits(0), 0x00);
  EXPECT_EQ(dataRateBits(1), 0x02);
  EXPECT_EQ(dataRateBits(2), 0x01);
  EXPECT_EQ(dataRateBits(3), 0x03);
  EXPECT_FALSE(dataRateBits(-1).has_value());
  EXPECT_FALSE(dataRateBits(4).has_value());
}

TEST(Iso15693Flags, NoDataRateOptionGivesNoFrame) {
  EXPECT_FALSE(buildFrame(Command::StayQuiet, rate(-1), {}).has_value());
  EXPECT_FALSE(inventoryFrame(InventoryControls{0, false, true, -1}).has_value());
}

TEST(Iso15693Frames, StayQuietLowTwoScWithoutBoxesSends0102) {
  EXPECT_EQ(buildFrame(Command::StayQuiet, rate(2), {}), "0102");
}

TEST(Iso15693Frames, ReadSingleBlockAddressedOneByteBlock) {
  FlagControls f = rate(1);
  f.address = true;
  FrameFields fields;
  fields.uidFrame = uidFrameFromBox(kUid);
  fields.block = 0x05;
  fields.width = 1;
  EXPECT_EQ(buildFrame(Command::ReadSingleBlock, f, fields), "2220BC9A7856341202E005");
}

TEST(Iso15693Frames, ReadSingleBlockTwoByteBlockSetsProtocolExtension) {
  FlagControls f = rate(1);
  f.address = true;
  FrameFields fields;
  fields.uidFrame = uidFrameFromBox(kUid);
  fields.block = 0x0105;
  fields.width = 2;
  EXPECT_EQ(buildFrame(Command::ReadSingleBlock, f, fields), "2A20BC9A7856341202E00501");
}

TEST(Iso15693Frames, UidGoesInOnlyWithTheAddressFlag) {
  FrameFields fields;
  fields.uidFrame = "BC9A7856341202E0";
  fields.block = 0x10;
  EXPECT_EQ(buildFrame(Command::ReadSingleBlock, rate(1), fields), "022010");
}

TEST(Iso15693Frames, LockBlockAlwaysSendsFlags08) {
  FlagControls f = rate(3);
  f.address = true;
  f.select = true;
  f.lockBits = true;
  FrameFields fields;
  fields.uidFrame = "BC9A7856341202E0";
  fields.block = 0x07;
  EXPECT_EQ(buildFrame(Command::LockBlock, f, fields), "0822BC9A7856341202E007");
  fields.width = 2;
  fields.block = 0x0203;
  EXPECT_EQ(buildFrame(Command::LockBlock, f, fields), "0822BC9A7856341202E00302");
}

TEST(Iso15693Frames, OptionFlagFollowsTheLockBitsWhereTheTableSaysSo) {
  FlagControls f = rate(1);
  f.lockBits = true;
  FrameFields fields;
  fields.block = 1;
  EXPECT_EQ(buildFrame(Command::ReadSingleBlock, f, fields), "422001");
  fields.count = 2;
  EXPECT_EQ(buildFrame(Command::ReadMultipleBlock, f, fields), "42230101");
  EXPECT_EQ(buildFrame(Command::GetMultipleBlockSecurityStatus, f, fields), "022C0101");
  EXPECT_EQ(buildFrame(Command::StayQuiet, f, fields), "0202");
  EXPECT_EQ(buildFrame(Command::LockAFI, f, fields), "4228");
}

TEST(Iso15693Frames, ReadMultipleBlockOfOneBlockSendsCount00) {
  FrameFields fields;
  fields.block = 0x20;
  fields.count = 1;
  EXPECT_EQ(buildFrame(Command::ReadMultipleBlock, rate(1), fields), "022320" "00");
  fields.count = 8;
  EXPECT_EQ(buildFrame(Command::ReadMultipleBlock, rate(1), fields), "02232007");
}

TEST(Iso15693Frames, SecurityStatusAtWidthTwoCarriesTwoByteCount) {
  FrameFields fields;
  fields.block = 0x0100;
  fields.count = 3;
  fields.width = 2;
  EXPECT_EQ(buildFrame(Command::GetMultipleBlockSecurityStatus, rate(1), fields), "0A2C" "0001" "0200");
}

TEST(Iso15693Frames, SecurityStatusCountBytesOfThirtyTwoAndEight) {
  FrameFields fields;
  fields.count = 32;
  EXPECT_EQ(buildFrame(Command::GetMultipleBlockSecurityStatus, rate(1), fields), "022C001F");
  fields.block = 0x20;
  fields.count = 8;
  EXPECT_EQ(buildFrame(Command::GetMultipleBlockSecurityStatus, rate(1), fields), "022C2007");
}

TEST(Iso15693Frames, WriteSingleBlockCarriesTheGridTextWithoutBlanks) {
  FrameFields fields;
  fields.block = 0x03;
  fields.data = "11 22 33 44 ";
  EXPECT_EQ(buildFrame(Command::WriteSingleBlock, rate(1), fields), "02210311223344");
}

TEST(Iso15693Frames, KillNumberStandsInFrontOfTheUidAndPasswordNumberBehind) {
  FlagControls f = rate(1);
  f.address = true;
  FrameFields fields;
  fields.uidFrame = "BC9A7856341202E0";
  fields.data = "AABBCCDD";
  fields.passwordNumber = 2;
  EXPECT_EQ(buildFrame(Command::WriteKill, f, fields), "22B10200BC9A7856341202E0AABBCCDD");
  EXPECT_EQ(buildFrame(Command::Kill, f, fields), "22A60200BC9A7856341202E0AABBCCDD");
  EXPECT_EQ(buildFrame(Command::WriteSectorPassword, f, fields), "22B102BC9A7856341202E002AABBCCDD");
  EXPECT_EQ(buildFrame(Command::PresentPassword, f, fields), "22B302BC9A7856341202E002AABBCCDD");
  fields.block = 0x0102;
  fields.width = 2;
  fields.data = "03";
  EXPECT_EQ(buildFrame(Command::LockSectorPassword, f, fields), "2AB202BC9A7856341202E0020103");
}

TEST(Iso15693Frames, SelectCarriesTheUidWhateverTheAddressBox) {
  FrameFields fields;
  fields.uidFrame = "0000000000000000";
  EXPECT_EQ(buildFrame(Command::Select, rate(1), fields), "02250000000000000000");
  EXPECT_EQ(buildFrame(Command::ResetToReady, rate(1), fields), "0226");
}

TEST(Iso15693Frames, GetSystemInfoTakesTheExtensionFlagFromItsOption) {
  FlagControls f = rate(1);
  f.lockBits = true;
  EXPECT_EQ(buildFrame(Command::GetSystemInfo, f, {}), "022B");
  f.extensionOption1 = true;
  EXPECT_EQ(buildFrame(Command::GetSystemInfo, f, {}), "0A2B");
}

TEST(Iso15693Frames, CustomCommandsCarryTheManufacturerCode) {
  FlagControls f = rate(1);
  f.address = true;
  f.lockBits = true;
  FrameFields fields;
  fields.uidFrame = "BC9A7856341202E0";
  fields.data = "01";
  EXPECT_EQ(buildFrame(Command::SetResetEHConfig, f, fields), "62A202BC9A7856341202E001");
  EXPECT_EQ(buildFrame(Command::ReadEHConfig, f, fields), "22A002BC9A7856341202E0");
  EXPECT_EQ(buildFrame(Command::Initiate, rate(1), fields), "02D202");
  FrameFields block;
  block.block = 0x0105;
  block.width = 2;
  block.count = 4;
  EXPECT_EQ(buildFrame(Command::FastReadSingleBlock, rate(1), block), "0AC0020501");
  EXPECT_EQ(buildFrame(Command::FastReadMultipleBlock, rate(1), block), "0AC302050103");
}

TEST(Iso15693Frames, CommandTableIsInEnumOrderAndHasNoCodeTwiceExceptTheTwoB1) {
  std::set<std::string> routines;
  std::multiset<std::string> codes;
  for (std::size_t i = 0; i < kCommands.size(); ++i) {
    EXPECT_EQ(static_cast<std::size_t>(kCommands[i].command), i);
    EXPECT_TRUE(routines.insert(kCommands[i].routine).second) << kCommands[i].routine;
    codes.insert(kCommands[i].code);
  }
  for (const std::string& c : codes) EXPECT_EQ(codes.count(c), c == "B1" ? 2u : 1u) << c;
  EXPECT_STREQ(commandRow(Command::LockBlock).title, "LOCK");
  EXPECT_STREQ(commandRow(Command::GetMultipleBlockSecurityStatus).title, "GET MULTIPLE BLOCK SECURITY STATUS");
}

TEST(Iso15693Frames, BlockTextByWidth) {
  EXPECT_EQ(blockText(0x05, 1), "05");
  EXPECT_EQ(blockText(0x40, 1), "40");
  EXPECT_EQ(blockText(0x100, 1), "100");  // a walk through the end keeps the extra digit
  EXPECT_EQ(blockText(0x0105, 2), "0501");
  EXPECT_EQ(blockText(0x07FF, 2), "FF07");
}

TEST(Iso15693Inventory, LowOneSlotNoMask) {
  InventoryControls c;
  c.dataRate = 0;
  EXPECT_EQ(inventoryFrame(c), "240100");
}

TEST(Iso15693Inventory, HighSixteenSlotsAfiAndTwelveBitMask) {
  InventoryControls c;
  c.oneSlot = false;
  c.afiOption = true;
  c.afi = "12";
  c.maskLength = "0C";
  c.maskValues[0] = "34";
  c.maskValues[1] = "12";
  c.maskValues[2] = "FF";  // beyond the length: not sent
  EXPECT_EQ(inventoryFrame(c), "1601" "12" "0C" "3412");
}

TEST(Iso15693Inventory, UnusedBitsOfTheLastMaskByteGoAsTyped) {
  InventoryControls c;
  c.maskLength = "0C";
  c.maskValues[0] = "AB";
  c.maskValues[1] = "FF";
  EXPECT_EQ(inventoryFrame(c), "26010CABFF");
}

TEST(Iso15693Inventory, InitiatedFormsCarryTheManufacturerCode) {
  InventoryControls c;
  c.maskLength = "08";
  c.maskValues[0] = "E0";
  EXPECT_EQ(inventoryFrame(c, InventoryCommand::InventoryInitiated), "26D10208E0");
  EXPECT_EQ(inventoryFrame(c, InventoryCommand::FastInventoryInitiated), "26C10208E0");
  EXPECT_EQ(inventoryFrame(c, InventoryCommand::Inventory), "260108E0");
  EXPECT_STREQ(inventoryRow(InventoryCommand::FastInventoryInitiated).title, "FAST INVENTORY INITIATE");
}

TEST(Iso15693Inventory, MaskByteCounts) {
  EXPECT_EQ(maskByteCount(0), 0);
  EXPECT_EQ(maskByteCount(1), 1);
  EXPECT_EQ(maskByteCount(8), 1);
  EXPECT_EQ(maskByteCount(9), 2);
  EXPECT_EQ(maskByteCount(0x40), 8);
}

TEST(Iso15693Inventory, RowNumberIsWhatTheMaskWalkLeft) {
  InventoryControls c;
  EXPECT_EQ(inventoryRowNumber(c), "00");
  c.maskLength = "0C";
  EXPECT_EQ(inventoryRowNumber(c), "03");
  c.maskLength = "40";
  EXPECT_EQ(inventoryRowNumber(c), "09");
}

TEST(Iso15693Inventory, AnticollisionFrameIgnoresAfiAndMask) {
  InventoryControls c;
  c.afiOption = true;
  c.afi = "12";
  c.maskLength = "08";
  EXPECT_EQ(anticollisionFrame(c), "02A00126");
  c.oneSlot = false;
  c.dataRate = 0;
  EXPECT_EQ(anticollisionFrame(c), "02A00104");
}

TEST(Iso15693Boxes, MaskLengthOnLeaving) {
  EXPECT_EQ(maskLengthOnLeave("41"), "00");
  EXPECT_EQ(maskLengthOnLeave("C0"), "40");
  EXPECT_EQ(maskLengthOnLeave("C1"), "00");
  EXPECT_EQ(maskLengthOnLeave("40"), "40");
  EXPECT_EQ(maskLengthOnLeave("c"), "0C");
  EXPECT_EQ(maskLengthOnLeave(""), "");
}

TEST(Iso15693Boxes, ByteBoxOnLeaving) {
  EXPECT_EQ(byteBoxOnLeave(""), "");
  EXPECT_EQ(byteBoxOnLeave("5"), "05");
  EXPECT_EQ(byteBoxOnLeave("1ab"), "AB");
}

TEST(Iso15693Uid, FrameOrderReversesTheBytePairs) {
  EXPECT_EQ(uidFrameFromBox("E002123456789ABC"), "BC9A7856341202E0");
  EXPECT_EQ(uidFrameFromBox(""), "");
}

TEST(Iso15693Uid, LeavingTheBox) {
  UidBoxResult r = leaveUidBox("e002123456789abc");
  EXPECT_EQ(r.boxText, "E002123456789ABC");
  EXPECT_FALSE(r.red);
  EXPECT_EQ(r.frame, UidBoxResult::Frame::Rebuilt);
  EXPECT_EQ(r.uidFrame, "BC9A7856341202E0");

  r = leaveUidBox("E002123456789AB");  // 15 characters
  EXPECT_TRUE(r.red);
  EXPECT_EQ(r.frame, UidBoxResult::Frame::Emptied);

  r = leaveUidBox("");
  EXPECT_TRUE(r.red);
  EXPECT_EQ(r.frame, UidBoxResult::Frame::Emptied);

  r = leaveUidBox("Transponder UID");
  EXPECT_FALSE(r.red);
  EXPECT_EQ(r.frame, UidBoxResult::Frame::Kept);
  EXPECT_EQ(r.boxText, "TRANSPONDER UID");
}

TEST(Iso15693Uid, LabelClickChecksEveryCharacter) {
  EXPECT_EQ(uidFrameFromLabelClick("e002123456789abc"), "bc9a7856341202e0");
  EXPECT_EQ(uidFrameFromLabelClick("E00212345678G9AB"), "");
  EXPECT_EQ(uidFrameFromLabelClick("Transponder UID"), "");
}

TEST(Iso15693Controller, AnticollisionFromRevision141) {
  EXPECT_TRUE(controllerHasAnticollision("1.4.1"));
  EXPECT_TRUE(controllerHasAnticollision("2.0.0"));
  EXPECT_FALSE(controllerHasAnticollision("1.4.0"));
  EXPECT_FALSE(controllerHasAnticollision(""));
  EXPECT_FALSE(controllerHasAnticollision("x.y"));
}
