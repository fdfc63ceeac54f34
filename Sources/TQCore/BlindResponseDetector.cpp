#include "TQCore/BlindResponseDetector.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

namespace {

constexpr auto contentlessTokens =
    std::to_array<std::string_view>({"unclear", "unknown", "unprocessable", "n/a", "none", "not available"});

constexpr auto blindPhrases = std::to_array<std::string_view>({
    "frame data not provided",
    "frame data not available",
    "no frames provided",
    "no image provided",
    "no images provided",
    "cannot analyze visual content",
    "unable to view the image",
    "cannot see the image",
    "without access to the frames",
});

bool isSignal(const std::string& text) {
  const std::string word = lowercased(trimmed(text));
  return !word.empty() &&
         std::find(contentlessTokens.begin(), contentlessTokens.end(), word) == contentlessTokens.end();
}

bool isSignal(const std::optional<std::string>& text) {
  return text && isSignal(*text);
}

bool saysThatItIsBlind(const DescriptionResult& result) {
  const std::string prose = lowercased(result.summary + " " + result.global.overallSummaryOneLine.value_or("") + " " +
                                       result.reviewReason.value_or(""));
  return std::any_of(blindPhrases.begin(), blindPhrases.end(),
                     [&](std::string_view phrase) { return prose.find(phrase) != std::string::npos; });
}

bool carriesSignal(const GlobalSummary& global) {
  return BlindResponseDetector::hasSignal(global.primarySubjects) || BlindResponseDetector::hasSignal(global.themes) ||
         BlindResponseDetector::hasSignal(global.searchKeywords) ||
         BlindResponseDetector::hasSignal(global.suggestedUseCases);
}

bool carriesSignal(const Setting& setting) {
  return isSignal(setting.locationType) || isSignal(setting.environment) || isSignal(setting.timeOfDay) ||
         isSignal(setting.weather) || isSignal(setting.lighting);
}

/// Camera motion, framing notes, people, plain colours and what this machine detected have no say: a blind model makes
/// the first ones up, and the last is not the model's word.
bool carriesSignal(const Shot& shot) {
  return isSignal(shot.shotType) || isSignal(shot.overallMood) || BlindResponseDetector::hasSignal(shot.tags) ||
         (shot.colorPalette && isSignal(shot.colorPalette->description)) ||
         (shot.setting && carriesSignal(*shot.setting)) || shot.peopleCount.value_or(0) >= 1;
}

}  // namespace

bool BlindResponseDetector::hasSignal(const std::optional<std::vector<std::string>>& values) {
  return values && std::any_of(values->begin(), values->end(), [](const std::string& text) { return isSignal(text); });
}

bool BlindResponseDetector::looksBlind(const DescriptionResult& result) {
  if (result.engine.framesAnalyzed < 1 || result.flagged.value_or(false)) return false;
  if (saysThatItIsBlind(result)) return true;
  if (carriesSignal(result.global)) return false;
  return std::none_of(result.shots.begin(), result.shots.end(), [](const Shot& shot) { return carriesSignal(shot); });
}

}  // namespace tq
