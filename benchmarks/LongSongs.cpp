#include "benchmarks/LongSongs.h"

#include "benchmarks/Measuring.h"
#include "tests/support/TestAudio.h"

namespace quibel::benchmarks {

std::vector<std::filesystem::path> makeLongSongs(const std::filesystem::path& folder) {
  const auto file = [&](const std::string& name) { return (folder / name).string(); };
  print("Making three hours of stereo at 44.1 kHz …\n");
  test::writeWav(file("part.wav"), test::song(44'100, 2, std::size_t{300} * 44'100));
  test::run({"lame", "--quiet", file("part.wav"), file("part.mp3")});
  test::run({"ffmpeg", "-v", "error", "-i", file("part.wav"), file("part.m4a")});
  test::run({"oggenc", "-Q", "-o", file("part.ogg"), file("part.wav")});
  for (const char* name : {"song.mp3", "song.m4a", "song.ogg"}) {
    const std::string part = "part" + std::filesystem::path(name).extension().string();
    test::run({"ffmpeg", "-v", "error", "-stream_loop", "35", "-i", file(part), "-c", "copy",
               file(name)});
  }
  // Its frames are numbered, so copies of them would be no song.
  test::run(
      {"ffmpeg", "-v", "error", "-stream_loop", "35", "-i", file("part.wav"), file("song.flac")});
  return {file("song.mp3"), file("song.m4a"), file("song.flac"), file("song.ogg")};
}

}  // namespace quibel::benchmarks
