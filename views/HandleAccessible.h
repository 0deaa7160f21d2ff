#pragma once

namespace quibel {

/// Lets assistive technology see every HandleView as a spin button in seconds,
/// whose text is what a person hears: a screen reader reads a slider's bare number,
/// with a decimal point in any language. Doing it again changes nothing.
void installHandleAccessibility();

}  // namespace quibel
