#pragma once

#include <sys/stat.h>

namespace tq::test {

/// The umask of this process, set back at the end.
class Umask {
 public:
  explicit Umask(mode_t mask) : before_(::umask(mask)) {}
  ~Umask() { ::umask(before_); }
  Umask(const Umask&) = delete;
  Umask& operator=(const Umask&) = delete;

 private:
  mode_t before_;
};

}  // namespace tq::test
