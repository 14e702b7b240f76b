// The start-up splash: finds the board, shows the library's and the controller's
// revisions and the chip's name, and publishes them. Its outcome never stops anything.
#pragma once

#include <QTimer>
#include <QWidget>
#include <string>

class QLabel;
class QLineEdit;
class QProgressBar;

class frmTL42RQ_Detection : public QWidget {
  Q_OBJECT
 public:
  explicit frmTL42RQ_Detection(QWidget* mainWindow);

  void tmrSplash_Timer();
  QTimer* timer() { return &tmrSplash_; }
  // Turns of the event loop in one step of a pause block; the program's own rhythm
  // unless a test shortens it.
  static void setPauseScale(double scale);

 private:
  void runSequence();
  void pauseBlock(int yieldsPerStep);
  void wrongLibrary(const std::string& answer);
  void failure();
  void showAnswer(const std::string& answer);

  QWidget* mainWindow_;
  QLabel* lblProductName_;
  QLabel* lblVersion_;
  QLabel* lblWarning_;
  QLabel* lblDetectionOnGoing_;
  QProgressBar* progressbarReaderDetect_;
  QLabel* lblDllRev_;
  QLabel* lblMCUrev_;
  QLabel* lblIDn_;
  QLabel* lblDetectionStatus_;
  QLineEdit* txtAnswer_;
  QTimer tmrSplash_;
};
