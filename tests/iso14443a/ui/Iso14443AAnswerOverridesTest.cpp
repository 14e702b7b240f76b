// The ISO 14443-A anticollision process against the simulated board when the board gives
// answers the simulated tag never gives: a REQA answered with "90", and the argument "00"
// after the anticollision code.
#include <QTimer>

#include "Iso14443AUiSupport.h"
#include "support/OnBoard.h"

using namespace iso14443atest;
using uitest::Answer;

class Iso14443AAnswerOverridesTest : public QObject {
  Q_OBJECT

  std::unique_ptr<uitest::OnBoard<frmTL42RQ_ISO14443A_UI>> f_;

  frmTL42RQ_ISO14443A_UI& open(const std::vector<Answer>& answers) {
    f_.reset();
    f_ = std::make_unique<uitest::OnBoard<frmTL42RQ_ISO14443A_UI>>(
        uitest::fieldWithAnswers("field_answers_iso14443a.json", answers), [] { chooseProduct("ISO14443-A"); });
    f_->panel->log().clear();
    return *f_->panel;
  }
  template <typename T = QWidget>
  T* w(const QString& name) {
    return f_->w<T>(name);
  }
  void click(const QString& name) { f_->click(name); }
  QString textOf(const QString& name) { return w<QLineEdit>(name)->text(); }
  QString cell(int r, int c) {
    auto* item = w<QTableWidget>("fgAnticolProcess")->item(r, c);
    return item ? item->text() : QString();
  }
  QStringList row(int r) { return {cell(r, 0), cell(r, 1), cell(r, 2)}; }
  QStringList analysis() {
    QStringList out;
    for (int i = 0; i < 6; ++i) out << w<QLabel>(QString("lblAnswerAnalysis_%1").arg(i))->text();
    return out;
  }
  // What the grid's second row and the analysis hold when the process first yields.
  struct AtFirstYield {
    QStringList anticol1Row;
    QStringList analysis;
  };
  AtFirstYield runCapturingFirstYield() {
    AtFirstYield seen;
    QTimer::singleShot(0, f_->panel.get(), [&] {
      seen.anticol1Row = row(2);
      seen.analysis = analysis();
    });
    click("cmd_ISO14443A_Anticol_Process");
    return seen;
  }

 private slots:
  void cleanup() { f_.reset(); }

  // The reference: the simulated tag answers REQA with "80"; the process analyses it and
  // yields before Anticol 1.
  void reqaAnsweredWith80IsAnalysedAndYieldsBeforeAnticol1() {
    open({});
    const AtFirstYield seen = runCapturingFirstYield();
    QCOMPARE(row(1), (QStringList{"REQ A", "2607 ", "80054400080000 "}));
    QCOMPARE(seen.anticol1Row, (QStringList{"", "", ""}));
    QVERIFY(!seen.analysis.join("").isEmpty());
    QCOMPARE(textOf("txtAnticolisionProcessUID"), QString("04A1B2C3D4E5F6"));
  }

  // "90": no analysis and no yield; Anticol 1 follows at once and the process runs on. An
  // overridden REQA never reaches the tag, so a WUPA wakes it first, as a second reader
  // command would.
  void reqaAnsweredWith90GoesOnToAnticol1WithoutAnalysis() {
    open({{"TL42RQDll_SendReceive", "2607", "9004440008"}});
    click("cmd_ISO14443A_WUPA");
    QCOMPARE(textOf("txt_ISO14443A_answer"), QString("80054400080000"));
    f_->panel->log().clear();
    uitest::FixedTime time;
    const AtFirstYield seen = runCapturingFirstYield();
    QCOMPARE(row(1), (QStringList{"REQ A", "2607 ", "9004440008 "}));
    // The first yield comes only after Select 1: Anticol 1 was already sent.
    QCOMPARE(seen.anticol1Row, (QStringList{"ANTICOL 1", "932008 ", "80088804A1B29F080000 "}));
    QCOMPARE(row(3), (QStringList{"SELECT 1", "93708804A1B29F28 ", "800604DA17080000 "}));
    QCOMPARE(row(5), (QStringList{"SELECT 2", "9570C3D4E5F60428 ", "800600FE51080000 "}));
    QCOMPARE(textOf("txtAnticolisionProcessUID"), QString("04A1B2C3D4E5F6"));
    QVERIFY(QString::fromStdString(f_->panel->log().text())
                .startsWith(QString::fromStdString(sendRecv("ISO14443-A REQA", "2607", "9004440008") +
                                                   sendRecv("ISO14443-A ANTICOL 1", "932008", "80088804A1B29F080000"))));
  }

  // "90" followed by a silent Anticol 1: the boxes stay empty, the run ends there.
  void reqaAnsweredWith90ThenNoTagEndsAtAnticol1() {
    open({{"TL42RQDll_SendReceive", "2607", "9004440008"}, {"TL42RQDll_SendReceive", "9320", "8700"}});
    click("cmd_ISO14443A_Anticol_Process");
    QCOMPARE(row(2), (QStringList{"ANTICOL 1", "932008 ", "8700 "}));
    QCOMPARE(row(3), (QStringList{"", "", ""}));
    QCOMPARE(analysis(), (QStringList{"", "", "", "", "", ""}));
    QCOMPARE(textOf("txtAnticolisionProcessUID"), QString());
  }

  // The argument "00" goes behind the code at both levels: "9300" + "08", "9500" + "08".
  void argument00IsSentAtLevelOneAndTwo() {
    open({{"TL42RQDll_SendReceive", "930008", "80088804A1B29F080000"},
          {"TL42RQDll_SendReceive", "950008", "8008C3D4E5F604080000"}});
    w<QLineEdit>("txtISO14443A_Anticol_Arg")->setText("00");
    click("cmd_ISO14443A_Anticol_Process");
    QCOMPARE(row(2), (QStringList{"ANTICOL 1", "930008 ", "80088804A1B29F080000 "}));
    QCOMPARE(row(3), (QStringList{"SELECT 1", "93708804A1B29F28 ", "800604DA17080000 "}));
    QCOMPARE(row(4), (QStringList{"ANTICOL 2", "950008 ", "8008C3D4E5F604080000 "}));
    QCOMPARE(row(5), (QStringList{"SELECT 2", "9570C3D4E5F60428 ", "800600FE51080000 "}));
    QCOMPARE(row(6), (QStringList{"", "", ""}));
    QCOMPARE(textOf("txtAnticolisionProcessUID"), QString("04A1B2C3D4E5F6"));
  }
};

QTEST_MAIN(Iso14443AAnswerOverridesTest)
#include "Iso14443AAnswerOverridesTest.moc"
