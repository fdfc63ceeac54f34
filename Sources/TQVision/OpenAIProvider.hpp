#pragma once

#include <optional>

#include "TQVision/HTTPVisionProvider.hpp"
#include "TQVision/VisionDefaults.hpp"

namespace tq {

/// Speaks the Chat Completions shape (https://platform.openai.com/docs/api-reference/chat) to whatever server
/// understands it, the local ones included.
class OpenAIProvider final : public HTTPVisionProvider, public OpenAIDefaults {
 public:
  /// With `useJSONResponseFormat` the model is held to answer with a JSON object.
  OpenAIProvider(HTTPProviderConfig config, bool useJSONResponseFormat, std::shared_ptr<URLSession> urlSession,
                 std::shared_ptr<const Clock> clock);

  static WebURL chatCompletionsURL(const WebURL& base);

  /// The user prompt stands before the frames.
  std::string buildBody(const VisionRequest& request) const override;

  /// The content of the first choice. A refusal wins over content beside it.
  VisionResponse parseResponse(ByteView data) const override;

  /// Why an answer without text has none, for a user. `suffix` says what was found instead.
  static std::string refusalDiagnostic(const std::optional<std::string>& finishReason, const std::string& suffix);

 protected:
  WebURL requestURL(const WebURL& base) const override { return chatCompletionsURL(base); }
  void addHeaders(URLRequest& request, const std::string& apiKey) const override;

 private:
  bool useJSONResponseFormat_;
};

}  // namespace tq
