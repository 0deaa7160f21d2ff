#include "app/FocusReturn.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>

namespace quibel {

FocusReturn::FocusReturn(QWidget& window) : QObject(&window), window_(window) {
  window_.installEventFilter(this);
}

bool FocusReturn::eventFilter(QObject* window, QEvent* event) {
  if (event->type() == QEvent::WindowUnblocked) {
    // The panel's completions may still show, and Qt then takes no notice of the focus.
    if (auto* const popup = QApplication::activePopupWidget()) popup->close();
    // The panel itself goes before the next turn of the event loop.
    QMetaObject::invokeMethod(&window_, &QWidget::activateWindow, Qt::QueuedConnection);
  }
  return QObject::eventFilter(window, event);
}

}  // namespace quibel
