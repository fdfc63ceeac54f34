#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <chrono>
#include <functional>
#include <optional>

namespace tq {

/// One request to the desktop's portal that its user answers, in their own time
/// (https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.Request.html). Lives on the main
/// thread and never blocks it.
class PortalRequest : public QObject {
  Q_OBJECT

 public:
  /// What the user has answered; without a value: their wish to answer nothing.
  using Answer = std::optional<QVariantMap>;

  struct Handlers {
    std::function<void(const Answer& answer)> answered;
    std::function<void()> failed;  ///< there is no such portal, it refused, or it went before there was an answer
  };

  /// Sends it. One of the handlers is called once, later, unless the request is deleted before, which takes it back.
  /// @param bus        the session bus; it need not be connected
  /// @param interface  of the portal, with its method
  /// @param arguments  all but the options, which the method takes last
  /// @param patience   how long the portal may take to say that it has the request
  PortalRequest(QDBusConnection bus, const QString& interface, const QString& method, QVariantList arguments,
                QVariantMap options, std::chrono::milliseconds patience, Handlers handlers, QObject* parent = nullptr);
  ~PortalRequest() override;

 private Q_SLOTS:
  void respond(uint code, const QVariantMap& results);

 private:
  void listenAt(const QString& path);
  void accept(const QDBusMessage& reply);
  void fail();
  void takeBack();

  QDBusConnection bus_;
  QString path_;  ///< of the request on the bus
  QDBusServiceWatcher portalWatcher_;
  Handlers handlers_;
  bool hasEnded_ = false;
};

}  // namespace tq
