#pragma once

#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>

namespace quibel::desktop {

/// One condition of a file chooser's filter, on the wire (us).
struct PortalPattern {
  enum Kind : unsigned { glob = 0, mimeType = 1 };

  unsigned kind = glob;
  QString text;
};

/// A file chooser's filter, on the wire (sa(us)).
struct PortalFilter {
  QString name;
  QList<PortalPattern> patterns;
};

/// One of globs, as in "*.mp3".
PortalFilter portalFilter(const QString& name, const QStringList& globs);

/// Lets the bus carry them; to be called before it does.
void registerPortalFilter();

QDBusArgument& operator<<(QDBusArgument& argument, const PortalPattern& pattern);
const QDBusArgument& operator>>(const QDBusArgument& argument, PortalPattern& pattern);
QDBusArgument& operator<<(QDBusArgument& argument, const PortalFilter& filter);
const QDBusArgument& operator>>(const QDBusArgument& argument, PortalFilter& filter);

}  // namespace quibel::desktop

Q_DECLARE_METATYPE(quibel::desktop::PortalPattern)
Q_DECLARE_METATYPE(quibel::desktop::PortalFilter)
