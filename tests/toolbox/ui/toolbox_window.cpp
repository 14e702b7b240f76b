// The demo-kit toolbox through its controls, on a fake driver that records every call.
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QtTest>
#include <memory>

#include "reader/Drivers.h"
#include "reader/Reconnect.h"
#include "shell/GlobVariables.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/Panel.h"
#include "shell/ui/PanelFactory.h"
#include "support/UiTestSupport.h"

using reader::Op;
using uitest::find;

namespace {
std::string entry(const std::string& word, const std::string& answer) {
  return "\r\n11-21-2026 \t>>> " + word + "\r\n\t\t<<< " + answer;
}
QString viewOf(const std::string& log) {
  QString s = QString::fromStdString(log);
  s.remove('\r');
  return s;
}
std::vector<Op> opsOf(const reader::FakeDriver& d) {
  std::vector<Op> ops;
  for (const auto& c : d.calls()) ops.push_back(c.op);
  return ops;
}
}  // namespace

class ToolboxWindow : public QObject {
  Q_OBJECT
  std::unique_ptr<reader::FakeDriver> fake_;
  std::unique_ptr<uitest::FixedTime> time_;
  ScriptedDialogs dialogs_;
  QPointer<Panel> panel_;

  Panel* open(int dllRevision = 5) {
    glob::state().dllRevision = dllRevision;
    Panel* p = shell::createPanel(glob::PanelId::DemoKitTools, nullptr);
    p->show();
    return p;
  }
  void click(const QString& name) { QTest::mouseClick(find<QPushButton>(panel_, name), Qt::LeftButton); }
  QString box(const QString& name) { return find<QLineEdit>(panel_, name)->text(); }
  std::string log() { return panel_->log().text(); }

 private slots:
  void init() {
    fake_ = std::make_unique<reader::FakeDriver>();
    reader::setDriver(fake_.get());
    time_ = std::make_unique<uitest::FixedTime>();
    dialogs_ = ScriptedDialogs();
    setDialogs(&dialogs_);
    glob::state().iso14443AModulationGain = "D1";
    glob::state().setStatusPanel1("");
    panel_ = open();
  }
  void cleanup() {
    delete panel_;
    setDialogs(nullptr);
    reader::setDriver(nullptr);
    time_.reset();
    fake_.reset();
  }

  void windowNamesAndCaptions() {
    QCOMPARE(panel_->objectName(), QString("frmTL42RQ_DemoKit_tools"));
    QCOMPARE(panel_->windowTitle(), QString("   DEMO-TL42RQ-A tool box"));
    QVERIFY(glob::panelOpen(glob::PanelId::DemoKitTools));
    const std::pair<const char*, const char*> captions[] = {
        {"cmd_USBhandlecheck", "DEMO-TL42RQ-A USB Handle Check"},
        {"cmdDEMO_USB_Connect", "DEMO-TL42RQ-A USB Connect"},
        {"cmdEcho", "Echo"},
        {"cmdFieldOff", "Field Off"},
        {"cmdResetSPI", "Reset SPI"},
        {"cmdSendIRQPulse", "Negative pulse on IRQ in"},
        {"cmdNegativePulseOn_SPI_NSS", "Negative Pulse on SPI NSS"},
        {"cmdPollingReading", "Polling + reading"},
        {"cmdGetDLLrevision", "Get DLL revision"},
        {"cmdGetMCUrevision", "Get MCU revision"},
        {"cmdGetInterfacePinState", "Get interface pin state"},
        {"cmdSendAnyKQCmdRequest", "Send any KQ_Cmd request"},
        {"cmdISO14443AchangeRegValue", "Change Modulation depth and Receiver Gain for ISO14443-A"},
        {"cmdClearLog", "Clear Log"},
        {"cmdSaveLog", "Save Log"},
    };
    for (const auto& [name, caption] : captions) QCOMPARE(find<QPushButton>(panel_, name)->text(), QString(caption));
    find<QPushButton>(panel_, "cmdGetIDn");
    QCOMPARE(find<QRadioButton>(panel_, "OptPinState_1")->text(), QString("SPI bus"));
    QCOMPARE(find<QRadioButton>(panel_, "OptPinState_2")->text(), QString("UART bus"));
    find<QRadioButton>(panel_, "OptPinState_0");
    QCOMPARE(find<QLabel>(panel_, "labelIso14443Awarning")->text(),
             QString("This value will be applied to all ISO14443-A protocol select."));
    for (const char* name : {"txtIDn", "txtDLLrevision", "txtMCUrevision", "txtAnyKQCmdRequest", "txtAnyKQCmdAnswer",
                             "txtISO14443AModDepthReceiverGain", "txtRegisterValue_Answer"})
      find<QLineEdit>(panel_, name);
    QVERIFY(find<QPlainTextEdit>(panel_, "rtfDemoKitToolsLogEdit")->isReadOnly());
  }

  void rowsOfNewerLibrariesHiddenBelowRevision5AndWindowIsSmaller() {
    QPointer<Panel> old = open(4);
    const char* newer[] = {"cmdPollingReading", "txtPollingReadingAnswer", "cmdNegativePulseOn_SPI_NSS",
                           "txtNegPulse_SPI_NSS_Answer", "cmdDEMO_USB_Connect", "txtUSBConnectStatus"};
    for (const char* name : newer) {
      QVERIFY2(find<QWidget>(old, name)->isHidden(), name);
      QVERIFY2(!find<QWidget>(panel_, name)->isHidden(), name);
    }
    for (const char* name : {"cmd_USBhandlecheck", "cmdEcho", "cmdGetIDn", "cmdFieldOff", "cmdResetSPI",
                             "cmdSendIRQPulse", "cmdGetDLLrevision", "cmdGetMCUrevision", "cmdGetInterfacePinState"})
      QVERIFY2(!find<QWidget>(old, name)->isHidden(), name);
    QVERIFY(old->sizeHint().height() < panel_->sizeHint().height());
    QVERIFY(old->height() < panel_->height());
    delete old;
  }

  void everyButtonFillsItsBoxAndLogsTheToolboxForm() {
    fake_->queue(Op::USBhandlecheck, 0, "");
    fake_->queue(Op::USBconnect, 0, "");
    fake_->queue(Op::Echo, 0, "5500");
    fake_->queue(Op::Idn, 0, "0008544C34325251ABCD");
    fake_->queue(Op::FieldOff, 0, "0000");
    fake_->queue(Op::ResetSPI, 0, "0001AA");
    fake_->queue(Op::SendIRQPulse, 0, "0001BB");
    fake_->queue(Op::SendNSSPulse, 0, "0001CC");
    fake_->queue(Op::Polling_Reading, 0, "000208");
    fake_->queue(Op::GetDLLrev, 0, "0.5.0");
    fake_->queue(Op::getMCUrev, 0, "0003010401");
    fake_->queue(Op::getInterfacePinState, 0, "000102");
    struct Step {
      const char *button, *box, *shown, *word;
    };
    const Step steps[] = {
        {"cmd_USBhandlecheck", "txtUSBHandleCheckStatus", "0", "TL42RQDLL_USB_HANDLE_CHECK"},
        {"cmdDEMO_USB_Connect", "txtUSBConnectStatus", "0", "TL42RQDLL_USB_CONNECT"},
        {"cmdEcho", "txtEchoAnswer", "5500", "TL42RQDLL_ECHO"},
        {"cmdGetIDn", "txtIDnAnswer", "0008544C34325251ABCD", "TL42RQDLL_IDN"},
        {"cmdFieldOff", "txtFieldOffAnswer", "0000", "TL42RQDLL_FIELDOFF"},
        {"cmdResetSPI", "txtResetSequenceAnswer", "0001AA", "TL42RQDLL_RESET_SPI"},
        {"cmdSendIRQPulse", "txtSendIRQPulseAnswer", "0001BB", "TL42RQDLL_PULSE_IRQ_IN"},
        {"cmdNegativePulseOn_SPI_NSS", "txtNegPulse_SPI_NSS_Answer", "0001CC", "TL42RQDLL_NSS_PULSE"},
        {"cmdPollingReading", "txtPollingReadingAnswer", "000208", "TL42RQDLL_POLLING_READING"},
        {"cmdGetDLLrevision", "txtGetDLLrevisionAnswer", "0.5.0", "TL42RQDLL_GETDLLREV"},
        {"cmdGetMCUrevision", "txtGetMCUrevisionAnswer", "0003010401", "TL42RQDLL_GETMCUREV"},
        {"cmdGetInterfacePinState", "txtGetInterfacePinStateAnswer", "000102", "TL42RQDLL_GET_INTERFACE_PIN_STATE"},
    };
    std::string expected;
    for (const Step& s : steps) {
      click(s.button);
      QCOMPARE(box(s.box), QString(s.shown));
      expected += entry(s.word, s.shown);
      QCOMPARE(log(), expected);
    }
    QCOMPARE(find<QPlainTextEdit>(panel_, "rtfDemoKitToolsLogEdit")->toPlainText(), viewOf(expected));
    QCOMPARE(box("txtIDn"), QString("TL42RQ"));
    QCOMPARE(box("txtDLLrevision"), QString("0.5.0"));
    QCOMPARE(box("txtMCUrevision"), QString("1.4.1"));
    QVERIFY(find<QRadioButton>(panel_, "OptPinState_2")->isChecked());
    QVERIFY(!find<QRadioButton>(panel_, "OptPinState_1")->isChecked());
    // One call each, nothing else sent.
    QCOMPARE(fake_->calls().size(), std::size_t(12));
  }

  void toolboxEntryHasDateBlankTabNoTimeAndTwoTabs() {
    fake_->queue(Op::Echo, 0, "5500");
    click("cmdEcho");
    QCOMPARE(log(), std::string("\r\n11-21-2026 \t>>> TL42RQDLL_ECHO\r\n\t\t<<< 5500"));
    QVERIFY(log().find("10:20:30") == std::string::npos);
  }

  void failedCallStillLogsEmptyAnswerAndMarksBoardGone() {
    glob::state().setStatusPanel1("USB" + std::string(glob::kBoardConnected));
    fake_->queue(Op::FieldOff, 5, "");
    fake_->queue(Op::USBhandlecheck, 5, "");
    fake_->queue(Op::FieldOff, 5, "");
    find<QLineEdit>(panel_, "txtFieldOffAnswer")->setText("0000");
    click("cmdFieldOff");
    QCOMPARE(opsOf(*fake_), (std::vector<Op>{Op::FieldOff, Op::USBconnect, Op::USBhandlecheck, Op::FieldOff}));
    QCOMPARE(box("txtFieldOffAnswer"), QString(""));
    QCOMPARE(log(), entry("TL42RQDLL_FIELDOFF", ""));
    QCOMPARE(glob::state().statusPanel1, "USB" + std::string(glob::kBoardNotConnected));
  }

  void badIdnAnswerLeavesChipNameEmpty() {
    find<QLineEdit>(panel_, "txtIDn")->setText("OLD NAME");
    fake_->queue(Op::Idn, 0, "8200");
    click("cmdGetIDn");
    QCOMPARE(box("txtIDnAnswer"), QString("8200"));
    QCOMPARE(box("txtIDn"), QString(""));
  }

  void badAnswersLeaveRevisionAndPinStateAsTheyWere() {
    fake_->queue(Op::GetDLLrev, 0, "0.5.0");
    fake_->queue(Op::GetDLLrev, 5, "");
    click("cmdGetDLLrevision");
    click("cmdGetDLLrevision");
    QCOMPARE(box("txtGetDLLrevisionAnswer"), QString(""));
    QCOMPARE(box("txtDLLrevision"), QString("0.5.0"));
    fake_->queue(Op::getInterfacePinState, 0, "000101");
    fake_->queue(Op::getInterfacePinState, 0, "820002");
    click("cmdGetInterfacePinState");
    QVERIFY(find<QRadioButton>(panel_, "OptPinState_1")->isChecked());
    click("cmdGetInterfacePinState");
    QCOMPARE(box("txtGetInterfacePinStateAnswer"), QString("820002"));
    QVERIFY(find<QRadioButton>(panel_, "OptPinState_1")->isChecked());
    fake_->queue(Op::getInterfacePinState, 0, "000100");
    click("cmdGetInterfacePinState");
    QVERIFY(find<QRadioButton>(panel_, "OptPinState_0")->isChecked());
  }

  void usbButtonsShowTheNumberAndNeverReconnect() {
    fake_->queue(Op::USBhandlecheck, 5, "");
    click("cmd_USBhandlecheck");
    QCOMPARE(box("txtUSBHandleCheckStatus"), QString("5"));
    fake_->queue(Op::USBconnect, 3, "");
    click("cmdDEMO_USB_Connect");
    QCOMPARE(box("txtUSBConnectStatus"), QString("3"));
    QCOMPARE(opsOf(*fake_), (std::vector<Op>{Op::USBhandlecheck, Op::USBconnect}));
    QCOMPARE(log(), entry("TL42RQDLL_USB_HANDLE_CHECK", "5") + entry("TL42RQDLL_USB_CONNECT", "3"));
  }

  void mcuRevisionStatusZeroMarksConnectedWithoutReconnect() {
    glob::state().setStatusPanel1("USB" + std::string(glob::kBoardNotConnected));
    fake_->queue(Op::getMCUrev, 0, "0002010A");
    click("cmdGetMCUrevision");
    QCOMPARE(opsOf(*fake_), std::vector<Op>{Op::getMCUrev});
    QCOMPARE(glob::state().statusPanel1, "USB" + std::string(glob::kBoardConnected));
    QCOMPARE(box("txtMCUrevision"), QString("1.10"));
  }

  void mcuRevisionStatusOneReconnectsAndRepeats() {
    glob::state().setStatusPanel1("USB" + std::string(glob::kBoardNotConnected));
    fake_->queue(Op::getMCUrev, 1, "");
    fake_->queue(Op::getMCUrev, 0, "0003010401");
    click("cmdGetMCUrevision");
    QCOMPARE(opsOf(*fake_), (std::vector<Op>{Op::getMCUrev, Op::USBconnect, Op::USBhandlecheck, Op::getMCUrev}));
    QCOMPARE(glob::state().statusPanel1, "USB" + std::string(glob::kBoardConnected));
    QCOMPARE(box("txtGetMCUrevisionAnswer"), QString("0003010401"));
    QCOMPARE(box("txtMCUrevision"), QString("1.4.1"));
    QCOMPARE(log(), entry("TL42RQDLL_GETMCUREV", "0003010401"));
  }

  void mcuRevisionOtherStatusOnlyYieldsAndClearsTheRevision() {
    glob::state().setStatusPanel1("USB" + std::string(glob::kBoardNotConnected));
    find<QLineEdit>(panel_, "txtMCUrevision")->setText("9.9");
    fake_->queue(Op::getMCUrev, 2, "82");
    click("cmdGetMCUrevision");
    QCOMPARE(opsOf(*fake_), std::vector<Op>{Op::getMCUrev});
    QCOMPARE(glob::state().statusPanel1, "USB" + std::string(glob::kBoardNotConnected));
    QCOMPARE(box("txtGetMCUrevisionAnswer"), QString("82"));
    QCOMPARE(box("txtMCUrevision"), QString(""));
  }

  void freeCommandWithOddNumberOfDigitsSendsNothing() {
    find<QLineEdit>(panel_, "txtAnyKQCmdRequest")->setText("0803620");
    click("cmdSendAnyKQCmdRequest");
    QVERIFY(fake_->calls().empty());
    QCOMPARE(box("txtAnyKQCmdAnswer"), QString("Command not sent = request format problem"));
    QCOMPARE(log(), std::string("\r\n11-21-2026 \t>>> TL42RQDll_KQCmd, \r\n\t\t<<< Command not sent = request format problem"));
  }

  void freeCommandWithEmptyBoxSendsNothing() {
    click("cmdSendAnyKQCmdRequest");
    QVERIFY(fake_->calls().empty());
    QCOMPARE(log(), std::string("\r\n11-21-2026 \t>>> TL42RQDll_KQCmd, \r\n\t\t<<< Command not sent = no request found"));
  }

  void freeCommandGoesOutWithModeFieldWithoutBlanksAndWithoutReconnect() {
    // Pasted text keeps its blanks; the length is judged with them.
    find<QLineEdit>(panel_, "txtAnyKQCmdRequest")->setText("0803 6201 00");
    fake_->queue(Op::KQCmd, 0, "000101");
    click("cmdSendAnyKQCmdRequest");
    QCOMPARE(fake_->calls().size(), std::size_t(1));
    QCOMPARE(fake_->calls()[0].request, std::string("010803620100"));
    QCOMPARE(box("txtAnyKQCmdAnswer"), QString("000101"));
    QCOMPARE(log(), entry("TL42RQDll_KQCmd, 010803620100", "000101"));
    fake_->clearCalls();
    fake_->queue(Op::KQCmd, 5, "");
    click("cmdSendAnyKQCmdRequest");
    QCOMPARE(opsOf(*fake_), std::vector<Op>{Op::KQCmd});
    QCOMPARE(box("txtAnyKQCmdAnswer"), QString(""));
  }

  void freeCommandBoxRefusesNonHexadecimalKeys() {
    auto* request = find<QLineEdit>(panel_, "txtAnyKQCmdRequest");
    request->setFocus();
    QTest::keyClicks(request, "0a");
    QTest::keyClicks(request, "g");
    QCOMPARE(request->text(), QString("0a"));
    QCOMPARE(dialogs_.beeps, 1);
  }

  void modulationAndGainStartFromTheGlobalValue() {
    QCOMPARE(box("txtISO14443AModDepthReceiverGain"), QString("D1"));
    auto* depth = find<QComboBox>(panel_, "cboIso14443AModulationDepth");
    auto* gain = find<QComboBox>(panel_, "cboIso14443AReceiverGain");
    QCOMPARE(depth->currentText(), QString(" D : 95% "));
    QCOMPARE(gain->currentText(), QString(" 1 : 32dB "));
    QStringList depths, gains;
    for (int i = 0; i < depth->count(); ++i) depths << depth->itemText(i);
    for (int i = 0; i < gain->count(); ++i) gains << gain->itemText(i);
    QCOMPARE(depths, (QStringList{" 1 : 10% ", " 2 : 17% ", " 3 : 25% ", " 4 : 30% ", " 5 : 33% ", " 6 : 36% ",
                                  " D : 95% "}));
    QCOMPARE(gains, (QStringList{" 0 : 34dB ", " 1 : 32dB ", " 3 : 27dB ", " 7 : 20dB ", " F : 8dB "}));

    glob::state().iso14443AModulationGain = "6F";
    QPointer<Panel> other = open();
    QCOMPARE(find<QLineEdit>(other, "txtISO14443AModDepthReceiverGain")->text(), QString("6F"));
    QCOMPARE(find<QComboBox>(other, "cboIso14443AModulationDepth")->currentText(), QString(" 6 : 36% "));
    QCOMPARE(find<QComboBox>(other, "cboIso14443AReceiverGain")->currentText(), QString(" F : 8dB "));
    delete other;
  }

  void newGainIsStoredSentAndUsedByTheNextIso14443AConfiguration() {
    auto* depth = find<QComboBox>(panel_, "cboIso14443AModulationDepth");
    auto* gain = find<QComboBox>(panel_, "cboIso14443AReceiverGain");
    depth->setCurrentIndex(0);
    QCOMPARE(box("txtISO14443AModDepthReceiverGain"), QString("11"));
    gain->setCurrentIndex(2);
    QCOMPARE(box("txtISO14443AModDepthReceiverGain"), QString("13"));
    // Not stored until the button is pressed.
    QCOMPARE(glob::state().iso14443AModulationGain, std::string("D1"));
    fake_->queue(Op::KQCmd, 5, "");
    click("cmdISO14443AchangeRegValue");
    QCOMPARE(glob::state().iso14443AModulationGain, std::string("13"));
    QCOMPARE(opsOf(*fake_), std::vector<Op>{Op::KQCmd});  // no reconnect
    QCOMPARE(fake_->calls()[0].request, std::string("01090468010113"));
    QCOMPARE(box("txtRegisterValue_Answer"), QString(""));
    QCOMPARE(log(), std::string("\r\n11-21-2026 \t>>> ISO14443A Register Value Changed (Modulation Depth & "
                                "Receiver Gain)\r\n\t\t>>> TL42RQDLL_KQCmd, 01 090468010113\r\n\t\t<<< "));

    // The chip's present state is not all: the next ISO 14443-A configuration sends it.
    fake_->clearCalls();
    std::int32_t result = -1;
    reader::DEMO_TL42RQ_A_reconnect_iso14443A(*fake_, result);
    QCOMPARE(result, 0);
    std::vector<std::string> kq;
    for (const auto& c : fake_->callsOf(Op::KQCmd)) kq.push_back(c.request);
    QCOMPARE(kq, (std::vector<std::string>{"0109043A005804", "01" "0904680101" "13",
                                           "0109110B00241204880F1F3F3F01000505005500"}));
    fake_->clearCalls();
    reader::reconnectBoard(*fake_, reader::ReconnectKind::Iso14443ATopaz);
    QCOMPARE(fake_->callsOf(Op::KQCmd).at(1).request, std::string("01090468010113"));
    QCOMPARE(fake_->callsOf(Op::Select).at(0).request, std::string("02000300"));
  }

  void saveLogWithEmptyLogOpensNoDialog() {
    click("cmdSaveLog");
    QVERIFY(dialogs_.fileRequests.empty());
  }

  void clearLogThenOneExchangeStartsWithEmptyLine() {
    fake_->queue(Op::Echo, 0, "5500");
    fake_->queue(Op::Echo, 0, "5501");
    click("cmdEcho");
    click("cmdClearLog");
    QCOMPARE(log(), std::string());
    QCOMPARE(find<QPlainTextEdit>(panel_, "rtfDemoKitToolsLogEdit")->toPlainText(), QString());
    click("cmdEcho");
    QCOMPARE(find<QPlainTextEdit>(panel_, "rtfDemoKitToolsLogEdit")->toPlainText(),
             QString("\n11-21-2026 \t>>> TL42RQDLL_ECHO\n\t\t<<< 5501"));
  }

  void closingDuringThePauseBeforeTheCallDoesNotCrash() {
    fake_->queue(Op::Echo, 0, "5500");
    QTimer::singleShot(0, panel_, [p = panel_] { p->close(); });
    click("cmdEcho");
    // The handler finished on a hidden panel; the panel goes once it returned.
    QTRY_VERIFY(panel_.isNull());
    QVERIFY(!glob::panelOpen(glob::PanelId::DemoKitTools));
    QCOMPARE(fake_->calls().size(), std::size_t(1));
  }
};

QTEST_MAIN(ToolboxWindow)
#include "toolbox_window.moc"
