#include "Support/UnansweringPort.hpp"

#include <arpa/inet.h>
#include <chrono>
#include <fstream>
#include <netinet/in.h>
#include <sstream>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>

namespace tq::test {

namespace {

/// Whether /proc/net/tcp (proc(5)) holds an attempt to connect to `port`: a remote address with it, in state SYN_SENT.
bool isBeingTried(int port) {
  std::ifstream table("/proc/net/tcp");
  std::string line;
  while (std::getline(table, line)) {
    std::istringstream words(line);
    std::string number, local, remote, state;
    words >> number >> local >> remote >> state;
    const std::size_t colon = remote.find(':');
    if (state == "02" && colon != std::string::npos && std::stoi(remote.substr(colon + 1), nullptr, 16) == port)
      return true;
  }
  return false;
}

}  // namespace

UnansweringPort::UnansweringPort()
    : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)),
      queued_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in name{};
  name.sin_family = AF_INET;
  name.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof name;
  auto* const address = reinterpret_cast<sockaddr*>(&name);
  // A queue of length 0 holds one connection.
  if (bind(listener_.get(), address, size) != 0 || listen(listener_.get(), 0) != 0 ||
      getsockname(listener_.get(), address, &size) != 0 || connect(queued_.get(), address, size) != 0)
    throw std::runtime_error("no port whose queue is full");
  port_ = ntohs(name.sin_port);
}

void UnansweringPort::waitForAttempt() const {
  waitForAttempts(true);
}

void UnansweringPort::waitForNoAttempt() const {
  waitForAttempts(false);
}

void UnansweringPort::waitForAttempts(bool any) const {
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (isBeingTried(port_) != any) {
    if (std::chrono::steady_clock::now() > end) throw std::runtime_error("waited in vain for a change of connections");
    std::this_thread::yield();
  }
}

}  // namespace tq::test
