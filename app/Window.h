#pragma once

#include <QMainWindow>
#include <optional>

#include "app/ButtonLayout.h"

namespace quibel {

class ContentView;
class WindowControls;
class WindowDrag;

/// The application's one window, without a title bar: the content runs up to
/// its top edge, its controls lie in the content's upper padding, its empty
/// ground moves it, its edges resize it. Closing it ends the application.
class Window : public QMainWindow {
  Q_OBJECT

 public:
  Window();

  ContentView& content() { return *content_; }

  void arrangeButtons(const ButtonLayout& layout);

 protected:
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  void toggleMaximised();

  ContentView* content_;
  WindowControls* controls_;
  WindowDrag* drag_;
  std::optional<QPoint> groundPressedAt_;
  QRect restored_;  // where it goes back to, without a window manager
};

}  // namespace quibel
