#include <gtest/gtest.h>

#include "playback/Timeline.h"

namespace quibel::playback {
namespace {

TEST(Timeline, KnowsNothingBeforeItsFirstSegment) {
  Timeline timeline(1);
  EXPECT_EQ(timeline.at(0), std::nullopt);
  timeline.add({100, 1, 0, Content::sound});
  EXPECT_EQ(timeline.at(99), std::nullopt);
}

TEST(Timeline, SoundAdvancesFrameByFrame) {
  Timeline timeline(1);
  timeline.add({100, 1, 5000, Content::sound});
  EXPECT_EQ(timeline.at(100), (Segment{100, 1, 5000, Content::sound}));
  EXPECT_EQ(timeline.at(350), (Segment{350, 1, 5250, Content::sound}));
}

TEST(Timeline, ASinkFrameMadeOfSeveralCountsAsThatMany) {
  Timeline timeline(4);
  timeline.add({0, 1, 5000, Content::sound});
  EXPECT_EQ(timeline.at(100)->songFrame, 5400);
}

TEST(Timeline, SilenceKeepsItsPlaceInTheSong) {
  Timeline timeline(1);
  timeline.add({0, 1, 5000, Content::sound});
  timeline.add({10, 1, 5010, Content::waiting});
  timeline.add({30, 1, 5010, Content::sound});
  timeline.add({40, 1, 5020, Content::ended});
  EXPECT_EQ(timeline.at(25), (Segment{25, 1, 5010, Content::waiting}));
  EXPECT_EQ(timeline.at(39), (Segment{39, 1, 5019, Content::sound}));
  EXPECT_EQ(timeline.at(900), (Segment{900, 1, 5020, Content::ended}));
}

TEST(Timeline, AJumpHoldsFromItsFirstFrameOn) {
  Timeline timeline(1);
  timeline.add({0, 1, 5000, Content::sound});
  timeline.add({64, 2, 200, Content::sound});
  EXPECT_EQ(timeline.at(63), (Segment{63, 1, 5063, Content::sound}));
  EXPECT_EQ(timeline.at(64), (Segment{64, 2, 200, Content::sound}));
}

}  // namespace
}  // namespace quibel::playback
