#include <array>
#include <span>

#include <gtest/gtest.h>

#include "song/formats/Codecs.h"
#include "tests/song/InputOf.h"

namespace quibel::song {
namespace {

using test::FileBytes;

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

TEST(ClockChoice, TimesOfHalfTheRateAreExact) {
  AVInputFormat format{};
  format.name = "mov,mp4,m4a,3gp,3g2,mj2";
  EXPECT_EQ(chooseClock(format, AV_CODEC_ID_AAC, {1, 22'050}, 44'100), Clock::timestamps);
  EXPECT_EQ(chooseClock(format, AV_CODEC_ID_AAC, {1, 11'025}, 44'100), Clock::durations);
  EXPECT_EQ(chooseClock(format, AV_CODEC_ID_AAC, {0, 1}, 44'100), Clock::durations);
}

TEST(ClockChoice, OfAdpcmInWavIsNeverItsTimes) {
  AVInputFormat format{};
  format.name = "wav";
  for (const AVCodecID codec : {AV_CODEC_ID_ADPCM_IMA_WAV, AV_CODEC_ID_ADPCM_MS}) {
    EXPECT_EQ(chooseClock(format, codec, {1, 44'100}, 44'100), Clock::durations);
  }
  EXPECT_EQ(chooseClock(format, AV_CODEC_ID_PCM_S16LE, {1, 44'100}, 44'100), Clock::timestamps);
}

TEST(Preroll, IsWhatEachCodecRemembers) {
  EXPECT_EQ(preroll(AV_CODEC_ID_PCM_S16LE), 0);
  EXPECT_EQ(preroll(AV_CODEC_ID_FLAC), 0);
  EXPECT_EQ(preroll(AV_CODEC_ID_ALAC), 0);
  EXPECT_GE(preroll(AV_CODEC_ID_MP3), 30 * 1152);
  EXPECT_GE(preroll(AV_CODEC_ID_VORBIS), 8192);
  EXPECT_GE(preroll(AV_CODEC_ID_OPUS), 48'000);
  EXPECT_FALSE(preroll(AV_CODEC_ID_AC3)) << "it runs on from the first packet";
  EXPECT_FALSE(preroll(AV_CODEC_ID_WMAV2)) << "not known";
}

/// A packet with these contents.
struct Packet {
  explicit Packet(const FileBytes& bytes) : packet(av_packet_alloc()) {
    if (!packet || av_new_packet(packet.get(), static_cast<int>(bytes.size())) < 0) {
      throw std::bad_alloc();
    }
    std::ranges::copy(bytes, packet->data);
  }
  PacketPointer packet;
};

TEST(PaddingOfAPacket, IsItsSideData) {
  const Packet noted(FileBytes(10));
  EXPECT_EQ(paddingOf(*noted.packet).skip, 0);
  const auto note = FileBytes{}.little(312, 4).little(648, 4).zeros(2);
  std::uint8_t* const data =
      av_packet_new_side_data(noted.packet.get(), AV_PKT_DATA_SKIP_SAMPLES, note.size());
  ASSERT_NE(data, nullptr);
  std::ranges::copy(note, data);
  EXPECT_EQ(paddingOf(*noted.packet).skip, 312);
  EXPECT_EQ(paddingOf(*noted.packet).discard, 648);
}

class Durations : public testing::Test {
 protected:
  Durations()
      : context_(avformat_alloc_context()), stream_(avformat_new_stream(context_.get(), nullptr)) {
    if (stream_ == nullptr) throw std::bad_alloc();
    stream_->codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
    stream_->codecpar->sample_rate = 44'100;
  }

  AVStream& stream(AVCodecID codec, AVRational timeBase) {
    stream_->codecpar->codec_id = codec;
    stream_->time_base = timeBase;
    return *stream_;
  }

 private:
  InputFormatPointer context_;
  AVStream* stream_;
};

TEST_F(Durations, AreTheContainersWhereItCountsFrames) {
  PacketDuration duration(stream(AV_CODEC_ID_AAC, {1, 22'050}));
  Packet aac(FileBytes(10));
  aac.packet->duration = 1024;
  EXPECT_EQ(duration(*aac.packet), 2048);
}

TEST_F(Durations, LongerThanAnyPacketAreNotBelieved) {
  PacketDuration duration(stream(AV_CODEC_ID_AAC, {1, 44'100}));
  Packet aac(FileBytes(10));
  aac.packet->duration = maximumFramesPerPacket;
  EXPECT_EQ(duration(*aac.packet), maximumFramesPerPacket);
  aac.packet->duration = maximumFramesPerPacket + 1;
  EXPECT_EQ(duration(*aac.packet), std::nullopt);
}

TEST_F(Durations, OfMp3AreItsHeadersAndOfWhatLostThemAsManyAsFillIt) {
  PacketDuration duration(stream(AV_CODEC_ID_MP3, {1, 14'112'000}));
  const Packet whole(FileBytes{}.big(0xFFFB9064, 4).zeros(413));
  const Packet damaged(FileBytes{}.big(0xFFFB9064, 4).zeros(4 * 417 - 4));
  EXPECT_EQ(duration(*damaged.packet), 1152) << "nothing says how large they are";
  EXPECT_EQ(duration(*whole.packet), 1152);
  EXPECT_EQ(duration(*damaged.packet), 4 * 1152);
}

TEST_F(Durations, OfOpusAreThePackets) {
  PacketDuration duration(stream(AV_CODEC_ID_OPUS, {1, 1000}));
  EXPECT_EQ(duration(*Packet(FileBytes{31 << 3}).packet), 960);
}

TEST_F(Durations, OfAnUnknownCodecAreUnknown) {
  PacketDuration duration(stream(AV_CODEC_ID_WMAV2, {1, 1000}));
  EXPECT_EQ(duration(*Packet(FileBytes(100)).packet), std::nullopt);
}

}  // namespace
}  // namespace quibel::song
