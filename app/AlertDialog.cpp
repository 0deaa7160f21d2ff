#include "app/AlertDialog.h"

#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <QWindow>

#include "app/MessageText.h"
#include "views/ActionButton.h"
#include "views/SymbolView.h"
#include "views/TextLabel.h"

namespace quibel {
namespace {

constexpr int messageWidth = 300;

}  // namespace

AlertDialog::AlertDialog(QWidget* parent) : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint) {
  setWindowTitle(tr("Quibel"));
  setAccessibleName(tr("Quibel"));
  setWindowModality(Qt::WindowModal);

  auto* const title = new TextLabel(TextStyle::headline, TextLabel::Role::primary,
                                    TextLabel::Feature::none, tr("Quibel"), this);
  message_ = new MessageText(this);
  message_->setFixedWidth(messageWidth);
  auto* const accept = new ActionButton(ActionButton::Prominence::prominent,
                                        ActionButton::Size::large, tr("Aceptar"), this);
  accept->setDefault(true);
  accept->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  connect(accept, &QAbstractButton::clicked, this, &QDialog::accept);

  auto* const column = new QVBoxLayout(this);
  column->setContentsMargins(24, 24, 24, 20);
  column->setSpacing(0);
  column->addWidget(new SymbolView(Symbol::waveformBadgePlus, {49, 42}, this), 0, Qt::AlignHCenter);
  column->addSpacing(14);
  column->addWidget(title, 0, Qt::AlignHCenter);
  column->addSpacing(8);
  column->addWidget(message_, 0, Qt::AlignHCenter);
  column->addSpacing(20);
  column->addWidget(accept);
  column->setSizeConstraint(QLayout::SetFixedSize);
}

void AlertDialog::showMessage(const QString& message) {
  if (message != message_->text()) {
    message_->setText(message);
    message_->setFixedHeight(message_->heightForWidth(messageWidth));
    setAccessibleDescription(message);
    adjustSize();
  }
  if (isVisible()) return;  // it stays where it was put
  // In the middle of the window; a dialog with a frame would be placed higher.
  const auto* const window = parentWidget()->window();
  move(window->geometry().center() - rect().center());
  open();
}

void AlertDialog::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const auto palette = colors(this->palette());
  painter.fillRect(rect(), palette.windowBackground);
  painter.setPen(withOpacity(palette.text, 0.2));
  painter.setRenderHint(QPainter::Antialiasing);
  painter.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
}

void AlertDialog::mousePressEvent(QMouseEvent* event) {
  // Its ground moves it, as it has no title bar; without a window manager it stays.
  if (event->button() == Qt::LeftButton) static_cast<void>(windowHandle()->startSystemMove());
}

}  // namespace quibel
