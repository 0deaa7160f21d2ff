#include "model/Waveform.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <future>
#include <list>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <stop_token>
#include <system_error>
#include <thread>
#include <utility>

namespace quibel {
namespace {

/// Buckets are not made smaller than this, however short the song.
constexpr std::int64_t minimumFramesPerBucket = 256;

/// So many frames are read at a time, and fewer for a smaller bucket: few enough to stay
/// in the cache of the processor, and for a long song to take no more memory than a
/// short one.
constexpr std::int64_t largestPiece = 16'384;

/// Songs of fewer frames are not shared among readers: they take 20 ms at most.
constexpr std::int64_t shortestShared = 1'000'000;

/// No bucket of a song with any sound is drawn lower than this.
constexpr double floorLevel = 0.025;

/// The larger of `peak` and the greatest absolute value among the samples. A
/// sample that is not a number never replaces the peak.
float peakOf(std::span<const float> samples, float peak) {
  // Independent maxima, one a lane: a single one could not be kept in a vector
  // register without leave to reorder floating-point comparisons. With 32 of them
  // the compiler scans four times as fast as with 16.
  constexpr std::size_t lanes = 32;
  std::array<float, lanes> peaks;
  peaks.fill(peak);
  const auto raise = [&](std::size_t lane, float sample) {
    const float level = std::fabs(sample);
    peaks[lane] = level > peaks[lane] ? level : peaks[lane];
  };
  const std::size_t whole = samples.size() - samples.size() % lanes;
  for (std::size_t i = 0; i < whole; i += lanes)
    for (std::size_t lane = 0; lane < lanes; ++lane) raise(lane, samples[i + lane]);
  for (std::size_t i = whole; i < samples.size(); ++i) raise(i - whole, samples[i]);
  return *std::ranges::max_element(peaks);
}

/// The peak of a buffer's frames, full scale at most.
float peakOf(const platform::AudioPCMBuffer& buffer, std::size_t channels) {
  float peak = 0;
  for (std::size_t channel = 0; channel < channels; ++channel)
    peak = peakOf({buffer.floatChannelData()[channel], buffer.frameLength()}, peak);
  return std::min(1.0F, peak);
}

/// Reads a song from where it stands, bucket by bucket.
class BucketReader {
 public:
  BucketReader(platform::AudioFile& file, std::int64_t framesPerBucket)
      : file_(file),
        channels_(file.processingFormat().channelCount),
        framesPerBucket_(framesPerBucket),
        piece_(std::min(framesPerBucket, largestPiece)),
        buffer_(file.makeBuffer(static_cast<std::uint32_t>(piece_))) {}

  bool hasBuffer() const { return buffer_ != nullptr; }

  /// The next bucket's peak; nothing where the song has no more to read.
  platform::Result<std::optional<float>> next() {
    std::optional<float> peak;
    for (std::int64_t left = framesPerBucket_; left > 0 && file_.framePosition() < file_.length();
         left -= buffer_->frameLength()) {
      const auto wanted = static_cast<std::uint32_t>(std::min(piece_, left));
      buffer_->setFrameLength(0);
      if (auto read = file_.read(*buffer_, wanted); !read)
        return std::unexpected(std::move(read).error());
      if (buffer_->frameLength() == 0 || !buffer_->floatChannelData()) break;
      peak = std::max(peak.value_or(0), peakOf(*buffer_, channels_));
      if (buffer_->frameLength() < wanted) break;
    }
    return peak;
  }

 private:
  platform::AudioFile& file_;
  std::size_t channels_;
  std::int64_t framesPerBucket_;
  std::int64_t piece_;
  std::unique_ptr<platform::AudioPCMBuffer> buffer_;
};

using Peaks = std::vector<double>;

/// Consecutive buckets: their first frame, and the one after their last.
struct Section {
  std::int64_t begin = 0;
  std::int64_t end = 0;
};

/// A song's buckets, divided evenly among so many readers.
std::vector<Section> sectionsOf(std::int64_t length, std::int64_t framesPerBucket, int readers) {
  if (length < shortestShared) readers = 1;
  std::vector<Section> sections;
  for (std::int64_t begin = 0; begin < length; begin = sections.back().end) {
    const auto next = static_cast<std::int64_t>(sections.size()) + 1;
    const bool isLast = next >= readers;
    const std::int64_t end = length * next / readers / framesPerBucket * framesPerBucket;
    sections.push_back({begin, isLast ? length : std::max(end, begin + framesPerBucket)});
  }
  return sections;
}

/// The peaks of a section's buckets, found by another reader of the song. Nothing where it
/// cannot read them all, or where there is none.
std::optional<Peaks> peaksOf(const platform::AudioFile& song, const Section& section,
                             std::int64_t framesPerBucket, const std::stop_token& stop) try {
  const auto file = song.anotherReader();
  if (!file) return std::nullopt;
  BucketReader reader(*file, framesPerBucket);
  if (!reader.hasBuffer() || !file->seek(section.begin)) return std::nullopt;
  Peaks peaks;
  while (file->framePosition() < section.end) {
    const auto peak = reader.next();
    if (stop.stop_requested() || !peak || !*peak) return std::nullopt;
    peaks.push_back(**peak);
  }
  return peaks;
} catch (const std::bad_alloc&) {
  return std::nullopt;
}

/// A section that is read in a thread of its own.
class SharedSection {
 public:
  /// `song` outlives this.
  SharedSection(const platform::AudioFile& song, const Section& section,
                std::int64_t framesPerBucket) {
    // Open on the reading thread: malloc arenas are per thread, and with a shared one both
    // threads would wait for it at every packet, 2 % of a load's processor time.
    auto read = [&song, section, framesPerBucket, stop = stop_.get_token()] {
      return peaksOf(song, section, framesPerBucket, stop);
    };
    try {
      peaks_ = std::async(std::launch::async, std::move(read));
    } catch (const std::system_error&) {
      peaks_ = {};  // the system denies a thread
    }
  }
  SharedSection(const SharedSection&) = delete;
  SharedSection& operator=(const SharedSection&) = delete;
  ~SharedSection() { stop_.request_stop(); }

  /// Waits for its peaks, once. Nothing where they could not all be read.
  std::optional<Peaks> take() { return peaks_.valid() ? peaks_.get() : std::nullopt; }

 private:
  std::stop_source stop_;
  std::future<std::optional<Peaks>> peaks_;
};

/// Scales the values so that the loudest is 1 and raises them to the floor.
/// Silence stays as it is.
void normalise(std::vector<double>& values) {
  const double maximum = values.empty() ? 1.0 : *std::ranges::max_element(values);
  if (!(maximum > 0)) return;
  for (double& value : values) value = std::max(floorLevel, value / maximum);
}

}  // namespace

int readersForALoad() {
  constexpr unsigned most = 8;
  return static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, most));
}

std::expected<std::vector<double>, LoadError> waveform(platform::AudioFile& file, int count,
                                                       int readers) {
  assert(count > 0 && readers > 0);
  const std::int64_t framesPerBucket = std::max(minimumFramesPerBucket, file.length() / count);
  BucketReader reader(file, framesPerBucket);
  if (!reader.hasBuffer()) return std::unexpected(AudioError::invalid);

  const auto sections = sectionsOf(file.length(), framesPerBucket, readers);
  std::list<SharedSection> shared;
  for (std::size_t i = 1; i < sections.size(); ++i)
    shared.emplace_back(file, sections[i], framesPerBucket);

  Peaks values;
  bool isAtEnd = false;
  for (std::size_t i = 0; i < sections.size() && !isAtEnd; ++i) {
    if (i > 0) {
      const auto peaks = shared.front().take();
      shared.pop_front();
      if (peaks) {
        values.insert(values.end(), peaks->begin(), peaks->end());
        continue;
      }
    }
    // What no other reader could read.
    if (file.framePosition() != sections[i].begin) {
      if (auto moved = file.seek(sections[i].begin); !moved)
        return std::unexpected(std::move(moved).error());
    }
    while (file.framePosition() < sections[i].end && !isAtEnd) {
      auto peak = reader.next();
      if (!peak) return std::unexpected(std::move(peak).error());
      isAtEnd = !*peak;
      if (*peak) values.push_back(**peak);
    }
  }
  normalise(values);
  return values;
}

}  // namespace quibel
