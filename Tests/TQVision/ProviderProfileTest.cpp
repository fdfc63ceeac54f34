#include <gtest/gtest.h>

#include "TQCore/DefaultModels.hpp"
#include "TQPlatform/Network/WebURL.hpp"
#include "TQVision/ProviderProfile.hpp"
#include "TQVision/VisionDefaults.hpp"

namespace tq {
namespace {

TEST(ProviderProfile, ReadsItsProviderIds) {
  EXPECT_EQ(providerProfile("anthropic"), ProviderProfile::anthropic);
  EXPECT_EQ(providerProfile("openai"), ProviderProfile::openai);
  EXPECT_EQ(providerProfile("mock"), ProviderProfile::mock);
}

TEST(ProviderProfile, ListsItsCasesInOrder) {
  EXPECT_EQ(allCases<ProviderProfile>(),
            (std::array{ProviderProfile::anthropic, ProviderProfile::openai, ProviderProfile::mock}));
}

TEST(ProviderProfile, AnUnknownIdReadsAsAnthropic) {
  for (const std::string_view id : {"", "OpenAI", "ollama"})
    EXPECT_EQ(providerProfile(id), ProviderProfile::anthropic);
}

TEST(ProviderProfile, TellsItsDisplayName) {
  EXPECT_EQ(displayName(ProviderProfile::anthropic), "Anthropic-compatible");
  EXPECT_EQ(displayName(ProviderProfile::openai), "OpenAI-compatible");
  EXPECT_EQ(displayName(ProviderProfile::mock), "Mock (no API call)");
}

TEST(ProviderProfile, TellsItsDefaultModel) {
  EXPECT_EQ(defaultModelId(ProviderProfile::anthropic), DefaultModels::anthropicVision);
  EXPECT_EQ(defaultModelId(ProviderProfile::openai), "gpt-4o");
  EXPECT_EQ(defaultModelId(ProviderProfile::mock), "mock-v1");
}

TEST(ProviderProfile, OnlyTheMockHasNoKeyConsole) {
  EXPECT_FALSE(keyConsoleURL(ProviderProfile::mock));
  for (const ProviderProfile profile : {ProviderProfile::anthropic, ProviderProfile::openai}) {
    const auto url = WebURL::parse(keyConsoleURL(profile).value());
    ASSERT_TRUE(url);
    EXPECT_EQ(url->scheme(), "https");
  }
}

TEST(VisionDefaults, TheAddressesAreSecureAndHaveTheirPaths) {
  EXPECT_EQ(AnthropicDefaults::defaultBaseURL().absoluteString(), "https://api.anthropic.com/v1");
  EXPECT_EQ(OpenAIDefaults::openAIBaseURL().absoluteString(), "https://api.openai.com");
}

TEST(VisionDefaults, ARequestMayTakeTenMinutes) {
  EXPECT_EQ(AnthropicDefaults::defaultTimeoutSeconds, 600.0);
  EXPECT_EQ(OpenAIDefaults::defaultTimeoutSeconds, 600.0);
}

}  // namespace
}  // namespace tq
