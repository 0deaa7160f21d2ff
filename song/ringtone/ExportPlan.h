#pragma once

#include <cstdint>

#include "platform/ExportSession.h"

namespace quibel::song {

/// The part of a song that is exported.
struct Fragment {
  std::int64_t begin = 0;         ///< first frame, at the song's rate
  std::int64_t frames = 0;        ///< how many to read from there
  std::int64_t outputFrames = 0;  ///< how many they become at the output's rate

  friend bool operator==(const Fragment&, const Fragment&) = default;
};

/// 44,100 for its family (11,025, 22,050, 88,200 …), 48,000 for all other rates.
int outputRate(int songRate);

/// One channel stays one; everything else becomes two.
int outputChannels(int songChannels);

/// Bits per second: 128,000 for mono, 256,000 for stereo.
std::int64_t bitRate(int channels);

/// The frames of a song of `length` frames that lie within a time range. What
/// the range holds before the song's beginning or after its end is left out.
/// The number of frames is rounded down: nothing longer than the range is presented.
Fragment fragmentOf(const platform::TimeRange& range, std::int64_t length, int songRate,
                    int fileRate);

}  // namespace quibel::song
