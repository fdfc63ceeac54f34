#pragma once

#include <QImage>
#include <QList>
#include <QMimeData>
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
#include "TarquelApp/ScriptedClips.hpp"

namespace tq::test {

/// The whole window over an engine whose stages a test writes, on a screen that nobody sees. Acts as a user would, with
/// the mouse, the keyboard and drops, and reads what a user can see.
class WindowHarness {
 public:
  /// Nothing is launched yet: a test may change `engine` and what lies in `paths` before. The desktop wishes that
  /// nothing glides, so that whatever is seen is where it belongs.
  WindowHarness();
  ~WindowHarness();

  /// Starts the program anew, and waits for its first picture.
  void launch();

  /// Ends the program as a user's quit does, once it is allowed.
  void quit();

  /// Takes that wish back.
  void letThingsMove() { desktop_.setReducedMotion(false); }

  AppState& state() { return *state_; }
  MainWindow& main() { return *main_; }
  QQuickWindow& window() { return main_->window(); }

  /// The visible items of the window with that object name, from top to bottom and from left to right.
  std::vector<QQuickItem*> items(const char* objectName);

  /// The first of them; throws when there is none.
  QQuickItem& item(const char* objectName);
  bool shows(const char* objectName) { return !items(objectName).empty(); }

  /// The text of an item's property.
  std::string text(const char* objectName, const char* property = "text");
  std::vector<std::string> texts(const char* objectName, const char* property = "text");

  /// The topmost visible button, choice or menu entry with that label; throws when there is none.
  QQuickItem& labelled(const std::string& label);

  /// The same within one part of the window.
  QQuickItem& labelled(const std::string& label, const QQuickItem& part);

  /// Another window of the program by its object name; null while it is not shown.
  QQuickWindow* otherWindow(const char* objectName);

  /// Opens a menu of the menu bar.
  void openMenu(const std::string& title);

  /// Opens the context menu of the row that shows that clip.
  void openJobMenu(const std::string& clip);

  /// The labels in the menu that is open, from top to bottom; those that cannot be chosen stand in brackets.
  std::vector<std::string> menuEntries();

  /// Chooses from the menu that is open.
  void choose(const std::string& entry);

  /// The row of the sidebar that shows a clip of that name; throws when there is none.
  QQuickItem& row(const std::string& clip);

  /// Visible items below another one.
  QQuickItem& inside(const QQuickItem& whole, const char* objectName);

  void click(QQuickItem& item, Qt::MouseButton button = Qt::LeftButton);
  void click(const char* objectName) { click(item(objectName)); }
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

  /// Drags these over the window, its middle unless told otherwise; true when it would take them. `letGo` drops them
  /// there; true when they were taken. `leave` takes them away again.
  bool dragOver(const QList<QUrl>& urls, QPointF place = {0.5, 0.5});
  bool letGo(const QList<QUrl>& urls, QPointF place = {0.5, 0.5});
  bool dragOver(const QMimeData& data, QPointF place = {0.5, 0.5});
  bool letGo(const QMimeData& data, QPointF place = {0.5, 0.5});
  void leave();

  /// A small file with that name, in a folder of the test.
  QUrl clip(const std::string& name) const;

  /// The same as a real one: a second of a moving picture.
  QUrl realClip(const std::string& name) const;

  /// Drops a small clip of that name, and waits until the queue shows it.
  void drop(const std::string& name);

  /// Drops it, and waits until its job has that status.
  void drop(const std::string& name, JobStatus status);

  /// The clips of the queue, by their paths in the test's folder, once one more, which is dropped now, has come in: by
  /// then all before it have. It is not among them.
  std::vector<std::string> clipsOnceAllAreIn();

  const Job& job(std::size_t row) const { return state_->jobList()[row]; }

  /// The last job on a clip of that name; throws when there is none.
  const Job& job(const std::string& name) const;

  void turnUntilStatus(std::size_t row, JobStatus status);
  void turnUntilStatus(const std::string& name, JobStatus status);
  void turnUntilCount(std::size_t count);

  /// What the window looks like now.
  QImage picture();

  /// The settings that the next launch finds.
  void save(const AppSettings& settings) const { SettingsStore(paths).save(settings); }

  PipelineHarness engine;
  ScriptedClips clips{engine};
  AppSupportPaths paths{engine.folder / "home"};
  AppDelegate delegate;
  std::vector<std::filesystem::path> shownInFileManager;
  DesktopActions::Ask filePanel;  ///< the desktop's; empty: it has none
  int terminations = 0;           ///< how often the program was told to end

 private:
  const Job* find(const std::string& name) const;

  DesktopActions desktop_;
  std::unique_ptr<AppState> state_;
  std::unique_ptr<MainWindow> main_;
};

}  // namespace tq::test
