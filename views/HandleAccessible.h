#pragma once

namespace quibel {

/// Lets assistive technology see every HandleView as a slider in seconds.
/// Doing it again changes nothing.
void installHandleAccessibility();

}  // namespace quibel
