#include <gtest/gtest.h>

#include "TQPersistence/EmbeddingChoice.hpp"

namespace tq {
namespace {

/// The address after a choice of `provider` where the settings have `before`.
std::string addressAfter(const std::string& provider, const std::string& before) {
  AppSettings settings;
  settings.embeddingBaseURL = before;
  chooseEmbeddingProvider(settings, provider);
  EXPECT_EQ(settings.embeddingProviderId, provider);
  return settings.embeddingBaseURL;
}

TEST(ChooseEmbeddingProvider, TheStandardAddressOfTheOtherBecomesThatOfThisOne) {
  EXPECT_EQ(addressAfter("openai", "http://localhost:11434"), "https://api.openai.com");
  EXPECT_EQ(addressAfter("openai", "http://localhost:11434/"), "https://api.openai.com");
  EXPECT_EQ(addressAfter("ollama", "https://api.openai.com"), "http://localhost:11434");
  EXPECT_EQ(addressAfter("ollama", "https://api.openai.com/v1"), "http://localhost:11434");
}

TEST(ChooseEmbeddingProvider, AnAddressOfTheUsersOwnStays) {
  for (const char* address : {"http://box:8000/v1", "", "http://localhost:1234", "http://127.0.0.1:11434"})
    for (const char* provider : {"openai", "ollama"})
      EXPECT_EQ(addressAfter(provider, address), address) << provider;
}

TEST(ChooseEmbeddingProvider, ItsOwnStandardAddressStays) {
  EXPECT_EQ(addressAfter("ollama", "http://localhost:11434"), "http://localhost:11434");
  EXPECT_EQ(addressAfter("openai", "https://api.openai.com/v1"), "https://api.openai.com/v1");
}

TEST(ChooseEmbeddingProvider, AllElseStays) {
  AppSettings settings, expected;
  settings.embeddingModel = expected.embeddingModel = "mine";
  chooseEmbeddingProvider(settings, "openai");
  expected.embeddingProviderId = "openai";
  expected.embeddingBaseURL = "https://api.openai.com";
  EXPECT_EQ(settings, expected);
}

}  // namespace
}  // namespace tq
