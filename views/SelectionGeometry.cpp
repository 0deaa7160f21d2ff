#include "views/SelectionGeometry.h"

namespace quibel {
namespace {

// Unlike std::max and std::min, these say which argument a NaN loses to.
double larger(double a, double b) { return b >= a ? b : a; }
double smaller(double a, double b) { return b < a ? b : a; }

}  // namespace

double position(double time, double duration, double width) {
  return duration > 0 ? time / duration * width : 0;
}

double toTime(double x, double width, double duration) {
  return clampedToSong(x / width * duration, duration);
}

double clampedToSong(double time, double duration) { return smaller(duration, larger(0, time)); }

double draggedStart(double time, double end) { return smaller(time, end - minimumFragment); }

double draggedEnd(double time, double start) { return larger(time, start + minimumFragment); }

}  // namespace quibel
