#include "app/AlertSheet.h"

#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <algorithm>

#include "app/MessageText.h"
#include "views/ActionButton.h"
#include "views/SymbolView.h"
#include "views/TextLabel.h"

namespace quibel {
namespace {

constexpr double cardRadius = 16;
constexpr int cardPadding = 24;
constexpr int minimumGap = 24;  // between the card and the window's edges
constexpr int shadowExtent = 40;
constexpr int shadowDrop = 10;  // it falls below the card
constexpr double shadowOpacity = 0.3;

// In lines' heights of the body text, so that a line holds as many words in any size.
constexpr double messageWidth = 19;

// Faint layers that grow from inside `card` outwards, the outer ones ever further apart,
// so that the shadow fades out softly.
void paintCardShadow(QPainter& painter, const QRectF& card) {
  constexpr int layers = 24;
  painter.setPen(Qt::NoPen);
  painter.setBrush(withOpacity(Qt::black, shadowOpacity / layers));
  for (int layer = 1; layer <= layers; ++layer) {
    const double outwards = static_cast<double>(layer) / layers;
    const double by = shadowExtent * outwards * outwards;
    painter.drawRoundedRect(card.adjusted(-by, -by, by, by), cardRadius + by, cardRadius + by);
  }
}

}  // namespace

AlertSheet::AlertSheet(QWidget* parent) : QWidget(parent) {
  setAccessibleName(tr("Quibel"));
  hide();

  card_ = new QWidget(this);
  auto* const title = new TextLabel(TextStyle::headline, TextLabel::Role::primary,
                                    TextLabel::Feature::none, tr("Quibel"), card_);
  message_ = new MessageText(card_);
  accept_ = new ActionButton(ActionButton::Prominence::prominent, ActionButton::Size::large,
                             tr("Aceptar"), card_);
  accept_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  connect(accept_, &QAbstractButton::clicked, this, &AlertSheet::accepted);

  auto* const column = new QVBoxLayout(card_);
  column->setContentsMargins(cardPadding, cardPadding, cardPadding, cardPadding);
  column->setSpacing(0);
  column->addWidget(new SymbolView(Symbol::waveformBadgePlus, {49, 42}, card_), 0,
                    Qt::AlignHCenter);
  column->addSpacing(14);
  column->addWidget(title, 0, Qt::AlignHCenter);
  column->addSpacing(8);
  column->addWidget(message_, 0, Qt::AlignHCenter);
  column->addSpacing(20);
  column->addWidget(accept_);

  setGeometry(parent->rect());
  parent->installEventFilter(this);
}

QString AlertSheet::message() const { return message_->text(); }

void AlertSheet::setMessage(const QString& message) {
  message_->setText(message);
  setAccessibleDescription(message);
}

void AlertSheet::placeCard() {
  // As narrow as reads well, and wider only where the window is too low for that.
  const int line = message_->fontMetrics().height();
  const int widest = width() - 2 * (minimumGap + cardPadding);
  const int aroundMessage = card_->sizeHint().height() - message_->minimumHeight();
  const int tallest = height() - 2 * minimumGap - aroundMessage;
  int wide = std::min(static_cast<int>(messageWidth * line), widest);
  while (wide + line <= widest && message_->heightForWidth(wide) > tallest) wide += line;
  message_->setFixedSize(wide, message_->heightForWidth(wide));
  card_->resize(card_->sizeHint());
  card_->move(rect().center() - card_->rect().center());
  update();
}

bool AlertSheet::event(QEvent* event) {
  const bool done = QWidget::event(event);
  // A text of the card has another size now.
  if (event->type() == QEvent::LayoutRequest) placeCard();
  return done;
}

bool AlertSheet::eventFilter(QObject* parent, QEvent* event) {
  if (event->type() == QEvent::Resize) setGeometry(parentWidget()->rect());
  return QWidget::eventFilter(parent, event);
}

void AlertSheet::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Escape) return event->ignore();
  accept_->click();
}

void AlertSheet::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const auto palette = colors(this->palette());
  painter.fillRect(rect(), withOpacity(Qt::black, palette.isDark ? 0.5 : 0.28));

  const QRectF card = card_->geometry();
  paintCardShadow(painter, card.translated(0, shadowDrop));
  painter.setPen(QPen(withOpacity(palette.text, palette.isDark ? 0.16 : 0.08), 1));
  painter.setBrush(palette.isDark ? blended(Qt::white, 0.06, palette.windowBackground)
                                  : palette.windowBackground);
  painter.drawRoundedRect(card.adjusted(0.5, 0.5, -0.5, -0.5), cardRadius, cardRadius);
}

void AlertSheet::resizeEvent(QResizeEvent*) { placeCard(); }

void AlertSheet::showEvent(QShowEvent*) { placeCard(); }

}  // namespace quibel
