#include "platform/ffmpeg/Measure.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <new>
#include <numeric>
#include <span>
#include <string_view>
#include <vector>

#include "platform/ffmpeg/Errors.h"
#include "platform/ffmpeg/FrameSource.h"
#include "platform/ffmpeg/MovieBoxes.h"
#include "platform/ffmpeg/OggPages.h"

namespace quibel::ffmpeg {

namespace {

/// The extents of the files measured last, so that playing and exporting a song
/// does not count it again.
class ExtentCache {
 public:
  std::optional<Extent> find(const FileIdentity& file) {
    const std::lock_guard lock(mutex_);
    for (const Entry& entry : entries_) {
      if (entry.isUsed && entry.file == file) return entry.extent;
    }
    return std::nullopt;
  }

  void store(const FileIdentity& file, const Extent& extent) {
    const std::lock_guard lock(mutex_);
    entries_[oldest_] = {true, file, extent};
    oldest_ = (oldest_ + 1) % entries_.size();
  }

 private:
  struct Entry {
    bool isUsed = false;
    FileIdentity file;
    Extent extent;
  };

  std::mutex mutex_;
  std::array<Entry, 8> entries_;
  std::size_t oldest_ = 0;
};

ExtentCache& cache() {
  static ExtentCache instance;
  return instance;
}

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

// The bits of a frame's header that say its rate, in raw streams of frames that
// carry one: MPEG audio (ISO/IEC 11172-3, 2.4.1.3) and ADTS (ISO/IEC 13818-7, 6.2.1).
unsigned rateBits(const AVPacket& packet, std::string_view container) {
  if (packet.size < 3) return 0;
  if (container == "mp3") return (packet.data[1] & 0x18U) << 8U | (packet.data[2] & 0x0CU);
  if (container == "aac") return packet.data[2] & 0x3CU;
  return 0;
}

/// Everything that a pass over the packets gathers.
struct Tally {
  Counted counted;
  std::vector<std::int64_t> firstDurations;  ///< of the first packets
  std::optional<std::int64_t> secondPosition;
  bool changes = false;  ///< the stream begins anew, or its times run backwards
  bool isCountable = true;
  std::int64_t packets = 0;
  std::int64_t durations = 0;  ///< their sum

  /// Whether packets' times leave out more than the packets hold: then they are
  /// no times of this stream.
  bool leavesOutMost() const { return counted.packetEnd - counted.begin > 2 * durations; }
};

// An Ogg page ends at most so many packets.
constexpr std::size_t firstPackets = 255;

platform::Result<Tally> countPackets(Input& input, Demuxer& demuxer, PacketClock& clock) {
  const PacketPointer packet(av_packet_alloc());
  if (!packet) throw std::bad_alloc();
  Tally tally;
  Counted& counted = tally.counted;
  std::int64_t next = 0;
  unsigned firstRateBits = 0;
  Demuxer::Status status = demuxer.read(*packet);
  for (; status == Demuxer::Status::packet; status = demuxer.read(*packet)) {
    if (changesDepth(*packet, *demuxer.stream().codecpar)) break;
    const unsigned bits = rateBits(*packet, demuxer.format().iformat->name);
    if (tally.packets == 0) firstRateBits = bits;
    if (bits != firstRateBits) tally.changes = true;
    const std::int64_t position = clock.position(*packet).value_or(next);
    const auto duration = clock.duration();
    if (!duration) tally.isCountable = false;
    const Padding padding = paddingOf(*packet);
    if (tally.packets == 0) {
      counted = {.begin = position, .skip = padding.skip, .end = position, .packetEnd = position};
    } else if (beginsAnotherSection(*packet) || position < next - counted.lastPacket) {
      tally.changes = true;
    }
    if (tally.packets == 1) tally.secondPosition = position;
    if (tally.firstDurations.size() < firstPackets) {
      tally.firstDurations.push_back(duration.value_or(0));
    }
    next = position + duration.value_or(0);
    counted.end = std::max(counted.end, next - padding.discard);
    counted.packetEnd = std::max(counted.packetEnd, next);
    counted.lastPacket = std::max(counted.lastPacket, duration.value_or(0));
    tally.durations += duration.value_or(0);
    ++tally.packets;
  }
  if (status == Demuxer::Status::error) return std::unexpected(failureOf(input));
  return tally;
}

// The whole stream is decoded: its length is what comes out.
platform::Result<Extent> countFrames(const std::shared_ptr<Input>& input,
                                     FrameSource::Plan plan) {
  auto demuxer = Demuxer::open(input);
  if (!demuxer) return std::unexpected(demuxer.error());
  plan.clock = Clock::decoding;
  auto source = FrameSource::open(input, std::move(*demuxer), plan);
  if (!source) return std::unexpected(source.error());
  std::int64_t length = 0;
  FrameSource::Status status = source->next();
  for (; status == FrameSource::Status::frame; status = source->next()) {
    length = source->position() + source->frame().nb_samples;
  }
  if (status == FrameSource::Status::error) return std::unexpected(failureOf(*input));
  return Extent{Clock::decoding, 0, length};
}

// Granule positions are the truth about an Ogg stream's ends; the times that
// FFmpeg makes of them give Vorbis' first packet a length that it has not.
Extent oggExtent(const Tally& tally, const OggGranules& granules, const AVCodecParameters& codec) {
  const bool isVorbis = codec.codec_id == AV_CODEC_ID_VORBIS;
  const auto onFirstPage = std::min(tally.firstDurations.size(),
                                    static_cast<std::size_t>(granules.packetsOnFirstPage));
  const auto first =
      std::span(tally.firstDurations).first(onFirstPage);
  const std::int64_t begin =
      firstGranule(granules, std::accumulate(first.begin(), first.end(), std::int64_t{0}));
  const std::int64_t position =
      isVorbis ? tally.secondPosition.value_or(tally.counted.begin) : tally.counted.begin;
  const std::int64_t offset = position - begin;

  Extent extent;
  extent.origin = isVorbis ? std::max<std::int64_t>(begin, 0) : begin + codec.initial_padding;
  const std::int64_t end = std::min(granules.last, tally.counted.packetEnd - offset);
  extent.length = std::max<std::int64_t>(0, end - extent.origin);
  extent.origin += offset;
  return extent;
}

Extent extentOfTally(Input& input, const Demuxer& demuxer, const Tally& tally, int outputRate,
                     std::int64_t decoderSkip) {
  const AVStream& stream = demuxer.stream();
  const AVCodecParameters& codec = *stream.codecpar;
  const std::string_view container(demuxer.format().iformat->name);
  if (container == "ogg" &&
      (codec.codec_id == AV_CODEC_ID_VORBIS || codec.codec_id == AV_CODEC_ID_OPUS)) {
    const auto ogg = readOggStream(input, stream.index);
    if (ogg && ogg->granules.last >= 0) return oggExtent(tally, ogg->granules, codec);
  }
  Counted counted = tally.counted;
  counted.skip = std::max<std::int64_t>({counted.skip, codec.initial_padding, decoderSkip});
  std::optional<std::int64_t> headerLength;
  const bool isStated = demuxer.format().duration_estimation_method == AVFMT_DURATION_FROM_STREAM;
  if (isStated && stream.duration > 0 && codec.codec_id != AV_CODEC_ID_FLAC) {
    headerLength = av_rescale_q(stream.duration, stream.time_base, {1, outputRate});
  }
  // Edit lists are applied afterwards.
  if (container.starts_with("mov")) counted.skip = 0;
  return extentOf(counted, headerLength);
}

bool isMovie(const Demuxer& demuxer) {
  return std::string_view(demuxer.format().iformat->name).starts_with("mov");
}

Extent applyMovieTimes(Input& input, const Demuxer& demuxer, const Extent& extent,
                       int outputRate) {
  if (!isMovie(demuxer)) return extent;
  const auto times = readMovieTimes(input, demuxer.stream().id);
  if (!times) return extent;
  MovieTrack track{times->movieTimescale, times->mediaTimescale, times->edits, std::nullopt};
  const AVDictionaryEntry* note =
      av_dict_get(demuxer.format().metadata, "iTunSMPB", nullptr, 0);
  if (note != nullptr) track.gapless = parseGaplessInfo(note->value);
  return movieExtent(extent, track, outputRate);
}

bool isChained(Input& input, const Demuxer& demuxer) {
  if (std::string_view(demuxer.format().iformat->name) != "ogg") return false;
  const auto ogg = readOggStream(input, demuxer.stream().index);
  return ogg && ogg->isChained;
}

platform::Result<Extent> measureAnew(const std::shared_ptr<Input>& input,
                                     const FrameSource::Plan& plan, std::int64_t decoderSkip) {
  const int outputRate = plan.outputRate;
  auto demuxer = Demuxer::open(input);
  if (!demuxer) return std::unexpected(demuxer.error());
  if (plan.clock != Clock::decoding && !isChained(*input, **demuxer)) {
    PacketClock packetClock(plan.clock, (*demuxer)->stream(), outputRate);
    auto tally = countPackets(*input, **demuxer, packetClock);
    if (!tally) return std::unexpected(tally.error());
    const bool isBroken = plan.clock == Clock::timestamps && tally->leavesOutMost();
    if (tally->isCountable && !tally->changes && !isBroken) {
      Extent extent = extentOfTally(*input, **demuxer, *tally, outputRate, decoderSkip);
      extent.clock = plan.clock;
      return applyMovieTimes(*input, **demuxer, extent, outputRate);
    }
  }
  const auto extent = countFrames(input, plan);
  if (!extent) return std::unexpected(extent.error());
  return applyMovieTimes(*input, **demuxer, *extent, outputRate);
}

}  // namespace

platform::Result<Extent> measure(const std::shared_ptr<Input>& input,
                                 const FrameSource::Plan& plan, std::int64_t decoderSkip) {
  if (const auto known = cache().find(input->identity())) return *known;
  const auto extent = measureAnew(input, plan, decoderSkip);
  if (extent) cache().store(input->identity(), *extent);
  return extent;
}

}  // namespace quibel::ffmpeg
