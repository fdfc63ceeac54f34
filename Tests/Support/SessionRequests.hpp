#pragma once

#include <string>

#include "TQPlatform/Network/URLSession.hpp"

namespace tq::test {

/// Long enough that only a test that hangs meets it.
inline constexpr std::chrono::nanoseconds plentyOfTime = std::chrono::minutes(1);

URLRequest getRequest(const std::string& url);
URLRequest postRequest(const std::string& url, std::string body);

/// The answer, within `plentyOfTime`.
URLResponse send(URLSession& session, const URLRequest& request);

/// The error of a request that has to fail; an answer fails the test.
URLError failureOf(URLSession& session, const URLRequest& request);

std::string bodyOf(const URLResponse& response);

}  // namespace tq::test
