#include "Support/ListeningPort.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>

namespace tq::test {

ListeningPort::ListeningPort() : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
  sockaddr_in name{};
  name.sin_family = AF_INET;
  name.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof name;
  auto* const address = reinterpret_cast<sockaddr*>(&name);
  if (bind(listener_.get(), address, size) != 0 || listen(listener_.get(), SOMAXCONN) != 0 ||
      getsockname(listener_.get(), address, &size) != 0)
    throw std::runtime_error("no port to listen on");
  port_ = ntohs(name.sin_port);
}

bool ListeningPort::anybodyCame() const {
  return static_cast<bool>(Descriptor(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC)));
}

}  // namespace tq::test
