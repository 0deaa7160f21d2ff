#pragma once

#include <QTimer>
#include <functional>

#include "platform/Platform.h"

namespace quibel::desktop {

/// A timer accurate to a millisecond on the thread that makes it. Its block may
/// invalidate or destroy it.
class PreciseTimer final : public platform::Timer {
 public:
  /// Fires every `interval` seconds, rounded to whole milliseconds, at least one.
  PreciseTimer(double interval, std::function<void()> block);

  void invalidate() override;

 private:
  QTimer timer_;
};

}  // namespace quibel::desktop
