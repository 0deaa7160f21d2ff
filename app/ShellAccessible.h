#pragma once

namespace quibel {

/// What assistive technology sees of the window: each line of the status area is a
/// notification and the alert is an alert, so that they are read out as they appear,
/// and what the alert covers is not there.
void installShellAccessibility();

}  // namespace quibel
