#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/EnvironmentVariable.hpp"
#include "Support/Gate.hpp"
#include "Support/PipelineHarness.hpp"
#include "TQPersistence/SecretAccounts.hpp"
#include "TarquelApp/AppState.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using test::Gate;
using test::turnUntil;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using enum JobStatus;

class AppStateTest : public testing::Test {
 protected:
  AppStateTest() {
    SettingsStore(paths).save(engine.settings);
    engine.stages.clock = std::make_shared<SystemClock>();  // the files that come in are of today
  }

  /// Starts the program anew.
  AppState& launch() {
    quit();
    state = std::make_unique<AppState>(paths, engine.stages);
    tester = std::make_unique<QAbstractItemModelTester>(state->jobs());
    state->bootstrap();
    return *state;
  }

  void quit() {
    tester.reset();
    state.reset();
  }

  QUrl clip(const std::string& name) const { return qtFileURL(engine.folder.write(name, "clip")); }

  void turnUntilSize(std::size_t count) {
    turnUntil([&] { return state->jobList().size() >= count; });
  }
  void turnUntilIdle() {
    turnUntil([&] { return state->activeJobCount() == 0; });
  }

  /// Drops one clip and waits until the queue shows it.
  void drop(const std::string& name) {
    const std::size_t before = state->jobList().size();
    state->enqueue({clip(name)});
    turnUntilSize(before + 1);
  }

  QString idOf(std::size_t row) const { return qtText(state->jobList()[row].id.text()); }
  JobStatus statusOf(std::size_t row) const { return state->jobList()[row].status; }

  void watch(const fs::path& folder) {
    fs::create_directories(folder);
    AppSettings settings = state->settings();
    settings.watchFoldersEnabled = true;
    settings.watchedFolderPaths = {folder.string()};
    state->setSettings(settings);
    state->saveSettings();
  }

  /// A clip that was finished long ago comes into that folder.
  void putInto(const fs::path& folder, const std::string& name) {
    const fs::path file = engine.folder.write("elsewhere", "clip");
    fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::hours(1));
    fs::rename(file, folder / name);
  }

  test::PipelineHarness engine;
  AppSupportPaths paths{engine.folder / "home"};
  std::unique_ptr<AppState> state;
  std::unique_ptr<QAbstractItemModelTester> tester;
};

TEST_F(AppStateTest, StartsWithWhatIsOnDisk) {
  UIStateStore(paths).save({.contentMode = "Library"});
  AppState& app = launch();
  EXPECT_EQ(app.settings(), engine.settings);
  EXPECT_EQ(app.uiState().contentMode, "Library");
  EXPECT_TRUE(app.jobList().empty());
  EXPECT_EQ(app.selectedJobID(), QString());
  EXPECT_EQ(app.lastError(), QString());
  EXPECT_FALSE(app.needsOnboarding()) << "a local server needs no key";
  EXPECT_FALSE(app.watcherActive());
  EXPECT_FALSE(app.pendingSearchFocus());
  EXPECT_EQ(app.activeJobCount(), 0);
}

TEST_F(AppStateTest, RemovesWhatAKilledRunLeftInThePrivateFolder) {
  fs::create_directories(paths.semanticIndexDirectory());
  const std::string name = ".tarquel-12-0123456789abcdef.tmp";
  for (const fs::path& folder : {paths.appSupportDirectory(), paths.semanticIndexDirectory()})
    engine.folder.write(fs::relative(folder / name, engine.folder.path()).string(), "half");
  launch();
  EXPECT_FALSE(fs::exists(paths.appSupportDirectory() / name));
  EXPECT_FALSE(fs::exists(paths.semanticIndexDirectory() / name));
}

TEST_F(AppStateTest, AHostedProviderWithoutItsKeyNeedsTheFirstRunScreen) {
  SettingsStore(paths).save({});
  EXPECT_TRUE(launch().needsOnboarding());
  quit();
  SecretsStore(paths.secretsURL(), std::make_shared<FileLockRegistry>()).set("key", SecretAccounts::anthropicAPIKey);
  EXPECT_FALSE(launch().needsOnboarding());
}

TEST_F(AppStateTest, ADropIsDescribed) {
  launch();
  drop("a.mov");
  EXPECT_EQ(state->selectedJobID(), idOf(0));
  turnUntilIdle();
  EXPECT_EQ(statusOf(0), done);
  EXPECT_TRUE(fs::exists(engine.folder / "a.description.json"));
}

TEST_F(AppStateTest, WhatIsNoLocalFileIsSkipped) {
  launch();
  state->enqueue({QUrl(QStringLiteral("https://localhost/a.mov")), QUrl()});
  drop("b.mov");
  EXPECT_THAT(state->jobList().rows(), SizeIs(1));
  turnUntilIdle();
}

TEST_F(AppStateTest, TheBadgeCountsWhatHasNotEnded) {
  Gate gate;
  engine.answer = [&](const VisionRequest&, const std::stop_token& stop) -> VisionResponse {
    gate.pass(stop);
    throw std::runtime_error("no");
  };
  launch();
  QSignalSpy changes(state.get(), &AppState::activeJobCountChanged);
  drop("a.mov");
  drop("b.mov");
  drop("c.mov");
  EXPECT_EQ(state->activeJobCount(), 3);
  turnUntil([&] { return state->workingJobCount() == 2; });
  gate.open();
  turnUntilIdle();
  EXPECT_EQ(state->workingJobCount(), 0);
  EXPECT_GE(changes.size(), 4);
}

TEST_F(AppStateTest, CancelAndRetryGoByTheTextOfTheId) {
  Gate gate;
  engine.answer = [&](const VisionRequest&, const std::stop_token& stop) {
    gate.pass(stop);
    return VisionResponse{.rawText = test::goodAnswer(), .modelId = "m", .inputTokens = {}, .outputTokens = {}};
  };
  launch();
  drop("a.mov");
  state->cancel(QStringLiteral("no id"));
  state->retry(QStringLiteral("no id"));
  state->cancel(idOf(0));
  turnUntil([&] { return statusOf(0) == cancelled; });
  state->removeCompleted();
  EXPECT_THAT(state->jobList().rows(), SizeIs(1)) << "it is not done";
  gate.open();
  state->retry(idOf(0));
  EXPECT_EQ(statusOf(0), queued);
  turnUntil([&] { return statusOf(0) == done; });
}

TEST_F(AppStateTest, RemovingTheSelectedJobLeavesASelectionOfNothing) {
  launch();
  drop("a.mov");
  turnUntilIdle();
  const QString id = idOf(0);
  state->removeCompleted();
  EXPECT_TRUE(state->jobList().empty());
  EXPECT_EQ(state->selectedJobID(), id);
}

TEST_F(AppStateTest, ASelectionThatIsNoIdIsNone) {
  launch();
  drop("a.mov");
  QSignalSpy changes(state.get(), &AppState::selectedJobIDChanged);
  state->setSelectedJobID(QStringLiteral("nonsense"));
  EXPECT_EQ(state->selectedJobID(), QString());
  EXPECT_EQ(changes.size(), 1);
  turnUntilIdle();
}

TEST_F(AppStateTest, ARestartShowsTheFailureAndFinishesWhatWasInterrupted) {
  Gate gate;
  engine.answer = [&](const VisionRequest&, const std::stop_token& stop) -> VisionResponse {
    gate.pass(stop);
    throw std::runtime_error("the model is ill");
  };
  launch();
  drop("failed.mov");
  gate.admitOne();
  turnUntil([&] { return statusOf(0) == failed; });
  const std::optional<std::string> message = state->jobList()[0].error;
  drop("interrupted.mov");
  turnUntil([&] { return statusOf(1) == calling; });
  engine.answer = test::PipelineHarness().answer;
  launch();
  turnUntilSize(2);
  turnUntilIdle();
  EXPECT_EQ(statusOf(0), failed);
  EXPECT_EQ(state->jobList()[0].error, message);
  EXPECT_EQ(statusOf(1), done);
}

TEST_F(AppStateTest, SavedSettingsAreInForce) {
  launch();
  AppSettings settings = state->settings();
  settings.modelId = "another";
  QSignalSpy changes(state.get(), &AppState::settingsChanged);
  state->setSettings(settings);
  state->setSettings(settings);
  state->saveSettings();
  EXPECT_EQ(changes.size(), 1);
  EXPECT_EQ(SettingsStore(paths).load(), settings);
  EXPECT_EQ(state->currentEngineSnapshot().modelId, "another");
  drop("a.mov");
  EXPECT_EQ(state->jobList()[0].engineSnapshot->modelId, "another");
  turnUntilIdle();
}

TEST_F(AppStateTest, SettingsThatCannotBeSavedAreInForceAllTheSame) {
  launch();
  fs::remove(paths.settingsURL());
  fs::create_directories(paths.settingsURL() / "in the way");
  AppSettings settings = state->settings();
  settings.modelId = "another";
  state->setSettings(settings);
  state->saveSettings();
  EXPECT_TRUE(state->lastError().startsWith(QStringLiteral("Could not save settings: "))) << textOf(state->lastError());
  drop("a.mov");
  turnUntilIdle();
  EXPECT_EQ(state->jobList()[0].engineSnapshot->modelId, "another");
  state->setLastError({});
  EXPECT_EQ(state->lastError(), QString());
}

TEST_F(AppStateTest, AQueueThatCannotBeSavedIsToldAndGoesOn) {
  launch();
  fs::create_directories(paths.queueURL() / "in the way");
  drop("a.mov");
  turnUntilIdle();
  turnUntil([&] { return !state->lastError().isEmpty(); });
  EXPECT_TRUE(state->lastError().startsWith(QStringLiteral("Could not save the queue: ")))
      << textOf(state->lastError());
  EXPECT_EQ(statusOf(0), done);
}

TEST_F(AppStateTest, TheInterfacesStateIsSavedAsItChanges) {
  launch();
  state->setUIState({.contentMode = "Library"});
  EXPECT_EQ(UIStateStore(paths).load().contentMode, "Library");
  fs::remove(paths.uiStateURL());
  fs::create_directories(paths.uiStateURL() / "in the way");
  state->setUIState({.contentMode = "Queue"});
  EXPECT_EQ(state->uiState().contentMode, "Queue");
  EXPECT_EQ(state->lastError(), QString()) << "not worth a message";
}

TEST_F(AppStateTest, WatchedFoldersAreWatchedFromTheNextSaveOn) {
  launch();
  const fs::path folder = engine.folder / "incoming";
  QSignalSpy changes(state.get(), &AppState::watcherActiveChanged);
  fs::create_directories(folder);
  putInto(folder, "old.mov");
  watch(folder);
  turnUntil([&] { return state->watcherActive(); });
  putInto(folder, "new.mov");
  turnUntilSize(1);
  turnUntilIdle();
  EXPECT_EQ(state->jobList()[0].sourceURL, folder / "new.mov");
  AppSettings settings = state->settings();
  settings.watchFoldersEnabled = false;
  state->setSettings(settings);
  state->saveSettings();
  EXPECT_FALSE(state->watcherActive());
  EXPECT_EQ(changes.size(), 2);
}

TEST_F(AppStateTest, WatchedFoldersAreWatchedFromTheStartOn) {
  const fs::path folder = engine.folder / "incoming";
  launch();
  watch(folder);
  launch();
  turnUntil([&] { return state->watcherActive(); });
}

TEST_F(AppStateTest, AWatchedFolderMayBeNamedFromHome) {
  const test::EnvironmentVariable home("HOME", (engine.folder / "me").string());
  fs::create_directories(engine.folder / "me/incoming");
  AppSettings settings = engine.settings;
  settings.watchFoldersEnabled = true;
  settings.watchedFolderPaths = {"~/incoming"};
  SettingsStore(paths).save(settings);
  launch();
  turnUntil([&] { return state->watcherActive(); });
  putInto(engine.folder / "me/incoming", "a.mov");
  turnUntilSize(1);
  turnUntilIdle();
}

TEST_F(AppStateTest, SettingsWithoutFoldersLeaveNoTraceOfAWatcher) {
  launch();
  QSignalSpy changes(state.get(), &AppState::watcherActiveChanged);
  AppSettings settings = state->settings();
  settings.watchFoldersEnabled = true;
  state->setSettings(settings);
  state->saveSettings();
  drop("a.mov");
  turnUntilIdle();
  EXPECT_FALSE(state->watcherActive());
  EXPECT_EQ(changes.size(), 0);
}

TEST_F(AppStateTest, ARerateComesInAsAJobThatOverwrites) {
  launch();
  drop("a.mov");
  turnUntilIdle();
  state->enqueueRerate(
      {{.sidecarURL = engine.folder / "a.description.json", .sourceURL = engine.folder / "a.mov", .reason = {}}});
  turnUntilSize(2);
  turnUntilIdle();
  EXPECT_EQ(state->jobList()[1].outputOverride->conflictPolicy, ConflictPolicy::overwrite);
}

TEST_F(AppStateTest, CommandsReachTheInterface) {
  launch();
  QSignalSpy panels(state.get(), &AppState::openPanelRequested);
  QSignalSpy focus(state.get(), &AppState::pendingSearchFocusChanged);
  state->presentOpenPanel();
  state->setPendingSearchFocus(true);
  state->setPendingSearchFocus(true);
  EXPECT_EQ(panels.size(), 1);
  EXPECT_EQ(focus.size(), 1);
}

TEST_F(AppStateTest, AnEndInTheMiddleOfEverythingIsOrderly) {
  Gate gate;
  engine.answer = [&](const VisionRequest&, const std::stop_token& stop) -> VisionResponse {
    gate.pass(stop);
    throw std::runtime_error("no");
  };
  launch();
  watch(engine.folder / "incoming");
  for (int number = 0; number < 50; ++number)
    state->enqueue({clip(std::to_string(number) + ".mov")});
  turnUntilSize(20);
  state->cancelAll();
  quit();
  EXPECT_THAT(QueueStore{paths.queueURL()}.load(), testing::Not(SizeIs(testing::Gt(50U))));
}

}  // namespace
}  // namespace tq
