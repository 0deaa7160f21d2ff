#include "model/Waveform.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

namespace quibel {
namespace {

/// Buckets are not made smaller than this, however short the song.
constexpr std::int64_t minimumFramesPerBucket = 256;

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
  const std::size_t channels = file.processingFormat().channelCount;
  const std::int64_t framesPerBucket = std::max(minimumFramesPerBucket, total / count);
  if (framesPerBucket > std::numeric_limits<std::uint32_t>::max())
    return std::unexpected(AudioError::invalid);

  const auto capacity = static_cast<std::uint32_t>(framesPerBucket);
  const auto buffer = file.makeBuffer(capacity);
  if (!buffer) return std::unexpected(AudioError::invalid);

  std::vector<double> values;
  while (file.framePosition() < file.length()) {
    buffer->setFrameLength(0);
    if (auto read = file.read(*buffer, capacity); !read)
      return std::unexpected(std::move(read).error());
    if (buffer->frameLength() == 0) break;
    const auto* const data = buffer->floatChannelData();
    if (!data) break;

    float peak = 0;
    for (std::size_t channel = 0; channel < channels; ++channel)
      peak = peakOf({data[channel], buffer->frameLength()}, peak);
    values.push_back(std::min(1.0F, peak));
  }
  normalise(values);
  return values;
}

}  // namespace quibel
