// A program that is killed again and again in the middle of its work, and started anew each time.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

#include "Support/Faults/FaultTrials.hpp"
#include "Support/WorkQueueHarness.hpp"
#include "TQCore/RecordJSON.hpp"
#include "TQDescription/MarkdownRenderer.hpp"
#include "TQDescription/SidecarNames.hpp"
#include "TQPersistence/SecretAccounts.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;
using testing::IsSubsetOf;
using testing::SizeIs;
using testing::StartsWith;

constexpr std::uint32_t seed = 20'260'731;
constexpr int clipCount = 300;
constexpr int strikeCount = 100;
constexpr int mostCallsOfALife = 700;  // reaches some way into the work of a few clips, and through all their steps
constexpr int slots = 4;

struct stat statusOf(const fs::path& path) {
  struct stat status {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
  return status;
}

class Strike : public testing::Test {
 protected:
  Strike() {
    std::vector<JobList::Row> jobs;
    for (int number = 0; number < clipCount; ++number) {
      Job job;
      job.id = UUID::random();
      job.sourceURL = home.write("clips/" + std::to_string(1000 + number) + ".mov", "clip");
      job.createdAt = clock.now();
      clips[job.id] = job.sourceURL;
      jobs.push_back(std::make_shared<const Job>(std::move(job)));
    }
    secrets().set("key-0", SecretAccounts::openaiAPIKey);  // with its folder, which is private from then on
    queue().save(jobs);
  }

  SecretsStore secrets() const {
    return SecretsStore(home / "private/secrets.json", std::make_shared<FileLockRegistry>());
  }
  SettingsStore settings() const { return SettingsStore(home / "private/settings.json"); }
  QueueStore queue() const { return {home / "private/queue.json"}; }

  /// The program from its start to the end of the queue, on the files of `home`. It saves a key and the settings while
  /// it works, as somebody does in the preferences.
  void live(int life) const {
    test::WorkQueueHarness program;
    program.store = queue();
    program.engine.settings.maxConcurrentJobs = slots;
    program.engine.settings.output.conflictPolicy = ConflictPolicy::overwrite;
    program.engine.answer = [this](const VisionRequest& request, const std::stop_token&) {
      note("asked", request.sourceContext.filename);
      return VisionResponse{.rawText = test::goodAnswer(), .modelId = "m", .inputTokens = {}, .outputTokens = {}};
    };
    program.start().restore();
    secrets().set("key-" + std::to_string(life), SecretAccounts::openaiAPIKey);
    AppSettings changed;
    changed.modelId = "model-" + std::to_string(life);
    settings().save(changed);
    program.runUntil([&] { return program.queue().isIdle(); });
    program.quit();
  }

  /// What must not get lost with the process is told to the test in a file, in one step.
  void note(const std::string& log, const std::string& word) const {
    const std::string line = word + "\n";
    const int file = ::open((home / log).c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    if (::write(file, line.data(), line.size()) != static_cast<ssize_t>(line.size())) std::abort();
    ::close(file);
  }

  std::map<std::string, int> asked() const {
    std::map<std::string, int> times;
    if (!fs::exists(home / "asked")) return times;
    std::istringstream lines(test::contentOf(home / "asked"));
    for (std::string clip; std::getline(lines, clip);)
      ++times[clip];
    return times;
  }

  std::set<UUID> unfinished() const {
    std::set<UUID> ids;
    for (const Job& job : queue().load()) {
      EXPECT_EQ(job.status, JobStatus::queued) << job.error.value_or("");
      ids.insert(job.id);
    }
    return ids;
  }

  DescriptionResult descriptionIn(const fs::path& sidecar) const {
    return decode<DescriptionResult>(parseJSON(test::contentOf(sidecar)));
  }

  fs::path sidecarOf(const fs::path& clip, SidecarKind kind) const {
    return clip.parent_path() / sidecarName(stemOf(clip), kind);
  }

  /// Everything that a reader of the folder may find is whole.
  void expectWholeFiles() const {
    for (const auto& [id, clip] : clips) {
      if (const fs::path json = sidecarOf(clip, SidecarKind::json); fs::exists(json)) {
        EXPECT_EQ(descriptionIn(json).source.filename, clip.filename());
      }
      if (const fs::path markdown = sidecarOf(clip, SidecarKind::markdown); fs::exists(markdown)) {
        const std::string text = test::contentOf(markdown);
        EXPECT_THAT(text, StartsWith("# "));
        EXPECT_TRUE(text.ends_with("\n") && text.size() > 200) << text;
      }
      if (const fs::path poster = sidecarOf(clip, SidecarKind::poster); fs::exists(poster)) {
        EXPECT_EQ(test::contentOf(poster), "jpeg-1");
      }
    }
    EXPECT_THAT(secrets().get(SecretAccounts::openaiAPIKey).value_or(""), StartsWith("key-"));
    EXPECT_EQ(statusOf(home / "private/secrets.json").st_mode & 07777, 0600U);
    EXPECT_EQ(statusOf(home / "private").st_mode & 07777, 0700U);
    if (fs::exists(home / "private/settings.json")) {
      EXPECT_THAT(settings().load().modelId, StartsWith("model-"));
    }
  }

  /// A job that left the queue has all its outputs, and of its description all files tell the same.
  void expectFinished(const UUID& id) const {
    const fs::path& clip = clips.at(id);
    const DescriptionResult result = descriptionIn(sidecarOf(clip, SidecarKind::json));
    EXPECT_EQ(test::contentOf(sidecarOf(clip, SidecarKind::markdown)), MarkdownRenderer::render(result));
    EXPECT_TRUE(fs::exists(sidecarOf(clip, SidecarKind::poster)));
  }

  static std::vector<std::string> temporariesIn(const fs::path& folder) {
    std::vector<std::string> names = test::namesIn(folder);
    std::erase_if(names, [](const std::string& name) { return !name.ends_with(".tmp"); });
    return names;
  }

  test::TemporaryFolder home;
  test::ManualClock clock;
  std::map<UUID, fs::path> clips;
};

TEST_F(Strike, AHundredKillsLoseNothingAndPayNothingFinishedTwice) {
  std::mt19937 random(seed);
  std::uniform_int_distribution<int> anyCall(0, mostCallsOfALife);
  std::set<UUID> waiting = unfinished();
  ASSERT_THAT(waiting, SizeIs(clipCount));
  std::map<UUID, int> paidWhenFinished;
  int strikes = 0;
  bool ended = false;
  for (int life = 1; !ended; ++life) {
    const int fatal = strikes < strikeCount ? anyCall(random) : std::numeric_limits<int>::max();
    SCOPED_TRACE("life " + std::to_string(life) + ", killed at call " + std::to_string(fatal));
    ended = test::survives(home.path(), fatal, [&] { live(life); });
    if (!ended) ++strikes;

    expectWholeFiles();
    const std::set<UUID> left = unfinished();
    EXPECT_THAT(left, IsSubsetOf(waiting)) << "what is finished stays finished";
    const auto times = asked();
    for (const UUID& id : waiting) {
      if (left.contains(id)) continue;
      expectFinished(id);
      paidWhenFinished[id] = times.at(clips.at(id).filename());
    }
    waiting = left;
    ASSERT_FALSE(HasFailure());
  }
  EXPECT_EQ(strikes, strikeCount) << "the queue was done before all strikes were dealt";
  EXPECT_THAT(waiting, IsEmpty());
  ASSERT_THAT(paidWhenFinished, SizeIs(clipCount));

  const auto times = asked();
  int paidTwice = 0;
  for (const auto& [id, paid] : paidWhenFinished) {
    EXPECT_EQ(times.at(clips.at(id).filename()), paid) << "asked again after it was finished";
    paidTwice += paid - 1;
  }
  EXPECT_THAT(temporariesIn(home / "clips"), IsEmpty());
  EXPECT_THAT(temporariesIn(home / "private"), IsEmpty());
  RecordProperty("PaidTwice", paidTwice);
  // A kill costs what was under way, and what ended while the queue's file was being written.
  EXPECT_LE(paidTwice, strikeCount * 2 * slots);
}

}  // namespace
}  // namespace tq
