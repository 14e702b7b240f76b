// The ISO 15693 panel against the real simulated board with three tags in the field:
// inventory, the controller's anticollision, a collision, choosing a UID, reads, writes
// checked in the board's dump, locked blocks, a memory transfer, the tag states, and the
// two-byte block addresses of the larger products.
#include <QtTest>

#include "Iso15693UiSupport.h"

using namespace iso15693test;

namespace {
const std::string kUidA = "403C2B1A000002E0";  // E00200001A2B3C40 in frame order
const std::string kUidB = "87776655000002E0";  // E002000055667787
const std::string kUidC = "13EFCDAB000002E0";  // E0020000ABCDEF13

// The memory of tag n of the dump, as hexadecimal text.
std::string memoryOfTag(const std::string& dump, int n) {
  std::size_t at = 0;
  for (int i = 0; i <= n; ++i) {
    at = dump.find("\"memory\": \"", at);
    if (at == std::string::npos) return {};
    at += 11;
  }
  return dump.substr(at, dump.find('"', at) - at);
}
std::string lockedOfTag(const std::string& dump, int n) {
  std::size_t at = 0;
  for (int i = 0; i <= n; ++i) {
    at = dump.find("\"lockedBlocks\": [", at);
    if (at == std::string::npos) return {};
    at += 17;
  }
  std::string out;
  for (char c : dump.substr(at, dump.find(']', at) - at))
    if (c != ' ' && c != '\n') out += c;
  return out;
}
}  // namespace

class Iso15693SimulatedBoardTest : public QObject {
  Q_OBJECT

  std::unique_ptr<uitest::SimulatedBoard> board_;
  std::unique_ptr<frmTL42RQ_ISO15693_UI> panel_;
  ScriptedDialogs dialogs_;

  frmTL42RQ_ISO15693_UI& open(const std::string& product) {
    panel_.reset();
    board_ = std::make_unique<uitest::SimulatedBoard>();
    if (!board_->loaded()) qFatal("simulated board not loaded");
    if (board_->loadField(uitest::fixture("field_iso15693.json")) != 0) qFatal("%s", board_->lastError().c_str());
    board_->reset();
    glob::state() = glob::GlobVariables();
    glob::state().mcuRevision = "1.4.1";
    chooseProduct(product);
    panel_ = std::make_unique<frmTL42RQ_ISO15693_UI>();
    panel_->show();
    return *panel_;
  }
  template <typename T = QWidget>
  T* w(const QString& name) {
    return uitest::find<T>(panel_.get(), name);
  }
  void click(const QString& name) { QTest::mouseClick(w<QAbstractButton>(name), Qt::LeftButton); }
  void range(const QString& from, const QString& to) {
    w<QTabBar>("tabStripchoice")->setCurrentIndex(1);
    w<QLineEdit>("txtUserAddress_0")->setText(from);
    w<QLineEdit>("txtUserAddress_1")->setText(to);
  }
  void chooseListRow(int row) {
    auto* list = w<QListWidget>("lstTransponderUID");
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(row)).center());
  }
  QStringList view() { return rows(w<QListWidget>("lstReadView")); }
  QString request() { return w<QLineEdit>("txt_ISO15693_request")->text(); }

 private slots:
  void init() {
    setDialogs(&dialogs_);
    dialogs_ = ScriptedDialogs();
  }
  void cleanup() {
    panel_.reset();
    board_.reset();
    setDialogs(nullptr);
  }

  void openingConfiguresTheChipForIso15693() {
    uitest::FixedTime time;
    open("VAX30");
    QCOMPARE(panel_->log().text(),
             "\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< 5500" +
                 entry("TL42RQ CONFIGURATION : ISO15693 10% High Datarate One Subcarrier", "TL42RQDLL_SELECT", "010D",
                       "0000"));
  }

  void inventorySixteenSlotsListsTheTagOfSlotZero() {
    open("VAX30");
    w<QRadioButton>("optInventorySlot_1")->setChecked(true);
    click("cmdInventory");
    QCOMPARE(request(), QString("060100"));
    QCOMPARE(rows(w<QListWidget>("lstTransponderUID")),
             (QStringList{"\tUID\t\t\tDSFID", "", " 00\tE00200001A2B3C40\t\tA1"}));
  }

  void oneSlotInventoryOfThreeTagsCollides() {
    open("VAX30");
    click("cmdInventory");
    QCOMPARE(request(), QString("260100"));
    const std::string answer = "800D" "00F3D7FFEFFF000002E0" "FFBF" "03";
    QCOMPARE(w<QLineEdit>("txt_ISO15693_answer")->text().toStdString(), answer);
    QVERIFY(panel_->log().text().ends_with("<<< " + answer + "  03 -> CRC HS (expected=D8E6)"));
    // Nothing was taken: the list holds its header and the buffer the words of no answer.
    QCOMPARE(w<QListWidget>("lstTransponderUID")->count(), 2);
    QCOMPARE(memoryBuffer().Contenu().back(), std::string("No detected answer"));
  }

  void anticollisionListsEveryTagInTheField() {
    open("VAX30");
    click("cmdAntiCollisionIso15693");
    QCOMPARE(request(), QString("02A00126"));
    QCOMPARE(rows(w<QListWidget>("lstTransponderUID")),
             (QStringList{"\tUID\t\t\tDSFID", "", " 01\tE00200001A2B3C40\t\tA1", " 02\tE0020000ABCDEF13\t\tC3",
                          " 03\tE002000055667787\t\tB2"}));
    w<QRadioButton>("optInventorySlot_1")->setChecked(true);
    click("cmdAntiCollisionIso15693");
    QCOMPARE(request(), QString("02A00106"));
    QCOMPARE(w<QListWidget>("lstTransponderUID")->count(), 5);
  }

  void chosenUidReadsTheTagsMemoryWithItsAddresses() {
    open("VAX30");
    click("cmdAntiCollisionIso15693");
    chooseListRow(2);
    QCOMPARE(glob::state().transponderUIDFrame, kUidA);
    w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    range("02", "05");
    click("cmdReadUser");
    QCOMPARE(request().toStdString(), "2220" + kUidA + "05");
    QCOMPARE(view(), (QStringList{"02   88 99 AA BB ", "03   CC DD EE FF ", "04   01 02 03 04 ",
                                  "05   05 06 07 08 "}));
    w<QCheckBox>("chkLockBits")->setChecked(true);
    click("cmdReadUser");
    QCOMPARE(view().last(), QString("05   01   05 06 07 08 "));
  }

  void writeSingleBlockChangesTheTagsMemory() {
    open("VAX30");
    click("cmdAntiCollisionIso15693");
    chooseListRow(2);
    w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    range("00", "03");
    click("cmdWriteSingleBlock");
    w<MaskedEdit>("mskFillPage")->setMaskedText("5A");
    click("cmdWriteUser");
    QCOMPARE(view(), (QStringList{"00   (00) No error during Prog sequence", "01   (00) No error during Prog sequence",
                                  "02   (00) No error during Prog sequence", "03   (00) No error during Prog sequence"}));
    const std::string dump = board_->dumpField();
    QCOMPARE(memoryOfTag(dump, 0).substr(0, 48), std::string("5A5A5A5A5A5A5A5A5A5A5A5A5A5A5A5A" "0102030405060708"));
    // The other tags kept theirs.
    QCOMPARE(memoryOfTag(dump, 1).substr(0, 8), std::string("CAFEBABE"));
  }

  void lockedBlockRefusesTheWrite() {
    open("VAX30");
    w<QLineEdit>("txtTransponderUID")->setText("E00200001A2B3C40");
    QTest::mouseClick(w("lblChoosenTag"), Qt::LeftButton);
    w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    range("04", "06");
    click("cmdWriteSingleBlock");
    w<MaskedEdit>("PWData_0")->setMaskedText("11 22 33 44 ");
    click("cmdWriteUser");
    QCOMPARE(view(), (QStringList{"04   (00) No error during Prog sequence",
                                  "05   (12) Block is locked, content cannot be changed",
                                  "06   (00) No error during Prog sequence"}));
    QCOMPARE(w<QLabel>("lblWriteTime")->text(), QString("OK"));
    QCOMPARE(memoryOfTag(board_->dumpField(), 0).substr(32, 24), std::string("11223344" "05060708" "11223344"));
  }

  void memoryTransferByReadMultipleBlock() {
    open("VAX30");
    w<QLineEdit>("txtTransponderUID")->setText("E00200001A2B3C40");
    QTest::mouseClick(w("lblChoosenTag"), Qt::LeftButton);
    w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    range("03", "3F");
    click("cmdReadMultipleBlock");
    const auto frames = view();
    QCOMPARE(memoryBuffer().Size(), 61L);
    QCOMPARE(frames.size(), 16);
    QCOMPARE(frames.first(), QString("30   00 00 00 00 "));
    QCOMPARE(frames.last(), QString("3F   00 00 00 00 "));
    QCOMPARE(memoryBuffer().Item(0), std::string("CC DD EE FF "));
    QCOMPARE(memoryBuffer().Item(4), std::string("0D 0E 0F 10 "));
    // The last chunk: blocks 38 to 3F, eight of them.
    QCOMPARE(request().toStdString(), "2223" + kUidA + "3807");
    auto* list = w<QListWidget>("lstReadView");
    QTest::keyClick(list, Qt::Key_Home);
    QCOMPARE(list->item(0)->text(), QString("03   CC DD EE FF "));
    QCOMPARE(list->item(2)->text(), QString("05   05 06 07 08 "));
  }

  void securityStatusAndLockBlockOnTheQuietField() {
    open("VAX30");
    // Silence tags B and C, so that the non-addressed Lock Block reaches tag A alone.
    w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    for (const char* uid : {"E002000055667787", "E0020000ABCDEF13"}) {
      w<QLineEdit>("txtTransponderUID")->setText(uid);
      QTest::mouseClick(w("lblChoosenTag"), Qt::LeftButton);
      click("cmdStayQuiet");
    }
    w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(false);
    range("06", "07");
    click("cmdLockBlock");
    QCOMPARE(request(), QString("082207"));
    QCOMPARE(w<QLabel>("lblWriteTime")->text(), QString("OK"));
    QCOMPARE(lockedOfTag(board_->dumpField(), 0), std::string("5,6,7"));
    QCOMPARE(lockedOfTag(board_->dumpField(), 1), std::string(""));
    range("04", "08");
    click("cmdGetMultipleBlockSecurityStatus");
    QCOMPARE(request(), QString("022C0404"));
    QCOMPARE(view(), (QStringList{"04   00", "05   01", "06   01", "07   01", "08   00"}));
    // Locking again: already locked.
    range("05", "05");
    click("cmdLockBlock");
    QCOMPARE(w<QLabel>("lblWriteTime")->text(), QString("11 : unknown error code"));
  }

  void twoByteProductReadsAndWritesWithTheExtensionFlag() {
    open("VAS60E");
    QCOMPARE(glob::state().rfAddressBytes, 2);
    w<QLineEdit>("txtTransponderUID")->setText("E002000055667787");
    QTest::mouseClick(w("lblChoosenTag"), Qt::LeftButton);
    w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    range("0105", "0106");
    click("cmdWriteSingleBlock");
    w<MaskedEdit>("PWData_0")->setMaskedText("DE AD BE EF ");
    click("cmdWriteUser");
    QCOMPARE(request().toStdString(), "2A21" + kUidB + "0601" "DEADBEEF");
    QCOMPARE(view(), (QStringList{"0105   (00) No error during Prog sequence", "0106   (00) No error during Prog sequence"}));
    range("0104", "0107");
    click("cmdReadUser");
    QCOMPARE(view(), (QStringList{"0104   00 00 00 00 ", "0105   DE AD BE EF ", "0106   DE AD BE EF ",
                                  "0107   00 00 00 00 "}));
    QCOMPARE(memoryOfTag(board_->dumpField(), 1).substr(0x105 * 8, 16), std::string("DEADBEEFDEADBEEF"));
    // Read Multiple Block's first pass takes the product's own address width.
    click("cmdReadMultipleBlock");
    QCOMPARE(request().toStdString(), "2A23" + kUidB + "0401" "03");
    QCOMPARE(view().at(1), QString("0105   DE AD BE EF "));
  }

  void selectedTagAnswersTheSelectFlag() {
    open("VAX30");
    w<QLineEdit>("txtTransponderUID")->setText("E0020000ABCDEF13");
    QTest::mouseClick(w("lblChoosenTag"), Qt::LeftButton);
    click("cmdSelect");
    QCOMPARE(request().toStdString(), "0225" + kUidC);
    QCOMPARE(w<QLabel>("lblWriteTime")->text(), QString("OK"));
    w<QCheckBox>("chk_Select_Address_flag_0")->setChecked(true);
    range("00", "00");
    click("cmdReadUser");
    QCOMPARE(request(), QString("122000"));
    QCOMPARE(view(), QStringList{"00   00 00 00 00 "});
  }
};

QTEST_MAIN(Iso15693SimulatedBoardTest)
#include "Iso15693SimulatedBoardTest.moc"
