#pragma once

#include <QMargins>
#include <QSize>

class QWindow;

namespace quibel {

/// Whether somebody places and sizes the windows of this session. An X server may have
/// no window manager; a Wayland compositor always is one.
bool hasWindowManager();

/// What a window may draw at its own edge.
enum class Frame {
  plain,    ///< nothing: all of it is opaque
  rounded,  ///< transparent corners
  shadowed  ///< those, and a shadow outside what counts as the window
};

/// What this session's compositor can show and be told of.
Frame supportedFrame();

/// Tells the compositor that `margins` of the window are its shadow: neither part of its
/// geometry nor taking the pointer. For a window that exists, on a session that supports
/// Frame::shadowed; to be told again whenever its size or its smallest
/// one, `minimum` with the margins, changes.
void declareShadow(QWindow& window, const QMargins& margins, QSize minimum);

}  // namespace quibel
