#pragma once

#include <QPushButton>
#include <optional>

#include "views/FocusIndicator.h"
#include "views/Symbols.h"

namespace quibel {

/// A push button with a face for every condition: at rest, under the pointer,
/// pressed, with the keyboard's focus, disabled. Space and Enter press it, and its
/// shortcut where it has one.
class ActionButton : public QPushButton, public FocusIndicator {
  Q_OBJECT

 public:
  enum class Prominence { standard, prominent };
  enum class Size { regular, large };

  ActionButton(Prominence prominence, Size size, const QString& title, QWidget* parent = nullptr);

  /// The face: a title with a symbol before it. Nothing happens where it is shown already.
  void setFace(const QString& title, std::optional<Symbol> symbol);

  std::optional<Symbol> symbol() const { return symbol_; }

  bool isKeyboardFocused() const override { return keyboardFocused_; }
  void showKeyboardFocus(bool shown) override;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  int symbolSide() const;
  int contentWidth() const;

  Prominence prominence_;
  Size size_;
  std::optional<Symbol> symbol_;
  bool keyboardFocused_ = false;
};

}  // namespace quibel
