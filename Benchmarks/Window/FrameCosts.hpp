#pragma once

#include <QGuiApplication>
#include <QQuickWindow>
#include <QTimer>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace tq::window {

/// An application that times what every event costs its thread, in processor time.
class TimedApplication : public QGuiApplication {
 public:
  using QGuiApplication::QGuiApplication;
  bool notify(QObject* receiver, QEvent* event) override;

  /// The costliest event since the last call, in ms, what it handled beneath it included.
  double takeLongest();

  /// From now on tells of each event that costs more, in ms: what it is, and when it was by the clock of
  /// `perf record -k CLOCK_MONOTONIC`, so that `perf script --time` shows what it did.
  void traceAbove(double milliseconds) { traced_ = milliseconds; }
  double traced() const { return traced_; }

 private:
  int depth_ = 0;
  double longest_ = 0;
  double traced_ = std::numeric_limits<double>::infinity();
};

/// What the pictures of a window cost the thread that makes them, in ms of processor time: `ours` is everything up to
/// the moment when the scene is drawn (events, models, bindings, layout), `drawing` the rasteriser.
class FrameCosts {
 public:
  /// `window` is drawn by the thread that calls, as the software renderer does it.
  FrameCosts(TimedApplication& application, QQuickWindow& window);

  /// Does this and waits for the picture that shows it; without a change there is none.
  void step(const std::function<void()>& action);

  /// Draws what comes until that is so.
  void until(const std::function<bool()>& isDone);

  /// One row of the table: what it was, how many pictures, p99 and longest of ours, p99 of drawing, the longest event,
  /// processor time in all. Then begins anew.
  void print(const std::string& what);
  static void printHead();

 private:
  TimedApplication& application_;
  QQuickWindow& window_;
  QTimer waking_;  ///< ends a wait for events
  std::vector<double> ours_;
  std::vector<double> drawing_;
  double start_ = 0;
  double mark_ = 0;
  double begin_ = 0;  ///< of the picture that is being made, by the clock of the trace
  double drawingMark_ = 0;
};

}  // namespace tq::window
