// The frame checks are compared with a second computation written here from the
// definition of ISO/IEC 13239 and ISO/IEC 14443-3 Annex B: generator x^16 + x^12 + x^5 + 1,
// the bits of each byte fed least significant first, a register shifted towards its high
// end. It shares nothing with the table-free reflected loop of the program, so an error in
// either shows as a difference. The published values of the standards are checked too.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "common/crc.h"
#include "common/hex.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

std::uint16_t mirror16(std::uint16_t v) {
  std::uint16_t r = 0;
  for (int i = 0; i < 16; ++i)
    if (v & (1u << i)) r = static_cast<std::uint16_t>(r | (1u << (15 - i)));
  return r;
}

// `preset` as the standards write it (the register seen least significant bit first).
// Returns the check as a number whose low byte is sent first.
std::uint16_t crcByDefinition(const Bytes& data, std::uint16_t preset, bool complement) {
  std::uint16_t reg = mirror16(preset);
  for (std::uint8_t byte : data) {
    for (int bit = 0; bit < 8; ++bit) {  // transmission order: least significant bit first
      const unsigned in = (byte >> bit) & 1u;
      const unsigned feedback = ((reg >> 15) & 1u) ^ in;
      reg = static_cast<std::uint16_t>(reg << 1);
      if (feedback) reg ^= 0x1021;
    }
  }
  if (complement) reg = static_cast<std::uint16_t>(~reg);
  return mirror16(reg);
}

std::string lowFirst(std::uint16_t v) {
  return hex::byte(static_cast<std::uint8_t>(v & 0xFF)) + hex::byte(static_cast<std::uint8_t>(v >> 8));
}

Bytes bytesOf(const std::string& text) { return *hex::toBytes(text); }

std::string iso13239ByDefinition(const std::string& frameText) {
  return lowFirst(crcByDefinition(bytesOf(frameText), 0xFFFF, true));
}

TEST(Crc16Text, EmptyTextGivesTheComplementOfFFFF) { EXPECT_EQ(crc16Text(""), "0000"); }

TEST(Crc16Text, CheckStringGivesThePublishedX25ValueLowByteFirst) {
  // CRC-16/X-25 (the ISO/IEC 13239 check) of "123456789" is 0x906E.
  EXPECT_EQ(crc16Text("313233343536373839"), "6E90");
  EXPECT_EQ(iso13239ByDefinition("313233343536373839"), "6E90");
}

TEST(Crc16Text, MatchesTheDefinitionOnIso15693Frames) {
  const std::vector<std::string> frames = {
      "260100",                        // inventory, one slot, no mask
      "220120E0030000AABBCC",          // read single block, addressed
      "0220",                          // read single block, unaddressed, block 0
      "022101AABBCCDD",                // write single block 1
      "2B",                            // get system information
      "000F",                          // a tag's answer header
      "00E0020000000000000000",        // flags, DSFID and a UID in an answer
      "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF",
  };
  for (const auto& f : frames) EXPECT_EQ(crc16Text(f), iso13239ByDefinition(f)) << f;
}

TEST(Crc16Text, InventoryRequestCarriesF60A) { EXPECT_EQ(crc16Text("260100"), "F60A"); }

TEST(Crc16Text, MatchesThePublishedCrcBExamples) {
  // ISO/IEC 14443-3 Annex B gives these CRC_B values; CRC_B is the ISO/IEC 13239 check.
  EXPECT_EQ(crc16Text("000000"), "CCC6");
  EXPECT_EQ(crc16Text("0FAAFF"), "FCD1");
  EXPECT_EQ(crc16Text("0A123456"), "2CF6");
  EXPECT_EQ(iso13239ByDefinition("000000"), "CCC6");
  EXPECT_EQ(iso13239ByDefinition("0FAAFF"), "FCD1");
  EXPECT_EQ(iso13239ByDefinition("0A123456"), "2CF6");
}

TEST(Crc16Text, LowerCaseDigitsReadLikeUpperCase) { EXPECT_EQ(crc16Text("0faaff"), "FCD1"); }

TEST(Crc16Text, OddLastDigitIsDropped) {
  EXPECT_EQ(crc16Text("2601001"), crc16Text("260100"));
  EXPECT_EQ(crc16Text("7"), "0000");
}

TEST(Crc16Text, TakesAtMost256Bytes) {
  std::string first256;
  for (int i = 0; i < 256; ++i) first256 += hex::byte(static_cast<std::uint8_t>(i * 7 + 3));
  const std::string longer = first256 + "0102030405";
  EXPECT_EQ(crc16Text(longer), crc16Text(first256));
  EXPECT_EQ(crc16Text(first256), iso13239ByDefinition(first256));
  // One byte less is a different check, so the 256th byte does count.
  EXPECT_NE(crc16Text(first256.substr(0, 510)), crc16Text(first256));
}

TEST(Crc16Text, NonHexPairCountsAsZeroByte) { EXPECT_EQ(crc16Text("26GG00"), crc16Text("260000")); }

TEST(Crc16Bytes, GivesTheSameValueAsTheTextRoutine) {
  std::mt19937 rng(1234);
  for (int round = 0; round < 200; ++round) {
    Bytes b(static_cast<std::size_t>(rng() % 300));
    for (auto& x : b) x = static_cast<std::uint8_t>(rng());
    const std::string text = hex::fromBytes(b);
    if (b.size() <= 256) {
      EXPECT_EQ(crc16Bytes(b), crc16Text(text));
      EXPECT_EQ(crc16Bytes(b), lowFirst(crcByDefinition(b, 0xFFFF, true)));
    } else {
      EXPECT_EQ(crc16Text(text), crc16Bytes(b.data(), 256));
    }
  }
}

TEST(CrcA, MatchesThePublishedIso14443Examples) {
  // ISO/IEC 14443-3 Annex B: CRC_A of 00 00 is A0 1E, of 12 34 is 26 CF (sent in this order).
  const Bytes a{0x00, 0x00};
  const Bytes b{0x12, 0x34};
  EXPECT_EQ(lowFirst(crc::iso14443A(a.data(), a.size())), "A01E");
  EXPECT_EQ(lowFirst(crc::iso14443A(b.data(), b.size())), "26CF");
  EXPECT_EQ(lowFirst(crcByDefinition(a, 0x6363, false)), "A01E");
  EXPECT_EQ(lowFirst(crcByDefinition(b, 0x6363, false)), "26CF");
}

TEST(CrcA, MatchesTheDefinitionOnActivationFrames) {
  const std::vector<std::string> frames = {"9370", "937088041122", "5000", "E050", "3004", "A2045566778899"};
  for (const auto& f : frames) {
    const Bytes b = bytesOf(f);
    EXPECT_EQ(crc::iso14443A(b.data(), b.size()), crcByDefinition(b, 0x6363, false)) << f;
  }
}

TEST(CrcA, HaltFrameCarries57CD) {
  const Bytes halt{0x50, 0x00};
  EXPECT_EQ(lowFirst(crc::iso14443A(halt.data(), halt.size())), "57CD");
}

TEST(CrcB, Iso13239IsTheComplementedReflectedCrc) {
  const Bytes b{0x0A, 0x12, 0x34, 0x56};
  EXPECT_EQ(crc::iso13239(b.data(), b.size()), 0xF62C);
  EXPECT_EQ(crc::iso13239(b.data(), b.size()),
            static_cast<std::uint16_t>(~crc::reflected16(b.data(), b.size(), 0xFFFF)));
}

TEST(Crc, AppendLowFirstPutsTheLowByteFirst) {
  Bytes frame{0x26, 0x01, 0x00};
  crc::appendLowFirst(frame, 0x0AF6);
  EXPECT_EQ(hex::fromBytes(frame), "260100F60A");
}

TEST(Crc, FrameWithItsOwnCheckLeavesTheResidue) {
  // A receiver runs the check over frame and check bytes: the register then holds the
  // fixed residue 0xF0B8 of ISO/IEC 13239 before the complement.
  Bytes frame = bytesOf("220120E0030000AABBCC");
  crc::appendLowFirst(frame, crc::iso13239(frame.data(), frame.size()));
  EXPECT_EQ(crc::reflected16(frame.data(), frame.size(), 0xFFFF), 0xF0B8);
}

TEST(Crc32, CheckGivesThePublishedCrc32CheckValue) {
  CRC32 c;
  EXPECT_EQ(c.Check(), "CBF43926");
}

TEST(Crc32, PolyIsEightDigits) {
  CRC32 c;
  EXPECT_EQ(c.Poly(), "EDB88320");
}

TEST(Crc32, CrcOfDataIsStoredAsTheLastChecksum) {
  CRC32 c;
  EXPECT_EQ(c.CheckSum(), 0u);
  const std::string fox = "The quick brown fox jumps over the lazy dog";
  const std::vector<std::uint8_t> data(fox.begin(), fox.end());
  EXPECT_EQ(c.CRC(data), 0x414FA339u);
  EXPECT_EQ(c.CheckSum(), 0x414FA339u);
  EXPECT_EQ(c.CRC({}), 0u);
  EXPECT_EQ(c.CheckSum(), 0u);
}

TEST(Crc32, CheckLeavesTheLastChecksumAlone) {
  CRC32 c;
  c.CRC({0x61});  // "a"
  EXPECT_EQ(c.CheckSum(), 0xE8B7BE43u);
  EXPECT_EQ(c.Check(), "CBF43926");
  EXPECT_EQ(c.CheckSum(), 0xE8B7BE43u);
}

}  // namespace
