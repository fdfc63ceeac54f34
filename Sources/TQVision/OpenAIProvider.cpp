#include "TQVision/OpenAIProvider.hpp"

#include "TQCore/TQError.hpp"
#include "TQPlatform/Text/Unicode.hpp"
#include "TQVision/VersionedURL.hpp"
#include "TQVision/VisionAnswer.hpp"
#include "TQVision/VisionBody.hpp"

namespace tq {
namespace {

/// Only the first choice is read. Throws when there is none with a message.
const JSONValue& firstChoice(const JSONValue& root) {
  const JSONValue::Array* choices = VisionAnswer::objects(root, "choices");
  const JSONValue* message = choices && !choices->empty() ? choices->front().find("message") : nullptr;
  if (!message || !message->asObject()) throw TQError::providerDecodeFailure("no choices in response");
  return choices->front();
}

/// One string, or a list of blocks; absent for anything else.
std::optional<std::string> contentOf(const JSONValue& message) {
  if (const std::string* content = VisionAnswer::string(message, "content")) return *content;
  if (const JSONValue::Array* blocks = VisionAnswer::objects(message, "content"))
    return VisionAnswer::joinedTexts(*blocks, std::nullopt);
  return std::nullopt;
}

}  // namespace

OpenAIProvider::OpenAIProvider(HTTPProviderConfig config, bool useJSONResponseFormat,
                               std::shared_ptr<URLSession> urlSession, std::shared_ptr<const Clock> clock)
    : HTTPVisionProvider(std::move(config), std::move(urlSession), std::move(clock)),
      useJSONResponseFormat_(useJSONResponseFormat) {}

WebURL OpenAIProvider::chatCompletionsURL(const WebURL& base) {
  return versionedURL(base, "chat/completions");
}

void OpenAIProvider::addHeaders(URLRequest& request, const std::string& apiKey) const {
  if (!apiKey.empty()) request.setHeader("authorization", "Bearer " + apiKey);
}

std::string OpenAIProvider::buildBody(const VisionRequest& request) const {
  const std::string responseFormat = useJSONResponseFormat_ ? R"(,"response_format":{"type":"json_object"})" : "";
  return joinedBody(
      {.head = bodyStart(modelId(), request) + responseFormat + R"(,"messages":[{"role":"system","content":)" +
               jsonText(request.systemPrompt) + R"(},{"role":"user","content":[{"type":"text","text":)" +
               jsonText(request.userPrompt) + "}",
       .pictureOpening = R"(,{"type":"image_url","image_url":{"url":"data:image/jpeg;base64,)",
       .pictureClosing = R"("}})",
       .tail = "]}]}"},
      request.frames);
}

VisionResponse OpenAIProvider::parseResponse(ByteView data) const {
  const VisionAnswer answer(data);
  const JSONValue& choice = firstChoice(answer.root());
  const JSONValue& message = *choice.find("message");
  const std::string* reason = VisionAnswer::string(choice, "finish_reason");
  const auto finishReason = reason ? std::optional(*reason) : std::nullopt;

  if (const std::string* refusal = VisionAnswer::string(message, "refusal"); refusal && !refusal->empty())
    throw TQError::providerDecodeFailure("model refused: " + *refusal);
  std::optional<std::string> text = contentOf(message);
  if (!text) throw TQError::providerDecodeFailure(refusalDiagnostic(finishReason, "null content"));
  if (trimmed(*text).empty()) throw TQError::providerDecodeFailure(refusalDiagnostic(finishReason, "empty content"));
  return {.rawText = std::move(*text),
          .modelId = answer.modelId(modelId()),
          .inputTokens = answer.usage("prompt_tokens"),
          .outputTokens = answer.usage("completion_tokens")};
}

std::string OpenAIProvider::refusalDiagnostic(const std::optional<std::string>& finishReason,
                                              const std::string& suffix) {
  if (!finishReason) return "no usable output (" + suffix + ")";
  if (*finishReason == "content_filter")
    return "model refused this content (finish_reason=content_filter). The vision model declined to describe these "
           "frames — try a different model or skip this clip.";
  if (*finishReason == "length")
    return "model response was truncated by max_tokens before any content was emitted (" + suffix +
           "). Increase max_tokens or reduce frame count.";
  return "no usable output (" + suffix + ", finish_reason=" + *finishReason + ")";
}

}  // namespace tq
