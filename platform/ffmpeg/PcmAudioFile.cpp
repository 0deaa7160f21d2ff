#include "platform/ffmpeg/PcmAudioFile.h"

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <string_view>

#include "platform/ffmpeg/Errors.h"
#include "platform/ffmpeg/PCMBuffer.h"
#include "platform/ffmpeg/Samples.h"

namespace quibel::ffmpeg {

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
  std::unique_ptr<PcmAudioFile> file(new PcmAudioFile);
  file->format_ = {static_cast<double>(codec.sample_rate),
                   static_cast<std::uint32_t>(codec.ch_layout.nb_channels)};
  file->codec_ = codec.codec_id;
  file->frameSize_ = std::int64_t{bytesPerSample(codec.codec_id)} * codec.ch_layout.nb_channels;

  const auto head = rangeOfPackets(*input, demuxer, 1);
  if (!head) return std::unexpected(head.error());
  if (head->begin >= 0) {
    // Headers may promise more, or nothing at all, so the end is where the
    // demuxer's last packet ends.
    file->dataBegin_ = head->begin;
    const std::int64_t available = (input->size() - head->begin) / file->frameSize_;
    const std::int64_t stated = stream.duration > 0 ? stream.duration : available;
    std::int64_t end = head->end;
    if (demuxer.seek(std::max<std::int64_t>(0, std::min(stated, available) - 1))) {
      const auto tail = rangeOfPackets(*input, demuxer, std::numeric_limits<int>::max());
      if (!tail) return std::unexpected(tail.error());
      end = std::max(end, tail->end);
    }
    // The way to the last packet may lead over what cannot be read.
    if (input->hasReadError()) return std::unexpected(failureOf(*input));
    file->length_ = (std::min(end, input->size()) - head->begin) / file->frameSize_;
    // The demuxer of AU takes what follows the samples for more of them.
    if (name == "au" && stream.duration > 0) {
      file->length_ = std::min(file->length_, stream.duration);
    }
  }
  file->input_ = std::move(input);
  return file;
}

std::unique_ptr<platform::AudioPCMBuffer> PcmAudioFile::makeBuffer(
    std::uint32_t frameCapacity) const {
  return makePCMBuffer(format_, frameCapacity);
}

platform::Result<void> PcmAudioFile::read(platform::AudioPCMBuffer& into,
                                          std::uint32_t frameCount) try {
  into.setFrameLength(0);
  const auto wanted = static_cast<std::uint32_t>(
      std::min<std::int64_t>({frameCount, into.frameCapacity(), length_ - position_}));
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

}  // namespace quibel::ffmpeg
