#include "views/HandleAccessible.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include "views/HandleView.h"
#include "views/SpokenTime.h"

namespace quibel {
namespace {

class HandleAccessible final : public QAccessibleWidget,
                               public QAccessibleValueInterface,
                               public QAccessibleTextInterface {
 public:
  explicit HandleAccessible(HandleView* handle) : QAccessibleWidget(handle, QAccessible::SpinBox) {}

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
    if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
  }

  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Value ? spoken() : QAccessibleWidget::text(kind);
  }

  QVariant currentValue() const override { return handle()->value(); }
  void setCurrentValue(const QVariant& value) override {
    if (handle()->isEnabled()) handle()->moveTo(value.toDouble());
  }
  QVariant minimumValue() const override { return handle()->minimum(); }
  QVariant maximumValue() const override { return handle()->maximum(); }
  QVariant minimumStepSize() const override { return handleStep; }

  // The text is there to be read, whole: no caret, nothing selected.
  QString text(int begin, int end) const override { return spoken().mid(begin, end - begin); }
  int characterCount() const override { return static_cast<int>(spoken().size()); }
  int cursorPosition() const override { return 0; }
  void setCursorPosition(int) override {}
  int selectionCount() const override { return 0; }
  void selection(int, int* begin, int* end) const override { *begin = *end = 0; }
  void addSelection(int, int) override {}
  void removeSelection(int) override {}
  void setSelection(int, int, int) override {}
  QRect characterRect(int) const override { return rect(); }
  int offsetAtPoint(const QPoint&) const override { return -1; }
  void scrollToSubstring(int, int) override {}
  QString attributes(int, int* begin, int* end) const override {
    *begin = 0;
    *end = characterCount();
    return {};
  }

 private:
  HandleView* handle() const { return static_cast<HandleView*>(object()); }
  QString spoken() const { return spokenHandle(handle()->value(), handle()->fragment()); }
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
  auto* const handle = qobject_cast<HandleView*>(object);
  return handle ? new HandleAccessible(handle) : nullptr;
}

}  // namespace

void installHandleAccessibility() { QAccessible::installFactory(makeInterface); }

}  // namespace quibel
