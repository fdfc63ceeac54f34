#include "Support/ScriptedServer.hpp"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <chrono>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <signal.h>
#include <stdexcept>
#include <sys/socket.h>

#include "TQPlatform/Text/Unicode.hpp"

namespace tq::test {

namespace {

constexpr std::string_view headEnd = "\r\n\r\n";

void require(bool fine, const char* what) {
  if (!fine) throw std::runtime_error(what);
}

int listenOn(const std::string& address) {
  sockaddr_in6 six{};
  sockaddr_in four{};
  const bool isSix = inet_pton(AF_INET6, address.c_str(), &six.sin6_addr) == 1;
  if (!isSix) require(inet_pton(AF_INET, address.c_str(), &four.sin_addr) == 1, "no address");
  six.sin6_family = AF_INET6;
  four.sin_family = AF_INET;
  const int listener = socket(isSix ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const auto* const name = isSix ? reinterpret_cast<sockaddr*>(&six) : reinterpret_cast<sockaddr*>(&four);
  const socklen_t size = isSix ? sizeof six : sizeof four;
  require(bind(listener, name, size) == 0 && listen(listener, SOMAXCONN) == 0, "no server socket");
  return listener;
}

int portOf(int socket) {
  sockaddr_storage name{};
  socklen_t size = sizeof name;
  require(getsockname(socket, reinterpret_cast<sockaddr*>(&name), &size) == 0, "no port");
  return ntohs(name.ss_family == AF_INET6 ? reinterpret_cast<sockaddr_in6&>(name).sin6_port
                                          : reinterpret_cast<sockaddr_in&>(name).sin_port);
}

/// A write to a connection that the client has closed is to fail in the server's threads, not to end the program.
void blockBrokenPipeSignal() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

struct FreeSSL {
  void operator()(SSL* ssl) const { SSL_free(ssl); }
  void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
  void operator()(BIO* memory) const { BIO_free(memory); }
  void operator()(X509* certificate) const { X509_free(certificate); }
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};

}  // namespace

std::string ServerRequest::methodAndTarget() const {
  return head.substr(0, head.find(" HTTP/"));
}

std::optional<std::string> ServerRequest::header(const std::string& name) const {
  const std::size_t at = lowercased(head).find("\r\n" + lowercased(name) + ":");
  if (at == std::string::npos) return std::nullopt;
  const std::size_t start = at + name.size() + 3;
  return std::string(trimmed(std::string_view(head).substr(start, head.find("\r\n", start) - start)));
}

ServerReply ServerReply::answer(int status, const std::string& body, const std::vector<std::string>& headers) {
  std::string head = "HTTP/1.1 " + std::to_string(status) + " Scripted\r\n";
  for (const std::string& header : headers)
    head += header + "\r\n";
  return ServerReply().send(head + "Content-Length: " + std::to_string(body.size()) + std::string(headEnd) + body);
}

struct ScriptedServer::TLS {
  TLS(const ServerIdentity& identity, ScriptedServer& server) : context(SSL_CTX_new(TLS_server_method())) {
    const auto memoryOf = [](const std::string& text) {
      return std::unique_ptr<BIO, FreeSSL>(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
    };
    const std::unique_ptr<X509, FreeSSL> certificate(
        PEM_read_bio_X509(memoryOf(identity.certificate).get(), nullptr, nullptr, nullptr));
    const std::unique_ptr<EVP_PKEY, FreeSSL> key(
        PEM_read_bio_PrivateKey(memoryOf(identity.key).get(), nullptr, nullptr, nullptr));
    require(SSL_CTX_use_certificate(context.get(), certificate.get()) == 1 &&
                SSL_CTX_use_PrivateKey(context.get(), key.get()) == 1,
            "no server certificate");
    SSL_CTX_set_alpn_select_cb(context.get(), &TLS::noteProtocols, &server);
  }

  /// Notes what is offered and takes none of it.
  static int noteProtocols(SSL*, const unsigned char**, unsigned char*, const unsigned char* offered, unsigned size,
                           void* server) {
    std::vector<std::string> protocols;
    for (unsigned at = 0; at < size; at += offered[at] + 1u)
      protocols.emplace_back(reinterpret_cast<const char*>(offered) + at + 1, offered[at]);
    auto& self = *static_cast<ScriptedServer*>(server);
    std::lock_guard lock(self.mutex_);
    self.offeredProtocols_ = std::move(protocols);
    return SSL_TLSEXT_ERR_NOACK;
  }

  std::unique_ptr<SSL_CTX, FreeSSL> context;
};

/// One accepted connection. Its thread alone reads and writes; the socket is closed under the server's mutex.
class ScriptedServer::Connection {
 public:
  Connection(int socket, int index) : socket_(socket), index_(index) {
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  }

  int index() const { return index_; }

  bool startTLS(SSL_CTX& context) {
    ssl_.reset(SSL_new(&context));
    SSL_set_fd(ssl_.get(), socket_.get());
    return SSL_accept(ssl_.get()) == 1;
  }

  /// Reads a request's head, and its body too when `whole`; none when the client has closed.
  std::optional<ServerRequest> hear(bool whole) {
    std::size_t end = 0;
    while ((end = received_.find(headEnd)) == std::string::npos)
      if (!receive()) return std::nullopt;
    ServerRequest request{.head = received_.substr(0, end + headEnd.size()), .body = {}, .connection = index_};
    received_.erase(0, request.head.size());
    if (!whole) return request;
    const std::size_t length = std::stoul(request.header("Content-Length").value_or("0"));
    while (received_.size() < length)
      if (!receive()) return std::nullopt;
    request.body = received_.substr(0, length);
    received_.erase(0, length);
    return request;
  }

  /// Until something of the next request is there; false when the client has closed.
  bool waitForMore() { return !received_.empty() || receive(); }

  bool send(std::string_view bytes) {
    while (!bytes.empty()) {
      const auto sent = ssl_ ? SSL_write(ssl_.get(), bytes.data(), static_cast<int>(bytes.size()))
                             : ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }

  void endWriting() {
    if (ssl_) SSL_shutdown(ssl_.get());
    ::shutdown(socket_.get(), SHUT_WR);
  }

  /// Reads, past any TLS, until the client has closed.
  void drain() {
    std::array<char, 65536> bytes;
    while (recv(socket_.get(), bytes.data(), bytes.size(), 0) > 0) {
    }
  }

  void makeCloseAReset() {
    const linger atOnce{.l_onoff = 1, .l_linger = 0};
    setsockopt(socket_.get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
  }

  void close() { socket_.reset(); }
  void breakOff() {
    if (socket_) ::shutdown(socket_.get(), SHUT_RDWR);
  }

  std::thread thread;

 private:
  bool receive() {
    std::array<char, 65536> bytes;
    const auto size = ssl_ ? SSL_read(ssl_.get(), bytes.data(), static_cast<int>(bytes.size()))
                           : recv(socket_.get(), bytes.data(), bytes.size(), 0);
    if (size > 0) received_.append(bytes.data(), static_cast<std::size_t>(size));
    return size > 0;
  }

  Descriptor socket_;
  const int index_;
  std::unique_ptr<SSL, FreeSSL> ssl_;
  std::string received_;
};

template <class Change>
void ScriptedServer::change(Change change) {
  std::lock_guard lock(mutex_);
  change();
  changed_.notify_all();
}

ScriptedServer::ScriptedServer(ServerOptions options)
    : options_(std::move(options)), listener_(listenOn(options_.address)), port_(portOf(listener_.get())) {
  if (options_.identity) tls_ = std::make_unique<TLS>(*options_.identity, *this);
  acceptor_ = std::thread([this] { accept(); });
}

ScriptedServer::~ScriptedServer() {
  change([this] { stopping_ = true; });
  ::shutdown(listener_.get(), SHUT_RDWR);
  acceptor_.join();
  change([this] {
    for (Connection& connection : connections_)
      connection.breakOff();
  });
  for (Connection& connection : connections_)
    connection.thread.join();
}

std::string ScriptedServer::url(const std::string& path, std::string host) const {
  if (host.empty())
    host = options_.address.find(':') == std::string::npos ? options_.address : "[" + options_.address + "]";
  return (tls_ ? "https://" : "http://") + host + ":" + std::to_string(port_) + path;
}

void ScriptedServer::reply(ServerReply reply) {
  change([&] { replies_.push_back(std::move(reply)); });
}

void ScriptedServer::replyAlways(ServerReply reply) {
  change([&] { otherwise_ = std::move(reply); });
}

std::vector<ServerRequest> ScriptedServer::requests() const {
  std::lock_guard lock(mutex_);
  return requests_;
}

int ScriptedServer::connectionCount() const {
  std::lock_guard lock(mutex_);
  return static_cast<int>(connections_.size());
}

std::vector<std::string> ScriptedServer::offeredProtocols() const {
  std::lock_guard lock(mutex_);
  return offeredProtocols_;
}

void ScriptedServer::waitForStalls(int count) const {
  waitUntil([&] { return stalls_ >= count; });
}

void ScriptedServer::waitForClientClose(int count) {
  change([this] { draining_ = true; });
  waitUntil([&] { return clientCloses_ >= count; });
}

void ScriptedServer::waitUntil(const std::function<bool()>& condition) const {
  std::unique_lock lock(mutex_);
  require(changed_.wait_for(lock, std::chrono::minutes(1), condition), "the server waited for the client in vain");
}

ServerReply ScriptedServer::takeReply() {
  std::lock_guard lock(mutex_);
  if (replies_.empty()) return otherwise_;
  ServerReply reply = std::move(replies_.front());
  replies_.pop_front();
  return reply;
}

void ScriptedServer::accept() {
  blockBrokenPipeSignal();
  for (int socket = 0; (socket = accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
    std::lock_guard lock(mutex_);
    Connection& connection = connections_.emplace_back(socket, static_cast<int>(connections_.size()));
    connection.thread = std::thread([this, &connection] {
      serve(connection);
      change([&] { connection.close(); });
    });
  }
}

void ScriptedServer::serve(Connection& connection) {
  ServerReply reply = takeReply();
  After after = After::goesOn;
  if (tls_ && reply.begins_ != Heard::nothing && !connection.startTLS(*tls_->context)) after = After::clientClosed;
  while (after == After::goesOn) {
    std::optional<ServerRequest> request = ServerRequest();
    if (reply.begins_ != Heard::nothing) {
      request = connection.hear(reply.begins_ == Heard::all);
      if (request) change([&] { requests_.push_back(*request); });
    }
    after = request ? perform(connection, reply, *request) : After::clientClosed;
    if (after == After::goesOn && !connection.waitForMore()) after = After::clientClosed;
    if (after == After::goesOn) reply = takeReply();
  }
  if (after == After::clientClosed) change([this] { ++clientCloses_; });
}

auto ScriptedServer::perform(Connection& connection, const ServerReply& reply, const ServerRequest& request) -> After {
  After after = After::goesOn;
  for (auto step = reply.steps_.begin(); step != reply.steps_.end() && after == After::goesOn; ++step)
    after = performStep(connection, *step, request);
  return after;
}

auto ScriptedServer::performStep(Connection& connection, const ServerReply::Step& step, const ServerRequest& request)
    -> After {
  using Kind = ServerReply::Kind;
  const auto sent = [](bool fine) { return fine ? After::goesOn : After::clientClosed; };
  switch (step.kind) {
    case Kind::send: return sent(connection.send(step.bytes));
    case Kind::drip:
      return sent(std::all_of(step.bytes.begin(), step.bytes.end(), [&](const char& byte) {
        return connection.send({&byte, 1});
      }));
    case Kind::echo:
      return sent(connection.send("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(request.body.size()) +
                                  std::string(headEnd) + request.body));
    case Kind::stall:
      change([this] { ++stalls_; });
      waitUntil([this] { return draining_ || stopping_; });
      connection.drain();
      return After::clientClosed;
    case Kind::close:
      connection.endWriting();
      connection.drain();
      return After::clientClosed;
    case Kind::reset: connection.makeCloseAReset(); return After::ended;
  }
  return After::ended;
}

}  // namespace tq::test
