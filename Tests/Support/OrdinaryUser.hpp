#pragma once

#include <linux/capability.h>
#include <stdexcept>
#include <sys/syscall.h>
#include <unistd.h>

namespace tq::test {

/// While it lives, the permissions of files count for this thread, and for those that it starts, even when the tests
/// run as root. One at a time in a thread.
class OrdinaryUser {
 public:
  OrdinaryUser() {
    if (::syscall(SYS_capget, &header_, before_) != 0) throw std::runtime_error("no capabilities");
    __user_cap_data_struct without[] = {before_[0], before_[1]};
    without[0].effective &= ~(1u << CAP_DAC_OVERRIDE | 1u << CAP_DAC_READ_SEARCH);
    if (::syscall(SYS_capset, &header_, without) != 0) throw std::runtime_error("capabilities not dropped");
  }
  ~OrdinaryUser() { ::syscall(SYS_capset, &header_, before_); }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;

 private:
  __user_cap_header_struct header_{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
  __user_cap_data_struct before_[2]{};
};

}  // namespace tq::test
