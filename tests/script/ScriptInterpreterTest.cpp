// The script language run against a fake driver with a fixed clock: every log text is
// compared whole, every request the board would get is checked.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "reader/Drivers.h"
#include "reader/TraceLog.h"
#include "script/ScriptInterpreter.h"
#include "shell/GlobVariables.h"

namespace {

using reader::FakeDriver;
using reader::Op;
using script::RunOutcome;

// "\r\n" and the fixed date and time every entry starts with.
const std::string T = "\r\n11-21-2026 10:20:30";

std::string entry(const std::string& what, const std::string& answer) {
  return T + "\t>>> " + what + "\r\n\t\t\t<<< " + answer;
}
std::string failure(const std::string& line, const std::string& message) {
  return T + "\t>>> " + line + "\r\n\t\t\t" + message;
}
std::string titled(const std::string& title, const std::string& frame, const std::string& answer) {
  return T + "\t" + title + "\r\n\t\t\t>>> TL42RQDLL_SENDRECV, " + frame + "\r\n\t\t\t<<< " + answer;
}

class ScriptRun : public ::testing::Test {
 protected:
  void SetUp() override {
    reader::setClock(std::make_shared<reader::FixedClock>(reader::DateTime{2026, 11, 21, 10, 20, 30}));
    glob::state() = glob::GlobVariables();
    glob::state().statusPanel1 = "TL42RQ_Development_Software DEMO-TL42RQ-A BOARD CONNECTED";
  }
  void TearDown() override { reader::setClock(nullptr); }

  // Loads the bytes as Load Script does and launches them.
  RunOutcome run(const std::string& fileBytes) {
    script::Interpreter in(driver, log, [this](long long n) { yields.push_back(n); }, loop);
    return in.launch(script::viewTextOfFile(fileBytes));
  }

  std::vector<std::string> requests(Op op) const {
    std::vector<std::string> out;
    for (const auto& c : driver.callsOf(op)) out.push_back(c.request);
    return out;
  }
  std::vector<Op> ops() const {
    std::vector<Op> out;
    for (const auto& c : driver.calls()) out.push_back(c.op);
    return out;
  }

  FakeDriver driver;
  reader::TraceLog log;
  script::PlainLoopControls loop;
  std::vector<long long> yields;
};

// ---- the script text ---------------------------------------------------------------

TEST(ScriptText, LoadJoinsLineFeedPiecesWithCrLfAndDropsAnEmptyLastPiece) {
  EXPECT_EQ(script::viewTextOfFile("A\nB\n"), "A\r\nB");
  EXPECT_EQ(script::viewTextOfFile("A\nB"), "A\r\nB");
  EXPECT_EQ(script::viewTextOfFile("A\n\nB\n\n"), "A\r\n\r\nB\r\n");
  EXPECT_EQ(script::viewTextOfFile("\n"), "");
}

TEST(ScriptText, CrLfFileShowsCrCrLfInTheView) {
  EXPECT_EQ(script::viewTextOfFile("A\r\nB\r\nC"), "A\r\r\nB\r\r\nC");
}

TEST(ScriptText, SaveTurnsEveryPairOfCarriageReturnsIntoOne) {
  EXPECT_EQ(script::fileTextOfView("A\r\r\nB\r\r\nC"), "A\r\nB\r\nC");
  EXPECT_EQ(script::fileTextOfView("\r\r\r"), "\r\r");
  EXPECT_EQ(script::fileTextOfView("\r\r\r\r"), "\r\r");
  EXPECT_EQ(script::fileTextOfView("A\r\nB"), "A\r\nB");
}

TEST(ScriptText, CrLfFileWithoutFinalLineEndComesBackByteForByte) {
  const std::string file = "REM, start\r\nTL42RQDLL_ECHO\r\n\r\nWAIT, 10\r\nTL42RQDLL_IDN";
  EXPECT_EQ(script::fileTextOfView(script::viewTextOfFile(file)), file);
}

TEST(ScriptText, FinalLineEndIsDroppedByLoadingAndNotRestoredBySaving) {
  // The empty piece after the last line feed is dropped when loading, so a CR LF file
  // ending in a line end comes back with a carriage return alone at its end.
  EXPECT_EQ(script::fileTextOfView(script::viewTextOfFile("A\r\nB\r\n")), "A\r\nB\r");
  EXPECT_EQ(script::fileTextOfView(script::viewTextOfFile("A\nB\n")), "A\r\nB");
}

TEST(ScriptText, LaunchSplitsAtCarriageReturns) {
  EXPECT_EQ(script::splitLines("A\r\r\nB"), (std::vector<std::string>{"A", "", "\nB"}));
  EXPECT_EQ(script::splitLines(""), std::vector<std::string>{});
}

TEST(ScriptLine, CleaningRemovesLineEndsAndTabsThenBlanksAndUpperCases) {
  const auto c = script::cleanLine("\n\ttl42rqdll_select , 04 51\t");
  EXPECT_EQ(c.text, "TL42RQDLL_SELECT,0451");
  EXPECT_FALSE(c.comment);
}

TEST(ScriptLine, CapitalRemKeepsBlanksAndCaseButLosesTabs) {
  const auto c = script::cleanLine("\nREM, Send\tthe Echo ");
  EXPECT_EQ(c.text, "REM, Sendthe Echo ");
  EXPECT_TRUE(c.comment);
}

TEST(ScriptLine, TokensSplitAtEveryCommaAndAnEmptyLineHasNone) {
  EXPECT_EQ(script::tokenize(""), std::vector<std::string>{});
  EXPECT_EQ(script::tokenize(","), (std::vector<std::string>{"", ""}));
  EXPECT_EQ(script::tokenize("A,B,C"), (std::vector<std::string>{"A", "B", "C"}));
}

// ---- Part of the interpreter: lines, comments, loops -------------------------------

TEST_F(ScriptRun, TextOfBlankLinesOnlyLogsEmptyLinesAndEnds) {
  // Three line feeds: the view holds "\r\n\r\n", whose lines are "", "\n" and "\n".
  EXPECT_EQ(run("\n\n\n"), RunOutcome::Finished);
  EXPECT_EQ(log.text(), "\r\n\r\n");
  EXPECT_TRUE(driver.calls().empty());
}

TEST_F(ScriptRun, CrLfBlankLinesLogOneEmptyLineEachAfterTheFirst) {
  EXPECT_EQ(run("\r\n\r\n\r\n"), RunOutcome::Finished);
  EXPECT_EQ(log.text(), "\r\n\r\n");
}

TEST_F(ScriptRun, EmptyLineBetweenCommandsIsCopiedToTheLog) {
  driver.queue(Op::Echo, 0, "5500");
  driver.queue(Op::Idn, 0, "000F");
  EXPECT_EQ(run("TL42RQDLL_ECHO\n\nTL42RQDLL_IDN"), RunOutcome::Finished);
  EXPECT_EQ(log.text(), entry("TL42RQDLL_ECHO", "5500") + "\r\n" + entry("TL42RQDLL_IDN", "000F"));
}

TEST_F(ScriptRun, LineOfBlanksOrTabsLogsNothing) {
  driver.queue(Op::Echo, 0, "5500");
  driver.queue(Op::Echo, 0, "5500");
  EXPECT_EQ(run("TL42RQDLL_ECHO\n   \t  \nTL42RQDLL_ECHO\n\t"), RunOutcome::Finished);
  EXPECT_EQ(log.text(), entry("TL42RQDLL_ECHO", "5500") + entry("TL42RQDLL_ECHO", "5500"));
}

TEST_F(ScriptRun, RemWithBlankInsteadOfCommaIsNotRecognized) {
  driver.queue(Op::Echo, 0, "5500");
  EXPECT_EQ(run("REM hello\nTL42RQDLL_ECHO"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(),
            "\r\n11-21-2026 10:20:30\t>>> REM hello\r\n\t\t\t!!! Script Error : Command not recognized !!! ");
  EXPECT_TRUE(driver.calls().empty());
}

TEST_F(ScriptRun, CapitalCommentKeepsItsBlanksAndCase) {
  EXPECT_EQ(run("REM, send ECHO request"), RunOutcome::Finished);
  EXPECT_EQ(log.text(), "\r\n11-21-2026 10:20:30\tREM,  send ECHO request");
}

TEST_F(ScriptRun, LowerCaseCommentIsUpperCasedStrippedAndStillLoggedAsComment) {
  EXPECT_EQ(run("rem, send Echo request"), RunOutcome::Finished);
  EXPECT_EQ(log.text(), T + "\tREM, SENDECHOREQUEST");
}

TEST_F(ScriptRun, CommentLogsOnlyUpToItsSecondComma) {
  EXPECT_EQ(run("REM, first, second, third\nREM"), RunOutcome::Finished);
  EXPECT_EQ(log.text(), T + "\tREM,  first" + T + "\tREM");
}

TEST_F(ScriptRun, CommentYieldsBeforeItIsSplit) {
  EXPECT_EQ(run("REM, a"), RunOutcome::Finished);
  // The comment's own turn, the turn after the line, the turn after the pass.
  EXPECT_EQ(yields, (std::vector<long long>{1, 1, 1}));
}

TEST_F(ScriptRun, UnknownKeywordEndsTheRunWithTheCleanedLine) {
  driver.queue(Op::Echo, 0, "5500");
  EXPECT_EQ(run("TL42RQDLL_ECHO\n tl42rqdll_unknown , 12\nTL42RQDLL_ECHO"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(), entry("TL42RQDLL_ECHO", "5500") +
                            failure("TL42RQDLL_UNKNOWN,12", "!!! Script Error : Command not recognized !!! "));
  EXPECT_EQ(driver.calls().size(), 1u);
}

TEST_F(ScriptRun, LoopWithNumberOneRunsOnceAndLeavesTheCountAtZero) {
  driver.setHandler([](Op, const std::string&) { return FakeDriver::Reply{0, "5500"}; });
  loop.switchOn("1");
  EXPECT_EQ(run("TL42RQDLL_ECHO"), RunOutcome::Finished);
  EXPECT_EQ(driver.calls().size(), 1u);
  EXPECT_EQ(log.text(), entry("TL42RQDLL_ECHO", "5500"));
  EXPECT_TRUE(loop.countVisible);
  EXPECT_EQ(loop.count, 0);
  EXPECT_EQ(loop.number, "0");
  EXPECT_FALSE(loop.flag);
  EXPECT_FALSE(loop.numberVisible);
}

TEST_F(ScriptRun, LoopWithNumberThreeRunsThreeTimesAndShowsCountTwo) {
  driver.setHandler([](Op, const std::string&) { return FakeDriver::Reply{0, "5500"}; });
  loop.switchOn("3");
  EXPECT_EQ(run("REM, pass\nTL42RQDLL_ECHO"), RunOutcome::Finished);
  EXPECT_EQ(driver.calls().size(), 3u);
  const std::string pass = T + "\tREM,  pass" + entry("TL42RQDLL_ECHO", "5500");
  EXPECT_EQ(log.text(), pass + pass + pass);
  EXPECT_EQ(loop.count, 2);
  EXPECT_EQ(loop.number, "0");
  EXPECT_FALSE(loop.flag);
}

TEST_F(ScriptRun, WithoutLoopTheCountIsHiddenAndOnePassRuns) {
  driver.setHandler([](Op, const std::string&) { return FakeDriver::Reply{0, "5500"}; });
  loop.countVisible = true;
  EXPECT_EQ(run("TL42RQDLL_ECHO"), RunOutcome::Finished);
  EXPECT_FALSE(loop.countVisible);
  EXPECT_EQ(driver.calls().size(), 1u);
}

TEST_F(ScriptRun, EmptyLineIsLoggedInTheFirstPassOnlyBecauseLaterPassesSeeCleanedLines) {
  driver.setHandler([](Op, const std::string&) { return FakeDriver::Reply{0, "5500"}; });
  loop.switchOn("2");
  EXPECT_EQ(run("TL42RQDLL_ECHO\n\nTL42RQDLL_ECHO"), RunOutcome::Finished);
  const std::string echo = entry("TL42RQDLL_ECHO", "5500");
  EXPECT_EQ(log.text(), echo + "\r\n" + echo + echo + echo);
}

TEST_F(ScriptRun, LowerCaseCommentIsACapitalCommentFromTheSecondPassOn) {
  loop.switchOn("2");
  script::Interpreter in(driver, log, nullptr, loop);
  EXPECT_EQ(in.launch(script::viewTextOfFile("rem, Hello World")), RunOutcome::Finished);
  EXPECT_EQ(log.text(), T + "\tREM, HELLOWORLD" + T + "\tREM, HELLOWORLD");
  EXPECT_EQ(in.lines(), std::vector<std::string>{"REM,HELLOWORLD"});
}

TEST_F(ScriptRun, ErrorInTheSecondPassOfTenStopsAndTheBoxShowsThePassesLeft) {
  driver.setHandler([](Op, const std::string&) { return FakeDriver::Reply{0, "5500"}; });
  loop.switchOn("10");
  // Nothing in a script changes between passes by itself: the line array is changed at
  // the turn of the event loop that ends the first pass, as if its second line had
  // always been an unknown keyword from then on.
  script::Interpreter* running = nullptr;
  bool changed = false;
  script::Interpreter in(driver, log,
                         [&](long long) {
                           if (!changed && loop.number == "9") {
                             running->lineArray()[1] = "TL42RQDLL_BAD";
                             changed = true;
                           }
                         },
                         loop);
  running = &in;
  EXPECT_EQ(in.launch(script::viewTextOfFile("TL42RQDLL_ECHO\nTL42RQDLL_ECHO")), RunOutcome::ScriptError);
  const std::string echo = entry("TL42RQDLL_ECHO", "5500");
  EXPECT_EQ(log.text(), echo + echo + echo +
                            failure("TL42RQDLL_BAD", "!!! Script Error : Command not recognized !!! "));
  EXPECT_EQ(loop.number, "9");
  EXPECT_EQ(loop.count, 1);
  // The flag stays set after an error; only the run ends.
  EXPECT_TRUE(loop.flag);
  EXPECT_EQ(driver.calls().size(), 3u);
}

TEST_F(ScriptRun, EndlessLoopEndsAfterThePassInWhichTheSwitchWentOff) {
  int echoes = 0;
  driver.setHandler([&](Op op, const std::string&) {
    // The person switches the loop off during the fifth pass.
    if (op == Op::Echo && ++echoes == 5) loop.switchLoopOff();
    return FakeDriver::Reply{0, "5500"};
  });
  loop.switchOn("0");
  EXPECT_EQ(run("TL42RQDLL_ECHO\nTL42RQDLL_IDN"), RunOutcome::Finished);
  EXPECT_EQ(echoes, 5);
  EXPECT_EQ(driver.callsOf(Op::Idn).size(), 5u);  // the fifth pass still ran to its end
  EXPECT_EQ(loop.count, 4);
  EXPECT_EQ(loop.number, "0");
}

TEST(LoopRule, ZeroCountsWithoutEnd) {
  script::PlainLoopControls c;
  c.switchOn("0");
  script::applyLoopRule(c);
  script::applyLoopRule(c);
  EXPECT_EQ(c.count, 2);
  EXPECT_EQ(c.number, "0");
  EXPECT_TRUE(c.flag);
}

TEST(LoopRule, OtherNumbersCountDown) {
  script::PlainLoopControls c;
  c.switchOn("12");
  script::applyLoopRule(c);
  EXPECT_EQ(c.number, "11");
  EXPECT_EQ(c.count, 1);
  EXPECT_TRUE(c.flag);
}

TEST(LoopRule, TextThatIsNoWholeNumberEndsTheLoopAsOneDoes) {
  for (const char* text : {"", "abc", "2.5", "99999999999999999999"}) {
    script::PlainLoopControls c;
    c.switchOn(text);
    script::applyLoopRule(c);
    EXPECT_FALSE(c.flag) << text;
    EXPECT_EQ(c.number, "0") << text;
    EXPECT_EQ(c.count, 0) << text;
  }
}

// ---- the commands --------------------------------------------------------------------

TEST_F(ScriptRun, WaitWithHexadecimalLetterGivesTheHexadecimalMessage) {
  EXPECT_EQ(run("WAIT, 12A"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(), failure("WAIT,12A", "!!! Script Error : Data not in Hexadecimal format !!! "));
}

TEST_F(ScriptRun, WaitWithEightDigitsGivesTheMaximumMessage) {
  EXPECT_EQ(run("WAIT, 12345678"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(), "\r\n11-21-2026 10:20:30\t>>> WAIT,12345678\r\n\t\t\t"
                        "!!! Script Error : Wait value is more than maximun accepted : 9999999 !!! ");
  EXPECT_TRUE(yields.empty());
}

TEST_F(ScriptRun, WaitWithZeroYieldsOnce) {
  EXPECT_EQ(run("WAIT, 0"), RunOutcome::Finished);
  EXPECT_EQ(log.text(), T + "\tWAIT, 0");
  // WAIT's own single turn, then the turn after the line and the one after the pass.
  EXPECT_EQ(yields, (std::vector<long long>{1, 1, 1}));
}

TEST_F(ScriptRun, WaitYieldsItsValuePlusOne) {
  EXPECT_EQ(run("WAIT,9999999"), RunOutcome::Finished);
  EXPECT_EQ(log.text(), T + "\tWAIT, 9999999");
  EXPECT_EQ(yields, (std::vector<long long>{10000000, 1, 1}));
}

TEST_F(ScriptRun, WaitWithoutArgumentFindsNoData) {
  EXPECT_EQ(run("WAIT"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(), failure("WAIT", "!!! Script Error : No Data found for this dll command !!! "));
  log.clear();
  EXPECT_EQ(run("WAIT,"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(), failure("WAIT,", "!!! Script Error : No Data found for this dll command !!! "));
  log.clear();
  EXPECT_EQ(run("WAIT,1,2"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(), failure("WAIT,1,2", "!!! Script Error : No Data found for this dll command !!! "));
}

TEST_F(ScriptRun, SelectWithoutCommaFindsNoData) {
  EXPECT_EQ(run("TL42RQDLL_SELECT"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(), failure("TL42RQDLL_SELECT", "!!! Script Error : No Data found for this dll command !!! "));
  EXPECT_TRUE(driver.calls().empty());
}

TEST_F(ScriptRun, SelectWithTwoArgumentsFindsNoDataRatherThanTooMuch) {
  EXPECT_EQ(run("TL42RQDLL_SELECT, 02, 00"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(),
            failure("TL42RQDLL_SELECT,02,00", "!!! Script Error : No Data found for this dll command !!! "));
}

TEST_F(ScriptRun, DataChecksRunInTheirOrder) {
  // A bad character is reported before an odd length.
  EXPECT_EQ(run("TL42RQDLL_SENDRECV, 0G1"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(), failure("TL42RQDLL_SENDRECV,0G1", "!!! Script Error : Data not in Hexadecimal format !!! "));
  log.clear();
  EXPECT_EQ(run("TL42RQDLL_SENDRECV, 260"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(),
            failure("TL42RQDLL_SENDRECV,260", "!!! Script Error : Data not compliant with dll command !!! "));
  log.clear();
  // Odd length is checked before the first byte of KQCMD.
  EXPECT_EQ(run("TL42RQDLL_KQCMD, 030"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(), failure("TL42RQDLL_KQCMD,030", "!!! Script Error : Data not compliant with dll command !!! "));
  EXPECT_TRUE(driver.calls().empty());
}

TEST_F(ScriptRun, KQCmdWithFirstByteThreeIsRefused) {
  EXPECT_EQ(run("TL42RQDLL_KQCMD, 0301"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(),
            failure("TL42RQDLL_KQCMD,0301", "!!! Script Error : 1st byte needed to be equal to '01' or '02' !!! "));
  EXPECT_TRUE(driver.calls().empty());
}

TEST_F(ScriptRun, KQCmdIsSentWholeAndLoggedWithTheModeApart) {
  driver.queue(Op::KQCmd, 0, "000F544C343252510000000000003A22");
  EXPECT_EQ(run("TL42RQDLL_KQCMD, 010100"), RunOutcome::Finished);
  EXPECT_EQ(requests(Op::KQCmd), std::vector<std::string>{"010100"});
  EXPECT_EQ(log.text(), "\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_KQCMD, 01 0100\r\n"
                        "\t\t\t<<< 000F544C343252510000000000003A22");
}

TEST_F(ScriptRun, KQCmdModeTwoIsAccepted) {
  driver.queue(Op::KQCmd, 0, "00");
  EXPECT_EQ(run("TL42RQDLL_KQCMD,0204260100"), RunOutcome::Finished);
  EXPECT_EQ(requests(Op::KQCmd), std::vector<std::string>{"0204260100"});
  EXPECT_EQ(log.text(), entry("TL42RQDLL_KQCMD, 02 04260100", "00"));
}

TEST_F(ScriptRun, EchoWithAnyArgumentIsTooMuch) {
  EXPECT_EQ(run("TL42RQDLL_ECHO, 55"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(), failure("TL42RQDLL_ECHO,55", "!!! Script Error : Too much Data parameters !!! "));
  log.clear();
  EXPECT_EQ(run("TL42RQDLL_ECHO,"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(), failure("TL42RQDLL_ECHO,", "!!! Script Error : Too much Data parameters !!! "));
  EXPECT_TRUE(driver.calls().empty());
}

TEST_F(ScriptRun, LowerCaseKeywordWorks) {
  driver.queue(Op::Echo, 0, "5500");
  driver.queue(Op::Select, 0, "0000");
  EXPECT_EQ(run("tl42rqdll_echo\ntl42rqdll_select, 02000180"), RunOutcome::Finished);
  EXPECT_EQ(requests(Op::Select), std::vector<std::string>{"02000180"});
  EXPECT_EQ(log.text(), entry("TL42RQDLL_ECHO", "5500") + entry("TL42RQDLL_SELECT, 02000180", "0000"));
}

TEST_F(ScriptRun, EveryPlainKeywordCallsItsOperationAndLogsItsWord) {
  struct Case {
    const char* line;
    Op op;
    const char* word;
  };
  const Case cases[] = {
      {"TL42RQDLL_ECHO", Op::Echo, "TL42RQDLL_ECHO"},
      {"TL42RQDLL_IDN", Op::Idn, "TL42RQDLL_IDN"},
      {"TL42RQDLL_FIELDOFF", Op::FieldOff, "TL42RQDLL_FIELDOFF"},
      {"TL42RQDLL_GETDLLREV", Op::GetDLLrev, "TL42RQDLL_GETDLLREV"},
      {"TL42RQDLL_PULSE_IRQ_IN", Op::SendIRQPulse, "TL42RQDLL_PULSE_IRQ_IN"},
      {"TL42RQDLL_NSS_PULSE", Op::SendNSSPulse, "TL42RQDLL_NSS_PULSE"},
      {"TL42RQDLL_POLLING_READING", Op::Polling_Reading, "TL42RQDLL_POLLING_READING"},
      {"TL42RQDLL_GETMCUREV", Op::getMCUrev, "TL42RQDLL_MCUREV"},
      {"TL42RQDLL_MCUREV", Op::getMCUrev, "TL42RQDLL_MCUREV"},
      {"TL42RQDLL_RESET_SPI", Op::ResetSPI, "TL42RQDLL_RESET_SPI"},
  };
  for (const Case& c : cases) {
    driver.clearCalls();
    log.clear();
    driver.queue(c.op, 0, "0002AB");
    EXPECT_EQ(run(c.line), RunOutcome::Finished) << c.line;
    EXPECT_EQ(ops(), std::vector<Op>{c.op}) << c.line;
    EXPECT_EQ(log.text(), entry(c.word, "0002AB")) << c.line;
  }
}

TEST_F(ScriptRun, BothSendReceiveSpellingsLogTheLongWord) {
  driver.queue(Op::SendReceive, 0, "80054400280000");
  driver.queue(Op::SendReceive, 0, "80054400280000");
  EXPECT_EQ(run("TL42RQDLL_SENDRECV, 2607\nTL42RQDLL_SENDRECEIVE, 2607"), RunOutcome::Finished);
  EXPECT_EQ(requests(Op::SendReceive), (std::vector<std::string>{"2607", "2607"}));
  EXPECT_EQ(log.text(), entry("TL42RQDLL_SENDRECEIVE, 2607", "80054400280000") +
                            entry("TL42RQDLL_SENDRECEIVE, 2607", "80054400280000"));
}

TEST_F(ScriptRun, StatusFiveReconnectsWithoutRepeatAndTheScriptGoesOn) {
  driver.queue(Op::Echo, 5, "");
  driver.queue(Op::USBhandlecheck, 0, "");
  driver.queue(Op::Idn, 0, "000F");
  EXPECT_EQ(run("TL42RQDLL_ECHO\nTL42RQDLL_IDN"), RunOutcome::Finished);
  EXPECT_EQ(ops(), (std::vector<Op>{Op::Echo, Op::USBconnect, Op::USBhandlecheck, Op::Idn}));
  EXPECT_EQ(log.text(), entry("TL42RQDLL_ECHO", "") + entry("TL42RQDLL_IDN", "000F"));
}

TEST_F(ScriptRun, FailedReconnectMarksTheBoardNotConnected) {
  driver.queue(Op::FieldOff, 5, "");
  driver.queue(Op::USBhandlecheck, 5, "");
  EXPECT_EQ(run("TL42RQDLL_FIELDOFF"), RunOutcome::Finished);
  EXPECT_EQ(ops(), (std::vector<Op>{Op::FieldOff, Op::USBconnect, Op::USBhandlecheck}));
  EXPECT_EQ(glob::state().statusPanel1, "TL42RQ_Development_Software DEMO-TL42RQ-A BOARD NOT CONNECTED");
}

TEST_F(ScriptRun, DllRevisionHasNoReconnect) {
  driver.queue(Op::GetDLLrev, 5, "");
  EXPECT_EQ(run("TL42RQDLL_GETDLLREV"), RunOutcome::Finished);
  EXPECT_EQ(ops(), std::vector<Op>{Op::GetDLLrev});
  EXPECT_EQ(log.text(), entry("TL42RQDLL_GETDLLREV", ""));
}

TEST_F(ScriptRun, AnswerIsCutAtItsFirstNul) {
  driver.setRawAnswer(std::string("5500\0FF", 7));
  EXPECT_EQ(run("TL42RQDLL_ECHO"), RunOutcome::Finished);
  EXPECT_EQ(log.text(), entry("TL42RQDLL_ECHO", "5500"));
}

TEST_F(ScriptRun, UsbKeywordsLogTheirFixedTextsForResultZero) {
  EXPECT_EQ(run("TL42RQDLL_USB_CONNECT\nTL42RQDLL_USB_HANDLE_CHECK"), RunOutcome::Finished);
  EXPECT_EQ(log.text(),
            "\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_USB_CONNECT\r\n"
            "\t\t\t<<< return 0 value : DEMO-TL42RQ-A always connected to USB port"
            "\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_USB_HANDLE_CHECK\r\n"
            "\t\t\t<<< return 0 value : DEMO-TL42RQ-A always connected to USB port");
  EXPECT_EQ(ops(), (std::vector<Op>{Op::USBconnect, Op::USBhandlecheck}));
}

TEST_F(ScriptRun, UsbKeywordsLogTheirFixedTextsWithTheResultOtherwise) {
  driver.queue(Op::USBconnect, 5, "");
  driver.queue(Op::USBhandlecheck, -3, "");
  EXPECT_EQ(run("TL42RQDLL_USB_CONNECT\nTL42RQDLL_USB_HANDLE_CHECK"), RunOutcome::Finished);
  EXPECT_EQ(log.text(),
            "\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_USB_CONNECT\r\n"
            "\t\t\t<<< return 5 value : DEMO-TL42RQ-A reconnection failed\r\n"
            "\t\t\tverify DEMO-TL42RQ-A USB connection"
            "\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_USB_HANDLE_CHECK\r\n"
            "\t\t\t<<< return -3 value : DEMO-TL42RQ-A not connected USB port\r\n"
            "\t\t\tuse the 'TL42RQDLL_USBconnect' function to reconnect your DEMO-TL42RQ-A");
  // No reconnect for these two, whatever they return.
  EXPECT_EQ(ops(), (std::vector<Op>{Op::USBconnect, Op::USBhandlecheck}));
}

TEST_F(ScriptRun, InterfacePinStateRunsLogsAndEndsTheScript) {
  driver.queue(Op::getInterfacePinState, 0, "000101");
  EXPECT_EQ(run("TL42RQDLL_GET_INTERFACE_PIN_STATE\nTL42RQDLL_ECHO"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(), entry("TL42RQDLL_GET_INTERFACE_PIN_STATE", "000101") +
                            failure("TL42RQDLL_GET_INTERFACE_PIN_STATE",
                                    "!!! Script Error : Command not yet implemented !!! "));
  EXPECT_EQ(ops(), std::vector<Op>{Op::getInterfacePinState});
}

TEST_F(ScriptRun, PdySelectBeforeAnyInitiateSendsChipIdZero) {
  driver.queue(Op::SendReceive, 0, "80030000");
  EXPECT_EQ(run("TL42RQ_PDYXX_SELECT"), RunOutcome::Finished);
  EXPECT_EQ(requests(Op::SendReceive), std::vector<std::string>{"0E00"});
  EXPECT_EQ(log.text(), "\r\n11-21-2026 10:20:30\t>>> TL42RQ_PDYXX_SELECT (Chip_ID = 00)\r\n\t\t\t<<< 80030000");
}

TEST_F(ScriptRun, PdyInitiateKeepsTheChipIdForTheSelect) {
  driver.queue(Op::SendReceive, 0, "80043D010000");
  driver.queue(Op::SendReceive, 0, "80043D010000");
  EXPECT_EQ(run("tl42rq_pdyxx_initiate\nTL42RQ_PDYxx_Select"), RunOutcome::Finished);
  EXPECT_EQ(requests(Op::SendReceive), (std::vector<std::string>{"0600", "0E3D"}));
  EXPECT_EQ(log.text(), entry("TL42RQ_PDYXX_INITIATE", "80043D010000 (Chip_ID = 3D)") +
                            entry("TL42RQ_PDYXX_SELECT (Chip_ID = 3D)", "80043D010000"));
  EXPECT_EQ(glob::state().scriptChipId, "3D");
}

TEST_F(ScriptRun, PdyInitiateKeepsWhatTheAnswerHoldsWhateverTheStatus) {
  driver.queue(Op::SendReceive, 5, "87");
  EXPECT_EQ(run("TL42RQ_PDYXX_INITIATE\nTL42RQ_PDYXX_SELECT"), RunOutcome::Finished);
  // Status 5 reconnects with the ISO 14443-B select of the script; the short answer
  // leaves an empty Chip_Id, which the select then sends as it is.
  EXPECT_EQ(requests(Op::Select), std::vector<std::string>{"0301"});
  EXPECT_EQ(requests(Op::SendReceive), (std::vector<std::string>{"0600", "0E"}));
  EXPECT_EQ(log.text(), entry("TL42RQ_PDYXX_INITIATE", "87 (Chip_ID = )") +
                            entry("TL42RQ_PDYXX_SELECT (Chip_ID = )", ""));
}

TEST_F(ScriptRun, PdyCommandsTakeNoArgument) {
  EXPECT_EQ(run("TL42RQ_PDYXX_SELECT, 3D"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(), failure("TL42RQ_PDYXX_SELECT,3D", "!!! Script Error : Too much Data parameters !!! "));
}

// ---- the one-line ISO 14443-A activation -------------------------------------------

const std::string kAnticolStart = "\r\n" + T +
                                  "\t>>> TL42RQDLL_ANTICOLSELECT123\r\n\r\n"
                                  "\t------ ISO14443-A STARTING ANTICOLISION ALGORITHM ------\r\n";
const std::string kAnticolEnd = "\r\n\r\n\t------ ISO14443-A END OF ANTICOLISION ALGORITHM ------\r\n\t\t\t ";

TEST_F(ScriptRun, AnticolSelectOfSingleSizeUid) {
  driver.queue(Op::SendReceive, 0, "80054400280000");
  driver.queue(Op::SendReceive, 0, "800804A1B2C3D4280000");
  driver.queue(Op::SendReceive, 0, "800608B6DD280000");
  EXPECT_EQ(run("TL42RQ_ISO14443-A_ANTICOLSELECT123"), RunOutcome::Finished);
  EXPECT_EQ(requests(Op::SendReceive), (std::vector<std::string>{"2607", "932008", "937004A1B2C3D428"}));
  EXPECT_EQ(log.text(), kAnticolStart + titled("ISO14443-A REQA", "2607", "80054400280000") +
                            titled("ISO14443-A ANTICOL 1", "932008", "800804A1B2C3D4280000") +
                            titled("ISO14443-A SELECT 1", "937004A1B2C3D428", "800608B6DD280000") +
                            "\r\n\r\n\t\t\t--> UID = A1B2C3D4\r\n\t\t\t--> TAG selected" + kAnticolEnd);
}

TEST_F(ScriptRun, AnticolSelectOfDoubleSizeUid) {
  driver.queue(Op::SendReceive, 0, "80054400280000");
  driver.queue(Op::SendReceive, 0, "80088804A1B29F280000");
  driver.queue(Op::SendReceive, 0, "800604DA17280000");
  driver.queue(Op::SendReceive, 0, "8008C3D4E5F604280000");
  driver.queue(Op::SendReceive, 0, "800600FE51280000");
  EXPECT_EQ(run("tl42rq_iso14443-a_anticolselect123"), RunOutcome::Finished);
  EXPECT_EQ(requests(Op::SendReceive), (std::vector<std::string>{"2607", "932008", "93708804A1B29F28", "952008",
                                                                 "9570C3D4E5F60428"}));
  EXPECT_EQ(log.text(), kAnticolStart + titled("ISO14443-A REQA", "2607", "80054400280000") +
                            titled("ISO14443-A ANTICOL 1", "932008", "80088804A1B29F280000") +
                            titled("ISO14443-A SELECT 1", "93708804A1B29F28", "800604DA17280000") +
                            titled("ISO14443-A ANTICOL 2", "952008", "8008C3D4E5F604280000") +
                            titled("ISO14443-A SELECT 2", "9570C3D4E5F60428", "800600FE51280000") +
                            "\r\n\r\n\t\t\t--> UID = 04A1B2D4E5F604\r\n\t\t\t--> TAG selected" + kAnticolEnd);
}

TEST_F(ScriptRun, AnticolSelectOfTripleSizeUidUsesLevelOneCodeAndNoFieldAtLevelThree) {
  driver.queue(Op::SendReceive, 0, "80054200280000");
  driver.queue(Op::SendReceive, 0, "80088804A1B29F280000");
  driver.queue(Op::SendReceive, 0, "800604DA17280000");
  driver.queue(Op::SendReceive, 0, "800888C3D4E58A280000");
  driver.queue(Op::SendReceive, 0, "800604DA17280000");
  driver.queue(Op::SendReceive, 0, "8008F6071829C0280000");
  driver.queue(Op::SendReceive, 0, "800600FE51280000");
  EXPECT_EQ(run("TL42RQ_ISO14443-A_ANTICOLSELECT123"), RunOutcome::Finished);
  EXPECT_EQ(requests(Op::SendReceive),
            (std::vector<std::string>{"2607", "932008", "93708804A1B29F28", "952008", "957088C3D4E58A28", "932008",
                                      "937028"}));
  EXPECT_EQ(log.text(), kAnticolStart + titled("ISO14443-A REQA", "2607", "80054200280000") +
                            titled("ISO14443-A ANTICOL 1", "932008", "80088804A1B29F280000") +
                            titled("ISO14443-A SELECT 1", "93708804A1B29F28", "800604DA17280000") +
                            titled("ISO14443-A ANTICOL 2", "952008", "800888C3D4E58A280000") +
                            titled("ISO14443-A SELECT 2", "957088C3D4E58A28", "800604DA17280000") +
                            titled("ISO14443-A ANTICOL 3", "932008", "8008F6071829C0280000") +
                            titled("ISO14443-A SELECT 3", "937028", "800600FE51280000") +
                            "\r\n\r\n\t\t\t--> UID = 04A1B2C3D4E5071829C0\r\n\t\t\t--> TAG selected" + kAnticolEnd);
}

TEST_F(ScriptRun, AnticolSelectGoesOnWhenOnlyTheSecondReqaWorks) {
  driver.queue(Op::SendReceive, 0, "87");
  driver.queue(Op::SendReceive, 0, "80054400280000");
  driver.queue(Op::SendReceive, 0, "800804A1B2C3D4280000");
  driver.queue(Op::SendReceive, 0, "800608B6DD280000");
  EXPECT_EQ(run("TL42RQ_ISO14443-A_ANTICOLSELECT123"), RunOutcome::Finished);
  EXPECT_EQ(requests(Op::SendReceive), (std::vector<std::string>{"2607", "2607", "932008", "937004A1B2C3D428"}));
  EXPECT_EQ(log.text(), kAnticolStart +
                            "\r\n11-21-2026 10:20:30\tISO14443-A REQA\r\n\t\t\t>>> TL42RQDLL_SENDRECV, 2607\r\n"
                            "\t\t\t<<< 87" +
                            titled("ISO14443-A REQA", "2607", "80054400280000") +
                            titled("ISO14443-A ANTICOL 1", "932008", "800804A1B2C3D4280000") +
                            titled("ISO14443-A SELECT 1", "937004A1B2C3D428", "800608B6DD280000") +
                            "\r\n\r\n\t\t\t--> UID = A1B2C3D4\r\n\t\t\t--> TAG selected" + kAnticolEnd);
}

TEST_F(ScriptRun, AnticolSelectWithoutTagShowsTwoReqasAndTheEnd) {
  driver.queue(Op::SendReceive, 0, "8700");
  driver.queue(Op::SendReceive, 0, "8700");
  driver.queue(Op::Echo, 0, "5500");
  EXPECT_EQ(run("TL42RQ_ISO14443-A_ANTICOLSELECT123\nTL42RQDLL_ECHO"), RunOutcome::Finished);
  EXPECT_EQ(log.text(), kAnticolStart + titled("ISO14443-A REQA", "2607", "8700") +
                            titled("ISO14443-A REQA", "2607", "8700") + kAnticolEnd +
                            entry("TL42RQDLL_ECHO", "5500"));
}

TEST_F(ScriptRun, AnticolSelectLeavesAtOnceWhenASelectFails) {
  driver.queue(Op::SendReceive, 0, "80054400280000");
  driver.queue(Op::SendReceive, 0, "800804A1B2C3D4280000");
  driver.queue(Op::SendReceive, 0, "8700");
  driver.queue(Op::Echo, 0, "5500");
  EXPECT_EQ(run("TL42RQ_ISO14443-A_ANTICOLSELECT123\nTL42RQDLL_ECHO"), RunOutcome::Finished);
  EXPECT_EQ(log.text(), kAnticolStart + titled("ISO14443-A REQA", "2607", "80054400280000") +
                            titled("ISO14443-A ANTICOL 1", "932008", "800804A1B2C3D4280000") +
                            titled("ISO14443-A SELECT 1", "937004A1B2C3D428", "8700") +
                            entry("TL42RQDLL_ECHO", "5500"));
}

TEST_F(ScriptRun, AnticolSelectOnStatusFiveSendsTheShortSelectAndEndsEarly) {
  driver.queue(Op::SendReceive, 0, "80054400280000");
  driver.queue(Op::SendReceive, 5, "");
  driver.queue(Op::USBhandlecheck, 0, "");
  EXPECT_EQ(run("TL42RQ_ISO14443-A_ANTICOLSELECT123"), RunOutcome::Finished);
  EXPECT_EQ(ops(), (std::vector<Op>{Op::SendReceive, Op::SendReceive, Op::USBconnect, Op::USBhandlecheck,
                                    Op::Select}));
  EXPECT_EQ(requests(Op::Select), std::vector<std::string>{"0200110"});
  EXPECT_EQ(log.text(), kAnticolStart + titled("ISO14443-A REQA", "2607", "80054400280000") +
                            titled("ISO14443-A ANTICOL 1", "932008", ""));
}

TEST_F(ScriptRun, AnticolSelectTakesNoArgument) {
  EXPECT_EQ(run("TL42RQ_ISO14443-A_ANTICOLSELECT123, 26"), RunOutcome::ScriptError);
  EXPECT_EQ(log.text(),
            failure("TL42RQ_ISO14443-A_ANTICOLSELECT123,26", "!!! Script Error : Too much Data parameters !!! "));
}

TEST_F(ScriptRun, EmptyViewRunsNothing) {
  script::Interpreter in(driver, log, nullptr, loop);
  EXPECT_EQ(in.launch(""), RunOutcome::NothingToRun);
  EXPECT_TRUE(log.empty());
}

}  // namespace
