#include <random>

#include <gtest/gtest.h>

#include "tests/views/StripImage.h"

namespace quibel {
namespace {

/// Repaints only what changes from one state to the next, over many states, and
/// compares with painting the last one afresh.
class StripRepaint : public testing::TestWithParam<double> {
 protected:
  void SetUp() override {
    strip.ratio = GetParam();
    std::mt19937 random(7);
    strip.samples.resize(900);
    for (double& value : strip.samples) value = std::uniform_real_distribution<>(0.025, 1)(random);
    whole.setSamples(strip.samples);
  }

  void expectSamePixels(const std::vector<StripState>& states) {
    StripPainter painter;
    painter.setSamples(strip.samples);
    auto kept = strip.blank();
    {
      QPainter p(&kept);
      painter.paint(p, states.front(), strip.size, strip.colors, strip.blank().rect());
    }
    for (std::size_t i = 1; i < states.size(); ++i) {
      const auto changed = painter.changed(states[i - 1], states[i], strip.size);
      QPainter p(&kept);
      for (const QRect& rect : changed) {
        p.setCompositionMode(QPainter::CompositionMode_Source);
        // What lies below is painted again as well, in the same clip.
        p.fillRect(rect, Qt::white);
        p.setCompositionMode(QPainter::CompositionMode_SourceOver);
      }
      p.setClipRegion(changed);
      painter.paint(p, states[i], strip.size, strip.colors, changed);
      p.end();
      ASSERT_EQ(differing(kept, afresh(states[i])), QRect()) << "after step " << i;
    }
  }

  QImage afresh(const StripState& shown) {
    auto image = strip.blank();
    QPainter p(&image);
    whole.paint(p, shown, strip.size, strip.colors, image.rect());
    return image;
  }

  static QRect differing(const QImage& a, const QImage& b) {
    QRect found;
    for (int y = 0; y < a.height(); ++y) {
      for (int x = 0; x < a.width(); ++x) {
        if (a.pixel(x, y) != b.pixel(x, y)) found |= QRect(x, y, 1, 1);
      }
    }
    return found;
  }

  StripPainter whole;
  StripImage strip{.size = {680, 220}};
  StripState state{.duration = 180, .start = 20, .end = 60, .playhead = 20};
};

INSTANTIATE_TEST_SUITE_P(Ratios, StripRepaint, testing::Values(1.0, 2.0));

TEST_P(StripRepaint, ATickGivesTheSamePixelsAsPaintingAfresh) {
  std::vector<StripState> states{state};
  for (int tick = 0; tick < 100; ++tick) {
    auto next = states.back();
    next.playhead += 0.13;
    states.push_back(next);
  }
  expectSamePixels(states);
}

TEST_P(StripRepaint, ADragGivesTheSamePixelsAsPaintingAfresh) {
  std::vector<StripState> states{state};
  for (const double start : {21.0, 21.1, 35.0, 59.5, 0.0, 3.0, -0.5}) {
    auto next = states.back();
    next.start = start;
    states.push_back(next);
  }
  for (const double end : {61.0, 180.0, 179.0, 30.0, 200.0, 0.5}) {
    auto next = states.back();
    next.end = end;
    states.push_back(next);
  }
  expectSamePixels(states);
}

TEST_P(StripRepaint, RandomChangesGiveTheSamePixelsAsPaintingAfresh) {
  std::mt19937 random(11);
  const auto time = [&] { return std::uniform_real_distribution<>(-5, 190)(random); };
  std::vector<StripState> states{state};
  for (int i = 0; i < 100; ++i) {
    auto next = states.back();
    if (random() % 2) next.start = time();
    if (random() % 2) next.end = time();
    if (random() % 2) next.playhead = time();
    if (random() % 8 == 0) next.startHandle.focused = !next.startHandle.focused;
    if (random() % 8 == 0) next.endHandle.hovered = !next.endHandle.hovered;
    if (random() % 4 == 0) next.sweep = std::uniform_real_distribution<>(0, 1)(random);
    if (random() % 8 == 0) next.sweep.reset();
    if (random() % 8 == 0) next.duration = 100 + time();
    states.push_back(next);
  }
  expectSamePixels(states);
}

TEST_P(StripRepaint, ATickRepaintsTheTwoStripesOfThePlayheadAndNoMore) {
  StripPainter painter;
  auto image = strip.blank();
  QPainter p(&image);
  painter.paint(p, state, strip.size, strip.colors, image.rect());
  auto next = state;
  next.playhead = 40;
  int area = 0;
  for (const QRect& rect : painter.changed(state, next, strip.size)) {
    area += rect.width() * rect.height();
  }
  EXPECT_GT(area, 0);
  EXPECT_LE(area, 2 * 4 * 220);
}

TEST_P(StripRepaint, NothingIsRepaintedWhereNoPixelChanges) {
  StripPainter painter;
  auto image = strip.blank();
  QPainter p(&image);
  painter.paint(p, state, strip.size, strip.colors, image.rect());
  auto next = state;
  next.playhead += 1e-6;
  EXPECT_TRUE(painter.changed(state, next, strip.size).isEmpty());
  EXPECT_TRUE(painter.changed(state, state, strip.size).isEmpty());
}

}  // namespace
}  // namespace quibel
