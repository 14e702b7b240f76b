// The ISO 14443-B panel against the simulated board when the board gives answers the
// simulated cards never give: a first ATQB byte other than "50", answers "80" whose tail
// flags an error, and a Get UID with fewer than eight data bytes.
#include <QtTest>

#include "Iso14443BUiSupport.h"
#include "support/OnBoard.h"
#include "common/crc.h"

using namespace iso14443btest;
using uitest::Answer;

namespace {
// A frame of a card as the chip reports it: "80", length, frame, CRC_B, then the tail.
std::string cardAnswer(const std::string& frame, const std::string& tail = "00") {
  char length[3];
  std::snprintf(length, sizeof length, "%02X", static_cast<unsigned>(frame.size() / 2 + 3));
  return "80" + std::string(length) + frame + crc16Text(frame) + tail;
}
}  // namespace

class Iso14443BAnswerOverridesTest : public QObject {
  Q_OBJECT
  std::unique_ptr<uitest::FixedTime> time_;
  std::unique_ptr<uitest::OnBoard<frmTL42RQ_ISO14443B_UI>> f_;

  void open(const std::string& reference, const std::vector<Answer>& answers) {
    f_ = std::make_unique<uitest::OnBoard<frmTL42RQ_ISO14443B_UI>>(
        uitest::fieldWithAnswers("field_iso14443b.json", answers), [&] { chooseProduct(reference); });
  }
  template <typename T = QWidget>
  T* w(const QString& name) {
    return f_->w<T>(name);
  }
  void click(const QString& name) { f_->click(name); }
  QString text(const QString& name) { return w<QLineEdit>(name)->text(); }
  QString caption(const QString& name) { return w<QLabel>(name)->text(); }
  QStringList reqbCaptions() {
    QStringList out;
    for (const char* name : {"lblReqBanswer", "lblReqBanswer_FirstByte", "lblReqBanswer_Pupi",
                             "lblReqBanswer_ApplicationData", "lblReqBanswer_ProtocolInfo", "lblReqBanswer_Crc"})
      out << caption(name);
    return out;
  }
  static QStringList decoded(const std::string& a) {
    const QString q = QString::fromStdString(a);
    return {"Answer : " + q.mid(4, 32),          "First Byte : " + q.mid(4, 2),       "Pupi : " + q.mid(6, 8),
            "Application data : " + q.mid(14, 8), "Protocol Info : " + q.mid(22, 8), "Crc : " + q.mid(30, 4)};
  }

 private slots:
  void init() { time_ = std::make_unique<uitest::FixedTime>(); }
  void cleanup() {
    f_.reset();
    time_.reset();
  }

  void firstAtqbByteOtherThan50IsDecodedWithoutComplaint() {
    const std::string atqb = cardAnswer("51" "A1B2C3D4" "11223344" "008171");
    open("ISO14443-B", {{"TL42RQDll_SendReceive", "0500F0", atqb}});
    click("cmd_ISO14443B_ReqB");
    QCOMPARE(text("txt_ISO14443B_answer"), QString::fromStdString(atqb));
    QCOMPARE(reqbCaptions(), decoded(atqb));
    QCOMPARE(caption("lblReqBanswer_FirstByte"), QString("First Byte : 51"));
    QCOMPARE(text("txtAttriBrequest_Pupi"), QString("A1B2C3D4"));
    QVERIFY(f_->panel->log().text().ends_with(sendRecv("REQB", "0500F0", atqb)));
  }

  // REQB resets its captions and the PUPI box, and decodes nothing of a flagged answer.
  void reqbAnswer80WithAFlaggedTailIsNotDecoded() {
    const std::string flagged = cardAnswer("50" "A1B2C3D4" "11223344" "008171", "01");
    open("ISO14443-B", {{"TL42RQDll_SendReceive", "0500F0", flagged}});
    click("cmd_ISO14443B_WupB");  // the card itself answers: every caption filled
    const QStringList byWupb = reqbCaptions();
    QCOMPARE(caption("lblReqBanswer_FirstByte"), QString("First Byte : 50"));
    w<QLineEdit>("txtAttriBrequest_Pupi")->setText("CAFEBABE");
    click("cmd_ISO14443B_ReqB");
    QCOMPARE(text("txt_ISO14443B_answer"), QString::fromStdString(flagged));
    QCOMPARE(reqbCaptions(), (QStringList{"Answer : ", "First Byte : ", "Pupi : ", "Application data : ",
                                          "Protocol Info : ", "Crc : "}));
    QCOMPARE(text("txtAttriBrequest_Pupi"), QString("00000000"));
    QVERIFY(byWupb != reqbCaptions());
  }

  // WUPB resets nothing: a flagged answer leaves the last decoded values standing.
  void wupbAnswer80WithAFlaggedTailLeavesTheLastValues() {
    const std::string flagged = cardAnswer("50" "0BADF00D" "00000000" "000000", "02");
    open("ISO14443-B", {{"TL42RQDll_SendReceive", "0500F8", flagged}});
    click("cmd_ISO14443B_ReqB");
    const QStringList byReqb = reqbCaptions();
    QCOMPARE(caption("lblReqBanswer_Pupi"), QString("Pupi : A1B2C3D4"));
    click("cmd_ISO14443B_WupB");
    QCOMPARE(text("txt_ISO14443B_answer"), QString::fromStdString(flagged));
    QCOMPARE(reqbCaptions(), byReqb);
    QCOMPARE(text("txtAttriBrequest_Pupi"), QString("A1B2C3D4"));
  }

  void attribAnswer80WithAFlaggedTailShowsNothing() {
    const std::string flagged = cardAnswer("00", "04");
    open("ISO14443-B", {{"TL42RQDll_SendReceive", "1D", flagged}});
    click("cmd_ISO14443B_Attrib");
    QCOMPARE(text("txt_ISO14443B_answer"), QString::fromStdString(flagged));
    QCOMPARE(caption("lblAttriBanswer_MBLI_CID"), QString("MBLI(4 bits) CID(4 bits) : "));
    QCOMPARE(caption("lblAttriBanswer_Crc"), QString("CRC : "));
  }

  // An Initiate answer "80" with another tail than "00" is no answer: the old Chip Id stays.
  void initiateWithAFlaggedTailLeavesTheOldChipId() {
    const std::string flagged = cardAnswer("3C", "01");
    open("PDX54", {{"TL42RQDll_SendReceive", "0600", flagged, 0, 1}});
    w<QLineEdit>("txt_ISO14443B_ChipID")->setText("A5");
    click("cmd_ISO14443B_Initiate");
    QCOMPARE(text("txt_ISO14443B_request"), QString("0600"));
    QCOMPARE(text("txt_ISO14443B_answer"), QString::fromStdString(flagged));
    QCOMPARE(text("txt_ISO14443B_ChipID"), QString("A5"));
    QVERIFY(f_->panel->log().text().ends_with(sendRecv("INITIATE", "0600", flagged)));
    // The override is used up: the family tag answers with its own Chip Id.
    click("cmd_ISO14443B_Initiate");
    QCOMPARE(text("txt_ISO14443B_answer"), QString::fromStdString(cardAnswer("57")));
    QCOMPARE(text("txt_ISO14443B_ChipID"), QString("57"));
  }

  // Three data bytes: the pieces at positions 19 to 13 are empty, and the tail byte at 11
  // comes first, so the box holds what there was.
  void getUidWithFewerThanEightDataBytesKeepsWhatThereWas() {
    open("PDX54", {{"TL42RQDll_SendReceive", "0B", "8005AABBCC00"}});
    click("cmd_ISO14443B_GetUID");
    QCOMPARE(text("txt_ISO14443B_answer"), QString("8005AABBCC00"));
    QCOMPARE(text("txt_ISO14443B_UID"), QString("00CCBBAA"));
    QVERIFY(f_->panel->log().text().ends_with(sendRecv("GET UID", "0B", "8005AABBCC00")));
  }
};

QTEST_MAIN(Iso14443BAnswerOverridesTest)
#include "Iso14443BAnswerOverridesTest.moc"
