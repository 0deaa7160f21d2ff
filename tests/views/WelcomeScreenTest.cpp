#include <QAbstractButton>
#include <QPainter>

#include "tests/views/EditorFixture.h"
#include "tests/views/Find.h"
#include "tests/views/StripImage.h"
#include "views/ActionButton.h"
#include "views/Theme.h"
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

  /// Of the border's top line between two columns, how many points have a colour.
  static int pointsOf(const QColor& colour, const QImage& image, int row) {
    int found = 0;
    for (int x = 100; x < 600; ++x) found += alike(image.pixelColor(x, row), colour);
    return found;
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

TEST_F(Welcome, AtRestTheBorderIsAThinFaintDashedLine) {
  const auto picture = image();
  expectDashesOfNine(dashes(picture, 0));
  EXPECT_TRUE(dashes(picture, 1).empty());
  const auto faint = blended(colors(screen.palette()).secondary, 0.25, picture.pixelColor(300, 30));
  EXPECT_NEAR(pointsOf(faint, picture, 0), 250, 40);
}

TEST_F(Welcome, WhileAFileIsDraggedTheBorderIsAThreePointAccentDashedLine) {
  screen.setDropping(true);
  const auto picture = image();
  for (const int row : {0, 1, 2}) expectDashesOfNine(dashes(picture, row));
  EXPECT_TRUE(dashes(picture, 3).empty());
  EXPECT_NEAR(pointsOf(colors(screen.palette()).accent, picture, 1), 250, 40);
}

TEST_F(Welcome, TheBorderReturnsToTheThinOneWhenTheDragIsOver) {
  const auto before = image();
  screen.setDropping(true);
  EXPECT_NE(image(), before);
  screen.setDropping(false);
  EXPECT_EQ(image(), before);
}

TEST_F(Welcome, ThePanelIsTheControlBackgroundAtThreeQuarters) {
  QPalette palette;
  palette.setColor(QPalette::Base, Qt::black);
  screen.setPalette(palette);
  EXPECT_TRUE(alike(image().pixelColor(100, 100), blended(Qt::black, 0.75, Qt::white)));
  EXPECT_TRUE(alike(image().pixelColor(3, 3), Qt::white)) << "the corner is rounded";
}

}  // namespace
}  // namespace quibel
