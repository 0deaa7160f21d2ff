#pragma once

#include <chrono>
#include <thread>

namespace quibel::playback {

/// Waits until the condition holds; false if it does not within a minute, far
/// beyond what any machine needs.
template <class Condition>
bool eventually(Condition holds) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!holds()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

}  // namespace quibel::playback
