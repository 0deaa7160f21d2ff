#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "tests/playback/PulseMonitor.h"
#include "tests/support/TestAudio.h"

namespace quibel::benchmarks {

/// A song whose every frame is told by its sample.
test::Sound numberedSong(int rate, double seconds);

/// Listens to a loop over a numbered song for as long as it takes: what the null
/// sink plays is looked at as it comes, and only the last seconds are kept.
class LoopRecording {
 public:
  using Clock = std::chrono::steady_clock;

  /// `rate` is the null sink's and the song's, `start` the fragment's, in seconds.
  LoopRecording(int rate, double start);

  struct Totals {
    std::int64_t passes = 0;       ///< times that the fragment began
    std::int64_t holes = 0;        ///< silences between sound and sound
    std::int64_t holeFrames = 0;   ///< of all of them together
    std::int64_t longestHole = 0;  ///< in frames
    std::int64_t strays = 0;       ///< frames that follow neither the one before nor the end
  };
  Totals totals() const;

  /// The song's position, in seconds, that was recorded at a time within the last
  /// ten seconds; nothing where that was silence.
  std::optional<double> heardAt(Clock::time_point time) const;

 private:
  void look(std::int32_t frame);

  const int rate_;
  const std::int32_t start_;
  mutable std::mutex mutex_;
  Totals totals_;
  std::int32_t last_ = -1;     // the song's frame that was heard last
  std::int64_t silence_ = 0;   // frames since
  std::int64_t recorded_ = 0;  // frames in all
  std::vector<std::int32_t> recent_;
  playback::PulseMonitor monitor_;  // last: it fills the above
};

}  // namespace quibel::benchmarks
