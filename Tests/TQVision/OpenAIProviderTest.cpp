#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ProviderFixture.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq {
namespace {

using test::ProviderFixture;

const std::string noChoices = "no choices in response";

VisionResponse parse(std::string_view answer) {
  return ProviderFixture().openAI().parseResponse(viewOf(answer));
}

std::string failureOf(std::string_view answer) {
  return test::decodeFailure([&] { parse(answer); });
}

/// An answer whose first choice is that JSON.
std::string withChoice(const std::string& choice) {
  return R"({"choices":[)" + choice + "]}";
}

/// The text of an answer whose "content" is that JSON.
std::string textOfContent(const std::string& content) {
  return parse(withChoice(R"({"message":{"content":)" + content + "}}")).rawText;
}

std::string failureOfContent(const std::string& content) {
  return failureOf(withChoice(R"({"message":{"content":)" + content + "}}"));
}

TEST(OpenAIProvider, HasItsDefaults) {
  EXPECT_STREQ(OpenAIProvider::defaultModel, "gpt-4o");
  EXPECT_EQ(OpenAIProvider::defaultTimeoutSeconds, 600.0);
  EXPECT_EQ(OpenAIProvider::openAIBaseURL().absoluteString(), "https://api.openai.com");
}

// The body.

TEST(OpenAIBody, HoldsThePromptAndThenTheFramesInOrder) {
  EXPECT_EQ(parseJSON(ProviderFixture().openAI().buildBody(ProviderFixture::request())), parseJSON(R"({
    "model": "the-model",
    "max_tokens": 4096,
    "temperature": 0.2,
    "response_format": {"type": "json_object"},
    "messages": [
      {"role": "system", "content": "You look at frames."},
      {"role": "user", "content": [
        {"type": "text", "text": "Describe \"clip.mov\".\nAnswer in JSON."},
        {"type": "image_url", "image_url": {"url": "data:image/jpeg;base64,Zmlyc3Q="}},
        {"type": "image_url", "image_url": {"url": "data:image/jpeg;base64,c2Vjb25k"}}
      ]}
    ]
  })"));
}

TEST(OpenAIBody, WithoutFramesHoldsThePromptAlone) {
  VisionRequest unset = ProviderFixture::request();
  unset.frames = {};
  for (const VisionRequest& request : {ProviderFixture::request({}), unset}) {
    const JSONValue body = parseJSON(ProviderFixture().openAI().buildBody(request));
    const JSONValue& message = body.find("messages")->asArray()->at(1);
    EXPECT_EQ(*message.find("content"),
              parseJSON(R"([{"type": "text", "text": "Describe \"clip.mov\".\nAnswer in JSON."}])"));
  }
}

TEST(OpenAIBody, AsksForAJSONObjectOnlyWhenToldTo) {
  const JSONValue body = parseJSON(ProviderFixture().openAI(false).buildBody(ProviderFixture::request()));
  EXPECT_EQ(body.find("response_format"), nullptr);
  EXPECT_EQ(body.asObject()->size(), 4u);
}

TEST(OpenAIBody, IsCompactJSONInUTF8) {
  VisionRequest request = ProviderFixture::request({"a"});
  request.systemPrompt = "Ärger\t\x01/";
  request.userPrompt = "日本";
  EXPECT_EQ(ProviderFixture().openAI().buildBody(request),
            R"({"model":"the-model","max_tokens":4096,"temperature":0.2,"response_format":{"type":"json_object"},)"
            R"("messages":[{"role":"system","content":"Ärger\t\u0001/"},{"role":"user","content":[)"
            R"({"type":"text","text":"日本"},)"
            R"({"type":"image_url","image_url":{"url":"data:image/jpeg;base64,YQ=="}}]}]})");
}

// The answer.

TEST(OpenAIAnswer, OfTheVendorIsRead) {
  EXPECT_EQ(parse(R"({
    "id": "chatcmpl-B9MHDbslfkBeAs8l4bebGdFOJ6PeG", "object": "chat.completion", "created": 1741570283,
    "model": "gpt-4o-2024-08-06",
    "choices": [{"index": 0,
                 "message": {"role": "assistant", "content": "{\"summary\": \"A harbour.\"}", "refusal": null,
                             "annotations": []},
                 "logprobs": null, "finish_reason": "stop"}],
    "usage": {"prompt_tokens": 1117, "completion_tokens": 46, "total_tokens": 1163,
              "prompt_tokens_details": {"cached_tokens": 0, "audio_tokens": 0},
              "completion_tokens_details": {"reasoning_tokens": 0}},
    "service_tier": "default", "system_fingerprint": "fp_fc9f1d7035"
  })"),
            (VisionResponse{.rawText = R"({"summary": "A harbour."})",
                            .modelId = "gpt-4o-2024-08-06",
                            .inputTokens = 1117,
                            .outputTokens = 46}));
}

TEST(OpenAIAnswer, OfALocalServerIsRead) {
  EXPECT_EQ(parse(R"({"id":"chatcmpl-431","object":"chat.completion","created":1763690000,"model":"llava",
                      "system_fingerprint":"fp_ollama",
                      "choices":[{"index":0,"message":{"role":"assistant","content":" {\n} ","reasoning":"boat?"},
                                  "finish_reason":"stop"}]})"),
            (VisionResponse{.rawText = " {\n} ", .modelId = "llava"}));
}

TEST(OpenAIAnswer, OnlyTheFirstChoiceIsRead) {
  EXPECT_EQ(parse(withChoice(R"({"message":{"content":"a"}},{"message":{"content":"b"}})")).rawText, "a");
  EXPECT_EQ(failureOf(withChoice(R"({"delta":{}},{"message":{"content":"b"}})")), noChoices);
}

TEST(OpenAIAnswer, WithoutAMessageHasNoChoices) {
  for (const char* answer :
       {"{}", R"({"choices":null})", R"({"choices":[]})", R"({"choices":{}})", R"({"choices":["a"]})",
        R"({"choices":[{}]})", R"({"choices":[{"message":null}]})", R"({"choices":[{"message":"a"}]})",
        R"({"choices":[{"message":[]}]})", R"({"choices":[{"message":{"content":"a"}},7]})",
        R"({"error":{"message":"model not found","type":"api_error"}})"})
    EXPECT_EQ(failureOf(answer), noChoices) << answer;
}

TEST(OpenAIAnswer, ARefusalWinsOverContentBesideIt) {
  EXPECT_EQ(failureOf(withChoice(R"({"message":{"content":"text","refusal":"I'm sorry."},"finish_reason":"stop"})")),
            "model refused: I'm sorry.");
  EXPECT_EQ(failureOf(withChoice(R"({"message":{"content":null,"refusal":"No."},"finish_reason":"content_filter"})")),
            "model refused: No.");
}

TEST(OpenAIAnswer, ARefusalThatSaysNothingIsIgnored) {
  for (const char* refusal : {R"("")", "null", "true", "[]", R"({"text":"no"})"})
    EXPECT_EQ(parse(withChoice(R"({"message":{"content":"text","refusal":)" + std::string(refusal) + "}}")).rawText,
              "text")
        << refusal;
}

TEST(OpenAIAnswer, ContentAsAListGivesItsTextsOnLines) {
  EXPECT_EQ(textOfContent(R"([{"type":"output_text","text":"a"},{"text":"b"}])"), "a\nb");
  EXPECT_EQ(textOfContent(R"([{"type":"image_url"},{"type":"text","text":"a"},{"type":"text","text":null}])"), "a");
}

TEST(OpenAIAnswer, ContentOfAnotherKindIsNone) {
  for (const char* content : {"null", "7", "true", "{}", R"(["a"])", R"([{"text":"a"},"b"])"})
    EXPECT_EQ(failureOfContent(content), "no usable output (null content)") << content;
  EXPECT_EQ(failureOf(withChoice(R"({"message":{"role":"assistant"}})")), "no usable output (null content)");
}

TEST(OpenAIAnswer, ContentOfWhiteSpaceIsEmpty) {
  for (const char* content : {R"("")", R"("  \n\t\r ")", R"("\u00a0\u3000\u2028")", "[]", "[{}]", R"([{"text":" "}])"})
    EXPECT_EQ(failureOfContent(content), "no usable output (empty content)") << content;
}

TEST(OpenAIAnswer, TheReasonOfAnEmptyOneIsTold) {
  const auto failure = [](const std::string& content, const std::string& reason) {
    return failureOf(withChoice(R"({"message":{"content":)" + content + R"(},"finish_reason":)" + reason + "}"));
  };
  EXPECT_EQ(failure(R"("  ")", R"("length")"),
            "model response was truncated by max_tokens before any content was emitted (empty content). Increase "
            "max_tokens or reduce frame count.");
  EXPECT_EQ(failure("null", R"("length")"),
            "model response was truncated by max_tokens before any content was emitted (null content). Increase "
            "max_tokens or reduce frame count.");
  EXPECT_EQ(failure("null", R"("content_filter")"),
            "model refused this content (finish_reason=content_filter). The vision model declined to describe these "
            "frames — try a different model or skip this clip.");
  EXPECT_EQ(failure("null", R"("tool_calls")"), "no usable output (null content, finish_reason=tool_calls)");
  EXPECT_EQ(failure(R"("")", "null"), "no usable output (empty content)");
  EXPECT_EQ(failure(R"("")", "3"), "no usable output (empty content)");
}

TEST(OpenAIAnswer, TheReasonBesideContentIsNotLookedAt) {
  for (const char* reason : {"length", "content_filter"})
    EXPECT_EQ(parse(withChoice(R"({"message":{"content":"{\"a\":"},"finish_reason":")" + std::string(reason) + "\"}"))
                  .rawText,
              "{\"a\":");
}

TEST(OpenAIAnswer, TokensAreIntegersOrAbsent) {
  const auto usage = [](const std::string& input, const std::string& output) {
    const VisionResponse response = parse(R"({"choices":[{"message":{"content":"a"}}],"usage":{"prompt_tokens":)" +
                                          input + R"(,"completion_tokens":)" + output + "}}");
    return std::pair(response.inputTokens, response.outputTokens);
  };
  using Tokens = std::pair<std::optional<std::int64_t>, std::optional<std::int64_t>>;
  EXPECT_EQ(usage("12", "0"), Tokens(12, 0));
  EXPECT_EQ(usage("12.0", "12.5"), Tokens(12, std::nullopt));
  EXPECT_EQ(usage("null", "\"7\""), Tokens());
  EXPECT_EQ(usage("18446744073709551616", "false"), Tokens());
}

// The diagnostics.

TEST(RefusalDiagnostic, TellsWhyNothingCame) {
  EXPECT_EQ(OpenAIProvider::refusalDiagnostic("content_filter", "suffix"),
            "model refused this content (finish_reason=content_filter). The vision model declined to describe these "
            "frames — try a different model or skip this clip.");
  EXPECT_EQ(OpenAIProvider::refusalDiagnostic("length", "suffix"),
            "model response was truncated by max_tokens before any content was emitted (suffix). Increase max_tokens "
            "or reduce frame count.");
  EXPECT_EQ(OpenAIProvider::refusalDiagnostic("stop", "suffix"), "no usable output (suffix, finish_reason=stop)");
  EXPECT_EQ(OpenAIProvider::refusalDiagnostic("", "suffix"), "no usable output (suffix, finish_reason=)");
  EXPECT_EQ(OpenAIProvider::refusalDiagnostic(std::nullopt, "suffix"), "no usable output (suffix)");
}

}  // namespace
}  // namespace tq
