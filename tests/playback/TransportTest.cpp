#include <chrono>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "playback/Transport.h"

namespace quibel::playback {
namespace {

using std::chrono::milliseconds;

/// A song of 10 s at 1,000 frames a second.
struct TransportTest : testing::Test {
  Transport transport{10'000, 1'000};
  Clock::time_point now;

  void hear(std::uint64_t generation, std::int64_t frame, Content content = Content::sound) {
    transport.publish({0, generation, frame, content}, now);
  }
};

TEST_F(TransportTest, APositionIsClampedToTheSong) {
  EXPECT_EQ(transport.seek(-1)->frame, 0);
  EXPECT_EQ(transport.currentTime(now), 0);
  EXPECT_EQ(transport.seek(11)->frame, 10'000);
  EXPECT_EQ(transport.currentTime(now), 10);
  EXPECT_EQ(transport.seek(std::nan(""))->frame, 0);
  EXPECT_EQ(transport.seek(std::numeric_limits<double>::infinity())->frame, 10'000);
}

TEST_F(TransportTest, APositionReadsAsSetUntilItIsHeard) {
  transport.seek(2);
  transport.play();
  hear(1, 2'500);
  transport.seek(4.0004);
  EXPECT_EQ(transport.currentTime(now), 4.0004);
  hear(1, 2'600);
  EXPECT_EQ(transport.currentTime(now), 4.0004);
  hear(2, 4'001);
  EXPECT_DOUBLE_EQ(transport.currentTime(now), 4.001);
}

TEST_F(TransportTest, AJumpThatIsUnderWayIsNotMadeAgain) {
  ASSERT_TRUE(transport.seek(2));
  EXPECT_FALSE(transport.seek(2));
  EXPECT_TRUE(transport.seek(3));
  hear(2, 3'000);
  EXPECT_TRUE(transport.seek(3)) << "the one before has been heard";
}

TEST_F(TransportTest, SoundGoesOnBetweenTwoLooksAtIt) {
  transport.seek(2);
  transport.play();
  hear(1, 2'000);
  EXPECT_DOUBLE_EQ(transport.currentTime(now + milliseconds(8)), 2.008);
}

TEST_F(TransportTest, SoundThatWasNotSeenForLongIsNotTakenToGoOn) {
  transport.seek(2);
  transport.play();
  hear(1, 2'000);
  EXPECT_LE(transport.currentTime(now + milliseconds(5'000)), 2.05);
}

TEST_F(TransportTest, APositionNeverGoesBackBetweenJumps) {
  transport.seek(2);
  transport.play();
  hear(1, 2'000);
  const double ahead = transport.currentTime(now + milliseconds(8));
  now += milliseconds(8);
  hear(1, 2'007);
  EXPECT_EQ(transport.currentTime(now), ahead);
}

TEST_F(TransportTest, WaitingForTheDecoderStandsStill) {
  transport.seek(2);
  transport.play();
  hear(1, 2'100, Content::waiting);
  EXPECT_DOUBLE_EQ(transport.currentTime(now + milliseconds(8)), 2.1);
  EXPECT_TRUE(transport.isPlaying());
}

TEST_F(TransportTest, PlaybackStopsByItselfWhenTheEndIsHeard) {
  transport.seek(9);
  transport.play();
  hear(1, 10'000, Content::ended);
  EXPECT_FALSE(transport.isPlaying());
  EXPECT_EQ(transport.currentTime(now), 10.0);
}

TEST_F(TransportTest, TheEndOfAnEarlierJumpStopsNothing) {
  transport.seek(9);
  transport.play();
  transport.seek(1);
  hear(1, 10'000, Content::ended);
  EXPECT_TRUE(transport.isPlaying());
}

TEST_F(TransportTest, ALostOutputStopsPlaybackWhereItWasHeard) {
  transport.seek(2);
  transport.play();
  hear(1, 2'300);
  transport.outputLost();
  EXPECT_FALSE(transport.isPlaying());
  EXPECT_DOUBLE_EQ(transport.currentTime(now), 2.3);
  transport.play();
  EXPECT_FALSE(transport.isPlaying());
  transport.outputFound();
  EXPECT_TRUE(transport.isPlaying());
}

TEST_F(TransportTest, AFreshSinkPlaysOnFromWhatWasHeardLast) {
  transport.seek(2);
  transport.play();
  hear(1, 2'300);
  EXPECT_EQ(transport.resume().frame, 2'300);
  EXPECT_EQ(transport.currentTime(now), 2.3) << "nothing of the fresh one is heard yet";
}

TEST_F(TransportTest, AFreshSinkPlaysFromWhereAJumpThatWasUnderWayLeads) {
  transport.seek(2);
  transport.play();
  hear(1, 2'300);
  const auto underWay = transport.seek(5);
  const auto again = transport.resume();
  EXPECT_EQ(again.frame, 5'000);
  EXPECT_GT(again.generation, underWay->generation);
  EXPECT_EQ(transport.currentTime(now), 5.0);
}

}  // namespace
}  // namespace quibel::playback
