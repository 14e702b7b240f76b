// Every command of the ISO 14443-B panel, both faces, judges its own answer: a good
// command, then the tag leaves the field or the board is unplugged, then the command once
// more, against the simulated board. Only WUPB and Initiate keep what they showed, as the
// panel is meant to: an unanswered WUPB leaves the last values, a failed Initiate the old
// Chip Id.
#include <QtTest>

#include "Iso14443BUiSupport.h"
#include "support/OnBoard.h"

using namespace iso14443btest;

namespace {
const QStringList kReqbLabels{"lblReqBanswer_FirstByte", "lblReqBanswer_Pupi", "lblReqBanswer_ApplicationData",
                              "txtAttriBrequest_Pupi"};
}  // namespace

class Iso14443BOwnAnswerTest : public QObject {
  Q_OBJECT
  std::unique_ptr<uitest::OnBoard<frmTL42RQ_ISO14443B_UI>> f_;

  void open(const std::string& reference) {
    f_ = std::make_unique<uitest::OnBoard<frmTL42RQ_ISO14443B_UI>>(uitest::fixture("field_iso14443b.json"),
                                                                  [&] { chooseProduct(reference); });
  }
  std::function<void()> command(const QString& name) {
    return [this, name] { f_->click(name); };
  }
  std::function<void()> tagGone() {
    return [this] { f_->tagsGone(); };
  }
  std::function<void()> boardLost() {
    return [this] { f_->boardLost(); };
  }

 private slots:
  void cleanup() { f_.reset(); }

  void reqbAfterTheCardLeftShowsTheBareCaptions() {
    open("ISO14443-B");
    const uitest::TwoRuns r = uitest::goodThen(f_->panel.get(), kReqbLabels, command("cmd_ISO14443B_ReqB"), tagGone());
    QCOMPARE(r.good, (QStringList{"First Byte : 50", "Pupi : A1B2C3D4", "Application data : 11223344", "A1B2C3D4"}));
    QCOMPARE(r.after, (QStringList{"First Byte : ", "Pupi : ", "Application data : ", "00000000"}));
  }

  void wupbWithTheBoardUnpluggedLeavesTheLastValuesAsMeant() {
    open("ISO14443-B");
    const uitest::TwoRuns r = uitest::goodThen(f_->panel.get(), kReqbLabels, command("cmd_ISO14443B_WupB"), boardLost());
    QCOMPARE(r.good, (QStringList{"First Byte : 50", "Pupi : A1B2C3D4", "Application data : 11223344", "00000000"}));
    QCOMPARE(r.after, r.good);
    QCOMPARE(uitest::shows(f_->panel.get(), "txt_ISO14443B_answer"), QString());
  }

  void attribWithTheBoardUnpluggedShowsTheBareCaptions() {
    open("ISO14443-B");
    f_->click("cmd_ISO14443B_ReqB");
    const uitest::TwoRuns r = uitest::goodThen(f_->panel.get(), {"lblAttriBanswer_MBLI_CID", "lblAttriBanswer_Crc"},
                                               command("cmd_ISO14443B_Attrib"), boardLost());
    QCOMPARE(r.good[0], QString("MBLI(4 bits) CID(4 bits) : 0 0"));
    QCOMPARE(r.after, (QStringList{"MBLI(4 bits) CID(4 bits) : ", "CRC : "}));
  }

  void getUidAfterTheTagLeftEmptiesTheUidBoxAndInitiateKeepsTheChipId() {
    open("PDX54");
    f_->click("cmd_ISO14443B_Initiate");
    f_->click("cmd_ISO14443B_Select");
    const uitest::TwoRuns r =
        uitest::goodThen(f_->panel.get(), {"txt_ISO14443B_UID"}, command("cmd_ISO14443B_GetUID"), tagGone());
    QCOMPARE(r.good, QStringList{"D002330012345678"});
    QCOMPARE(r.after, QStringList{""});
    f_->click("cmd_ISO14443B_Initiate");
    QCOMPARE(uitest::shows(f_->panel.get(), "txt_ISO14443B_answer"), QString("8700"));
    QCOMPARE(uitest::shows(f_->panel.get(), "txt_ISO14443B_ChipID"), QString("57"));
  }

  void anticollisionAfterTheTagLeftShowsNoUidAndOnlyTheCellLabels() {
    open("PDX54");
    const uitest::TwoRuns r = uitest::goodThen(f_->panel.get(), {"txtAnticolUID"},
                                               command("cmd_ISO14443B_Anticollision"), tagGone());
    QCOMPARE(r.good, QStringList{"D002330012345678"});
    QCOMPARE(r.after, QStringList{""});
    QCOMPARE(uitest::find<QTableWidget>(f_->panel.get(), "fgISO14443Banticol")->item(0, 2)->text(), QString("7: "));
  }

  void readWithTheBoardUnpluggedGivesErrorRows() {
    open("PDX54");
    f_->click("cmd_ISO14443B_Anticollision");
    uitest::find<QLineEdit>(f_->panel.get(), "txtUserAddress_0")->setText("001");
    uitest::find<QLineEdit>(f_->panel.get(), "txtUserAddress_1")->setText("001");
    f_->click("cmd_ISO14443B_Read");
    QCOMPARE(rows(uitest::find<QListWidget>(f_->panel.get(), "lstReadView")), QStringList{"001   11 22 33 44 "});
    f_->boardLost();
    f_->click("cmd_ISO14443B_Read");
    QCOMPARE(rows(uitest::find<QListWidget>(f_->panel.get(), "lstReadView")), QStringList{"001   error code returned"});
  }
};

QTEST_MAIN(Iso14443BOwnAnswerTest)
#include "Iso14443BOwnAnswerTest.moc"
