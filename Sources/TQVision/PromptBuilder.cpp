#include "TQVision/PromptBuilder.hpp"

#include <array>

#include "TQCore/Vocabularies.hpp"
#include "TQPlatform/Text/NumberText.hpp"
#include "TQPlatform/Text/Unicode.hpp"
#include "TQVision/PromptTexts.hpp"

namespace tq {
namespace {

struct Vocabulary {
  std::string_view placeholder;
  std::string_view words;
};

constexpr std::array vocabularies{
    Vocabulary{"@shotTypes@", Vocab::shotTypes},   Vocabulary{"@cameraMotions@", Vocab::cameraMotions},
    Vocabulary{"@moods@", Vocab::moods},           Vocabulary{"@locations@", Vocab::locations},
    Vocabulary{"@timesOfDay@", Vocab::timesOfDay}, Vocabulary{"@lighting@", Vocab::lighting},
};

/// The fixed text with every vocabulary in its place.
std::string withVocabularies(std::string_view pattern) {
  std::string text(pattern);
  for (const auto& [placeholder, words] : vocabularies)
    for (std::size_t at = text.find(placeholder); at != std::string::npos; at = text.find(placeholder, at))
      text.replace(at, placeholder.size(), words);
  return text;
}

const std::string& sharedTrailer() {
  static const std::string text = withVocabularies(prompt_texts::sharedTrailer);
  return text;
}

const std::string& schema() {
  static const std::string text = withVocabularies(prompt_texts::schema);
  return text;
}

std::string_view head(PromptProfile profile) {
  switch (profile) {
    case PromptProfile::standard: return prompt_texts::standardHead;
    case PromptProfile::unrestricted: return prompt_texts::unrestrictedHead;
  }
  return prompt_texts::standardHead;
}

std::string clipFacts(std::size_t frameCount, const SourceMetadata& source) {
  return "Source: " + source.filename + "\nDuration: " + fixedText(source.durationSeconds, 2) +
         "s  Resolution: " + source.resolution + "  FPS: " + shortestText(source.frameRate) +
         "  Codec: " + source.codec + "\nFrames provided: " + std::to_string(frameCount) + " (chronological)\n";
}

std::string transcriptSection(const std::optional<std::string>& transcript) {
  const std::string_view spoken = transcript ? trimmed(*transcript) : std::string_view();
  if (spoken.empty()) return "";
  const std::string_view kept = characterPrefix(spoken, PromptBuilder::maxTranscriptCharacters);
  std::string section(prompt_texts::transcriptOpening);
  section += kept;
  if (kept.size() < spoken.size()) section += "…[truncated]";
  return section += prompt_texts::transcriptClosing;
}

}  // namespace

std::string PromptBuilder::systemPrompt(PromptProfile profile) {
  return std::string(head(profile)) + sharedTrailer();
}

std::string PromptBuilder::userPrompt(std::size_t frameCount, const SourceMetadata& source,
                                      const std::optional<std::string>& transcript) {
  return clipFacts(frameCount, source) + transcriptSection(transcript) + schema();
}

}  // namespace tq
