#include "app/Announcements.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include "app/AlertDialog.h"
#include "app/StatusArea.h"

namespace quibel {
namespace {

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
  if (auto* const status = qobject_cast<StatusArea*>(object)) {
    return new QAccessibleWidget(status, QAccessible::Notification);
  }
  if (auto* const alert = qobject_cast<AlertDialog*>(object)) {
    return new QAccessibleWidget(alert, QAccessible::AlertMessage);
  }
  return nullptr;
}

}  // namespace

void installAnnouncements() { QAccessible::installFactory(makeInterface); }

}  // namespace quibel
