#include "TQPlatform/Network/CurlSession.hpp"

#include <algorithm>

#include "TQPlatform/Network/CurlFailure.hpp"
#include "TQPlatform/Network/CurlLoop.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

using std::chrono::nanoseconds;
using std::chrono::steady_clock;

constexpr int mostRedirects = 10;

/// When a limit that begins now ends. One beyond what the clock can tell is none.
std::optional<steady_clock::time_point> endOf(std::optional<nanoseconds> limit) {
  const auto now = steady_clock::now();
  if (!limit || *limit > steady_clock::time_point::max() - now) return std::nullopt;
  return now + *limit;
}

void throwIfOver(const HTTPAddress& address, std::optional<steady_clock::time_point> end, const std::stop_token& stop) {
  if (stop.stop_requested()) throw failure(URLError::Code::cancelled, address);
  if (end && steady_clock::now() >= *end) throw failure(URLError::Code::timedOut, address);
}

void dropBody(URLRequest& request) {
  request.method = "GET";
  request.body.reset();
  std::erase_if(request.headers,
                [](const HTTPHeader& header) { return lowercased(header.name).starts_with("content-"); });
}

/// What the answer `status` asks to send to another address: false when it is no redirect, or one for people to choose.
/// RFC 9110, section 15.4: 307 and 308 repeat the request; after the others a GET asks for the result.
bool prepareRedirect(int status, URLRequest& request) {
  switch (status) {
    case 301:
    case 302:
      if (request.method == "POST") dropBody(request);
      return true;
    case 303:
      if (request.method != "HEAD") dropBody(request);
      return true;
    case 307:
    case 308: return true;
    default: return false;
  }
}

}  // namespace

class CurlSession::Visit {
 public:
  explicit Visit(CurlSession& session) : session_(session) {
    std::lock_guard lock(session_.mutex_);
    ++session_.visitors_;
  }
  ~Visit() {
    std::lock_guard lock(session_.mutex_);
    if (--session_.visitors_ == 0) session_.left_.notify_all();
  }
  Visit(const Visit&) = delete;
  Visit& operator=(const Visit&) = delete;

 private:
  CurlSession& session_;
};

CurlSession::CurlSession(CurlOptions options) : options_(std::move(options)), loop_(std::make_unique<CurlLoop>()) {}

CurlSession::~CurlSession() {
  loop_->stop();
  std::unique_lock lock(mutex_);
  left_.wait(lock, [this] { return visitors_ == 0; });
}

URLResponse CurlSession::data(const URLRequest& request, std::optional<nanoseconds> deadline, std::stop_token stop) {
  const Visit visit(*this);
  const auto end = endOf(deadline);
  URLRequest current = request;
  HTTPAddress address(request.url);
  for (int redirects = 0;; ++redirects) {
    const auto transfer = std::make_shared<CurlTransfer>(current, address, options_);
    throwIfOver(address, end, stop);
    loop_->start(transfer);
    try {
      transfer->wait(end, stop);
    } catch (...) {
      loop_->abandon(transfer);
      throw;
    }
    transfer->throwIfFailed();

    const int status = transfer->status();
    const auto next = transfer->redirect();
    if (redirects == mostRedirects || !next || !prepareRedirect(status, current))
      return {.statusCode = status, .body = transfer->takeBody()};
    address = *next;
  }
}

}  // namespace tq
