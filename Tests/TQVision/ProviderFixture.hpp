#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Support/FakeURLSession.hpp"
#include "Support/ManualClock.hpp"
#include "TQCore/TQError.hpp"
#include "TQVision/AnthropicProvider.hpp"
#include "TQVision/OpenAIProvider.hpp"

namespace tq::test {

/// Providers on a scripted session and a clock that stands still.
struct ProviderFixture {
  AnthropicProvider anthropic() const { return AnthropicProvider(config, session, clock); }
  OpenAIProvider openAI(bool useJSONResponseFormat = true) const {
    return OpenAIProvider(config, useJSONResponseFormat, session, clock);
  }

  static VisionRequest request(std::vector<std::string> pictures = {"first", "second"}) {
    VisionRequest request;
    request.systemPrompt = "You look at frames.";
    request.userPrompt = "Describe \"clip.mov\".\nAnswer in JSON.";
    std::vector<ExtractedFrame> frames;
    for (const std::string& picture : pictures)
      frames.push_back({.jpegData = {picture.begin(), picture.end()}});
    request.frames = std::move(frames);
    request.maxTokens = 4096;
    request.temperature = 0.2;
    return request;
  }

  HTTPProviderConfig config{.providerId = "the-id",
                            .modelId = "the-model",
                            .apiKey = "sk-secret",
                            .baseURL = WebURL::parse("https://models.example.com/v1").value(),
                            .extraHeaders = {},
                            .timeoutSeconds = 90.9};
  std::shared_ptr<FakeURLSession> session = std::make_shared<FakeURLSession>();
  std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
};

/// What `work` throws, as the user reads it. The kind must be `Error`.
template <class Error = TQError>
std::string errorText(const std::function<void()>& work) {
  try {
    work();
  } catch (const Error& error) {
    return userFacingDescription(error);
  }
  throw std::logic_error("nothing was thrown");
}

/// The text of the `TQError::providerDecodeFailure` that `work` throws.
inline std::string decodeFailure(const std::function<void()>& work) {
  try {
    work();
  } catch (const TQError& error) {
    return std::get<TQError::ProviderDecodeFailure>(error.value()).text;
  }
  throw std::logic_error("nothing was thrown");
}

}  // namespace tq::test
