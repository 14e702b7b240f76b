// The pcapng blocks byte for byte, as the format's description lays them out.
#include <gtest/gtest.h>

#include "export/Pcapng.h"

using pcapng::Bytes;

TEST(Pcapng, SectionHeaderIsLittleEndianVersionOneWithUnknownLengthAndApplication) {
  const Bytes expected{
      0x0A, 0x0D, 0x0D, 0x0A,  // block type
      40,   0,    0,    0,     // total length
      0x4D, 0x3C, 0x2B, 0x1A,  // byte-order magic
      1,    0,    0,    0,     // version 1.0
      0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,  // section length unknown
      4,    0,    2,    0,    'a', 'b', 0, 0,          // shb_userappl "ab", padded
      0,    0,    0,    0,                             // end of options
      40,   0,    0,    0};
  EXPECT_EQ(pcapng::sectionHeader("ab"), expected);
}

TEST(Pcapng, InterfaceDescriptionCarriesLinkTypeNameAndMicrosecondResolution) {
  const Bytes expected{1, 0, 0, 0,   40, 0, 0, 0,          // type, length
                       0x08, 0x01, 0, 0,                   // link type 264, reserved
                       0, 0, 0, 0,                         // no snapshot limit
                       2, 0, 1, 0, 'A', 0, 0, 0,           // if_name "A"
                       9, 0, 1, 0, 6, 0, 0, 0,             // if_tsresol 10^-6
                       0, 0, 0, 0,  40, 0, 0, 0};
  EXPECT_EQ(pcapng::interfaceDescription(pcapng::kLinkTypeIso14443, "A"), expected);
  EXPECT_EQ(pcapng::kLinkTypeUser0, 147);
}

TEST(Pcapng, EnhancedPacketSplitsTheTimeIntoHighAndLowWordsAndPadsTheData) {
  const Bytes expected{6, 0, 0, 0,   40, 0, 0, 0,
                       1, 0, 0, 0,                  // interface 1
                       0x01, 0, 0, 0,               // time, high word
                       0x02, 0, 0, 0,               // time, low word
                       5, 0, 0, 0,  5, 0, 0, 0,     // captured and original length
                       0x00, 0xFE, 0x00, 0x01, 0x26, 0, 0, 0,
                       40, 0, 0, 0};
  EXPECT_EQ(pcapng::enhancedPacket(1, 0x0000000100000002LL, {0x00, 0xFE, 0x00, 0x01, 0x26}), expected);
}

TEST(Pcapng, EnhancedPacketWithCommentEndsItsOptions) {
  const Bytes expected{6, 0, 0, 0,   44, 0, 0, 0,
                       0, 0, 0, 0,  0, 0, 0, 0,  0x10, 0x27, 0, 0,  // interface 0, time 10000 us
                       0, 0, 0, 0,  0, 0, 0, 0,                  // empty packet
                       1, 0, 3, 0, 'a', 'b', 'c', 0,             // opt_comment "abc"
                       0, 0, 0, 0,
                       44, 0, 0, 0};
  EXPECT_EQ(pcapng::enhancedPacket(0, 10000, {}, "abc"), expected);
}

TEST(Pcapng, EveryBlockLengthIsAMultipleOfFourAndRepeatedAtTheEnd) {
  for (std::size_t n = 0; n < 9; ++n) {
    const Bytes b = pcapng::enhancedPacket(0, 1, Bytes(n, 0xAA), std::string(n, 'c'));
    ASSERT_EQ(b.size() % 4, 0u);
    const std::uint32_t head = b[4] | b[5] << 8 | b[6] << 16 | static_cast<std::uint32_t>(b[7]) << 24;
    const std::size_t e = b.size() - 4;
    const std::uint32_t tail = b[e] | b[e + 1] << 8 | b[e + 2] << 16 | static_cast<std::uint32_t>(b[e + 3]) << 24;
    EXPECT_EQ(head, b.size());
    EXPECT_EQ(tail, b.size());
  }
}
