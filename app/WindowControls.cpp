#include "app/WindowControls.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>
#include <memory>

#include "views/Theme.h"

namespace quibel {

WindowControl::WindowControl(Symbol symbol, const QString& name, QWidget* parent)
    : QAbstractButton(parent) {
  setAttribute(Qt::WA_Hover);
  setFocusPolicy(Qt::NoFocus);  // like title bar buttons: the desktop's own keys do the same
  setFace(symbol, name);
}

void WindowControl::setFace(Symbol symbol, const QString& name) {
  symbol_ = symbol;
  setAccessibleName(name);
  setToolTip(name);
  update();
}

bool WindowControl::event(QEvent* event) {
  // The symbol is fainter in a window that is not the active one.
  const auto type = event->type();
  if (type == QEvent::WindowActivate || type == QEvent::WindowDeactivate) update();
  return QAbstractButton::event(event);
}

void WindowControl::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const auto palette = colors(this->palette());
  const double opacity = isDown() ? 0.22 : underMouse() ? 0.14 : 0.07;
  painter.setPen(Qt::NoPen);
  painter.setBrush(withOpacity(palette.text, opacity));
  painter.drawEllipse(QRectF(rect()));
  const QRectF square((width() - 12) / 2.0, (height() - 12) / 2.0, 12, 12);
  paintSymbol(painter, symbol_, square, isActiveWindow() ? palette.text : palette.secondary);
}

WindowControls::WindowControls(QWidget* parent) : QWidget(parent), row_(new QHBoxLayout(this)) {
  minimise_ = new WindowControl(Symbol::windowMinimise, tr("Minimizar"), this);
  maximise_ = new WindowControl(Symbol::windowMaximise, tr("Maximizar"), this);
  close_ = new WindowControl(Symbol::windowClose, tr("Cerrar"), this);
  connect(minimise_, &QAbstractButton::clicked, this, &WindowControls::minimise);
  connect(maximise_, &QAbstractButton::clicked, this, &WindowControls::toggleMaximised);
  connect(close_, &QAbstractButton::clicked, this, &WindowControls::close);
  row_->setContentsMargins({});
  row_->setSpacing(6);
  arrange({});
}

void WindowControls::arrange(const ButtonLayout& layout) {
  while (const auto item = std::unique_ptr<QLayoutItem>(row_->takeAt(0))) {
  }
  for (const auto button : layout.left) row_->addWidget(&control(button));
  row_->addStretch();
  for (const auto button : layout.right) row_->addWidget(&control(button));
  for (const auto button : {WindowButton::minimise, WindowButton::maximise, WindowButton::close})
    control(button).setVisible(layout.left.contains(button) || layout.right.contains(button));
}

WindowControl& WindowControls::control(WindowButton button) const {
  switch (button) {
    case WindowButton::minimise:
      return *minimise_;
    case WindowButton::maximise:
      return *maximise_;
    case WindowButton::close:
      break;
  }
  return *close_;
}

void WindowControls::setMaximised(bool maximised) {
  if (maximised) {
    maximise_->setFace(Symbol::windowRestore, tr("Restaurar"));
  } else {
    maximise_->setFace(Symbol::windowMaximise, tr("Maximizar"));
  }
}

}  // namespace quibel
