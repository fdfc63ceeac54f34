#pragma once

namespace tq {

/// The addresses that settings start from: the public endpoints of the hosted vendors, and a server on this machine.
struct DefaultEndpoints {
  static constexpr const char* anthropic = "https://api.anthropic.com/v1";
  static constexpr const char* openAI = "https://api.openai.com";
  static constexpr const char* ollama = "http://localhost:11434";
};

}  // namespace tq
