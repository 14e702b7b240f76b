// A panel closed or replaced while its Save Log handler waits in a dialog: the handler
// runs to its end on a panel that is still there, the log is written where the person
// chose, and the panel goes once the handler has returned. Both with answers given by the
// test's dialogs and with Qt's own file dialog and its overwrite prompt.
#include <QFileDialog>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>
#include <functional>
#include <memory>

#include "shell/GlobVariables.h"
#include "shell/UsageFile.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/MainForm.h"
#include "shell/ui/Panel.h"
#include "support/UiTestSupport.h"

using glob::PanelId;

namespace {

// Dialogs whose save answer first runs what the test gives it, as a person's click
// elsewhere would while the dialog is up.
class ActingDialogs final : public Dialogs {
 public:
  std::function<void()> whileOpen;
  QString answer;
  int saveRequests = 0;

  void message(QWidget*, const QString&, const QString&, MessageIcon) override {}
  QString saveFileName(QWidget*, const QString&, const QString&) override {
    ++saveRequests;
    if (whileOpen) whileOpen();
    return answer;
  }
  QString openFileName(QWidget*, const QString&, const QString&) override { return {}; }
  std::optional<QColor> color(QWidget*, const QColor&) override { return std::nullopt; }
  void beep() override {}
};

QByteArray contentsOf(const QString& path) {
  QFile f(path);
  return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("(missing)");
}

// Calls `act` with the application's modal widget of type T as soon as there is one.
// Gives up after two seconds, so that a dialog that never comes fails the test instead of
// leaving the timer behind.
template <typename T>
void whenModal(const std::function<void(T*)>& act) {
  auto* timer = new QTimer;
  timer->setInterval(5);
  auto ticks = std::make_shared<int>(0);
  QObject::connect(timer, &QTimer::timeout, [timer, act, ticks] {
    auto* w = qobject_cast<T*>(QApplication::activeModalWidget());
    if (w || ++*ticks > 400) {
      timer->stop();
      timer->deleteLater();
    }
    if (w) act(w);
  });
  timer->start();
}

// What the event loop of a dialog does while it waits: windows closed meanwhile are
// deleted now, unless something keeps them.
void dialogLoopTurns() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

// Types the path into Qt's file dialog and presses Save, as a person does.
void saveAs(QFileDialog* dialog, const QString& path) {
  uitest::find<QLineEdit>(dialog, "fileNameEdit")->setText(path);
  static_cast<QDialog*>(dialog)->accept();  // what the Save button calls
}

constexpr const char* kLogText = "\r\n11-21-2026 10:20:30\tREQC\r\n\t\t\t>>> TL42RQDLL_SENDRECV, 00FFFF000000";

}  // namespace

class PanelCloseUnderDialogTest : public QObject {
  Q_OBJECT
  QTemporaryDir programDir_;
  QTemporaryDir saveDir_;
  ActingDialogs dialogs_;
  std::unique_ptr<uitest::SimulatedBoard> board_;

  QString target() const { return saveDir_.filePath("log.txt"); }

  // A main window with the ISO 18092 panel open and a log to save.
  Panel* openPanelWithLog(MainForm& f, const char* product = "ISO18092") {
    f.setEndsProcessOnClose(false);
    f.openProduct(product);
    Panel* p = f.panel(PanelId::ISO18092);
    if (!p) qFatal("no ISO 18092 panel");
    p->log().clear();
    p->log().appendRaw(kLogText);
    return p;
  }
  static QMdiSubWindow* windowOf(Panel* p) { return qobject_cast<QMdiSubWindow*>(p->parentWidget()); }
  static void clickSaveLog(Panel* p) { uitest::find<QPushButton>(p, "cmdSaveLog")->click(); }
  // Lets the deferred deletions of closed windows run.
  static void settle() {
    for (int i = 0; i < 3; ++i) {
      QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
      QCoreApplication::processEvents();
    }
  }

 private slots:
  void initTestCase() {
    QFile::copy(QStringLiteral(TL42RQ_SOURCE_DIR "/data/TL42RQ_products.ini"),
                programDir_.filePath("TL42RQ_products.ini"));
    shell::setProgramDirectory(programDir_.path().toStdString() + "/");
    board_ = std::make_unique<uitest::SimulatedBoard>();
    QVERIFY(board_->loaded());
  }
  void init() {
    glob::state() = glob::GlobVariables();
    glob::state().lastDirectory = saveDir_.path().toStdString() + "/";
    dialogs_ = ActingDialogs();
    setDialogs(&dialogs_);
    QFile::remove(target());
  }
  void cleanup() { setDialogs(nullptr); }
  void cleanupTestCase() { board_.reset(); }

  void closingThePanelInTheFileDialogStillSavesAndThenClosesIt() {
    MainForm f;
    QPointer<Panel> p = openPanelWithLog(f);
    QPointer<QMdiSubWindow> sub = windowOf(p);
    dialogs_.answer = target();
    dialogs_.whileOpen = [&] {
      sub->close();
      dialogLoopTurns();
      QVERIFY(p);  // still there under the dialog, only hidden
      QVERIFY(!sub->isVisible());
      QVERIFY(f.panel(PanelId::ISO18092) == nullptr);
    };
    clickSaveLog(p);
    QCOMPARE(dialogs_.saveRequests, 1);
    QCOMPARE(contentsOf(target()), QByteArray(kLogText));
    settle();
    QVERIFY(p.isNull());
    QVERIFY(sub.isNull());
    QVERIFY(!glob::panelOpen(PanelId::ISO18092));
  }

  void otherProductOpenedInTheFileDialogReplacesThePanelAfterTheSave() {
    MainForm f;
    QPointer<Panel> p = openPanelWithLog(f);
    dialogs_.answer = target();
    dialogs_.whileOpen = [&] {
      f.openProduct("VAS60E");
      dialogLoopTurns();
    };
    clickSaveLog(p);
    QCOMPARE(contentsOf(target()), QByteArray(kLogText));
    settle();
    QVERIFY(p.isNull());
    QVERIFY(f.panel(PanelId::ISO15693) != nullptr);
    QVERIFY(glob::panelOpen(PanelId::ISO15693));
    QVERIFY(!glob::panelOpen(PanelId::ISO18092));
  }

  void sameProductOpenedInTheFileDialogLeavesTheNewPanelOpen() {
    MainForm f;
    QPointer<Panel> p = openPanelWithLog(f);
    dialogs_.answer = target();
    dialogs_.whileOpen = [&] {
      f.openProduct("ISO18092");
      dialogLoopTurns();
    };
    clickSaveLog(p);
    QCOMPARE(contentsOf(target()), QByteArray(kLogText));
    settle();
    QVERIFY(p.isNull());
    Panel* fresh = f.panel(PanelId::ISO18092);
    QVERIFY(fresh != nullptr);
    QVERIFY(glob::panelOpen(PanelId::ISO18092));  // the old panel's going does not clear the new one's flag
    QCOMPARE(f.mdiArea()->subWindowList().size(), qsizetype(1));
  }

  void cancelledDialogOfAClosedPanelWritesNothing() {
    MainForm f;
    QPointer<Panel> p = openPanelWithLog(f);
    QPointer<QMdiSubWindow> sub = windowOf(p);
    dialogs_.answer = QString();
    dialogs_.whileOpen = [&] {
      sub->close();
      dialogLoopTurns();
    };
    clickSaveLog(p);
    QVERIFY(!QFile::exists(target()));
    settle();
    QVERIFY(p.isNull());
  }

  // Qt's own file dialog, parented to the panel, while the panel is closed under it.
  void closingThePanelUnderQtsFileDialog() {
    setDialogs(nullptr);
    MainForm f;
    QPointer<Panel> p = openPanelWithLog(f);
    QPointer<QMdiSubWindow> sub = windowOf(p);
    bool acted = false;
    whenModal<QFileDialog>([&](QFileDialog*) {
      sub->close();
      // The person answers later: the dialog's loop turns in between.
      whenModal<QFileDialog>([&](QFileDialog* dialog) {
        acted = true;
        saveAs(dialog, target());
      });
    });
    clickSaveLog(p);
    QVERIFY(acted);
    QCOMPARE(contentsOf(target()), QByteArray(kLogText));
    settle();
    QVERIFY(p.isNull());
  }

  void otherProductOpenedUnderQtsFileDialog() {
    setDialogs(nullptr);
    MainForm f;
    QPointer<Panel> p = openPanelWithLog(f);
    bool acted = false;
    whenModal<QFileDialog>([&](QFileDialog*) {
      f.openProduct("VAS60E");
      whenModal<QFileDialog>([&](QFileDialog* dialog) {
        acted = true;
        saveAs(dialog, target());
      });
    });
    clickSaveLog(p);
    QVERIFY(acted);
    QCOMPARE(contentsOf(target()), QByteArray(kLogText));
    settle();
    QVERIFY(p.isNull());
    QVERIFY(f.panel(PanelId::ISO15693) != nullptr);
  }

  // The file exists: Qt's dialog asks whether to replace it, and the panel goes meanwhile.
  void closingThePanelUnderTheOverwritePrompt() {
    setDialogs(nullptr);
    {
      QFile old(target());
      QVERIFY(old.open(QIODevice::WriteOnly));
      old.write("old");
    }
    MainForm f;
    QPointer<Panel> p = openPanelWithLog(f);
    QPointer<QMdiSubWindow> sub = windowOf(p);
    bool prompted = false;
    whenModal<QFileDialog>([&](QFileDialog* dialog) {
      whenModal<QMessageBox>([&](QMessageBox*) {
        sub->close();
        whenModal<QMessageBox>([&](QMessageBox* prompt) {
          prompted = true;
          prompt->button(QMessageBox::Yes)->click();
        });
      });
      saveAs(dialog, target());
    });
    clickSaveLog(p);
    QVERIFY(prompted);
    QCOMPARE(contentsOf(target()), QByteArray(kLogText));
    settle();
    QVERIFY(p.isNull());
  }

  void otherProductOpenedUnderTheOverwritePrompt() {
    setDialogs(nullptr);
    {
      QFile old(target());
      QVERIFY(old.open(QIODevice::WriteOnly));
      old.write("old");
    }
    MainForm f;
    QPointer<Panel> p = openPanelWithLog(f);
    bool prompted = false;
    whenModal<QFileDialog>([&](QFileDialog* dialog) {
      whenModal<QMessageBox>([&](QMessageBox*) {
        f.openProduct("ISO14443-A");
        whenModal<QMessageBox>([&](QMessageBox* prompt) {
          prompted = true;
          prompt->button(QMessageBox::No)->click();
          // Refused: the file dialog stays up; the person cancels it.
          whenModal<QFileDialog>([](QFileDialog* again) { again->reject(); });
        });
      });
      saveAs(dialog, target());
    });
    clickSaveLog(p);
    QVERIFY(prompted);
    QCOMPARE(contentsOf(target()), QByteArray("old"));
    settle();
    QVERIFY(p.isNull());
    QVERIFY(f.panel(PanelId::ISO14443A) != nullptr);
    QVERIFY(glob::panelOpen(PanelId::ISO14443A));
  }
};

QTEST_MAIN(PanelCloseUnderDialogTest)
#include "PanelCloseUnderDialogTest.moc"
