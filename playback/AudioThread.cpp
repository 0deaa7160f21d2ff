#include "playback/AudioThread.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "playback/ThreadPriority.h"

namespace quibel::playback {
namespace {

constexpr auto openPatience = std::chrono::milliseconds(1500);
constexpr auto endPatience = std::chrono::seconds(1);

}  // namespace

std::shared_ptr<AudioThread> AudioThread::start(Connect connect) {
  std::shared_ptr<AudioThread> self(new AudioThread(std::move(connect)));
  self->thread_ = std::thread([self] { self->run(); });
  return self;
}

void AudioThread::wake() {
  const std::lock_guard lock(mutex_);
  woken_ = true;
  changed_.notify_all();
}

void AudioThread::warmUp() {
  post([](OutputDevice& device, Players&) {
    // A failure is told by the open() that follows.
    static_cast<void>(device.connect());
  });
}

platform::Result<void> AudioThread::open(std::shared_ptr<PlayerEngine> player) {
  struct Answer {
    std::optional<platform::Result<void>> result;
    bool abandoned = false;
  };
  const auto answer = std::make_shared<Answer>();  // guarded by mutex_
  post([this, answer, player = std::move(player)](OutputDevice& device, Players& players) {
    {
      const std::lock_guard lock(mutex_);
      if (answer->abandoned) return;
    }
    const auto result = player->open(device);
    const std::lock_guard lock(mutex_);
    if (result && !answer->abandoned) players.push_back(player);
    answer->result = result;
    changed_.notify_all();
  });

  std::unique_lock lock(mutex_);
  const auto deadline = busySince_.value_or(Clock::now()) + openPatience;
  changed_.wait_until(lock, deadline, [&] { return answer->result.has_value(); });
  if (answer->result) return *answer->result;
  answer->abandoned = true;
  return std::unexpected(platform::Error(
      "El sistema de sonido no responde. Inténtalo otra vez dentro de unos segundos."));
}

void AudioThread::remove(std::shared_ptr<PlayerEngine> player) {
  post([player = std::move(player)](OutputDevice&, Players& players) {
    player->close();
    std::erase(players, player);
  });
}

void AudioThread::shutDown() {
  std::unique_lock lock(mutex_);
  stopped_ = true;
  changed_.notify_all();
  const bool ended = changed_.wait_for(lock, endPatience, [this] { return ended_; });
  // The players in them end here, and not with the last one to hold this thread.
  const auto undone = std::exchange(tasks_, {});
  lock.unlock();
  if (ended) {
    thread_.join();
  } else {
    thread_.detach();  // it holds all that it still touches
  }
}

void AudioThread::post(Task task) {
  const std::lock_guard lock(mutex_);
  if (stopped_) return;
  tasks_.push_back(std::move(task));
  changed_.notify_all();
}

void AudioThread::run() {
  // The sound output's own threads are started from here, with this priority.
  requestRealTimePriority();
  {
    OutputDevice device(connect_);
    Players players;
    std::optional<Clock::time_point> due;
    while (waitForWork(due)) {
      runTasks(device, players);
      due.reset();
      for (const auto& player : players)
        if (const auto next = player->service(device)) due = std::min(*next, due.value_or(*next));
      if (players.empty()) device.rest();
    }
    for (const auto& player : players) player->close();
  }
  const std::lock_guard lock(mutex_);
  ended_ = true;
  changed_.notify_all();
}

/// False once the thread is to end.
bool AudioThread::waitForWork(std::optional<Clock::time_point> due) {
  std::unique_lock lock(mutex_);
  busySince_.reset();
  const auto hasWork = [this] { return stopped_ || woken_ || !tasks_.empty(); };
  if (due) {
    changed_.wait_until(lock, *due, hasWork);
  } else {
    changed_.wait(lock, hasWork);
  }
  busySince_ = Clock::now();
  woken_ = false;
  return !stopped_;
}

void AudioThread::runTasks(OutputDevice& device, Players& players) {
  std::deque<Task> tasks;
  {
    const std::lock_guard lock(mutex_);
    tasks.swap(tasks_);
  }
  for (const auto& task : tasks) task(device, players);
}

}  // namespace quibel::playback
