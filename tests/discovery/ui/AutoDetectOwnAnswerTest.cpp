// Every run of the auto-detection tool and every probe button shows its own outcome, against
// the simulated board: a good run or probe, then the tags leave or the board is unplugged,
// then one more. No result box may keep a tag that an earlier run or probe found.
#include "DiscoveryUiSupport.h"
#include "discovery/ui/frmTL42RQ_AutoDetectTool_UI.h"

using namespace discoverytest;

namespace {

const QStringList kShown{"lblTagDetected",            "lblTagDetection_result", "txtISO15693DetectTags",
                         "txtISO14443ADetectTags",    "txt_ISO14443B_REQB_result",
                         "txt_ISO14443B_anticollision_result_3", "txtFelicaDetectTags"};

}  // namespace

class AutoDetectOwnAnswerTest : public QObject {
  Q_OBJECT

  std::unique_ptr<uitest::FixedTime> time_;
  std::unique_ptr<uitest::OnBoard<frmTL42RQ_AutoDetectTool_UI>> f_;

  QObject* panel() { return f_->panel.get(); }
  void tick(std::initializer_list<int> boxes) {
    for (int i : boxes) click(panel(), QString("chkTagDetSelectProtocols_%1").arg(i));
  }
  void start() { click(panel(), "cmd_Auto_Detection_Process"); }
  std::function<void()> tagsGone() {
    return [this] { QCOMPARE(f_->board.loadField(kNoTagField), 0); };
  }

 private slots:
  void init() {
    time_ = std::make_unique<uitest::FixedTime>();
    f_ = toolOnBoard<frmTL42RQ_AutoDetectTool_UI>(uitest::fixture("field_discovery.json"));
  }
  void cleanup() {
    f_.reset();
    time_.reset();
  }

  void aRunAfterTheTagsLeftFindsNothingAndShowsNothing() {
    tick({0, 1, 2, 3, 4});
    const uitest::TwoRuns r = uitest::goodThen(panel(), kShown, [this] { start(); }, tagsGone());
    QCOMPARE(r.good, (QStringList{"Detected Tag", "1 ISO15693 1 ISO14443-A 1 ISO14443-B 1 ISO14443-B 1 FELICA",
                                  "UID = E0022A0012345678", "2B3C4D40", "50A1B2C3D400000000008171",
                                  "3 : Chip ID = 23", "1201012E4CD2A3B4C5D60120220427674EFF"}));
    QCOMPARE(r.after, (QStringList{"No Detected Tag", "", "", "", "", "3 : ", ""}));
  }

  void aRunWithTheBoardUnpluggedShowsNoTag() {
    tick({0, 4});
    const uitest::TwoRuns r = uitest::goodThen(panel(), kShown, [this] { start(); },
                                               [this] { QCOMPARE(f_->board.setBoardPresent(false), 0); });
    QCOMPARE(r.good, (QStringList{"Detected Tag", "1 ISO15693 1 FELICA", "UID = E0022A0012345678", "", "",
                                  "3 : ", "1201012E4CD2A3B4C5D60120220427674EFF"}));
    QCOMPARE(r.after, (QStringList{"No Detected Tag", "", "", "", "", "3 : ", ""}));
  }

  void aRunThatProbesOtherProtocolsShowsNoTagOfTheRunBefore() {
    tick({0, 4});
    const uitest::TwoRuns r = uitest::goodThen(panel(), kShown, [this] { start(); }, [this] {
      tagsGone()();
      tick({0, 4, 1});  // FeliCa and ISO 15693 off, ISO 14443-A on
    }, [this] { start(); });
    QCOMPARE(r.good[6], QString("1201012E4CD2A3B4C5D60120220427674EFF"));
    QCOMPARE(r.after, (QStringList{"No Detected Tag", "", "", "", "", "3 : ", ""}));
  }

  void eachProbeButtonAfterTheTagsLeftEmptiesItsBox() {
    tick({0, 1, 2, 3, 4});
    start();
    QCOMPARE(f_->board.loadField(kNoTagField), 0);
    // The last probe of the run selected FeliCa: its button finds nothing now.
    click(panel(), "cmdFelica_AntiCollision");
    QCOMPARE(text(panel(), "txtFelicaDetectTags"), QString());
    QCOMPARE(text(panel(), "txt_AutoDetect_answer"), QString("8700"));
  }

  void theInventoryButtonWithTheBoardUnpluggedEmptiesItsBox() {
    tick({0});
    start();
    QCOMPARE(text(panel(), "txtISO15693DetectTags"), QString("UID = E0022A0012345678"));
    QCOMPARE(f_->board.setBoardPresent(false), 0);
    click(panel(), "cmdISO15693_AntiCollision");
    QCOMPARE(text(panel(), "txtISO15693DetectTags"), QString());
    QCOMPARE(text(panel(), "txt_AutoDetect_answer"), QString());
  }
};

QTEST_MAIN(AutoDetectOwnAnswerTest)
#include "AutoDetectOwnAnswerTest.moc"
