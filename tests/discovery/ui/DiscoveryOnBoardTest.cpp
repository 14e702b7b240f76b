// Both discovery tools against the real simulated board: the calibration finds the band
// around the antenna's level, the chip sleeps and wakes by time-out or because a tag was
// put into the field, and the probes find the tags of every protocol.
#include <QPointer>
#include <vector>
#include <QTimer>

#include "DiscoveryUiSupport.h"
#include "discovery/ui/ShapeMark.h"
#include "discovery/ui/frmTL42RQ_AutoDetectTool_UI.h"
#include "discovery/ui/frmTL42RQ_TagDetection_UI.h"
#include "shell/ui/Dialogs.h"

using namespace discoverytest;

namespace {

// Forwards to the simulated board and tells the test of each call first, so that a test
// can change the field in the middle of a loop.
class WatchedDriver final : public reader::ReaderDriver {
 public:
  explicit WatchedDriver(reader::ReaderDriver& board) : board_(board) {}
  std::int32_t call(Op op, const char* request, char* answer) override {
    if (onCall) onCall(op, request ? std::string(request) : std::string());
    return board_.call(op, request, answer);
  }
  std::string description() const override { return board_.description(); }
  bool isSimulated() const override { return true; }
  std::function<void(Op, const std::string&)> onCall;

 private:
  reader::ReaderDriver& board_;
};

const char* kOneIso15693Tag = R"({"antenna": {"detectLevel": 31}, "tags": [
  {"type": "iso15693", "uid": "E0022A0012345678"}]})";

template <typename Tool>
struct WatchedTool {
  uitest::SimulatedBoard sim;
  WatchedDriver driver{sim.driver()};
  uitest::FixedTime time;
  ScriptedDialogs dialogs;
  QPointer<Tool> panel;

  explicit WatchedTool(const std::string& field) {
    glob::state() = glob::GlobVariables();
    glob::state().chipIdentification = "NFC TL42RQ";
    if (!sim.loaded()) qFatal("simulated board not loaded");
    if (sim.loadField(field) != 0) qFatal("field refused: %s", sim.lastError().c_str());
    sim.reset();
    reader::setDriver(&driver);
    setDialogs(&dialogs);
    panel = new Tool;
    panel->show();
  }
  ~WatchedTool() {
    delete panel.data();
    setDialogs(nullptr);
    reader::setDriver(&sim.driver());
  }
  std::string log() const { return panel->log().text(); }
  QLineEdit* field(const QString& name) { return uitest::find<QLineEdit>(panel, name); }
  void tick(std::initializer_list<int> boxes) {
    for (int i : boxes) click(panel, QString("chkTagDetSelectProtocols_%1").arg(i));
  }
  bool endsWith(const std::string& tail) const {
    const std::string l = log();
    return l.size() >= tail.size() && l.compare(l.size() - tail.size(), tail.size(), tail) == 0;
  }
};

using TagDetection = WatchedTool<frmTL42RQ_TagDetection_UI>;
using AutoDetect = WatchedTool<frmTL42RQ_AutoDetectTool_UI>;

std::string fieldWithLevel(int level) {
  return R"({"antenna": {"detectLevel": )" + std::to_string(level) + R"(}, "tags": []})";
}

}  // namespace

class DiscoveryOnBoardTest : public QObject {
  Q_OBJECT
 private slots:
  void calibrationWithAnEmptyFieldFindsTheBandAroundLevel31() {
    TagDetection t(kNoTagField);
    click(t.panel, "cmd_TagDetection_calibration");
    // The detector reads 31: the chip detects while 31 lies above the high level, up to
    // code 7 (byte 1C); the band is codes 5 to 9, bytes 14 to 24, around 31.
    QVERIFY(t.log().find(stepLine("-> 3rd step : Calibration with DacDataH=0x1F") +
                         kq("01 070E03A100F8011800206060007C3F01", "000101")) != std::string::npos);
    QVERIFY(t.endsWith(stepLine(" ---> Calibration result : DacDataL = 0x05 / DacDataH = 0x09")));
    QCOMPARE(t.field("txt_Calibration_DacDataL_result")->text(), QString("14"));
    QCOMPARE(t.field("txt_Calibration_DacDataH_result")->text(), QString("24"));
    QCOMPARE(t.field("txt_TagDetection_DacDataL_value")->text(), QString("14"));
    QCOMPARE(t.field("txt_TagDetection_DacDataH_value")->text(), QString("24"));
  }

  void calibrationFollowsTheAntennaLevel() {
    // Level 124 is code 31: the chip detects up to code 30, and the band 0x70 to 0x80
    // (codes 28 to 32) holds it.
    TagDetection t(fieldWithLevel(124));
    click(t.panel, "cmd_TagDetection_calibration");
    QVERIFY(t.endsWith(stepLine(" ---> Calibration result : DacDataL = 0x1C / DacDataH = 0x20")));
    QCOMPARE(t.field("txt_TagDetection_DacDataL_value")->text(), QString("70"));
    QCOMPARE(t.field("txt_TagDetection_DacDataH_value")->text(), QString("80"));
  }

  void calibrationWithReadRegisterReadsRegister62() {
    TagDetection t(kNoTagField);
    click(t.panel, "chkWithReadRg");
    click(t.panel, "cmd_TagDetection_calibration");
    QVERIFY(t.log().find(kq("01 070E03A100F801180020606000003F01", "000102") + kq("01 0803620100", "000102")) !=
            std::string::npos);
    QVERIFY(t.endsWith(stepLine(" ---> Calibration result : DacDataL = 0x05 / DacDataH = 0x09")));
  }

  void deadAntennaStopsTheCalibrationAtItsFirstGuard() {
    TagDetection t(fieldWithLevel(0));
    click(t.panel, "cmd_TagDetection_calibration");
    QVERIFY(t.endsWith(stepLine("-> Calibration process stopped : no detection observed with DacDataH=0x00")));
  }

  void detectionWithoutTagWakesByTimeOut() {
    TagDetection t(kNoTagField);
    click(t.panel, "cmd_TagDetection_calibration");
    t.tick({0});
    click(t.panel, "cmd_TagDetection_Detection");
    QVERIFY(t.endsWith(kq("01 090460011800", "0000") + kq("01 070E0B21007901180020606014243F01", "000101")));
    QCOMPARE(t.field("txt_TagDetection_WUflags")->text(), QString("01"));
    QCOMPARE(uitest::find<ShapeMark>(t.panel, "shapWuReason")->colour(), ShapeMark::red());
    QCOMPARE(text(t.panel, "lblTagDetected"), QString("No Detected Tag"));
  }

  void detectionWakesByTagDetectWhenATagIsPutIntoTheField() {
    TagDetection t(kNoTagField);
    click(t.panel, "cmd_TagDetection_calibration");
    t.tick({0});
    QCOMPARE(t.sim.loadField(kOneIso15693Tag), 0);
    click(t.panel, "cmd_TagDetection_Detection");
    QCOMPARE(t.field("txt_TagDetection_WUflags")->text(), QString("02"));
    QCOMPARE(uitest::find<ShapeMark>(t.panel, "shapWuReason")->colour(), ShapeMark::green());
    QCOMPARE(text(t.panel, "lblTagDetected"), QString("Detected Tag"));
    QCOMPARE(text(t.panel, "lblTagDetection_result"), QString("1 ISO15693 "));
    QCOMPARE(text(t.panel, "txtISO15693DetectTags"), QString("UID = E0022A0012345678"));
    QVERIFY(uitest::find<ShapeMark>(t.panel, "ShapTagDetected_1")->isVisibleTo(t.panel));
  }

  void farTagLeavesTheChipAsleepWhileANearOneWakesIt() {
    TagDetection t(kNoTagField);
    click(t.panel, "cmd_TagDetection_calibration");
    QCOMPARE(t.sim.loadField(R"({"antenna": {"detectLevel": 31}, "tags": [
        {"type": "iso15693", "uid": "E0022A0012345678", "distance": "far"}]})"), 0);
    click(t.panel, "cmd_TagDetection_Detection");
    QCOMPARE(t.field("txt_TagDetection_WUflags")->text(), QString("01"));
    QCOMPARE(t.sim.loadField(R"({"antenna": {"detectLevel": 31}, "tags": [
        {"type": "iso15693", "uid": "E0022A0012345678", "distance": "near"}]})"), 0);
    click(t.panel, "cmd_TagDetection_Detection");
    QCOMPARE(t.field("txt_TagDetection_WUflags")->text(), QString("02"));
    QCOMPARE(text(t.panel, "lblTagDetected"), QString("Detected Tag"));
  }

  void loopUntilDetectedEndsWhenATagArrivesWhileItRuns() {
    TagDetection t(kNoTagField);
    click(t.panel, "cmd_TagDetection_calibration");
    int idles = 0;
    t.driver.onCall = [&](Op op, const std::string& request) {
      if (op == Op::KQCmd && request.rfind("01070E0B", 0) == 0 && ++idles == 3) t.sim.loadField(kOneIso15693Tag);
    };
    t.tick({0});
    click(t.panel, "chkLoop_While_detection");
    click(t.panel, "cmd_TagDetection_Detection");
    QCOMPARE(idles, 3);
    QCOMPARE(text(t.panel, "lblTagDetection_result"), QString("1 ISO15693 "));
    // Two cycles woke by time-out before the tag came.
    const std::string log = t.log();
    std::size_t timeOuts = 0;
    for (std::size_t at = log.find("000101"); at != std::string::npos; at = log.find("000101", at + 1)) ++timeOuts;
    QVERIFY(timeOuts >= 2);
  }

  void autoDetectionNamesOneTagOfEachProtocol() {
    AutoDetect a(uitest::fixture("field_discovery.json"));
    a.tick({0, 1, 2, 3, 4});
    click(a.panel, "cmd_Auto_Detection_Process");
    QCOMPARE(text(a.panel, "lblTagDetection_result"), QString("1 ISO15693 1 ISO14443-A 1 ISO14443-B 1 ISO14443-B 1 FELICA"));
    QCOMPARE(text(a.panel, "lblTagDetected"), QString("Detected Tag"));
    QCOMPARE(text(a.panel, "txtISO15693DetectTags"), QString("UID = E0022A0012345678"));
    QCOMPARE(text(a.panel, "txtISO14443ADetectTags"), QString("2B3C4D40"));
    QVERIFY(text(a.panel, "txt_ISO14443B_REQB_result").startsWith("50A1B2C3D4"));
    QCOMPARE(text(a.panel, "txt_ISO14443B_anticollision_result_3"), QString("3 : Chip ID = 23"));
    QVERIFY(text(a.panel, "txtFelicaDetectTags").contains("012E4CD2A3B4C5D6"));
  }

  void eachProbeAloneFindsTheTagOfItsProtocol() {
    const std::vector<std::pair<QString, QString>> expected{
        {"txtISO15693DetectTags", "UID = E0022A0012345678"},
        {"txtISO14443ADetectTags", "2B3C4D40"},
        {"txt_ISO14443B_REQB_result", "50A1B2C3D400000000008171"},
        {"txt_ISO14443B_anticollision_result_3", "3 : Chip ID = 23"},
        {"txtFelicaDetectTags", "1201012E4CD2A3B4C5D60120220427674EFF"}};
    const QStringList words{"1 ISO15693 ", "1 ISO14443-A ", "1 ISO14443-B ", "1 ISO14443-B ", "1 FELICA"};
    for (int i = 0; i < 5; ++i) {
      AutoDetect a(uitest::fixture("field_discovery.json"));
      a.tick({i});
      click(a.panel, "cmd_Auto_Detection_Process");
      QCOMPARE(text(a.panel, "lblTagDetection_result"), words[i]);
      QCOMPARE(text(a.panel, expected[static_cast<std::size_t>(i)].first), expected[static_cast<std::size_t>(i)].second);
    }
  }

  void iso14443AProbeWalksTwoCascadeLevelsOfADoubleSizeUid() {
    AutoDetect a(R"({"tags": [{"type": "iso14443a", "uid": "04A1B2C3D4E5F6", "atqa": "4400", "sak": "00"}]})");
    a.tick({1});
    click(a.panel, "cmd_Auto_Detection_Process");
    const std::string log = a.log();
    for (const char* frame : {", 932008\r\n", ", 93708804A1B29F28\r\n", ", 952008\r\n", ", 9570C3D4E5F60428\r\n"})
      QVERIFY2(log.find(frame) != std::string::npos, frame);
    // Behind the cascade tag three bytes, then from the second byte on through the check byte.
    QCOMPARE(text(a.panel, "txtISO14443ADetectTags"), QString("04A1B2D4E5F604"));
    QCOMPARE(text(a.panel, "lblTagDetection_result"), QString("1 ISO14443-A "));
  }

  void twoIso15693TagsCollideAndGive99() {
    AutoDetect a(R"({"tags": [{"type": "iso15693", "uid": "E0022A0012345678"},
                               {"type": "iso15693", "uid": "E0022A00ABCDEF01"}]})");
    a.tick({0});
    click(a.panel, "cmd_Auto_Detection_Process");
    QVERIFY(a.log().find("   -> CRC HS (expected=") != std::string::npos);
    QCOMPARE(text(a.panel, "lblTagDetection_result"), QString());
    QCOMPARE(text(a.panel, "lblTagDetected"), QString("No Detected Tag"));
  }

  void followModeWithTwoPdyxxTagsStops() {
    AutoDetect a(R"({"tags": [{"type": "pdy", "uid": "D002330012345678", "chipId": "23"},
                               {"type": "pdy", "uid": "D0023300ABCDEF01", "chipId": "4A"}]})");
    a.tick({3});
    click(a.panel, "optLoopAutoDetectionTool_3");
    click(a.panel, "cmd_Auto_Detection_Process");
    QCOMPARE(text(a.panel, "lblTagDetection_result"), QString("2 ISO14443-B "));
    QCOMPARE(text(a.panel, "txt_ISO14443B_anticollision_result_3"), QString("3 : Chip ID = 23"));
    QCOMPARE(text(a.panel, "txt_ISO14443B_anticollision_result_10"), QString("10 :Chip ID = 4A"));
    QVERIFY(!glob::state().stopFlag);
  }

  void eachProbeButtonFindsItsTagAfterTheToolConfiguredIt() {
    AutoDetect a(uitest::fixture("field_discovery.json"));
    // A first run selects and configures each protocol; a button then relies on what the
    // last probe left selected: FeliCa.
    a.tick({4});
    click(a.panel, "cmd_Auto_Detection_Process");
    a.field("txtFelicaDetectTags")->clear();
    click(a.panel, "cmdFelica_AntiCollision");
    QVERIFY(text(a.panel, "txtFelicaDetectTags").contains("012E4CD2A3B4C5D6"));
    // With FeliCa selected, the ISO 15693 inventory finds nothing: the button sends no
    // configuration.
    click(a.panel, "cmdISO15693_AntiCollision");
    QCOMPARE(text(a.panel, "txtISO15693DetectTags"), QString());
  }
};

QTEST_MAIN(DiscoveryOnBoardTest)
#include "DiscoveryOnBoardTest.moc"
