// Tools > Export trace (pcapng)... on the simulated board: the active panel's exchanges
// go to the file the save dialog names, and Wireshark's ISO 14443 dissector reads every
// frame of an ISO 14443-A activation and of an ISO 14443-B REQB / ATTRIB as the standard
// names it, with the tags' CRCs and BCCs correct.
#include <QAbstractButton>
#include <QAction>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

#include "shell/GlobVariables.h"
#include "shell/UsageFile.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/MainForm.h"
#include "shell/ui/Panel.h"
#include "support/Tshark.h"
#include "support/UiTestSupport.h"

namespace {

// The ISO 14443-A fixture with only the double size UID tag in the field.
std::string doubleUidField() {
  QFile f(QString::fromStdString(uitest::fixture("field_iso14443a.json")));
  if (!f.open(QIODevice::ReadOnly)) qFatal("fixture missing");
  std::string text = f.readAll().toStdString();
  const std::string out = "\"product\": \"double\", \"inField\": false";
  text.replace(text.find(out), out.size(), "\"product\": \"double\", \"inField\": true");
  return text;
}

}  // namespace

class ExportPcapngTest : public QObject {
  Q_OBJECT
  std::unique_ptr<QTemporaryDir> dir_;
  ScriptedDialogs dialogs_;
  std::unique_ptr<uitest::SimulatedBoard> board_;
  std::unique_ptr<MainForm> form_;

  Panel* open(glob::PanelId id, const std::string& product) {
    uitest::chooseProduct(product);
    form_->show();
    Panel* p = form_->openPanel(id);
    if (!p) qFatal("panel not built");
    return p;
  }
  void click(Panel* p, const QString& name) {
    QTest::mouseClick(uitest::find<QAbstractButton>(p, name), Qt::LeftButton);
  }
  QString exportTo(const QString& name) {
    const QString path = dir_->filePath(name);
    dialogs_.fileAnswers.push_back(path);
    uitest::find<QAction>(form_.get(), "mnuExportPcapng")->trigger();
    return path;
  }

 private slots:
  void init() {
    dir_ = std::make_unique<QTemporaryDir>();
    dialogs_ = ScriptedDialogs();
    setDialogs(&dialogs_);
    glob::state() = glob::GlobVariables();
    shell::setProgramDirectory(dir_->path().toStdString() + "/");
    board_ = std::make_unique<uitest::SimulatedBoard>();
    QVERIFY(board_->loaded());
    form_ = std::make_unique<MainForm>();
    form_->setEndsProcessOnClose(false);
    form_->load(false);
  }
  void cleanup() {
    form_.reset();
    board_.reset();
    setDialogs(nullptr);
  }

  void theEntryStandsLastInToolsAndAsksForAPcapngFile() {
    QCOMPARE(board_->loadField(uitest::fixture("field_iso14443b.json")), 0);
    open(glob::PanelId::ISO14443B, "ISO14443-B");
    const QString path = exportTo("b.pcapng");
    QCOMPARE(uitest::find<QMenu>(form_.get(), "mnuTool")->actions().last()->objectName(), QString("mnuExportPcapng"));
    QCOMPARE(dialogs_.fileRequests.size(), std::size_t{1});
    QVERIFY(dialogs_.fileRequests[0].save);
    QCOMPARE(dialogs_.fileRequests[0].filter, QString("pcapng File (*.pcapng)|*.pcapng"));
    QFile f(path);
    QVERIFY(f.open(QIODevice::ReadOnly));
    // A section header block, little-endian.
    QCOMPARE(f.read(12).toHex(), QByteArray("0a0d0d0a"
                                            "40000000"   // 64 bytes, with the application's name
                                            "4d3c2b1a"));
  }

  void aCancelledDialogWritesNothing() {
    QCOMPARE(board_->loadField(uitest::fixture("field_iso14443b.json")), 0);
    open(glob::PanelId::ISO14443B, "ISO14443-B");
    uitest::find<QAction>(form_.get(), "mnuExportPcapng")->trigger();
    QCOMPARE(dialogs_.fileRequests.size(), std::size_t{1});
    QVERIFY(QDir(dir_->path()).entryList({"*.pcapng"}).isEmpty());
  }

  void iso14443AActivationAndReadAreDecodedFrameByFrame() {
    if (!uitest::haveTshark()) QSKIP("tshark is not installed: the Wireshark checks need it");
    QCOMPARE(board_->loadField(doubleUidField()), 0);
    QCOMPARE(board_->reset(), 0);
    Panel* p = open(glob::PanelId::ISO14443A, "ISO14443-A");
    click(p, "cmd_ISO14443A_Anticol_Process");
    uitest::find<QLineEdit>(p, "txtUserAddress_0")->setText("04");
    uitest::find<QLineEdit>(p, "txtUserAddress_1")->setText("04");
    click(p, "cmd_ISO14443A_Read");
    const QString path = exportTo("a.pcapng");
    QVERIFY(QFile::exists(path));
    if (qEnvironmentVariableIsSet("KEEP_CAPTURE")) QFile::copy(path, qEnvironmentVariable("KEEP_CAPTURE"));

    // Event | message | CRC status (1 good) | expert information.
    const QStringList lines = uitest::iso14443Lines(path);
    const QStringList expected{
        "0xfc|Field on||",
        "0xfe|REQA||7 valid bits in the last byte",  // the frame's comment
        "0xff|ATQA||",
        "0xfe|Anticollision||",
        "0xff|UID||",           // 88 04 A1 B2 and BCC 9F
        "0xfa|Select||",        // the chip appended the CRC
        "0xff|SAK|1|",          // 04: UID not complete, CRC_A good
        "0xfe|Anticollision||",
        "0xff|UID||",           // C3 D4 E5 F6 and BCC 04
        "0xfa|Select||",
        "0xff|SAK|1|",          // 00: UID complete
        // Wireshark knows no NFC Forum Type 2 command: the READ shows as unknown, its
        // answer as a block of ISO 14443-4 whose CRC it leaves unverified.
        "0xfa|||Unknown ISO1443 command",
        "0xff|I-block, No chaining, Block number 1|2|",
    };
    QCOMPARE(lines, expected);
    // Each UID answer's BCC is the XOR of its four bytes, as Wireshark cuts them apart.
    const uitest::TsharkRun uids = uitest::tshark(
        path, {"-Y", "iso14443.bcc && iso14443.event == 0xff", "-T", "fields", "-E", "separator=|", "-e", "iso14443.ct",
               "-e", "iso14443.uid_cln", "-e", "iso14443.bcc"});
    QCOMPARE(uids.out, QString("0x88|04a1b2|0x9f\n|c3d4e5f6|0x04\n"));
    QCOMPARE(0x88 ^ 0x04 ^ 0xA1 ^ 0xB2, 0x9F);
    QCOMPARE(0xC3 ^ 0xD4 ^ 0xE5 ^ 0xF6, 0x04);
    // The READ itself, byte for byte: 30 04 behind the pseudo-header; the answer is pages
    // 4 to 7 and the tag's CRC_A.
    const uitest::TsharkRun raw = uitest::tshark(path, {"-Y", "frame.interface_id == 0", "-T", "fields", "-e", "frame.number", "-e", "frame.len"});
    QVERIFY(raw.out.count('\n') == 13);
    const uitest::TsharkRun read = uitest::tshark(path, {"-Y", "frame.interface_id == 0 && iso14443.length_field == 18", "-x"});
    QVERIFY2(read.out.contains("00 ff 00 12 03 39 91 01 0c 55 02 65 78 61 6d 70"), qPrintable(read.out));
    QVERIFY2(read.out.contains("6c 65 2e 63"), qPrintable(read.out));
    // Nothing malformed anywhere, and no CRC Wireshark disagrees with.
    const uitest::TsharkRun bad = uitest::tshark(path, {"-Y", "_ws.malformed || iso14443.crc.wrong || iso14443.crc.status == 0"});
    QCOMPARE(bad.exitCode, 0);
    QCOMPARE(bad.out, QString());
  }

  void iso14443BReqbAndAttribAreDecodedFrameByFrame() {
    if (!uitest::haveTshark()) QSKIP("tshark is not installed: the Wireshark checks need it");
    QCOMPARE(board_->loadField(uitest::fixture("field_iso14443b.json")), 0);
    QCOMPARE(board_->reset(), 0);
    Panel* p = open(glob::PanelId::ISO14443B, "ISO14443-B");
    click(p, "cmd_ISO14443B_ReqB");
    click(p, "cmd_ISO14443B_Attrib");
    const QString path = exportTo("b.pcapng");
    const QStringList expected{
        "0xfc|Field on||",
        "0xfa|REQB||",
        "0xff|ATQB|1|",
        "0xfa|Attrib||",
        "0xff|Response to Attrib|1|",
    };
    QCOMPARE(uitest::iso14443Lines(path), expected);
    const uitest::TsharkRun bad = uitest::tshark(path, {"-Y", "_ws.malformed || iso14443.crc.wrong || iso14443.crc.status == 0"});
    QCOMPARE(bad.exitCode, 0);
    QCOMPARE(bad.out, QString());
  }

  void iso15693GoesToTheSecondInterfaceWithItsOwnHeader() {
    if (!uitest::haveTshark()) QSKIP("tshark is not installed: the Wireshark checks need it");
    QCOMPARE(board_->loadField(uitest::fixture("field_iso15693.json")), 0);
    QCOMPARE(board_->reset(), 0);
    glob::state().mcuRevision = "1.4.1";
    Panel* p = open(glob::PanelId::ISO15693, "VAX30");
    click(p, "cmdInventory");
    const QString path = exportTo("v.pcapng");
    // Nothing of ISO 15693 on the ISO 14443 interface.
    QCOMPARE(uitest::iso14443Lines(path), QStringList());
    const uitest::TsharkRun r = uitest::tshark(
        path, {"-Y", "frame.interface_id == 1 && !(data.data[1] == 0xf0 || data.data[1] == 0xf1)", "-T", "fields",
               "-E", "separator=|", "-e", "data.data", "-e", "frame.comment"});
    // Field on in ISO 15693; the one-slot inventory with the CRC the chip appends; the
    // three tags' answers on top of each other as the chip heard them.
    QCOMPARE(r.out, QString("00fc01ff00000000|\n"
                            "00fa01ff00000003260100|\n"
                            "00ff01ff0000000c00f3d7ffefff000002e0ffbf|chip reports collision, CRC error\n"));
  }

  void clearLogEmptiesTheCapture() {
    QCOMPARE(board_->loadField(uitest::fixture("field_iso14443b.json")), 0);
    Panel* p = open(glob::PanelId::ISO14443B, "ISO14443-B");
    QVERIFY(!p->capture().records().empty());
    click(p, "cmdClearLog");
    QVERIFY(p->capture().records().empty());
  }
};

QTEST_MAIN(ExportPcapngTest)
#include "ExportPcapngTest.moc"
