// Songs whose headers claim lengths that nothing in the file bears out. A length
// that is believed has to be delivered: years of silence, here.

#include <algorithm>
#include <span>
#include <stdexcept>
#include <string_view>

#include <gtest/gtest.h>

#include "song/decoding/OpenSong.h"
#include "tests/song/Songs.h"

namespace quibel::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

class Claims : public testing::Test {
 protected:
  Bytes make(const std::string& name) {
    const auto format = std::ranges::find(songFormats(), name, &SongFormat::name);
    if (format == songFormats().end()) throw std::logic_error("no format " + name);
    const auto wav = directory_.path() / "source.wav";
    writeWav(wav, song(format->rate, 2, 44'100));
    song_ = makeSong(*format, wav);
    honest_ = readAll(song_);
    return readBytes(song_);
  }

  /// The song is what it is without the claim, and can be read to its end.
  void expectNoMoreThanThereIs(const Bytes& bytes) {
    writeBytes(song_, bytes);
    const auto claiming = song::openAudioFile(platform::FileURL(song_));
    ASSERT_TRUE(claiming) << claiming.error().localizedDescription();
    ASSERT_LE((*claiming)->length(), static_cast<std::int64_t>(honest_.frames()) + 5000);
    ASSERT_GE((*claiming)->length(), static_cast<std::int64_t>(honest_.frames()) - 5000);
    const Sound sound = readAll(**claiming);
    EXPECT_EQ(greatestDifference(honest_, 0, cut(sound, 20'000)), 0);
  }

 private:
  static Sound cut(Sound sound, std::size_t frames) {
    for (auto& channel : sound.channels) channel.resize(std::min(channel.size(), frames));
    return sound;
  }

  TemporaryDirectory directory_;
  std::filesystem::path song_;
  Sound honest_;
};

std::size_t lastPlace(const Bytes& bytes, const std::string& text) {
  const auto found = std::ranges::find_end(bytes, text);
  if (found.empty()) throw std::logic_error("no " + text);
  return static_cast<std::size_t>(found.begin() - bytes.begin());
}

void writeBigEndian(Bytes& bytes, std::size_t at, std::uint64_t value, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    bytes.at(at + size - 1 - i) = static_cast<std::uint8_t>(value >> 8 * i);
  }
}

// RFC 3533, 6: the checksum of a page is made with its own field empty.
void writePageChecksum(Bytes& bytes, std::size_t page) {
  constexpr std::size_t field = 22;
  std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(page + field), 4, std::uint8_t{0});
  std::uint32_t checksum = 0;
  for (std::size_t i = page; i < bytes.size(); ++i) {
    checksum ^= std::uint32_t{bytes[i]} << 24U;
    for (int bit = 0; bit < 8; ++bit) {
      checksum = checksum << 1U ^ ((checksum & 0x80000000U) != 0 ? 0x04C11DB7U : 0U);
    }
  }
  for (std::size_t i = 0; i < 4; ++i) {
    bytes[page + field + i] = static_cast<std::uint8_t>(checksum >> 8 * i);
  }
}

TEST_F(Claims, OggWhoseLastPageIsYearsAway) {
  for (const char* format : {"Vorbis", "Opus"}) {
    Bytes bytes = make(format);
    const std::size_t page = lastPlace(bytes, "OggS");
    bytes[page + 6 + 5] = 1;  // of its granule position
    writePageChecksum(bytes, page);
    expectNoMoreThanThereIs(bytes);
  }
}

TEST_F(Claims, Mp4WhosePacketsLastForDays) {
  for (const char* format : {"AacM4a", "Alac"}) {
    // The second is not too long for one packet, but for all of them.
    for (const std::uint64_t length : {0x10000000U, 0x1FFFFFU}) {
      Bytes bytes = make(format);
      // The first entry of the table of the packets' lengths.
      const std::size_t table = lastPlace(bytes, "stts");
      writeBigEndian(bytes, table + 16, length, 4);
      expectNoMoreThanThereIs(bytes);
    }
  }
}

TEST_F(Claims, Mp4WhoseTrackLastsForDays) {
  Bytes bytes = make("AacM4a");
  writeBigEndian(bytes, lastPlace(bytes, "mdhd") + 20, 0x7FFFFFFF, 4);
  writeBigEndian(bytes, lastPlace(bytes, "tkhd") + 24, 0x7FFFFFFF, 4);
  writeBigEndian(bytes, lastPlace(bytes, "elst") + 12, 0x7FFFFFFF, 4);
  expectNoMoreThanThereIs(bytes);
}

TEST_F(Claims, FlacWhoseHeaderCountsTooMuch) {
  Bytes bytes = make("Flac");
  // The low four bytes of the total in STREAMINFO (RFC 9639, 8.2).
  writeBigEndian(bytes, 8 + 14, 0xF0000000, 4);
  expectNoMoreThanThereIs(bytes);
}

TEST_F(Claims, WavWhoseChunkIsLargerThanTheFile) {
  Bytes bytes = make("Wav16");
  const std::size_t chunk = lastPlace(bytes, "data");
  std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(chunk) + 4, 4, std::uint8_t{0xF0});
  expectNoMoreThanThereIs(bytes);
}

TEST_F(Claims, Mp3WhoseTagCountsTooMuch) {
  Bytes bytes = make("Mp3VariableRate");
  writeBigEndian(bytes, lastPlace(bytes, "Xing") + 8, 0x0FFFFFFF, 4);
  expectNoMoreThanThereIs(bytes);
}

TEST_F(Claims, WavPackWhoseBlocksCountTooMuch) {
  Bytes bytes = make("WavPack");
  for (std::size_t i = 0; i + 16 < bytes.size(); ++i) {
    if (std::ranges::equal(std::span(bytes).subspan(i, 4), std::string_view("wvpk"))) {
      std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(i) + 12, 4, std::uint8_t{0x70});
    }
  }
  expectNoMoreThanThereIs(bytes);
}

TEST_F(Claims, MoreChannelsThanAnySongHas) {
  Bytes bytes = make("Au");
  // Its buffers would take half a gigabyte.
  writeBigEndian(bytes, 20, 0x8002, 4);
  const TemporaryDirectory directory;
  writeBytes(directory.path() / "song.au", bytes);
  EXPECT_EQ(failureOf(directory.path() / "song.au"),
            "El archivo está dañado y no se puede decodificar.");
}

}  // namespace
}  // namespace quibel::test
