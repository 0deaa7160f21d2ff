#pragma once

namespace quibel {

/// Whether somebody places and sizes the windows of this session. An X server may have
/// no window manager; a Wayland compositor always is one.
bool hasWindowManager();

}  // namespace quibel
