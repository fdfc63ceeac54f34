#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ProviderFixture.hpp"
#include "TQCore/DefaultModels.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq {
namespace {

using test::ProviderFixture;

const std::string noText = "no text blocks in response";

VisionResponse parse(std::string_view answer) {
  return ProviderFixture().anthropic().parseResponse(viewOf(answer));
}

std::string failureOf(std::string_view answer) {
  return test::decodeFailure([&] { parse(answer); });
}

/// The text of an answer whose "content" is that JSON.
std::string textOfContent(const std::string& content) {
  return parse(R"({"content":)" + content + "}").rawText;
}

std::string failureOfContent(const std::string& content) {
  return failureOf(R"({"content":)" + content + "}");
}

TEST(AnthropicProvider, HasItsDefaults) {
  EXPECT_STREQ(AnthropicProvider::defaultModel, DefaultModels::anthropicVision);
  EXPECT_EQ(AnthropicProvider::defaultTimeoutSeconds, 600.0);
  EXPECT_TRUE(AnthropicProvider::defaultBaseURL().absoluteString().ends_with("/v1"));
}

// The body.

TEST(AnthropicBody, HoldsTheFramesInOrderAndThenThePrompt) {
  EXPECT_EQ(parseJSON(ProviderFixture().anthropic().buildBody(ProviderFixture::request())), parseJSON(R"({
    "model": "the-model",
    "max_tokens": 4096,
    "temperature": 0.2,
    "system": "You look at frames.",
    "messages": [{
      "role": "user",
      "content": [
        {"type": "image", "source": {"type": "base64", "media_type": "image/jpeg", "data": "Zmlyc3Q="}},
        {"type": "image", "source": {"type": "base64", "media_type": "image/jpeg", "data": "c2Vjb25k"}},
        {"type": "text", "text": "Describe \"clip.mov\".\nAnswer in JSON."}
      ]
    }]
  })"));
}

TEST(AnthropicBody, WithoutFramesHoldsThePromptAlone) {
  VisionRequest unset = ProviderFixture::request();
  unset.frames = {};
  for (const VisionRequest& request : {ProviderFixture::request({}), unset}) {
    const JSONValue body = parseJSON(ProviderFixture().anthropic().buildBody(request));
    const JSONValue& message = body.find("messages")->asArray()->at(0);
    EXPECT_EQ(*message.find("content"),
              parseJSON(R"([{"type": "text", "text": "Describe \"clip.mov\".\nAnswer in JSON."}])"));
  }
}

TEST(AnthropicBody, IsCompactJSONInUTF8) {
  VisionRequest request = ProviderFixture::request({"a"});
  request.systemPrompt = "Ärger\t\x01/";
  request.userPrompt = "日本";
  request.temperature = 0;
  request.maxTokens = -1;
  EXPECT_EQ(ProviderFixture().anthropic().buildBody(request),
            R"({"model":"the-model","max_tokens":-1,"temperature":0.0,"system":"Ärger\t\u0001/",)"
            R"("messages":[{"role":"user","content":[)"
            R"({"type":"image","source":{"type":"base64","media_type":"image/jpeg","data":"YQ=="}},)"
            R"({"type":"text","text":"日本"}]}]})");
}

// The answer.

TEST(AnthropicAnswer, OfTheVendorIsRead) {
  EXPECT_EQ(parse(R"({
    "id": "msg_01XFDUDYJgAACzvnptvVoYEL", "type": "message", "role": "assistant", "model": "claude-sonnet-4-5-20250929",
    "content": [{"type": "text", "text": "{\"summary\": \"A harbour.\"}", "citations": null}],
    "stop_reason": "end_turn", "stop_sequence": null,
    "usage": {"input_tokens": 18412, "cache_creation_input_tokens": 0, "cache_read_input_tokens": 0,
              "cache_creation": {"ephemeral_5m_input_tokens": 0, "ephemeral_1h_input_tokens": 0},
              "output_tokens": 913, "service_tier": "standard"}
  })"),
            (VisionResponse{.rawText = R"({"summary": "A harbour."})",
                            .modelId = "claude-sonnet-4-5-20250929",
                            .inputTokens = 18412,
                            .outputTokens = 913}));
}

TEST(AnthropicAnswer, ThinkingAndToolBlocksArePassedOver) {
  EXPECT_EQ(textOfContent(R"([
    {"type": "thinking", "thinking": "There is a boat.", "signature": "EqQBCgIYAhIM"},
    {"type": "redacted_thinking", "data": "EmwKAhgBEgy3va3pzix", "text": "not this"},
    {"type": "text", "text": "first"},
    {"type": "tool_use", "id": "toolu_01", "name": "look", "input": {"text": "nor this"}},
    {"type": "text", "text": "second"}
  ])"),
            "first\nsecond");
}

TEST(AnthropicAnswer, TextIsNotTrimmed) {
  EXPECT_EQ(textOfContent(R"([{"type":"text","text":"  \n"}])"), "  \n");
}

TEST(AnthropicAnswer, EmptyTextsAreJoinedLikeAnyOther) {
  EXPECT_EQ(textOfContent(R"([{"type":"text","text":""},{"type":"text","text":"b"}])"), "\nb");
  EXPECT_EQ(textOfContent(R"([{"type":"text","text":""},{"type":"text","text":""}])"), "\n");
}

TEST(AnthropicAnswer, BlocksWithoutATextAreSkipped) {
  EXPECT_EQ(textOfContent(R"([{"type":"text"},{"type":"text","text":7},{"text":"untyped"},{"type":1,"text":"odd"},
                              {"type":"Text","text":"case"},{},{"type":"text","text":"kept"}])"),
            "kept");
}

TEST(AnthropicAnswer, WithoutTextIsAFailure) {
  for (const std::string content :
       {R"([{"type":"thinking"}])", "[]", "null", "{}", R"("plain text")", R"([{"type":"text","text":""}])"})
    EXPECT_EQ(failureOfContent(content), noText) << content;
  EXPECT_EQ(failureOf("{}"), noText);
}

TEST(AnthropicAnswer, AListThatHoldsMoreThanObjectsCountsAsEmpty) {
  EXPECT_EQ(failureOfContent(R"([{"type":"text","text":"a"},"b"])"), noText);
  EXPECT_EQ(failureOfContent(R"([{"type":"text","text":"a"},null])"), noText);
}

TEST(AnthropicAnswer, AnErrorObjectHasNoText) {
  EXPECT_EQ(failureOf(R"({"type":"error","error":{"type":"overloaded_error","message":"Overloaded"}})"), noText);
}

TEST(AnthropicAnswer, ACutOffTextIsGivenAsItIs) {
  EXPECT_EQ(parse(R"({"content":[{"type":"text","text":"{\"summary\": \"A har"}],"stop_reason":"max_tokens"})").rawText,
            "{\"summary\": \"A har");
}

TEST(AnthropicAnswer, TokensAreIntegersOrAbsent) {
  const auto usage = [](const std::string& input, const std::string& output) {
    const VisionResponse response = parse(R"({"content":[{"type":"text","text":"a"}],"usage":{"input_tokens":)" +
                                          input + R"(,"output_tokens":)" + output + "}}");
    return std::pair(response.inputTokens, response.outputTokens);
  };
  using Tokens = std::pair<std::optional<std::int64_t>, std::optional<std::int64_t>>;
  EXPECT_EQ(usage("12", "0"), Tokens(12, 0));
  EXPECT_EQ(usage("12.0", "2e1"), Tokens(12, 20));
  EXPECT_EQ(usage("12.5", "7"), Tokens(std::nullopt, 7));
  EXPECT_EQ(usage("\"12\"", "null"), Tokens());
  EXPECT_EQ(usage("true", "[]"), Tokens());
  EXPECT_EQ(usage("9223372036854775807", "9223372036854775808"), Tokens(9223372036854775807, std::nullopt));
  EXPECT_EQ(usage("1e300", "-1"), Tokens(std::nullopt, -1));
}

}  // namespace
}  // namespace tq
