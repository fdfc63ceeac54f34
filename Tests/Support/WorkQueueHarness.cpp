#include "Support/WorkQueueHarness.hpp"

#include <algorithm>
#include <chrono>
#include <stdexcept>

namespace tq::test {

namespace {

/// Nothing waits so long unless it hangs.
constexpr std::chrono::seconds patience{60};

void require(bool condition, const char* what) {
  if (!condition) throw std::runtime_error(std::string("a view was misled: ") + what);
}

}  // namespace

void QueueView::rowsWillBeAppended(std::size_t count) {
  require(list->size() == shown.size(), "rows appeared before they were announced");
  announced_ = count;
}

void QueueView::rowsWereAppended() {
  require(list->size() == shown.size() + announced_, "not as many rows as announced");
  arrivals.push_back(announced_);
  for (std::size_t row = shown.size(); row < list->size(); ++row)
    shown.push_back((*list)[row]);
}

void QueueView::rowsWillBeRemoved(JobStatus status) {
  require(list->size() == shown.size(), "rows went before they were announced");
  announced_ = std::erase_if(shown, [status](const Job& job) { return job.status == status; });
  require(announced_ > 0, "there are no such rows");
}
void QueueView::rowsWereRemoved() {
  require(list->size() == shown.size(), "not as many rows left as announced");
}

void QueueView::rowWasReplaced(std::size_t row, const Job& before, const Job& after) {
  require(row < shown.size() && shown[row] == before && (*list)[row] == after, "another row was replaced");
  if (before.status != after.status) statuses.push_back(after.status);
  shown[row] = after;
}

WorkQueueHarness::WorkQueueHarness() : store(QueueStore{engine.folder / "private/queue.json"}) {
  std::filesystem::create_directory(engine.folder / "private");
}

WorkQueueHarness::~WorkQueueHarness() {
  quit();
}

WorkQueue& WorkQueueHarness::start() {
  quit();
  view.shown.clear();
  queue_ = std::make_unique<WorkQueue>(WorkQueueParts{.settings = engine.settings,
                                                      .secrets = engine.secrets,
                                                      .stages = engine.stages,
                                                      .store = store,
                                                      .frameBudget = frameBudget},
                                       loop.executor(), view, view);
  view.list = &queue_->jobs();
  return *queue_;
}

void WorkQueueHarness::runUntil(const std::function<bool()>& reached) {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (!reached()) {
    loop.runNext(std::chrono::milliseconds(100));
    if (std::chrono::steady_clock::now() > end) throw std::runtime_error("what the test waits for never happened");
  }
}

void WorkQueueHarness::runUntilIdle() {
  runUntil([this] { return queue_->jobs().activeCount() == 0; });
}

void WorkQueueHarness::runUntilSize(std::size_t count) {
  runUntil([&] { return queue_->jobs().size() >= count; });
}

void WorkQueueHarness::runPosted() {
  while (loop.runNext(std::chrono::milliseconds(0))) {
  }
}

std::vector<JobStatus> WorkQueueHarness::statuses() const {
  std::vector<JobStatus> statuses;
  for (const JobList::Row& job : queue_->jobs().rows())
    statuses.push_back(job->status);
  return statuses;
}

std::vector<std::string> WorkQueueHarness::names() const {
  std::vector<std::string> names;
  for (const JobList::Row& job : queue_->jobs().rows())
    names.push_back(job->sourceURL.filename().string());
  return names;
}

}  // namespace tq::test
