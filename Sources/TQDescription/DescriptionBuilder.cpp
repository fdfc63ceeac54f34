#include "TQDescription/DescriptionBuilder.hpp"

#include <vector>

#include "TQCore/RecordCodec.hpp"
#include "TQCore/RecordJSON.hpp"
#include "TQCore/TQError.hpp"
#include "TQPlatform/JSON/JSON.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

/// What of an answer is the model's to give.
struct PartialResult {
  std::optional<std::string> schemaVersion;
  std::optional<std::string> summary;
  std::optional<std::vector<Shot>> shots;
  std::optional<GlobalSummary> global;
  std::optional<bool> flagged;
  std::optional<bool> reviewFlag;
  std::optional<std::string> reviewReason;
};

}  // namespace

template <>
constexpr auto recordTable<PartialResult> = RecordTable{
    field("schema_version", &PartialResult::schemaVersion),
    field("summary", &PartialResult::summary),
    field("shots", &PartialResult::shots),
    field("global", &PartialResult::global),
    field("flagged", &PartialResult::flagged),
    field("review_flag", &PartialResult::reviewFlag),
    field("review_reason", &PartialResult::reviewReason),
};

namespace {

PartialResult decodeAnswer(std::string_view text) {
  if (!isValidUTF8(text)) throw TQError::providerDecodeFailure("response not UTF-8");
  const auto failure = [](const std::exception& error) {
    return TQError::providerDecodeFailure(std::string("could not decode JSON: ") + error.what());
  };
  try {
    return recordTable<PartialResult>.read(parseJSON(text));
  } catch (const JSONError& error) {
    throw failure(error);
  } catch (const DecodingError& error) {
    throw failure(error);
  }
}

void requireWhatADescriptionNeeds(const PartialResult& answer) {
  if (!answer.summary || answer.summary->empty()) throw TQError::schemaValidationFailed("missing 'summary'");
  if (!answer.shots || answer.shots->empty()) throw TQError::schemaValidationFailed("missing or empty 'shots'");
  if (!answer.global) throw TQError::schemaValidationFailed("missing 'global'");
}

std::string_view withoutFence(std::string_view text) {
  constexpr std::string_view fence = "```";
  if (!text.starts_with(fence)) return text;
  const std::size_t lineBreak = text.find_first_of("\r\n");
  const bool opensALine = lineBreak != std::string_view::npos;
  std::string_view content = text.substr(opensALine ? lineBreak + 1 : 0);
  const std::size_t closing = content.rfind(fence);
  // On the opening line itself, the fence that begins the text is not the one that closes it.
  const bool closes = closing != std::string_view::npos && (opensALine || closing >= fence.size());
  return closes ? content.substr(0, closing) : content;
}

}  // namespace

DescriptionResult DescriptionBuilder::build(std::string_view rawText, SourceMetadata source, EngineMetadata engine,
                                            std::optional<TranscriptInfo> transcript) {
  PartialResult answer = decodeAnswer(stripFences(rawText));
  requireWhatADescriptionNeeds(answer);
  return {.schemaVersion = answer.schemaVersion.value_or(SchemaVersion::current),
          .source = std::move(source),
          .engine = std::move(engine),
          .summary = std::move(*answer.summary),
          .shots = std::move(*answer.shots),
          .global = std::move(*answer.global),
          .flagged = answer.flagged,
          .reviewFlag = answer.reviewFlag,
          .reviewReason = std::move(answer.reviewReason),
          .transcript = std::move(transcript)};
}

std::string_view DescriptionBuilder::stripFences(std::string_view text) {
  text = withoutFence(trimmed(text));
  if (const std::size_t open = text.find('{'); open != std::string_view::npos) text.remove_prefix(open);
  if (const std::size_t close = text.rfind('}'); close != std::string_view::npos) text = text.substr(0, close + 1);
  return trimmed(text);
}

}  // namespace tq
