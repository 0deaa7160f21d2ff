#include "song/decoding/PacketCount.h"

#include <algorithm>
#include <array>
#include <new>
#include <span>
#include <string_view>

#include "song/formats/MpegFrames.h"

namespace quibel::song {

namespace {

bool beginsAnotherSection(const AVPacket& packet) {
  return av_packet_get_side_data(&packet, AV_PKT_DATA_NEW_EXTRADATA, nullptr) != nullptr ||
         av_packet_get_side_data(&packet, AV_PKT_DATA_PARAM_CHANGE, nullptr) != nullptr;
}

// FFmpeg's FLAC decoder refuses frames of another depth than the stream began
// with: to it the song ends there. The depth is in bits 1 to 3 of a frame's
// fourth byte (RFC 9639, 9.1.4), 0 for the stream's own.
bool changesDepth(const AVPacket& packet, const AVCodecParameters& codec) {
  constexpr std::array depths{0, 8, 12, 0, 16, 20, 24, 32};
  if (codec.codec_id != AV_CODEC_ID_FLAC || packet.size < 4 || codec.bits_per_raw_sample <= 0) {
    return false;
  }
  const int depth = depths[packet.data[3] >> 1U & 7U];
  return depth != 0 && depth != codec.bits_per_raw_sample;
}

// The rate that a packet of a raw stream states, if it is an undamaged one: for
// MPEG audio as its header says, for ADTS by its index (ISO/IEC 13818-7, 6.2.1).
std::optional<int> statedRate(const AVPacket& packet, std::string_view container) {
  const auto bytes = std::span(packet.data, static_cast<std::size_t>(packet.size));
  if (container == "mp3") {
    const auto header = parseMpegHeader(bytes);
    if (header && header->size == packet.size) return header->sampleRate;
  } else if (container == "aac" && bytes.size() >= 7 && bytes[0] == 0xFF) {
    const unsigned size = (bytes[3] & 3U) << 11U | bytes[4] * 8U | bytes[5] >> 5U;
    if (size == bytes.size()) return static_cast<int>(bytes[2] >> 2U & 15U);
  }
  return std::nullopt;
}

// An Ogg page ends at most so many packets.
constexpr std::size_t firstPackets = 255;

}  // namespace

platform::Result<PacketCount> countPackets(const Input& input, Demuxer& demuxer, PacketClock& clock,
                                           std::int64_t limit) {
  const PacketPointer packet(av_packet_alloc());
  if (!packet) throw std::bad_alloc();
  PacketCount tally;
  PacketTotals& totals = tally.totals;
  std::int64_t next = 0;
  std::optional<int> firstRate;
  Demuxer::Status status = demuxer.read(*packet);
  for (; status == Demuxer::Status::packet && tally.packets < limit;
       status = demuxer.read(*packet)) {
    if (changesDepth(*packet, *demuxer.stream().codecpar)) break;
    const auto rate = statedRate(*packet, demuxer.format().iformat->name);
    if (!firstRate) firstRate = rate;
    if (rate && rate != firstRate) tally.changes = true;
    const std::int64_t position = clock.position(*packet).value_or(next);
    const auto duration = clock.duration();
    // What is no frame of FLAC's any more tells none; the next one is numbered.
    const bool isNumbered = demuxer.stream().codecpar->codec_id == AV_CODEC_ID_FLAC;
    if (!duration && !(isNumbered && clock.kind() == Clock::timestamps)) tally.isCountable = false;
    const Padding padding = paddingOf(*packet);
    if (tally.packets == 0) {
      totals = {.begin = position, .skip = padding.skip, .end = position, .packetEnd = position};
    } else if (beginsAnotherSection(*packet) || position < next - totals.lastPacket) {
      tally.changes = true;
    }
    if (tally.packets == 1) tally.secondPosition = position;
    if (tally.firstDurations.size() < firstPackets) {
      tally.firstDurations.push_back(duration.value_or(0));
    }
    next = position + duration.value_or(0);
    totals.end = std::max(totals.end, next - padding.discard);
    totals.packetEnd = std::max(totals.packetEnd, next);
    totals.lastPacket = std::max(totals.lastPacket, duration.value_or(0));
    tally.durations += duration.value_or(0);
    ++tally.packets;
  }
  if (status == Demuxer::Status::error) return std::unexpected(failureOf(input));
  return tally;
}

}  // namespace quibel::song
