#pragma once

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QVariantMap>

namespace quibel::desktop {

/// One question to a desktop portal, which the person answers whenever they like.
class PortalRequest : public QObject {
  Q_OBJECT

 public:
  enum class Outcome {
    answered,
    cancelled,    ///< by the person, or because the portal ended
    unavailable,  ///< no portal took the question
  };

  /// Asks `method` of `interface`, which takes a window's identifier, a title and options.
  PortalRequest(const QDBusConnection& bus, const QString& interface, const QString& method,
                const QString& window, const QString& title, QVariantMap options);

 Q_SIGNALS:
  /// Once, never from within the constructor. The results are those of an answer.
  void finished(quibel::desktop::PortalRequest::Outcome outcome, const QVariantMap& results);

 private Q_SLOTS:
  void respond(unsigned response, const QVariantMap& results);

 private:
  void listenAt(const QString& path);
  void taken(QDBusPendingCallWatcher* call);
  void finish(Outcome outcome, const QVariantMap& results = {});

  QDBusConnection bus_;
  QDBusServiceWatcher service_;
  QString path_;
  bool isFinished_ = false;
};

}  // namespace quibel::desktop
