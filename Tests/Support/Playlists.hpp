#pragma once

#include <string>
#include <vector>

namespace tq::test {

/// A text that media libraries take for a clip made of other files or addresses.
struct Playlist {
  const char* name;
  std::string text;
};

/// One of every kind, each of which leads to `target`: an absolute path or an address.
std::vector<Playlist> playlistsTo(const std::string& target);

}  // namespace tq::test
