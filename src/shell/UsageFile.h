// The preferences kept from one run to the next: the last-used directory and the main
// window's background colour, one line of two quoted fields.
#pragma once

#include <optional>
#include <string>

namespace shell {

inline constexpr const char* kUsageFileName = "usageTL42RQsoftware.dat";

struct UsagePreferences {
  std::string lastDirectory;
  std::string backgroundColor;
};

// The two fields of the file's text; nullopt when the text does not hold them.
std::optional<UsagePreferences> parseUsageText(const std::string& text);
std::string usageLine(const std::string& directory, const std::string& colour);

// Reads the file into the global values; a missing or unreadable file changes nothing.
// The file is the first readable one of install::usageFilePlaces: beside the program,
// else (once a user folder is set) the user's own, else the installed default.
void readUsageFile();
// Rewrites the file with these values, but only when one can be read: a missing file
// is not created here (the installation ships one). Beside the program when it is there,
// else into the user's folder, never over the installed default.
void writeUsageFile(const std::string& directory, const std::string& colour);

// A colour text as the file keeps it: decimal, or "&h" and hexadecimal digits.
// Anything that is no number gives 0.
long colourValue(const std::string& text);

// The directory the program runs from, with its trailing separator. Setting it forgets
// the user folder, so that only this directory counts until one is set.
const std::string& programDirectory();
void setProgramDirectory(std::string dir);
// The user's configuration folder for this program (empty: none, only the program's
// directory counts).
const std::string& userConfigDirectory();
void setUserConfigDirectory(std::string dir);

// The product catalogue: the first of install::productFilePlaces that exists.
std::string productFilePath();

}  // namespace shell
