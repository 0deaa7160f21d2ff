#include "views/FocusIndicator.h"

#include <QWidget>

namespace quibel {

bool showsFocus(const QWidget* control) {
  const auto* const indicator = dynamic_cast<const FocusIndicator*>(control);
  return indicator && indicator->isKeyboardFocused();
}

void giveFocus(QWidget& control, bool shown) {
  control.setFocus();
  if (auto* const indicator = dynamic_cast<FocusIndicator*>(&control)) {
    indicator->showKeyboardFocus(shown);
  }
}

}  // namespace quibel
