#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/crc.h"

namespace {
std::vector<std::uint8_t> bytesOf(const std::string& s) { return {s.begin(), s.end()}; }
}  // namespace

TEST(CRC32, CheckGivesThePublishedCheckValue) {
  CRC32 c;
  EXPECT_EQ(c.Check(), "CBF43926");
}

TEST(CRC32, PolyGivesThePolynomialAsEightDigits) {
  CRC32 c;
  EXPECT_EQ(c.Poly(), "EDB88320");
}

TEST(CRC32, CrcStoresTheLastChecksumAndCheckLeavesItAlone) {
  CRC32 c;
  EXPECT_EQ(c.CheckSum(), 0u);
  EXPECT_EQ(c.CRC(bytesOf("123456789")), 0xCBF43926u);
  EXPECT_EQ(c.CheckSum(), 0xCBF43926u);
  EXPECT_EQ(c.CRC(bytesOf("The quick brown fox jumps over the lazy dog")), 0x414FA339u);
  EXPECT_EQ(c.Check(), "CBF43926");
  EXPECT_EQ(c.CheckSum(), 0x414FA339u);
}

TEST(CRC32, EmptyInputGivesZero) {
  CRC32 c;
  EXPECT_EQ(c.CRC({}), 0u);
  EXPECT_EQ(c.CheckSum(), 0u);
}
