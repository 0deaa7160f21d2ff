#pragma once

#include "tests/support/TestAudio.h"

namespace quibel::test {

/// The mean power of all channels, in decibels to full scale.
double level(const Sound& sound);

/// The mean power of all channels below 16 kHz, which coders keep, in decibels to
/// full scale. The sound has at least 64 frames.
double levelBelow16kHz(const Sound& sound);

}  // namespace quibel::test
