#pragma once

#include <QAbstractButton>

#include "views/Symbols.h"

namespace quibel {

/// One of the window's own buttons: a symbol on a disc, darker while it is pointed at.
class WindowControl : public QAbstractButton {
  Q_OBJECT

 public:
  WindowControl(Symbol symbol, const QString& name, QWidget* parent);

  void setFace(Symbol symbol, const QString& name);
  QSize sizeHint() const override { return {20, 20}; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  Symbol symbol_;
  bool keyboardFocused_ = false;
};

/// What a title bar would offer, for a window without one.
class WindowControls : public QWidget {
  Q_OBJECT

 public:
  explicit WindowControls(QWidget* parent);

  void setMaximised(bool maximised);

 Q_SIGNALS:
  void minimise();
  void toggleMaximised();
  void close();

 private:
  WindowControl* maximise_;
};

}  // namespace quibel
