#pragma once

#include <chrono>

namespace quibel::playback {

using Clock = std::chrono::steady_clock;

}  // namespace quibel::playback
