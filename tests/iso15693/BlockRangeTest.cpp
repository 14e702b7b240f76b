// Ranges of blocks, the cut into requests, the address boxes and the table of products.
#include <gtest/gtest.h>

#include "iso15693/BlockRange.h"
#include "iso15693/Iso15693Products.h"

using namespace iso15693;

TEST(BlockRange, CountsThroughTheEndOfMemory) {
  EXPECT_EQ(rangeCount(5, 5, 0x3F), 1);
  EXPECT_EQ(rangeCount(0, 0x3F, 0x3F), 64);
  EXPECT_EQ(rangeCount(0x3E, 0x01, 0x3F), 4);
}

TEST(BlockRange, ReadMultipleChunksAlignToEight) {
  const auto c = readMultipleChunks(0x05, 12);
  ASSERT_EQ(c.size(), 3u);
  EXPECT_EQ(c[0].address, 0x05);
  EXPECT_EQ(c[0].count, 3);
  EXPECT_EQ(c[1].address, 0x08);
  EXPECT_EQ(c[1].count, 8);
  EXPECT_EQ(c[2].address, 0x10);
  EXPECT_EQ(c[2].count, 1);
}

TEST(BlockRange, ReadMultipleWalkThroughTheEndIsNotMasked) {
  const auto c = readMultipleChunks(0x3E, rangeCount(0x3E, 0x01, 0x3F));
  ASSERT_EQ(c.size(), 2u);
  EXPECT_EQ(c[0].address, 0x3E);
  EXPECT_EQ(c[0].count, 2);
  EXPECT_EQ(c[1].address, 0x40);
  EXPECT_EQ(c[1].count, 2);
}

TEST(BlockRange, SecurityStatusChunksOfThirtyTwo) {
  const auto c = securityStatusChunks(0, 40);
  ASSERT_EQ(c.size(), 2u);
  EXPECT_EQ(c[0].count, 32);
  EXPECT_EQ(c[1].address, 32);
  EXPECT_EQ(c[1].count, 8);
}

TEST(BlockRange, AddressBoxWidthFromTheMemorySize) {
  EXPECT_EQ(addressBoxWidth(256), 2);    // VAX30: 2 kbit
  EXPECT_EQ(addressBoxWidth(512), 3);    // 4 kbit
  EXPECT_EQ(addressBoxWidth(2048), 3);   // 16 kbit
  EXPECT_EQ(addressBoxWidth(8192), 4);   // 64 kbit
  EXPECT_EQ(addressBoxText(0x3F, 2), "3F");
  EXPECT_EQ(addressBoxText(0x7F, 3), "07F");
}

TEST(BlockRange, RfAddressBytesFromDensity) {
  EXPECT_EQ(rfAddressBytesForDensity(8), 1);
  EXPECT_EQ(rfAddressBytesForDensity(16), 2);
}

TEST(ProductTable, VaxRowsShowKillAndHideEnergyHarvesting) {
  const auto l = panelLayoutFor("VAX30");
  ASSERT_TRUE(l);
  EXPECT_TRUE(l->kill);
  EXPECT_TRUE(l->lockBlock);
  EXPECT_FALSE(l->password);
  EXPECT_FALSE(l->energyHarvesting);
  EXPECT_TRUE(l->readMultipleBlock);
  EXPECT_EQ(l->extension, ExtensionChoice::Index0Hidden);
  EXPECT_TRUE(panelLayoutFor("VAX40"));
}

TEST(ProductTable, Vas50HidesReadMultipleBlock) {
  const auto l = panelLayoutFor("VAS50");
  ASSERT_TRUE(l);
  EXPECT_FALSE(l->readMultipleBlock);
  EXPECT_TRUE(l->readUser);
  EXPECT_TRUE(l->fastReadMultipleBlock);
}

TEST(ProductTable, LastRowByEnergyHarvestingModel) {
  for (const char* ref : {"VAS60E", "QLN41E", "QLN42E", "QLN44E"}) {
    const auto l = panelLayoutFor(ref);
    ASSERT_TRUE(l) << ref;
    EXPECT_TRUE(l->energyHarvesting) << ref;
    EXPECT_EQ(l->extension, ExtensionChoice::Index0Shown) << ref;
    EXPECT_FALSE(l->lockBlock) << ref;
    EXPECT_TRUE(l->securityStatus) << ref;
    EXPECT_FALSE(l->kill) << ref;
    EXPECT_TRUE(l->password) << ref;
    EXPECT_FALSE(l->pageSize) << ref;
  }
  for (const char* ref : {"VAS70", "QLN43"}) {
    const auto l = panelLayoutFor(ref);
    ASSERT_TRUE(l) << ref;
    EXPECT_FALSE(l->energyHarvesting) << ref;
    EXPECT_EQ(l->extension, ExtensionChoice::Index1Hidden) << ref;
  }
}

TEST(ProductTable, HorizonAtTheFirstOrSeventhCharacter) {
  for (const char* ref : {"HORIZON", "ABCDE-HORIZON2"}) {
    const auto l = panelLayoutFor(ref);
    ASSERT_TRUE(l) << ref;
    EXPECT_FALSE(l->afiAndDsfid);
    EXPECT_FALSE(l->initiate);
    EXPECT_FALSE(l->fastReadSingleBlock);
    EXPECT_TRUE(l->readMultipleBlock);
    EXPECT_FALSE(l->pageSize);
  }
  EXPECT_FALSE(panelLayoutFor("XHORIZON"));
}

TEST(ProductTable, OtherReferencesHaveNoRow) {
  EXPECT_FALSE(panelLayoutFor("VAX10"));
  EXPECT_FALSE(panelLayoutFor("ISO14443-A"));
  EXPECT_FALSE(panelLayoutFor(""));
}
