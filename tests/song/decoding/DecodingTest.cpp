#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "song/decoding/OpenSong.h"
#include "tests/song/Songs.h"
#include "tests/support/MadeFiles.h"

namespace quibel::test {
namespace {

class Decoding : public testing::TestWithParam<SongFormat> {
 protected:
  std::filesystem::path make(const Sound& sound) {
    const auto wav = directory_.path() / "source.wav";
    writeWav(wav, sound);
    return makeSong(GetParam(), wav);
  }

  TemporaryDirectory directory_;
};

TEST_P(Decoding, LengthIsExactAndIsWhatReadsDeliver) {
  const auto song = openSong(make(test::song(GetParam().rate, GetParam().channels, sourceLength)));
  EXPECT_EQ(song->length(), GetParam().expectedLength);
  EXPECT_EQ(
      song->processingFormat(),
      (platform::AudioFormat{double(GetParam().rate), static_cast<unsigned>(GetParam().channels)}));
  EXPECT_EQ(song->framePosition(), 0);
  const auto length = song->length();
  EXPECT_EQ(readAll(*song).frames(), length);
  EXPECT_EQ(song->framePosition(), length);
}

TEST_P(Decoding, EverySampleIsInItsPlace) {
  const Sound source = test::song(GetParam().rate, GetParam().channels, sourceLength);
  const Sound decoded = readAll(make(source));
  if (GetParam().isLossless) {
    const Sound expected = quantized(source, WavFormat::signed16);
    ASSERT_EQ(decoded.frames(), expected.frames());
    EXPECT_EQ(greatestDifference(expected, 0, decoded), 0);
  } else if (GetParam().expectedLength == static_cast<std::int64_t>(sourceLength)) {
    EXPECT_EQ(lagBehind(source, decoded, 1200, 1200, 20'000), 0) << "at the beginning";
    EXPECT_EQ(lagBehind(source, decoded, 1200, 66'000, 20'000), 0) << "at the end";
  }
}

// What the ffmpeg command makes of a song: it cuts other ends off, and puts nothing
// in its place.
Sound decodedByFfmpeg(const std::filesystem::path& file, int channels) {
  const auto raw = file.parent_path() / "decoded.raw";
  makeFile({"ffmpeg", "-v", "error", "-y", "-i", "{in}", "-f", "f32le", "{out}"}, file, raw);
  const auto bytes = readBytes(raw);
  const auto count = static_cast<std::size_t>(channels);
  Sound sound{.channels = std::vector<std::vector<float>>(count)};
  for (std::size_t i = 0; i < bytes.size() / sizeof(float); ++i) {
    float sample = 0;
    std::memcpy(&sample, bytes.data() + i * sizeof(float), sizeof sample);
    sound.channels[i % count].push_back(sample);
  }
  return sound;
}

Sound part(const Sound& sound, std::size_t begin, std::size_t end) {
  Sound result{sound.rate, {}};
  for (const auto& channel : sound.channels) {
    result.channels.emplace_back(channel.begin() + std::ptrdiff_t(begin),
                                 channel.begin() + std::ptrdiff_t(end));
  }
  return result;
}

TEST_P(Decoding, NothingIsMissingBetweenBlocksOfAnyLength) {
  constexpr std::size_t edge = 8'192;
  constexpr float rounding = 1e-3F;  // the command may choose a decoder of 16 bits
  const auto file = make(attacks(GetParam().rate, GetParam().channels, 3 * sourceLength));
  const Sound decoded = readAll(file);
  const Sound expected = decodedByFfmpeg(file, GetParam().channels);
  const Sound middle = part(decoded, edge, decoded.frames() - edge);
  std::size_t at = 0;
  while (greatestDifference(expected, at, part(middle, 0, 100)) > rounding) {
    ASSERT_LT(++at, 2 * edge) << "its beginning is nowhere";
  }
  EXPECT_LE(greatestDifference(expected, at, middle), rounding);
}

TEST_P(Decoding, SeekDeliversTheSamplesOfADecodeFromTheStart) {
  const auto file =
      make(attacks(GetParam().rate, GetParam().channels, std::size_t{7} * 44'100 + 77));
  const Sound whole = readAll(file);
  const auto song = openSong(file);
  std::mt19937_64 random(7);
  for (int i = 0; i < 200; ++i) {
    const auto frame = static_cast<std::int64_t>(random() % (whole.frames() + 1));
    ASSERT_TRUE(song->seek(frame));
    ASSERT_EQ(song->framePosition(), frame);
    const Sound part = readFrames(*song, 4096);
    ASSERT_EQ(part.frames(), std::min<std::size_t>(4096, whole.frames() - std::size_t(frame)));
    const float tolerance = GetParam().isLossless ? 0.0F : 1e-6F;
    ASSERT_LE(greatestDifference(whole, std::size_t(frame), part), tolerance)
        << "at frame " << frame << " of " << whole.frames();
  }
}

TEST_P(Decoding, AnotherReaderDeliversTheSameMeanwhile) {
  const auto song = openSong(make(test::song(GetParam().rate, GetParam().channels, sourceLength)));
  const Sound whole = readAll(*song);
  ASSERT_TRUE(song->seek(0));
  const std::jthread first([&] { EXPECT_EQ(greatestDifference(whole, 0, readAll(*song)), 0); });
  const auto other = song->anotherReader();
  if (!other) return;  // it seeks only by decoding from the beginning
  EXPECT_EQ(other->framePosition(), 0);
  EXPECT_EQ(other->length(), song->length());
  ASSERT_TRUE(other->seek(40'000));
  const float tolerance = GetParam().isLossless ? 0.0F : 1e-6F;
  EXPECT_LE(greatestDifference(whole, 40'000, readAll(*other)), tolerance);
}

// Bytes that this process has read from files so far.
std::int64_t bytesRead() {
  std::ifstream counters("/proc/self/io");
  std::string name;
  std::int64_t value = 0;
  while (counters >> name >> value) {
    if (name == "rchar:") return value;
  }
  throw std::runtime_error("the kernel counts no reads");
}

TEST(Seeking, FindsAPlaceAgainWithoutReadingAllThatIsBeforeIt) {
  for (const char* name :
       {"Flac", "OggFlac", "AacM4a", "Alac", "Mp3VariableRate", "Mp3WithoutHeader"}) {
    const auto format = std::ranges::find(songFormats(), name, &SongFormat::name);
    ASSERT_NE(format, songFormats().end()) << name;
    const TemporaryDirectory directory;
    const auto wav = directory.path() / "source.wav";
    writeWav(wav, test::song(format->rate, 2, std::size_t{30} * 44'100));
    const auto file = makeSong(*format, wav);
    const auto size = static_cast<std::int64_t>(std::filesystem::file_size(file));
    const auto song = openSong(file);
    const std::int64_t end = song->length() - 4096;
    std::int64_t before = 0;
    for (const std::int64_t place : {end, std::int64_t{0}, end}) {
      before = bytesRead();
      ASSERT_TRUE(song->seek(place));
      readFrames(*song, 4096);
    }
    EXPECT_LT(bytesRead() - before, size / 2) << name;
  }
}

TEST(IndexedLength, IsKnownWithoutReadingTheSong) {
  for (const char* name : {"AacM4a", "Alac", "MonkeysAudio"}) {
    const auto format = std::ranges::find(songFormats(), name, &SongFormat::name);
    ASSERT_NE(format, songFormats().end()) << name;
    const TemporaryDirectory directory;
    const auto wav = directory.path() / "source.wav";
    constexpr std::size_t length = std::size_t{180} * 44'100 + 77;
    writeWav(wav, test::song(format->rate, 2, length));
    const auto file = makeSong(*format, wav);
    const auto before = bytesRead();
    EXPECT_EQ(openSong(file)->length(), static_cast<std::int64_t>(length)) << name;
    EXPECT_LT(bytesRead() - before, static_cast<std::int64_t>(std::filesystem::file_size(file)) / 2)
        << name;
  }
}

// Formats whose packets do not tell their lengths, or of which there is no index.
TEST(StatedLength, IsKnownBeforeTheSongIsReadAndForgottenForTheExactOne) {
  for (const char* name : {"Amr", "Wma", "Eac3", "WavPack", "MatroskaFlac", "OggFlac"}) {
    const auto format = std::ranges::find(songFormats(), name, &SongFormat::name);
    ASSERT_NE(format, songFormats().end()) << name;
    const TemporaryDirectory directory;
    const auto wav = directory.path() / "source.wav";
    writeWav(wav, test::song(format->rate, format->channels, std::size_t{60} * 44'100));
    const auto file = makeSong(*format, wav);
    const auto open = [&](song::Length length) {
      auto song = song::openAudioFile(platform::FileURL(file), {}, length);
      EXPECT_TRUE(song) << name;
      return std::move(*song);
    };

    const auto before = bytesRead();
    const auto unheard = open(song::Length::stated);
    EXPECT_LT(bytesRead() - before, static_cast<std::int64_t>(std::filesystem::file_size(file)) / 2)
        << name;
    const Sound exact = readAll(*open(song::Length::exact));
    EXPECT_NEAR(static_cast<double>(unheard->length()), static_cast<double>(exact.frames()), 8'192)
        << name;
    EXPECT_EQ(open(song::Length::stated)->length(), std::ssize(exact.channels[0])) << name;

    EXPECT_EQ(greatestDifference(exact, 0, readFrames(*unheard, 100'000)), 0) << name;
    EXPECT_EQ(std::ssize(readAll(*unheard).channels[0]), unheard->length() - 100'000) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, Decoding, testing::ValuesIn(songFormats()),
                         [](const auto& parameter) { return parameter.param.name; });

}  // namespace
}  // namespace quibel::test
