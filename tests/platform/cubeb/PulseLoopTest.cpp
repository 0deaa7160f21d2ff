#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/cubeb/AudioOutput.h"
#include "tests/platform/cubeb/Eventually.h"
#include "tests/platform/cubeb/LoopDriver.h"
#include "tests/platform/cubeb/PulseRecorder.h"
#include "tests/platform/cubeb/PulseServer.h"
#include "tests/platform/cubeb/SyntheticSong.h"

namespace quibel::playback {
namespace {

struct SongKind {
  int rate;
  std::uint32_t channels;
};

/// Whole numbers up to here are exact in a float's 24 bits.
constexpr float scale = 1 << 24;

/// Consecutive frames of the song, as they were recorded.
struct Pass {
  std::int64_t first;
  std::int64_t last;
  std::int64_t recordedAt;
};

/// A song of 3 s whose left channel tells the frame, looped into a null sink of
/// the same rate, and what the sink's monitor recorded.
class PulseLoop : public testing::TestWithParam<SongKind> {
 protected:
  void SetUp() override {
    if (!PulseServer::isInstalled()) GTEST_SKIP() << "no PulseAudio server is installed";
    server_ = std::make_unique<PulseServer>(GetParam().rate);
    recorder_ = std::make_unique<PulseRecorder>(GetParam().rate);
    output_ = std::make_unique<AudioOutput>();
    auto made = output_->makePlayer(std::make_unique<SyntheticSong>(
        platform::AudioFormat{static_cast<double>(GetParam().rate), GetParam().channels},
        std::int64_t{3} * GetParam().rate, [](std::int64_t frame, std::uint32_t channel) {
          return channel == 0 ? static_cast<float>(frame + 1) / scale : 0.0F;
        }));
    ASSERT_TRUE(made) << made.error().localizedDescription();
    player_ = std::move(*made);
  }

  /// Loops until the fragment has begun `passes` times, then stops.
  std::vector<LoopDriver::Look> loop(double start, double end, std::size_t passes) {
    LoopDriver driver(*player_, start, end);
    std::size_t begun = 1;
    while (begun < passes || player_->currentTime() < (start + end) / 2) {
      driver.tick();
      if (driver.looks().back().jumped) ++begun;
    }
    player_->stop();
    EXPECT_TRUE(eventually([&] { return recorder_->endsInSilence(); }));
    return driver.looks();
  }

  std::vector<Pass> recordedPasses() const {
    std::vector<Pass> passes;
    const auto samples = recorder_->samples();
    for (std::size_t at = 0; at < samples.size(); at += 2) {
      if (samples[at] == 0) continue;
      const auto frame = frameOf(samples[at]);
      const auto recordedAt = static_cast<std::int64_t>(at / 2);
      const bool goesOn = !passes.empty() && passes.back().last + 1 == frame &&
                          passes.back().recordedAt + frame - passes.back().first == recordedAt;
      if (!goesOn) passes.push_back({frame, frame, recordedAt});
      passes.back().last = frame;
    }
    return passes;
  }

  std::int64_t frameOf(float sample) const {
    // Of six channels the left one is mixed 1 : 0.7 : 0.7.
    const double gain = GetParam().channels > 2 ? 1 / (1 + std::sqrt(2.0)) : 1;
    const double frame = static_cast<double>(sample) * scale / gain - 1;
    EXPECT_NEAR(frame, std::round(frame), GetParam().channels > 2 ? 0.3 : 0) << "not the song's";
    return std::llround(frame);
  }

  /// The median of each pass.
  std::vector<double> playheadLessRecording(const std::vector<LoopDriver::Look>& looks) const {
    const auto samples = recorder_->samples();
    std::vector<std::vector<double>> passes(1);
    for (const auto& look : looks) {
      if (look.jumped) passes.emplace_back();
      const auto at = static_cast<std::size_t>(recorder_->frameAt(look.when)) * 2;
      if (at >= samples.size() || samples[at] == 0) continue;
      const auto heard = static_cast<double>(frameOf(samples[at])) / GetParam().rate;
      // Around a jump the two lie a whole fragment apart for a moment.
      if (std::abs(look.playhead - heard) < 0.5) passes.back().push_back(look.playhead - heard);
    }
    std::vector<double> medians;
    for (auto& differences : passes) {
      EXPECT_GT(differences.size(), 10U);
      std::ranges::sort(differences);
      if (!differences.empty()) medians.push_back(differences[differences.size() / 2]);
    }
    return medians;
  }

  std::int64_t frames(double seconds) const { return std::llround(seconds * GetParam().rate); }

  std::unique_ptr<PulseServer> server_;
  std::unique_ptr<PulseRecorder> recorder_;
  std::unique_ptr<AudioOutput> output_;
  std::unique_ptr<platform::AudioPlayer> player_;
};

TEST_P(PulseLoop, TheRecordingIsTheFragmentOverAndOverSampleForSample) {
  std::vector<double> jumpedAt;
  for (const auto& look : loop(1.0, 1.5, 4))
    if (look.jumped) jumpedAt.push_back(look.heard);
  const auto passes = recordedPasses();
  ASSERT_EQ(passes.size(), 4U);
  ASSERT_EQ(jumpedAt.size(), 3U);
  for (std::size_t index = 0; index < passes.size(); ++index) {
    EXPECT_EQ(passes[index].first, frames(1.0));
    if (index + 1 == passes.size()) break;
    EXPECT_GE(passes[index].last, frames(1.5) - 1);
    EXPECT_LT(passes[index].last, frames(jumpedAt[index] + 0.1)) << "more than the sink's queue";
    EXPECT_EQ(passes[index].recordedAt + passes[index].last - passes[index].first + 1,
              passes[index + 1].recordedAt)
        << "a gap before the next pass";
  }
}

TEST_P(PulseLoop, AFragmentThatEndsWithTheSongIsPlayedToItsLastFrame) {
  loop(2.5, 3.0, 3);
  const auto passes = recordedPasses();
  ASSERT_EQ(passes.size(), 3U);
  for (std::size_t index = 0; index < passes.size(); ++index) {
    EXPECT_EQ(passes[index].first, frames(2.5));
    if (index + 1 == passes.size()) break;
    EXPECT_EQ(passes[index].last, frames(3.0) - 1);
  }
}

TEST_P(PulseLoop, ThePlayheadIsWhereTheRecordingIsOnEveryPass) {
  for (const double difference : playheadLessRecording(loop(0.5, 1.5, 4)))
    EXPECT_LT(std::abs(difference), 0.015);
}

class PulseLongLoop : public PulseLoop {};

TEST_P(PulseLongLoop, TheSoundHasNoHoleAndThePlayheadDoesNotDrift) {
  const auto looks = loop(0.5, 1.5, 20);
  const auto passes = recordedPasses();
  EXPECT_EQ(passes.size(), 20U);
  for (const auto& pass : passes) EXPECT_EQ(pass.first, frames(0.5));
  const auto differences = playheadLessRecording(looks);
  ASSERT_EQ(differences.size(), 20U);
  EXPECT_NEAR(differences.front(), differences.back(), 0.005);
}

class PulseDrag : public PulseLoop {};

/// Both handles go to and fro for ten seconds, as fast as a hand moves them, and
/// are never closer than half a second.
TEST_P(PulseDrag, DraggedHandlesLeaveNoHoleAndJumpToTheStartAlone) {
  std::set<std::int64_t> starts{frames(1.0)};
  LoopDriver driver(*player_, 1.0, 2.0);
  int jumps = 0;
  for (int tick = 0; tick < 400; ++tick) {
    const double start = 1.0 + 0.5 * std::abs(std::sin(tick * 0.05));
    starts.insert(frames(start));
    driver.select(start, start + 0.5 + 0.5 * std::abs(std::sin(tick * 0.13)));
    driver.tick();
    if (driver.looks().back().jumped) ++jumps;
  }
  player_->stop();
  ASSERT_TRUE(eventually([&] { return recorder_->endsInSilence(); }));
  const auto passes = recordedPasses();
  EXPECT_EQ(passes.size(), static_cast<std::size_t>(jumps) + 1);
  for (std::size_t index = 0; index < passes.size(); ++index) {
    EXPECT_TRUE(starts.contains(passes[index].first)) << passes[index].first;
    if (index + 1 == passes.size()) break;
    EXPECT_EQ(passes[index].recordedAt + passes[index].last - passes[index].first + 1,
              passes[index + 1].recordedAt)
        << "a hole before the next pass";
  }
}

std::string nameOf(const testing::TestParamInfo<SongKind>& kind) {
  return std::to_string(kind.param.rate) + "Hz" + std::to_string(kind.param.channels) + "channels";
}

INSTANTIATE_TEST_SUITE_P(Songs, PulseLoop,
                         testing::Values(SongKind{8'000, 1}, SongKind{22'050, 2},
                                         SongKind{44'100, 1}, SongKind{44'100, 2},
                                         SongKind{44'100, 6}, SongKind{48'000, 2},
                                         SongKind{96'000, 2}, SongKind{192'000, 6}),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(Songs, PulseLongLoop, testing::Values(SongKind{44'100, 2}), nameOf);
INSTANTIATE_TEST_SUITE_P(Songs, PulseDrag, testing::Values(SongKind{44'100, 2}), nameOf);

}  // namespace
}  // namespace quibel::playback
