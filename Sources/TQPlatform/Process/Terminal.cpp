#include "TQPlatform/Process/Terminal.hpp"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tq {

std::optional<int> terminalColumns() {
  if (!isatty(STDOUT_FILENO)) return std::nullopt;
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

bool isOutputAbandoned() {
  pollfd output{.fd = STDOUT_FILENO, .events = 0, .revents = 0};
  return ::poll(&output, 1, 0) == 1 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

}  // namespace tq
