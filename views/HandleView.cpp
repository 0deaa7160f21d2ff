#include "views/HandleView.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QMouseEvent>
#include <limits>

#include "views/FocusReason.h"
#include "views/HandleAccessible.h"
#include "views/SelectionGeometry.h"

namespace quibel {

HandleView::HandleView(const QString& name, HandleActions actions, QWidget* strip)
    : QWidget(strip), actions_(std::move(actions)) {
  installHandleAccessibility();
  setAccessibleName(name);
  setToolTip(name);
  setCursor(Qt::SizeHorCursor);
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_NoSystemBackground);
}

void HandleView::place(const Columns& columns) {
  setGeometry(columns.left, 0, columns.width, parentWidget()->height());
}

void HandleView::announceValue() {
  const double now = value();
  if (dragged_ || now == announcedValue_) return;
  announcedValue_ = now;
  if (!QAccessible::isActive()) return;
  QAccessibleValueChangeEvent event(this, now);
  QAccessible::updateAccessibility(&event);
}

double HandleView::minimum() const { return actions_.rule(0); }

double HandleView::maximum() const { return actions_.rule(actions_.songDuration()); }

void HandleView::moveTo(double time) {
  actions_.set(actions_.rule(clampedToSong(time, actions_.songDuration())));
}

void HandleView::enterEvent(QEnterEvent*) { Q_EMIT metOtherwise(); }

void HandleView::leaveEvent(QEvent*) { Q_EMIT metOtherwise(); }

void HandleView::mousePressEvent(QMouseEvent* event) { drag(event); }

void HandleView::mouseMoveEvent(QMouseEvent* event) { drag(event); }

void HandleView::drag(QMouseEvent* event) {
  if (!event->buttons().testFlag(Qt::LeftButton)) return event->ignore();
  showKeyboardFocus(false);
  dragged_ = true;
  actions_.dragTo(mapToParent(event->position()).x());
}

void HandleView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  dragged_ = false;
  announceValue();
}

void HandleView::keyPressEvent(QKeyEvent* event) {
  const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
  const bool shift = modifiers == Qt::ShiftModifier;
  if (modifiers != Qt::NoModifier && !shift) return event->ignore();
  const double arrow = shift ? 1 : handleStep;
  constexpr double page = 5;
  constexpr double far = std::numeric_limits<double>::infinity();
  double step = 0;
  switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Down:
      step = -arrow;
      break;
    case Qt::Key_Right:
    case Qt::Key_Up:
      step = arrow;
      break;
    case Qt::Key_PageDown:
      step = -page;
      break;
    case Qt::Key_PageUp:
      step = page;
      break;
    case Qt::Key_Home:
      step = -far;
      break;
    case Qt::Key_End:
      step = far;
      break;
    default:
      return event->ignore();
  }
  showKeyboardFocus(true);
  dragged_ = false;  // also where no release ever came
  moveTo(value() + step);
}

void HandleView::focusInEvent(QFocusEvent* event) {
  showKeyboardFocus(showsFocus(event->reason(), keyboardFocused_));
  QWidget::focusInEvent(event);
}

void HandleView::focusOutEvent(QFocusEvent* event) {
  if (event->reason() != Qt::ActiveWindowFocusReason) showKeyboardFocus(false);
  QWidget::focusOutEvent(event);
}

void HandleView::showKeyboardFocus(bool shown) {
  if (shown == keyboardFocused_) return;
  keyboardFocused_ = shown;
  Q_EMIT metOtherwise();
}

}  // namespace quibel
