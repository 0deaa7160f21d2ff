// The scan for peaks alone: the envelope of samples that are there already, beside a
// plain maximum, of whole numbers, over as much memory.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include "benchmarks/Measuring.h"
#include "model/Waveform.h"
#include "platform/AudioFile.h"

namespace quibel::benchmarks {
namespace {

constexpr int rounds = 15;
constexpr std::int64_t frames = std::int64_t{300} * 44'100;
constexpr std::uint32_t channels = 2;
constexpr int buckets = 900;

/// A song whose every read finds the samples in their place.
class Ready final : public platform::AudioFile {
 public:
  explicit Ready(platform::AudioPCMBuffer& samples) : samples_(samples) {}

  std::int64_t length() const override { return frames; }
  platform::AudioFormat processingFormat() const override { return {44'100, channels}; }
  std::int64_t framePosition() const override { return position_; }
  std::unique_ptr<platform::AudioPCMBuffer> makeBuffer(std::uint32_t capacity) const override {
    auto buffer = std::make_unique<platform::AudioPCMBuffer>(channels, capacity);
    for (std::uint32_t channel = 0; channel < channels; ++channel) {
      std::copy_n(samples_.floatChannelData()[channel], capacity,
                  buffer->floatChannelData()[channel]);
    }
    return buffer;
  }
  platform::Result<void> read(platform::AudioPCMBuffer& into, std::uint32_t count) override {
    const auto wanted =
        static_cast<std::uint32_t>(std::min<std::int64_t>(count, frames - position_));
    into.setFrameLength(wanted);
    position_ += wanted;
    return {};
  }
  platform::Result<void> seek(std::int64_t frame) override {
    position_ = frame;
    return {};
  }

 private:
  platform::AudioPCMBuffer& samples_;
  std::int64_t position_ = 0;
};

void run() {
  constexpr auto perBucket = static_cast<std::uint32_t>(frames / buckets);
  platform::AudioPCMBuffer samples(channels, perBucket);
  for (std::uint32_t channel = 0; channel < channels; ++channel) {
    for (std::uint32_t i = 0; i < perBucket; ++i) {
      samples.floatChannelData()[channel][i] = std::sin(static_cast<float>(i));
    }
  }
  const auto envelope = [&] {
    Ready song(samples);
    const auto values = waveform(song, buckets);
    if (!values || values->size() != buckets) throw std::runtime_error("no envelope");
  };
  std::vector<std::int32_t> numbers(std::size_t{perBucket} * channels, 7);
  const auto maximum = [&] {
    std::int32_t highest = 0;
    for (int bucket = 0; bucket < buckets; ++bucket) {
      numbers.front() = bucket;
      for (const std::int32_t number : numbers) highest = std::max(highest, number);
    }
    if (highest != buckets - 1) throw std::runtime_error("no maximum");
  };
  const auto times =
      medians({[&] { return measure(envelope); }, [&] { return measure(maximum); }}, rounds);
  constexpr double gigabytes = static_cast<double>(frames) * channels * sizeof(float) / 1e9;
  print("Medians of %d interleaved runs over the samples of five minutes.\n\n", rounds);
  print("%-16s %8.1f GB/s\n", "envelope", gigabytes / times[0].processor);
  print("%-16s %8.1f GB/s\n", "plain maximum", gigabytes / times[1].processor);
  print("%-16s %8.2f\n", "ratio of times", times[0].processor / times[1].processor);
}

}  // namespace
}  // namespace quibel::benchmarks

int main() { return quibel::benchmarks::finish(quibel::benchmarks::run); }
