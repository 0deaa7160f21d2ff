#pragma once

#include <filesystem>
#include <vector>

namespace quibel::benchmarks {

/// Three hours of stereo at 44.1 kHz as MP3, M4A, FLAC and Ogg, in a folder. Takes a minute.
std::vector<std::filesystem::path> makeLongSongs(const std::filesystem::path& folder);

}  // namespace quibel::benchmarks
