#include "app/Spinner.h"

#include <QPainter>

#include "views/Motion.h"
#include "views/Theme.h"

namespace quibel {
namespace {

constexpr int spokes = 8;
constexpr int turnMilliseconds = 800;

}  // namespace

Spinner::Spinner(QWidget* parent) : QWidget(parent) { setFixedSize(side, side); }

void Spinner::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(side / 2.0, side / 2.0);
  const auto color = colors(palette()).text;
  for (int i = 0; i < spokes; ++i) {
    // The spoke of this step is the darkest, those before it fade out.
    const int age = (step_ - i + spokes) % spokes;
    const double opacity = 0.15 + 0.65 * (spokes - 1 - age) / (spokes - 1);
    painter.setPen(QPen(withOpacity(color, opacity), 2, Qt::SolidLine, Qt::RoundCap));
    painter.save();
    painter.rotate(360.0 * i / spokes);
    painter.drawLine(QPointF(0, -3.5), QPointF(0, -6.5));
    painter.restore();
  }
}

void Spinner::timerEvent(QTimerEvent*) {
  if (isMotionReduced()) return timer_.stop();
  step_ = (step_ + 1) % spokes;
  update();
}

void Spinner::showEvent(QShowEvent*) {
  if (!isMotionReduced()) timer_.start(turnMilliseconds / spokes, this);
}

void Spinner::hideEvent(QHideEvent*) { timer_.stop(); }

}  // namespace quibel
