#include "TQVision/ProviderErrorHints.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

constexpr std::array<std::string_view, 4> tellingWords{"validation", "invalid_request", "invalid request",
                                                       "unsupported"};

constexpr std::string_view visionHint =
    "\n\nHint: HTTP 400 from a custom OpenAI-compatible endpoint usually means the model doesn't accept image inputs. "
    "Confirm the model is vision-capable — e.g., for Qwen use 'Qwen2.5-VL' or 'Qwen3-VL' (not the base text-only "
    "Qwen2/Qwen3 models). For Llama use 'llama-3.2-90b-vision', and for LLaVA use 'llava' (Ollama). Text-only models "
    "will reject the image content blocks we send.";

}  // namespace

std::string ProviderErrorHints::annotateBadRequest(int status, std::string body) {
  if (status != 400) return body;
  const std::string text = lowercased(body);
  const bool tells = std::any_of(tellingWords.begin(), tellingWords.end(),
                                 [&](std::string_view word) { return text.find(word) != std::string::npos; });
  if (tells) body += visionHint;
  return body;
}

}  // namespace tq
