#include "TarquelApp/AppState.hpp"

#include <algorithm>
#include <exception>
#include <utility>

#include "TQCore/TQError.hpp"
#include "TQCore/VideoExtensions.hpp"
#include "TQPersistence/FileLock.hpp"
#include "TQPipeline/ConfiguredEngine.hpp"
#include "TQPlatform/FileSystem/HomeFolder.hpp"

namespace tq {

namespace fs = std::filesystem;

namespace {

/// The folder that a text of the settings names; a leading "~" is the home folder.
fs::path watchedFolder(const std::string& text) {
  if (text == "~") return homeFolder();
  return text.starts_with("~/") ? homeFolder() / text.substr(2) : fs::path(text);
}

}  // namespace

AppState::AppState(const AppSupportPaths& paths, JobStages stages, QObject* parent)
    : QObject(parent),
      paths_(paths),
      settingsStore_(paths),
      uiStateStore_(paths),
      layoutStore_(paths),
      secrets_(std::make_shared<SecretsStore>(paths.secretsURL(), std::make_shared<FileLockRegistry>())),
      settings_(settingsStore_.load()),
      uiState_(uiStateStore_.load()),
      layout_(layoutStore_.load()),
      queue_({.settings = settings_,
              .secrets = secrets_,
              .stages = stages,
              .store = QueueStore{paths.queueURL()},
              .frameBudget = frameBudget},
             mainThread_.executor(), jobs_, *this),
      watcher_(
          mainThread_.executor(), stages.clock, [this](const fs::path& clip) { handleWatchedFile(clip); },
          [this] { Q_EMIT watcherActiveChanged(); }) {
  jobs_.show(queue_.jobs());
}

AppState::~AppState() = default;

void AppState::bootstrap() {
  paths_.removeAbandonedTemporaries();
  setNeedsOnboarding(!isProviderReady(settings_, *secrets_));
  queue_.restore();
  syncWatcherWithSettings();
}

void AppState::setSettings(const AppSettings& settings) {
  if (settings == settings_) return;
  settings_ = settings;
  Q_EMIT settingsChanged();
}

void AppState::saveSettings() {
  try {
    settingsStore_.save(settings_);
  } catch (const std::exception& error) {
    setLastError(qtText("Could not save settings: " + userFacingDescription(error)));
  }
  queue_.updateSettings(settings_);
  syncWatcherWithSettings();
}

void AppState::setUIState(const UIState& state) {
  if (state == uiState_) return;
  uiState_ = state;
  try {
    uiStateStore_.save(uiState_);
  } catch (const std::exception&) {
    // Where somebody left the window is not worth a message.
  }
  Q_EMIT uiStateChanged();
}

AppMode AppState::mode() const {
  return fromRawValue<AppMode>(uiState_.contentMode.value_or("")).value_or(AppMode::queue);
}

void AppState::setMode(AppMode mode) {
  UIState state = uiState_;
  state.contentMode = rawValue(mode);
  setUIState(state);
}

int AppState::sidebarWidth() const {
  return static_cast<int>(std::clamp<std::int64_t>(layout_.sidebarWidth.value_or(0), 0, 100'000));
}

void AppState::setSidebarWidth(int width) {
  if (width == sidebarWidth()) return;
  layout_.sidebarWidth = width;
  try {
    layoutStore_.save(layout_);
  } catch (const std::exception&) {
    // As above.
  }
  Q_EMIT sidebarWidthChanged();
}

void AppState::find() {
  setMode(AppMode::library);
  setPendingSearchFocus(true);
}

void AppState::useMockProvider() {
  AppSettings settings = settings_;
  settings.providerId = "mock";
  setSettings(settings);
  saveSettings();
  setNeedsOnboarding(!isProviderReady(settings_, *secrets_));
}

QString AppState::selectedJobID() const {
  return selection() ? qtText(selection()->text()) : QString();
}

void AppState::setSelectedJobID(const QString& id) {
  queue_.select(UUID::parse(textOf(id)));
}

int AppState::workingJobCount() const {
  int count = 0;
  for (const JobList::Row& job : queue_.jobs().rows())
    if (!isTerminal(job->status) && job->status != JobStatus::queued) ++count;
  return count;
}

void AppState::setNeedsOnboarding(bool needed) {
  if (std::exchange(needsOnboarding_, needed) != needed) Q_EMIT needsOnboardingChanged();
}

void AppState::setLastError(const QString& message) {
  if (std::exchange(lastError_, message) != message) Q_EMIT lastErrorChanged();
}

QStringList AppState::videoNamePatterns() const {
  QStringList patterns;
  for (const std::string_view extension : VideoExtensions::supported) {
    const QString pattern = QStringLiteral("*.") + qtText(extension);
    patterns << pattern << pattern.toUpper();
  }
  return patterns;
}

void AppState::setPendingSearchFocus(bool pending) {
  if (std::exchange(pendingSearchFocus_, pending) != pending) Q_EMIT pendingSearchFocusChanged();
}

void AppState::enqueue(const QList<QUrl>& urls) {
  std::vector<fs::path> paths;
  for (const QUrl& url : urls)
    if (fs::path path = pathOf(url); !path.empty()) paths.push_back(std::move(path));
  queue_.enqueue(std::move(paths));
}

void AppState::retry(const QString& jobID) {
  if (const auto id = UUID::parse(textOf(jobID))) queue_.retry(*id);
}

void AppState::cancel(const QString& jobID) {
  if (const auto id = UUID::parse(textOf(jobID))) queue_.cancel(*id);
}

EngineSnapshot AppState::currentEngineSnapshot() const {
  return tq::currentEngineSnapshot(settings_);
}

void AppState::queueWasNotSaved(const std::string& message) {
  setLastError(qtText(message));
}

/// Nothing is replaced by nothing, so that settings without folders leave no trace of a watcher.
void AppState::syncWatcherWithSettings() {
  watcher_.watch(watchWish());
}

std::optional<WatcherLifecycle::Wish> AppState::watchWish() const {
  if (!settings_.watchFoldersEnabled || settings_.watchedFolderPaths.empty()) return std::nullopt;
  WatcherLifecycle::Wish wish{.folders = {}, .exclusionGlobs = settings_.watchExclusionGlobs};
  for (const std::string& folder : settings_.watchedFolderPaths)
    wish.folders.push_back(watchedFolder(folder));
  return wish;
}

}  // namespace tq
