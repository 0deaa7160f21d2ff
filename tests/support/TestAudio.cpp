#include "tests/support/TestAudio.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <numbers>
#include <random>
#include <span>
#include <stdexcept>
#include <system_error>
#include <tuple>

#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>

extern char** environ;

namespace quibel::test {

namespace {

constexpr double tau = 2 * std::numbers::pi;

Sound silence(int rate, int channels, std::size_t frames) {
  return {rate, std::vector(static_cast<std::size_t>(channels), std::vector<float>(frames))};
}

/// The same numbers everywhere, unlike the standard library's distributions.
class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}

  /// -1 … 1
  float next() { return static_cast<float>(engine_()) * (2.0F / 4294967296.0F) - 1.0F; }

 private:
  std::mt19937 engine_;
};

std::size_t bytesOf(WavFormat format) {
  switch (format) {
    case WavFormat::unsigned8:
      return 1;
    case WavFormat::signed16:
      return 2;
    case WavFormat::signed24:
      return 3;
    case WavFormat::signed32:
    case WavFormat::float32:
      return 4;
    case WavFormat::float64:
      return 8;
  }
  return 0;
}

bool isFloat(WavFormat format) {
  return format == WavFormat::float32 || format == WavFormat::float64;
}

// The magnitude of the most negative integer of a format's size.
double fullScale(WavFormat format) {
  return static_cast<double>(std::int64_t{1} << (8 * bytesOf(format) - 1));
}

std::int64_t toInteger(float sample, WavFormat format) {
  const double scale = fullScale(format);
  return static_cast<std::int64_t>(
      std::clamp(std::nearbyint(double{sample} * scale), -scale, scale - 1));
}

void append(std::vector<std::uint8_t>& bytes, std::uint64_t number, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
  }
}

void append(std::vector<std::uint8_t>& bytes, const char* text) {
  bytes.insert(bytes.end(), text, text + std::strlen(text));
}

std::uint64_t storedForm(float sample, WavFormat format) {
  if (format == WavFormat::float32) return std::bit_cast<std::uint32_t>(sample);
  if (format == WavFormat::float64) return std::bit_cast<std::uint64_t>(double{sample});
  const std::int64_t number = toInteger(sample, format);
  return static_cast<std::uint64_t>(format == WavFormat::unsigned8 ? number + 128 : number);
}

}  // namespace

TemporaryDirectory::TemporaryDirectory() {
  auto name = (std::filesystem::temp_directory_path() / "quibel-test-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), "temporary directory");
  }
  path_ = name;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

Sound sine(int rate, int channels, std::size_t frames, double frequency, float level) {
  Sound sound = silence(rate, channels, frames);
  for (auto& channel : sound.channels) {
    for (std::size_t i = 0; i < frames; ++i) {
      channel[i] =
          level * static_cast<float>(std::sin(tau * frequency * static_cast<double>(i) / rate));
    }
  }
  return sound;
}

Sound sweep(int rate, int channels, std::size_t frames, float level) {
  Sound sound = silence(rate, channels, frames);
  const double seconds = static_cast<double>(frames) / rate;
  const double rise = (0.4 * rate - 100) / seconds;
  for (auto& channel : sound.channels) {
    for (std::size_t i = 0; i < frames; ++i) {
      const double t = static_cast<double>(i) / rate;
      channel[i] = level * static_cast<float>(std::sin(tau * (100 * t + rise * t * t / 2)));
    }
  }
  return sound;
}

Sound noise(int rate, int channels, std::size_t frames, std::uint32_t seed, float level) {
  Sound sound = silence(rate, channels, frames);
  for (auto& channel : sound.channels) {
    Random random(seed++);
    std::ranges::generate(channel, [&] { return level * random.next(); });
  }
  return sound;
}

namespace {

Sound makeSong(int rate, int channels, std::size_t frames, std::uint32_t seed) {
  Sound sound = sweep(rate, channels, frames, 0.2F);
  double tone = 220;
  for (auto& channel : sound.channels) {
    Random random(seed++);
    float low = 0;
    for (std::size_t i = 0; i < frames; ++i) {
      const double t = static_cast<double>(i) / rate;
      // Noise without its highest part, which lossy codecs leave out.
      low += 0.3F * (random.next() - low);
      const auto swell = static_cast<float>(0.5 + 0.5 * std::sin(tau * 3 * t));
      channel[i] += 0.4F * swell * low + 0.2F * static_cast<float>(std::sin(tau * tone * t));
    }
    tone *= 1.5;
  }
  return sound;
}

Sound makeAttacks(int rate, int channels, std::size_t frames) {
  Sound sound = makeSong(rate, channels, frames, 1);
  const Sound bursts = noise(rate, channels, frames, 5, 0.4F);
  for (std::size_t channel = 0; channel < sound.channels.size(); ++channel) {
    for (std::size_t i = 0; i < frames; ++i) {
      float& sample = sound.channels[channel][i];
      sample = i % 7'001 < 300 ? bursts.channels[channel][i] : sample / 10;
    }
  }
  return sound;
}

// Keeps the last sound: tests of many formats ask for the same one again and again.
template <auto make, class... Arguments>
Sound kept(Arguments... arguments) {
  thread_local std::optional<std::tuple<Arguments...>> last;
  thread_local Sound sound;
  if (last != std::tuple(arguments...)) {
    sound = make(arguments...);
    last = std::tuple(arguments...);
  }
  return sound;
}

}  // namespace

Sound song(int rate, int channels, std::size_t frames, std::uint32_t seed) {
  return kept<makeSong>(rate, channels, frames, seed);
}

Sound attacks(int rate, int channels, std::size_t frames) {
  return kept<makeAttacks>(rate, channels, frames);
}

void writeWav(const std::filesystem::path& file, const Sound& sound, WavFormat format) {
  const std::size_t size = bytesOf(format);
  const std::size_t channels = sound.channels.size();
  const std::size_t dataSize = sound.frames() * channels * size;
  const auto rate = static_cast<std::uint64_t>(sound.rate);
  std::vector<std::uint8_t> bytes;
  bytes.reserve(dataSize + 44);
  append(bytes, "RIFF");
  append(bytes, 36 + dataSize + dataSize % 2, 4);
  append(bytes, "WAVEfmt ");
  append(bytes, 16, 4);
  append(bytes, isFloat(format) ? 3 : 1, 2);
  append(bytes, channels, 2);
  append(bytes, rate, 4);
  append(bytes, rate * channels * size, 4);
  append(bytes, channels * size, 2);
  append(bytes, 8 * size, 2);
  append(bytes, "data");
  append(bytes, dataSize, 4);
  for (std::size_t i = 0; i < sound.frames(); ++i) {
    for (const auto& channel : sound.channels) append(bytes, storedForm(channel[i], format), size);
  }
  if (dataSize % 2 != 0) bytes.push_back(0);
  writeBytes(file, bytes);
}

Sound quantized(const Sound& sound, WavFormat format) {
  if (isFloat(format)) return sound;
  const double scale = 1 / fullScale(format);
  Sound result = sound;
  for (auto& channel : result.channels) {
    for (float& sample : channel) {
      sample = static_cast<float>(static_cast<double>(toInteger(sample, format)) * scale);
    }
  }
  return result;
}

void run(const std::vector<std::string>& command) {
  std::vector<std::string> copies = command;
  std::vector<char*> arguments;
  arguments.reserve(copies.size() + 1);
  for (std::string& copy : copies) arguments.push_back(copy.data());
  arguments.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  pid_t process = 0;
  const int code =
      posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (code != 0) {
    throw std::runtime_error("The program " + command.front() +
                             " cannot be run: " + std::generic_category().message(code));
  }
  int status = 0;
  while (waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "waitpid");
  }
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
  std::string line;
  for (const std::string& argument : command) line += argument + " ";
  throw std::runtime_error("This command failed: " + line);
}

std::vector<std::uint8_t> readBytes(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  stream.exceptions(std::ios::badbit | std::ios::failbit);
  std::vector<std::uint8_t> bytes(std::filesystem::file_size(file));
  if (!bytes.empty()) {
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }
  return bytes;
}

void writeBytes(const std::filesystem::path& file, const std::vector<std::uint8_t>& bytes) {
  std::ofstream stream(file, std::ios::binary);
  stream.exceptions(std::ios::badbit | std::ios::failbit);
  stream.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
  stream.close();
}

std::optional<std::filesystem::path> sharedAudio() {
  std::filesystem::path folder = QUIBEL_SHARED_AUDIO;
  if (!std::filesystem::exists(folder / "frames.tsv")) return std::nullopt;
  return folder;
}

}  // namespace quibel::test
