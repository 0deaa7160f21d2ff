#pragma once

#include <expected>
#include <vector>

#include "model/AudioError.h"
#include "platform/AudioFile.h"

namespace quibel {

/// As many as the calling process has processors, and eight at most.
int readersForALoad();

/// The song's envelope: one peak per bucket of consecutive frames, over all
/// channels, scaled so that the loudest is 1 and none of a song with any sound
/// is below 0.025. A silent song gives zeros. A bucket is length ÷ `count`
/// frames and at least 256, so there are about `count` values for a long song
/// and fewer for a short one.
///
/// `file` stands at its first frame and is left somewhere. `count` is greater than 0.
/// Any thread. So many readers share a long song, each in a thread of its own, where the file
/// has other readers. The file is decoded once, through a buffer a reader that holds one
/// bucket, or 16,384 frames of a larger one.
///
/// Fails with AudioError::invalid where there is no buffer to decode into, and
/// with the platform's error where a read fails.
std::expected<std::vector<double>, LoadError> waveform(platform::AudioFile& file, int count,
                                                       int readers = readersForALoad());

}  // namespace quibel
