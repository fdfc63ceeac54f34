#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "EmbeddingFixture.hpp"
#include "Support/ScriptedServer.hpp"
#include "TQPlatform/Network/CurlSession.hpp"

namespace tq::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using Texts = std::vector<std::string>;

class EmbeddingProviderOnTheNetwork : public EmbeddingFixture {
 protected:
  EmbeddingProviderOnTheNetwork() {
    session = std::make_shared<CurlSession>();
    baseURL = server.url("");
  }

  ScriptedServer server;
};

TEST_F(EmbeddingProviderOnTheNetwork, ABatchForOllamaGoesOverOneConnection) {
  for (const char* answer : {R"({"embedding":[1]})", R"({"embedding":[2]})", R"({"embedding":[3]})"})
    server.reply(ServerReply::answer(200, answer));
  EXPECT_THAT(embed(ollama(), {"a", "b", "c"}), ElementsAre(ElementsAre(1.0F), ElementsAre(2.0F), ElementsAre(3.0F)));
  ASSERT_THAT(server.requests(), SizeIs(3));
  EXPECT_EQ(server.connectionCount(), 1);
  EXPECT_EQ(server.requests()[1].methodAndTarget(), "POST /api/embeddings");
  EXPECT_EQ(server.requests()[1].header("authorization"), "Bearer sk-secret");
  EXPECT_EQ(server.requests()[1].body, R"({"model":"the-model","prompt":"b"})");
}

TEST_F(EmbeddingProviderOnTheNetwork, ALargeBatchArrivesWhole) {
  constexpr std::size_t count = 300;
  constexpr std::size_t length = 768;
  std::string answer = R"({"data":[)";
  for (std::size_t index = count; index-- > 0;) {
    answer += R"({"index":)" + std::to_string(index) + R"(,"embedding":[)" + std::to_string(index);
    for (std::size_t place = 1; place < length; ++place)
      answer += ",0.0123456789";
    answer += index > 0 ? "]}," : "]}]}";
  }
  server.reply(ServerReply::answer(200, answer));
  const std::vector<EmbeddingVector> vectors = embed(openAI(), Texts(count, std::string(2000, 'w')));
  ASSERT_THAT(vectors, SizeIs(count));
  for (std::size_t index = 0; index < count; ++index) {
    ASSERT_THAT(vectors[index], SizeIs(length));
    EXPECT_EQ(vectors[index].front(), static_cast<float>(index));
    EXPECT_EQ(vectors[index].back(), 0.0123456789F);
  }
  EXPECT_EQ(server.requests().front().methodAndTarget(), "POST /v1/embeddings");
}

TEST_F(EmbeddingProviderOnTheNetwork, VectorsOutOfOrderAndWithGapsArriveInTheOrderOfTheTexts) {
  server.reply(ServerReply::answer(
      200, R"({"data":[{"index":2,"embedding":[3,null]},{"index":0,"embedding":[null,1]},{"embedding":[]}]})"));
  EXPECT_THAT(embed(openAI(), {"a", "b", "c"}),
              ElementsAre(ElementsAre(0.0F, 1.0F), ElementsAre(3.0F, 0.0F), IsEmpty()))
      << "the element without an index stands third, behind the other of index 2";
}

TEST_F(EmbeddingProviderOnTheNetwork, AWrongNumberOfVectorsIsNotAskedForAgain) {
  for (const char* data :
       {"[]", R"([{"embedding":[1]}])", R"([{"embedding":[1]},{"embedding":[1]},{"embedding":[1]}])"})
    server.reply(ServerReply::answer(200, R"({"data":)" + std::string(data) + "}"));
  for (const char* count : {"0", "1", "3"})
    EXPECT_EQ(decodeFailure([this] {
                embed(openAI(), {"a", "b"});
              }),
              std::string("expected 2 embeddings, got ") + count);
  EXPECT_THAT(server.requests(), SizeIs(3));
}

TEST_F(EmbeddingProviderOnTheNetwork, AnAnswerThatEndsTooEarlyIsAFailureOfTheNetwork) {
  server.replyAlways(ServerReply().send("HTTP/1.1 200 OK\r\nContent-Length: 19\r\n\r\n{\"embedding\":[").close());
  EXPECT_THAT(errorText([this] { embed(ollama(), {"a"}); }),
              testing::StartsWith("Network error talking to vision provider: "));
}

TEST_F(EmbeddingProviderOnTheNetwork, ABusyServerIsAskedAgain) {
  server.reply(ServerReply::answer(503, "busy"));
  server.reply(ServerReply::answer(200, oneVector));
  EXPECT_THAT(embed(ollama(), {"a"}), SizeIs(1));
  EXPECT_THAT(clock->sleeps(), ElementsAre(800ms));
}

TEST_F(EmbeddingProviderOnTheNetwork, AServerThatFailsHalfWayEndsTheBatch) {
  server.reply(ServerReply::answer(200, oneVector));
  server.replyAlways(ServerReply().reset());
  EXPECT_THAT(errorText([this] {
                embed(ollama(), {"a", "b", "c"});
              }),
              testing::StartsWith("Network error talking to vision provider: "));
  EXPECT_THAT(clock->sleeps(), ElementsAre(800ms, 1600ms));
  EXPECT_EQ(server.requests().back().body, R"({"model":"the-model","prompt":"b"})");
}

TEST_F(EmbeddingProviderOnTheNetwork, ARedirectToAnotherHostIsNotFollowedWithTheKey) {
  ScriptedServer other;
  server.reply(ServerReply::answer(307, "", {"Location: " + other.url("/api/embeddings")}));
  EXPECT_THAT(errorText([this] { embed(ollama(), {"a"}); }), HasSubstr("HTTP 307"));
  EXPECT_EQ(other.connectionCount(), 0);
}

TEST_F(EmbeddingProviderOnTheNetwork, AServerThatStallsIsGivenUpAtTheTimeLimit) {
  timeoutSeconds = 0.05;
  server.reply(ServerReply().stall());
  EXPECT_THAT(errorText([this] { embed(ollama(), {"a"}); }),
              testing::StartsWith("Network error talking to vision provider: "));
  EXPECT_THAT(server.requests(), SizeIs(1));
}

TEST_F(EmbeddingProviderOnTheNetwork, ACancelDuringABatchEndsItAtOnce) {
  server.reply(ServerReply::answer(200, oneVector));
  server.reply(ServerReply().stall());
  std::string failure;
  std::jthread embedding([&] { failure = errorText([this] { embed(ollama(), {"a", "b", "c"}); }); });
  server.waitForStalls();
  stop.request_stop();
  embedding.join();
  EXPECT_THAT(failure, testing::StartsWith("Network error talking to vision provider: "));
  EXPECT_THAT(server.requests(), SizeIs(2));
}

}  // namespace
}  // namespace tq::test
