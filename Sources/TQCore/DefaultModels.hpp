#pragma once

namespace tq {

/// The model names that settings start from.
struct DefaultModels {
  static constexpr const char* anthropicVision = "claude-sonnet-4-5";
  static constexpr const char* whisperOpenAI = "whisper-1";
  static constexpr const char* whisper = "whisper-large-v3";
};

}  // namespace tq
