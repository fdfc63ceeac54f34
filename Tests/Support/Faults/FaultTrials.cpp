#include "Support/Faults/FaultTrials.hpp"

#include <cerrno>
#include <cstring>
#include <exception>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tq::test {

namespace {

constexpr int mostCalls = 10'000;  // of one operation; more means that it never ends

std::optional<std::string> errorOf(const std::function<void()>& attempt) {
  try {
    attempt();
  } catch (const std::exception& error) {
    return error.what();
  }
  return std::nullopt;
}

/// What a round does before and after its operation goes faster when nothing is synced.
void undisturbed(const FaultTrial& trial, const std::function<void()>& action) {
  const FileFaults none(trial.folder);
  action();
}

/// One call that fails, and with what.
struct Fault {
  FileCall call;
  int error;
  int index;
};

std::string textOf(const Fault& fault) {
  return std::string(nameOf(fault.call)) + " " + std::to_string(fault.index) + ": " + std::strerror(fault.error);
}

/// False when the operation had no such call.
bool strikes(const FaultTrial& trial, const Fault& fault) {
  SCOPED_TRACE(textOf(fault));
  undisturbed(trial, trial.prepare);
  std::optional<std::string> error;
  bool reached = false;
  {
    FileFaults faults(trial.folder, [&](FileCall call, int index) {
      return call == fault.call && index == fault.index ? FileFate{.error = fault.error} : FileFate();
    });
    error = errorOf(trial.attempt);
    reached = faults.count(fault.call) > fault.index;
  }
  // Whoever reads the error learns why.
  EXPECT_TRUE(!error || (reached && error->ends_with(std::strerror(fault.error)))) << *error;
  undisturbed(trial, [&] { trial.check(error); });
  return reached;
}

/// A round under conditions that an operation has to cope with.
void succeed(const FaultTrial& trial, const std::string& conditions, const FileFaults::Plan& plan) {
  SCOPED_TRACE(conditions);
  undisturbed(trial, trial.prepare);
  std::optional<std::string> error;
  {
    FileFaults faults(trial.folder, plan);
    error = errorOf(trial.attempt);
  }
  EXPECT_EQ(error, std::nullopt);
  undisturbed(trial, [&] { trial.check(error); });
}

bool canBeInterrupted(FileCall call) {
  return call == FileCall::open || call == FileCall::read || call == FileCall::write || call == FileCall::sync ||
         call == FileCall::close;
}

}  // namespace

Strikes failEveryCall(const FaultTrial& trial) {
  Strikes all;
  for (const FileCall call : fileCalls)
    for (const int error : {EIO, ENOSPC, EACCES})
      for (int index = 0; index < mostCalls && strikes(trial, {call, error, index}); ++index)
        ++all[call];

  // Every second one: the call that is made again for it passes.
  succeed(trial, "interrupted", [](FileCall call, int index) {
    return FileFate{.error = canBeInterrupted(call) && (index % 2 == 0 || call == FileCall::close) ? EINTR : 0};
  });
  for (const std::size_t most : {1, 7})
    succeed(trial, std::to_string(most) + " bytes at a time", [most](FileCall, int) { return FileFate{.most = most}; });
  return all;
}

bool survives(const std::filesystem::path& folder, int fatalCall, const std::function<void()>& operation) {
  const pid_t child = ::fork();
  if (child == 0) {
    int calls = 0;
    const FileFaults faults(folder, [&](FileCall, int) { return FileFate{.kills = calls++ == fatalCall}; });
    errorOf(operation);
    ::_exit(0);
  }
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child) throw std::runtime_error("no process to kill");
  return !WIFSIGNALED(status);
}

int killAtEveryCall(const FaultTrial& trial) {
  for (int fatal = 0; fatal < mostCalls; ++fatal) {
    SCOPED_TRACE("killed at call " + std::to_string(fatal));
    undisturbed(trial, trial.prepare);
    const bool survived = survives(trial.folder, fatal, trial.attempt);
    undisturbed(trial, [&] { trial.check(std::nullopt); });
    if (survived) return fatal;
  }
  return mostCalls;
}

}  // namespace tq::test
