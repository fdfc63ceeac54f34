#pragma once

#include <QObject>
#include <QVariantMap>
#include <iosfwd>
#include <vector>

#include "TQPlatform/FileSystem/Descriptor.hpp"
#include "TarquelApp/Desktop/PrivateBus.hpp"

namespace tq::test {

/// What a dock was told to draw over the icon of a program.
struct DockUpdate {
  QString uri;
  qint64 count;
  bool countVisible;
  double progress;
  bool progressVisible;
  bool operator==(const DockUpdate&) const = default;
};

void PrintTo(const DockUpdate& update, std::ostream* out);

/// The update that shows this program's badge and bar, and the one that takes both away.
DockUpdate shownInDock(qint64 count, double progress);
DockUpdate clearedInDock();

/// A dock that listens on the session bus.
class Dock : public QObject {
  Q_OBJECT

 public:
  explicit Dock(PrivateBus& bus);

  /// Until it has all that this connection has sent.
  void settle(const QDBusConnection& sender);

  QDBusConnection connection;
  std::vector<DockUpdate> updates;

 public Q_SLOTS:
  void update(const QString& uri, const QVariantMap& properties);
};

/// A desktop's portal on the session bus. Unless told otherwise it takes every request at once, and says nothing more.
class Portal : public FakeService {
 public:
  explicit Portal(PrivateBus& bus);

  static QVariantMap optionsOf(const QDBusMessage& call);

  /// Where the request that such a call makes is found.
  static QString handleOf(const QDBusMessage& call);

  /// The answer that takes it.
  static QDBusMessage grant(const QDBusMessage& call);

  /// Says what has become of a request.
  void respond(const QString& handle, uint code, const QVariantMap& results = {});
};

/// A login manager on the system bus, which knows by the other end of a pipe whether its inhibitor is held.
class LoginManager : public FakeService {
 public:
  explicit LoginManager(PrivateBus& bus);

  /// The answer that gives an inhibitor.
  QDBusMessage grant(const QDBusMessage& call);

  /// The bus and the connections to it let go of their copies of a descriptor a little after it has been passed on.
  void turnUntilReleased() const;

  /// Whether somebody holds the inhibitor that was given last.
  bool isHeld() const;

 private:
  Descriptor lastGiven_;
};

}  // namespace tq::test
