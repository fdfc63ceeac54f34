#pragma once

#include <condition_variable>
#include <cstdint>
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
/// Fair: operations get in, and come back from a suspension, in the order in which they asked, so that none starves
/// under a stream of others. Not recursive: an operation calls the object's private parts, never another of its
/// operations.
class Monitor {
 public:
  /// The right to touch the object's members, for as long as it lives.
  class Held {
   public:
    ~Held() { monitor_.release(); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

    /// Gives the monitor back for exactly this call and takes it again after it, also when the call throws.
    template <class Wait>
    decltype(auto) whileSuspended(Wait&& wait) {
      monitor_.release();
      const Retake retake{monitor_};
      return std::forward<Wait>(wait)();
    }

   private:
    friend class Monitor;
    explicit Held(Monitor& monitor) : monitor_(monitor) { monitor_.acquire(); }

    struct Retake {
      Monitor& monitor;
      ~Retake() { monitor.acquire(); }
    };

    Monitor& monitor_;
  };

  [[nodiscard]] Held enter() { return Held(*this); }

 private:
  void acquire() {
    std::unique_lock lock(mutex_);
    const std::uint64_t ticket = nextTicket_++;
    turnCame_.wait(lock, [&] { return serving_ == ticket; });
  }

  void release() {
    {
      std::lock_guard lock(mutex_);
      ++serving_;
    }
    turnCame_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable turnCame_;
  std::uint64_t nextTicket_ = 0;
  std::uint64_t serving_ = 0;
};

}  // namespace tq
