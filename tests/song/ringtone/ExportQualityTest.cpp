#include <algorithm>
#include <cstdio>

#include "tests/song/Levels.h"
#include "tests/song/ringtone/ExportFixture.h"
#include "tests/support/MadeFiles.h"

namespace quibel::test {
namespace {

/// Real songs, where this machine has them: those of the package asc-music.
const std::filesystem::path realSongs = "/usr/share/games/asc/music";

/// The difference below 16 kHz of a sound from what it should be, in decibels to
/// the latter, where it lies `lag` frames behind it. Leaves out both ends.
double noiseIn(const Sound& expected, const Sound& sound, int lag) {
  constexpr std::size_t ends = 2'048;
  const std::size_t frames = std::min(expected.frames(), sound.frames()) - 2 * ends;
  Sound difference = cut(expected, ends, frames);
  for (std::size_t channel = 0; channel < difference.channels.size(); ++channel) {
    const float* const other =
        sound.channels[channel].data() + static_cast<std::ptrdiff_t>(ends) + lag;
    for (std::size_t i = 0; i < frames; ++i) difference.channels[channel][i] -= other[i];
  }
  return levelBelow16kHz(difference) - levelBelow16kHz(cut(expected, ends, frames));
}

TEST_F(Export, NoiseIsFarBelowThatOfFfmpegsCommandAtTheSameBitRate) {
  if (!std::filesystem::exists(realSongs)) GTEST_SKIP() << "no real songs here";
  // A coder's luck differs by a decibel or two from one passage to the next.
  double ours = 0;
  double same = 0;
  double half = 0;
  int passages = 0;
  for (const std::string name : {"frontiers.mp3", "machine_wars.mp3", "time_to_strike.mp3"}) {
    for (const std::string start : {"20", "70"}) {
      // At the ringtone's rate from the beginning, so that only the coding counts.
      makeFile({"ffmpeg", "-v", "error", "-y", "-ss", start, "-t", "8", "-i", "{in}", "-ac", "2",
                "-ar", "44100", "-c:a", "pcm_f32le", "{out}"},
               realSongs / name, file("song.wav"));
      const Sound source = readAll(file("song.wav"));
      const auto noiseOf = [&](const std::filesystem::path& coded) {
        const Sound sound = readAll(coded);
        return noiseIn(source, sound, lagBehind(source, sound, 8, 20'000, 100'000));
      };
      const auto codedAt = [&](const std::string& bitRate) {
        makeFile(
            {"ffmpeg", "-v", "error", "-y", "-i", "{in}", "-c:a", "aac", "-b:a", bitRate, "{out}"},
            file("song.wav"), file("coded.m4a"));
        return file("coded.m4a");
      };
      ours += noiseOf(exported(file("song.wav"), 0, 8));
      same += noiseOf(codedAt("256k"));
      half += noiseOf(codedAt("128k"));
      ++passages;
    }
  }
  std::printf(
      "noise below 16 kHz, mean of %d passages: ringtone %.2f dB, ffmpeg at 256 kbit/s "
      "%.2f dB, at 128 kbit/s %.2f dB\n",
      passages, ours / passages, same / passages, half / passages);
  EXPECT_LE(ours / passages, same / passages - 6);
  EXPECT_LE(ours / passages, half / passages - 6);
}

TEST_F(Export, SourceLouderThanFullScaleIsNotMadeWorse) {
  const auto noiseAt = [&](float amplitude) {
    const Sound source = sweep(44'100, 2, std::size_t{2} * 44'100, amplitude);
    writeWav(file("song.wav"), source, WavFormat::float32);
    return noiseIn(source, readAll(exported(file("song.wav"), 0, 2)), 0);
  };
  EXPECT_LT(noiseAt(1.8F), noiseAt(0.4F) + 0.5) << "the tops are cut off";
}

}  // namespace
}  // namespace quibel::test
