#include "TQFrames/FolderWatcher.hpp"

#include <chrono>
#include <optional>
#include <system_error>
#include <utility>

#include "TQPlatform/Cancelled.hpp"
#include "TQPlatform/SystemError.hpp"

namespace tq {

namespace fs = std::filesystem;

namespace {

std::chrono::nanoseconds nanoseconds(double seconds) {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(Seconds(seconds));
}

std::unique_ptr<DirectoryEvents> makeSources() {
  try {
    return std::make_unique<DirectoryEvents>();
  } catch (const SystemError&) {
    return nullptr;
  }
}

/// The state of one entry of a folder; absent for a hidden one and for what is no regular file or cannot be looked at.
std::optional<WatchFolderLogic::FileEvent> eventFor(const fs::directory_entry& entry) {
  std::error_code error;
  const fs::path& url = entry.path();
  if (url.filename().native().starts_with('.')) return std::nullopt;
  if (entry.is_symlink(error) || !entry.is_regular_file(error)) return std::nullopt;
  // The size first: should the file be written to in between, its date is then too new for it to be reported.
  const auto size = fs::file_size(url, error);
  if (error) return std::nullopt;
  return WatchFolderLogic::FileEvent{.url = url,
                                     .modified = WatchFolderLogic::modificationDate(url).value_or(Date::min()),
                                     .size = static_cast<std::int64_t>(size)};
}

}  // namespace

FolderWatcher::FolderWatcher(std::vector<fs::path> paths, std::vector<std::string> exclusionGlobs, double debounce,
                             Emit emit, std::shared_ptr<const Clock> clock)
    : paths_(std::move(paths)),
      exclusionGlobs_(std::move(exclusionGlobs)),
      debounce_(debounce),
      emit_(std::move(emit)),
      clock_(std::move(clock)) {}

FolderWatcher::~FolderWatcher() {
  stop();
}

void FolderWatcher::start() {
  std::unique_ptr<Watch> unstarted;  // outlives the hold: its tasks may wait to enter
  const auto held = monitor_.enter();
  if (running_) return;
  seedSnapshot();
  running_ = std::make_unique<Watch>();
  running_->sources = makeSources();
  installSources();
  try {
    running_->tasks.start([this](std::stop_token stop) { runPeriodicTimer(stop); });
    if (auto* const sources = running_->sources.get())
      running_->tasks.start([this, sources](std::stop_token stop) { followEvents(*sources, stop); });
  } catch (const std::system_error&) {
    unstarted = std::move(running_);
    throw;
  }
}

void FolderWatcher::stop() {
  std::unique_ptr<Watch> ended;  // outlives the hold: its tasks may wait to enter
  const auto held = monitor_.enter();
  ended = std::move(running_);
}

void FolderWatcher::seedSnapshot() {
  const Date late = clock_->now() + nanoseconds(debounce_ + 1.0);
  snapshot_ = WatchFolderLogic::reduce({}, currentEvents(), late, debounce_, exclusionGlobs_).next;
}

void FolderWatcher::installSources() {
  if (!running_->sources) return;
  for (const fs::path& folder : paths_)
    running_->sources->watch(folder);
}

void FolderWatcher::runPeriodicTimer(const std::stop_token& stop) {
  try {
    for (;;) {
      clock_->sleep(nanoseconds(debounce_), stop);
      rescan();
    }
  } catch (const Cancelled&) {
    // The watcher was stopped.
  }
}

void FolderWatcher::followEvents(DirectoryEvents& sources, const std::stop_token& stop) {
  try {
    for (;;) {
      sources.wait(stop);
      rescan();
    }
  } catch (const Cancelled&) {
    // The watcher was stopped.
  } catch (const SystemError&) {
    // The timer goes on alone.
  }
}

void FolderWatcher::rescan() {
  const auto held = monitor_.enter();
  if (!running_) return;
  installSources();  // another folder may have taken the place of one
  auto [ready, next] = WatchFolderLogic::reduce(snapshot_, currentEvents(), clock_->now(), debounce_, exclusionGlobs_);
  snapshot_ = std::move(next);
  for (const fs::path& url : ready)
    emit_(url);
}

std::vector<WatchFolderLogic::FileEvent> FolderWatcher::currentEvents() const {
  std::vector<FileEvent> events;
  for (const fs::path& folder : paths_) {
    std::error_code error;
    for (auto entry = fs::directory_iterator(folder, error); !error && entry != fs::directory_iterator();
         entry.increment(error))
      if (auto event = eventFor(*entry)) events.push_back(std::move(*event));
  }
  return events;
}

}  // namespace tq
