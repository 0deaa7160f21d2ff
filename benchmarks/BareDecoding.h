#pragma once

#include <filesystem>

namespace quibel::benchmarks {

/// Decodes a song as shortly as FFmpeg's libraries can be told to, on one thread, and
/// does nothing with what comes out. Throws where nothing does.
void decodeBarely(const std::filesystem::path& file);

}  // namespace quibel::benchmarks
