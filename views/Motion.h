#pragma once

namespace quibel {

/// Whether the desktop asks for less motion: then nothing moves by itself. What moves
/// asks at each of its steps, so that a change takes effect at the next one. False until
/// the desktop's settings are read. Main thread only.
bool isMotionReduced();
void setMotionReduced(bool reduced);

}  // namespace quibel
