#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "song/decoding/OpenSong.h"
#include "tests/playback/PlayerFixture.h"
#include "tests/support/TestAudio.h"

namespace quibel::playback {
namespace {

/// A file of 20 s at 8 kHz, whose left samples tell their frames and whose right
/// ones leave nothing to compress, and what becomes of its loop when something
/// happens to the file.
class PlayedFiles : public PlayerFixture, public testing::WithParamInterface<std::string> {
 protected:
  static constexpr int frames = 160'000;

  void SetUp() override {
    test::Sound sound = test::noise(8'000, 2, frames);
    for (int frame = 0; frame < frames; ++frame)
      sound.channels[0][static_cast<std::size_t>(frame)] = static_cast<float>(frame + 1) / scale;
    const auto wav = directory_.path() / "song.wav";
    test::writeWav(wav, sound, test::WavFormat::signed24);
    if (GetParam() == "flac") test::run({"flac", "-s", wav.string()});
    file_ = directory_.path() / ("song." + GetParam());
    auto song = song::openAudioFile(platform::FileURL(file_));
    ASSERT_TRUE(song) << song.error().localizedDescription();
    open(std::move(*song));
  }

  /// Pulls until the song's `frame` sounds; false if playback ends before.
  bool reaches(int frame) {
    bool found = false;
    EXPECT_TRUE(eventually([&] {
      const auto sample = output.pull(1);
      if (sample.empty()) return false;
      output.hearAll();
      found = std::lround(sample.front() * scale) == frame + 1;
      return found || !player->isPlaying();
    }));
    return found;
  }

  /// As the loop's timer does where playback has ended.
  void startAgain(double seconds) {
    player->setCurrentTime(seconds);
    player->play();
  }

  static constexpr float scale = 1 << 23;

  test::TemporaryDirectory directory_;
  std::filesystem::path file_;
};

TEST_P(PlayedFiles, OneThatIsDeletedWhileItPlaysPlaysOnToItsEnd) {
  playFrom(1);
  ASSERT_TRUE(reaches(9'000));
  std::filesystem::remove(file_);
  EXPECT_TRUE(reaches(frames - 1));
  startAgain(1);
  EXPECT_TRUE(reaches(8'000));
}

TEST_P(PlayedFiles, OneThatIsCutWhileItPlaysLoopsOverWhatIsLeft) {
  playFrom(1);
  ASSERT_TRUE(reaches(9'000));
  std::filesystem::resize_file(file_, std::filesystem::file_size(file_) / 2);
  EXPECT_FALSE(reaches(frames - 1));
  startAgain(1);
  EXPECT_TRUE(reaches(9'000)) << "what is left";
  startAgain(15);
  EXPECT_FALSE(reaches(frames - 1)) << "what is not";
  EXPECT_TRUE(player->play()) << "the output is not to blame";
}

TEST_P(PlayedFiles, OneThatIsDamagedInItsMiddlePlaysOnBehindIt) {
  playFrom(1);
  ASSERT_TRUE(reaches(9'000));
  {
    std::fstream damage(file_, std::ios::in | std::ios::out | std::ios::binary);
    damage.seekp(static_cast<std::streamoff>(std::filesystem::file_size(file_) * 3 / 4));
    damage << std::string(2'000, '\0');
  }
  EXPECT_TRUE(reaches(frames - 1));
}

INSTANTIATE_TEST_SUITE_P(Formats, PlayedFiles, testing::Values("wav", "flac"),
                         [](const auto& format) { return format.param; });

}  // namespace
}  // namespace quibel::playback
