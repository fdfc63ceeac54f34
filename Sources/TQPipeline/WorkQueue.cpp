#include "TQPipeline/WorkQueue.hpp"

#include <algorithm>
#include <limits>
#include <set>
#include <utility>

#include "TQDescription/SidecarNames.hpp"
#include "TQFrames/VideoExpansion.hpp"
#include "TQFrames/WatchFolderLogic.hpp"
#include "TQPipeline/ConfiguredEngine.hpp"
#include "TQPlatform/FileSystem/TemporaryFile.hpp"

namespace tq {

namespace fs = std::filesystem;

namespace {

/// How many jobs one turn of the owner's event loop deals with at most. A view that redraws its rows makes each cost
/// some microseconds, so a turn stays far below the time of one picture of a screen.
constexpr std::size_t longestSlice = 256;

/// The first ones may be the rows that a view makes and shows, which cost a hundred times as much.
constexpr std::size_t firstSlice = 4;

/// How much news is applied at a time. A piece of news moves a row of a view, which then costs up to a tenth of a
/// millisecond; the owner looks at its clock between one portion and the next.
constexpr std::size_t newsLength = 4;

/// Calls `use` with one slice of `items` after the other, each twice as long as the one before.
template <class Item, class Use>
void forEachSlice(std::vector<Item> items, Use use) {
  std::size_t most = firstSlice;
  for (auto from = items.begin(); from != items.end(); most = std::min(2 * most, longestSlice)) {
    const auto length = std::min(static_cast<std::ptrdiff_t>(most), items.end() - from);
    use(std::vector<Item>(std::make_move_iterator(from), std::make_move_iterator(from + length)));
    from += length;
  }
}

/// New jobs that wait, one for each clip.
std::vector<JobList::Row> newJobs(const std::vector<fs::path>& clips, const EngineSnapshot& engine, Date now,
                                  const std::optional<OutputConfig>& outputOverride) {
  std::vector<JobList::Row> jobs;
  jobs.reserve(clips.size());
  for (const fs::path& clip : clips) {
    Job job;
    job.id = UUID::random();
    job.sourceURL = clip;
    job.engineSnapshot = engine;
    job.createdAt = now;
    job.outputOverride = outputOverride;
    jobs.push_back(std::make_shared<const Job>(std::move(job)));
  }
  return jobs;
}

bool isWaiting(const JobList::Row& job) {
  return job->status == JobStatus::queued;
}

}  // namespace

WorkQueue::WorkQueue(WorkQueueParts parts, Executor owner, JobList::Observer& view, Observer& observer)
    : clock_(parts.stages.clock),
      owner_(owner),
      observer_(observer),
      settings_(parts.settings),
      jobs_(view),
      frames_(parts.frameBudget),
      store_(std::move(parts.store)),
      orchestrator_(std::move(parts.settings), std::move(parts.secrets), std::move(parts.stages),
                    [this](const Job& job) {
                      if (updates_.put(job)) owner_.post([this] { applyUpdates(); });
                    }) {
  if (store_)
    writer_ = std::make_unique<QueueWriter>(
        *store_, std::move(owner), [this] { return jobs_.rows(); },
        [this](const std::string& problem) { observer_.queueWasNotSaved("Could not save the queue: " + problem); });
}

WorkQueue::~WorkQueue() {
  finish();
}

void WorkQueue::updateSettings(AppSettings settings) {
  settings_ = settings;
  engineCalls_.post(
      [this, settings = std::move(settings)]() mutable { orchestrator_.updateSettings(std::move(settings)); });
}

void WorkQueue::restore() {
  if (!store_) return;
  writer_->hold();
  takeInBy([this, output = settings_.output] {
    Rows rows;
    std::set<fs::path> folders{store_->url.parent_path()};
    for (Job& job : store_->load()) {
      folders.insert(sidecarFolder(job.sourceURL, job.outputOverride.value_or(output)));
      rows.push_back(std::make_shared<const Job>(std::move(job)));
    }
    forEachSlice(std::move(rows), [this](Rows slice) {
      owner_.post([this, slice = std::move(slice)]() mutable { takeIn(std::move(slice)); });
    });
    owner_.post([this] { writer_->release(); });
    // What a run that was killed left half written, where it can have been at work.
    std::for_each(folders.begin(), folders.end(), removeAbandonedTemporaries);
  });
}

void WorkQueue::enqueue(std::vector<fs::path> urls) {
  makeJobs([urls = std::move(urls)] { return expandToVideos(urls); }, std::nullopt);
}

void WorkQueue::enqueueClips(std::vector<fs::path> clips) {
  makeJobs([clips = std::move(clips)] { return clips; }, std::nullopt);
}

void WorkQueue::enqueueRerate(const std::vector<RerateCandidate>& candidates) {
  std::vector<fs::path> clips;
  for (const RerateCandidate& candidate : candidates)
    clips.push_back(candidate.sourceURL);
  OutputConfig output = settings_.output;
  output.conflictPolicy = ConflictPolicy::overwrite;
  makeJobs([clips = std::move(clips)] { return clips; }, std::move(output));
}

/// Has the intake's thread do that. All that it posts to the owner arrives before the work counts as done.
void WorkQueue::takeInBy(std::function<void()> work) {
  ++takingIn_;
  intake_.post([this, work = std::move(work)] {
    work();
    owner_.post([this] { --takingIn_; });
  });
}

/// The jobs are made on the intake's thread, and taken in on the owner's.
void WorkQueue::makeJobs(std::function<std::vector<fs::path>()> clips, std::optional<OutputConfig> outputOverride) {
  takeInBy([this, clips = std::move(clips), outputOverride = std::move(outputOverride),
            engine = currentEngineSnapshot(settings_), now = clock_->now()] {
    forEachSlice(newJobs(clips(), engine, now, outputOverride), [this](Rows slice) {
      owner_.post([this, slice = std::move(slice)]() mutable {
        takeIn(std::move(slice));
        persistQueue();
      });
    });
  });
}

void WorkQueue::handleWatchedFile(fs::path url) {
  takeInBy([this, url = std::move(url), sidecars = settings_.output.sidecarDirectory] {
    if (!WatchFolderLogic::shouldEnqueue(url, sidecars)) return;
    owner_.post([this, clips = expandToVideos({url})] {
      // Looked at and taken in within one turn, so that two reports of a clip cannot both find it idle.
      std::vector<fs::path> idle;
      std::copy_if(clips.begin(), clips.end(), std::back_inserter(idle),
                   [this](const fs::path& clip) { return !jobs_.isActive(clip); });
      if (idle.empty()) return;
      takeIn(newJobs(idle, currentEngineSnapshot(settings_), clock_->now(), std::nullopt));
      persistQueue();
    });
  });
}

/// Appends the jobs and starts those that wait.
void WorkQueue::takeIn(Rows rows) {
  std::vector<Job> waiting;
  for (const JobList::Row& job : rows)
    if (isWaiting(job)) waiting.push_back(*job);
  const std::optional<UUID> first = rows.empty() ? std::nullopt : std::optional(rows.front()->id);
  jobs_.append(std::move(rows));
  if (!selectedJobID_) select(first);
  noteActiveCount();
  if (waiting.empty()) return;
  engineCalls_.post([this, waiting = std::move(waiting)]() mutable { orchestrator_.add(std::move(waiting)); });
}

void WorkQueue::applyUpdates() {
  applyUpdates(newsLength);
  if (!updates_.empty()) owner_.post([this] { applyUpdates(); });
}

void WorkQueue::applyUpdates(std::size_t most) {
  bool queueChanged = false;
  for (Job& job : updates_.take(most))
    queueChanged = applyJobUpdate(std::move(job)) || queueChanged;
  trimFrames();
  noteActiveCount();
  if (queueChanged) persistQueue();
}

/// True when the job is new or its status has changed: progress alone is never written.
bool WorkQueue::applyJobUpdate(Job job) {
  frames_.note(job);
  const auto row = jobs_.rowOf(job.id);
  if (!row) {
    jobs_.append({std::make_shared<const Job>(std::move(job))});
    return true;
  }
  const bool statusChanges = jobs_[*row].status != job.status;
  jobs_.replace(*row, std::move(job));
  return statusChanges;
}

/// Lets the frames of the jobs that finished longest ago go, as they would at a restart.
void WorkQueue::trimFrames() {
  for (const UUID& id : frames_.takeExcess(selectedJobID_)) {
    const auto row = jobs_.rowOf(id);
    if (!row) continue;
    Job job = jobs_[*row];
    job.frames = {};
    jobs_.replace(*row, std::move(job));
  }
}

void WorkQueue::retry(const std::vector<UUID>& ids) {
  std::vector<Job> again;
  for (const UUID& id : ids) {
    const auto row = jobs_.rowOf(id);
    if (!row) continue;
    Job job = jobs_[*row];
    job.status = JobStatus::queued;
    job.error = {};
    job.progress = 0;
    job.result = {};
    frames_.note(job);
    again.push_back(job);
    jobs_.replace(*row, std::move(job));
  }
  if (again.empty()) return;
  persistQueue();
  noteActiveCount();
  engineCalls_.post([this, again = std::move(again)]() mutable { orchestrator_.add(std::move(again)); });
}

void WorkQueue::retryAll() {
  const auto mayRunAgain = [](const Job& job) {
    return job.status == JobStatus::failed || job.status == JobStatus::cancelled;
  };
  forEachSlice(idsOf(mayRunAgain), [this, mayRunAgain](std::vector<UUID> slice) {
    owner_.post([this, mayRunAgain, slice = std::move(slice)]() mutable {
      std::erase_if(slice, [&](const UUID& id) {
        const auto row = jobs_.rowOf(id);
        return !row || !mayRunAgain(jobs_[*row]);
      });
      retry(slice);
    });
  });
}

void WorkQueue::cancel(std::vector<UUID> ids) {
  engineCalls_.post([this, ids = std::move(ids)] {
    // From the back, so that no end of a running job starts one that is about to be cancelled.
    std::for_each(ids.rbegin(), ids.rend(), [this](const UUID& id) { orchestrator_.cancel(id); });
  });
}

void WorkQueue::cancelAll() {
  cancel(idsOf([](const Job& job) { return !isTerminal(job.status); }));
}

void WorkQueue::removeCompleted() {
  for (const UUID& id : idsOf([](const Job& job) { return job.status == JobStatus::done; }))
    frames_.forget(id);
  // Taking thousands of jobs apart takes longer than letting go of them.
  engineCalls_.post([gone = jobs_.removeAll(JobStatus::done)]() mutable { gone.clear(); });
  persistQueue();
}

void WorkQueue::select(std::optional<UUID> id) {
  if (id == selectedJobID_) return;
  selectedJobID_ = id;
  trimFrames();
  observer_.selectionChanged();
}

void WorkQueue::finish() {
  applyUpdates(std::numeric_limits<std::size_t>::max());
  if (writer_) writer_->finish();
}

void WorkQueue::persistQueue() {
  if (writer_) writer_->noteChange();
}

void WorkQueue::noteActiveCount() {
  if (std::exchange(shownActiveCount_, jobs_.activeCount()) != jobs_.activeCount()) observer_.activeCountChanged();
}

template <class Wanted>
std::vector<UUID> WorkQueue::idsOf(Wanted wanted) const {
  std::vector<UUID> ids;
  for (const JobList::Row& job : jobs_.rows())
    if (wanted(*job)) ids.push_back(job->id);
  return ids;
}

}  // namespace tq
