#pragma once

#include <string>

#include "TQPlatform/FileSystem/Descriptor.hpp"

namespace tq::test {

/// A loopback port to which nobody gets through: its queue of connections is full, so that the system leaves every
/// further attempt to connect without an answer.
class UnansweringPort {
 public:
  UnansweringPort();

  int port() const { return port_; }
  std::string url() const { return "http://127.0.0.1:" + std::to_string(port_) + "/"; }

  /// Until somebody is trying to connect, as the system's table of connections says. Throws after a minute.
  void waitForAttempt() const;

  /// Until nobody is any more.
  void waitForNoAttempt() const;

 private:
  void waitForAttempts(bool any) const;

  Descriptor listener_;
  Descriptor queued_;
  int port_ = 0;
};

}  // namespace tq::test
