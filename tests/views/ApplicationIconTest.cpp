#include <QImage>
#include <vector>

#include <gtest/gtest.h>

#include "app/ApplicationIcon.h"

namespace quibel {
namespace {

const QColor green(0x5f, 0xe0, 0x89);
const QColor orange(0xff, 0x9a, 0x1f);

struct Bar {
  int left;
  int width;
  QColor color;
};

/// The row through the icon's middle, in pixels.
std::vector<QColor> middleRow(int pixels) {
  const auto image = applicationIcon().pixmap(QSize(pixels, pixels), 1.0).toImage();
  std::vector<QColor> row;
  for (int x = 0; x < pixels; ++x) row.push_back(image.pixelColor(x, pixels / 2));
  return row;
}

void expectBars(int pixels, const std::vector<Bar>& bars) {
  SCOPED_TRACE(pixels);
  const auto row = middleRow(pixels);
  // The ground, one colour along a row; the first pixel is empty.
  std::vector<QColor> expected(row.size(), row.at(1));
  expected.front() = expected.back() = row.front();
  EXPECT_EQ(row.front().alpha(), 0);
  EXPECT_EQ(row.at(1).alpha(), 255);
  for (const auto& bar : bars) {
    for (int x = bar.left; x < bar.left + bar.width; ++x) {
      expected.at(static_cast<std::size_t>(x)) = bar.color;
    }
  }
  for (std::size_t x = 0; x < row.size(); ++x) EXPECT_EQ(row.at(x), expected.at(x)) << x;
}

TEST(ApplicationIcon, AtSixteenAndTwentyFourEveryBarIsOfWholePixels) {
  expectBars(16, {{3, 2, green}, {7, 2, Qt::white}, {11, 2, orange}});
  expectBars(
      24,
      {{4, 2, green}, {8, 1, Qt::white}, {11, 2, Qt::white}, {15, 1, Qt::white}, {18, 2, orange}});
}

}  // namespace
}  // namespace quibel
