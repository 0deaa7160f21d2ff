#include "platform/Platform.h"

#include <cassert>

namespace quibel::platform {
namespace {
Platform* standardPlatform = nullptr;
}

Platform& Platform::standard() {
  assert(standardPlatform && "main() sets the platform before it makes a model");
  return *standardPlatform;
}

void Platform::setStandard(Platform* platform) { standardPlatform = platform; }

}  // namespace quibel::platform
