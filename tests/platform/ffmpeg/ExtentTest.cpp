#include <gtest/gtest.h>

#include "platform/ffmpeg/Codecs.h"
#include "platform/ffmpeg/Extent.h"
#include "platform/ffmpeg/Formats.h"
#include "platform/ffmpeg/MovieBoxes.h"
#include "platform/ffmpeg/MpegFrames.h"

namespace quibel::ffmpeg {
namespace {

TEST(PlainExtent, DelayAndPaddingOfThePacketsAreLeftOut) {
  const Counted counted{
      .begin = -312, .skip = 312, .end = 96'000, .packetEnd = 96'648, .lastPacket = 960};
  EXPECT_EQ(extentOf(counted, std::nullopt), (Extent{Clock::timestamps, 0, 96'000}));
}

TEST(PlainExtent, HeaderKnowsOfPaddingInTheLastPacketOnly) {
  const Counted counted{
      .begin = 0, .skip = 0, .end = 10'240, .packetEnd = 10'240, .lastPacket = 1024};
  EXPECT_EQ(extentOf(counted, 10'000).length, 10'000);
  EXPECT_EQ(extentOf(counted, 9'216).length, 10'240) << "a whole packet is no padding";
  EXPECT_EQ(extentOf(counted, 20'000).length, 10'240) << "what is not there cannot be delivered";
}

class MovieExtent : public testing::Test {
 protected:
  static Extent extent(std::vector<Edit> edits, std::optional<GaplessInfo> gapless = {},
                       std::int64_t movieTimescale = 1000) {
    const Extent counted{Clock::timestamps, 0, 91'136};
    return movieExtent(counted, {movieTimescale, 44'100, edits, gapless}, 44'100);
  }
};

TEST_F(MovieExtent, EditIsAppliedAtBothEnds) {
  EXPECT_EQ(extent({{2000, 2112}}), (Extent{Clock::timestamps, 2112, 88'200}));
}

TEST_F(MovieExtent, EditWithoutDurationReachesToTheEnd) {
  EXPECT_EQ(extent({{0, 1024}}), (Extent{Clock::timestamps, 1024, 90'112}));
}

TEST_F(MovieExtent, DurationInCoarseUnitsMeansTheMediasOwnEnd) {
  // 90,112 frames are 2043.4 ms.
  EXPECT_EQ(extent({{2043, 1024}}).length, 90'112);
  EXPECT_EQ(extent({{2044, 1024}}).length, 90'112);
}

TEST_F(MovieExtent, EmptyEditsAreNoPartOfTheSong) {
  EXPECT_EQ(extent({{500, -1}, {2000, 2112}}), (Extent{Clock::timestamps, 2112, 88'200}));
}

TEST_F(MovieExtent, GaplessNoteCountsWithoutAnEdit) {
  const GaplessInfo note{2112, 88'200};
  EXPECT_EQ(extent({}, note), (Extent{Clock::timestamps, 2112, 88'200}));
  EXPECT_EQ(extent({{0, 0}}, note), (Extent{Clock::timestamps, 2112, 88'200}));
}

TEST_F(MovieExtent, GaplessNoteMakesACoarseEditExact) {
  // 88,211 frames are 2000.2 ms.
  EXPECT_EQ(extent({{2000, 2112}}, GaplessInfo{2112, 88'211}).length, 88'211);
  EXPECT_EQ(extent({{1000, 2112}}, GaplessInfo{2112, 88'211}).length, 44'100);
}

TEST_F(MovieExtent, GaplessNoteOfACutFileStillTellsItsDelay) {
  EXPECT_EQ(extent({}, GaplessInfo{2112, 900'000}),
            (Extent{Clock::timestamps, 2112, 91'136 - 2112}));
}

TEST_F(MovieExtent, NotesBeyondTheMediaAreNotBelieved) {
  EXPECT_EQ(extent({{2000, 200'000}}), (Extent{Clock::timestamps, 0, 91'136}));
  EXPECT_EQ(extent({}, GaplessInfo{91'136, 900'000}), (Extent{Clock::timestamps, 0, 91'136}));
  EXPECT_EQ(extent({{9'999'999, 2112}}).length, 91'136 - 2112);
}

TEST(GaplessNote, IsParsed) {
  const auto info = parseGaplessInfo(
      " 00000000 00000840 000001CA 00000000003F31F6 00000000 00000000 00000000 00000000");
  ASSERT_TRUE(info);
  EXPECT_EQ(info->delay, 0x840);
  EXPECT_EQ(info->length, 0x3F31F6);
}

TEST(GaplessNote, NonsenseIsNone) {
  for (const char* text :
       {"", " ", "0", " 0 840 1CA", " 0 zzz 1 1", " 0 840 1CA 0", " 0 FFFFFFFF 0 100",
        " 0 840 1CA FFFFFFFFFFFFFFFFFFFF", " 0 840 1CA FFFFFFFFFFFFFFF"}) {
    EXPECT_FALSE(parseGaplessInfo(text)) << text;
  }
}

TEST(OggBeginning, FollowsFromTheFirstPage) {
  EXPECT_EQ(firstGranule({.first = 43'584, .packetsOnFirstPage = 44, .last = 88'200}, 43'584), 0);
  EXPECT_EQ(firstGranule({.first = 100'000, .packetsOnFirstPage = 9, .last = 188'200}, 8'000),
            92'000)
      << "cut out of a longer stream";
  EXPECT_EQ(
      firstGranule({.first = 64'000, .packetsOnFirstPage = 67, .isOnlyPage = true, .last = 64'000},
                   64'128),
      0)
      << "an only page ends with padding";
}

TEST(OpusPacket, TellsItsFrames) {
  const auto frames = [](std::uint8_t configuration, std::uint8_t code, std::uint8_t count = 0) {
    const std::array<std::uint8_t, 2> bytes{static_cast<std::uint8_t>(configuration << 3 | code),
                                            count};
    return opusPacketFrames(bytes.data(), 2);
  };
  EXPECT_EQ(frames(0, 0), 480);
  EXPECT_EQ(frames(3, 0), 2880);
  EXPECT_EQ(frames(12, 0), 480);
  EXPECT_EQ(frames(13, 1), 1920);
  EXPECT_EQ(frames(16, 0), 120);
  EXPECT_EQ(frames(31, 2), 1920);
  EXPECT_EQ(frames(31, 3, 3), 2880);
  EXPECT_FALSE(opusPacketFrames(nullptr, 0));
}

TEST(MpegFrame, HeaderTellsRateLengthAndSize) {
  const auto parse = [](std::uint32_t word) {
    const std::array<std::uint8_t, 4> bytes{
        static_cast<std::uint8_t>(word >> 24U), static_cast<std::uint8_t>(word >> 16U),
        static_cast<std::uint8_t>(word >> 8U), static_cast<std::uint8_t>(word)};
    return parseMpegHeader(bytes);
  };
  const auto layer3 = parse(0xFFFB9064);
  ASSERT_TRUE(layer3);
  EXPECT_EQ(layer3->sampleRate, 44'100);
  EXPECT_EQ(layer3->frames, 1152);
  EXPECT_EQ(layer3->size, 417);
  const auto low = parse(0xFFF34000);
  ASSERT_TRUE(low);
  EXPECT_EQ(low->sampleRate, 22'050);
  EXPECT_EQ(low->frames, 576);
  for (const std::uint32_t word :
       {0xFFFB0064U, 0xFFFBF064U, 0xFFFB9C64U, 0xFFF99064U & ~0x60000U, 0xFFEB9064U, 0x12345678U}) {
    EXPECT_FALSE(parse(word)) << word;
  }
}

TEST(MpegSong, TagGivesDelayAndPadding) {
  const MpegTag tag{.packets = 78, .delay = 576, .padding = 1080, .hasDelays = true};
  EXPECT_EQ(mpegExtent(78, 1152, tag), (Extent{Clock::timestamps, 1105, 88'200}));
  EXPECT_EQ(mpegExtent(60, 1152, tag).length, 60 * 1152 - 1105) << "cut: no padding is left";
  EXPECT_EQ(mpegExtent(78, 1152, std::nullopt).length, 78 * 1152);
}

TEST(StreamChoice, DefaultAudioThatDecodesGoesFirst) {
  using T = std::vector<StreamTraits>;
  EXPECT_EQ(chooseStream(T{}), -1);
  EXPECT_EQ(chooseStream(T{{false, true, true}}), -1);
  EXPECT_EQ(chooseStream(T{{false, true, true}, {true, false, true}, {true, false, true}}), 1);
  EXPECT_EQ(chooseStream(T{{true, false, true}, {true, true, true}, {true, true, true}}), 1);
  EXPECT_EQ(chooseStream(T{{true, true, false}, {true, false, true}}), 1);
  EXPECT_EQ(chooseStream(T{{true, false, false}}), 0);
}

TEST(ClockChoice, TimesAreTrustedWhereTheyAreFrames) {
  const auto clock = [](const char* container, AVCodecID codec, AVRational unit, int rate) {
    AVInputFormat format{};
    format.name = container;
    return chooseClock(format, codec, unit, rate);
  };
  EXPECT_EQ(clock("mp3", AV_CODEC_ID_MP3, {1, 14'112'000}, 44'100), Clock::timestamps);
  EXPECT_EQ(clock("mov", AV_CODEC_ID_AAC, {1, 22'050}, 44'100), Clock::timestamps);
  EXPECT_EQ(clock("matroska", AV_CODEC_ID_OPUS, {1, 1000}, 48'000), Clock::durations);
  EXPECT_EQ(clock("ac3", AV_CODEC_ID_AC3, {1, 90'000}, 44'100), Clock::durations);
  EXPECT_EQ(clock("matroska", AV_CODEC_ID_ALAC, {1, 1000}, 44'100), Clock::decoding);
  EXPECT_EQ(clock("asf", AV_CODEC_ID_WMAV2, {1, 1000}, 44'100), Clock::decoding);
  EXPECT_EQ(clock("avi", AV_CODEC_ID_MP3, {1, 44'100}, 44'100), Clock::decoding);
}

}  // namespace
}  // namespace quibel::ffmpeg
