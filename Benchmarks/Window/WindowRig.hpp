#pragma once

#include <QQuickItem>
#include <QTemporaryDir>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "Benchmarks/Window/FrameCosts.hpp"
#include "TarquelApp/AppDelegate.hpp"
#include "TarquelApp/AppState.hpp"
#include "TarquelApp/DesktopActions.hpp"
#include "TarquelApp/MainWindow.hpp"

namespace tq::window {

/// What becomes of the clips of a queue: nothing takes time but the window.
struct Script {
  int frames = 2;                              ///< a clip
  std::string answer;                          ///< of the model; empty: a short good one
  std::function<bool(int number)> succeeds{};  ///< absent: all do
};

/// The real window over a queue whose stages take no time, in a home folder of its own.
class WindowRig {
 public:
  /// An invalid size leaves the window its own.
  WindowRig(TimedApplication& application, const Script& script, const QSize& size = {});

  /// Makes that many clips, numbered from 0, in a folder.
  void makeClips(int count);

  /// Drops the folder on the window.
  void enqueue();

  /// Draws until every clip has come to an end.
  void runToEnd(int count);

  void select(std::size_t row);
  void press(Qt::Key key);
  void wheel(const QPointF& place, int degrees);
  void mouse(QEvent::Type type, const QPointF& place);

  AppState& state() { return state_; }
  QQuickWindow& window() { return main_.window(); }
  QQuickItem& item(const char* objectName);
  FrameCosts& costs() { return costs_; }

 private:
  QTemporaryDir home_;
  AppDelegate delegate_;
  DesktopActions desktop_;
  AppState state_;
  MainWindow main_;
  FrameCosts costs_;
};

}  // namespace tq::window
