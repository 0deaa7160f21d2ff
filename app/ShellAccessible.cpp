#include "app/ShellAccessible.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include "app/AlertSheet.h"
#include "app/ContentView.h"
#include "app/StatusArea.h"

namespace quibel {
namespace {

/// Leaves out the children that are disabled, which are those below the alert.
class ContentAccessible final : public QAccessibleWidget {
 public:
  explicit ContentAccessible(ContentView* content)
      : QAccessibleWidget(content, QAccessible::Client) {}

  int childCount() const override { return static_cast<int>(children().size()); }
  QAccessibleInterface* child(int index) const override { return children().value(index); }
  int indexOfChild(const QAccessibleInterface* child) const override {
    return static_cast<int>(children().indexOf(child));
  }

 private:
  QList<QAccessibleInterface*> children() const {
    QList<QAccessibleInterface*> enabled;
    for (int index = 0; index < QAccessibleWidget::childCount(); ++index) {
      auto* const child = QAccessibleWidget::child(index);
      if (!child->state().disabled) enabled.append(child);
    }
    return enabled;
  }
};

class AlertAccessible final : public QAccessibleWidget {
 public:
  explicit AlertAccessible(AlertSheet* alert)
      : QAccessibleWidget(alert, QAccessible::AlertMessage) {}

  QAccessible::State state() const override {
    auto state = QAccessibleWidget::state();
    state.modal = true;
    return state;
  }
};

class StatusLineAccessible final : public QAccessibleWidget {
 public:
  explicit StatusLineAccessible(StatusLine* line)
      : QAccessibleWidget(line, QAccessible::Notification, line->text()) {}

  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Name ? line()->text() : QAccessibleWidget::text(kind);
  }

  QAccessible::State state() const override {
    auto state = QAccessibleWidget::state();
    state.busy = line()->kind() == StatusLine::Kind::progress;
    return state;
  }

 private:
  StatusLine* line() const { return static_cast<StatusLine*>(widget()); }
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
  if (auto* const content = qobject_cast<ContentView*>(object)) {
    return new ContentAccessible(content);
  }
  if (auto* const alert = qobject_cast<AlertSheet*>(object)) return new AlertAccessible(alert);
  if (auto* const line = qobject_cast<StatusLine*>(object)) return new StatusLineAccessible(line);
  return nullptr;
}

}  // namespace

void installShellAccessibility() { QAccessible::installFactory(makeInterface); }

}  // namespace quibel
