// Each line of a script logs its own answer: a script runs on a good board, then the tag
// leaves the field or the board is unplugged, then the script once more, against the
// simulated board. Only the saved Chip_Id goes from line to line, as the script tool is
// meant to: an initiate that nobody answers saves an empty one.
#include <QPlainTextEdit>
#include <QPushButton>
#include <QtTest>

#include "script/ui/frmTL42RQ_Script.h"
#include "support/OnBoard.h"

namespace {
const std::string T = "\r\n11-21-2026 10:20:30";
QString entry(const std::string& what, const std::string& answer) {
  return QString::fromStdString(T + "\t>>> " + what + "\r\n\t\t\t<<< " + answer);
}
const char* kScript = "TL42RQDLL_SELECT, 03010180\r\nTL42RQ_PDYXX_INITIATE\r\nTL42RQ_PDYXX_SELECT";
}  // namespace

class ScriptOwnAnswerTest : public QObject {
  Q_OBJECT
  std::unique_ptr<uitest::FixedTime> time_;
  std::unique_ptr<uitest::OnBoard<frmTL42RQ_Script>> f_;

  // One launch of the script; the log it added.
  QString launch() {
    const std::size_t before = f_->panel->log().text().size();
    f_->click("cmdLaunchScript");
    return QString::fromStdString(f_->panel->log().text().substr(before));
  }

 private slots:
  void init() {
    time_ = std::make_unique<uitest::FixedTime>();
    f_ = std::make_unique<uitest::OnBoard<frmTL42RQ_Script>>(uitest::fixture("field_iso14443b.json"));
    f_->w<QPlainTextEdit>("rtfScriptLoadFileEdit")->setPlainText(kScript);
  }
  void cleanup() {
    f_.reset();
    time_.reset();
  }

  void afterTheTagLeftTheInitiateSavesAnEmptyChipId() {
    QCOMPARE(launch(), entry("TL42RQDLL_SELECT, 03010180", "0000") +
                           entry("TL42RQ_PDYXX_INITIATE", "80045742D600 (Chip_ID = 57)") +
                           entry("TL42RQ_PDYXX_SELECT (Chip_ID = 57)", "80045742D600"));
    f_->tagsGone();
    QCOMPARE(launch(), entry("TL42RQDLL_SELECT, 03010180", "0000") + entry("TL42RQ_PDYXX_INITIATE", "8700 (Chip_ID = )") +
                           entry("TL42RQ_PDYXX_SELECT (Chip_ID = )", "8700"));
  }

  void withTheBoardUnpluggedEveryLineLogsAnEmptyAnswer() {
    launch();
    f_->boardLost();
    QCOMPARE(launch(), entry("TL42RQDLL_SELECT, 03010180", "") + entry("TL42RQ_PDYXX_INITIATE", " (Chip_ID = )") +
                           entry("TL42RQ_PDYXX_SELECT (Chip_ID = )", ""));
  }
};

QTEST_MAIN(ScriptOwnAnswerTest)
#include "ScriptOwnAnswerTest.moc"
