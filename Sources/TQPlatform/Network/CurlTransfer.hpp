#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>

#include "TQPlatform/Network/CurlOptions.hpp"
#include "TQPlatform/Network/HTTPAddress.hpp"
#include "TQPlatform/Network/URLSession.hpp"

struct curl_slist;

namespace tq {

/// One request and its one answer, redirects not followed. Shared by the caller, who prepares it, waits and reads the
/// answer, and the loop, which has it between `CurlLoop::start` and `finish`. A caller who gives up leaves it to the
/// loop and touches it no more.
class CurlTransfer {
 public:
  /// Keeps a share of the body. Throws `URLError` when the request cannot be sent as it stands.
  CurlTransfer(const URLRequest& request, HTTPAddress address, const CurlOptions& options);
  CurlTransfer(const CurlTransfer&) = delete;
  CurlTransfer& operator=(const CurlTransfer&) = delete;

  /// libcurl's easy handle.
  void* handle() const { return handle_.get(); }

  /// Called once, after libcurl has let go of the handle: its result code, or none when the session ends.
  void finish(std::optional<int> code);

  /// Blocks until `finish` was called. Throws `URLError` with `timedOut` or `cancelled` when the time or a stop request
  /// comes first.
  void wait(std::optional<std::chrono::steady_clock::time_point> end, const std::stop_token& stop);

  /// The three are for after `wait`. This one throws `URLError` when no whole answer came.
  void throwIfFailed() const;

  int status() const;

  /// Where this answer's `Location` leads on the same server, if it has one.
  std::optional<HTTPAddress> redirect() const;

  /// Gives the answer's body away.
  Bytes takeBody() { return std::move(body_); }

 private:
  struct Release {
    void operator()(void* handle) const;
    void operator()(curl_slist* list) const;
  };

  using List = std::unique_ptr<curl_slist, Release>;

  void configure(const CurlOptions& options);
  void configureRequest(const URLRequest& request);
  static void append(List& list, const std::string& line);

  static std::size_t receiveHeader(char* data, std::size_t size, std::size_t count, void* transfer);
  static std::size_t receiveBody(char* data, std::size_t size, std::size_t count, void* transfer);

  const HTTPAddress address_;
  const std::shared_ptr<const std::string> requestBody_;
  List headers_;
  List addresses_;
  Bytes body_;
  bool headComplete_ = false;

  std::mutex mutex_;
  std::condition_variable_any changed_;
  bool ended_ = false;
  std::optional<int> code_;

  std::unique_ptr<void, Release> handle_;  // released first: it points at the members above
};

}  // namespace tq
