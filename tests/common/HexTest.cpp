#include <gtest/gtest.h>

#include "common/hex.h"

namespace {

TEST(Hex, DigitsOfBothCasesAreDigits) {
  for (char c : std::string("0123456789ABCDEFabcdef")) EXPECT_TRUE(hex::isDigit(c)) << c;
  for (char c : std::string("gG xX-.:/@`\0", 12)) EXPECT_FALSE(hex::isDigit(c)) << int(c);
}

TEST(Hex, DigitValueOfEachDigitAndMinusOneOtherwise) {
  EXPECT_EQ(hex::digitValue('0'), 0);
  EXPECT_EQ(hex::digitValue('9'), 9);
  EXPECT_EQ(hex::digitValue('A'), 10);
  EXPECT_EQ(hex::digitValue('f'), 15);
  EXPECT_EQ(hex::digitValue('G'), -1);
  EXPECT_EQ(hex::digitValue(static_cast<char>(0xC9)), -1);
}

TEST(Hex, FromBytesIsUpperCaseWithoutSeparators) {
  EXPECT_EQ(hex::fromBytes({0x00, 0x0a, 0xAB, 0xff}), "000AABFF");
  EXPECT_EQ(hex::fromBytes(hex::Bytes{}), "");
  EXPECT_EQ(hex::byte(0x5C), "5C");
  EXPECT_EQ(hex::byte(0x07), "07");
}

TEST(Hex, ToBytesTakesOnlyWholeBytesOfDigits) {
  EXPECT_EQ(hex::toBytes("00aBFf"), (hex::Bytes{0x00, 0xAB, 0xFF}));
  EXPECT_EQ(hex::toBytes(""), hex::Bytes{});
  EXPECT_FALSE(hex::toBytes("ABC").has_value());
  EXPECT_FALSE(hex::toBytes("0G").has_value());
  EXPECT_FALSE(hex::toBytes("01 02").has_value());
}

TEST(Hex, LenientBytesDropAnOddDigitAndCountBadPairsAsZero) {
  EXPECT_EQ(hex::toBytesLenient("ABC"), hex::Bytes{0xAB});
  EXPECT_EQ(hex::toBytesLenient("12G456"), (hex::Bytes{0x12, 0x00, 0x56}));
  EXPECT_EQ(hex::toBytesLenient("1"), hex::Bytes{});
}

TEST(Hex, ToNumberReadsUpToEightDigits) {
  EXPECT_EQ(hex::toNumber("ff"), 255u);
  EXPECT_EQ(hex::toNumber("FFFFFFFF"), 0xFFFFFFFFu);
  EXPECT_FALSE(hex::toNumber("100000000").has_value());
  EXPECT_FALSE(hex::toNumber("").has_value());
  EXPECT_FALSE(hex::toNumber("1x").has_value());
}

TEST(Hex, UpperAndWithoutBlanks) {
  EXPECT_EQ(hex::upper("0a bC-z"), "0A BC-Z");
  EXPECT_EQ(hex::withoutBlanks("01 0803620100"), "010803620100");
  EXPECT_EQ(hex::withoutBlanks(" 0 1 "), "01");
}

}  // namespace
