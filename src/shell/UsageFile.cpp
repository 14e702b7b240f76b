#include "shell/UsageFile.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "common/InstallPaths.h"
#include "shell/FieldReader.h"
#include "shell/GlobVariables.h"

namespace shell {

namespace {
std::string& programDirectorySlot() {
  static std::string dir = "./";
  return dir;
}
std::string& userConfigDirectorySlot() {
  static std::string dir;
  return dir;
}
bool fileExists(const std::string& path) {
  std::error_code ec;
  return std::filesystem::exists(path, ec);
}
}  // namespace

const std::string& programDirectory() { return programDirectorySlot(); }
void setProgramDirectory(std::string dir) {
  if (!dir.empty() && dir.back() != '/') dir += '/';
  programDirectorySlot() = std::move(dir);
  userConfigDirectorySlot().clear();
}
const std::string& userConfigDirectory() { return userConfigDirectorySlot(); }
void setUserConfigDirectory(std::string dir) { userConfigDirectorySlot() = install::withSlash(dir); }

std::string productFilePath() {
  return install::firstExisting(install::productFilePlaces(programDirectory()), fileExists);
}

std::optional<UsagePreferences> parseUsageText(const std::string& text) {
  FieldReader fields(text);
  auto dir = fields.next();
  auto colour = fields.next();
  if (!dir || !colour) return std::nullopt;
  return UsagePreferences{*dir, *colour};
}

std::string usageLine(const std::string& directory, const std::string& colour) {
  return "\"" + directory + "\",\"" + colour + "\"\r\n";
}

static std::optional<std::string> readWhole(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

// The first usage file that can be read, in the order of install::usageFilePlaces.
static std::optional<std::string> readUsageText() {
  for (const std::string& path : install::usageFilePlaces(programDirectory(), userConfigDirectory()))
    if (auto text = readWhole(path)) return text;
  return std::nullopt;
}

void readUsageFile() {
  const auto text = readUsageText();
  if (!text) return;
  const auto prefs = parseUsageText(*text);
  if (!prefs) return;
  auto& g = glob::state();
  g.lastDirectory = prefs->lastDirectory;
  g.backgroundColor = prefs->backgroundColor;
}

void writeUsageFile(const std::string& directory, const std::string& colour) {
  if (!readUsageText()) return;
  const std::string path = install::usageFileToWrite(programDirectory(), userConfigDirectory(), fileExists);
  // Installed, the first write makes the user's own file (and its folder); the default the
  // package ships stays as it is.
  std::error_code ec;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ec);
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (out) out << usageLine(directory, colour);
}

long colourValue(const std::string& text) {
  if (text.size() > 2 && text[0] == '&' && (text[1] == 'h' || text[1] == 'H')) {
    const std::string digits = text.substr(2);
    char* end = nullptr;
    const unsigned long v = std::strtoul(digits.c_str(), &end, 16);
    if (digits.empty() || *end != '\0' || digits.size() > 8) return 0;
    return static_cast<long>(v);
  }
  if (text.empty()) return 0;
  char* end = nullptr;
  const long v = std::strtol(text.c_str(), &end, 10);
  return (*end != '\0') ? 0 : v;
}

}  // namespace shell
