#include "app/StatusArea.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QStackedLayout>

#include "app/Spinner.h"
#include "views/DisplayText.h"
#include "views/TextLabel.h"

namespace quibel {

StatusLine::StatusLine(Kind kind) : kind_(kind) {
  auto* const row = new QHBoxLayout(this);
  row->setContentsMargins({});
  row->setSpacing(defaultSpacing);
  row->addStretch(1);
  if (kind == Kind::progress) {
    label_ = new TextLabel(TextStyle::body);
    row->addWidget(new Spinner);
  } else {
    label_ =
        new TextLabel(TextStyle::callout, TextLabel::Role::secondary, TextLabel::Feature::elided);
  }
  row->addWidget(label_);
  row->addStretch(1);
}

QString StatusLine::text() const { return label_->text(); }

void StatusLine::showText(const NamingText& text) {
  if (text.text + text.name == label_->text()) return;
  label_->showText(text);
  if (!isVisible() || !QAccessible::isActive()) return;
  QAccessibleEvent appeared(this, QAccessible::ObjectShow);
  QAccessible::updateAccessibility(&appeared);
}

StatusArea::StatusArea(QWidget* parent) : QWidget(parent) {
  progress_ = new StatusLine(StatusLine::Kind::progress);
  status_ = new StatusLine(StatusLine::Kind::text);
  // Neither line ever loses its text: a screen reader may ask for it late.
  nothing_ = new TextLabel(TextStyle::callout);
  lines_ = new QStackedLayout(this);
  for (QWidget* line : {static_cast<QWidget*>(progress_), static_cast<QWidget*>(status_), nothing_})
    lines_->addWidget(line);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  showStatus({});
}

void StatusArea::showProgress(const QString& text) { show(progress_, {text, {}}); }

void StatusArea::showStatus(const NamingText& text) {
  if (text.text.isEmpty()) return lines_->setCurrentWidget(nothing_);
  show(status_, text);
}

void StatusArea::show(StatusLine* line, const NamingText& text) {
  line->showText(text);
  lines_->setCurrentWidget(line);
}

}  // namespace quibel
