#include "TQDescription/Library/SourceTabFormatter.hpp"

#include "TQDescription/GPSText.hpp"
#include "TQPlatform/Text/NumberText.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

/// How many faces were found in all shots; absent when no shot was looked at for faces.
std::optional<std::size_t> detectedFaces(const std::vector<Shot>& shots) {
  std::optional<std::size_t> count;
  for (const Shot& shot : shots)
    if (shot.faces) count = count.value_or(0) + shot.faces->size();
  return count;
}

}  // namespace

std::vector<SourceTabFormatter::Row> SourceTabFormatter::rows(const DescriptionResult& result,
                                                              const std::filesystem::path& sourceURL) {
  const SourceMetadata& source = result.source;
  const EngineMetadata& engine = result.engine;
  std::vector<Row> rows{
      {"File", validUTF8(sourceURL.native())},
      {"Provider", engine.provider},
      {"Model", engine.model},
      {"Frames analyzed", std::to_string(engine.framesAnalyzed)},
      {"Sampling", engine.samplingStrategy},
      {"Duration", fixedText(source.durationSeconds, 2) + "s"},
      {"Resolution", source.resolution},
      {"Codec", source.codec},
  };
  if (source.gps) rows.push_back({"GPS", formatGPS(*source.gps)});
  if (result.transcript) rows.push_back({"Transcript", formatTranscript(*result.transcript)});
  if (auto status = formatStatus(result.flagged, result.reviewFlag, result.reviewReason))
    rows.push_back({"Status", std::move(*status)});
  if (const auto faces = detectedFaces(result.shots)) rows.push_back({"Faces detected", std::to_string(*faces)});
  return rows;
}

std::string SourceTabFormatter::formatGPS(const GPS& gps) {
  return gpsText(gps);
}

std::string SourceTabFormatter::formatTranscript(const TranscriptInfo& transcript) {
  const std::string engine = transcript.provider + "/" + transcript.model;
  const bool hasLanguage = transcript.language && !transcript.language->empty();
  return hasLanguage ? engine + " (" + *transcript.language + ")" : engine;
}

std::optional<std::string> SourceTabFormatter::formatStatus(std::optional<bool> flagged, std::optional<bool> reviewFlag,
                                                            const std::optional<std::string>& reviewReason) {
  if (flagged == true) return "Refused by model";
  if (reviewFlag != true) return std::nullopt;
  if (!reviewReason || reviewReason->empty()) return "Needs review";
  return "Needs review — " + *reviewReason;
}

}  // namespace tq
