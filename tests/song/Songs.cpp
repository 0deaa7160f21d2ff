#include "tests/song/Songs.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "song/decoding/OpenSong.h"
#include "tests/support/MadeFiles.h"

namespace quibel::test {

std::unique_ptr<platform::AudioFile> openSong(const std::filesystem::path& file) {
  auto song = song::openAudioFile(platform::FileURL(file));
  if (!song) throw std::runtime_error(file.string() + ": " + song.error().localizedDescription());
  return std::move(*song);
}

std::string failureOf(const std::filesystem::path& file) {
  const auto song = song::openAudioFile(platform::FileURL(file));
  if (!song) return song.error().localizedDescription();
  const auto buffer = (*song)->makeBuffer(4096);
  do {
    const auto result = (*song)->read(*buffer, 4096);
    if (!result) return result.error().localizedDescription();
  } while (buffer->frameLength() > 0);
  return {};
}

Sound readFrames(platform::AudioFile& song, std::uint32_t frames) {
  const auto format = song.processingFormat();
  Sound sound{static_cast<int>(format.sampleRate),
              std::vector<std::vector<float>>(format.channelCount)};
  const auto buffer = song.makeBuffer(frames);
  const auto result = song.read(*buffer, frames);
  if (!result) throw std::runtime_error(result.error().localizedDescription());
  for (std::size_t channel = 0; channel < sound.channels.size(); ++channel) {
    const float* const samples = buffer->floatChannelData()[channel];
    sound.channels[channel].assign(samples, samples + buffer->frameLength());
  }
  return sound;
}

Sound readAll(platform::AudioFile& song) {
  Sound whole = readFrames(song, 4099);
  while (true) {
    const Sound part = readFrames(song, 4099);
    if (part.frames() == 0) return whole;
    for (std::size_t channel = 0; channel < whole.channels.size(); ++channel) {
      whole.channels[channel].insert(whole.channels[channel].end(), part.channels[channel].begin(),
                                     part.channels[channel].end());
    }
  }
}

Sound readAll(const std::filesystem::path& file) { return readAll(*openSong(file)); }

float greatestDifference(const Sound& whole, std::size_t at, const Sound& part) {
  if (whole.channels.size() != part.channels.size() || at + part.frames() > whole.frames()) {
    return std::numeric_limits<float>::infinity();
  }
  float greatest = 0;
  for (std::size_t channel = 0; channel < whole.channels.size(); ++channel) {
    for (std::size_t i = 0; i < part.frames(); ++i) {
      greatest = std::max(greatest,
                          std::fabs(whole.channels[channel][at + i] - part.channels[channel][i]));
    }
  }
  return greatest;
}

int lagBehind(const Sound& reference, const Sound& sound, int reach, std::size_t from,
              std::size_t frames) {
  const auto& one = reference.channels.at(0);
  const auto& other = sound.channels.at(0);
  int best = 0;
  double bestSum = -std::numeric_limits<double>::infinity();
  for (int lag = -reach; lag <= reach; ++lag) {
    const auto begin = static_cast<std::ptrdiff_t>(from) + lag;
    if (begin < 0 || begin + static_cast<std::ptrdiff_t>(frames) > std::ssize(other)) continue;
    float sum = 0;
    for (std::size_t i = 0; i < frames; ++i) {
      sum += one[from + i] * other[static_cast<std::size_t>(begin) + i];
    }
    if (sum > bestSum) {
      bestSum = sum;
      best = lag;
    }
  }
  return best;
}

std::filesystem::path makeSong(const SongFormat& format, const std::filesystem::path& wav) {
  const auto file = wav.parent_path() / format.file;
  makeFile(format.command, wav, file);
  return file;
}

void PrintTo(const SongFormat& format, std::ostream* stream) { *stream << format.name; }

}  // namespace quibel::test
