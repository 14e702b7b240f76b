// The ISO 14443-A panel against the real simulated board, with the tags of
// field_iso14443a.json put into the field one at a time: the anticollision process on
// single, double and triple size UIDs and on two tags at once, reads of the tag's pages,
// writes checked in the board's dump, the TOPAZ commands and the NDEF read.
#include <QFile>

#include "Iso14443AUiSupport.h"
#include "support/OnBoard.h"

using namespace iso14443atest;

namespace {

// The fixture with the named tags in the field.
std::string fieldWith(std::initializer_list<const char*> products) {
  QFile f(QString::fromStdString(uitest::fixture("field_iso14443a.json")));
  if (!f.open(QIODevice::ReadOnly)) qFatal("fixture missing");
  std::string text = f.readAll().toStdString();
  for (const char* p : products) {
    const std::string out = std::string("\"product\": \"") + p + "\", \"inField\": false";
    const std::size_t at = text.find(out);
    if (at == std::string::npos) qFatal("no tag %s in the fixture", p);
    text.replace(at, out.size(), std::string("\"product\": \"") + p + "\", \"inField\": true");
  }
  return text;
}

// The memory of the tag with this product in the board's dump.
std::string memoryOf(const std::string& dump, const char* product) {
  std::size_t at = dump.find(std::string("\"product\": \"") + product + "\"");
  if (at == std::string::npos) return {};
  at = dump.find("\"memory\": \"", at);
  if (at == std::string::npos) return {};
  at += 11;
  return dump.substr(at, dump.find('"', at) - at);
}

}  // namespace

class Iso14443ASimulatedBoardTest : public QObject {
  Q_OBJECT

  std::unique_ptr<uitest::OnBoard<frmTL42RQ_ISO14443A_UI>> f_;

  frmTL42RQ_ISO14443A_UI& open(const std::string& product, std::initializer_list<const char*> tags) {
    f_.reset();
    f_ = std::make_unique<uitest::OnBoard<frmTL42RQ_ISO14443A_UI>>(fieldWith(tags), [&] { chooseProduct(product); });
    return *f_->panel;
  }
  template <typename T = QWidget>
  T* w(const QString& name) {
    return f_->w<T>(name);
  }
  void click(const QString& name) { f_->click(name); }
  QString textOf(const QString& name) { return w<QLineEdit>(name)->text(); }
  void setText(const QString& name, const QString& t) { w<QLineEdit>(name)->setText(t); }
  QString cell(int r, int c) { return w<QTableWidget>("fgAnticolProcess")->item(r, c)->text(); }
  QStringList row(int r) { return {cell(r, 0), cell(r, 1), cell(r, 2)}; }
  QStringList view() { return rows(w<QListWidget>("lstReadView")); }
  void range(const QString& from, const QString& to) {
    setText("txtUserAddress_0", from);
    setText("txtUserAddress_1", to);
  }

 private slots:
  void cleanup() { f_.reset(); }

  void theOpeningConfiguresTheSimulatedChip() {
    uitest::FixedTime time;
    open("ISO14443-A", {"single"});
    QCOMPARE(f_->panel->log().text(),
             echoEntry("5500") +
                 entry("TL42RQ CONFIGURATION : ISO14443-A protocol", "TL42RQDLL_SELECT", "02000180", "0000") +
                 entry("ISO14443-A : CONFIG", "TL42RQDLL_KQCmd", "01 09043A005804", "0000") +
                 entry("ISO14443-A : INCREASE DEMOD GAIN", "TL42RQDLL_KQCmd", "01 0904680101D1", "0000") +
                 entry("ISO14443-A : INCREASE DEC TOLERANCE", "TL42RQDLL_KQCmd",
                       "01 09110B00241204880F1F3F3F01000505005500", "0000") +
                 "\r\n");
  }

  void theProcessFindsASingleSizeUid() {
    open("ISO14443-A", {"single"});
    click("cmd_ISO14443A_Anticol_Process");
    QCOMPARE(textOf("txtAnticolisionProcessUID"), QString("1A2B3C4D"));
    QCOMPARE(row(1), (QStringList{"REQ A", "2607 ", "80050400080000 "}));
    QCOMPARE(row(2), (QStringList{"ANTICOL 1", "932008 ", "80081A2B3C4D40080000 "}));
    QCOMPARE(row(3), (QStringList{"SELECT 1", "93701A2B3C4D4028 ", "800608B6DD080000 "}));
    QCOMPARE(row(4), (QStringList{"", "", ""}));
  }

  void theProcessFindsADoubleSizeUidInRowsOneToFive() {
    open("ISO14443-A", {"double"});
    click("cmd_ISO14443A_Anticol_Process");
    QCOMPARE(textOf("txtAnticolisionProcessUID"), QString("04A1B2C3D4E5F6"));
    QCOMPARE(row(2), (QStringList{"ANTICOL 1", "932008 ", "80088804A1B29F080000 "}));
    QCOMPARE(row(3), (QStringList{"SELECT 1", "93708804A1B29F28 ", "800604DA17080000 "}));
    QCOMPARE(row(4), (QStringList{"ANTICOL 2", "952008 ", "8008C3D4E5F604080000 "}));
    QCOMPARE(row(5), (QStringList{"SELECT 2", "9570C3D4E5F60428 ", "800600FE51080000 "}));
    QCOMPARE(row(6), (QStringList{"", "", ""}));
    QCOMPARE(row(7), (QStringList{"", "", ""}));
  }

  void theProcessFindsATripleSizeUid() {
    open("ISO14443-A", {"triple"});
    click("cmd_ISO14443A_Anticol_Process");
    QCOMPARE(textOf("txtAnticolisionProcessUID"), QString("0102030405060708090A"));
    QCOMPARE(row(6), (QStringList{"ANTICOL 3", "932008 ", "80080708090A0C080000 "}));
    // The process's select of level 3 carries no UID: the tag does not take it.
    QCOMPARE(row(7), (QStringList{"SELECT 3", "937028 ", "8700 "}));
  }

  void twoTagsAtOnceGiveTheirBitsOnTopOfEachOther() {
    open("ISO14443-A", {"single", "double"});
    click("cmd_ISO14443A_Anticol_Process");
    QCOMPARE(row(1), (QStringList{"REQ A", "2607 ", "80054400880006 "}));
    // 1A 2B 3C 4D 40 and 88 04 A1 B2 9F: the first collision is bit 1 of byte 0.
    QCOMPARE(row(2), (QStringList{"ANTICOL 1", "932008 ", "80089A2FBDFFDF880001 "}));
    QCOMPARE(textOf("txtAnticolisionProcessUID"), QString("9A2FBDFF"));
    QCOMPARE(row(3), (QStringList{"SELECT 1", "93709A2FBDFFDF28 ", "8700 "}));
    QCOMPARE(row(4), (QStringList{"", "", ""}));
  }

  void singleCommandsActivateTheTagStepByStep() {
    open("ISO14443-A", {"single"});
    click("cmd_ISO14443A_REQA");
    QCOMPARE(textOf("txt_ISO14443A_answer"), QString("80050400080000"));
    click("cmd_ISO14443A_Anticol_0");
    QCOMPARE(textOf("txt_ISO14443A_answer"), QString("80081A2B3C4D40080000"));
    setText("txtUIDforSelect123", "1A2B3C4D40");
    click("cmd_ISO14443A_Select_0");
    QCOMPARE(textOf("txt_ISO14443A_answer"), QString("800608B6DD080000"));
    QCOMPARE(w<QLabel>("lblAnswerAnalysis_2")->text(), QString("08B6DD"));
    // The panel's HALT is the single byte 50: the tag drops back to idle, so REQA wakes it.
    click("cmd_ISO14443A_HALT");
    QCOMPARE(textOf("txt_ISO14443A_answer"), QString("8700"));
    click("cmd_ISO14443A_REQA");
    QCOMPARE(textOf("txt_ISO14443A_answer"), QString("80050400080000"));
    // A real HLTA through the free frame: then only WUPA wakes the tag.
    click("cmd_ISO14443A_Anticol_0");
    click("cmd_ISO14443A_Select_0");
    setText("txt_ISO14443A_AnyFrame", "500028");
    click("cmd_ISO14443A_SendFrame");
    click("cmd_ISO14443A_REQA");
    QCOMPARE(textOf("txt_ISO14443A_answer"), QString("8700"));
    click("cmd_ISO14443A_WUPA");
    QCOMPARE(textOf("txt_ISO14443A_answer"), QString("80050400080000"));
  }

  void readShowsTheTagsPages() {
    open("ISO14443-A", {"single"});
    click("cmd_ISO14443A_Anticol_Process");
    range("00", "03");
    click("cmd_ISO14443A_Read");
    QCOMPARE(view(), (QStringList{"00   1A 2B 3C 4D ", "01   40 00 00 00 ", "02   00 00 00 00 ", "03   E1 10 06 00 ",
                                  "04   00 01 02 03 ", "05   04 05 06 07 ", "06   08 09 0A 0B "}));
    QCOMPARE(textOf("txt_ISO14443A_request"), QString("300428"));
    // Through the top of the tag's sixteen pages the read rolls over to page 0.
    range("0E", "0E");
    click("cmd_ISO14443A_Read");
    QCOMPARE(view(), (QStringList{"0E   28 29 2A 2B ", "0F   2C 2D 2E 2F ", "10   1A 2B 3C 4D ", "11   40 00 00 00 "}));
  }

  void writeChangesTheTagsMemory() {
    open("ISO14443-A", {"single"});
    click("cmd_ISO14443A_Anticol_Process");
    range("05", "05");
    click("cmd_ISO14443A_Write");
    f_->panel->pageView()->PWData(0)->setMaskedText("CA FE BA BE ");
    click("cmdWriteUser");
    QCOMPARE(textOf("txt_ISO14443A_request"), QString("A205CAFEBABE28"));
    QCOMPARE(textOf("txt_ISO14443A_answer"), QString("90040A"));
    QCOMPARE(view(), (QStringList{"05   Error code"}));
    QCOMPARE(memoryOf(f_->board.dumpField(), "single").substr(0, 56),
             std::string("1A2B3C4D" "40000000" "00000000" "E1100600" "00010203" "CAFEBABE" "08090A0B"));
    // The compatibility write: two frames, of which the tag writes the first four bytes.
    range("06", "06");
    click("cmd_ISO14443A_Write_compatibility");
    f_->panel->pageView()->mskFillPage()->setMaskedText("77");
    click("cmdWriteUser");
    QCOMPARE(memoryOf(f_->board.dumpField(), "single").substr(40, 24), std::string("CAFEBABE" "77777777" "0C0D0E0F"));
    // A write to the UID page is refused with a NAK.
    range("01", "01");
    click("cmd_ISO14443A_Write");
    click("cmdWriteUser");
    QCOMPARE(textOf("txt_ISO14443A_answer"), QString("900400"));
    QCOMPARE(memoryOf(f_->board.dumpField(), "single").substr(8, 8), std::string("40000000"));
  }

  void topazRidFillsTheBoxesAndWriteEChangesAByte() {
    open("TOPAZ", {"topaz"});
    click("cmd_ISO14443A_TOPAZ_REQA");
    QCOMPARE(textOf("txt_ISO14443A_answer"), QString("80050C00080000"));
    click("cmd_ISO14443A_TOPAZ_RID");
    QCOMPARE(textOf("txt_ISO14443A_answer"), QString("800B11485E7A1122B92C080000"));
    QCOMPARE(textOf("txtHR0_TOPAZ"), QString("11"));
    QCOMPARE(textOf("txtHR1_TOPAZ"), QString("48"));
    QCOMPARE(textOf("txtUID_cmdSelect"), QString("5E7A1122"));
    range("0D", "0D");
    click("cmd_ISO14443A_TOPAZ_Write_E");
    f_->panel->pageView()->PWData(0)->setMaskedText("22 ");
    click("cmdWriteUser");
    QCOMPARE(textOf("txt_ISO14443A_request"), QString("530D225E7A1122A8"));
    QCOMPARE(view(), (QStringList{"0D   (00) No error during Prog sequence"}));
    QCOMPARE(memoryOf(f_->board.dumpField(), "topaz").substr(0x0D * 2, 2), std::string("22"));
    range("0C", "0F");
    click("cmd_ISO14443A_Read");
    QCOMPARE(view(), (QStringList{"0C   03 ", "0D   22 ", "0E   D1 ", "0F   01 "}));
    range("0E", "0E");
    click("cmd_ISO14443A_TOPAZ_Write_NE");
    f_->panel->pageView()->PWData(0)->setMaskedText("20 ");
    click("cmdWriteUser");
    QCOMPARE(memoryOf(f_->board.dumpField(), "topaz").substr(0x0E * 2, 2), std::string("F1"));
  }

  void topazRidOnASilentFieldLeavesTheBoxesEmpty() {
    open("TOPAZ", {});
    click("cmd_ISO14443A_TOPAZ_RID");
    QCOMPARE(textOf("txt_ISO14443A_answer"), QString("8700"));
    QCOMPARE(textOf("txtHR0_TOPAZ"), QString());
    QCOMPARE(textOf("txtUID_cmdSelect"), QString());
  }

  void readNdefDecodesTheTagsMessage() {
    open("ISO14443-A", {"double"});
    QVERIFY(w("FraNDEFiso14443A")->isHidden());
    QVERIFY(w("lblInternetLink")->isHidden());
    f_->panel->cmdReadNdefIso1443A_Click();
    QCOMPARE(w<QPlainTextEdit>("txtNDEFmessage")->toPlainText(),
             QString(" https://www.example.com"
                     "SMART POSTER record : \n"
                     " http://www.example.org"
                     "TL42RQ"
                     "ACTION : \ntype : 'act'\n- do the action\n"));
    QVERIFY(!w("lblInternetLink")->isHidden());
    QVERIFY(!w("lblDetectedUrl")->isHidden());
    QCOMPARE(w<QLabel>("lblInternetLink")->text(), QString("http://www.example.org"));
    QCOMPARE(w<QLabel>("lblDetectedUrl")->text(), QString("URL : "));
    const std::string log = f_->panel->log().text();
    for (const char* frame : {">>> TL42RQDLL_SENDRECV, 300328", ">>> TL42RQDLL_SENDRECV, 300728",
                              ">>> TL42RQDLL_SENDRECV, 300B28", ">>> TL42RQDLL_SENDRECV, 300F28"})
      QVERIFY2(log.find(frame) != std::string::npos, frame);
    // The fifth read repeats the fourth.
    const std::string fifteen = "ISO14443-A READ\r\n\t\t\t>>> TL42RQDLL_SENDRECV, 300F28";
    QVERIFY(log.find(fifteen, log.find(fifteen) + 1) != std::string::npos);
    // The frame stays hidden: no handler shows it.
    QVERIFY(w("FraNDEFiso14443A")->isHidden());
  }

  void readNdefWithoutATagDecodesNothing() {
    open("ISO14443-A", {});
    f_->panel->cmdReadNdefIso1443A_Click();
    QCOMPARE(w<QPlainTextEdit>("txtNDEFmessage")->toPlainText(), QString());
    const std::string log = f_->panel->log().text();
    // REQA unanswered, then one read that fails, and nothing more.
    QVERIFY(log.find("300328") != std::string::npos);
    QCOMPARE(log.find("300728"), std::string::npos);
    QVERIFY(w("lblInternetLink")->isHidden());
  }
};

QTEST_MAIN(Iso14443ASimulatedBoardTest)
#include "Iso14443ASimulatedBoardTest.moc"
