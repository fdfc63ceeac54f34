#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TQPlatform/Network/URLSession.hpp"

namespace tq::test {
namespace {

using testing::ElementsAre;

URLRequest exampleRequest() {
  return URLRequest(*WebURL::parse("https://example.com/"));
}

TEST(URLRequest, GetsWithoutBodyAndLimitsToAMinuteByDefault) {
  const URLRequest request = exampleRequest();
  EXPECT_EQ(request.method, "GET");
  EXPECT_EQ(request.body, nullptr);
  EXPECT_EQ(request.timeoutInterval, 60.0);
  EXPECT_TRUE(request.headers.empty());
}

TEST(URLRequest, KeepsHeadersInTheOrderTheyWereSet) {
  URLRequest request = exampleRequest();
  request.setHeader("B", "1");
  request.setHeader("A", "2");
  EXPECT_THAT(request.headers, ElementsAre(HTTPHeader{"B", "1"}, HTTPHeader{"A", "2"}));
}

TEST(URLRequest, ReplacesAHeaderOfTheSameNameInWhateverCase) {
  URLRequest request = exampleRequest();
  request.setHeader("content-type", "text/plain");
  request.setHeader("Accept", "*/*");
  request.setHeader("Content-Type", "application/json");
  EXPECT_THAT(request.headers,
              ElementsAre(HTTPHeader{"Content-Type", "application/json"}, HTTPHeader{"Accept", "*/*"}));
}

TEST(URLRequest, DoesNotTakeALongerNameForTheSame) {
  URLRequest request = exampleRequest();
  request.setHeader("Accept-Language", "en");
  request.setHeader("Accept", "*/*");
  EXPECT_EQ(request.headers.size(), 2u);
}

TEST(URLError, SaysItsDescriptionAsAnException) {
  const URLError error(URLError::Code::timedOut, "The request timed out.");
  EXPECT_EQ(error.code(), URLError::Code::timedOut);
  EXPECT_STREQ(error.what(), "The request timed out.");
  EXPECT_EQ(error.localizedDescription(), "The request timed out.");
}

}  // namespace
}  // namespace tq::test
