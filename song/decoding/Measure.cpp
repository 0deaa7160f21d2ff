#include "song/decoding/Measure.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <numeric>
#include <span>
#include <string_view>
#include <utility>

#include "song/decoding/PacketCount.h"
#include "song/file/Errors.h"
#include "song/file/FileCache.h"
#include "song/formats/CafPackets.h"
#include "song/formats/MovieBoxes.h"
#include "song/formats/MpegFrames.h"
#include "song/formats/OggPages.h"

namespace quibel::song {

namespace {

constexpr std::int64_t allPackets = std::numeric_limits<std::int64_t>::max();

FileCache<SongRange>& cache() {
  static FileCache<SongRange> instance;
  return instance;
}

/// The ways to measure one file.
class Measurement {
 public:
  Measurement(const std::shared_ptr<Input>& input, const FrameSource& opened,
              const FrameSource::Plan& plan, Length length)
      : input_(input),
        opened_(opened),
        plan_(plan),
        length_(length),
        stream_(opened.demuxer().stream()),
        codec_(*stream_.codecpar),
        container_(opened.demuxer().format().iformat->name) {}

  platform::Result<SongRange> range() {
    auto found = countedRange();
    if (found && isMovie()) return applyMovieTimes(*found);
    return found;
  }

  /// Of what range() found.
  bool isExact() const { return isExact_; }

 private:
  bool isMovie() const { return container_.starts_with("mov"); }

  // Whether a claim of so many frames may be believed without a look at all that
  // is between. Only silence is coded at less than a byte for so many frames.
  bool hasBytesFor(std::int64_t frames) const { return frames / 64 <= input_->size(); }

  bool isGranular() const {
    return container_ == "ogg" &&
           (codec_.codec_id == AV_CODEC_ID_VORBIS || codec_.codec_id == AV_CODEC_ID_OPUS);
  }

  platform::Result<SongRange> countedRange() {
    if (plan_.clock == Clock::decoding) return decodedRange();
    if (isMovie() || container_ == "ape") {
      if (const auto indexed = indexRange()) return *indexed;
    }
    if (container_ == "mp3") {
      if (const auto unbroken = mpegFileRange()) return *unbroken;
      // Frames were lost: their places follow from what is left of them.
      plan_.clock = Clock::durations;
    }
    if (container_ == "flac") {
      const auto ending = flacRange();
      if (!ending) return std::unexpected(ending.error());
      if (*ending) return **ending;
    }
    if (isGranular()) granules_ = readOggGranules(*input_, stream_.index);
    return packetRange();
  }

  // The index of an MP4 or Monkey's Audio file that is all there. Fragments of MP4 are
  // not in it.
  std::optional<SongRange> indexRange() const {
    // Reading the index does not change the stream, but takes it as one that could.
    auto* const stream = const_cast<AVStream*>(&stream_);
    const int entries = avformat_index_get_entries_count(stream);
    if (plan_.clock != Clock::timestamps || entries <= 0 || entries != stream_.nb_frames ||
        stream_.duration <= 0 || !hasBytesFor(inFrames(stream_.duration))) {
      return std::nullopt;
    }
    for (int i = 0; i < entries; ++i) {
      const AVIndexEntry& entry = *avformat_index_get_entry(stream, i);
      if (entry.pos + entry.size > input_->size()) return std::nullopt;
    }
    const std::int64_t first = avformat_index_get_entry(stream, 0)->timestamp;
    const std::int64_t last = avformat_index_get_entry(stream, entries - 1)->timestamp;
    if (last < first || last - first >= stream_.duration) return std::nullopt;
    return SongRange{plan_.clock, inFrames(first), inFrames(stream_.duration)};
  }

  std::optional<SongRange> mpegFileRange() const {
    const auto header = readFirstMpegHeader(*input_);
    const std::int64_t begin = opened_.firstPacketPosition();
    auto index = indexMpegPackets(*input_, begin);
    if (!header || !index || header->sampleRate != plan_.outputRate) return std::nullopt;
    const auto tag = readMpegTag(*input_);
    // FFmpeg takes a tag that does not stand where it expects one for sound.
    const int decodedTags = tag && tag->position == begin ? 1 : 0;
    SongRange found = mpegRange(index->packets - decodedTags, header->frames, tag);
    found.origin += std::int64_t{decodedTags} * header->frames;
    // FFmpeg finds a place only by reading everything before it.
    found.clock = Clock::durations;
    found.index = std::make_shared<const PacketIndex>(std::move(*index));
    return found;
  }

  // FLAC's frames are numbered: if the last one ends where the file's header
  // says, there is nothing to count.
  platform::Result<std::optional<SongRange>> flacRange() {
    if (stream_.duration <= 0 || !hasBytesFor(stream_.duration)) return std::nullopt;
    auto demuxer = Demuxer::open(input_);
    if (!demuxer) return std::unexpected(demuxer.error());
    if (!(*demuxer)->seek(stream_.duration - 1)) return std::nullopt;
    PacketClock clock(Clock::timestamps, **demuxer, plan_.outputRate);
    const auto tail = countPackets(*input_, **demuxer, clock, allPackets);
    if (!tail) return std::unexpected(tail.error());
    if (tail->changes || tail->packets == 0 || tail->totals.end != stream_.duration) {
      return std::nullopt;
    }
    return SongRange{Clock::timestamps, 0, stream_.duration};
  }

  platform::Result<SongRange> packetRange() {
    auto demuxer = Demuxer::open(input_);
    if (!demuxer) return std::unexpected(demuxer.error());
    PacketClock clock(plan_.clock, **demuxer, plan_.outputRate);
    // An Ogg stream of several pages is measured by its first and its last one.
    const bool byEnds = granules_ && !granules_->isOnlyPage && granules_->last > granules_->first &&
                        hasBytesFor(granules_->last);
    // A stated length is enough with the first packet, which tells where the song begins.
    const auto stated = granules_ || !isLengthStated() ? std::nullopt : statedLength();
    const std::int64_t limit = byEnds ? granules_->packetsOnFirstPage + 1 : stated ? 1 : allPackets;
    const auto count = countPackets(*input_, **demuxer, clock, limit);
    if (!count) return std::unexpected(count.error());
    const bool isBroken = plan_.clock == Clock::timestamps && count->leavesOutMost();
    // FLAC's packets tell their lengths themselves, all others' are the container's claim.
    const bool isClaim = codec_.codec_id != AV_CODEC_ID_FLAC &&
                         !hasBytesFor(count->totals.packetEnd - count->totals.begin);
    if (!count->isCountable || count->changes || isBroken || isClaim) return decodedRange();
    SongRange found = granules_ ? oggRange(*count, *granules_, byEnds) : plainRange(*count);
    found.clock = plan_.clock;
    if (stated) {
      found.length = *stated;
      isExact_ = false;
    }
    return found;
  }

  SongRange plainRange(const PacketCount& count) const {
    if (container_ == "mp3") {
      const int packetFrames = static_cast<int>(count.totals.lastPacket);
      const auto header = readFirstMpegHeader(*input_);
      const int each = header ? header->frames : packetFrames;
      return mpegRange(count.durations / std::max(each, 1), each, readMpegTag(*input_));
    }
    PacketTotals totals = count.totals;
    totals.skip = std::max<std::int64_t>(
        {totals.skip, codec_.initial_padding, paddingOf(opened_.decodedFrame()).skip});
    // Edit lists are applied afterwards.
    if (isMovie()) totals.skip = 0;
    if (container_ == "caf") trimToCafPackets(totals);
    std::optional<std::int64_t> headerLength;
    if (isLengthStated() && stream_.duration > 0 && codec_.codec_id != AV_CODEC_ID_FLAC) {
      headerLength = inFrames(stream_.duration);
    }
    return songRangeOf(totals, headerLength);
  }

  // Only a table that has all the frames there are is one of this stream.
  void trimToCafPackets(PacketTotals& totals) const {
    const auto packets = readCafPackets(*input_);
    const std::int64_t frames = totals.packetEnd - totals.begin;
    if (!packets || packets->song <= 0 || packets->song > frames || packets->priming > frames ||
        packets->song + packets->priming + packets->remainder != frames) {
      return;
    }
    totals.skip = packets->priming;
    totals.end = totals.packetEnd - packets->remainder;
  }

  // Granule positions are the truth about an Ogg stream's ends; the times that
  // FFmpeg makes of them give Vorbis' first packet a length that it has not.
  SongRange oggRange(const PacketCount& count, const OggGranules& granules, bool byEnds) const {
    const bool isVorbis = codec_.codec_id == AV_CODEC_ID_VORBIS;
    const auto ended = std::min(count.firstDurations.size(),
                                static_cast<std::size_t>(granules.packetsOnFirstPage));
    const auto onFirstPage = std::span(count.firstDurations).first(ended);
    const std::int64_t begin = firstGranule(
        granules, std::accumulate(onFirstPage.begin(), onFirstPage.end(), std::int64_t{0}));
    const std::int64_t position =
        isVorbis ? count.secondPosition.value_or(count.totals.begin) : count.totals.begin;
    const std::int64_t offset = position - begin;

    SongRange found;
    found.origin = isVorbis ? std::max<std::int64_t>(begin, 0) : begin + codec_.initial_padding;
    std::int64_t end = granules.last;
    if (!byEnds) end = std::min(end, count.totals.packetEnd - offset);
    found.length = std::max<std::int64_t>(0, end - found.origin);
    found.origin += offset;
    return found;
  }

  // This stream's length is known only by decoding all of it.
  platform::Result<SongRange> decodedRange() {
    const auto stated = statedLength();
    isExact_ = !stated;
    if (stated) return SongRange{Clock::decoding, 0, *stated};
    return countFrames();
  }

  // Rather than guessed from a mean bit rate.
  bool isLengthStated() const {
    return opened_.demuxer().format().duration_estimation_method == AVFMT_DURATION_FROM_STREAM;
  }

  // In frames, where that is enough and the file states one that can be.
  std::optional<std::int64_t> statedLength() const {
    if (length_ != Length::stated) return std::nullopt;
    const AVFormatContext& format = opened_.demuxer().format();
    const std::int64_t frames = stream_.duration > 0 ? inFrames(stream_.duration)
                                                     : av_rescale(format.duration, plan_.outputRate,
                                                                  std::int64_t{AV_TIME_BASE});
    if (frames <= 0 || !hasBytesFor(frames)) return std::nullopt;
    return frames;
  }

  // The whole stream is decoded: its length is what comes out.
  platform::Result<SongRange> countFrames() const {
    auto demuxer = Demuxer::open(input_);
    if (!demuxer) return std::unexpected(demuxer.error());
    FrameSource::Plan plan = plan_;
    plan.clock = Clock::decoding;
    auto source = FrameSource::open(input_, std::move(*demuxer), plan);
    if (!source) return std::unexpected(source.error());
    std::int64_t length = 0;
    FrameSource::Status status = source->next();
    for (; status == FrameSource::Status::frame; status = source->next()) {
      length = source->position() + source->frame().nb_samples;
    }
    if (status == FrameSource::Status::error) return std::unexpected(failureOf(*input_));
    return SongRange{Clock::decoding, 0, length};
  }

  SongRange applyMovieTimes(const SongRange& found) const {
    const auto times = readMovieTimes(*input_, stream_.id);
    if (!times) return found;
    MovieTrack track{times->movieTimescale, times->mediaTimescale, times->edits, std::nullopt};
    const AVDictionaryEntry* note =
        av_dict_get(opened_.demuxer().format().metadata, "iTunSMPB", nullptr, 0);
    if (note != nullptr) track.gapless = parseGaplessInfo(note->value);
    return movieRange(found, track, plan_.outputRate);
  }

  std::int64_t inFrames(std::int64_t time) const {
    return av_rescale_q(time, stream_.time_base, {1, plan_.outputRate});
  }

  const std::shared_ptr<Input>& input_;
  const FrameSource& opened_;
  FrameSource::Plan plan_;
  Length length_;
  bool isExact_ = true;
  const AVStream& stream_;
  const AVCodecParameters& codec_;
  std::string_view container_;
  std::optional<OggGranules> granules_;
};

}  // namespace

platform::Result<SongRange> measure(const std::shared_ptr<Input>& input, const FrameSource& opened,
                                    const FrameSource::Plan& plan, Length length) {
  if (const auto known = cache().find(input->identity())) return *known;
  Measurement measurement(input, opened, plan, length);
  auto range = measurement.range();
  if (range && measurement.isExact()) cache().store(input->identity(), *range);
  return range;
}

}  // namespace quibel::song
