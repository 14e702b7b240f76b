#include "common/InstallPaths.h"

#include <filesystem>

// The build passes the installed layout in (TL42RQ_INSTALL_LIBDIR and
// TL42RQ_INSTALL_DATADIR, relative to bin and to each other).
#if !defined(TL42RQ_BIN_TO_LIBDIR) || !defined(TL42RQ_BIN_TO_DATADIR) || !defined(TL42RQ_LIB_TO_DATADIR)
#error "TL42RQ_BIN_TO_LIBDIR, TL42RQ_BIN_TO_DATADIR and TL42RQ_LIB_TO_DATADIR come from the build"
#endif

namespace install {

const std::string& binToLibDir() {
  static const std::string dir = withSlash(TL42RQ_BIN_TO_LIBDIR);
  return dir;
}
const std::string& binToDataDir() {
  static const std::string dir = withSlash(TL42RQ_BIN_TO_DATADIR);
  return dir;
}
const std::string& libToDataDir() {
  static const std::string dir = withSlash(TL42RQ_LIB_TO_DATADIR);
  return dir;
}

namespace {
// dir + relative, with "a/../" folded away (on the text only), so that messages and the
// status bar name /usr/lib/... rather than /usr/bin/../lib/....
std::string folded(const std::string& dir, const std::string& relative) {
  return withSlash(std::filesystem::path(dir + relative).lexically_normal().string());
}
}  // namespace

std::string withSlash(const std::string& dir) {
  if (dir.empty()) return dir;
  std::size_t end = dir.size();
  while (end > 1 && dir[end - 1] == '/') --end;
  return end == 1 && dir[0] == '/' ? std::string("/") : dir.substr(0, end) + '/';
}

std::string userConfigDirectory(const char* xdgConfigHome, const char* home) {
  if (xdgConfigHome && xdgConfigHome[0] == '/') return withSlash(xdgConfigHome) + "tl42rq/";
  if (home && *home) return withSlash(home) + ".config/tl42rq/";
  return {};
}

std::vector<std::string> driverPlaces(const std::string& programDir) {
  // A relative installed place means nothing without the program's own directory.
  if (programDir.empty()) return {kDriverFile};
  const std::string dir = withSlash(programDir);
  return {dir + kDriverFile, folded(dir, binToLibDir()) + kDriverFile};
}

std::vector<std::string> productFilePlaces(const std::string& programDir) {
  if (programDir.empty()) return {kProductFile};
  const std::string dir = withSlash(programDir);
  return {dir + kProductFile, folded(dir, binToDataDir()) + kProductFile};
}

std::vector<std::string> usageFilePlaces(const std::string& programDir, const std::string& userConfigDir) {
  const std::string dir = withSlash(programDir);
  if (userConfigDir.empty()) return {dir + kUsageFile};
  return {dir + kUsageFile, withSlash(userConfigDir) + kUsageFile, folded(dir, binToDataDir()) + kUsageFile};
}

std::string usageFileToWrite(const std::string& programDir, const std::string& userConfigDir,
                             const std::function<bool(const std::string&)>& exists) {
  const std::string beside = withSlash(programDir) + kUsageFile;
  if (userConfigDir.empty() || exists(beside)) return beside;
  return withSlash(userConfigDir) + kUsageFile;
}

std::vector<std::string> fieldFilePlaces(const std::string& libraryDir, const std::string& userConfigDir) {
  const std::string dir = withSlash(libraryDir);
  std::vector<std::string> places{dir + kFieldFile};
  if (!userConfigDir.empty()) places.push_back(withSlash(userConfigDir) + kFieldFile);
  places.push_back(folded(dir, libToDataDir()) + kFieldFile);
  return places;
}

std::string firstExisting(const std::vector<std::string>& places,
                          const std::function<bool(const std::string&)>& exists) {
  for (const std::string& p : places)
    if (exists(p)) return p;
  return places.empty() ? std::string() : places.front();
}

}  // namespace install
