#include <gtest/gtest.h>

#include "song/formats/Formats.h"

namespace quibel::song {
namespace {

bool isAllowed(const char* names) {
  AVInputFormat format{};
  format.name = names;
  return isAllowedFormat(format);
}

TEST(Formats, AreKnownByTheFirstOfTheirNames) {
  EXPECT_TRUE(isAllowed("wav"));
  EXPECT_TRUE(isAllowed("aac"));   // the first of the list …
  EXPECT_TRUE(isAllowed("xwma"));  // … and the last
  EXPECT_TRUE(isAllowed("mov,mp4,m4a,3gp,3g2,mj2"));
  EXPECT_FALSE(isAllowed("hls,mov"));
}

TEST(Formats, ThatNameOtherFilesOrAreTextAreNotAllowed) {
  for (const char* name : {"hls", "concat", "dash", "sdp", "rtsp", "image2", "srt", "webvtt", "ass",
                           "lavfi", "tty", "png_pipe", "applehttp", "", "wa", "wave", ","}) {
    EXPECT_FALSE(isAllowed(name)) << name;
  }
}

TEST(Codecs, AreThoseOfSoundAlone) {
  for (const AVCodecID codec : {AV_CODEC_ID_MP3, AV_CODEC_ID_AAC, AV_CODEC_ID_FLAC,
                                AV_CODEC_ID_VORBIS, AV_CODEC_ID_OPUS, AV_CODEC_ID_PCM_S16LE}) {
    EXPECT_NE(decoderFor(codec), nullptr) << avcodec_get_name(codec);
  }
  for (const AVCodecID codec : {AV_CODEC_ID_PNG, AV_CODEC_ID_H264, AV_CODEC_ID_MPEG4,
                                AV_CODEC_ID_SUBRIP, AV_CODEC_ID_NONE}) {
    EXPECT_EQ(decoderFor(codec), nullptr) << avcodec_get_name(codec);
  }
}

TEST(Codecs, OfMpegDecodeToFloats) {
  EXPECT_STREQ(decoderFor(AV_CODEC_ID_MP1)->name, "mp1float");
  EXPECT_STREQ(decoderFor(AV_CODEC_ID_MP2)->name, "mp2float");
  EXPECT_STREQ(decoderFor(AV_CODEC_ID_MP3)->name, "mp3float");
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

}  // namespace
}  // namespace quibel::song
