#include <algorithm>
#include <atomic>
#include <cstddef>
#include <limits>
#include <new>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/Waveform.h"
#include "tests/support/FakePlatform.h"

namespace quibel::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int bucketCount = 900;

/// The envelope of a song of one channel for each of `channels`.
std::vector<double> envelope(std::vector<std::vector<float>> channels) {
  const fake::Song song{.channels = std::move(channels)};
  const auto file = fake::openSong(song);
  return waveform(*file, bucketCount).value();
}

std::vector<float> frames(std::size_t count, float value = 1.0F) {
  return std::vector<float>(count, value);
}

/// The frames asked of each read of a mono song of `count` frames.
std::vector<std::uint32_t> readSizes(std::size_t count) {
  const fake::Song song{.channels = {frames(count)}};
  std::vector<std::uint32_t> sizes;
  const auto file = fake::openSong(song, &sizes);
  EXPECT_TRUE(waveform(*file, bucketCount));
  return sizes;
}

TEST(WaveformTest, OneSecondAt44100HasBucketsOf256FramesAnd173Values) {
  EXPECT_THAT(envelope({frames(44100)}), SizeIs(173));
  EXPECT_THAT(readSizes(44100), Each(256));
}

TEST(WaveformTest, ThreeMinutesHaveBucketsOf8820FramesAndExactly900Values) {
  EXPECT_THAT(envelope({frames(7'938'000)}), SizeIs(900));
  EXPECT_THAT(readSizes(7'938'000), Each(8820));
}

TEST(WaveformTest, ThreeMinutesAndAHalfSecondHaveBucketsOf8844FramesAnd901Values) {
  EXPECT_THAT(envelope({frames(7'960'050)}), SizeIs(901));
  EXPECT_THAT(readSizes(7'960'050), Each(8844));
}

TEST(WaveformTest, LastLengthWithBucketsOf256FramesHas904Values) {
  EXPECT_THAT(envelope({frames(231'299)}), SizeIs(904));
  EXPECT_THAT(readSizes(231'299), Each(256));
}

TEST(WaveformTest, OneTo256FramesHaveOneValue) {
  EXPECT_THAT(envelope({frames(1)}), SizeIs(1));
  EXPECT_THAT(envelope({frames(256)}), SizeIs(1));
  EXPECT_THAT(envelope({frames(257)}), SizeIs(2));
}

TEST(WaveformTest, SilenceHasZerosWithoutTheFloor) {
  EXPECT_THAT(envelope({frames(2560, 0.0F)}), ElementsAre(0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
}

TEST(WaveformTest, LoudestBucketBecomesOneAndFaintOnesAreRaisedToTheFloor) {
  auto song = frames(512, 0.01F);
  song[10] = 0.5F;
  EXPECT_THAT(envelope({song}), ElementsAre(1.0, 0.025));
}

TEST(WaveformTest, ValuesAboveTheFloorAreScaledByTheLoudest) {
  auto song = frames(512, 0.25F);
  song[300] = -0.5F;
  EXPECT_THAT(envelope({song}), ElementsAre(0.5, 1.0));
}

TEST(WaveformTest, ChannelsAreNeitherAveragedNorMixed) {
  auto left = frames(512, 0.6F);
  auto right = left;
  std::fill(left.begin() + 256, left.end(), 0.0F);
  std::fill(right.begin() + 256, right.end(), 0.0F);
  right[300] = -1.0F;
  const auto quieter = testing::DoubleNear(0.6, 1e-6);
  EXPECT_THAT(envelope({left, right}), ElementsAre(quieter, 1.0));
  EXPECT_THAT(envelope({right, left}), ElementsAre(quieter, 1.0));
}

TEST(WaveformTest, EachBucketIsClampedToFullScaleBeforeScaling) {
  auto song = frames(768, 0.5F);
  song[0] = 4.0F;
  song[256] = -std::numeric_limits<float>::infinity();
  EXPECT_THAT(envelope({song}), ElementsAre(1.0, 1.0, 0.5));
}

TEST(WaveformTest, SampleThatIsNotANumberNeverReplacesThePeak) {
  constexpr float nan = std::numeric_limits<float>::quiet_NaN();
  auto song = frames(512, 0.25F);
  song[255] = nan;  // after the others of its bucket
  song[256] = nan;  // before the others of its bucket
  EXPECT_THAT(envelope({song}), ElementsAre(1.0, 1.0));
  EXPECT_THAT(envelope({frames(300, nan)}), ElementsAre(0.0, 0.0));
}

TEST(WaveformTest, PeakIsFoundAtEveryPlaceOfABucket) {
  for (std::size_t place = 0; place < 37; ++place) {
    auto song = frames(37, 0.1F);
    song[place] = -0.8F;
    auto loud = frames(256, 0.8F);
    loud.insert(loud.end(), song.begin(), song.end());
    EXPECT_THAT(envelope({loud}), ElementsAre(1.0, 1.0)) << "at " << place;
  }
}

TEST(WaveformTest, LargeBucketIsReadInPieces) {
  fake::Song song{.channels = {frames(250'000, 0.1F)}};
  song.channels[0][30'000] = 0.2F;   // first of two buckets, second piece
  song.channels[0][249'999] = 0.4F;  // second bucket, last piece
  std::vector<std::uint32_t> sizes;
  EXPECT_THAT(waveform(*fake::openSong(song, &sizes), 2).value(),
              ElementsAre(testing::DoubleNear(0.5, 1e-6), 1.0));
  const std::vector<std::uint32_t> ofABucket{16'384, 16'384, 16'384, 16'384,
                                             16'384, 16'384, 16'384, 10'312};
  auto expected = ofABucket;
  expected.insert(expected.end(), ofABucket.begin(), ofABucket.end());
  EXPECT_EQ(sizes, expected);
}

TEST(WaveformTest, LargeBucketThatEndsEarlyHasThePeakOfWhatCame) {
  const fake::Song song{.channels = {frames(250'000)}, .endsEarly = true};
  EXPECT_THAT(waveform(*fake::openSong(song), 2).value(), ElementsAre(1.0));
}

TEST(WaveformTest, NoBufferIsInvalidAudio) {
  const fake::Song song{.channels = {frames(512)}, .makesBuffers = false};
  const auto result = waveform(*fake::openSong(song), bucketCount);
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error(), LoadError(AudioError::invalid));
}

TEST(WaveformTest, ReadErrorIsPassedOnUnchanged) {
  const platform::Error error("El disco falla.");
  const fake::Song song{.channels = {frames(512)}, .readError = error};
  const auto result = waveform(*fake::openSong(song), bucketCount);
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error(), LoadError(error));
}

TEST(WaveformTest, EmptyReadEndsTheSongQuietly) {
  const fake::Song song{.channels = {frames(2560)}, .endsEarly = true};
  EXPECT_THAT(waveform(*fake::openSong(song), bucketCount).value(), ElementsAre(1.0));
}

TEST(WaveformTest, BufferWithoutChannelDataEndsTheSongQuietly) {
  const fake::Song song{.channels = {frames(2560)}, .hasChannelData = false};
  EXPECT_THAT(waveform(*fake::openSong(song), bucketCount).value(), IsEmpty());
}

/// A song of 1,000 buckets that rises from nothing to full scale.
fake::Song rise() {
  fake::Song song{.channels = {frames(1'111'000)}};
  for (std::size_t i = 0; i < 1'111'000; ++i)
    song.channels[0][i] = static_cast<float>(i) / 1'111'000.0F;
  return song;
}

TEST(WaveformTest, AnotherReaderTakesTheSecondHalfOfALongSong) {
  fake::Song song = rise();
  song.channels[0].back() = 1;
  const auto alone = waveform(*fake::openSong(song), 1'000).value();
  ASSERT_THAT(alone, SizeIs(1'000));

  fake::Song other = song;
  other.channels[0].back() = 2;
  other.channels[0][700'000] = 2;  // cut to full scale, as all that is louder
  other.channels[0][0] = 2;        // in the half that the first one reads
  song.forAnotherReader = std::make_shared<fake::Song>(other);
  std::vector<std::uint32_t> sizes;
  auto expected = alone;
  expected[700'000 / 1'111] = 1;
  EXPECT_EQ(waveform(*fake::openSong(song, &sizes), 1'000, 2).value(), expected);
  EXPECT_THAT(sizes, SizeIs(500));
}

TEST(WaveformTest, AnotherReaderIsOpenedInTheThreadThatReadsIt) {
  fake::Song song = rise();
  song.forAnotherReader = std::make_shared<fake::Song>(rise());
  std::thread::id opening;
  song.onAnotherReader = [&] { opening = std::this_thread::get_id(); };
  ASSERT_THAT(waveform(*fake::openSong(song), 1'000, 2).value(), SizeIs(1'000));
  EXPECT_NE(opening, std::thread::id());
  EXPECT_NE(opening, std::this_thread::get_id());
}

TEST(WaveformTest, WhatAnotherReaderCannotReadIsReadByTheFirst) {
  const auto alone = waveform(*fake::openSong(rise()), 1'000).value();
  fake::Song failing = rise();
  failing.readError = platform::Error("El disco falla.");
  fake::Song ending = rise();
  ending.endsEarly = true;
  fake::Song withoutMemory = rise();
  withoutMemory.makesBuffers = false;
  for (const fake::Song& other : {failing, ending, withoutMemory}) {
    fake::Song song = rise();
    song.forAnotherReader = std::make_shared<fake::Song>(other);
    std::vector<std::uint32_t> sizes;
    EXPECT_EQ(waveform(*fake::openSong(song, &sizes), 1'000, 2).value(), alone);
    EXPECT_THAT(sizes, SizeIs(1'000));
  }
}

TEST(WaveformTest, ALongSongIsSharedByAsManyReadersAsAreAskedFor) {
  const auto alone = waveform(*fake::openSong(rise()), 1'000, 1).value();
  for (const int readers : {2, 3, 4, 8}) {
    fake::Song song = rise();
    song.forAnotherReader = std::make_shared<fake::Song>(rise());
    std::atomic<int> others = 0;
    song.onAnotherReader = [&] { ++others; };
    std::vector<std::uint32_t> sizes;
    EXPECT_EQ(waveform(*fake::openSong(song, &sizes), 1'000, readers).value(), alone) << readers;
    EXPECT_EQ(others, readers - 1);
    EXPECT_NEAR(static_cast<double>(sizes.size()), 1'000.0 / readers, 1) << readers;
  }
}

TEST(WaveformTest, ASectionWithoutAReaderOfItsOwnIsReadByTheFirst) {
  const auto alone = waveform(*fake::openSong(rise()), 1'000, 1).value();
  fake::Song song = rise();
  song.forAnotherReader = std::make_shared<fake::Song>(rise());
  std::atomic<int> others = 0;
  song.onAnotherReader = [&] {
    if (++others == 2) throw std::bad_alloc();
  };
  std::vector<std::uint32_t> sizes;
  EXPECT_EQ(waveform(*fake::openSong(song, &sizes), 1'000, 4).value(), alone);
  EXPECT_THAT(sizes, SizeIs(500));
}

TEST(WaveformTest, ReadersAreAsManyAsProcessorsWithinLimits) {
  EXPECT_GE(readersForALoad(), 1);
  EXPECT_LE(readersForALoad(), 8);
}

TEST(WaveformTest, ShortSongIsReadByOne) {
  fake::Song song{.channels = {frames(999'999)}};
  song.forAnotherReader = std::make_shared<fake::Song>(rise());
  EXPECT_THAT(waveform(*fake::openSong(song), bucketCount).value(), Each(1.0));
}

}  // namespace
}  // namespace quibel::test
