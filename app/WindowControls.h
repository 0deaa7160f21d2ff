#pragma once

#include <QAbstractButton>

#include "app/ButtonLayout.h"
#include "views/Symbols.h"

class QHBoxLayout;

namespace quibel {

/// One of the window's own buttons: a symbol on a disc, darker while it is pointed at.
class WindowControl : public QAbstractButton {
  Q_OBJECT

 public:
  WindowControl(Symbol symbol, const QString& name, QWidget* parent);

  void setFace(Symbol symbol, const QString& name);
  QSize sizeHint() const override { return {20, 20}; }

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  Symbol symbol_;
};

/// What a title bar would offer, for a window without one: a row as wide as the window,
/// with buttons at its ends.
class WindowControls : public QWidget {
  Q_OBJECT

 public:
  explicit WindowControls(QWidget* parent);

  /// Puts the buttons where the desktop wants them. One that is on neither side goes.
  void arrange(const ButtonLayout& layout);
  void setMaximised(bool maximised);

 Q_SIGNALS:
  void minimise();
  void toggleMaximised();
  void close();

 private:
  WindowControl& control(WindowButton button) const;

  QHBoxLayout* row_;
  WindowControl* minimise_;
  WindowControl* maximise_;
  WindowControl* close_;
};

}  // namespace quibel
