#include "song/decoding/CodedAudioFile.h"

#include <algorithm>
#include <new>

#include "song/decoding/Measure.h"
#include "song/decoding/PCMBuffer.h"
#include "song/decoding/Samples.h"
#include "song/file/Errors.h"
#include "song/formats/Speakers.h"

namespace quibel::song {

namespace {

platform::Result<FrameSource> openSource(const std::shared_ptr<Input>& input,
                                         const FrameSource::Plan& plan) {
  auto demuxer = Demuxer::open(input);
  if (!demuxer) return std::unexpected(demuxer.error());
  return FrameSource::open(input, std::move(*demuxer), plan);
}

void writeSilence(float* const* out, std::uint32_t channels, std::uint32_t at,
                  std::uint32_t count) {
  for (std::uint32_t channel = 0; channel < channels; ++channel) {
    std::fill_n(out[channel] + at, count, 0.0F);
  }
}

}  // namespace

platform::Result<std::unique_ptr<platform::AudioFile>> CodedAudioFile::open(
    std::shared_ptr<Input> input, std::unique_ptr<Demuxer> demuxer, Length length) {
  const AVStream& stream = demuxer->stream();
  const AVCodecParameters& codec = *stream.codecpar;
  FrameSource::Plan plan{.clock = chooseClock(*demuxer->format().iformat, codec.codec_id,
                                              stream.time_base, codec.sample_rate),
                         .outputRate = std::max(codec.sample_rate, 1),
                         .channels = codec.ch_layout.nb_channels,
                         .speakers = speakersOf(codec.ch_layout)};
  auto source = FrameSource::open(input, std::move(demuxer), plan);
  if (!source) return std::unexpected(source.error());

  const auto first = source->next();
  if (first == FrameSource::Status::error) return std::unexpected(failureOf(*input));
  if (first == FrameSource::Status::end) {
    if (const auto reason = input->failure()) return std::unexpected(*reason);
    const bool isMerelyEmpty = !source->anyPacket() && codec.sample_rate > 0 && plan.channels > 0;
    if (!isMerelyEmpty) return std::unexpected(makeError(Failure::damaged));
    return std::unique_ptr<platform::AudioFile>(
        new CodedAudioFile(std::move(input), std::move(*source), plan, SongRange{}));
  }

  // The first frame tells the form of what is delivered: a codec may double
  // the rate or the channels that the container states.
  const AVFrame& frame = source->decodedFrame();
  const int channels = frame.ch_layout.nb_channels;
  if (frame.sample_rate <= 0 || channels <= 0 || channels > maximumChannels) {
    return std::unexpected(makeError(Failure::damaged));
  }
  const FrameSource::Plan opened = plan;
  plan.outputRate = frame.sample_rate;
  plan.channels = channels;
  plan.speakers = speakersOf(frame.ch_layout);
  const auto range = measure(input, *source, plan, length);
  if (!range) return std::unexpected(range.error());
  plan.clock = range->clock;
  plan.index = range->index;
  if (plan != opened) {
    source = openSource(input, plan);
    if (!source) return std::unexpected(source.error());
  }
  std::unique_ptr<CodedAudioFile> file(
      new CodedAudioFile(std::move(input), std::move(*source), plan, *range));
  // The frame that told the form is the first to be delivered.
  if (plan == opened) file->adoptBlock();
  return file;
}

CodedAudioFile::CodedAudioFile(std::shared_ptr<Input> input, FrameSource source,
                               const FrameSource::Plan& plan, const SongRange& range)
    : input_(std::move(input)),
      plan_(plan),
      range_(range),
      seeks_(source.seeks()),
      source_(std::move(source)) {}

platform::AudioFormat CodedAudioFile::processingFormat() const {
  return {.sampleRate = static_cast<double>(plan_.outputRate),
          .channelCount = static_cast<std::uint32_t>(plan_.channels),
          .speakers = plan_.speakers};
}

std::unique_ptr<platform::AudioPCMBuffer> CodedAudioFile::makeBuffer(
    std::uint32_t frameCapacity) const {
  return makePCMBuffer(processingFormat(), frameCapacity);
}

void CodedAudioFile::adoptBlock() {
  blockBegin_ = source_.position() - range_.origin;
  blockEnd_ = blockBegin_ + source_.frame().nb_samples;
}

platform::Result<void> CodedAudioFile::advance() {
  switch (source_.next()) {
    case FrameSource::Status::frame:
      adoptBlock();
      return {};
    case FrameSource::Status::end:
      ended_ = true;
      // Silence fills what damage at the end took away, but a file that was cut
      // or that can no longer be read is no song with a silent end.
      if (const auto reason = input_->failure()) return std::unexpected(*reason);
      return {};
    case FrameSource::Status::error:
      break;
  }
  return std::unexpected(failureOf(*input_));
}

platform::Result<void> CodedAudioFile::read(platform::AudioPCMBuffer& into,
                                            std::uint32_t frameCount) try {
  const auto wanted = beginRead(into, frameCount, length() - position_);
  const auto channels = static_cast<std::uint32_t>(plan_.channels);
  float* const* const out = into.floatChannelData();
  for (std::uint32_t filled = 0; filled < wanted;) {
    if (!ended_ && blockEnd_ <= position_) {
      if (const auto result = advance(); !result) return result;
      continue;
    }
    const bool isSilent = ended_ || blockBegin_ > position_;
    const std::int64_t until = ended_ ? length() : isSilent ? blockBegin_ : blockEnd_;
    const auto count =
        static_cast<std::uint32_t>(std::min<std::int64_t>(wanted - filled, until - position_));
    if (isSilent) {
      writeSilence(out, channels, filled, count);
    } else if (!copySamples(source_.frame(), static_cast<int>(position_ - blockBegin_),
                            static_cast<int>(count), out, filled)) {
      return std::unexpected(makeError(Failure::damaged));
    }
    filled += count;
    position_ += count;
  }
  into.setFrameLength(wanted);
  return {};
} catch (const std::bad_alloc&) {
  return std::unexpected(makeError(Failure::outOfMemory));
}

platform::Result<void> CodedAudioFile::seek(std::int64_t frame) try {
  frame = std::clamp<std::int64_t>(frame, 0, length());
  const bool isInBlock = !ended_ && blockBegin_ <= frame && frame < blockEnd_;
  if (frame != position_ && !isInBlock) {
    if (!source_.seek(range_.origin + frame)) {
      if (const auto reason = input_->failure()) return std::unexpected(*reason);
      auto source = openSource(input_, plan_);
      if (!source) return std::unexpected(source.error());
      source_ = std::move(*source);
    }
    blockBegin_ = blockEnd_ = frame;
    ended_ = false;
  }
  position_ = frame;
  return {};
} catch (const std::bad_alloc&) {
  return std::unexpected(makeError(Failure::outOfMemory));
}

std::unique_ptr<platform::AudioFile> CodedAudioFile::anotherReader() const try {
  if (!seeks_) return nullptr;
  auto input = input_->part(0, input_->size());
  auto source = openSource(input, plan_);
  if (!source) return nullptr;
  return std::unique_ptr<platform::AudioFile>(
      new CodedAudioFile(std::move(input), std::move(*source), plan_, range_));
} catch (const std::bad_alloc&) {
  return nullptr;
}

}  // namespace quibel::song
