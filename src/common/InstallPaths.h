// Where the program, the headless runner and the simulated board look for their files,
// first place first. The same binaries run from the build tree (everything in one
// directory) and installed (executables in bin, the driver libraries in a private library
// folder, data in share, a user's own files in the user's configuration folder). No Qt
// and no disk access here: callers pass directories in and test what exists themselves.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace install {

inline constexpr const char* kProductFile = "TL42RQ_products.ini";
inline constexpr const char* kUsageFile = "usageTL42RQsoftware.dat";
inline constexpr const char* kFieldFile = "TL42RQ_field.json";
#ifdef _WIN32
inline constexpr const char* kDriverFile = "TL42RQ.dll";
#else
inline constexpr const char* kDriverFile = "libTL42RQ.so";
#endif

// The installed layout, relative to the folder of the executables and to the private
// library folder, each with its trailing '/' ("../lib/tl42rq/", "../share/tl42rq/", ...).
const std::string& binToLibDir();
const std::string& binToDataDir();
const std::string& libToDataDir();

// The directory with exactly one trailing '/', or "" for "".
std::string withSlash(const std::string& dir);

// The user's configuration folder of this program, "<base>/tl42rq/", as Qt's generic
// configuration location gives it on Linux: XDG_CONFIG_HOME when set and absolute, else
// HOME/.config. Empty when neither is known.
std::string userConfigDirectory(const char* xdgConfigHome, const char* home);

// The driver library: beside the executable, then the private library folder.
std::vector<std::string> driverPlaces(const std::string& programDir);
// The product catalogue: beside the program, then the installed data folder.
std::vector<std::string> productFilePlaces(const std::string& programDir);
// The usage file, to read: beside the program, then the user's folder, then the installed
// default. Without a user folder (tests, tools) only the program's directory counts.
std::vector<std::string> usageFilePlaces(const std::string& programDir, const std::string& userConfigDir);
// The usage file, to write: the one beside the program when it exists there (the build
// tree), else the user's own, never the installed default.
std::string usageFileToWrite(const std::string& programDir, const std::string& userConfigDir,
                             const std::function<bool(const std::string&)>& exists);
// The simulated board's field file: beside the library, then the user's folder, then the
// installed default.
std::vector<std::string> fieldFilePlaces(const std::string& libraryDir, const std::string& userConfigDir);

// The first place that exists; the first place when none does (so that a message names
// where the file was expected); "" for an empty list.
std::string firstExisting(const std::vector<std::string>& places,
                          const std::function<bool(const std::string&)>& exists);

}  // namespace install
