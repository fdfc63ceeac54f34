#include "TQPlatform/Terminal.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

namespace tq {

std::optional<int> terminalColumns() {
  if (!isatty(STDOUT_FILENO)) return std::nullopt;
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

}  // namespace tq
