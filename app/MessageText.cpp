#include "app/MessageText.h"

#include <QEvent>
#include <QPainter>
#include <QTextLayout>
#include <cmath>

#include "views/Theme.h"

namespace quibel {
namespace {

// Breaks `layout`'s text into lines and returns their height.
double laidOut(QTextLayout& layout, int width) {
  QTextOption option(Qt::AlignHCenter);
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  layout.setTextOption(option);
  layout.beginLayout();
  double height = 0;
  for (auto line = layout.createLine(); line.isValid(); line = layout.createLine()) {
    line.setLineWidth(width);
    line.setPosition(QPointF(0, height));
    height += line.height();
  }
  layout.endLayout();
  return height;
}

QString withLineSeparators(QString text) {
  return text.replace(QLatin1Char('\n'), QChar(QChar::LineSeparator));
}

}  // namespace

MessageText::MessageText(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
  setFont(quibel::font(TextStyle::body));
}

int MessageText::heightForWidth(int width) const {
  QTextLayout layout(withLineSeparators(text()), font());
  return static_cast<int>(std::ceil(laidOut(layout, width)));
}

bool MessageText::event(QEvent* event) {
  if (event->type() == QEvent::ApplicationFontChange) setFont(quibel::font(TextStyle::body));
  return QLabel::event(event);
}

void MessageText::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setPen(colors(palette()).text);
  QTextLayout layout(withLineSeparators(text()), font());
  laidOut(layout, width());
  layout.draw(&painter, {});
}

}  // namespace quibel
