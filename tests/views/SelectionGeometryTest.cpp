#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "views/SelectionGeometry.h"

namespace quibel {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(Position, IsProportionalToTheTime) {
  EXPECT_EQ(position(0, 180, 720), 0);
  EXPECT_EQ(position(45, 180, 720), 180);
  EXPECT_EQ(position(180, 180, 720), 720);
}

TEST(Position, IsNotClampedToTheView) {
  EXPECT_EQ(position(-45, 180, 720), -180);
  EXPECT_EQ(position(225, 180, 720), 900);
}

TEST(Position, IsZeroWithoutADuration) {
  EXPECT_EQ(position(10, 0, 720), 0);
  EXPECT_EQ(position(10, -1, 720), 0);
  EXPECT_EQ(position(10, nan, 720), 0);
}

TEST(ToTime, UndoesPositionInsideTheSong) {
  for (const double time : {0.0, 0.1, 17.3, 99.95, 180.0}) {
    EXPECT_NEAR(toTime(position(time, 180, 700), 700, 180), time, 1e-12);
  }
}

TEST(ToTime, PastTheLeftEdgeIsZeroAndPastTheRightEdgeIsTheDuration) {
  EXPECT_EQ(toTime(-1, 720, 180), 0);
  EXPECT_EQ(toTime(-1e9, 720, 180), 0);
  EXPECT_EQ(toTime(721, 720, 180), 180);
  EXPECT_EQ(toTime(1e9, 720, 180), 180);
}

TEST(ToTime, WithoutAWidthIsZeroAtTheEdgeAndTheDurationBesideIt) {
  EXPECT_EQ(toTime(0, 0, 180), 0);
  EXPECT_EQ(toTime(1, 0, 180), 180);
}

TEST(ToTime, WithoutADurationIsZeroWhereverThePointerIs) {
  for (const double x : {-5.0, 0.0, 1.0, 360.0, 1e9, infinity}) {
    EXPECT_EQ(toTime(x, 720, 0), 0) << x;
  }
  EXPECT_EQ(toTime(5, 0, 0), 0);
}

TEST(ClampedToSong, TheUpperBoundIsAppliedLastAndWins) { EXPECT_EQ(clampedToSong(3, -2), -2); }

TEST(ClampedToSong, ANaNCountsAsZero) { EXPECT_EQ(clampedToSong(nan, 180), 0); }

struct Drag {
  double to;
  double other;
  double expected;
};

TEST(DraggedStart, StopsHalfASecondBeforeTheEnd) {
  for (const auto& [to, end, expected] : std::vector<Drag>{{10, 40, 10},
                                                           {39.5, 40, 39.5},
                                                           {39.6, 40, 39.5},
                                                           {180, 40, 39.5},
                                                           {0, 0.3, -0.2},
                                                           {0, 0, -0.5}}) {
    EXPECT_DOUBLE_EQ(draggedStart(to, end), expected) << to << " against " << end;
  }
}

TEST(DraggedEnd, StopsHalfASecondAfterTheStart) {
  for (const auto& [to, start, expected] : std::vector<Drag>{{40, 10, 40},
                                                             {10.5, 10, 10.5},
                                                             {10.4, 10, 10.5},
                                                             {0, 10, 10.5},
                                                             {0.3, 0, 0.5},
                                                             {180, 0, 180}}) {
    EXPECT_DOUBLE_EQ(draggedEnd(to, start), expected) << to << " against " << start;
  }
}

TEST(DraggedEnd, IsNotHeldToTheLongestRingtone) { EXPECT_EQ(draggedEnd(100, 0), 100); }

}  // namespace
}  // namespace quibel
