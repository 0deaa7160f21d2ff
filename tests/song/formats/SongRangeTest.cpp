#include <gtest/gtest.h>

#include "song/formats/SongRange.h"

namespace quibel::song {
namespace {

TEST(PlainRange, DelayAndPaddingOfThePacketsAreLeftOut) {
  const PacketTotals totals{
      .begin = -312, .skip = 312, .end = 96'000, .packetEnd = 96'648, .lastPacket = 960};
  EXPECT_EQ(songRangeOf(totals, std::nullopt), (SongRange{Clock::timestamps, 0, 96'000}));
}

TEST(PlainRange, HeaderKnowsOfPaddingInTheLastPacketOnly) {
  const PacketTotals totals{
      .begin = 0, .skip = 0, .end = 10'240, .packetEnd = 10'240, .lastPacket = 1024};
  EXPECT_EQ(songRangeOf(totals, 10'000).length, 10'000);
  EXPECT_EQ(songRangeOf(totals, 9'216).length, 10'240) << "a whole packet is no padding";
  EXPECT_EQ(songRangeOf(totals, 20'000).length, 10'240) << "what is not there cannot be delivered";
}

class MovieRange : public testing::Test {
 protected:
  static SongRange range(std::vector<Edit> edits, std::optional<GaplessInfo> gapless = {},
                         std::int64_t movieTimescale = 1000) {
    const SongRange totals{Clock::timestamps, 0, 91'136};
    return movieRange(totals, {movieTimescale, 44'100, edits, gapless}, 44'100);
  }
};

TEST_F(MovieRange, EditIsAppliedAtBothEnds) {
  EXPECT_EQ(range({{2000, 2112}}), (SongRange{Clock::timestamps, 2112, 88'200}));
}

TEST_F(MovieRange, EditWithoutDurationReachesToTheEnd) {
  EXPECT_EQ(range({{0, 1024}}), (SongRange{Clock::timestamps, 1024, 90'112}));
}

TEST_F(MovieRange, DurationInCoarseUnitsMeansTheMediasOwnEnd) {
  // 90,112 frames are 2043.4 ms.
  EXPECT_EQ(range({{2043, 1024}}).length, 90'112);
  EXPECT_EQ(range({{2044, 1024}}).length, 90'112);
}

TEST_F(MovieRange, EmptyEditsAreNoPartOfTheSong) {
  EXPECT_EQ(range({{500, -1}, {2000, 2112}}), (SongRange{Clock::timestamps, 2112, 88'200}));
}

TEST_F(MovieRange, GaplessNoteCountsWithoutAnEdit) {
  const GaplessInfo note{2112, 88'200};
  EXPECT_EQ(range({}, note), (SongRange{Clock::timestamps, 2112, 88'200}));
  EXPECT_EQ(range({{0, 0}}, note), (SongRange{Clock::timestamps, 2112, 88'200}));
}

TEST_F(MovieRange, GaplessNoteMakesACoarseEditExact) {
  // 88,211 frames are 2000.2 ms.
  EXPECT_EQ(range({{2000, 2112}}, GaplessInfo{2112, 88'211}).length, 88'211);
  EXPECT_EQ(range({{1000, 2112}}, GaplessInfo{2112, 88'211}).length, 44'100);
}

TEST_F(MovieRange, GaplessNoteOfACutFileStillTellsItsDelay) {
  EXPECT_EQ(range({}, GaplessInfo{2112, 900'000}),
            (SongRange{Clock::timestamps, 2112, 91'136 - 2112}));
}

TEST_F(MovieRange, NotesBeyondTheMediaAreNotBelieved) {
  EXPECT_EQ(range({{2000, 200'000}}), (SongRange{Clock::timestamps, 0, 91'136}));
  EXPECT_EQ(range({}, GaplessInfo{91'136, 900'000}), (SongRange{Clock::timestamps, 0, 91'136}));
  EXPECT_EQ(range({{9'999'999, 2112}}).length, 91'136 - 2112);
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
