// Quibel's window, looping a fragment of a song until it is killed: the program
// that the loop's benchmark watches. Ten times a second it prints a line with
// the time in ns, the playhead and its own processor time in s, and its resident
// memory in KiB. With a second song, it loads that one every ten seconds into
// another editor, and resizes the window fifty times a second for two seconds.

#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include <time.h>
#include <unistd.h>

#include "app/ContentView.h"
#include "app/DesktopPlatform.h"
#include "app/QuibelApp.h"
#include "app/Window.h"

namespace quibel::benchmarks {
namespace {

/// Resident memory now, in KiB.
long residentMemory() {
  long program = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> program >> resident;
  return resident * (::sysconf(_SC_PAGESIZE) / 1024);
}

/// `when` the playhead was that.
void report(std::chrono::steady_clock::time_point when, double playhead) {
  timespec used{};
  static_cast<void>(::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used));
  const double processor =
      static_cast<double>(used.tv_sec) + 1e-9 * static_cast<double>(used.tv_nsec);
  static_cast<void>(std::printf(
      "%lld %.6f %.6f %ld\n",
      static_cast<long long>(
          std::chrono::duration_cast<std::chrono::nanoseconds>(when.time_since_epoch()).count()),
      playhead, processor, residentMemory()));
  if (std::fflush(stdout) != 0) std::exit(EXIT_FAILURE);
}

/// Steps in which the window grows and shrinks again.
constexpr int resizeSteps = 100;

void resize(QWidget& window, int step) {
  const int size = std::min(step, resizeSteps - step);
  window.resize(ContentView::minimumContentSize + QSize(6, 4) * size);
}

int run(QuibelApp& app, const char* song, const char* otherSong, double start, double end) {
  Window window;
  window.show();
  auto& editor = window.content().editor();
  editor.load(platform::FileURL(song));

  // While the loop goes on, nothing changes but the playhead.
  auto changed = std::chrono::steady_clock::now();
  const auto subscription =
      editor.objectWillChange().subscribe([&] { changed = std::chrono::steady_clock::now(); });

  QTimer reports;
  reports.setInterval(100);
  QObject::connect(&reports, &QTimer::timeout, [&] {
    if (editor.isLoading()) return;
    if (!editor.isPlaying()) {
      editor.startBinding().set(start);
      editor.endBinding().set(end);
      editor.togglePreview();
      if (!editor.isPlaying()) {
        std::puts(editor.alertText().c_str());
        std::exit(EXIT_FAILURE);
      }
    }
    report(changed, editor.playhead());
  });
  reports.start();

  QTimer resizing;
  QTimer loading;
  std::shared_ptr<AudioEditorModel> other;
  int step = 0;
  QObject::connect(&resizing, &QTimer::timeout, [&] {
    resize(window, ++step);
    if (step == resizeSteps) resizing.stop();
  });
  QObject::connect(&loading, &QTimer::timeout, [&] {
    other = std::make_shared<AudioEditorModel>();
    other->load(platform::FileURL(otherSong));
    step = 0;
    resizing.start(20);
  });
  if (otherSong != nullptr) loading.start(10'000);
  return app.exec();
}

}  // namespace
}  // namespace quibel::benchmarks

/// start, end, song and perhaps another song.
int main(int count, char** arguments) {
  if (count < 4) return EXIT_FAILURE;
  int argc = 1;
  quibel::QuibelApp app(argc, arguments);
  quibel::DesktopPlatform platform;
  quibel::platform::Platform::setStandard(&platform);
  return quibel::benchmarks::run(app, arguments[3], count > 4 ? arguments[4] : nullptr,
                                 std::strtod(arguments[1], nullptr),
                                 std::strtod(arguments[2], nullptr));
}
