#include "benchmarks/Loading.h"

#include <stdexcept>

#include "model/Waveform.h"
#include "song/decoding/OpenSong.h"

namespace quibel::benchmarks {

void loadAnew(const std::filesystem::path& file) {
  constexpr int buckets = 900;
  // What is known of a file is forgotten when it changes.
  std::filesystem::last_write_time(file, std::filesystem::file_time_type::clock::now());
  const auto song = song::openAudioFile(platform::FileURL(file));
  if (!song) throw std::runtime_error(song.error().localizedDescription());
  const auto envelope = waveform(**song, buckets);
  if (!envelope || envelope->empty()) throw std::runtime_error("no envelope");
}

}  // namespace quibel::benchmarks
