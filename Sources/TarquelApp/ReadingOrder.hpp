#pragma once

#include <QAccessible>
#include <QPointer>
#include <QQmlEngine>
#include <QQuickItem>

namespace tq {

/// Keeps the visible children of an item in the order in which they stand, from top to bottom. Assistive technology is
/// told of them in the order of the item's children, and a list makes its rows and titles as it comes to need them.
/// Does nothing while no assistive technology is active.
class ReadingOrder : public QObject, private QAccessible::ActivationObserver {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QQuickItem* of READ of WRITE setOf NOTIFY ofChanged)

 public:
  explicit ReadingOrder(QObject* parent = nullptr);
  ~ReadingOrder() override;

  QQuickItem* of() const { return item_; }
  void setOf(QQuickItem* item);

 Q_SIGNALS:
  void ofChanged();

 private:
  void accessibilityActiveChanged(bool active) override;
  void follow(QQuickWindow* window);
  void restore() const;

  QPointer<QQuickItem> item_;
  QMetaObject::Connection drawing_;
  bool isHeard_ = QAccessible::isActive();
};

}  // namespace tq
