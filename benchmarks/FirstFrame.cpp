// Loaded into a program with a window (LD_PRELOAD): ends it once its first frame is
// painted, having written its peak memory in KiB to the file FIRST_FRAME_PEAK.
#include <QBackingStore>
#include <cstdlib>
#include <fstream>
#include <string>

#include <dlfcn.h>
#include <unistd.h>

// What this library's own definition stands in front of.
constexpr const char* mangledFlush = "_ZN13QBackingStore5flushERK7QRegionP7QWindowRK6QPoint";

void QBackingStore::flush(const QRegion& region, QWindow* window, const QPoint& offset) {
  using Flush = void (*)(QBackingStore*, const QRegion&, QWindow*, const QPoint&);
  reinterpret_cast<Flush>(dlsym(RTLD_NEXT, mangledFlush))(this, region, window, offset);

  // Not getrusage(): a child's peak begins with that of the process that forked it.
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word && word != "VmHWM:") {
  }
  status >> word;
  std::ofstream(std::getenv("FIRST_FRAME_PEAK")) << word << std::flush;
  _exit(EXIT_SUCCESS);
}
