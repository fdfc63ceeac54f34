#include <cerrno>
#include <gtest/gtest.h>

#include "Support/Faults/FaultTrials.hpp"
#include "Support/TemporaryFolder.hpp"
#include "Support/Umask.hpp"
#include "TQPersistence/AppSupportPaths.hpp"
#include "TQPersistence/QueueStore.hpp"
#include "TQPersistence/SecretsStore.hpp"
#include "TQPersistence/Settings.hpp"
#include "TQPersistence/UIState.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;

/// One store of the user's private folder, seen from outside.
struct Store {
  std::string name;
  std::string file;
  bool ownerOnly = true;
  std::function<void(const AppSupportPaths&)> writeOld;
  std::function<void(const AppSupportPaths&)> writeNew;
};

void PrintTo(const Store& store, std::ostream* out) {
  *out << store.name;
}

AppSettings settingsWith(const std::string& model) {
  AppSettings settings;
  settings.modelId = model;
  return settings;
}

std::vector<std::shared_ptr<const Job>> queueOf(int count) {
  std::vector<std::shared_ptr<const Job>> jobs;
  for (int index = 0; index < count; ++index) {
    Job job;
    job.sourceURL = "/clips/" + std::to_string(index) + ".mov";
    jobs.push_back(std::make_shared<const Job>(std::move(job)));
  }
  return jobs;
}

SecretsStore secrets(const AppSupportPaths& paths) {
  return SecretsStore(paths.secretsURL(), std::make_shared<FileLockRegistry>());
}

const std::vector<Store> stores{
    {.name = "Settings",
     .file = "settings.json",
     .writeOld = [](const AppSupportPaths& paths) { SettingsStore(paths).save(settingsWith("old")); },
     .writeNew = [](const AppSupportPaths& paths) { SettingsStore(paths).save(settingsWith("new")); }},
    {.name = "UIState",
     .file = "ui-state.json",
     .ownerOnly = false,
     .writeOld = [](const AppSupportPaths& paths) { UIStateStore(paths).save({.contentMode = "queue"}); },
     .writeNew = [](const AppSupportPaths& paths) { UIStateStore(paths).save({.contentMode = "library"}); }},
    {.name = "Queue",
     .file = "queue.json",
     .writeOld = [](const AppSupportPaths& paths) { QueueStore{paths.queueURL()}.save(queueOf(1)); },
     .writeNew = [](const AppSupportPaths& paths) { QueueStore{paths.queueURL()}.save(queueOf(2)); }},
    {.name = "Secrets",
     .file = "secrets.json",
     .writeOld = [](const AppSupportPaths& paths) { secrets(paths).set("old", "a"); },
     .writeNew = [](const AppSupportPaths& paths) { secrets(paths).set("new", "a"); }},
};

class StoreFaults : public testing::TestWithParam<Store> {
 protected:
  StoreFaults() {
    GetParam().writeOld(paths);
    oldContent = contentOf(file);
    GetParam().writeNew(paths);
    newContent = contentOf(file);
  }

  void clear() const { fs::remove_all(base / "tarquel"); }
  void write() const { GetParam().writeNew(paths); }

  void prepareOld() const {
    clear();
    GetParam().writeOld(paths);
  }

  void expectContentOneOf(const std::vector<std::string>& contents) const {
    ASSERT_EQ(namesIn(base / "tarquel"), std::vector<std::string>{GetParam().file});
    const std::string content = contentOf(file);
    EXPECT_NO_THROW(parseJSON(content));
    EXPECT_NE(std::find(contents.begin(), contents.end(), content), contents.end()) << content;
    if (GetParam().ownerOnly) {
      EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
    }
    EXPECT_EQ(fs::status(base / "tarquel").permissions(), fs::perms(0700));
  }

  bool nothingThere() const { return !fs::exists(base / "tarquel") || namesIn(base / "tarquel").empty(); }

  void expectThatTheNextWriteSucceeds() const {
    write();
    expectContentOneOf({newContent});
  }

  FaultTrial trial(const std::function<void()>& prepare, std::function<void(const std::optional<std::string>&)> check) {
    return {.folder = base.path(), .prepare = prepare, .attempt = [&] { write(); }, .check = std::move(check)};
  }

  TemporaryFolder base;
  AppSupportPaths paths{base.path()};
  fs::path file = base / ("tarquel/" + GetParam().file);
  std::string oldContent;
  std::string newContent;
};

TEST_P(StoreFaults, AWriteLeavesTheOldFileOrTheNewOneWhateverFails) {
  const Strikes strikes =
      failEveryCall(trial([&] { prepareOld(); },
                          [&](const std::optional<std::string>& error) {
                            if (error) {
                              EXPECT_TRUE(error->starts_with(GetParam().file + ": ") || error->starts_with("tarquel: "))
                                  << *error;
                              expectContentOneOf({oldContent, newContent});
                            } else {
                              expectContentOneOf({newContent});
                            }
                            expectThatTheNextWriteSucceeds();
                          }));
  for (const FileCall call : {FileCall::open, FileCall::lock, FileCall::duplicate, FileCall::inspect, FileCall::write,
                              FileCall::sync, FileCall::close, FileCall::rename})
    EXPECT_GE(strikes.count(call), 1u) << nameOf(call);
}

TEST_P(StoreFaults, TheFirstWriteOfAllLeavesNothingOrTheWholeFileWhateverFails) {
  const Strikes strikes = failEveryCall(trial([&] { clear(); },
                                              [&](const std::optional<std::string>& error) {
                                                if (!error || !nothingThere()) expectContentOneOf({newContent});
                                                expectThatTheNextWriteSucceeds();
                                              }));
  EXPECT_GE(strikes.count(FileCall::makeFolder), 1u);
}

TEST_P(StoreFaults, AWriteThatIsKilledLeavesTheOldFileOrTheNewOne) {
  const int killed = killAtEveryCall(trial([&] { prepareOld(); },
                                           [&](const auto&) {
                                             paths.removeAbandonedTemporaries();
                                             expectContentOneOf({oldContent, newContent});
                                             expectThatTheNextWriteSucceeds();
                                           }));
  EXPECT_GE(killed, 12);
}

TEST_P(StoreFaults, AFirstWriteThatIsKilledLeavesNothingOrTheWholeFile) {
  killAtEveryCall(trial([&] { clear(); },
                        [&](const auto&) {
                          paths.removeAbandonedTemporaries();
                          if (!nothingThere()) expectContentOneOf({newContent});
                          expectThatTheNextWriteSucceeds();
                        }));
}

TEST_P(StoreFaults, AFileSystemThatKnowsNoModesTakesEverythingButKeys) {
  for (const int error : {EPERM, ENOTSUP, EIO}) {
    prepareOld();
    const Umask umask(0200);  // so that no file is created with its mode
    const FileFaults noModes(base.path(), [&](FileCall call, int) {
      return call == FileCall::setMode ? FileFate{.error = error} : FileFate();
    });
    if (GetParam().name == "Secrets") {
      EXPECT_THROW(write(), SystemError);
      EXPECT_EQ(contentOf(file), oldContent);
    } else {
      write();
      EXPECT_EQ(contentOf(file), newContent);
      EXPECT_GE(noModes.count(FileCall::setMode), 1);
    }
    EXPECT_EQ(namesIn(base / "tarquel"), std::vector<std::string>{GetParam().file});
  }
}

TEST_P(StoreFaults, NobodyElseCanReadTheFileWhileItIsWritten) {
  clear();
  int writes = 0;
  const FileFaults watch(base.path(), [&](FileCall call, int) {
    if (call != FileCall::write) return FileFate();
    ++writes;
    EXPECT_EQ(fs::status(base / "tarquel").permissions(), fs::perms(0700));
    for (const auto& entry : fs::directory_iterator(base / "tarquel"))
      EXPECT_TRUE(!GetParam().ownerOnly || entry.status().permissions() == fs::perms(0600)) << entry.path();
    return FileFate();
  });
  write();
  EXPECT_GE(writes, 1);
}

INSTANTIATE_TEST_SUITE_P(, StoreFaults, testing::ValuesIn(stores), [](const auto& test) { return test.param.name; });

// What is particular to one store

TEST(SecretsFaults, ARemovalIsDoneOrLeavesTheOldFileWhateverFails) {
  const TemporaryFolder base;
  const AppSupportPaths paths(base.path());
  bool removed = false;
  failEveryCall({.folder = base.path(),
                 .prepare =
                     [&] {
                       secrets(paths).set("kept", "a");
                       secrets(paths).set("to go", "b");
                     },
                 .attempt = [&] { removed = secrets(paths).remove("b"); },
                 .check =
                     [&](const std::optional<std::string>& error) {
                       EXPECT_EQ(error, std::nullopt) << "a removal never throws";
                       EXPECT_EQ(secrets(paths).get("a"), "kept");
                       EXPECT_TRUE(!removed || !secrets(paths).get("b"));
                       EXPECT_EQ(namesIn(base / "tarquel"), std::vector<std::string>{"secrets.json"});
                       EXPECT_EQ(fs::status(base / "tarquel/secrets.json").permissions(), fs::perms(0600));
                       secrets(paths).remove("b");
                       EXPECT_EQ(secrets(paths).get("b"), std::nullopt);
                     }});
}

TEST(SecretsFaults, AKeyIsNotWrittenIntoAFileThatOthersMightRead) {
  const TemporaryFolder base;
  const AppSupportPaths paths(base.path());
  secrets(paths).set("old", "a");
  const std::string before = contentOf(paths.secretsURL());
  // A file system that gives every file its own mode, and says so or does not.
  for (const int error : {EPERM, ENOTSUP, 0}) {
    const Umask umask(0200);  // so that the file is not created with its mode
    const FileFaults noModes(base / "tarquel", [&](FileCall call, int index) {
      return call == FileCall::setMode && index == 1 ? FileFate{.error = error, .isPretended = true} : FileFate();
    });
    EXPECT_THROW(secrets(paths).set("new", "a"), SystemError) << error;
    EXPECT_EQ(noModes.count(FileCall::setMode), 2) << "the folder's and the file's";
    EXPECT_EQ(contentOf(paths.secretsURL()), before);
    EXPECT_EQ(namesIn(base / "tarquel"), std::vector<std::string>{"secrets.json"});
  }
}

}  // namespace
}  // namespace tq::test
