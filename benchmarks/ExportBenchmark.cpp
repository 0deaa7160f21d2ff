// Exporting 40 s of a song beside the ffmpeg command doing the same: AAC at the
// same rate and bit rate into the same kind of container, from the same place.

#include <cstdio>
#include <fstream>
#include <future>
#include <stdexcept>

#include "benchmarks/Measuring.h"
#include "song/ringtone/RingtoneSession.h"
#include "tests/support/TestAudio.h"

namespace quibel::benchmarks {
namespace {

constexpr int rounds = 5;
constexpr double seconds = 40;

void exportTone(const std::string& song, const std::string& to, double start) {
  std::filesystem::remove(to);
  const auto session = song::makeExportSession(platform::FileURL(song));
  if (!session) throw std::runtime_error("no session for " + song);
  session->setOutputURL(platform::FileURL(to));
  session->setOutputFileType(platform::FileType::appleM4A);
  session->setTimeRange({platform::makeTime(start, 600), platform::makeTime(seconds, 600)});
  std::promise<void> ended;
  session->exportAsynchronously([&] { ended.set_value(); });
  ended.get_future().wait();
  if (session->error()) throw std::runtime_error(session->error()->localizedDescription());
}

// A line of the process's own account of its memory, in MiB.
double memory(const std::string& line) {
  std::ifstream account("/proc/self/status");
  for (std::string word; account >> word;) {
    double kibibytes = 0;
    if (word == line + ":" && account >> kibibytes) return kibibytes / 1024;
  }
  throw std::runtime_error("no account of the memory");
}

// The most memory that an export takes, in MiB.
double memoryOfAnExport(const std::string& song, const std::string& to) {
  std::ofstream("/proc/self/clear_refs") << 5;  // the peak starts anew
  const double before = memory("VmRSS");
  exportTone(song, to, 100);
  return memory("VmHWM") - before;
}

// How much dearer an export is at the end of three hours than at their beginning.
void compareFarWithNear(const std::string& song, const std::string& longSong,
                        const std::string& to) {
  // The same sound once more: its last repetition begins here.
  constexpr double last = 35 * 300;
  // FLAC has its length in front, which a copy of its packets would keep.
  test::run({"ffmpeg", "-v", "error", "-y", "-stream_loop", "35", "-i", song, "-c:a",
             song.ends_with("flac") ? "flac" : "copy", longSong});
  const auto at = [&](double start) {
    return [&, start] { return measure([&] { exportTone(longSong, to, start); }); };
  };
  exportTone(longSong, to, 0);  // as in the program, where the song has been measured before
  const auto times = medians({at(0), at(last)}, rounds);
  print("%-13s %10.1f %10.1f %10.2f\n", std::filesystem::path(song).filename().c_str(),
        times[0].processor * 1e3, times[1].processor * 1e3,
        times[1].processor / times[0].processor);
  std::filesystem::remove(longSong);
}

void run() {
  const test::TemporaryDirectory directory;
  const auto file = [&](const std::string& name) { return (directory.path() / name).string(); };
  print("Making five minutes of stereo at 44.1 kHz …\n");
  test::writeWav(file("song.wav"), test::song(44'100, 2, std::size_t{300} * 44'100));
  print("The first export takes %.1f MiB.\n", memoryOfAnExport(file("song.wav"), file("tone.m4a")));
  test::run({"flac", "-s", "-o", file("song.flac"), file("song.wav")});
  test::run({"lame", "--quiet", file("song.wav"), file("song.mp3")});
  test::run({"ffmpeg", "-v", "error", "-i", file("song.wav"), file("song.m4a")});
  test::run({"oggenc", "-Q", "-o", file("song.ogg"), file("song.wav")});

  print("Medians of %d interleaved runs, in ms of processor time, and the ratio of wall times.\n\n",
        rounds);
  print("%-10s %8s %10s %10s %10s %10s\n", "file", "from s", "export", "ffmpeg", "ratio", "wall");
  for (const std::string name : {"song.wav", "song.flac", "song.mp3", "song.m4a", "song.ogg"}) {
    for (const double start : {0.0, 255.0}) {
      const auto from = std::to_string(start);
      const auto times = medians(
          {[&] { return measure([&] { exportTone(file(name), file("tone.m4a"), start); }); },
           [&] {
             return measureProgram(
                 {"ffmpeg",  "-v", "error",    "-y",   "-ss", from,       "-t",
                  "40",      "-i", file(name), "-c:a", "aac", "-aac_pns", "0",
                  "-aac_is", "0",  "-b:a",     "256k", "-f",  "ipod",     file("other.m4a")});
           }},
          rounds);
      print("%-10s %8.0f %10.1f %10.1f %10.2f %10.2f\n", name.c_str(), start,
            times[0].processor * 1e3, times[1].processor * 1e3,
            times[0].processor / times[1].processor, times[0].wall / times[1].wall);
    }
  }

  print("\nThe same at both ends of three hours of it.\n\n");
  print("%-13s %10s %10s %10s\n", "file", "first", "last", "ratio");
  for (const std::string name : {"song.wav", "song.flac", "song.mp3", "song.m4a", "song.ogg"})
    compareFarWithNear(file(name), file("long-" + name), file("tone.m4a"));
}

}  // namespace
}  // namespace quibel::benchmarks

int main() { return quibel::benchmarks::finish(quibel::benchmarks::run); }
