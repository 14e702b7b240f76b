// Each line of a script logs its own answer: a script runs on a good board, then the tag
// leaves the field or the board is unplugged, then the script once more, against the
// simulated board. Only the saved Chip_Id goes from line to line, as the script tool is
// meant to: an initiate that nobody answers saves an empty one.
#include <QPlainTextEdit>
#include <QPushButton>
#include <QtTest>

#include "reader/Drivers.h"
#include "script/ui/frmTL42RQ_Script.h"
#include "shell/GlobVariables.h"
#include "shell/ui/Dialogs.h"
#include "support/UiTestSupport.h"

namespace {
const std::string T = "\r\n11-21-2026 10:20:30";
QString entry(const std::string& what, const std::string& answer) {
  return QString::fromStdString(T + "\t>>> " + what + "\r\n\t\t\t<<< " + answer);
}
const char* kEmptyField = R"({"board": {"present": true}, "tags": []})";
const char* kScript = "TL42RQDLL_SELECT, 03010180\r\nTL42RQ_PDYXX_INITIATE\r\nTL42RQ_PDYXX_SELECT";
}  // namespace

class ScriptOwnAnswerTest : public QObject {
  Q_OBJECT
  ScriptedDialogs dialogs_;
  std::unique_ptr<uitest::SimulatedBoard> board_;
  std::unique_ptr<uitest::FixedTime> time_;
  std::unique_ptr<frmTL42RQ_Script> panel_;

  // One launch of the script; the log it added.
  QString launch() {
    const std::size_t before = panel_->log().text().size();
    QTest::mouseClick(uitest::find<QPushButton>(panel_.get(), "cmdLaunchScript"), Qt::LeftButton);
    return QString::fromStdString(panel_->log().text().substr(before));
  }

 private slots:
  void init() {
    setDialogs(&dialogs_);
    glob::state() = glob::GlobVariables();
    board_ = std::make_unique<uitest::SimulatedBoard>();
    QVERIFY(board_->loaded());
    QCOMPARE(board_->loadField(uitest::fixture("field_iso14443b.json")), 0);
    board_->reset();
    time_ = std::make_unique<uitest::FixedTime>();
    panel_ = std::make_unique<frmTL42RQ_Script>();
    panel_->show();
    uitest::find<QPlainTextEdit>(panel_.get(), "rtfScriptLoadFileEdit")->setPlainText(kScript);
  }
  void cleanup() {
    panel_.reset();
    time_.reset();
    board_.reset();
    setDialogs(nullptr);
  }

  void afterTheTagLeftTheInitiateSavesAnEmptyChipId() {
    QCOMPARE(launch(), entry("TL42RQDLL_SELECT, 03010180", "0000") +
                           entry("TL42RQ_PDYXX_INITIATE", "80045742D600 (Chip_ID = 57)") +
                           entry("TL42RQ_PDYXX_SELECT (Chip_ID = 57)", "80045742D600"));
    QCOMPARE(board_->loadField(kEmptyField), 0);
    QCOMPARE(launch(), entry("TL42RQDLL_SELECT, 03010180", "0000") + entry("TL42RQ_PDYXX_INITIATE", "8700 (Chip_ID = )") +
                           entry("TL42RQ_PDYXX_SELECT (Chip_ID = )", "8700"));
  }

  void withTheBoardUnpluggedEveryLineLogsAnEmptyAnswer() {
    launch();
    QCOMPARE(board_->setBoardPresent(false), 0);
    QCOMPARE(launch(), entry("TL42RQDLL_SELECT, 03010180", "") + entry("TL42RQ_PDYXX_INITIATE", " (Chip_ID = )") +
                           entry("TL42RQ_PDYXX_SELECT (Chip_ID = )", ""));
  }
};

QTEST_MAIN(ScriptOwnAnswerTest)
#include "ScriptOwnAnswerTest.moc"
