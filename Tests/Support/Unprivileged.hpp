#pragma once

#include <stdexcept>
#include <unistd.h>

namespace tq::test {

/// While it stands, the superuser is an ordinary user without files of its own, in all threads of the program: what
/// other users may not read cannot be read. For anybody else it changes nothing.
class Unprivileged {
 public:
  Unprivileged() {
    if (before_ == 0 && ::seteuid(nobody) != 0) throw std::runtime_error("cannot become an ordinary user");
  }
  ~Unprivileged() {
    if (before_ == 0 && ::seteuid(before_) != 0) ::_exit(1);
  }
  Unprivileged(const Unprivileged&) = delete;
  Unprivileged& operator=(const Unprivileged&) = delete;

 private:
  static constexpr uid_t nobody = 65534;
  const uid_t before_ = ::geteuid();
};

}  // namespace tq::test
