#include "song/decoding/PcmAudioFile.h"

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <string_view>

#include "song/decoding/PCMBuffer.h"
#include "song/decoding/Samples.h"
#include "song/file/Errors.h"
#include "song/formats/Speakers.h"

namespace quibel::song {

namespace {

// Small enough for the processor's cache, large enough that system calls do not count.
constexpr std::size_t chunkSize = std::size_t{128} << 10;

// Containers that keep their samples in one piece.
constexpr std::array<std::string_view, 5> containers{"wav", "w64", "aiff", "au", "caf"};

struct ByteRange {
  std::int64_t begin = -1;
  std::int64_t end = 0;
};

// The bytes of the packets that a demuxer still delivers.
platform::Result<ByteRange> rangeOfPackets(Input& input, Demuxer& demuxer, int limit) {
  const PacketPointer packet(av_packet_alloc());
  if (!packet) throw std::bad_alloc();
  ByteRange range;
  for (int i = 0; i < limit; ++i) {
    const auto status = demuxer.read(*packet);
    if (status == Demuxer::Status::error) return std::unexpected(failureOf(input));
    if (status == Demuxer::Status::end) break;
    if (range.begin < 0) range.begin = packet->pos;
    range.end = std::max(range.end, packet->pos + packet->size);
  }
  return range;
}

std::int64_t frameSizeOf(const PcmLayout& layout) {
  return std::int64_t{bytesPerSample(layout.codec)} * layout.channels;
}

}  // namespace

bool PcmAudioFile::canRead(const Demuxer& demuxer) {
  const AVCodecParameters& codec = *demuxer.stream().codecpar;
  return std::ranges::find(containers, demuxer.format().iformat->name) != containers.end() &&
         bytesPerSample(codec.codec_id) > 0 && codec.ch_layout.nb_channels > 0 &&
         codec.sample_rate > 0;
}

platform::Result<std::unique_ptr<platform::AudioFile>> PcmAudioFile::open(
    std::shared_ptr<Input> input, Demuxer& demuxer) {
  const AVStream& stream = demuxer.stream();
  const AVCodecParameters& codec = *stream.codecpar;
  const std::string_view name(demuxer.format().iformat->name);
  PcmLayout layout{.codec = codec.codec_id,
                   .channels = codec.ch_layout.nb_channels,
                   .speakers = speakersOf(codec.ch_layout),
                   .rate = codec.sample_rate};
  const std::int64_t frameSize = frameSizeOf(layout);
  const auto head = rangeOfPackets(*input, demuxer, 1);
  if (!head) return std::unexpected(head.error());
  if (head->begin >= 0) {
    // Headers may promise more, or nothing at all, so the end is where the
    // demuxer's last packet ends.
    layout.begin = head->begin;
    const std::int64_t available = (input->size() - head->begin) / frameSize;
    const std::int64_t stated = stream.duration > 0 ? stream.duration : available;
    layout.end = head->end;
    if (demuxer.seek(std::max<std::int64_t>(0, std::min(stated, available) - 1))) {
      const auto tail = rangeOfPackets(*input, demuxer, std::numeric_limits<int>::max());
      if (!tail) return std::unexpected(tail.error());
      layout.end = std::max(layout.end, tail->end);
    }
    // The way to the last packet may lead over what cannot be read.
    if (input->hasReadError()) return std::unexpected(failureOf(*input));
    layout.end = std::min(layout.end, input->size());
    // The demuxer of AU takes what follows the samples for more of them.
    if (name == "au" && stream.duration > 0) {
      layout.end =
          std::min(layout.end, layout.begin + std::min(stream.duration, available) * frameSize);
    }
  }
  return std::make_unique<PcmAudioFile>(std::move(input), layout);
}

PcmAudioFile::PcmAudioFile(std::shared_ptr<Input> input, const PcmLayout& layout)
    : input_(std::move(input)),
      format_{.sampleRate = static_cast<double>(layout.rate),
              .channelCount = static_cast<std::uint32_t>(layout.channels),
              .speakers = layout.speakers},
      codec_(layout.codec),
      frameSize_(frameSizeOf(layout)),
      dataBegin_(layout.begin),
      length_((layout.end - layout.begin) / frameSize_) {}

std::unique_ptr<platform::AudioPCMBuffer> PcmAudioFile::makeBuffer(
    std::uint32_t frameCapacity) const {
  return makePCMBuffer(format_, frameCapacity);
}

platform::Result<void> PcmAudioFile::read(platform::AudioPCMBuffer& into,
                                          std::uint32_t frameCount) try {
  const auto wanted = beginRead(into, frameCount, length_ - position_);
  const auto frameSize = static_cast<std::size_t>(frameSize_);
  const std::size_t framesPerChunk = std::max<std::size_t>(1, chunkSize / frameSize);
  bytes_.resize(framesPerChunk * frameSize);
  for (std::uint32_t filled = 0; filled < wanted;) {
    const auto count =
        static_cast<std::uint32_t>(std::min<std::size_t>(wanted - filled, framesPerChunk));
    const auto bytes = std::span(bytes_).first(count * frameSize);
    if (input_->readAt(dataBegin_ + position_ * frameSize_, bytes) !=
        static_cast<int>(bytes.size())) {
      const auto reason = input_->failure();
      return std::unexpected(reason ? *reason : makeError(Failure::cutWhileReading));
    }
    convertPCM(codec_, bytes, static_cast<int>(format_.channelCount), into.floatChannelData(),
               filled);
    filled += count;
    position_ += count;
  }
  into.setFrameLength(wanted);
  return {};
} catch (const std::bad_alloc&) {
  return std::unexpected(makeError(Failure::outOfMemory));
}

platform::Result<void> PcmAudioFile::seek(std::int64_t frame) {
  position_ = std::clamp<std::int64_t>(frame, 0, length_);
  return {};
}

}  // namespace quibel::song
