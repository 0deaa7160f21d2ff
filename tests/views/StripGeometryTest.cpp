#include <algorithm>
#include <limits>

#include <gtest/gtest.h>

#include "views/StripGeometry.h"

namespace quibel {
namespace {

constexpr QSizeF size(720, 220);

TEST(StripGeometry, TheFragmentCoversStartToEnd) {
  const auto geometry = stripGeometry({.duration = 180, .start = 45, .end = 90}, size);
  EXPECT_EQ(geometry.startX, 180);
  EXPECT_EQ(geometry.endX, 360);
  EXPECT_EQ(geometry.fragment, QRectF(180, 0, 180, 220));
}

TEST(StripGeometry, AStartAfterTheEndGivesAFragmentWithoutWidth) {
  const auto geometry = stripGeometry({.duration = 180, .start = 90, .end = 45}, size);
  EXPECT_EQ(geometry.fragment.width(), 0);
}

TEST(StripGeometry, WithoutADurationEveryXIsZero) {
  const auto geometry = stripGeometry({.duration = 0, .start = 0, .end = 40, .playhead = 10}, size);
  EXPECT_EQ(geometry.startX, 0);
  EXPECT_EQ(geometry.endX, 0);
  EXPECT_EQ(geometry.fragment.width(), 0);
  ASSERT_TRUE(geometry.playhead);
  EXPECT_EQ(geometry.playhead->left(), 0);
}

TEST(StripGeometry, ThePlayheadIsTwoPointsWideWithItsLeftEdgeAtItsTime) {
  const auto geometry =
      stripGeometry({.duration = 180, .start = 0, .end = 40, .playhead = 20}, size);
  ASSERT_TRUE(geometry.playhead);
  EXPECT_EQ(*geometry.playhead, QRectF(80, 0, 2, 220));
}

TEST(StripGeometry, ThePlayheadShowsAtBothBoundsOfTheFragmentAndNotOutside) {
  const auto shows = [](double playhead) {
    return stripGeometry({.duration = 180, .start = 10, .end = 40, .playhead = playhead}, size)
        .playhead.has_value();
  };
  EXPECT_TRUE(shows(10));
  EXPECT_TRUE(shows(40));
  EXPECT_FALSE(shows(9.999));
  EXPECT_FALSE(shows(40.001));
}

TEST(StripGeometry, RightAfterALoadThePlayheadShowsAtTheLeftEdge) {
  const auto geometry =
      stripGeometry({.duration = 180, .start = 0, .end = 40, .playhead = 0}, size);
  ASSERT_TRUE(geometry.playhead);
  EXPECT_EQ(geometry.playhead->left(), 0);
}

TEST(StripGeometry, TheLightSweepsFromBeforeTheStripToBeyondIt) {
  const auto sweep = [](std::optional<double> at) {
    return stripGeometry({.sweep = at}, size).sweep;
  };
  EXPECT_FALSE(sweep(std::nullopt));
  EXPECT_EQ(sweep(0)->right(), 0);
  EXPECT_EQ(sweep(0.5)->center().x(), 360);
  EXPECT_EQ(sweep(1)->left(), 720);
}

TEST(HandleGeometry, ABarOfFourPointsCarriesAGripOf18By38InItsMiddle) {
  EXPECT_EQ(handleBar(100, 220), QRectF(98, 0, 4, 220));
  EXPECT_EQ(handleGrip(100, 220), QRectF(91, 91, 18, 38));
}

TEST(HandleColumns, AreThe28PointsAroundTheHandle) {
  EXPECT_EQ(startHandleColumns(100), (Columns{86, 28}));
  EXPECT_EQ(endHandleColumns(100), (Columns{86, 28}));
  EXPECT_EQ(startHandleColumns(0), (Columns{-14, 28}));
}

TEST(HandleColumns, BetweenTwoPointsTheStartTakesBothAndTheEndLeavesTheFirstToIt) {
  for (const double x : {100.1, 100.5, 100.9}) {
    EXPECT_EQ(startHandleColumns(x), (Columns{86, 29})) << x;
    EXPECT_EQ(endHandleColumns(x), (Columns{87, 28})) << x;
  }
}

TEST(HandleColumns, TheStartsBeginLeftOfTheEndsHoweverLittleTheyAreApart) {
  for (int i = 0; i <= 1000; ++i) {
    const double start = 700 + i * 0.024;
    for (const double apart : {1e-9, 0.001, 0.02, 0.4, 0.5, 0.9, 1.0}) {
      EXPECT_LT(startHandleColumns(start).left, endHandleColumns(start + apart).left)
          << start << " and " << apart << " more";
    }
  }
}

TEST(HandleColumns, OfAnyNumberAtAllAreSomewhere) {
  constexpr double inf = std::numeric_limits<double>::infinity();
  EXPECT_LT(startHandleColumns(-inf).left, -100'000);
  EXPECT_GT(endHandleColumns(inf).left, 100'000);
  EXPECT_EQ(endHandleColumns(std::numeric_limits<double>::quiet_NaN()).left, -14);
}

struct Line {
  double x;
  double top;
  double bottom;
};

std::vector<Line> lines(const std::vector<double>& samples, QSizeF strip) {
  const auto path = envelopePath(samples, strip);
  std::vector<Line> result;
  for (int i = 0; i + 1 < path.elementCount(); i += 2) {
    EXPECT_TRUE(path.elementAt(i).isMoveTo());
    EXPECT_TRUE(path.elementAt(i + 1).isLineTo());
    EXPECT_EQ(path.elementAt(i).x, path.elementAt(i + 1).x);
    result.push_back({path.elementAt(i).x, path.elementAt(i).y, path.elementAt(i + 1).y});
  }
  return result;
}

TEST(EnvelopePath, StandsOneLineInTheMiddleOfEachColumn) {
  const auto drawn = lines({1, 0.5, 0.25, 1}, {100, 200});
  ASSERT_EQ(drawn.size(), 4U);
  EXPECT_EQ(drawn[0].x, 12.5);
  EXPECT_EQ(drawn[1].x, 37.5);
  EXPECT_EQ(drawn[3].x, 87.5);
  EXPECT_DOUBLE_EQ(drawn[1].top, 100 - 45);
  EXPECT_DOUBLE_EQ(drawn[1].bottom, 100 + 45);
}

TEST(EnvelopePath, AFullValueReachesNineTenthsOfHalfTheHeight) {
  const auto drawn = lines({1}, {100, 200});
  EXPECT_DOUBLE_EQ(drawn[0].top, 10);
  EXPECT_DOUBLE_EQ(drawn[0].bottom, 190);
}

TEST(EnvelopePath, ASingleValueDrawsOneLineInTheMiddle) {
  const auto drawn = lines({0.5}, {300, 200});
  ASSERT_EQ(drawn.size(), 1U);
  EXPECT_EQ(drawn[0].x, 150);
  EXPECT_DOUBLE_EQ(envelopeLineWidth(1, 300), 186);
}

TEST(EnvelopePath, ValuesOfZeroAndBelowGiveLinesOfTwoPoints) {
  const auto drawn = lines({0, -3}, {100, 200});
  ASSERT_EQ(drawn.size(), 2U);
  for (const auto& line : drawn) {
    EXPECT_EQ(line.top, 99);
    EXPECT_EQ(line.bottom, 101);
  }
}

TEST(EnvelopePath, AValueAboveOneIsDrawnAsItComes) {
  EXPECT_DOUBLE_EQ(lines({2}, {100, 200})[0].top, 100 - 180);
}

TEST(EnvelopePath, IsEmptyForNoValues) { EXPECT_TRUE(envelopePath({}, size).isEmpty()); }

TEST(EnvelopeLineWidth, Is62PercentOfAColumnAndAtLeastAPoint) {
  EXPECT_DOUBLE_EQ(envelopeLineWidth(100, 1000), 6.2);
  EXPECT_EQ(envelopeLineWidth(900, 720), 1);
}

}  // namespace
}  // namespace quibel
