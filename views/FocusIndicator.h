#pragma once

class QWidget;

namespace quibel {

/// A control that shows that it has the focus only where the keyboard brought it there.
class FocusIndicator {
 public:
  virtual bool isKeyboardFocused() const = 0;
  virtual void showKeyboardFocus(bool shown) = 0;

 protected:
  ~FocusIndicator() = default;
};

/// Whether `control` shows that it has the focus. No control shows nothing.
bool showsFocus(const QWidget* control);

/// Gives `control` the focus, also where its window is not active yet, and has it show
/// that or not.
void giveFocus(QWidget& control, bool shown);

}  // namespace quibel
