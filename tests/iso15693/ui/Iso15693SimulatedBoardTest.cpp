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

  std::unique_ptr<BoardFixture> f_;

  BoardFixture& open(const std::string& product) {
    f_.reset();
    f_ = std::make_unique<BoardFixture>(product, uitest::fixture("field_iso15693.json"));
    return *f_;
  }

 private slots:
  void cleanup() { f_.reset(); }

  void openingConfiguresTheChipForIso15693() {
    uitest::FixedTime time;
    BoardFixture& f = open("VAX30");
    QCOMPARE(f.panel->log().text(),
             "\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< 5500" +
                 entry("TL42RQ CONFIGURATION : ISO15693 10% High Datarate One Subcarrier", "TL42RQDLL_SELECT", "010D",
                       "0000"));
  }

  void inventorySixteenSlotsListsTheTagOfSlotZero() {
    BoardFixture& f = open("VAX30");
    f.w<QRadioButton>("optInventorySlot_1")->setChecked(true);
    f.click("cmdInventory");
    QCOMPARE(f.request(), QString("060100"));
    QCOMPARE(rows(f.w<QListWidget>("lstTransponderUID")),
             (QStringList{"\tUID\t\t\tDSFID", "", " 00\tE00200001A2B3C40\t\tA1"}));
  }

  void oneSlotInventoryOfThreeTagsCollides() {
    BoardFixture& f = open("VAX30");
    f.click("cmdInventory");
    QCOMPARE(f.request(), QString("260100"));
    const std::string answer = "800D" "00F3D7FFEFFF000002E0" "FFBF" "03";
    QCOMPARE(f.w<QLineEdit>("txt_ISO15693_answer")->text().toStdString(), answer);
    QVERIFY(f.panel->log().text().ends_with("<<< " + answer + "  03 -> CRC HS (expected=D8E6)"));
    // Nothing was taken: the list holds its header and the buffer the words of no answer.
    QCOMPARE(f.w<QListWidget>("lstTransponderUID")->count(), 2);
    QCOMPARE(memoryBuffer().Contenu().back(), std::string("No detected answer"));
  }

  void anticollisionListsEveryTagInTheField() {
    BoardFixture& f = open("VAX30");
    f.click("cmdAntiCollisionIso15693");
    QCOMPARE(f.request(), QString("02A00126"));
    QCOMPARE(rows(f.w<QListWidget>("lstTransponderUID")),
             (QStringList{"\tUID\t\t\tDSFID", "", " 01\tE00200001A2B3C40\t\tA1", " 02\tE0020000ABCDEF13\t\tC3",
                          " 03\tE002000055667787\t\tB2"}));
    f.w<QRadioButton>("optInventorySlot_1")->setChecked(true);
    f.click("cmdAntiCollisionIso15693");
    QCOMPARE(f.request(), QString("02A00106"));
    QCOMPARE(f.w<QListWidget>("lstTransponderUID")->count(), 5);
  }

  void chosenUidReadsTheTagsMemoryWithItsAddresses() {
    BoardFixture& f = open("VAX30");
    f.click("cmdAntiCollisionIso15693");
    f.chooseListRow(2);
    QCOMPARE(glob::state().transponderUIDFrame, kUidA);
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.range("02", "05");
    f.click("cmdReadUser");
    QCOMPARE(f.request().toStdString(), "2220" + kUidA + "05");
    QCOMPARE(f.view(), (QStringList{"02   88 99 AA BB ", "03   CC DD EE FF ", "04   01 02 03 04 ",
                                  "05   05 06 07 08 "}));
    f.w<QCheckBox>("chkLockBits")->setChecked(true);
    f.click("cmdReadUser");
    QCOMPARE(f.view().last(), QString("05   01   05 06 07 08 "));
  }

  void writeSingleBlockChangesTheTagsMemory() {
    BoardFixture& f = open("VAX30");
    f.click("cmdAntiCollisionIso15693");
    f.chooseListRow(2);
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.range("00", "03");
    f.click("cmdWriteSingleBlock");
    f.w<MaskedEdit>("mskFillPage")->setMaskedText("5A");
    f.click("cmdWriteUser");
    QCOMPARE(f.view(), (QStringList{"00   (00) No error during Prog sequence", "01   (00) No error during Prog sequence",
                                  "02   (00) No error during Prog sequence", "03   (00) No error during Prog sequence"}));
    const std::string dump = f.board.dumpField();
    QCOMPARE(memoryOfTag(dump, 0).substr(0, 48), std::string("5A5A5A5A5A5A5A5A5A5A5A5A5A5A5A5A" "0102030405060708"));
    // The other tags kept theirs.
    QCOMPARE(memoryOfTag(dump, 1).substr(0, 8), std::string("CAFEBABE"));
  }

  void lockedBlockRefusesTheWrite() {
    BoardFixture& f = open("VAX30");
    f.w<QLineEdit>("txtTransponderUID")->setText("E00200001A2B3C40");
    QTest::mouseClick(f.w("lblChoosenTag"), Qt::LeftButton);
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.range("04", "06");
    f.click("cmdWriteSingleBlock");
    f.w<MaskedEdit>("PWData_0")->setMaskedText("11 22 33 44 ");
    f.click("cmdWriteUser");
    QCOMPARE(f.view(), (QStringList{"04   (00) No error during Prog sequence",
                                  "05   (12) Block is locked, content cannot be changed",
                                  "06   (00) No error during Prog sequence"}));
    QCOMPARE(f.w<QLabel>("lblWriteTime")->text(), QString("OK"));
    QCOMPARE(memoryOfTag(f.board.dumpField(), 0).substr(32, 24), std::string("11223344" "05060708" "11223344"));
  }

  void memoryTransferByReadMultipleBlock() {
    BoardFixture& f = open("VAX30");
    f.w<QLineEdit>("txtTransponderUID")->setText("E00200001A2B3C40");
    QTest::mouseClick(f.w("lblChoosenTag"), Qt::LeftButton);
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.range("03", "3F");
    f.click("cmdReadMultipleBlock");
    const auto frames = f.view();
    QCOMPARE(memoryBuffer().Size(), 61L);
    QCOMPARE(frames.size(), 16);
    QCOMPARE(frames.first(), QString("30   00 00 00 00 "));
    QCOMPARE(frames.last(), QString("3F   00 00 00 00 "));
    QCOMPARE(memoryBuffer().Item(0), std::string("CC DD EE FF "));
    QCOMPARE(memoryBuffer().Item(4), std::string("0D 0E 0F 10 "));
    // The last chunk: blocks 38 to 3F, eight of them.
    QCOMPARE(f.request().toStdString(), "2223" + kUidA + "3807");
    auto* list = f.w<QListWidget>("lstReadView");
    QTest::keyClick(list, Qt::Key_Home);
    QCOMPARE(list->item(0)->text(), QString("03   CC DD EE FF "));
    QCOMPARE(list->item(2)->text(), QString("05   05 06 07 08 "));
  }

  void securityStatusAndLockBlockOnTheQuietField() {
    BoardFixture& f = open("VAX30");
    // Silence tags B and C, so that the non-addressed Lock Block reaches tag A alone.
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    for (const char* uid : {"E002000055667787", "E0020000ABCDEF13"}) {
      f.w<QLineEdit>("txtTransponderUID")->setText(uid);
      QTest::mouseClick(f.w("lblChoosenTag"), Qt::LeftButton);
      f.click("cmdStayQuiet");
    }
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(false);
    f.range("06", "07");
    f.click("cmdLockBlock");
    QCOMPARE(f.request(), QString("082207"));
    QCOMPARE(f.w<QLabel>("lblWriteTime")->text(), QString("OK"));
    QCOMPARE(lockedOfTag(f.board.dumpField(), 0), std::string("5,6,7"));
    QCOMPARE(lockedOfTag(f.board.dumpField(), 1), std::string(""));
    f.range("04", "08");
    f.click("cmdGetMultipleBlockSecurityStatus");
    QCOMPARE(f.request(), QString("022C0404"));
    QCOMPARE(f.view(), (QStringList{"04   00", "05   01", "06   01", "07   01", "08   00"}));
    // Locking again: already locked.
    f.range("05", "05");
    f.click("cmdLockBlock");
    QCOMPARE(f.w<QLabel>("lblWriteTime")->text(), QString("11 : unknown error code"));
  }

  void twoByteProductReadsAndWritesWithTheExtensionFlag() {
    BoardFixture& f = open("VAS60E");
    QCOMPARE(glob::state().rfAddressBytes, 2);
    f.w<QLineEdit>("txtTransponderUID")->setText("E002000055667787");
    QTest::mouseClick(f.w("lblChoosenTag"), Qt::LeftButton);
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.range("0105", "0106");
    f.click("cmdWriteSingleBlock");
    f.w<MaskedEdit>("PWData_0")->setMaskedText("DE AD BE EF ");
    f.click("cmdWriteUser");
    QCOMPARE(f.request().toStdString(), "2A21" + kUidB + "0601" "DEADBEEF");
    QCOMPARE(f.view(), (QStringList{"0105   (00) No error during Prog sequence", "0106   (00) No error during Prog sequence"}));
    f.range("0104", "0107");
    f.click("cmdReadUser");
    QCOMPARE(f.view(), (QStringList{"0104   00 00 00 00 ", "0105   DE AD BE EF ", "0106   DE AD BE EF ",
                                  "0107   00 00 00 00 "}));
    QCOMPARE(memoryOfTag(f.board.dumpField(), 1).substr(0x105 * 8, 16), std::string("DEADBEEFDEADBEEF"));
    // Read Multiple Block's first pass takes the product's own address width.
    f.click("cmdReadMultipleBlock");
    QCOMPARE(f.request().toStdString(), "2A23" + kUidB + "0401" "03");
    QCOMPARE(f.view().at(1), QString("0105   DE AD BE EF "));
  }

  void selectedTagAnswersTheSelectFlag() {
    BoardFixture& f = open("VAX30");
    f.w<QLineEdit>("txtTransponderUID")->setText("E0020000ABCDEF13");
    QTest::mouseClick(f.w("lblChoosenTag"), Qt::LeftButton);
    f.click("cmdSelect");
    QCOMPARE(f.request().toStdString(), "0225" + kUidC);
    QCOMPARE(f.w<QLabel>("lblWriteTime")->text(), QString("OK"));
    f.w<QCheckBox>("chk_Select_Address_flag_0")->setChecked(true);
    f.range("00", "00");
    f.click("cmdReadUser");
    QCOMPARE(f.request(), QString("122000"));
    QCOMPARE(f.view(), QStringList{"00   00 00 00 00 "});
  }
};

QTEST_MAIN(Iso15693SimulatedBoardTest)
#include "Iso15693SimulatedBoardTest.moc"
