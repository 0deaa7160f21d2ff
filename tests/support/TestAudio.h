#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace quibel::test {

/// A fresh directory, removed with all it holds at the end. Throws where it
/// cannot be made.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory();

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

/// Samples at ±1 full scale, one array a channel, all of one length.
struct Sound {
  int rate = 44'100;
  std::vector<std::vector<float>> channels;

  std::size_t frames() const { return channels.empty() ? 0 : channels.front().size(); }
};

/// A pure tone of `frequency` Hz, the same on every channel.
Sound sine(int rate, int channels, std::size_t frames, double frequency, float level = 0.5F);

/// A tone that rises from 100 Hz to 0.4 times the rate, the same on every channel.
Sound sweep(int rate, int channels, std::size_t frames, float level = 0.5F);

/// White noise, different on every channel, the same for a seed on every machine.
Sound noise(int rate, int channels, std::size_t frames, std::uint32_t seed = 1,
            float level = 0.25F);

/// What a song needs for its places to be told apart after lossy coding: tones
/// under noise that swells and fades, different on every channel.
Sound song(int rate, int channels, std::size_t frames, std::uint32_t seed = 1);

/// A quiet song with bursts of noise, for which codecs change to short blocks.
Sound attacks(int rate, int channels, std::size_t frames);

enum class WavFormat { unsigned8, signed16, signed24, signed32, float32, float64 };

/// Writes a RIFF WAVE file. Integers are rounded to the nearest and clipped.
void writeWav(const std::filesystem::path& file, const Sound& sound,
              WavFormat format = WavFormat::signed16);

/// What writeWav() keeps of a sound in a format: the samples that a lossless
/// decoder gives back.
Sound quantized(const Sound& sound, WavFormat format);

/// Runs a program, found by PATH, and waits for it. Throws std::runtime_error
/// that names the program where it is missing or fails.
void run(const std::vector<std::string>& command);

/// A whole file's bytes, and back. Both throw on failure.
std::vector<std::uint8_t> readBytes(const std::filesystem::path& file);
void writeBytes(const std::filesystem::path& file, const std::vector<std::uint8_t>& bytes);

/// A folder of real audio files made elsewhere, where this machine has it.
std::optional<std::filesystem::path> sharedAudio();

}  // namespace quibel::test
