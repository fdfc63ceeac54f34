#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tq {

/// What a `CurlSession` may be told about the network around it. The defaults are those of the program.
struct CurlOptions {
  /// A PEM file of authorities to trust besides the system's folder of certificates; empty: the system's alone.
  std::filesystem::path certificateAuthorities;

  /// Names answered without a lookup, each "host:port:address".
  std::vector<std::string> addresses;
};

}  // namespace tq
