#include "views/Motion.h"

namespace quibel {
namespace {

bool reducedMotion = false;

}  // namespace

bool isMotionReduced() { return reducedMotion; }
void setMotionReduced(bool reduced) { reducedMotion = reduced; }

}  // namespace quibel
