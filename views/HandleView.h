#pragma once

#include <QWidget>
#include <functional>

#include "views/FocusIndicator.h"
#include "views/StripGeometry.h"

namespace quibel {

/// What a handle does to the fragment. All times in seconds.
struct HandleActions {
  std::function<double()> value;  ///< where the handle is
  std::function<double()> songDuration;
  std::function<double()> fragment;         ///< how long the fragment is
  std::function<void(double x)> dragTo;     ///< the pointer's x in the strip, in points
  std::function<double(double time)> rule;  ///< where a drag to `time` would put it
  std::function<void(double time)> set;     ///< moves it, past no rule
};

/// One handle's part of the strip that reacts: the pointer, the keyboard and
/// assistive technology. It draws nothing; the strip draws the handle below it.
///
/// Keys: the arrows move it by 0.1 s, with Shift by 1 s, Page Up and Page Down
/// by 5 s, Home and End as far as it goes.
class HandleView : public QWidget, public FocusIndicator {
  Q_OBJECT

 public:
  HandleView(const QString& name, HandleActions actions, QWidget* strip);

  /// Makes these columns of the strip, over its whole height, grab the handle.
  void place(const Columns& columns);

  /// Tells assistive technology of the value, if it is another than last time. A
  /// drag's is told when it ends.
  void announceValue();

  /// Whether the keyboard moves this handle and whether the pointer is over it, to be shown.
  HandleState state() const { return {keyboardFocused_, underMouse()}; }
  bool isKeyboardFocused() const override { return keyboardFocused_; }

  void showKeyboardFocus(bool shown) override;

  double value() const { return actions_.value(); }
  double fragment() const { return actions_.fragment(); }
  double minimum() const;
  double maximum() const;
  /// Moves the handle as a drag to `time` would.
  void moveTo(double time);

 Q_SIGNALS:
  /// The keyboard's focus or the pointer came or went.
  void metOtherwise();

 protected:
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void drag(QMouseEvent* event);

  HandleActions actions_;
  double announcedValue_ = 0;
  bool dragged_ = false;
  bool keyboardFocused_ = false;
};

/// The step of the arrow keys, in seconds.
inline constexpr double handleStep = 0.1;

}  // namespace quibel
