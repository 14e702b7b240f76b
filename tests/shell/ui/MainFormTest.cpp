// The main window and the detection splash, against a fake driver and against the real
// simulated board.
#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QTemporaryDir>
#include <QtTest>

#include "common/crc.h"
#include "common/hex.h"
#include "reader/Drivers.h"
#include "reader/Exchange.h"
#include "reader/Reconnect.h"
#include "shell/GlobVariables.h"
#include "shell/Product.h"
#include "shell/UsageFile.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/MainForm.h"
#include "shell/ui/frmTL42RQ_Detection.h"
#include "support/UiTestSupport.h"

using reader::FakeDriver;
using reader::Op;

namespace {
const QStringList kTopMenus = {"mnuTL42RQcommands", "mnuISO15693cmd", "mnuISO14443Acmd", "mnuISO14443Bcmd",
                               "mnuISO18092cmd",    "mnuTool",        "mnuHelp"};

std::string idnAnswer(const std::string& name) {
  hex::Bytes frame{0x00, static_cast<std::uint8_t>(name.size() + 2)};
  frame.insert(frame.end(), name.begin(), name.end());
  return hex::fromBytes(frame) + crc16Bytes(frame);
}

// A board that answers the detection as a healthy one does.
void healthyBoard(FakeDriver& d, const std::string& dllRevision = "0.5.0") {
  d.setHandler([dllRevision](Op op, const std::string&) -> FakeDriver::Reply {
    switch (op) {
      case Op::GetDLLrev: return {0, dllRevision};
      case Op::getMCUrev: return {0, "0003010401"};
      case Op::Echo: return {0, "5500"};
      case Op::Idn: return {0, idnAnswer("NFC TL42RQ")};
      default: return {0, ""};
    }
  });
}

QString text(QObject* root, const char* name) { return uitest::find<QLabel>(root, name)->text(); }

bool allTopMenusEnabled(MainForm& f, bool enabled) {
  for (const QString& name : kTopMenus)
    if (uitest::find<QMenu>(&f, name)->menuAction()->isEnabled() != enabled) return false;
  return true;
}
}  // namespace

class MainFormTest : public QObject {
  Q_OBJECT
 private:
  QTemporaryDir dir_;
  ScriptedDialogs dialogs_;

  // A program directory with the shipped product file and a usage file.
  void installDataFiles(bool withProducts = true, bool withUsage = true) {
    QDir d(dir_.path());
    d.remove("TL42RQ_products.ini");
    d.remove("usageTL42RQsoftware.dat");
    if (withProducts) QFile::copy(QStringLiteral(TL42RQ_SOURCE_DIR "/data/TL42RQ_products.ini"), d.filePath("TL42RQ_products.ini"));
    if (withUsage) {
      QFile f(d.filePath("usageTL42RQsoftware.dat"));
      f.open(QIODevice::WriteOnly);
      f.write("\"\",\"11250603\"\r\n");
    }
    shell::setProgramDirectory(dir_.path().toStdString());
  }

  // Runs the detection to its end: the first tick runs the sequence, the next closes.
  void runDetection(MainForm& f) {
    QVERIFY(f.detection());
    f.detection()->tmrSplash_Timer();
  }

 private slots:
  void init() {
    frmTL42RQ_Detection::setPauseScale(0.0005);
    setDialogs(&dialogs_);
    dialogs_ = ScriptedDialogs();
    glob::state() = glob::GlobVariables();
    installDataFiles();
  }
  void cleanup() {
    setDialogs(nullptr);
    reader::setDriver(nullptr);
  }

  void menusStandInTheirOrderWithTheirCaptions() {
    MainForm f;
    f.setEndsProcessOnClose(false);
    f.load(false);
    QCOMPARE(f.windowTitle(), QString("  TL42RQ Development Software"));
    QStringList captions;
    for (QAction* a : f.menuBar()->actions()) captions << a->text();
    QCOMPARE(captions, (QStringList{"TL42RQ commands", "ISO15693", "ISO14443-B", "ISO14443-A", "ISO18092", " Tools", "Help"}));
    QStringList iso15693;
    for (QAction* a : uitest::find<QMenu>(&f, "mnuISO15693cmd")->actions()) iso15693 << (a->isSeparator() ? "-" : a->text());
    QCOMPARE(iso15693, (QStringList{"VAX30", "VAX40", "VAS50", "VAS60E", "VAS70", "-", "QLN41E", "QLN42E", "QLN43", "QLN44E"}));
    QCOMPARE(uitest::find<QAction>(&f, "mnuISO15693product_3")->text(), QString("VAS60E"));
    QCOMPARE(uitest::find<QAction>(&f, "mnuISO14443Bproduct_0")->text(), QString("ISO14443-B Cards commands"));
    QCOMPARE(uitest::find<QAction>(&f, "mnuISO14443Aproduct_2")->text(), QString("TOPAZ"));
    QCOMPARE(uitest::find<QAction>(&f, "mnuISO18092product")->text(), QString("ISO18092 Cards commands"));
    QStringList tools;
    for (QAction* a : uitest::find<QMenu>(&f, "mnuTool")->actions()) tools << a->text();
    QCOMPARE(tools, (QStringList{"DEMO-TL42RQ-A tool box", "Tag Detection tool", "Auto Detect tool", "Script tool", "Memento File",
                                 "Export trace (pcapng)..."}));
    QVERIFY(!uitest::find<QAction>(&f, "mnuShowMementoFile")->isVisible());
    QStringList help;
    for (QAction* a : uitest::find<QMenu>(&f, "mnuHelp")->actions()) help << a->text();
    QCOMPARE(help, (QStringList{"Change backgroung color", "Script Help", "About ..."}));
    QVERIFY(allTopMenusEnabled(f, false));
  }

  void goodDetectionPublishesRevisionsAndChipName() {
    FakeDriver d;
    healthyBoard(d);
    reader::setDriver(&d);
    MainForm f;
    f.setEndsProcessOnClose(false);
    f.load();
    QPointer<frmTL42RQ_Detection> splash = f.detection();
    QVERIFY(splash);
    QCOMPARE(splash->timer()->interval(), 2000);
    QVERIFY(glob::state().detectionPending);
    QCOMPARE(text(splash, "lblDetectionStatus"), QString());
    runDetection(f);
    QCOMPARE(text(splash, "lblDetectionStatus"), QString("DEMO-TL42RQ-A detection is OK."));
    QCOMPARE(text(splash, "lblDllRev"), QString("DLL REV = 0.5.0"));
    QCOMPARE(text(splash, "lblMCUrev"), QString("MCU REV = 1.4.1"));
    QCOMPARE(text(splash, "lblIDn"), QString("NFC TL42RQ"));
    QCOMPARE(uitest::find<QProgressBar>(splash, "progressbarReaderDetect")->value(), 120);
    QCOMPARE(f.statusPanel1Text(), QString(" DEMO-TL42RQ-A BOARD CONNECTED"));
    QCOMPARE(glob::state().dllRevision, 5);
    QCOMPARE(glob::state().mcuRevision, std::string("1.4.1"));
    QCOMPARE(glob::state().chipIdentification, std::string("NFC TL42RQ"));
    QVERIFY(!glob::state().detectionPending);
    QCOMPARE(d.callsOf(Op::USBconnect).size(), std::size_t(1));
    QCOMPARE(splash->timer()->interval(), 3000);
    QVERIFY(allTopMenusEnabled(f, false));
    splash->tmrSplash_Timer();
    QVERIFY(allTopMenusEnabled(f, true));
    QTRY_VERIFY(splash.isNull());
  }

  void wrongLibraryRevisionIsShownInRed() {
    FakeDriver d;
    healthyBoard(d, "0.2.9");
    reader::setDriver(&d);
    MainForm f;
    f.setEndsProcessOnClose(false);
    f.load();
    QPointer<frmTL42RQ_Detection> splash = f.detection();
    runDetection(f);
    auto* dll = uitest::find<QLabel>(splash, "lblDllRev");
    QCOMPARE(dll->text(), QString("DLL REV = 0.2 -> WRONG DLL REVISION"));
    QCOMPARE(dll->palette().color(QPalette::WindowText), QColor(255, 0, 0));
    QCOMPARE(text(splash, "lblDetectionStatus"), QString("DEMO-TL42RQ-A is not detected. Please verify USB connection."));
    QCOMPARE(f.statusPanel1Text(), QString());
    QVERIFY(d.callsOf(Op::getMCUrev).empty());
    splash->tmrSplash_Timer();
    QVERIFY(allTopMenusEnabled(f, true));
  }

  void revisionThreeIsAcceptedWithoutUsbConnect() {
    FakeDriver d;
    healthyBoard(d, "0.3.1");
    reader::setDriver(&d);
    MainForm f;
    f.setEndsProcessOnClose(false);
    f.load();
    runDetection(f);
    QCOMPARE(text(f.detection(), "lblDetectionStatus"), QString("DEMO-TL42RQ-A detection is OK."));
    QCOMPARE(glob::state().dllRevision, 3);
    QVERIFY(d.callsOf(Op::USBconnect).empty());
  }

  void controllerRevisionElementsAreDecimal() {
    FakeDriver d;
    healthyBoard(d);
    d.queue(Op::getMCUrev, 0, "0002010A");
    reader::setDriver(&d);
    MainForm f;
    f.setEndsProcessOnClose(false);
    f.load();
    runDetection(f);
    QCOMPARE(text(f.detection(), "lblMCUrev"), QString("MCU REV = 1.10"));
    QCOMPARE(glob::state().mcuRevision, std::string("1.10"));
  }

  void withoutBoardTheFirstFailingStepDecides() {
    FakeDriver d;
    healthyBoard(d);
    d.queue(Op::getMCUrev, 5, "");
    reader::setDriver(&d);
    MainForm f;
    f.setEndsProcessOnClose(false);
    f.load();
    QPointer<frmTL42RQ_Detection> splash = f.detection();
    runDetection(f);
    QCOMPARE(text(splash, "lblDllRev"), QString("DLL REV = 0.5.0"));
    QCOMPARE(text(splash, "lblDetectionStatus"), QString("DEMO-TL42RQ-A is not detected. Please verify USB connection."));
    // The bar stops where the failing step left it: three pause blocks of twenty.
    QCOMPARE(uitest::find<QProgressBar>(splash, "progressbarReaderDetect")->value(), 60);
    QVERIFY(d.callsOf(Op::Echo).empty());
    QCOMPARE(f.statusPanel1Text(), QString());
    splash->tmrSplash_Timer();
    QVERIFY(allTopMenusEnabled(f, true));
  }

  void missingLibraryStillStartsAndSaysWhy() {
    auto missing = reader::LibraryDriver::load("/nonexistent/libTL42RQ.so");
    reader::setDriver(missing.get());
    MainForm f;
    f.setEndsProcessOnClose(false);
    f.load();
    QVERIFY(f.statusPanel2Text().contains("/nonexistent/libTL42RQ.so"));
    QPointer<frmTL42RQ_Detection> splash = f.detection();
    runDetection(f);
    QCOMPARE(text(splash, "lblDetectionStatus"), QString("DEMO-TL42RQ-A is not detected. Please verify USB connection."));
    QCOMPARE(uitest::find<QProgressBar>(splash, "progressbarReaderDetect")->value(), 20);
    splash->tmrSplash_Timer();
    QVERIFY(allTopMenusEnabled(f, true));
    // Reconnect finds nothing to replace: the status bar says nothing for the whole run.
    reader::exchange(reader::driver(), Op::Echo, "", reader::reconnectWith(reader::driver(), reader::ReconnectKind::Plain));
    QCOMPARE(f.statusPanel1Text(), QString());
  }

  void productFileMissingGivesItsMessage() {
    installDataFiles(false);
    MainForm f;
    f.setEndsProcessOnClose(false);
    f.load(false);
    f.openProduct("VAS60E");
    QCOMPARE(dialogs_.messages.size(), std::size_t(1));
    QCOMPARE(dialogs_.messages[0].text, QString("File 'TL42RQ_products.ini' is missing"));
    QCOMPARE(dialogs_.messages[0].title, QString("DEMO-TL42RQ-A"));
    QVERIFY(dialogs_.messages[0].icon == MessageIcon::Stop);
  }

  void productEntryFillsTheRecordAndSizes() {
    MainForm f;
    f.setEndsProcessOnClose(false);
    f.load(false);
    f.openProduct("ISO14443-B Cards commands");
    QCOMPARE(shell::currentProduct().Reference(), std::string("ISO14443-B"));
    f.openProduct("VAS60E");
    QCOMPARE(shell::currentProduct().Reference(), std::string("VAS60E"));
    QCOMPARE(shell::productSizes().memorySize, 8192L);
    QCOMPARE(shell::productSizes().blockAddressMask, 2047L);
    QVERIFY(dialogs_.messages.empty());
  }

  void separatorCaptionMatchesNothing() {
    MainForm f;
    f.setEndsProcessOnClose(false);
    f.load(false);
    shell::currentProduct() = Product();
    f.openProduct("-");
    QCOMPARE(shell::currentProduct().Reference(), std::string());
    QVERIFY(dialogs_.messages.empty());
  }

  void referenceWithoutPanelIsAnErrorInTheFile() {
    QFile ini(QDir(dir_.path()).filePath("TL42RQ_products.ini"));
    QVERIFY(ini.open(QIODevice::Append));
    ini.write("\"VAX10\",1,1,0,1,\"NONE\",0\r\n");
    ini.close();
    MainForm f;
    f.setEndsProcessOnClose(false);
    f.load(false);
    f.openProduct("VAX10");
    QCOMPARE(dialogs_.messages.size(), std::size_t(1));
    QCOMPARE(dialogs_.messages[0].text, QString("Error found in file 'TL42RQ_Products.ini'"));
    QCOMPARE(dialogs_.messages[0].title, QString("TL42RQ_Development_Software"));
    QCOMPARE(shell::productSizes().memorySize, 64L);
    QCOMPARE(shell::productSizes().pageRowBytes, 1);
  }

  void backgroundColourIsChosenAndKept() {
    MainForm f;
    f.setEndsProcessOnClose(false);
    f.load(false);
    QCOMPARE(glob::state().backgroundColor, std::string("11250603"));
    QCOMPARE(f.mdiArea()->background().color(), QColor(0xAB, 0xAB, 0xAB));
    dialogs_.colourAnswers.push_back(QColor(0x10, 0x20, 0x30));
    f.mnubackgroundcolor_Click();
    QCOMPARE(dialogs_.colourPresets.at(0), QColor(0xC0, 0xC0, 0xFF));
    QCOMPARE(f.mdiArea()->background().color(), QColor(0x10, 0x20, 0x30));
    QFile usage(QDir(dir_.path()).filePath("usageTL42RQsoftware.dat"));
    QVERIFY(usage.open(QIODevice::ReadOnly));
    QCOMPARE(usage.readAll(), QByteArray("\"\",\"3153936\"\r\n"));
    // Cancel puts the remembered colour back.
    f.mnubackgroundcolor_Click();
    QCOMPARE(f.mdiArea()->background().color(), QColor(0x10, 0x20, 0x30));
  }

  void withoutUsageFileTheDefaultColourStays() {
    installDataFiles(true, false);
    MainForm f;
    f.setEndsProcessOnClose(false);
    const QColor before = f.mdiArea()->background().color();
    f.load(false);
    QCOMPARE(f.mdiArea()->background().color().rgb(), before.rgb());
    QCOMPARE(glob::state().lastDirectory, std::string());
    dialogs_.colourAnswers.push_back(QColor(1, 2, 3));
    f.mnubackgroundcolor_Click();
    QVERIFY(!QFile::exists(QDir(dir_.path()).filePath("usageTL42RQsoftware.dat")));
  }

  void closingTheWindowDuringDetectionIsSafe() {
    FakeDriver d;
    healthyBoard(d);
    reader::setDriver(&d);
    auto* f = new MainForm;
    f->setEndsProcessOnClose(false);
    f->load();
    // Close the window from inside the sequence, at the echo.
    d.setHandler([f](Op op, const std::string&) -> FakeDriver::Reply {
      if (op == Op::Echo) f->close();
      return {0, op == Op::GetDLLrev ? "0.5.0" : op == Op::getMCUrev ? "0003010401" : "5500"};
    });
    runDetection(*f);
    QVERIFY(glob::state().stopFlag);
    delete f;
  }

  // The real simulated board, as the program loads it.
  void simulatedBoardIsDetected() {
    uitest::SimulatedBoard board;
    if (!board.loaded()) QSKIP("simulated board library not built");
    QCOMPARE(board.loadField(uitest::fixture("field_basic.json")), 0);
    MainForm f;
    f.setEndsProcessOnClose(false);
    f.load();
    QVERIFY(f.statusPanel2Text().contains("libTL42RQ.so"));
    QVERIFY(f.statusPanel2Text().contains("simulated board"));
    QPointer<frmTL42RQ_Detection> splash = f.detection();
    runDetection(f);
    QCOMPARE(text(splash, "lblDetectionStatus"), QString("DEMO-TL42RQ-A detection is OK."));
    QCOMPARE(text(splash, "lblDllRev"), QString("DLL REV = 0.5.0"));
    QCOMPARE(text(splash, "lblMCUrev"), QString("MCU REV = 1.4.1"));
    QCOMPARE(text(splash, "lblIDn"), QString("NFC TL42RQ"));
    QCOMPARE(f.statusPanel1Text(), QString(" DEMO-TL42RQ-A BOARD CONNECTED"));
    splash->tmrSplash_Timer();
    QVERIFY(allTopMenusEnabled(f, true));
  }

  void simulatedWrongRevisionAndAbsentBoard() {
    uitest::SimulatedBoard board;
    if (!board.loaded()) QSKIP("simulated board library not built");
    QCOMPARE(board.loadField(R"({"board": {"present": true, "dllRevision": "0.2.9"}})"), 0);
    {
      MainForm f;
      f.setEndsProcessOnClose(false);
      f.load();
      QPointer<frmTL42RQ_Detection> splash = f.detection();
      runDetection(f);
      QCOMPARE(text(splash, "lblDllRev"), QString("DLL REV = 0.2 -> WRONG DLL REVISION"));
    }
    QCOMPARE(board.loadField(R"({"board": {"present": false}})"), 0);
    glob::state() = glob::GlobVariables();
    MainForm f;
    f.setEndsProcessOnClose(false);
    f.load();
    QPointer<frmTL42RQ_Detection> splash = f.detection();
    runDetection(f);
    QCOMPARE(text(splash, "lblDllRev"), QString("DLL REV = 0.5.0"));
    QCOMPARE(text(splash, "lblDetectionStatus"), QString("DEMO-TL42RQ-A is not detected. Please verify USB connection."));
    splash->tmrSplash_Timer();
    QVERIFY(allTopMenusEnabled(f, true));
  }

  void unpluggingAndReplugFlipTheStatusBar() {
    uitest::SimulatedBoard board;
    if (!board.loaded()) QSKIP("simulated board library not built");
    QCOMPARE(board.loadField(uitest::fixture("field_basic.json")), 0);
    MainForm f;
    f.setEndsProcessOnClose(false);
    f.load();
    runDetection(f);
    QCOMPARE(f.statusPanel1Text(), QString(" DEMO-TL42RQ-A BOARD CONNECTED"));
    auto& d = reader::driver();
    const auto echo = [&d] {
      return reader::exchange(d, Op::Echo, "", reader::reconnectWith(d, reader::ReconnectKind::Plain));
    };
    board.setBoardPresent(false);
    const reader::Answer gone = echo();
    QCOMPARE(gone.status, 5);
    QCOMPARE(gone.text, std::string());
    QCOMPARE(f.statusPanel1Text(), QString(" DEMO-TL42RQ-A BOARD NOT CONNECTED"));
    board.setBoardPresent(true);
    const reader::Answer back = echo();
    QCOMPARE(back.status, 0);
    QCOMPARE(back.text, std::string("5500"));
    QCOMPARE(f.statusPanel1Text(), QString(" DEMO-TL42RQ-A BOARD CONNECTED"));
  }
};

QTEST_MAIN(MainFormTest)
#include "MainFormTest.moc"
