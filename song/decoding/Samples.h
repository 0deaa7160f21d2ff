#pragma once

#include <cstdint>
#include <span>

#include "song/file/Pointers.h"

namespace quibel::song {

/// Writes `count` of a decoded frame's samples, from its sample `first` on, as
/// 32-bit floats to out[channel][at …], one array for each channel of the frame.
/// What is no finite number becomes 0. False if its sample format is unknown.
bool copySamples(const AVFrame& frame, int first, int count, float* const* out, std::uint32_t at);

/// Bytes of one sample of a linear or logarithmic PCM codec that convertPCM()
/// knows; 0 for others.
int bytesPerSample(AVCodecID codec);

/// Converts interleaved PCM bytes of `channels` channels, whole frames, in the
/// same way.
void convertPCM(AVCodecID codec, std::span<const std::uint8_t> bytes, int channels,
                float* const* out, std::uint32_t at);

}  // namespace quibel::song
