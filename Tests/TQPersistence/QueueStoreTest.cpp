#include <chrono>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

#include "Support/FileSizeLimit.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQCore/SafeFile.hpp"
#include "TQPersistence/AppSupportPaths.hpp"
#include "TQPersistence/QueueStore.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;
namespace chr = std::chrono;

constexpr auto newYear2001 = chr::sys_days(chr::January / 1 / 2001);
constexpr std::string_view someId = "0E1D2C3B-4A59-4687-8796-A5B4C3D2E1F0";

Job jobWith(JobStatus status) {
  Job job;
  job.id = *UUID::parse(someId);
  job.sourceURL = "/clips/a.mov";
  job.status = status;
  job.createdAt = newYear2001 + chr::milliseconds(1500);
  return job;
}

/// A job with a value in every field.
Job wholeJobWith(JobStatus status) {
  Job job = jobWith(status);
  job.progress = 0.7;
  job.error = "The model did not answer.";
  job.result = DescriptionResult();
  job.rawResponse = std::string("{}");
  job.frames = std::vector<ExtractedFrame>(1);
  job.engineSnapshot = EngineSnapshot{.providerId = "openai",
                                      .providerDisplay = "OpenAI",
                                      .modelId = "gpt-4o",
                                      .promptProfile = "standard",
                                      .samplingStrategy = "adaptive"};
  job.outputOverride = OutputConfig{.format = OutputFormat::json,
                                    .conflictPolicy = ConflictPolicy::overwrite,
                                    .sidecarDirectory = "/side cars/\xC3\xA9"};
  return job;
}

void save(const QueueStore& store, const std::vector<Job>& jobs) {
  std::vector<std::shared_ptr<const Job>> shared;
  for (const Job& job : jobs)
    shared.push_back(std::make_shared<const Job>(job));
  store.save(shared);
}

std::vector<fs::path> sourcesOf(const std::vector<Job>& jobs) {
  std::vector<fs::path> sources;
  for (const Job& job : jobs)
    sources.push_back(job.sourceURL);
  return sources;
}

/// An entry with only what is required, and with `changes` to that; a change to null removes the key.
std::string entryWith(const JSONValue::Object& changes) {
  JSONValue::Object entry{{"id", someId}, {"sourcePath", "/clips/a.mov"}, {"status", "queued"}, {"createdAt", 1.5}};
  for (const auto& [key, value] : changes) {
    entry.erase(key);
    if (!value.isNull()) entry.emplace(key, value);
  }
  return writeJSON(entry, JSONLayout::compact);
}

class QueueStoreTest : public testing::Test {
 protected:
  std::vector<Job> loaded(std::string_view content) const {
    folder.write("queue.json", content);
    return store.load();
  }

  std::vector<Job> loadedEntry(const JSONValue::Object& changes) const {
    return loaded("[" + entryWith(changes) + "]");
  }

  std::vector<Job> savedAndLoaded(const std::vector<Job>& jobs) const {
    save(store, jobs);
    return store.load();
  }

  /// The only entry that a save of `job` leaves in the file.
  JSONValue savedEntry(const Job& job) const {
    save(store, {job});
    const JSONValue content = parseJSON(contentOf(file));
    EXPECT_EQ(content.asArray()->size(), 1u);
    return content.asArray()->at(0);
  }

  TemporaryFolder folder;
  fs::path file = folder / "queue.json";
  QueueStore store{file};
};

// What a save writes

TEST_F(QueueStoreTest, AnEntryHoldsTheseKeysAndNothingThatARunProduced) {
  EXPECT_EQ(savedEntry(wholeJobWith(JobStatus::failed)), parseJSON(R"({
      "id": "0E1D2C3B-4A59-4687-8796-A5B4C3D2E1F0", "sourcePath": "/clips/a.mov", "status": "failed",
      "error": "The model did not answer.", "createdAt": 1.5,
      "engineSnapshot": {"providerId": "openai", "providerDisplay": "OpenAI", "modelId": "gpt-4o",
                         "promptProfile": "standard", "samplingStrategy": "adaptive"},
      "outputOverride": {"format": "json", "conflictPolicy": "overwrite",
                         "sidecarDirectory": "file:///side%20cars/%C3%A9"}})"));
}

TEST_F(QueueStoreTest, WhatIsAbsentIsLeftOut) {
  EXPECT_EQ(savedEntry(jobWith(JobStatus::queued)), parseJSON(entryWith({})));
}

TEST_F(QueueStoreTest, ADoneJobAloneLeavesAnEmptyArray) {
  save(store, {jobWith(JobStatus::queued)});
  save(store, {jobWith(JobStatus::done)});
  EXPECT_EQ(parseJSON(contentOf(file)), JSONValue(JSONValue::Array()));
}

TEST_F(QueueStoreTest, AnEmptyQueueIsAnEmptyArrayInAFileThatStays) {
  save(store, {});
  EXPECT_EQ(parseJSON(contentOf(file)), JSONValue(JSONValue::Array()));
  EXPECT_TRUE(store.load().empty());
}

TEST_F(QueueStoreTest, OnlyDoneAndCancelledJobsAreDropped) {
  std::vector<Job> jobs;
  for (const std::string_view raw : rawValues<JobStatus>)
    jobs.push_back(jobWith(*fromRawValue<JobStatus>(raw)));
  save(store, jobs);
  std::vector<std::string> kept;
  const JSONValue content = parseJSON(contentOf(file));
  for (const JSONValue& entry : *content.asArray())
    kept.push_back(*entry.find("status")->asString());
  EXPECT_EQ(kept, (std::vector<std::string>{"queued", "extracting", "calling", "writing", "failed"}));
}

TEST_F(QueueStoreTest, TheFileIsPrettyAndItsKeysAreSorted) {
  save(store, {wholeJobWith(JobStatus::failed)});
  const std::string text = contentOf(file);
  EXPECT_NE(text.find('\n'), std::string::npos);
  EXPECT_NE(text.find("/clips/a.mov"), std::string::npos);
  std::size_t before = 0;
  for (const char* key : {"\"createdAt\"", "\"engineSnapshot\"", "\"error\"", "\"id\"", "\"outputOverride\"",
                          "\"sourcePath\"", "\"status\""}) {
    EXPECT_LT(before, text.find(key)) << key;
    before = text.find(key);
  }
}

TEST_F(QueueStoreTest, TheOrderInTheFileIsThatInMemory) {
  std::vector<Job> jobs;
  for (const char* name : {"/c", "/a", "/b", "/a", "/0"}) {
    jobs.push_back(jobWith(JobStatus::queued));
    jobs.back().sourceURL = name;
    jobs.back().createdAt -= chr::hours(jobs.size());
  }
  EXPECT_EQ(sourcesOf(savedAndLoaded(jobs)), (std::vector<fs::path>{"/c", "/a", "/b", "/a", "/0"}));
}

TEST_F(QueueStoreTest, ASaveReplacesWhatWasThere) {
  loaded("not a queue at all");
  EXPECT_EQ(savedAndLoaded({jobWith(JobStatus::queued)}), std::vector{jobWith(JobStatus::queued)});
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"queue.json"});
}

// What comes back

TEST_F(QueueStoreTest, AJobThatWasWritingWaitsAgainWithItsEngineAndOutput) {
  const Job before = wholeJobWith(JobStatus::writing);
  Job expected = jobWith(JobStatus::queued);
  expected.engineSnapshot = before.engineSnapshot;
  expected.outputOverride = before.outputOverride;
  EXPECT_EQ(savedAndLoaded({before}), std::vector{expected});
}

TEST_F(QueueStoreTest, EveryInterruptedStatusBecomesQueued) {
  for (const JobStatus status : {JobStatus::queued, JobStatus::extracting, JobStatus::calling, JobStatus::writing})
    EXPECT_EQ(savedAndLoaded({jobWith(status)}), std::vector{jobWith(JobStatus::queued)}) << rawValue(status);
}

TEST_F(QueueStoreTest, AFailedJobKeepsItsMessageAndNothingOfItsRun) {
  const std::vector<Job> jobs = savedAndLoaded({wholeJobWith(JobStatus::failed)});
  ASSERT_EQ(jobs.size(), 1u);
  EXPECT_EQ(jobs[0].status, JobStatus::failed);
  EXPECT_EQ(jobs[0].error, "The model did not answer.");
  EXPECT_EQ(jobs[0].progress, 0);
  EXPECT_FALSE(jobs[0].result);
  EXPECT_FALSE(jobs[0].rawResponse);
  EXPECT_FALSE(jobs[0].frames);
}

TEST_F(QueueStoreTest, AnErrorOfAnyStatusButFailedIsForgotten) {
  for (const std::string_view raw : rawValues<JobStatus>) {
    const std::vector<Job> jobs = loadedEntry({{"status", raw}, {"error", "left over"}});
    ASSERT_EQ(jobs.size(), 1u) << raw;
    EXPECT_EQ(jobs[0].error.has_value(), raw == "failed") << raw;
  }
}

TEST_F(QueueStoreTest, AFailedEntryWithoutAMessageHasNone) {
  EXPECT_EQ(loadedEntry({{"status", "failed"}}), std::vector{jobWith(JobStatus::failed)});
}

TEST_F(QueueStoreTest, FinishedEntriesOfAHandEditedFileStayFinished) {
  EXPECT_EQ(loadedEntry({{"status", "done"}}), std::vector{jobWith(JobStatus::done)});
  EXPECT_EQ(loadedEntry({{"status", "cancelled"}}), std::vector{jobWith(JobStatus::cancelled)});
}

TEST_F(QueueStoreTest, AnEntryNeedsNeitherErrorNorEngineNorOutput) {
  EXPECT_EQ(loadedEntry({}), std::vector{jobWith(JobStatus::queued)});
  EXPECT_EQ(loaded(R"([{"id": "0e1d2c3b-4a59-4687-8796-a5b4c3d2e1f0", "sourcePath": "/clips/a.mov", "createdAt": 1.5,
      "status": "queued", "error": null, "engineSnapshot": null, "outputOverride": null, "unknown": [{}]}])"),
            std::vector{jobWith(JobStatus::queued)})
      << "null is absent, unknown keys are ignored, an id has no case";
}

TEST_F(QueueStoreTest, AnOutputWithoutAFolderIsBesideTheClip) {
  const std::vector<Job> jobs =
      loadedEntry({{"outputOverride", JSONValue::Object{{"format", "both"}, {"conflictPolicy", "suffix"}}}});
  ASSERT_EQ(jobs.size(), 1u);
  EXPECT_EQ(jobs[0].outputOverride, (OutputConfig{OutputFormat::both, ConflictPolicy::suffix, {}}));
}

TEST_F(QueueStoreTest, ClipsAreNotLookedFor) {
  Job job = jobWith(JobStatus::queued);
  job.sourceURL = folder / "gone" / "clip.mov";
  EXPECT_EQ(savedAndLoaded({job}), std::vector{job});
}

// Paths and texts

TEST_F(QueueStoreTest, PathsStandAsTheyAre) {
  for (const char* path : {"/", "/a b/100%25.mov", "/\xC3\xA9/\xE6\x97\xA5.mov", "/a/../b//c.", "/with\nnewline \"\\",
                           "/file:/x", "/a?b#c"}) {
    Job job = jobWith(JobStatus::queued);
    job.sourceURL = path;
    EXPECT_EQ(*savedEntry(job).find("sourcePath"), JSONValue(path));
    EXPECT_EQ(sourcesOf(store.load()), std::vector<fs::path>{path});
  }
}

TEST_F(QueueStoreTest, APathThatIsNotUTF8StandsAsItsFileURLAndKeepsItsBytes) {
  Job job = jobWith(JobStatus::queued);
  job.sourceURL = "/clips/caf\xE9 1%20.mov";
  EXPECT_EQ(*savedEntry(job).find("sourcePath"), JSONValue("file:///clips/caf%E9%201%2520.mov"));
  EXPECT_EQ(store.load(), std::vector{job});
}

TEST_F(QueueStoreTest, ARelativePathIsStoredAsAnAbsoluteOne) {
  Job job = jobWith(JobStatus::queued);
  job.sourceURL = "a.mov";
  EXPECT_EQ(*savedEntry(job).find("sourcePath"), JSONValue(fs::absolute("a.mov").string()));
}

TEST_F(QueueStoreTest, AnOddPathOfAHandEditedFileLosesNoJob) {
  for (const char* path : {"", "a/relative.mov", "file://elsewhere/a.mov", "file:///%zz.mov", "~/a.mov"}) {
    const std::vector<Job> jobs = loadedEntry({{"sourcePath", path}});
    EXPECT_EQ(sourcesOf(jobs), std::vector<fs::path>{path});
    save(store, jobs);
    EXPECT_EQ(store.load().size(), 1u) << path;
  }
}

TEST_F(QueueStoreTest, AMessageThatQuotesANameWhichIsNotUTF8DoesNotFailTheSave) {
  Job job = jobWith(JobStatus::failed);
  job.error = "caf\xE9.mov: No such file or directory";
  const std::vector<Job> jobs = savedAndLoaded({job});
  ASSERT_EQ(jobs.size(), 1u);
  EXPECT_EQ(jobs[0].error, "caf\xEF\xBF\xBD.mov: No such file or directory");
}

// Dates

TEST_F(QueueStoreTest, DatesAreSecondsSinceTheStartOf2001) {
  Job job = jobWith(JobStatus::queued);
  for (const auto& [since, seconds] : {std::pair(chr::milliseconds(0), 0.0), std::pair(chr::milliseconds(-250), -0.25),
                                       std::pair(chr::milliseconds(-978'307'200'000), -978'307'200.0),
                                       std::pair(chr::milliseconds(817'034'400'125), 817'034'400.125)}) {
    job.createdAt = newYear2001 + since;
    EXPECT_EQ(savedEntry(job).find("createdAt")->asDouble(), seconds);
    EXPECT_EQ(store.load(), std::vector{job}) << seconds;
  }
}

TEST_F(QueueStoreTest, ADateKeepsItsMicrosecond) {
  Job job = jobWith(JobStatus::queued);
  job.createdAt = newYear2001 + chr::hours(227'000) + chr::nanoseconds(123'456'789);
  const std::vector<Job> jobs = savedAndLoaded({job});
  ASSERT_EQ(jobs.size(), 1u);
  EXPECT_LT(chr::abs(jobs[0].createdAt - job.createdAt), chr::microseconds(1));
}

TEST_F(QueueStoreTest, ADateOfTheFileIsWrittenAgainAsItWas) {
  std::string content;
  for (int index = 0; index < 1000; ++index)
    content += (index == 0 ? "[" : ",") + entryWith({{"createdAt", 817'034'400 + 0.0123457 * index}});
  content += "]";
  save(store, loaded(content));
  EXPECT_EQ(parseJSON(contentOf(file)), parseJSON(content));
}

TEST_F(QueueStoreTest, ADateOutsideOfAllReasonIsTheFarthestOneAndLosesNoJob) {
  const auto farthest = chr::duration_cast<chr::seconds>(chr::years(250));
  const std::pair<const char*, Date> cases[] = {{"1e300", newYear2001 + farthest},
                                                {"9223372036854775807", newYear2001 + farthest},
                                                {"-1e300", newYear2001 - farthest}};
  for (const auto& [number, date] : cases) {
    const std::vector<Job> jobs = loaded(R"([{"id": ")" + std::string(someId) +
                                         R"(", "sourcePath": "/a", "status": "queued", "createdAt": )" + number + "}]");
    ASSERT_EQ(jobs.size(), 1u) << number;
    EXPECT_EQ(jobs[0].createdAt, date) << number;
    EXPECT_EQ(savedAndLoaded(jobs), jobs) << number;
  }
}

// Files that cannot be used

TEST_F(QueueStoreTest, AMissingFileIsAnEmptyQueueAndStaysMissing) {
  EXPECT_TRUE(store.load().empty());
  EXPECT_TRUE(QueueStore{folder / "missing/queue.json"}.load().empty());
  EXPECT_TRUE(namesIn(folder.path()).empty());
}

TEST_F(QueueStoreTest, AFileThatIsNoListIsAnEmptyQueue) {
  const std::string entry = entryWith({});
  for (const std::string& content : {std::string(), std::string(" "), std::string("no json"), std::string("null"),
                                     entry, "[" + entry, "[" + entry + "] x", "{\"jobs\": [" + entry + "]}"})
    EXPECT_TRUE(loaded(content).empty()) << content;
}

TEST_F(QueueStoreTest, AnEntryThatLacksARequiredKeyEmptiesTheWholeQueue) {
  for (const char* key : {"id", "sourcePath", "status", "createdAt"}) {
    EXPECT_TRUE(loaded("[" + entryWith({}) + "," + entryWith({{key, nullptr}}) + "]").empty()) << key;
    std::string withNull = entryWith({{key, nullptr}});
    withNull.insert(1, "\"" + std::string(key) + "\":null,");
    EXPECT_TRUE(loaded("[" + entryWith({}) + "," + withNull + "]").empty()) << key;
  }
}

TEST_F(QueueStoreTest, OneUnreadableValueEmptiesTheWholeQueue) {
  const JSONValue::Object halfAnEngine{{"providerId", "openai"}};
  const JSONValue::Object unknownFormat{{"format", "pdf"}, {"conflictPolicy", "suffix"}};
  const std::pair<const char*, JSONValue> cases[] = {{"id", 1},
                                                     {"id", "no UUID"},
                                                     {"id", ""},
                                                     {"sourcePath", 1},
                                                     {"sourcePath", std::string("/a\0b", 4)},
                                                     {"status", "asleep"},
                                                     {"status", "Queued"},
                                                     {"status", 0},
                                                     {"createdAt", "1.5"},
                                                     {"createdAt", true},
                                                     {"createdAt", "2026-11-21T10:00:00Z"},
                                                     {"error", 5},
                                                     {"error", JSONValue::Array()},
                                                     {"engineSnapshot", "openai"},
                                                     {"engineSnapshot", halfAnEngine},
                                                     {"outputOverride", unknownFormat},
                                                     {"outputOverride", JSONValue::Array()}};
  for (const auto& [key, value] : cases)
    EXPECT_TRUE(loaded("[" + entryWith({}) + "," + entryWith({{key, value}}) + "]").empty())
        << key << " " << writeJSON(value, JSONLayout::compact);
}

TEST_F(QueueStoreTest, AnEntryThatIsNoObjectEmptiesTheWholeQueue) {
  for (const char* element : {"null", "[]", "5", "\"queued\"", "{}"})
    EXPECT_TRUE(loaded("[" + entryWith({}) + "," + element + "]").empty()) << element;
}

TEST_F(QueueStoreTest, TextThatIsNotUTF8IsAnEmptyQueue) {
  std::string content = "[" + entryWith({}) + "]";
  content.replace(content.find("a.mov"), 1, "\xFF");
  EXPECT_TRUE(loaded(content).empty());
}

TEST_F(QueueStoreTest, EndlessNestingIsAnEmptyQueue) {
  EXPECT_TRUE(loaded(std::string(1'000'000, '[')).empty());
  EXPECT_TRUE(loaded(std::string(100'000, '[') + std::string(100'000, ']')).empty());
}

TEST_F(QueueStoreTest, AFolderInPlaceOfTheFileIsAnEmptyQueueAndFailsTheSave) {
  fs::create_directory(file);
  EXPECT_TRUE(store.load().empty());
  EXPECT_THROW(save(store, {}), SystemError);
}

TEST_F(QueueStoreTest, ANamedPipeIsAnEmptyQueueAndBlocksNobody) {
  ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
  EXPECT_TRUE(store.load().empty());
  EXPECT_THROW(save(store, {}), SystemError);
}

TEST_F(QueueStoreTest, AQueueOfTensOfThousandsOfClipsIsReadInFull) {
  const std::vector<Job> jobs(20'000, jobWith(JobStatus::queued));
  EXPECT_EQ(savedAndLoaded(jobs), jobs);
  const std::string padding(static_cast<std::size_t>(SafeFile::maxMetadataBytes), ' ');
  EXPECT_EQ(loaded("[" + entryWith({}) + padding + "]").size(), 1u) << "no sidecar may be as long as this";
}

TEST_F(QueueStoreTest, AFileOfAbsurdSizeIsAnEmptyQueue) {
  folder.write("queue.json", "[]");
  fs::resize_file(file, std::uintmax_t{1} << 40);
  EXPECT_TRUE(store.load().empty());
}

// Saves that fail

TEST_F(QueueStoreTest, ADiskThatIsFullIsReportedAndTheOldFileStaysWhole) {
  const std::vector<Job> jobs{jobWith(JobStatus::queued)};
  save(store, jobs);
  {
    const FileSizeLimit limit(100);
    EXPECT_THROW(save(store, {wholeJobWith(JobStatus::failed)}), SystemError);
  }
  EXPECT_EQ(store.load(), jobs);
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"queue.json"});
}

TEST_F(QueueStoreTest, WhatJSONCannotHoldIsReportedAndTheOldFileStaysWhole) {
  const std::vector<Job> jobs{jobWith(JobStatus::queued)};
  save(store, jobs);
  Job impossible = wholeJobWith(JobStatus::queued);
  impossible.engineSnapshot->modelId = "\xFF";
  EXPECT_THROW(save(store, {impossible}), JSONError);
  EXPECT_EQ(store.load(), jobs);
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"queue.json"});
}

TEST_F(QueueStoreTest, ASaveMakesAMissingFolderAndReportsOneThatCannotBe) {
  save(QueueStore{folder / "missing/queue.json"}, {});
  EXPECT_EQ(fs::status(folder / "missing").permissions(), fs::perms::owner_all);
  EXPECT_THROW(save(QueueStore{folder.write("file", "") / "queue.json"}, {}), SystemError);
}

// Permissions

TEST_F(QueueStoreTest, TheFileIsForItsOwnerAlone) {
  save(store, {});
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
  fs::permissions(file, fs::perms(0644));
  save(store, {});
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
}

TEST_F(QueueStoreTest, SavesAtTheSameMomentLeaveOneWholeQueue) {
  const std::vector<Job> shorter(3, jobWith(JobStatus::queued));
  const std::vector<Job> longer(30, jobWith(JobStatus::failed));
  save(store, shorter);
  {
    std::vector<std::jthread> writers;
    for (const auto& jobs : {shorter, longer})
      writers.emplace_back([this, jobs] {
        for (int round = 0; round < 10; ++round)
          save(store, jobs);
      });
    for (int round = 0; round < 50; ++round) {
      const std::vector<Job> seen = store.load();
      EXPECT_TRUE(seen == shorter || seen == longer) << seen.size();
    }
  }
  const std::vector<Job> last = store.load();
  EXPECT_TRUE(last == shorter || last == longer) << last.size();
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"queue.json"});
}

TEST(QueueStore, TheUsersStoreLivesInThePrivateFolder) {
  const TemporaryFolder base;
  const QueueStore store{AppSupportPaths(base.path()).queueURL()};
  save(store, {jobWith(JobStatus::queued)});
  EXPECT_TRUE(fs::exists(base / "tarquel/queue.json"));
  EXPECT_EQ(store, QueueStore{base / "tarquel/queue.json"});
}

}  // namespace
}  // namespace tq::test
