// The system information decoder: rows of a "000F" and a "000B" answer with the field
// widths of the product, the error table for every other beginning, and the EH status box.
#include <gtest/gtest.h>

#include "iso15693/Iso15693Answers.h"
#include "iso15693/Iso15693Frames.h"

using namespace iso15693;

namespace {
// UID E0 02 12 34 56 78 9A BC travels least significant byte first.
constexpr const char* kUidFrame = "BC9A7856341202E0";
const std::string kAnswer0F = std::string("000F") + kUidFrame + "00" + "00" + "3F03" + "20" + "41";
}  // namespace

TEST(SystemInfo, OneByteProductShowsRawMemoryBlockSizeAndIcReference) {
  const std::vector<std::string> rows = systemInfoRows(kAnswer0F, 1);
  const std::vector<std::string> expected{
      " UID : \t\tE00212345678" "9ABC",
      " DSFID : \t\t00h",
      " AFI : \t\t00h",
      " Memory size : \t3Fh",
      " Block size : \t03h",
      " IC reference : \t20h",
  };
  EXPECT_EQ(rows, expected);
}

TEST(SystemInfo, TwoByteProductReadsTwoMemoryBytesAndShiftsTheRest) {
  const std::vector<std::string> rows = systemInfoRows(kAnswer0F, 2);
  ASSERT_EQ(rows.size(), 6u);
  EXPECT_EQ(rows[3], " Memory size : \t033Fh");
  EXPECT_EQ(rows[4], " Block size : \t20h");
  EXPECT_EQ(rows[5], " IC reference : \t41h");
}

TEST(SystemInfo, DsfidAndAfiComeFromTheirBytes) {
  const std::string answer = std::string("000F") + kUidFrame + "A1" + "12" + "FF0703" + "5E";
  const std::vector<std::string> rows = systemInfoRows(answer, 2);
  ASSERT_EQ(rows.size(), 6u);
  EXPECT_EQ(rows[1], " DSFID : \t\tA1h");
  EXPECT_EQ(rows[2], " AFI : \t\t12h");
  EXPECT_EQ(rows[3], " Memory size : \t07FFh");
  EXPECT_EQ(rows[4], " Block size : \t03h");
  EXPECT_EQ(rows[5], " IC reference : \t5Eh");
}

TEST(SystemInfo, Flags0BShowNotAvailableAndTheIcReferenceBehindAfi) {
  const std::string answer = std::string("000B") + kUidFrame + "B2" + "00" + "5E";
  for (int width : {1, 2}) {
    const std::vector<std::string> rows = systemInfoRows(answer, width);
    const std::vector<std::string> expected{
        " UID : \t\tE00212345678" "9ABC", " DSFID : \t\tB2h", " AFI : \t\t00h",
        " Memory size : \tN.A.",          " Block size : \tN.A.", " IC reference : \t5Eh",
    };
    EXPECT_EQ(rows, expected) << "width " << width;
  }
}

TEST(SystemInfo, AnUnknownWidthLeavesTheThreeLabelsAlone) {
  for (const std::string& answer : {kAnswer0F, std::string("000B") + kUidFrame + "000020"}) {
    const std::vector<std::string> rows = systemInfoRows(answer, 3);
    ASSERT_EQ(rows.size(), 6u);
    EXPECT_EQ(rows[3], " Memory size : ");
    EXPECT_EQ(rows[4], " Block size : ");
    EXPECT_EQ(rows[5], " IC reference : ");
  }
}

TEST(SystemInfo, ErrorAnswersGiveOneRowOfTheSecondTable) {
  EXPECT_EQ(systemInfoRows("010F", 1), std::vector<std::string>{"error code 0F : other error"});
  // The table's text for code 00, whatever the flags said.
  EXPECT_EQ(systemInfoRows("0100", 1), std::vector<std::string>{"No Error"});
  EXPECT_EQ(systemInfoRows("0103", 2), std::vector<std::string>{"error code 03 : cmd option not supported"});
  EXPECT_EQ(systemInfoRows("0102", 1), std::vector<std::string>{"02 : unknown error code"});
  // Other information flags are reported as the code of the second byte.
  EXPECT_EQ(systemInfoRows("000D" + std::string(kUidFrame) + "0000", 1),
            std::vector<std::string>{"0D : unknown error code"});
  EXPECT_EQ(systemInfoRows("0007" + std::string(kUidFrame), 1), std::vector<std::string>{"07 : unknown error code"});
}

TEST(SystemInfo, EmptyResponseGivesNoRowsAndShortOnesDoNotBreak) {
  EXPECT_TRUE(systemInfoRows("", 1).empty());
  const std::vector<std::string> rows = systemInfoRows("000F12", 2);
  ASSERT_EQ(rows.size(), 6u);
  EXPECT_EQ(rows[0], " UID : \t\t12");
  EXPECT_EQ(rows[3], " Memory size : \th");
  EXPECT_EQ(systemInfoRows("0", 1), std::vector<std::string>{" : unknown error code"});
}

TEST(SystemInfo, GetSystemInfoFrameTakesTheExtensionFlagFromTheOption) {
  FlagControls c;
  c.address = true;
  FrameFields f;
  f.uidFrame = kUidFrame;
  EXPECT_EQ(buildFrame(Command::GetSystemInfo, c, f), std::optional<std::string>("222B" + std::string(kUidFrame)));
  c.extensionOption1 = true;
  c.lockBits = true;  // Option is always clear for this command
  EXPECT_EQ(buildFrame(Command::GetSystemInfo, c, f), std::optional<std::string>("2A2B" + std::string(kUidFrame)));
  c.address = false;
  EXPECT_EQ(buildFrame(Command::GetSystemInfo, c, f), std::optional<std::string>("0A2B"));
}

TEST(EhStatus, FlagsDecideTheBox) {
  EXPECT_EQ(ehStatusText("0005"), std::optional<std::string>("05"));
  EXPECT_EQ(ehStatusText("0101"), std::optional<std::string>("XX"));
  EXPECT_EQ(ehStatusText("8000"), std::optional<std::string>("XX"));
  EXPECT_EQ(ehStatusText(""), std::nullopt);
}
