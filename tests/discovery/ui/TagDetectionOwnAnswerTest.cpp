// Every cycle of the tag-detection tool shows its own outcome: a cycle woken by a tag with
// one tag of each protocol in the field, then the tags leave or the board is unplugged,
// then one more cycle, against the simulated board. The result boxes must not keep the
// tags the earlier cycle found.
#include <QPointer>

#include "DiscoveryUiSupport.h"
#include "discovery/ui/frmTL42RQ_TagDetection_UI.h"
#include "shell/ui/Dialogs.h"

using namespace discoverytest;

namespace {

const char* kEmptyField = R"({"board": {"chipName": "NFC TL42RQ"}, "antenna": {"detectLevel": 31}, "tags": []})";

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

  std::unique_ptr<uitest::SimulatedBoard> sim_;
  std::unique_ptr<uitest::FixedTime> time_;
  ScriptedDialogs dialogs_;
  QPointer<frmTL42RQ_TagDetection_UI> panel_;

  // Calibrated on the empty field, all five protocols ticked, then the tags come.
  void open() {
    glob::state() = glob::GlobVariables();
    glob::state().chipIdentification = "NFC TL42RQ";
    QCOMPARE(sim_->loadField(kEmptyField), 0);
    panel_ = new frmTL42RQ_TagDetection_UI;
    panel_->show();
    click(panel_, "cmd_TagDetection_calibration");
    for (int i = 0; i < 5; ++i) click(panel_, QString("chkTagDetSelectProtocols_%1").arg(i));
    QCOMPARE(sim_->loadField(uitest::fixture("field_discovery.json")), 0);
  }
  void detect() { click(panel_, "cmd_TagDetection_Detection"); }

 private slots:
  void init() {
    sim_ = std::make_unique<uitest::SimulatedBoard>();
    QVERIFY(sim_->loaded());
    sim_->reset();
    time_ = std::make_unique<uitest::FixedTime>();
    setDialogs(&dialogs_);
  }
  void cleanup() {
    delete panel_.data();
    setDialogs(nullptr);
    time_.reset();
    sim_.reset();
  }

  void aCycleWokenByTimeOutAfterTheTagsLeftShowsNoTagOfTheCycleBefore() {
    open();
    const uitest::TwoRuns r =
        uitest::goodThen(panel_, kShown, [this] { detect(); }, [this] { QCOMPARE(sim_->loadField(kEmptyField), 0); });
    QCOMPARE(r.good, kGoodCycle);
    QCOMPARE(r.after, (QStringList{"01", "No Detected Tag", "", "", "", "", "3 : ", ""}));
  }

  void aCycleWithTheBoardUnpluggedShowsNoReasonAndNoTag() {
    open();
    const uitest::TwoRuns r =
        uitest::goodThen(panel_, kShown, [this] { detect(); }, [this] { QCOMPARE(sim_->setBoardPresent(false), 0); });
    QCOMPARE(r.good, kGoodCycle);
    QCOMPARE(r.after, (QStringList{"", "No Detected Tag", "", "", "", "", "3 : ", ""}));
  }
};

QTEST_MAIN(TagDetectionOwnAnswerTest)
#include "TagDetectionOwnAnswerTest.moc"
