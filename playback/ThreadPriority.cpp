#include "playback/ThreadPriority.h"

#include <pthread.h>
#include <sched.h>

namespace quibel::playback {
namespace {

/// That of PulseAudio's own threads; below those of JACK and the kernel.
constexpr int priority = 5;

}  // namespace

void requestRealTimePriority() {
  sched_param parameters{};
  parameters.sched_priority = priority;
  static_cast<void>(::pthread_setschedparam(::pthread_self(), SCHED_RR, &parameters));
}

}  // namespace quibel::playback
