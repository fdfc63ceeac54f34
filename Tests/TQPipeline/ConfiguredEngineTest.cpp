#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"
#include "TQPersistence/SecretAccounts.hpp"
#include "TQPipeline/ConfiguredEngine.hpp"

namespace tq {
namespace {

class ConfiguredEngine : public testing::Test {
 protected:
  bool isReady() const { return isProviderReady(settings, secrets); }

  test::TemporaryFolder folder;
  AppSettings settings;
  SecretsStore secrets{folder / "secrets.json", std::make_shared<FileLockRegistry>()};
};

TEST_F(ConfiguredEngine, IsSaidInTheSettingsOwnWords) {
  settings.providerId = "openai";
  settings.modelId = "m";
  settings.promptProfile = PromptProfile::unrestricted;
  settings.sampling.strategy = SamplingStrategy::evenDistribution;
  EXPECT_EQ(currentEngineSnapshot(settings), (EngineSnapshot{.providerId = "openai",
                                                             .providerDisplay = "OpenAI-compatible",
                                                             .modelId = "m",
                                                             .promptProfile = "unrestricted",
                                                             .samplingStrategy = "even-distribution"}));
}

TEST_F(ConfiguredEngine, TheMockIsAlwaysReady) {
  settings.providerId = "mock";
  EXPECT_TRUE(isReady());
}

TEST_F(ConfiguredEngine, AHostedProviderNeedsItsOwnKey) {
  EXPECT_FALSE(isReady());
  secrets.set("key", SecretAccounts::openaiAPIKey);
  EXPECT_FALSE(isReady());
  secrets.set("key", SecretAccounts::anthropicAPIKey);
  EXPECT_TRUE(isReady());
  settings.providerId = "openai";
  EXPECT_TRUE(isReady());
  secrets.set("", SecretAccounts::openaiAPIKey);
  EXPECT_FALSE(isReady());
}

TEST_F(ConfiguredEngine, ALocalServerNeedsNoKey) {
  settings.providerId = "openai";
  settings.openaiBaseURL = "http://localhost:11434";
  EXPECT_TRUE(isReady());
  settings.openaiBaseURL = "http://studio.local/v1";
  EXPECT_TRUE(isReady());
  settings.providerId = "anthropic";
  EXPECT_FALSE(isReady()) << "the other provider's address does not count";
}

TEST_F(ConfiguredEngine, AnAddressThatIsNoneIsLeftToTheFirstJob) {
  settings.anthropicBaseURL = "";
  EXPECT_TRUE(isReady());
}

TEST_F(ConfiguredEngine, AnUnknownProviderCountsAsAnthropic) {
  settings.providerId = "acme";
  settings.openaiBaseURL = "http://localhost:1";
  EXPECT_FALSE(isReady());
  secrets.set("key", SecretAccounts::anthropicAPIKey);
  EXPECT_TRUE(isReady());
}

TEST_F(ConfiguredEngine, AKeyThatCannotBeReadIsNone) {
  folder.write("secrets.json", "not json");
  EXPECT_FALSE(isReady());
}

}  // namespace
}  // namespace tq
