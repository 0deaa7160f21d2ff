#pragma once

#include <filesystem>

namespace quibel::benchmarks {

/// Loads a song as the editor does, and as if it had never been met before. Throws
/// where that fails.
void loadAnew(const std::filesystem::path& file);

}  // namespace quibel::benchmarks
