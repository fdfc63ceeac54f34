#pragma once

#include "TQCore/DefaultEndpoints.hpp"
#include "TQCore/DefaultModels.hpp"
#include "TQPlatform/Network/WebURL.hpp"

namespace tq {

// What a provider of each shape uses where the user has chosen nothing. The providers inherit these, so that they read
// AnthropicProvider::defaultModel.

struct AnthropicDefaults {
  static constexpr const char* defaultModel = DefaultModels::anthropicVision;
  static constexpr double defaultTimeoutSeconds = 600;
  static WebURL defaultBaseURL() { return WebURL::parse(DefaultEndpoints::anthropic).value(); }
};

struct OpenAIDefaults {
  static constexpr const char* defaultModel = "gpt-4o";
  static constexpr double defaultTimeoutSeconds = 600;
  static WebURL openAIBaseURL() { return WebURL::parse(DefaultEndpoints::openAI).value(); }
};

struct MockDefaults {
  static constexpr const char* defaultModel = "mock-v1";
};

}  // namespace tq
