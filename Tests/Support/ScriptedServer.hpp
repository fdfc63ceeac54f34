#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Support/TestCertificates.hpp"
#include "TQPlatform/FileSystem/Descriptor.hpp"

namespace tq::test {

/// One request, byte for byte.
struct ServerRequest {
  std::string head;    ///< from the request line to the empty line, both included
  std::string body;    ///< empty when the reply began before it was read
  int connection = 0;  ///< which connection it came on, from 0

  /// "POST /path"
  std::string methodAndTarget() const;

  /// The value of the first header of this name, in whatever case.
  std::optional<std::string> header(const std::string& name) const;
};

/// How much of a request the server reads before the first step of its reply.
enum class Heard {
  nothing,  ///< the connection is accepted, and not even the TLS handshake made
  head,
  all,
};

/// What the server does with one request: steps, one after the other. After the last the connection stays open for the
/// next request, unless a step ended it.
class ServerReply {
 public:
  explicit ServerReply(Heard begins = Heard::all) : begins_(begins) {}

  /// A whole answer with its `Content-Length`; `headers` are lines without their ends.
  static ServerReply answer(int status, const std::string& body, const std::vector<std::string>& headers = {});

  ServerReply& send(std::string bytes) { return add(Kind::send, std::move(bytes)); }

  /// Sends byte by byte, each in a packet of its own.
  ServerReply& drip(std::string bytes) { return add(Kind::drip, std::move(bytes)); }

  /// Answers 200 with the request's own body.
  ServerReply& echo() { return add(Kind::echo); }

  /// Does no more, until the test waits for the client to go or the server ends.
  ServerReply& stall() { return add(Kind::stall); }

  /// Says that nothing more will come, as an orderly server does.
  ServerReply& close() { return add(Kind::close); }

  /// Breaks the connection (RST).
  ServerReply& reset() { return add(Kind::reset); }

 private:
  friend class ScriptedServer;

  enum class Kind { send, drip, echo, stall, close, reset };
  struct Step {
    Kind kind;
    std::string bytes;
  };

  ServerReply& add(Kind kind, std::string bytes = {}) {
    steps_.push_back({kind, std::move(bytes)});
    return *this;
  }

  Heard begins_;
  std::vector<Step> steps_;
};

struct ServerOptions {
  std::string address = "127.0.0.1";       ///< or "::1"
  std::optional<ServerIdentity> identity;  ///< present: the server speaks TLS
};

/// An HTTP/1.1 server on a loopback socket that does what a test has written down, a thread per connection. A request
/// beyond the script is answered with 501. Waiting throws when what is waited for does not come within a minute.
class ScriptedServer {
 public:
  explicit ScriptedServer(ServerOptions options = {});

  /// Breaks off whatever is under way.
  ~ScriptedServer();

  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;

  int port() const { return port_; }

  /// "http://127.0.0.1:4711" and the path; https when it speaks TLS. `host` stands in place of the address.
  std::string url(const std::string& path = "/", std::string host = {}) const;

  /// Adds to the queue of replies.
  void reply(ServerReply reply);

  /// For every request after those of the queue.
  void replyAlways(ServerReply reply);

  std::vector<ServerRequest> requests() const;
  int connectionCount() const;

  /// The protocols that the last client offered for TLS connections (ALPN), in its order.
  std::vector<std::string> offeredProtocols() const;

  /// Until `count` replies in all have come to a stall.
  void waitForStalls(int count = 1) const;

  /// Until the client has closed `count` connections in all. What stalled goes on reading, to notice it.
  void waitForClientClose(int count = 1);

 private:
  class Connection;
  struct TLS;
  enum class After { goesOn, clientClosed, ended };

  void accept();
  void serve(Connection& connection);
  After perform(Connection& connection, const ServerReply& reply, const ServerRequest& request);
  After performStep(Connection& connection, const ServerReply::Step& step, const ServerRequest& request);
  ServerReply takeReply();
  void waitUntil(const std::function<bool()>& condition) const;
  template <class Change>
  void change(Change change);

  const ServerOptions options_;
  std::unique_ptr<TLS> tls_;
  Descriptor listener_;
  int port_ = 0;

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::deque<ServerReply> replies_;
  ServerReply otherwise_ = ServerReply::answer(501, "not in the script");
  std::vector<ServerRequest> requests_;
  std::vector<std::string> offeredProtocols_;
  int stalls_ = 0;
  int clientCloses_ = 0;
  bool draining_ = false;
  bool stopping_ = false;
  std::list<Connection> connections_;
  std::thread acceptor_;
};

}  // namespace tq::test
