// The auto-detection cycle against the simulated board when the board gives answers the
// simulated tags and chip never give: REQB and REQC answers of exactly ten characters,
// and an echo other than "5500".
#include "DiscoveryUiSupport.h"
#include "discovery/ui/frmTL42RQ_AutoDetectTool_UI.h"

using namespace discoverytest;
using uitest::Answer;

class DiscoveryAnswerOverridesTest : public QObject {
  Q_OBJECT
  std::unique_ptr<uitest::FixedTime> time_;
  std::unique_ptr<uitest::OnBoard<frmTL42RQ_AutoDetectTool_UI>> f_;

  QObject* panel() { return f_->panel.get(); }
  // The tool on the field of one tag of each protocol, with the board's answers `answers`.
  void open(const std::vector<Answer>& answers) {
    f_ = toolOnBoard<frmTL42RQ_AutoDetectTool_UI>(uitest::fieldWithAnswers("field_discovery.json", answers));
  }
  void load(const std::vector<Answer>& answers) {
    QCOMPARE(uitest::loadFieldWithAnswers(f_->board, "field_discovery.json", answers), 0);
  }
  void run(int) {
    f_->panel->log().clear();
    click(panel(), "cmd_Auto_Detection_Process");
  }
  void tick(int protocol) { click(panel(), QString("chkTagDetSelectProtocols_%1").arg(protocol)); }

 private slots:
  void init() { time_ = std::make_unique<uitest::FixedTime>(); }
  void cleanup() {
    f_.reset();
    time_.reset();
  }

  // Ten characters, "80" in front and "00" behind: not longer than ten, so no tag.
  void reqbAnswerOfTenCharactersIsNoTag() {
    open({});
    tick(2);
    run(2);
    QCOMPARE(text(panel(), "txt_ISO14443B_REQB_result"), QString("50A1B2C3D400000000008171"));
    QCOMPARE(text(panel(), "lblTagDetection_result"), QString("1 ISO14443-B "));
    load({{"TL42RQDll_SendReceive", "0500F0", "8005500000"}});
    run(2);
    QVERIFY(f_->panel->log().text().find(sendRecv("REQB", "0500F0", "8005500000")) != std::string::npos);
    QCOMPARE(text(panel(), "txt_ISO14443B_REQB_result"), QString());
    QCOMPARE(text(panel(), "lblTagDetection_result"), QString());
    QCOMPARE(text(panel(), "lblTagDetected"), QString("No Detected Tag"));
  }

  // Twelve characters are longer than ten: the two at position 5 are the result.
  void reqbAnswerOfTwelveCharactersIsATag() {
    open({{"TL42RQDll_SendReceive", "0500F0", "800650AB0000"}});
    tick(2);
    run(2);
    QCOMPARE(text(panel(), "txt_ISO14443B_REQB_result"), QString("50"));
    QCOMPARE(text(panel(), "lblTagDetection_result"), QString("1 ISO14443-B "));
  }

  void reqcAnswerOfTenCharactersIsNoTag() {
    open({});
    tick(4);
    run(4);
    QCOMPARE(text(panel(), "txtFelicaDetectTags"), QString("1201012E4CD2A3B4C5D60120220427674EFF"));
    load({{"TL42RQDll_SendReceive", "00FFFF0000", "8005010000"}});
    run(4);
    QVERIFY(f_->panel->log().text().find(sendRecv("REQC", "00FFFF0000", "8005010000")) != std::string::npos);
    QCOMPARE(text(panel(), "txtFelicaDetectTags"), QString());
    QCOMPARE(text(panel(), "lblTagDetection_result"), QString());
    QCOMPARE(text(panel(), "lblTagDetected"), QString("No Detected Tag"));
  }

  void reqcAnswerOfTwelveCharactersIsATag() {
    open({{"TL42RQDll_SendReceive", "00FFFF0000", "800601AB0000"}});
    tick(4);
    run(4);
    QCOMPARE(text(panel(), "txtFelicaDetectTags"), QString("01"));
    QCOMPARE(text(panel(), "lblTagDetection_result"), QString("1 FELICA"));
  }

  // The chip out of step answers the echo otherwise: a second echo follows, and the
  // cycle goes on whatever it says.
  void echoOtherThan5500IsFollowedByASecondEcho() {
    open({{"TL42RQDll_Echo", "", "5501", 0, 1}});
    tick(4);
    run(4);
    QVERIFY(f_->panel->log().text().rfind(echo("5501") + echo("5500") + rfOff(), 0) == 0);
    QCOMPARE(text(panel(), "lblTagDetection_result"), QString("1 FELICA"));
  }

  void echoWithAStatusOtherThan0Or5IsFollowedByOneMoreEcho() {
    open({{"TL42RQDll_Echo", "", "", 3, 1}});
    tick(4);
    run(4);
    QVERIFY(f_->panel->log().text().rfind(echo("") + echo("5500") + rfOff(), 0) == 0);
    QCOMPARE(text(panel(), "lblTagDetection_result"), QString("1 FELICA"));
  }

  // Still out of step at the second echo: the outcome is not judged further.
  void twoWrongEchoesDoNotStopTheCycle() {
    open({{"TL42RQDll_Echo", "", "0000", 0, 2}});
    tick(4);
    run(4);
    QVERIFY(f_->panel->log().text().rfind(echo("0000") + echo("0000") + rfOff(), 0) == 0);
    QCOMPARE(text(panel(), "lblTagDetection_result"), QString("1 FELICA"));
  }
};

QTEST_MAIN(DiscoveryAnswerOverridesTest)
#include "DiscoveryAnswerOverridesTest.moc"
