#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "TQPlatform/Bytes.hpp"

namespace tq {

/// How a child process ended.
struct ChildResult {
  Bytes output;           ///< everything it wrote to its standard output
  int status = 0;         ///< its exit status, or the number of the signal that ended it
  bool timedOut = false;  ///< it was stopped because it went beyond its limits; the other fields then say nothing
};

/// What a child may use before it is stopped.
struct ChildLimits {
  std::chrono::duration<double> time;                ///< wall clock, from the launch
  std::chrono::duration<double> grace{3.0};          ///< between SIGTERM and SIGKILL
  std::size_t outputBytes = std::size_t{256} << 20;  ///< more standard output than this ends it like a time-out
  /// Private memory of each of its processes; what asks for more is told that there is none. Sixteen threads that
  /// decode 8K with ten bits take half of it.
  std::size_t memoryBytes = std::size_t{8} << 30;
};

/// Runs a program to its end and collects its standard output; its standard error is read and thrown away, its standard
/// input is empty. Blocks the calling thread. The child leads a process group of its own: when its time is over the
/// whole group gets SIGTERM, and SIGKILL after the grace, also when a grandchild alone still holds the pipes. The call
/// returns when the child has ended and its pipes are closed, and soon after the grace in any case. No descriptor of
/// this process but the three standard ones reaches the child, signals stand at their defaults in it, and no zombie
/// stays.
///
/// `program` is a path and is not looked up in PATH. Throws `SystemError` when it cannot be launched.
ChildResult runChild(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                     const ChildLimits& limits);

/// Ends all children of this process, with the groups that they lead, by SIGKILL and without waiting. For a program
/// that must leave at once while other threads are inside `runChild`; those calls then return the signal's number. A
/// child that another thread is launching in this very moment may be missed. Never throws.
void killRunningChildren() noexcept;

}  // namespace tq
