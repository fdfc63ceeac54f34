#pragma once

#include <QAbstractItemModel>
#include <QList>
#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <memory>
#include <optional>
#include <vector>

#include "TQCore/Models/RerateCandidate.hpp"
#include "TQFrames/WatcherLifecycle.hpp"
#include "TQPersistence/AppSupportPaths.hpp"
#include "TQPersistence/SecretsStore.hpp"
#include "TQPersistence/Settings.hpp"
#include "TQPersistence/UIState.hpp"
#include "TQPersistence/WindowLayout.hpp"
#include "TQPipeline/JobStages.hpp"
#include "TQPipeline/WorkQueue.hpp"
#include "TarquelApp/AppMode.hpp"
#include "TarquelApp/JobListModel.hpp"
#include "TarquelApp/MainThread.hpp"
#include "TarquelApp/Text.hpp"

namespace tq {

/// The one object that the interface observes, and the one door through which user actions and watched files enter the
/// logic. Lives on the main thread; none of its operations waits for the engine, for a folder or for the queue's file.
class AppState : public QObject, private WorkQueue::Observer {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The program has one.")
  Q_PROPERTY(tq::AppSettings settings READ settings WRITE setSettings NOTIFY settingsChanged)
  Q_PROPERTY(tq::UIState uiState READ uiState WRITE setUIState NOTIFY uiStateChanged)
  Q_PROPERTY(QString mode READ modeText WRITE setModeText NOTIFY uiStateChanged)
  Q_PROPERTY(int sidebarWidth READ sidebarWidth WRITE setSidebarWidth NOTIFY sidebarWidthChanged)
  Q_PROPERTY(tq::JobListModel* jobs READ jobs CONSTANT)
  Q_PROPERTY(QString selectedJobID READ selectedJobID WRITE setSelectedJobID NOTIFY selectedJobIDChanged)
  Q_PROPERTY(int activeJobCount READ activeJobCount NOTIFY activeJobCountChanged)
  Q_PROPERTY(bool needsOnboarding READ needsOnboarding WRITE setNeedsOnboarding NOTIFY needsOnboardingChanged)
  Q_PROPERTY(QString lastError READ lastError WRITE setLastError NOTIFY lastErrorChanged)
  Q_PROPERTY(QStringList videoNamePatterns READ videoNamePatterns CONSTANT)
  Q_PROPERTY(bool watcherActive READ watcherActive NOTIFY watcherActiveChanged)
  Q_PROPERTY(
      bool pendingSearchFocus READ pendingSearchFocus WRITE setPendingSearchFocus NOTIFY pendingSearchFocusChanged)

 public:
  /// Bytes of frames that finished jobs may keep for display.
  static constexpr std::size_t frameBudget = 512'000'000;

  /// Loads settings and interface state, and makes the stores and the engine. Nothing runs until `bootstrap`.
  AppState(const AppSupportPaths& paths, JobStages stages, QObject* parent = nullptr);

  /// As `finish`; then stops all runs and waits for them.
  ~AppState() override;

  /// Once, when the main window appears: decides on the first-run screen, brings the queue back and starts watching.
  void bootstrap();

  /// To be called before the program ends: blocks until the queue's file holds the newest state.
  void finish() { queue_.finish(); }

  /// The configuration being edited. A change is in force, and on disk, after `saveSettings`.
  const AppSettings& settings() const { return settings_; }
  void setSettings(const AppSettings& settings);

  /// Saves the settings, and hands them to the engine and the watcher. A failed save is told by `lastError`; the
  /// settings are in force all the same.
  Q_INVOKABLE void saveSettings();

  const UIState& uiState() const { return uiState_; }

  /// Also saves it; a failure there is dropped.
  void setUIState(const UIState& state);

  /// What the window shows, and remembers to show again. The view knows a mode by its raw value.
  AppMode mode() const;
  void setMode(AppMode mode);
  QString modeText() const { return qtText(rawValue(mode())); }
  void setModeText(const QString& text) { setMode(fromRawValue<AppMode>(textOf(text)).value_or(AppMode::queue)); }

  /// The width that the user has given the sidebar, in pixels independent of the screen's scale; 0: none yet. May be
  /// more than the window has room for. Setting it also saves it; a failure there is dropped.
  int sidebarWidth() const;
  void setSidebarWidth(int width);

  /// The queue as the sidebar shows it.
  JobListModel* jobs() { return &jobs_; }

  /// The queue in order of entry.
  const JobList& jobList() const { return queue_.jobs(); }

  /// Text of a UUID; empty: none. May name a job that is not in the queue any more.
  QString selectedJobID() const;
  const std::optional<UUID>& selection() const { return queue_.selectedJobID(); }
  void setSelectedJobID(const QString& id);

  /// How many jobs have not ended: the number on the application's badge.
  int activeJobCount() const { return static_cast<int>(queue_.jobs().activeCount()); }

  /// How many jobs hold a slot: those that a quit would stop.
  int workingJobCount() const;

  bool needsOnboarding() const { return needsOnboarding_; }
  void setNeedsOnboarding(bool needed);

  /// The last failure to save something, for display; empty: none, or taken note of.
  QString lastError() const { return lastError_; }
  void setLastError(const QString& message);

  /// Names of clips, for a file dialog: "*.mov", "*.MOV" and so on.
  QStringList videoNamePatterns() const;

  bool watcherActive() const { return watcher_.isActive(); }

  /// A menu command asks the library to focus its search field.
  bool pendingSearchFocus() const { return pendingSearchFocus_; }
  void setPendingSearchFocus(bool pending);

  /// Shows the library and asks it to focus its search field.
  Q_INVOKABLE void find();

  /// Has clips described by the built-in model, which needs no key and looks at nothing: a way to see how it all works.
  Q_INVOKABLE void useMockProvider();

  /// Takes in clips and folders from a drop, the open panel or another program. What is no local file is skipped.
  Q_INVOKABLE void enqueue(const QList<QUrl>& urls);

  /// A clip that a watched folder reported.
  void handleWatchedFile(const std::filesystem::path& url) { queue_.handleWatchedFile(url); }

  void enqueueRerate(const std::vector<RerateCandidate>& candidates) { queue_.enqueueRerate(candidates); }

  Q_INVOKABLE void retry(const QString& jobID);
  Q_INVOKABLE void cancel(const QString& jobID);
  Q_INVOKABLE void retryAll() { queue_.retryAll(); }
  Q_INVOKABLE void cancelAll() { queue_.cancelAll(); }
  Q_INVOKABLE void removeCompleted() { queue_.removeCompleted(); }

  /// Has the interface show its panel, whose choice comes back through `enqueue`.
  Q_INVOKABLE void presentOpenPanel() { Q_EMIT openPanelRequested(); }

  EngineSnapshot currentEngineSnapshot() const;

  SecretsStore& secrets() { return *secrets_; }

 Q_SIGNALS:
  void settingsChanged();
  void uiStateChanged();
  void sidebarWidthChanged();
  void selectedJobIDChanged();
  void activeJobCountChanged();
  void needsOnboardingChanged();
  void lastErrorChanged();
  void watcherActiveChanged();
  void pendingSearchFocusChanged();
  void openPanelRequested();

 private:
  void selectionChanged() override { Q_EMIT selectedJobIDChanged(); }
  void activeCountChanged() override { Q_EMIT activeJobCountChanged(); }
  void queueWasNotSaved(const std::string& message) override;

  void syncWatcherWithSettings();
  std::optional<WatcherLifecycle::Wish> watchWish() const;

  const AppSupportPaths paths_;
  const SettingsStore settingsStore_;
  const UIStateStore uiStateStore_;
  const WindowLayoutStore layoutStore_;
  const std::shared_ptr<SecretsStore> secrets_;
  AppSettings settings_;
  UIState uiState_;
  WindowLayout layout_;
  bool needsOnboarding_ = false;
  QString lastError_;
  bool pendingSearchFocus_ = false;

  MainThread mainThread_;
  JobListModel jobs_;
  WorkQueue queue_;           // news of it goes to all of the above
  WatcherLifecycle watcher_;  // news of it goes to the queue
};

}  // namespace tq

Q_DECLARE_METATYPE(tq::AppSettings)
Q_DECLARE_METATYPE(tq::UIState)
