#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ProviderFixture.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq {
namespace {

using namespace std::chrono_literals;
using test::errorText;
using test::FakeURLSession;
using test::ProviderFixture;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Code = URLError::Code;

/// What both shapes do alike.
struct Shape {
  std::string name;
  std::unique_ptr<HTTPVisionProvider> (*make)(const ProviderFixture& fixture);
  std::string url;
  std::vector<HTTPHeader> headers;         ///< with a key
  std::vector<HTTPHeader> keylessHeaders;  ///< without one
  std::string keyHeader;
  std::string goodAnswer;
};

const Shape anthropicShape{
    .name = "Anthropic",
    .make = [](const ProviderFixture& fixture) -> std::unique_ptr<HTTPVisionProvider> {
      return std::make_unique<AnthropicProvider>(fixture.anthropic());
    },
    .url = "https://models.example.com/v1/messages",
    .headers = {{"content-type", "application/json"}, {"x-api-key", "sk-secret"}, {"anthropic-version", "2023-06-01"}},
    .keylessHeaders = {{"content-type", "application/json"}, {"anthropic-version", "2023-06-01"}},
    .keyHeader = "X-API-Key",
    .goodAnswer = R"({"content":[{"type":"text","text":"good"}]})"};

const Shape openAIShape{.name = "OpenAI",
                        .make = [](const ProviderFixture& fixture) -> std::unique_ptr<HTTPVisionProvider> {
                          return std::make_unique<OpenAIProvider>(fixture.openAI());
                        },
                        .url = "https://models.example.com/v1/chat/completions",
                        .headers = {{"content-type", "application/json"}, {"authorization", "Bearer sk-secret"}},
                        .keylessHeaders = {{"content-type", "application/json"}},
                        .keyHeader = "Authorization",
                        .goodAnswer = R"({"choices":[{"message":{"content":"good"}}]})"};

class HTTPVisionProviderTest : public testing::TestWithParam<Shape> {
 protected:
  std::unique_ptr<HTTPVisionProvider> provider() const { return GetParam().make(fixture_); }
  VisionResponse describe() const { return provider()->describe(ProviderFixture::request(), stop_.get_token()); }
  std::string failure() const {
    return errorText([this] { describe(); });
  }

  /// The one request that was sent.
  URLRequest sent() const {
    EXPECT_EQ(fixture_.session->calls().size(), 1u);
    return fixture_.session->calls().at(0).request;
  }

  ProviderFixture fixture_;
  FakeURLSession& session_ = *fixture_.session;
  std::stop_source stop_;
};

INSTANTIATE_TEST_SUITE_P(Shapes, HTTPVisionProviderTest, testing::Values(anthropicShape, openAIShape),
                         [](const auto& shape) { return shape.param.name; });

TEST_P(HTTPVisionProviderTest, TellsItsNames) {
  EXPECT_EQ(provider()->providerId(), "the-id");
  EXPECT_EQ(provider()->modelId(), "the-model");
}

TEST_P(HTTPVisionProviderTest, PostsItsBodyOnceAndGivesTheText) {
  session_.answer(200, GetParam().goodAnswer);
  EXPECT_EQ(describe(), (VisionResponse{.rawText = "good", .modelId = "the-model"}));
  EXPECT_EQ(sent().method, "POST");
  EXPECT_EQ(sent().url.absoluteString(), GetParam().url);
  EXPECT_EQ(sent().headers, GetParam().headers);
  ASSERT_TRUE(sent().body);
  EXPECT_EQ(*sent().body, provider()->buildBody(ProviderFixture::request()));
}

TEST_P(HTTPVisionProviderTest, TheTimeLimitIsTheConfiguredOne) {
  session_.answer(200, GetParam().goodAnswer);
  describe();
  EXPECT_EQ(sent().timeoutInterval, 90.9);
  EXPECT_EQ(session_.calls().at(0).deadline, 90'900ms);
}

TEST_P(HTTPVisionProviderTest, AnEmptyKeySendsNoAuthenticationAtAll) {
  fixture_.config.apiKey = "";
  session_.answer(200, GetParam().goodAnswer);
  describe();
  EXPECT_EQ(sent().headers, GetParam().keylessHeaders);
}

TEST_P(HTTPVisionProviderTest, ExtraHeadersAreAddedLast) {
  fixture_.config.extraHeaders = {{"X-Title", "Tarquel"}, {"openai-organization", "org"}};
  session_.answer(200, GetParam().goodAnswer);
  describe();
  std::vector<HTTPHeader> expected = GetParam().headers;
  expected.push_back({"X-Title", "Tarquel"});
  expected.push_back({"openai-organization", "org"});
  EXPECT_EQ(sent().headers, expected);
}

TEST_P(HTTPVisionProviderTest, AnExtraHeaderReplacesInAnyCase) {
  fixture_.config.extraHeaders = {{"Content-Type", "application/json; charset=utf-8"}, {GetParam().keyHeader, "mine"}};
  session_.answer(200, GetParam().goodAnswer);
  describe();
  EXPECT_EQ(sent().headers.size(), GetParam().headers.size());
  EXPECT_EQ(FakeURLSession::header(sent(), "Content-Type"), "application/json; charset=utf-8");
  EXPECT_EQ(FakeURLSession::header(sent(), GetParam().keyHeader), "mine");
  for (const HTTPHeader& header : sent().headers)
    EXPECT_THAT(header.value, Not(HasSubstr("sk-secret")));
}

TEST_P(HTTPVisionProviderTest, ABusyServiceIsAskedThreeTimes) {
  session_.answer(529, "overloaded").answer(503).answer(200, GetParam().goodAnswer);
  EXPECT_EQ(describe().rawText, "good");
  EXPECT_THAT(fixture_.clock->sleeps(), ElementsAre(800ms, 1600ms));
}

TEST_P(HTTPVisionProviderTest, ARejectedRequestGetsTheHintAboutVision) {
  session_.answer(400, R"({"error":{"type":"invalid_request_error"}})");
  try {
    describe();
    FAIL();
  } catch (const TQError& error) {
    const auto& http = std::get<TQError::ProviderHTTPError>(error.value());
    EXPECT_EQ(http.status, 400);
    EXPECT_THAT(http.body, testing::StartsWith(R"({"error":{"type":"invalid_request_error"}})"
                                               "\n\nHint: HTTP 400 "));
  }
}

TEST_P(HTTPVisionProviderTest, AnotherRejectionKeepsItsWords) {
  session_.answer(401, "invalid_request: bad key");
  EXPECT_EQ(failure(), "Vision provider returned HTTP 401: invalid_request: bad key");
}

TEST_P(HTTPVisionProviderTest, ATimeoutNamesTheLimitInWholeSecondsAndTheWayOut) {
  session_.neverAnswer();
  EXPECT_EQ(failure(),
            "Network error talking to vision provider: request timed out after 90s. If you are using a local LLM "
            "server, increase the timeout in Preferences → Output → Request timeout.");
  EXPECT_EQ(session_.calls().size(), 1u);
}

TEST_P(HTTPVisionProviderTest, ARefusedConnectionEndsInTheSessionsWords) {
  for (int attempt = 0; attempt < 3; ++attempt)
    session_.fail(Code::cannotConnectToHost, "Could not connect to the server.");
  EXPECT_EQ(failure(), "Network error talking to vision provider: Could not connect to the server.");
}

TEST_P(HTTPVisionProviderTest, ACancelDuringTheRequestIsACancelledRequest) {
  session_.then([&](const FakeURLSession::Call&, const std::stop_token& stop) -> URLResponse {
    stop_.request_stop();
    EXPECT_TRUE(stop.stop_requested());
    throw URLError(Code::cancelled, "The request was cancelled.");
  });
  EXPECT_EQ(failure(), "Network error talking to vision provider: request cancelled");
}

TEST_P(HTTPVisionProviderTest, ACancelDuringABackoffIsCancelled) {
  session_.then([&](const FakeURLSession::Call&, const std::stop_token&) {
    stop_.request_stop();
    return URLResponse{.statusCode = 429, .body = {}};
  });
  EXPECT_THROW(describe(), Cancelled);
}

TEST_P(HTTPVisionProviderTest, TransportFailuresAreDescribedByTheirCode) {
  const auto text = [&](Code code) { return provider()->describe(URLError(code, "The session's words.")); };
  EXPECT_EQ(text(Code::timedOut),
            "request timed out after 90s. If you are using a local LLM server, increase the timeout in Preferences → "
            "Output → Request timeout.");
  EXPECT_EQ(text(Code::cannotConnectToHost),
            "cannot connect to host. Is the server running at https://models.example.com/v1?");
  EXPECT_EQ(text(Code::cancelled), "request cancelled");
  for (const Code code : {Code::badURL, Code::cannotFindHost, Code::networkConnectionLost, Code::secureConnectionFailed,
                          Code::serverCertificateUntrusted, Code::badServerResponse, Code::userAuthenticationRequired,
                          Code::userCancelledAuthentication, Code::unknown})
    EXPECT_EQ(text(code), "The session's words.");
}

TEST_P(HTTPVisionProviderTest, AnyTimeLimitCanBeDescribed) {
  const auto text = [&](double seconds) {
    fixture_.config.timeoutSeconds = seconds;
    return provider()->describe(URLError(Code::timedOut, ""));
  };
  EXPECT_THAT(text(600), HasSubstr(" after 600s. "));
  EXPECT_THAT(text(0.9), HasSubstr(" after 0s. "));
  EXPECT_THAT(text(1e30), HasSubstr(" after 1000000000000000019884624838656s. "));
}

TEST_P(HTTPVisionProviderTest, ThePromptsMustBeUTF8) {
  VisionRequest request = ProviderFixture::request();
  request.systemPrompt = "caf\xe9";
  EXPECT_THROW(provider()->describe(request, {}), JSONError);
  request = ProviderFixture::request();
  request.userPrompt = "caf\xe9";
  EXPECT_THROW(provider()->describe(request, {}), JSONError);
  EXPECT_TRUE(session_.calls().empty());
}

TEST_P(HTTPVisionProviderTest, ATemperatureThatIsNoNumberCannotBeSent) {
  VisionRequest request = ProviderFixture::request();
  request.temperature = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THROW(provider()->describe(request, {}), JSONError);
}

TEST_P(HTTPVisionProviderTest, AnAnswerThatIsNoJSONKeepsTheReadersErrorAndIsNotAskedForAgain) {
  for (const char* body : {"", "<html>Bad gateway</html>", "{\"content\":", "{} {}", "{\"model\":\"caf\xe9\"}"}) {
    const std::size_t before = session_.calls().size();
    session_.answer(200, body);
    EXPECT_THROW(describe(), JSONError) << body;
    EXPECT_EQ(session_.calls().size(), before + 1);
  }
}

TEST_P(HTTPVisionProviderTest, AnAnswerMustBeAnObject) {
  for (const char* body : {"[]", "null", "3", "\"text\"", "[{\"content\":[]}]"})
    EXPECT_EQ(test::decodeFailure([&] { provider()->parseResponse(viewOf(body)); }), "response not JSON object");
}

TEST_P(HTTPVisionProviderTest, AnAnswerThatCannotBeUsedIsNotAskedForAgain) {
  session_.answer(200, "{}");
  EXPECT_THAT(failure(), testing::StartsWith("Could not parse model response: no "));
  EXPECT_EQ(session_.calls().size(), 1u);
}

/// The good answer with further members.
std::string withMembers(const Shape& shape, const std::string& members) {
  return shape.goodAnswer.substr(0, shape.goodAnswer.size() - 1) + "," + members + "}";
}

TEST_P(HTTPVisionProviderTest, TheAnswerNamesTheModel) {
  const auto modelOf = [&](const std::string& members) {
    return provider()->parseResponse(viewOf(withMembers(GetParam(), members))).modelId;
  };
  EXPECT_EQ(modelOf(R"("model":"answering-model-2026")"), "answering-model-2026");
  for (const char* other : {R"("model":null)", R"("model":7)", R"("model":["m"])", R"("Model":"m")"})
    EXPECT_EQ(modelOf(other), "the-model") << other;
}

TEST_P(HTTPVisionProviderTest, UsageOfAnotherKindIsAbsent) {
  for (const char* usage : {"null", "[]", "12", "\"much\"", "{}", R"({"total_tokens":5})"}) {
    const std::string answer = withMembers(GetParam(), std::string(R"("usage":)") + usage);
    const VisionResponse response = provider()->parseResponse(viewOf(answer));
    EXPECT_EQ(response.inputTokens, std::nullopt) << usage;
    EXPECT_EQ(response.outputTokens, std::nullopt) << usage;
  }
}

/// Every failure, by the session and by the service, with a key that is easy to find again.
TEST_P(HTTPVisionProviderTest, NoErrorTextHoldsTheKey) {
  fixture_.config.extraHeaders = {{"x-proxy-token", "sk-secret-too"}};
  std::vector<std::string> texts;
  for (int status : {400, 401, 403, 404, 302}) {
    session_.answer(status, "no");
    texts.push_back(failure());
  }
  for (const auto code : {Code::timedOut, Code::cancelled, Code::userAuthenticationRequired}) {
    session_.fail(code);
    texts.push_back(failure());
  }
  session_.fail(Code::badURL).fail(Code::badURL).fail(Code::badURL);
  texts.push_back(failure());
  session_.answer(200, "no JSON");
  texts.push_back(errorText<JSONError>([this] { describe(); }));
  session_.answer(200, "{}");
  texts.push_back(failure());
  texts.push_back(provider()->describe(URLError(Code::cannotConnectToHost, "")));
  EXPECT_THAT(texts, testing::Each(Not(HasSubstr("sk-secret"))));
}

TEST_P(HTTPVisionProviderTest, AKeyThatTheServiceQuotesIsReplacedWhereverItStands) {
  session_.answer(401, "sk-secret? No, sk-secretsk-secret is wrong: sk-secre, sk-secret");
  EXPECT_EQ(failure(),
            "Vision provider returned HTTP 401: [API key]? No, [API key][API key] is wrong: sk-secre, [API key]");
  session_.answer(400, "unsupported: sk-secret");
  EXPECT_THAT(failure(), HasSubstr("HTTP 400: unsupported: [API key]\n\nHint: "));
}

TEST_P(HTTPVisionProviderTest, AKeyIsFoundAsItIsSentWithoutTheBlanksAroundIt) {
  fixture_.config.apiKey = " sk-secret ";
  session_.answer(401, "bad key:sk-secret.");
  EXPECT_EQ(failure(), "Vision provider returned HTTP 401: bad key:[API key].");
}

TEST_P(HTTPVisionProviderTest, AWordThatALocalServerTakesForAKeyIsNoSecret) {
  for (const char* word : {"ollama", "", "       "}) {
    fixture_.config.apiKey = word;
    session_.answer(404, "ollama has no such model       ");
    EXPECT_EQ(failure(), "Vision provider returned HTTP 404: ollama has no such model       ");
  }
}

/// Millions of quotations are a matter of a moment, not of hours that no stop would end.
TEST_P(HTTPVisionProviderTest, AKeyThatIsQuotedWithoutEndTakesNoTime) {
  std::string body;
  for (int count = 0; count < 1'000'000; ++count)
    body += "sk-secret,";
  session_.answer(401, body);
  EXPECT_THAT(failure(), testing::StartsWith("Vision provider returned HTTP 401: [API key],[API key],"));
}

TEST(HTTPVisionProvider, AnUnusableAnswerThatQuotesTheKeyIsToldWithoutIt) {
  const ProviderFixture fixture;
  fixture.session->answer(200, R"({"choices":[{"message":{"refusal":"sk-secret is spent"}}]})");
  fixture.session->answer(200, R"({"choices":[{"message":{},"finish_reason":"sk-secret is spent"}]})");
  const auto failure = [&] {
    return test::decodeFailure([&] { fixture.openAI().describe(ProviderFixture::request(), {}); });
  };
  EXPECT_EQ(failure(), "model refused: [API key] is spent");
  EXPECT_EQ(failure(), "no usable output (null content, finish_reason=[API key] is spent)");
}

TEST_P(HTTPVisionProviderTest, OneProviderServesSeveralThreads) {
  constexpr int count = 8;
  for (int index = 0; index < count; ++index)
    session_.answer(200, GetParam().goodAnswer);
  const auto shared = provider();
  std::vector<std::string> texts(count);
  {
    std::vector<std::jthread> threads;
    for (std::string& text : texts)
      threads.emplace_back([&shared, &text] { text = shared->describe(ProviderFixture::request(), {}).rawText; });
  }
  EXPECT_THAT(texts, testing::Each("good"));
}

}  // namespace
}  // namespace tq
