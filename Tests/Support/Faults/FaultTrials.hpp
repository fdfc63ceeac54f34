#pragma once

#include <filesystem>
#include <functional>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>

#include "Support/Faults/FileFaults.hpp"

namespace tq::test {

/// An operation on the files of a folder, and what has to hold however it ends.
struct FaultTrial {
  std::filesystem::path folder;
  std::function<void()> prepare;  ///< makes the state before the operation, from whatever an earlier round left
  std::function<void()> attempt;  ///< the operation
  /// Looks at what is left. `error` is the text of what the operation threw; absent when it threw nothing.
  std::function<void(const std::optional<std::string>& error)> check;
};

/// How many calls of each kind were made to fail.
using Strikes = std::map<FileCall, int>;

/// Does the trial again and again, and every time another one of the operation's calls fails: each kind of call with
/// EIO, ENOSPC and EACCES, the first of them, the second and so on, until the operation runs through without reaching
/// it. It may throw for a call that failed, with the system's reason at the end of its text, and for nothing else. Then
/// a round in which every call that can be is interrupted once (EINTR), and some in which only a few bytes move at a
/// time; these must not throw either. Gives what was struck.
Strikes failEveryCall(const FaultTrial& trial);

/// Runs the operation in a process of its own, which is killed instead of the call of that number, counting all kinds
/// from 0. True when the process lived to the end of the operation. What it throws does not matter.
bool survives(const std::filesystem::path& folder, int fatalCall, const std::function<void()>& operation);

/// Does the trial again and again in processes of their own, which are killed instead of their first call, their second
/// and so on, until one lives to the end. `check` is done here and gets no error. Gives the number of those killed.
int killAtEveryCall(const FaultTrial& trial);

}  // namespace tq::test
