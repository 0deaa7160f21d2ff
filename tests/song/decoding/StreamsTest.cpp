#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

#include "tests/song/Songs.h"
#include "tests/support/MadeFiles.h"

namespace quibel::test {
namespace {

class Streams : public testing::Test {
 protected:
  std::string file(const std::string& name) const { return (directory_.path() / name).string(); }

  static void ffmpeg(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"ffmpeg", "-v", "error", "-y"});
    run(arguments);
  }

  void encodeVorbis(const std::string& from, const std::string& to) const {
    makeFile({"oggenc", "-Q", "-o", "{out}", "{in}"}, file(from), file(to));
  }

  void encodeAac(const std::string& from, const std::string& to) const {
    makeFile({"ffmpeg", "-v", "error", "-y", "-i", "{in}", "-c:a", "aac", "-aac_pns", "0", "{out}"},
             file(from), file(to));
  }

  void concatenate(const std::string& one, const std::string& other, const std::string& to) const {
    auto bytes = readBytes(file(one));
    const auto more = readBytes(file(other));
    bytes.insert(bytes.end(), more.begin(), more.end());
    writeBytes(file(to), bytes);
  }

  void expectSeeksToBeExact(const std::string& name) const {
    const Sound whole = readAll(file(name));
    const auto song = openSong(file(name));
    for (std::size_t i = 0; i < 40; ++i) {
      const std::size_t frame = (i * 7919 * 13) % (whole.frames() + 1);
      ASSERT_TRUE(song->seek(static_cast<std::int64_t>(frame)));
      ASSERT_LE(greatestDifference(whole, frame, readFrames(*song, 2000)), 1e-6F) << frame;
    }
  }

  TemporaryDirectory directory_;
};

TEST_F(Streams, CoverArtIsNoSound) {
  const Sound source = song(44'100, 2, sourceLength);
  writeWav(file("s.wav"), source);
  // A picture that does not compress: larger than what is looked at to tell a format.
  ffmpeg({"-f", "lavfi", "-i", "nullsrc=s=1500x1500,geq=random(1)*255:128:128", "-frames:v", "1",
          file("art.png")});
  for (const auto& [codec, name] :
       {std::pair{"libmp3lame", "a.mp3"}, {"flac", "a.flac"}, {"alac", "a.m4a"}}) {
    ffmpeg({"-i", file("s.wav"), "-i", file("art.png"), "-map", "0", "-map", "1", "-c:a", codec,
            "-c:v", "copy", "-disposition:v", "attached_pic", file(name)});
    EXPECT_EQ(readAll(file(name)).frames(), sourceLength) << name;
  }
}

TEST_F(Streams, SoundOfAFilmIsTaken) {
  writeWav(file("s.wav"), song(44'100, 2, sourceLength));
  for (const char* name : {"a.mp4", "a.mkv"}) {
    ffmpeg({"-f", "lavfi", "-i", "testsrc=d=2", "-i", file("s.wav"), "-c:v", "mpeg4", "-c:a",
            "alac", file(name)});
    EXPECT_EQ(readAll(file(name)).frames(), sourceLength) << name;
  }
}

TEST_F(Streams, DefaultSoundStreamIsTaken) {
  writeWav(file("short.wav"), song(44'100, 1, 44'100));
  writeWav(file("long.wav"), song(44'100, 2, 66'150));
  for (const char* name : {"a.mka", "a.m4a"}) {
    ffmpeg({"-i", file("short.wav"), "-i", file("long.wav"), "-map", "0", "-map", "1", "-c:a",
            "alac", "-disposition:a:0", "0", "-disposition:a:1", "default", file(name)});
    EXPECT_EQ(readAll(file(name)).frames(), 66'150U) << name;
    ffmpeg({"-i", file("short.wav"), "-i", file("long.wav"), "-map", "0", "-map", "1", "-c:a",
            "alac", "-disposition:a:0", "default", "-disposition:a:1", "0", file(name)});
    EXPECT_EQ(readAll(file(name)).frames(), 44'100U) << name;
  }
}

TEST_F(Streams, ChainedOggIsOneSong) {
  writeWav(file("one.wav"), song(44'100, 2, sourceLength, 1));
  writeWav(file("two.wav"), song(44'100, 2, sourceLength, 5));
  for (const std::string name : {"one", "two"}) {
    encodeVorbis(name + ".wav", name + ".ogg");
  }
  concatenate("one.ogg", "two.ogg", "chain.ogg");
  const Sound one = readAll(file("one.ogg"));
  const Sound two = readAll(file("two.ogg"));
  const Sound chain = readAll(file("chain.ogg"));
  ASSERT_EQ(chain.frames(), 2 * sourceLength);
  EXPECT_EQ(greatestDifference(chain, 0, one), 0);
  EXPECT_EQ(greatestDifference(chain, sourceLength, two), 0);
  expectSeeksToBeExact("chain.ogg");
}

TEST_F(Streams, OggSongBehindOneThatWasCutIsAllThere) {
  for (const std::uint32_t seed : {1U, 2U}) {
    const std::string name = seed == 1 ? "a" : "b";
    writeWav(file(name + ".wav"), song(44'100, 2, sourceLength, seed));
    encodeVorbis(name + ".wav", name + ".ogg");
  }
  auto cut = readBytes(file("a.ogg"));
  cut.resize(cut.size() * 6 / 10);
  writeBytes(file("cut.ogg"), cut);
  concatenate("cut.ogg", "b.ogg", "c.ogg");
  const Sound joined = readAll(file("c.ogg"));
  ASSERT_GT(joined.frames(), sourceLength * 14 / 10);
  EXPECT_EQ(greatestDifference(joined, joined.frames() - sourceLength, readAll(file("b.ogg"))), 0);
  expectSeeksToBeExact("c.ogg");
}

TEST_F(Streams, AnOggFileThatAnotherSongIsJoinedToIsLookedAtAgain) {
  writeWav(file("one.wav"), song(44'100, 2, sourceLength));
  encodeVorbis("one.wav", "one.ogg");
  concatenate("one.ogg", "one.ogg", "chain.ogg");
  ASSERT_EQ(readAll(file("chain.ogg")).frames(), 2 * sourceLength);
  concatenate("chain.ogg", "one.ogg", "chain.ogg");
  EXPECT_EQ(readAll(file("chain.ogg")).frames(), 3 * sourceLength);
}

TEST_F(Streams, ChainedOggKeepsTheFormOfItsFirstSection) {
  writeWav(file("one.wav"), song(44'100, 2, 44'100, 1));
  writeWav(file("two.wav"), song(48'000, 1, 48'000, 5));
  for (const std::string name : {"one", "two"}) {
    encodeVorbis(name + ".wav", name + ".ogg");
  }
  concatenate("one.ogg", "two.ogg", "chain.ogg");
  const Sound chain = readAll(file("chain.ogg"));
  EXPECT_EQ(chain.rate, 44'100);
  ASSERT_EQ(chain.channels.size(), 2U);
  EXPECT_EQ(chain.frames(), 88'200U);
  // The second section is the second song at another rate.
  const Sound expected = song(44'100, 1, 44'100, 9);
  const Sound tone = sine(44'100, 1, 44'100, 220);
  Sound second{44'100, {{chain.channels[0].begin() + 44'100, chain.channels[0].end()}}};
  double same = 0;
  for (std::size_t i = 10'000; i < 40'000; ++i) same += tone.channels[0][i] * second.channels[0][i];
  EXPECT_GT(same / 30'000, 0.03) << "the tone of 220 Hz keeps its pitch and phase";
  expectSeeksToBeExact("chain.ogg");
}

void append(std::vector<std::uint8_t>& bytes, std::uint32_t value, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

TEST_F(Streams, SamplesOfAWavFileMayFillTheUpperPartOfTheirBytes) {
  const Sound source = song(44'100, 2, sourceLength);
  writeWav(file("s.wav"), source);
  const auto plain = readBytes(file("s.wav"));
  constexpr std::size_t header = 44;
  const auto samples = std::span(plain).subspan(header);
  struct Padded {
    std::uint32_t validBits;
    std::uint32_t size;  // of a sample, in bytes
  };
  for (const auto [validBits, size] : {Padded{24, 4}, {20, 4}, {16, 4}, {16, 3}}) {
    const auto dataSize = static_cast<std::uint32_t>(samples.size() / 2 * size);
    std::vector<std::uint8_t> bytes(plain.begin(), plain.begin() + 12);
    append(bytes, 0x20746D66, 4);  // "fmt "
    append(bytes, 40, 4);
    append(bytes, 0xFFFE, 2);
    append(bytes, 2, 2);
    append(bytes, 44'100, 4);
    append(bytes, 44'100 * 2 * size, 4);
    append(bytes, 2 * size, 2);
    append(bytes, 8 * size, 2);
    append(bytes, 22, 2);
    append(bytes, validBits, 2);
    append(bytes, 3, 4);
    // PCM's own name: 00000001-0000-0010-8000-00AA00389B71.
    append(bytes, 1, 4);
    append(bytes, 0x0010'0000, 4);
    append(bytes, 0xAA00'0080, 4);
    append(bytes, 0x719B'3800, 4);
    append(bytes, 0x61746164, 4);  // "data"
    append(bytes, dataSize, 4);
    for (std::size_t i = 0; i < samples.size(); i += 2) {
      append(bytes, 0, size - 2);
      bytes.insert(bytes.end(), {samples[i], samples[i + 1]});
    }
    append(bytes, 0x5453494C, 4);  // "LIST", which is no sound
    append(bytes, 4, 4);
    append(bytes, 0, 4);
    writeBytes(file("a.wav"), bytes);
    const Sound decoded = readAll(file("a.wav"));
    EXPECT_EQ(decoded.frames(), sourceLength) << validBits << " in " << size;
    EXPECT_EQ(greatestDifference(quantized(source, WavFormat::signed16), 0, decoded), 0)
        << validBits << " in " << size;
  }
}

// The checksum of an Ogg page, of which its own four bytes are 0 (RFC 3533, 6).
std::uint32_t oggChecksum(std::span<const std::uint8_t> page) {
  std::uint32_t crc = 0;
  for (const std::uint8_t byte : page) {
    crc ^= std::uint32_t{byte} << 24U;
    for (int bit = 0; bit < 8; ++bit) crc = crc << 1U ^ (crc >> 31U) * 0x04C1'1DB7U;
  }
  return crc;
}

TEST_F(Streams, LastOggPageNeedNotBeMarked) {
  writeWav(file("s.wav"), attacks(44'100, 2, 3 * sourceLength));
  encodeVorbis("s.wav", "a.ogg");
  const Sound marked = readAll(file("a.ogg"));

  auto bytes = readBytes(file("a.ogg"));
  constexpr std::array<std::uint8_t, 4> pattern{'O', 'g', 'g', 'S'};
  const auto found = std::ranges::find_end(bytes, pattern);
  const auto page = std::span(found.begin(), bytes.end());
  ASSERT_EQ(page[5] & 4, 4);
  page[5] &= 0xFB;
  std::ranges::fill(page.subspan(22, 4), 0);
  const std::uint32_t crc = oggChecksum(page);
  for (std::size_t i = 0; i < 4; ++i) page[22 + i] = static_cast<std::uint8_t>(crc >> 8 * i);
  writeBytes(file("b.ogg"), bytes);
  const Sound unmarked = readAll(file("b.ogg"));
  EXPECT_EQ(unmarked.frames(), marked.frames());
  EXPECT_EQ(greatestDifference(marked, 0, unmarked), 0);
}

TEST_F(Streams, TagOfFraunhofersEncoderIsNoSound) {
  writeWav(file("s.wav"), song(44'100, 2, sourceLength));
  makeFile({"lame", "--quiet", "-t", "-b", "128", "{in}", "{out}"}, file("s.wav"),
           file("plain.mp3"));
  const auto plain = readBytes(file("plain.mp3"));
  // A frame of its own in front: a header and, behind 32 empty bytes, the tag.
  std::vector<std::uint8_t> tagged(plain.begin(), plain.begin() + 4);
  tagged.resize(417);
  const std::string tag("VBRI\0\1\x04\x40\0\x50", 10);
  std::ranges::copy(tag, tagged.begin() + 36);
  // The bytes and the frames of all; no table of places.
  for (std::size_t i = 0; i < 4; ++i) {
    tagged[46 + i] = static_cast<std::uint8_t>(plain.size() >> (24 - 8 * i));
  }
  tagged[53] = 77;
  tagged.insert(tagged.end(), plain.begin(), plain.end());
  writeBytes(file("tagged.mp3"), tagged);

  const Sound expected = readAll(file("plain.mp3"));
  const Sound sound = readAll(file("tagged.mp3"));
  EXPECT_EQ(sound.frames(), expected.frames());
  EXPECT_EQ(greatestDifference(expected, 0, sound), 0);
  expectSeeksToBeExact("tagged.mp3");
}

TEST_F(Streams, MatroskaLeavesOutTheDelayThatItNotes) {
  // The element CodecDelay with its size, which FFmpeg writes from version 6.1 on.
  constexpr std::array<std::uint8_t, 3> codecDelay{0x56, 0xAA, 0x84};
  const Sound source = song(44'100, 2, sourceLength);
  writeWav(file("s.wav"), source);
  for (const auto& [codec, delay] : {std::pair{"aac", 1024}, {"libmp3lame", 1105}}) {
    SCOPED_TRACE(codec);
    ffmpeg({"-i", file("s.wav"), "-c:a", codec, file("song.mka")});
    const auto bytes = readBytes(file("song.mka"));
    const bool isNoted = !std::ranges::search(bytes, codecDelay).empty();
    EXPECT_EQ(lagBehind(source, readAll(file("song.mka")), 1200, 1200, 20'000),
              isNoted ? 0 : delay);
  }
}

TEST_F(Streams, SongsJoinedWithTheirTagsAreAllThere) {
  const Sound one = song(44'100, 2, sourceLength, 1);
  const Sound other = song(44'100, 2, sourceLength, 2);
  writeWav(file("one.wav"), one);
  writeWav(file("other.wav"), other);
  // A picture of a million bytes, as if hours of sound were lost.
  const std::vector<std::uint8_t> noise(1'000'000, 0x55);
  makeFile({"lame", "--quiet", "--id3v1-only", "--tt", "Uno", "{in}", "{out}"}, file("one.wav"),
           file("a.mp3"));
  makeFile({"lame", "--quiet", "{in}", "{out}"}, file("other.wav"), file("b.mp3"));
  std::vector<std::uint8_t> tag{'I', 'D', '3', 3, 0, 0, 0, 61, 4, 64};  // 1,000,000 in sevens
  tag.insert(tag.end(), noise.begin(), noise.end());
  writeBytes(file("tag"), tag);
  concatenate("a.mp3", "tag", "c.mp3");
  concatenate("c.mp3", "b.mp3", "d.mp3");

  const Sound joined = readAll(file("d.mp3"));
  // The other's delay and its frame of notes are sound here.
  EXPECT_NEAR(static_cast<double>(joined.frames()), 2.0 * sourceLength, 4 * 1152);
  EXPECT_EQ(lagBehind(one, joined, 1200, 20'000, 20'000), 0);
  Sound second = joined;
  for (auto& channel : second.channels) {
    channel.erase(channel.begin(), channel.begin() + sourceLength);
  }
  EXPECT_NEAR(lagBehind(other, second, 20'000, 30'000, 10'000), 0, 4 * 1152);
  expectSeeksToBeExact("d.mp3");
}

using Bytes = std::vector<std::uint8_t>;

void appendBigEndian(Bytes& bytes, std::int64_t value, int size) {
  for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
    bytes.push_back(static_cast<std::uint8_t>(value >> shift));
  }
}

void appendChunk(Bytes& file, std::string_view name, const Bytes& content) {
  file.insert(file.end(), name.begin(), name.end());
  appendBigEndian(file, std::ssize(content), 8);
  file.insert(file.end(), content.begin(), content.end());
}

// The packets of a raw AAC stream (ISO/IEC 13818-7, 6.2) as a CAF file, with a table that
// says of so many frames that they are the song's, before it and behind it.
Bytes cafOf(const Bytes& stream, std::int64_t song, std::int64_t priming, std::int64_t remainder) {
  constexpr std::size_t header = 7;
  Bytes sizes;
  Bytes data(4);  // an edit count
  std::int64_t packets = 0;
  for (std::size_t at = 0; at + header <= stream.size(); ++packets) {
    const std::size_t size =
        (stream[at + 3] & 3U) << 11U | stream[at + 4] * 8U | stream[at + 5] >> 5U;
    const std::size_t content = size - header;
    if (content >= 128) sizes.push_back(static_cast<std::uint8_t>(0x80U | content >> 7U));
    sizes.push_back(content & 0x7F);
    const auto begin = stream.begin() + static_cast<std::ptrdiff_t>(at + header);
    data.insert(data.end(), begin, begin + static_cast<std::ptrdiff_t>(content));
    at += size;
  }
  Bytes description{0x40, 0xE5, 0x88, 0x80, 0, 0, 0, 0, 'a', 'a', 'c', ' '};  // 44,100.0
  for (const int field : {0, 0, 1024, 2, 0}) appendBigEndian(description, field, 4);
  Bytes table;
  appendBigEndian(table, packets, 8);
  appendBigEndian(table, song, 8);
  appendBigEndian(table, priming, 4);
  appendBigEndian(table, remainder, 4);
  table.insert(table.end(), sizes.begin(), sizes.end());

  Bytes file{'c', 'a', 'f', 'f', 0, 1, 0, 0};
  appendChunk(file, "desc", description);
  // An elementary stream's descriptor with AAC-LC's two bytes (ISO/IEC 14496-1, 7.2.6),
  // its sizes in four bytes each, as other programs write them.
  appendChunk(file, "kuki", {3,    0x80, 0x80, 0x80, 34, 0,    0,    0, 4,    0x80, 0x80, 0x80, 20,
                             0x40, 0x15, 0,    0,    0,  0,    0,    0, 0,    0,    0,    0,    0,
                             5,    0x80, 0x80, 0x80, 2,  0x12, 0x10, 6, 0x80, 0x80, 0x80, 1,    2});
  appendChunk(file, "pakt", table);
  appendChunk(file, "data", data);
  return file;
}

TEST_F(Streams, CafLeavesOutWhatItsPacketTableNotes) {
  const Sound source = song(44'100, 2, sourceLength);
  writeWav(file("s.wav"), source);
  encodeAac("s.wav", "a.aac");
  const auto stream = readBytes(file("a.aac"));
  constexpr std::int64_t frames = 90'112;  // 88 packets
  constexpr auto length = static_cast<std::int64_t>(sourceLength);

  writeBytes(file("a.caf"), cafOf(stream, length, 1024, frames - 1024 - length));
  const Sound decoded = readAll(file("a.caf"));
  EXPECT_EQ(decoded.frames(), sourceLength);
  EXPECT_EQ(lagBehind(source, decoded, 1200, 1200, 20'000), 0);
  expectSeeksToBeExact("a.caf");

  // A table that leaves frames out is none of this stream.
  writeBytes(file("b.caf"), cafOf(stream, length - 1, 1024, frames - 1024 - length));
  EXPECT_EQ(openSong(file("b.caf"))->length(), frames);
}

TEST_F(Streams, FreeFormatIsRefusedWithASentence) {
  writeWav(file("s.wav"), song(44'100, 2, sourceLength));
  makeFile({"lame", "--quiet", "-t", "--freeformat", "-b", "200", "{in}", "{out}"}, file("s.wav"),
           file("free.mp3"));
  EXPECT_EQ(failureOf(file("free.mp3")), "El archivo no es de un formato de audio conocido.");
}

TEST_F(Streams, ChangeOfRateOrChannelsKeepsTheFormOfTheFirstSection) {
  writeWav(file("one.wav"), song(44'100, 2, 44'100));
  writeWav(file("mono.wav"), song(44'100, 1, 44'100));
  writeWav(file("fast.wav"), song(48'000, 2, 48'000));
  for (const std::string name : {"one", "mono", "fast"}) {
    makeFile({"lame", "--quiet", "-t", "{in}", "{out}"}, file(name + ".wav"), file(name + ".mp3"));
    encodeAac(name + ".wav", name + ".aac");
  }
  for (const std::string extension : {".mp3", ".aac"}) {
    const auto length = readAll(file("one" + extension)).frames();
    concatenate("one" + extension, "mono" + extension, "song" + extension);
    Sound sound = readAll(file("song" + extension));
    EXPECT_EQ(sound.channels.size(), 2U);
    EXPECT_EQ(sound.frames(), 2 * length);
    expectSeeksToBeExact("song" + extension);

    concatenate("one" + extension, "fast" + extension, "song" + extension);
    sound = readAll(file("song" + extension));
    EXPECT_EQ(sound.rate, 44'100);
    EXPECT_NEAR(static_cast<double>(sound.frames()), 2.0 * static_cast<double>(length), 2200);
    expectSeeksToBeExact("song" + extension);
  }
}

}  // namespace
}  // namespace quibel::test
