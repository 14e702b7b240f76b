// The ISO 14443-A panel's knowledge without widgets: variants, the opening's register
// writes, single command frames and titles, the answer analysis, the anticollision
// process's stages, TOPAZ frames, memory frames and rows, and the NDEF block reads.
#include <gtest/gtest.h>

#include "iso14443a/Iso14443AFrames.h"

namespace {

using namespace iso14443a;

TEST(Iso14443AVariant, OnlyTheReferenceTopazItselfChoosesTopaz) {
  EXPECT_EQ(variantOf("TOPAZ"), Variant::Topaz);
  EXPECT_EQ(variantOf("ISO14443-A"), Variant::Normal);
  EXPECT_EQ(variantOf("TOPAZ512"), Variant::Normal);
  EXPECT_EQ(variantOf("topaz"), Variant::Normal);
  EXPECT_EQ(variantOf(" TOPAZ"), Variant::Normal);
}

TEST(Iso14443AVariant, TextsOfBothVariants) {
  const VariantTexts& n = variantTexts(Variant::Normal);
  EXPECT_STREQ(n.title, "ISO14443-A Cards user interface");
  EXPECT_STREQ(n.protocolText, "02000180");
  EXPECT_STREQ(n.configurationTitle, "TL42RQ CONFIGURATION : ISO14443-A protocol");
  EXPECT_EQ(n.reconnect, reader::ReconnectKind::Iso14443A);
  const VariantTexts& t = variantTexts(Variant::Topaz);
  EXPECT_STREQ(t.title, "TOPAZ (ISO14443-A) user interface");
  EXPECT_STREQ(t.protocolText, "02000300");
  EXPECT_STREQ(t.configurationTitle, "TL42RQ CONFIGURATION : TOPAZ (ISO14443-A) protocol");
  EXPECT_EQ(t.reconnect, reader::ReconnectKind::Iso14443ATopaz);
}

TEST(Iso14443AVariant, OpeningWritesCarryTheGainValue) {
  const auto normal = openingWrites(Variant::Normal, "D1");
  ASSERT_EQ(normal.size(), 3u);
  EXPECT_EQ(normal[0].title, "ISO14443-A : CONFIG");
  EXPECT_EQ(normal[0].frame, "09043A005804");
  EXPECT_EQ(normal[1].title, "ISO14443-A : INCREASE DEMOD GAIN");
  EXPECT_EQ(normal[1].frame, "0904680101D1");
  EXPECT_EQ(normal[2].title, "ISO14443-A : INCREASE DEC TOLERANCE");
  EXPECT_EQ(normal[2].frame, "09110B00241204880F1F3F3F01000505005500");
  const auto topaz = openingWrites(Variant::Topaz, "53");
  EXPECT_EQ(topaz[0].title, "ISO14443-A TOPAZ : CONFIG");
  EXPECT_EQ(topaz[1].title, "ISO14443-A TOPAZ : INCREASE DEMOD GAIN");
  EXPECT_EQ(topaz[1].frame, "090468010153");
  EXPECT_EQ(topaz[2].title, "ISO14443-A TOPAZ : INCREASE DEC TOLERANCE");
}

TEST(Iso14443ASingle, FlagsFramesAndTitles) {
  EXPECT_STREQ(singleFlag(Single::Reqa), "07");
  EXPECT_STREQ(singleFlag(Single::Wupa), "07");
  EXPECT_STREQ(singleFlag(Single::Halt), "00");
  EXPECT_STREQ(singleFlag(Single::Anticol), "08");
  EXPECT_STREQ(singleFlag(Single::Select), "28");
  // The literals do not read the flag box.
  EXPECT_EQ(singleFrame(Single::Reqa, 0, "FF", "20", ""), "2607");
  EXPECT_EQ(singleFrame(Single::Wupa, 0, "FF", "20", ""), "5207");
  EXPECT_EQ(singleFrame(Single::Halt, 0, "FF", "20", ""), "5000");
  EXPECT_EQ(singleFrame(Single::Anticol, 0, "08", "20", ""), "932008");
  EXPECT_EQ(singleFrame(Single::Anticol, 1, "08", "20", ""), "952008");
  EXPECT_EQ(singleFrame(Single::Anticol, 2, "08", "20", ""), "972008");
  EXPECT_EQ(singleFrame(Single::Select, 0, "28", "20", "1A2B3C4D40"), "93701A2B3C4D4028");
  EXPECT_EQ(singleFrame(Single::Select, 1, "28", "20", "C3D4E5F604"), "9570C3D4E5F60428");
  EXPECT_EQ(singleFrame(Single::Select, 2, "28", "20", ""), "977028");
  EXPECT_EQ(singleTitle(Single::Reqa, 0), "ISO14443-A REQA");
  EXPECT_EQ(singleTitle(Single::Wupa, 0), "ISO14443-A WUPA");
  EXPECT_EQ(singleTitle(Single::Halt, 0), "ISO14443-A WUPA");
  EXPECT_EQ(singleTitle(Single::Anticol, 0), "ISO14443-A ANTICOL 0");
  EXPECT_EQ(singleTitle(Single::Anticol, 2), "ISO14443-A ANTICOL 2");
  EXPECT_EQ(singleTitle(Single::Select, 1), "ISO14443-A SELECT 1");
}

TEST(Iso14443ASingle, AnticolWithTheArgumentClearedSendsTwoBytes) {
  EXPECT_EQ(singleFrame(Single::Anticol, 0, "08", "", ""), "9308");
}

TEST(Iso14443AFlag, BoxesShowTheBitsOfTheFlag) {
  EXPECT_EQ(flagBits("28"), (std::array<bool, 8>{false, false, false, true, false, true, false, false}));
  EXPECT_EQ(flagBits("A8"), (std::array<bool, 8>{false, false, false, true, false, true, false, true}));
  EXPECT_EQ(flagBits("07"), (std::array<bool, 8>{true, true, true, false, false, false, false, false}));
  EXPECT_EQ(flagBits(""), (std::array<bool, 8>{}));
  EXPECT_EQ(flagBits("ZZ"), (std::array<bool, 8>{}));
}

TEST(Iso14443AFlag, TheBoxIsRewrittenAsTwoDigitsOnLeaving) {
  EXPECT_EQ(flagBoxOnLeave("7"), "07");
  EXPECT_EQ(flagBoxOnLeave("a8"), "A8");
  EXPECT_EQ(flagBoxOnLeave(""), "");
}

TEST(Iso14443AAnalysis, AnAnswerIsCodeLengthDataAndThreeTailBytes) {
  const Analysis a = analyseAnswer("8008" "1122335555" "880300");
  EXPECT_EQ(a.fields, (std::array<std::string, 6>{"80", "08", "1122335555", "88", "03", "00"}));
  EXPECT_EQ(a.flags, (std::array<bool, 8>{false, false, false, true, false, false, false, true}));
  const Analysis s = analyseAnswer("8006" "08B6DD" "280000");
  EXPECT_EQ(s.fields[2], "08B6DD");
  EXPECT_EQ(s.flags, (std::array<bool, 8>{false, false, false, true, false, true, false, false}));
}

TEST(Iso14443AAnalysis, ShortAnswersAreCutWithoutReadingOutside) {
  const Analysis a = analyseAnswer("8002AB");
  EXPECT_EQ(a.fields[0], "80");
  EXPECT_EQ(a.fields[1], "02");
  EXPECT_EQ(a.fields[2], "");
  EXPECT_EQ(a.fields[3], "80");  // n - 5 = 1
  EXPECT_EQ(a.fields[4], "02");
  EXPECT_EQ(a.fields[5], "AB");
  const Analysis e = analyseAnswer("");
  EXPECT_EQ(e.fields, (std::array<std::string, 6>{}));
  EXPECT_EQ(analyseAnswer("8").fields[3], "");
}

TEST(Iso14443AAnalysis, TopazCutHasNoTail) {
  EXPECT_EQ(topazAnalysis("800B" "11485E7A1122" "B92C" "080000"),
            (std::array<std::string, 3>{"80", "0B", "11485E7A1122B92C080000"}));
  const RidBoxes r = ridBoxes("800B" "11485E7A1122" "B92C" "080000");
  EXPECT_EQ(r.hr0, "11");
  EXPECT_EQ(r.hr1, "48");
  EXPECT_EQ(r.uid, "5E7A1122");
}

TEST(Iso14443AMid, PositionsFromOneAndSafeBounds) {
  EXPECT_EQ(mid("ABCDEF", 1, 2), "AB");
  EXPECT_EQ(mid("ABCDEF", 5, 10), "EF");
  EXPECT_EQ(mid("ABCDEF", 0, 2), "A");
  EXPECT_EQ(mid("ABCDEF", -3, 2), "");
  EXPECT_EQ(mid("ABCDEF", 3, -1), "");
  EXPECT_EQ(mid("ABCDEF", 9, 2), "");
}

TEST(Iso14443AProcess, StagesOfTheRun) {
  EXPECT_EQ(stageFrame(Stage::Reqa, "FF", "20", ""), "2607");
  EXPECT_EQ(stageFrame(Stage::Anticol1, "08", "20", ""), "932008");
  EXPECT_EQ(stageFrame(Stage::Select1, "28", "20", "8804A1B29F"), "93708804A1B29F28");
  EXPECT_EQ(stageFrame(Stage::Anticol2, "08", "20", ""), "952008");
  EXPECT_EQ(stageFrame(Stage::Select2, "28", "20", "C3D4E5F604"), "9570C3D4E5F60428");
  // Level 3 repeats 93 and selects without UID.
  EXPECT_EQ(stageFrame(Stage::Anticol3, "08", "20", ""), "932008");
  EXPECT_EQ(stageFrame(Stage::Select3, "28", "20", "0708090A0C"), "937028");
  EXPECT_EQ(stageFrame(Stage::Anticol1, "08", "00", ""), "930008");
  const std::array<std::string, 7> labels{"REQ A", "ANTICOL 1", "SELECT 1", "ANTICOL 2", "SELECT 2", "ANTICOL 3",
                                          "SELECT 3"};
  const std::array<std::string, 7> titles{"ISO14443-A REQA",     "ISO14443-A ANTICOL 1", "ISO14443-A SELECT 1",
                                          "ISO14443-A ANTICOL 2", "ISO14443-A SELECT 2", "ISO14443-A ANTICOL 3",
                                          "ISO14443-A SELECT 3"};
  const std::array<std::string, 7> flags{"07", "08", "28", "08", "28", "08", "28"};
  for (int i = 0; i < kStages; ++i) {
    const StageRow& r = stageRow(static_cast<Stage>(i));
    EXPECT_EQ(r.row, i + 1);
    EXPECT_EQ(r.label, labels[static_cast<std::size_t>(i)]);
    EXPECT_EQ(r.title, titles[static_cast<std::size_t>(i)]);
    EXPECT_EQ(r.flag, flags[static_cast<std::size_t>(i)]);
  }
}

TEST(Iso14443AProcess, UidPartsOfAnticollisionAnswers) {
  EXPECT_EQ(uidSegmentOf("8008" "8804A1B29F" "080000"), "8804A1B29F");
  EXPECT_EQ(uidPartOf("8008" "8804A1B29F" "080000"), "04A1B2");
  EXPECT_EQ(uidPartOf("8008" "1A2B3C4D40" "080000"), "1A2B3C4D");
  EXPECT_EQ(uidPartOf("8700"), "");
}

TEST(Iso14443ATopaz, Frames) {
  EXPECT_EQ(topazRidFrame(), "78000000000000A8");
  EXPECT_EQ(topazReadFrame(0x0D, "5E7A1122"), "010D005E7A1122A8");
  EXPECT_EQ(topazReadFrame(0x0D, ""), "010D00A8");
  EXPECT_EQ(topazWriteFrame(true, 0x0D, "22 ", "5E7A1122"), "530D225E7A1122A8");
  EXPECT_EQ(topazWriteFrame(false, 0x0F, "80 ", "5E7A1122"), "1A0F805E7A1122A8");
  EXPECT_EQ(topazReadRow("8007" "0D10" "BEAF" "080000"), "10 ");
  EXPECT_EQ(topazReadRow("8700"), "error");
  EXPECT_EQ(topazReadRow("8007" "0D10" "BEAF" "880301"), "error");
}

TEST(Iso14443AMemory, ReadCountAddsThreePagesAndWrapsThroughTheTop) {
  EXPECT_EQ(readPageCount(0, 0, 0x1F), 4);
  EXPECT_EQ(readPageCount(0, 3, 0x1F), 7);
  EXPECT_EQ(readPageCount(4, 0x0F, 0x1F), 15);
  // 1E to 01 through the top of 32 pages: 1E 1F 00 01 and the three pages more.
  EXPECT_EQ(readPageCount(0x1E, 0x01, 0x1F), 7);
}

TEST(Iso14443AMemory, ReadFramesAndRows) {
  EXPECT_EQ(readFrame(0x04, 1), "300428");
  EXPECT_EQ(readFrame(0x0104, 2), "30040128");
  const std::string good = "8015" "1A2B3C4D" "40000000" "00000000" "E1100600" "1974" "080000";
  EXPECT_EQ(readRows(good, 4),
            (std::vector<std::string>{"1A 2B 3C 4D ", "40 00 00 00 ", "00 00 00 00 ", "E1 10 06 00 "}));
  const std::string collided = "8015" "1A2B3C4D" "40000000" "00000000" "E1100600" "1974" "880301";
  EXPECT_EQ(readRows(collided, 4), std::vector<std::string>(4, "error detected "));
  EXPECT_EQ(readRows("900400", 4), std::vector<std::string>(4, "error"));
  EXPECT_EQ(readRows("8700", 4), std::vector<std::string>(4, "error"));
}

TEST(Iso14443AMemory, WriteFramesDropTheBlanksOfTheGrid) {
  EXPECT_EQ(writeFrame(0x04, "CA FE BA BE ", 1), "A204CAFEBABE28");
  const auto frames = compatibilityWriteFrames(0x06, "11 22 33 44 55 66 77 88 99 AA BB CC DD EE FF 00 ", 1);
  EXPECT_EQ(frames[0], "A00628");
  EXPECT_EQ(frames[1], "112233445566778899AABBCCDDEEFF0028");
}

TEST(Iso14443AMemory, AGoodWriteAnswerBeginsWith80AndEndsWith00) {
  EXPECT_TRUE(goodWriteAnswer("8007" "0D22" "2FBD" "080000"));
  EXPECT_FALSE(goodWriteAnswer("90040A"));
  EXPECT_FALSE(goodWriteAnswer("8700"));
  EXPECT_STREQ(kWriteDone, "(00) No error during Prog sequence");
  EXPECT_STREQ(kWriteError, "Error code");
}

TEST(Iso14443ANdefBlock, SixteenBytesWithBlanksOrTheErrorWords) {
  EXPECT_EQ(ndefReadFrame(3), "300328");
  EXPECT_EQ(ndefReadFrame(15), "300F28");
  const std::string good =
      "8015" "E1100C00" "03399101" "0C550265" "78616D70" "ABCD" "080000";
  EXPECT_EQ(ndefBlockText(good), "E1 10 0C 00 03 39 91 01 0C 55 02 65 78 61 6D 70 ");
  EXPECT_EQ(ndefBlockText("8015" "E1100C00" "03399101" "0C550265" "78616D70" "ABCD" "880301"), "error detected ");
  EXPECT_EQ(ndefBlockText("900400"), "error");
  EXPECT_EQ(ndefBlockText(""), "error");
  EXPECT_EQ(kNdefPages, (std::array<int, 5>{3, 7, 11, 15, 15}));
}

}  // namespace
