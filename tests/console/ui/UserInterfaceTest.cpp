// The chip command console through its controls, on a fake driver that records every call:
// the command list and its stores, the Protocol Select, Idle, register and filter panels,
// the send actions with their request, answer, explanation lines and log.
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>

#include "console/ui/frmTL42RQ_UserInterface.h"
#include "reader/Drivers.h"
#include "shell/ui/Dialogs.h"
#include "support/UiTestSupport.h"

#include "ConsoleUiSupport.h"

using reader::FakeDriver;
using reader::Op;
using namespace consoletest;

namespace {

const char* kStamp = "\r\n11-21-2026 10:20:30\t";

bool shown(QObject* root, const QString& name) { return uitest::find<QWidget>(root, name)->isVisible(); }

// Types into a box at its end, with a key release after each key as a person would.
void type(QObject* root, const QString& name, const QString& keys) {
  auto* e = uitest::find<QLineEdit>(root, name);
  e->setCursorPosition(e->text().size());
  QTest::keyClicks(e, keys);
}

// Empties a box with the keyboard: select all, backspace, release.
void empty(QObject* root, const QString& name) {
  auto* e = uitest::find<QLineEdit>(root, name);
  e->selectAll();
  QTest::keyClick(e, Qt::Key_Backspace);
}

QStringList frame(QObject* root, const char* name, int count) {
  QStringList out;
  for (int i = 0; i < count; ++i) out << text(root, QStringLiteral("%1_%2").arg(QLatin1String(name)).arg(i));
  return out;
}

std::vector<std::string> kqCalls(const FakeDriver& d) {
  std::vector<std::string> out;
  for (const auto& c : d.callsOf(Op::KQCmd)) out.push_back(c.request);
  return out;
}

}  // namespace

class UserInterfaceTest : public QObject {
  Q_OBJECT
  ScriptedDialogs dialogs_;
  FakeDriver* driver_ = nullptr;
  frmTL42RQ_UserInterface* p_ = nullptr;
  uitest::FixedTime* time_ = nullptr;

 private slots:
  void init() {
    dialogs_ = ScriptedDialogs();
    setDialogs(&dialogs_);
    glob::state() = glob::GlobVariables();
    driver_ = new FakeDriver;
    reader::setDriver(driver_);
    time_ = new uitest::FixedTime;
    p_ = new frmTL42RQ_UserInterface;
    p_->resize(1300, 900);
    p_->show();
  }
  void cleanup() {
    delete p_;
    delete time_;
    reader::setDriver(nullptr);
    delete driver_;
    setDialogs(nullptr);
  }

  // --- the window and its list ---

  void windowCarriesItsNameTitleAndOpenFlag() {
    QCOMPARE(p_->objectName(), QString("frmTL42RQ_UserInterface"));
    QCOMPARE(p_->windowTitle(), QString("   TL42RQ user interface"));
    QVERIFY(glob::panelOpen(glob::PanelId::UserInterface));
    QCOMPARE(glob::state().currentProtocolCode, 99);
  }

  void commandListHoldsItsEntriesInOrderAndStartsOnTheFirst() {
    auto* list = uitest::find<QComboBox>(p_, "cboTL42RQ_CommandList");
    QStringList entries;
    for (int i = 0; i < list->count(); ++i) entries << list->itemText(i);
    QCOMPARE(entries, (QStringList{" TL42RQ Command List ", " 01 : IDN ", " 02 : Protocol Select ", " 04 : SendRecv ",
                                   " 07 : Idle ", " 08 : RdReg ", " 09 : WrReg ", " 0A : BaudRate ",
                                   " 55 : Echo-code "}));
    QCOMPARE(list->currentIndex(), 0);
    QCOMPARE(p_->currentCommandEntry(), QString(" TL42RQ Command List "));
  }

  void selectingTheFirstEntryShowsNoGenericPanel() {
    QVERIFY(!shown(p_, "FraCommandCodeXX"));
    choose(p_, "cboTL42RQ_CommandList", " 01 : IDN ");
    QVERIFY(shown(p_, "FraCommandCodeXX"));
    QCOMPARE(uitest::find<QLabel>(p_, "lblCommandCodeXX")->text(), QString("command code 01 : IDN"));
    QCOMPARE(uitest::find<QLabel>(p_, "lblCmdCodeXX_1")->text(), QString("lenght of data"));
    choose(p_, "cboTL42RQ_CommandList", " TL42RQ Command List ");
    for (const char* name : {"FraCommandCodeXX", "FraCommandCode02", "FraCommandCode07", "FraCommandCode0D"})
      QVERIFY2(!shown(p_, name), name);
  }

  void selectionChecksTheLinkAndReconnectsSilently() {
    driver_->setHandler([](Op op, const std::string&) -> FakeDriver::Reply { return {op == Op::USBhandlecheck ? 1 : 0, ""}; });
    choose(p_, "cboTL42RQ_CommandList", " 08 : RdReg ");
    std::vector<Op> ops;
    for (const auto& c : driver_->calls()) ops.push_back(c.op);
    QCOMPARE(ops, (std::vector<Op>{Op::USBhandlecheck, Op::USBconnect, Op::USBhandlecheck}));
    QVERIFY(dialogs_.messages.empty());
  }

  void sendRecvDataAndLengthSurviveAVisitToIdn() {
    choose(p_, "cboTL42RQ_CommandList", " 04 : SendRecv ");
    QVERIFY(shown(p_, "txtCodeXXFrameData"));
    QCOMPARE(uitest::find<QLabel>(p_, "lblCmdCodeXXData")->text(), QString("<Data> : data to be sent"));
    type(p_, "txtCodeXXFrameData", "260100");
    QCOMPARE(text(p_, "txtCodeXXFrameData"), QString("260100"));
    QCOMPARE(text(p_, "txtCodeXXFrame_1"), QString("03"));
    choose(p_, "cboTL42RQ_CommandList", " 01 : IDN ");
    QCOMPARE(frame(p_, "txtCodeXXFrame", 2), (QStringList{"01", "00"}));
    QVERIFY(!shown(p_, "txtCodeXXFrameData"));
    choose(p_, "cboTL42RQ_CommandList", " 04 : SendRecv ");
    QCOMPARE(text(p_, "txtCodeXXFrameData"), QString("260100"));
    QCOMPARE(frame(p_, "txtCodeXXFrame", 2), (QStringList{"04", "03"}));
  }

  void echoInTheListSends0155AndExplainsNothing() {
    driver_->queue(Op::KQCmd, 0, "5500");
    choose(p_, "cboTL42RQ_CommandList", " 55 : Echo-code ");
    QVERIFY(!shown(p_, "txtCodeXXFrame_1"));
    QVERIFY(!shown(p_, "FraRegisterAddressInfos"));
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(kqCalls(*driver_), (std::vector<std::string>{"0155"}));
    QCOMPARE(text(p_, "txtCommandCodeXXRequest"), QString(" 55"));
    QCOMPARE(text(p_, "txtCommandCodeXXAnswer"), QString("5500"));
    QCOMPARE(shownLines(p_, "XX", 5), QStringList());
    QCOMPARE(p_->log().text(),
             std::string(kStamp) + ">>> TL42RQDll_KQCmd, 01 55\r\n\t\t\t<<< 5500");
  }

  void directButtonsCallTheirOperationAndLogIt() {
    driver_->queue(Op::Echo, 0, "5500");
    driver_->queue(Op::SendIRQPulse, 0, "0000");
    driver_->queue(Op::SendNSSPulse, 1, "");
    click(p_, "cmdEcho");
    click(p_, "cmdSendIRQPulse");
    click(p_, "cmdNegativePulseOn_SPI_NSS");
    QCOMPARE(uitest::find<QPushButton>(p_, "cmdSendIRQPulse")->text(), QString("Negative pulse on IRQ in"));
    QCOMPARE(uitest::find<QPushButton>(p_, "cmdNegativePulseOn_SPI_NSS")->text(), QString("Negative Pulse on SPI NSS"));
    QCOMPARE(text(p_, "txtEchoAnswer"), QString("5500"));
    QCOMPARE(text(p_, "txtSendIRQPulseAnswer"), QString("0000"));
    QCOMPARE(text(p_, "txtNegPulse_SPI_NSS_Answer"), QString(""));
    const std::string s(kStamp);
    QCOMPARE(p_->log().text(), s + ">>> TL42RQDLL_ECHO\r\n\t\t\t<<< 5500" + s + ">>> TL42RQDLL_PULSE_IRQ_IN\r\n\t\t\t<<< 0000" +
                                   s + ">>> TL42RQDLL_NSS_PULSE\r\n\t\t\t<<< ");
    QCOMPARE(uitest::find<QPlainTextEdit>(p_, "rtfTL42RQLogEdit")->toPlainText(),
             QString::fromStdString(p_->log().text()).remove('\r'));
  }

  void directButtonReconnectsOnStatusFiveAndCallsOnceMore() {
    driver_->queue(Op::Echo, 5, "");
    driver_->queue(Op::Echo, 0, "5500");
    click(p_, "cmdEcho");
    QCOMPARE(driver_->callsOf(Op::Echo).size(), std::size_t(2));
    QCOMPARE(driver_->callsOf(Op::USBconnect).size(), std::size_t(1));
    QCOMPARE(text(p_, "txtEchoAnswer"), QString("5500"));
  }

  // --- Protocol Select ---

  void protocolSelectShowsNothingButTheOptionsUntilOneIsChosen() {
    choose(p_, "cboTL42RQ_CommandList", " 02 : Protocol Select ");
    QVERIFY(shown(p_, "FraCommandCode02"));
    QVERIFY(shown(p_, "OptProtocolCode_0"));
    QVERIFY(!shown(p_, "FraByte0Config"));
    QVERIFY(!shown(p_, "txtCode02Frame_0"));
    QVERIFY(!shown(p_, "cmdSendCommandCode02"));
    QCOMPARE(uitest::find<QRadioButton>(p_, "OptProtocolCode_5")->parentWidget()->objectName(),
             QString("fraCardProtocolCode"));
  }

  void iso15693AtStartGivesTheFrame0202010D() {
    choose(p_, "cboTL42RQ_CommandList", " 02 : Protocol Select ");
    click(p_, "OptProtocolCode_1");
    QCOMPARE(frame(p_, "txtCode02Frame", 4), (QStringList{"02", "02", "01", "0D"}));
    QVERIFY(!shown(p_, "txtCode02Frame_4"));
    QVERIFY(shown(p_, "cmdSendCommandCode02"));
    QCOMPARE(glob::state().currentProtocolCode, 1);
    QCOMPARE(uitest::find<QLabel>(p_, "txtLabelByte0")->text(), QString("ISO15693 reader byte 0 configuration"));
    QCOMPARE(uitest::find<QComboBox>(p_, "cboAppendCRC")->currentText(), QString(" 1 : Append CRC "));
    QCOMPARE(uitest::find<QComboBox>(p_, "cboISO15693reader_Delay")->currentText(), QString(" 1 : wait for sof "));
    QVERIFY(shown(p_, "cboISO15693reader_DataRate"));
    QVERIFY(!shown(p_, "cboISO14443Areader_TransDataRate"));
    QCOMPARE(frame(p_, "txtBitsByte0", 8), (QStringList{"1", "0", "1", "1", "0", "0", "0", "0"}));
    driver_->queue(Op::KQCmd, 0, "0000");
    click(p_, "cmdSendCommandCode02");
    QCOMPARE(kqCalls(*driver_), (std::vector<std::string>{"010202010D"}));
    QCOMPARE(text(p_, "txtCommandCode02Request"), QString(" 0202010D"));
    QCOMPARE(shownLines(p_, "02", 3), (QStringList{"00 : Result code = OK", "00 : Lenght of Data (0)", ""}));
    QCOMPARE(p_->log().text(), std::string(kStamp) + ">>> TL42RQDll_KQCmd, 01 0202010D\r\n\t\t\t<<< 0000");
  }

  void felicaAtStartGives02020451WithTwoHundredTwelveK() {
    choose(p_, "cboTL42RQ_CommandList", " 02 : Protocol Select ");
    click(p_, "OptProtocolCode_4");
    QCOMPARE(frame(p_, "txtCode02Frame", 4), (QStringList{"02", "02", "04", "51"}));
    QCOMPARE(uitest::find<QComboBox>(p_, "cboISO18092reader_TransDataRate")->currentText(), QString(" 01 : 212k "));
    QCOMPARE(uitest::find<QComboBox>(p_, "cboISO18092reader_RecepDataRate")->currentText(), QString(" 01 : 212k "));
    QCOMPARE(text(p_, "txtBitsByte0_6"), QString("1"));
    QCOMPARE(text(p_, "txtBitsByte0_4"), QString("1"));
    QCOMPARE(text(p_, "txtBitsByte0_0"), QString("1"));
    QCOMPARE(text(p_, "txtByte0Configuration"), QString("51"));
    QVERIFY(shown(p_, "FraByte1Config"));
    QCOMPARE(uitest::find<QGroupBox>(p_, "FraByte1Config")->title(), QString("Felica reader byte 1 configuration"));
    QVERIFY(!shown(p_, "FraByte12Config"));
    QVERIFY(!uitest::find<QLineEdit>(p_, "txtBitsByte1_0")->isEnabled());
    // The disregard list starts on its second entry while bit 4 of byte 1 starts at 0.
    QCOMPARE(uitest::find<QComboBox>(p_, "cboISO18092reader_Disregard_SlotCounter")->currentText(),
             QString(" 1 : search for the reply "));
    QCOMPARE(text(p_, "txtByte1Configuration"), QString("00"));
  }

  void felicaSlotCounterAddsByteOne() {
    choose(p_, "cboTL42RQ_CommandList", " 02 : Protocol Select ");
    click(p_, "OptProtocolCode_4");
    click(p_, "chkiso18092_SlotCounterByte1");
    QCOMPARE(text(p_, "txtCode02Frame_1"), QString("03"));
    QVERIFY(shown(p_, "txtCode02Frame_4"));
    QVERIFY(uitest::find<QLineEdit>(p_, "txtBitsByte1_0")->isEnabled());
    choose(p_, "cboISO18092reader_SlotCounter", " B : 12 slots ");
    QCOMPARE(frame(p_, "txtBitsByte1", 8), (QStringList{"1", "1", "0", "1", "0", "0", "0", "0"}));
    choose(p_, "cboISO18092reader_Disregard_SlotCounter", " 1 : search for the reply ");
    QCOMPARE(text(p_, "txtByte1Configuration"), QString("1B"));
    QCOMPARE(frame(p_, "txtCode02Frame", 5), (QStringList{"02", "03", "04", "51", "1B"}));
    driver_->queue(Op::KQCmd, 0, "0000");
    click(p_, "cmdSendCommandCode02");
    QCOMPARE(kqCalls(*driver_), (std::vector<std::string>{"01020304511B"}));
    click(p_, "chkiso18092_SlotCounterByte1");
    QCOMPARE(text(p_, "txtCode02Frame_1"), QString("02"));
    QVERIFY(!shown(p_, "txtCode02Frame_4"));
    QCOMPARE(text(p_, "txtByte1Configuration"), QString("1B"));
  }

  void iso14443BWithTheOptionalBytesGives02040301() {
    choose(p_, "cboTL42RQ_CommandList", " 02 : Protocol Select ");
    click(p_, "OptProtocolCode_3");
    QCOMPARE(frame(p_, "txtCode02Frame", 4), (QStringList{"02", "02", "03", "01"}));
    QCOMPARE(uitest::find<QGroupBox>(p_, "FraByte12Config")->title(),
             QString("ISO14443-B reader byte 1 && 2 configuration"));
    QCOMPARE(uitest::find<QCheckBox>(p_, "OptByte12optional")->text(), QString("AFDT optional byte 1 && 2"));
    QVERIFY(!shown(p_, "lblByte1"));
    click(p_, "OptByte12optional");
    QCOMPARE(frame(p_, "txtCode02Frame", 6), (QStringList{"02", "04", "03", "01", "00", "00"}));
    QVERIFY(shown(p_, "txtCode02Frame_4"));
    QVERIFY(shown(p_, "txtCode02Frame_5"));
    QVERIFY(shown(p_, "lblByte1"));
    QVERIFY(uitest::find<QLineEdit>(p_, "txtByte12Configuration_1")->isEnabled());
    empty(p_, "txtByte12Configuration_1");
    QCOMPARE(text(p_, "txtByte12Configuration_1"), QString(""));
    type(p_, "txtByte12Configuration_1", "7");
    QCOMPARE(text(p_, "txtByte12Configuration_1"), QString("07"));
    QCOMPARE(text(p_, "txtCode02Frame_5"), QString("07"));
    // Frame box 4 runs back up into the optional byte.
    empty(p_, "txtCode02Frame_4");
    type(p_, "txtCode02Frame_4", "ab");
    QCOMPARE(text(p_, "txtCode02Frame_4"), QString("AB"));
    QCOMPARE(text(p_, "txtByte12Configuration_0"), QString("AB"));
    click(p_, "OptByte12optional");
    QCOMPARE(text(p_, "txtCode02Frame_1"), QString("02"));
    QVERIFY(!shown(p_, "txtCode02Frame_4"));
  }

  void optionalBytesMoveALengthTypedByHand() {
    choose(p_, "cboTL42RQ_CommandList", " 02 : Protocol Select ");
    click(p_, "OptProtocolCode_2");
    empty(p_, "txtCode02Frame_1");
    QCOMPARE(text(p_, "txtCode02Frame_1"), QString(""));
    type(p_, "txtCode02Frame_1", "5");
    QCOMPARE(text(p_, "txtCode02Frame_1"), QString("05"));
    click(p_, "OptByte12optional");
    QCOMPARE(text(p_, "txtCode02Frame_1"), QString("07"));
  }

  void clearingABitBoxLeavesZero() {
    choose(p_, "cboTL42RQ_CommandList", " 02 : Protocol Select ");
    click(p_, "OptProtocolCode_1");
    empty(p_, "txtBitsByte0_0");
    QCOMPARE(text(p_, "txtBitsByte0_0"), QString("0"));
    QCOMPARE(text(p_, "txtByte0Configuration"), QString("0C"));
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("0C"));
  }

  void bitBoxesRefuseEverythingButZeroAndOne() {
    choose(p_, "cboTL42RQ_CommandList", " 02 : Protocol Select ");
    click(p_, "OptProtocolCode_1");
    empty(p_, "txtBitsByte0_7");
    type(p_, "txtBitsByte0_7", "2");
    QCOMPARE(dialogs_.beeps, 1);
    QCOMPARE(text(p_, "txtBitsByte0_7"), QString("0"));
    type(p_, "txtByte0Configuration", "g");
    QCOMPARE(dialogs_.beeps, 2);
  }

  void dualSubcarrierComesBackAsABitNotAsAList() {
    choose(p_, "cboTL42RQ_CommandList", " 02 : Protocol Select ");
    click(p_, "OptProtocolCode_1");
    choose(p_, "cboISO15693reader_Subcarrier", " 1 : Dual Subcarrier ");
    QCOMPARE(text(p_, "txtByte0Configuration"), QString("0F"));
    // A bit typed by hand: the list does not follow.
    empty(p_, "txtBitsByte0_1");
    QCOMPARE(text(p_, "txtByte0Configuration"), QString("0D"));
    type(p_, "txtBitsByte0_1", "1");
    QCOMPARE(text(p_, "txtByte0Configuration"), QString("0F"));
    click(p_, "OptProtocolCode_3");
    choose(p_, "cboAppendCRC", " 0 : No Append CRC ");
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("00"));
    click(p_, "OptProtocolCode_2");
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("00"));
    click(p_, "OptProtocolCode_1");
    QCOMPARE(text(p_, "txtByte0Configuration"), QString("0F"));
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("0F"));
    // cboAppendCRC is the one list set back, from the stored bit 0.
    QCOMPARE(uitest::find<QComboBox>(p_, "cboAppendCRC")->currentText(), QString(" 1 : Append CRC "));
    QCOMPARE(uitest::find<QComboBox>(p_, "cboISO15693reader_Subcarrier")->currentText(),
             QString(" 1 : Dual Subcarrier "));
    click(p_, "OptProtocolCode_3");
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("00"));
    QCOMPARE(uitest::find<QComboBox>(p_, "cboAppendCRC")->currentText(), QString(" 0 : No Append CRC "));
    // The stores also survive a visit to another command.
    choose(p_, "cboTL42RQ_CommandList", " 08 : RdReg ");
    choose(p_, "cboTL42RQ_CommandList", " 02 : Protocol Select ");
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("00"));
    click(p_, "OptProtocolCode_1");
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("0F"));
  }

  void fieldOffKeepsZeroAndForgetsTypedBits() {
    choose(p_, "cboTL42RQ_CommandList", " 02 : Protocol Select ");
    click(p_, "OptProtocolCode_0");
    QCOMPARE(frame(p_, "txtCode02Frame", 4), (QStringList{"02", "02", "00", "00"}));
    click(p_, "OptProtocolCode_0");
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("00"));
    QCOMPARE(uitest::find<QLabel>(p_, "txtLabelByte0")->text(), QString("Field Off byte 0 configuration"));
    empty(p_, "txtBitsByte0_2");
    type(p_, "txtBitsByte0_2", "1");
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("04"));
    click(p_, "OptProtocolCode_1");
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("0D"));
    click(p_, "OptProtocolCode_0");
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("00"));
    QCOMPARE(glob::state().currentProtocolCode, 99);
  }

  void cardProtocolsAllShowFiveInBoxTwo() {
    choose(p_, "cboTL42RQ_CommandList", " 02 : Protocol Select ");
    click(p_, "OptProtocolCode_7");
    QCOMPARE(frame(p_, "txtCode02Frame", 4), (QStringList{"02", "02", "05", "01"}));
    QCOMPARE(uitest::find<QLabel>(p_, "txtLabelByte0")->text(), QString("Felica card byte 0 configuration"));
    QVERIFY(shown(p_, "cboISO18092card_Clk"));
    click(p_, "OptProtocolCode_6");
    QCOMPARE(text(p_, "txtCode02Frame_2"), QString("05"));
    click(p_, "OptProtocolCode_5");
    QCOMPARE(text(p_, "txtCode02Frame_2"), QString("05"));
    // The A card shows the lists of the B card.
    QVERIFY(shown(p_, "cboISO14443Bcard_TransDataRate"));
    QVERIFY(!shown(p_, "cboISO14443Acard_TransDataRate"));
    QVERIFY(!shown(p_, "cboAppendCRC"));
    choose(p_, "cboISO14443Bcard_TransDataRate", " 11 : 847k ");
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("C0"));
    // The bits of the A card are kept apart from those of the B card.
    click(p_, "OptProtocolCode_6");
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("01"));
    click(p_, "OptProtocolCode_5");
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("C0"));
  }

  void clkRecStillWritesZeroIntoBitOne() {
    choose(p_, "cboTL42RQ_CommandList", " 02 : Protocol Select ");
    click(p_, "OptProtocolCode_6");
    empty(p_, "txtBitsByte0_1");
    type(p_, "txtBitsByte0_1", "1");
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("03"));
    choose(p_, "cboISO14443Bcard_Clk", " 0 : ClkRec ");
    QCOMPARE(text(p_, "txtBitsByte0_1"), QString("0"));
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("01"));
  }

  void aByteTypedByHandIsOverwrittenByTheNextListClick() {
    choose(p_, "cboTL42RQ_CommandList", " 02 : Protocol Select ");
    click(p_, "OptProtocolCode_1");
    empty(p_, "txtByte0Configuration");
    QCOMPARE(text(p_, "txtByte0Configuration"), QString(""));
    type(p_, "txtByte0Configuration", "ff");
    QCOMPARE(text(p_, "txtByte0Configuration"), QString("FF"));
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("FF"));
    QCOMPARE(text(p_, "txtBitsByte0_7"), QString("0"));
    choose(p_, "cboISO15693reader_DataRate", " 01 : 52k ");
    QCOMPARE(text(p_, "txtCode02Frame_3"), QString("1D"));
  }

  void protocolFailureShowsStatusAndCode() {
    driver_->setHandler([](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::KQCmd) return {5, "87"};
      return {op == Op::USBhandlecheck ? 1 : 0, ""};
    });
    choose(p_, "cboTL42RQ_CommandList", " 02 : Protocol Select ");
    click(p_, "OptProtocolCode_1");
    click(p_, "cmdSendCommandCode02");
    QCOMPARE(driver_->callsOf(Op::KQCmd).size(), std::size_t(2));
    QCOMPARE(text(p_, "txtCommandCode02Answer"), QString("Transaction error : 5 (87)"));
    QCOMPARE(shownLines(p_, "02", 3), QStringList());
    QVERIFY(p_->log().text().ends_with("<<< Transaction error : 5 (87)"));
  }

  // --- Idle ---

  void idleExampleThreeThenZeroLeavesNoTrace() {
    choose(p_, "cboTL42RQ_CommandList", " 07 : Idle ");
    QVERIFY(shown(p_, "FraCommandCode07"));
    QCOMPARE(uitest::find<QLabel>(p_, "lblCmd07Byte_2")->text(), QString("<WFUFlags>"));
    QCOMPARE(uitest::find<QLabel>(p_, "lblCmd07Byte_4")->toolTip(), QString("Click to access to CtrlH bits"));
    QVERIFY(!shown(p_, "FraCmd07ByteBits"));
    click(p_, "optIDLEframe_3");
    QCOMPARE(frame(p_, "txtCode07Frame", 16).join(' '), QString("07 0E 01 21 00 38 00 18 00 60 60 00 00 00 00 08"));
    click(p_, "optIDLEframe_0");
    QCOMPARE(frame(p_, "txtCode07Frame", 16).join(' '), QString("07 0E 08 04 00 04 00 18 00 00 00 00 00 00 00 00"));
    click(p_, "optIDLEframe_4");
    QCOMPARE(frame(p_, "txtCode07Frame", 16).join(' '), QString("07 0E 0A 21 00 79 01 18 00 20 60 60 64 74 3F 08"));
  }

  void anEmptiedIdleBoxBecomesZeroAndTheRequestKeepsSixteenBytes() {
    choose(p_, "cboTL42RQ_CommandList", " 07 : Idle ");
    click(p_, "optIDLEframe_5");
    empty(p_, "txtCode07Frame_15");
    QCOMPARE(text(p_, "txtCode07Frame_15"), QString("00"));
    QVERIFY(uitest::find<QLineEdit>(p_, "txtCode07Frame_1")->isReadOnly());
    driver_->queue(Op::KQCmd, 0, "000101");
    click(p_, "cmdSendCommandCode07");
    QCOMPARE(kqCalls(*driver_), (std::vector<std::string>{"01070E03A100F801180020606000003F00"}));
    QCOMPARE(text(p_, "txtCommandCode07Request"), QString(" 070E03A100F801180020606000003F00"));
    QCOMPARE(shownLines(p_, "07", 2),
             (QStringList{"00 : Result code = Device exits from Idle mode", "01 : Lenght of Data (1)"}));
    QCOMPARE(p_->log().text(),
             std::string(kStamp) + ">>> TL42RQDll_KQCmd, 01 070E03A100F801180020606000003F00\r\n\t\t\t<<< 000101");
  }

  // --- registers and other commands ---

  void typingAbcInTheSendRecvDataGives0ABCAndLengthTwo() {
    choose(p_, "cboTL42RQ_CommandList", " 04 : SendRecv ");
    type(p_, "txtCodeXXFrameData", "ABC");
    QCOMPARE(text(p_, "txtCodeXXFrameData"), QString("0ABC"));
    QCOMPARE(text(p_, "txtCodeXXFrame_1"), QString("02"));
    QTest::keyClick(uitest::find<QLineEdit>(p_, "txtCodeXXFrameData"), Qt::Key_Backspace);
    QCOMPARE(text(p_, "txtCodeXXFrameData"), QString("AB"));
    QCOMPARE(text(p_, "txtCodeXXFrame_1"), QString("01"));
  }

  void pastedOddDataGetsAZeroInFront() {
    choose(p_, "cboTL42RQ_CommandList", " 04 : SendRecv ");
    auto* data = uitest::find<QLineEdit>(p_, "txtCodeXXFrameData");
    data->setText("ABC");
    QTest::keyRelease(data, Qt::Key_Control);
    QCOMPARE(data->text(), QString("0ABC"));
    QCOMPARE(text(p_, "txtCodeXXFrame_1"), QString("02"));
  }

  void emptyingTheDataBoxGivesLengthZeroAndNoData() {
    choose(p_, "cboTL42RQ_CommandList", " 04 : SendRecv ");
    type(p_, "txtCodeXXFrameData", "2601");
    empty(p_, "txtCodeXXFrameData");
    QCOMPARE(text(p_, "txtCodeXXFrame_1"), QString("00"));
    driver_->queue(Op::KQCmd, 0, "8700");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(kqCalls(*driver_), (std::vector<std::string>{"010400"}));
    QCOMPARE(shownLines(p_, "XX", 5),
             (QStringList{"87 : Error code = Frame wait time out or no TAG", "00 : Lenght of Data = 0"}));
  }

  void sendReceiveExplainsTagFrameCrcAndResult() {
    choose(p_, "cboTL42RQ_CommandList", " 04 : SendRecv ");
    type(p_, "txtCodeXXFrameData", "260100");
    driver_->queue(Op::KQCmd, 0, "800D0000E002000000000000CB1E00");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(kqCalls(*driver_), (std::vector<std::string>{"010403260100"}));
    QCOMPARE(text(p_, "txtCommandCodeXXRequest"), QString(" 0403260100"));
    QCOMPARE(shownLines(p_, "XX", 5),
             (QStringList{"80 : Result code = OK", "0D : Lenght of Data (13)", "00 00 E0 02 00 00 00 00 00 00 : Tag answer",
                          "CB 1E : CRC", "00 : Protocol result"}));
    QCOMPARE(p_->log().text(), std::string(kStamp) +
                                   ">>> TL42RQDll_KQCmd, 01 0403260100\r\n\t\t\t<<< 800D0000E002000000000000CB1E00");
  }

  void sendReceiveOfLengthZeroAndTheAcknowledges() {
    choose(p_, "cboTL42RQ_CommandList", " 04 : SendRecv ");
    driver_->queue(Op::KQCmd, 0, "8000");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(p_, "XX", 5), (QStringList{"80 : Result code = OK", "00 : Lenght of Data (0)", ": Tag answer",
                                                    " 80 : CRC", "00 : Protocol result"}));
    driver_->queue(Op::KQCmd, 0, "90040A");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(p_, "XX", 5), (QStringList{"90 : Error code = ", "04 : Valid bits (4)", "ACK"}));
    driver_->queue(Op::KQCmd, 0, "900404");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(p_, "XX", 5), (QStringList{"90 : Error code = ", "04 : Valid bits (4)", "NAK"}));
    driver_->queue(Op::KQCmd, 0, "900405");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(p_, "XX", 5), (QStringList{"90 : Error code = ", "04 : Valid bits (4)", "????"}));
  }

  void readRegisterOptionsSetBoxAndLabelTwo() {
    choose(p_, "cboTL42RQ_CommandList", " 08 : RdReg ");
    QVERIFY(shown(p_, "fraCmd08SelectRegister"));
    QVERIFY(shown(p_, "FraRegisterAddressInfos"));
    QCOMPARE(frame(p_, "txtCodeXXFrame", 5), (QStringList{"08", "03", "62", "01", "00"}));
    QCOMPARE(uitest::find<QLabel>(p_, "lblCmdCodeXX_4")->text(), QString("KQ Reserved"));
    QVERIFY(uitest::find<QLineEdit>(p_, "txtCodeXXFrame_2")->isReadOnly());
    click(p_, "optCmd08ReadRegister_1");
    QCOMPARE(text(p_, "txtCodeXXFrame_2"), QString("69"));
    QCOMPARE(uitest::find<QLabel>(p_, "lblCmdCodeXX_2")->text(), QString("Register address for ARC_B register"));
    driver_->queue(Op::KQCmd, 0, "000130");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(kqCalls(*driver_), (std::vector<std::string>{"010803690100"}));
    QCOMPARE(shownLines(p_, "XX", 5), (QStringList{"00 : Result code = OK", "01 : Lenght of Data (1)", "Data : 30 "}));
    QCOMPARE(p_->log().text(), std::string(kStamp) + ">>> TL42RQDll_KQCmd, 01 0803690100\r\n\t\t\t<<< 000130");
  }

  void writeOptionTwoThenOneShowsTheKeptArcBValue() {
    choose(p_, "cboTL42RQ_CommandList", " 09 : WrReg ");
    QVERIFY(shown(p_, "fraCmd09SelectRegister"));
    QVERIFY(!shown(p_, "txtCodeXXFrameData"));
    QCOMPARE(uitest::find<QLabel>(p_, "lblCmdCodeXX_2")->text(),
             QString("Analog Register Configuration address index"));
    click(p_, "optCmd09WriteRegister_1");
    QCOMPARE(frame(p_, "txtCodeXXFrame", 5), (QStringList{"09", "04", "68", "01", "01"}));
    QVERIFY(shown(p_, "txtCodeXXFrameData"));
    QVERIFY(shown(p_, "lblDataCmdCode09"));
    QVERIFY(shown(p_, "fraArcBValue"));
    QCOMPARE(text(p_, "txtCodeXXFrameData"), QString("00"));
    empty(p_, "txtCodeXXFrameData");
    type(p_, "txtCodeXXFrameData", "D1");
    QCOMPARE(p_->arcBValue(), std::string("D1"));
    QCOMPARE(text(p_, "txtCodeXXFrame_1"), QString("04"));
    click(p_, "optCmd09WriteRegister_2");
    QCOMPARE(text(p_, "txtCodeXXFrameData"), QString("00"));
    QVERIFY(uitest::find<QLineEdit>(p_, "txtCodeXXFrameData")->isReadOnly());
    QCOMPARE(text(p_, "txtCodeXXFrame_4"), QString("07"));
    click(p_, "optCmd09WriteRegister_3");
    QCOMPARE(text(p_, "txtCodeXXFrameData"), QString("10"));
    click(p_, "optCmd09WriteRegister_1");
    QCOMPARE(text(p_, "txtCodeXXFrameData"), QString("D1"));
    driver_->queue(Op::KQCmd, 0, "0000");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(kqCalls(*driver_), (std::vector<std::string>{"010904680101D1"}));
    QCOMPARE(shownLines(p_, "XX", 5),
             (QStringList{"00 : Result code = Data was successfully sent", "00 : Lenght of Data (0)"}));
    click(p_, "optCmd09WriteRegister_0");
    QVERIFY(!shown(p_, "txtCodeXXFrameData"));
    driver_->queue(Op::KQCmd, 0, "0000");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(kqCalls(*driver_).back(), std::string("010903680001"));
  }

  void writeRegisterComesBackWithTheOptionThatWasOn() {
    choose(p_, "cboTL42RQ_CommandList", " 09 : WrReg ");
    click(p_, "optCmd09WriteRegister_3");
    choose(p_, "cboTL42RQ_CommandList", " 01 : IDN ");
    choose(p_, "cboTL42RQ_CommandList", " 09 : WrReg ");
    QVERIFY(uitest::find<QRadioButton>(p_, "optCmd09WriteRegister_3")->isChecked());
    QCOMPARE(frame(p_, "txtCodeXXFrame", 5), (QStringList{"09", "04", "68", "01", "07"}));
    QCOMPARE(text(p_, "txtCodeXXFrameData"), QString("10"));
    QVERIFY(shown(p_, "txtCodeXXFrameData"));
  }

  void baudRatePanelOpensBoxTwo() {
    choose(p_, "cboTL42RQ_CommandList", " 0A : BaudRate ");
    QVERIFY(shown(p_, "FraCommandCode0Abaudrate"));
    QVERIFY(shown(p_, "lblCommand02Uart"));
    QCOMPARE(uitest::find<QLabel>(p_, "lblCommand02Uart")->text(),
             QString(" * IMPORTANT : DEMO-TL42RQ-A delivered in SPI version (please contact KQ to switch it to UART mode)"));
    QCOMPARE(uitest::find<QLabel>(p_, "lblCommandCodeXX")->text(), QString("command code 0A : Set UART baud rate"));
    QVERIFY(!uitest::find<QLineEdit>(p_, "txtCodeXXFrame_2")->isReadOnly());
    empty(p_, "txtCodeXXFrame_2");
    QCOMPARE(text(p_, "txtCodeXXFrame_2"), QString("00"));
    type(p_, "txtCodeXXFrame_2", "75");
    QCOMPARE(text(p_, "txtCodeXXFrame_2"), QString("75"));
    driver_->queue(Op::KQCmd, 0, "5500");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(kqCalls(*driver_), (std::vector<std::string>{"010A0175"}));
    QCOMPARE(shownLines(p_, "XX", 5), (QStringList{"55 : Pseudo-response of 0x55", "00 : Lenght of Data (0)"}));
  }

  void sleepModeTimeIntervalOptionSetsTheLength() {
    p_->selectCommandEntry(" 0F : SleepMode ");
    QCOMPARE(uitest::find<QLabel>(p_, "lblCommandCodeXX")->text(), QString("command code 0F : SleepMode"));
    QCOMPARE(frame(p_, "txtCodeXXFrame", 3), (QStringList{"0F", "01", "00"}));
    QVERIFY(!shown(p_, "txtCodeXXFrame_3"));
    QCOMPARE(uitest::find<QLabel>(p_, "lblCmdCodeXX_2")->text(), QString("WU source"));
    click(p_, "chkCommandCode0FTimeIntervalOption");
    QCOMPARE(text(p_, "txtCodeXXFrame_1"), QString("02"));
    QVERIFY(shown(p_, "txtCodeXXFrame_3"));
    QCOMPARE(uitest::find<QLabel>(p_, "lblCmdCodeXX_3")->text(), QString("TimeInterval"));
    driver_->queue(Op::KQCmd, 0, "8300");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(kqCalls(*driver_), (std::vector<std::string>{"010F020000"}));
    QCOMPARE(shownLines(p_, "XX", 5), (QStringList{"83 : Error code ", "00 : Lenght of Data (0)"}));
    click(p_, "chkCommandCode0FTimeIntervalOption");
    driver_->queue(Op::KQCmd, 0, "0000");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(kqCalls(*driver_).back(), std::string("010F0100"));
  }

  void commandsOutsideTheListAreServedByTheSamePanel() {
    p_->selectCommandEntry(" 03 : Poll Field ");
    QCOMPARE(uitest::find<QLabel>(p_, "lblCommandCodeXX")->text(), QString("command code 03 : PollField"));
    driver_->queue(Op::KQCmd, 0, "000101");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(p_, "XX", 5),
             (QStringList{"00 : Result code = OK", "01 : Lenght of Data (1)", "01 : Field is detected"}));
    p_->selectCommandEntry(" 0E : TestMode ");
    QCOMPARE(uitest::find<QLabel>(p_, "lblCmdCodeXX_3")->text(), QString("<DigTestIn> : 00 disable / 01 AnaIn"));
    driver_->queue(Op::KQCmd, 0, "0000");
    click(p_, "cmdSendCommandCodeXX");
    p_->selectCommandEntry(" 06 : Send ");
    type(p_, "txtCodeXXFrameData", "5");
    driver_->queue(Op::KQCmd, 0, "8300");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(kqCalls(*driver_), (std::vector<std::string>{"010300", "010E020000", "01060105"}));
    QCOMPARE(shownLines(p_, "XX", 5),
             (QStringList{"83 : Error code = Invalid protocol previously selected by Select Protocol command",
                          "00 : Lenght of Data (0)"}));
  }

  void filterWithThreeCascadeLevelsSendsLengthFifteen() {
    p_->selectCommandEntry(frmTL42RQ_UserInterface::entryOf("0D"));
    QVERIFY(shown(p_, "FraCommandCode0D"));
    QCOMPARE(uitest::find<QLabel>(p_, "lblCommandCode0D")->text(),
             QString("command code 0D : Activate / Desactivate anti-collision filter"));
    QVERIFY(!shown(p_, "txtCode0DFrame_2"));
    QVERIFY(!shown(p_, "lblCmd0DByte_2"));
    click(p_, "OptCommad0D_3");
    for (int i = 2; i <= 16; ++i) QVERIFY(shown(p_, QStringLiteral("txtCode0DFrame_%1").arg(i)));
    QCOMPARE(text(p_, "txtCode0DFrame_1"), QString("0F"));
    QCOMPARE(text(p_, "txtCode0DFrame_4"), QString("88"));
    QCOMPARE(text(p_, "txtCode0DFrame_8"), QString("88"));
    QVERIFY(shown(p_, "lblCmd0DByte_2"));
    QCOMPARE(uitest::find<QLabel>(p_, "lblCmd0DByte_2")->text(), QString("<ATQA> "));
    QVERIFY(shown(p_, "lblUIDcascadelevel3"));
    QVERIFY(!uitest::find<QLineEdit>(p_, "txtCode0DFrame_4")->isReadOnly());
    driver_->queue(Op::KQCmd, 0, "0000");
    click(p_, "cmdSendCommandCode0D");
    QCOMPARE(kqCalls(*driver_), (std::vector<std::string>{"01" "0D0F" "0000" "88" "000000" "88" "0000000000000000"}));
    QCOMPARE(shownLines(p_, "0D", 3),
             (QStringList{"00 : Result code = Device is successfully Activated / Disactivated",
                          "00 : Lenght of Data (0)", ""}));
    click(p_, "OptCommad0D_1");
    QCOMPARE(text(p_, "txtCode0DFrame_4"), QString("00"));
    QVERIFY(!shown(p_, "txtCode0DFrame_9"));
    QVERIFY(shown(p_, "lblUIDcascadelevel1"));
    QVERIFY(!shown(p_, "lblUIDcascadelevel3"));
    click(p_, "OptCommad0D_0");
    driver_->queue(Op::KQCmd, 0, "8200");
    click(p_, "cmdSendCommandCode0D");
    QCOMPARE(kqCalls(*driver_).back(), std::string("010D00"));
    QCOMPARE(shownLines(p_, "0D", 3), (QStringList{"82 : Error code = Invalid command lenght", "00 : Lenght of Data (0)"}));
  }

  // --- the analyser's limits ---

  void answerOf128CharactersIsExplainedAnd129GiveTheMessage() {
    choose(p_, "cboTL42RQ_CommandList", " 08 : RdReg ");
    const QString data(124, 'A');
    driver_->queue(Op::KQCmd, 0, "003E" + data.toStdString());
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(text(p_, "txtCommandCodeXXAnswer"), "003E" + data);
    QCOMPARE(shownLines(p_, "XX", 5).size(), 3);
    driver_->queue(Op::KQCmd, 0, "003E" + data.toStdString() + "A");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(text(p_, "txtCommandCodeXXAnswer"), QString("Not correct data sent by DEMO-TL42RQ-A"));
    QCOMPARE(shownLines(p_, "XX", 5), QStringList());
    QVERIFY(p_->log().text().ends_with("\t\t\t<<< Not correct data sent by DEMO-TL42RQ-A"));
  }

  void transactionErrorOnTheGenericPanel() {
    driver_->setHandler([](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::KQCmd) return {5, ""};
      return {op == Op::USBhandlecheck ? 1 : 0, ""};
    });
    choose(p_, "cboTL42RQ_CommandList", " 01 : IDN ");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(driver_->callsOf(Op::KQCmd).size(), std::size_t(2));
    QCOMPARE(text(p_, "txtCommandCodeXXAnswer"), QString("Transaction error : Check your reader connections"));
    QCOMPARE(p_->log().text().substr(p_->log().text().rfind('\n') + 1),
             std::string("\t\t\t<<< Transaction error : Check your reader connections"));
  }

  void anUnreadableLengthLeavesThePanelUsable() {
    choose(p_, "cboTL42RQ_CommandList", " 01 : IDN ");
    driver_->queue(Op::KQCmd, 0, "00ZZ414243");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(p_, "XX", 5), QStringList());
    QCOMPARE(text(p_, "txtCommandCodeXXAnswer"), QString("00ZZ414243"));
    driver_->queue(Op::KQCmd, 0, "0008544C343252511234");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(p_, "XX", 5), (QStringList{"00 : Result code = OK", "08 : Lenght of Data (8)", "TL42RQ"}));
  }

  void aSecondSendStartsFromClearedBoxes() {
    choose(p_, "cboTL42RQ_CommandList", " 04 : SendRecv ");
    driver_->queue(Op::KQCmd, 0, "8003AABBCC");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(p_, "XX", 5).size(), 5);
    driver_->queue(Op::KQCmd, 0, "8700");
    click(p_, "cmdSendCommandCodeXX");
    QCOMPARE(shownLines(p_, "XX", 5).size(), 2);
    QCOMPARE(uitest::find<QLineEdit>(p_, "txtCommandCodeXXAnswerExplain_4")->text(), QString());
    // Moving to another command empties every reply box.
    choose(p_, "cboTL42RQ_CommandList", " 01 : IDN ");
    QCOMPARE(text(p_, "txtCommandCodeXXAnswer"), QString());
    QCOMPARE(text(p_, "txtCommandCodeXXRequest"), QString());
  }
};

QTEST_MAIN(UserInterfaceTest)
#include "UserInterfaceTest.moc"
