#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "song/decoding/OpenSong.h"
#include "tests/song/Songs.h"
#include "tests/support/MadeFiles.h"

namespace quibel::test {
namespace {

class Damage : public testing::Test {
 protected:
  std::filesystem::path file(const std::string& name) const { return directory_.path() / name; }

  /// Makes a song of 10 s, and overwrites `count` bytes in its middle.
  Sound decodedAndDamaged(const std::string& name, const std::vector<std::string>& command,
                          std::size_t count) {
    writeWav(file("s.wav"), song(44'100, 2, 441'000));
    const auto path = makeSong({name, name, command}, file("s.wav"));
    Sound whole = readAll(path);
    auto bytes = readBytes(path);
    const auto middle = bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2);
    std::fill_n(middle, count, std::uint8_t{0x55});
    writeBytes(path, bytes);
    return whole;
  }

  TemporaryDirectory directory_;
};

struct Difference {
  std::size_t first = 0;
  std::size_t last = 0;
  bool isSilent = true;  ///< between them
};

// Where the second sound's samples differ from the first's.
Difference compare(const Sound& whole, const Sound& damaged) {
  Difference found{whole.frames(), 0, true};
  for (std::size_t i = 0; i < whole.frames(); ++i) {
    if (whole.channels[0][i] == damaged.channels[0][i]) continue;
    found.first = std::min(found.first, i);
    found.last = i;
  }
  for (std::size_t i = found.first; i <= found.last && i < whole.frames(); ++i) {
    if (damaged.channels[0][i] != 0) found.isSilent = false;
  }
  return found;
}

TEST_F(Damage, FailingFlacPacketBecomesSilenceOfItsLength) {
  const Sound whole = decodedAndDamaged("song.flac", {"flac", "-s", "-o", "{out}", "{in}"}, 200);
  const Sound damaged = readAll(file("song.flac"));
  ASSERT_EQ(damaged.frames(), whole.frames());
  const Difference difference = compare(whole, damaged);
  EXPECT_LT(difference.first, difference.last);
  EXPECT_LE(difference.last - difference.first, 2U * 4096);
  EXPECT_TRUE(difference.isSilent);
}

// Who writes into a pipe cannot go back to tell how long it was.
TEST_F(Damage, HoleInFlacWithoutALengthLeavesTheRestInItsPlace) {
  const Sound whole = decodedAndDamaged(
      "song.flac", {"sh", "-ec", "ffmpeg -v error -i $0 -f flac - > $1", "{in}", "{out}"}, 60'000);
  const Sound damaged = readAll(file("song.flac"));
  ASSERT_EQ(damaged.frames(), whole.frames());
  const Difference difference = compare(whole, damaged);
  EXPECT_GT(difference.last - difference.first, 2U * 4096);
  EXPECT_LT(difference.last, 340'000U);
  EXPECT_TRUE(difference.isSilent);
}

TEST_F(Damage, FailingAacPacketsLeaveTheRestInItsPlace) {
  const Sound whole = decodedAndDamaged(
      "song.m4a", {"ffmpeg", "-v", "error", "-i", "{in}", "-aac_pns", "0", "{out}"}, 3000);
  const Sound damaged = readAll(file("song.m4a"));
  ASSERT_EQ(damaged.frames(), whole.frames());
  const Difference difference = compare(whole, damaged);
  EXPECT_GT(difference.first, 100'000U);
  EXPECT_LT(difference.last, 340'000U);
}

TEST_F(Damage, BrokenMp3FramesLeaveTheRestInItsPlace) {
  const Sound whole = decodedAndDamaged("song.mp3", {"lame", "--quiet", "{in}", "{out}"}, 300);
  const Sound damaged = readAll(file("song.mp3"));
  ASSERT_EQ(damaged.frames(), whole.frames());
  EXPECT_LT(compare(whole, damaged).last, 300'000U);
}

TEST_F(Damage, LostOggPageBecomesSilenceAndLeavesTheRestInItsPlace) {
  for (const auto& command :
       {std::vector<std::string>{"oggenc", "-Q", "-o", "{out}", "{in}"},
        std::vector<std::string>{"flac", "-s", "-f", "--ogg", "-o", "{out}", "{in}"}}) {
    const Sound whole = decodedAndDamaged("song.ogg", command, 20);
    const Sound damaged = readAll(file("song.ogg"));
    ASSERT_EQ(damaged.frames(), whole.frames()) << command[0];
    const Difference difference = compare(whole, damaged);
    EXPECT_GT(difference.first, 100'000U) << command[0];
    EXPECT_LT(difference.last, 340'000U) << command[0];
  }
}

TEST_F(Damage, LargeHoleInOggLeavesTheRestInItsPlace) {
  for (const char* name : {"Vorbis", "OggFlac", "Opus"}) {
    const auto format = std::ranges::find(songFormats(), name, &SongFormat::name);
    ASSERT_NE(format, songFormats().end()) << name;
    writeWav(file("s.wav"), song(format->rate, 2, std::size_t{60} * 44'100));
    const auto path = makeSong(*format, file("s.wav"));
    const Sound whole = readAll(path);
    auto bytes = readBytes(path);
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 3);
    std::fill_n(begin, 200'000, std::uint8_t{0});
    writeBytes(path, bytes);
    const Sound damaged = readAll(path);
    ASSERT_EQ(damaged.frames(), whole.frames()) << name;
    const std::size_t behind = whole.frames() * 3 / 4;
    const auto song = openSong(path);
    ASSERT_TRUE(song->seek(static_cast<std::int64_t>(behind)));
    const Sound rest = readFrames(*song, 500'000);
    EXPECT_LE(greatestDifference(whole, behind, rest), 1e-6F) << name;
    EXPECT_LE(greatestDifference(damaged, behind, rest), 1e-6F) << name;
  }
}

TEST_F(Damage, SeeksBehindALostOpusPageAreExact) {
  decodedAndDamaged("song.opus", {"opusenc", "--quiet", "{in}", "{out}"}, 20);
  const Sound damaged = readAll(file("song.opus"));
  const auto song = openSong(file("song.opus"));
  for (std::size_t frame = 120'000; frame < 400'000; frame += 3'001) {
    ASSERT_TRUE(song->seek(static_cast<std::int64_t>(frame)));
    EXPECT_LE(greatestDifference(damaged, frame, readFrames(*song, 2'000)), 1e-6F) << frame;
  }
}

// As tags of other formats that programs append to any song.
TEST_F(Damage, WhatIsBehindTheSongIsNoPartOfIt) {
  for (const char* name : {"Vorbis", "Opus", "OggFlac", "Flac", "Mp3ConstantRate", "AacAdts"}) {
    const auto format = std::ranges::find(songFormats(), name, &SongFormat::name);
    ASSERT_NE(format, songFormats().end()) << name;
    writeWav(file("s.wav"), song(format->rate, 2, 44'100));
    const auto path = makeSong(*format, file("s.wav"));
    const Sound whole = readAll(path);
    for (const std::size_t count : {std::size_t{1}, std::size_t{27}, std::size_t{128}}) {
      auto bytes = readBytes(path);
      bytes.insert(bytes.end(), {'T', 'A', 'G'});
      bytes.resize(bytes.size() - 3 + count);
      writeBytes(path, bytes);
      const Sound followed = readAll(path);
      ASSERT_EQ(followed.frames(), whole.frames()) << name << ' ' << count;
      EXPECT_EQ(greatestDifference(whole, 0, followed), 0) << name << ' ' << count;
    }
  }
}

// Programs that shorten a tag leave zeros behind it.
TEST_F(Damage, GapBetweenMp3TagAndFramesChangesNothing) {
  writeWav(file("s.wav"), song(44'100, 2, sourceLength));
  for (const char* tag : {"-t", "--nohist"}) {  // without lengths in the file, and with them
    makeFile({"lame", "--quiet", tag, "--tt", "Name", "--id3v2-only", "{in}", "{out}"},
             file("s.wav"), file("s.mp3"));
    const Sound whole = readAll(file("s.mp3"));
    auto bytes = readBytes(file("s.mp3"));
    ASSERT_EQ(bytes[0], 'I');
    const int tagSize = 10 + bytes[8] * 128 + bytes[9];
    bytes.insert(bytes.begin() + tagSize, 300, std::uint8_t{0});
    writeBytes(file("gap.mp3"), bytes);
    const Sound gap = readAll(file("gap.mp3"));
    ASSERT_EQ(gap.frames(), whole.frames()) << tag;
    EXPECT_LT(greatestDifference(whole, 0, gap), 1e-6F) << tag;
  }
}

TEST_F(Damage, RandomDamageNeverCrashesAndLengthIsWhatIsDelivered) {
  for (const SongFormat& format : songFormats()) {
    writeWav(file("s.wav"), song(44'100, 2, 22'050));
    const auto path = makeSong(format, file("s.wav"));
    const auto whole = readBytes(path);
    std::mt19937 random(11);
    for (int i = 0; i < 12; ++i) {
      auto bytes = whole;
      for (int hits = 0; hits < 1 + i; ++hits) {
        std::uint8_t& byte = bytes[random() % bytes.size()];
        byte = static_cast<std::uint8_t>(byte ^ 1U << random() % 8);
      }
      if (i % 4 == 3) bytes.resize(random() % bytes.size() + 1);
      writeBytes(path, bytes);
      const auto opened = song::openAudioFile(platform::FileURL(path));
      if (!opened) continue;
      EXPECT_EQ(static_cast<std::int64_t>(readAll(**opened).frames()), (*opened)->length())
          << format.name << " " << i;
    }
  }
}

class Truncated : public testing::TestWithParam<SongFormat> {};

TEST_P(Truncated, FileGivesWhatIsThere) {
  const TemporaryDirectory directory;
  const auto wav = directory.path() / "s.wav";
  writeWav(wav, song(GetParam().rate, 2, std::size_t{5} * 44'100));
  const auto path = makeSong(GetParam(), wav);
  const Sound whole = readAll(path);
  auto bytes = readBytes(path);
  bytes.resize(bytes.size() * 6 / 10);
  writeBytes(path, bytes);
  const auto opened = song::openAudioFile(platform::FileURL(path));
  if (!opened) {
    // Its index was at the end.
    EXPECT_EQ(opened.error().localizedDescription(),
              "El archivo está dañado y no se puede decodificar.");
    return;
  }
  const Sound part = readAll(**opened);
  EXPECT_EQ(static_cast<std::int64_t>(part.frames()), (*opened)->length());
  EXPECT_GT(part.frames(), whole.frames() * 4 / 10);
  EXPECT_LT(part.frames(), whole.frames() * 8 / 10);
  Sound most = part;
  for (auto& channel : most.channels) channel.resize(whole.frames() * 4 / 10);
  const float tolerance = GetParam().isLossless ? 0 : 1e-6F;
  EXPECT_LE(greatestDifference(whole, 0, most), tolerance);
  // And again, back from the end into what was decoded last.
  for (const std::uint32_t back : {1U, 700U, 1'500U, 2'500U, 5'000U}) {
    const std::size_t frame = part.frames() - back;
    ASSERT_TRUE((*opened)->seek(static_cast<std::int64_t>(frame)));
    EXPECT_LE(greatestDifference(part, frame, readFrames(**opened, back)), tolerance) << back;
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, Truncated, testing::ValuesIn(songFormats()),
                         [](const auto& parameter) { return parameter.param.name; });

}  // namespace
}  // namespace quibel::test
