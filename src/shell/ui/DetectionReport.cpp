#include "shell/ui/DetectionReport.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLabel>
#include <cstdio>

#include "shell/ui/MainForm.h"
#include "shell/ui/frmTL42RQ_Detection.h"

namespace {

// Watches the splash for its close, while its labels still hold the outcome.
class SplashWatcher : public QObject {
 public:
  SplashWatcher(MainForm& form, frmTL42RQ_Detection& splash) : QObject(&splash), form_(form), splash_(splash) {}

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched == &splash_ && event->type() == QEvent::Close && !reported_) {
      reported_ = true;
      for (const char* name : {"lblDllRev", "lblMCUrev", "lblIDn", "lblDetectionStatus"}) {
        const auto* label = splash_.findChild<QLabel*>(name);
        print(name, label ? label->text() : QString());
      }
      print("StatusBar_1", form_.statusPanel1Text());
      print("StatusBar_2", form_.statusPanel2Text());
      std::fflush(stdout);
      QMetaObject::invokeMethod(qApp, [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
  }

 private:
  static void print(const char* name, const QString& text) {
    std::printf("%s: %s\n", name, text.toUtf8().constData());
  }
  MainForm& form_;
  frmTL42RQ_Detection& splash_;
  bool reported_ = false;
};

}  // namespace

void reportDetectionAndQuit(MainForm& form, frmTL42RQ_Detection& splash) {
  splash.installEventFilter(new SplashWatcher(form, splash));
}
