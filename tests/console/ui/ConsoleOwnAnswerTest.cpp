// Every send of the console explains its own answer: a good command, then the board is
// unplugged, then the same command, against the simulated board. The explanation boxes of
// the good answer must not stay on the screen.
#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QtTest>

#include "console/ui/frmTL42RQ_UserInterface.h"
#include "support/OnBoard.h"

#include "ConsoleUiSupport.h"

using namespace consoletest;

namespace {

// The answer box and the explanation lines that are shown.
QStringList explained(QObject* root, const QString& suffix) {
  QStringList out{uitest::shows(root, "txtCommandCode" + suffix + "Answer")};
  for (int i = 0;; ++i) {
    auto* e = root->findChild<QLineEdit*>(QStringLiteral("txtCommandCode%1AnswerExplain_%2").arg(suffix).arg(i));
    if (!e) break;
    if (e->isVisible()) out << e->text();
  }
  return out;
}

}  // namespace

class ConsoleOwnAnswerTest : public QObject {
  Q_OBJECT
  std::unique_ptr<uitest::OnBoard<frmTL42RQ_UserInterface>> f_;

  std::function<void()> boardLost() {
    return [this] { f_->boardLost(); };
  }
  // Runs `command` on the good board and again with the board unplugged; what the panel
  // with this suffix explained after each.
  std::pair<QStringList, QStringList> goodThenLost(const QString& suffix, const std::function<void()>& command) {
    QStringList good;
    QStringList after;
    uitest::goodThen(
        f_->panel.get(), {}, [&] { command(); good = explained(f_->panel.get(), suffix); }, boardLost(),
        [&] { command(); after = explained(f_->panel.get(), suffix); });
    return {good, after};
  }

 private slots:
  void init() {
    f_ = std::make_unique<uitest::OnBoard<frmTL42RQ_UserInterface>>(uitest::fixture("field_basic.json"));
    f_->panel->resize(1300, 900);
  }
  void cleanup() { f_.reset(); }

  void idnWithTheBoardUnpluggedExplainsNothingOfTheGoodAnswer() {
    choose(f_->panel.get(), " 01 : IDN ");
    const auto [good, after] = goodThenLost("XX", [this] { click(f_->panel.get(), "cmdSendCommandCodeXX"); });
    QCOMPARE(good.size(), 4);
    QCOMPARE(good[1], QString("00 : Result code = OK"));
    QCOMPARE(after, QStringList{"Transaction error : Check your reader connections"});
  }

  void protocolSelectWithTheBoardUnpluggedExplainsNothingOfTheGoodAnswer() {
    choose(f_->panel.get(), " 02 : Protocol Select ");
    click(f_->panel.get(), "OptProtocolCode_1");
    const auto [good, after] = goodThenLost("02", [this] { click(f_->panel.get(), "cmdSendCommandCode02"); });
    // Line 2 is shown empty when the length is under 3.
    QCOMPARE(good, (QStringList{"0000", "00 : Result code = OK", "00 : Lenght of Data (0)", ""}));
    QCOMPARE(after, QStringList{"Transaction error : 5 ()"});
  }

  void echoWithTheBoardUnpluggedShowsAnEmptyAnswer() {
    const uitest::TwoRuns r = uitest::goodThen(f_->panel.get(), {"txtEchoAnswer"},
                                               [this] { click(f_->panel.get(), "cmdEcho"); }, boardLost());
    QCOMPARE(r.good, QStringList{"5500"});
    QCOMPARE(r.after, QStringList{""});
  }
};

QTEST_MAIN(ConsoleOwnAnswerTest)
#include "ConsoleOwnAnswerTest.moc"
