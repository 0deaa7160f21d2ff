#pragma once

#include <QObject>

class QWidget;

namespace quibel {

/// Activates its window again when a panel over it has gone: not every window manager
/// does, and Qt may miss it where one does. Without it no key reaches the window.
class FocusReturn : public QObject {
 public:
  explicit FocusReturn(QWidget& window);

 protected:
  bool eventFilter(QObject* window, QEvent* event) override;

 private:
  QWidget& window_;
};

}  // namespace quibel
