// The console's response analyser against the simulated board when the board returns
// statuses other than 0 and 5, and answers at the length limit of the explanation: the
// answers come from the fixture field's overrides.
#include <QAbstractButton>
#include <QLineEdit>
#include <QtTest>

#include "console/ui/frmTL42RQ_UserInterface.h"
#include "support/OnBoard.h"

#include "ConsoleUiSupport.h"

using namespace consoletest;

namespace {

// The console's trace entry of one KQCmd at the fixed time.
std::string kqEntry(const std::string& request, const std::string& shown) {
  return "\r\n11-21-2026 10:20:30\t>>> TL42RQDll_KQCmd, " + request + "\r\n\t\t\t<<< " + shown;
}

}  // namespace

class ConsoleAnswerOverridesTest : public QObject {
  Q_OBJECT
  std::unique_ptr<uitest::OnBoard<frmTL42RQ_UserInterface>> f_;

  frmTL42RQ_UserInterface& open() {
    f_ = std::make_unique<uitest::OnBoard<frmTL42RQ_UserInterface>>(uitest::fixture("field_answers_console.json"));
    f_->panel->resize(1300, 900);
    return *f_->panel;
  }
  bool logEndsWith(const std::string& tail) { return f_->panel->log().text().ends_with(tail); }

 private slots:
  void cleanup() { f_.reset(); }

  // The general panel names no status: any status but 0 is a connection fault to it.
  void generalPanelShowsTheConnectionTextForStatus3() {
    uitest::FixedTime time;
    auto& p = open();
    p.selectCommandEntry(" 01 : IDN ");
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(text(&p, "txtCommandCodeXXAnswer"), QString("Transaction error : Check your reader connections"));
    QCOMPARE(shownLines(&p, "XX", 5), QStringList());
    QVERIFY(logEndsWith(kqEntry("01 0100", "Transaction error : Check your reader connections")));
  }

  // The 02, 07 and 0D panels give the status in decimal and the answer's first two characters.
  void protocolSelectPanelShowsStatus7AndTheAnswersCode() {
    uitest::FixedTime time;
    auto& p = open();
    p.selectCommandEntry(" 02 : Protocol Select ");
    click(&p, "OptProtocolCode_1");
    click(&p, "cmdSendCommandCode02");
    QCOMPARE(text(&p, "txtCommandCode02Answer"), QString("Transaction error : 7 (00)"));
    QCOMPARE(shownLines(&p, "02", 3), QStringList());
    QVERIFY(logEndsWith("\r\n\t\t\t<<< Transaction error : 7 (00)"));
  }

  void idlePanelShowsANegativeStatus() {
    auto& p = open();
    p.selectCommandEntry(" 07 : Idle ");
    click(&p, "cmdSendCommandCode07");
    QCOMPARE(text(&p, "txtCommandCode07Answer"), QString("Transaction error : -1 (82)"));
    QCOMPARE(shownLines(&p, "07", 2), QStringList());
    QVERIFY(logEndsWith("\r\n\t\t\t<<< Transaction error : -1 (82)"));
  }

  void filterPanelShowsStatus2WithAnEmptyAnswer() {
    auto& p = open();
    p.selectCommandEntry(frmTL42RQ_UserInterface::entryOf("0D"));
    click(&p, "OptCommad0D_1");
    click(&p, "cmdSendCommandCode0D");
    QCOMPARE(text(&p, "txtCommandCode0DAnswer"), QString("Transaction error : 2 ()"));
    QCOMPARE(shownLines(&p, "0D", 3), QStringList());
    QVERIFY(logEndsWith("\r\n\t\t\t<<< Transaction error : 2 ()"));
  }

  // 128 characters are explained; 129 give the message, in the box and in the log.
  void answerOf128CharactersIsExplainedAnd129AreRefused() {
    auto& p = open();
    p.selectCommandEntry(" 03 : Poll Field ");
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(text(&p, "txtCommandCodeXXAnswer").size(), 128);
    QCOMPARE(shownLines(&p, "XX", 5),
             (QStringList{"00 : Result code = OK", "3F : Lenght of Data (63)", "01 : Field is detected"}));
    click(&p, "cmdSendCommandCodeXX");
    QCOMPARE(text(&p, "txtCommandCodeXXAnswer"), QString("Not correct data sent by DEMO-TL42RQ-A"));
    QCOMPARE(shownLines(&p, "XX", 5), QStringList());
    QVERIFY(logEndsWith("\r\n\t\t\t<<< Not correct data sent by DEMO-TL42RQ-A"));
  }
};

QTEST_MAIN(ConsoleAnswerOverridesTest)
#include "ConsoleAnswerOverridesTest.moc"
