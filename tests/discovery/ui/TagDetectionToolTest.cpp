// The tag-detection tool on a fake board: the calibration's frames, trace lines and band,
// its guards and "with ReadReg"; the detection's frames, reason marks, probes after a tag
// wake-up, result label and loops; the level buttons; closing during a loop.
#include <QMdiArea>
#include <QPointer>
#include <QTimer>

#include "DiscoveryUiSupport.h"
#include "discovery/TextCut.h"
#include "discovery/ui/ShapeMark.h"
#include "discovery/ui/frmTL42RQ_TagDetection_UI.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/MainForm.h"

using namespace discoverytest;

namespace {

// The high level of an Idle request "01070E" + ... : frame byte 13.
int highLevel(const std::string& request) {
  return static_cast<int>(discovery::hexFieldValue(request.substr(2 + 13 * 2, 2)));
}
int lowLevel(const std::string& request) {
  return static_cast<int>(discovery::hexFieldValue(request.substr(2 + 12 * 2, 2)));
}

// A chip whose detector reads `level` with no tag: below the band or above it wakes it by
// tag detection; the register keeps the last reason.
struct DetectorChip {
  int level = 31;
  std::string lastReason = "00";
  std::function<std::string(const std::string&)> handler() {
    return [this](const std::string& request) {
      if (request.rfind("010803", 0) == 0) return "0001" + lastReason;
      lastReason = level < lowLevel(request) || level > highLevel(request) ? "02" : "01";
      return "0001" + lastReason;
    };
  }
};

struct Fixture {
  FakeBoard board;
  DetectorChip chip;
  uitest::FixedTime time;
  ScriptedDialogs dialogs;
  QPointer<frmTL42RQ_TagDetection_UI> panel;

  explicit Fixture(const std::string& chipIdentification = "NFC TL42RQ") {
    glob::state() = glob::GlobVariables();
    glob::state().chipIdentification = chipIdentification;
    board.idle = chip.handler();
    reader::setDriver(&board.driver);
    setDialogs(&dialogs);
    panel = new frmTL42RQ_TagDetection_UI;
    panel->show();
  }
  ~Fixture() {
    delete panel.data();
    setDialogs(nullptr);
    reader::setDriver(nullptr);
  }
  std::string log() const { return panel->log().text(); }
  QLineEdit* field(const QString& name) { return uitest::find<QLineEdit>(panel, name); }
  void calibrate() { click(panel, "cmd_TagDetection_calibration"); }
  void detect() { click(panel, "cmd_TagDetection_Detection"); }
  void tick(std::initializer_list<int> boxes) {
    for (int i : boxes) click(panel, QString("chkTagDetSelectProtocols_%1").arg(i));
  }
  QColor mark(const QString& name) { return uitest::find<ShapeMark>(panel, name)->colour(); }
  bool lamp(int i) { return uitest::find<ShapeMark>(panel, QString("ShapTagDetected_%1").arg(i))->isVisibleTo(panel); }
  std::vector<std::string> kqRequests() const { return board.sent(Op::KQCmd); }
};

const std::string kSetup = "01 090460011800";
std::string calibrationFrame(const std::string& high) { return "01 070E03A100F8011800206060" "00" + high + "3F01"; }
std::string detectionFrame(const std::string& low, const std::string& high) {
  return "01 070E0B210079011800206060" + low + high + "3F01";
}

}  // namespace

class TagDetectionToolTest : public QObject {
  Q_OBJECT
 private slots:
  void openingShowsTheStartFieldsAndSendsNothing() {
    Fixture f;
    QCOMPARE(f.panel->windowTitle(), QString("   Tag Detection Tool  user interface  "));
    QVERIFY(f.board.driver.calls().empty());
    QCOMPARE(f.field("txtWUPeriod")->text(), QString("20"));
    QCOMPARE(f.field("txtOscStart")->text(), QString("60"));
    QCOMPARE(f.field("txtDacStart")->text(), QString("60"));
    QCOMPARE(f.field("txtSwingsCnt")->text(), QString("3F"));
    QCOMPARE(f.field("txtTimeOut")->text(), QString("01"));
    QCOMPARE(f.field("txt_TagDetection_DacDataL_value")->text(), QString("00"));
    QCOMPARE(f.field("txt_TagDetection_DacDataH_value")->text(), QString("FF"));
    QCOMPARE(text(f.panel, "lblDacDataL_result"), QString("DacDataL"));
    QCOMPARE(text(f.panel, "lblDacDataH_result"), QString("DacDataH"));
    QCOMPARE(text(f.panel, "lbl_TagDetection_Calibration_Answer"), QString("WUFlags"));
    QVERIFY(!uitest::find<QWidget>(f.panel, "lbl_TagDetection_Calibration_Answer")->isVisibleTo(f.panel));
    QVERIFY(!uitest::find<QWidget>(f.panel, "txt_TagDetection_Calibr_WUflags")->isVisibleTo(f.panel));
    QVERIFY(!uitest::find<QWidget>(f.panel, "shapCalibration_WuReason")->isVisibleTo(f.panel));
    auto* readReg = uitest::find<QCheckBox>(f.panel, "chkWithReadRg");
    QVERIFY(!readReg->isChecked());
    QVERIFY(readReg->isVisibleTo(f.panel));
    QCOMPARE(readReg->text(), QString("with ReadReg"));
    QVERIFY(uitest::find<QRadioButton>(f.panel, "pot_TagDetection_AWuCycleEnd_0")->isChecked());
    QVERIFY(!uitest::find<QRadioButton>(f.panel, "pot_TagDetection_AWuCycleEnd_0")->isVisibleTo(f.panel));
    QVERIFY(!uitest::find<QRadioButton>(f.panel, "pot_TagDetection_AWuCycleEnd_1")->isVisibleTo(f.panel));
    QCOMPARE(text(f.panel, "txt_ISO14443B_anticollision_result_0"), QString("1 : "));
    QCOMPARE(text(f.panel, "txt_ISO14443B_anticollision_result_14"), QString("15 : "));
    QCOMPARE(uitest::find<QPushButton>(f.panel, "cmd_TagDetection_Detection")->text(), QString("Launch Tag Detection"));
    QVERIFY(!f.panel->loopDetection);
    QVERIFY(f.panel->loopOnce);
    QVERIFY(!f.panel->loopUntilDetected);
    for (int i = 0; i < 5; ++i)
      QVERIFY(!uitest::find<QCheckBox>(f.panel, QString("chkTagDetSelectProtocols_%1").arg(i))->isChecked());
  }

  void chipMarkedZeroAtCharacter18ForcesReadRegisterOnAndHidden() {
    Fixture f("NFC TL42RQ ABCDEF0");
    auto* readReg = uitest::find<QCheckBox>(f.panel, "chkWithReadRg");
    QVERIFY(readReg->isChecked());
    QVERIFY(!readReg->isVisibleTo(f.panel));
  }

  void calibrationFindsTheBandAroundTheLevel() {
    Fixture f;
    f.calibrate();
    const std::string expected =
        echo("5500") + stepLine("-> 1st step : VERIFY detection with DacDataH=0x00 (min value)") +
        kq(calibrationFrame("00"), "000102") +
        stepLine("-> 2nd step : VERIFY no detection with DacDataH=0xFC (max value)") +
        kq(calibrationFrame("FC"), "000101") + stepLine("-> 3rd step : Calibration with DacDataH=0x1F") +
        kq(calibrationFrame("7C"), "000101") + stepLine("-> 4th step : Calibration with DacDataH=0x0F") +
        kq(calibrationFrame("3C"), "000101") + stepLine("-> 5th step : Calibration with DacDataH=0x07") +
        kq(calibrationFrame("1C"), "000102") + stepLine("-> 6th step : Calibration with DacDataH=0x0B") +
        kq(calibrationFrame("2C"), "000101") + stepLine("-> 7th step : Calibration with DacDataH=0x09") +
        kq(calibrationFrame("24"), "000101") + stepLine("-> 8th step : Calibration with DacDataH=0x08") +
        kq(calibrationFrame("20"), "000101") +
        stepLine(" ---> Calibration result : DacDataL = 0x05 / DacDataH = 0x09");
    QCOMPARE(f.log(), expected);
    QCOMPARE(f.kqRequests().size(), std::size_t(8));
    QCOMPARE(f.kqRequests()[2], std::string("01070E03A100F8011800206060007C3F01"));
    QCOMPARE(text(f.panel, "lblDacDataL_result"), QString("DacDataL = 0x05"));
    QCOMPARE(text(f.panel, "lblDacDataH_result"), QString("DacDataH = 0x09"));
    QCOMPARE(f.field("txt_Calibration_DacDataL_result")->text(), QString("14"));
    QCOMPARE(f.field("txt_Calibration_DacDataH_result")->text(), QString("24"));
    QCOMPARE(f.field("txt_TagDetection_DacDataL_value")->text(), QString("14"));
    QCOMPARE(f.field("txt_TagDetection_DacDataH_value")->text(), QString("24"));
    QCOMPARE(f.field("txt_TagDetection_Calibr_WUflags")->text(), QString("01"));
    QCOMPARE(f.mark("shapCalibration_WuReason"), ShapeMark::faceColour());
    // The Idle answers went into the request box.
    QCOMPARE(f.field("txt_TagDetection_request")->text(), QString("000101"));
    QCOMPARE(f.field("txt_TagDetection_answer")->text(), QString("5500"));
    QVERIFY(uitest::find<QWidget>(f.panel, "shapCalibration_WuReason")->isVisibleTo(f.panel));
    QVERIFY(uitest::find<QPushButton>(f.panel, "cmd_TagDetection_calibration")->isEnabled());
  }

  void greenMarkWhenTheLastSearchStepDetects() {
    Fixture f;
    f.chip.level = 33;  // 33 > 0x20: the eighth step detects, final = code = 8
    f.calibrate();
    QCOMPARE(f.field("txt_TagDetection_Calibr_WUflags")->text(), QString("02"));
    QCOMPARE(f.mark("shapCalibration_WuReason"), ShapeMark::green());
    QCOMPARE(text(f.panel, "lblDacDataL_result"), QString("DacDataL = 0x06"));
    QCOMPARE(f.field("txt_Calibration_DacDataH_result")->text(), QString("28"));
  }

  void withReadRegisterEachStepMakesTwoExchanges() {
    Fixture f;
    click(f.panel, "chkWithReadRg");
    f.calibrate();
    QCOMPARE(f.kqRequests().size(), std::size_t(16));
    const std::string log = f.log();
    QVERIFY(log.find(stepLine("-> 1st step : VERIFY detection with DacDataH=0x00 (min value)") +
                     kq(calibrationFrame("00"), "000102") + kq("01 0803620100", "000102") +
                     stepLine("-> 2nd step : VERIFY no detection with DacDataH=0xFC (max value)")) != std::string::npos);
    QVERIFY(log.find(" ---> Calibration result : DacDataL = 0x05 / DacDataH = 0x09") != std::string::npos);
    QCOMPARE(f.kqRequests()[1], std::string("010803620100"));
  }

  void readRegisterReasonDecidesWhenItDiffersFromTheIdleAnswer() {
    Fixture f;
    click(f.panel, "chkWithReadRg");
    // The Idle answers carry no reason; only the register does.
    f.board.idle = [&](const std::string& request) {
      if (request.rfind("010803", 0) == 0) return std::string("000102");
      return std::string("0000");
    };
    f.calibrate();
    QVERIFY(f.log().find("-> Calibration process stopped : detection observed with DacDataH=0xFC") != std::string::npos);
  }

  void noDetectionAtTheLowestLevelStopsAndKeepsTheResultBoxes() {
    Fixture f;
    f.board.idle = [](const std::string&) { return std::string("000101"); };
    f.calibrate();
    QCOMPARE(f.log(), echo("5500") + stepLine("-> 1st step : VERIFY detection with DacDataH=0x00 (min value)") +
                          kq(calibrationFrame("00"), "000101") +
                          stepLine("-> Calibration process stopped : no detection observed with DacDataH=0x00"));
    QVERIFY(uitest::find<QWidget>(f.panel, "txt_TagDetection_Calibr_WUflags")->isVisibleTo(f.panel));
    QCOMPARE(f.field("txt_TagDetection_Calibr_WUflags")->text(), QString());
    QVERIFY(uitest::find<QPushButton>(f.panel, "cmd_TagDetection_Detection")->isEnabled());
  }

  void detectionAtTheHighestLevelStops() {
    Fixture f;
    f.board.idle = [](const std::string&) { return std::string("000102"); };
    f.calibrate();
    QVERIFY(f.log().rfind(stepLine("-> Calibration process stopped : detection observed with DacDataH=0xFC")) ==
            f.log().size() - stepLine("-> Calibration process stopped : detection observed with DacDataH=0xFC").size());
    QCOMPARE(f.kqRequests().size(), std::size_t(2));
  }

  void unreadableReasonStopsWithTheReadRegisterText() {
    Fixture f;
    int idles = 0;
    f.board.idle = [&](const std::string&) { return ++idles == 1 ? std::string("000102") : std::string("8200"); };
    f.calibrate();
    QVERIFY(f.log().find(stepLine("-> Calibration process stopped : read register value problem")) != std::string::npos);
    QCOMPARE(idles, 2);
  }

  void redMarkAndStopWhenASearchStepAnswersNeither() {
    Fixture f;
    int idles = 0;
    f.board.idle = [&](const std::string&) {
      ++idles;
      return idles == 1 ? std::string("000102") : idles == 2 ? std::string("000101") : std::string("000108");
    };
    f.calibrate();
    QCOMPARE(f.field("txt_TagDetection_Calibr_WUflags")->text(), QString("08"));
    QCOMPARE(f.mark("shapCalibration_WuReason"), ShapeMark::red());
    QCOMPARE(f.field("txt_Calibration_DacDataL_result")->text(), QString());
    QCOMPARE(text(f.panel, "lblDacDataL_result"), QString("DacDataL"));
  }

  void finalSixtyTwoPutsThreeDigitsIntoTheHighLevelUntilItsNextKeyUp() {
    Fixture f;
    // Detection at every level below the highest.
    f.board.idle = [](const std::string& request) {
      return highLevel(request) == 0xFC ? std::string("000101") : std::string("000102");
    };
    f.calibrate();
    QCOMPARE(text(f.panel, "lblDacDataH_result"), QString("DacDataH = 0x40"));
    QCOMPARE(f.field("txt_Calibration_DacDataH_result")->text(), QString("100"));
    QCOMPARE(f.field("txt_TagDetection_DacDataH_value")->text(), QString("100"));
    QCOMPARE(f.field("txt_TagDetection_DacDataL_value")->text(), QString("F0"));
    QTest::keyClick(f.field("txt_TagDetection_DacDataH_value"), Qt::Key_End);
    QCOMPARE(f.field("txt_TagDetection_DacDataH_value")->text(), QString("00"));
  }

  void chipTimingOutAtEveryLevelAfterTheFirstGuardEndsAtMinusOne() {
    Fixture f;
    int idles = 0;
    f.board.idle = [&](const std::string&) { return ++idles == 1 ? std::string("000102") : std::string("000101"); };
    f.calibrate();
    // The search walks down to code 0; final = -1 gives the low level 00 and the high 0x01.
    QVERIFY(f.log().find(stepLine("-> 8th step : Calibration with DacDataH=0x00") + kq(calibrationFrame("00"), "000101") +
                         stepLine(" ---> Calibration result : DacDataL = 0x00 / DacDataH = 0x01")) != std::string::npos);
    QCOMPARE(text(f.panel, "lblDacDataL_result"), QString("DacDataL = 0x00"));
    QCOMPARE(f.field("txt_Calibration_DacDataL_result")->text(), QString("00"));
    QCOMPARE(text(f.panel, "lblDacDataH_result"), QString("DacDataH = 0x01"));
    QCOMPARE(f.field("txt_Calibration_DacDataH_result")->text(), QString("04"));
    QCOMPARE(f.field("txt_TagDetection_DacDataH_value")->text(), QString("04"));
  }

  void echoFailingTwiceDoesNotStopTheCalibration() {
    Fixture f;
    f.board.driver.queue(Op::Echo, 1, "");
    f.board.driver.queue(Op::Echo, 1, "");
    f.calibrate();
    QVERIFY(f.log().rfind(echo("") + echo("") + stepLine("-> 1st step : VERIFY detection with DacDataH=0x00 (min value)"),
                          0) == 0);
    QCOMPARE(f.kqRequests().size(), std::size_t(8));
  }

  void idleOnStatus5ReconnectsWithoutRepeat() {
    Fixture f;
    f.board.driver.queue(Op::KQCmd, 5, "");
    f.calibrate();
    std::vector<std::string> ops;
    for (const auto& c : f.board.driver.calls()) ops.push_back(reader::info(c.op).symbol);
    QCOMPARE(ops, (std::vector<std::string>{"TL42RQDll_Echo", "TL42RQDll_KQCmd", "TL42RQDLL_USBconnect",
                                            "TL42RQDLL_USBhandlecheck"}));
    QVERIFY(f.log().find("-> Calibration process stopped : read register value problem") != std::string::npos);
  }

  void idleParameterFieldsGoIntoTheFrame() {
    Fixture f;
    for (const auto& [name, value] : std::vector<std::pair<QString, QString>>{
             {"txtWUPeriod", "10"}, {"txtOscStart", "50"}, {"txtDacStart", "40"}, {"txtSwingsCnt", "1F"}, {"txtTimeOut", "08"}})
      f.field(name)->setText(value);
    f.calibrate();
    QCOMPARE(f.kqRequests()[0], std::string("01070E03A100F801180010504000001F08"));
  }

  void parameterFieldKeyUpCutsToTwoDigitsAndKeepsEmpty() {
    Fixture f;
    QLineEdit* e = f.field("txtWUPeriod");
    e->clear();
    QTest::keyClick(e, Qt::Key_A);
    QCOMPARE(e->text(), QString("0A"));
    QTest::keyClick(e, Qt::Key_B);
    QCOMPARE(e->text(), QString("AB"));
    QTest::keyClick(e, Qt::Key_G);  // refused with a beep
    QCOMPARE(e->text(), QString("AB"));
    e->clear();
    QTest::keyClick(e, Qt::Key_Backspace);
    QCOMPARE(e->text(), QString());
  }

  void levelButtonsStopAtTheirEnds() {
    Fixture f;
    click(f.panel, "cmdDacDataL_minus");
    QCOMPARE(f.field("txt_TagDetection_DacDataL_value")->text(), QString("00"));
    click(f.panel, "cmdDacDataH_plus");
    QCOMPARE(f.field("txt_TagDetection_DacDataH_value")->text(), QString("FF"));
    click(f.panel, "cmdDacDataL_plus");
    QCOMPARE(f.field("txt_TagDetection_DacDataL_value")->text(), QString("01"));
    click(f.panel, "cmdDacDataH_minus");
    QCOMPARE(f.field("txt_TagDetection_DacDataH_value")->text(), QString("FE"));
    f.field("txt_TagDetection_DacDataL_value")->setText("0f");
    click(f.panel, "cmdDacDataL_plus");
    QCOMPARE(f.field("txt_TagDetection_DacDataL_value")->text(), QString("10"));
    QCOMPARE(uitest::find<QPushButton>(f.panel, "cmdDacDataL_minus")->text(), QString("-"));
    QCOMPARE(uitest::find<QPushButton>(f.panel, "cmdDacDataH_plus")->text(), QString("+"));
  }

  void detectionFrameCarriesTheLevelsAsTyped() {
    Fixture f;
    f.field("txt_TagDetection_DacDataL_value")->setText("10");
    f.field("txt_TagDetection_DacDataH_value")->setText("20");
    f.detect();
    QCOMPARE(f.kqRequests(), (std::vector<std::string>{"01090460011800", "01070E0B21007901180020606010203F01"}));
    f.board.driver.clearCalls();
    f.field("txt_TagDetection_DacDataL_value")->setText("00");
    f.field("txt_TagDetection_DacDataH_value")->setText("FF");
    f.detect();
    QCOMPARE(f.kqRequests()[1], std::string("01070E0B21007901180020606000FF3F01"));
  }

  void wakeUpByTimeOutShowsNoDetectedTag() {
    Fixture f;
    f.field("txt_TagDetection_DacDataL_value")->setText("14");
    f.field("txt_TagDetection_DacDataH_value")->setText("24");
    f.tick({0});
    f.detect();
    QCOMPARE(f.log(), echo("5500") + kq(kSetup, "0000") + kq(detectionFrame("14", "24"), "000101"));
    QCOMPARE(f.field("txt_TagDetection_WUflags")->text(), QString("01"));
    QCOMPARE(f.mark("shapWuReason"), ShapeMark::red());
    QCOMPARE(text(f.panel, "lblTagDetected"), QString("No Detected Tag"));
    QVERIFY(f.lamp(0));
    QVERIFY(!f.lamp(1));
    QVERIFY(f.board.sent().empty());
    // The setup's answer went into the answer box, the Idle answer into the request box.
    QCOMPARE(f.field("txt_TagDetection_answer")->text(), QString("0000"));
    QCOMPARE(f.field("txt_TagDetection_request")->text(), QString("000101"));
  }

  void tagWakeUpWithNoProtocolSelectedIsADetectionWithAnEmptyLabel() {
    Fixture f;
    f.chip.level = 15;
    f.field("txt_TagDetection_DacDataL_value")->setText("14");
    f.field("txt_TagDetection_DacDataH_value")->setText("24");
    f.detect();
    QCOMPARE(f.field("txt_TagDetection_WUflags")->text(), QString("02"));
    QCOMPARE(f.mark("shapWuReason"), ShapeMark::green());
    QCOMPARE(text(f.panel, "lblTagDetected"), QString("Detected Tag"));
    QCOMPARE(labelColour(f.panel, "lblTagDetected"), QColor(0, 0, 255));
    QCOMPARE(text(f.panel, "lblTagDetection_result"), QString());
    QVERIFY(f.lamp(1));
    QVERIFY(f.board.sent().empty());
  }

  void selectedProtocolFindingNothingAfterAWakeUpIsNoDetectionWithAGreenMark() {
    Fixture f;
    f.chip.level = 15;
    f.field("txt_TagDetection_DacDataL_value")->setText("14");
    f.tick({0});
    f.detect();
    QCOMPARE(f.mark("shapWuReason"), ShapeMark::green());
    QCOMPARE(text(f.panel, "lblTagDetected"), QString("No Detected Tag"));
    QVERIFY(!f.lamp(1));
    // The probe configured its protocol: the chip slept in between.
    QVERIFY(f.log().find(kq(detectionFrame("14", "FF"), "000102") + iso15693Configuration() +
                         sendRecv("INVENTORY", "260100", "8700")) != std::string::npos);
  }

  void tagWakeUpRunsTheSelectedProbesAndNamesTheTags() {
    Fixture f;
    f.chip.level = 15;
    f.field("txt_TagDetection_DacDataL_value")->setText("14");
    f.board.frames["260100"] = kInventoryAnswer;
    f.board.frames["2607"] = tagAnswer("4400");
    f.board.frames["932008"] = tagAnswer("1A2B3C4D40");
    f.board.frames["93701A2B3C4D4028"] = tagAnswer("08");
    f.board.frames["00FFFF0000"] = kReqcAnswer;
    f.tick({0, 1, 4});
    f.detect();
    QCOMPARE(text(f.panel, "lblTagDetection_result"), QString("1 ISO15693 1 ISO14443-A 1 FELICA"));
    QCOMPARE(text(f.panel, "lblTagDetected"), QString("Detected Tag"));
    QCOMPARE(text(f.panel, "txtISO15693DetectTags"), QString("UID = E0022A0012345678"));
    // The ISO 14443-A probe of this tool switches the radio off first.
    QVERIFY(f.log().find(sendRecv("INVENTORY", "260100", kInventoryAnswer) + rfOff() + iso14443AConfiguration()) !=
            std::string::npos);
  }

  void twoIso15693TagsAreNotNamedWhileThreePdyxxTagsAre() {
    Fixture f;
    f.chip.level = 0;
    f.field("txt_TagDetection_DacDataL_value")->setText("14");
    std::string collided = tagAnswer("0000" "7E5E3F56002A02E0", "03");
    collided.replace(24, 4, "ABCD");
    f.board.frames["260100"] = collided;
    f.tick({0});
    f.detect();
    QCOMPARE(text(f.panel, "lblTagDetection_result"), QString());
    QCOMPARE(text(f.panel, "lblTagDetected"), QString("No Detected Tag"));

    f.tick({0, 3});
    f.board.frames["0600"] = tagAnswer("11");
    f.board.frames["16"] = tagAnswer("11");
    f.board.frames["76"] = tagAnswer("17");
    f.board.frames["C6"] = tagAnswer("1C");
    f.detect();
    QCOMPARE(text(f.panel, "lblTagDetection_result"), QString("3 ISO14443-B "));
    QCOMPARE(text(f.panel, "lblTagDetected"), QString("Detected Tag"));
    QCOMPARE(text(f.panel, "txt_ISO14443B_anticollision_result_0"), QString("1 : Chip ID = 11"));
    QCOMPARE(text(f.panel, "txt_ISO14443B_anticollision_result_11"), QString("12 :Chip ID = 1C"));
  }

  void withBothIso14443BBoxesOnlyThePdyxxCountIsLookedAt() {
    Fixture f;
    f.chip.level = 0;
    f.field("txt_TagDetection_DacDataL_value")->setText("14");
    f.board.frames["0500F0"] = kReqbAnswer;
    f.tick({2, 3});
    f.detect();
    QCOMPARE(f.board.count(Op::SendReceive, "0500F0"), 1);
    QCOMPARE(text(f.panel, "lblTagDetection_result"), QString());
    QCOMPARE(text(f.panel, "lblTagDetected"), QString("No Detected Tag"));
  }

  void loopBoxesExcludeEachOther() {
    Fixture f;
    click(f.panel, "chkLoop");
    QVERIFY(f.panel->loopDetection);
    QVERIFY(!f.panel->loopOnce);
    click(f.panel, "chkLoop_While_detection");
    QVERIFY(!uitest::find<QCheckBox>(f.panel, "chkLoop")->isChecked());
    QVERIFY(!f.panel->loopDetection);
    QVERIFY(f.panel->loopUntilDetected);
    QVERIFY(!f.panel->loopOnce);
    click(f.panel, "chkLoop_While_detection");
    QVERIFY(!f.panel->loopUntilDetected);
    QVERIFY(f.panel->loopOnce);
  }

  void loopGoesOnAfterADetection() {
    Fixture f;
    f.chip.level = 0;
    f.field("txt_TagDetection_DacDataL_value")->setText("14");
    int idles = 0;
    f.board.onCall = [&](Op op, const std::string& request) {
      if (op == Op::KQCmd && request.rfind("01070E", 0) == 0 && ++idles == 4) click(f.panel, "chkLoop");
    };
    click(f.panel, "chkLoop");
    f.detect();
    QCOMPARE(idles, 4);
    QCOMPARE(text(f.panel, "lblTagDetected"), QString("Detected Tag"));
    QCOMPARE(f.board.count(Op::KQCmd, "01090460011800"), 4);
  }

  void loopUntilDetectedEndsWithDetectedTag() {
    Fixture f;
    f.field("txt_TagDetection_DacDataL_value")->setText("14");
    int idles = 0;
    f.board.onCall = [&](Op op, const std::string& request) {
      if (op == Op::KQCmd && request.rfind("01070E", 0) == 0 && ++idles == 3) f.chip.level = 15;  // a tag arrives
    };
    click(f.panel, "chkLoop_While_detection");
    f.detect();
    QCOMPARE(idles, 3);
    QCOMPARE(text(f.panel, "lblTagDetected"), QString("Detected Tag"));
    QVERIFY(uitest::find<QPushButton>(f.panel, "cmd_TagDetection_Detection")->isEnabled());
  }

  void aRunDisablesExactlyTheFourButtons() {
    Fixture f;
    std::map<QString, bool> enabled;
    f.board.onCall = [&](Op op, const std::string&) {
      if (op != Op::KQCmd) return;
      for (const char* name : {"cmd_TagDetection_calibration", "cmd_TagDetection_Detection", "cmdISO14443B_AntiCollision",
                               "cmdISO15693_AntiCollision", "cmdISO14443A_AntiCollision", "cmdFelica_AntiCollision",
                               "cmdDacDataL_plus", "chkLoop"})
        enabled[name] = uitest::find<QWidget>(f.panel, name)->isEnabled();
    };
    f.detect();
    for (const char* name : {"cmd_TagDetection_calibration", "cmd_TagDetection_Detection", "cmdISO14443B_AntiCollision",
                             "cmdISO15693_AntiCollision"})
      QVERIFY2(!enabled[name], name);
    for (const char* name : {"cmdISO14443A_AntiCollision", "cmdFelica_AntiCollision", "cmdDacDataL_plus", "chkLoop"})
      QVERIFY2(enabled[name], name);
  }

  void closingThePanelDuringTheLoopEndsIt() {
    Fixture f;
    int idles = 0;
    f.board.onCall = [&](Op op, const std::string& request) {
      if (op == Op::KQCmd && request.rfind("01070E", 0) == 0 && ++idles == 3)
        QTimer::singleShot(0, [&] { f.panel->close(); });
    };
    click(f.panel, "chkLoop");
    f.detect();
    QCOMPARE(idles, 3);
    QTRY_VERIFY(f.panel.isNull());
    QVERIFY(!glob::panelOpen(glob::PanelId::TagDetection));
  }

  void closingTheMainWindowDuringTheLoopNeverCrashes() {
    FakeBoard board;
    uitest::FixedTime time;
    glob::state() = glob::GlobVariables();
    reader::setDriver(&board.driver);
    {
      MainForm form;
      form.setEndsProcessOnClose(false);
      form.load(false);
      form.show();
      auto* panel = qobject_cast<frmTL42RQ_TagDetection_UI*>(form.openPanel(glob::PanelId::TagDetection));
      QVERIFY(panel);
      int idles = 0;
      board.onCall = [&](Op op, const std::string& request) {
        if (op == Op::KQCmd && request.rfind("01070E", 0) == 0 && ++idles == 4) QTimer::singleShot(0, [&] { form.close(); });
      };
      click(panel, "chkTagDetSelectProtocols_0");
      click(panel, "chkLoop");
      click(panel, "cmd_TagDetection_Detection");
      QCOMPARE(idles, 4);
      QTRY_VERIFY(form.mdiArea()->subWindowList().isEmpty());
    }
    QVERIFY(!glob::panelOpen(glob::PanelId::TagDetection));
    reader::setDriver(nullptr);
  }

  void closingDuringTheCalibrationNeverCrashes() {
    Fixture f;
    int idles = 0;
    f.board.onCall = [&](Op op, const std::string& request) {
      if (op == Op::KQCmd && request.rfind("01070E", 0) == 0 && ++idles == 3)
        QTimer::singleShot(0, [&] { f.panel->close(); });
    };
    f.calibrate();
    QTRY_VERIFY(f.panel.isNull());
    QCOMPARE(idles, 8);  // the search runs to its end: it has no stop
  }
};

QTEST_MAIN(TagDetectionToolTest)
#include "TagDetectionToolTest.moc"
