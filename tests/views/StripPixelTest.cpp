#include <gtest/gtest.h>

#include "tests/views/StripImage.h"

namespace quibel {
namespace {

struct Surface {
  QSizeF size;
  double ratio;
};

/// Every layer, on strips of several sizes and device pixel ratios.
class StripPixels : public testing::TestWithParam<Surface> {
 protected:
  StripImage strip{.size = GetParam().size, .ratio = GetParam().ratio};
  const Colors& colors = strip.colors;
  double width = GetParam().size.width();
  double height = GetParam().size.height();
  double mid = height / 2;
  // A quarter to three quarters of the strip, nothing played yet.
  StripState state{.duration = 100, .start = 25, .end = 75, .playhead = 0};

  QColor background = blended(Qt::black, 0.09, Qt::white);
  QColor highlighted = blended(strip.colors.accent, 0.17, background);
};

std::string surfaceName(const testing::TestParamInfo<Surface>& info) {
  const auto& [size, ratio] = info.param;
  return std::to_string(static_cast<int>(size.width())) + "x" +
         std::to_string(static_cast<int>(size.height())) + "at" +
         std::to_string(static_cast<int>(ratio * 100)) + "percent";
}

INSTANTIATE_TEST_SUITE_P(Surfaces, StripPixels,
                         testing::Values(Surface{{400, 220}, 1}, Surface{{400, 220}, 1.25},
                                         Surface{{400, 220}, 1.5}, Surface{{400, 220}, 2},
                                         Surface{{680, 220}, 1}, Surface{{1200, 120}, 2}),
                         surfaceName);

TEST_P(StripPixels, TheBackgroundIsBlackAtNineHundredths) {
  const auto image = strip.paint(state);
  EXPECT_ALIKE(strip.at(image, width * 0.1, 20), background);
  EXPECT_ALIKE(strip.at(image, width * 0.9, height - 20), background);
}

TEST_P(StripPixels, TheHighlightCoversTheFragmentExactly) {
  const auto image = strip.paint(state);
  const double x = width / 4;
  // Beside the handle's bar, which reaches 2 points to either side.
  EXPECT_ALIKE(strip.at(image, x - 3.5, 20), background);
  EXPECT_ALIKE(strip.at(image, x + 3.5, 20), highlighted);
  EXPECT_ALIKE(strip.at(image, 3 * x - 3.5, 20), highlighted);
  EXPECT_ALIKE(strip.at(image, 3 * x + 3.5, 20), background);
  EXPECT_ALIKE(strip.at(image, width / 2, 2), highlighted);
  EXPECT_ALIKE(strip.at(image, width / 2, height - 2.5), highlighted);
}

TEST_P(StripPixels, TheEnvelopeIsGreyOutsideTheFragmentAndAccentInside) {
  strip.samples.assign(10, 1.0);
  const auto image = strip.paint(state);
  const double column = width / 10;
  const auto grey = blended(colors.secondary, 0.4, background);
  EXPECT_ALIKE(strip.at(image, column * 0.5, mid + 30), grey);
  EXPECT_ALIKE(strip.at(image, column * 9.5, mid + 30), grey);
  EXPECT_ALIKE(strip.at(image, column * 4.5, mid + 30), colors.accent);
  EXPECT_ALIKE(strip.at(image, column * 5.0, mid + 30), highlighted);
  EXPECT_ALIKE(strip.at(image, column * 1.0, mid + 30), background);
}

TEST_P(StripPixels, TheAccentEnvelopeEndsWhereTheHighlightDoes) {
  strip.samples.assign(1, 1.0);  // one line across 62 % of the strip
  const auto image = strip.paint(state);
  const auto grey = blended(colors.secondary, 0.4, background);
  const double x = width / 4;
  EXPECT_ALIKE(strip.at(image, x - 3.5, mid + 30), grey);
  EXPECT_ALIKE(strip.at(image, x + 3.5, mid + 30), colors.accent);
}

TEST_P(StripPixels, AnEnvelopeLineIs62PercentOfItsColumnWide) {
  strip.samples.assign(10, 1.0);
  const auto image = strip.paint(state);
  const double column = width / 10;
  const double half = column * 0.31;
  const double middle = column * 4.5;
  EXPECT_ALIKE(strip.at(image, middle - half + 1, mid + 30), colors.accent);
  EXPECT_ALIKE(strip.at(image, middle + half - 1.5, mid + 30), colors.accent);
  EXPECT_ALIKE(strip.at(image, middle - half - 1.5, mid + 30), highlighted);
  EXPECT_ALIKE(strip.at(image, middle + half + 1, mid + 30), highlighted);
}

TEST_P(StripPixels, RoundCapsReachHalfTheLineWidthBeyondTheLine) {
  strip.samples.assign(20, 0.4);
  const auto image = strip.paint(state);
  const double column = width / 20;
  const double end = mid + 0.4 * mid * 0.9 + column * 0.31;
  EXPECT_ALIKE(strip.at(image, column * 9.5, end - 1.5), colors.accent);
  EXPECT_ALIKE(strip.at(image, column * 9.5, end + 1), highlighted);
  // Round: at the line's edge the cap has ended.
  EXPECT_ALIKE(strip.at(image, column * 9.5 + column * 0.30, end - 1.5), highlighted);
}

TEST_P(StripPixels, NoSamplesDrawAllButTheEnvelope) {
  state.playhead = 50;
  const auto image = strip.paint(state);
  EXPECT_ALIKE(strip.at(image, width * 0.1, mid), background);
  EXPECT_ALIKE(strip.at(image, width * 0.6, mid), highlighted);
  EXPECT_ALIKE(strip.at(image, width / 2, mid), Qt::white);
  EXPECT_ALIKE(strip.at(image, width / 4, 20), colors.green);
  EXPECT_ALIKE(strip.at(image, width * 3 / 4, 20), colors.orange);
}

TEST_P(StripPixels, ThePlayheadsLeftEdgeIsAtItsTime) {
  state.playhead = 50;
  const auto image = strip.paint(state);
  const double x = width / 2;
  EXPECT_ALIKE(strip.at(image, x - 0.6, 20), highlighted);
  EXPECT_ALIKE(strip.at(image, x + 0.5, 20), Qt::white);
  EXPECT_ALIKE(strip.at(image, x + 1.4, 20), Qt::white);
  EXPECT_ALIKE(strip.at(image, x + 2.7, 20), highlighted);
}

TEST_P(StripPixels, AReversedFragmentHasNeitherHighlightNorAccent) {
  strip.samples.assign(10, 1.0);
  std::swap(state.start, state.end);
  const auto image = strip.paint(state);
  const double column = width / 10;
  EXPECT_ALIKE(strip.at(image, column * 4.5, mid + 30), blended(colors.secondary, 0.4, background));
  EXPECT_ALIKE(strip.at(image, column * 5, mid + 30), background);
}

TEST_P(StripPixels, TheHandlesAreBarsWithAGripCentredOnTheFragmentsEdges) {
  const auto image = strip.paint(state);
  const auto expectHandle = [&](double x, const QColor& color) {
    EXPECT_ALIKE(strip.at(image, x - 1, 20), color);
    EXPECT_ALIKE(strip.at(image, x + 0.9, 20), color);
    EXPECT_ALIKE(strip.at(image, x - 8, mid), color);
    EXPECT_ALIKE(strip.at(image, x + 7.9, mid), color);
    EXPECT_FALSE(alike(strip.at(image, x - 10.5, mid), color));
    EXPECT_FALSE(alike(strip.at(image, x + 10.5, mid), color));
    EXPECT_ALIKE(strip.at(image, x, mid - 17.5), color);
    // Fully rounded: the corners of the grip's box are empty.
    EXPECT_FALSE(alike(strip.at(image, x - 8, mid - 17.5), color));
    EXPECT_FALSE(alike(strip.at(image, x + 7.9, mid + 17), color));
  };
  expectHandle(width / 4, colors.green);
  expectHandle(width * 3 / 4, colors.orange);
}

TEST_P(StripPixels, ThreeWhiteLinesStandUprightOnTheGrip) {
  const auto image = strip.paint(state);
  const double x = width / 4;
  for (const double line : {-4.0, 0.0, 4.0}) {
    EXPECT_ALIKE(strip.at(image, x + line, mid), Qt::white);
    EXPECT_ALIKE(strip.at(image, x + line, mid - 3), Qt::white);
    EXPECT_ALIKE(strip.at(image, x + line, mid - 8), colors.green);
  }
  if (strip.ratio == 1 || strip.ratio == 2) {
    EXPECT_ALIKE(strip.at(image, x - 2.5, mid), colors.green);
    EXPECT_ALIKE(strip.at(image, x + 1.9, mid), colors.green);
  }
}

TEST_P(StripPixels, TheEndHandleLiesAboveTheStartHandle) {
  state.start = state.end = 50;
  const auto image = strip.paint(state);
  EXPECT_ALIKE(strip.at(image, width / 2, 20), colors.orange);
}

TEST_P(StripPixels, HandlesAreCutAtTheRoundedBorder) {
  state.start = 0;
  state.end = 100;
  const auto image = strip.paint(state);
  for (const double x : {0.5, width - 1}) {
    for (const double y : {0.5, height - 1}) EXPECT_ALIKE(strip.at(image, x, y), Qt::white);
  }
  EXPECT_ALIKE(strip.at(image, 5, mid + 12), colors.green);
  EXPECT_ALIKE(strip.at(image, width - 5, mid + 12), colors.orange);
}

TEST_P(StripPixels, AnEnvelopeAboveOneIsCutAtTheRoundedBorder) {
  const double column = 4;
  strip.samples.assign(static_cast<std::size_t>(width / column), 3.0);
  const auto image = strip.paint(state);
  const auto grey = blended(colors.secondary, 0.4, background);
  // The first line and the last one pass the border's whole height …
  EXPECT_ALIKE(strip.at(image, column * 1.5, mid + 80 * height / 220), grey);
  for (const double x : {column * 0.5, width - column * 0.5}) {
    EXPECT_ALIKE(strip.at(image, x, mid + 20), grey);
    // … and nothing of them is outside its arcs.
    for (const double y : {0.5, 2.0, height - 2.0, height - 0.5}) {
      EXPECT_ALIKE(strip.at(image, x, y), Qt::white);
    }
  }
  // On a line 45 degrees into the corner, the arc runs through 4.1 points.
  EXPECT_ALIKE(strip.at(image, column * 1.5, 6.5), grey);
  EXPECT_ALIKE(strip.at(image, column * 0.5, column * 0.5), Qt::white);
}

TEST_P(StripPixels, TheBordersArcIsSmooth) {
  const auto image = strip.paint(state);
  int between = 0;
  const int corner = static_cast<int>(14 * strip.ratio);
  for (int x = 0; x < corner; ++x) {
    for (int y = 0; y < corner; ++y) {
      const auto pixel = image.pixelColor(x, y);
      if (pixel.red() > background.red() + 3 && pixel.red() < 252) ++between;
    }
  }
  EXPECT_GE(between, 4);
}

TEST_P(StripPixels, TheOutlineIsOnePointInsideTheBorder) {
  const auto image = strip.paint(state);
  const auto line = blended(colors.secondary, 0.2, background);
  const double x = width * 0.1;
  EXPECT_ALIKE(strip.at(image, x, 0.3), line);
  EXPECT_ALIKE(strip.at(image, x, height - 0.3), line);
  EXPECT_ALIKE(strip.at(image, 0.3, mid + 40), line);
  EXPECT_ALIKE(strip.at(image, width - 0.3, mid + 40), line);
  EXPECT_ALIKE(strip.at(image, x, 1.9), background);
  EXPECT_ALIKE(strip.at(image, 1.9, mid + 40), background);
}

TEST_P(StripPixels, TheOutlineLiesAboveAllElse) {
  state.end = 100;
  state.playhead = 50;
  const auto image = strip.paint(state);
  EXPECT_ALIKE(strip.at(image, width / 2 + 0.9, 0.3), blended(colors.secondary, 0.2, Qt::white));
}

TEST_P(StripPixels, WithoutADurationTheHandlesAreAtTheLeftEdge) {
  state = {};
  const auto image = strip.paint(state);
  EXPECT_ALIKE(strip.at(image, 5, mid + 12), colors.orange);
  EXPECT_ALIKE(strip.at(image, width / 2, mid), background);
}

TEST(StripPixels, AnyTimesAtAllAreSafeToPaint) {
  constexpr double inf = std::numeric_limits<double>::infinity();
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  StripImage strip{.size = {100, 50}};
  strip.samples = {nan, inf, -inf, 1e300};
  for (const double odd : {inf, -inf, nan, 1e300, -1e300}) {
    strip.paint({.duration = 1e-300, .start = odd, .end = 1, .playhead = odd});
    strip.paint({.duration = odd, .start = 0, .end = odd, .playhead = 0});
  }
}

}  // namespace
}  // namespace quibel
