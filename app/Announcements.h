#pragma once

namespace quibel {

/// Makes assistive technology speak of what appears without being asked for: the
/// status line as a notification, the alert as an alert.
void installAnnouncements();

}  // namespace quibel
