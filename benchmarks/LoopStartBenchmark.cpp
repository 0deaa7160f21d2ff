// How long after togglePreview() the loop is heard, at random places of songs of
// three hours, as the null sink's monitor records it.

#include <QCoreApplication>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <random>
#include <span>
#include <stdexcept>
#include <thread>

#include "app/DesktopPlatform.h"
#include "app/QuibelApp.h"
#include "benchmarks/LongSongs.h"
#include "benchmarks/Measuring.h"
#include "model/AudioEditorModel.h"
#include "tests/playback/PulseMonitor.h"
#include "tests/playback/PulseServer.h"
#include "tests/support/TestAudio.h"

namespace quibel::benchmarks {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int starts = 60;
constexpr int rate = 44'100;

/// Says when the sound last began that the null sink plays.
class Ear {
 public:
  bool hears() const { return hears_.load(); }
  Clock::time_point began() const {
    const std::chrono::duration<double> after(static_cast<double>(beganAt_.load()) / rate);
    return monitor_.beginning() + std::chrono::duration_cast<Clock::duration>(after);
  }

 private:
  void listen(std::span<const float> samples) {
    for (std::size_t left = 0; left < samples.size(); left += 2, ++frame_) {
      const bool sound = samples[left] != 0;
      silence_ = sound ? 0 : silence_ + 1;
      if (sound && !hears_) {
        beganAt_ = frame_;
        hears_ = true;
      }
      if (silence_ > rate / 10) hears_ = false;
    }
  }

  std::atomic<bool> hears_ = false;
  std::atomic<std::int64_t> beganAt_ = 0;
  std::int64_t frame_ = 0;
  std::int64_t silence_ = 0;  // frames
  playback::PulseMonitor monitor_{
      rate, [this](std::span<const float> samples) { listen(samples); }};  // last: fills the above
};

template <class Condition>
void waitUntil(Condition holds) {
  const auto deadline = Clock::now() + std::chrono::minutes(3);
  while (!holds()) {
    if (Clock::now() > deadline) throw std::runtime_error("waited in vain");
    QCoreApplication::processEvents();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

void row(const std::filesystem::path& file, const Ear& ear) {
  const auto editor = std::make_shared<AudioEditorModel>();
  editor->load(platform::FileURL(file));
  waitUntil([&] { return !editor->isLoading(); });
  std::mt19937_64 random(7);
  std::uniform_real_distribution<> places(0, editor->duration() - 1);
  std::vector<double> heard;
  std::vector<double> returned;
  for (int i = 0; i < starts; ++i) {
    waitUntil([&] { return !ear.hears(); });
    editor->startBinding().set(places(random));
    editor->endBinding().set(editor->start() + 1);
    const auto before = Clock::now();
    editor->togglePreview();
    const auto after = Clock::now();
    if (editor->showAlert()) throw std::runtime_error(editor->alertText());
    waitUntil([&] { return ear.hears(); });
    heard.push_back(std::chrono::duration<double, std::milli>(ear.began() - before).count());
    returned.push_back(std::chrono::duration<double, std::milli>(after - before).count());
    editor->togglePreview();
  }
  std::ranges::sort(heard);
  std::ranges::sort(returned);
  const auto at = [](const std::vector<double>& values, double fraction) {
    return values[static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1))];
  };
  print("%-10s %10.1f %10.1f %10.1f %14.1f\n", file.filename().c_str(), at(heard, 0.5),
        at(heard, 0.95), heard.back(), at(returned, 0.5));
}

void run() {
  const test::TemporaryDirectory directory;
  const auto songs = makeLongSongs(directory.path());
  const playback::PulseServer server(rate);
  DesktopPlatform platform;
  platform::Platform::setStandard(&platform);
  const Ear ear;
  print("From togglePreview() to sound, at %d random places, in ms.\n\n", starts);
  print("%-10s %10s %10s %10s %14s\n", "file", "median", "95 %", "worst", "toggle itself");
  for (const auto& song : songs) row(song, ear);
}

}  // namespace
}  // namespace quibel::benchmarks

int main(int, char** arguments) {
  int argc = 1;
  const quibel::QuibelApp app(argc, arguments);
  return quibel::benchmarks::finish(quibel::benchmarks::run);
}
