#include <QPainterPathStroker>
#include <random>

#include <gtest/gtest.h>

#include "tests/views/StripImage.h"
#include "views/EnvelopeImage.h"
#include "views/StripGeometry.h"

namespace quibel {
namespace {

QImage strokedAtOnce(const std::vector<double>& samples, QSizeF size, double ratio,
                     const QColor& color) {
  QImage image((size * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainterPathStroker stroker;
  stroker.setWidth(envelopeLineWidth(samples.size(), size.width()));
  stroker.setCapStyle(Qt::RoundCap);
  auto outline = stroker.createStroke(envelopePath(samples, size));
  outline.setFillRule(Qt::WindingFill);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(ratio, ratio);
  painter.fillPath(outline, color);
  return image;
}

int largestDifference(const QImage& a, const QImage& b) {
  int largest = 0;
  for (int y = 0; y < a.height(); ++y) {
    for (int x = 0; x < a.width(); ++x) {
      largest = std::max(largest, std::abs(qAlpha(a.pixel(x, y)) - qAlpha(b.pixel(x, y))));
    }
  }
  return largest;
}

TEST(StrokedEnvelope, LooksLikeOneStrokeOfTheWholePath) {
  std::mt19937 random(3);
  for (const double ratio : {1.0, 1.5, 2.0}) {
    for (const std::size_t count : {1U, 7U, 60U, 300U}) {
      std::vector<double> samples(count);
      for (double& v : samples) v = std::uniform_real_distribution<>(0, 1.2)(random);
      const QSizeF size(200, 60);
      const auto tiled = strokedEnvelope(samples, size, {.scale = ratio}, Qt::black);
      const auto whole = strokedAtOnce(samples, size, ratio, Qt::black);
      ASSERT_EQ(tiled.size(), whole.size());
      EXPECT_LE(largestDifference(tiled, whole), 2) << count << " values at " << ratio;
    }
  }
}

TEST(StrokedEnvelope, IsNullWithoutSamplesOrRoom) {
  EXPECT_TRUE(strokedEnvelope({}, {100, 50}, {}, Qt::black).isNull());
  EXPECT_TRUE(strokedEnvelope({1}, {0, 50}, {}, Qt::black).isNull());
}

}  // namespace
}  // namespace quibel
