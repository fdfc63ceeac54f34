#pragma once

#include "TQVision/HTTPVisionProvider.hpp"
#include "TQVision/VisionDefaults.hpp"

namespace tq {

/// Speaks the Messages shape (https://docs.anthropic.com/en/api/messages) to whatever server understands it.
class AnthropicProvider final : public HTTPVisionProvider, public AnthropicDefaults {
 public:
  AnthropicProvider(HTTPProviderConfig config, std::shared_ptr<URLSession> urlSession,
                    std::shared_ptr<const Clock> clock);

  static WebURL messagesURL(const WebURL& base);

  /// The frames stand before the user prompt.
  std::string buildBody(const VisionRequest& request) const override;

  /// The text blocks of the answer, each on lines of its own; other blocks (thinking, tools) are passed over.
  VisionResponse parseResponse(ByteView data) const override;

 protected:
  WebURL requestURL(const WebURL& base) const override { return messagesURL(base); }
  void addHeaders(URLRequest& request, const std::string& apiKey) const override;
};

}  // namespace tq
