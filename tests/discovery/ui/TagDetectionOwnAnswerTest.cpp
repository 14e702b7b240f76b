// Every cycle of the tag-detection tool shows its own outcome: a cycle woken by a tag with
// one tag of each protocol in the field, then the tags leave or the board is unplugged,
// then one more cycle, against the simulated board. The result boxes must not keep the
// tags the earlier cycle found.
#include "DiscoveryUiSupport.h"
#include "discovery/ui/frmTL42RQ_TagDetection_UI.h"

using namespace discoverytest;

namespace {

const QStringList kShown{"txt_TagDetection_WUflags", "lblTagDetected",         "lblTagDetection_result",
                         "txtISO15693DetectTags",    "txtISO14443ADetectTags", "txt_ISO14443B_REQB_result",
                         "txt_ISO14443B_anticollision_result_2", "txtFelicaDetectTags"};
const QStringList kGoodCycle{"02",
                             "Detected Tag",
                             "1 ISO15693 1 ISO14443-A 1 ISO14443-B 1 FELICA",
                             "UID = E0022A0012345678",
                             "2B3C4D40",
                             "50A1B2C3D400000000008171",
                             "3 : Chip ID = 23",
                             "1201012E4CD2A3B4C5D60120220427674EFF"};

}  // namespace

class TagDetectionOwnAnswerTest : public QObject {
  Q_OBJECT

  std::unique_ptr<uitest::FixedTime> time_;
  std::unique_ptr<uitest::OnBoard<frmTL42RQ_TagDetection_UI>> f_;

  QObject* panel() { return f_->panel.get(); }
  // Calibrated on the empty field, all five protocols ticked, then the tags come.
  void open() {
    f_ = toolOnBoard<frmTL42RQ_TagDetection_UI>(kNoTagField);
    click(panel(), "cmd_TagDetection_calibration");
    for (int i = 0; i < 5; ++i) click(panel(), QString("chkTagDetSelectProtocols_%1").arg(i));
    QCOMPARE(f_->board.loadField(uitest::fixture("field_discovery.json")), 0);
  }
  void detect() { click(panel(), "cmd_TagDetection_Detection"); }

 private slots:
  void init() { time_ = std::make_unique<uitest::FixedTime>(); }
  void cleanup() {
    f_.reset();
    time_.reset();
  }

  void aCycleWokenByTimeOutAfterTheTagsLeftShowsNoTagOfTheCycleBefore() {
    open();
    const uitest::TwoRuns r =
        uitest::goodThen(panel(), kShown, [this] { detect(); }, [this] { QCOMPARE(f_->board.loadField(kNoTagField), 0); });
    QCOMPARE(r.good, kGoodCycle);
    QCOMPARE(r.after, (QStringList{"01", "No Detected Tag", "", "", "", "", "3 : ", ""}));
  }

  void aCycleWithTheBoardUnpluggedShowsNoReasonAndNoTag() {
    open();
    const uitest::TwoRuns r =
        uitest::goodThen(panel(), kShown, [this] { detect(); }, [this] { QCOMPARE(f_->board.setBoardPresent(false), 0); });
    QCOMPARE(r.good, kGoodCycle);
    QCOMPARE(r.after, (QStringList{"", "No Detected Tag", "", "", "", "", "3 : ", ""}));
  }
};

QTEST_MAIN(TagDetectionOwnAnswerTest)
#include "TagDetectionOwnAnswerTest.moc"
