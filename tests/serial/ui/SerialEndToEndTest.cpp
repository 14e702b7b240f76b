// The program on the serial driver, through a real pseudo-terminal to the chip emulator:
// the detection finds the chip, the console explains its name, and the ISO 15693, ISO
// 14443-A and tag-detection windows give the same traces and results as on the simulated
// board with the same field.
#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QRadioButton>
#include <QTabBar>
#include <QTableWidget>
#include <QtTest>

#include "SerialUiSupport.h"
#include "console/ui/frmTL42RQ_UserInterface.h"
#include "discovery/ui/frmTL42RQ_TagDetection_UI.h"
#include "iso14443a/ui/frmTL42RQ_ISO14443A_UI.h"
#include "iso15693/ui/MemoryPageView.h"
#include "iso15693/ui/frmTL42RQ_ISO15693_UI.h"
#include "shell/GlobVariables.h"
#include "shell/Product.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/MainForm.h"
#include "shell/ui/frmTL42RQ_Detection.h"

namespace {

template <typename T = QWidget>
T* w(QObject* root, const QString& name) {
  return uitest::find<T>(root, name);
}
void click(QObject* root, const QString& name) { QTest::mouseClick(w<QAbstractButton>(root, name), Qt::LeftButton); }
QString lineText(QObject* root, const QString& name) { return w<QLineEdit>(root, name)->text(); }
QStringList rows(QListWidget* l) {
  QStringList out;
  for (int i = 0; i < l->count(); ++i) out << l->item(i)->text();
  return out;
}

// The ISO 14443-A fixture with its double-size UID tag in the field and no other.
std::string fieldWithDoubleSizeTag() {
  std::string text = serialtest::EmulatedChipProcess::readFixture("field_iso14443a.json");
  const std::string out = "\"product\": \"double\", \"inField\": false";
  const std::size_t at = text.find(out);
  if (at == std::string::npos) qFatal("no double-size tag in the fixture");
  text.replace(at, out.size(), "\"product\": \"double\", \"inField\": true");
  return text;
}

const char* kEmptyField = R"({"board": {"chipName": "NFC TL42RQ"}, "antenna": {"detectLevel": 31}, "tags": []})";

// What a window left behind: its trace and the rows it listed.
struct Outcome {
  std::string log;
  QStringList list;
  QStringList view;
};

}  // namespace

class SerialEndToEndTest : public QObject {
  Q_OBJECT

  std::unique_ptr<serialtest::EmulatedChipProcess> chip_;
  std::unique_ptr<reader::ReaderDriver> serial_;
  std::unique_ptr<uitest::SimulatedBoard> sim_;
  ScriptedDialogs dialogs_;

  // The same field on both boards.
  void useField(const std::string& json) {
    chip_->setField(json);
    if (sim_->loadField(json) != 0) qFatal("%s", sim_->lastError().c_str());
    sim_->reset();
  }
  void useSerial() { reader::setDriver(serial_.get()); }
  void useSimulated() { reader::setDriver(&sim_->driver()); }

  Outcome iso15693InventoryAndWholeRead() {
    uitest::FixedTime time;
    glob::state() = glob::GlobVariables();
    uitest::chooseProduct("VAX30");
    frmTL42RQ_ISO15693_UI panel;
    panel.show();
    w<QRadioButton>(&panel, "optInventorySlot_1")->setChecked(true);
    click(&panel, "cmdInventory");
    w<QLineEdit>(&panel, "txtTransponderUID")->setText("E00200001A2B3C40");
    QTest::mouseClick(w(&panel, "lblChoosenTag"), Qt::LeftButton);
    w<QCheckBox>(&panel, "chk_Select_Address_flag_1")->setChecked(true);
    w<QTabBar>(&panel, "tabStripchoice")->setCurrentIndex(1);
    w<QLineEdit>(&panel, "txtUserAddress_0")->setText("00");
    w<QLineEdit>(&panel, "txtUserAddress_1")->setText("3F");
    click(&panel, "cmdReadMultipleBlock");
    auto* view = w<QListWidget>(&panel, "lstReadView");
    QTest::keyClick(view, Qt::Key_Home);
    return {panel.log().text(), rows(w<QListWidget>(&panel, "lstTransponderUID")), rows(view)};
  }

  Outcome iso14443aAnticollision() {
    uitest::FixedTime time;
    glob::state() = glob::GlobVariables();
    uitest::chooseProduct("ISO14443-A");
    frmTL42RQ_ISO14443A_UI panel;
    panel.show();
    click(&panel, "cmd_ISO14443A_Anticol_Process");
    auto* grid = w<QTableWidget>(&panel, "fgAnticolProcess");
    QStringList cells;
    for (int r = 1; r <= 5; ++r)
      for (int c = 0; c < 3; ++c) cells << grid->item(r, c)->text();
    return {panel.log().text(), {lineText(&panel, "txtAnticolisionProcessUID")}, cells};
  }

  Outcome calibration() {
    uitest::FixedTime time;
    glob::state() = glob::GlobVariables();
    glob::state().chipIdentification = "NFC TL42RQ";
    frmTL42RQ_TagDetection_UI panel;
    panel.show();
    click(&panel, "cmd_TagDetection_calibration");
    return {panel.log().text(),
            {lineText(&panel, "txt_Calibration_DacDataL_result"), lineText(&panel, "txt_Calibration_DacDataH_result")},
            {}};
  }

 private slots:
  void initTestCase() {
    chip_ = std::make_unique<serialtest::EmulatedChipProcess>("field_basic.json");
    serial_ = serialtest::serialDriver(chip_->port());
    QVERIFY2(!serial_->isSimulated(), serial_->description().c_str());
    QVERIFY(QString::fromStdString(serial_->description()).endsWith("libTL42RQ_serial.so"));
    sim_ = std::make_unique<uitest::SimulatedBoard>();
    QVERIFY(sim_->loaded());
    setDialogs(&dialogs_);
  }
  void cleanupTestCase() {
    reader::setDriver(nullptr);
    setDialogs(nullptr);
    sim_.reset();
    serial_.reset();
    chip_.reset();
  }

  void detectionFindsTheChipOnTheSerialLine() {
    useField(serialtest::EmulatedChipProcess::readFixture("field_basic.json"));
    useSerial();
    glob::state() = glob::GlobVariables();
    frmTL42RQ_Detection::setPauseScale(0.0005);
    MainForm f;
    f.setEndsProcessOnClose(false);
    f.load();
    QVERIFY(f.statusPanel2Text().endsWith("libTL42RQ_serial.so"));
    QPointer<frmTL42RQ_Detection> splash = f.detection();
    splash->tmrSplash_Timer();
    QCOMPARE(w<QLabel>(splash, "lblDetectionStatus")->text(), QString("DEMO-TL42RQ-A detection is OK."));
    QCOMPARE(w<QLabel>(splash, "lblDllRev")->text(), QString("DLL REV = 1.0.0"));
    QCOMPARE(w<QLabel>(splash, "lblMCUrev")->text(), QString("MCU REV = "));
    QCOMPARE(w<QLabel>(splash, "lblIDn")->text(), QString("NFC TL42RQ"));
    QCOMPARE(f.statusPanel1Text(), QString(" DEMO-TL42RQ-A BOARD CONNECTED"));
    QCOMPARE(glob::state().chipIdentification, std::string("NFC TL42RQ"));
  }

  void consoleIdnExplainsTheChipsName() {
    useSerial();
    glob::state() = glob::GlobVariables();
    frmTL42RQ_UserInterface p;
    p.resize(1300, 900);
    p.show();
    auto* list = w<QComboBox>(&p, "cboTL42RQ_CommandList");
    const int i = list->findText(" 01 : IDN ");
    QVERIFY(i >= 0);
    list->setCurrentIndex(i);
    emit list->activated(i);
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(lineText(&p, "txtCommandCodeXXRequest"), QString(" 0100"));
    QCOMPARE(lineText(&p, "txtCommandCodeXXAnswer"), QString("000C4E464320544C34325251E3D4"));
    QCOMPARE(lineText(&p, "txtCommandCodeXXAnswerExplain_0"), QString("00 : Result code = OK"));
    QCOMPARE(lineText(&p, "txtCommandCodeXXAnswerExplain_1"), QString("0C : Lenght of Data (12)"));
    QCOMPARE(lineText(&p, "txtCommandCodeXXAnswerExplain_2"), QString("NFC TL42RQ"));
  }

  void iso15693InventoryAndWholeMemoryReadTraceAsOnTheSimulatedBoard() {
    useField(serialtest::EmulatedChipProcess::readFixture("field_iso15693.json"));
    useSimulated();
    const Outcome simulated = iso15693InventoryAndWholeRead();
    useSerial();
    const Outcome serial = iso15693InventoryAndWholeRead();
    QCOMPARE(serial.list, (QStringList{"\tUID\t\t\tDSFID", "", " 00\tE00200001A2B3C40\t\tA1"}));
    QCOMPARE(serial.view.size(), 16);
    QCOMPARE(serial.view.first(), QString("00   00 11 22 33 "));
    QCOMPARE(serial.view.last(), QString("0F   00 00 00 00 "));
    QCOMPARE(memoryBuffer().Size(), 64L);  // the whole memory of the product
    QCOMPARE(memoryBuffer().Item(7), std::string("0D 0E 0F 10 "));
    QVERIFY(serial.log.find("2223403C2B1A000002E03807") != std::string::npos);
    QCOMPARE(serial.log, simulated.log);
    QCOMPARE(serial.view, simulated.view);
  }

  void iso14443aAnticollisionFindsTheDoubleSizeUid() {
    useField(fieldWithDoubleSizeTag());
    useSimulated();
    const Outcome simulated = iso14443aAnticollision();
    useSerial();
    const Outcome serial = iso14443aAnticollision();
    QCOMPARE(serial.list, QStringList{"04A1B2C3D4E5F6"});
    QCOMPARE(serial.view.mid(3, 3), (QStringList{"ANTICOL 1", "932008 ", "80088804A1B29F080000 "}));
    QCOMPARE(serial.view.mid(12, 3), (QStringList{"SELECT 2", "9570C3D4E5F60428 ", "800600FE51080000 "}));
    QCOMPARE(serial.log, simulated.log);
  }

  void tagDetectionCalibrationFindsTheBand() {
    useField(kEmptyField);
    useSimulated();
    const Outcome simulated = calibration();
    useSerial();
    const Outcome serial = calibration();
    QCOMPARE(serial.list, (QStringList{"14", "24"}));
    QVERIFY(serial.log.ends_with(" ---> Calibration result : DacDataL = 0x05 / DacDataH = 0x09"));
    QCOMPARE(serial.log, simulated.log);
  }
};

QTEST_MAIN(SerialEndToEndTest)
#include "SerialEndToEndTest.moc"
