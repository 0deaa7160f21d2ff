#pragma once

#include <cstdint>
#include <optional>

#include "song/file/Input.h"
#include "song/file/Pointers.h"

namespace quibel::song {

/// Where a file's plain samples lie, and what they are.
struct PcmLayout {
  AVCodecID codec = AV_CODEC_ID_NONE;
  int channels = 0;
  std::uint64_t speakers = 0;  ///< as in platform::AudioFormat
  int rate = 0;                ///< frames per second
  std::int64_t begin = 0;      ///< byte position of the first frame
  std::int64_t end = 0;        ///< one past the last byte, within the file
};

/// The samples of a WAV file that says that they fill only the upper part of their bytes
/// (WAVE_FORMAT_EXTENSIBLE, whole numbers): FFmpeg takes the part for the whole. Nothing
/// for any other file.
std::optional<PcmLayout> readPaddedWav(Input& input);

}  // namespace quibel::song
