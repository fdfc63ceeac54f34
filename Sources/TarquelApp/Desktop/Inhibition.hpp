#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <functional>
#include <memory>

namespace tq {

/// One inhibitor that a service gives on request. At most one request is under way and at most one inhibitor held,
/// however quickly the wish changes; an answer that finds the wish gone is given back, even after the owner has gone.
class Inhibition : public std::enable_shared_from_this<Inhibition> {
 public:
  /// Takes the inhibitor out of the service's answer; it lasts as long as the value. Empty: the answer holds none.
  using Take = std::function<std::shared_ptr<void>(const QDBusMessage& answer)>;

  Inhibition(QDBusConnection bus, QDBusMessage request, Take take)
      : bus_(std::move(bus)), request_(std::move(request)), take_(std::move(take)) {}

  /// From now on wanted. `refused` is called, at most once and not after `drop`, when the service does not give one.
  void want(std::function<void()> refused = [] {});

  /// From now on not wanted, and given back.
  void drop();

  /// What the service gives, or has given, is worth nothing: that counts as refused.
  void lose();

  bool isWanted() const { return refused_ != nullptr; }
  bool isHeld() const { return held_ != nullptr; }

 private:
  void take(const QDBusMessage& answer);
  void refuse();

  QDBusConnection bus_;
  const QDBusMessage request_;
  const Take take_;
  std::function<void()> refused_;  ///< empty: not wanted
  std::shared_ptr<void> held_;
  bool isAsking_ = false;
  bool isLost_ = false;  ///< what is asked for, before it has come
};

}  // namespace tq
