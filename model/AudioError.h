#pragma once

#include <string>
#include <variant>

#include "platform/Error.h"

namespace quibel {

/// What the editor itself finds wrong with a song.
enum class AudioError {
  invalid,  ///< no frames, or no room to decode any
};

std::string localizedDescription(AudioError error);

/// Why a song could not be opened: the editor's own finding, or the platform's, unchanged.
using LoadError = std::variant<AudioError, platform::Error>;

std::string localizedDescription(const LoadError& error);

}  // namespace quibel
