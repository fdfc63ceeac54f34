#pragma once

#include <mutex>
#include <utility>

namespace tq {

/// The lock of a serial object. Every operation of such an object starts with `enter()` and holds it to its end; where
/// the operation waits for something slow it says `held.whileSuspended(...)`, and only there may other operations step
/// in.
///
///     void Thing::operation(std::stop_token stop) {
///       auto held = monitor_.enter();
///       prepare();                                        // nothing interleaves
///       auto answer = held.whileSuspended([&] { return slowCall(stop); });
///       finish(answer);                                   // nothing interleaves
///     }
///
/// Not recursive: an operation calls the object's private parts, never another of its operations.
class Monitor {
 public:
  /// The right to touch the object's members, for as long as it lives.
  class Held {
   public:
    /// Gives the monitor back for exactly this call and takes it again after it, also when the call throws.
    template <class Wait>
    decltype(auto) whileSuspended(Wait&& wait) {
      lock_.unlock();
      const Retake retake{lock_};
      return std::forward<Wait>(wait)();
    }

   private:
    friend class Monitor;
    explicit Held(std::mutex& mutex) : lock_(mutex) {}

    struct Retake {
      std::unique_lock<std::mutex>& lock;
      ~Retake() { lock.lock(); }
    };

    std::unique_lock<std::mutex> lock_;
  };

  [[nodiscard]] Held enter() { return Held(mutex_); }

 private:
  std::mutex mutex_;
};

}  // namespace tq
