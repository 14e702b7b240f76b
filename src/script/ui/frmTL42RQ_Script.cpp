#include "script/ui/frmTL42RQ_Script.h"

#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

#include "reader/Drivers.h"
#include "script/ScriptInterpreter.h"
#include "shell/UsageFile.h"
#include "shell/ui/Dialogs.h"
#include "shell/ui/Panel.h"

namespace {

constexpr const char* kLoadFilter = "Text File (*.txt)|*.txt|";
constexpr const char* kSaveFilter = "txt File (*.txt)|*.txt";
// Hide read-only, prompt before overwriting, leave the process's directory alone, path
// and file must exist, long names.
constexpr unsigned kFileDialogFlags = 0x20180E;

// WAIT may hand over millions of turns; give them in slices of what yieldEvents takes.
void yieldTurns(long long turns) {
  while (turns > 0) {
    const int slice = turns > 1000000 ? 1000000 : static_cast<int>(turns);
    yieldEvents(slice);
    turns -= slice;
  }
}

}  // namespace

// The loop switch, the number box and the counter of the panel, as the interpreter sees
// them. The loop flag is the global one, so that closing the panel or the main window
// ends a loop after its pass.
class ScriptLoopControls final : public script::LoopControls {
 public:
  explicit ScriptLoopControls(frmTL42RQ_Script* p) : p_(p) {}
  bool loopFlag() const override { return glob::state().scriptLoop; }
  bool loopSwitchOn() const override { return p_->chkLoopOnScript->isChecked(); }
  std::string loopNumber() const override { return p_->txtLOOPnumber->text().toStdString(); }
  void setLoopNumber(const std::string& text) override { p_->txtLOOPnumber->setText(QString::fromStdString(text)); }
  void switchLoopOff() override {
    p_->txtLOOPnumber->setVisible(false);
    p_->lblLOOPnumber->setVisible(false);
    p_->chkLoopOnScript->setChecked(false);
    // The switch's own handler clears the flag; a switch already off still must.
    glob::state().scriptLoop = false;
  }
  void showLoopCount(bool visible) override {
    if (visible) p_->lblLoopCount->setText("0");
    p_->lblLoopCount->setVisible(visible);
  }
  void addOneToLoopCount() override {
    p_->lblLoopCount->setText(QString::number(p_->lblLoopCount->text().toLongLong() + 1));
  }

 private:
  frmTL42RQ_Script* p_;
};

frmTL42RQ_Script::frmTL42RQ_Script(QWidget* parent) : Panel(glob::PanelId::Script, "frmTL42RQ_Script", parent) {
  setWindowTitle("   TL42RQ script tool");
  auto& g = glob::state();
  // The panel sends nothing when it opens: the script selects its protocol itself.
  g.scriptLoop = false;
  g.scriptChipId = "00";

  auto* layout = new QVBoxLayout(this);

  auto* top = new QHBoxLayout;
  cmdScriptLoad = button("cmdScriptLoad", "Load Script");
  cmdScriptSave = button("cmdScriptSave", "Save Script");
  cmdLaunchScript = button("cmdLaunchScript", "Launch Script");
  chkLoopOnScript = new QCheckBox("LOOP ON SCRIPT", this);
  chkLoopOnScript->setObjectName("chkLoopOnScript");
  txtLOOPnumber = new QLineEdit("1", this);
  txtLOOPnumber->setObjectName("txtLOOPnumber");
  txtLOOPnumber->setToolTip("enter the number of LOOP");
  txtLOOPnumber->setMaximumWidth(90);
  txtLOOPnumber->setVisible(false);
  lblLOOPnumber = new QLabel("0 for infinty loop", this);
  lblLOOPnumber->setObjectName("lblLOOPnumber");
  lblLOOPnumber->setVisible(false);
  lblLoopCount = new QLabel("0", this);
  lblLoopCount->setObjectName("lblLoopCount");
  lblLoopCount->setVisible(false);
  top->addWidget(cmdScriptLoad);
  top->addWidget(cmdScriptSave);
  top->addWidget(cmdLaunchScript);
  top->addSpacing(16);
  top->addWidget(chkLoopOnScript);
  top->addWidget(txtLOOPnumber);
  top->addWidget(lblLOOPnumber);
  top->addStretch(1);
  top->addWidget(lblLoopCount);
  layout->addLayout(top);

  auto* split = new QSplitter(Qt::Horizontal, this);
  rtfScriptLoadFileEdit = new QPlainTextEdit(split);
  rtfScriptLoadFileEdit->setObjectName("rtfScriptLoadFileEdit");
  rtfScriptLoadFileEdit->setLineWrapMode(QPlainTextEdit::NoWrap);
  rtfScriptLoadFileEdit->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  rtfScriptLoadFileEdit->setReadOnly(false);
  rtfScriptLogEdit = createLogView("rtfScriptLogEdit");
  rtfScriptLogEdit->setParent(split);
  rtfScriptLogEdit->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  split->addWidget(rtfScriptLoadFileEdit);
  split->addWidget(rtfScriptLogEdit);
  split->setStretchFactor(0, 2);
  split->setStretchFactor(1, 3);
  layout->addWidget(split, 1);
  layout->addWidget(createLogButtons("cmdEraseLogScript", "cmdSaveScriptLog"));

  dlgFileDialog.initDir = shell::programDirectory();
  dlgFileDialog.flags = kFileDialogFlags;

  connect(cmdScriptLoad, &QPushButton::clicked, this, &frmTL42RQ_Script::cmdScriptLoad_Click);
  connect(cmdScriptSave, &QPushButton::clicked, this, &frmTL42RQ_Script::cmdScriptSave_Click);
  connect(cmdLaunchScript, &QPushButton::clicked, this, &frmTL42RQ_Script::cmdLaunchScript_Click);
  connect(chkLoopOnScript, &QCheckBox::toggled, this, &frmTL42RQ_Script::chkLoopOnScript_Click);
  connect(rtfScriptLoadFileEdit, &QPlainTextEdit::textChanged, this, [this] {
    if (!showing_) viewEdited_ = true;
  });
  resize(900, 520);
}

void frmTL42RQ_Script::clearFlagsOnClose() { glob::state().scriptLoop = false; }

std::string frmTL42RQ_Script::scriptText() {
  if (viewEdited_) {
    // Typed text has no carriage returns of its own: each line end of the view is CR LF.
    QString text = rtfScriptLoadFileEdit->toPlainText();
    text.replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
    script_ = text.toLatin1().toStdString();
    viewEdited_ = false;
  }
  return script_;
}

void frmTL42RQ_Script::setScriptText(const std::string& text) {
  script_ = text;
  viewEdited_ = false;
  showScript();
}

void frmTL42RQ_Script::showScript() {
  // One line of the view for each line the interpreter will see: CR CR LF, CR LF and a
  // lone CR each end one line.
  QString shown = QString::fromLatin1(script_.data(), static_cast<qsizetype>(script_.size()));
  shown.replace(QStringLiteral("\r\r\n"), QStringLiteral("\n"));
  shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  shown.replace(QLatin1Char('\r'), QLatin1Char('\n'));
  showing_ = true;
  rtfScriptLoadFileEdit->setPlainText(shown);
  showing_ = false;
}

void frmTL42RQ_Script::chkLoopOnScript_Click(bool on) {
  glob::state().scriptLoop = on;
  txtLOOPnumber->setVisible(on);
  lblLOOPnumber->setVisible(on);
}

void frmTL42RQ_Script::cmdScriptLoad_Click() {
  HandlerScope scope(this);
  yieldEvents(2);
  const auto& g = glob::state();
  const std::string start = g.lastDirectory.empty() ? dlgFileDialog.initDir : g.lastDirectory;
  const QString name = dialogs().openFileName(this, QString::fromStdString(start), kLoadFilter).trimmed();
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const QFileInfo info(name);
  if (!name.isEmpty() && info.exists() && info.size() > 0) {
    keepDirectoryOf(name);
    QFile file(name);
    // A file that cannot be read leaves the view as it was, without a message.
    if (file.open(QIODevice::ReadOnly)) {
      const QByteArray bytes = file.readAll();
      if (file.error() == QFileDevice::NoError) setScriptText(script::viewTextOfFile(bytes.toStdString()));
    }
  }
  QApplication::restoreOverrideCursor();
}

void frmTL42RQ_Script::cmdScriptSave_Click() {
  HandlerScope scope(this);
  const std::string text = scriptText();
  if (text.empty()) return;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const QString name =
      dialogs().saveFileName(this, QString::fromStdString(glob::state().lastDirectory), kSaveFilter).trimmed();
  // Undo what loading did to CR LF files, in the view too.
  setScriptText(script::fileTextOfView(text));
  if (!name.isEmpty()) {
    keepDirectoryOf(name);
    QFile file(name);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
      file.write(script_.data(), static_cast<qint64>(script_.size()));
  }
  QApplication::restoreOverrideCursor();
}

void frmTL42RQ_Script::cmdLaunchScript_Click() {
  HandlerScope scope(this);
  const std::string text = scriptText();
  if (text.empty()) return;
  cmdScriptLoad->setEnabled(false);
  cmdScriptSave->setEnabled(false);
  cmdLaunchScript->setEnabled(false);
  rtfScriptLoadFileEdit->setReadOnly(true);

  ScriptLoopControls loop(this);
  script::Interpreter interpreter(reader::driver(), log(), yieldTurns, loop);
  interpreter.launch(text);

  rtfScriptLoadFileEdit->setReadOnly(false);
  cmdScriptLoad->setEnabled(true);
  cmdScriptSave->setEnabled(true);
  cmdLaunchScript->setEnabled(true);
}
