#include "benchmarks/Standstills.h"

#include <algorithm>

namespace quibel::benchmarks {

Standstills::Standstills(std::chrono::duration<double> least)
    : least_(least), thread_([this](const std::stop_token& stop) { watch(stop); }) {}

Standstills::Totals Standstills::totals() const {
  const std::lock_guard lock(mutex_);
  return totals_;
}

void Standstills::watch(const std::stop_token& stop) {
  using Clock = std::chrono::steady_clock;
  constexpr auto nap = std::chrono::milliseconds(2);
  for (auto last = Clock::now(); !stop.stop_requested();) {
    std::this_thread::sleep_for(nap);
    const auto now = Clock::now();
    const std::chrono::duration<double> late = now - last - nap;
    last = now;
    if (late < least_) continue;
    const std::lock_guard lock(mutex_);
    ++totals_.count;
    totals_.seconds += late.count();
    totals_.longest = std::max(totals_.longest, late.count());
  }
}

}  // namespace quibel::benchmarks
