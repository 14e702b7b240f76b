// Which window class serves which panel. Every panel class adds its one line to
// PanelFactory.cpp; a panel not yet built has no line, and its menu opens nothing.
#pragma once

#include <QString>
#include <functional>

#include "shell/GlobVariables.h"

class Panel;
class QWidget;

namespace shell {

// The system's name of each panel (its objectName).
QString panelName(glob::PanelId id);
// A new panel of this kind, or nullptr when none is built yet.
Panel* createPanel(glob::PanelId id, QWidget* parent);
bool panelAvailable(glob::PanelId id);

}  // namespace shell
