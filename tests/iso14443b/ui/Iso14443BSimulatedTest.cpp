// The ISO 14443-B panel against the simulated board, loaded as the program loads it,
// with the fixture field of one standard card and one family tag: REQB then ATTRIB with
// the PUPI that REQB copied; the family's slot inventory with one tag and with two; block
// reads and writes checked in the board's own dump of its field.
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include "Iso14443BUiSupport.h"
#include "support/OnBoard.h"
#include "common/crc.h"
#include "iso15693/ui/MemoryPageView.h"

using namespace iso14443btest;

namespace {
// A frame of a card as the chip reports it: "80", length, frame, CRC_B, tail 00.
std::string cardAnswer(const std::string& frame) {
  char length[3];
  std::snprintf(length, sizeof length, "%02X", static_cast<unsigned>(frame.size() / 2 + 3));
  return "80" + std::string(length) + frame + crc16Text(frame) + "00";
}

// The memory of the field's family tag, as the board dumps it.
QString familyMemory(uitest::SimulatedBoard& board) {
  const QJsonDocument doc = QJsonDocument::fromJson(QByteArray::fromStdString(board.dumpField()));
  for (const QJsonValue& tag : doc.object()["tags"].toArray())
    if (tag.toObject()["type"].toString() == "pdy") return tag.toObject()["memory"].toString();
  return "<no family tag>";
}
}  // namespace

class Iso14443BSimulatedTest : public QObject {
  Q_OBJECT
  std::unique_ptr<uitest::FixedTime> time_;
  std::unique_ptr<uitest::OnBoard<frmTL42RQ_ISO14443B_UI>> f_;

  void open(const std::string& reference, const std::string& field = uitest::fixture("field_iso14443b.json")) {
    f_ = std::make_unique<uitest::OnBoard<frmTL42RQ_ISO14443B_UI>>(field, [&] { chooseProduct(reference); });
  }
  template <typename T = QWidget>
  T* w(const QString& name) {
    return f_->w<T>(name);
  }
  void click(const QString& name) { f_->click(name); }
  QString text(const QString& name) { return w<QLineEdit>(name)->text(); }
  QString caption(const QString& name) { return w<QLabel>(name)->text(); }
  QString cell(int k) {
    QTableWidgetItem* item = w<QTableWidget>("fgISO14443Banticol")->item((k - 1) % 3, (k - 1) / 3);
    return item ? item->text() : QString();
  }

 private slots:
  void init() { time_ = std::make_unique<uitest::FixedTime>(); }
  void cleanup() {
    f_.reset();
    time_.reset();
  }

  void openingConfiguresTheChip() {
    open("ISO14443-B");
    QVERIFY(f_->panel->log().text().ends_with(
        entry("TL42RQ CONFIGURATION : ISO14443-B protocol", "TL42RQDLL_SELECT", "03010180", "0000") +
        entry("TL42RQ CONFIGURATION : INCREASE DEMOD GAIN", "TL42RQDLL_KQCMD", "01 090468010130", "0000")));
  }

  void reqbThenAttribWithTheCopiedPupi() {
    open("ISO14443-B");
    click("cmd_ISO14443B_ReqB");
    const std::string atqb = cardAnswer("50" "A1B2C3D4" "11223344" "008171");
    QCOMPARE(text("txt_ISO14443B_answer"), QString::fromStdString(atqb));
    QCOMPARE(caption("lblReqBanswer_FirstByte"), QString("First Byte : 50"));
    QCOMPARE(caption("lblReqBanswer_Pupi"), QString("Pupi : A1B2C3D4"));
    QCOMPARE(caption("lblReqBanswer_ApplicationData"), QString("Application data : 11223344"));
    QCOMPARE(caption("lblReqBanswer_ProtocolInfo"), QString::fromStdString("Protocol Info : 008171" + atqb.substr(28, 2)));
    QCOMPARE(caption("lblReqBanswer_Crc"), QString::fromStdString("Crc : " + atqb.substr(30, 4)));
    QCOMPARE(text("txtAttriBrequest_Pupi"), QString("A1B2C3D4"));

    click("cmd_ISO14443B_Attrib");
    const std::string attrib = cardAnswer("00");
    QCOMPARE(text("txt_ISO14443B_request"), QString("1DA1B2C3D400070100"));
    QCOMPARE(text("txt_ISO14443B_answer"), QString::fromStdString(attrib));
    QCOMPARE(caption("lblAttriBanswer_MBLI_CID"), QString("MBLI(4 bits) CID(4 bits) : 0 0"));
    QCOMPARE(caption("lblAttriBanswer_Crc"), QString::fromStdString("CRC : " + attrib.substr(6, 2)));
    QVERIFY(f_->panel->log().text().ends_with(sendRecv("ATTRIB", "1DA1B2C3D400070100", attrib)));

    // Active now: REQB finds nothing, and WUPB neither.
    click("cmd_ISO14443B_ReqB");
    QCOMPARE(text("txt_ISO14443B_answer"), QString("8700"));
    QCOMPARE(caption("lblReqBanswer_Pupi"), QString("Pupi : "));
  }

  void attribWithoutAnAnsweredRequestFindsNoCard() {
    open("ISO14443-B");
    w<QLineEdit>("txtAttriBrequest_Pupi")->setText("A1B2C3D4");
    click("cmd_ISO14443B_Attrib");
    QCOMPARE(text("txt_ISO14443B_answer"), QString("8700"));
    QCOMPARE(caption("lblAttriBanswer_MBLI_CID"), QString("MBLI(4 bits) CID(4 bits) : "));
  }

  void oneFamilyTagFillsOneCellIsSelectedAndShowsItsUid() {
    open("PDX54");
    click("cmd_ISO14443B_Anticollision");
    for (int k = 1; k <= 15; ++k)
      QCOMPARE(cell(k), k == 7 ? QString("7:  ChipID = 57 ") : QString("%1: ").arg(k));
    QCOMPARE(text("txt_ISO14443B_ChipID"), QString("57"));
    QCOMPARE(text("txtAnticolUID"), QString("D002330012345678"));
    QCOMPARE(text("txt_ISO14443B_UID"), QString());
    QVERIFY(f_->panel->log().text().ends_with(sendRecv("SELECT", "0E57", cardAnswer("57")) +
                                           sendRecv("GET UID", "0B", cardAnswer("78563412003302D0"))));
    // Selected: the single commands reach it.
    click("cmd_ISO14443B_GetUID");
    QCOMPARE(text("txt_ISO14443B_UID"), QString("D002330012345678"));
  }

  void twoFamilyTagsFillTwoCellsAndNoneIsSelected() {
    open("PDX54", R"({ "tags": [
      { "type": "pdy", "product": "PDX54", "uid": "D002000000000001", "chipId": "32" },
      { "type": "pdy", "product": "PDX54", "uid": "D002000000000002", "chipId": "A9" } ]})");
    click("cmd_ISO14443B_Anticollision");
    for (int k = 1; k <= 15; ++k) {
      QString expected = QString("%1: ").arg(k);
      if (k == 2) expected = "2:  ChipID = 32 ";
      if (k == 9) expected = "9:  ChipID = A9 ";
      QCOMPARE(cell(k), expected);
    }
    QCOMPARE(text("txtAnticolUID"), QString());
    QCOMPARE(text("txt_ISO14443B_ChipID"), QString("00"));
    // Initiate heard both at once.
    QVERIFY(f_->panel->log().text().find(sendRecv("INITIATE", "0600", "8600")) != std::string::npos);
    QVERIFY(f_->panel->log().text().ends_with(sendRecv("SLOT MARKER (15)", "F6", "8700")));
  }

  void singleCommandsWalkTheTagThroughItsStates() {
    open("PDX54");
    click("cmd_ISO14443B_Initiate");
    QCOMPARE(text("txt_ISO14443B_ChipID"), QString("57"));
    for (const char* box : {"txt_ISO14443B_SN_0", "txt_ISO14443B_SN_1", "txt_ISO14443B_SN_2"})
      w<QLineEdit>(box)->setText("1");
    click("cmd_ISO14443B_SlotMarker");  // slot 7
    QCOMPARE(text("txt_ISO14443B_request"), QString("76"));
    QCOMPARE(text("txt_ISO14443B_answer"), QString::fromStdString(cardAnswer("57")));
    click("cmd_ISO14443B_Pcall16");  // 57 is not in slot 0
    QCOMPARE(text("txt_ISO14443B_answer"), QString("8700"));
    click("cmd_ISO14443B_Select");
    QCOMPARE(text("txt_ISO14443B_answer"), QString::fromStdString(cardAnswer("57")));
    click("cmd_ISO14443B_Completion");
    QCOMPARE(text("txt_ISO14443B_answer"), QString("8700"));
    click("cmd_ISO14443B_GetUID");  // deactivated
    QCOMPARE(text("txt_ISO14443B_UID"), QString());
    QCOMPARE(text("txt_ISO14443B_answer"), QString("8700"));
  }

  void readAndWriteBlocksChangeTheTagsMemory() {
    open("PDX54");
    click("cmd_ISO14443B_Anticollision");
    QCOMPARE(text("txtAnticolUID"), QString("D002330012345678"));

    w<QLineEdit>("txtUserAddress_0")->setText("000");
    w<QLineEdit>("txtUserAddress_1")->setText("003");
    click("cmd_ISO14443B_Read");
    QCOMPARE(rows(w<QListWidget>("lstReadView")),
             (QStringList{"000   0A 0B 0C 0D ", "001   11 22 33 44 ", "002   55 66 77 88 ", "003   99 AA BB CC "}));

    w<QLineEdit>("txtUserAddress_0")->setText("005");
    w<QLineEdit>("txtUserAddress_1")->setText("005");
    click("cmd_ISO14443B_Write");
    w<MaskedEdit>("PWData_0")->setMaskedText("DE AD BE EF ");
    click("cmdWriteUser");
    QCOMPARE(text("txt_ISO14443B_request"), QString("0905DEADBEEF"));
    // The family never answers a write: the chip reports no tag, and the view says so.
    QCOMPARE(text("txt_ISO14443B_answer"), QString("8700"));
    QCOMPARE(rows(w<QListWidget>("lstReadView")), (QStringList{"005   Error code"}));
    QCOMPARE(familyMemory(f_->board).left(48), QString("0A0B0C0D" "11223344" "55667788" "99AABBCC" "00000000" "DEADBEEF"));

    click("cmd_ISO14443B_Read");
    QCOMPARE(rows(w<QListWidget>("lstReadView")), (QStringList{"005   DE AD BE EF "}));
  }

  void aPdx51ReadWrapsThroughItsSixteenBlocks() {
    open("PDX51", R"({ "tags": [
      { "type": "pdy", "product": "PDX51", "uid": "D002000000000001", "chipId": "01", "memory": "01020304" } ]})");
    click("cmd_ISO14443B_Initiate");
    click("cmd_ISO14443B_Select");
    w<QLineEdit>("txtUserAddress_0")->setText("0F");
    w<QLineEdit>("txtUserAddress_1")->setText("00");
    click("cmd_ISO14443B_Read");
    QCOMPARE(rows(w<QListWidget>("lstReadView")), (QStringList{"0F   00 00 00 00 ", "00   01 02 03 04 "}));
  }
};

QTEST_MAIN(Iso14443BSimulatedTest)
#include "Iso14443BSimulatedTest.moc"
