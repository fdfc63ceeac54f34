#pragma once

#include <array>
#include <string>
#include <string_view>

#include "TQCore/Models/Job.hpp"
#include "TQPlatform/Concurrency/Clock.hpp"

namespace tq {

/// The groups of the sidebar, in the order in which it shows them.
enum class QueueSection { running, queued, done, failed };

template <>
inline constexpr auto rawValues<QueueSection> = std::to_array<std::string_view>({"Running", "Queued", "Done",
                                                                                 "Failed"});

/// What a status means to whoever looks at the window.
struct StatusWords {
  std::string_view label;
  std::string_view waiting;  ///< what the pane of a job without an outcome says
  QueueSection section;
  bool isWorking;  ///< the job has a slot
  bool canRetry;
  bool canCancel;
};

const StatusWords& wordsOf(JobStatus status);

/// "none", "refused" or "needsReview".
std::string_view nameOf(JobBadge::Kind kind);

/// "Model refused", or "Needs review — lens cap"; empty for no badge.
std::string helpTextOf(const JobBadge& badge);

/// What a finished clip shows, in one line; empty: nothing to say.
std::string oneLineOf(const Job& job);

/// What the job is run with, or what its result was made with: "Anthropic · claude-… · standard · adaptive"; empty:
/// neither is known.
std::string engineSubtitleOf(const Job& job);

/// "(1:05 elapsed)": whole minutes and seconds, none for a time before its beginning.
std::string elapsedText(Date::duration time);

}  // namespace tq
