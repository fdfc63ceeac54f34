#include "EndToEnd/User.hpp"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <signal.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "TQDescription/SidecarNames.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq::test {

namespace fs = std::filesystem;

namespace {

void check(bool succeeded, const char* what) {
  if (!succeeded) throw std::runtime_error(what);
}

std::pair<Descriptor, Descriptor> makePipe() {
  std::array<int, 2> ends{};
  check(::pipe2(ends.data(), O_CLOEXEC) == 0, "pipe");
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

/// The two ends of a terminal: what a user sees, and what the program writes to.
std::pair<Descriptor, Descriptor> makeTerminal(unsigned short columns) {
  Descriptor screen(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  check(screen && ::grantpt(screen.get()) == 0 && ::unlockpt(screen.get()) == 0, "terminal");
  std::array<char, 64> name{};
  check(::ptsname_r(screen.get(), name.data(), name.size()) == 0, "terminal");
  Descriptor program(::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  const winsize size{.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
  check(program && ::ioctl(program.get(), TIOCSWINSZ, &size) == 0, "terminal");
  return {std::move(screen), std::move(program)};
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts)
    pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

/// This process's environment with some variables replaced.
std::vector<std::string> environmentWith(const std::map<std::string, std::string>& replaced) {
  std::vector<std::string> environment;
  for (char** entry = environ; *entry; ++entry) {
    const std::string_view text = *entry;
    if (!replaced.contains(std::string(text.substr(0, text.find('='))))) environment.emplace_back(text);
  }
  for (const auto& [name, value] : replaced)
    environment.push_back(name + "=" + value);
  return environment;
}

/// Between fork and exec: only calls that are allowed there.
[[noreturn]] void becomeProgram(const Surroundings& surroundings, int output, int errors, char* const* arguments,
                                char* const* environment) {
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
    ::signal(number, SIG_DFL);
  if (surroundings.largestFile) {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{*surroundings.largestFile, *surroundings.largestFile};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  if (::chdir(surroundings.folder.c_str()) == 0 && ::dup2(output, STDOUT_FILENO) >= 0 &&
      ::dup2(errors, STDERR_FILENO) >= 0)
    ::execve(surroundings.program.c_str(), arguments, environment);
  ::_exit(127);
}

}  // namespace

RunningProgram::RunningProgram(const Arguments& arguments, const Surroundings& surroundings) {
  auto [outputRead, outputWrite] =
      surroundings.terminalColumns ? makeTerminal(*surroundings.terminalColumns) : makePipe();
  if (surroundings.outputIsAbandoned) outputRead = Descriptor();
  auto [errorRead, errorWrite] = makePipe();
  std::vector<std::string> words{surroundings.program.string()};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> environment = environmentWith(surroundings.environment);
  const std::vector<char*> argv = pointersTo(words), envp = pointersTo(environment);
  pid_ = ::fork();
  check(pid_ >= 0, "fork");
  if (pid_ == 0) becomeProgram(surroundings, outputWrite.get(), errorWrite.get(), argv.data(), envp.data());
  outputEnd_ = std::move(outputRead);
  errorEnd_ = std::move(errorRead);
  outputReader_ = std::jthread([this] { collect(outputEnd_, output_); });
  errorReader_ = std::jthread([this] { collect(errorEnd_, errors_); });
}

RunningProgram::~RunningProgram() {
  if (pid_ == 0) return;
  ::kill(pid_, SIGKILL);
  ::waitpid(pid_, nullptr, 0);
}

void RunningProgram::collect(const Descriptor& from, std::string& into) {
  std::array<char, 4096> buffer;
  for (;;) {
    const ssize_t count = ::read(from.get(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    std::lock_guard lock(mutex_);
    if (count > 0) into.append(buffer.data(), static_cast<std::size_t>(count));
    if (count <= 0 && &into == &output_) outputEnded_ = true;
    arrived_.notify_all();
    if (count <= 0) return;
  }
}

void RunningProgram::signal(int number) const {
  ::kill(pid_, number);
}

void RunningProgram::waitForOutput(std::string_view text) {
  std::unique_lock lock(mutex_);
  arrived_.wait(lock, [&] { return outputEnded_ || output_.find(text) != std::string::npos; });
  if (output_.find(text) == std::string::npos)
    throw std::runtime_error("the program never said \"" + std::string(text) + "\": " + output_);
}

std::vector<pid_t> RunningProgram::children() const {
  std::vector<pid_t> found;
  for (const fs::directory_entry& task : fs::directory_iterator("/proc/" + std::to_string(pid_) + "/task")) {
    std::ifstream list(task.path() / "children");
    for (pid_t child = 0; list >> child;)
      found.push_back(child);
  }
  return found;
}

void RunningProgram::waitForChild() const {
  const auto patience = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  const auto hasEnded = [this] {
    siginfo_t info{};
    return ::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == pid_;
  };
  while (children().empty() && !hasEnded()) {
    check(std::chrono::steady_clock::now() < patience, "the program never started a process");
    std::this_thread::yield();
  }
}

Outcome RunningProgram::finish() {
  int status = 0;
  rusage usage{};
  while (::wait4(pid_, &status, 0, &usage) == -1)
    check(errno == EINTR, "wait4");
  pid_ = 0;
  outputReader_.join();
  errorReader_.join();
  return {.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status),
          .output = std::move(output_),
          .errors = std::move(errors_),
          .peakKilobytes = usage.ru_maxrss};
}

User::User() {
  for (const char* name : {"home", "data", "clips"})
    fs::create_directory(folder_ / name);
  surroundings.folder = folder_ / "clips";
  surroundings.environment = {{"HOME", (folder_ / "home").string()}, {"XDG_DATA_HOME", (folder_ / "data").string()}};
}

Outcome User::run(const Arguments& arguments) {
  return RunningProgram(arguments, surroundings).finish();
}

Outcome User::runLibrary(const Arguments& arguments) {
  Surroundings other = surroundings;
  other.program = TQ_LIBRARY_PROGRAM;
  return RunningProgram(arguments, other).finish();
}

Outcome User::describe(Arguments arguments) {
  arguments.insert(arguments.begin(), {"--provider", "mock"});
  return run(arguments);
}

fs::path User::addClip(const fs::path& name) const {
  const fs::path file = clips() / name;
  fs::create_directories(file.parent_path());
  fs::copy_file(smallClip(), file);
  return file;
}

fs::path User::addFile(const fs::path& name, std::string_view content) const {
  return writeClip(clips() / name, viewOf(content));
}

fs::path smallClip(std::string_view extension) {
  return makeVideo(movingPicture(1, 10), h264(), extension);
}

DescriptionResult readDescription(const fs::path& sidecar) {
  return decode<DescriptionResult>(parseJSON(contentOf(sidecar)));
}

std::string doneLines(const fs::path& clip) {
  std::string text = "done       " + clip.filename().string() + "\n";
  for (const SidecarKind kind : {SidecarKind::markdown, SidecarKind::json, SidecarKind::poster})
    text += "  wrote    " + (clip.parent_path() / sidecarName(stemOf(clip), kind)).string() + "\n";
  return text;
}

}  // namespace tq::test
