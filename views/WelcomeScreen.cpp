#include "views/WelcomeScreen.h"

#include <QVBoxLayout>

#include "views/ActionButton.h"
#include "views/Panel.h"
#include "views/SymbolView.h"
#include "views/TextLabel.h"

namespace quibel {

WelcomeScreen::WelcomeScreen(std::shared_ptr<AudioEditorModel> editor, QWidget* parent)
    : QWidget(parent) {
  choose_ = new ActionButton(ActionButton::Prominence::prominent, ActionButton::Size::large,
                             tr("Seleccionar canción…"), this);
  choose_->setShortcut(QKeySequence::Open);
  connect(choose_, &QAbstractButton::clicked, this,
          [editor = std::move(editor)] { editor->chooseAudio(); });

  auto* const column = new QVBoxLayout(this);
  column->setSpacing(18);
  column->addStretch();
  column->addWidget(new SymbolView(Symbol::waveformBadgePlus, {84, 72}, this), 0, Qt::AlignHCenter);
  column->addWidget(
      new TextLabel(TextStyle::title2, TextLabel::Role::primary, TextLabel::Feature::none,
                    tr("Arrastra aquí un archivo de audio"), this),
      0, Qt::AlignHCenter);
  column->addWidget(
      new TextLabel(TextStyle::body, TextLabel::Role::secondary, TextLabel::Feature::none,
                    tr("MP3, M4A, WAV, AIFF y otros formatos compatibles con macOS"), this),
      0, Qt::AlignHCenter);
  column->addWidget(choose_, 0, Qt::AlignHCenter);
  column->addStretch();
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void WelcomeScreen::focusButton() { giveFocus(*choose_, true); }

void WelcomeScreen::setDropping(bool dropping) {
  if (dropping == dropping_) return;
  choose_->showKeyboardFocus(false);  // the pointer is in use
  dropping_ = dropping;
  update();
}

void WelcomeScreen::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  paintPanel(painter, *this, 0.75);

  const auto palette = colors(this->palette());
  const double width = dropping_ ? 3 : 1;
  QPen border(dropping_ ? palette.accent : withOpacity(palette.secondary, 0.25), width,
              Qt::CustomDashLine, Qt::FlatCap, Qt::MiterJoin);
  // A pen's dashes are in units of its width.
  border.setDashPattern({9 / width, 9 / width});
  painter.setPen(border);
  painter.setBrush(Qt::NoBrush);
  const double inset = width / 2;
  painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset),
                          panelCornerRadius - inset, panelCornerRadius - inset);
}

}  // namespace quibel
