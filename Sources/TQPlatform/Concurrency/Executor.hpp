#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace tq {

/// Runs what it is given later, on one certain thread, one after the other and in order: the event loop of a program.
/// May be called from any thread; it never blocks and never runs an item before it has returned.
using Executor = std::function<void(std::function<void()> item)>;

/// How the threads that work for an object reach it on the thread it lives on: what they post runs there, or not at all
/// once the object is gone. A member of that object, and destroyed with it on its thread.
class OwnerCalls {
 public:
  /// `owner` runs items on the thread that the object lives on.
  explicit OwnerCalls(Executor owner) : owner_(std::move(owner)) {}
  OwnerCalls(const OwnerCalls&) = delete;
  OwnerCalls& operator=(const OwnerCalls&) = delete;

  /// From any thread, while this object exists.
  void post(std::function<void()> item) const {
    owner_([alive = std::weak_ptr(alive_), item = std::move(item)] {
      if (alive.lock()) item();
    });
  }

 private:
  const Executor owner_;
  const std::shared_ptr<const bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace tq
