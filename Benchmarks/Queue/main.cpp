// What a long queue costs the thread that owns it, and what a long run costs in memory. See Benchmarks/measure-queue.

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "TQPipeline/WorkQueue.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/Concurrency/EventLoop.hpp"
#include "TarquelApp/JobListModel.hpp"

namespace {

namespace fs = std::filesystem;
using namespace tq;

constexpr std::chrono::milliseconds patience{100};

/// Processor time of this thread, so that other work on the machine does not count (clock_gettime(2)).
double threadMilliseconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// A field of proc_pid_status(5) that counts kB, in MB.
double residentMegabytes(const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with(field + ":")) return std::stod(line.substr(field.size() + 1)) / 1024;
  return 0;
}

/// What the owner's thread spends, in milliseconds.
struct Cost {
  double total = 0;
  double longest = 0;
  int stretches = 0;

  void time(const std::function<void()>& work) {
    const double start = threadMilliseconds();
    work();
    const double spent = threadMilliseconds() - start;
    total += spent;
    longest = std::max(longest, spent);
    ++stretches;
  }

  void print(const char* what) const { std::printf("%-42s %9.1f %12.2f %10d\n", what, total, longest, stretches); }
};

/// A queue with the list model of the window on it, on an event loop whose every item is timed.
class TimedQueue : private WorkQueue::Observer {
 public:
  explicit TimedQueue(WorkQueueParts parts) {
    WorkQueue::Observer& observer = *this;
    queue = std::make_unique<WorkQueue>(
        std::move(parts),
        [this](std::function<void()> item) { loop_.post([this, item = std::move(item)] { cost_.time(item); }); },
        model_, observer);
    model_.show(queue->jobs());
  }
  ~TimedQueue() override { queue.reset(); }

  /// Makes the call and turns the loop until that is so.
  Cost measure(const std::function<void()>& call, const std::function<bool()>& isDone) {
    cost_ = {};
    cost_.time(call);
    while (!isDone())
      loop_.runNext(patience);
    return cost_;
  }

  std::size_t count(JobStatus status) const {
    return static_cast<std::size_t>(
        std::ranges::count(queue->jobs().rows(), status, [](const JobList::Row& job) { return job->status; }));
  }

  std::unique_ptr<WorkQueue> queue;

 private:
  EventLoop loop_;
  JobListModel model_;
  Cost cost_;
};

/// Clips that take until they are cancelled.
JobStages endlessStages() {
  JobStages stages = standardJobStages(nullptr);
  stages.extractFrames = [](const fs::path&, const SamplingConfig&, const ExtractionProgress&,
                            const std::stop_token& stop) -> Extraction {
    std::mutex mutex;
    std::condition_variable_any never;
    std::unique_lock lock(mutex);
    never.wait(lock, stop, [] { return false; });
    throw Cancelled();
  };
  return stages;
}

fs::path makeFolder(const fs::path& clip, const fs::path& parent, int count) {
  const fs::path folder = parent / "clips";
  fs::create_directories(folder);
  for (int number = 0; number < count; ++number)
    fs::create_hard_link(clip, folder / (std::to_string(100'000 + number) + clip.extension().string()));
  return folder;
}

WorkQueueParts partsFor(const fs::path& home, JobStages stages) {
  AppSettings settings;
  settings.providerId = "mock";
  return {.settings = settings,
          .secrets = std::make_shared<SecretsStore>(home / "secrets.json", std::make_shared<FileLockRegistry>()),
          .stages = std::move(stages),
          .store = QueueStore{home / "queue.json"},
          .frameBudget = 512'000'000};
}

void measureOperations(const fs::path& home, const fs::path& folder, std::size_t count) {
  std::printf("%zu queued jobs: processor time of the owner's thread, in ms\n\n", count);
  std::printf("%-42s %9s %12s %10s\n", "operation", "in total", "at a stretch", "stretches");
  const auto isComplete = [count](const TimedQueue& timed) { return timed.queue->jobs().size() == count; };
  {
    TimedQueue timed(partsFor(home, endlessStages()));
    timed
        .measure([&] { timed.queue->enqueue({folder}); },
                 [&] { return isComplete(timed) && timed.count(JobStatus::extracting) == 2; })
        .print("adding a folder of them");
  }
  TimedQueue timed(partsFor(home, endlessStages()));
  timed
      .measure([&] { timed.queue->restore(); },
               [&] { return isComplete(timed) && timed.count(JobStatus::extracting) == 2; })
      .print("bringing them back at the start");

  const UUID last = timed.queue->jobs()[count - 1].id;
  timed.measure([&] { timed.queue->cancel(last); }, [&] { return timed.count(JobStatus::cancelled) == 1; })
      .print("one of them changes its status");
  timed.measure([&] { timed.queue->cancelAll(); }, [&] { return timed.count(JobStatus::cancelled) == count; })
      .print("cancelling all");
  timed
      .measure([&] { timed.queue->retryAll(); },
               [&] {
                 return timed.count(JobStatus::queued) + timed.count(JobStatus::extracting) == count &&
                        timed.count(JobStatus::extracting) == 2;
               })
      .print("retrying all");
  timed.measure([&] { timed.queue->finish(); }, [] { return true; }).print("the last write, at the end");
}

void measureRun(const fs::path& home, const fs::path& folder, std::size_t count) {
  fs::remove(home / "queue.json");
  TimedQueue timed(partsFor(home, standardJobStages(nullptr)));
  const auto start = std::chrono::steady_clock::now();
  const Cost cost =
      timed.measure([&] { timed.queue->enqueue({folder}); },
                    [&] { return timed.queue->jobs().size() == count && timed.queue->jobs().activeCount() == 0; });
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf("\na run of %zu clips with the mock model: %.0f s, %zu done, peak memory %.0f MB, %.0f MB at its end\n",
              count, seconds, timed.count(JobStatus::done), residentMegabytes("VmHWM"), residentMegabytes("VmRSS"));
  std::printf("the owner's thread: %.0f ms in total, %.2f ms at a stretch, %d stretches\n", cost.total, cost.longest,
              cost.stretches);
}

}  // namespace

/// measure-queue CLIP JOBS RUN: JOBS queued jobs, and a run of RUN clips (0: none), all of them links to CLIP.
int main(int argumentCount, char** arguments) {
  if (argumentCount != 4) return 2;
  const fs::path clip = fs::absolute(arguments[1]);
  const int jobs = std::stoi(arguments[2]);
  const int run = std::stoi(arguments[3]);
  const fs::path home = clip.parent_path() / "measure-queue";
  fs::remove_all(home);
  fs::create_directories(home);
  measureOperations(home, makeFolder(clip, home / "waiting", jobs), static_cast<std::size_t>(jobs));
  if (run > 0) measureRun(home, makeFolder(clip, home / "run", run), static_cast<std::size_t>(run));
  fs::remove_all(home);
}
