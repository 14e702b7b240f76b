// Every command of the ISO 15693 panel is judged by its own answer, against the real
// simulated board: a good answer, then the tag gone, the board lost or a tag error must
// never show what an earlier command received.
#include <QTimer>
#include <QtTest>

#include "Iso15693UiSupport.h"

using namespace iso15693test;

namespace {
const char* kOneTag = R"({ "board": { "present": true, "mcuRevision": [1, 4, 1] }, "tags": [
  { "type": "iso15693", "product": "VAX30", "uid": "E00200001A2B3C40", "dsfid": "A1", "afi": "12",
    "blockSize": 4, "blockCount": 64, "memory": "00112233 44556677 8899AABB CCDDEEFF 01020304 05060708",
    "lockedBlocks": [2] } ] })";
const char* kHarvestingTag = R"({ "board": { "present": true, "mcuRevision": [1, 4, 1] }, "tags": [
  { "type": "iso15693", "product": "VAS60E", "uid": "E002000055667781", "dsfid": "B2",
    "blockSize": 4, "blockCount": 2048, "memory": "CAFEBABE" } ] })";
// The tag of kOneTag with the board's answers to some requests given by the field file.
std::string oneTagAnswering(const std::string& answers) {
  std::string field = kOneTag;
  field.insert(field.rfind('}'), ", \"answers\": [" + answers + "]");
  return field;
}
std::string sendReceiveAnswer(const std::string& request, const std::string& answer) {
  return R"({ "op": "TL42RQDll_SendReceive", "request": ")" + request + R"(", "answer": ")" + answer +
         R"(", "times": 1 })";
}
const QString kBlock5 = "05   05 06 07 08 ";
const QString kTagRow = " 00\tE00200001A2B3C40\t\tA1";

int occurrences(const std::string& text, const std::string& what) {
  int n = 0;
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += what.size()) ++n;
  return n;
}

// Runs `action` after `ms` of a loop that the test started; a guard presses STOP after
// three seconds so that a loop that would never end fails the test instead of hanging it.
// The timers die with the object, so none fires into a later test.
struct LoopEvents {
  bool guardFired = false;
  QTimer event, guard;
  LoopEvents(BoardFixture& f, int ms, std::function<void()> action) {
    event.setSingleShot(true);
    QObject::connect(&event, &QTimer::timeout, action);
    event.start(ms);
    guard.setSingleShot(true);
    QObject::connect(&guard, &QTimer::timeout, [this, &f] {
      guardFired = true;
      f.w<QAbstractButton>("cmdStopCommand")->click();
      if (f.w<QAbstractButton>("chkLoop")->isChecked()) f.click("chkLoop");
      glob::state().autoLoopActive = false;
    });
    guard.start(3000);
  }
};
}  // namespace

class Iso15693OwnAnswerTest : public QObject {
  Q_OBJECT

 private slots:
  void writeToATagThatLeftTheFieldIsNoSuccess() {
    BoardFixture f("VAX30", kOneTag);
    f.range("05", "05");
    f.click("cmdReadUser");
    QCOMPARE(f.view(), QStringList{kBlock5});
    f.takeTagsOut();
    f.gridWrite("cmdWriteSingleBlock", "11 22 33 44 ");
    QCOMPARE(f.answer(), QString("8700"));
    QCOMPARE(f.view(), QStringList{"05   No detected answer"});
    QCOMPARE(f.result(), QString(""));
  }

  void writeWithoutAnswerAfterATagErrorKeepsTheErrorResult() {
    BoardFixture f("VAX30", kOneTag);
    f.range("02", "02");
    f.gridWrite("cmdWriteSingleBlock", "11 22 33 44 ");
    QCOMPARE(f.view(), QStringList{"02   (12) Block is locked, content cannot be changed"});
    QCOMPARE(f.result(), QString("HS"));
    f.takeTagsOut();
    f.gridWrite("cmdWriteSingleBlock", "11 22 33 44 ");
    QCOMPARE(f.view(), QStringList{"02   No detected answer"});
    QCOMPARE(f.result(), QString("HS"));
  }

  void readAfterTheBoardIsLostShowsNoAnswer() {
    BoardFixture f("VAX30", kOneTag);
    f.range("05", "05");
    f.click("cmdReadUser");
    QCOMPARE(f.view(), QStringList{kBlock5});
    f.board.setBoardPresent(false);
    f.click("cmdReadUser");
    QCOMPARE(f.answer(), QString(""));
    QCOMPARE(f.view(), QStringList{"05   No detected answer"});
  }

  void readAfterAGoodInventoryOfAGoneTagShowsNoAnswer() {
    BoardFixture f("VAX30", kOneTag);
    f.click("cmdInventory");
    QCOMPARE(f.transponders(), (QStringList{"\tUID\t\t\tDSFID", "", kTagRow}));
    f.takeTagsOut();
    f.range("05", "05");
    f.click("cmdReadUser");
    QCOMPARE(f.answer(), QString("8700"));
    QCOMPARE(f.view(), QStringList{"05   No detected answer"});
  }

  void inventoryWithAnAfiNoTagHasListsNoRow() {
    BoardFixture f("VAX30", kOneTag);
    f.click("cmdInventory");
    QCOMPARE(f.transponders(), (QStringList{"\tUID\t\t\tDSFID", "", kTagRow}));
    f.check("chkInventoryAFIOptions", true);
    f.w<QLineEdit>("txtInventoryOptionalAFI")->setText("77");
    f.click("cmdInventory");
    QCOMPARE(f.w<QLineEdit>("txt_ISO15693_request")->text(), QString("3601" "77" "00"));
    QCOMPARE(f.answer(), QString("8700"));
    QCOMPARE(f.transponders(), (QStringList{"\tUID\t\t\tDSFID", ""}));
    QCOMPARE(memoryBuffer().Contenu().back(), std::string("No detected answer"));
  }

  void inventoryLoopShowsTheLastGoodRowAgainAfterAFailedPass() {
    BoardFixture f("VAX30", kOneTag);
    f.click("chkLoop");
    LoopEvents events(f, 30, [&f] { f.takeTagsOut(); });
    QTimer loopOff;
    loopOff.setSingleShot(true);
    QObject::connect(&loopOff, &QTimer::timeout, [&f] { f.click("chkLoop"); });
    loopOff.start(120);
    f.click("cmdInventory");
    QVERIFY(!events.guardFired);
    QCOMPARE(f.answer(), QString("8700"));
    QCOMPARE(f.transponders(), (QStringList{"\tUID\t\t\tDSFID", "", kTagRow}));
  }

  void systemInfoWithoutAnswerListsNothing() {
    BoardFixture f("VAX30", kOneTag);
    f.click("cmdGetSystemInfo");
    QCOMPARE(f.systemInfo().size(), 6);
    // The Select flag with no tag selected: nobody answers.
    f.check("chk_Select_Address_flag_0", true);
    f.click("cmdGetSystemInfo");
    QCOMPARE(f.answer(), QString("8700"));
    QCOMPARE(f.systemInfo(), QStringList{});
  }

  void systemInfoOfAKilledTagListsNothing() {
    BoardFixture f("VAX30", kOneTag);
    f.chooseUid("E00200001A2B3C40");
    f.click("cmdSelect");
    f.check("chk_Select_Address_flag_0", true);
    f.range("00", "00");
    f.gridWrite("cmdWriteKill", "A5 A5 A5 A5 ");
    f.gridWrite("cmdKill", "A5 A5 A5 A5 ");
    QCOMPARE(f.result(), QString("OK"));
    f.check("chk_Select_Address_flag_0", false);
    f.check("chk_Select_Address_flag_1", true);
    f.click("cmdGetSystemInfo");
    QCOMPARE(f.answer(), QString("8700"));
    QCOMPARE(f.systemInfo(), QStringList{});
  }

  void stayQuietWithoutAnswerLeavesTheResultEmpty() {
    BoardFixture f("VAX30", kOneTag);
    f.range("05", "05");
    f.click("cmdReadUser");
    QCOMPARE(f.result(), QString(""));
    f.click("cmdStayQuiet");
    QCOMPARE(f.w<QLineEdit>("txt_ISO15693_request")->text(), QString("0202"));
    QCOMPARE(f.answer(), QString("8700"));
    QCOMPARE(f.result(), QString(""));
  }

  void stateCommandWithTheBoardLostKeepsTheLastResult() {
    BoardFixture f("VAX30", kOneTag);
    f.chooseUid("E00200001A2B3C40");
    f.click("cmdSelect");
    QCOMPARE(f.result(), QString("OK"));
    f.click("cmdResetToReady");
    QCOMPARE(f.result(), QString("OK"));
    f.board.setBoardPresent(false);
    f.w<QLabel>("lblWriteTime")->setText("");
    f.click("cmdSelect");
    QCOMPARE(f.answer(), QString(""));
    QCOMPARE(f.result(), QString(""));
  }

  void harvestingStatusWithoutAnswerKeepsItsBox() {
    BoardFixture f("VAS60E", kHarvestingTag);
    f.click("cmdReadEHconfig");
    const QString status = f.w<QLineEdit>("txtEHstatus")->text();
    QCOMPARE(status.size(), 2);
    f.range("0000", "0000");
    f.click("cmdReadUser");
    QCOMPARE(f.view(), QStringList{"0000   CA FE BA BE "});
    f.takeTagsOut();
    f.click("cmdReadEHconfig");
    QCOMPARE(f.answer(), QString("8700"));
    QCOMPARE(f.w<QLineEdit>("txtEHstatus")->text(), status);
  }

  // Answers that only the board's answer overrides produce.
  void replyOfLengthThreeEndsAsNoAnswer() {
    BoardFixture f("VAX30", oneTagAnswering(sendReceiveAnswer("022005", "8003ABCD00")));
    f.range("05", "05");
    f.click("cmdReadUser");
    QCOMPARE(f.answer(), QString("8003ABCD00"));
    QVERIFY(f.log().ends_with("<<< 8003ABCD00"));
    QCOMPARE(f.view(), QStringList{"05   No detected answer"});
  }

  void flaggedTailWithAGoodCrcIsNotedAndUsed() {
    BoardFixture f("VAX30", oneTagAnswering(sendReceiveAnswer("022005", "800800AABBCCDD627C02")));
    f.range("05", "05");
    f.click("cmdReadUser");
    QVERIFY(f.log().ends_with("<<< 800800AABBCCDD627C02  02 -> CRC OK"));
    QCOMPARE(f.view(), QStringList{"05   AA BB CC DD "});
  }

  void flaggedTailWithABadCrcIsNotedAndNotUsed() {
    BoardFixture f("VAX30", oneTagAnswering(sendReceiveAnswer("022005", "800800AABBCCDD000002")));
    f.range("05", "05");
    f.click("cmdReadUser");
    QVERIFY(f.log().ends_with("<<< 800800AABBCCDD000002  02 -> CRC HS (expected=627C)"));
    QCOMPARE(f.view(), QStringList{"05   No detected answer"});
    // The override answered once; the tag itself answers the next read.
    f.click("cmdReadUser");
    QCOMPARE(f.view(), QStringList{kBlock5});
  }

  void systemInfoErrorAnswersGiveOneRow() {
    BoardFixture f("VAX30", oneTagAnswering(sendReceiveAnswer("022B", "8005010F68EE00") + ", " +
                                            sendReceiveAnswer("022B", "800501009F1600")));
    f.click("cmdGetSystemInfo");
    QCOMPARE(f.systemInfo(), QStringList{"error code 0F : other error"});
    f.click("cmdGetSystemInfo");
    QCOMPARE(f.systemInfo(), QStringList{"No Error"});
    f.click("cmdGetSystemInfo");
    QCOMPARE(f.systemInfo().first(), QString(" UID : \t\tE00200001A2B3C40"));
  }

  void autoLoopForEverEndsWhenTheTagLeaves() {
    BoardFixture f("VAX30", kOneTag);
    f.range("05", "05");
    f.click("chkUserLoop");
    f.w<QLineEdit>("txtLOOPnumber")->setText("0");
    LoopEvents events(f, 30, [&f] { f.takeTagsOut(); });
    f.click("cmdReadUser");
    QVERIFY(!events.guardFired);
    QCOMPARE(f.answer(), QString("8700"));
    // The first pass without an answer is the last one.
    QCOMPARE(occurrences(f.log(), "<<< 8700"), 1);
    QVERIFY(f.w<QLabel>("lblLoopCount")->text().toInt() >= 1);
    // The failed pass ends the loop before it would show its rows.
    QCOMPARE(f.view(), QStringList{kBlock5});
    QVERIFY(f.w("cmdReadUser")->isEnabled());
  }

  void autoLoopForEverEndsWhenTheBoardIsLost() {
    BoardFixture f("VAX30", kOneTag);
    f.range("05", "05");
    f.click("chkUserLoop");
    f.w<QLineEdit>("txtLOOPnumber")->setText("0");
    LoopEvents events(f, 30, [&f] { f.board.setBoardPresent(false); });
    f.click("cmdReadUser");
    QVERIFY(!events.guardFired);
    QCOMPARE(f.answer(), QString(""));
    QCOMPARE(occurrences(f.log() + "\r\n", "<<< \r\n"), 1);
    QCOMPARE(f.view(), QStringList{kBlock5});
  }
};

QTEST_MAIN(Iso15693OwnAnswerTest)
#include "Iso15693OwnAnswerTest.moc"
