#include "TQPlatform/FileSystem/HomeFolder.hpp"

#include <array>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace tq {

std::filesystem::path homeFolder() {
  if (const char* home = std::getenv("HOME"); home && *home == '/') return home;
  passwd entry{};
  passwd* found = nullptr;
  std::array<char, 16 * 1024> buffer{};
  if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found && *entry.pw_dir == '/')
    return entry.pw_dir;
  return "/";
}

}  // namespace tq
