// The program on the serial driver when the line misbehaves, through the chip emulator's
// pseudo-terminal: a silent chip, answers byte by byte, noise around the answers, half an
// answer, and the emulator hanging up in the middle of an exchange and coming back. No
// exchange waits longer than its time-out, a lost chip is status 5, the reconnect runs and
// brings the line back, and every exchange stands in the trace.
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPointer>
#include <QRadioButton>
#include <QtTest>

#include "SerialUiSupport.h"
#include "iso15693/ui/frmTL42RQ_ISO15693_UI.h"
#include "shell/GlobVariables.h"
#include "shell/Product.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/MainForm.h"
#include "shell/ui/frmTL42RQ_Detection.h"

using reader::Op;
using Call = serialtest::RecordingDriver::Call;

namespace {

// The one tag of the fixture answers a 16-slot inventory in slot 0.
const QString kInventoryAnswer = "800D00A1403C2B1A000002E0599B00";
const std::string kConnected = " DEMO-TL42RQ-A BOARD CONNECTED";
const std::string kNotConnected = " DEMO-TL42RQ-A BOARD NOT CONNECTED";

// A field with one ISO 15693 tag.
const char* kField = R"({"board": {"chipName": "NFC TL42RQ"}, "antenna": {"detectLevel": 31}, "tags": [
  {"type": "iso15693", "product": "VAX30", "uid": "E00200001A2B3C40", "dsfid": "A1", "blockSize": 4, "blockCount": 64}]})";

}  // namespace

class SerialFaultsTest : public QObject {
  Q_OBJECT

  std::unique_ptr<serialtest::EmulatedChipProcess> chip_;
  std::unique_ptr<reader::ReaderDriver> serial_;
  std::unique_ptr<serialtest::RecordingDriver> recorder_;
  std::unique_ptr<MainForm> main_;
  std::unique_ptr<frmTL42RQ_ISO15693_UI> panel_;
  ScriptedDialogs dialogs_;

  QString answer() { return uitest::find<QLineEdit>(panel_.get(), "txt_ISO15693_answer")->text(); }
  std::string status() { return main_->statusPanel1Text().toStdString(); }
  // Presses Inventory and says how long the press took.
  qint64 inventory() {
    QElapsedTimer clock;
    clock.start();
    QTest::mouseClick(uitest::find<QAbstractButton>(panel_.get(), "cmdInventory"), Qt::LeftButton);
    return clock.elapsed();
  }
  std::string log() { return panel_->log().text(); }
  static std::string entry(const std::string& answer) {
    return "\r\n11-21-2026 10:20:30\tINVENTORY\r\n\t\t\t>>> TL42RQDLL_SENDRECV, 060100\r\n\t\t\t<<< " + answer;
  }

 private slots:
  void initTestCase() {
    chip_ = std::make_unique<serialtest::EmulatedChipProcess>("field_basic.json");
    chip_->setField(kField);
    serial_ = serialtest::serialDriver(chip_->port());
    recorder_ = std::make_unique<serialtest::RecordingDriver>(*serial_);
    setDialogs(&dialogs_);
  }
  void cleanupTestCase() {
    reader::setDriver(nullptr);
    setDialogs(nullptr);
    recorder_.reset();
    serial_.reset();
    chip_.reset();
  }

  // Each test starts detected, with the panel open on a well-behaved chip.
  void init() {
    QVERIFY(chip_->control("normal"));
    reader::setDriver(recorder_.get());
    glob::state() = glob::GlobVariables();
    frmTL42RQ_Detection::setPauseScale(0.0005);
    main_ = std::make_unique<MainForm>();
    main_->setEndsProcessOnClose(false);
    main_->load();
    main_->detection()->tmrSplash_Timer();
    QCOMPARE(status(), kConnected);
    uitest::chooseProduct("VAX30");
    panel_ = std::make_unique<frmTL42RQ_ISO15693_UI>();
    panel_->show();
    uitest::find<QRadioButton>(panel_.get(), "optInventorySlot_1")->setChecked(true);
    recorder_->take();
  }
  void cleanup() {
    panel_.reset();
    main_.reset();
  }

  void slowByteByByteAnswersAreWhole() {
    uitest::FixedTime time;
    QVERIFY(chip_->control("slow 3"));
    inventory();
    QCOMPARE(answer(), kInventoryAnswer);
    QCOMPARE(recorder_->take(), (std::vector<Call>{{Op::SendReceive, 0, kInventoryAnswer.toStdString()}}));
    QCOMPARE(status(), kConnected);
  }

  void noiseAroundTheAnswersIsSkipped() {
    uitest::FixedTime time;
    QVERIFY(chip_->control("garbage"));
    inventory();
    inventory();
    QCOMPARE(recorder_->take(), (std::vector<Call>{{Op::SendReceive, 0, kInventoryAnswer.toStdString()},
                                                   {Op::SendReceive, 0, kInventoryAnswer.toStdString()}}));
    QVERIFY(log().ends_with(entry(kInventoryAnswer.toStdString()) + entry(kInventoryAnswer.toStdString())));
  }

  void silentChipIsStatus5AfterTheTimeoutsAndNothingHangs() {
    uitest::FixedTime time;
    QVERIFY(chip_->control("silent"));
    // Four exchanges time out: the call, the reconnect's echo twice (connect and check),
    // the repeat; 300 ms each.
    const qint64 took = inventory();
    QVERIFY2(took < 3000, QByteArray::number(took));
    QVERIFY2(took >= 4 * 300 - 50, QByteArray::number(took));
    QCOMPARE(recorder_->take(), (std::vector<Call>{{Op::SendReceive, 5, ""},
                                                   {Op::USBconnect, 5, ""},
                                                   {Op::USBhandlecheck, 5, ""},
                                                   {Op::SendReceive, 5, ""}}));
    QCOMPARE(answer(), QString());
    QVERIFY(log().ends_with(entry("")));
    QCOMPARE(status(), kNotConnected);
    // The chip speaks again: the next press goes through.
    QVERIFY(chip_->control("normal"));
    inventory();
    QCOMPARE(answer(), kInventoryAnswer);
  }

  void halfAnAnswerIsStatus5ThenTheReconnectAndRepeatGetItWhole() {
    uitest::FixedTime time;
    QVERIFY(chip_->control("half"));
    inventory();
    QCOMPARE(recorder_->take(), (std::vector<Call>{{Op::SendReceive, 5, ""},
                                                   {Op::USBconnect, 0, ""},
                                                   {Op::USBhandlecheck, 0, ""},
                                                   {Op::Select, 0, "0000"},
                                                   {Op::SendReceive, 0, kInventoryAnswer.toStdString()}}));
    QCOMPARE(answer(), kInventoryAnswer);
    QCOMPARE(status(), kConnected);
  }

  void hangUpMidExchangeIsStatus5AtOnceAndTheLineComesBack() {
    uitest::FixedTime time;
    QVERIFY(chip_->control("hangup 500"));
    // The emulator sends half the answer and closes its end: no time-out is waited for.
    const qint64 took = inventory();
    QVERIFY2(took < 300, QByteArray::number(took));
    QCOMPARE(recorder_->take(), (std::vector<Call>{{Op::SendReceive, 5, ""},
                                                   {Op::USBconnect, 5, ""},
                                                   {Op::USBhandlecheck, 5, ""},
                                                   {Op::SendReceive, 5, ""}}));
    QCOMPARE(status(), kNotConnected);
    QCOMPARE(chip_->nextLine(3000), "back " + chip_->port());
    // Plugged in again: the first call finds the old port gone, the reconnect opens the new
    // one and selects ISO 15693 again, the repeat goes through.
    inventory();
    QCOMPARE(recorder_->take(), (std::vector<Call>{{Op::SendReceive, 5, ""},
                                                   {Op::USBconnect, 0, ""},
                                                   {Op::USBhandlecheck, 0, ""},
                                                   {Op::Select, 0, "0000"},
                                                   {Op::SendReceive, 0, kInventoryAnswer.toStdString()}}));
    QCOMPARE(status(), kConnected);
    // Both presses stand in the trace: the lost one with its empty answer.
    QVERIFY(log().find(entry("") + entry(kInventoryAnswer.toStdString())) != std::string::npos);
  }
};

QTEST_MAIN(SerialFaultsTest)
#include "SerialFaultsTest.moc"
