#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>

#include "TQPlatform/Bytes.hpp"
#include "TQPlatform/Concurrency/Clock.hpp"
#include "TQPlatform/Network/URLSession.hpp"

namespace tq {

/// The one place where requests to services are repeated, bounded by a deadline, and where what went wrong becomes a
/// `TQError`. Immutable: one value may serve several threads at once.
class HTTPTransport {
 public:
  /// What every provider uses.
  static constexpr std::int64_t providerMaxAttempts = 3;
  static constexpr double providerBackoffBase = 0.8;

  /// The text of a failed answer's body as the error is to carry it.
  using Annotate = std::function<std::string(int status, std::string body)>;

  /// The text of a failure that is final without an answer.
  using DescribeTransportError = std::function<std::string(const URLError& error)>;

  /// `maxAttempts` counts the first try; less than 1 is a programming error and ends the program. `backoffBase` is the
  /// wait before the second attempt in seconds, and each further wait is twice the one before it.
  HTTPTransport(std::shared_ptr<URLSession> session, std::int64_t maxAttempts, double backoffBase,
                std::shared_ptr<const Clock> clock);

  /// The body of the 2xx answer. Each attempt may take `request.timeoutInterval` by the wall clock, but no longer than
  /// a day; an interval that is not above zero and finite is no limit.
  ///
  /// An answer of 429 or 5xx and a transport that failed are tried again after a back-off, up to the last attempt. A
  /// passed deadline, a cancelled request and refused authentication are final at once. Throws
  /// `TQError::providerHTTPError` with the annotated body, or "<binary>" where it is not UTF-8, and
  /// `TQError::providerTransport`. A stop during a request gives the latter, described as any cancelled request is; a
  /// stop during a back-off gives `Cancelled`. A back-off beyond what the clock can count (292 years) ends the program.
  Bytes send(const URLRequest& request, const Annotate& annotate, const DescribeTransportError& describeTransportError,
             std::stop_token stop) const;

  /// The same, with bodies as they came and failures in the session's own words.
  Bytes send(const URLRequest& request, std::stop_token stop) const;

  /// `seconds`, at most a day, rounded to nanoseconds; 0 for what is not above zero and finite.
  static std::uint64_t deadlineNanoseconds(double seconds);

 private:
  URLResponse dataRacingDeadline(const URLRequest& request, std::stop_token stop) const;
  void backOff(std::int64_t attempt, std::stop_token stop) const;

  std::shared_ptr<URLSession> session_;
  std::int64_t maxAttempts_;
  double backoffBase_;
  std::shared_ptr<const Clock> clock_;
};

}  // namespace tq
