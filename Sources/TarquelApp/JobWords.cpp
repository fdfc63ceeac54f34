#include "TarquelApp/JobWords.hpp"

#include <algorithm>
#include <chrono>

#include "TQDescription/JoinedText.hpp"
#include "TQPlatform/Text/NumberText.hpp"

namespace tq {

namespace {

using namespace std::chrono_literals;
using enum QueueSection;

/// In the order of `JobStatus`.
constexpr std::array<StatusWords, 7> statusWords{{
    {.label = "Queued",
     .waiting = "Waiting in queue…",
     .section = queued,
     .isWorking = false,
     .canRetry = false,
     .canCancel = true},
    {.label = "Extracting frames",
     .waiting = "Extracting frames…",
     .section = running,
     .isWorking = true,
     .canRetry = false,
     .canCancel = true},
    {.label = "Calling vision model",
     .waiting = "Asking the vision model…",
     .section = running,
     .isWorking = true,
     .canRetry = false,
     .canCancel = true},
    {.label = "Writing sidecar",
     .waiting = "Writing sidecar files…",
     .section = running,
     .isWorking = true,
     .canRetry = false,
     .canCancel = true},
    {.label = "Done", .waiting = "", .section = done, .isWorking = false, .canRetry = false, .canCancel = false},
    {.label = "Failed", .waiting = "", .section = failed, .isWorking = false, .canRetry = true, .canCancel = false},
    {.label = "Cancelled", .waiting = "", .section = failed, .isWorking = false, .canRetry = true, .canCancel = false},
}};
static_assert(statusWords.size() == rawValues<JobStatus>.size());

}  // namespace

const StatusWords& wordsOf(JobStatus status) {
  return statusWords[static_cast<std::size_t>(status)];
}

std::string_view nameOf(JobBadge::Kind kind) {
  switch (kind) {
    case JobBadge::Kind::none: return "none";
    case JobBadge::Kind::refused: return "refused";
    case JobBadge::Kind::needsReview: return "needsReview";
  }
  return "none";
}

std::string helpTextOf(const JobBadge& badge) {
  switch (badge.kind) {
    case JobBadge::Kind::none: return "";
    case JobBadge::Kind::refused: return "Model refused";
    case JobBadge::Kind::needsReview:
      return badge.reason.value_or("").empty() ? "Needs review" : "Needs review — " + *badge.reason;
  }
  return "";
}

std::string oneLineOf(const Job& job) {
  if (job.status != JobStatus::done || !job.result) return "";
  return job.result->global.overallSummaryOneLine.value_or("");
}

std::string engineSubtitleOf(const Job& job) {
  constexpr std::string_view separator = " · ";
  if (const auto& engine = job.engineSnapshot)
    return joined({engine->providerDisplay, engine->modelId, engine->promptProfile, engine->samplingStrategy},
                  separator);
  if (!job.result) return "";
  const EngineMetadata& engine = job.result->engine;
  return joined({engine.provider, engine.model, engine.samplingStrategy}, separator);
}

std::string elapsedText(Date::duration time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(std::max(time, Date::duration(0)));
  return "(" + std::to_string(seconds / 1min) + ":" + paddedText((seconds % 1min).count(), 2) + " elapsed)";
}

}  // namespace tq
