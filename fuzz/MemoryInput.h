#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "song/file/Input.h"

namespace quibel::fuzz {

/// A file that holds these bytes and lies on no disk. Every one counts as a file
/// never met before. Ends the program where the machine has no room for it.
std::shared_ptr<song::Input> inputOf(std::span<const std::uint8_t> bytes);

}  // namespace quibel::fuzz
