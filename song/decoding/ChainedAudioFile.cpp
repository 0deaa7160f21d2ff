#include "song/decoding/ChainedAudioFile.h"

#include <algorithm>
#include <new>
#include <utility>

#include "song/decoding/PCMBuffer.h"
#include "song/file/Errors.h"
#include "song/file/FileCache.h"

namespace quibel::song {

namespace {

constexpr std::uint32_t chunkFrames = 4096;

RateConverter::Form formOf(const platform::AudioFormat& format) {
  return {.rate = static_cast<int>(format.sampleRate),
          .channels = static_cast<int>(format.channelCount),
          .speakers = format.speakers};
}

/// A link, and where it lies among the frames of the whole.
struct Link {
  std::int64_t begin = 0;  ///< in bytes
  std::int64_t end = 0;
  std::int64_t firstFrame = 0;
  std::int64_t length = 0;
};

struct Chain {
  platform::AudioFormat format;
  std::vector<Link> links;
  std::int64_t length = 0;
};

using OpenPart = ChainedAudioFile::OpenPart;

/// Opens every link to find out how long it is.
platform::Result<Chain> measure(const Input& input, const std::vector<std::int64_t>& begins,
                                const OpenPart& open) {
  Chain chain;
  platform::Error reason = makeError(Failure::damaged);
  for (std::size_t i = 0; i < begins.size(); ++i) {
    const std::int64_t end = i + 1 < begins.size() ? begins[i + 1] : input.size();
    const auto part = input.part(begins[i], end);
    const auto song = open(part);
    if (!song) {
      if (const auto failure = part->failure()) return std::unexpected(*failure);
      reason = song.error();
      continue;
    }
    const platform::AudioFormat format = (*song)->processingFormat();
    if (chain.links.empty()) chain.format = format;
    const std::int64_t length =
        av_rescale((*song)->length(), static_cast<std::int64_t>(chain.format.sampleRate),
                   static_cast<std::int64_t>(format.sampleRate));
    chain.links.push_back({begins[i], end, chain.length, length});
    chain.length += length;
  }
  if (chain.links.empty()) return std::unexpected(reason);
  return chain;
}

}  // namespace

platform::Result<std::unique_ptr<platform::AudioFile>> ChainedAudioFile::open(
    const std::shared_ptr<Input>& input, const std::vector<std::int64_t>& begins, OpenPart open) {
  static FileCache<Chain> cache;
  auto chain = cache.find(input->identity());
  if (!chain) {
    auto measured = measure(*input, begins, open);
    if (!measured) return std::unexpected(measured.error());
    cache.store(input->identity(), *measured);
    chain = *std::move(measured);
  }
  std::unique_ptr<ChainedAudioFile> file(new ChainedAudioFile(std::move(open)));
  file->format_ = chain->format;
  file->length_ = chain->length;
  for (const Link& link : chain->links)
    file->sections_.push_back({input->part(link.begin, link.end), link.firstFrame, link.length});
  if (auto entered = file->enter(0); !entered) return std::unexpected(entered.error());
  return file;
}

std::unique_ptr<platform::AudioPCMBuffer> ChainedAudioFile::makeBuffer(
    std::uint32_t frameCapacity) const {
  return makePCMBuffer(format_, frameCapacity);
}

platform::Result<void> ChainedAudioFile::enter(std::size_t section) {
  auto song = open_(sections_[section].input);
  if (!song) return std::unexpected(song.error());
  current_ = section;
  song_ = std::move(*song);
  converter_.reset();
  read_ = song_->makeBuffer(chunkFrames);
  if (!read_) throw std::bad_alloc();
  if (const auto form = formOf(song_->processingFormat()); form != formOf(format_)) {
    auto opened = RateConverter::open(form, formOf(format_));
    if (!opened) return std::unexpected(opened.error());
    converter_ = std::move(*opened);
  }
  samplesBegin_ = samplesEnd_ = sections_[section].begin;
  return {};
}

// Reads on in the section at hand. At its end nothing comes: the samples then
// end where they began.
platform::Result<void> ChainedAudioFile::fill() {
  if (auto result = song_->read(*read_, chunkFrames); !result) return result;
  samples_ = read_->floatChannelData();
  std::int64_t frames = read_->frameLength();
  if (converter_) {
    const auto converted =
        converter_->convert(frames > 0 ? samples_ : nullptr, static_cast<int>(frames));
    if (!converted) return std::unexpected(converted.error());
    samples_ = reinterpret_cast<const float* const*>((*converted)->extended_data);
    // A resampler may swallow what it is given first.
    if (frames > 0 && (*converted)->nb_samples == 0) return fill();
    frames = (*converted)->nb_samples;
  }
  samplesBegin_ = samplesEnd_;
  samplesEnd_ += frames;
  return {};
}

platform::Result<void> ChainedAudioFile::read(platform::AudioPCMBuffer& into,
                                              std::uint32_t frameCount) try {
  const auto wanted = beginRead(into, frameCount, length_ - position_);
  for (std::uint32_t filled = 0; filled < wanted;) {
    const std::int64_t sectionEnd = sections_[current_].begin + sections_[current_].length;
    if (position_ >= sectionEnd) {
      if (auto entered = enter(current_ + 1); !entered) return entered;
      continue;
    }
    bool isSilent = false;
    if (position_ >= samplesEnd_) {
      if (auto result = fill(); !result) return result;
      isSilent = samplesBegin_ == samplesEnd_;
      if (position_ >= samplesEnd_ && !isSilent) continue;
    }
    const std::int64_t end = isSilent ? sectionEnd : std::min(samplesEnd_, sectionEnd);
    const auto count =
        static_cast<std::uint32_t>(std::min<std::int64_t>(wanted - filled, end - position_));
    for (std::uint32_t channel = 0; channel < format_.channelCount; ++channel) {
      float* const to = into.floatChannelData()[channel] + filled;
      if (isSilent) {
        std::fill_n(to, count, 0.0F);
      } else {
        std::copy_n(samples_[channel] + (position_ - samplesBegin_), count, to);
      }
    }
    filled += count;
    position_ += count;
  }
  into.setFrameLength(wanted);
  return {};
} catch (const std::bad_alloc&) {
  return std::unexpected(makeError(Failure::outOfMemory));
}

platform::Result<void> ChainedAudioFile::seek(std::int64_t frame) try {
  frame = std::clamp<std::int64_t>(frame, 0, length_);
  const auto after = std::ranges::upper_bound(sections_, frame, {}, &Section::begin);
  const auto section = static_cast<std::size_t>(after - sections_.begin()) - 1;
  const bool isReached = section == current_ && frame >= samplesBegin_;
  if (!isReached || !converter_) {
    // A resampler has no way back: it begins at the section's beginning.
    if (section != current_ || converter_) {
      if (auto entered = enter(section); !entered) return entered;
    }
    if (!converter_) {
      if (auto result = song_->seek(frame - sections_[section].begin); !result) return result;
      samplesBegin_ = samplesEnd_ = frame;
    }
  }
  position_ = frame;
  return {};
} catch (const std::bad_alloc&) {
  return std::unexpected(makeError(Failure::outOfMemory));
}

}  // namespace quibel::song
