#include "TQFrames/FolderWatcher.hpp"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <ranges>
#include <set>
#include <system_error>
#include <utility>

#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq {

namespace fs = std::filesystem;

namespace {

std::unique_ptr<DirectoryEvents> makeSources() {
  try {
    return std::make_unique<DirectoryEvents>();
  } catch (const SystemError&) {
    return nullptr;
  }
}

void passOnEvents(DirectoryEvents& sources, RescanSchedule& schedule, const std::stop_token& stop) {
  try {
    for (;;) {
      sources.wait(stop);
      schedule.noteEvent();
    }
  } catch (const Cancelled&) {
    // The watcher was stopped.
  } catch (const SystemError&) {
    // The timer goes on alone.
  }
}

}  // namespace

FolderWatcher::FolderWatcher(Paths paths, std::vector<std::string> exclusionGlobs, double debounce, Emit emit,
                             std::shared_ptr<const Clock> clock)
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
  try {
    seedSnapshot();
  } catch (const Cancelled&) {
    return;
  }
  const auto period = std::chrono::duration_cast<RescanSchedule::Duration>(Seconds(debounce_));
  running_.reset(new Watch{.schedule{period, clock_}, .sources = makeSources(), .tasks{}});
  installSources();
  auto& [schedule, sources, tasks] = *running_;
  try {
    tasks.start([this, &schedule](std::stop_token stop) { rescanWheneverDue(schedule, stop); });
    if (sources) tasks.start([&sources, &schedule](std::stop_token stop) { passOnEvents(*sources, schedule, stop); });
  } catch (const std::system_error&) {
    unstarted = std::move(running_);
    throw;
  }
}

void FolderWatcher::stop() {
  std::unique_ptr<Watch> ended;  // outlives the hold: its tasks may wait to enter
  ++stopping_;
  const auto held = monitor_.enter();
  --stopping_;
  ended = std::move(running_);
}

/// Takes files of any date for reported, those of the future too: it may be the clock that is wrong, and set right
/// later.
void FolderWatcher::seedSnapshot() {
  const auto listings = currentEvents();
  snapshot_.clear();
  for (const Listing& listing : listings)
    takeUp(listing, Date::max(), 0);
}

void FolderWatcher::installSources() {
  if (!running_->sources) return;
  for (const fs::path& folder : paths_)
    running_->sources->watch(folder);
}

void FolderWatcher::rescanWheneverDue(RescanSchedule& schedule, const std::stop_token& stop) {
  try {
    for (;;) {
      schedule.waitUntilDue(stop);
      rescan();
      schedule.noteEnd();
    }
  } catch (const Cancelled&) {
    // The watcher was stopped.
  }
}

void FolderWatcher::rescan() {
  const auto held = monitor_.enter();
  if (!running_) return;
  installSources();                // another folder may have taken the place of one
  const Date now = clock_->now();  // the listing may take long, and a file it has passed may be written to meanwhile
  const auto listings = currentEvents();
  URLs ready;
  for (const Listing& listing : listings)
    std::ranges::move(takeUp(listing, now, debounce_), std::back_inserter(ready));
  for (const auto& url : ready)
    emit_(url);
}

/// What is to be reported of a folder. A file counts as reported when it was under any of the folder's spellings, so
/// that nothing comes twice when a link to the folder comes or goes.
FolderWatcher::URLs FolderWatcher::takeUp(const Listing& listing, Date now, double debounce) {
  URLs ready = takeUp(listing.events, now, debounce);
  const std::size_t first = listing.spellings.front().size();
  for (const URL& spelling : listing.spellings | std::views::drop(1)) {
    auto events = listing.events;
    for (FileEvent& event : events)
      event.url.replace(0, first, spelling);
    const URLs also = takeUp(events, now, debounce);
    const std::set<URL> alsoReady(also.begin(), also.end());
    std::erase_if(ready, [&](const URL& url) { return !alsoReady.contains(spelling + url.substr(first)); });
  }
  return ready;
}

FolderWatcher::URLs FolderWatcher::takeUp(const std::vector<FileEvent>& events, Date now, double debounce) {
  auto [ready, next] = WatchFolderLogic::reduce(std::move(snapshot_), events, now, debounce, exclusionGlobs_);
  snapshot_ = std::move(next);
  return ready;
}

std::vector<FolderWatcher::Listing> FolderWatcher::currentEvents() const {
  std::vector<Listing> listings;
  for (const fs::path& path : paths_) {
    try {
      FolderReader folder(path);
      const FileIdentity identity = folder.identity();
      const URL spelling = path / "";
      const auto known = std::ranges::find(listings, identity, &Listing::folder);
      if (known == listings.end())
        listings.push_back({.folder = identity, .spellings = {spelling}, .events = eventsIn(folder, spelling)});
      else if (std::ranges::find(known->spellings, spelling) == known->spellings.end())
        known->spellings.push_back(spelling);
    } catch (const SystemError&) {
      // A folder that cannot be listed holds nothing.
    }
  }
  return listings;
}

std::vector<FolderWatcher::FileEvent> FolderWatcher::eventsIn(FolderReader& folder, const URL& spelling) const {
  std::vector<FileEvent> events;
  while (const auto entry = folder.next()) {
    if (stopping_ > 0) throw Cancelled();
    if (entry->kind.value_or(FileKind::regular) != FileKind::regular || entry->name.starts_with('.')) continue;
    if (!WatchFolderLogic::isCandidate(entry->name, exclusionGlobs_)) continue;
    const auto file = folder.look();
    if (!file || file->kind != FileKind::regular) continue;
    events.push_back({.url = spelling + std::string(entry->name),
                      .modified = file->modified.value_or(Date::min()),
                      .size = file->size});
  }
  return events;
}

}  // namespace tq
