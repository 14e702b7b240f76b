#include "toolbox/SystemInformation.h"

#include <QStandardPaths>
#include <QString>

namespace toolbox {

std::string findSystemInformationTool(const std::function<std::string(const std::string&)>& locate) {
  if (!locate) return {};
  for (const char* name : kSystemInformationTools) {
    std::string path = locate(name);
    if (!path.empty()) return path;
  }
  return {};
}

std::string findSystemInformationToolInPath() {
  return findSystemInformationTool([](const std::string& name) {
    return QStandardPaths::findExecutable(QString::fromStdString(name)).toStdString();
  });
}

}  // namespace toolbox
