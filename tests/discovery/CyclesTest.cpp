// The decisions of the discovery cycles: the words of a hit, the loop modes with option 3's
// keep-flags, and the wake-up detection's label and mark.
#include <gtest/gtest.h>

#include "discovery/Cycles.h"

using namespace discovery;

namespace {

TEST(AutoDetectWords, EachProtocolNamesItsHit) {
  EXPECT_EQ(autoDetectWords(0, 1), "1 ISO15693 ");
  EXPECT_EQ(autoDetectWords(1, 1), "1 ISO14443-A ");
  EXPECT_EQ(autoDetectWords(2, 1), "1 ISO14443-B ");
  EXPECT_EQ(autoDetectWords(3, 2), "2 ISO14443-B ");
  EXPECT_EQ(autoDetectWords(4, 1), "1 FELICA");
}

TEST(AutoDetectWords, BadIso15693AnswerAndZeroCountsAreNoHit) {
  EXPECT_FALSE(autoDetectHit(0, 99));
  EXPECT_EQ(autoDetectWords(0, 99), "");
  EXPECT_FALSE(autoDetectHit(3, 0));
  EXPECT_TRUE(autoDetectHit(3, 7));
  EXPECT_FALSE(autoDetectHit(1, 2));
}

TEST(LoopDecision, NoLoopStopsAfterOnePass) {
  ProtocolFlags keep{true, true, true, true, true};
  bool stop = false;
  decideNextPass(LoopMode::NoLoop, false, {}, keep, stop);
  EXPECT_TRUE(stop);
}

TEST(LoopDecision, InfiniteLoopNeverStopsByItself) {
  ProtocolFlags keep{true, true, true, true, true};
  bool stop = false;
  decideNextPass(LoopMode::Infinite, true, {1, 0, 0, 0, 0}, keep, stop);
  EXPECT_FALSE(stop);
  EXPECT_EQ(keep, (ProtocolFlags{true, true, true, true, true}));
}

TEST(LoopDecision, UntilFoundStopsOnlyAfterAHit) {
  ProtocolFlags keep{true, true, true, true, true};
  bool stop = false;
  decideNextPass(LoopMode::UntilFound, false, {}, keep, stop);
  EXPECT_FALSE(stop);
  decideNextPass(LoopMode::UntilFound, true, {0, 1, 0, 0, 0}, keep, stop);
  EXPECT_TRUE(stop);
}

TEST(LoopDecision, FollowModeKeepsTheOneProtocolThatAnswered) {
  ProtocolFlags keep{true, true, true, true, true};
  bool stop = false;
  decideNextPass(LoopMode::UntilFoundThenFollow, true, {0, 0, 1, 0, 0}, keep, stop);
  EXPECT_FALSE(stop);
  EXPECT_EQ(keep, (ProtocolFlags{false, false, true, false, false}));
  // The followed tag leaves: no tag found, the flags stay as they are.
  decideNextPass(LoopMode::UntilFoundThenFollow, false, {0, 0, 0, 0, 0}, keep, stop);
  EXPECT_FALSE(stop);
  EXPECT_EQ(keep, (ProtocolFlags{false, false, true, false, false}));
}

TEST(LoopDecision, FollowModeStopsWhenTheResultsAddUpToMoreThanOne) {
  ProtocolFlags keep{true, true, true, true, true};
  bool stop = false;
  decideNextPass(LoopMode::UntilFoundThenFollow, true, {0, 0, 0, 2, 0}, keep, stop);  // two PDYxx tags
  EXPECT_TRUE(stop);
  EXPECT_EQ(keep, (ProtocolFlags{false, false, false, false, false}));

  keep.fill(true);
  stop = false;
  decideNextPass(LoopMode::UntilFoundThenFollow, true, {99, 1, 0, 0, 0}, keep, stop);  // a bad answer counts
  EXPECT_TRUE(stop);
}

TEST(LoopDecision, FollowModeWithThePdyxxCountOfOneKeepsPdyxx) {
  ProtocolFlags keep{true, true, true, true, true};
  bool stop = false;
  decideNextPass(LoopMode::UntilFoundThenFollow, true, {0, 0, 0, 1, 0}, keep, stop);
  EXPECT_FALSE(stop);
  EXPECT_EQ(keep, (ProtocolFlags{false, false, false, true, false}));
}

TEST(DetectionResultTest, NoProtocolSelectedAndATagWakeUpIsADetection) {
  const DetectionResult r = detectionResult({}, 0);
  EXPECT_TRUE(r.marked);
  EXPECT_EQ(r.label, "");
}

TEST(DetectionResultTest, SelectedProtocolThatFindsNothingIsNoDetection) {
  const DetectionResult r = detectionResult({}, 2);
  EXPECT_FALSE(r.marked);
  EXPECT_EQ(r.label, "");
}

TEST(DetectionResultTest, TwoIso15693TagsAddNothingWhileThreeIso14443BTagsAreCounted) {
  DetectionCounts c;
  c.iso15693 = 2;
  EXPECT_FALSE(detectionResult(c, 1).marked);
  EXPECT_EQ(detectionResult(c, 1).label, "");
  c.iso15693 = 99;
  EXPECT_FALSE(detectionResult(c, 1).marked);
  c.iso14443B = 3;
  EXPECT_TRUE(detectionResult(c, 2).marked);
  EXPECT_EQ(detectionResult(c, 2).label, "3 ISO14443-B ");
}

TEST(DetectionResultTest, AllProtocolsInOrder) {
  const DetectionResult r = detectionResult({1, 1, 1, 1}, 5);
  EXPECT_TRUE(r.marked);
  EXPECT_EQ(r.label, "1 ISO15693 1 ISO14443-A 1 ISO14443-B 1 FELICA");
}

}  // namespace
