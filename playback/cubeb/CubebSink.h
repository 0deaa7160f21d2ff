#pragma once

#include <memory>

#include "playback/Sink.h"

namespace quibel::playback {

/// Connects to the system's default sound output.
platform::Result<std::unique_ptr<SinkContext>> connectCubeb();

}  // namespace quibel::playback
