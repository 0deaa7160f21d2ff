#pragma once

#include <QMainWindow>
#include <optional>

#include "app/ButtonLayout.h"
#include "app/WindowManager.h"

namespace quibel {

class ContentView;
class RoundedCorner;
class WindowControls;
class WindowDrag;

/// The application's one window, without a title bar: the content runs up to
/// its top edge, its controls lie in the content's upper padding, its empty
/// ground moves it, its edges resize it. Where the compositor allows, its corners
/// are round and it has a shadow. Closing it ends the application.
class Window : public QMainWindow {
  Q_OBJECT

 public:
  /// With what the session's compositor can show around it.
  explicit Window(Frame frame = supportedFrame());

  ContentView& content() { return *content_; }

  void arrangeButtons(const ButtonLayout& layout);

 protected:
  bool event(QEvent* event) override;
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  void toggleMaximised();
  QRect body() const;
  void layOutFrame();

  const Frame frame_;
  ContentView* content_;
  WindowControls* controls_;
  WindowDrag* drag_ = nullptr;
  QList<RoundedCorner*> corners_;
  std::optional<QPoint> groundPressedAt_;
  QRect restored_;  // where it goes back to, without a window manager
};

}  // namespace quibel
