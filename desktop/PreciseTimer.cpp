#include "desktop/PreciseTimer.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quibel::desktop {

PreciseTimer::PreciseTimer(double interval, std::function<void()> block) {
  timer_.setTimerType(Qt::PreciseTimer);
  timer_.setInterval(std::max(1, static_cast<int>(std::lround(interval * 1000))));
  // Qt holds the functor for as long as it runs, and a QTimer touches nothing
  // after its signal: this object may go away inside the block.
  QObject::connect(&timer_, &QTimer::timeout, [block = std::move(block)] { block(); });
  timer_.start();
}

void PreciseTimer::invalidate() { timer_.stop(); }

}  // namespace quibel::desktop
