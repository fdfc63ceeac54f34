#include "TQDescription/MarkdownRenderer.hpp"

#include <algorithm>
#include <optional>
#include <string_view>

#include "TQCore/Models/ExtractedFrame.hpp"
#include "TQDescription/FileSizeText.hpp"
#include "TQDescription/GPSText.hpp"
#include "TQDescription/JoinedText.hpp"
#include "TQDescription/SidecarNames.hpp"
#include "TQPlatform/Text/DateText.hpp"
#include "TQPlatform/Text/NumberText.hpp"

namespace tq {
namespace {

using Texts = std::vector<std::string>;

bool isNonEmpty(const std::optional<std::string>& text) {
  return text && !text->empty();
}

template <class T>
bool hasElements(const std::optional<std::vector<T>>& list) {
  return list && !list->empty();
}

/// Every part between `opening` and `closing`.
Texts wrapped(Texts parts, std::string_view opening, std::string_view closing) {
  for (std::string& part : parts)
    part = std::string(opening) + part + std::string(closing);
  return parts;
}

std::string code(const std::string& text) {
  return "`" + text + "`";
}

/// "- **<label>:** <text>" and a line feed.
std::string boldItem(std::string_view label, const std::string& text) {
  return "- **" + std::string(label) + ":** " + text + "\n";
}

std::string boldItemIfPresent(std::string_view label, const std::optional<std::string>& text) {
  return text ? boldItem(label, *text) : "";
}

std::string boldItemIfNonEmpty(std::string_view label, const std::optional<std::string>& text) {
  return isNonEmpty(text) ? boldItem(label, *text) : "";
}

/// "- **<label>:** <elements joined>" and a line feed, when the list has elements.
std::string boldList(std::string_view label, const std::optional<Texts>& list, std::string_view separator) {
  return hasElements(list) ? boldItem(label, joined(*list, separator)) : "";
}

/// "- <label>: <text>" and a line feed, when the text is present.
std::string plainItem(std::string_view label, const std::optional<std::string>& text) {
  return text ? "- " + std::string(label) + ": " + *text + "\n" : "";
}

std::string row(std::string_view label, const std::string& value) {
  return "| " + std::string(label) + " | " + value + " |\n";
}

void addIfPresent(Texts& parts, std::string_view label, const std::optional<std::string>& text) {
  if (text) parts.push_back(std::string(label) + *text);
}

void addIfNonEmpty(Texts& parts, std::string_view label, const std::optional<std::string>& text) {
  if (isNonEmpty(text)) addIfPresent(parts, label, text);
}

std::string renderBanners(const DescriptionResult& result) {
  std::string text;
  if (result.flagged.value_or(false))
    text += "> ⚠️ This description was **flagged** by the model. Some fields may be redacted.\n\n";
  if (result.reviewFlag.value_or(false))
    text += "> 👀 **Needs review**" + (result.reviewReason ? " — " + *result.reviewReason : "") + "\n\n";
  return text;
}

std::string renderSummary(const DescriptionResult& result) {
  std::string text = "## Summary\n\n" + result.summary + "\n\n";
  const std::optional<std::string>& oneLine = result.global.overallSummaryOneLine;
  if (isNonEmpty(oneLine)) text += "> _" + *oneLine + "_\n\n";
  return text;
}

std::string renderSource(const SourceMetadata& source) {
  std::string text = "## Source\n\n| Field | Value |\n|---|---|\n";
  text += row("File", code(source.filename));
  text += row("Duration", fixedText(source.durationSeconds, 2) + " s");
  text += row("Resolution", source.resolution);
  text += row("Frame rate", fixedText(source.frameRate, 3) + " fps");
  text += row("Codec", source.codec);
  text += row("File size", fileSizeText(source.fileSizeBytes));
  if (source.sha256) text += row("SHA-256", code(*source.sha256));
  if (source.gps) text += row("GPS", gpsText(*source.gps));
  text += row("Described at", iso8601(source.describedAt));
  return text + "\n";
}

std::string renderEngine(const EngineMetadata& engine) {
  return "## Engine\n\n- Provider: **" + engine.provider + "**\n- Model: " + code(engine.model) +
         "\n- Frames analyzed: " + std::to_string(engine.framesAnalyzed) +
         "\n- Sampling: " + code(engine.samplingStrategy) + "\n\n";
}

std::string renderGlobal(const GlobalSummary& global) {
  std::string text = "## Global\n\n";
  text += boldList("Primary subjects", global.primarySubjects, ", ");
  text += boldList("Themes", global.themes, ", ");
  if (hasElements(global.dominantPalette))
    text += boldItem("Dominant palette", MarkdownRenderer::paletteLine(*global.dominantPalette));
  text += boldList("Search keywords", global.searchKeywords, ", ");
  text += boldList("Suggested uses", global.suggestedUseCases, "; ");
  return text + "\n";
}

/// A service's answer or a file may claim any number; only those that a timecode can hold reach it.
std::string turnTime(double seconds) {
  constexpr double limit = 1e15;
  return CMTimecode{std::clamp(seconds, -limit, limit)}.formatted();
}

std::string renderTurn(const TranscriptSpeakerTurn& turn) {
  return "**Speaker " + std::to_string(turn.speaker) + "** [" + turnTime(turn.startSeconds) + "–" +
         turnTime(turn.endSeconds) + "]: " + turn.text + "\n\n";
}

std::string renderTranscript(const TranscriptInfo& transcript) {
  Texts origin{code(transcript.provider + "/" + transcript.model)};
  if (isNonEmpty(transcript.language)) origin.push_back("language " + code(*transcript.language));
  std::string text = "## Transcript\n\n> " + joined(origin, " · ") + "\n\n";
  if (!hasElements(transcript.speakers)) return text + transcript.text + "\n\n";
  for (const TranscriptSpeakerTurn& turn : *transcript.speakers)
    text += renderTurn(turn);
  return text;
}

std::optional<std::string> moodWithConfidence(const Person& person) {
  if (!person.perceivedMood || !person.moodConfidence) return person.perceivedMood;
  return *person.perceivedMood + " (confidence " + fixedText(*person.moodConfidence * 100, 0) + "%)";
}

}  // namespace

std::string MarkdownRenderer::render(const DescriptionResult& result) {
  std::string text = "# " + stemOf(result.source.filename) + "\n\n";
  text += renderBanners(result);
  text += renderSummary(result);
  text += renderSource(result.source);
  text += renderEngine(result.engine);
  text += renderGlobal(result.global);
  if (result.transcript && !result.transcript->text.empty()) text += renderTranscript(*result.transcript);
  text += "## Shots\n\n";
  for (std::size_t index = 0; index < result.shots.size(); ++index)
    text += renderShot(index + 1, result.shots[index]);
  return text;
}

std::string MarkdownRenderer::renderShot(std::size_t number, const Shot& shot) {
  std::string text = "### Shot " + std::to_string(number) + " — " + shot.timecode.value_or("—") + "\n\n";
  text += boldItemIfPresent("Shot type", shot.shotType);
  text += boldItemIfPresent("Camera motion", shot.cameraMotion);
  text += boldItemIfNonEmpty("Framing", shot.framingNotes);
  text += boldItemIfNonEmpty("Mood", shot.overallMood);
  if (shot.peopleCount) text += boldItem("People count", std::to_string(*shot.peopleCount));
  if (hasElements(shot.faces)) text += boldItem("Faces detected", std::to_string(shot.faces->size()));
  if (hasElements(shot.onScreenText))
    text += boldItem("On-screen text", joined(wrapped(*shot.onScreenText, "“", "”"), ", "));
  if (hasElements(shot.tags)) text += boldItem("Tags", joined(wrapped(*shot.tags, "`", "`"), " "));
  if (shot.setting) text += renderSetting(*shot.setting);
  if (shot.colorPalette) text += renderPalette(*shot.colorPalette);
  if (hasElements(shot.people)) {
    text += "\n**People**\n\n";
    for (std::size_t index = 0; index < shot.people->size(); ++index)
      text += renderPerson(index + 1, (*shot.people)[index]);
  }
  return text + "\n";
}

std::string MarkdownRenderer::renderPerson(std::size_t number, const Person& person) {
  std::string text = "**Person " + std::to_string(number) + "**\n\n";
  text += plainItem("Approximate age", person.approximateAgeRange);
  text += plainItem("Perceived gender presentation", person.perceivedGenderPresentation);
  text += plainItem("Skin tone", person.skinTone);
  if (person.hair) text += plainItem("Hair", hairLine(*person.hair));
  text += plainItem("Eyes", person.eyes);
  text += plainItem("Pose", person.pose);
  text += plainItem("Expression", person.expression);
  text += plainItem("Perceived mood", moodWithConfidence(person));
  if (person.clothing) text += plainItem("Clothing", clothingLine(*person.clothing));
  return text + "\n";
}

std::string MarkdownRenderer::renderSetting(const Setting& setting) {
  Texts parts;
  addIfPresent(parts, "", setting.locationType);
  addIfNonEmpty(parts, "", setting.environment);
  addIfPresent(parts, "", setting.timeOfDay);
  addIfNonEmpty(parts, "", setting.weather);
  addIfNonEmpty(parts, "lighting: ", setting.lighting);
  return boldItem("Setting", parts.empty() ? "—" : joined(parts, " · "));
}

std::string MarkdownRenderer::renderPalette(const ColorPalette& palette) {
  const bool described = isNonEmpty(palette.description);
  return boldItem("Palette", paletteLine(palette.dominant) + (described ? " — " + *palette.description : ""));
}

std::string MarkdownRenderer::paletteLine(const std::vector<std::string>& colors) {
  return joined(wrapped(colors, "`", "`"), " ");
}

std::string MarkdownRenderer::hairLine(const PersonHair& hair) {
  Texts parts;
  addIfPresent(parts, "", hair.color);
  addIfPresent(parts, "", hair.length);
  addIfPresent(parts, "", hair.style);
  return joined(parts, ", ");
}

std::string MarkdownRenderer::clothingLine(const PersonClothing& clothing) {
  Texts parts;
  addIfPresent(parts, "top: ", clothing.top);
  addIfPresent(parts, "bottom: ", clothing.bottom);
  if (hasElements(clothing.accessories)) parts.push_back("accessories: " + joined(*clothing.accessories, ", "));
  addIfPresent(parts, "style: ", clothing.overallStyle);
  return joined(parts, " · ");
}

}  // namespace tq
