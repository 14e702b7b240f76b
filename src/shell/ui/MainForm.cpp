#include "shell/ui/MainForm.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QScreen>
#include <QStandardPaths>
#include <QStatusBar>
#include <cstdlib>
#include <memory>

#include "export/Capture.h"
#include "reader/Drivers.h"
#include "reader/HexText.h"
#include "shell/Product.h"
#include "shell/UsageFile.h"
#include "shell/ui/DetectionReport.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/Panel.h"
#include "shell/ui/PanelFactory.h"
#include "shell/ui/frmTL42RQ_Detection.h"

namespace {
MainForm* theMainForm = nullptr;

// Colours are kept as the platform's 0x00BBGGRR numbers.
long colourNumber(const QColor& c) { return c.red() | c.green() << 8 | c.blue() << 16; }
QColor colourOf(long n) { return QColor(n & 0xFF, (n >> 8) & 0xFF, (n >> 16) & 0xFF); }

using glob::PanelId;
constexpr PanelId kProtocolPanels[] = {PanelId::ISO15693, PanelId::ISO14443A, PanelId::ISO14443B,
                                       PanelId::ISO18092};
}  // namespace

MainForm* mainForm() { return theMainForm; }

MainForm::MainForm(QWidget* parent) : QMainWindow(parent) {
  theMainForm = this;
  setObjectName("MainForm");
  mdi_ = new QMdiArea(this);
  mdi_->setObjectName("mdiArea");
  setCentralWidget(mdi_);

  auto* bar = new QStatusBar(this);
  bar->setObjectName("StatusBar");
  panel1_ = new QLabel(bar);
  panel1_->setObjectName("StatusBar_1");
  panel2_ = new QLabel(bar);
  panel2_->setObjectName("StatusBar_2");
  bar->addWidget(panel1_, 1);
  bar->addWidget(panel2_, 2);
  setStatusBar(bar);
  glob::state().statusPanel1Changed = [this](const std::string& t) { panel1_->setText(QString::fromStdString(t)); };
  panel2_->setText(QString::fromStdString(reader::driver().description()));

  buildMenus();
}

MainForm::~MainForm() {
  glob::state().statusPanel1Changed = nullptr;
  if (theMainForm == this) theMainForm = nullptr;
}

QMenu* MainForm::topMenu(const QString& name, const QString& caption) {
  QMenu* m = menuBar()->addMenu(caption);
  m->setObjectName(name);
  m->menuAction()->setObjectName(name);
  topMenus_ << m;
  return m;
}

QAction* MainForm::item(QMenu* menu, const QString& name, const QString& caption) {
  QAction* a = menu->addAction(caption);
  a->setObjectName(name);
  return a;
}

void MainForm::addProductItems(QMenu* menu, const QString& name, const QStringList& captions) {
  for (int i = 0; i < captions.size(); ++i) {
    QAction* a = captions[i] == "-" ? menu->addSeparator() : menu->addAction(captions[i]);
    a->setObjectName(name + "_" + QString::number(i));
    if (captions[i] != "-") connect(a, &QAction::triggered, this, [this, a] { openProduct(a->text()); });
  }
}

void MainForm::buildMenus() {
  QMenu* commands = topMenu("mnuTL42RQcommands", "TL42RQ commands");
  connect(item(commands, "mnuShowTL42RQcommands", "TL42RQ commands"), &QAction::triggered, this,
          [this] { openPanel(PanelId::UserInterface); });

  addProductItems(topMenu("mnuISO15693cmd", "ISO15693"), "mnuISO15693product",
                  {"VAX30", "VAX40", "VAS50", "VAS60E", "VAS70", "-", "QLN41E", "QLN42E", "QLN43", "QLN44E"});
  addProductItems(topMenu("mnuISO14443Bcmd", "ISO14443-B"), "mnuISO14443Bproduct",
                  {"ISO14443-B Cards commands", "-", "PDX51", "PDT52", "PDX53", "PDX54", "PDY55"});
  addProductItems(topMenu("mnuISO14443Acmd", "ISO14443-A"), "mnuISO14443Aproduct",
                  {"ISO14443-A Cards commands", "-", "TOPAZ"});
  QMenu* iso18092 = topMenu("mnuISO18092cmd", "ISO18092");
  QAction* felica = item(iso18092, "mnuISO18092product", "ISO18092 Cards commands");
  connect(felica, &QAction::triggered, this, [this, felica] { openProduct(felica->text()); });

  QMenu* tools = topMenu("mnuTool", " Tools");
  connect(item(tools, "mnuShowDemoKitTools", "DEMO-TL42RQ-A tool box"), &QAction::triggered, this,
          [this] { openPanel(PanelId::DemoKitTools); });
  connect(item(tools, "mnuShowTagDetectionTool", "Tag Detection tool"), &QAction::triggered, this,
          [this] { openPanel(PanelId::TagDetection); });
  connect(item(tools, "mnuShowAutoDetectTool", "Auto Detect tool"), &QAction::triggered, this,
          [this] { openPanel(PanelId::AutoDetect); });
  connect(item(tools, "mnuShowScriptTool", "Script tool"), &QAction::triggered, this,
          [this] { openPanel(PanelId::Script); });
  connect(item(tools, "mnuShowMementoFile", "Memento File"), &QAction::triggered, this,
          [this] { openPanel(PanelId::MementoFile); });
  connect(item(tools, "mnuExportPcapng", "Export trace (pcapng)..."), &QAction::triggered, this,
          &MainForm::mnuExportPcapng_Click);

  QMenu* help = topMenu("mnuHelp", "Help");
  connect(item(help, "mnubackgroundcolor", "Change backgroung color"), &QAction::triggered, this,
          &MainForm::mnubackgroundcolor_Click);
  connect(item(help, "mnuScriptHelp", "Script Help"), &QAction::triggered, this,
          [this] { openPanel(PanelId::ScriptHelp); });
  connect(item(help, "mnuabout", "About ..."), &QAction::triggered, this, [this] { openPanel(PanelId::About); });
}

void MainForm::enableTopMenus(bool enabled) {
  for (QMenu* m : topMenus_) m->menuAction()->setEnabled(enabled);
}

QString MainForm::statusPanel1Text() const { return panel1_->text(); }
QString MainForm::statusPanel2Text() const { return panel2_->text(); }

void MainForm::load(bool runDetection) {
  auto& g = glob::state();
  g.panelOpen.fill(false);
  findChild<QAction*>("mnuShowMementoFile")->setVisible(false);
  setWindowTitle("  TL42RQ Development Software");
  enableTopMenus(false);
  fileDialogDirectory_ = QString::fromStdString(shell::programDirectory());
  g.iso14443AModulationGain = "D1";
  move(0, 0);
  // Without a window manager (a bare X server) maximising does nothing: take the screen.
  if (screen()) resize(screen()->availableGeometry().size());
  setWindowState(windowState() | Qt::WindowMaximized);
  g.backgroundColor = "&h" + reader::hexPadWidth8(colourNumber(mdi_->background().color()), 8);
  shell::readUsageFile();
  applyBackground();
  g.chipIdentification.clear();
  if (runDetection) {
    detection_ = new frmTL42RQ_Detection(this);
    detection_->show();
  }
}

void MainForm::applyBackground() {
  mdi_->setBackground(colourOf(shell::colourValue(glob::state().backgroundColor)));
}

void MainForm::mnubackgroundcolor_Click() {
  auto& g = glob::state();
  const QColor remembered = mdi_->background().color();
  const auto chosen = dialogs().color(this, colourOf(0xFFC0C0));
  const QColor colour = chosen ? *chosen : remembered;
  mdi_->setBackground(colour);
  g.backgroundColor = std::to_string(colourNumber(colour));
  shell::writeUsageFile(g.lastDirectory, g.backgroundColor);
}

Panel* MainForm::activePanel() const {
  QMdiSubWindow* sub = mdi_->activeSubWindow();
  if (!sub) sub = mdi_->currentSubWindow();
  // Before any window was activated (no window manager yet), the one in front counts.
  if (!sub) {
    const QList<QMdiSubWindow*> front = mdi_->subWindowList(QMdiArea::StackingOrder);
    if (!front.isEmpty()) sub = front.last();
  }
  auto* p = sub ? qobject_cast<Panel*>(sub->widget()) : nullptr;
  return p && !p->closing() ? p : nullptr;
}

// The active panel's exchanges as a pcapng file of the user's choice, through the save
// dialog and the last-used directory as Save Log goes.
void MainForm::mnuExportPcapng_Click() {
  Panel* p = activePanel();
  if (!p) return;
  const pcapng::Bytes file = capture::pcapngFile(p->capture().records());
  const QString name = askSaveFileName(this, "pcapng File (*.pcapng)|*.pcapng");
  if (name.isEmpty()) return;
  QFile f(name);
  if (f.open(QIODevice::WriteOnly | QIODevice::Truncate))
    f.write(reinterpret_cast<const char*>(file.data()), static_cast<qint64>(file.size()));
}

Panel* MainForm::panel(PanelId id) const {
  for (QMdiSubWindow* sub : mdi_->subWindowList()) {
    auto* p = qobject_cast<Panel*>(sub->widget());
    if (p && p->panelId() == id && !p->closing()) return p;
  }
  return nullptr;
}

void MainForm::closePanel(PanelId id) {
  for (QMdiSubWindow* sub : mdi_->subWindowList()) {
    auto* p = qobject_cast<Panel*>(sub->widget());
    if (p && p->panelId() == id) sub->close();
  }
}

Panel* MainForm::openPanel(PanelId id) {
  // Which windows cannot stay beside the one that opens.
  switch (id) {
    case PanelId::TagDetection:
      for (PanelId p : kProtocolPanels) closePanel(p);
      closePanel(PanelId::AutoDetect);
      break;
    case PanelId::AutoDetect:
      for (PanelId p : kProtocolPanels) closePanel(p);
      closePanel(PanelId::TagDetection);
      break;
    case PanelId::Script:
      for (PanelId p : kProtocolPanels) closePanel(p);
      break;
    default:
      break;
  }
  if (Panel* open = panel(id)) {
    if (auto* sub = qobject_cast<QMdiSubWindow*>(open->parentWidget())) mdi_->setActiveSubWindow(sub);
    return open;
  }
  Panel* p = shell::createPanel(id, nullptr);
  if (!p) return nullptr;
  QMdiSubWindow* sub = mdi_->addSubWindow(p);
  sub->setAttribute(Qt::WA_DeleteOnClose);
  sub->setWindowTitle(p->windowTitle());
  connect(p, &QWidget::windowTitleChanged, sub, &QWidget::setWindowTitle);
  sub->show();
  return p;
}

void MainForm::openProduct(const QString& caption) {
  const std::string reference = shell::referenceOfCaption(caption.toStdString());
  QFile file(QString::fromStdString(shell::productFilePath()));
  if (!file.open(QIODevice::ReadOnly)) {
    dialogs().message(this, "File 'TL42RQ_products.ini' is missing", "DEMO-TL42RQ-A", MessageIcon::Stop);
    return;
  }
  const QByteArray text = file.readAll();
  file.close();
  const auto product = shell::findProduct(text.toStdString(), reference);
  if (!product) return;
  shell::currentProduct() = *product;
  if (detection_) detection_->close();
  for (PanelId p : kProtocolPanels) closePanel(p);
  // frmTL42RQ_CRC_calculation_tool would close here too; nothing ever opens it, so the
  // program does not build it.
  closePanel(PanelId::Script);
  closePanel(PanelId::TagDetection);
  closePanel(PanelId::AutoDetect);
  shell::productSizes() = shell::deriveSizes(*product);
  const auto panelId = shell::panelForReference(product->Reference());
  if (!panelId) {
    dialogs().message(this, "Error found in file 'TL42RQ_Products.ini'", "TL42RQ_Development_Software",
                      MessageIcon::Stop);
    if (endsProcessOnClose_) std::exit(1);
    return;
  }
  if (Panel* p = openPanel(*panelId))
    p->setWindowTitle(p->windowTitle() + QString::fromStdString(product->Reference()));
}

void MainForm::closeEvent(QCloseEvent* event) {
  auto& g = glob::state();
  g.stopFlag = true;
  g.iso18092ReqcLoop = false;
  g.iso14443bReqbLoop = false;
  g.iso14443bWupbLoop = false;
  g.scriptLoop = false;
  event->accept();
  if (endsProcessOnClose_) {
    // Like the bench tool always did: the process ends here, whatever loop is running.
    // Files are written whole inside their handlers, so nothing is lost.
    std::fflush(nullptr);
    std::_Exit(0);
  }
  mdi_->closeAllSubWindows();
}

int runProgram(QApplication& app) {
  shell::setProgramDirectory(QCoreApplication::applicationDirPath().toStdString());
  // Installed, the user's preferences live in the user's configuration folder.
  const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  if (!config.isEmpty()) shell::setUserConfigDirectory(config.toStdString() + "/tl42rq/");
  std::unique_ptr<reader::ReaderDriver> driver =
      reader::LibraryDriver::load(reader::defaultLibraryPath(shell::programDirectory()));
  reader::setDriver(driver.get());
  MainForm form;
  form.load();
  if (const char* report = std::getenv("TL42RQ_REPORT_DETECTION"); report && *report && form.detection())
    reportDetectionAndQuit(form, *form.detection());
  form.show();
  const int code = app.exec();
  reader::setDriver(nullptr);
  return code;
}
