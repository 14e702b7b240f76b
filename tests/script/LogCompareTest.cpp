// Saved log against a run's log: dates and times of entries do not count, everything
// else does, and the diff shows where they part.
#include <gtest/gtest.h>

#include "script/cli/LogCompare.h"

using script::compareLogs;
using script::withoutEntryTimes;

namespace {
std::string entry(const std::string& stamp, const std::string& what, const std::string& answer) {
  return "\r\n" + stamp + "\t>>> " + what + "\r\n\t\t\t<<< " + answer;
}
}  // namespace

TEST(LogCompare, MasksTheStampsOfEntriesAndOfTheToolboxForm) {
  EXPECT_EQ(withoutEntryTimes("\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< 5500"),
            "\r\n##-##-#### ##:##:##\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< 5500");
  EXPECT_EQ(withoutEntryTimes("\r\n11-21-2026 \t>>> TL42RQDLL_ECHO\r\n\t\t<<< 5500"),
            "\r\n##-##-#### \t>>> TL42RQDLL_ECHO\r\n\t\t<<< 5500");
  // Dates that are no entry's stamp stay: not at a line's start, or not before a TAB.
  EXPECT_EQ(withoutEntryTimes("x 11-21-2026 10:20:30\t"), "x 11-21-2026 10:20:30\t");
  EXPECT_EQ(withoutEntryTimes("11-21-2026 10:20:30 REM"), "11-21-2026 10:20:30 REM");
  EXPECT_EQ(withoutEntryTimes("\t\t\t<<< 11-21-2026 10:20:30\t"), "\t\t\t<<< 11-21-2026 10:20:30\t");
}

TEST(LogCompare, OtherDatesAndTimesAgree) {
  const std::string a = entry("11-21-2026 10:20:30", "TL42RQDLL_ECHO", "5500") + "\r\n";
  const std::string b = entry("01-02-2027 23:59:59", "TL42RQDLL_ECHO", "5500") + "\r\n";
  const auto c = compareLogs(a, b, "saved.txt", "run");
  EXPECT_TRUE(c.same);
  EXPECT_EQ(c.diff, "");
}

TEST(LogCompare, OneChangedAnswerGivesAUnifiedDiffWithContext) {
  std::string a, b;
  for (int i = 0; i < 6; ++i) {
    a += entry("11-21-2026 10:20:30", "TL42RQDLL_ECHO", "5500");
    b += entry("11-21-2026 10:20:31", "TL42RQDLL_ECHO", i == 3 ? "8700" : "5500");
  }
  const auto c = compareLogs(a, b, "saved.txt", "run.txt (this run)");
  EXPECT_FALSE(c.same);
  // Lines: 1 empty, then two a entry; entry 3's answer is line 9.
  EXPECT_EQ(c.diff,
            "--- saved.txt\n"
            "+++ run.txt (this run)\n"
            "@@ -6,7 +6,7 @@\n"
            " 11-21-2026 10:20:30\t>>> TL42RQDLL_ECHO\n"
            " \t\t\t<<< 5500\n"
            " 11-21-2026 10:20:30\t>>> TL42RQDLL_ECHO\n"
            "-\t\t\t<<< 5500\n"
            "+\t\t\t<<< 8700\n"
            " 11-21-2026 10:20:30\t>>> TL42RQDLL_ECHO\n"
            " \t\t\t<<< 5500\n"
            " 11-21-2026 10:20:30\t>>> TL42RQDLL_ECHO\n");
}

TEST(LogCompare, MissingAndExtraLinesAtTheEnd) {
  const std::string a = "\r\nA\r\nB";
  const auto c = compareLogs(a, a + "\r\nC", "x", "y");
  EXPECT_EQ(c.diff, "--- x\n+++ y\n@@ -1,3 +1,4 @@\n \n A\n B\n+C\n");
  const auto d = compareLogs(a + "\r\nC", a, "x", "y");
  EXPECT_EQ(d.diff, "--- x\n+++ y\n@@ -1,4 +1,3 @@\n \n A\n B\n-C\n");
  const auto e = compareLogs("", "Z", "x", "y");
  EXPECT_EQ(e.diff, "--- x\n+++ y\n@@ -1 +1 @@\n-\n+Z\n");
}

TEST(LogCompare, TheDiffStopsAtFortyLines) {
  std::string a, b;
  for (int i = 0; i < 100; ++i) {
    a += "line " + std::to_string(i) + "\r\n";
    b += "LINE " + std::to_string(i) + "\r\n";
  }
  const auto c = compareLogs(a, b, "x", "y");
  EXPECT_FALSE(c.same);
  std::size_t lines = 0;
  for (char ch : c.diff) lines += ch == '\n';
  EXPECT_EQ(lines, 40u);
  EXPECT_EQ(c.diff.substr(0, 30), "--- x\n+++ y\n@@ -1,101 +1,101 @");
}

TEST(LogCompare, LineEndsCount) {
  const auto c = compareLogs("\r\nA\r\n", "\nA\n", "x", "y");
  EXPECT_FALSE(c.same);
  EXPECT_EQ(c.diff, "--- x\n+++ y\nthe lines agree but their line ends differ (CR LF and LF)\n");
}
