#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <iostream>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "playback/AudioOutput.h"
#include "playback/cubeb/CubebSink.h"
#include "tests/playback/CoreWaits.h"
#include "tests/playback/Eventually.h"
#include "tests/playback/LoopDriver.h"
#include "tests/playback/PulseRecorder.h"
#include "tests/playback/PulseServer.h"
#include "tests/playback/SyntheticSong.h"

namespace quibel::playback {
namespace {

struct SongKind {
  int rate;
  std::uint32_t channels;
};

/// Whole numbers up to here are exact in a float's 24 bits.
constexpr float scale = 1 << 24;

/// Consecutive frames of the song, as they were recorded: one after the other, but for
/// silence among them.
struct Pass {
  std::int64_t first;
  std::int64_t last;
  std::int64_t recordedAt;
};

struct Heard {
  std::vector<LoopDriver::Look> looks;
  std::vector<Pass> passes;
  std::int64_t silence = 0;  ///< frames of it between the first sound and the last
  CoreWaits::Wait coreWait = {};
};

/// Ends a test of a recording that the machine has made a hole in.
#define SKIP_IF_DISTURBED(heard) \
  if ((heard).silence > 0 && disturbed(heard)) GTEST_SKIP() << evidence(heard)

/// A song of 3 s whose left channel tells the frame, looped into a null sink of
/// the same rate, and what the sink's monitor recorded.
class PulseLoop : public testing::TestWithParam<SongKind> {
 protected:
  void SetUp() override {
    if (!PulseServer::isInstalled()) GTEST_SKIP() << "no PulseAudio server is installed";
    server_ = std::make_unique<PulseServer>(GetParam().rate);
    output_ = std::make_unique<AudioOutput>(connectCubeb);
    auto made = output_->makePlayer(std::make_unique<SyntheticSong>(
        platform::AudioFormat{static_cast<double>(GetParam().rate), GetParam().channels},
        std::int64_t{3} * GetParam().rate, [](std::int64_t frame, std::uint32_t channel) {
          return channel == 0 ? static_cast<float>(frame + 1) / scale : 0.0F;
        }));
    if (!made) throw std::runtime_error(made.error().localizedDescription());
    player_ = std::move(*made);
  }

  /// Loops until the fragment has begun `passes` times.
  Heard loop(double start, double end, std::size_t passes) {
    return record([&] {
      LoopDriver driver(*player_, start, end);
      std::size_t begun = 1;
      while (begun < passes || player_->currentTime() < (start + end) / 2) {
        driver.tick();
        if (driver.looks().back().jumped) ++begun;
      }
      return driver.looks();
    });
  }

  /// Records a loop that `drive` begins and drives.
  Heard record(const std::function<std::vector<LoopDriver::Look>()>& drive) {
    recorder_ = std::make_unique<PulseRecorder>(GetParam().rate);
    Heard heard{.looks = drive(), .passes = {}};
    player_->stop();
    EXPECT_TRUE(eventually([&] { return recorder_->endsInSilence(); }));
    const auto samples = recorder_->samples();
    std::int64_t sounding = 0;
    std::int64_t end = 0;
    for (std::size_t at = 0; at < samples.size(); at += 2) {
      if (samples[at] == 0) continue;
      const auto frame = frameOf(samples[at]);
      const auto recordedAt = static_cast<std::int64_t>(at / 2);
      if (heard.passes.empty() || heard.passes.back().last + 1 != frame)
        heard.passes.push_back({frame, frame, recordedAt});
      heard.passes.back().last = frame;
      ++sounding;
      end = recordedAt + 1;
    }
    if (!heard.passes.empty()) heard.silence = end - heard.passes.front().recordedAt - sounding;
    return heard;
  }

  /// What `make` records, with the longest that a thread of the player or of the server
  /// waited for a core meanwhile. Where it has silence after such a wait it is recorded again.
  template <class Make>
  Heard withoutSilence(const Make& make) const {
    constexpr int recordings = 3;
    for (int recording = 1;; ++recording) {
      const CoreWaits waits({::getpid(), server_->process()});
      Heard heard = make();
      heard.coreWait = waits.longest();
      if (heard.silence == 0 || !disturbed(heard) || recording == recordings) return heard;
      std::cout << "Recorded again: " << evidence(heard) << "\n";
    }
  }

  /// Whether a thread that had to run within the sink's queue waited for most of that time.
  static bool disturbed(const Heard& heard) {
    return heard.coreWait.length > std::chrono::milliseconds(10);
  }

  static std::string evidence(const Heard& heard) {
    const std::chrono::duration<double, std::milli> wait = heard.coreWait.length;
    return std::to_string(heard.silence) + " frames of silence, while the thread " +
           heard.coreWait.thread + " waited " + std::to_string(wait.count()) + " ms for a core";
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
  const auto heard = withoutSilence([&] { return loop(1.0, 1.5, 4); });
  SKIP_IF_DISTURBED(heard);
  EXPECT_EQ(heard.silence, 0);
  std::vector<double> jumpedAt;
  for (const auto& look : heard.looks)
    if (look.jumped) jumpedAt.push_back(look.heard);
  ASSERT_EQ(heard.passes.size(), 4U);
  ASSERT_EQ(jumpedAt.size(), 3U);
  for (std::size_t index = 0; index < heard.passes.size(); ++index) {
    const Pass& pass = heard.passes[index];
    EXPECT_EQ(pass.first, frames(1.0));
    if (index + 1 == heard.passes.size()) break;
    EXPECT_GE(pass.last, frames(1.5) - 1);
    EXPECT_LT(pass.last, frames(jumpedAt[index] + 0.1 + heard.coreWait.length.count()))
        << "more than the sink's queue";
  }
}

TEST_P(PulseLoop, AFragmentThatEndsWithTheSongIsPlayedToItsLastFrame) {
  const auto passes = loop(2.5, 3.0, 3).passes;
  ASSERT_EQ(passes.size(), 3U);
  for (std::size_t index = 0; index < passes.size(); ++index) {
    EXPECT_EQ(passes[index].first, frames(2.5));
    if (index + 1 == passes.size()) break;
    EXPECT_EQ(passes[index].last, frames(3.0) - 1);
  }
}

TEST_P(PulseLoop, ThePlayheadIsWhereTheRecordingIsOnEveryPass) {
  for (const double difference : playheadLessRecording(loop(0.5, 1.5, 4).looks))
    EXPECT_LT(std::abs(difference), 0.015);
}

class PulseRestart : public PulseLoop {};

TEST_P(PulseRestart, NothingOfTheOldPlaceIsHeard) {
  loop(0.5, 1.0, 1);
  const auto passes = loop(2.0, 2.5, 2).passes;
  ASSERT_FALSE(passes.empty());
  EXPECT_EQ(passes.front().first, frames(2.0));
}

class PulseLongLoop : public PulseLoop {};

TEST_P(PulseLongLoop, TheSoundHasNoHoleAndThePlayheadDoesNotDrift) {
  const auto heard = withoutSilence([&] { return loop(0.5, 1.5, 20); });
  SKIP_IF_DISTURBED(heard);
  EXPECT_EQ(heard.silence, 0);
  EXPECT_EQ(heard.passes.size(), 20U);
  for (const auto& pass : heard.passes) EXPECT_EQ(pass.first, frames(0.5));
  const auto differences = playheadLessRecording(heard.looks);
  ASSERT_EQ(differences.size(), 20U);
  EXPECT_NEAR(differences.front(), differences.back(), 0.005);
}

class PulseDrag : public PulseLoop {
 protected:
  /// Both handles go to and fro for ten seconds, as fast as a hand moves them, and
  /// are never closer than half a second.
  Heard drag() {
    return record([&] {
      LoopDriver driver(*player_, startAt(0), endAt(0));
      for (int tick = 1; tick <= 400; ++tick) {
        driver.select(startAt(tick), endAt(tick));
        driver.tick();
      }
      return driver.looks();
    });
  }

  static double startAt(int tick) { return 1.0 + 0.5 * std::abs(std::sin(tick * 0.05)); }
  static double endAt(int tick) {
    return startAt(tick) + 0.5 + 0.5 * std::abs(std::sin(tick * 0.13));
  }
};

TEST_P(PulseDrag, DraggedHandlesLeaveNoHoleAndJumpToTheStartAlone) {
  const auto heard = withoutSilence([&] { return drag(); });
  SKIP_IF_DISTURBED(heard);
  EXPECT_EQ(heard.silence, 0);
  std::set<std::int64_t> starts;
  for (int tick = 0; tick <= 400; ++tick) starts.insert(frames(startAt(tick)));
  const auto jumps = std::ranges::count_if(heard.looks, &LoopDriver::Look::jumped);
  EXPECT_EQ(std::ssize(heard.passes), jumps + 1);
  for (const auto& pass : heard.passes) EXPECT_TRUE(starts.contains(pass.first)) << pass.first;
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

INSTANTIATE_TEST_SUITE_P(Songs, PulseRestart, testing::Values(SongKind{44'100, 2}), nameOf);
INSTANTIATE_TEST_SUITE_P(Songs, PulseLongLoop, testing::Values(SongKind{44'100, 2}), nameOf);
INSTANTIATE_TEST_SUITE_P(Songs, PulseDrag, testing::Values(SongKind{44'100, 2}), nameOf);

}  // namespace
}  // namespace quibel::playback
