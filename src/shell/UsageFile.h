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
void readUsageFile();
// Rewrites the file with these values, but only a file that can be read: a missing file
// is not created here (the installation ships one).
void writeUsageFile(const std::string& directory, const std::string& colour);

// A colour text as the file keeps it: decimal, or "&h" and hexadecimal digits.
// Anything that is no number gives 0.
long colourValue(const std::string& text);

// The directory the program runs from, with its trailing separator.
const std::string& programDirectory();
void setProgramDirectory(std::string dir);

}  // namespace shell
