// Answer overrides of the field file: which call an entry answers, how often, in which
// order, what survives a reload and a reset, what the dump shows, and every refusal.
#include <gtest/gtest.h>

#include "simulator/board.h"
#include "simulator/fieldfile.h"
#include "simulator/SimSupport.h"

using simtest::ask;
using simtest::Reply;

namespace {

// One ISO 15693 tag, so that Send Receive has a simulated answer to be replaced.
std::string fieldWith(const std::string& answers) {
  return R"({"tags": [{"type": "iso15693", "uid": "E0022A0012345678", "blockSize": 4, "blockCount": 8,
              "memory": "E1400001"}], "answers": )" +
         answers + "}";
}

class AnswerOverridesTest : public ::testing::Test {
 protected:
  sim::Board board{"/nonexistent/TL42RQ_field.json"};

  void loadOnly(const std::string& answers) {
    ASSERT_EQ(board.loadField(fieldWith(answers).c_str()), 0) << board.lastError();
  }
  // Loads and selects ISO 15693, as a panel does before its frames.
  void load(const std::string& answers) {
    loadOnly(answers);
    ASSERT_EQ(select("010D"), (Reply{0, "0000"}));
  }
  Reply select(const char* p) { return ask([&](char* a) { return board.select(p, a); }); }
  Reply sendReceive(const char* f) { return ask([&](char* a) { return board.sendReceive(f, a); }); }
  Reply kq(const char* f) { return ask([&](char* a) { return board.kqCmd(f, a); }); }
  Reply idn() { return ask([&](char* a) { return board.idn(a); }); }
  Reply echo() { return ask([&](char* a) { return board.echo(a); }); }
  Reply dllRev() { return ask([&](char* a) { return board.dllRevision(a); }); }

  std::string dump() {
    std::string out(1 << 20, '\0');
    out.resize(static_cast<std::size_t>(board.dumpField(out.data(), static_cast<int>(out.size()))));
    return out;
  }
  // The "answers" part of the dump, from its key to the end.
  std::string dumpedAnswers() {
    const std::string all = dump();
    const std::size_t at = all.find("\"answers\"");
    return at == std::string::npos ? "" : all.substr(at);
  }
};

// What the simulated tag answers to an inventory and a read of block 0: the reference for
// "the simulation answers again".
Reply simulatedInventory() {
  sim::Board plain{"/nonexistent/TL42RQ_field.json"};
  plain.loadField(fieldWith("[]").c_str());
  ask([&](char* a) { return plain.select("010D", a); });
  return ask([&](char* a) { return plain.sendReceive("260100", a); });
}

TEST_F(AnswerOverridesTest, SimulatedInventoryIsAGoodTagAnswer) {
  // The reference the tests below compare with is a real answer, not an empty one.
  EXPECT_EQ(simulatedInventory().status, 0);
  EXPECT_EQ(simulatedInventory().answer.substr(0, 8), "800D0000");
}

TEST_F(AnswerOverridesTest, MatchingRequestIsAnsweredInsteadOfTheChip) {
  load(R"([{"op": "TL42RQDll_SendReceive", "request": "2601", "answer": "8700"}])");
  EXPECT_EQ(sendReceive("260100"), (Reply{0, "8700"}));
  EXPECT_EQ(sendReceive("260100"), (Reply{0, "8700"}));  // no times: every matching call
  // Another request, and the same request through another operation, reach the chip.
  EXPECT_EQ(sendReceive("0220" "00").answer.substr(0, 2), "80");
  EXPECT_EQ(kq("01 04 03 260100").answer.substr(0, 4), "800D");
}

TEST_F(AnswerOverridesTest, RequestPrefixIgnoresBlanksAndCase) {
  load(R"([{"op": "TL42RQDll_SendReceive", "request": "02 2b", "answer": "A"},
           {"op": "TL42RQDll_KQCmd", "request": "01 0a", "answer": "B"}])");
  EXPECT_EQ(sendReceive("022B"), (Reply{0, "A"}));
  EXPECT_EQ(sendReceive("02 2b 05"), (Reply{0, "A"}));
  EXPECT_EQ(sendReceive(" 0 22B"), (Reply{0, "A"}));
  EXPECT_EQ(kq("010A"), (Reply{0, "B"}));
  EXPECT_EQ(kq("01 0A 01 00"), (Reply{0, "B"}));
  // A request shorter than the prefix, or differing in it, does not match.
  EXPECT_NE(sendReceive("02").answer, "A");
  EXPECT_NE(sendReceive("022C").answer, "A");
}

TEST_F(AnswerOverridesTest, AbsentOrEmptyRequestMatchesEveryRequest) {
  loadOnly(R"([{"op": "TL42RQDll_Select", "answer": "0100"},
           {"op": "TL42RQDll_SendReceive", "request": "", "answer": "8F00", "status": 0}])");
  EXPECT_EQ(select("010D"), (Reply{0, "0100"}));
  EXPECT_EQ(select(""), (Reply{0, "0100"}));
  EXPECT_EQ(sendReceive("260100"), (Reply{0, "8F00"}));
  EXPECT_EQ(sendReceive("zz"), (Reply{0, "8F00"}));  // not even hexadecimal
}

TEST_F(AnswerOverridesTest, OperationsWithoutRequestMatchOnTheOperationAlone) {
  load(R"([{"op": "TL42RQDll_Echo", "answer": "5501"}, {"op": "TL42RQDll_Idn", "answer": ""}])");
  EXPECT_EQ(echo(), (Reply{0, "5501"}));
  EXPECT_EQ(idn(), (Reply{0, ""}));
  EXPECT_EQ(ask([&](char* a) { return board.fieldOff(a); }), (Reply{0, "0000"}));
}

TEST_F(AnswerOverridesTest, StatusIsReturnedAsGivenWithTheAnswer) {
  load(R"([{"op": "TL42RQDll_SendReceive", "answer": "8700", "status": 3, "times": 1},
           {"op": "TL42RQDll_SendReceive", "answer": "", "status": -1, "times": 1},
           {"op": "TL42RQDll_SendReceive", "answer": "80", "status": 5, "times": 1}])");
  EXPECT_EQ(sendReceive("260100"), (Reply{3, "8700"}));
  EXPECT_EQ(sendReceive("260100"), (Reply{-1, ""}));
  EXPECT_EQ(sendReceive("260100"), (Reply{5, "80"}));
  EXPECT_EQ(sendReceive("260100"), simulatedInventory());
}

TEST_F(AnswerOverridesTest, AnswerOfTheWholeBufferIsHandedBackWhole) {
  const std::string longest(255, 'F');
  load(R"([{"op": "TL42RQDll_SendReceive", "answer": ")" + longest + R"("}])");
  EXPECT_EQ(sendReceive("260100"), (Reply{0, longest}));
}

TEST_F(AnswerOverridesTest, TimesCountsMatchingCallsThenTheSimulationAnswersAgain) {
  load(R"([{"op": "TL42RQDll_SendReceive", "request": "2601", "answer": "8700", "times": 2}])");
  EXPECT_NE(sendReceive("0220 00").answer, "8700");  // not matching: uses none of the times
  EXPECT_EQ(sendReceive("260100"), (Reply{0, "8700"}));
  EXPECT_EQ(sendReceive("260100"), (Reply{0, "8700"}));
  EXPECT_EQ(sendReceive("260100"), simulatedInventory());
  EXPECT_EQ(sendReceive("260100"), simulatedInventory());
}

TEST_F(AnswerOverridesTest, ZeroTimesNeverAnswers) {
  load(R"([{"op": "TL42RQDll_SendReceive", "answer": "8700", "times": 0}])");
  EXPECT_EQ(sendReceive("260100"), simulatedInventory());
}

TEST_F(AnswerOverridesTest, FirstMatchingEntryWithTimesLeftWinsInFileOrder) {
  load(R"([{"op": "TL42RQDll_SendReceive", "request": "2601", "answer": "first", "times": 1},
           {"op": "TL42RQDll_SendReceive", "request": "26", "answer": "second", "times": 2},
           {"op": "TL42RQDll_SendReceive", "request": "2601", "answer": "third"}])");
  EXPECT_EQ(sendReceive("260100").answer, "first");
  EXPECT_EQ(sendReceive("260100").answer, "second");
  EXPECT_EQ(sendReceive("2611").answer, "second");  // matches the second only
  EXPECT_EQ(sendReceive("260100").answer, "third");
  EXPECT_EQ(sendReceive("2611"), (Reply{0, "8700"}));  // the tag ignores a command it does not know
}

TEST_F(AnswerOverridesTest, OverriddenWriteDoesNotChangeTheMemory) {
  load(R"([{"op": "TL42RQDll_SendReceive", "request": "0221", "answer": "8700", "times": 1}])");
  EXPECT_EQ(sendReceive("022100 11223344"), (Reply{0, "8700"}));
  EXPECT_NE(dump().find("\"memory\": \"E1400001"), std::string::npos);
  // The same write once the override is used up reaches the tag.
  EXPECT_EQ(sendReceive("022100 11223344").answer.substr(0, 6), "800400");
  EXPECT_NE(dump().find("\"memory\": \"11223344"), std::string::npos);
}

TEST_F(AnswerOverridesTest, UnpluggedBoardAnswers5AndUsesNoneOfTheTimes) {
  load(R"([{"op": "TL42RQDll_Echo", "answer": "5501", "times": 1},
           {"op": "TL42RQDLL_USBhandlecheck", "status": 0}])");
  ASSERT_EQ(board.setBoardPresent(0), 0);
  EXPECT_EQ(echo(), (Reply{5, ""}));
  EXPECT_EQ(board.usbHandleCheck(), 5);
  ASSERT_EQ(board.setBoardPresent(1), 0);
  EXPECT_EQ(echo(), (Reply{5, ""}));  // replugged, link still closed
  EXPECT_EQ(board.usbHandleCheck(), 5);
  ASSERT_EQ(board.usbConnect(), 0);
  EXPECT_EQ(echo(), (Reply{0, "5501"}));
  EXPECT_EQ(echo(), (Reply{0, "5500"}));
}

TEST_F(AnswerOverridesTest, LibraryRevisionOverrideAnswersEvenWithoutTheBoard) {
  load(R"([{"op": "TL42RQDll_GetDLLrev", "answer": "0.4.9", "times": 2}])");
  EXPECT_EQ(dllRev(), (Reply{0, "0.4.9"}));
  ASSERT_EQ(board.setBoardPresent(0), 0);
  EXPECT_EQ(dllRev(), (Reply{0, "0.4.9"}));
  EXPECT_EQ(dllRev(), (Reply{0, "0.5.0"}));
}

TEST_F(AnswerOverridesTest, OverriddenConnectLeavesTheLinkAsItWas) {
  load(R"([{"op": "TL42RQDLL_USBconnect", "status": 5, "times": 1},
           {"op": "TL42RQDLL_USBconnect", "status": 0, "times": 1}])");
  ASSERT_EQ(board.setBoardPresent(0), 0);
  ASSERT_EQ(board.setBoardPresent(1), 0);
  EXPECT_EQ(board.usbConnect(), 5);
  EXPECT_EQ(board.usbConnect(), 0);
  EXPECT_EQ(echo(), (Reply{5, ""}));  // neither opened the link
  EXPECT_EQ(board.usbConnect(), 0);
  EXPECT_EQ(echo(), (Reply{0, "5500"}));
}

TEST_F(AnswerOverridesTest, DumpShowsTheTimesLeftAndResetRestoresThem) {
  load(R"([{"op": "TL42RQDll_SendReceive", "request": "26 01", "answer": "8700", "status": 2, "times": 2},
           {"op": "TL42RQDll_Echo", "answer": "55"}])");
  const std::string full = R"("answers": [
    {
      "op": "TL42RQDll_SendReceive",
      "request": "2601",
      "answer": "8700",
      "status": 2,
      "times": 2
    },
    {
      "op": "TL42RQDll_Echo",
      "answer": "55",
      "status": 0
    }
  ]
})";
  EXPECT_EQ(dumpedAnswers(), full);
  sendReceive("260100");
  std::string one = full;
  one.replace(one.find("\"times\": 2"), 10, "\"times\": 1");
  EXPECT_EQ(dumpedAnswers(), one);
  sendReceive("260100");
  std::string none = full;
  none.replace(none.find("\"times\": 2"), 10, "\"times\": 0");
  EXPECT_EQ(dumpedAnswers(), none);
  ASSERT_EQ(board.reset(), 0);
  EXPECT_EQ(dumpedAnswers(), full);
  ASSERT_EQ(select("010D"), (Reply{0, "0000"}));  // the reset powered the chip anew
  EXPECT_EQ(sendReceive("260100"), (Reply{2, "8700"}));
}

TEST_F(AnswerOverridesTest, DumpWithOverridesLoadsBackToTheSameDump) {
  load(R"([{"op": "TL42RQDll_SendReceive", "request": "0a bc", "answer": "\u0001x", "times": 3}])");
  sendReceive("0ABC");
  const std::string first = dump();
  ASSERT_EQ(board.loadField(first.c_str()), 0) << board.lastError();
  EXPECT_EQ(dump(), first);
  EXPECT_NE(first.find("\"times\": 2"), std::string::npos);
}

TEST_F(AnswerOverridesTest, FieldWithoutOverridesDumpsNoAnswersKey) {
  load("[]");
  EXPECT_EQ(dump().find("answers"), std::string::npos);
}

TEST_F(AnswerOverridesTest, ReloadedFileBringsItsOverridesAndTheirTimesAnew) {
  simtest::TempFieldFile file;
  const std::string once = fieldWith(R"([{"op": "TL42RQDll_Echo", "answer": "5501", "times": 1}])");
  file.write(once);
  ASSERT_EQ(board.loadField(file.path().c_str()), 0) << board.lastError();
  EXPECT_EQ(echo(), (Reply{0, "5501"}));
  EXPECT_EQ(echo(), (Reply{0, "5500"}));
  file.write(fieldWith(R"([{"op": "TL42RQDll_Echo", "answer": "5502", "times": 1}])"), 2);
  EXPECT_EQ(echo(), (Reply{0, "5502"}));
  EXPECT_EQ(echo(), (Reply{0, "5500"}));
  file.write(once, 2);  // the same text again: a new reading, full times
  EXPECT_EQ(echo(), (Reply{0, "5501"}));
  file.write(fieldWith("[]"), 2);
  EXPECT_EQ(echo(), (Reply{0, "5500"}));
}

// --- refusals ------------------------------------------------------------------------------

std::string refusal(const std::string& text) {
  const sim::ParseOutcome outcome = sim::parseField(text, "f.json");
  EXPECT_TRUE(outcome.contents.answers.empty());
  return outcome.error;
}

TEST(AnswerOverridesFile, EntriesAreReadWithTheirDefaults) {
  const sim::ParseOutcome out = sim::parseField(
      R"({"answers": [{"op": "TL42RQDll_KQCmd", "request": "01 0a"}, {"op": "TL42RQDll_Echo", "status": 7, "times": 4}]})",
      "f.json");
  ASSERT_EQ(out.error, "");
  ASSERT_EQ(out.contents.answers.size(), 2u);
  EXPECT_EQ(out.contents.answers[0].op, "TL42RQDll_KQCmd");
  EXPECT_EQ(out.contents.answers[0].request, "010A");
  EXPECT_EQ(out.contents.answers[0].answer, "");
  EXPECT_EQ(out.contents.answers[0].status, 0);
  EXPECT_FALSE(out.contents.answers[0].times.has_value());
  EXPECT_EQ(out.contents.answers[1].status, 7);
  EXPECT_EQ(out.contents.answers[1].times, 4);
  EXPECT_EQ(out.contents.answers[1].left, 4);
}

TEST(AnswerOverridesFile, EveryOperationOfTheLibraryIsKnown) {
  for (const char* name :
       {"TL42RQDLL_USBconnect", "TL42RQDLL_USBhandlecheck", "TL42RQDll_GetDLLrev", "TL42RQDLL_getMCUrev",
        "TL42RQDll_Idn", "TL42RQDll_Echo", "TL42RQDll_Select", "TL42RQDll_SendReceive", "TL42RQDll_KQCmd",
        "TL42RQDll_FieldOff", "TL42RQDll_ResetSPI", "TL42RQDll_SendIRQPulse", "TL42RQDll_SendNSSPulse",
        "TL42RQDll_Polling_Reading", "TL42RQDLL_getInterfacePinState"})
    EXPECT_EQ(sim::parseField(std::string(R"({"answers": [{"op": ")") + name + "\"}]}", "f.json").error, "") << name;
}

TEST(AnswerOverridesFile, UnknownOperationIsRefusedWithItsPlace) {
  EXPECT_EQ(refusal(R"({"answers": [{"op": "TL42RQDll_SendRecieve"}]})"),
            "f.json: line 1, column 21: answers[0].op: unknown operation \"TL42RQDll_SendRecieve\"; the operations "
            "are TL42RQDLL_USBconnect, TL42RQDLL_USBhandlecheck, TL42RQDll_GetDLLrev, TL42RQDLL_getMCUrev, "
            "TL42RQDll_Idn, TL42RQDll_Echo, TL42RQDll_Select, TL42RQDll_SendReceive, TL42RQDll_KQCmd, "
            "TL42RQDll_FieldOff, TL42RQDll_ResetSPI, TL42RQDll_SendIRQPulse, TL42RQDll_SendNSSPulse, "
            "TL42RQDll_Polling_Reading, TL42RQDLL_getInterfacePinState");
  // Names are exact, case included.
  EXPECT_EQ(refusal(R"({"answers": [{"op": "tl42rqdll_echo"}]})").substr(0, 48),
            "f.json: line 1, column 21: answers[0].op: unknow");
}

TEST(AnswerOverridesFile, BadRequestIsRefusedWithItsPlace) {
  EXPECT_EQ(refusal("{\"answers\": [\n  {\"op\": \"TL42RQDll_SendReceive\", \"request\": \"02 2B 0\"}]}"),
            "f.json: line 2, column 46: answers[0].request: an odd number of hexadecimal digits (5): every byte "
            "takes two");
  EXPECT_EQ(refusal(R"({"answers": [{"op": "TL42RQDll_Select", "request": "0x01"}]})"),
            "f.json: line 1, column 52: answers[0].request: 'X' is no hexadecimal digit");
  EXPECT_EQ(refusal(R"({"answers": [{"op": "TL42RQDll_Select", "request": 1}]})"),
            "f.json: line 1, column 52: answers[0].request: hexadecimal text is needed, found the number 1");
  EXPECT_EQ(refusal(R"({"answers": [{"op": "TL42RQDll_Echo", "request": "55"}]})"),
            "f.json: line 1, column 50: answers[0].request: TL42RQDll_Echo takes no request: leave \"request\" out");
}

TEST(AnswerOverridesFile, NegativeOrBrokenTimesAreRefused) {
  EXPECT_EQ(refusal(R"({"answers": [{"op": "TL42RQDll_Echo", "times": -1}]})"),
            "f.json: line 1, column 48: answers[0].times: a whole number from 0 to 2147483647 is needed, found the "
            "number -1");
  EXPECT_EQ(refusal(R"({"answers": [{"op": "TL42RQDll_Echo", "times": 1.5}]})"),
            "f.json: line 1, column 48: answers[0].times: a whole number from 0 to 2147483647 is needed, found the "
            "number 1.5");
  EXPECT_EQ(refusal(R"({"answers": [{"op": "TL42RQDll_Echo", "times": "1"}]})"),
            "f.json: line 1, column 48: answers[0].times: a whole number from 0 to 2147483647 is needed, found the "
            "text \"1\"");
}

TEST(AnswerOverridesFile, WrongTypesAreRefusedWithTheirPlace) {
  EXPECT_EQ(refusal(R"({"answers": [{"op": "TL42RQDll_Echo", "status": "0"}]})"),
            "f.json: line 1, column 49: answers[0].status: a whole number from -2147483648 to 2147483647 is needed, "
            "found the text \"0\"");
  EXPECT_EQ(refusal(R"({"answers": [{"op": "TL42RQDll_Echo", "status": 4294967296}]})"),
            "f.json: line 1, column 49: answers[0].status: a whole number from -2147483648 to 2147483647 is needed, "
            "found the number 4294967296");
  EXPECT_EQ(refusal(R"({"answers": [{"op": "TL42RQDll_Echo", "answer": 5500}]})"),
            "f.json: line 1, column 49: answers[0].answer: a text is needed, found the number 5500");
  EXPECT_EQ(refusal(R"({"answers": [{"op": 7}]})"), "f.json: line 1, column 21: answers[0].op: a text is needed, found the number 7");
  EXPECT_EQ(refusal(R"({"answers": [{"answer": "00"}]})"), "f.json: line 1, column 14: answers[0]: the key \"op\" is missing");
  EXPECT_EQ(refusal(R"({"answers": ["TL42RQDll_Echo"]})"),
            "f.json: line 1, column 14: answers[0]: an object { ... } is needed, found the text \"TL42RQDll_Echo\"");
  EXPECT_EQ(refusal(R"({"answers": {"op": "TL42RQDll_Echo"}})"),
            "f.json: line 1, column 13: answers: a list of answers [ ... ] is needed, found an object");
  EXPECT_EQ(refusal(R"({"answers": [{"op": "TL42RQDll_Echo", "time": 1}]})"),
            "f.json: line 1, column 47: answers[0].time: unknown key \"time\"; the keys here are op, request, answer, "
            "status, times");
}

TEST(AnswerOverridesFile, AnswerLongerThanTheBufferIsRefused) {
  EXPECT_EQ(refusal(R"({"answers": [{"op": "TL42RQDll_Echo", "answer": ")" + std::string(256, '5') + "\"}]}"),
            "f.json: line 1, column 49: answers[0].answer: a text of 0 to 255 characters is needed, found 256");
}

TEST(AnswerOverridesFile, StatusOnlyOperationsTakeNoAnswerText) {
  EXPECT_EQ(refusal(R"({"answers": [{"op": "TL42RQDLL_USBconnect", "answer": "00"}]})"),
            "f.json: line 1, column 55: answers[0].answer: TL42RQDLL_USBconnect hands back only a status: leave "
            "\"answer\" out");
}

TEST(AnswerOverridesFile, LaterBadEntryRefusesTheWholeField) {
  EXPECT_EQ(refusal("{\"answers\": [{\"op\": \"TL42RQDll_Echo\"},\n {\"op\": \"TL42RQDll_Echo\", \"times\": -2}]}"),
            "f.json: line 2, column 36: answers[1].times: a whole number from 0 to 2147483647 is needed, found the "
            "number -2");
}

}  // namespace
