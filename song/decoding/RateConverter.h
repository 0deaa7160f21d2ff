#pragma once

#include <cstdint>

#include "platform/Error.h"
#include "song/file/Pointers.h"

namespace quibel::song {

/// Resamples and mixes down: planar floats in, planar floats out, in time with
/// each other.
class RateConverter {
 public:
  struct Form {
    int rate = 0;
    int channels = 0;
    std::uint64_t speakers = 0;  ///< as in platform::AudioFormat

    friend bool operator==(const Form&, const Form&) = default;
  };

  /// Stereo is mixed by platform::stereoMix. Mixing never exceeds full scale where the
  /// source does not.
  static platform::Result<RateConverter> open(const Form& from, const Form& to);

  /// Converts `frames` frames, or with a null `in` delivers what is still inside.
  /// The result is valid until the next call; its number of frames may be 0.
  /// Throws std::bad_alloc.
  platform::Result<const AVFrame*> convert(const float* const* in, int frames);

 private:
  RateConverter(ResamplerPointer resampler, const Form& to);

  ResamplerPointer resampler_;
  Form to_;
  FramePointer out_;
};

}  // namespace quibel::song
