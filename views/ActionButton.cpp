#include "views/ActionButton.h"

#include <QFocusEvent>
#include <QFontMetrics>
#include <QKeyEvent>
#include <algorithm>

#include "views/FocusReason.h"
#include "views/Theme.h"

namespace quibel {
namespace {

constexpr int symbolGap = 7;

struct Metrics {
  int minimumHeight;
  int verticalPadding;
  int horizontalPadding;
  double radius;
};

constexpr Metrics regularMetrics{26, 4, 12, 7};
constexpr Metrics largeMetrics{32, 7, 18, 9};

struct Face {
  QColor fill;
  QColor border;
  QColor text;
};

Face standardFace(const Colors& c, bool enabled, bool hovered, bool pressed) {
  const double tint = !enabled ? 0 : pressed ? 0.14 : hovered ? 0.06 : 0;
  return {blended(c.text, tint, c.buttonFill), enabled ? c.edge : withOpacity(c.text, 0.12),
          enabled ? c.text : c.secondary};
}

Face prominentFace(const Colors& c, bool enabled, bool hovered, bool pressed) {
  if (!enabled) {
    return {blended(c.text, 0.09, c.controlBackground), Qt::transparent, c.secondary};
  }
  // Only ever deeper, so that the text stays legible.
  const QColor deeper = c.onAccentFill == QColor(Qt::black) ? Qt::white : Qt::black;
  const double tint = pressed ? 0.22 : hovered ? 0.1 : 0;
  return {blended(deeper, tint, c.accentFill), c.accentEdge, c.onAccentFill};
}

}  // namespace

ActionButton::ActionButton(Prominence prominence, Size size, const QString& title, QWidget* parent)
    : QPushButton(title, parent), prominence_(prominence), size_(size) {
  setFont(quibel::font(TextStyle::body));
  setAttribute(Qt::WA_Hover);
  setFocusPolicy(Qt::StrongFocus);
  setAutoDefault(true);  // Enter presses it, not only Space
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void ActionButton::setFace(const QString& title, std::optional<Symbol> symbol) {
  if (title == text() && symbol == symbol_) return;
  symbol_ = symbol;
  setText(title);
  updateGeometry();
  update();
}

int ActionButton::symbolSide() const { return std::max(16, fontMetrics().height() - 2); }

int ActionButton::contentWidth() const {
  return fontMetrics().horizontalAdvance(text()) + (symbol_ ? symbolSide() + symbolGap : 0);
}

QSize ActionButton::sizeHint() const {
  const auto& metrics = size_ == Size::large ? largeMetrics : regularMetrics;
  const int height =
      std::max(metrics.minimumHeight, fontMetrics().height() + 2 * metrics.verticalPadding);
  return {contentWidth() + 2 * metrics.horizontalPadding, height};
}

void ActionButton::showKeyboardFocus(bool shown) {
  if (shown == keyboardFocused_) return;
  keyboardFocused_ = shown;
  update();
}

bool ActionButton::event(QEvent* event) {
  if (event->type() == QEvent::Shortcut) {
    // At once: Qt's own way presses it a moment later, when it may be disabled.
    click();
    return true;
  }
  if (event->type() == QEvent::ApplicationFontChange) setFont(quibel::font(TextStyle::body));
  return QPushButton::event(event);
}

void ActionButton::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const auto palette = colors(this->palette());
  const bool prominent = prominence_ == Prominence::prominent;
  const auto face =
      (prominent ? prominentFace : standardFace)(palette, isEnabled(), underMouse(), isDown());
  const double radius = (size_ == Size::large ? largeMetrics : regularMetrics).radius;

  const auto body = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
  painter.setPen(QPen(face.border, 1));
  painter.setBrush(face.fill);
  painter.drawRoundedRect(body, radius - 0.5, radius - 0.5);
  if (keyboardFocused_) {
    // Inside the button, in a colour that stands out on its fill.
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(prominent && isEnabled() ? palette.onAccentFill : palette.focusRing, 2));
    painter.drawRoundedRect(body.adjusted(2, 2, -2, -2), radius - 2.5, radius - 2.5);
  }

  int x = (width() - contentWidth()) / 2;
  if (symbol_) {
    const int side = symbolSide();
    paintSymbol(painter, *symbol_, QRect(x, (height() - side) / 2, side, side), face.text);
    x += side + symbolGap;
  }
  painter.setPen(face.text);
  painter.drawText(QRect(x, 0, width() - x, height()), Qt::AlignVCenter | Qt::AlignLeft, text());
}

void ActionButton::keyPressEvent(QKeyEvent* event) {
  if (hasFocus()) showKeyboardFocus(true);
  QPushButton::keyPressEvent(event);
}

void ActionButton::mousePressEvent(QMouseEvent* event) {
  showKeyboardFocus(false);
  QPushButton::mousePressEvent(event);
}

void ActionButton::focusInEvent(QFocusEvent* event) {
  showKeyboardFocus(showsFocus(event->reason(), keyboardFocused_));
  QPushButton::focusInEvent(event);
}

void ActionButton::focusOutEvent(QFocusEvent* event) {
  if (event->reason() != Qt::ActiveWindowFocusReason) showKeyboardFocus(false);
  QPushButton::focusOutEvent(event);
}

}  // namespace quibel
