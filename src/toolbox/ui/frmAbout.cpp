#include "toolbox/ui/frmAbout.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMdiSubWindow>
#include <QProcess>
#include <QPushButton>
#include <QVBoxLayout>

#include "shell/ui/Dialogs.h"
#include "toolbox/SystemInformation.h"

#define TL42RQ_STR2(x) #x
#define TL42RQ_STR(x) TL42RQ_STR2(x)

namespace {
struct SysInfoServices {
  frmAbout::ToolFinder finder;
  frmAbout::ToolStarter starter;
};

SysInfoServices& services() {
  static SysInfoServices s;
  return s;
}

std::string findTool() {
  const auto& f = services().finder;
  return f ? f() : toolbox::findSystemInformationToolInPath();
}

bool startTool(const std::string& program) {
  const auto& s = services().starter;
  if (s) return s(program);
  // Detached: the tool lives on when the About box or the program closes.
  return QProcess::startDetached(QString::fromStdString(program), {});
}

QLabel* label(QWidget* parent, const QString& name, const QString& text) {
  auto* l = new QLabel(text, parent);
  l->setObjectName(name);
  return l;
}
}  // namespace

void frmAbout::setSysInfoServices(ToolFinder finder, ToolStarter starter) {
  services() = {std::move(finder), std::move(starter)};
}

frmAbout::frmAbout(QWidget* parent) : Panel(glob::PanelId::About, "frmAbout", parent) {
  setWindowTitle(QString("About ") + kApplicationTitle);
  auto* layout = new QVBoxLayout(this);
  auto* lblTitle = label(this, "lblTitle", "TL42RQ Development Software for DEMO-TL42RQ-A and DEMO-TL42RQ-B");
  QFont big = lblTitle->font();
  big.setPointSizeF(big.pointSizeF() * 1.4);
  big.setBold(true);
  lblTitle->setFont(big);
  layout->addWidget(lblTitle);
  layout->addWidget(label(this, "lblVersion",
                          "VERSION " TL42RQ_STR(TL42RQ_VERSION_MAJOR) "." TL42RQ_STR(TL42RQ_VERSION_MINOR) "." TL42RQ_STR(
                              TL42RQ_VERSION_PATCH)));
  auto* lblDescription = label(this, "lblDescription",
                               "A bench tool for the TL42RQ 13.56 MHz RF transceiver: chip commands, ISO 15693, "
                               "ISO 14443-A, ISO 14443-B and ISO 18092 tag commands, tag discovery and scripts.");
  lblDescription->setWordWrap(true);
  layout->addWidget(lblDescription);
  auto* lblDisclaimer = label(this, "lblDisclaimer",
                              "Warning: this software is provided for evaluation of the TL42RQ on its "
                              "demonstration boards only, as is, without warranty of any kind.");
  lblDisclaimer->setWordWrap(true);
  layout->addWidget(lblDisclaimer);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  auto* ok = button("cmdOK", "OK");
  auto* sysInfo = button("cmdSysInfo", "&System Info...");
  buttons->addWidget(ok);
  buttons->addWidget(sysInfo);
  layout->addLayout(buttons);
  connect(ok, &QPushButton::clicked, this, &frmAbout::cmdOK_Click);
  connect(sysInfo, &QPushButton::clicked, this, &frmAbout::cmdSysInfo_Click);
  setFixedWidth(sizeHint().width());
}

void frmAbout::cmdOK_Click() {
  if (auto* sub = qobject_cast<QMdiSubWindow*>(parentWidget())) sub->close();
  else close();
}

void frmAbout::cmdSysInfo_Click() { StartSysInfo(); }

void frmAbout::StartSysInfo() {
  const std::string program = findTool();
  if (!program.empty() && startTool(program)) return;
  dialogs().message(this, toolbox::kSysInfoNotAvailable, kApplicationTitle, MessageIcon::Information);
}
