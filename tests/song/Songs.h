#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/AudioFile.h"
#include "tests/support/TestAudio.h"

namespace quibel::test {

/// Opens a song or throws with the error's description.
std::unique_ptr<platform::AudioFile> openSong(const std::filesystem::path& file);

/// The description of the error that opening, or reading to the end, gives;
/// empty if all goes well.
std::string failureOf(const std::filesystem::path& file);

/// Reads at most `frames` frames from where the song stands; throws on an error.
Sound readFrames(platform::AudioFile& song, std::uint32_t frames);

/// Reads to the end, in pieces of sizes that divide nothing.
Sound readAll(platform::AudioFile& song);
Sound readAll(const std::filesystem::path& file);

/// The greatest difference of two sounds' samples from frame `at` of the first
/// on; infinite where their channels differ or `part` reaches beyond `whole`.
float greatestDifference(const Sound& whole, std::size_t at, const Sound& part);

/// By how many frames `sound` lies behind `reference`, from their first channels:
/// where they are most alike. Looks up to `reach` frames either way, at a stretch
/// of `frames` frames from frame `from` of the reference on.
int lagBehind(const Sound& reference, const Sound& sound, int reach, std::size_t from,
              std::size_t frames);

/// A format that songs come in, and how to make one from a WAV file.
struct SongFormat {
  std::string name;  ///< of the test
  std::string file;
  std::vector<std::string> command;  ///< "{in}" and "{out}" stand for the files
  std::int64_t expectedLength = 0;   ///< of a song of `sourceLength` frames
  bool isLossless = false;
  int rate = 44'100;  ///< of the source, and of the song
  int channels = 2;
};

/// Odd on purpose: no codec's block, no container's unit, no millisecond ends here.
constexpr std::size_t sourceLength = 88'211;

const std::vector<SongFormat>& songFormats();

/// Makes a song of a format from a WAV file in the same directory.
std::filesystem::path makeSong(const SongFormat& format, const std::filesystem::path& wav);

void PrintTo(const SongFormat& format, std::ostream* stream);

}  // namespace quibel::test
