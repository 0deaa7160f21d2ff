#include <gtest/gtest.h>

#include "song/decoding/PaddedWav.h"
#include "tests/song/InputOf.h"

namespace quibel::song {
namespace {

using test::FileBytes;
using test::inputOf;

struct Wav {
  int tag = 0xFFFE;
  int channels = 2;
  int frameSize = 8;
  int validBits = 24;
  int kind = 1;
  std::int64_t dataSize = 16;
  std::size_t there = 16;  ///< bytes of data
};

FileBytes file(const Wav& wav) {
  FileBytes bytes;
  bytes.text("RIFF").little(0, 4).text("WAVE");
  bytes.text("LIST").little(3, 4).zeros(4);  // of an odd size: a byte is added
  bytes.text("fmt ").little(40, 4).little(wav.tag, 2).little(wav.channels, 2).little(44'100, 4);
  bytes.little(0, 4).little(wav.frameSize, 2).little(0, 2).little(22, 2).little(wav.validBits, 2);
  bytes.little(3, 4).little(wav.kind, 2).zeros(14);
  return bytes.text("data").little(wav.dataSize, 4).zeros(wav.there);
}

constexpr std::int64_t header = 12 + 12 + 48 + 8;

TEST(PaddedWav, IsReadByTheSizeOfItsSamples) {
  struct Case {
    int frameSize, validBits;
    AVCodecID codec;
  };
  for (const auto& [frameSize, validBits, codec] :
       {Case{8, 24, AV_CODEC_ID_PCM_S32LE}, Case{8, 20, AV_CODEC_ID_PCM_S32LE},
        Case{6, 16, AV_CODEC_ID_PCM_S24LE}, Case{4, 8, AV_CODEC_ID_PCM_S16LE}}) {
    const auto layout =
        readPaddedWav(*inputOf(file({.frameSize = frameSize, .validBits = validBits})));
    ASSERT_TRUE(layout) << validBits;
    EXPECT_EQ(layout->codec, codec) << validBits;
    EXPECT_EQ(layout->channels, 2);
    EXPECT_EQ(layout->rate, 44'100);
    EXPECT_EQ(layout->begin, header);
    EXPECT_EQ(layout->end, header + 16);
  }
}

TEST(PaddedWav, IsNoneThatFfmpegReadsRight) {
  for (const Wav& wav : {Wav{.validBits = 32}, Wav{.validBits = 25}, Wav{.validBits = 0},
                         Wav{.tag = 1}, Wav{.kind = 3}, Wav{.channels = 0}, Wav{.channels = 65},
                         Wav{.frameSize = 7}, Wav{.frameSize = 16, .validBits = 48}}) {
    EXPECT_FALSE(readPaddedWav(*inputOf(file(wav))));
  }
  FileBytes other = file({});
  other[8] = 'x';
  EXPECT_FALSE(readPaddedWav(*inputOf(other)));
}

TEST(PaddedWav, EndsWithItsDataOrWithTheFile) {
  const auto end = [](std::int64_t stated, std::size_t there) {
    return readPaddedWav(*inputOf(file({.dataSize = stated, .there = there})))->end - header;
  };
  EXPECT_EQ(end(16, 100), 16);
  EXPECT_EQ(end(100, 16), 16);
  EXPECT_EQ(end(0, 24), 24) << "written into a pipe";
  EXPECT_EQ(end(0xFFFF'FFFF, 24), 24) << "written into a pipe";
}

}  // namespace
}  // namespace quibel::song
