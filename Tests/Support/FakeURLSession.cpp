#include "Support/FakeURLSession.hpp"

#include <condition_variable>
#include <gtest/gtest.h>
#include <stdexcept>
#include <utility>

namespace tq::test {
namespace {

URLError cancelledError() {
  return URLError(URLError::Code::cancelled, "The request was cancelled.");
}

URLResponse response(std::optional<int> status, std::string_view body) {
  return {.statusCode = status, .body = Bytes(body.begin(), body.end())};
}

}  // namespace

FakeURLSession& FakeURLSession::answer(int status, std::string_view body) {
  return then([=, text = std::string(body)](const Call&, const std::stop_token&) { return response(status, text); });
}

FakeURLSession& FakeURLSession::answerWithoutHTTP(std::string_view body) {
  return then([text = std::string(body)](const Call&, const std::stop_token&) { return response({}, text); });
}

FakeURLSession& FakeURLSession::fail(URLError::Code code, std::string description) {
  return then([error = URLError(code, std::move(description))](const Call&, const std::stop_token&) -> URLResponse {
    throw error;
  });
}

FakeURLSession& FakeURLSession::neverAnswer() {
  return then([](const Call& call, const std::stop_token& stop) -> URLResponse {
    if (call.deadline) throw URLError(URLError::Code::timedOut, "The request timed out.");
    std::mutex mutex;
    std::unique_lock lock(mutex);
    std::condition_variable_any never;
    never.wait(lock, stop, [] { return false; });
    throw cancelledError();
  });
}

FakeURLSession& FakeURLSession::then(Line line) {
  std::lock_guard lock(mutex_);
  script_.push_back(std::move(line));
  return *this;
}

URLResponse FakeURLSession::data(const URLRequest& request, std::optional<std::chrono::nanoseconds> deadline,
                                 std::stop_token stop) {
  const Call call{request, deadline};
  {
    std::lock_guard lock(mutex_);
    calls_.push_back(call);
  }
  if (stop.stop_requested()) throw cancelledError();
  return takeLine()(call, std::move(stop));
}

std::vector<FakeURLSession::Call> FakeURLSession::calls() const {
  std::lock_guard lock(mutex_);
  return calls_;
}

std::optional<std::string> FakeURLSession::header(const URLRequest& request, std::string_view name) {
  for (const HTTPHeader& header : request.headers)
    if (header.name == name) return header.value;
  return std::nullopt;
}

FakeURLSession::Line FakeURLSession::takeLine() {
  std::lock_guard lock(mutex_);
  if (script_.empty()) {
    ADD_FAILURE() << "a request came that the script does not have";
    throw std::logic_error("no line left");
  }
  Line line = std::move(script_.front());
  script_.pop_front();
  return line;
}

}  // namespace tq::test
