#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "TQPlatform/Network/URLSession.hpp"

namespace tq::test {

/// A session without a network. It plays a script: each request takes the next line. A request beyond the script fails
/// the test, and a stop that was requested before a request cancels it as the real session does.
class FakeURLSession final : public URLSession {
 public:
  struct Call {
    URLRequest request;
    std::optional<std::chrono::nanoseconds> deadline;
  };
  using Line = std::function<URLResponse(const Call& call, std::stop_token stop)>;

  FakeURLSession& answer(int status, std::string_view body = "");
  FakeURLSession& answerWithoutHTTP(std::string_view body = "");
  FakeURLSession& fail(URLError::Code code, std::string description = "The network is down.");
  /// A server that accepts and never answers: the deadline passes at once; without one the request waits for a stop.
  FakeURLSession& neverAnswer();
  FakeURLSession& then(Line line);

  URLResponse data(const URLRequest& request, std::optional<std::chrono::nanoseconds> deadline,
                   std::stop_token stop) override;

  std::vector<Call> calls() const;

  /// The value of that header, whose name is compared exactly; absent when there is none.
  static std::optional<std::string> header(const URLRequest& request, std::string_view name);

 private:
  Line takeLine();

  mutable std::mutex mutex_;
  std::deque<Line> script_;
  std::vector<Call> calls_;
};

}  // namespace tq::test
