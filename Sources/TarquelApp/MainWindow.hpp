#pragma once

#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <memory>

#include "TarquelApp/AppDelegate.hpp"
#include "TarquelApp/AppState.hpp"
#include "TarquelApp/DesktopActions.hpp"
#include "TarquelApp/FrameShelf.hpp"
#include "TarquelApp/JobDetail.hpp"

namespace tq {

/// The window with all its views, over the state it shows. Making it loads the views, wires the delegate to the state
/// and starts `AppState::bootstrap`. Must be made in a thread with a QGuiApplication.
class MainWindow {
 public:
  /// All outlive the window. Throws `std::runtime_error` when the views cannot be loaded.
  MainWindow(AppState& app, AppDelegate& delegate, DesktopActions& desktop, std::shared_ptr<const Clock> clock);
  MainWindow(const MainWindow&) = delete;
  MainWindow& operator=(const MainWindow&) = delete;
  ~MainWindow();

  QQuickWindow& window() const { return *window_; }

  /// What the pane of the selected job shows.
  JobDetail& detail() { return detail_; }

 private:
  AppDelegate& delegate_;
  FrameShelf shelf_;
  JobDetail detail_;
  UpdaterViewModel updater_;
  QQmlApplicationEngine engine_;
  QQuickWindow* window_ = nullptr;  ///< the engine's
};

}  // namespace tq
