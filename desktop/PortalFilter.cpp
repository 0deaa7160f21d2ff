#include "desktop/PortalFilter.h"

#include <QDBusMetaType>

namespace quibel::desktop {

PortalFilter portalFilter(const QString& name, const QStringList& globs) {
  PortalFilter filter{.name = name, .patterns = {}};
  for (const auto& text : globs) filter.patterns.append({PortalPattern::glob, text});
  return filter;
}

void registerPortalFilter() {
  qDBusRegisterMetaType<PortalPattern>();
  qDBusRegisterMetaType<QList<PortalPattern>>();
  qDBusRegisterMetaType<PortalFilter>();
  qDBusRegisterMetaType<QList<PortalFilter>>();
}

// As Qt declares such operators.
// NOLINTBEGIN(bugprone-return-const-ref-from-parameter)

QDBusArgument& operator<<(QDBusArgument& argument, const PortalPattern& pattern) {
  argument.beginStructure();
  argument << pattern.kind << pattern.text;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalPattern& pattern) {
  argument.beginStructure();
  argument >> pattern.kind >> pattern.text;
  argument.endStructure();
  return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const PortalFilter& filter) {
  argument.beginStructure();
  argument << filter.name << filter.patterns;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalFilter& filter) {
  argument.beginStructure();
  argument >> filter.name >> filter.patterns;
  argument.endStructure();
  return argument;
}

// NOLINTEND(bugprone-return-const-ref-from-parameter)

}  // namespace quibel::desktop
