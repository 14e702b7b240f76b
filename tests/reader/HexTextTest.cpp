#include <gtest/gtest.h>

#include <string>

#include "reader/HexText.h"

namespace {

using reader::FieldKind;

TEST(HexPad4, ZeroGivesFourZeros) { EXPECT_EQ(reader::hexPad4(0), "0000"); }

TEST(HexPad4, PadsToFourUpperCaseDigits) {
  EXPECT_EQ(reader::hexPad4(0xA), "000A");
  EXPECT_EQ(reader::hexPad4(0xabc), "0ABC");
  EXPECT_EQ(reader::hexPad4(0xFFFF), "FFFF");
}

TEST(HexPad4, LongerTextComesBackAsItIs) {
  EXPECT_EQ(reader::hexPad4(65536), "10000");
  EXPECT_EQ(reader::hexPad4(0x12345678), "12345678");
}

TEST(HexPad4, NegativeValueIsItsThirtyTwoBitPattern) { EXPECT_EQ(reader::hexPad4(-1), "FFFFFFFF"); }

TEST(HexPadWidth7, ByteAndWordWidths) {
  EXPECT_EQ(reader::hexPadWidth7(255, 2), "FF");
  EXPECT_EQ(reader::hexPadWidth7(255, 4), "00FF");
  EXPECT_EQ(reader::hexPadWidth7(5, 2), "05");
  EXPECT_EQ(reader::hexPadWidth7(0, 2), "00");
}

TEST(HexPadWidth7, AddsAtMostSevenZeros) {
  EXPECT_EQ(reader::hexPadWidth7(1, 8), "00000001");  // seven missing: padded
  EXPECT_EQ(reader::hexPadWidth7(1, 9), "1");         // eight missing: nothing added
  EXPECT_EQ(reader::hexPadWidth7(1, 200), "1");
}

TEST(HexPadWidth7, TextAsLongAsTheWidthOrLongerIsNotPadded) {
  EXPECT_EQ(reader::hexPadWidth7(0x1234, 4), "1234");
  EXPECT_EQ(reader::hexPadWidth7(0x12345, 4), "12345");
  EXPECT_EQ(reader::hexPadWidth7(0x12, 0), "12");
}

TEST(HexPadWidth8, AddsAtMostEightZeros) {
  EXPECT_EQ(reader::hexPadWidth8(1, 9), "000000001");
  EXPECT_EQ(reader::hexPadWidth8(1, 10), "1");
  EXPECT_EQ(reader::hexPadWidth8(0x8000000F, 8), "8000000F");
  EXPECT_EQ(reader::hexPadWidth8(0xFF, 8), "000000FF");
}

TEST(CheckHexAddress, GoodTextGivesAmpersandHAndTheText) {
  EXPECT_EQ(reader::checkHexAddress("12ab"), std::optional<std::string>("&H12ab"));
  EXPECT_EQ(reader::checkHexAddress("0"), std::optional<std::string>("&H0"));
}

TEST(CheckHexAddress, LetterGFails) { EXPECT_FALSE(reader::checkHexAddress("12G4").has_value()); }

TEST(CheckHexAddress, EmptyTextFails) { EXPECT_FALSE(reader::checkHexAddress("").has_value()); }

TEST(CheckHexAddress, BlankOrSignFails) {
  EXPECT_FALSE(reader::checkHexAddress("12 4").has_value());
  EXPECT_FALSE(reader::checkHexAddress("-1").has_value());
  EXPECT_FALSE(reader::checkHexAddress("&H12").has_value());
}

TEST(CheckHexAddress, MessageTextsAreExact) {
  EXPECT_STREQ(reader::kInvalidAddress.text, "Invalid Address: check for Hexadecimal format or Adress value");
  EXPECT_STREQ(reader::kInvalidAddress.title, "Hexadecimal Data Required");
  EXPECT_STREQ(reader::kInvalidData.text, "Invalid Data: check for Hexadecimal format or # of data");
  EXPECT_STREQ(reader::kInvalidData.title, "Hexadecimal data required ");
}

TEST(CheckHexData, EmptyTextFailsWhateverTheMode) {
  EXPECT_FALSE(reader::checkHexData("", 0));
  EXPECT_FALSE(reader::checkHexData("", 1));
  EXPECT_FALSE(reader::checkHexData("", 2));
  EXPECT_FALSE(reader::checkHexData("", -1));
}

TEST(CheckHexData, ModeZeroTestsEveryCharacter) {
  EXPECT_TRUE(reader::checkHexData("0123456789abcdefABCDEF", 0));
  EXPECT_FALSE(reader::checkHexData("12 34", 0));
  EXPECT_FALSE(reader::checkHexData("123g", 0));
}

TEST(CheckHexData, OtherModesReadGroupsOfTwoDigitsAndASkippedSeparator) {
  EXPECT_TRUE(reader::checkHexData("12 34 56 ", 1));
  EXPECT_TRUE(reader::checkHexData("12-34:56,", 1));  // any separator is skipped
  EXPECT_TRUE(reader::checkHexData("12G34G", 1));     // the third character of a group is never looked at
  EXPECT_FALSE(reader::checkHexData("1G 34 ", 1));    // position 2 of group 1
  EXPECT_FALSE(reader::checkHexData("12 3Z ", 1));    // position 5 (3i-1, i = 2)
  EXPECT_FALSE(reader::checkHexData("12 34 G6 ", 7)); // position 7 (3i-2, i = 3)
}

TEST(KeyFilter, LetterGIsRefusedInAHexadecimalField) {
  EXPECT_FALSE(reader::hexFieldKeyPress(U'g'));
  EXPECT_FALSE(reader::hexFieldKeyPress(U'G'));
}

TEST(KeyFilter, HexadecimalFieldTakesDigitsOfBothCases) {
  for (char32_t c : std::u32string(U"0123456789abcdefABCDEF")) EXPECT_TRUE(reader::hexFieldKeyPress(c));
}

TEST(KeyFilter, ControlCodesUpTo31PassInEveryKindOfField) {
  for (FieldKind kind : {FieldKind::Hexadecimal, FieldKind::Binary, FieldKind::Decimal}) {
    for (char32_t c = 0; c <= 31; ++c) EXPECT_TRUE(reader::keyAllowed(kind, c)) << int(c);
    EXPECT_FALSE(reader::keyAllowed(kind, 32));   // blank
    EXPECT_FALSE(reader::keyAllowed(kind, 127));  // delete character
  }
}

TEST(KeyFilter, HexadecimalFieldRefusesOtherCharacters) {
  for (char32_t c : std::u32string(U" -+.,&hHxXzZ\u00e9\u0100\U0001F600")) EXPECT_FALSE(reader::hexFieldKeyPress(c));
  // A code whose low byte is a digit must not pass for that digit.
  EXPECT_FALSE(reader::hexFieldKeyPress(0x141));  // low byte 'A'
}

TEST(KeyFilter, BinaryFieldTakesOnlyZeroAndOne) {
  EXPECT_TRUE(reader::keyAllowed(FieldKind::Binary, U'0'));
  EXPECT_TRUE(reader::keyAllowed(FieldKind::Binary, U'1'));
  for (char32_t c : std::u32string(U"23456789aAbB ")) EXPECT_FALSE(reader::keyAllowed(FieldKind::Binary, c));
}

TEST(KeyFilter, DecimalFieldTakesOnlyDigits) {
  for (char32_t c : std::u32string(U"0123456789")) EXPECT_TRUE(reader::keyAllowed(FieldKind::Decimal, c));
  for (char32_t c : std::u32string(U"aAfF.-+,e ")) EXPECT_FALSE(reader::keyAllowed(FieldKind::Decimal, c));
}

TEST(FrameColour, OnChangeWholeBytesAreNormalAndAnythingElseRed) {
  EXPECT_FALSE(reader::frameColourNormalOnChange(""));
  EXPECT_FALSE(reader::frameColourNormalOnChange("2"));
  EXPECT_TRUE(reader::frameColourNormalOnChange("26"));
  EXPECT_FALSE(reader::frameColourNormalOnChange("260"));
  EXPECT_TRUE(reader::frameColourNormalOnChange("260100"));
}

TEST(FrameColour, OnKeyTheSenseIsInvertedBecauseTheDigitIsNotInYet) {
  EXPECT_FALSE(reader::frameColourNormalOnKey(""));   // the first digit makes half a byte
  EXPECT_TRUE(reader::frameColourNormalOnKey("2"));   // the digit completes the byte
  EXPECT_FALSE(reader::frameColourNormalOnKey("26"));
  EXPECT_TRUE(reader::frameColourNormalOnKey("260"));
}

TEST(FrameColour, KeyAndChangeAgreeOnceTheDigitHasArrived) {
  const std::string digits = "0123456789ABCDEF0123";
  std::string text;
  for (char c : digits) {
    const bool beforeKey = reader::frameColourNormalOnKey(text);
    text += c;
    EXPECT_EQ(beforeKey, reader::frameColourNormalOnChange(text)) << text;
  }
}

}  // namespace
