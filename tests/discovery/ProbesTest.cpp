// The five probes and the radio-off step against a fake board: exact frames in order,
// titles, judgement, result boxes and trace.
#include <gtest/gtest.h>

#include "discovery/Probes.h"
#include "discovery/TextCut.h"
#include "discovery/ProbeTestSupport.h"
#include "shell/GlobVariables.h"

using namespace probetest;
using discovery::Probes;
using discovery::ProbeOptions;

namespace {

class ProbesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    glob::state() = glob::GlobVariables();
    glob::state().setStatusPanel1(glob::kBoardConnected);
  }
  // Select and KQCmd answer "0000"; Send Receive answers from `frames`, else "8700".
  void board(std::map<std::string, std::string> frames = {}) {
    driver.setHandler([frames](Op op, const std::string& request) -> FakeDriver::Reply {
      if (op == Op::Select || op == Op::KQCmd) return {0, "0000"};
      if (op == Op::SendReceive) {
        const auto it = frames.find(request);
        return {0, it == frames.end() ? "8700" : it->second};
      }
      return {0, ""};
    });
  }
  Probes probes(ProbeOptions options = {}) { return Probes(driver, host, options); }

  FixedClock clock;
  FakeDriver driver;
  FakeHost host;
};

// One ISO 15693 tag: flags 00, DSFID 00, the UID least significant byte first.
const std::string kInventoryFrame = "0000" "78563412002A02E0";

TEST_F(ProbesTest, Iso15693WithConfigurationSelectsThenSendsInventory) {
  const std::string answer = tagAnswer(kInventoryFrame);
  board({{"260100", answer}});
  EXPECT_EQ(probes().probeISO15693(true, true), 1);
  EXPECT_EQ(calls(driver), (std::vector<std::string>{"TL42RQDll_Select 010D", "TL42RQDll_SendReceive 260100"}));
  EXPECT_EQ(host.boxes[ResultBox::Iso15693Tags], "UID = E0022A0012345678");
  EXPECT_EQ(host.log.text(),
            select("TL42RQ CONFIGURATION : ISO15693 High Datarate One Subcarrier", "010D", "0000") +
                sendRecv("INVENTORY", "260100", answer));
  EXPECT_EQ(host.request, "260100");
  EXPECT_EQ(host.answer, answer);
  EXPECT_EQ(host.yields, 4);  // one before and one after each call
}

TEST_F(ProbesTest, Iso15693CollisionOfTwoTagsFailsTheCrcAndGives99) {
  // Two tags answered at once: their bits lie on top of each other, the chip marks the
  // collision and the CRC does not hold.
  const std::string frame = "0000" "7E5E3F56002A02E0";
  const std::string answer = tagAnswer(frame, "03", "ABCD");
  board({{"260100", answer}});
  host.boxes[ResultBox::Iso15693Tags] = "UID = E0022A0012345678";
  EXPECT_EQ(probes().probeISO15693(true, true), 99);
  EXPECT_EQ(host.boxes[ResultBox::Iso15693Tags], "");
  EXPECT_EQ(host.log.text(),
            select("TL42RQ CONFIGURATION : ISO15693 High Datarate One Subcarrier", "010D", "0000") +
                sendRecv("INVENTORY", "260100", answer) + "   -> CRC HS (expected=" + crc16Text(frame) + ")");
}

TEST_F(ProbesTest, Iso15693MarkedReceptionWithAGoodCrcStillNamesTheTag) {
  const std::string answer = tagAnswer(kInventoryFrame, "01");
  board({{"260100", answer}});
  EXPECT_EQ(probes().probeISO15693(true, false), 1);
  EXPECT_EQ(host.boxes[ResultBox::Iso15693Tags], "UID = E0022A0012345678");
  EXPECT_EQ(host.log.text(), sendRecv("INVENTORY", "260100", answer) + "   -> CRC OK");
}

TEST_F(ProbesTest, Iso15693WithoutTagClearsItsBox) {
  board();
  host.boxes[ResultBox::Iso15693Tags] = "UID = E0022A0012345678";
  EXPECT_EQ(probes().probeISO15693(true, true), 0);
  EXPECT_EQ(host.boxes[ResultBox::Iso15693Tags], "");
  EXPECT_EQ(host.answer, "8700");
}

TEST_F(ProbesTest, Iso15693GoodAnswerWithStatusOtherThanZeroIsNoTag) {
  driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
    if (op == Op::SendReceive) return {1, tagAnswer(kInventoryFrame)};
    return {0, "0000"};
  });
  EXPECT_EQ(probes().probeISO15693(true, true), 0);
}

TEST_F(ProbesTest, ButtonWithoutConfigurationSendsTheWakeUpFrameOnlyAndClearsTheBoxesFirst) {
  // The request and answer boxes are cleared where the configuration would have run.
  std::vector<std::string> requestsSeen;
  driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
    requestsSeen.push_back(host.request + "|" + host.answer);
    return {0, op == Op::SendReceive ? "8700" : "0000"};
  });
  probes().probeISO15693(true, false);
  EXPECT_EQ(calls(driver), (std::vector<std::string>{"TL42RQDll_SendReceive 260100"}));
  EXPECT_EQ(requestsSeen, (std::vector<std::string>{"|"}));
  EXPECT_EQ(host.log.text(), sendRecv("INVENTORY", "260100", "8700"));

  driver.clearCalls();
  probes().probeISO14443A(true, false);
  EXPECT_EQ(calls(driver), (std::vector<std::string>{"TL42RQDll_SendReceive 2607"}));
  driver.clearCalls();
  probes().probeISO14443B(true, false);
  EXPECT_EQ(calls(driver), (std::vector<std::string>{"TL42RQDll_SendReceive 0500F0"}));
  driver.clearCalls();
  probes().probeFelica(true, false);
  EXPECT_EQ(calls(driver), (std::vector<std::string>{"TL42RQDll_SendReceive 00FFFF0000"}));
}

TEST_F(ProbesTest, WithoutLogFlagNothingIsTracedButTheBoxesFill) {
  const std::string answer = tagAnswer(kInventoryFrame, "03", "0000");
  board({{"260100", answer}});
  EXPECT_EQ(probes().probeISO15693(false, true), 99);
  EXPECT_EQ(host.log.text(), "");
  EXPECT_EQ(host.request, "260100");
  EXPECT_EQ(host.answer, answer);
}

TEST_F(ProbesTest, Iso15693ConfigurationReconnectsOnStatus5WithoutRepeat) {
  int selects = 0;
  driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
    if (op == Op::Select && ++selects == 1) return {5, ""};
    if (op == Op::SendReceive) return {0, "8700"};
    return {0, "0000"};
  });
  probes().probeISO15693(true, true);
  EXPECT_EQ(calls(driver), (std::vector<std::string>{"TL42RQDll_Select 010D", "TL42RQDLL_USBconnect ",
                                                      "TL42RQDLL_USBhandlecheck ", "TL42RQDll_Select 010D",
                                                      "TL42RQDll_SendReceive 260100"}));
  // The reconnect's own select is not the step's: the step shows its failed answer.
  EXPECT_EQ(host.log.text(),
            select("TL42RQ CONFIGURATION : ISO15693 High Datarate One Subcarrier", "010D", "") +
                sendRecv("INVENTORY", "260100", "8700"));
}

TEST_F(ProbesTest, InventoryOnStatus5ReconnectsAndRepeatsOnce) {
  int frames = 0;
  driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
    if (op == Op::SendReceive) return ++frames == 1 ? FakeDriver::Reply{5, ""} : FakeDriver::Reply{0, "8700"};
    return {0, "0000"};
  });
  probes().probeISO15693(true, false);
  EXPECT_EQ(calls(driver),
            (std::vector<std::string>{"TL42RQDll_SendReceive 260100", "TL42RQDLL_USBconnect ",
                                      "TL42RQDLL_USBhandlecheck ", "TL42RQDll_Select 010D",
                                      "TL42RQDll_SendReceive 260100"}));
}

TEST_F(ProbesTest, ShortOrOddAnswersNeverBreakTheIso15693Judgement) {
  for (const char* odd : {"80", "8", "80FF", "8001", "8000", "80ZZ00", "80030000"}) {
    board({{"260100", odd}});
    const int result = probes().probeISO15693(false, false);
    EXPECT_TRUE(result == 0 || result == 1 || result == 99) << odd;
  }
  // "8000": the last byte is read at characters 3 to 4, "00": a tag without UID digits.
  board({{"260100", "8000"}});
  EXPECT_EQ(probes().probeISO15693(false, false), 1);
  EXPECT_EQ(host.boxes[ResultBox::Iso15693Tags], "UID = ");
}

TEST_F(ProbesTest, Iso14443AConfigurationAndSingleSizeUid) {
  glob::state().iso14443AModulationGain = "D1";
  // ATQA, then the anticollision answer UID0..3 and BCC, then the SAK.
  const std::string atqa = tagAnswer("4400");
  const std::string anticol = tagAnswer("1A2B3C4D40");
  const std::string sak = tagAnswer("08");
  board({{"2607", atqa}, {"932008", anticol}, {"93701A2B3C4D4028", sak}});
  EXPECT_EQ(probes().probeISO14443A(true, true), 1);
  EXPECT_EQ(calls(driver),
            (std::vector<std::string>{"TL42RQDll_Select 02000180", "TL42RQDll_KQCmd 0109043A005804",
                                      "TL42RQDll_KQCmd 010904680101D1",
                                      "TL42RQDll_KQCmd 0109110B00241204880F1F3F3F01000505005500",
                                      "TL42RQDll_SendReceive 2607", "TL42RQDll_SendReceive 932008",
                                      "TL42RQDll_SendReceive 93701A2B3C4D4028"}));
  // The part reported starts one byte into the UID and reaches into the check byte.
  EXPECT_EQ(host.boxes[ResultBox::Iso14443ATags], "2B3C4D40");
  EXPECT_EQ(host.log.text(),
            select("TL42RQ CONFIGURATION : ISO14443-A protocol", "02000180", "0000") +
                chipCommand("TL42RQ CONFIGURATION : ", "09043A005804", "0000") +
                chipCommand("TL42RQ INCREASE DEMO GAIN : ", "0904680101D1", "0000") +
                chipCommand("TL42RQ INCREASE DEC TOLERANCE : ", "09110B00241204880F1F3F3F01000505005500", "0000") +
                sendRecv("ISO14443-A REQA", "2607", atqa) + sendRecv("ISO14443-A ANTICOL 1", "932008", anticol) +
                sendRecv("ISO14443-A SELECT 1", "93701A2B3C4D4028", sak));
}

TEST_F(ProbesTest, Iso14443AConfigurationWritesGoOutOnceEvenOnStatus5) {
  driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
    if (op == Op::KQCmd) return {5, ""};
    return {0, op == Op::SendReceive ? "8700" : "0000"};
  });
  probes().probeISO14443A(false, true);
  EXPECT_EQ(driver.callsOf(Op::KQCmd).size(), 3u);
  EXPECT_EQ(driver.callsOf(Op::USBconnect).size(), 0u);
}

TEST_F(ProbesTest, Iso14443ATripleSizeUidWalksThreeLevelsWithTheLevelOneCodeAtLevelThree) {
  const std::string anticol1 = tagAnswer("8804A1B29F");
  const std::string anticol2 = tagAnswer("88C3D4E5BA");
  const std::string anticol3 = tagAnswer("F6071829C0");
  int anticollisions = 0;
  driver.setHandler([&, base = std::map<std::string, std::string>{
                                {"2607", tagAnswer("4200")},
                                {"93708804A1B29F28", tagAnswer("04")},
                                {"952008", anticol2},
                                {"957088C3D4E5BA28", tagAnswer("04")},
                                {"937028", tagAnswer("20")}}](Op op, const std::string& request) -> FakeDriver::Reply {
    if (op != Op::SendReceive) return {0, "0000"};
    if (request == "932008") return {0, ++anticollisions == 1 ? anticol1 : anticol3};
    const auto it = base.find(request);
    return {0, it == base.end() ? "8700" : it->second};
  });
  EXPECT_EQ(probes().probeISO14443A(true, false), 1);
  EXPECT_EQ(calls(driver), (std::vector<std::string>{"TL42RQDll_SendReceive 2607", "TL42RQDll_SendReceive 932008",
                                                      "TL42RQDll_SendReceive 93708804A1B29F28",
                                                      "TL42RQDll_SendReceive 952008",
                                                      "TL42RQDll_SendReceive 957088C3D4E5BA28",
                                                      "TL42RQDll_SendReceive 932008",
                                                      "TL42RQDll_SendReceive 937028"}));
  EXPECT_EQ(host.boxes[ResultBox::Iso14443ATags], "04A1B2" "C3D4E5" "071829C0");
  EXPECT_NE(host.log.text().find("ISO14443-A ANTICOL 3\r\n\t\t\t>>> TL42RQDLL_SENDRECV, 932008"), std::string::npos);
  EXPECT_NE(host.log.text().find("ISO14443-A SELECT 3\r\n\t\t\t>>> TL42RQDLL_SENDRECV, 937028"), std::string::npos);
}

TEST_F(ProbesTest, Iso14443ASendsReqaOnceAndEndsWithoutTag) {
  board();
  host.boxes[ResultBox::Iso14443ATags] = "old";
  EXPECT_EQ(probes().probeISO14443A(true, false), 0);
  EXPECT_EQ(calls(driver), (std::vector<std::string>{"TL42RQDll_SendReceive 2607"}));
  EXPECT_EQ(host.boxes[ResultBox::Iso14443ATags], "");
}

TEST_F(ProbesTest, Iso14443AFailedSelectIsNoTag) {
  board({{"2607", tagAnswer("4400")}, {"932008", tagAnswer("1A2B3C4D40")}});
  EXPECT_EQ(probes().probeISO14443A(false, false), 0);
  EXPECT_EQ(host.boxes[ResultBox::Iso14443ATags], "2B3C4D40");
}

TEST_F(ProbesTest, TagDetectionCopySwitchesTheRadioOffBeforeIso14443A) {
  board();
  probes({.resetSlotsAtStart = true, .radioOffBefore14443A = true}).probeISO14443A(true, false);
  EXPECT_EQ(calls(driver),
            (std::vector<std::string>{"TL42RQDll_Select 0000", "TL42RQDll_SendReceive 2607"}));
  EXPECT_EQ(host.log.text(), select("TL42RQ RF OFF", "0000", "0000") + sendRecv("ISO14443-A REQA", "2607", "8700"));
}

TEST_F(ProbesTest, RadioOffIsAlwaysTracedAndRepeatedAfterReconnect) {
  int selects = 0;
  driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
    if (op == Op::Select && ++selects == 1) return {5, ""};
    return {0, "0000"};
  });
  probes().rfOffAutoDetect();
  EXPECT_EQ(calls(driver), (std::vector<std::string>{"TL42RQDll_Select 0000", "TL42RQDLL_USBconnect ",
                                                      "TL42RQDLL_USBhandlecheck ", "TL42RQDll_Select 0000"}));
  EXPECT_EQ(host.log.text(), select("TL42RQ RF OFF", "0000", "0000"));
  EXPECT_EQ(host.yields, 3);
}

TEST_F(ProbesTest, Iso14443BConfigurationAndReqb) {
  const std::string atqb = tagAnswer("50A1B2C3D400000000008171");
  board({{"0500F0", atqb}});
  EXPECT_EQ(probes().probeISO14443B(true, true), 1);
  EXPECT_EQ(calls(driver), (std::vector<std::string>{"TL42RQDll_Select 03010180", "TL42RQDll_KQCmd 01090468010130",
                                                      "TL42RQDll_SendReceive 0500F0"}));
  EXPECT_EQ(host.boxes[ResultBox::Iso14443BReqb], "50A1B2C3D400000000008171");
  EXPECT_EQ(host.log.text(), select("TL42RQ CONFIGURATION : ISO14443-B protocol", "03010180", "0000") +
                                 chipCommand("TL42RQ CONFIGURATION : DEMO GAIN", "090468010130", "0000") +
                                 sendRecv("REQB", "0500F0", atqb));
}

TEST_F(ProbesTest, Iso14443BGainRepeatAfterReconnectGoesThroughSelect) {
  int kq = 0;
  driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
    if (op == Op::KQCmd && ++kq == 1) return {5, ""};
    return {0, op == Op::SendReceive ? "8700" : "0000"};
  });
  probes().probeISO14443B(false, true);
  EXPECT_EQ(calls(driver),
            (std::vector<std::string>{"TL42RQDll_Select 03010180", "TL42RQDll_KQCmd 01090468010130",
                                      "TL42RQDLL_USBconnect ", "TL42RQDLL_USBhandlecheck ",
                                      "TL42RQDll_Select 03010180", "TL42RQDll_KQCmd 01090468010130",
                                      "TL42RQDll_Select 01090468010130", "TL42RQDll_SendReceive 0500F0"}));
}

TEST_F(ProbesTest, ReqbAndReqcAnswersOfExactlyTenCharactersAreNoTag) {
  board({{"0500F0", "8003000000"}, {"00FFFF0000", "8003000000"}});
  host.boxes[ResultBox::Iso14443BReqb] = "old";
  host.boxes[ResultBox::FelicaTags] = "old";
  EXPECT_EQ(probes().probeISO14443B(false, false), 0);
  EXPECT_EQ(probes().probeFelica(false, false), 0);
  EXPECT_EQ(host.boxes[ResultBox::Iso14443BReqb], "");
  EXPECT_EQ(host.boxes[ResultBox::FelicaTags], "");
  // Eleven characters are enough: one character of body.
  board({{"0500F0", "80030000100"}, {"00FFFF0000", "80030000001"}});
  EXPECT_EQ(probes().probeISO14443B(false, false), 1);
  EXPECT_EQ(host.boxes[ResultBox::Iso14443BReqb], "0");
  EXPECT_EQ(probes().probeFelica(false, false), 1);
  EXPECT_EQ(host.boxes[ResultBox::FelicaTags], "0");
}

TEST_F(ProbesTest, ReqbAnswerNotEndingIn00IsNoTag) {
  board({{"0500F0", tagAnswer("50A1B2C3D400000000008171", "02")}});
  EXPECT_EQ(probes().probeISO14443B(false, false), 0);
}

TEST_F(ProbesTest, PdyxxAsksFifteenSlotsEvenWhenNothingAnsweredTheInitiate) {
  board();
  EXPECT_EQ(probes().probeISO14443B_PDYxx(true, false), 0);
  std::vector<std::string> expected{"TL42RQDll_SendReceive 0600"};
  for (const char* f : {"16", "26", "36", "46", "56", "66", "76", "86", "96", "A6", "B6", "C6", "D6", "E6", "F6"})
    expected.push_back(std::string("TL42RQDll_SendReceive ") + f);
  EXPECT_EQ(calls(driver), expected);
  std::string log = sendRecv("INITIATE", "0600", "8700");
  for (int n = 1; n <= 15; ++n)
    log += sendRecv("SLOT MARKER (" + std::to_string(n) + ")", discovery::slotMarkerFrame(n), "8700");
  EXPECT_EQ(host.log.text(), log);
}

TEST_F(ProbesTest, PdyxxCountsTheSlotsThatAnswerAndCutsTheCaptions) {
  board({{"0600", tagAnswer("0A")}, {"36", tagAnswer("3C")}, {"A6", tagAnswer("A7")}, {"F6", tagAnswer("F1", "02")}});
  host.slots[2] = "3 : Chip ID = 99";  // an earlier result
  EXPECT_EQ(probes().probeISO14443B_PDYxx(false, true), 2);
  EXPECT_EQ(host.slots[0], "1 : ");
  EXPECT_EQ(host.slots[2], "3 : Chip ID = 3C");
  // Two-digit captions lose their blank: four characters are kept.
  EXPECT_EQ(host.slots[9], "10 :Chip ID = A7");
  EXPECT_EQ(host.slots[14], "15 :");
  EXPECT_EQ(calls(driver)[0], "TL42RQDll_Select 03010180");
  EXPECT_EQ(calls(driver)[1], "TL42RQDll_KQCmd 01090468010130");
}

TEST_F(ProbesTest, TagDetectionCopyOfPdyxxResetsTheSlotsAtItsStart) {
  std::vector<std::string> slotTwoWhenSent;
  driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
    slotTwoWhenSent.push_back(host.slots[1]);
    return {0, op == Op::SendReceive ? "8700" : "0000"};
  });
  host.slots[1] = "2 : Chip ID = 22";
  probes({.resetSlotsAtStart = true}).probeISO14443B_PDYxx(false, false);
  EXPECT_EQ(slotTwoWhenSent.front(), "2 : ");

  slotTwoWhenSent.clear();
  host.slots[1] = "2 : Chip ID = 22";
  probes().probeISO14443B_PDYxx(false, false);
  EXPECT_EQ(slotTwoWhenSent.front(), "2 : Chip ID = 22");
}

TEST_F(ProbesTest, FelicaConfigurationAndReqc) {
  const std::string reqc = tagAnswer("1201" "012E4CD2A3B4C5D6" "0120220427674EFF", "00", "1234");
  board({{"00FFFF0000", reqc}});
  EXPECT_EQ(probes().probeFelica(true, true), 1);
  EXPECT_EQ(calls(driver), (std::vector<std::string>{"TL42RQDll_Select 0451", "TL42RQDll_KQCmd 01090468010150",
                                                      "TL42RQDll_KQCmd 0109040A0102A1",
                                                      "TL42RQDll_SendReceive 00FFFF0000"}));
  EXPECT_EQ(host.boxes[ResultBox::FelicaTags], "1201012E4CD2A3B4C5D60120220427674EFF");
  EXPECT_EQ(host.log.text(), select("TL42RQ CONFIGURATION : FELICA mode", "0451", "0000") +
                                 chipCommand("TL42RQ CONFIGURATION : IndexMod & Gain", "090468010150", "0000") +
                                 chipCommand("TL42RQ CONFIGURATION : Auto FDet", "09040A0102A1", "0000") +
                                 sendRecv("REQC", "00FFFF0000", reqc));
}

TEST_F(ProbesTest, FelicaGoodAnswerWithStatusOtherThanZeroIsNoTag) {
  driver.setHandler([&](Op op, const std::string&) -> FakeDriver::Reply {
    if (op == Op::SendReceive) return {1, "80130102030405060708090A0B0C0D0E0F10000000"};
    return {0, "0000"};
  });
  EXPECT_EQ(probes().probeFelica(false, false), 0);
}

TEST_F(ProbesTest, UnreachableBoardGivesNoTagAndNoMessage) {
  driver.setHandler([](Op, const std::string&) -> FakeDriver::Reply { return {5, ""}; });
  Probes p = probes();
  EXPECT_EQ(p.probeISO15693(true, true), 0);
  EXPECT_EQ(p.probeISO14443A(true, true), 0);
  EXPECT_EQ(p.probeISO14443B(true, true), 0);
  EXPECT_EQ(p.probeISO14443B_PDYxx(true, true), 0);
  EXPECT_EQ(p.probeFelica(true, true), 0);
  EXPECT_EQ(glob::state().statusPanel1, glob::kBoardNotConnected);
}

TEST_F(ProbesTest, ProbeByIndexFollowsTheBoxOrder) {
  board();
  Probes p = probes();
  p.probe(0, false, false);
  p.probe(1, false, false);
  p.probe(2, false, false);
  p.probe(4, false, false);
  EXPECT_EQ(calls(driver), (std::vector<std::string>{"TL42RQDll_SendReceive 260100", "TL42RQDll_SendReceive 2607",
                                                      "TL42RQDll_SendReceive 0500F0",
                                                      "TL42RQDll_SendReceive 00FFFF0000"}));
  driver.clearCalls();
  p.probe(3, false, false);
  EXPECT_EQ(driver.calls().size(), 16u);
}

TEST(ProbeTexts, SlotFramesAndTitles) {
  EXPECT_EQ(discovery::slotMarkerFrame(1), "16");
  EXPECT_EQ(discovery::slotMarkerFrame(10), "A6");
  EXPECT_EQ(discovery::slotMarkerFrame(15), "F6");
  EXPECT_EQ(discovery::slotMarkerTitle(7), "SLOT MARKER (7)");
  EXPECT_EQ(discovery::slotCaption(1), "1 : ");
  EXPECT_EQ(discovery::slotCaption(15), "15 : ");
}

TEST(ProbeTexts, CuttingNeverReachesOutsideTheAnswer) {
  EXPECT_EQ(discovery::mid("8001", 5, 2), "");
  EXPECT_EQ(discovery::mid("800A", -1, 4), "");
  EXPECT_EQ(discovery::mid("800A12", 5, -4), "");
  EXPECT_EQ(discovery::mid("800A12", 5, 99), "12");
  EXPECT_EQ(discovery::hexLength("80ZZ"), 0);
  EXPECT_EQ(discovery::hexLength("801F"), 31);
  EXPECT_EQ(discovery::uidPart("80088804A1B2"), "04A1B2");
  EXPECT_EQ(discovery::uidPart("80081A2B3C4D40"), "2B3C4D40");
  EXPECT_EQ(discovery::answerBody("80030000000"), "0");
  EXPECT_EQ(discovery::answerBody("800300"), "");
}

}  // namespace
