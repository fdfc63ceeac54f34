#include <gtest/gtest.h>

#include "TQVision/AnthropicProvider.hpp"
#include "TQVision/OpenAIProvider.hpp"

namespace tq {
namespace {

std::string completionsURL(std::string_view base) {
  return OpenAIProvider::chatCompletionsURL(WebURL::parse(base).value()).absoluteString();
}

std::string messagesURL(std::string_view base) {
  return AnthropicProvider::messagesURL(WebURL::parse(base).value()).absoluteString();
}

TEST(VersionedURL, ABaseWithOrWithoutTheVersionLeadsToOnePath) {
  for (const char* base : {"http://host:1234/v1", "http://host:1234/v1/", "http://host:1234", "http://host:1234/"}) {
    EXPECT_EQ(completionsURL(base), "http://host:1234/v1/chat/completions") << base;
    EXPECT_EQ(messagesURL(base), "http://host:1234/v1/messages") << base;
  }
}

TEST(VersionedURL, AnotherPathIsKeptBeforeTheVersion) {
  EXPECT_EQ(completionsURL("http://host:1234/api"), "http://host:1234/api/v1/chat/completions");
  EXPECT_EQ(completionsURL("http://host:1234/api/"), "http://host:1234/api/v1/chat/completions");
  EXPECT_EQ(messagesURL("https://host/proxy/v1"), "https://host/proxy/v1/messages");
}

TEST(VersionedURL, OnlyAWholeSegmentInLowerCaseIsTheVersion) {
  EXPECT_EQ(messagesURL("http://host/apiv1"), "http://host/apiv1/v1/messages");
  EXPECT_EQ(messagesURL("http://host/V1"), "http://host/V1/v1/messages");
  EXPECT_EQ(messagesURL("http://host/v1beta"), "http://host/v1beta/v1/messages");
}

TEST(VersionedURL, AQueryStaysBehindThePath) {
  EXPECT_EQ(messagesURL("http://host/api?tenant=a"), "http://host/api/v1/messages?tenant=a");
}

TEST(VersionedURL, TheVendorsOwnBasesLeadToTheirEndpoints) {
  EXPECT_EQ(AnthropicProvider::messagesURL(AnthropicProvider::defaultBaseURL()).absoluteString(),
            "https://api.anthropic.com/v1/messages");
  EXPECT_EQ(OpenAIProvider::chatCompletionsURL(OpenAIProvider::openAIBaseURL()).absoluteString(),
            "https://api.openai.com/v1/chat/completions");
}

}  // namespace
}  // namespace tq
