#pragma once

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>

#include "TQPlatform/Network/CurlOptions.hpp"
#include "TQPlatform/Network/URLSession.hpp"

namespace tq {

class CurlLoop;

/// The session of the real network. One object serves the whole program, so that requests share connections and TLS
/// sessions: HTTP/2 where a server offers it, else HTTP/1.1.
///
/// Servers are verified against the system's certificates. No proxy, cookie, configuration file or compression is used;
/// the one source of credentials besides the headers is the user information of the URL, sent to that server as HTTP
/// Basic unless the request has an `Authorization` header of its own. A redirect is followed only to the same scheme,
/// host and port, and at most 10 times; else the redirect is itself the answer. A request on a kept connection that
/// turns out to be closed, before a byte of answer came, is sent again on a new one.
///
/// A method or header that would break the message's frame, say by a line break, is refused with `badURL` before
/// anything is sent.
class CurlSession final : public URLSession {
 public:
  explicit CurlSession(CurlOptions options = {});

  /// Every request under way ends with `cancelled`; returns when the last caller has left.
  ~CurlSession() override;

  URLResponse data(const URLRequest& request, std::optional<std::chrono::nanoseconds> deadline,
                   std::stop_token stop) override;

 private:
  /// Counts the callers inside `data`.
  class Visit;

  const CurlOptions options_;
  std::unique_ptr<CurlLoop> loop_;
  std::mutex mutex_;
  std::condition_variable left_;
  std::size_t visitors_ = 0;
};

}  // namespace tq
