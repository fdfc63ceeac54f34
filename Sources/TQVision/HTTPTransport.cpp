#include "TQVision/HTTPTransport.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <optional>

#include "TQCore/TQError.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

constexpr double nanosecondsPerSecond = 1e9;

bool isLimit(double seconds) {
  return std::isfinite(seconds) && seconds > 0;
}

bool isSuccess(int status) {
  return status >= 200 && status <= 299;
}

bool isWorthRepeating(int status) {
  return status == 429 || (status >= 500 && status <= 599);
}

/// A repeated attempt would end in the same way, or is not wanted any more.
bool isFinal(URLError::Code code) {
  using enum URLError::Code;
  constexpr std::array finals{timedOut, cancelled, userCancelledAuthentication, userAuthenticationRequired};
  return std::find(finals.begin(), finals.end(), code) != finals.end();
}

std::string bodyText(const Bytes& body) {
  const std::string_view text = textOf(body);
  return isValidUTF8(text) ? std::string(text) : "<binary>";
}

}  // namespace

HTTPTransport::HTTPTransport(std::shared_ptr<URLSession> session, std::int64_t maxAttempts, double backoffBase,
                             std::shared_ptr<const Clock> clock)
    : session_(std::move(session)), maxAttempts_(maxAttempts), backoffBase_(backoffBase), clock_(std::move(clock)) {
  if (maxAttempts_ < 1) std::abort();
}

Bytes HTTPTransport::send(const URLRequest& request, const Annotate& annotate,
                          const DescribeTransportError& describeTransportError, std::stop_token stop) const {
  std::string lastError = "unknown";
  for (std::int64_t attempt = 1; attempt <= maxAttempts_; ++attempt) {
    const bool mayRepeat = attempt < maxAttempts_;
    try {
      URLResponse response = dataRacingDeadline(request, stop);
      if (!response.statusCode) throw TQError::providerTransport("non-HTTP response");
      const int status = *response.statusCode;
      if (isWorthRepeating(status) && mayRepeat) {
        response = {};
        backOff(attempt, stop);
        continue;
      }
      if (isSuccess(status)) return std::move(response.body);
      throw TQError::providerHTTPError(status, annotate(status, bodyText(response.body)));
    } catch (const TQError&) {
      throw;
    } catch (const URLError& error) {
      if (isFinal(error.code())) throw TQError::providerTransport(describeTransportError(error));
      lastError = error.localizedDescription();
    } catch (const std::exception& error) {
      // A back-off that a stop has ended comes here too: the next one ends at once, with the `Cancelled` that leaves.
      lastError = userFacingDescription(error);
    }
    if (mayRepeat) backOff(attempt, stop);
  }
  throw TQError::providerTransport(lastError);
}

Bytes HTTPTransport::send(const URLRequest& request, std::stop_token stop) const {
  return send(
      request, [](int, std::string body) { return body; },
      [](const URLError& error) { return error.localizedDescription(); }, std::move(stop));
}

/// The request runs against its deadline inside the session, which enforces it and the stop in every phase. Both are
/// final, so that no attempt is still being given up when another one starts.
URLResponse HTTPTransport::dataRacingDeadline(const URLRequest& request, std::stop_token stop) const {
  std::optional<std::chrono::nanoseconds> deadline;
  if (isLimit(request.timeoutInterval)) deadline.emplace(deadlineNanoseconds(request.timeoutInterval));
  return session_->data(request, deadline, std::move(stop));
}

std::uint64_t HTTPTransport::deadlineNanoseconds(double seconds) {
  constexpr double longest = 24 * 60 * 60;
  if (!isLimit(seconds)) return 0;
  return static_cast<std::uint64_t>(std::round(std::min(seconds, longest) * nanosecondsPerSecond));
}

void HTTPTransport::backOff(std::int64_t attempt, std::stop_token stop) const {
  const double seconds = backoffBase_ * std::exp2(static_cast<double>(attempt - 1));
  if (!(seconds > 0)) return;
  const double nanoseconds = seconds * nanosecondsPerSecond;
  if (!(nanoseconds < 0x1p63)) std::abort();
  clock_->sleep(std::chrono::nanoseconds(static_cast<std::int64_t>(nanoseconds)), std::move(stop));
}

}  // namespace tq
