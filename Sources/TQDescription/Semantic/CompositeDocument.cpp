#include "TQDescription/Semantic/CompositeDocument.hpp"

#include <optional>
#include <string_view>
#include <vector>

#include "TQDescription/JoinedText.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

using Texts = std::vector<std::string>;

void collect(Texts& texts, const std::string& text) {
  if (const std::string_view content = trimmed(text); !content.empty()) texts.emplace_back(content);
}

void collect(Texts& texts, const Texts& more) {
  for (const std::string& text : more)
    collect(texts, text);
}

template <class Value>
void collect(Texts& texts, const std::optional<Value>& value) {
  if (value) collect(texts, *value);
}

void collect(Texts& texts, const Setting& setting) {
  for (const auto* text :
       {&setting.locationType, &setting.timeOfDay, &setting.lighting, &setting.environment, &setting.weather})
    collect(texts, *text);
}

/// The texts in `source` that say something, without the white space around them.
template <class Source>
Texts textsOf(const Source& source) {
  Texts texts;
  collect(texts, source);
  return texts;
}

/// Those of all shots.
template <class Value>
Texts textsOfEach(const std::vector<Shot>& shots, std::optional<Value> Shot::*member) {
  Texts texts;
  for (const Shot& shot : shots)
    if (shot.*member) collect(texts, *(shot.*member));
  return texts;
}

}  // namespace

std::string CompositeDocument::make(const DescriptionResult& result) {
  const GlobalSummary& global = result.global;
  Texts lines;
  const auto addLine = [&](const std::string& label, const Texts& texts) {
    if (!texts.empty()) lines.push_back(label + ": " + joined(texts, ", "));
  };
  addLine("Summary", textsOf(global.overallSummaryOneLine));
  addLine("Keywords", textsOf(global.searchKeywords));
  addLine("Themes", textsOf(global.themes));
  addLine("Use cases", textsOf(global.suggestedUseCases));
  addLine("Subjects", textsOf(global.primarySubjects));
  addLine("Description", textsOf(result.summary));
  addLine("Tags", textsOfEach(result.shots, &Shot::tags));
  addLine("Framing", textsOfEach(result.shots, &Shot::framingNotes));
  addLine("Mood", textsOfEach(result.shots, &Shot::overallMood));
  addLine("Setting", textsOfEach(result.shots, &Shot::setting));
  addLine("On-screen text", textsOfEach(result.shots, &Shot::onScreenText));
  if (result.transcript) addLine("Transcript", textsOf(result.transcript->text));
  return joined(lines, "\n");
}

}  // namespace tq
