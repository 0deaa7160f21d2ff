// Painting the waveform strip beside one stroke of its envelope's path: all of it
// afresh, a tick of the playhead, a step of a handle's drag.

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <cstdio>
#include <random>

#include "benchmarks/Measuring.h"
#include "views/EnvelopeImage.h"
#include "views/StripPainter.h"

namespace quibel::benchmarks {
namespace {

constexpr int rounds = 9;
constexpr int repetitions = 20;  // of what takes less than a millisecond
constexpr QSizeF size(680, 220);

std::vector<double> envelope() {
  std::mt19937 random(7);
  std::uniform_real_distribution<> values(0.025, 1);
  std::vector<double> samples(900);
  for (double& value : samples) value = values(random);
  return samples;
}

/// A strip on an image that keeps its pixels, as a window does.
class Strip {
 public:
  explicit Strip(double ratio) : image_((size * ratio).toSize(), format) {
    image_.setDevicePixelRatio(ratio);
    image_.fill(Qt::white);
    painter_.setSamples(envelope());
    paint(QRect(QPoint(), size.toSize()));
  }

  void paint(const QRegion& region) {
    QPainter painter(&image_);
    painter.setClipRegion(region);
    painter_.paint(painter, state_, size, colors_, region);
  }

  void repaintAll() { paint(QRect(QPoint(), size.toSize())); }

  /// One tick: 25 ms of a song of three minutes, or as far as shows.
  void tick() {
    auto next = state_;
    next.playhead = next.playhead < 70 ? next.playhead + 0.3 : 30;
    show(next);
  }

  /// One step of a drag: four points.
  void drag() {
    auto next = state_;
    next.end = next.end < 150 ? next.end + 1 : 80;
    show(next);
  }

 private:
  static constexpr auto format = QImage::Format_ARGB32_Premultiplied;

  void show(const StripState& next) {
    const auto changed = painter_.changed(state_, next, size);
    state_ = next;
    paint(changed);
  }

  QImage image_;
  StripPainter painter_;
  StripState state_{.duration = 180, .start = 20, .end = 80, .playhead = 30};
  Colors colors_ = colors(QPalette());
};

void strokeAtOnce(double ratio, const QPainterPath& path) {
  QImage image((size * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(ratio, ratio);
  painter.strokePath(path, QPen(QColor(0, 0, 0, 102), envelopeLineWidth(900, size.width()),
                                Qt::SolidLine, Qt::RoundCap, Qt::MiterJoin));
}

void run() {
  std::printf(
      "Medians of %d interleaved runs, in ms of processor time; the ratio is to one\n"
      "stroke of the path of 900 lines, by Qt in one go and by Quibel in tiles.\n\n",
      rounds);
  const auto samples = envelope();
  const auto path = envelopePath(samples, size);
  for (const double ratio : {1.0, 2.0}) {
    Strip strip(ratio);
    const auto repeated = [](auto work) {
      return [work] {
        return measure([&] {
          for (int i = 0; i < repetitions; ++i) work();
        });
      };
    };
    const auto times = medians(
        {[&] { return measure([&] { strokeAtOnce(ratio, path); }); },
         [&] {
           return measure([&] { strokedEnvelope(samples, size, {.scale = ratio}, Qt::black); });
         },
         repeated([&] { strip.repaintAll(); }), repeated([&] { strip.tick(); }),
         repeated([&] { strip.drag(); })},
        rounds);
    const double once = times[0].processor;
    const double tiled = times[1].processor;
    const auto print = [&](const char* what, double seconds) {
      std::printf("%gx %-24s %9.3f %12.5f %12.5f\n", ratio, what, seconds * 1e3, seconds / once,
                  seconds / tiled);
    };
    std::printf("   %-24s %9s %12s %12s\n", "", "ms", "to at once", "to tiles");
    print("stroke at once", once);
    print("stroke in tiles", tiled);
    print("whole strip", times[2].processor / repetitions);
    print("tick of the playhead", times[3].processor / repetitions);
    print("step of a drag", times[4].processor / repetitions);
  }
}

}  // namespace
}  // namespace quibel::benchmarks

int main(int argc, char** argv) {
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  quibel::benchmarks::run();
}
