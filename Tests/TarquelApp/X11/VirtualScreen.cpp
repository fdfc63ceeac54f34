#include "TarquelApp/X11/VirtualScreen.hpp"

#include <array>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tq::test {

VirtualScreen::VirtualScreen() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  const std::string writeEnd = std::to_string(ends[1]);
  server_ = ::fork();
  if (server_ < 0) throw std::runtime_error("no process for Xvfb");
  if (server_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    ::fcntl(ends[1], F_SETFD, 0);
    ::execlp("Xvfb", "Xvfb", "-displayfd", writeEnd.c_str(), "-screen", "0", "1600x900x24", "-nolisten", "tcp",
             "-noreset", nullptr);
    ::_exit(127);
  }
  ::close(ends[1]);
  // The number of the display and a line feed, once it takes clients.
  std::string said;
  for (char next = 0; ::read(ends[0], &next, 1) == 1 && next != '\n';)
    said += next;
  ::close(ends[0]);
  if (said.empty()) throw std::runtime_error("Xvfb does not start; it is in Debian's package xvfb");
  display_ = ":" + said;
}

VirtualScreen::~VirtualScreen() {
  ::kill(server_, SIGTERM);
  ::waitpid(server_, nullptr, 0);
}

}  // namespace tq::test
