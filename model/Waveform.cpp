#include "model/Waveform.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <future>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <stop_token>
#include <system_error>
#include <utility>

namespace quibel {
namespace {

/// Buckets are not made smaller than this, however short the song.
constexpr std::int64_t minimumFramesPerBucket = 256;

/// So many frames are read at a time, and fewer for a smaller bucket: few enough to stay
/// in the cache of the processor, and for a long song to take no more memory than a
/// short one.
constexpr std::int64_t largestPiece = 16'384;

/// Songs of fewer frames are not shared between two readers: they take 20 ms at most.
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

/// The peaks of the buckets from frame `begin` to the end, found by another reader of the
/// song. Nothing where it cannot read them all, or where there is none.
std::optional<Peaks> peaksFrom(const platform::AudioFile& song, std::int64_t begin,
                               std::int64_t framesPerBucket, const std::stop_token& stop) try {
  const auto file = song.anotherReader();
  if (!file) return std::nullopt;
  BucketReader reader(*file, framesPerBucket);
  if (!reader.hasBuffer() || !file->seek(begin)) return std::nullopt;
  Peaks peaks;
  while (file->framePosition() < file->length()) {
    const auto peak = reader.next();
    if (stop.stop_requested() || !peak || !*peak) return std::nullopt;
    peaks.push_back(**peak);
  }
  return peaks;
} catch (const std::bad_alloc&) {
  return std::nullopt;
}

/// The buckets of a long song from a frame on, found in a thread of its own.
class Latter {
 public:
  /// `song` outlives this. A short song is not shared.
  Latter(const platform::AudioFile& song, std::int64_t begin, std::int64_t framesPerBucket) {
    if (song.length() < shortestShared) return;
    // The reader is opened in its thread too. Its memory would else come from the first
    // thread's share of the heap, for which both would wait at every packet: 2 % of a
    // load's processor time.
    auto read = [&song, begin, framesPerBucket, stop = stop_.get_token()] {
      return peaksFrom(song, begin, framesPerBucket, stop);
    };
    try {
      peaks_ = std::async(std::launch::async, std::move(read));
    } catch (const std::system_error&) {
      peaks_ = {};  // no thread is to be had
    }
  }
  Latter(const Latter&) = delete;
  Latter& operator=(const Latter&) = delete;
  ~Latter() { stop_.request_stop(); }

  /// Waits for them, once. Nothing where they could not all be read.
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

std::expected<std::vector<double>, LoadError> waveform(platform::AudioFile& file, int count) {
  assert(count > 0);
  const std::int64_t total = file.length();
  const std::int64_t framesPerBucket = std::max(minimumFramesPerBucket, total / count);
  BucketReader reader(file, framesPerBucket);
  if (!reader.hasBuffer()) return std::unexpected(AudioError::invalid);

  const std::int64_t half = total / 2 / framesPerBucket * framesPerBucket;
  Latter latter(file, half, framesPerBucket);
  Peaks values;
  while (file.framePosition() < file.length()) {
    if (file.framePosition() == half) {
      if (const auto peaks = latter.take()) {
        values.insert(values.end(), peaks->begin(), peaks->end());
        break;
      }
    }
    auto peak = reader.next();
    if (!peak) return std::unexpected(std::move(peak).error());
    if (!*peak) break;
    values.push_back(**peak);
  }
  normalise(values);
  return values;
}

}  // namespace quibel
