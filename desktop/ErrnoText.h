#pragma once

#include "platform/Error.h"

namespace quibel::desktop {

/// What an `errno` value of a file operation means to the person in front of it.
platform::Error errnoError(int code);

}  // namespace quibel::desktop
