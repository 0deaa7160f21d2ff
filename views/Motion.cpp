#include "views/Motion.h"

#include <QApplication>
#include <QVariant>

namespace quibel {
namespace {

constexpr const char* property = "motionReduced";

}  // namespace

bool isMotionReduced() { return qApp->property(property).toBool(); }

void setMotionReduced(bool reduced) { qApp->setProperty(property, reduced); }

}  // namespace quibel
