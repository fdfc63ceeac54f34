#include "TQPersistence/QueueStore.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "TQCore/RecordCodec.hpp"
#include "TQCore/SafeFile.hpp"
#include "TQPersistence/StoreFile.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

namespace fs = std::filesystem;
namespace chr = std::chrono;

namespace {

struct ClipPath {
  fs::path value;
};

struct CreationDate {
  Date value;
};

/// What the file keeps of a job.
struct PersistedJob {
  UUID id;
  ClipPath sourcePath;
  JobStatus status = JobStatus::queued;
  std::optional<std::string> error;
  CreationDate createdAt;
  std::optional<EngineSnapshot> engineSnapshot;
  std::optional<OutputConfig> outputOverride;
};

constexpr chr::sys_seconds referenceDate = chr::sys_days(chr::January / 1 / 2001);

double secondsSinceReference(Date date) {
  const auto whole = chr::floor<chr::seconds>(date);
  // A count of nanoseconds would be rounded twice on its way to a double, and a date of the file would change.
  return Seconds(whole - referenceDate).count() + Seconds(date - whole).count();
}

/// The date, or the nearest one that is representable beyond doubt: an absurd number is no reason to lose a queue.
Date dateOf(double secondsSinceReference) {
  constexpr double farthest = Seconds(chr::years(250)).count();
  const double seconds = std::clamp(secondsSinceReference, -farthest, farthest);
  const double whole = std::floor(seconds);
  return referenceDate + chr::seconds(static_cast<std::int64_t>(whole)) +
         chr::round<Date::duration>(Seconds(seconds - whole));
}

}  // namespace

/// An absolute path. JSON holds no text that is not UTF-8, so a path that is none stands as its file URL, which keeps
/// every byte; the two forms cannot be confused, and either is read. Any other text is a path as well, whose job fails
/// when it is run: one odd path is no reason to lose a queue.
template <>
struct ValueCodec<ClipPath> {
  static std::string expected() { return "a path"; }
  static ClipPath read(JSONView value) { return {readText<fs::path, &parse>(value, expected())}; }
  static JSONValue write(const ClipPath& path) {
    std::error_code error;  // there is no absolute form of the empty path, nor any while the current folder is gone
    const fs::path absolute = fs::absolute(path.value, error);
    const std::string text = error ? path.value.string() : absolute.string();
    return isValidUTF8(text) ? text : fileURL(text);
  }

 private:
  static std::optional<fs::path> parse(std::string_view text) {
    if (text.find('\0') != std::string_view::npos) return std::nullopt;
    return parseFileURL(text).value_or(text);
  }
};

/// Seconds since 2001-01-01T00:00:00Z.
template <>
struct ValueCodec<CreationDate> {
  static std::string expected() { return ValueCodec<double>::expected(); }
  static CreationDate read(JSONView value) { return {dateOf(ValueCodec<double>::read(value))}; }
  static JSONValue write(const CreationDate& date) { return secondsSinceReference(date.value); }
};

namespace {

constexpr RecordTable persistedJobTable{
    field("id", &PersistedJob::id),
    field("sourcePath", &PersistedJob::sourcePath),
    field("status", &PersistedJob::status),
    field("error", &PersistedJob::error),
    field("createdAt", &PersistedJob::createdAt),
    field("engineSnapshot", &PersistedJob::engineSnapshot),
    field("outputOverride", &PersistedJob::outputOverride),
};

bool isWorthKeeping(const Job& job) {
  return job.status != JobStatus::done && job.status != JobStatus::cancelled;
}

PersistedJob persisted(const Job& job) {
  PersistedJob entry{.id = job.id,
                     .sourcePath = {job.sourceURL},
                     .status = job.status,
                     .error = job.error,
                     .createdAt = {job.createdAt},
                     .engineSnapshot = job.engineSnapshot,
                     .outputOverride = job.outputOverride};
  // A message may quote a file's name, whose bytes are the user's business; one such name must not fail every save.
  if (entry.error) entry.error = validUTF8(*entry.error);
  return entry;
}

Job restored(PersistedJob entry) {
  Job job;
  job.id = entry.id;
  job.sourceURL = std::move(entry.sourcePath.value);
  job.status = isTerminal(entry.status) ? entry.status : JobStatus::queued;
  if (entry.status == JobStatus::failed) job.error = std::move(entry.error);
  job.engineSnapshot = std::move(entry.engineSnapshot);
  job.createdAt = entry.createdAt.value;
  job.outputOverride = std::move(entry.outputOverride);
  return job;
}

std::vector<Job> restoredJobs(const JSONValue& json) {
  const JSONValue::Array* entries = json.asArray();
  if (!entries) throwUnexpected(json, "a list");
  std::vector<Job> jobs;
  jobs.reserve(entries->size());
  for (const JSONValue& entry : *entries)
    jobs.push_back(restored(persistedJobTable.read(entry)));
  return jobs;
}

}  // namespace

void QueueStore::save(std::span<const std::shared_ptr<const Job>> jobs) const {
  std::vector<const Job*> kept;
  for (const auto& job : jobs)
    if (isWorthKeeping(*job)) kept.push_back(job.get());
  const auto entry = [&kept](std::size_t index) { return persistedJobTable.write(persisted(*kept[index])); };
  // One entry at a time: the tree of a long queue is ten times its text, and most of the time went into building it.
  writeStoreFile(url, writeJSONList(kept.size(), entry, JSONLayout::pretty), StoreFileMode::ownerOnlyIfPossible);
}

std::vector<Job> QueueStore::load() const {
  try {
    // A queue has no natural length, so only a file that no queue of clips can explain is refused.
    return restoredJobs(parseJSON(textOf(SafeFile::readBounded(url, SafeFile::maxAggregateBytes))));
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace tq
