#pragma once

#include <qnamespace.h>

namespace quibel {

/// Whether a view that gets the focus for `reason` should show it: the keyboard
/// brought it there, or the window only came back and `shown` tells how it was.
inline bool showsFocus(Qt::FocusReason reason, bool shown) {
  switch (reason) {
    case Qt::TabFocusReason:
    case Qt::BacktabFocusReason:
    case Qt::ShortcutFocusReason:
      return true;
    case Qt::ActiveWindowFocusReason:
    case Qt::PopupFocusReason:
      return shown;
    default:
      return false;
  }
}

}  // namespace quibel
