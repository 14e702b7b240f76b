// The About box: title, version from the build, the two boards, OK, and the platform's
// system information tool found or not.
#include <QFile>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>
#include <cstdlib>
#include <memory>

#include "reader/Drivers.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/MainForm.h"
#include "shell/ui/Panel.h"
#include "support/UiTestSupport.h"
#include "toolbox/ui/frmAbout.h"

using uitest::find;

class AboutWindow : public QObject {
  Q_OBJECT
  std::unique_ptr<MainForm> form_;
  reader::FakeDriver fake_;
  ScriptedDialogs dialogs_;
  QPointer<Panel> panel_;
  std::string savedPath_;

  void click(const char* name) { QTest::mouseClick(find<QPushButton>(panel_, name), Qt::LeftButton); }

 private slots:
  void initTestCase() { savedPath_ = std::getenv("PATH") ? std::getenv("PATH") : ""; }
  void init() {
    reader::setDriver(&fake_);
    dialogs_ = ScriptedDialogs();
    setDialogs(&dialogs_);
    form_ = std::make_unique<MainForm>();
    form_->setEndsProcessOnClose(false);
    panel_ = form_->openPanel(glob::PanelId::About);
    QVERIFY(panel_);
  }
  void cleanup() {
    frmAbout::setSysInfoServices(nullptr, nullptr);
    setenv("PATH", savedPath_.c_str(), 1);
    form_.reset();
    setDialogs(nullptr);
    reader::setDriver(nullptr);
  }

  void showsTitleBoardsAndVersionOfTheBuild() {
    QCOMPARE(panel_->objectName(), QString("frmAbout"));
    QCOMPARE(panel_->windowTitle(), QString("About TL42RQ_Development_Software"));
    const QString title = find<QLabel>(panel_, "lblTitle")->text();
    QCOMPARE(title, QString("TL42RQ Development Software for DEMO-TL42RQ-A and DEMO-TL42RQ-B"));
    const QString version = QString("VERSION %1.%2.%3")
                                .arg(TL42RQ_VERSION_MAJOR)
                                .arg(TL42RQ_VERSION_MINOR)
                                .arg(TL42RQ_VERSION_PATCH);
    QCOMPARE(find<QLabel>(panel_, "lblVersion")->text(), version);
    QCOMPARE(version, QString("VERSION ") + TL42RQ_VERSION);
    QVERIFY(!find<QLabel>(panel_, "lblDisclaimer")->text().isEmpty());
    QCOMPARE(find<QPushButton>(panel_, "cmdOK")->text(), QString("OK"));
  }

  void okCloses() {
    click("cmdOK");
    QTRY_VERIFY(panel_.isNull());
    QVERIFY(!glob::panelOpen(glob::PanelId::About));
    QVERIFY(form_->panel(glob::PanelId::About) == nullptr);
  }

  void noToolFoundShowsTheMessage() {
    int started = 0;
    frmAbout::setSysInfoServices([] { return std::string(); },
                                 [&](const std::string&) {
                                   ++started;
                                   return true;
                                 });
    click("cmdSysInfo");
    QCOMPARE(started, 0);
    QCOMPARE(dialogs_.messages.size(), std::size_t(1));
    QCOMPARE(dialogs_.messages[0].text, QString("System Information are not available now"));
    QCOMPARE(dialogs_.messages[0].title, QString("TL42RQ_Development_Software"));
  }

  void toolFoundIsStartedWithoutMessage() {
    std::vector<std::string> started;
    frmAbout::setSysInfoServices([] { return std::string("/opt/tools/hardinfo"); },
                                 [&](const std::string& p) {
                                   started.push_back(p);
                                   return true;
                                 });
    click("cmdSysInfo");
    QCOMPARE(started, std::vector<std::string>{"/opt/tools/hardinfo"});
    QVERIFY(dialogs_.messages.empty());
  }

  void toolThatWillNotStartShowsTheMessage() {
    frmAbout::setSysInfoServices([] { return std::string("/opt/tools/hardinfo"); },
                                 [](const std::string&) { return false; });
    click("cmdSysInfo");
    QCOMPARE(dialogs_.messages.size(), std::size_t(1));
    QCOMPARE(dialogs_.messages[0].text, QString("System Information are not available now"));
  }

  void realLookupOnTheSearchPath() {
    QTemporaryDir bin;
    QVERIFY(bin.isValid());
    setenv("PATH", bin.path().toLocal8Bit().constData(), 1);
    click("cmdSysInfo");
    QCOMPARE(dialogs_.messages.size(), std::size_t(1));
    QCOMPARE(dialogs_.messages[0].text, QString("System Information are not available now"));

    // A tool on the path is started, detached, and leaves its mark.
    const QString marker = bin.filePath("started");
    QFile tool(bin.filePath("gnome-system-monitor"));
    QVERIFY(tool.open(QIODevice::WriteOnly));
    tool.write(QString("#!/bin/sh\necho started > '%1'\n").arg(marker).toLocal8Bit());
    tool.close();
    tool.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    click("cmdSysInfo");
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(marker), 10000);
    QCOMPARE(dialogs_.messages.size(), std::size_t(1));
  }
};

QTEST_MAIN(AboutWindow)
#include "toolbox_about.moc"
