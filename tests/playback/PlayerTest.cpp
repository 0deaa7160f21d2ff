#include <algorithm>
#include <atomic>
#include <latch>
#include <thread>

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>

#include "tests/playback/PlayerFixture.h"

namespace quibel::playback {
namespace {

using Player = PlayerFixture;

/// A song that can be made to wait in its next seek.
class SlowSong final : public SyntheticSong {
 public:
  using SyntheticSong::SyntheticSong;
  platform::Result<void> seek(std::int64_t frame) override {
    if (waits) {
      reached.count_down();
      release.wait();
    }
    return SyntheticSong::seek(frame);
  }
  std::atomic<bool> waits = false;
  std::latch reached{1};
  std::latch release{1};
};

std::unique_ptr<SlowSong> slowSong() {
  return std::make_unique<SlowSong>(
      platform::AudioFormat{PlayerFixture::rate, 1}, PlayerFixture::length,
      [](std::int64_t frame, std::uint32_t) { return PlayerFixture::sampleAt(frame); });
}

TEST_F(Player, IsSilentAtTheBeginningUntilItIsPlayed) {
  open();
  EXPECT_EQ(player->currentTime(), 0);
  EXPECT_FALSE(player->isPlaying());
  EXPECT_TRUE(player->prepareToPlay());
  EXPECT_FALSE(output.isRunning());
}

TEST_F(Player, PlaysFromTheSetPositionSampleForSample) {
  open();
  playFrom(2.5);
  expectSong(pullSound(400), 2'500);
}

TEST_F(Player, PlaysOnForAsLongAsTheSongIs) {
  open();
  playFrom(0);
  expectSong(pullSound(length), 0);
}

TEST_F(Player, ReadsAsSetUntilTheSinkHasReachedTheJump) {
  open();
  playFrom(2);
  output.pull(40);
  EXPECT_EQ(player->currentTime(), 2) << "rendered, but not heard";
  output.hear(30);
  ASSERT_TRUE(eventually([&] { return player->currentTime() > 2; }));
  player->setCurrentTime(7.0004);
  EXPECT_EQ(player->currentTime(), 7.0004);
  pullUntil(7'000);
  EXPECT_EQ(player->currentTime(), 7.0004) << "rendered, but not heard";
  output.hearAll();
  ASSERT_TRUE(eventually([&] { return player->currentTime() != 7.0004; }));
  EXPECT_LT(player->currentTime(), 7.1);
}

TEST_F(Player, TheCurrentTimeIsTheSongsPositionHeard) {
  open();
  playFrom(2);
  output.pull(60);
  output.hear(40);
  ASSERT_TRUE(eventually([&] { return player->currentTime() > 2; }));
  player->stop();
  ASSERT_TRUE(eventually([&] { return !output.isRunning(); }));
  EXPECT_GE(player->currentTime(), 2.04);
  EXPECT_LT(player->currentTime(), 2.08) << "no more than is heard until the next look at it";
}

TEST_F(Player, AJumpDropsWhatIsQueued) {
  open();
  playFrom(2);
  pullSound(10);
  player->setCurrentTime(8);
  ASSERT_TRUE(eventually([&] { return output.pull(1).front() > sampleAt(7'999); }));
  expectSong(pullSound(200), 8'001);
}

TEST_F(Player, UntilAJumpHasSoundTheOldPlaceGoesOn) {
  auto file = slowSong();
  auto& song = *file;
  open(std::move(file));
  playFrom(2);
  pullSound(10);
  song.waits = true;
  player->setCurrentTime(8);
  song.reached.wait();
  expectSong(pullSound(40), 2'010);
  song.release.count_down();
  const auto before = pullUntil(8'000);
  expectSong(before, 2'050);
}

TEST_F(Player, ALoopJumpsBackAtOnceHoweverSlowTheSongSeeks) {
  auto file = slowSong();
  auto& song = *file;
  open(std::move(file));
  playFrom(2);
  pullUntil(2'600);
  output.hearAll();
  ASSERT_TRUE(eventually([&] { return player->currentTime() > 2.5; }));
  song.waits = true;
  player->setCurrentTime(2);
  expectSong(pullUntil(2'000), 2'601);
  expectSong(output.pull(300), 2'001);
  song.reached.wait();
  song.release.count_down();
  pullUntil(2'900);
}

TEST_F(Player, LettingGoOfAPlayerDoesNotWaitForItsSong) {
  auto file = slowSong();
  auto& song = *file;
  open(std::move(file));
  song.waits = true;
  player->setCurrentTime(5);
  song.reached.wait();
  player.reset();
  song.release.count_down();
}

TEST_F(Player, PlaysUntilTheSongsEndIsHeard) {
  open();
  playFrom(9.5);
  ASSERT_TRUE(eventually([&] { return output.pull(1).front() == sampleAt(length - 1); }));
  const auto silence = output.pull(100);
  EXPECT_TRUE(std::ranges::all_of(silence, [](float sample) { return sample == 0; }));
  EXPECT_TRUE(player->isPlaying());
  output.hearAll();
  ASSERT_TRUE(eventually([&] { return !player->isPlaying(); }));
  EXPECT_EQ(player->currentTime(), 10.0);
}

TEST_F(Player, PlaysAgainAfterItsEndWithoutRestartingTheSink) {
  open();
  playFrom(9.5);
  pullUntil(length - 1);
  output.pull(100);
  output.hearAll();
  ASSERT_TRUE(eventually([&] { return !player->isPlaying(); }));
  player->setCurrentTime(9.5);
  EXPECT_TRUE(player->play());
  EXPECT_TRUE(player->isPlaying());
  const auto silence = pullUntil(9'500);
  EXPECT_TRUE(std::ranges::all_of(silence, [](float sample) { return sample == 0; }));
  EXPECT_EQ(output.starts(), 1);
}

TEST_F(Player, StopEndsTheSoundAndPlayGoesOnFromWhatWasHeard) {
  open();
  playFrom(2);
  expectSong(pullSound(50), 2'000);
  output.hear(30);
  player->stop();
  EXPECT_FALSE(player->isPlaying());
  ASSERT_TRUE(eventually([&] { return !output.isOpen(); })) << "it would keep what is queued";
  player->play();
  ASSERT_TRUE(eventually([&] { return output.isRunning(); }));
  expectSong(pullSound(50), 2'030);
}

TEST_F(Player, StoppedAndStartedElsewhereItPlaysNothingOfTheOldPlace) {
  open();
  playFrom(2);
  pullSound(50);
  output.hear(30);
  player->stop();
  ASSERT_TRUE(eventually([&] { return !output.isRunning(); }));
  playFrom(7);
  expectSong(pullSound(50), 7'000);
}

TEST_F(Player, LettingGoOfAPlayerEndsItsSound) {
  open();
  playFrom(2);
  player.reset();
  EXPECT_TRUE(eventually([&] { return !output.isOpen(); }));
}

TEST_F(Player, TheOutputSilencesItsPlayersWhenItGoes) {
  open();
  playFrom(2);
  audio.reset();
  EXPECT_FALSE(output.isOpen());
  player->setCurrentTime(3);
  player->play();
  player.reset();
}

TEST_F(Player, TwoHundredQuickTogglesEachPlay) {
  for (int toggle = 0; toggle < 200; ++toggle) {
    open();
    playFrom(1);
    expectSong(pullSound(10), 1'000);
    player->stop();
    player.reset();
  }
}

TEST_F(Player, TheSoundOutputsThreadsRunBeforeOtherWorkWhereThatIsAllowed) {
  int allowed = 0;
  std::thread([&] {
    const sched_param parameters{.sched_priority = 1};
    if (::pthread_setschedparam(::pthread_self(), SCHED_RR, &parameters) == 0) allowed = SCHED_RR;
  }).join();
  std::atomic<int> policy = -1;
  output.beforeConnect = [&] { std::thread([&] { policy = ::sched_getscheduler(0); }).join(); };
  open();
  EXPECT_EQ(policy, allowed);
  EXPECT_EQ(::sched_getscheduler(0), SCHED_OTHER) << "but not the one that opens it";
}

TEST_F(Player, TheSinkHasTheSongsRateAndChannels) {
  const auto silent = [](std::int64_t, std::uint32_t) { return 0.0F; };
  for (const double sampleRate : {8'000.0, 22'050.0, 44'100.0, 48'000.0, 96'000.0, 192'000.0})
    for (const std::uint32_t channels : {1U, 2U}) {
      open(std::make_unique<SyntheticSong>(platform::AudioFormat{sampleRate, channels}, 100,
                                           silent));
      EXPECT_EQ(output.format(), (SinkFormat{static_cast<std::uint32_t>(sampleRate), channels}));
    }
}

TEST_F(Player, MoreThanTwoChannelsPlayAsStereo) {
  open(std::make_unique<SyntheticSong>(
      platform::AudioFormat{rate, 6}, length,
      [](std::int64_t, std::uint32_t channel) { return channel == 0 ? 1.0F : 0.0F; }));
  playFrom(0);
  EXPECT_EQ(output.format().channels, 2U);
  const auto frame = output.pull(1);
  EXPECT_GT(frame[0], 0.4F);
  EXPECT_EQ(frame[1], 0);
}

TEST_F(Player, ARateAboveAnySinksKeepsItsTime) {
  open(std::make_unique<SyntheticSong>(
      platform::AudioFormat{768'000, 1}, 768'000,
      [](std::int64_t frame, std::uint32_t) { return static_cast<float>(frame); }));
  playFrom(0.5);
  EXPECT_EQ(output.format().rate, 192'000U);
  const auto samples = output.pull(1'000);
  EXPECT_EQ(samples[0], 384'001.5F) << "the mean of four frames";
  EXPECT_EQ(samples[999], 384'001.5F + 999 * 4);
  output.hear(960);
  ASSERT_TRUE(eventually([&] { return player->currentTime() > 0.5; }));
  EXPECT_GE(player->currentTime(), 0.505);
}

}  // namespace
}  // namespace quibel::playback
