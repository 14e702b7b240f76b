#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "reader/ReaderDriver.h"
#include "reader/TraceLog.h"

namespace {

using reader::DateTime;
using reader::TraceLog;

class TraceLogTest : public ::testing::Test {
 protected:
  void SetUp() override { fix({2026, 3, 7, 9, 5, 4}); }
  void TearDown() override { reader::setClock(nullptr); }
  static void fix(DateTime t) { reader::setClock(std::make_shared<reader::FixedClock>(t)); }
  TraceLog log;
};

TEST_F(TraceLogTest, DateIsMonthDayYearWithLeadingZeros) {
  EXPECT_EQ(reader::traceDate({2026, 3, 7, 0, 0, 0}), "03-07-2026");
  EXPECT_EQ(reader::traceDate({1999, 12, 31, 0, 0, 0}), "12-31-1999");
}

TEST_F(TraceLogTest, TimeIsTwentyFourHourWithLeadingZeros) {
  EXPECT_EQ(reader::traceTime({2026, 1, 1, 9, 5, 4}), "09:05:04");
  EXPECT_EQ(reader::traceTime({2026, 1, 1, 23, 59, 58}), "23:59:58");
  EXPECT_EQ(reader::traceTime({2026, 1, 1, 0, 0, 0}), "00:00:00");
}

TEST_F(TraceLogTest, TitledEntryLayout) {
  log.titled("REQC", "TL42RQDLL_SENDRECV", "00FFFF000128", "80120102030405060708");
  EXPECT_EQ(log.text(),
            "\r\n03-07-2026 09:05:04\tREQC\r\n"
            "\t\t\t>>> TL42RQDLL_SENDRECV, 00FFFF000128\r\n"
            "\t\t\t<<< 80120102030405060708");
}

TEST_F(TraceLogTest, TitledEntryWithFixedArguments) {
  log.titled("TL42RQ CONFIGURATION : PROTOCOL SELECT", "TL42RQDLL_SELECT", "0451", "0000");
  EXPECT_EQ(log.text(),
            "\r\n03-07-2026 09:05:04\tTL42RQ CONFIGURATION : PROTOCOL SELECT\r\n"
            "\t\t\t>>> TL42RQDLL_SELECT, 0451\r\n"
            "\t\t\t<<< 0000");
}

TEST_F(TraceLogTest, ChipCommandShowsModeFieldWithABlank) {
  log.titledChipCommand("READ REGISTER", "0803620100", "00010A");
  EXPECT_EQ(log.text(),
            "\r\n03-07-2026 09:05:04\tREAD REGISTER\r\n"
            "\t\t\t>>> TL42RQDLL_KQCMD, 01 0803620100\r\n"
            "\t\t\t<<< 00010A");
}

TEST_F(TraceLogTest, UntitledEntryLayout) {
  log.untitled("TL42RQDLL_ECHO", "5500");
  EXPECT_EQ(log.text(), "\r\n03-07-2026 09:05:04\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< 5500");
}

TEST_F(TraceLogTest, ToolboxEntryHasNoTimeAndTwoTabs) {
  log.toolbox("TL42RQDLL_FIELDOFF", "0000");
  EXPECT_EQ(log.text(), "\r\n03-07-2026 \t>>> TL42RQDLL_FIELDOFF\r\n\t\t<<< 0000");
}

TEST_F(TraceLogTest, ToolboxKQCmdWordKeepsItsOwnSpelling) {
  // The toolbox writes the any-command box's word with its comma and blank.
  log.toolbox(std::string("TL42RQDll_KQCmd, ") + "0109043A005804", "0000");
  EXPECT_EQ(log.text(), "\r\n03-07-2026 \t>>> TL42RQDll_KQCmd, 0109043A005804\r\n\t\t<<< 0000");
}

TEST_F(TraceLogTest, FailedCallEndsWithTheArrowsAndNothingAfter) {
  log.titled("INVENTORY", reader::logWord(reader::Op::SendReceive), "26010000", "");
  EXPECT_EQ(log.text(),
            "\r\n03-07-2026 09:05:04\tINVENTORY\r\n\t\t\t>>> TL42RQDLL_SENDRECV, 26010000\r\n\t\t\t<<< ");
  log.clear();
  log.untitled(reader::logWord(reader::Op::Idn), "");
  EXPECT_EQ(log.text(), "\r\n03-07-2026 09:05:04\t>>> TL42RQDLL_IDN\r\n\t\t\t<<< ");
  log.clear();
  log.toolbox(reader::logWord(reader::Op::Echo), "");
  EXPECT_EQ(log.text(), "\r\n03-07-2026 \t>>> TL42RQDLL_ECHO\r\n\t\t<<< ");
}

TEST_F(TraceLogTest, EntriesFollowEachOtherAndTheStringStartsWithAnEmptyLine) {
  log.untitled("TL42RQDLL_ECHO", "5500");
  fix({2026, 3, 7, 9, 5, 5});
  log.untitled("TL42RQDLL_IDN", "000F");
  EXPECT_EQ(log.text(),
            "\r\n03-07-2026 09:05:04\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< 5500"
            "\r\n03-07-2026 09:05:05\t>>> TL42RQDLL_IDN\r\n\t\t\t<<< 000F");
}

TEST_F(TraceLogTest, ClearThenOneEntryStartsWithAnEmptyLine) {
  log.untitled("TL42RQDLL_ECHO", "5500");
  log.titled("X", "Y", "Z", "W");
  log.clear();
  EXPECT_TRUE(log.empty());
  EXPECT_EQ(log.text(), "");
  log.untitled("TL42RQDLL_ECHO", "5500");
  EXPECT_EQ(log.text(), "\r\n03-07-2026 09:05:04\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< 5500");
}

TEST_F(TraceLogTest, AppendRawAddsTheTextAsItStands) {
  log.appendRaw("\r\nLOOP 1");
  log.appendRaw("");
  EXPECT_EQ(log.text(), "\r\nLOOP 1");
}

TEST_F(TraceLogTest, SinkReceivesEachPieceAndTheClear) {
  std::vector<std::string> pieces;
  int clears = 0;
  log.setSink([&](const std::string& p) { pieces.push_back(p); }, [&] { ++clears; });
  log.untitled("TL42RQDLL_ECHO", "5500");
  log.toolbox("TL42RQDLL_RESET_SPI", "00");
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_EQ(pieces[0], "\r\n03-07-2026 09:05:04\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< 5500");
  EXPECT_EQ(pieces[1], "\r\n03-07-2026 \t>>> TL42RQDLL_RESET_SPI\r\n\t\t<<< 00");
  EXPECT_EQ(pieces[0] + pieces[1], log.text());
  log.clear();
  EXPECT_EQ(clears, 1);
}

TEST_F(TraceLogTest, WithoutSinkNothingBreaks) {
  log.setSink(nullptr, nullptr);
  log.untitled("TL42RQDLL_ECHO", "5500");
  log.clear();
  EXPECT_TRUE(log.empty());
}

TEST_F(TraceLogTest, ResettingTheClockGoesBackToTheSystemClock) {
  reader::setClock(nullptr);
  const DateTime t = reader::clock().now();
  EXPECT_GE(t.year, 2024);
  EXPECT_GE(t.month, 1);
  EXPECT_LE(t.month, 12);
  EXPECT_LE(t.hour, 23);
}

TEST(TraceLogWords, OperationWordsAreTheLogLiterals) {
  using reader::Op;
  EXPECT_STREQ(reader::logWord(Op::USBconnect), "TL42RQDLL_USB_CONNECT");
  EXPECT_STREQ(reader::logWord(Op::USBhandlecheck), "TL42RQDLL_USB_HANDLE_CHECK");
  EXPECT_STREQ(reader::logWord(Op::GetDLLrev), "TL42RQDLL_GETDLLREV");
  EXPECT_STREQ(reader::logWord(Op::getMCUrev), "TL42RQDLL_GETMCUREV");
  EXPECT_STREQ(reader::logWord(Op::Idn), "TL42RQDLL_IDN");
  EXPECT_STREQ(reader::logWord(Op::Echo), "TL42RQDLL_ECHO");
  EXPECT_STREQ(reader::logWord(Op::Select), "TL42RQDLL_SELECT");
  EXPECT_STREQ(reader::logWord(Op::SendReceive), "TL42RQDLL_SENDRECV");
  EXPECT_STREQ(reader::logWord(Op::KQCmd), "TL42RQDLL_KQCMD");
  EXPECT_STREQ(reader::logWord(Op::FieldOff), "TL42RQDLL_FIELDOFF");
  EXPECT_STREQ(reader::logWord(Op::ResetSPI), "TL42RQDLL_RESET_SPI");
  EXPECT_STREQ(reader::logWord(Op::SendIRQPulse), "TL42RQDLL_PULSE_IRQ_IN");
  EXPECT_STREQ(reader::logWord(Op::SendNSSPulse), "TL42RQDLL_NSS_PULSE");
  EXPECT_STREQ(reader::logWord(Op::Polling_Reading), "TL42RQDLL_POLLING_READING");
  EXPECT_STREQ(reader::logWord(Op::getInterfacePinState), "TL42RQDLL_GET_INTERFACE_PIN_STATE");
}

TEST(TraceLogWords, OperationTableIsInEnumOrderWithExactSymbols) {
  const char* symbols[] = {"TL42RQDLL_USBconnect",      "TL42RQDLL_USBhandlecheck", "TL42RQDll_GetDLLrev",
                           "TL42RQDLL_getMCUrev",       "TL42RQDll_Idn",            "TL42RQDll_Echo",
                           "TL42RQDll_Select",          "TL42RQDll_SendReceive",    "TL42RQDll_KQCmd",
                           "TL42RQDll_FieldOff",        "TL42RQDll_ResetSPI",       "TL42RQDll_SendIRQPulse",
                           "TL42RQDll_SendNSSPulse",    "TL42RQDll_Polling_Reading",
                           "TL42RQDLL_getInterfacePinState"};
  for (std::size_t i = 0; i < reader::kOperations.size(); ++i) {
    EXPECT_EQ(static_cast<std::size_t>(reader::kOperations[i].op), i);
    EXPECT_STREQ(reader::kOperations[i].symbol, symbols[i]);
  }
}

}  // namespace
