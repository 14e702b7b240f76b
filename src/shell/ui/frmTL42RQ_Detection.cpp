#include "shell/ui/frmTL42RQ_Detection.h"

#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QVBoxLayout>

#include "reader/Drivers.h"
#include "reader/Exchange.h"
#include "shell/DetectionParse.h"
#include "shell/GlobVariables.h"
#include "shell/ui/MainForm.h"
#include "shell/ui/Panel.h"

namespace {
double pauseScale = 1.0;

constexpr const char* kDllRev = "DLL REV = ";
constexpr const char* kMcuRev = "MCU REV = ";

QLabel* label(QWidget* parent, QVBoxLayout* layout, const char* name, const QString& text) {
  auto* l = new QLabel(text, parent);
  l->setObjectName(name);
  layout->addWidget(l);
  return l;
}
}  // namespace

void frmTL42RQ_Detection::setPauseScale(double scale) { pauseScale = scale; }

frmTL42RQ_Detection::frmTL42RQ_Detection(QWidget* mainWindow)
    : QWidget(mainWindow, Qt::Dialog | Qt::FramelessWindowHint), mainWindow_(mainWindow) {
  setObjectName("frmTL42RQ_Detection");
  setAttribute(Qt::WA_DeleteOnClose);
  auto* layout = new QVBoxLayout(this);
  lblProductName_ = label(this, layout, "lblProductName", "TL42RQ_Development_Software");
  QFont big = lblProductName_->font();
  big.setPointSize(big.pointSize() + 6);
  big.setBold(true);
  lblProductName_->setFont(big);
  lblVersion_ = label(this, layout, "lblVersion", "revision 1.3");
  lblWarning_ = label(this, layout, "lblWarning", "Using DEMO-TL42RQ-A or DEMO-TL42RQ-B");
  lblDetectionOnGoing_ = label(this, layout, "lblDetectionOnGoing", "detection on going");
  progressbarReaderDetect_ = new QProgressBar(this);
  progressbarReaderDetect_->setObjectName("progressbarReaderDetect");
  progressbarReaderDetect_->setRange(0, 120);
  progressbarReaderDetect_->setValue(0);
  layout->addWidget(progressbarReaderDetect_);
  lblDllRev_ = label(this, layout, "lblDllRev", kDllRev);
  lblMCUrev_ = label(this, layout, "lblMCUrev", kMcuRev);
  lblIDn_ = label(this, layout, "lblIDn", QString());
  lblDetectionStatus_ = label(this, layout, "lblDetectionStatus", "Detection Status");
  txtAnswer_ = new QLineEdit(this);
  txtAnswer_->setObjectName("txtAnswer");
  txtAnswer_->setReadOnly(true);
  layout->addWidget(txtAnswer_);
  lblDetectionOnGoing_->hide();
  progressbarReaderDetect_->hide();
  lblDllRev_->hide();
  lblMCUrev_->hide();
  lblIDn_->hide();
  resize(480, 300);
  if (mainWindow) move(mainWindow->geometry().center() - rect().center());

  tmrSplash_.setObjectName("tmrSplash");
  connect(&tmrSplash_, &QTimer::timeout, this, &frmTL42RQ_Detection::tmrSplash_Timer);
  lblDetectionStatus_->clear();
  tmrSplash_.start(2000);
  glob::state().detectionPending = true;
}

void frmTL42RQ_Detection::tmrSplash_Timer() {
  if (glob::state().detectionPending) {
    tmrSplash_.stop();
    runSequence();
    return;
  }
  tmrSplash_.stop();
  if (auto* main = qobject_cast<MainForm*>(mainWindow_)) main->enableTopMenus(true);
  close();
}

void frmTL42RQ_Detection::pauseBlock(int yieldsPerStep) {
  const int turns = static_cast<int>(yieldsPerStep * pauseScale);
  for (int step = 0; step < 20; ++step) {
    progressbarReaderDetect_->setValue(progressbarReaderDetect_->value() + 1);
    yieldEvents(turns);
  }
}

void frmTL42RQ_Detection::showAnswer(const std::string& answer) {
  txtAnswer_->setText(QString::fromLatin1(answer.data(), static_cast<int>(answer.size())));
}

void frmTL42RQ_Detection::runSequence() {
  auto& g = glob::state();
  auto& d = reader::driver();
  const auto yield = [](int n) { yieldEvents(static_cast<int>(n * pauseScale) > 0 ? static_cast<int>(n * pauseScale) : 1); };
  lblDetectionOnGoing_->show();
  progressbarReaderDetect_->show();
  lblDetectionStatus_->show();
  progressbarReaderDetect_->setValue(0);
  pauseBlock(1000);

  lblDllRev_->show();
  txtAnswer_->clear();
  reader::Answer a = reader::callOnce(d, reader::Op::GetDLLrev);
  showAnswer(a.text);
  if (!a.ok()) return failure();
  const int revision = shell::dllRevisionNumber(a.text);
  if (revision < 3) return wrongLibrary(a.text);
  lblDllRev_->setText(lblDllRev_->text() + QString::fromLatin1(a.text.c_str()));
  g.dllRevision = revision;
  yield(1);
  pauseBlock(5000);

  if (g.dllRevision >= 5 && d.call(reader::Op::USBconnect, nullptr, nullptr) != reader::kStatusOk) return failure();
  yield(1);

  pauseBlock(5000);
  lblMCUrev_->show();
  txtAnswer_->clear();
  a = reader::callOnce(d, reader::Op::getMCUrev);
  showAnswer(a.text);
  if (!a.good("00")) return failure();
  lblMCUrev_->setText(lblMCUrev_->text() + QString::fromStdString(shell::mcuRevisionText(a.text)));
  g.mcuRevision = lblMCUrev_->text().mid(QString(kMcuRev).size()).toStdString();

  pauseBlock(5000);
  txtAnswer_->clear();
  a = reader::callOnce(d, reader::Op::Echo);
  showAnswer(a.text);
  if (!a.good("5500")) return failure();
  yield(1);

  pauseBlock(5000);
  lblIDn_->show();
  txtAnswer_->clear();
  a = reader::callOnce(d, reader::Op::Idn);
  showAnswer(a.text);
  if (!a.ok()) return failure();
  if (a.text.compare(0, 2, "00") != 0) {
    g.chipIdentification.clear();
    return failure();
  }
  const std::string name = shell::chipNameOfIdn(a.text);
  lblIDn_->setText(lblIDn_->text() + QString::fromLatin1(name.data(), static_cast<int>(name.size())));
  g.chipIdentification = lblIDn_->text().toStdString();

  pauseBlock(5000);
  yield(50000);

  g.detectionPending = false;
  lblDetectionOnGoing_->hide();
  lblDetectionStatus_->setText("DEMO-TL42RQ-A detection is OK.");
  g.setStatusPanel1(g.statusPanel1 + glob::kBoardConnected);
  tmrSplash_.start(3000);
}

void frmTL42RQ_Detection::wrongLibrary(const std::string& answer) {
  yieldEvents(1);
  QPalette p = lblDllRev_->palette();
  p.setColor(QPalette::WindowText, QColor(255, 0, 0));
  lblDllRev_->setPalette(p);
  lblDllRev_->setText(lblDllRev_->text() + QString::fromLatin1(answer.substr(0, 3).c_str()) +
                      " -> WRONG DLL REVISION");
  failure();
}

void frmTL42RQ_Detection::failure() {
  auto& g = glob::state();
  yieldEvents(1);
  g.detectionPending = false;
  g.notDetected = true;
  QPalette p = lblDetectionStatus_->palette();
  p.setColor(QPalette::WindowText, QColor(255, 0, 0));
  lblDetectionStatus_->setPalette(p);
  tmrSplash_.start(3000);
  lblDetectionOnGoing_->hide();
  lblDetectionStatus_->setText("DEMO-TL42RQ-A is not detected. Please verify USB connection.");
  for (int i = 0; i < 3; ++i) yieldEvents(static_cast<int>(50000 * pauseScale));
}
