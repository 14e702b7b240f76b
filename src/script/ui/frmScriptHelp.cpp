#include "script/ui/frmScriptHelp.h"

#include <QFontDatabase>
#include <QGroupBox>
#include <QLabel>
#include <QVBoxLayout>

#include "script/ScriptKeywords.h"

namespace {

// Rows are aligned by blanks, so they need a font where every character is as wide.
QLabel* rowLabel(QWidget* parent, const QString& name, const std::string& text) {
  auto* l = new QLabel(QString::fromStdString(text), parent);
  l->setObjectName(name);
  l->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  l->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return l;
}

QGroupBox* group(QWidget* parent, const QString& name, const char* title) {
  auto* g = new QGroupBox(QString::fromLatin1(title), parent);
  g->setObjectName(name);
  new QVBoxLayout(g);
  return g;
}

// Every row of the group, those this library has not hidden.
void addRows(QGroupBox* box, script::HelpGroup which, int revision) {
  for (const script::HelpRow& r : script::helpRows(which, script::kNewLibraryRevision)) {
    QLabel* l = rowLabel(box, QString("lblHelp_%1").arg(r.row), r.text);
    if (!script::helpRowShown(r.row, revision)) l->setVisible(false);
    box->layout()->addWidget(l);
  }
}

}  // namespace

frmScriptHelp::frmScriptHelp(QWidget* parent) : Panel(glob::PanelId::ScriptHelp, "frmScriptHelp", parent) {
  setWindowTitle("   Script Help");
  auto* layout = new QVBoxLayout(this);
  // Rows of libraries older than revision 5 are left out, so that the data note moves
  // up and the group shrinks.
  const int revision = glob::state().dllRevision;

  QGroupBox* available = group(this, "fraAvailableCommands", script::kHelpTitleAvailable);
  addRows(available, script::HelpGroup::Available, revision);
  layout->addWidget(available);

  QGroupBox* custom = group(this, "fraCustomCommands", script::kHelpTitleCustom);
  addRows(custom, script::HelpGroup::Custom, revision);
  layout->addWidget(custom);

  QGroupBox* example = group(this, "fraScriptExample", script::kHelpTitleExample);
  for (std::size_t i = 0; i < script::kHelpExample.size(); ++i)
    example->layout()->addWidget(rowLabel(example, QString("lblExample_%1").arg(i), script::kHelpExample[i]));
  layout->addWidget(example);
  layout->addStretch(1);
}
