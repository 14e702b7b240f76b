// The console's frames: Protocol Select bits, Idle examples, register and filter options,
// the per-command stores and the request text each panel sends.
#include <gtest/gtest.h>

#include <set>

#include "common/hex.h"
#include "console/ConsoleFrames.h"
#include "console/ProtocolSelect.h"

using namespace console;

TEST(ProtocolSelect, OptionsCarryTheProtocolCodesAndStartBytes) {
  std::vector<int> codes;
  std::vector<std::string> bytes;
  for (const ProtocolOption& o : kProtocolOptionRows) {
    codes.push_back(o.protocolCode);
    bytes.push_back(hex::byte(o.startByte0));
  }
  EXPECT_EQ(codes, (std::vector<int>{99, 1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(bytes, (std::vector<std::string>{"00", "0D", "00", "01", "51", "00", "01", "01"}));
  EXPECT_EQ(optionOfProtocolCode(99), 0);
  EXPECT_EQ(optionOfProtocolCode(7), 7);
  EXPECT_EQ(optionOfProtocolCode(8), -1);
}

TEST(ProtocolSelect, CardOptionsAllShowFiveInBoxTwo) {
  for (std::size_t i = kFirstCardOption; i < kProtocolOptionRows.size(); ++i)
    EXPECT_EQ(kProtocolOptionRows[i].box2, "05");
  EXPECT_EQ(kProtocolOptionRows[7].caption, "14 : ISO18092");
}

TEST(ProtocolSelect, CardOptionTwelveShowsTheListsOfTheBCard) {
  EXPECT_TRUE(showsList(kProtocolOptionRows[5], "cboISO14443Bcard_Clk"));
  for (const ProtocolOption& o : kProtocolOptionRows)
    for (std::string_view l : o.lists) {
      EXPECT_EQ(l.find("cboISO14443Acard"), std::string_view::npos);
      if (!l.empty()) {
        EXPECT_NE(findParameterList(l), nullptr) << l;
      }
    }
}

TEST(ProtocolSelect, EveryListNameOnceAndStartEntriesInRange) {
  std::set<std::string_view> names;
  for (const ParameterList& l : kParameterLists) {
    EXPECT_TRUE(names.insert(l.name).second) << l.name;
    if (l.entries.empty()) {
      EXPECT_EQ(l.name, "cboISO14443Areader_DetectSof");
      continue;
    }
    EXPECT_GE(l.startEntry, 0);
    EXPECT_LT(l.startEntry, static_cast<int>(l.entries.size()));
  }
}

TEST(ProtocolSelect, EntryValuesAreTheDigitsAtCharacterTwo) {
  const ParameterList& rate = *findParameterList("cboISO15693reader_DataRate");
  EXPECT_EQ(entryValue(rate, " 10 : 6k "), 10);
  EXPECT_EQ(entryValue(rate, " 01 : 52k "), 1);
  const ParameterList& slots = *findParameterList("cboISO18092reader_SlotCounter");
  EXPECT_EQ(entryValue(slots, " F : 16 slots "), 15);
  EXPECT_EQ(entryValue(slots, "x"), -1);
  const ParameterList& crc = *findParameterList("cboAppendCRC");
  EXPECT_EQ(entryValue(crc, " 1 : Append CRC "), 1);
  EXPECT_EQ(entryValue(crc, " A : Append CRC "), -1);
}

TEST(ProtocolSelect, TwoBitEntriesSetTheirTwoBits) {
  const ParameterList& trans = *findParameterList("cboISO18092reader_TransDataRate");
  Bits b = bitsOf(0x00);
  applyEntryValue(trans, entryValue(trans, " 10 : 424k "), b);
  EXPECT_EQ(byteOf(b), 0x80);
  applyEntryValue(trans, entryValue(trans, " 01 : 212k "), b);
  EXPECT_EQ(byteOf(b), 0x40);
  applyEntryValue(trans, entryValue(trans, " 11 : RFU "), b);
  EXPECT_EQ(byteOf(b), 0xC0);
}

TEST(ProtocolSelect, SlotCounterSetsFourBitsAndDisregardBitFour) {
  Bits b = bitsOf(0x00);
  const ParameterList& slots = *findParameterList("cboISO18092reader_SlotCounter");
  applyEntryValue(slots, entryValue(slots, " B : 12 slots "), b);
  EXPECT_EQ(byteOf(b), 0x0B);
  const ParameterList& disregard = *findParameterList("cboISO18092reader_Disregard_SlotCounter");
  applyEntryValue(disregard, entryValue(disregard, " 1 : search for the reply "), b);
  EXPECT_EQ(byteOf(b), 0x1B);
}

TEST(ProtocolSelect, ClkRecStillWritesZero) {
  const ParameterList& clk = *findParameterList("cboISO14443Bcard_Clk");
  Bits b = bitsOf(0x02);
  applyEntryValue(clk, entryValue(clk, " 0 : ClkRec "), b);
  EXPECT_EQ(byteOf(b), 0x00);
}

TEST(ProtocolSelect, ByteFromBitsAndBoxRules) {
  EXPECT_EQ(byteOf(bitsOf(0x51)), 0x51);
  Bits b = bitsOf(0x0D);
  b[1] = "";
  EXPECT_EQ(byteOf(b), 0x0D);
  EXPECT_EQ(normaliseBitBox(""), "0");
  EXPECT_EQ(normaliseBitBox("1"), "1");
  EXPECT_EQ(normaliseBitBox("10"), "0");
  EXPECT_EQ(normaliseByteBox("a", ""), "0A");
  EXPECT_EQ(normaliseByteBox("", ""), "");
  EXPECT_EQ(normaliseByteBox("", "00"), "00");
  EXPECT_EQ(normaliseByteBox("1FF", "00"), "FF");
  EXPECT_EQ(movedLength("02", 2), "04");
  EXPECT_EQ(movedLength("04", -2), "02");
  EXPECT_EQ(movedLength("", -2), "FE");
  EXPECT_EQ(appendCrcEntry("0"), " 0 : No Append CRC ");
  EXPECT_EQ(appendCrcEntry("1"), " 1 : Append CRC ");
}

TEST(ConsoleFrames, IdleExamplesAreSixteenBytesOfCommandSeven) {
  for (const IdleExample& e : kIdleExamples) {
    const auto bytes = frameBytes(e.frame);
    ASSERT_EQ(bytes.size(), 16u);
    EXPECT_EQ(bytes[0], "07");
    EXPECT_EQ(bytes[1], "0E");
  }
  EXPECT_EQ(kIdleExamples[0].frame, chip::findCommand("07")->defaultFrame);
  EXPECT_EQ(idleCaptionTip(2), "Click to access to <WFUFlags> bits");
  EXPECT_EQ(idleCaptionTip(4), "Click to access to CtrlH bits");
  EXPECT_EQ(idleCaptionTip(5), "Click to access to CtrlL bits");
  EXPECT_EQ(idleCaptionTip(9), "");
}

TEST(ConsoleFrames, IdleRequestSendsAllSixteenBoxes) {
  EXPECT_EQ(idleRequest(frameBytes(kIdleExamples[3].frame)), "01 070E0121003800180060600000000008");
}

TEST(ConsoleFrames, StoresStartWithTheDefaultFrames) {
  const auto stores = defaultStores();
  EXPECT_EQ(stores.size(), 12u);
  EXPECT_EQ(stores.count("02"), 0u);
  EXPECT_EQ(stores.at("08").boxes, (std::array<std::string, 5>{"08", "03", "62", "01", "00"}));
  EXPECT_EQ(stores.at("09").data, "00");
  EXPECT_EQ(stores.at("04").data, "");
  EXPECT_EQ(stores.at("0F").boxes, (std::array<std::string, 5>{"0F", "02", "00", "00", ""}));
  EXPECT_EQ(stores.at("55").boxes, (std::array<std::string, 5>{"55", "", "", "", ""}));
}

TEST(ConsoleFrames, GenericRequestFollowsBoxZero) {
  GenericFrame f;
  f.boxes = {"08", "03", "62", "01", "00"};
  EXPECT_EQ(genericRequest(f), "01 0803620100");
  f.boxes = {"04", "03", "", "", ""};
  f.data = "260100";
  EXPECT_EQ(genericRequest(f), "01 0403260100");
  f.boxes = {"09", "04", "68", "01", "01"};
  f.data = "D1";
  f.writeOption = 0;
  EXPECT_EQ(genericRequest(f), "01 0904680101");
  f.writeOption = 1;
  EXPECT_EQ(genericRequest(f), "01 0904680101D1");
  f.boxes = {"0F", "02", "01", "05", ""};
  EXPECT_EQ(genericRequest(f), "01 0F0201");
  f.timeInterval = true;
  EXPECT_EQ(genericRequest(f), "01 0F020105");
  f.boxes = {"55", "", "", "", ""};
  EXPECT_EQ(genericRequest(f), "01 55");
  f.boxes = {"0A", "01", "75", "", ""};
  EXPECT_EQ(genericRequest(f), "01 0A0175");
  f.boxes = {"0E", "02", "01", "00", "77"};
  EXPECT_EQ(genericRequest(f), "01 0E020100");
  f.boxes = {"77", "00", "", "", ""};
  EXPECT_EQ(genericRequest(f), "01 ");
  f.boxes = {"07", "0E", "", "", ""};
  EXPECT_EQ(genericRequest(f), "01 ");
}

TEST(ConsoleFrames, RequestBoxAndCallText) {
  EXPECT_EQ(requestBoxText("01 0803620100"), " 0803620100");
  EXPECT_EQ(kqCmdText("01 0803620100"), "010803620100");
  EXPECT_EQ(requestBoxText("01 "), " ");
}

TEST(ConsoleFrames, CountedRequestTakesAsManyBoxesAsBoxOneSays) {
  EXPECT_EQ(countedRequest({"02", "02", "01", "0D", "00", "00"}), "01 0202010D");
  EXPECT_EQ(countedRequest({"02", "00", "00", "00", "00", "00"}), "01 0200");
  EXPECT_EQ(countedRequest({"02", "04", "03", "01", "AA", "BB"}), "01 02040301AABB");
  // More than the panel holds: the boxes there are.
  EXPECT_EQ(countedRequest({"02", "FF", "01", "02", "03", "04"}), "01 02FF01020304");
  EXPECT_EQ(countedRequest({"02", "", "01"}), "01 02");
}

TEST(ConsoleFrames, WriteAndFilterOptions) {
  EXPECT_EQ(kWriteRegisterOptions[3].fixedData, "10");
  EXPECT_EQ(kWriteRegisterOptions[kWriteArcBOption].data, WriteData::ArcB);
  EXPECT_EQ(kFilterOptions[3].box1, "0F");
  EXPECT_EQ(kFilterOptions[3].lastBox, 16);
  EXPECT_EQ(kFilterOptions[2].box4, "88");
  for (const FilterOption& o : kFilterOptions)
    EXPECT_EQ(std::stoi(std::string(o.box1), nullptr, 16), o.lastBox - 1) << o.caption;
}

TEST(ConsoleFrames, DataBoxMakesWholeBytes) {
  EXPECT_EQ(evenData("ABC"), "0ABC");
  EXPECT_EQ(evenData("AB"), "AB");
  EXPECT_EQ(evenData(""), "");
  EXPECT_EQ(dataLength("0ABC"), "02");
  EXPECT_EQ(dataLength(""), "00");
}
