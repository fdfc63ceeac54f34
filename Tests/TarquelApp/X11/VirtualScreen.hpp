#pragma once

#include <string>
#include <sys/types.h>

namespace tq::test {

/// An X server whose screen nobody sees, without a window manager, for this process and those it starts. To be made
/// while the process has one thread.
class VirtualScreen {
 public:
  /// Throws when there is no Xvfb, or it does not start.
  VirtualScreen();

  /// The end of the server.
  ~VirtualScreen();
  VirtualScreen(const VirtualScreen&) = delete;
  VirtualScreen& operator=(const VirtualScreen&) = delete;

  /// What clients find it by, such as ":3".
  const std::string& display() const { return display_; }

 private:
  pid_t server_ = 0;
  std::string display_;
};

}  // namespace tq::test
