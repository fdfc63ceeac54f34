#pragma once

#include <exception>
#include <stop_token>

namespace tq {

/// The one way in which cancellation leaves an operation. It is never a failure of the work itself, so nothing that
/// turns failures into text or into absent values may swallow it on a path where the caller goes on working.
class Cancelled final : public std::exception {
 public:
  const char* what() const noexcept override { return "Cancelled"; }
};

/// Throws `Cancelled` when a stop was requested.
inline void throwIfStopped(const std::stop_token& stop) {
  if (stop.stop_requested()) throw Cancelled();
}

}  // namespace tq
