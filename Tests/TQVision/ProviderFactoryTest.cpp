#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/FakeURLSession.hpp"
#include "Support/ManualClock.hpp"
#include "TQCore/DefaultModels.hpp"
#include "TQCore/TQError.hpp"
#include "TQVision/MockProvider.hpp"
#include "TQVision/ProviderFactory.hpp"

namespace tq {
namespace {

WebURL url(std::string_view text) {
  return WebURL::parse(text).value();
}

const std::vector<std::string> localAddresses{"http://localhost:1234/v1", "http://LOCALHOST",
                                              "http://127.0.0.1:11434",   "http://[::1]:8080/",
                                              "http://studio.local",      "https://Mac.LOCAL/v1"};

const std::vector<std::string> remoteAddresses{"https://api.example.com/v1",
                                               "http://192.168.1.5:1234",
                                               "http://127.0.0.2",
                                               "http://localhost.example",
                                               "http://local",
                                               "http://[::2]",
                                               "http://localhost@evil.example",
                                               "http://",
                                               "api.example.com"};

TEST(HostLikelyRequiresAPIKey, IsFalseForThisMachineAndLocalNames) {
  for (const std::string& address : localAddresses)
    EXPECT_FALSE(ProviderFactory::hostLikelyRequiresAPIKey(url(address))) << address;
}

TEST(HostLikelyRequiresAPIKey, IsTrueForEveryOtherHostAndForNone) {
  for (const std::string& address : remoteAddresses)
    EXPECT_TRUE(ProviderFactory::hostLikelyRequiresAPIKey(url(address))) << address;
}

TEST(InsecureBaseURLWarning, NamesTheAddressAndItsHost) {
  EXPECT_EQ(ProviderFactory::insecureBaseURLWarning(url("http://llm.example:1234/v1")),
            "http://llm.example:1234/v1 is not HTTPS — your API key would be sent in cleartext to llm.example and is "
            "visible to anyone on the network path. Use https:// unless this is a trusted local/LAN server.");
}

TEST(InsecureBaseURLWarning, KeepsTheAddressAsWrittenAndNamesTheHostInLowerCase) {
  EXPECT_THAT(ProviderFactory::insecureBaseURLWarning(url("HTTP://LLM.Example/V1")).value(),
              testing::StartsWith("HTTP://LLM.Example/V1 is not HTTPS — your API key would be sent in cleartext to "
                                  "llm.example and is "));
}

TEST(InsecureBaseURLWarning, NamesAMissingHostInWords) {
  EXPECT_THAT(ProviderFactory::insecureBaseURLWarning(url("http:///v1")).value(),
              testing::HasSubstr(" in cleartext to the configured host and is visible "));
}

TEST(InsecureBaseURLWarning, AnySchemeButHTTPSIsInsecure) {
  EXPECT_TRUE(ProviderFactory::insecureBaseURLWarning(url("HTTP://llm.example")));
  EXPECT_TRUE(ProviderFactory::insecureBaseURLWarning(url("ftp://llm.example")));
}

TEST(InsecureBaseURLWarning, IsAbsentForHTTPSInAnyCase) {
  EXPECT_FALSE(ProviderFactory::insecureBaseURLWarning(url("https://llm.example")));
  EXPECT_FALSE(ProviderFactory::insecureBaseURLWarning(url("HTTPS://llm.example")));
}

TEST(InsecureBaseURLWarning, IsAbsentWithoutAScheme) {
  EXPECT_FALSE(ProviderFactory::insecureBaseURLWarning(url("llm.example/v1")));
}

TEST(InsecureBaseURLWarning, IsAbsentForThisMachineAndLocalNames) {
  for (const std::string& address : localAddresses)
    EXPECT_FALSE(ProviderFactory::insecureBaseURLWarning(url(address))) << address;
}

/// Makers that note what they were given.
class ProviderFactoryTest : public testing::Test {
 protected:
  VisionProviderMaker noting(std::vector<HTTPProviderConfig>& configs) {
    return [&configs](HTTPProviderConfig config) {
      configs.push_back(config);
      return std::make_unique<MockProvider>(config.providerId, config.modelId);
    };
  }

  std::vector<HTTPProviderConfig> anthropic_;
  std::vector<HTTPProviderConfig> openAI_;
  ProviderFactory factory_{{.anthropic = noting(anthropic_), .openAI = noting(openAI_)}};
};

TEST_F(ProviderFactoryTest, PassesTheConfigurationToTheMakerOfTheShape) {
  const auto provider = factory_.makeAnthropic("key", "model", url("https://api.example.com/v1"), 90.5);
  EXPECT_EQ(provider->providerId(), "anthropic");
  EXPECT_EQ(provider->modelId(), "model");
  ASSERT_EQ(anthropic_.size(), 1u);
  EXPECT_EQ(anthropic_[0].apiKey, "key");
  EXPECT_EQ(anthropic_[0].baseURL, url("https://api.example.com/v1"));
  EXPECT_TRUE(anthropic_[0].extraHeaders.empty());
  EXPECT_EQ(anthropic_[0].timeoutSeconds, 90.5);
  EXPECT_TRUE(openAI_.empty());

  factory_.makeOpenAI("other key", "other model", url("https://api.example.com"), 60);
  ASSERT_EQ(openAI_.size(), 1u);
  EXPECT_EQ(openAI_[0].providerId, "openai");
  EXPECT_EQ(openAI_[0].modelId, "other model");
  EXPECT_EQ(openAI_[0].apiKey, "other key");
  EXPECT_EQ(anthropic_.size(), 1u);
}

TEST_F(ProviderFactoryTest, AnAbsentModelIsTheDefaultOfTheShape) {
  factory_.makeAnthropic("key", std::nullopt, url("https://api.example.com"), 60);
  factory_.makeOpenAI("key", std::nullopt, url("https://api.example.com"), 60);
  EXPECT_EQ(anthropic_.at(0).modelId, DefaultModels::anthropicVision);
  EXPECT_EQ(openAI_.at(0).modelId, "gpt-4o");
}

/// The error that `make` throws.
template <class Make>
TQError errorOf(const Make& make) {
  try {
    make();
  } catch (const TQError& error) {
    return error;
  }
  throw std::logic_error("nothing was thrown");
}

TEST_F(ProviderFactoryTest, WithoutAKeyNoProviderIsMadeForARemoteHost) {
  for (const std::string& address : remoteAddresses) {
    EXPECT_EQ(errorOf([&] { factory_.makeAnthropic("", "m", url(address), 60); }), TQError::apiKeyMissing("anthropic"));
    EXPECT_EQ(errorOf([&] { factory_.makeOpenAI("", "m", url(address), 60); }), TQError::apiKeyMissing("openai"));
  }
  EXPECT_TRUE(anthropic_.empty());
  EXPECT_TRUE(openAI_.empty());
}

TEST_F(ProviderFactoryTest, ALocalServerNeedsNoKey) {
  for (const std::string& address : localAddresses) {
    EXPECT_TRUE(factory_.makeAnthropic("", "m", url(address), 60));
    EXPECT_TRUE(factory_.makeOpenAI("", "m", url(address), 60));
  }
}

/// The factory as the product has it, on a scripted session.
class RealProviderFactory : public testing::Test {
 protected:
  /// The request that the provider sends.
  URLRequest requestOf(const VisionProvider& provider, const std::string& answer) {
    session_->answer(200, answer);
    EXPECT_EQ(provider.describe({}, {}).rawText, "good");
    return session_->calls().back().request;
  }

  std::shared_ptr<test::FakeURLSession> session_ = std::make_shared<test::FakeURLSession>();
  std::shared_ptr<test::ManualClock> clock_ = std::make_shared<test::ManualClock>();
  ProviderFactory factory_{session_, clock_};
  std::string anthropicAnswer_ = R"({"content":[{"type":"text","text":"good"}]})";
  std::string openAIAnswer_ = R"({"choices":[{"message":{"content":"good"}}]})";
};

TEST_F(RealProviderFactory, MakesAProviderOfTheMessagesShape) {
  const auto provider = factory_.makeAnthropic("sk-key", "model", url("https://api.example.com/v1"), 90.5);
  EXPECT_EQ(provider->providerId(), "anthropic");
  EXPECT_EQ(provider->modelId(), "model");
  const URLRequest request = requestOf(*provider, anthropicAnswer_);
  EXPECT_EQ(request.url.absoluteString(), "https://api.example.com/v1/messages");
  EXPECT_EQ(request.timeoutInterval, 90.5);
  EXPECT_EQ(request.headers,
            (std::vector<HTTPHeader>{
                {"content-type", "application/json"}, {"x-api-key", "sk-key"}, {"anthropic-version", "2023-06-01"}}));
}

TEST_F(RealProviderFactory, MakesAProviderOfTheChatCompletionsShapeThatAsksForJSON) {
  const auto provider = factory_.makeOpenAI("sk-key", "model", url("https://api.example.com"), 90.5);
  EXPECT_EQ(provider->providerId(), "openai");
  EXPECT_EQ(provider->modelId(), "model");
  const URLRequest request = requestOf(*provider, openAIAnswer_);
  EXPECT_EQ(request.url.absoluteString(), "https://api.example.com/v1/chat/completions");
  EXPECT_EQ(request.timeoutInterval, 90.5);
  EXPECT_EQ(request.headers,
            (std::vector<HTTPHeader>{{"content-type", "application/json"}, {"authorization", "Bearer sk-key"}}));
  EXPECT_THAT(*request.body, testing::HasSubstr(R"("response_format":{"type":"json_object"})"));
}

TEST_F(RealProviderFactory, ALocalServerWithoutAKeyGetsNoAuthentication) {
  const auto anthropic = factory_.makeAnthropic("", std::nullopt, url("http://localhost:8080"), 60);
  EXPECT_THAT(requestOf(*anthropic, anthropicAnswer_).headers,
              testing::Not(testing::Contains(testing::Field(&HTTPHeader::name, "x-api-key"))));
  const auto openAI = factory_.makeOpenAI("", std::nullopt, url("http://localhost:1234/v1"), 60);
  EXPECT_THAT(requestOf(*openAI, openAIAnswer_).headers,
              testing::Not(testing::Contains(testing::Field(&HTTPHeader::name, "authorization"))));
}

TEST_F(RealProviderFactory, AnotherHostWithoutAKeyIsNeverAsked) {
  EXPECT_EQ(errorOf([&] { factory_.makeAnthropic("", "m", url("https://api.example.com"), 60); }),
            TQError::apiKeyMissing("anthropic"));
  EXPECT_TRUE(session_->calls().empty());
}

TEST_F(RealProviderFactory, ItsProvidersWaitByItsClock) {
  session_->answer(503);
  requestOf(*factory_.makeOpenAI("sk-key", "model", url("https://api.example.com"), 60), openAIAnswer_);
  EXPECT_THAT(clock_->sleeps(), testing::ElementsAre(std::chrono::milliseconds(800)));
}

}  // namespace
}  // namespace tq
