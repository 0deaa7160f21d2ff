#include "views/ReadOut.h"

#include "model/Format.h"
#include "views/DisplayText.h"

namespace quibel {

ReadOut::ReadOut(const QString& title, TextStyle timeStyle, QWidget* parent) : QWidget(parent) {
  time_ = new TextLabel(timeStyle, TextLabel::Role::primary, TextLabel::Feature::monospacedDigits,
                        {}, this);
  // The time says what it is also where only it is read out.
  time_->setAccessibleDescription(title);
  auto* const column = new QVBoxLayout(this);
  column->setContentsMargins({});
  column->setSpacing(textSpacing);
  column->addWidget(new TextLabel(TextStyle::caption2Bold, TextLabel::Role::secondary,
                                  TextLabel::Feature::none, title, this),
                    0, Qt::AlignHCenter);
  column->addWidget(time_, 0, Qt::AlignHCenter);
}

void ReadOut::setNote(const QString& note) {
  layout()->addWidget(new TextLabel(TextStyle::caption, TextLabel::Role::secondary,
                                    TextLabel::Feature::none, note, this));
  layout()->setAlignment(layout()->itemAt(layout()->count() - 1)->widget(), Qt::AlignHCenter);
}

void ReadOut::showTime(double seconds) { time_->showText(displayText(format(seconds))); }

}  // namespace quibel
