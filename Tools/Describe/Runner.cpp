#include "Tools/Describe/Runner.hpp"

#include <chrono>
#include <utility>

#include "TQFrames/WatcherLifecycle.hpp"

namespace tq::describe {

namespace {

constexpr std::chrono::milliseconds betweenTicks{500};

}  // namespace

Runner::Runner(AppSettings settings, std::shared_ptr<const SecretsStore> secrets, JobStages stages, std::ostream& out,
               std::optional<int> terminalColumns, std::function<bool()> isOutputAbandoned)
    : settings_(std::move(settings)),
      secrets_(std::move(secrets)),
      stages_(std::move(stages)),
      out_(out),
      isOutputAbandoned_(std::move(isOutputAbandoned)),
      display_(out, terminalColumns, *stages_.clock) {
  recordOutputs();
  JobList::Observer& view = *this;
  WorkQueue::Observer& observer = *this;
  queue_ = std::make_unique<WorkQueue>(WorkQueueParts{.settings = settings_, .secrets = secrets_, .stages = stages_},
                                       loop_.executor(), view, observer);
}

/// The engine tells of jobs, not of files; whoever composes it listens at the two stages that write.
void Runner::recordOutputs() {
  const auto record = [this](const std::filesystem::path& clip, const std::vector<std::filesystem::path>& files) {
    std::lock_guard lock(outputsMutex_);
    auto& known = outputs_[clip];
    known.insert(known.end(), files.begin(), files.end());
  };
  stages_.writeDescription = [record, write = std::move(stages_.writeDescription)](const DescriptionResult& result,
                                                                                   const std::filesystem::path& clip,
                                                                                   const OutputConfig& config) {
    auto files = write(result, clip, config);
    record(clip, files);
    return files;
  };
  stages_.writePoster = [record, write = std::move(stages_.writePoster)](
                            ByteView jpegData, const std::filesystem::path& clip, const OutputConfig& config) {
    auto file = write(jpegData, clip, config);
    if (file) record(clip, {*file});
    return file;
  };
}

std::vector<std::filesystem::path> Runner::outputsOf(const std::filesystem::path& clip) {
  std::lock_guard lock(outputsMutex_);
  const auto known = outputs_.extract(clip);
  return known ? known.mapped() : std::vector<std::filesystem::path>{};
}

ExitStatus Runner::describe(const Worklist& work) {
  take(work);
  turnLoopWhile([this] { return !queue_->isIdle(); });
  return finish();
}

ExitStatus Runner::watch(std::vector<std::filesystem::path> folders, const std::function<Worklist()>& findWork) {
  const std::size_t count = folders.size();
  WatcherLifecycle watcher(
      loop_.executor(), stages_.clock, [this](const auto& clip) { queue_->handleWatchedFile(clip); },
      [&] {
        display_.say("Watching " + std::to_string(count) + (count == 1 ? " folder" : " folders") + "; Ctrl-C ends.");
        take(findWork());
      });
  watcher.watch(WatcherLifecycle::Wish{.folders = std::move(folders), .exclusionGlobs = settings_.watchExclusionGlobs});
  turnLoopWhile([this] { return !(wasInterrupted_ && queue_->isIdle()); });
  return finish();
}

void Runner::interrupt() {
  loop_.post([this] { noteInterrupt(); });
}

void Runner::noteInterrupt() {
  if (std::exchange(wasInterrupted_, true)) return;
  if (!queue_->isIdle()) display_.say("Cancelling. Ctrl-C again leaves at once.");
  queue_->cancelAll();
}

void Runner::noteAbandonment() {
  if (out_ || wasAbandoned_ || !isOutputAbandoned_()) return;
  wasAbandoned_ = true;
  noteInterrupt();
}

void Runner::take(const Worklist& work) {
  if (work.upToDate > 0) display_.say(upToDateText(work));
  if (wasInterrupted_ || work.clips.empty()) return;
  display_.expect(queue_->jobs().size() + work.clips.size());
  queue_->enqueueClips(work.clips);
}

void Runner::turnLoopWhile(const std::function<bool()>& isToGoOn) {
  while (isToGoOn()) {
    if (!loop_.runNext(betweenTicks)) display_.tick();
    noteAbandonment();
  }
}

ExitStatus Runner::finish() {
  queue_.reset();
  display_.finish();
  if (wasAbandoned_) return abandoned;
  if (hasCancelled_) return interrupted;
  return hasFailed_ ? notAllDone : allDone;
}

/// Clips may still come in from what was under way when the interrupt came.
void Runner::rowsWereAppended() {
  display_.expect(queue_->jobs().size());
  if (wasInterrupted_) queue_->cancelAll();
}

void Runner::rowWasReplaced(std::size_t, const Job& before, const Job& after) {
  if (isTerminal(before.status)) return;  // it only lets its frames go
  hasFailed_ = hasFailed_ || after.status == JobStatus::failed;
  hasCancelled_ = hasCancelled_ || after.status == JobStatus::cancelled;
  display_.show(after,
                after.status == JobStatus::done ? outputsOf(after.sourceURL) : std::vector<std::filesystem::path>{});
}

}  // namespace tq::describe
