#include "TarquelApp/ReadingOrder.hpp"

#include <QQuickWindow>
#include <algorithm>

namespace tq {

ReadingOrder::ReadingOrder(QObject* parent) : QObject(parent) {
  QAccessible::installActivationObserver(this);
}

ReadingOrder::~ReadingOrder() {
  QAccessible::removeActivationObserver(this);
}

void ReadingOrder::accessibilityActiveChanged(bool active) {
  isHeard_ = active;
  if (item_ && item_->window()) item_->window()->update();
}

void ReadingOrder::setOf(QQuickItem* item) {
  if (item == item_) return;
  if (item_) disconnect(item_, nullptr, this, nullptr);
  item_ = item;
  if (item_) connect(item_, &QQuickItem::windowChanged, this, &ReadingOrder::follow);
  follow(item_ ? item_->window() : nullptr);
  Q_EMIT ofChanged();
}

/// Before each picture everything has been laid out.
void ReadingOrder::follow(QQuickWindow* window) {
  disconnect(drawing_);
  if (window) drawing_ = connect(window, &QQuickWindow::afterAnimating, this, &ReadingOrder::restore);
}

void ReadingOrder::restore() const {
  if (!item_ || !isHeard_) return;
  QList<QQuickItem*> children = item_->childItems();
  children.removeIf([](const QQuickItem* child) { return !child->isVisible(); });
  if (std::ranges::is_sorted(children, {}, &QQuickItem::y)) return;
  std::ranges::stable_sort(children, {}, &QQuickItem::y);
  for (qsizetype index = 1; index < children.size(); ++index)
    children[index]->stackAfter(children[index - 1]);
}

}  // namespace tq
