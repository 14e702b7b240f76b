#include <gtest/gtest.h>

#include <string>

#include "shell/DetectionParse.h"

namespace {

std::string hexOf(const std::string& text) {
  static const char* d = "0123456789ABCDEF";
  std::string out;
  for (unsigned char c : text) out += {d[c >> 4], d[c & 15]};
  return out;
}

TEST(DllRevision, FirstThreeCharactersWithoutThePoint) {
  EXPECT_EQ(shell::dllRevisionNumber("0.2.9"), 2);
  EXPECT_EQ(shell::dllRevisionNumber("0.3.1"), 3);
  EXPECT_EQ(shell::dllRevisionNumber("0.5.0"), 5);
  EXPECT_EQ(shell::dllRevisionNumber("0.5"), 5);
  EXPECT_EQ(shell::dllRevisionNumber("1.2"), 12);
  EXPECT_EQ(shell::dllRevisionNumber("1.2.3.4"), 12);
}

TEST(DllRevision, OnlyTheFirstThreeCharactersCount) {
  EXPECT_EQ(shell::dllRevisionNumber("0.12"), 1);
  EXPECT_EQ(shell::dllRevisionNumber("10.1"), 10);
}

TEST(DllRevision, TextThatIsNoNumberGivesZero) {
  EXPECT_EQ(shell::dllRevisionNumber(""), 0);
  EXPECT_EQ(shell::dllRevisionNumber("x.5"), 0);
  EXPECT_EQ(shell::dllRevisionNumber("."), 0);
  EXPECT_EQ(shell::dllRevisionNumber("V1.0"), 0);
}

TEST(DllRevision, DigitsBeforeTheFirstOtherCharacterCount) {
  EXPECT_EQ(shell::dllRevisionNumber("4x5"), 4);
  EXPECT_EQ(shell::dllRevisionNumber("7"), 7);
}

TEST(McuRevision, CountTwoWithBytes01And0AGivesOnePointTen) {
  EXPECT_EQ(shell::mcuRevisionText("0002010A"), "1.10");
}

TEST(McuRevision, EachElementInDecimalJoinedByPoints) {
  EXPECT_EQ(shell::mcuRevisionText("0003010401"), "1.4.1");
  EXPECT_EQ(shell::mcuRevisionText("0001FF"), "255");
  EXPECT_EQ(shell::mcuRevisionText("000300ff10"), "0.255.16");
}

TEST(McuRevision, CountIsReadAsDecimalNotHexadecimal) {
  // "10" is ten elements, not sixteen; "0A" reads as 0.
  EXPECT_EQ(shell::mcuRevisionText("00100102030405060708090A"), "1.2.3.4.5.6.7.8.9.10");
  EXPECT_EQ(shell::mcuRevisionText("000A0102"), "");
}

TEST(McuRevision, ElementsBeyondTheAnswerReadAsZero) {
  EXPECT_EQ(shell::mcuRevisionText("000301"), "1.0.0");
  EXPECT_EQ(shell::mcuRevisionText("0002"), "0.0");
}

TEST(McuRevision, ShortOrBrokenAnswersGiveNothingOrZeros) {
  EXPECT_EQ(shell::mcuRevisionText(""), "");
  EXPECT_EQ(shell::mcuRevisionText("00"), "");
  EXPECT_EQ(shell::mcuRevisionText("000"), "");
  EXPECT_EQ(shell::mcuRevisionText("0000"), "");
  EXPECT_EQ(shell::mcuRevisionText("0002ZZ01"), "0.1");
}

TEST(ChipName, NameBytesWithoutHeaderAndTwoCrcBytes) {
  const std::string answer = "000C" + hexOf("NFC TL42RQ") + "5AC3";
  EXPECT_EQ(shell::chipNameOfIdn(answer), "NFC TL42RQ");
}

TEST(ChipName, TerminatingNulOfTheNameIsKept) {
  const std::string answer = "000F" + hexOf("NFC FS2JAST4") + "00" + "2ACE";
  EXPECT_EQ(shell::chipNameOfIdn(answer), std::string("NFC FS2JAST4\0", 13));
}

TEST(ChipName, LowerCaseDigitsReadLikeUpperCase) {
  EXPECT_EQ(shell::chipNameOfIdn("0003" "4a6b" "0000"), "Jk");
}

TEST(ChipName, AnswerTooShortForANameGivesNothing) {
  EXPECT_EQ(shell::chipNameOfIdn(""), "");
  EXPECT_EQ(shell::chipNameOfIdn("00"), "");
  EXPECT_EQ(shell::chipNameOfIdn("0002ABCD"), "");
  EXPECT_EQ(shell::chipNameOfIdn("000341ABCD"), "A");
}

TEST(ChipName, PairThatIsNoHexReadsAsNul) {
  EXPECT_EQ(shell::chipNameOfIdn("0004" "41ZZ" "ABCD"), std::string("A\0", 2));
}

}  // namespace
