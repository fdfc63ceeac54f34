#pragma once

#include <QDBusConnection>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantList>
#include <QVariantMap>
#include <chrono>

#include "TarquelApp/Desktop/LaunchRequest.hpp"

namespace tq {

/// Sees to it that a user has one Tarquel in a session: it owns the program's name on the session bus, and every later
/// start hands its files over to it by org.freedesktop.Application. Without a session bus each start stands alone.
class SingleInstance : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  enum class Role {
    first,       ///< later starts come to this one, from the next turn of the event loop on
    alone,       ///< there is no bus, or the first does not answer: as if nothing else ran
    handedOver,  ///< the first has taken the request: this process has nothing left to do and ends with status 0
  };

  /// @param bus       the session bus; it need not be connected
  /// @param patience  how long all of `start` may take; a first that does not answer by then is passed over, so that no
  ///                  file is lost
  explicit SingleInstance(QDBusConnection bus, std::chrono::milliseconds patience = std::chrono::seconds(5),
                          QObject* parent = nullptr);

  /// Gives the name back. Keep it until what the next start must not meet half-done is done.
  ~SingleInstance() override;

  /// Decides who this process is. Once, before there is a window; the only thing here that blocks: until the bus and
  /// the first have answered, and no longer than `patience`.
  /// @param request  handed over where there is a first; otherwise the caller's to do
  Role start(const LaunchRequest& request);

 public Q_SLOTS:
  // org.freedesktop.Application, for other programs
  Q_SCRIPTABLE void Activate(const QVariantMap& platformData);
  Q_SCRIPTABLE void Open(const QStringList& uris, const QVariantMap& platformData);
  Q_SCRIPTABLE void ActivateAction(const QString& action, const QVariantList& parameter,
                                   const QVariantMap& platformData);

 Q_SIGNALS:
  /// Local files and folders by absolute URL, never none. They need not exist.
  void filesOpened(const QList<QUrl>& files);

  /// The window is to come to the front; after `filesOpened`. An empty token allows nothing in particular.
  void activated(const QString& activationToken);

 private:
  QDBusConnection bus_;
  const std::chrono::milliseconds patience_;
  bool isFirst_ = false;
};

}  // namespace tq
