#include <chrono>
#include <latch>
#include <vector>

#include <gtest/gtest.h>

#include "playback/Clock.h"
#include "tests/playback/PlayerFixture.h"

namespace quibel::playback {
namespace {

using PlayerFaults = PlayerFixture;

TEST_F(PlayerFaults, WithoutASoundOutputOpeningFailsWithItsReason) {
  output.setAbsent(true);
  const auto made = audio->makePlayer(song());
  ASSERT_FALSE(made);
  EXPECT_EQ(made.error().localizedDescription(), "No hay salida de sonido.");
}

TEST_F(PlayerFaults, ASongThatNoSinkTakesIsRefused) {
  const auto silent = [](std::int64_t, std::uint32_t) { return 0.0F; };
  for (const platform::AudioFormat format :
       {platform::AudioFormat{999, 2}, platform::AudioFormat{44'100, 0},
        platform::AudioFormat{2e9, 64}}) {
    const auto made = audio->makePlayer(std::make_unique<SyntheticSong>(format, 100, silent));
    ASSERT_FALSE(made);
    EXPECT_EQ(made.error().localizedDescription(),
              "La salida de sonido no admite la frecuencia de este audio.");
  }
}

TEST_F(PlayerFaults, WarmingUpConnectsBeforeAnythingIsOpened) {
  audio->warmUp();
  EXPECT_TRUE(eventually([&] { return output.connections() == 1; }));
  open();
  EXPECT_EQ(output.connections(), 1);
}

TEST_F(PlayerFaults, ASilentServerIsWaitedForOnceAndNotAgain) {
  std::latch release(1);
  output.beforeConnect = [&] { release.wait(); };
  for (int attempt = 0; attempt < 50; ++attempt) {
    const auto made = audio->makePlayer(song());
    ASSERT_FALSE(made);
    EXPECT_EQ(made.error().localizedDescription(),
              "El sistema de sonido no responde. Inténtalo otra vez dentro de unos segundos.");
  }
  release.count_down();
  EXPECT_TRUE(eventually([&] { return audio->makePlayer(song()).has_value(); }));
}

TEST_F(PlayerFaults, ADyingOutputStopsPlaybackAndKeepsThePosition) {
  open();
  playFrom(2);
  pullSound(200);
  output.hearAll();
  ASSERT_TRUE(eventually([&] { return player->currentTime() >= 2.2; }));
  output.setAbsent(true);
  output.fail();
  ASSERT_TRUE(eventually([&] { return !player->isPlaying(); }));
  EXPECT_FALSE(output.isOpen()) << "a sink that has failed is destroyed";
  EXPECT_GE(player->currentTime(), 2.2);
  EXPECT_FALSE(player->play());
}

TEST_F(PlayerFaults, PlayingOnBringsTheSoundBackWhenTheOutputIs) {
  open();
  playFrom(2);
  pullSound(300);
  output.fail();
  ASSERT_TRUE(eventually([&] { return !player->isPlaying(); }));
  // As the loop's timer does, tick after tick.
  ASSERT_TRUE(eventually([&] {
    if (player->isPlaying()) return output.isRunning();
    player->setCurrentTime(2);
    player->play();
    return false;
  }));
  EXPECT_EQ(output.connections(), 2);
  expectSong(pullSound(100), 2'000);
}

TEST_F(PlayerFaults, AnOutputThatIsGoneIsLookedForAtMostOnceASecond) {
  std::vector<Clock::time_point> attempts;  // the audio thread's, until that has ended
  output.beforeConnect = [&] { attempts.push_back(Clock::now()); };
  open();
  playFrom(2);
  output.setAbsent(true);
  output.fail();
  ASSERT_TRUE(eventually([&] { return !player->isPlaying(); }));
  ASSERT_TRUE(eventually([&] {
    player->setCurrentTime(2);
    player->play();
    return output.connections() == 4;
  }));
  audio.reset();
  for (std::size_t index = 2; index < attempts.size(); ++index)
    EXPECT_GE(attempts[index] - attempts[index - 1], std::chrono::seconds(1));
}

TEST_F(PlayerFaults, AReadErrorInTheFragmentLoopsWhatLiesBeforeIt) {
  auto file = song();
  file->failFrom(2'200);
  open(std::move(file));
  playFrom(2);
  for (int pass = 0; pass < 3; ++pass) {
    pullUntil(2'000);
    ASSERT_TRUE(eventually([&] {
      output.pull(1);
      output.hearAll();
      return !player->isPlaying();
    }));
    player->setCurrentTime(2);
    player->play();
  }
}

TEST_F(PlayerFaults, AReadErrorEndsThePassageThere) {
  auto file = song();
  file->failFrom(2'200);
  open(std::move(file));
  playFrom(2);
  pullSound(200);
  ASSERT_TRUE(eventually([&] {
    EXPECT_EQ(output.pull(1), std::vector<float>{0});
    output.hearAll();
    return !player->isPlaying();
  }));
  EXPECT_DOUBLE_EQ(player->currentTime(), 2.2);
}

TEST_F(PlayerFaults, AnUnreadablePlaceEndsAtOnceAndAnotherStillPlays) {
  auto file = song();
  file->failFrom(5'000);
  open(std::move(file));
  playFrom(6);
  output.pull(1);
  output.hear(1);
  ASSERT_TRUE(eventually([&] { return !player->isPlaying(); }));
  player->setCurrentTime(1);
  player->play();
  pullUntil(1'000);
}

}  // namespace
}  // namespace quibel::playback
