#pragma once

#include <cerrno>

namespace tq {

/// The result of a system call, made again for as long as a signal interrupts it.
template <class Call>
auto uninterrupted(const Call& call) {
  auto result = call();
  while (result == -1 && errno == EINTR)
    result = call();
  return result;
}

}  // namespace tq
