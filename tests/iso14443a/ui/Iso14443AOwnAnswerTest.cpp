// Every command of the ISO 14443-A panel judges its own answer: a good command, then the
// tag leaves the field, the board is unplugged or the board gives an error answer, then
// the command once more, against the simulated board. Nothing of the good run may stay
// in the analysis boxes, the TOPAZ boxes, the UID box or the page view.
#include <QFile>

#include "Iso14443AUiSupport.h"
#include "support/OnBoard.h"

using namespace iso14443atest;

namespace {

// The fixture with the named tag in the field.
std::string fieldWith(const char* product) {
  QFile f(QString::fromStdString(uitest::fixture("field_iso14443a.json")));
  if (!f.open(QIODevice::ReadOnly)) qFatal("fixture missing");
  std::string text = f.readAll().toStdString();
  const std::string out = std::string("\"product\": \"") + product + "\", \"inField\": false";
  const std::size_t at = text.find(out);
  if (at == std::string::npos) qFatal("no tag %s in the fixture", product);
  text.replace(at, out.size(), std::string("\"product\": \"") + product + "\", \"inField\": true");
  return text;
}

// The same field with one answer override of the board (docs/field-file.md).
std::string withAnswer(std::string field, const std::string& answer) {
  field.insert(field.find('{') + 1, "\"answers\": [" + answer + "],");
  return field;
}

const QStringList kAnalysis{"txt_ISO14443A_answer", "lblAnswerAnalysis_0", "lblAnswerAnalysis_1",
                            "lblAnswerAnalysis_2",  "lblAnswerAnalysis_3", "lblAnswerAnalysis_4",
                            "lblAnswerAnalysis_5"};
const QStringList kEmptyAnalysis{"", "", "", "", "", "", ""};

}  // namespace

class Iso14443AOwnAnswerTest : public QObject {
  Q_OBJECT

  std::unique_ptr<uitest::OnBoard<frmTL42RQ_ISO14443A_UI>> f_;

  void open(const std::string& product, const char* tag) {
    f_ = std::make_unique<uitest::OnBoard<frmTL42RQ_ISO14443A_UI>>(fieldWith(tag), [&] { chooseProduct(product); });
  }
  void click(const QString& name) { f_->click(name); }
  void setText(const QString& name, const QString& t) { f_->w<QLineEdit>(name)->setText(t); }
  QStringList view() { return rows(f_->w<QListWidget>("lstReadView")); }
  std::function<void()> tagGone() {
    return [this] { f_->tagsGone(); };
  }
  std::function<void()> boardLost() {
    return [this] { f_->boardLost(); };
  }
  // Write_E of one byte at 0D, as a person does it.
  void topazWriteE(const char* data) {
    setText("txtUserAddress_0", "0D");
    setText("txtUserAddress_1", "0D");
    click("cmd_ISO14443A_TOPAZ_Write_E");
    f_->panel->pageView()->PWData(0)->setMaskedText(data);
    click("cmdWriteUser");
  }

 private slots:
  void cleanup() { f_.reset(); }

  void reqaAfterTheTagLeftShowsOnlyItsOwnNoTagAnswer() {
    open("ISO14443-A", "single");
    const uitest::TwoRuns r = uitest::goodThen(f_->panel.get(), kAnalysis, [this] { click("cmd_ISO14443A_REQA"); }, tagGone());
    QCOMPARE(r.good, (QStringList{"80050400080000", "80", "05", "0400", "08", "00", "00"}));
    QCOMPARE(r.after, (QStringList{"8700", "", "", "", "", "", ""}));
  }

  void selectWithTheBoardUnpluggedShowsAnEmptyAnswerAndNoAnalysis() {
    open("ISO14443-A", "single");
    click("cmd_ISO14443A_REQA");
    click("cmd_ISO14443A_Anticol_0");
    setText("txtUIDforSelect123", "1A2B3C4D40");
    const uitest::TwoRuns r =
        uitest::goodThen(f_->panel.get(), kAnalysis, [this] { click("cmd_ISO14443A_Select_0"); }, boardLost());
    QCOMPARE(r.good, (QStringList{"800608B6DD080000", "80", "06", "08B6DD", "08", "00", "00"}));
    QCOMPARE(r.after, kEmptyAnalysis);
  }

  void anticollisionProcessAfterTheTagLeftKeepsNoUidAndNoRow() {
    open("ISO14443-A", "single");
    const QStringList names{"txtAnticolisionProcessUID", "txt_ISO14443A_answer", "lblAnswerAnalysis_0"};
    const uitest::TwoRuns r =
        uitest::goodThen(f_->panel.get(), names, [this] { click("cmd_ISO14443A_Anticol_Process"); }, tagGone());
    QCOMPARE(r.good, (QStringList{"1A2B3C4D", "800608B6DD080000", "80"}));
    QCOMPARE(r.after, (QStringList{"", "8700", ""}));
    auto* grid = uitest::find<QTableWidget>(f_->panel.get(), "fgAnticolProcess");
    QCOMPARE(grid->item(1, 2)->text(), QString("8700 "));
    QCOMPARE(grid->item(2, 2)->text(), QString(""));
    QCOMPARE(grid->item(3, 2)->text(), QString(""));
  }

  void readWithTheBoardUnpluggedGivesErrorRowsOnly() {
    open("ISO14443-A", "single");
    click("cmd_ISO14443A_Anticol_Process");
    setText("txtUserAddress_0", "04");
    setText("txtUserAddress_1", "04");
    const uitest::TwoRuns r = uitest::goodThen(f_->panel.get(), {"lblAnswerAnalysis_0", "lblAnswerAnalysis_2"},
                                               [this] { click("cmd_ISO14443A_Read"); }, boardLost());
    QCOMPARE(r.good, (QStringList{"80", "000102030405060708090A0B0C0D0E0F77F5"}));
    QCOMPARE(r.after, (QStringList{"", ""}));
    QCOMPARE(view(), (QStringList{"04   error", "05   error", "06   error", "07   error"}));
  }

  void topazRidAfterTheTagLeftEmptiesHr0Hr1AndUid() {
    open("TOPAZ", "topaz");
    click("cmd_ISO14443A_TOPAZ_REQA");
    const QStringList names{"txtHR0_TOPAZ", "txtHR1_TOPAZ", "txtUID_cmdSelect", "lblAnswerAnalysis_0"};
    const uitest::TwoRuns r =
        uitest::goodThen(f_->panel.get(), names, [this] { click("cmd_ISO14443A_TOPAZ_RID"); }, tagGone());
    QCOMPARE(r.good, (QStringList{"11", "48", "5E7A1122", "80"}));
    QCOMPARE(r.after, (QStringList{"", "", "", ""}));
  }

  void topazWriteAfterTheTagLeftShowsNoAnalysisOfTheGoodWrite() {
    open("TOPAZ", "topaz");
    click("cmd_ISO14443A_TOPAZ_REQA");
    click("cmd_ISO14443A_TOPAZ_RID");
    const QStringList names{"txt_ISO14443A_answer", "lblAnswerAnalysis_0", "lblAnswerAnalysis_1",
                            "lblAnswerAnalysis_2"};
    const uitest::TwoRuns r = uitest::goodThen(f_->panel.get(), names, [this] { topazWriteE("22 "); }, tagGone());
    QCOMPARE(r.good, (QStringList{"80070D222FBD080000", "80", "07", "0D222FBD080000"}));
    QCOMPARE(r.after, (QStringList{"8700", "", "", ""}));
    QCOMPARE(view(), (QStringList{"0D   Error code"}));
  }

  void topazWriteWithAnErrorAnswerShowsNoAnalysisOfTheRid() {
    open("TOPAZ", "topaz");
    click("cmd_ISO14443A_TOPAZ_REQA");
    const QStringList names{"txt_ISO14443A_answer", "lblAnswerAnalysis_0", "lblAnswerAnalysis_1",
                            "lblAnswerAnalysis_2"};
    // A collision flagged by the chip: "80" at the start, but the tail ends in the bit
    // index of the collision instead of "00".
    const uitest::TwoRuns r = uitest::goodThen(
        f_->panel.get(), names, [this] { click("cmd_ISO14443A_TOPAZ_RID"); },
        [this] {
          QCOMPARE(f_->board.loadField(withAnswer(fieldWith("topaz"), R"({"op": "TL42RQDll_SendReceive",
              "request": "530D", "answer": "80070D222FBD880102", "times": 1})")), 0);
        },
        [this] { topazWriteE("22 "); });
    QCOMPARE(r.good, (QStringList{"800B11485E7A1122B92C080000", "80", "0B", "11485E7A1122B92C080000"}));
    QCOMPARE(r.after, (QStringList{"80070D222FBD880102", "", "", ""}));
    QCOMPARE(view(), (QStringList{"0D   Error code"}));
  }
};

QTEST_MAIN(Iso14443AOwnAnswerTest)
#include "Iso14443AOwnAnswerTest.moc"
