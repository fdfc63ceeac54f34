#pragma once

#include <QImage>
#include <QList>
#include <QQuickItem>
#include <QQuickWindow>
#include <QString>
#include <QUrl>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Support/PipelineHarness.hpp"
#include "TarquelApp/AppDelegate.hpp"
#include "TarquelApp/AppState.hpp"
#include "TarquelApp/DesktopActions.hpp"
#include "TarquelApp/MainWindow.hpp"

namespace tq::test {

/// The whole window over an engine whose stages a test writes, on a screen that nobody sees. Acts as a user would, with
/// the mouse, the keyboard and drops.
class WindowHarness {
 public:
  /// Nothing is launched yet: a test may change `engine` and what lies in `paths` before.
  WindowHarness();
  ~WindowHarness();

  /// Starts the program anew, and waits for its first picture.
  void launch();

  /// Ends the program as a user's quit does, once it is allowed.
  void quit();

  AppState& state() { return *state_; }
  MainWindow& main() { return *main_; }
  QQuickWindow& window() { return main_->window(); }

  /// A visible item of the window by its object name; throws when there is none.
  QQuickItem& item(const char* objectName);

  /// The text of an item's property.
  std::string text(const char* objectName, const char* property = "text");

  void click(QQuickItem& item, Qt::MouseButton button = Qt::LeftButton);
  void click(const char* objectName) { click(item(objectName)); }
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

  /// Drags these over the middle of the window; `letGo` drops them there.
  void dragOver(const QList<QUrl>& urls);
  void letGo(const QList<QUrl>& urls);

  /// A small file with that name, in a folder of the test.
  QUrl clip(const std::string& name) const;

  const Job& job(std::size_t row) const { return state_->jobList()[row]; }
  void turnUntilStatus(std::size_t row, JobStatus status);
  void turnUntilCount(std::size_t count);

  /// What the window looks like now.
  QImage picture();

  PipelineHarness engine;
  AppSupportPaths paths{engine.folder / "home"};
  AppDelegate delegate;
  std::vector<std::filesystem::path> shownInFileManager;
  int terminations = 0;  ///< how often the program was told to end

 private:
  DesktopActions desktop_;
  std::unique_ptr<AppState> state_;
  std::unique_ptr<MainWindow> main_;
};

}  // namespace tq::test
