#include "shell/ui/PanelFactory.h"

#include <array>

#include "discovery/ui/frmTL42RQ_AutoDetectTool_UI.h"
#include "discovery/ui/frmTL42RQ_TagDetection_UI.h"
#include "script/ui/frmScriptHelp.h"
#include "script/ui/frmTL42RQ_Script.h"
#include "iso14443b/ui/frmTL42RQ_ISO14443B_UI.h"
#include "iso14443a/ui/frmTL42RQ_ISO14443A_UI.h"
#include "iso15693/ui/frmTL42RQ_ISO15693_UI.h"
#include "iso18092/ui/frmTL42RQ_ISO18092_UI.h"
#include "console/ui/frmTL42RQ_UserInterface.h"
#include "shell/ui/Panel.h"
#include "toolbox/ui/frmAbout.h"
#include "toolbox/ui/frmMementoFile.h"
#include "toolbox/ui/frmTL42RQ_DemoKit_tools.h"

namespace shell {

namespace {
struct PanelRow {
  glob::PanelId id;
  const char* name;
  Panel* (*create)(QWidget* parent);
};

template <typename T>
Panel* make(QWidget* parent) {
  return new T(parent);
}

// One row per panel; `nullptr` where the window is not built yet.
const std::array<PanelRow, static_cast<std::size_t>(glob::PanelId::Count)> kPanels{{
    {glob::PanelId::UserInterface, "frmTL42RQ_UserInterface", make<frmTL42RQ_UserInterface>},
    {glob::PanelId::ISO15693, "frmTL42RQ_ISO15693_UI", make<frmTL42RQ_ISO15693_UI>},
    {glob::PanelId::ISO14443A, "frmTL42RQ_ISO14443A_UI", make<frmTL42RQ_ISO14443A_UI>},
    {glob::PanelId::ISO14443B, "frmTL42RQ_ISO14443B_UI", make<frmTL42RQ_ISO14443B_UI>},
    {glob::PanelId::ISO18092, "frmTL42RQ_ISO18092_UI", make<frmTL42RQ_ISO18092_UI>},
    {glob::PanelId::DemoKitTools, "frmTL42RQ_DemoKit_tools", make<frmTL42RQ_DemoKit_tools>},
    {glob::PanelId::Script, "frmTL42RQ_Script", make<frmTL42RQ_Script>},
    {glob::PanelId::ScriptHelp, "frmScriptHelp", make<frmScriptHelp>},
    {glob::PanelId::TagDetection, "frmTL42RQ_TagDetection_UI", make<frmTL42RQ_TagDetection_UI>},
    {glob::PanelId::AutoDetect, "frmTL42RQ_AutoDetectTool_UI", make<frmTL42RQ_AutoDetectTool_UI>},
    {glob::PanelId::MementoFile, "frmMementoFile", make<frmMementoFile>},
    {glob::PanelId::About, "frmAbout", make<frmAbout>},
}};
}  // namespace

QString panelName(glob::PanelId id) { return QString::fromLatin1(kPanels[static_cast<std::size_t>(id)].name); }

Panel* createPanel(glob::PanelId id, QWidget* parent) {
  const auto& row = kPanels[static_cast<std::size_t>(id)];
  return row.create ? row.create(parent) : nullptr;
}

bool panelAvailable(glob::PanelId id) { return kPanels[static_cast<std::size_t>(id)].create != nullptr; }

}  // namespace shell
