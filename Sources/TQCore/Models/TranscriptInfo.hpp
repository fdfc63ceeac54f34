#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TQCore/RecordJSON.hpp"

namespace tq {

/// Words of one speaker, where a provider tells the speakers apart.
struct TranscriptSpeakerTurn {
  std::int64_t speaker = 0;
  double startSeconds = 0;
  double endSeconds = 0;
  std::string text;

  bool operator==(const TranscriptSpeakerTurn&) const = default;
};
TQ_RECORD(TranscriptSpeakerTurn);

/// What was said in the clip.
struct TranscriptInfo {
  std::string text;      ///< the whole transcript
  std::string provider;  ///< id of the transcription provider
  std::string model;
  std::optional<std::string> language;
  std::optional<std::vector<TranscriptSpeakerTurn>> speakers;

  bool operator==(const TranscriptInfo&) const = default;
};
TQ_RECORD(TranscriptInfo);

}  // namespace tq
