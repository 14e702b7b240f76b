// The answer side of the ISO 15693 panel: the cut with its tail byte and CRC judgement,
// the error tables, the rows of block reads and the lists of found tags.
#include <gtest/gtest.h>

#include <set>

#include "iso15693/Iso15693Answers.h"

using namespace iso15693;

TEST(Iso15693Cut, AnswerNotBeginning80IsNotCutAndAddsNoNote) {
  Cut c = cutAnswer(0, "8700", "");
  EXPECT_FALSE(c.taken);
  EXPECT_EQ(c.response, "");
  EXPECT_EQ(c.traceNote, "");
  c = cutAnswer(0, "8700", "0012");
  EXPECT_EQ(c.response, "0012");  // the previous response stays
  c = cutAnswer(5, "80080012345678A88700", "");
  EXPECT_FALSE(c.taken);
}

TEST(Iso15693Cut, LengthThreeWithTailZeroGivesAnEmptyResponse) {
  const Cut c = cutAnswer(0, "8003ABCD00", "0012");
  EXPECT_TRUE(c.taken);
  EXPECT_EQ(c.response, "");
  EXPECT_EQ(c.traceNote, "");
}

TEST(Iso15693Cut, LengthFourWithTailZeroGivesOneByte) {
  const Cut c = cutAnswer(0, "800400ABCD00", "");
  EXPECT_TRUE(c.taken);
  EXPECT_EQ(c.response, "00");
}

TEST(Iso15693Cut, TailZeroIsNeverCheckedEvenWithABadCrc) {
  const Cut c = cutAnswer(0, "8008001234567800" "0000", "");
  EXPECT_TRUE(c.taken);
  EXPECT_EQ(c.response, "0012345678");
  EXPECT_EQ(c.traceNote, "");
}

TEST(Iso15693Cut, FlaggedTailWithGoodCrcIsUsed) {
  // CRC of 00 12 34 56 78 per ISO/IEC 13239: 0x A887, low byte first.
  const Cut c = cutAnswer(0, "80080012345678" "87A8" "02", "");
  EXPECT_TRUE(c.taken);
  EXPECT_EQ(c.response, "0012345678");
  EXPECT_EQ(c.traceNote, "  02 -> CRC OK");
}

TEST(Iso15693Cut, FlaggedTailWithBadCrcIsNotUsed) {
  const Cut c = cutAnswer(0, "80080012345678" "1234" "02", "00AA");
  EXPECT_FALSE(c.taken);
  EXPECT_EQ(c.response, "00AA");
  EXPECT_EQ(c.traceNote, "  02 -> CRC HS (expected=87A8)");
}

TEST(Iso15693Cut, ShortOrBrokenAnswersDoNotThrow) {
  EXPECT_NO_THROW(cutAnswer(0, "80", ""));
  EXPECT_NO_THROW(cutAnswer(0, "80FF", ""));
  EXPECT_NO_THROW(cutAnswer(0, "80zz12", ""));
  EXPECT_NO_THROW(cutAnswer(0, "8001", ""));
  const Cut c = cutAnswer(0, "8002AB", "");
  EXPECT_FALSE(c.taken);
  EXPECT_EQ(c.traceNote, "  " " -> CRC HS (expected=0000)");
}

TEST(Iso15693Errors, TagErrorTable) {
  EXPECT_EQ(iso15693ErrorText("00"), "No Error");
  EXPECT_EQ(iso15693ErrorText("02"), "(02) Command is not recognized");
  EXPECT_EQ(iso15693ErrorText("03"), "(03) Option is not supported");
  EXPECT_EQ(iso15693ErrorText("0F"), "(0F) Error with no information given");
  EXPECT_EQ(iso15693ErrorText("10"), "(10) Block address not available");
  EXPECT_EQ(iso15693ErrorText("11"), "(11) Block is already locked");
  EXPECT_EQ(iso15693ErrorText("12"), "(12) Block is locked, content cannot be changed");
  EXPECT_EQ(iso15693ErrorText("13"), "(13) Block was not successfully programmed");
  EXPECT_EQ(iso15693ErrorText("14"), "(14) Block was not successfully locked");
  EXPECT_EQ(iso15693ErrorText("15"), "(15) Block is read-protected");
  EXPECT_EQ(iso15693ErrorText("A7"), "(A7) Unknown error code");
  EXPECT_EQ(iso15693ErrorText(""), "() Unknown error code");
}

TEST(Iso15693Errors, SystemInfoErrorTable) {
  EXPECT_EQ(systemInfoErrorText("00"), "No Error");
  EXPECT_EQ(systemInfoErrorText("03"), "error code 03 : cmd option not supported");
  EXPECT_EQ(systemInfoErrorText("0F"), "error code 0F : other error");
  EXPECT_EQ(systemInfoErrorText("10"), "error code 10 : block address not available");
  EXPECT_EQ(systemInfoErrorText("11"), "error code 11 : block is already locked");
  EXPECT_EQ(systemInfoErrorText("12"), "error code 12 : block is locked");
  EXPECT_EQ(systemInfoErrorText("13"), "error code 13 : block not successfully programmed");
  EXPECT_EQ(systemInfoErrorText("14"), "error code 14 : block not successfully locked");
  EXPECT_EQ(systemInfoErrorText("02"), "02 : unknown error code");
}

TEST(Iso15693Errors, NoCodeTwiceInEitherTable) {
  std::set<std::string> a, b;
  for (const ErrorRow& r : kTagErrors) EXPECT_TRUE(a.insert(r.code).second) << r.code;
  for (const ErrorRow& r : kSystemInfoErrors) EXPECT_TRUE(b.insert(r.code).second) << r.code;
}

TEST(Iso15693Rows, ReadSingleBlockRows) {
  EXPECT_EQ(readSingleBlockRow("0012345678", false, 4), "12 34 56 78 ");
  EXPECT_EQ(readSingleBlockRow("000012345678", true, 4), "00   12 34 56 78 ");
  // A page size beyond the reply takes what the text gives.
  EXPECT_EQ(readSingleBlockRow("001234", false, 4), "12 34 ");
  EXPECT_EQ(readSingleBlockRow("00", false, 4), "");
}

TEST(Iso15693Rows, ReadMultipleBlockShowsTheFirstStatusOnEveryRow) {
  EXPECT_EQ(readMultipleBlockRows("00" "1122334455667788", false, 4, 2),
            (std::vector<std::string>{"11 22 33 44 ", "55 66 77 88 "}));
  EXPECT_EQ(readMultipleBlockRows("00" "0011223344" "0155667788", true, 4, 2),
            (std::vector<std::string>{"00   11 22 33 44 ", "00   55 66 77 88 "}));
}

TEST(Iso15693Rows, SecurityStatusRowsHoldOneByteEach) {
  EXPECT_EQ(securityStatusRows("00" "000100", 3), (std::vector<std::string>{"00", "01", "00"}));
}

TEST(Iso15693Judgement, WriteSingleBlock) {
  WriteJudgement j = judgeWriteSingleBlock("00");
  EXPECT_EQ(j.label, "OK");
  EXPECT_EQ(j.row, "(00) No error during Prog sequence");
  j = judgeWriteSingleBlock("0112");
  EXPECT_EQ(j.label, "HS");
  EXPECT_EQ(j.row, "(12) Block is locked, content cannot be changed");
  j = judgeWriteSingleBlock("");
  EXPECT_FALSE(j.setsLabel);
  EXPECT_EQ(j.row, "No detected answer");
  j = judgeWriteSingleBlock("0A");
  EXPECT_FALSE(j.setsLabel);
  EXPECT_EQ(j.row, "(0A) Answer format problemz");
}

TEST(Iso15693Judgement, StateCommandsShowEveryCodeAsUnknown) {
  EXPECT_EQ(judgeStateCommand("00").label, "OK");
  EXPECT_EQ(judgeStateCommand("0112").label, "12 : unknown error code");
  EXPECT_EQ(judgeStateCommand("010F").label, "0F : unknown error code");
  EXPECT_FALSE(judgeStateCommand("").setsLabel);
  EXPECT_FALSE(judgeStateCommand("08").setsLabel);
}

TEST(Iso15693List, InventoryResponseToRow) {
  const InventoryEntry e = inventoryEntry("00" "A5" "BC9A7856341202E0");
  EXPECT_EQ(e.dsfid, "A5");
  EXPECT_EQ(e.uid, "E002123456789ABC");
  EXPECT_EQ(transponderRow("00", e), " 00\tE002123456789ABC\t\tA5");
  EXPECT_EQ(std::string(kListHeader), "\tUID\t\t\tDSFID");
}

TEST(Iso15693List, AnticollisionReplyWithThreeTags) {
  const std::string answer = "801C03" "00" "0800000000000000" "11" "0700000000000000" "22" "8877665544332211";
  ASSERT_EQ(anticollisionCount(0, answer), 3);
  const auto e = anticollisionEntries(0, answer);
  ASSERT_EQ(e.size(), 3u);
  EXPECT_EQ(e[0].dsfid, "00");
  EXPECT_EQ(e[0].uid, "0000000000000008");
  EXPECT_EQ(e[2].dsfid, "22");
  EXPECT_EQ(e[2].uid, "1122334455667788");
  EXPECT_EQ(transponderRow("03", e[2]), " 03\t1122334455667788\t\t22");
}

TEST(Iso15693List, AnticollisionCountIsZeroUnlessGood) {
  EXPECT_EQ(anticollisionCount(5, "801C03"), 0);
  EXPECT_EQ(anticollisionCount(0, "8701"), 0);
  EXPECT_EQ(anticollisionCount(0, "800100"), 0);  // LL 1
  EXPECT_EQ(anticollisionCount(0, "800200"), 0);
  EXPECT_EQ(anticollisionEntries(0, "8002FF").size(), 255u);  // short reply: empty fields, no crash
}

TEST(Iso15693List, ClickedRowGivesSixteenCharactersFromPositionFive) {
  EXPECT_EQ(uidOfListRow(" 01\tE002123456789ABC\t\t00"), "E002123456789ABC");
  EXPECT_EQ(uidOfListRow("\tUID\t\t\tDSFID"), "\t\t\tDSFID");
  EXPECT_EQ(uidOfListRow(""), "");
}
