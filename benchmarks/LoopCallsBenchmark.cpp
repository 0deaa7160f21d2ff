// How long the calls take that the loop's timer and button make into the player, in
// each state of the sound server: running, stopped (SIGSTOP), just killed, restarted,
// and absent.

#include <algorithm>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "benchmarks/Measuring.h"
#include "playback/AudioOutput.h"
#include "playback/cubeb/CubebSink.h"
#include "tests/playback/PulseServer.h"
#include "tests/playback/SyntheticSong.h"

namespace quibel::benchmarks {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int ticks = 1'000;

/// The timer's 25 ms, shortened.
constexpr auto tickInterval = std::chrono::milliseconds(5);

std::unique_ptr<platform::AudioFile> song() {
  return std::make_unique<playback::SyntheticSong>(
      platform::AudioFormat{44'100, 2}, std::int64_t{20} * 44'100,
      [](std::int64_t frame, std::uint32_t) { return frame % 100 < 50 ? 0.1F : -0.1F; });
}

double milliseconds(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

template <class Call>
double timed(Call call) {
  const auto before = Clock::now();
  call();
  return milliseconds(Clock::now() - before);
}

/// In ms, of every call: ticks that jump as at a fragment's end, and now and then a
/// stop and a start.
std::vector<double> calls(platform::AudioPlayer& player) {
  std::vector<double> times;
  const auto add = [&](auto call) { times.push_back(timed(call)); };
  auto next = Clock::now();
  for (int tick = 0; tick < ticks; ++tick) {
    std::this_thread::sleep_until(next += tickInterval);
    add([&] { static_cast<void>(player.currentTime()); });
    add([&] { static_cast<void>(player.isPlaying()); });
    add([&] { player.setCurrentTime(tick % 2 == 0 ? 1.0 : 1.2); });
    if (tick % 10 == 0) {
      add([&] { player.stop(); });
      add([&] { static_cast<void>(player.prepareToPlay()); });
    }
    add([&] { static_cast<void>(player.play()); });
    add([&] { static_cast<void>(player.currentTime()); });
  }
  std::ranges::sort(times);
  return times;
}

void row(const char* state, playback::AudioOutput& output, platform::AudioPlayer& player) {
  const auto times = calls(player);
  const auto at = [&](double fraction) {
    return times[static_cast<std::size_t>(fraction * static_cast<double>(times.size() - 1))];
  };
  std::string answer;
  const double opening = timed([&] {
    const auto made = output.makePlayer(song());
    answer = made ? "opens" : made.error().localizedDescription();
  });
  print("%-10s %6zu %9.4f %9.4f %9.4f %10.1f  %s\n", state, times.size(), at(0.5), at(0.99),
        times.back(), opening, answer.c_str());
}

void run() {
  playback::PulseServer server;
  playback::AudioOutput output(playback::connectCubeb);
  auto made = output.makePlayer(song());
  if (!made) throw std::runtime_error(made.error().localizedDescription());
  auto player = std::move(*made);
  print("Calls into the player, and opening another one, in ms.\n\n");
  print("%-10s %6s %9s %9s %9s %10s\n", "server", "calls", "median", "99 %", "longest", "opening");
  row("running", output, *player);
  server.stop();
  row("stopped", output, *player);
  server.resume();
  row("resumed", output, *player);
  server.kill();
  row("killed", output, *player);
  server.start();
  row("restarted", output, *player);
  server.kill();
  while (player->isPlaying()) std::this_thread::yield();
  row("absent", output, *player);
  print("\nletting go of it: %.4f ms\n", timed([&] { player.reset(); }));
}

}  // namespace
}  // namespace quibel::benchmarks

int main() { return quibel::benchmarks::finish(quibel::benchmarks::run); }
