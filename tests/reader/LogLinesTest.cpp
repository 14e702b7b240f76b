// The line index a trace view keeps beside the log's text.
#include <gtest/gtest.h>

#include <string>

#include "reader/LogLines.h"

using reader::LogLines;

namespace {

// Appends a piece to the text and tells the index, as the trace log and its view do.
void append(std::string& text, LogLines& lines, const std::string& piece) {
  const std::size_t from = text.size();
  text += piece;
  lines.appended(text, from);
}

}  // namespace

TEST(LogLines, EmptyTextIsOneEmptyLine) {
  const std::string text;
  LogLines lines;
  EXPECT_EQ(lines.count(), 1u);
  EXPECT_EQ(lines.line(text, 0), "");
  EXPECT_EQ(lines.line(text, 1), "");  // past the end: nothing
}

TEST(LogLines, EntriesStartingWithALineBreakGiveAnEmptyFirstLineAndDropCarriageReturns) {
  std::string text;
  LogLines lines;
  append(text, lines, "\r\n11-21-2026 10:20:30\tREQC\r\n\t\t\t>>> TL42RQDLL_SENDRECV, 00FFFF000000\r\n\t\t\t<<< 8012");
  append(text, lines, "\r\n11-21-2026 \t>>> TL42RQDLL_ECHO\r\n\t\t<<< ");
  ASSERT_EQ(lines.count(), 6u);
  EXPECT_EQ(lines.line(text, 0), "");
  EXPECT_EQ(lines.line(text, 1), "11-21-2026 10:20:30\tREQC");
  EXPECT_EQ(lines.line(text, 2), "\t\t\t>>> TL42RQDLL_SENDRECV, 00FFFF000000");
  EXPECT_EQ(lines.line(text, 3), "\t\t\t<<< 8012");
  EXPECT_EQ(lines.line(text, 4), "11-21-2026 \t>>> TL42RQDLL_ECHO");
  EXPECT_EQ(lines.line(text, 5), "\t\t<<< ");
  EXPECT_EQ(lines.start(5), text.size() - 6);
}

TEST(LogLines, APieceWithoutLineBreakGrowsTheLastLine) {
  std::string text;
  LogLines lines;
  append(text, lines, "abc");
  append(text, lines, "def\r");
  append(text, lines, "\nghi");
  ASSERT_EQ(lines.count(), 2u);
  EXPECT_EQ(lines.line(text, 0), "abcdef");
  EXPECT_EQ(lines.line(text, 1), "ghi");
}

TEST(LogLines, ClearStartsOverWithOneEmptyLine) {
  std::string text;
  LogLines lines;
  append(text, lines, "\r\na\r\nb");
  text.clear();
  lines.clear();
  EXPECT_EQ(lines.count(), 1u);
  append(text, lines, "\r\nc");
  ASSERT_EQ(lines.count(), 2u);
  EXPECT_EQ(lines.line(text, 1), "c");
}
