#include <QAbstractButton>
#include <QPainter>

#include "tests/views/EditorFixture.h"
#include "tests/views/Find.h"
#include "tests/views/Pixels.h"
#include "views/ActionButton.h"
#include "views/TextLabel.h"
#include "views/WelcomeScreen.h"

namespace quibel {
namespace {

class Welcome : public EditorFixture {
 protected:
  void SetUp() override {
    screen.resize(724, 400);
    screen.show();
  }

  QImage image() {
    QImage image(screen.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    screen.render(&image, {}, {}, QWidget::DrawChildren);
    return image;
  }

  // How the border's top line looks along the panel: the dashes' lengths, and
  // how many rows they cover.
  static std::vector<int> dashes(const QImage& image, int row) {
    std::vector<int> lengths;
    const auto ground = image.pixelColor(300, 30);
    int run = 0;
    for (int x = 100; x < 600; ++x) {
      if (!alike(image.pixelColor(x, row), ground, 1)) {
        ++run;
      } else if (run > 0) {
        lengths.push_back(run);
        run = 0;
      }
    }
    if (!lengths.empty()) lengths.erase(lengths.begin());  // cut by where it began
    return lengths;
  }

  static void expectDashesOfNine(const std::vector<int>& lengths) {
    ASSERT_GT(lengths.size(), 10U);
    for (const int length : lengths) EXPECT_NEAR(length, 9, 1);
  }

  WelcomeScreen screen{model};
};

TEST_F(Welcome, SaysItsTextsToTheLetter) {
  EXPECT_EQ(texts(screen), (QStringList{QStringLiteral("Arrastra aquí un archivo de audio"),
                                        QStringLiteral("MP3, M4A, WAV, AIFF y otros formatos "
                                                       "compatibles con macOS")}));
  EXPECT_NE(button(screen, "Seleccionar canción…"), nullptr);
}

TEST_F(Welcome, ItsPartsStandCentredEighteenPointsApart) {
  std::vector<QRect> parts;
  for (auto* child : screen.findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
    parts.push_back(child->geometry());
  }
  std::ranges::sort(parts, {}, &QRect::top);
  ASSERT_EQ(parts.size(), 4U);
  for (std::size_t i = 0; i < parts.size(); ++i) {
    EXPECT_NEAR(parts[i].center().x(), screen.rect().center().x(), 1);
    if (i > 0) {
      EXPECT_EQ(parts[i].top() - (parts[i - 1].bottom() + 1), 18);
    }
  }
  EXPECT_NEAR(parts.front().top(), screen.height() - 1 - parts.back().bottom(), 1);
}

TEST_F(Welcome, TheButtonAsksForASong) {
  button(screen, "Seleccionar canción…")->click();
  EXPECT_EQ(machine.openPanel->title, "Selecciona una canción");
}

TEST_F(Welcome, CancellingThePanelLeavesEverythingAsItWas) {
  const auto before = image();
  button(screen, "Seleccionar canción…")->click();
  EXPECT_FALSE(model->audioURL());
  EXPECT_TRUE(model->status().empty());
  EXPECT_FALSE(model->showAlert());
  EXPECT_EQ(image(), before);
}

TEST_F(Welcome, AtRestTheBorderIsAThinDashedLine) {
  const auto picture = image();
  expectDashesOfNine(dashes(picture, 0));
  EXPECT_TRUE(dashes(picture, 1).empty());
}

TEST_F(Welcome, WhileAFileIsDraggedTheBorderIsAThreePointDashedLine) {
  screen.setDropping(true);
  const auto picture = image();
  for (const int row : {0, 1, 2}) expectDashesOfNine(dashes(picture, row));
  EXPECT_TRUE(dashes(picture, 3).empty());
}

TEST_F(Welcome, TheBorderReturnsToTheThinOneWhenTheDragIsOver) {
  const auto before = image();
  screen.setDropping(true);
  EXPECT_NE(image(), before);
  screen.setDropping(false);
  EXPECT_EQ(image(), before);
}

/// What the screen paints, in both schemes and at every usual ratio.
class WelcomePixels : public EditorFixture, public testing::WithParamInterface<Display> {
 protected:
  void SetUp() override {
    screen.setPalette(GetParam().palette());
    screen.resize(724, 400);
    screen.show();
    turn();
  }

  Picture picture() { return {screen, GetParam().ratio, ground}; }

  /// How many points of the border's top line between two columns have a colour.
  static int pointsOf(const QColor& color, const Picture& seen, double y) {
    int found = 0;
    for (int x = 100; x < 600; ++x) found += alike(seen.at({x + 0.5, y}), color);
    return found;
  }

  QColor ground = Qt::magenta;  // shows how much of it the panel lets through
  Colors colors = GetParam().colors();
  QColor panel = blended(colors.controlBackground, 0.75, ground);
  WelcomeScreen screen{model};
};

INSTANTIATE_TEST_SUITE_P(Displays, WelcomePixels, displays(), displayName);

TEST_P(WelcomePixels, ThePanelIsTheControlBackgroundAtThreeQuartersWithRoundCorners) {
  const auto seen = picture();
  EXPECT_ALIKE(seen.at({100, 100}), panel);
  EXPECT_ALIKE(seen.at({3, 3}), ground);
  EXPECT_ALIKE(seen.at({721, 397}), ground);
}

TEST_P(WelcomePixels, TheBordersDashesAreFaintAndWhileAFileIsDraggedInTheAccentColour) {
  const auto faint = blended(colors.secondary, 0.25, panel);
  EXPECT_NEAR(pointsOf(faint, picture(), 0.4), 250, 50);
  screen.setDropping(true);
  EXPECT_NEAR(pointsOf(colors.accent, picture(), 1.5), 250, 50);
}

TEST_P(WelcomePixels, ItsSymbolIsInTheAccentColour) {
  auto* const symbol = symbolView(screen);
  ASSERT_NE(symbol, nullptr);
  EXPECT_TRUE(picture().shows(Symbol::waveformBadgePlus, placeIn(screen, symbol), colors.accent));
}

TEST_P(WelcomePixels, EveryTextIsPainted) {
  const auto seen = picture();
  for (const auto* text : screen.findChildren<TextLabel*>()) {
    EXPECT_GT(distance(seen.inkIn(placeIn(screen, text)), panel), 60) << text->text().toStdString();
  }
}

TEST_P(WelcomePixels, TheButtonIsFilledWithTheAccentAndItsTitlePaintedOnIt) {
  const auto seen = picture();
  const auto place = placeIn(screen, button(screen, "Seleccionar canción…"));
  EXPECT_ALIKE(seen.at(place.topLeft() + QPointF(8, place.height() / 2.0)), colors.accentFill);
  EXPECT_GT(distance(seen.inkIn(place.adjusted(12, 8, -12, -8)), colors.accentFill), 60);
}

}  // namespace
}  // namespace quibel
