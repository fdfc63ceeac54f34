#pragma once

#include <string>

#include "TQPlatform/FileSystem/Descriptor.hpp"

namespace tq::test {

/// A loopback port that takes connections, says nothing on them and tells whether there was one.
class ListeningPort {
 public:
  ListeningPort();

  /// "127.0.0.1:port"
  std::string address() const { return "127.0.0.1:" + std::to_string(port_); }

  /// True when somebody connected, even if the connection has been closed since.
  bool anybodyCame() const;

 private:
  Descriptor listener_;
  int port_ = 0;
};

}  // namespace tq::test
