#include "views/HandleAccessible.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QLocale>

#include "views/HandleView.h"

namespace quibel {
namespace {

class HandleAccessible final : public QAccessibleWidget, public QAccessibleValueInterface {
 public:
  explicit HandleAccessible(HandleView* handle) : QAccessibleWidget(handle, QAccessible::Slider) {}

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
  }

  QString text(QAccessible::Text kind) const override {
    if (kind != QAccessible::Value) return QAccessibleWidget::text(kind);
    static const QLocale spanish(QLocale::Spanish);
    return HandleView::tr("%1 segundos").arg(spanish.toString(handle()->value(), 'f', 1));
  }

  QVariant currentValue() const override { return handle()->value(); }
  void setCurrentValue(const QVariant& value) override { handle()->moveTo(value.toDouble()); }
  QVariant minimumValue() const override { return handle()->minimum(); }
  QVariant maximumValue() const override { return handle()->maximum(); }
  QVariant minimumStepSize() const override { return handleStep; }

 private:
  HandleView* handle() const { return static_cast<HandleView*>(object()); }
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
  auto* const handle = qobject_cast<HandleView*>(object);
  return handle ? new HandleAccessible(handle) : nullptr;
}

}  // namespace

void installHandleAccessibility() { QAccessible::installFactory(makeInterface); }

}  // namespace quibel
