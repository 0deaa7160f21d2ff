#include "tests/views/ContentFixture.h"
#include "tests/views/Pixels.h"
#include "views/TextLabel.h"
#include "views/WaveformSelectionView.h"

namespace quibel {
namespace {

/// What the window's content paints, in both schemes and at every usual ratio.
class ContentPixels : public ContentFixture, public testing::WithParamInterface<Display> {
 protected:
  void SetUp() override {
    ContentFixture::SetUp();
    view.setPalette(GetParam().palette());
  }

  Picture picture() {
    layOut();
    return {view, GetParam().ratio, Qt::magenta};
  }

  Colors colors = GetParam().colors();
};

INSTANTIATE_TEST_SUITE_P(Displays, ContentPixels, displays(), displayName);

TEST_P(ContentPixels, TheGradientRunsFromTheWindowBackgroundToATouchOfAccent) {
  const auto seen = picture();
  EXPECT_ALIKE(seen.at({5, 2}), colors.windowBackground);
  EXPECT_ALIKE(seen.at({5, view.height() - 2.5}),
               blended(colors.accent, 0.09, colors.windowBackground));
}

TEST_P(ContentPixels, EveryTextOfBothScreensIsPainted) {
  for (const bool hasSong : {false, true}) {
    if (hasSong) load(90);
    const auto seen = picture();
    int painted = 0;
    for (const auto* text : view.findChildren<TextLabel*>()) {
      if (!text->isVisible() || text->text().isEmpty()) continue;
      const auto place = placeIn(view, text);
      EXPECT_GT(distance(seen.inkIn(place), seen.at(place.topLeft())), 60)
          << text->text().toStdString();
      ++painted;
    }
    EXPECT_EQ(painted, hasSong ? 12 : 4);
  }
}

TEST_P(ContentPixels, TheStripShowsTheSong) {
  load(25.6);  // ten full values
  const auto seen = picture();
  const auto strip = placeIn(view, view.findChild<WaveformSelectionView*>());
  const QPointF gap = strip.topLeft() + QPointF(strip.width() / 2.0, 140);
  const QPointF line = gap + QPointF(strip.width() / 20.0, 0);
  EXPECT_ALIKE(seen.at(line), colors.accent);
  EXPECT_GT(distance(seen.at(gap), colors.accent), 60);
}

}  // namespace
}  // namespace quibel
