#include <array>

#include <gtest/gtest.h>

#include "song/formats/MpegFrames.h"
#include "tests/song/InputOf.h"

namespace quibel::song {
namespace {

using test::FileBytes;
using test::inputOf;

constexpr std::int64_t layer3 = 0xFFFB9064;  // 128 kbit/s at 44.1 kHz in stereo
constexpr std::int64_t frameSize = 417;

FileBytes frame(std::int64_t header = layer3) {
  FileBytes bytes;
  bytes.big(header, 4);
  return bytes.zeros(static_cast<std::size_t>(parseMpegHeader(bytes)->size) - 4);
}

FileBytes frames(int count, std::int64_t header = layer3) {
  FileBytes bytes;
  for (int i = 0; i < count; ++i) bytes.bytes(frame(header));
  return bytes;
}

FileBytes id3(std::int64_t size) {
  const auto header = FileBytes{}.text("ID3").big(0x030000, 3).big(0, 2).big(size >> 7, 1);
  return FileBytes{header}.big(size & 0x7F, 1).zeros(static_cast<std::size_t>(size));
}

/// A first frame whose tag states 77 frames and, if `program` is one that does, delays.
FileBytes tagFrame(std::string_view program, std::int64_t header = layer3,
                   std::size_t sideInformation = 32) {
  FileBytes bytes;
  bytes.big(header, 4)
      .zeros(sideInformation)
      .text("Xing")
      .big(0xF, 4)
      .big(77, 4)
      .zeros(4 + 100 + 4);
  bytes.text(program).zeros(21 - program.size()).big(576 << 12 | 1080, 3);
  return bytes.zeros(static_cast<std::size_t>(parseMpegHeader(bytes)->size) - bytes.size());
}

TEST(MpegFrame, HeaderTellsRateLengthAndSize) {
  const auto parse = [](std::uint32_t word) {
    const std::array<std::uint8_t, 4> bytes{
        static_cast<std::uint8_t>(word >> 24U), static_cast<std::uint8_t>(word >> 16U),
        static_cast<std::uint8_t>(word >> 8U), static_cast<std::uint8_t>(word)};
    return parseMpegHeader(bytes);
  };
  const auto high = parse(std::uint32_t{layer3});
  ASSERT_TRUE(high);
  EXPECT_EQ(high->sampleRate, 44'100);
  EXPECT_EQ(high->frames, 1152);
  EXPECT_EQ(high->size, 417);
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
  EXPECT_EQ(mpegRange(78, 1152, tag), (SongRange{Clock::timestamps, 1105, 88'200}));
  EXPECT_EQ(mpegRange(60, 1152, tag).length, 60 * 1152 - 1105) << "cut: no padding is left";
  EXPECT_EQ(mpegRange(78, 1152, std::nullopt).length, 78 * 1152);
}

TEST(MpegTag, StatesFramesAndDelays) {
  for (const char* program : {"LAME3.100", "Lavf", "Lavc60.31"}) {
    const auto tag = readMpegTag(*inputOf(tagFrame(program)));
    ASSERT_TRUE(tag) << program;
    EXPECT_EQ(tag->position, 0);
    EXPECT_EQ(tag->packets, 77);
    EXPECT_TRUE(tag->hasDelays);
    EXPECT_EQ(tag->delay, 576);
    EXPECT_EQ(tag->padding, 1080);
  }
}

TEST(MpegTag, OfAnotherProgramStatesNoDelays) {
  const auto tag = readMpegTag(*inputOf(tagFrame("GOGO")));
  ASSERT_TRUE(tag);
  EXPECT_EQ(tag->packets, 77);
  EXPECT_FALSE(tag->hasDelays);
}

TEST(MpegTag, FollowsTheSideInformation) {
  struct Case {
    std::int64_t header;
    std::size_t sideInformation;
  };
  for (const auto& [header, sideInformation] :
       {Case{0xFFFB90C4, 17}, Case{0xFFF3A064, 17}, Case{0xFFF3A0C4, 9}}) {
    const auto tag = readMpegTag(*inputOf(tagFrame("LAME", header, sideInformation)));
    ASSERT_TRUE(tag) << header;
    EXPECT_EQ(tag->delay, 576) << header;
  }
}

TEST(MpegTag, StandsInTheFirstFrameAfterOtherTags) {
  const auto bytes = id3(300).bytes(id3(20)).bytes(tagFrame("LAME")).bytes(frames(2));
  EXPECT_EQ(readMpegTag(*inputOf(bytes))->position, 340);
  EXPECT_FALSE(readMpegTag(*inputOf(frames(3))));
}

TEST(FirstMpegFrame, IsFoundAfterTagsAndZeros) {
  const auto bytes = id3(300).zeros(500).bytes(frames(2));
  EXPECT_EQ(readFirstMpegHeader(*inputOf(bytes))->size, frameSize);
  EXPECT_FALSE(readFirstMpegHeader(*inputOf(FileBytes(5000))));
}

TEST(FirstMpegFrame, IsFollowedByAnother) {
  // What looks like a frame of another rate stands alone in what is none.
  const auto bytes = FileBytes(100).bytes(frame(0xFFF3A064)).zeros(100).bytes(frames(2));
  EXPECT_EQ(readFirstMpegHeader(*inputOf(bytes))->sampleRate, 44'100);
}

TEST(MpegIndex, HasEveryWholeFrameAndEveryThirtySecondPlace) {
  FileBytes bytes = frames(70);
  bytes.pop_back();
  const auto index = indexMpegPackets(*inputOf(bytes), 0);
  ASSERT_TRUE(index);
  EXPECT_EQ(index->packets, 69);
  EXPECT_EQ(index->packetFrames, 1152);
  EXPECT_EQ(index->places, (std::vector<std::int64_t>{0, 32 * frameSize, 64 * frameSize}));
  EXPECT_EQ(indexMpegPackets(*inputOf(bytes), 3 * frameSize)->places.at(0), 3 * frameSize);
}

TEST(MpegIndex, EndsAtTagsAndWhatElseFollowsTheSong) {
  const auto apeHeader = FileBytes{}
                             .text("APETAGEX")
                             .little(2000, 4)
                             .little(40 + 32, 4)
                             .little(1, 4)
                             .little(std::int64_t{1} << 29, 4)
                             .zeros(8);
  for (const FileBytes& end :
       {FileBytes{}, FileBytes{}.text("TAG").zeros(125), FileBytes{}.text("nonsense").zeros(900),
        FileBytes{id3(40)}, FileBytes{apeHeader}.zeros(72),
        FileBytes{}.text("LYRICSBEGIN").bytes(frames(2))}) {
    EXPECT_EQ(indexMpegPackets(*inputOf(frames(5).bytes(end)), 0)->packets, 5);
  }
}

TEST(MpegIndex, IsNoneOfABrokenStreamOrOfTwo) {
  EXPECT_FALSE(indexMpegPackets(*inputOf(frames(5).zeros(50).bytes(frames(5))), 0));
  EXPECT_FALSE(indexMpegPackets(*inputOf(frames(5).bytes(frames(5, 0xFFFB9464))), 0))
      << "another rate";
  EXPECT_FALSE(indexMpegPackets(*inputOf(frames(5).text("TAG").zeros(125).bytes(frames(5))), 0));
  EXPECT_FALSE(indexMpegPackets(*inputOf(FileBytes(5000)), 0));
}

TEST(MpegTags, AreKnownByTheirBeginning) {
  const auto begins = [](std::string_view text) { return beginsTag(FileBytes{}.text(text)); };
  for (const char* text : {"TAGx", "ID3x", "APETAGEX", "LYRICSBEGIN"}) EXPECT_TRUE(begins(text));
  for (const char* text : {"", "TA", "xTAG", "APETAG", "LYRICS"}) EXPECT_FALSE(begins(text));
}

}  // namespace
}  // namespace quibel::song
