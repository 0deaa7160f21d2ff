#include "song/formats/MpegFrames.h"

#include <algorithm>
#include <array>
#include <vector>

#include "song/file/Bytes.h"

namespace quibel::song {

namespace {

// Kilobits per second by their index, of version 1's layers and of version 2's.
using BitRates = std::array<int, 16>;
constexpr BitRates version1Layer1{0,   32,  64,  96,  128, 160, 192, 224,
                                  256, 288, 320, 352, 384, 416, 448, 0};
constexpr BitRates version1Layer2{0,   32,  48,  56,  64,  80,  96,  112,
                                  128, 160, 192, 224, 256, 320, 384, 0};
constexpr BitRates version1Layer3{0,   32,  40,  48,  56,  64,  80,  96,
                                  112, 128, 160, 192, 224, 256, 320, 0};
constexpr BitRates version2Layer1{0,   32,  48,  56,  64,  80,  96,  112,
                                  128, 144, 160, 176, 192, 224, 256, 0};
constexpr BitRates version2Layers23{0,  8,  16, 24,  32,  40,  48,  56,
                                    64, 80, 96, 112, 128, 144, 160, 0};

// The decoder's own delay, which encoders leave to it: half a block of the
// filter bank and one sample.
constexpr std::int64_t decoderDelay = 529;

const BitRates& bitRatesOf(bool isVersion1, int layer) {
  if (layer == 1) return isVersion1 ? version1Layer1 : version2Layer1;
  if (!isVersion1) return version2Layers23;
  return layer == 2 ? version1Layer2 : version1Layer3;
}

// The size of an ID3v2 tag by its ten first bytes: it stands in four bytes of seven bits
// (ID3v2.4.0, 3.1).
std::int64_t sizeOfID3(std::span<const std::uint8_t> header) {
  std::int64_t size = 0;
  for (const std::uint8_t byte : header.subspan(6, 4)) size = size << 7 | (byte & 0x7F);
  const bool hasFooter = (header[5] & 0x10U) != 0;
  return size + (hasFooter ? 20 : 10);
}

std::int64_t skipTags(Input& input) {
  std::int64_t position = 0;
  std::array<std::uint8_t, 10> header{};
  while (input.readAt(position, header) == 10 && startsWith(header, "ID3")) {
    position += sizeOfID3(header);
  }
  return position;
}

// The position after the tags that a song ends with. Where one does not tell its size
// that is the end of the file.
std::int64_t skipTagsAtTheEnd(Input& input, std::int64_t position) {
  while (position < input.size()) {
    std::array<std::uint8_t, 32> header{};
    if (input.readAt(position, header) < 10) break;
    if (startsWith(header, "TAG")) {
      position += 128;  // ID3v1
    } else if (startsWith(header, "ID3")) {
      position += sizeOfID3(header);
    } else if (startsWith(header, "APETAGEX")) {
      // APEv2: bit 29 of the flags tells a header, which its size does not count.
      const std::int64_t size = littleEndian(std::span(header).subspan(12, 4));
      const bool isHeader = (header[23] & 0x20U) != 0;
      position += std::ssize(header) + (isHeader ? size : 0);
    } else if (startsWith(header, "LYRICSBEGIN")) {
      return input.size();
    } else {
      break;
    }
  }
  return position;
}

std::optional<MpegHeader> headerAt(Input& input, std::int64_t position) {
  std::array<std::uint8_t, 4> bytes{};
  if (input.readAt(position, bytes) != 4) return std::nullopt;
  return parseMpegHeader(bytes);
}

// The first frame between two positions that another one follows: a header alone
// may be anything.
std::optional<std::int64_t> findFrame(Input& input, std::int64_t begin, std::int64_t end) {
  std::vector<std::uint8_t> block(std::size_t{64} << 10);
  while (begin < end) {
    const int count = input.readAt(begin, block);
    const auto data = std::span(block).first(static_cast<std::size_t>(std::max(count, 0)));
    for (std::size_t i = 0; i + 4 <= data.size(); ++i) {
      const std::int64_t position = begin + static_cast<std::int64_t>(i);
      if (position >= end) break;
      const auto header = parseMpegHeader(data.subspan(i));
      if (!header) continue;
      const auto following = headerAt(input, position + header->size);
      if (following && following->isLike(*header)) return position;
    }
    if (data.size() < block.size()) break;
    begin += std::ssize(data) - 3;
  }
  return std::nullopt;
}

// Where the file's first frame is. FFmpeg looks for it just as far after the tags.
std::int64_t firstFrame(Input& input) {
  constexpr std::int64_t reach = std::int64_t{64} << 10;
  const std::int64_t behindTags = skipTags(input);
  if (headerAt(input, behindTags)) return behindTags;
  return findFrame(input, behindTags, behindTags + reach).value_or(behindTags);
}

}  // namespace

std::optional<MpegHeader> parseMpegHeader(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < 4 || bytes[0] != 0xFF || (bytes[1] & 0xE0U) != 0xE0U) return std::nullopt;
  const unsigned version = bytes[1] >> 3U & 3U;
  const unsigned layerCode = bytes[1] >> 1U & 3U;
  const unsigned rateCode = bytes[2] >> 2U & 3U;
  if (version == 1 || layerCode == 0 || rateCode == 3) return std::nullopt;

  MpegHeader header;
  header.layer = static_cast<int>(4 - layerCode);
  header.isVersion1 = version == 3;
  constexpr std::array rates{44'100, 48'000, 32'000};
  header.sampleRate = rates[rateCode] >> (version == 3 ? 0 : version == 2 ? 1 : 2);
  header.isMono = (bytes[3] & 0xC0U) == 0xC0U;
  const int bitRate = 1000 * bitRatesOf(header.isVersion1, header.layer)[bytes[2] >> 4U];
  if (bitRate == 0) return std::nullopt;
  const int padding = static_cast<int>(bytes[2] >> 1U & 1U);
  if (header.layer == 1) {
    header.frames = 384;
    header.size = (12 * bitRate / header.sampleRate + padding) * 4;
  } else {
    header.frames = header.layer == 3 && !header.isVersion1 ? 576 : 1152;
    header.size = header.frames / 8 * bitRate / header.sampleRate + padding;
  }
  return header;
}

std::optional<MpegHeader> readFirstMpegHeader(Input& input) {
  return headerAt(input, firstFrame(input));
}

std::optional<MpegTag> readMpegTag(Input& input) {
  std::array<std::uint8_t, 192> frame{};
  const std::int64_t position = firstFrame(input);
  if (input.readAt(position, frame) != static_cast<int>(frame.size())) return std::nullopt;
  const auto header = parseMpegHeader(frame);
  if (!header || header->layer != 3) return std::nullopt;
  // The tag stands where the frame's data would, after the side information.
  const std::size_t sideInformation =
      header->isVersion1 ? (header->isMono ? 17U : 32U) : (header->isMono ? 9U : 17U);
  auto rest = std::span<const std::uint8_t>(frame).subspan(4 + sideInformation);
  if (!startsWith(rest, "Xing") && !startsWith(rest, "Info")) return std::nullopt;
  const std::int64_t fields = bigEndian(rest.subspan(4, 4));
  rest = rest.subspan(8);
  const auto take = [&](std::size_t count) {
    const auto taken = rest.first(count);
    rest = rest.subspan(count);
    return taken;
  };
  MpegTag tag{.position = position};
  if ((fields & 1) != 0) tag.packets = bigEndian(take(4));
  if ((fields & 2) != 0) take(4);    // bytes
  if ((fields & 4) != 0) take(100);  // table of contents
  if ((fields & 8) != 0) take(4);    // quality
  // LAME's part, which FFmpeg writes too: a name, and the delays at its byte 21.
  if (startsWith(rest, "LAME") || startsWith(rest, "Lavf") || startsWith(rest, "Lavc")) {
    const std::int64_t delays = bigEndian(rest.subspan(21, 3));
    tag.delay = delays >> 12;
    tag.padding = delays & 0xFFF;
    tag.hasDelays = true;
  }
  return tag;
}

bool beginsTag(std::span<const std::uint8_t> bytes) {
  return startsWith(bytes, "TAG") || startsWith(bytes, "APETAGEX") ||
         startsWith(bytes, "LYRICSBEGIN") || startsWith(bytes, "ID3");
}

std::optional<PacketIndex> indexMpegPackets(Input& input, std::int64_t position) {
  std::vector<std::uint8_t> block(std::size_t{256} << 10);
  std::int64_t blockBegin = 0;
  std::span<const std::uint8_t> data;
  const auto at = [&](std::int64_t place) {
    if (place < blockBegin || place + 16 > blockBegin + std::ssize(data)) {
      const int count = input.readAt(place, block);
      blockBegin = place;
      data = std::span(block).first(static_cast<std::size_t>(std::max(count, 0)));
    }
    return data.subspan(static_cast<std::size_t>(place - blockBegin));
  };
  std::optional<MpegHeader> first;
  PacketIndex index;
  while (position < input.size()) {
    const auto bytes = at(position);
    const auto header = parseMpegHeader(bytes);
    if (!header || (first && !header->isLike(*first))) {
      if (!first) return std::nullopt;
      // Frames behind what is none: the stream is broken here, and goes on.
      if (findFrame(input, skipTagsAtTheEnd(input, position), input.size())) return std::nullopt;
      break;
    }
    if (!first) {
      first = header;
      index.packetFrames = header->frames;
    }
    if (position + header->size > input.size()) break;
    if (index.packets % PacketIndex::step == 0) index.places.push_back(position);
    position += header->size;
    ++index.packets;
  }
  return index;
}

SongRange mpegRange(std::int64_t packets, int packetFrames, const std::optional<MpegTag>& tag) {
  SongRange range;
  std::int64_t end = packets * packetFrames;
  if (tag && tag->hasDelays) {
    range.origin = std::min(end, tag->delay + decoderDelay);
    // In a file that is not the one that the tag was made for, who knows.
    if (tag->packets == packets) end -= std::max<std::int64_t>(0, tag->padding - decoderDelay);
  }
  range.length = std::max<std::int64_t>(0, end - range.origin);
  return range;
}

}  // namespace quibel::song
