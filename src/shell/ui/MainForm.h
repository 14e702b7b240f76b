// The frame of the program: a maximised multi-document window with the menus, the
// status bar and the board detection at start.
#pragma once

#include <QMainWindow>
#include <QPointer>

#include "shell/GlobVariables.h"
#include "shell/ui/frmTL42RQ_Detection.h"

class QApplication;
class QLabel;
class QMdiArea;
class QMenu;
class Panel;

class MainForm : public QMainWindow {
  Q_OBJECT
 public:
  explicit MainForm(QWidget* parent = nullptr);
  ~MainForm() override;

  // The loading sequence; `runDetection` false leaves the splash out (tests drive it).
  void load(bool runDetection = true);

  // Opens a panel as a child window, closing those it cannot stand beside. Returns the
  // panel, or nullptr when that window is not built.
  Panel* openPanel(glob::PanelId id);
  void closePanel(glob::PanelId id);
  Panel* panel(glob::PanelId id) const;
  // Looks the caption's first word up in the product file and opens its panel.
  void openProduct(const QString& caption);

  void enableTopMenus(bool enabled);
  QString statusPanel1Text() const;
  QString statusPanel2Text() const;
  frmTL42RQ_Detection* detection() const { return detection_; }
  QMdiArea* mdiArea() const { return mdi_; }

  // The program ends the process at once on close; tests keep it alive.
  void setEndsProcessOnClose(bool ends) { endsProcessOnClose_ = ends; }

  void mnubackgroundcolor_Click();
  // Tools > Export trace (pcapng)...: the active panel's capture through the save dialog.
  void mnuExportPcapng_Click();
  // The panel of the active child window, if any.
  Panel* activePanel() const;

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void buildMenus();
  QMenu* topMenu(const QString& name, const QString& caption);
  void addProductItems(QMenu* menu, const QString& name, const QStringList& captions);
  QAction* item(QMenu* menu, const QString& name, const QString& caption);
  void applyBackground();

  QMdiArea* mdi_ = nullptr;
  QLabel* panel1_ = nullptr;
  QLabel* panel2_ = nullptr;
  QPointer<frmTL42RQ_Detection> detection_;
  QList<QMenu*> topMenus_;
  QString fileDialogDirectory_;
  bool endsProcessOnClose_ = true;
};

MainForm* mainForm();

// Starts the program on the driver beside it; returns the exit code.
int runProgram(QApplication& app);
