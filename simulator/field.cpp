#include "simulator/field.h"

#include <dlfcn.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "common/InstallPaths.h"

namespace sim {

namespace {
std::string baseName(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}
}  // namespace

std::string defaultFieldPath() {
  if (const char* named = std::getenv("TL42RQ_FIELD"); named && *named) return named;
  // The library's own folder, found through the address of one of its functions: in the
  // build tree the field file lies beside it; installed, the user's own file comes first,
  // then the one the package ships.
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&defaultFieldPath), &info) && info.dli_fname) {
    const std::string library = info.dli_fname;
    const std::size_t slash = library.rfind('/');
    if (slash != std::string::npos) {
      const auto places = install::fieldFilePlaces(
          library.substr(0, slash + 1), install::userConfigDirectory(std::getenv("XDG_CONFIG_HOME"), std::getenv("HOME")));
      return install::firstExisting(places, [](const std::string& p) {
        struct stat st {};
        return ::stat(p.c_str(), &st) == 0;
      });
    }
  }
  return install::kFieldFile;
}

Field::Stamp Field::stampOf(const std::string& path) {
  struct stat st {};
  Stamp s;
  if (::stat(path.c_str(), &st) != 0) return s;
  s.exists = true;
  s.modified = st.st_mtim;
  s.size = st.st_size;
  s.inode = st.st_ino;
  return s;
}

std::string Field::loadText(std::string_view json) {
  path_.clear();
  stamp_ = {};
  ParseOutcome outcome = parseField(json, "field text");
  contents_ = std::move(outcome.contents);
  return outcome.error;
}

std::string Field::loadFile(const std::string& path) {
  path_ = path;
  return readFollowed();
}

bool Field::reloadIfChanged(std::string& error) {
  if (path_.empty() || stampOf(path_) == stamp_) return false;
  error = readFollowed();
  return true;
}

// The stamp is taken before reading, so that a change made while reading is seen next time.
std::string Field::readFollowed() {
  stamp_ = stampOf(path_);
  const std::string name = baseName(path_);
  std::string error;
  struct stat st {};
  if (::stat(path_.c_str(), &st) != 0) {
    error = name + ": cannot open " + path_ + ": " + std::strerror(errno);
  } else if (!S_ISREG(st.st_mode)) {
    error = name + ": " + path_ + " is not a regular file";
  } else if (static_cast<std::size_t>(st.st_size) > kMaxFieldFileSize) {
    error = name + ": the file is larger than " + std::to_string(kMaxFieldFileSize >> 20) + " MiB";
  } else if (std::ifstream in(path_, std::ios::binary); !in.is_open()) {
    error = name + ": cannot open " + path_ + ": " + std::strerror(errno);
  } else {
    const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    ParseOutcome outcome = parseField(text, name);
    contents_ = std::move(outcome.contents);
    return outcome.error;
  }
  contents_ = defaultField();
  return error;
}

}  // namespace sim
