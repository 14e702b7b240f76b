// The memento notepad: typing, saving and loading note files through the dialogs, with
// the last-used directory and the usage file kept.
#include <QAction>
#include <QDir>
#include <QFile>
#include <QPointer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTextEdit>
#include <QtTest>
#include <memory>

#include "reader/Drivers.h"
#include "shell/GlobVariables.h"
#include "shell/UsageFile.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/MainForm.h"
#include "shell/ui/Panel.h"
#include "support/UiTestSupport.h"

using uitest::find;

namespace {
QByteArray readAll(const QString& path) {
  QFile f(path);
  return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}
void writeFile(const QString& path, const QByteArray& bytes) {
  QFile f(path);
  QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
  f.write(bytes);
}
}  // namespace

class MementoWindow : public QObject {
  Q_OBJECT
  std::unique_ptr<QTemporaryDir> programDir_;
  std::unique_ptr<QTemporaryDir> notesDir_;
  std::unique_ptr<MainForm> form_;
  reader::FakeDriver fake_;
  ScriptedDialogs dialogs_;
  QPointer<Panel> panel_;

  QString usageFile() const { return programDir_->filePath(shell::kUsageFileName); }
  QTextEdit* edit() { return find<QTextEdit>(panel_, "rtfMementoEdit"); }
  void click(const char* name) { QTest::mouseClick(find<QPushButton>(panel_, name), Qt::LeftButton); }

 private slots:
  void init() {
    reader::setDriver(&fake_);
    programDir_ = std::make_unique<QTemporaryDir>();
    notesDir_ = std::make_unique<QTemporaryDir>();
    shell::setProgramDirectory(programDir_->path().toStdString() + "/");
    writeFile(usageFile(), "\"\",\"&h00C0C0C0\"\r\n");
    dialogs_ = ScriptedDialogs();
    setDialogs(&dialogs_);
    form_ = std::make_unique<MainForm>();
    form_->setEndsProcessOnClose(false);
    form_->load(false);
    panel_ = form_->openPanel(glob::PanelId::MementoFile);
    QVERIFY(panel_);
  }
  void cleanup() {
    form_.reset();
    setDialogs(nullptr);
    reader::setDriver(nullptr);
    notesDir_.reset();
    programDir_.reset();
  }

  void opensEditableAndEmptyWhileItsMenuEntryStaysHidden() {
    QVERIFY(!form_->findChild<QAction*>("mnuShowMementoFile")->isVisible());
    QCOMPARE(panel_->objectName(), QString("frmMementoFile"));
    QCOMPARE(panel_->windowTitle(), QString("   Memento"));
    QVERIFY(glob::panelOpen(glob::PanelId::MementoFile));
    QVERIFY(!edit()->isReadOnly());
    QVERIFY(edit()->isVisibleTo(panel_));
    QCOMPARE(edit()->toPlainText(), QString());
    QCOMPARE(find<QPushButton>(panel_, "cmdSaveMementoFile")->text(), QString("Save Memento File"));
    QCOMPARE(find<QPushButton>(panel_, "cmdLoadMementoFile")->text(), QString("Load Memento File"));
  }

  void saveWithEmptyViewDoesNothing() {
    click("cmdSaveMementoFile");
    QVERIFY(dialogs_.fileRequests.empty());
  }

  void typedNotesAreSavedAndTheDirectoryIsKept() {
    edit()->setFocus();
    QTest::keyClicks(edit(), "Antenna tuned");
    QTest::keyClick(edit(), Qt::Key_Return);
    QTest::keyClicks(edit(), "gain D1");
    const QString file = notesDir_->filePath("bench notes.txt");
    dialogs_.fileAnswers.push_back("  " + file + " ");
    click("cmdSaveMementoFile");
    QCOMPARE(dialogs_.fileRequests.size(), std::size_t(1));
    QVERIFY(dialogs_.fileRequests[0].save);
    QCOMPARE(dialogs_.fileRequests[0].directory, QString(""));
    QCOMPARE(dialogs_.fileRequests[0].filter, QString("txt File (*.txt)|*.txt"));
    QCOMPARE(readAll(file), QByteArray("Antenna tuned\ngain D1"));
    const std::string dir = notesDir_->path().toStdString() + "/";
    QCOMPARE(glob::state().lastDirectory, dir);
    QCOMPARE(readAll(usageFile()), QByteArray::fromStdString(shell::usageLine(dir, glob::state().backgroundColor)));
  }

  void cancelledSaveWritesNothing() {
    edit()->setPlainText("x");
    const QByteArray usage = readAll(usageFile());
    click("cmdSaveMementoFile");
    QCOMPARE(dialogs_.fileRequests.size(), std::size_t(1));
    QCOMPARE(QDir(notesDir_->path()).entryList(QDir::Files), QStringList());
    QCOMPARE(readAll(usageFile()), usage);
    QCOMPARE(glob::state().lastDirectory, std::string());
  }

  void loadReplacesTheNotesAndKeepsTheDirectory() {
    edit()->setPlainText("old notes");
    glob::state().lastDirectory = "/somewhere/else/";
    const QString file = notesDir_->filePath("memo.txt");
    writeFile(file, "REQA 26\r\nanswer 4400\r\n");
    dialogs_.fileAnswers.push_back(file);
    click("cmdLoadMementoFile");
    QCOMPARE(dialogs_.fileRequests.size(), std::size_t(1));
    QVERIFY(!dialogs_.fileRequests[0].save);
    QCOMPARE(dialogs_.fileRequests[0].directory, QString("/somewhere/else/"));
    QCOMPARE(dialogs_.fileRequests[0].filter, QString("txt File (*.txt)|*.txt"));
    QCOMPARE(edit()->toPlainText(), QString("REQA 26\nanswer 4400\n"));
    const std::string dir = notesDir_->path().toStdString() + "/";
    QCOMPARE(glob::state().lastDirectory, dir);
    QCOMPARE(readAll(usageFile()), QByteArray::fromStdString(shell::usageLine(dir, glob::state().backgroundColor)));
    // Loaded notes save back as they are.
    const QString copy = notesDir_->filePath("copy.txt");
    dialogs_.fileAnswers.push_back(copy);
    click("cmdSaveMementoFile");
    QCOMPARE(dialogs_.fileRequests[1].directory, QString::fromStdString(dir));
    QCOMPARE(readAll(copy), QByteArray("REQA 26\nanswer 4400\n"));
  }

  void cancelledOrUnreadableLoadLeavesTheNotes() {
    edit()->setPlainText("keep me");
    click("cmdLoadMementoFile");
    QCOMPARE(edit()->toPlainText(), QString("keep me"));
    dialogs_.fileAnswers.push_back(notesDir_->filePath("no such file.txt"));
    click("cmdLoadMementoFile");
    QCOMPARE(edit()->toPlainText(), QString("keep me"));
  }

  void withoutUsageFileTheDirectoryIsKeptButNoFileIsCreated() {
    QFile::remove(usageFile());
    const QString file = notesDir_->filePath("n.txt");
    writeFile(file, "abc");
    dialogs_.fileAnswers.push_back(file);
    click("cmdLoadMementoFile");
    QCOMPARE(edit()->toPlainText(), QString("abc"));
    QCOMPARE(glob::state().lastDirectory, notesDir_->path().toStdString() + "/");
    QVERIFY(!QFile::exists(usageFile()));
  }
};

QTEST_MAIN(MementoWindow)
#include "toolbox_memento.moc"
