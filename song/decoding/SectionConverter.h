#pragma once

#include "platform/AudioFile.h"
#include "song/file/Pointers.h"

namespace quibel::song {

/// Turns frames of a section whose rate or channels differ from the first
/// section's into that section's form.
class SectionConverter {
 public:
  explicit SectionConverter(const platform::AudioFormat& format) : format_(format) {}

  /// The frame itself where it has the form already; else a converted one,
  /// valid until the next call. Null where it cannot be converted. Throws
  /// std::bad_alloc.
  const AVFrame* convert(const AVFrame& frame);

  /// Forgets the section at hand, as after a seek.
  void reset() { resampler_.reset(); }

 private:
  bool setUp(const AVFrame& frame);

  platform::AudioFormat format_;
  ResamplerPointer resampler_;
  FramePointer sectionForm_;  ///< format, rate and layout of the section at hand
  FramePointer converted_;
};

}  // namespace quibel::song
