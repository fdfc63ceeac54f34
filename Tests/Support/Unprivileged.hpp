#pragma once

#include <linux/capability.h>
#include <stdexcept>
#include <sys/syscall.h>
#include <unistd.h>

namespace tq::test {

/// While it stands, the superuser has no more rights over files than any other user: in this thread and in those that
/// it starts meanwhile, permissions count, also those of its own files. For anybody else it changes nothing.
class Unprivileged {
 public:
  Unprivileged() {
    if (::syscall(SYS_capget, &header_, before_) != 0) throw std::runtime_error("no capabilities");
    __user_cap_data_struct without[] = {before_[0], before_[1]};
    without[0].effective &= ~(1u << CAP_DAC_OVERRIDE | 1u << CAP_DAC_READ_SEARCH);
    if (::syscall(SYS_capset, &header_, without) != 0) throw std::runtime_error("capabilities not dropped");
  }
  ~Unprivileged() { ::syscall(SYS_capset, &header_, before_); }
  Unprivileged(const Unprivileged&) = delete;
  Unprivileged& operator=(const Unprivileged&) = delete;

 private:
  __user_cap_header_struct header_{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
  __user_cap_data_struct before_[2]{};
};

}  // namespace tq::test
