// The chip's frames on a serial line: answer text to bytes and back, cutting the chip's
// stream into answers (in pieces, behind noise, the echo and the short reply 90), cutting
// the host's stream into commands, and the wait allowed for an Idle.
#include <gtest/gtest.h>

#include "common/chipframe.h"
#include "serial/frames.h"

using namespace serialline;

namespace {
hex::Bytes bytes(const char* text) { return *hex::toBytes(text); }

std::optional<hex::Bytes> feedText(AnswerParser& p, const char* text) {
  const hex::Bytes b = bytes(text);
  return p.feed(b.data(), b.size());
}
}  // namespace

TEST(SerialFrames, OrdinaryAnswerTravelsAsItsBytes) {
  EXPECT_EQ(answerToLine("000C4E464320544C34325251E3D4"), bytes("000C4E464320544C34325251E3D4"));
  EXPECT_EQ(answerText(bytes("800D000078563412002A02E0F43D00")), "800D000078563412002A02E0F43D00");
}

TEST(SerialFrames, EchoIsTheSingleByte55OnTheLineAnd5500AsText) {
  EXPECT_EQ(answerToLine("5500"), bytes("55"));
  EXPECT_EQ(answerText(bytes("55")), "5500");
}

TEST(SerialFrames, TextThatIsNoAnswerPutsNothingOnTheLine) {
  EXPECT_TRUE(answerToLine("").empty());
  EXPECT_TRUE(answerToLine("8").empty());
  EXPECT_TRUE(answerToLine("80").empty());
  EXPECT_TRUE(answerToLine("80G1").empty());
}

TEST(SerialFrames, AnswerInPiecesIsWholeOnlyWithItsLastByte) {
  AnswerParser p(chipframe::kIdn);
  EXPECT_FALSE(feedText(p, "00"));
  EXPECT_TRUE(p.pending());
  EXPECT_FALSE(feedText(p, "0C4E4643"));
  EXPECT_FALSE(feedText(p, "20544C34325251E3"));
  const auto whole = feedText(p, "D4");
  ASSERT_TRUE(whole);
  EXPECT_EQ(answerText(*whole), "000C4E464320544C34325251E3D4");
  EXPECT_FALSE(p.pending());
}

TEST(SerialFrames, NoiseBeforeTheAnswerIsSkipped) {
  AnswerParser p(chipframe::kSendRecv);
  const auto whole = feedText(p, "FFFE3CA57E" "8003AABB00");
  ASSERT_TRUE(whole);
  EXPECT_EQ(answerText(*whole), "8003AABB00");
  EXPECT_EQ(p.skipped(), 5u);
}

TEST(SerialFrames, BytesBehindAWholeAnswerAreNotPartOfIt) {
  AnswerParser p(chipframe::kProtocolSelect);
  const auto whole = feedText(p, "0000FFFE");
  ASSERT_TRUE(whole);
  EXPECT_EQ(answerText(*whole), "0000");
}

TEST(SerialFrames, EchoAnswerIsOneByteAndOtherCodesAreNoiseToIt) {
  AnswerParser p(chipframe::kEcho);
  const auto whole = feedText(p, "00805590");
  ASSERT_TRUE(whole);
  EXPECT_EQ(answerText(*whole), "5500");
  EXPECT_EQ(p.skipped(), 2u);
}

TEST(SerialFrames, ShortReply90CarriesValidBitsAndOneByte) {
  AnswerParser p(chipframe::kSendRecv);
  EXPECT_FALSE(feedText(p, "90"));
  // 04 here is the valid-bit count, not a length: one byte follows, not four.
  EXPECT_FALSE(feedText(p, "04"));
  const auto whole = feedText(p, "0A");
  ASSERT_TRUE(whole);
  EXPECT_EQ(answerText(*whole), "90040A");
}

TEST(SerialFrames, ResultCodesThatOpenAnswers) {
  EXPECT_TRUE(opensAnswerTo(chipframe::kSendRecv, 0x80));
  EXPECT_TRUE(opensAnswerTo(chipframe::kSendRecv, 0x90));
  EXPECT_TRUE(opensAnswerTo(chipframe::kSendRecv, 0x87));
  EXPECT_FALSE(opensAnswerTo(chipframe::kSendRecv, 0x00));
  EXPECT_TRUE(opensAnswerTo(chipframe::kProtocolSelect, 0x00));
  EXPECT_TRUE(opensAnswerTo(chipframe::kProtocolSelect, 0x83));
  EXPECT_FALSE(opensAnswerTo(chipframe::kProtocolSelect, 0x80));
  EXPECT_FALSE(opensAnswerTo(chipframe::kProtocolSelect, 0x55));
  EXPECT_TRUE(opensAnswerTo(chipframe::kBaudRate, 0x55));
  EXPECT_TRUE(opensAnswerTo(chipframe::kBaudRate, 0x82));
  EXPECT_FALSE(opensAnswerTo(chipframe::kBaudRate, 0x00));
  EXPECT_TRUE(opensAnswerTo(chipframe::kEcho, 0x55));
  EXPECT_FALSE(opensAnswerTo(chipframe::kEcho, 0x82));
  for (int code = 0x91; code <= 0xFF; ++code) EXPECT_FALSE(opensAnswerTo(chipframe::kSendRecv, static_cast<std::uint8_t>(code)));
}

TEST(SerialFrames, CommandsAreCutByTheirLengthAndTheEchoStandsAlone) {
  CommandParser p;
  std::vector<hex::Bytes> frames;
  for (std::uint8_t b : bytes("55" "0100" "0202010D" "55" "0403260100" "0902"))
    if (auto f = p.feed(b)) frames.push_back(*f);
  ASSERT_EQ(frames.size(), 5u);
  EXPECT_EQ(frames[0], bytes("55"));
  EXPECT_EQ(frames[1], bytes("0100"));
  EXPECT_EQ(frames[2], bytes("0202010D"));
  EXPECT_EQ(frames[3], bytes("55"));
  EXPECT_EQ(frames[4], bytes("0403260100"));
  // A 55 inside a frame is data, not an echo.
  EXPECT_TRUE(p.pending());
  EXPECT_EQ(p.feed(0x55), std::nullopt);
  EXPECT_EQ(p.feed(0x68), bytes("09025568"));
}

TEST(SerialFrames, IdleWaitAddsTheLongestSleep) {
  EXPECT_EQ(answerTimeoutMs(bytes("0100"), 300), 300);
  // WUPeriod 20, MaxSleep 01, LFO 4 kHz: two periods of 256 * 34 / 4000 s = 4352 ms.
  EXPECT_EQ(answerTimeoutMs(bytes("070E03A100F801180020606000203F01"), 300), 300 + 4352);
  // An Idle frame that is no Idle (wrong size) is waited for like any other.
  EXPECT_EQ(answerTimeoutMs(bytes("070D03A100F8011800206060002001"), 300), 300);
}
