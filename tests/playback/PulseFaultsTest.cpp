#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "playback/AudioOutput.h"
#include "playback/cubeb/CubebSink.h"
#include "tests/playback/Eventually.h"
#include "tests/playback/LoopDriver.h"
#include "tests/playback/PulseServer.h"
#include "tests/playback/SyntheticSong.h"

namespace quibel::playback {
namespace {

class PulseFaults : public testing::Test {
 protected:
  void SetUp() override {
    if (!PulseServer::isInstalled()) GTEST_SKIP() << "no PulseAudio server is installed";
    server_ = std::make_unique<PulseServer>();
    output_ = std::make_unique<AudioOutput>(connectCubeb);
  }

  auto makePlayer() const {
    return output_->makePlayer(std::make_unique<SyntheticSong>(
        platform::AudioFormat{44'100, 2}, std::int64_t{20} * 44'100,
        [](std::int64_t frame, std::uint32_t) { return frame % 100 < 50 ? 0.1F : -0.1F; }));
  }

  /// Begins to loop 1.0 … 2.0.
  void startLoop() {
    auto made = makePlayer();
    ASSERT_TRUE(made) << made.error().localizedDescription();
    player_ = std::move(*made);
    driver_.emplace(*player_, 1.0, 2.0);
    ASSERT_TRUE(moves());
  }

  /// Ticks until the loop is heard to go on.
  bool moves() {
    return eventually([&] {
      driver_->tick();
      return player_->isPlaying() && player_->currentTime() > 1.1;
    });
  }

  bool stops() {
    return eventually([&] {
      const bool playing = player_->isPlaying();
      driver_->tick();
      return !playing;
    });
  }

  /// Whether 2,000 rounds of the calls that a tick makes return in a minute: far too many
  /// for that if one in a hundred waited for the server.
  bool callsReturn() {
    int round = 0;
    return eventually([&] {
      player_->currentTime();
      player_->isPlaying();
      player_->setCurrentTime(round % 2 == 0 ? 1.0 : 1.2);
      player_->play();
      return ++round == 2'000;
    });
  }

  std::unique_ptr<PulseServer> server_;
  std::unique_ptr<AudioOutput> output_;
  std::unique_ptr<platform::AudioPlayer> player_;
  std::optional<LoopDriver> driver_;
};

constexpr auto noOutput =
    "No hay ninguna salida de sonido disponible. Conecta unos altavoces o unos auriculares y "
    "comprueba los ajustes de sonido.";

TEST_F(PulseFaults, WithoutAServerOpeningFailsWithItsSentence) {
  server_->kill();
  const auto made = makePlayer();
  ASSERT_FALSE(made);
  EXPECT_EQ(made.error().localizedDescription(), noOutput);
}

TEST_F(PulseFaults, AServerThatDiesStopsTheLoopAndOneThatComesResumesIt) {
  startLoop();
  server_->kill();
  ASSERT_TRUE(stops());
  EXPECT_EQ(player_->currentTime(), 1.0);
  server_->start();
  EXPECT_TRUE(moves());
}

TEST_F(PulseFaults, ADeviceThatVanishesStopsTheLoopAndOneThatComesResumesIt) {
  startLoop();
  ASSERT_EQ(std::system("pactl unload-module module-null-sink"), 0);
  ASSERT_TRUE(stops());
  ASSERT_EQ(std::system("pactl load-module module-null-sink sink_name=out norewinds=1 >/dev/null"),
            0);
  EXPECT_TRUE(moves());
}

TEST_F(PulseFaults, NoCallWaitsForAServerThatDoesNotAnswer) {
  startLoop();
  EXPECT_TRUE(callsReturn());
  server_->stop();  // its answer never comes
  EXPECT_TRUE(callsReturn());
  server_->resume();
  server_->kill();
  EXPECT_TRUE(callsReturn());
}

TEST_F(PulseFaults, TheLoopGoesOnOnceASilentServerAnswers) {
  startLoop();
  server_->stop();
  EXPECT_FALSE(makePlayer()) << "the audio thread is waiting for the server now";
  server_->resume();
  EXPECT_TRUE(moves());
}

TEST_F(PulseFaults, TheOutputEndsAlthoughItsServerDoesNotAnswer) {
  startLoop();
  server_->stop();
  player_->stop();
  player_.reset();
  output_.reset();
}

TEST_F(PulseFaults, TwoHundredQuickTogglesLeaveALoopThatPlays) {
  for (int toggle = 0; toggle < 200; ++toggle) {
    auto made = makePlayer();
    ASSERT_TRUE(made) << made.error().localizedDescription();
    (*made)->setCurrentTime(1);
    (*made)->prepareToPlay();
    (*made)->play();
    if (toggle % 2 == 0) (*made)->stop();
  }
  startLoop();
}

}  // namespace
}  // namespace quibel::playback
