// The page view without widgets: which rows the list shows, the scroll keys, the write
// grid and its fill.
#include <gtest/gtest.h>

#include "iso15693/PageView.h"

using namespace pageview;

namespace {
std::vector<std::string> buffer(int n) {
  std::vector<std::string> b;
  for (int i = 0; i < n; ++i) b.push_back("row" + std::to_string(i + 1));
  return b;
}
}  // namespace

TEST(PageView, DisplayedRowPadsTheAddressToTheBox) {
  EXPECT_EQ(displayRow(5, 2, "12 34 56 78 "), "05   12 34 56 78 ");
  EXPECT_EQ(displayRow(0x7F, 4, "x"), "007F   x");
}

TEST(PageView, SixteenBlocksShowAll) {
  const Shown s = showReadRows(buffer(16), 16, 0, 0x3F, 2);
  EXPECT_EQ(s.firstShownRow, 1);
  ASSERT_EQ(s.rows.size(), 16u);
  EXPECT_EQ(s.rows.front(), "00   row1");
  EXPECT_EQ(s.rows.back(), "0F   row16");
  // Down at the last row does nothing with sixteen rows.
  EXPECT_FALSE(keyDown(Key::Down, s.firstShownRow, 15, 16).refill);
}

TEST(PageView, SeventeenBlocksShowTheLastSixteenThenHomeShowsTheFirst) {
  const auto b = buffer(17);
  const Shown s = showReadRows(b, 17, 0x10, 0x3F, 2);
  EXPECT_EQ(s.firstShownRow, 2);
  ASSERT_EQ(s.rows.size(), 16u);
  EXPECT_EQ(s.rows.front(), "11   row2");
  EXPECT_EQ(s.rows.back(), "20   row17");
  const KeyOutcome o = keyDown(Key::Home, s.firstShownRow, 3, 17);
  ASSERT_TRUE(o.refill);
  EXPECT_EQ(o.firstShownRow, 1);
  const long base = addressBase(s.rows.front(), s.firstShownRow);
  EXPECT_EQ(base, 0x10);
  const auto rows = refill(b, o.firstShownRow, base, 0x3F, 2);
  ASSERT_EQ(rows.size(), 16u);
  EXPECT_EQ(rows.front(), "10   row1");
  EXPECT_EQ(rows.back(), "1F   row16");
}

TEST(PageView, PageDownInFortyRowsGivesSeventeenThenTwentyFive) {
  KeyOutcome o = keyDown(Key::PageDown, 1, 4, 40);
  ASSERT_TRUE(o.refill);
  EXPECT_EQ(o.firstShownRow, 17);
  EXPECT_EQ(o.listIndex, -1);
  o = keyDown(Key::PageDown, 17, 4, 40);
  ASSERT_TRUE(o.refill);
  EXPECT_EQ(o.firstShownRow, 25);
  EXPECT_FALSE(keyDown(Key::PageDown, 25, 4, 40).refill);
}

TEST(PageView, PageUpEndUpDown) {
  EXPECT_EQ(keyDown(Key::PageUp, 25, 0, 40).firstShownRow, 9);
  EXPECT_EQ(keyDown(Key::PageUp, 9, 0, 40).firstShownRow, 1);
  EXPECT_FALSE(keyDown(Key::PageUp, 1, 0, 40).refill);
  EXPECT_EQ(keyDown(Key::End, 1, 0, 40).firstShownRow, 25);
  EXPECT_FALSE(keyDown(Key::End, 25, 0, 40).refill);
  KeyOutcome o = keyDown(Key::Down, 3, 15, 40);
  EXPECT_EQ(o.firstShownRow, 4);
  EXPECT_EQ(o.listIndex, 15);
  EXPECT_FALSE(keyDown(Key::Down, 3, 14, 40).refill);
  EXPECT_EQ(keyDown(Key::Right, 3, 15, 40).firstShownRow, 4);
  o = keyDown(Key::Up, 3, 0, 40);
  EXPECT_EQ(o.firstShownRow, 2);
  EXPECT_EQ(o.listIndex, 0);
  EXPECT_EQ(keyDown(Key::Left, 3, 0, 40).firstShownRow, 2);
  EXPECT_FALSE(keyDown(Key::Up, 1, 0, 40).refill);
  EXPECT_FALSE(keyDown(Key::Other, 3, 0, 40).refill);
  EXPECT_FALSE(keyDown(Key::Home, 1, 0, 40).refill);
}

TEST(PageView, KeysOnAnEmptyListDoNothing) {
  for (Key k : {Key::End, Key::Down, Key::PageDown, Key::Up, Key::PageUp, Key::Home})
    EXPECT_FALSE(keyDown(k, 1, -1, 0).refill);
}

TEST(PageView, VirtualKeyCodes) {
  EXPECT_EQ(keyOfCode(0x23), Key::End);
  EXPECT_EQ(keyOfCode(0x28), Key::Down);
  EXPECT_EQ(keyOfCode(0x27), Key::Right);
  EXPECT_EQ(keyOfCode(0x22), Key::PageDown);
  EXPECT_EQ(keyOfCode(0x26), Key::Up);
  EXPECT_EQ(keyOfCode(0x25), Key::Left);
  EXPECT_EQ(keyOfCode(0x21), Key::PageUp);
  EXPECT_EQ(keyOfCode(0x24), Key::Home);
  EXPECT_EQ(keyOfCode(0x41), Key::Other);
}

TEST(PageView, RangeThroughTheEndWrapsTheShownAddresses) {
  const Shown s = showReadRows(buffer(4), 4, 0x3E, 0x3F, 2);
  EXPECT_EQ(s.rows, (std::vector<std::string>{"3E   row1", "3F   row2", "00   row3", "01   row4"}));
}

TEST(PageView, ScrollingKeepsTheWrappedAddresses) {
  const auto b = buffer(20);
  const Shown s = showReadRows(b, 20, 0x30, 0x3F, 2);  // shows rows 5..20, addresses 34..
  EXPECT_EQ(s.rows.front(), "34   row5");
  EXPECT_EQ(s.rows.back(), "03   row20");
  const long base = addressBase(s.rows.front(), s.firstShownRow);
  const auto rows = refill(b, 1, base, 0x3F, 2);
  EXPECT_EQ(rows.front(), "30   row1");
  EXPECT_EQ(rows.back(), "3F   row16");
}

TEST(PageView, GridOfUpToFourBytesIsOneBox) {
  Grid g = pageGrid(3, 4, Variant::Iso15693);
  EXPECT_EQ(g.masks, (std::vector<std::string>{">AA AA AA "}));
  EXPECT_EQ(g.texts, (std::vector<std::string>{"00 00 00 "}));
  g = pageGrid(4, 4, Variant::Iso15693);
  EXPECT_EQ(g.texts, (std::vector<std::string>{"00 00 00 00 "}));
}

TEST(PageView, GridOfMoreBytesHasFullBoxesByVariant) {
  Grid g = pageGrid(6, 4, Variant::Iso15693);
  ASSERT_EQ(g.masks.size(), 2u);
  EXPECT_EQ(g.masks[0], ">AA AA AA AA AA AA AA AA AA AA AA AA AA AA AA AA ");
  EXPECT_EQ(g.texts[0], "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 ");
  EXPECT_EQ(g.masks[1], ">AA AA ");
  g = pageGrid(16, 4, Variant::Iso14443A);
  ASSERT_EQ(g.masks.size(), 4u);
  EXPECT_EQ(g.masks[0], ">AA AA AA AA ");
  EXPECT_EQ(g.texts[0], "00 00 00 00 ");
}

TEST(PageView, FillOfThreeBytes) {
  const auto t = fillTexts("AB", 3, 4);
  ASSERT_TRUE(t);
  EXPECT_EQ(*t, (std::vector<std::string>{"AB AB AB "}));
}

TEST(PageView, FillOfSixBytesRepeatsTheGroupPageRowBytesTimes) {
  const auto t = fillTexts("5A", 6, 4);
  ASSERT_TRUE(t);
  EXPECT_EQ(*t, (std::vector<std::string>{"5A 5A 5A 5A ", "5A 5A "}));
}

TEST(PageView, FillWithAnUnfilledPlaceFails) {
  EXPECT_FALSE(fillTexts("A_", 3, 4));
  EXPECT_FALSE(fillTexts("_A", 3, 4));
}

TEST(PageView, FillCountByVariantAndWriteMode) {
  EXPECT_EQ(fillByteCount(Variant::Iso15693, 0, "4"), 4);
  EXPECT_EQ(fillByteCount(Variant::Iso15693, 1, "4"), 1);  // AFI
  EXPECT_EQ(fillByteCount(Variant::Iso15693, 2, "3"), 1);
  EXPECT_EQ(fillByteCount(Variant::Iso15693, 3, "4"), 1);
  EXPECT_EQ(fillByteCount(Variant::Iso15693, 6, "4"), 1);
  EXPECT_EQ(fillByteCount(Variant::Iso15693, 99, "4"), 1);
  EXPECT_EQ(fillByteCount(Variant::Iso15693, 5, "2"), 2);
  EXPECT_EQ(fillByteCount(Variant::Iso14443A, 8, "16"), 16);
  EXPECT_EQ(fillByteCount(Variant::Iso14443B, 0, "1"), 4);
}
