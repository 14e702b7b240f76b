// REQC of the ISO 18092 panel judges its own answer: a good REQC, then the tag leaves the
// field, the board is unplugged or the chip flags an error, then REQC once more, against
// the simulated board. The labels go back to their bare captions each time.
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

#include "iso18092/ui/frmTL42RQ_ISO18092_UI.h"
#include "support/OnBoard.h"

namespace {
const QStringList kShown{"txt_ISO18092_answer", "lblReqBanswer", "lblReqCanswer_ManufID",
                         "lblReqCanswer_ManufParameter"};
const QStringList kBare{"Answer : ", "Manuf ID : ", "Manuf Parameter : "};
}  // namespace

class Iso18092OwnAnswerTest : public QObject {
  Q_OBJECT
  std::unique_ptr<uitest::OnBoard<frmTL42RQ_ISO18092_UI>> f_;

  std::function<void()> reqc() {
    return [this] { f_->click("cmd_ISO18092_ReqC"); };
  }
  void checkGood(const QStringList& good) {
    QCOMPARE(good.size(), 4);
    QVERIFY(good[0].startsWith("8015" "1201012E4CD2A3B4C5D6"));
    QCOMPARE(good[2], QString("Manuf ID : 12"));
    QCOMPARE(good[3], QString("Manuf Parameter : 01012E4C"));
  }

 private slots:
  void init() { f_ = std::make_unique<uitest::OnBoard<frmTL42RQ_ISO18092_UI>>(uitest::fixture("field_felica.json")); }
  void cleanup() { f_.reset(); }

  void reqcAfterTheTagLeftShowsTheBareCaptions() {
    const uitest::TwoRuns r =
        uitest::goodThen(f_->panel.get(), kShown, reqc(), [this] { f_->tagsGone(); });
    checkGood(r.good);
    QCOMPARE(r.after, QStringList{"8700"} + kBare);
  }

  void reqcWithTheBoardUnpluggedShowsTheBareCaptions() {
    const uitest::TwoRuns r =
        uitest::goodThen(f_->panel.get(), kShown, reqc(), [this] { f_->boardLost(); });
    checkGood(r.good);
    QCOMPARE(r.after, QStringList{""} + kBare);
  }

  void reqcWithAnErrorFlaggedByTheChipShowsTheBareCaptions() {
    const uitest::TwoRuns r = uitest::goodThen(f_->panel.get(), kShown, reqc(), [this] {
      QCOMPARE(uitest::loadFieldWithAnswers(f_->board, "field_felica.json",
                                            {{"TL42RQDll_SendReceive", "00FFFF",
                                              "80151201012E4CD2A3B4C5D60120220427674EFF000002", 0, 1}}),
               0);
    });
    checkGood(r.good);
    QCOMPARE(r.after, QStringList{"80151201012E4CD2A3B4C5D60120220427674EFF000002"} + kBare);
  }
};

QTEST_MAIN(Iso18092OwnAnswerTest)
#include "Iso18092OwnAnswerTest.moc"
