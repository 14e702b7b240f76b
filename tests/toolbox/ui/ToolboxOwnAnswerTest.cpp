// Each button of the demo-kit toolbox shows its own answer: a good call, then the board is
// unplugged, then the same call, against the simulated board. The decoded chip name and
// controller revision are emptied first; the library revision and the pin state stay as
// they were, as the toolbox is meant to keep its decoded boxes on a bad answer.
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>

#include "reader/Drivers.h"
#include "shell/GlobVariables.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/Panel.h"
#include "shell/ui/PanelFactory.h"
#include "support/UiTestSupport.h"

namespace {
constexpr const char* kBoardField = R"({
  "board": { "present": true, "dllRevision": "0.5.0", "mcuRevision": [2, 10, 3],
             "chipName": "TL42RQ bench", "interfacePin": 2 },
  "tags": []
})";
}  // namespace

class ToolboxOwnAnswerTest : public QObject {
  Q_OBJECT
  std::unique_ptr<uitest::SimulatedBoard> board_;
  ScriptedDialogs dialogs_;
  QPointer<Panel> panel_;

  std::function<void()> press(const char* name) {
    return [this, name] { QTest::mouseClick(uitest::find<QPushButton>(panel_, name), Qt::LeftButton); };
  }
  std::function<void()> boardLost() {
    return [this] { QCOMPARE(board_->setBoardPresent(false), 0); };
  }

 private slots:
  void init() {
    board_ = std::make_unique<uitest::SimulatedBoard>();
    QVERIFY(board_->loaded());
    QCOMPARE(board_->loadField(kBoardField), 0);
    QCOMPARE(board_->reset(), 0);
    setDialogs(&dialogs_);
    glob::state() = glob::GlobVariables();
    glob::state().dllRevision = 5;
    panel_ = shell::createPanel(glob::PanelId::DemoKitTools, nullptr);
    QVERIFY(panel_);
    panel_->show();
  }
  void cleanup() {
    delete panel_.data();
    setDialogs(nullptr);
    board_.reset();
  }

  void idnWithTheBoardUnpluggedEmptiesTheChipName() {
    const uitest::TwoRuns r =
        uitest::goodThen(panel_, {"txtIDnAnswer", "txtIDn"}, press("cmdGetIDn"), boardLost());
    QCOMPARE(r.good[1], QString("TL42RQ bench"));
    QCOMPARE(r.after, (QStringList{"", ""}));
  }

  void mcuRevisionWithTheBoardUnpluggedEmptiesTheRevision() {
    const uitest::TwoRuns r = uitest::goodThen(panel_, {"txtGetMCUrevisionAnswer", "txtMCUrevision"},
                                               press("cmdGetMCUrevision"), boardLost());
    QCOMPARE(r.good, (QStringList{"0003020A03", "2.10.3"}));
    QCOMPARE(r.after, (QStringList{"", ""}));
  }

  void echoAndPinStateWithTheBoardUnplugged() {
    const uitest::TwoRuns echo = uitest::goodThen(panel_, {"txtEchoAnswer"}, press("cmdEcho"), boardLost());
    QCOMPARE(echo.good, QStringList{"5500"});
    QCOMPARE(echo.after, QStringList{""});
    QCOMPARE(board_->setBoardPresent(true), 0);
    const uitest::TwoRuns pin = uitest::goodThen(panel_, {"txtGetInterfacePinStateAnswer", "OptPinState_2"},
                                                 press("cmdGetInterfacePinState"), boardLost());
    QCOMPARE(pin.good, (QStringList{"000102", "UART bus [x]"}));
    QCOMPARE(pin.after, (QStringList{"", "UART bus [x]"}));
  }
};

QTEST_MAIN(ToolboxOwnAnswerTest)
#include "ToolboxOwnAnswerTest.moc"
