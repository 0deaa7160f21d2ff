#pragma once

#include <vector>

#include "platform/AudioFile.h"

namespace quibel::platform {

/// How a song of three channels or more becomes stereo, when it is heard and when it is
/// exported: the gains of its channels in the left one, then those in the right one. The
/// centre and the surrounds are 3 dB down and the low frequencies left out, all of it scaled
/// so that full scale on every channel stays full scale. If the song does not say which
/// speakers its channels are meant for, up to eight are taken in their usual order, and more
/// are mixed equally into both sides.
std::vector<float> stereoMix(const AudioFormat& song);

}  // namespace quibel::platform
