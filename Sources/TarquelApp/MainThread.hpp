#pragma once

#include <QObject>
#include <deque>
#include <functional>
#include <mutex>

#include "TQPlatform/Concurrency/Executor.hpp"

namespace tq {

/// Runs what other threads post on the thread it was made on, which has Qt's event loop. After a slice of time it lets
/// the loop draw and hear its user before it goes on, so that a flood of items does not freeze the window.
class MainThread : public QObject {
 public:
  explicit MainThread(QObject* parent = nullptr) : QObject(parent) {}

  /// From any thread; never blocks.
  void post(std::function<void()> item);

  /// Posts here. This object outlives it.
  Executor executor() {
    return [this](std::function<void()> item) { post(std::move(item)); };
  }

 protected:
  void timerEvent(QTimerEvent* event) override;
  void customEvent(QEvent* event) override;

 private:
  void runSlice();

  std::mutex mutex_;
  std::deque<std::function<void()>> items_;
  bool isAwake_ = false;  ///< a slice is running or is going to
  int timer_ = 0;
};

}  // namespace tq
