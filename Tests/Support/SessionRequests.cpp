#include "Support/SessionRequests.hpp"

#include <gtest/gtest.h>

namespace tq::test {

URLRequest getRequest(const std::string& url) {
  return URLRequest(WebURL::parse(url).value());
}

URLRequest postRequest(const std::string& url, std::string body) {
  URLRequest request = getRequest(url);
  request.method = "POST";
  request.body = std::make_shared<const std::string>(std::move(body));
  return request;
}

URLResponse send(URLSession& session, const URLRequest& request) {
  return session.data(request, plentyOfTime, {});
}

URLError failureOf(URLSession& session, const URLRequest& request) {
  try {
    const URLResponse response = send(session, request);
    ADD_FAILURE() << "answered with status " << response.statusCode.value_or(0);
  } catch (const URLError& error) {
    return error;
  }
  return {URLError::Code::unknown, "no failure"};
}

std::string bodyOf(const URLResponse& response) {
  return std::string(textOf(response.body));
}

}  // namespace tq::test
