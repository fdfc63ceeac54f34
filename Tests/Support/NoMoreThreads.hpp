#pragma once

#include <pthread.h>

namespace tq::test {

/// A machine that gives no more threads: while it stands, every new one of this process is refused, as it wants a stack
/// larger than the address space.
class NoMoreThreads {
 public:
  NoMoreThreads() {
    ::pthread_getattr_default_np(&before_);
    pthread_attr_t absurd;
    ::pthread_attr_init(&absurd);
    ::pthread_attr_setstacksize(&absurd, std::size_t{1} << 48);
    ::pthread_setattr_default_np(&absurd);
    ::pthread_attr_destroy(&absurd);
  }
  ~NoMoreThreads() {
    ::pthread_setattr_default_np(&before_);
    ::pthread_attr_destroy(&before_);
  }
  NoMoreThreads(const NoMoreThreads&) = delete;
  NoMoreThreads& operator=(const NoMoreThreads&) = delete;

 private:
  pthread_attr_t before_{};
};

}  // namespace tq::test
