#include "views/TextLabel.h"

#include <QEvent>
#include <QFontMetrics>
#include <QPainter>
#include <QStyle>
#include <algorithm>

namespace quibel {
namespace {

// The height above the baseline. Accents on capitals may rise above what small
// fonts give as their ascent.
int ascentOf(const QFontMetrics& metrics) {
  return std::max(metrics.ascent(), -metrics.tightBoundingRect(QStringLiteral("Ó")).top());
}

int lineHeightOf(const QFontMetrics& metrics) { return ascentOf(metrics) + metrics.descent(); }

}  // namespace

TextLabel::TextLabel(TextStyle style, Role role, Feature feature, const QString& text,
                     QWidget* parent)
    : QLabel(parent), style_(style), role_(role), feature_(feature) {
  setTextFormat(Qt::PlainText);
  setFont(quibel::font(style_));
  setSizePolicy(feature == Feature::elided ? QSizePolicy::Preferred : QSizePolicy::Fixed,
                QSizePolicy::Fixed);
  setText(text);
}

void TextLabel::showText(const NamingText& naming) {
  const auto whole = naming.text + naming.name;
  if (whole == text() && naming.name == name_) return;
  name_ = naming.name;
  setText(whole);
  if (feature_ != Feature::elided) return;
  setToolTip(plainToolTip(whole));
  // As is, assistive technology would be told the tooltip, with its markup.
  setAccessibleDescription(whole);
}

QString TextLabel::fitting() const {
  const auto metrics = fontMetrics();
  const auto whole = text();
  if (name_.isEmpty()) {
    const bool fits = feature_ != Feature::elided || advance(whole) <= width();
    return fits ? whole : metrics.elidedText(whole, Qt::ElideMiddle, width());
  }
  const auto lead = whole.chopped(name_.size());
  const auto name = isolated(name_);
  if (feature_ != Feature::elided || advance(lead + name) <= width()) return lead + name;
  return lead + isolated(metrics.elidedText(name_, Qt::ElideMiddle, width() - advance(lead)));
}

QSize TextLabel::sizeHint() const { return {advance(text()), lineHeightOf(fontMetrics())}; }

QSize TextLabel::minimumSizeHint() const {
  auto size = sizeHint();
  if (feature_ == Feature::elided) {
    size.setWidth(std::min(size.width(), fontMetrics().horizontalAdvance(QStringLiteral("…"))));
  }
  return size;
}

bool TextLabel::event(QEvent* event) {
  if (event->type() == QEvent::ApplicationFontChange) setFont(quibel::font(style_));
  return QLabel::event(event);
}

void TextLabel::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const auto palette = colors(this->palette());
  painter.setPen(role_ == Role::primary ? palette.text : palette.secondary);
  const auto metrics = fontMetrics();
  const auto shown = fitting();
  const auto place = QStyle::alignedRect(layoutDirection(), alignment(),
                                         QSize(advance(shown), lineHeightOf(metrics)), rect());
  const QPoint baseline(place.left(), place.top() + ascentOf(metrics));
  if (feature_ == Feature::monospacedDigits) {
    drawMonospaced(painter, baseline);
  } else {
    painter.drawText(baseline, shown);
  }
}

int TextLabel::digitWidth() const {
  const auto metrics = fontMetrics();
  int width = 0;
  for (char16_t digit = u'0'; digit <= u'9'; ++digit) {
    width = std::max(width, metrics.horizontalAdvance(QChar(digit)));
  }
  return width;
}

int TextLabel::advance(const QString& text) const {
  const auto metrics = fontMetrics();
  if (feature_ != Feature::monospacedDigits) return metrics.horizontalAdvance(text);
  int width = 0;
  const int digit = digitWidth();
  for (const QChar c : text) width += c.isDigit() ? digit : metrics.horizontalAdvance(c);
  return width;
}

void TextLabel::drawMonospaced(QPainter& painter, QPoint baseline) const {
  const auto metrics = fontMetrics();
  const int digit = digitWidth();
  for (const QChar c : text()) {
    const int own = metrics.horizontalAdvance(c);
    const int cell = c.isDigit() ? digit : own;
    painter.drawText(baseline + QPoint((cell - own) / 2, 0), QString(c));
    baseline.rx() += cell;
  }
}

}  // namespace quibel
