#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shell/FieldReader.h"

namespace {

std::vector<std::string> allFields(const std::string& text) {
  shell::FieldReader r(text);
  std::vector<std::string> out;
  while (auto f = r.next()) out.push_back(*f);
  return out;
}

using Fields = std::vector<std::string>;

TEST(FieldReader, QuotedAndUnquotedFields) {
  EXPECT_EQ(allFields("\"VAX30\",2,4,0,1,\"NONE\",0"), (Fields{"VAX30", "2", "4", "0", "1", "NONE", "0"}));
}

TEST(FieldReader, QuotedFieldKeepsCommasAndBlanks) {
  EXPECT_EQ(allFields("\"Reference, Density (kbit)\",\" a b \""), (Fields{"Reference, Density (kbit)", " a b "}));
}

TEST(FieldReader, BlanksAroundUnquotedFieldsAreDropped) {
  EXPECT_EQ(allFields("  12 ,\tabc\t, x y "), (Fields{"12", "abc", "x y"}));
}

TEST(FieldReader, LineEndsSeparateFieldsLikeCommas) {
  EXPECT_EQ(allFields("\"a\",1\r\n\"b\",2\n\"c\",3\r\n"), (Fields{"a", "1", "b", "2", "c", "3"}));
}

TEST(FieldReader, EmptyFieldsBetweenCommas) {
  EXPECT_EQ(allFields("a,,b"), (Fields{"a", "", "b"}));
  EXPECT_EQ(allFields("\"\",\"11250603\""), (Fields{"", "11250603"}));
}

TEST(FieldReader, UnterminatedQuoteRunsToTheEnd) { EXPECT_EQ(allFields("\"abc,def"), (Fields{"abc,def"})); }

TEST(FieldReader, TextAfterTheClosingQuoteIsDropped) {
  EXPECT_EQ(allFields("\"abc\"xyz,2"), (Fields{"abc", "2"}));
}

TEST(FieldReader, EmptyTextHasNoField) {
  shell::FieldReader r("");
  EXPECT_TRUE(r.atEnd());
  EXPECT_FALSE(r.next().has_value());
  shell::FieldReader blanks(" \r\n\t ");
  EXPECT_TRUE(blanks.atEnd());
  EXPECT_FALSE(blanks.next().has_value());
}

TEST(FieldReader, AtEndOnlyAfterTheLastField) {
  shell::FieldReader r("1,2\r\n");
  EXPECT_FALSE(r.atEnd());
  EXPECT_EQ(r.next(), "1");
  EXPECT_FALSE(r.atEnd());
  EXPECT_EQ(r.next(), "2");
  EXPECT_TRUE(r.atEnd());
}

TEST(FieldReader, ControlAndHighBytesAreFieldCharacters) {
  // A quote inside an unquoted field is an ordinary character.
  const std::string text("\x00\xff\"\x01,\x7f\r", 7);
  EXPECT_EQ(allFields(text), (Fields{std::string("\x00\xff\"\x01", 4), "\x7f"}));
}

}  // namespace
