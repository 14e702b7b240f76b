// The demo-kit toolbox against the simulated board, loaded as the program loads it:
// every button on a board with known revisions, chip name and interface pin.
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>
#include <memory>

#include "reader/Drivers.h"
#include "reader/Reconnect.h"
#include "shell/GlobVariables.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/Panel.h"
#include "shell/ui/PanelFactory.h"
#include "support/UiTestSupport.h"
#include "toolbox/DemoKitTools.h"

using reader::Op;
using uitest::find;

namespace {
// A board with values that no default has, so that each box shows it read them.
constexpr const char* kBoardField = R"({
  "board": { "present": true, "dllRevision": "0.5.0", "mcuRevision": [2, 10, 3],
             "chipName": "TL42RQ bench", "interfacePin": 2 },
  "antenna": { "detectLevel": 31 },
  "tags": []
})";
}  // namespace

class ToolboxOnSimulatedBoard : public QObject {
  Q_OBJECT
  std::unique_ptr<uitest::SimulatedBoard> board_;
  std::unique_ptr<uitest::FixedTime> time_;
  ScriptedDialogs dialogs_;
  QPointer<Panel> panel_;

  void click(const char* name) { QTest::mouseClick(find<QPushButton>(panel_, name), Qt::LeftButton); }
  QString box(const char* name) { return find<QLineEdit>(panel_, name)->text(); }
  // The chip's ARC_B register through the free command: select it in 68, read 69.
  QString readArcB() {
    auto* request = find<QLineEdit>(panel_, "txtAnyKQCmdRequest");
    request->setText("0903680001");
    click("cmdSendAnyKQCmdRequest");
    if (box("txtAnyKQCmdAnswer") != "0000") return "select failed: " + box("txtAnyKQCmdAnswer");
    request->setText("0803690100");
    click("cmdSendAnyKQCmdRequest");
    return box("txtAnyKQCmdAnswer");
  }

 private slots:
  void init() {
    board_ = std::make_unique<uitest::SimulatedBoard>();
    QVERIFY2(board_->loaded(), "the simulated board library did not load");
    QCOMPARE(board_->loadField(kBoardField), 0);
    QCOMPARE(board_->reset(), 0);
    time_ = std::make_unique<uitest::FixedTime>();
    setDialogs(&dialogs_);
    glob::state().dllRevision = 5;
    glob::state().iso14443AModulationGain = "D1";
    glob::state().setStatusPanel1("USB" + std::string(glob::kBoardNotConnected));
    panel_ = shell::createPanel(glob::PanelId::DemoKitTools, nullptr);
    panel_->show();
  }
  void cleanup() {
    delete panel_;
    setDialogs(nullptr);
    time_.reset();
    board_.reset();
  }

  void everyButtonReadsTheBoard() {
    click("cmd_USBhandlecheck");
    QCOMPARE(box("txtUSBHandleCheckStatus"), QString("0"));
    click("cmdDEMO_USB_Connect");
    QCOMPARE(box("txtUSBConnectStatus"), QString("0"));
    click("cmdEcho");
    QVERIFY2(box("txtEchoAnswer").startsWith("5500"), qPrintable(box("txtEchoAnswer")));
    click("cmdGetIDn");
    QVERIFY(box("txtIDnAnswer").startsWith("00"));
    QCOMPARE(box("txtIDn"), QString("TL42RQ bench"));
    click("cmdGetDLLrevision");
    QCOMPARE(box("txtGetDLLrevisionAnswer"), QString("0.5.0"));
    QCOMPARE(box("txtDLLrevision"), QString("0.5.0"));
    click("cmdGetMCUrevision");
    QCOMPARE(box("txtGetMCUrevisionAnswer"), QString("0003020A03"));
    QCOMPARE(box("txtMCUrevision"), QString("2.10.3"));
    // A good controller answer marks the board connected again.
    QCOMPARE(glob::state().statusPanel1, "USB" + std::string(glob::kBoardConnected));
    click("cmdGetInterfacePinState");
    QCOMPARE(box("txtGetInterfacePinStateAnswer"), QString("000102"));
    QVERIFY(find<QRadioButton>(panel_, "OptPinState_2")->isChecked());
    for (const char* b : {"cmdFieldOff", "cmdResetSPI", "cmdSendIRQPulse", "cmdNegativePulseOn_SPI_NSS",
                          "cmdPollingReading"}) {
      const auto* row = toolbox::rowOfButton(b);
      QVERIFY(row);
      click(b);
      QVERIFY2(box(row->answerBox).startsWith("00"), b);
    }
    // Twelve entries in the toolbox form.
    const std::string log = panel_->log().text();
    std::size_t entries = 0;
    for (std::size_t at = log.find("\r\n11-21-2026 \t>>> "); at != std::string::npos;
         at = log.find("\r\n11-21-2026 \t>>> ", at + 1))
      ++entries;
    QCOMPARE(entries, std::size_t(12));
    QVERIFY(log.find("\r\n11-21-2026 \t>>> TL42RQDLL_GETMCUREV\r\n\t\t<<< 0003020A03") != std::string::npos);
  }

  void unpluggedBoardAnswersFiveAndTheStatusBarSaysSo() {
    glob::state().setStatusPanel1("USB" + std::string(glob::kBoardConnected));
    QCOMPARE(board_->setBoardPresent(false), 0);
    click("cmdEcho");
    QCOMPARE(box("txtEchoAnswer"), QString(""));
    QCOMPARE(panel_->log().text(), std::string("\r\n11-21-2026 \t>>> TL42RQDLL_ECHO\r\n\t\t<<< "));
    QCOMPARE(glob::state().statusPanel1, "USB" + std::string(glob::kBoardNotConnected));
    click("cmd_USBhandlecheck");
    QCOMPARE(box("txtUSBHandleCheckStatus"), QString("5"));
    QCOMPARE(board_->setBoardPresent(true), 0);
    click("cmdEcho");
    QVERIFY(box("txtEchoAnswer").startsWith("5500"));
    QCOMPARE(glob::state().statusPanel1, "USB" + std::string(glob::kBoardConnected));
  }

  void freeCommandReachesTheChip() {
    // Read register 62, one byte.
    find<QLineEdit>(panel_, "txtAnyKQCmdRequest")->setText("0803620100");
    click("cmdSendAnyKQCmdRequest");
    QVERIFY2(box("txtAnyKQCmdAnswer").startsWith("00"), qPrintable(box("txtAnyKQCmdAnswer")));
    QVERIFY(panel_->log().text().find(">>> TL42RQDll_KQCmd, 010803620100\r\n") != std::string::npos);
  }

  void newGainIsStoredAndTheNextIso14443AConfigurationSendsIt() {
    find<QComboBox>(panel_, "cboIso14443AModulationDepth")->setCurrentText(" 1 : 10% ");
    find<QComboBox>(panel_, "cboIso14443AReceiverGain")->setCurrentText(" 3 : 27dB ");
    QCOMPARE(box("txtISO14443AModDepthReceiverGain"), QString("13"));
    click("cmdISO14443AchangeRegValue");
    QCOMPARE(glob::state().iso14443AModulationGain, std::string("13"));
    QVERIFY2(box("txtRegisterValue_Answer").startsWith("00"), qPrintable(box("txtRegisterValue_Answer")));

    // The next ISO 14443-A configuration, recorded on its way to the simulated board.
    reader::FakeDriver recorder;
    reader::ReaderDriver& sim = board_->driver();
    recorder.setHandler([&sim](Op op, const std::string& request) {
      std::vector<char> buffer(reader::kGuardedAnswerSize + 1, '\0');
      reader::FakeDriver::Reply r;
      r.status = sim.call(op, request.c_str(), buffer.data());
      r.answer = buffer.data();
      return r;
    });
    QCOMPARE(readArcB(), QString("000113"));
    // The chip forgets it at power-on ...
    QCOMPARE(board_->reset(), 0);
    QCOMPARE(readArcB(), QString("0001D3"));
    // ... and the next ISO 14443-A configuration sends it again.
    QCOMPARE(reader::reconnectBoard(recorder, reader::ReconnectKind::Iso14443A), 0);
    const auto kq = recorder.callsOf(Op::KQCmd);
    QCOMPARE(kq.size(), std::size_t(3));
    QCOMPARE(kq[1].request, std::string("01") + "0904680101" + "13");
    QCOMPARE(readArcB(), QString("000113"));
  }
};

QTEST_MAIN(ToolboxOnSimulatedBoard)
#include "toolbox_simulated.moc"
