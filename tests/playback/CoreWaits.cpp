#include "tests/playback/CoreWaits.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <utility>

namespace quibel::playback {
namespace {

using std::chrono::nanoseconds;

/// How long a thread has waited for a core since it began, as the kernel counts.
nanoseconds waited(const std::filesystem::path& task) {
  std::ifstream file(task / "schedstat");
  std::int64_t onCore = 0;
  std::int64_t waiting = 0;
  file >> onCore >> waiting;
  return nanoseconds(waiting);
}

std::string nameOf(const std::filesystem::path& task) {
  std::ifstream file(task / "comm");
  std::string name;
  std::getline(file, name);
  return name;
}

}  // namespace

CoreWaits::CoreWaits(std::vector<pid_t> processes)
    : processes_(std::move(processes)),
      thread_([this](const std::stop_token& stop) { watch(stop); }) {}

CoreWaits::Wait CoreWaits::longest() const {
  const std::lock_guard lock(mutex_);
  return longest_;
}

void CoreWaits::watch(const std::stop_token& stop) {
  std::map<std::filesystem::path, nanoseconds> before;
  for (; !stop.stop_requested(); std::this_thread::sleep_for(std::chrono::milliseconds(5))) {
    for (const auto process : processes_) {
      std::error_code gone;
      const auto tasks = std::filesystem::path("/proc") / std::to_string(process) / "task";
      for (std::filesystem::directory_iterator task(tasks, gone), end; !gone && task != end;
           task.increment(gone)) {
        const auto now = waited(*task);
        const auto [known, isNew] = before.try_emplace(*task, now);
        const auto wait = now - std::exchange(known->second, now);
        if (isNew || wait <= longest().length) continue;
        const std::lock_guard lock(mutex_);
        longest_ = {wait, nameOf(*task)};
      }
    }
  }
}

}  // namespace quibel::playback
