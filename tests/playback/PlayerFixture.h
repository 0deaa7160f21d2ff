#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "playback/AudioOutput.h"
#include "tests/playback/Eventually.h"
#include "tests/playback/FakeOutput.h"
#include "tests/playback/SyntheticSong.h"

namespace quibel::playback {

/// A mono song of 10 s at 1,000 frames a second, whose every sample tells its
/// frame, on a sink that is pulled by hand.
struct PlayerFixture : testing::Test {
  static constexpr std::int64_t rate = 1'000;
  static constexpr std::int64_t length = 10'000;

  FakeOutput output;
  std::optional<AudioOutput> audio{std::in_place, output.connect()};
  std::unique_ptr<platform::AudioPlayer> player;

  static float sampleAt(std::int64_t frame) { return static_cast<float>(frame + 1); }

  static std::unique_ptr<SyntheticSong> song() {
    return std::make_unique<SyntheticSong>(
        platform::AudioFormat{rate, 1}, length,
        [](std::int64_t frame, std::uint32_t) { return sampleAt(frame); });
  }

  platform::AudioPlayer& open(std::unique_ptr<platform::AudioFile> file = song()) {
    auto made = audio->makePlayer(std::move(file));
    EXPECT_TRUE(made) << made.error().localizedDescription();
    player = std::move(*made);
    return *player;
  }

  /// As the loop preview begins; returns once the sink plays.
  void playFrom(double seconds) {
    player->setCurrentTime(seconds);
    player->prepareToPlay();
    player->play();
    ASSERT_TRUE(eventually([&] { return output.isRunning(); }));
  }

  /// The next `frames` frames of sound. Pulling by hand outruns any decoder: the
  /// silence of waiting for it is left out, here as below.
  std::vector<float> pullSound(std::size_t frames) {
    std::vector<float> sound;
    EXPECT_TRUE(eventually([&] {
      const auto one = output.pull(1);
      if (!one.empty() && one.front() != 0) sound.push_back(one.front());
      return sound.size() == frames;
    }));
    return sound;
  }

  /// Pulls until the sound of `frame` comes; the sound that came before it.
  std::vector<float> pullUntil(std::int64_t frame) {
    std::vector<float> before;
    EXPECT_TRUE(eventually([&] {
      const auto one = output.pull(1);
      if (one.empty() || one.front() == 0) return false;
      if (one.front() == sampleAt(frame)) return true;
      before.push_back(one.front());
      return false;
    }));
    return before;
  }

  void expectSong(const std::vector<float>& samples, std::int64_t from) {
    for (std::size_t index = 0; index < samples.size(); ++index)
      ASSERT_EQ(samples[index], sampleAt(from + static_cast<std::int64_t>(index))) << index;
  }

  bool reads(double seconds) {
    return eventually([&] { return player->currentTime() == seconds; });
  }
};

}  // namespace quibel::playback
