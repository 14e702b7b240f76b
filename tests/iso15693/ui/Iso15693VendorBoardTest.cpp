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

  std::unique_ptr<uitest::SimulatedBoard> board_;
  std::unique_ptr<frmTL42RQ_ISO15693_UI> panel_;
  ScriptedDialogs dialogs_;

  frmTL42RQ_ISO15693_UI& open(const std::string& product) {
    panel_.reset();
    board_ = std::make_unique<uitest::SimulatedBoard>();
    if (!board_->loaded()) qFatal("simulated board not loaded");
    if (board_->loadField(uitest::fixture("field_iso15693_vendor.json")) != 0) qFatal("%s", board_->lastError().c_str());
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
  void chooseUid(const QString& uid) {
    w<QLineEdit>("txtTransponderUID")->setText(uid);
    QTest::mouseClick(w("lblChoosenTag"), Qt::LeftButton);
  }
  void userMode(const QString& from, const QString& to) {
    w<QTabBar>("tabStripchoice")->setCurrentIndex(1);
    w<QLineEdit>("txtUserAddress_0")->setText(from);
    w<QLineEdit>("txtUserAddress_1")->setText(to);
  }
  // Opens the grid with `opener`, types the bytes and writes.
  void gridWrite(const QString& opener, const std::string& bytes) {
    click(opener);
    w<MaskedEdit>("PWData_0")->setMaskedText(bytes);
    click("cmdWriteUser");
  }
  QString result() { return w<QLabel>("lblWriteTime")->text(); }
  QString request() { return w<QLineEdit>("txt_ISO15693_request")->text(); }
  QStringList systemInfo() { return rows(w<QListWidget>("lstSystemInfo")); }
  QStringList view() { return rows(w<QListWidget>("lstReadView")); }
  bool shown(const QString& name) { return !w(name)->isHidden(); }

 private slots:
  void init() {
    dialogs_ = ScriptedDialogs();
    setDialogs(&dialogs_);
  }
  void cleanup() {
    panel_.reset();
    board_.reset();
    setDialogs(nullptr);
  }

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
      open(r.product);
      w<QTabBar>("tabStripchoice")->setCurrentIndex(1);
      const QByteArray p(r.product);
      QVERIFY2(shown("FraAFI") == r.afi && shown("FraDSFID") == r.afi, p);
      QVERIFY2(shown("FraKill") == r.kill, p);
      QVERIFY2(shown("cmdLockBlock") == r.lockBlock, p);
      QVERIFY2(shown("cmdGetMultipleBlockSecurityStatus"), p);
      QVERIFY2(shown("FraPasswordRF") == r.password, p);
      QVERIFY2(shown("cmdReadMultipleBlock") == r.readMultiple, p);
      QVERIFY2(shown("optExtensionFlag_0") == r.extensionShown && shown("optExtensionFlag_1") == r.extensionShown, p);
      QVERIFY2(w<QRadioButton>("optExtensionFlag_1")->isChecked() == r.extension1, p);
      QVERIFY2(shown("FraEnergyHarvesting") == r.harvesting, p);
      QVERIFY2(shown("cmdFastReadSingleBlock") && shown("cmdFastInitiate"), p);
    }
  }

  // The catalogue has no HORIZON model; a record renamed after the family word stands in.
  void theHorizonRowHidesTheVendorGroups() {
    for (const char* reference : {"HORIZON", "ABCDE-HORIZON2"}) {
      panel_.reset();
      board_ = std::make_unique<uitest::SimulatedBoard>();
      if (!board_->loaded()) qFatal("simulated board not loaded");
      glob::state() = glob::GlobVariables();
      glob::state().mcuRevision = "1.4.1";
      chooseProduct("VAX30");
      shell::currentProduct().Reference(reference);
      panel_ = std::make_unique<frmTL42RQ_ISO15693_UI>();
      panel_->show();
      const QByteArray p(reference);
      for (const char* hidden : {"FraAFI", "FraDSFID", "FraKill", "cmdLockBlock", "cmdGetMultipleBlockSecurityStatus",
                                 "FraPasswordRF", "cmdInitiate", "cmdInventoryInitiated", "cmdFastInitiate",
                                 "cmdFastInventoryInitiated", "cmdFastReadSingleBlock", "cmdFastReadMultipleBlock",
                                 "FraEnergyHarvesting", "lblNbData", "cboPageSize"})
        QVERIFY2(!shown(hidden), p + " " + hidden);
      // The extension options stay as designed: both shown, index 0 on.
      QVERIFY2(shown("optExtensionFlag_0") && shown("optExtensionFlag_1"), p);
      QVERIFY2(w<QRadioButton>("optExtensionFlag_0")->isChecked(), p);
      QVERIFY2(shown("cmdReadUser") && shown("cmdReadMultipleBlock") && shown("chkLockBits"), p);
    }
  }

  void systemInfoShowsTheSimulatedTag() {
    open("VAX30");
    chooseUid("E00200001A2B3C40");
    w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    click("cmdGetSystemInfo");
    QCOMPARE(request().toStdString(), "222B" + kUidA);
    QCOMPARE(systemInfo(), (QStringList{" UID : \t\tE00200001A2B3C40", " DSFID : \t\tA1h", " AFI : \t\t12h",
                                        " Memory size : \t3Fh", " Block size : \t03h", " IC reference : \t20h"}));
  }

  void systemInfoOfATwoByteTagByTheExtensionFlag() {
    open("VAS60E");
    chooseUid("E002000055667781");
    w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    click("cmdGetSystemInfo");
    QCOMPARE(request().toStdString(), "222B" + kUidB);
    QCOMPARE(systemInfo(), (QStringList{" UID : \t\tE002000055667781", " DSFID : \t\tB2h", " AFI : \t\t00h",
                                        " Memory size : \tN.A.", " Block size : \tN.A.", " IC reference : \t5Eh"}));
    w<QRadioButton>("optExtensionFlag_1")->setChecked(true);
    click("cmdGetSystemInfo");
    QCOMPARE(request().toStdString(), "2A2B" + kUidB);
    QCOMPARE(systemInfo().mid(3), (QStringList{" Memory size : \t07FFh", " Block size : \t03h", " IC reference : \t5Eh"}));
  }

  void afiWrittenThroughTheGridIsFoundByAnAfiInventory() {
    open("VAX30");
    w<QCheckBox>("chkInventoryAFIOptions")->setChecked(true);
    w<QLineEdit>("txtInventoryOptionalAFI")->setText("77");
    click("cmdInventory");
    QCOMPARE(request(), QString("36017700"));
    QCOMPARE(w<QListWidget>("lstTransponderUID")->count(), 2);  // header only: no tag has AFI 77

    chooseUid("E00200001A2B3C40");
    w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    userMode("00", "00");
    click("cmdWriteAFI");
    w<MaskedEdit>("mskFillPage")->setMaskedText("77");
    click("cmdWriteUser");
    QCOMPARE(request().toStdString(), "2227" + kUidA + "77");
    QCOMPARE(result(), QString("OK"));

    w<QTabBar>("tabStripchoice")->setCurrentIndex(0);
    click("cmdInventory");
    QCOMPARE(rows(w<QListWidget>("lstTransponderUID")),
             (QStringList{"\tUID\t\t\tDSFID", "", " 00\tE00200001A2B3C40\t\tA1"}));
    click("cmdGetSystemInfo");
    QCOMPARE(systemInfo()[2], QString(" AFI : \t\t77h"));

    // Locked, the AFI refuses the next write with the tag's error code.
    w<QTabBar>("tabStripchoice")->setCurrentIndex(1);
    click("cmdLockAFI");
    QCOMPARE(request().toStdString(), "2228" + kUidA);
    QCOMPARE(result(), QString("OK"));
    click("cmdWriteAFI");
    w<MaskedEdit>("mskFillPage")->setMaskedText("12");
    click("cmdWriteUser");
    QCOMPARE(result(), QString("12 : unknown error code"));
  }

  void sectorPasswordProtectsABlockUntilPresented() {
    open("VAS60E");
    chooseUid("E002000055667781");
    w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    userMode("0000", "0000");
    click("cmdReadUser");
    QCOMPARE(view(), QStringList{"0000   CA FE BA BE "});

    // Password 1 is zero on a fresh tag; presented, it may be changed.
    gridWrite("cmdPresentSectorPassword", "00 00 00 00 ");
    QCOMPARE(request().toStdString(), "22B302" + kUidB + "01" "00000000");
    QCOMPARE(result(), QString("OK"));
    gridWrite("cmdWriteSectorPassword", "11 22 33 44 ");
    QCOMPARE(request().toStdString(), "22B102" + kUidB + "01" "11223344");
    QCOMPARE(result(), QString("OK"));
    // Sector 0: reads and writes need password 1.
    click("cmdLockSectorPassword");
    w<MaskedEdit>("mskFillPage")->setMaskedText("0B");
    click("cmdWriteUser");
    QCOMPARE(request().toStdString(), "2AB202" + kUidB + "0000" "0B");
    QCOMPARE(result(), QString("OK"));

    click("cmdReadUser");
    QCOMPARE(view(), QStringList{"0000   (15) Block is read-protected"});
    click("cmdWriteSingleBlock");
    w<MaskedEdit>("PWData_0")->setMaskedText("01 02 03 04 ");
    click("cmdWriteUser");
    QCOMPARE(view(), QStringList{"0000   (12) Block is locked, content cannot be changed"});

    gridWrite("cmdPresentSectorPassword", "11 22 33 44 ");
    QCOMPARE(result(), QString("OK"));
    click("cmdReadUser");
    QCOMPARE(view(), QStringList{"0000   CA FE BA BE "});
  }

  void killSilencesTheTag() {
    open("VAX30");
    chooseUid("E00200001A2B3C40");
    click("cmdSelect");
    QCOMPARE(result(), QString("OK"));
    // Through the Select flag the kill frames reach the selected tag alone.
    w<QCheckBox>("chk_Select_Address_flag_0")->setChecked(true);
    userMode("00", "00");
    gridWrite("cmdWriteKill", "A5 A5 A5 A5 ");
    QCOMPARE(request(), QString("12B10200A5A5A5A5"));
    QCOMPARE(result(), QString("OK"));
    gridWrite("cmdKill", "A5 A5 A5 A5 ");
    QCOMPARE(request(), QString("12A60200A5A5A5A5"));
    QCOMPARE(result(), QString("OK"));

    w<QCheckBox>("chk_Select_Address_flag_0")->setChecked(false);
    w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
    click("cmdGetSystemInfo");
    QCOMPARE(w<QLineEdit>("txt_ISO15693_answer")->text(), QString("8700"));
    w<QTabBar>("tabStripchoice")->setCurrentIndex(0);
    click("cmdAntiCollisionIso15693");
    QCOMPARE(rows(w<QListWidget>("lstTransponderUID")),
             (QStringList{"\tUID\t\t\tDSFID", "", " 01\tE0020000ABCDEF12\t\tC3", " 02\tE002000055667781\t\tB2"}));
  }

  void initiatedTagAnswersTheFastInventoryOnlyAtTheDoubleRate() {
    open("VAX30");
    // Park the others, then initiate the VAX30 alone.
    for (const char* uid : {"E002000055667781", "E0020000ABCDEF12"}) {
      chooseUid(uid);
      w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(true);
      click("cmdStayQuiet");
    }
    w<QCheckBox>("chk_Select_Address_flag_1")->setChecked(false);
    click("cmdInventoryInitiated");
    QCOMPARE(w<QLineEdit>("txt_ISO15693_answer")->text(), QString("8700"));
    click("cmdInitiate");
    QCOMPARE(w<QListWidget>("lstTransponderUID")->item(2)->text(), QString(" 00\tE00200001A2B3C40\t\tA1"));
    click("cmdInventoryInitiated");
    QCOMPARE(w<QListWidget>("lstTransponderUID")->count(), 3);
    click("cmdFastInventoryInitiated");
    QCOMPARE(request(), QString("26C10200"));
    QCOMPARE(w<QListWidget>("lstTransponderUID")->item(2)->text(), QString(" 00\tE00200001A2B3C40\t\tA1"));
    // Sent as it stands while the chip is at "010D", the fast form gets no answer.
    w<QLineEdit>("txt_ISO15693_AnyFrame")->setText("26C10200");
    click("cmd_ISO15693_SendFrame");
    QCOMPARE(w<QLineEdit>("txt_ISO15693_answer")->text(), QString("8700"));
  }
};

QTEST_MAIN(Iso15693VendorBoardTest)
#include "Iso15693VendorBoardTest.moc"
