// The console's explanation of answers, line by line, for every command and code.
#include <gtest/gtest.h>

#include "console/ResponseAnalyser.h"

using console::analyseAnswer;
using console::SendPanel;
using Lines = std::vector<std::string>;

namespace {
Lines xx(std::string_view command, std::string_view answer, int status = 0) {
  return analyseAnswer(SendPanel::Generic, command, status, answer).lines;
}
Lines on(SendPanel panel, std::string_view answer) { return analyseAnswer(panel, "", 0, answer).lines; }
}  // namespace

TEST(ResponseAnalyser, IdnShowsTheNameWithoutItsTwoLastBytes) {
  EXPECT_EQ(xx("01", "0008544C343252511234"),
            (Lines{"00 : Result code = OK", "08 : Lenght of Data (8)", "TL42RQ"}));
}

TEST(ResponseAnalyser, IdnOfLengthTwoShowsAnEmptyThirdLine) {
  EXPECT_EQ(xx("01", "00021234"), (Lines{"00 : Result code = OK", "02 : Lenght of Data (2)", ""}));
}

TEST(ResponseAnalyser, IdnWithAnotherCodeHasNoLines) { EXPECT_EQ(xx("01", "820000"), Lines{}); }

TEST(ResponseAnalyser, IdnWithAnUnreadableLengthWritesNoLineAtAll) {
  EXPECT_EQ(xx("01", "00ZZ4142"), Lines{});
  EXPECT_EQ(xx("01", "00"), Lines{});
}

TEST(ResponseAnalyser, IdnLengthBeyondTheAnswerStopsBeforeTheName) {
  EXPECT_EQ(xx("01", "0010414243"), (Lines{"00 : Result code = OK", "10 : Lenght of Data (16)"}));
}

TEST(ResponseAnalyser, ProtocolSelectOnItsPanelHasTheIdnShape) {
  EXPECT_EQ(on(SendPanel::ProtocolSelect, "0000"), (Lines{"00 : Result code = OK", "00 : Lenght of Data (0)", ""}));
  EXPECT_EQ(on(SendPanel::ProtocolSelect, "8200"), Lines{});
  EXPECT_EQ(on(SendPanel::ProtocolSelect, "830100"), Lines{});
}

TEST(ResponseAnalyser, PollFieldSaysWhetherTheFieldIsDetected) {
  EXPECT_EQ(xx("03", "000100"), (Lines{"00 : Result code = OK", "01 : Lenght of Data (1)", "00 : Field is not detected"}));
  EXPECT_EQ(xx("03", "000101"), (Lines{"00 : Result code = OK", "01 : Lenght of Data (1)", "01 : Field is detected"}));
  EXPECT_EQ(xx("03", "000107"), (Lines{"00 : Result code = OK", "01 : Lenght of Data (1)", "07 : ?!?"}));
  EXPECT_EQ(xx("03", "8200"), (Lines{"82 : Error code ", "00 : Lenght of Data (0)"}));
}

TEST(ResponseAnalyser, SendReceiveCutsTagFrameCrcAndProtocolResult) {
  EXPECT_EQ(xx("04", "800D0000E002000000000000CB1E00"),
            (Lines{"80 : Result code = OK", "0D : Lenght of Data (13)",
                   "00 00 E0 02 00 00 00 00 00 00 : Tag answer", "CB 1E : CRC", "00 : Protocol result"}));
}

TEST(ResponseAnalyser, SendReceiveOfLengthThreeHasOnlyTheTail) {
  EXPECT_EQ(xx("04", "8003AABBCC"),
            (Lines{"80 : Result code = OK", "03 : Lenght of Data (3)", ": Tag answer", "AA BB : CRC",
                   "CC : Protocol result"}));
}

TEST(ResponseAnalyser, SendReceiveOfLengthZeroCutsDownToTheResultCode) {
  // The CRC pair is cut at characters -1 and 1, the protocol result at 3: a position
  // below 1 gives an empty piece, and position 1 is the result code itself.
  EXPECT_EQ(xx("04", "8000"), (Lines{"80 : Result code = OK", "00 : Lenght of Data (0)", ": Tag answer",
                                     " 80 : CRC", "00 : Protocol result"}));
}

TEST(ResponseAnalyser, CodeNinetyReadsValidBitsNotALength) {
  EXPECT_EQ(xx("04", "90070A"), (Lines{"90 : Error code = ", "07 : Valid bits (7)", "ACK"}));
  EXPECT_EQ(xx("04", "900404"), (Lines{"90 : Error code = ", "04 : Valid bits (4)", "NAK"}));
  EXPECT_EQ(xx("04", "900401"), (Lines{"90 : Error code = ", "04 : Valid bits (4)", "NAK"}));
  EXPECT_EQ(xx("04", "900405"), (Lines{"90 : Error code = ", "04 : Valid bits (4)", "????"}));
}

TEST(ResponseAnalyser, EightySevenGivesItsTextAndLengthWithAnEqualsSign) {
  EXPECT_EQ(xx("04", "8700"), (Lines{"87 : Error code = Frame wait time out or no TAG", "00 : Lenght of Data = 0"}));
}

TEST(ResponseAnalyser, SendReceiveErrorCodesOfTheTable) {
  EXPECT_EQ(xx("04", "8600"), (Lines{"86 : Error code = Communication error", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("04", "8800"), (Lines{"88 : Error code = Invalid SOF", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("04", "8900"), (Lines{"89 : Error code = Receive buffer overflow", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("04", "8B00"), (Lines{"8B : Error code = EGT time out (for Iso14443-B)", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("04", "8C00"), (Lines{"8C : Error code = Invalid lenght. Used in Felica, when field Lenght < 3",
                                     "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("04", "8D00"), (Lines{"8D : Error code = CRC error (used in Felica protocol)", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("04", "8E00"), (Lines{"8E : Error code = Reception lost without EOF received", "00 : Lenght of Data (0)"}));
  // Codes outside the table get nothing for Send Receive.
  EXPECT_EQ(xx("04", "8200"), Lines{});
  EXPECT_EQ(xx("04", "0000"), Lines{});
}

TEST(ResponseAnalyser, ListenCodes) {
  EXPECT_EQ(xx("05", "0000"), (Lines{"00 : Result code = Confirm that the device now is in Listen mode",
                                     "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("05", "8200"), (Lines{"82 : Error code = Invalid command lenght", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("05", "8300"), (Lines{"83 : Error code = Invalid protocol or Listen is not supported by protocol",
                                     "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("05", "8F00"),
            (Lines{"83 : Error code = No field. Command cannot be executed because there are no field",
                   "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("05", "8700"), (Lines{"87 : Error code ", "00 : Lenght of Data (0)"}));
}

TEST(ResponseAnalyser, SendCodes) {
  EXPECT_EQ(xx("06", "0000"), (Lines{"00 : Result code = Data was successfully sent", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("06", "8300"), (Lines{"83 : Error code = Invalid protocol previously selected by Select Protocol command",
                                     "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("06", "8F00"), (Lines{"8F : Error code ", "00 : Lenght of Data (0)"}));
}

TEST(ResponseAnalyser, ReadRegisterShowsTheDataBytes) {
  EXPECT_EQ(xx("08", "000101"), (Lines{"00 : Result code = OK", "01 : Lenght of Data (1)", "Data : 01 "}));
  EXPECT_EQ(xx("08", "0002D1A0"), (Lines{"00 : Result code = OK", "02 : Lenght of Data (2)", "Data : D1 A0 "}));
  EXPECT_EQ(xx("08", "8200"), (Lines{"82 : Error code = Invalid command lenght", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("08", "8300"), (Lines{"83 : Error code ", "00 : Lenght of Data (0)"}));
}

TEST(ResponseAnalyser, WriteRegisterBaudRateAndTestModes) {
  EXPECT_EQ(xx("09", "0000"), (Lines{"00 : Result code = Data was successfully sent", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("09", "8200"), (Lines{"82 : Error code = Invalid command lenght", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("0A", "0000"), (Lines{"00 : Result code = OK", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("0A", "5500"), (Lines{"55 : Pseudo-response of 0x55", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("0A", "8200"), (Lines{"82 : Error code ", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("0B", "00020A0B"),
            (Lines{"00 : Result code = OK", "02 : Lenght of Data (2)", "Frequency reult : 0A 0B "}));
  EXPECT_EQ(xx("0B", "8200"), (Lines{"82 : Error code ", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("0E", "0000"), (Lines{"00 : Result code = Confirmation", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("0E", "8200"), (Lines{"82 : Error code ", "00 : Lenght of Data (0)"}));
}

TEST(ResponseAnalyser, SleepModeCodeEightyThreeGoesToTheCatchAll) {
  EXPECT_EQ(xx("0F", "0000"), (Lines{"00 : Result code = Confirmation", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("0F", "8200"), (Lines{"82 : Error code = Invalid command lenght", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(xx("0F", "8300"), (Lines{"83 : Error code ", "00 : Lenght of Data (0)"}));
}

TEST(ResponseAnalyser, EchoAndUnlistedCommandsGetNoLines) {
  EXPECT_EQ(xx("55", "5500"), Lines{});
  EXPECT_EQ(xx("55", "0000"), Lines{});
  EXPECT_EQ(xx("02", "0000"), Lines{});
  EXPECT_EQ(xx("", "0000"), Lines{});
}

TEST(ResponseAnalyser, IdleTwoLines) {
  EXPECT_EQ(on(SendPanel::Idle, "000101"),
            (Lines{"00 : Result code = Device exits from Idle mode", "01 : Lenght of Data (1)"}));
  EXPECT_EQ(on(SendPanel::Idle, "8200"), (Lines{"82 : Error code = Invalid command lenght", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(on(SendPanel::Idle, "8300"), (Lines{"83 : Error code ", "00 : Lenght of Data (0)"}));
}

TEST(ResponseAnalyser, FilterShowsItsBytesInARow) {
  EXPECT_EQ(on(SendPanel::Filter, "0002ABCD"),
            (Lines{"00 : Result code = Device is successfully Activated / Disactivated", "02 : Lenght of Data (2)",
                   "ABCD"}));
  EXPECT_EQ(on(SendPanel::Filter, "8200"), (Lines{"82 : Error code = Invalid command lenght", "00 : Lenght of Data (0)"}));
  EXPECT_EQ(on(SendPanel::Filter, "8300"), Lines{});
}

TEST(ResponseAnalyser, AnswerOf128CharactersIsExplainedAnd129IsNot) {
  const std::string data(124, 'A');
  const auto ok = analyseAnswer(SendPanel::Generic, "08", 0, "003E" + data);
  ASSERT_EQ(("003E" + data).size(), 128u);
  EXPECT_EQ(ok.answerBox, "003E" + data);
  ASSERT_EQ(ok.lines.size(), 3u);
  EXPECT_EQ(ok.lines[1], "3E : Lenght of Data (62)");
  const auto tooLong = analyseAnswer(SendPanel::Generic, "08", 0, "003E" + data + "A");
  EXPECT_EQ(tooLong.answerBox, "Not correct data sent by DEMO-TL42RQ-A");
  EXPECT_TRUE(tooLong.lines.empty());
}

TEST(ResponseAnalyser, TooLongComesBeforeTheStatus) {
  const auto e = analyseAnswer(SendPanel::Idle, "", 5, std::string(130, '0'));
  EXPECT_EQ(e.answerBox, "Not correct data sent by DEMO-TL42RQ-A");
}

TEST(ResponseAnalyser, FailureTextsOfThePanels) {
  auto e = analyseAnswer(SendPanel::Generic, "01", 5, "");
  EXPECT_EQ(e.answerBox, "Transaction error : Check your reader connections");
  EXPECT_TRUE(e.lines.empty());
  e = analyseAnswer(SendPanel::ProtocolSelect, "", 5, "");
  EXPECT_EQ(e.answerBox, "Transaction error : 5 ()");
  e = analyseAnswer(SendPanel::Idle, "", 1, "8700");
  EXPECT_EQ(e.answerBox, "Transaction error : 1 (87)");
  e = analyseAnswer(SendPanel::Filter, "", -3, "0");
  EXPECT_EQ(e.answerBox, "Transaction error : -3 (0)");
}

TEST(ResponseAnalyser, UnreadableLengthStopsAtTheFirstLineThatNeedsIt) {
  EXPECT_EQ(xx("04", "80G1"), Lines{"80 : Result code = OK"});
  EXPECT_EQ(xx("05", "12"), Lines{"12 : Error code "});
  EXPECT_EQ(on(SendPanel::Idle, "00"), Lines{"00 : Result code = Device exits from Idle mode"});
  EXPECT_EQ(on(SendPanel::Filter, "00 1"), Lines{"00 : Result code = Device is successfully Activated / Disactivated"});
}

TEST(ResponseAnalyser, LengthBeyondTheTextGivesEmptyPieces) {
  EXPECT_EQ(xx("08", "000301"), (Lines{"00 : Result code = OK", "03 : Lenght of Data (3)", "Data : 01   "}));
  EXPECT_EQ(xx("04", "8005AA"), (Lines{"80 : Result code = OK", "05 : Lenght of Data (5)", "AA  : Tag answer",
                                       "  : CRC", " : Protocol result"}));
}

TEST(ResponseAnalyser, OneDigitLengthReadsAsItsValue) {
  EXPECT_EQ(xx("09", "007"), (Lines{"00 : Result code = Data was successfully sent", "7 : Lenght of Data (7)"}));
}
