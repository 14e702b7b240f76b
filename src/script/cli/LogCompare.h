// Comparing a run's trace log with a saved one, as a regression test of a bench script:
// only the dates and times of the entries may differ. When they differ, a unified diff of
// the first differences says where.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace script {

// The text with every entry's date and time masked: a line that begins with
// "MM-DD-YYYY HH:MM:SS" and a TAB (the entries of every panel and of the script), or with
// "MM-DD-YYYY " and a TAB (the toolbox's form), gets "##-##-#### ##:##:##" or
// "##-##-#### " there. Nothing else changes.
std::string withoutEntryTimes(const std::string& log);

struct LogComparison {
  bool same = true;
  std::string diff;  // empty when same
};

// Compares the texts after the masking above, byte for byte; the diff goes line by line
// (lines end at LF, a CR before it left out of the line; when only those CRs differ the
// diff says so in one line). The diff names the saved log "--- <expectedName>" and the run
// "+++ <actualName>", shows three lines of context around each change, prints the lines
// as they stand (dates included) and stops at `maxLines` lines in all.
LogComparison compareLogs(const std::string& expected, const std::string& actual, const std::string& expectedName,
                          const std::string& actualName, std::size_t maxLines = 40);

}  // namespace script
