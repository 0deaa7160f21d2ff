#include "app/StatusArea.h"

#include <QAccessible>
#include <QHBoxLayout>

#include "app/Spinner.h"
#include "views/TextLabel.h"

namespace quibel {
namespace {

QWidget* makeCentredRow(std::initializer_list<QWidget*> widgets) {
  auto* const page = new QWidget;
  auto* const row = new QHBoxLayout(page);
  row->setContentsMargins({});
  row->setSpacing(defaultSpacing);
  row->addStretch(1);
  for (auto* widget : widgets) row->addWidget(widget);
  row->addStretch(1);
  return page;
}

}  // namespace

StatusArea::StatusArea(QWidget* parent) : QStackedWidget(parent) {
  progress_ = new TextLabel(TextStyle::body);
  status_ =
      new TextLabel(TextStyle::callout, TextLabel::Role::secondary, TextLabel::Feature::elided);
  addWidget(makeCentredRow({new Spinner, progress_}));
  addWidget(makeCentredRow({status_}));
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  showStatus({});
}

void StatusArea::showProgress(const QString& text) {
  progress_->showText(text);
  setCurrentIndex(0);
  announce(text);
}

void StatusArea::showStatus(const NamingText& text) {
  status_->showText(text);
  setCurrentIndex(1);
  announce(text.text + text.name);
}

void StatusArea::announce(const QString& text) {
  if (text == accessibleName()) return;
  setAccessibleName(text);
  if (text.isEmpty() || !QAccessible::isActive()) return;
  // Screen readers read a notification out when it appears.
  QAccessibleEvent appeared(this, QAccessible::ObjectShow);
  QAccessible::updateAccessibility(&appeared);
}

}  // namespace quibel
