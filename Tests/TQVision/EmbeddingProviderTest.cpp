#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

#include "EmbeddingFixture.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"

namespace tq {
namespace {

using namespace std::chrono_literals;
using test::batchOfOne;
using test::decodeFailure;
using test::EmbeddingFixture;
using test::errorText;
using test::FakeURLSession;
using test::oneVector;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

using Backend = EmbeddingProvider::Backend;
using Code = URLError::Code;
using Texts = std::vector<std::string>;
using EmbeddingProviderTest = EmbeddingFixture;

/// Both backends, which differ in their answers only.
struct BackendCase {
  std::string name;
  Backend backend;
  std::string answer;  ///< with the vector 1, 2
};

class EveryBackend : public EmbeddingProviderTest, public testing::WithParamInterface<BackendCase> {
 protected:
  EmbeddingProvider provider() const { return EmbeddingProviderTest::provider(GetParam().backend); }
  EmbeddingVector embedOne() const { return provider().embed(std::string("text"), stop.get_token()); }
  std::string failure() const {
    return errorText([this] { embedOne(); });
  }
};

INSTANTIATE_TEST_SUITE_P(Backends, EveryBackend,
                         testing::Values(BackendCase{"Ollama", Backend::ollama, oneVector},
                                         BackendCase{"OpenAICompatible", Backend::openAICompatible, batchOfOne}),
                         [](const auto& each) { return each.param.name; });

// What both have in common.

TEST(EmbeddingProvider, Defaults) {
  EXPECT_EQ(EmbeddingProvider::defaultOllamaBaseURL().absoluteString(), "http://localhost:11434");
  EXPECT_STREQ(EmbeddingProvider::defaultModel, "nomic-embed-text");
  EXPECT_EQ(EmbeddingProvider::defaultTimeoutSeconds, 60.0);
}

TEST_P(EveryBackend, NoTextsMakeNoRequest) {
  EXPECT_THAT(provider().embed(Texts{}, {}), IsEmpty());
  EXPECT_THAT(fake->calls(), IsEmpty());
}

TEST_P(EveryBackend, OneTextGivesItsVector) {
  fake->answer(200, GetParam().answer);
  EXPECT_THAT(embedOne(), ElementsAre(1.0F, 2.0F));
}

TEST_P(EveryBackend, PostsJSONWithTheKeyAndTheTimeLimit) {
  fake->answer(200, GetParam().answer);
  embedOne();
  const FakeURLSession::Call call = fake->calls().front();
  EXPECT_EQ(call.request.method, "POST");
  EXPECT_EQ(FakeURLSession::header(call.request, "content-type"), "application/json");
  EXPECT_EQ(FakeURLSession::header(call.request, "authorization"), "Bearer sk-secret");
  EXPECT_EQ(call.request.timeoutInterval, 60.0);
  EXPECT_EQ(call.deadline, 60s);
}

TEST_P(EveryBackend, WithoutAKeyThereIsNoAuthorization) {
  apiKey.clear();
  fake->answer(200, GetParam().answer);
  embedOne();
  EXPECT_EQ(FakeURLSession::header(fake->calls().front().request, "authorization"), std::nullopt);
}

TEST_P(EveryBackend, TextsOfEveryKindReachTheServerUnchanged) {
  const std::string text = "line\n\"quoted\" \\ é 😀 \x01";
  fake->answer(200, GetParam().answer);
  provider().embed(text, {});
  const JSONValue body = parseJSON(requestBodies().front());
  const JSONValue* input = body.find(GetParam().backend == Backend::ollama ? "prompt" : "input");
  ASSERT_TRUE(input);
  EXPECT_EQ(*(input->asArray() ? input->asArray()->front() : *input).asString(), text);
}

TEST_P(EveryBackend, ATextThatIsNotUTF8IsRefusedBeforeAnythingIsSent) {
  EXPECT_THROW(provider().embed(std::string("\xff"), {}), JSONError);
  EXPECT_THAT(fake->calls(), IsEmpty());
}

TEST_P(EveryBackend, BusyServersAreAskedAgainAfterABackOff) {
  fake->answer(503).answer(429).answer(200, GetParam().answer);
  EXPECT_THAT(embedOne(), SizeIs(2));
  EXPECT_THAT(clock->sleeps(), ElementsAre(800ms, 1600ms));
}

TEST_P(EveryBackend, TheThirdAttemptIsTheLast) {
  fake->answer(500).answer(500).answer(500, "broken");
  EXPECT_EQ(failure(), "Vision provider returned HTTP 500: broken");
  EXPECT_THAT(fake->calls(), SizeIs(3));
}

TEST_P(EveryBackend, AServerThatNeverAnswersIsAskedOnce) {
  fake->neverAnswer();
  EXPECT_THAT(failure(), testing::StartsWith("Network error talking to vision provider: "));
  EXPECT_THAT(fake->calls(), SizeIs(1));
}

TEST_P(EveryBackend, ALostConnectionIsTriedThreeTimesAndToldInTheSessionsWords) {
  for (int attempt = 0; attempt < 3; ++attempt)
    fake->fail(Code::cannotConnectToHost, "Nobody is there.");
  EXPECT_EQ(failure(), "Network error talking to vision provider: Nobody is there.");
}

TEST_P(EveryBackend, ARejectedRequestIsToldWithItsBodyAsItIs) {
  fake->answer(400, "unsupported model");
  EXPECT_EQ(failure(), "Vision provider returned HTTP 400: unsupported model");
}

TEST_P(EveryBackend, NoErrorQuotesTheKey) {
  fake->answer(401, "Incorrect API key provided: sk-secret, not sk-secret.");
  EXPECT_EQ(failure(), "Vision provider returned HTTP 401: Incorrect API key provided: [API key], not [API key].");
  apiKey = " sk-secret\n";
  fake->answer(403, "{\"key\":\"sk-secret\"}");
  EXPECT_THAT(failure(), Not(HasSubstr("sk-secret")));
  std::vector<std::string> texts;
  for (const auto code : {Code::timedOut, Code::cancelled, Code::userAuthenticationRequired}) {
    fake->fail(code);
    texts.push_back(failure());
  }
  for (const char* answer : {"{\"sk-secret\":1}", "[\"sk-secret\"]"}) {
    fake->answer(200, answer);
    texts.push_back(failure());
  }
  fake->answer(200, "sk-secret");
  texts.push_back(errorText<JSONError>([this] { embedOne(); }));
  EXPECT_THAT(texts, testing::Each(Not(HasSubstr("sk-secret"))));
}

TEST_P(EveryBackend, AnAnswerThatIsNoJSONKeepsTheReadersErrorAndIsNotAskedForAgain) {
  for (const char* answer : {"", "<html>", "{\"embedding\":", "{} {}", "{\"embedding\":[1e999]}"}) {
    const std::size_t before = fake->calls().size();
    fake->answer(200, answer);
    EXPECT_THROW(embedOne(), JSONError) << answer;
    EXPECT_EQ(fake->calls().size(), before + 1);
  }
}

TEST_P(EveryBackend, AnAnswerMustBeAnObject) {
  for (const char* answer : {"[]", "null", "3", "\"text\"", "[{\"embedding\":[1]}]"}) {
    fake->answer(200, answer);
    EXPECT_EQ(decodeFailure([this] { embedOne(); }), "embeddings response not a JSON object") << answer;
  }
}

TEST_P(EveryBackend, OneProviderServesSeveralThreads) {
  constexpr int count = 8;
  for (int index = 0; index < count; ++index)
    fake->answer(200, GetParam().answer);
  const EmbeddingProvider shared = provider();
  std::vector<EmbeddingVector> vectors(count);
  {
    std::vector<std::jthread> threads;
    for (EmbeddingVector& vector : vectors)
      threads.emplace_back([&] { vector = shared.embed(std::string("text"), {}); });
  }
  EXPECT_THAT(vectors, testing::Each(ElementsAre(1.0F, 2.0F)));
}

// Ollama.

TEST_F(EmbeddingProviderTest, OllamaIsAskedForOneTextAfterTheOther) {
  fake->answer(200, R"({"embedding":[1]})").answer(200, R"({"embedding":[2]})").answer(200, R"({"embedding":[3,4]})");
  EXPECT_THAT(embed(ollama(), {"a", "b", "c"}),
              ElementsAre(ElementsAre(1.0F), ElementsAre(2.0F), ElementsAre(3.0F, 4.0F)));
  EXPECT_THAT(requestBodies(),
              ElementsAre(R"({"model":"the-model","prompt":"a"})", R"({"model":"the-model","prompt":"b"})",
                          R"({"model":"the-model","prompt":"c"})"));
}

TEST_F(EmbeddingProviderTest, OllamaFailingHalfWayEndsTheCall) {
  fake->answer(200, oneVector).answer(404, "no such model");
  EXPECT_EQ(errorText([this] {
              embed(ollama(), {"a", "b", "c"});
            }),
            "Vision provider returned HTTP 404: no such model");
  EXPECT_THAT(fake->calls(), SizeIs(2));
}

TEST_F(EmbeddingProviderTest, AnUnusableAnswerHalfWayEndsTheCallAsWell) {
  fake->answer(200, oneVector).answer(200, "{}");
  EXPECT_EQ(decodeFailure([this] { embed(ollama(), {"a", "b", "c"}); }), "embeddings response missing 'embedding'");
  EXPECT_THAT(fake->calls(), SizeIs(2));
}

TEST_F(EmbeddingProviderTest, OllamaMustGiveAListUnderEmbedding) {
  for (const char* answer : {"{}", R"({"embedding":null})", R"({"embedding":"1,2"})", R"({"embedding":{"0":1}})",
                             R"({"embedding":1})", R"({"embeddings":[1]})", R"({"Embedding":[1]})"}) {
    fake->answer(200, answer);
    EXPECT_EQ(decodeFailure([this] { embed(ollama(), {"a"}); }), "embeddings response missing 'embedding'") << answer;
  }
}

TEST_F(EmbeddingProviderTest, AnEmptyVectorOfOllamaIsGivenBackAsItIs) {
  EXPECT_THAT(vectorIn(R"({"embedding":[]})"), IsEmpty());
  fake->answer(200, R"({"embedding":[]})");
  EXPECT_THAT(embed(ollama(), {"a"}), ElementsAre(IsEmpty()));
}

TEST_F(EmbeddingProviderTest, OllamasPathFollowsThatOfTheBase) {
  for (const auto& [base, url] : std::vector<std::pair<std::string, std::string>>{
           {"http://localhost:11434", "http://localhost:11434/api/embeddings"},
           {"http://localhost:11434/", "http://localhost:11434/api/embeddings"},
           {"https://host/ollama", "https://host/ollama/api/embeddings"},
           {"https://host/v1", "https://host/v1/api/embeddings"}}) {
    baseURL = base;
    EXPECT_EQ(urlAsked(ollama(), oneVector), url);
  }
}

// The numbers of a vector.

TEST_F(EmbeddingProviderTest, NumbersAreNarrowedTo32Bits) {
  EXPECT_THAT(vectorIn(R"({"embedding":[0.1,-2,3e0,0.30000000000000004,123456789012345678901234567890]})"),
              ElementsAre(0.1F, -2.0F, 3.0F, static_cast<float>(0.30000000000000004), 1.2345679e29F));
}

TEST_F(EmbeddingProviderTest, WhatIsNoNumberIsZeroInItsPlace) {
  EXPECT_THAT(vectorIn(R"({"embedding":[1,null,"2",true,false,[3],{"a":4},5]})"),
              ElementsAre(1.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 5.0F));
}

TEST_F(EmbeddingProviderTest, NumbersBeyond32BitsAreInfiniteAndTheSmallestZero) {
  constexpr float infinity = std::numeric_limits<float>::infinity();
  EXPECT_THAT(vectorIn(R"({"embedding":[1e39,-1e300,1e-300]})"), ElementsAre(infinity, -infinity, 0.0F));
}

// OpenAI-compatible servers.

TEST_F(EmbeddingProviderTest, AnOpenAIServerIsAskedForAllTextsAtOnce) {
  const std::string answer = R"({"data":[{"index":0,"embedding":[1]},{"index":1,"embedding":[2]}],"model":"m"})";
  EXPECT_THAT(batch(answer, 2), ElementsAre(ElementsAre(1.0F), ElementsAre(2.0F)));
  EXPECT_THAT(requestBodies(), ElementsAre(R"({"input":["text","text"],"model":"the-model"})"));
}

TEST_F(EmbeddingProviderTest, OneTextIsABatchAsWell) {
  fake->answer(200, batchOfOne);
  openAI().embed(std::string("text"), {});
  EXPECT_THAT(requestBodies(), ElementsAre(R"({"input":["text"],"model":"the-model"})"));
}

TEST_F(EmbeddingProviderTest, VectorsAreGivenInTheOrderOfTheirIndex) {
  EXPECT_THAT(batch(R"({"data":[{"index":1,"embedding":[1]},{"index":0,"embedding":[0]}]})", 2),
              ElementsAre(ElementsAre(0.0F), ElementsAre(1.0F)));
  EXPECT_THAT(
      batch(R"({"data":[{"index":2,"embedding":[2]},{"index":0,"embedding":[0]},{"index":1.0,"embedding":[1]}]})", 3),
      ElementsAre(ElementsAre(0.0F), ElementsAre(1.0F), ElementsAre(2.0F)));
}

TEST_F(EmbeddingProviderTest, AnElementWithoutAnIntegerIndexStandsWhereItIs) {
  for (const char* index : {"", R"("index":null,)", R"("index":"0",)", R"("index":0.5,)", R"("index":true,)",
                            R"("index":false,)", R"("index":1e300,)", R"("index":[0],)", R"("Index":0,)"}) {
    const std::string last = std::string("{") + index + R"("embedding":[2]})";
    const std::string answer = R"({"data":[{"index":1,"embedding":[1]},{"index":0,"embedding":[0]},)" + last + "]}";
    EXPECT_THAT(batch(answer, 3), ElementsAre(ElementsAre(0.0F), ElementsAre(1.0F), ElementsAre(2.0F))) << index;
  }
}

TEST_F(EmbeddingProviderTest, EqualIndicesKeepTheOrderOfTheAnswer) {
  EXPECT_THAT(
      batch(R"({"data":[{"index":5,"embedding":[1]},{"index":5,"embedding":[2]},{"index":-1,"embedding":[3]}]})", 3),
      ElementsAre(ElementsAre(3.0F), ElementsAre(1.0F), ElementsAre(2.0F)));
}

TEST_F(EmbeddingProviderTest, IndicesMayBeAnyIntegers) {
  EXPECT_THAT(batch(R"({"data":[{"index":9223372036854775807,"embedding":[1]},{"index":-9223372036854775808,)"
                    R"("embedding":[0]}]})",
                    2),
              ElementsAre(ElementsAre(0.0F), ElementsAre(1.0F)));
}

TEST_F(EmbeddingProviderTest, DataMustBeAListOfObjects) {
  for (const char* answer : {"{}", R"({"data":null})", R"({"data":{}})", R"({"data":"x"})", R"({"data":[[1]]})",
                             R"({"data":[{"embedding":[1]},null]})", R"({"data":[1]})", R"({"Data":[]})"})
    EXPECT_EQ(decodeFailure([&] { batch(answer, 1); }), "embeddings response missing 'data'") << answer;
}

TEST_F(EmbeddingProviderTest, EveryElementMustHaveAListUnderEmbedding) {
  for (const char* element : {"{}", R"({"embedding":null})", R"({"embedding":"AAAA"})", R"({"embedding":{}})"})
    EXPECT_EQ(decodeFailure([&] { batch(R"({"data":[{"embedding":[1]},)" + std::string(element) + "]}", 2); }),
              "embeddings response element missing 'embedding'")
        << element;
}

TEST_F(EmbeddingProviderTest, AnotherNumberOfVectorsIsRefused) {
  EXPECT_EQ(decodeFailure([&] { batch(R"({"data":[{"embedding":[1]},{"embedding":[2]}]})", 3); }),
            "expected 3 embeddings, got 2");
  EXPECT_EQ(decodeFailure([&] { batch(R"({"data":[{"embedding":[1]},{"embedding":[2]}]})", 1); }),
            "expected 1 embeddings, got 2");
  EXPECT_EQ(decodeFailure([&] { batch(R"({"data":[]})", 1); }), "expected 1 embeddings, got 0");
}

TEST_F(EmbeddingProviderTest, AMissingEmbeddingIsToldBeforeTheNumberOfVectors) {
  EXPECT_EQ(decodeFailure([&] { batch(R"({"data":[{}]})", 3); }), "embeddings response element missing 'embedding'");
}

TEST_F(EmbeddingProviderTest, VectorsMayDifferInLengthAndHoldWhatIsNoNumber) {
  EXPECT_THAT(batch(R"({"data":[{"embedding":[]},{"embedding":[1,null,true]}]})", 2),
              ElementsAre(IsEmpty(), ElementsAre(1.0F, 0.0F, 0.0F)));
}

TEST_F(EmbeddingProviderTest, TheVersionStandsOnceInTheAddress) {
  for (const auto& [base, url] : std::vector<std::pair<std::string, std::string>>{
           {"https://api.example.com", "https://api.example.com/v1/embeddings"},
           {"https://api.example.com/", "https://api.example.com/v1/embeddings"},
           {"https://api.example.com/v1", "https://api.example.com/v1/embeddings"},
           {"https://api.example.com/v1/", "https://api.example.com/v1/embeddings"},
           {"https://api.example.com/v2", "https://api.example.com/v2/v1/embeddings"},
           {"https://api.example.com/v1/x", "https://api.example.com/v1/x/v1/embeddings"}}) {
    baseURL = base;
    EXPECT_EQ(urlAsked(openAI(), batchOfOne), url);
  }
}

// Cancelling.

TEST_F(EmbeddingProviderTest, ACancelBetweenTwoTextsEndsTheBatch) {
  fake->then([this](const auto&, std::stop_token) {
    stop.request_stop();
    const std::string_view body = oneVector;
    return URLResponse{.statusCode = 200, .body = {body.begin(), body.end()}};
  });
  EXPECT_THAT(errorText([this] {
                embed(ollama(), {"a", "b", "c"});
              }),
              testing::StartsWith("Network error talking to vision provider: "));
  EXPECT_LE(fake->calls().size(), 2u);
}

TEST_F(EmbeddingProviderTest, ACancelDuringABackOffIsACancel) {
  fake->then([this](const auto&, std::stop_token) {
    stop.request_stop();
    return URLResponse{.statusCode = 503, .body = {}};
  });
  EXPECT_THROW(embed(ollama(), {"a", "b"}), Cancelled);
}

}  // namespace
}  // namespace tq
