// The ISO 18092 panel's knowledge without its window: the opening writes, the REQC frame,
// the judgement of an answer and the three labels cut from it.
#include <gtest/gtest.h>

#include "iso18092/Iso18092Frames.h"

using namespace iso18092;

namespace {
// A REQC answer of the simulated FeliCa card: LEN 12, 01, IDm, PMm, CRC, tail.
const std::string kAnswer = "8015" "12" "01" "012E4CD2A3B4C5D6" "0120220427674EFF" "1234" "00";
}  // namespace

TEST(Iso18092Frames, OpeningWritesGainThenAutoFDet) {
  const auto writes = openingWrites();
  ASSERT_EQ(writes.size(), 2u);
  EXPECT_STREQ(writes[0].title, "TL42RQ CONFIGURATION : Index modulation & Gain adjust");
  EXPECT_STREQ(writes[0].frame, "090468010150");
  EXPECT_STREQ(writes[1].title, "TL42RQ CONFIGURATION : Auto FDet");
  EXPECT_STREQ(writes[1].frame, "09040A0102A1");
  EXPECT_STREQ(kSelectParameters, "0451");
  EXPECT_STREQ(kSelectTitle, "TL42RQ CONFIGURATION : ISO18092 protocol");
  EXPECT_STREQ(kWindowTitle, "   ISO18092  user interface  ");
}

TEST(Iso18092Frames, ReqcIsPollingOfEverySystemInOneSlot) { EXPECT_STREQ(kReqcFrame, "00FFFF0000"); }

TEST(Iso18092Frames, GoodAnswerNeeds80AtTheStartAnd00AtTheEnd) {
  EXPECT_TRUE(goodAnswer(kAnswer));
  EXPECT_TRUE(goodAnswer("8000"));
  EXPECT_FALSE(goodAnswer("8700"));
  EXPECT_FALSE(goodAnswer("8004AABB0102"));
  EXPECT_FALSE(goodAnswer("80"));
  EXPECT_FALSE(goodAnswer(""));
}

TEST(Iso18092Frames, LabelsOfAGoodAnswerShareCharacterFive) {
  const ReqcLabels l = reqcLabels(kAnswer);
  EXPECT_EQ(l.answer, "Answer : 1201012E4CD2A3B4C5D6012022042767");
  EXPECT_EQ(l.manufId, "Manuf ID : 12");
  EXPECT_EQ(l.manufParameter, "Manuf Parameter : 01012E4C");
}

TEST(Iso18092Frames, LabelsStayBareWithoutATag) {
  const ReqcLabels bare;
  EXPECT_EQ(bare.answer, "Answer : ");
  EXPECT_EQ(bare.manufId, "Manuf ID : ");
  EXPECT_EQ(bare.manufParameter, "Manuf Parameter : ");
  EXPECT_EQ(reqcLabels("8700"), bare);
  EXPECT_EQ(reqcLabels(""), bare);
  EXPECT_EQ(reqcLabels("8015" "12" "01" "012E4CD2A3B4C5D6" "0120220427674EFF" "1234" "02"), bare);
}

TEST(Iso18092Frames, AShortGoodAnswerGivesWhatThereIs) {
  const ReqcLabels l = reqcLabels("80030A0B00");
  EXPECT_EQ(l.answer, "Answer : 0A0B00");
  EXPECT_EQ(l.manufId, "Manuf ID : 0A");
  EXPECT_EQ(l.manufParameter, "Manuf Parameter : 0B00");
}

TEST(Iso18092Frames, MidCountsFromOneAndStopsAtTheEnd) {
  EXPECT_EQ(mid("ABCDEF", 1, 2), "AB");
  EXPECT_EQ(mid("ABCDEF", 5, 10), "EF");
  EXPECT_EQ(mid("ABCDEF", 7, 2), "");
  EXPECT_EQ(mid("ABCDEF", 0, 2), "");
}
