#pragma once

namespace quibel::playback {

/// Has the calling thread, and those that it starts from now on, run before the
/// machine's other work, as the sound server's own threads do: with 40 ms of
/// sound queued, a busy machine would otherwise wake them too late to add to it.
/// Changes nothing where the system does not allow it.
void requestRealTimePriority();

}  // namespace quibel::playback
