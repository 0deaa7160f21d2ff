#include <gtest/gtest.h>

#include "song/formats/Extent.h"

namespace quibel::song {
namespace {

TEST(PlainExtent, DelayAndPaddingOfThePacketsAreLeftOut) {
  const Counted counted{
      .begin = -312, .skip = 312, .end = 96'000, .packetEnd = 96'648, .lastPacket = 960};
  EXPECT_EQ(extentOf(counted, std::nullopt), (Extent{Clock::timestamps, 0, 96'000}));
}

TEST(PlainExtent, HeaderKnowsOfPaddingInTheLastPacketOnly) {
  const Counted counted{
      .begin = 0, .skip = 0, .end = 10'240, .packetEnd = 10'240, .lastPacket = 1024};
  EXPECT_EQ(extentOf(counted, 10'000).length, 10'000);
  EXPECT_EQ(extentOf(counted, 9'216).length, 10'240) << "a whole packet is no padding";
  EXPECT_EQ(extentOf(counted, 20'000).length, 10'240) << "what is not there cannot be delivered";
}

class MovieExtent : public testing::Test {
 protected:
  static Extent extent(std::vector<Edit> edits, std::optional<GaplessInfo> gapless = {},
                       std::int64_t movieTimescale = 1000) {
    const Extent counted{Clock::timestamps, 0, 91'136};
    return movieExtent(counted, {movieTimescale, 44'100, edits, gapless}, 44'100);
  }
};

TEST_F(MovieExtent, EditIsAppliedAtBothEnds) {
  EXPECT_EQ(extent({{2000, 2112}}), (Extent{Clock::timestamps, 2112, 88'200}));
}

TEST_F(MovieExtent, EditWithoutDurationReachesToTheEnd) {
  EXPECT_EQ(extent({{0, 1024}}), (Extent{Clock::timestamps, 1024, 90'112}));
}

TEST_F(MovieExtent, DurationInCoarseUnitsMeansTheMediasOwnEnd) {
  // 90,112 frames are 2043.4 ms.
  EXPECT_EQ(extent({{2043, 1024}}).length, 90'112);
  EXPECT_EQ(extent({{2044, 1024}}).length, 90'112);
}

TEST_F(MovieExtent, EmptyEditsAreNoPartOfTheSong) {
  EXPECT_EQ(extent({{500, -1}, {2000, 2112}}), (Extent{Clock::timestamps, 2112, 88'200}));
}

TEST_F(MovieExtent, GaplessNoteCountsWithoutAnEdit) {
  const GaplessInfo note{2112, 88'200};
  EXPECT_EQ(extent({}, note), (Extent{Clock::timestamps, 2112, 88'200}));
  EXPECT_EQ(extent({{0, 0}}, note), (Extent{Clock::timestamps, 2112, 88'200}));
}

TEST_F(MovieExtent, GaplessNoteMakesACoarseEditExact) {
  // 88,211 frames are 2000.2 ms.
  EXPECT_EQ(extent({{2000, 2112}}, GaplessInfo{2112, 88'211}).length, 88'211);
  EXPECT_EQ(extent({{1000, 2112}}, GaplessInfo{2112, 88'211}).length, 44'100);
}

TEST_F(MovieExtent, GaplessNoteOfACutFileStillTellsItsDelay) {
  EXPECT_EQ(extent({}, GaplessInfo{2112, 900'000}),
            (Extent{Clock::timestamps, 2112, 91'136 - 2112}));
}

TEST_F(MovieExtent, NotesBeyondTheMediaAreNotBelieved) {
  EXPECT_EQ(extent({{2000, 200'000}}), (Extent{Clock::timestamps, 0, 91'136}));
  EXPECT_EQ(extent({}, GaplessInfo{91'136, 900'000}), (Extent{Clock::timestamps, 0, 91'136}));
  EXPECT_EQ(extent({{9'999'999, 2112}}).length, 91'136 - 2112);
}

TEST(OggBeginning, FollowsFromTheFirstPage) {
  EXPECT_EQ(firstGranule({.first = 43'584, .packetsOnFirstPage = 44, .last = 88'200}, 43'584), 0);
  EXPECT_EQ(firstGranule({.first = 100'000, .packetsOnFirstPage = 9, .last = 188'200}, 8'000),
            92'000)
      << "cut out of a longer stream";
  EXPECT_EQ(
      firstGranule({.first = 64'000, .packetsOnFirstPage = 67, .isOnlyPage = true, .last = 64'000},
                   64'128),
      0)
      << "an only page ends with padding";
}

}  // namespace
}  // namespace quibel::song
