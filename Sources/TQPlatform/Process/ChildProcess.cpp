#include "TQPlatform/Process/ChildProcess.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "TQPlatform/FileSystem/Descriptor.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"

extern "C" {
#include <sys/pidfd.h>
}

namespace tq {

namespace fs = std::filesystem;

namespace {

using SteadyClock = std::chrono::steady_clock;

/// Throws when a call of the `posix_spawn` family, which gives its error as its result, failed.
void check(int error, const fs::path& program) {
  if (error != 0) throw SystemError(error, program);
}

struct Pipe {
  Descriptor readEnd, writeEnd;

  explicit Pipe(const fs::path& program) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throwErrno(program);
    readEnd = Descriptor(ends[0]);
    writeEnd = Descriptor(ends[1]);
    // In a program that was started without standard descriptors, the new one may be one of these numbers, and making
    // the child's standard output would then close its standard error.
    if (writeEnd.get() > STDERR_FILENO) return;
    writeEnd = Descriptor(::fcntl(writeEnd.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (!writeEnd) throwErrno(program);
  }
};

struct FileActions {
  posix_spawn_file_actions_t value;

  FileActions(int output, int errors, const fs::path& program) {
    check(::posix_spawn_file_actions_init(&value), program);
    int error = ::posix_spawn_file_actions_addopen(&value, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (error == 0) error = ::posix_spawn_file_actions_adddup2(&value, output, STDOUT_FILENO);
    if (error == 0) error = ::posix_spawn_file_actions_adddup2(&value, errors, STDERR_FILENO);
    // Libraries open descriptors without O_CLOEXEC, too.
    if (error == 0) error = ::posix_spawn_file_actions_addclosefrom_np(&value, STDERR_FILENO + 1);
    if (error != 0) ::posix_spawn_file_actions_destroy(&value);
    check(error, program);
  }
  ~FileActions() { ::posix_spawn_file_actions_destroy(&value); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
};

/// An own process group, no signal blocked, none ignored.
struct Attributes {
  posix_spawnattr_t value;

  explicit Attributes(const fs::path& program) {
    check(::posix_spawnattr_init(&value), program);
    sigset_t none, all;
    ::sigemptyset(&none);
    ::sigfillset(&all);
    ::posix_spawnattr_setpgroup(&value, 0);
    ::posix_spawnattr_setsigmask(&value, &none);
    ::posix_spawnattr_setsigdefault(&value, &all);
    ::posix_spawnattr_setflags(&value, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  ~Attributes() { ::posix_spawnattr_destroy(&value); }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
};

pid_t spawn(const fs::path& program, const std::vector<std::string>& arguments, int output, int errors) {
  const FileActions actions(output, errors, program);
  const Attributes attributes(program);
  std::vector<char*> argv;
  argv.push_back(const_cast<char*>(program.c_str()));
  for (const std::string& argument : arguments)
    argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  pid_t pid = 0;
  check(::posix_spawn(&pid, program.c_str(), &actions.value, &attributes.value, argv.data(), environ), program);
  return pid;
}

/// A child that has ended by now needs no limit.
void limitMemory(pid_t pid, std::size_t bytes) {
  const rlimit limit{bytes, bytes};
  ::prlimit(pid, RLIMIT_DATA, &limit, nullptr);
}

/// The leader of a process group. It is reaped only at the very end: as long as its entry stands, its number cannot be
/// given to another process, so a signal to the group never hits a stranger.
class Child {
 public:
  explicit Child(pid_t pid) : pid_(pid) {}

  /// A child that nobody waited for is not left behind.
  ~Child() {
    if (pid_ == 0) return;
    killGroup();
    int ignored = 0;
    while (::waitpid(pid_, &ignored, 0) == -1 && errno == EINTR) {
    }
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  pid_t pid() const { return pid_; }
  void askGroupToEnd() const { ::kill(-pid_, SIGTERM); }

  /// The leader is named by itself as well, since it may have gone over to another group.
  void killGroup() const {
    ::kill(-pid_, SIGKILL);
    ::kill(pid_, SIGKILL);
  }

  /// Waits for its end and takes it off the process table; gives its exit status or the number of the signal.
  int reap() {
    int status = 0;
    while (::waitpid(pid_, &status, 0) == -1)
      if (errno != EINTR) {
        const int cause = errno;
        pid_ = 0;
        throw SystemError(cause, std::string("waitpid"));
      }
    pid_ = 0;
    return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
  }

 private:
  pid_t pid_;
};

/// One run: the pipes, the child's end and the limits, all watched by one loop.
class Run {
 public:
  Run(const fs::path& program, const std::vector<std::string>& arguments, const ChildLimits& limits)
      : limits_(limits),
        outputPipe_(program),
        errorPipe_(program),
        child_(spawn(program, arguments, outputPipe_.writeEnd.get(), errorPipe_.writeEnd.get())),
        deadline_(after(limits.time)),
        ending_(::pidfd_open(child_.pid(), 0)) {
    if (!ending_) throwErrno(program);
    limitMemory(child_.pid(), limits.memoryBytes);
    outputPipe_.writeEnd.reset();
    errorPipe_.writeEnd.reset();
  }

  ChildResult finish() {
    while (!isOver()) {
      if (stage_ != Stage::killed && SteadyClock::now() >= deadline_)
        escalate();
      else
        wait();
    }
    // Members of the group that closed the pipes may still be there.
    if (stage_ != Stage::running) child_.killGroup();
    result_.status = child_.reap();
    result_.timedOut = stage_ != Stage::running;
    return std::move(result_);
  }

 private:
  enum class Stage { running, terminating, killed };

  static SteadyClock::time_point after(std::chrono::duration<double> time) {
    constexpr std::chrono::duration<double> longest = std::chrono::hours(24 * 365);
    const auto bounded = std::clamp(time, std::chrono::duration<double>::zero(), longest);
    return SteadyClock::now() + std::chrono::duration_cast<SteadyClock::duration>(bounded);
  }

  /// Once the group was killed only the child's own end counts: a process that left the group may hold the pipes for
  /// ever.
  bool isOver() const { return !ending_ && (stage_ == Stage::killed || (!outputPipe_.readEnd && !errorPipe_.readEnd)); }

  void escalate() {
    if (stage_ == Stage::running) {
      stage_ = Stage::terminating;
      child_.askGroupToEnd();
      deadline_ = after(limits_.grace);
    } else {
      stage_ = Stage::killed;
      child_.killGroup();
    }
  }

  /// Waits for the next event or the deadline and deals with it.
  void wait() {
    std::array<pollfd, 3> events{
        {{outputPipe_.readEnd.get(), POLLIN, 0}, {errorPipe_.readEnd.get(), POLLIN, 0}, {ending_.get(), POLLIN, 0}}};
    const auto left = std::max(deadline_ - SteadyClock::now(), SteadyClock::duration::zero());
    const auto whole = std::chrono::floor<std::chrono::seconds>(left);
    const timespec timeout{whole.count(), std::chrono::nanoseconds(left - whole).count()};
    if (::ppoll(events.data(), events.size(), stage_ == Stage::killed ? nullptr : &timeout, nullptr) < 0) {
      if (errno == EINTR) return;
      throw SystemError(errno, std::string("poll"));
    }
    if (events[0].revents != 0) drain(outputPipe_.readEnd, &result_.output);
    if (events[1].revents != 0) drain(errorPipe_.readEnd, nullptr);
    if (events[2].revents != 0) ending_.reset();
  }

  /// Reads what is there; at the end of the pipe the descriptor is closed.
  void drain(Descriptor& source, Bytes* sink) {
    const ssize_t count = ::read(source.get(), buffer_.data(), buffer_.size());
    if (count < 0 && errno == EINTR) return;
    if (count <= 0) {
      source.reset();
    } else if (sink && stage_ == Stage::running) {
      if (static_cast<std::size_t>(count) > limits_.outputBytes - sink->size()) return escalate();
      sink->insert(sink->end(), buffer_.begin(), buffer_.begin() + count);
    }
  }

  ChildLimits limits_;
  Pipe outputPipe_, errorPipe_;
  Child child_;
  SteadyClock::time_point deadline_;
  Descriptor ending_;  ///< the child's pidfd, closed once it has ended
  Stage stage_ = Stage::running;
  ChildResult result_;
  std::array<std::uint8_t, std::size_t{64} * 1024> buffer_;
};

}  // namespace

ChildResult runChild(const fs::path& program, const std::vector<std::string>& arguments, const ChildLimits& limits) {
  return Run(program, arguments, limits).finish();
}

void killRunningChildren() noexcept {
  try {
    for (const fs::directory_entry& task : fs::directory_iterator("/proc/self/task")) {
      std::ifstream children(task.path() / "children");
      for (pid_t child = 0; children >> child;)
        if (::kill(-child, SIGKILL) != 0) ::kill(child, SIGKILL);  // it is just being launched, and alone
    }
  } catch (const std::exception&) {
    // A thread may end while it is looked at; what was found so far has been dealt with.
  }
}

}  // namespace tq
