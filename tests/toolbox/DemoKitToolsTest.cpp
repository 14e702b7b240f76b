#include "toolbox/DemoKitTools.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "reader/Drivers.h"
#include "reader/Reconnect.h"
#include "shell/GlobVariables.h"

using reader::FakeDriver;
using reader::Op;
using toolbox::kOperationRows;

namespace {
const toolbox::OperationRow& rowOf(Op op) {
  for (const auto& row : kOperationRows)
    if (row.op == op) return row;
  throw std::logic_error("no row");
}

std::vector<Op> opsOf(const FakeDriver& d) {
  std::vector<Op> ops;
  for (const auto& c : d.calls()) ops.push_back(c.op);
  return ops;
}

struct Hooks {
  int reconnects = 0, marks = 0, yields = 0;
  toolbox::RowHooks hooks(FakeDriver& d) {
    return {[this, &d] {
              ++reconnects;
              reader::reconnectBoard(d, reader::ReconnectKind::Plain);
            },
            [this] { ++marks; }, [this] { ++yields; }};
  }
};
}  // namespace

TEST(DemoKitTools, EveryOperationExceptSelectSendReceiveAndKQCmdHasOneButton) {
  std::set<Op> ops;
  std::set<std::string> buttons, boxes;
  for (const auto& row : kOperationRows) {
    EXPECT_TRUE(ops.insert(row.op).second);
    EXPECT_TRUE(buttons.insert(row.button).second) << row.button;
    EXPECT_TRUE(boxes.insert(row.answerBox).second) << row.answerBox;
  }
  EXPECT_EQ(ops.size(), 12u);
  EXPECT_EQ(ops.count(Op::Select), 0u);
  EXPECT_EQ(ops.count(Op::SendReceive), 0u);
  EXPECT_EQ(ops.count(Op::KQCmd), 0u);
}

TEST(DemoKitTools, RowsCarryTheirNamesCaptionsAndLogWords) {
  struct Expected {
    Op op;
    const char *button, *caption, *box, *logWord;
  };
  const Expected expected[] = {
      {Op::USBhandlecheck, "cmd_USBhandlecheck", "DEMO-TL42RQ-A USB Handle Check", "txtUSBHandleCheckStatus",
       "TL42RQDLL_USB_HANDLE_CHECK"},
      {Op::USBconnect, "cmdDEMO_USB_Connect", "DEMO-TL42RQ-A USB Connect", "txtUSBConnectStatus",
       "TL42RQDLL_USB_CONNECT"},
      {Op::Echo, "cmdEcho", "Echo", "txtEchoAnswer", "TL42RQDLL_ECHO"},
      {Op::Idn, "cmdGetIDn", "Get IDN", "txtIDnAnswer", "TL42RQDLL_IDN"},
      {Op::FieldOff, "cmdFieldOff", "Field Off", "txtFieldOffAnswer", "TL42RQDLL_FIELDOFF"},
      {Op::ResetSPI, "cmdResetSPI", "Reset SPI", "txtResetSequenceAnswer", "TL42RQDLL_RESET_SPI"},
      {Op::SendIRQPulse, "cmdSendIRQPulse", "Negative pulse on IRQ in", "txtSendIRQPulseAnswer",
       "TL42RQDLL_PULSE_IRQ_IN"},
      {Op::SendNSSPulse, "cmdNegativePulseOn_SPI_NSS", "Negative Pulse on SPI NSS", "txtNegPulse_SPI_NSS_Answer",
       "TL42RQDLL_NSS_PULSE"},
      {Op::Polling_Reading, "cmdPollingReading", "Polling + reading", "txtPollingReadingAnswer",
       "TL42RQDLL_POLLING_READING"},
      {Op::GetDLLrev, "cmdGetDLLrevision", "Get DLL revision", "txtGetDLLrevisionAnswer", "TL42RQDLL_GETDLLREV"},
      {Op::getMCUrev, "cmdGetMCUrevision", "Get MCU revision", "txtGetMCUrevisionAnswer", "TL42RQDLL_GETMCUREV"},
      {Op::getInterfacePinState, "cmdGetInterfacePinState", "Get interface pin state",
       "txtGetInterfacePinStateAnswer", "TL42RQDLL_GET_INTERFACE_PIN_STATE"},
  };
  for (const auto& e : expected) {
    const auto& row = rowOf(e.op);
    EXPECT_STREQ(row.button, e.button);
    EXPECT_STREQ(row.caption, e.caption);
    EXPECT_STREQ(row.answerBox, e.box);
    EXPECT_STREQ(reader::logWord(row.op), e.logWord);
    EXPECT_EQ(toolbox::rowOfButton(e.button), &row);
  }
  EXPECT_EQ(toolbox::rowOfButton("cmdNoSuchButton"), nullptr);
  EXPECT_STREQ(rowOf(Op::Idn).decodedBox, "txtIDn");
  EXPECT_STREQ(rowOf(Op::GetDLLrev).decodedBox, "txtDLLrevision");
  EXPECT_STREQ(rowOf(Op::getMCUrev).decodedBox, "txtMCUrevision");
}

TEST(DemoKitTools, BelowRevision5OnlyPollingNssPulseAndUsbConnectAreHidden) {
  std::set<Op> hidden;
  for (const auto& row : kOperationRows) {
    if (!toolbox::rowVisible(row, 4)) hidden.insert(row.op);
    EXPECT_TRUE(toolbox::rowVisible(row, 5)) << row.button;
    EXPECT_TRUE(toolbox::rowVisible(row, 12)) << row.button;
  }
  EXPECT_EQ(hidden, (std::set<Op>{Op::Polling_Reading, Op::SendNSSPulse, Op::USBconnect}));
  for (const auto& row : kOperationRows) EXPECT_EQ(toolbox::rowVisible(row, 0), toolbox::rowVisible(row, 4));
}

TEST(DemoKitTools, McuRevisionStatusRule) {
  EXPECT_EQ(toolbox::mcuStatusAction(5), toolbox::McuStatusAction::ReconnectAndRepeat);
  EXPECT_EQ(toolbox::mcuStatusAction(1), toolbox::McuStatusAction::ReconnectAndRepeat);
  EXPECT_EQ(toolbox::mcuStatusAction(0), toolbox::McuStatusAction::MarkConnected);
  EXPECT_EQ(toolbox::mcuStatusAction(2), toolbox::McuStatusAction::YieldOnly);
  EXPECT_EQ(toolbox::mcuStatusAction(-1), toolbox::McuStatusAction::YieldOnly);
}

TEST(DemoKitTools, StatusFiveReconnectsAndRepeatsOnceForAnEchoButNeverAThirdTime) {
  FakeDriver d;
  d.queue(Op::Echo, 5, "");
  d.queue(Op::Echo, 5, "");
  d.queue(Op::Echo, 0, "5500");
  Hooks h;
  const auto a = toolbox::callRow(d, rowOf(Op::Echo), h.hooks(d));
  EXPECT_EQ(a.status, 5);
  EXPECT_EQ(a.text, "");
  EXPECT_EQ(opsOf(d), (std::vector<Op>{Op::Echo, Op::USBconnect, Op::USBhandlecheck, Op::Echo}));
  EXPECT_EQ(h.reconnects, 1);
}

TEST(DemoKitTools, UsbButtonsAndLibraryRevisionNeverReconnect) {
  for (Op op : {Op::USBhandlecheck, Op::USBconnect, Op::GetDLLrev}) {
    FakeDriver d;
    d.queue(op, 5, "");
    Hooks h;
    const auto a = toolbox::callRow(d, rowOf(op), h.hooks(d));
    EXPECT_EQ(a.status, 5);
    EXPECT_EQ(opsOf(d), std::vector<Op>{op});
    EXPECT_EQ(h.reconnects, 0);
  }
}

TEST(DemoKitTools, McuRevisionStatusOneReconnectsAndRepeats) {
  FakeDriver d;
  d.queue(Op::getMCUrev, 1, "");
  d.queue(Op::getMCUrev, 0, "0003010401");
  Hooks h;
  const auto a = toolbox::callRow(d, rowOf(Op::getMCUrev), h.hooks(d));
  EXPECT_EQ(a.status, 0);
  EXPECT_EQ(a.text, "0003010401");
  EXPECT_EQ(opsOf(d), (std::vector<Op>{Op::getMCUrev, Op::USBconnect, Op::USBhandlecheck, Op::getMCUrev}));
  EXPECT_EQ(h.reconnects, 1);
  EXPECT_EQ(h.marks, 0);
  EXPECT_EQ(h.yields, 0);
}

TEST(DemoKitTools, McuRevisionStatusZeroMarksConnectedWithoutReconnect) {
  FakeDriver d;
  d.queue(Op::getMCUrev, 0, "0003010401");
  Hooks h;
  toolbox::callRow(d, rowOf(Op::getMCUrev), h.hooks(d));
  EXPECT_EQ(opsOf(d), std::vector<Op>{Op::getMCUrev});
  EXPECT_EQ(h.marks, 1);
  EXPECT_EQ(h.reconnects, 0);
}

TEST(DemoKitTools, McuRevisionOtherStatusOnlyYields) {
  FakeDriver d;
  d.queue(Op::getMCUrev, 3, "82");
  Hooks h;
  const auto a = toolbox::callRow(d, rowOf(Op::getMCUrev), h.hooks(d));
  EXPECT_EQ(a.status, 3);
  EXPECT_EQ(opsOf(d), std::vector<Op>{Op::getMCUrev});
  EXPECT_EQ(h.yields, 1);
  EXPECT_EQ(h.marks, 0);
  EXPECT_EQ(h.reconnects, 0);
}

TEST(DemoKitTools, UsbBoxesShowTheStatusNumber) {
  EXPECT_EQ(toolbox::answerBoxText(rowOf(Op::USBconnect), {0, ""}), "0");
  EXPECT_EQ(toolbox::answerBoxText(rowOf(Op::USBhandlecheck), {5, ""}), "5");
  EXPECT_EQ(toolbox::answerBoxText(rowOf(Op::USBhandlecheck), {-7, ""}), "-7");
  EXPECT_EQ(toolbox::answerBoxText(rowOf(Op::Echo), {0, "5500"}), "5500");
}

TEST(DemoKitTools, DecodingNeedsStatusZeroAndCode00) {
  EXPECT_TRUE(toolbox::answerDecodable(rowOf(Op::Idn), {0, "0004414201"}));
  EXPECT_FALSE(toolbox::answerDecodable(rowOf(Op::Idn), {0, "8200"}));
  EXPECT_FALSE(toolbox::answerDecodable(rowOf(Op::Idn), {5, "0004414201"}));
  EXPECT_TRUE(toolbox::answerDecodable(rowOf(Op::getInterfacePinState), {0, "000101"}));
  EXPECT_FALSE(toolbox::answerDecodable(rowOf(Op::getInterfacePinState), {0, "820101"}));
  // The library revision is dotted text: status 0 is enough.
  EXPECT_TRUE(toolbox::answerDecodable(rowOf(Op::GetDLLrev), {0, "0.5.0"}));
  EXPECT_FALSE(toolbox::answerDecodable(rowOf(Op::GetDLLrev), {5, ""}));
  EXPECT_FALSE(toolbox::answerDecodable(rowOf(Op::Echo), {0, "0000"}));
}

TEST(DemoKitTools, PinStateIsTheSixthCharacter) {
  EXPECT_EQ(toolbox::pinStateOption("000100"), 0);
  EXPECT_EQ(toolbox::pinStateOption("000101"), 1);
  EXPECT_EQ(toolbox::pinStateOption("000102"), 2);
  EXPECT_EQ(toolbox::pinStateOption("00010299"), 2);
  EXPECT_EQ(toolbox::pinStateOption("000103"), std::nullopt);
  EXPECT_EQ(toolbox::pinStateOption("0001"), std::nullopt);
  EXPECT_EQ(toolbox::pinStateOption("00010"), std::nullopt);
  EXPECT_EQ(toolbox::pinStateOption(""), std::nullopt);
}

TEST(DemoKitTools, FreeCommandWithEmptyBoxSendsNothing) {
  const auto f = toolbox::freeCommand("");
  EXPECT_FALSE(f.send);
  EXPECT_EQ(f.request, "");
  EXPECT_EQ(f.notSentAnswer, "Command not sent = no request found");
}

TEST(DemoKitTools, FreeCommandWithOddLengthSendsNothing) {
  for (const char* text : {"0", "080", "0803620", "08 03", "0803 620 "}) {
    const auto f = toolbox::freeCommand(text);
    EXPECT_FALSE(f.send) << text;
    EXPECT_EQ(f.request, "");
    EXPECT_EQ(f.notSentAnswer, "Command not sent = request format problem");
  }
}

TEST(DemoKitTools, FreeCommandJudgesLengthBeforeBlanksGo) {
  // Twelve characters with two blanks: even as typed, ten digits once the blanks go.
  auto f = toolbox::freeCommand("0803 6201 00");
  EXPECT_TRUE(f.send);
  EXPECT_EQ(f.request, "010803620100");
  // Even without blanks, odd once they go: still sent, as typed minus the blanks.
  f = toolbox::freeCommand("080362 010");
  EXPECT_TRUE(f.send);
  EXPECT_EQ(f.request, "01080362010");
  f = toolbox::freeCommand("0803620100");
  EXPECT_EQ(f.request, "010803620100");
  EXPECT_EQ(f.notSentAnswer, "");
}

TEST(DemoKitTools, ModulationAndGainValueIsTheSecondCharacterOfEachEntry) {
  EXPECT_EQ(toolbox::modulationGainValue(" D : 95% ", " 1 : 32dB "), "D1");
  EXPECT_EQ(toolbox::modulationGainValue(" 1 : 10% ", " 3 : 27dB "), "13");
  EXPECT_EQ(toolbox::modulationGainValue(" 6 : 36% ", " F : 8dB "), "6F");
  EXPECT_EQ(toolbox::modulationGainValue("", "x"), "  ");
  std::string depthCodes, gainCodes;
  for (const char* e : toolbox::kModulationDepths) depthCodes += toolbox::entryCode(e);
  for (const char* e : toolbox::kReceiverGains) gainCodes += toolbox::entryCode(e);
  EXPECT_EQ(depthCodes, "123456D");
  EXPECT_EQ(gainCodes, "0137F");
  EXPECT_EQ(toolbox::depthIndexOf('D'), 6);
  EXPECT_EQ(toolbox::depthIndexOf('1'), 0);
  EXPECT_EQ(toolbox::depthIndexOf('7'), -1);
  EXPECT_EQ(toolbox::gainIndexOf('1'), 1);
  EXPECT_EQ(toolbox::gainIndexOf('F'), 4);
  EXPECT_EQ(toolbox::gainIndexOf('2'), -1);
}

TEST(DemoKitTools, ListsHoldTheirEntriesExactly) {
  EXPECT_EQ(std::vector<std::string>(toolbox::kModulationDepths.begin(), toolbox::kModulationDepths.end()),
            (std::vector<std::string>{" 1 : 10% ", " 2 : 17% ", " 3 : 25% ", " 4 : 30% ", " 5 : 33% ", " 6 : 36% ",
                                      " D : 95% "}));
  EXPECT_EQ(std::vector<std::string>(toolbox::kReceiverGains.begin(), toolbox::kReceiverGains.end()),
            (std::vector<std::string>{" 0 : 34dB ", " 1 : 32dB ", " 3 : 27dB ", " 7 : 20dB ", " F : 8dB "}));
}

TEST(DemoKitTools, RegisterChangeSendsModeFieldAndRegister68Frame) {
  EXPECT_EQ(toolbox::registerChangeRequest("13"), "01090468010113");
  EXPECT_EQ(toolbox::registerChangeRequest("D1"), "010904680101D1");
}

TEST(DemoKitTools, RegisterChangeEntryHasItsExtraFirstLine) {
  EXPECT_EQ(toolbox::registerChangeEntry("11-21-2026", "13", "0000"),
            "\r\n11-21-2026 \t>>> ISO14443A Register Value Changed (Modulation Depth & Receiver Gain)\r\n"
            "\t\t>>> TL42RQDLL_KQCmd, 01 090468010113\r\n"
            "\t\t<<< 0000");
  EXPECT_EQ(toolbox::registerChangeEntry("01-02-2027", "D1", ""),
            "\r\n01-02-2027 \t>>> ISO14443A Register Value Changed (Modulation Depth & Receiver Gain)\r\n"
            "\t\t>>> TL42RQDLL_KQCmd, 01 0904680101D1\r\n"
            "\t\t<<< ");
}

TEST(DemoKitTools, StoredValueReachesTheNextIso14443AConfiguration) {
  auto& g = glob::state();
  const std::string saved = g.iso14443AModulationGain;
  g.iso14443AModulationGain = "13";
  FakeDriver d;
  EXPECT_EQ(reader::reconnectBoard(d, reader::ReconnectKind::Iso14443A), 0);
  const auto kq = d.callsOf(Op::KQCmd);
  ASSERT_EQ(kq.size(), 3u);
  EXPECT_EQ(kq[1].request, "01" "0904680101" "13");
  g.iso14443AModulationGain = saved;
}
