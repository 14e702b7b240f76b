// The ISO 15693 panel's system information and vendor commands against the real simulated
// board: the groups each row of the table of products shows, Get System Info from the
// simulated tags, an AFI written through the grid that an AFI inventory then finds, a
// sector password that protects a block until it is presented, and Kill that silences a tag.
#include <QtTest>

#include "Iso15693UiSupport.h"

using namespace iso15693test;

namespace {
const std::string kUidA = "403C2B1A000002E0";  // VAX30 E00200001A2B3C40, frame order
const std::string kUidB = "81776655000002E0";  // VAS60E E002000055667781
}  // namespace

class Iso15693VendorBoardTest : public QObject {
  Q_OBJECT

  std::unique_ptr<BoardFixture> f_;

  BoardFixture& open(const std::string& product) {
    f_.reset();
    f_ = std::make_unique<BoardFixture>(product, uitest::fixture("field_iso15693_vendor.json"));
    return *f_;
  }

 private slots:
  void cleanup() { f_.reset(); }

  void eachRowOfTheProductTableShowsItsGroups() {
    struct Row {
      const char* product;
      bool afi, kill, lockBlock, password, readMultiple, extensionShown, extension1, harvesting;
    };
    const Row table[] = {
        {"VAX30", true, true, true, false, true, false, false, false},
        {"VAS50", true, true, true, false, false, false, false, false},
        {"VAS60E", true, false, false, true, true, true, false, true},
        {"VAS70", true, false, false, true, true, false, true, false},
        {"QLN41E", true, false, false, true, true, true, false, true},
    };
    for (const Row& r : table) {
      BoardFixture& f = open(r.product);
      f.w<QTabBar>("tabStripchoice")->setCurrentIndex(1);
      const QByteArray p(r.product);
      QVERIFY2(f.shown("FraAFI") == r.afi && f.shown("FraDSFID") == r.afi, p);
      QVERIFY2(f.shown("FraKill") == r.kill, p);
      QVERIFY2(f.shown("cmdLockBlock") == r.lockBlock, p);
      QVERIFY2(f.shown("cmdGetMultipleBlockSecurityStatus"), p);
      QVERIFY2(f.shown("FraPasswordRF") == r.password, p);
      QVERIFY2(f.shown("cmdReadMultipleBlock") == r.readMultiple, p);
      QVERIFY2(f.shown("optExtensionFlag_0") == r.extensionShown && f.shown("optExtensionFlag_1") == r.extensionShown, p);
      QVERIFY2(f.w<QRadioButton>("optExtensionFlag_1")->isChecked() == r.extension1, p);
      QVERIFY2(f.shown("FraEnergyHarvesting") == r.harvesting, p);
      QVERIFY2(f.shown("cmdFastReadSingleBlock") && f.shown("cmdFastInitiate"), p);
    }
  }

  // The catalogue has no HORIZON model; a record renamed after the family word stands in.
  void theHorizonRowHidesTheVendorGroups() {
    for (const char* reference : {"HORIZON", "ABCDE-HORIZON2"}) {
      f_.reset();
      f_ = std::make_unique<BoardFixture>("VAX30", uitest::fixture("field_iso15693_vendor.json"),
                                          [reference] { shell::currentProduct().Reference(reference); });
      BoardFixture& f = *f_;
      const QByteArray p(reference);
      for (const char* hidden : {"FraAFI", "FraDSFID", "FraKill", "cmdLockBlock", "cmdGetMultipleBlockSecurityStatus",
                                 "FraPasswordRF", "cmdInitiate", "cmdInventoryInitiated", "cmdFastInitiate",
                                 "cmdFastInventoryInitiated", "cmdFastReadSingleBlock", "cmdFastReadMultipleBlock",
                                 "FraEnergyHarvesting", "lblNbData", "cboPageSize"})
        QVERIFY2(!f.shown(hidden), p + " " + hidden);
      // The extension options stay as designed: both shown, index 0 on.
      QVERIFY2(f.shown("optExtensionFlag_0") && f.shown("optExtensionFlag_1"), p);
      QVERIFY2(f.w<QRadioButton>("optExtensionFlag_0")->isChecked(), p);
      QVERIFY2(f.shown("cmdReadUser") && f.shown("cmdReadMultipleBlock") && f.shown("chkLockBits"), p);
    }
  }

  void systemInfoShowsTheSimulatedTag() {
    BoardFixture& f = open("VAX30");
    f.chooseUid("E00200001A2B3C40");
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.click("cmdGetSystemInfo");
    QCOMPARE(f.request().toStdString(), "222B" + kUidA);
    QCOMPARE(f.systemInfo(), (QStringList{" UID : \t\tE00200001A2B3C40", " DSFID : \t\tA1h", " AFI : \t\t12h",
                                        " Memory size : \t3Fh", " Block size : \t03h", " IC reference : \t20h"}));
  }

  void systemInfoOfATwoByteTagByTheExtensionFlag() {
    BoardFixture& f = open("VAS60E");
    f.chooseUid("E002000055667781");
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.click("cmdGetSystemInfo");
    QCOMPARE(f.request().toStdString(), "222B" + kUidB);
    QCOMPARE(f.systemInfo(), (QStringList{" UID : \t\tE002000055667781", " DSFID : \t\tB2h", " AFI : \t\t00h",
                                        " Memory size : \tN.A.", " Block size : \tN.A.", " IC reference : \t5Eh"}));
    f.w<QRadioButton>("optExtensionFlag_1")->setChecked(true);
    f.click("cmdGetSystemInfo");
    QCOMPARE(f.request().toStdString(), "2A2B" + kUidB);
    QCOMPARE(f.systemInfo().mid(3), (QStringList{" Memory size : \t07FFh", " Block size : \t03h", " IC reference : \t5Eh"}));
  }

  void afiWrittenThroughTheGridIsFoundByAnAfiInventory() {
    BoardFixture& f = open("VAX30");
    f.w<QCheckBox>("chkInventoryAFIOptions")->setChecked(true);
    f.w<QLineEdit>("txtInventoryOptionalAFI")->setText("77");
    f.click("cmdInventory");
    QCOMPARE(f.request(), QString("36017700"));
    QCOMPARE(f.w<QListWidget>("lstTransponderUID")->count(), 2);  // header only: no tag has AFI 77

    f.chooseUid("E00200001A2B3C40");
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.range("00", "00");
    f.click("cmdWriteAFI");
    f.w<MaskedEdit>("mskFillPage")->setMaskedText("77");
    f.click("cmdWriteUser");
    QCOMPARE(f.request().toStdString(), "2227" + kUidA + "77");
    QCOMPARE(f.result(), QString("OK"));

    f.w<QTabBar>("tabStripchoice")->setCurrentIndex(0);
    f.click("cmdInventory");
    QCOMPARE(rows(f.w<QListWidget>("lstTransponderUID")),
             (QStringList{"\tUID\t\t\tDSFID", "", " 00\tE00200001A2B3C40\t\tA1"}));
    f.click("cmdGetSystemInfo");
    QCOMPARE(f.systemInfo()[2], QString(" AFI : \t\t77h"));

    // Locked, the AFI refuses the next write with the tag's error code.
    f.w<QTabBar>("tabStripchoice")->setCurrentIndex(1);
    f.click("cmdLockAFI");
    QCOMPARE(f.request().toStdString(), "2228" + kUidA);
    QCOMPARE(f.result(), QString("OK"));
    f.click("cmdWriteAFI");
    f.w<MaskedEdit>("mskFillPage")->setMaskedText("12");
    f.click("cmdWriteUser");
    QCOMPARE(f.result(), QString("12 : unknown error code"));
  }

  void sectorPasswordProtectsABlockUntilPresented() {
    BoardFixture& f = open("VAS60E");
    f.chooseUid("E002000055667781");
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.range("0000", "0000");
    f.click("cmdReadUser");
    QCOMPARE(f.view(), QStringList{"0000   CA FE BA BE "});

    // Password 1 is zero on a fresh tag; presented, it may be changed.
    f.gridWrite("cmdPresentSectorPassword", "00 00 00 00 ");
    QCOMPARE(f.request().toStdString(), "22B302" + kUidB + "01" "00000000");
    QCOMPARE(f.result(), QString("OK"));
    f.gridWrite("cmdWriteSectorPassword", "11 22 33 44 ");
    QCOMPARE(f.request().toStdString(), "22B102" + kUidB + "01" "11223344");
    QCOMPARE(f.result(), QString("OK"));
    // Sector 0: reads and writes need password 1.
    f.click("cmdLockSectorPassword");
    f.w<MaskedEdit>("mskFillPage")->setMaskedText("0B");
    f.click("cmdWriteUser");
    QCOMPARE(f.request().toStdString(), "2AB202" + kUidB + "0000" "0B");
    QCOMPARE(f.result(), QString("OK"));

    f.click("cmdReadUser");
    QCOMPARE(f.view(), QStringList{"0000   (15) Block is read-protected"});
    f.click("cmdWriteSingleBlock");
    f.w<MaskedEdit>("PWData_0")->setMaskedText("01 02 03 04 ");
    f.click("cmdWriteUser");
    QCOMPARE(f.view(), QStringList{"0000   (12) Block is locked, content cannot be changed"});

    f.gridWrite("cmdPresentSectorPassword", "11 22 33 44 ");
    QCOMPARE(f.result(), QString("OK"));
    f.click("cmdReadUser");
    QCOMPARE(f.view(), QStringList{"0000   CA FE BA BE "});
  }

  void killSilencesTheTag() {
    BoardFixture& f = open("VAX30");
    f.chooseUid("E00200001A2B3C40");
    f.click("cmdSelect");
    QCOMPARE(f.result(), QString("OK"));
    // Through the Select flag the kill frames reach the selected tag alone.
    f.w<QCheckBox>("chk_Select_Address_flag_0")->setChecked(true);
    f.range("00", "00");
    f.gridWrite("cmdWriteKill", "A5 A5 A5 A5 ");
    QCOMPARE(f.request(), QString("12B10200A5A5A5A5"));
    QCOMPARE(f.result(), QString("OK"));
    f.gridWrite("cmdKill", "A5 A5 A5 A5 ");
    QCOMPARE(f.request(), QString("12A60200A5A5A5A5"));
    QCOMPARE(f.result(), QString("OK"));

    f.w<QCheckBox>("chk_Select_Address_flag_0")->setChecked(false);
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    f.click("cmdGetSystemInfo");
    QCOMPARE(f.w<QLineEdit>("txt_ISO15693_answer")->text(), QString("8700"));
    f.w<QTabBar>("tabStripchoice")->setCurrentIndex(0);
    f.click("cmdAntiCollisionIso15693");
    QCOMPARE(rows(f.w<QListWidget>("lstTransponderUID")),
             (QStringList{"\tUID\t\t\tDSFID", "", " 01\tE0020000ABCDEF12\t\tC3", " 02\tE002000055667781\t\tB2"}));
  }

  void initiatedTagAnswersTheFastInventoryOnlyAtTheDoubleRate() {
    BoardFixture& f = open("VAX30");
    // Park the others, then initiate the VAX30 alone.
    for (const char* uid : {"E002000055667781", "E0020000ABCDEF12"}) {
      f.chooseUid(uid);
      f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
      f.click("cmdStayQuiet");
    }
    f.w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(false);
    f.click("cmdInventoryInitiated");
    QCOMPARE(f.w<QLineEdit>("txt_ISO15693_answer")->text(), QString("8700"));
    f.click("cmdInitiate");
    QCOMPARE(f.w<QListWidget>("lstTransponderUID")->item(2)->text(), QString(" 00\tE00200001A2B3C40\t\tA1"));
    f.click("cmdInventoryInitiated");
    QCOMPARE(f.w<QListWidget>("lstTransponderUID")->count(), 3);
    f.click("cmdFastInventoryInitiated");
    QCOMPARE(f.request(), QString("26C10200"));
    QCOMPARE(f.w<QListWidget>("lstTransponderUID")->item(2)->text(), QString(" 00\tE00200001A2B3C40\t\tA1"));
    // Sent as it stands while the chip is at "010D", the fast form gets no answer.
    f.w<QLineEdit>("txt_ISO15693_AnyFrame")->setText("26C10200");
    f.click("cmd_ISO15693_SendFrame");
    QCOMPARE(f.w<QLineEdit>("txt_ISO15693_answer")->text(), QString("8700"));
  }
};

QTEST_MAIN(Iso15693VendorBoardTest)
#include "Iso15693VendorBoardTest.moc"
