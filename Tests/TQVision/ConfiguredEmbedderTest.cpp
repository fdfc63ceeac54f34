#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/FakeURLSession.hpp"
#include "Support/ManualClock.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQPersistence/SecretAccounts.hpp"
#include "TQPlatform/JSON/JSON.hpp"
#include "TQVision/ConfiguredEmbedder.hpp"

namespace tq::test {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

class ConfiguredEmbedder : public testing::Test {
 protected:
  /// The one request that embedding a text comes to.
  URLRequest request() const {
    const auto embedder = configuredEmbedder(settings, secrets, session, std::make_shared<ManualClock>());
    EXPECT_THAT(embedder->embed("text", {}), ElementsAre(0.5f, 1.0f));
    EXPECT_THAT(session->calls(), SizeIs(1));
    return session->calls().front().request;
  }

  TemporaryFolder folder;
  AppSettings settings;
  SecretsStore secrets{folder / "secrets.json", std::make_shared<FileLockRegistry>()};
  std::shared_ptr<FakeURLSession> session = std::make_shared<FakeURLSession>();
};

constexpr const char* ollamaAnswer = R"({"embedding": [0.5, 1]})";
constexpr const char* openAIAnswer = R"({"data": [{"index": 0, "embedding": [0.5, 1]}]})";

TEST_F(ConfiguredEmbedder, IsALocalServerByDefault) {
  session->answer(200, ollamaAnswer);
  const URLRequest asked = request();
  EXPECT_EQ(asked.url.absoluteString(), "http://localhost:11434/api/embeddings");
  EXPECT_EQ(FakeURLSession::header(asked, "authorization"), std::nullopt);
  EXPECT_EQ(*parseJSON(*asked.body).find("model")->asString(), "nomic-embed-text");
  EXPECT_EQ(session->calls().front().deadline, std::chrono::seconds(60));
}

TEST_F(ConfiguredEmbedder, IsAHostedOneWithItsKey) {
  settings.embeddingProviderId = "openai";
  settings.embeddingBaseURL = "https://box.example/v1";
  settings.embeddingModel = "text-embedding-3-small";
  secrets.set("sk-1", SecretAccounts::embeddingAPIKey);
  session->answer(200, openAIAnswer);
  const URLRequest asked = request();
  EXPECT_EQ(asked.url.absoluteString(), "https://box.example/v1/embeddings");
  EXPECT_EQ(FakeURLSession::header(asked, "authorization"), "Bearer sk-1");
  EXPECT_EQ(*parseJSON(*asked.body).find("model")->asString(), "text-embedding-3-small");
}

TEST_F(ConfiguredEmbedder, AnUnknownProviderIsTheLocalOne) {
  settings.embeddingProviderId = "something-new";
  session->answer(200, ollamaAnswer);
  EXPECT_EQ(request().url.absoluteString(), "http://localhost:11434/api/embeddings");
}

TEST_F(ConfiguredEmbedder, AnAddressThatIsNoneBecomesTheLocalServer) {
  settings.embeddingBaseURL = "";
  session->answer(200, ollamaAnswer);
  EXPECT_EQ(request().url.absoluteString(), "http://localhost:11434/api/embeddings");
}

TEST_F(ConfiguredEmbedder, AKeyThatCannotBeReadCountsAsNone) {
  folder.write("secrets.json", "{");
  session->answer(200, ollamaAnswer);
  EXPECT_EQ(FakeURLSession::header(request(), "authorization"), std::nullopt);
}

}  // namespace
}  // namespace tq::test
