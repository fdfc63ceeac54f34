// What the window costs. See Benchmarks/measure-window.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <iostream>
#include <span>
#include <stdexcept>
#include <string>

#include "Benchmarks/Shared/Report.hpp"
#include "Benchmarks/Window/FirstFrame.hpp"
#include "Benchmarks/Window/WindowRig.hpp"
#include "TarquelApp/Appearance.hpp"

namespace {

using namespace tq::window;

struct UseOptions {
  int jobs = 10'000;
  std::string only;   ///< the name of a part; empty: all
  QSize size;         ///< of the window; invalid: its own
  double traced = 0;  ///< ms; 0: nothing is traced
};

/// A good answer of about that many bytes.
std::string answerOf(std::size_t bytes) {
  std::string shots;
  while (shots.size() < bytes) {
    if (!shots.empty()) shots += ",";
    shots += R"({"shot_type": "wide", "framing_notes": ")" + std::string(400, 'a') + R"("})";
  }
  return R"({"schema_version": "1.0", "summary": "Long.", "shots": [)" + shots +
         R"(], "global": {"overall_summary_one_line": "A long one."}})";
}

/// Words that no JSON reader takes, in lines.
std::string chatterOf(std::size_t bytes) {
  std::string text = "I am afraid that";
  while (text.size() < bytes)
    text += text.size() % 7 == 0 ? "\nand then " : " there is nothing to be said of this clip";
  text.resize(bytes);
  return text;
}

void measureQueue(TimedApplication& application, const UseOptions& options) {
  const int jobs = options.jobs;
  WindowRig rig(application, {.succeeds = [](int number) { return number % 2 == 0; }}, options.size);
  FrameCosts& costs = rig.costs();
  rig.makeClips(jobs);
  costs.print("(the empty window)");
  rig.enqueue();
  rig.runToEnd(jobs);
  const std::string all = std::to_string(jobs) + " jobs";
  costs.print(all + " taken in and run to their end at full speed");

  QQuickItem& list = rig.item("queueList");
  const QPointF middle = list.mapToScene({list.width() / 2, list.height() / 2});
  for (int turn = 0; turn < 400; ++turn)
    costs.step([&] { rig.wheel(middle, turn % 40 < 20 ? -15 : 15); });
  costs.print("400 turns of the wheel over " + all);

  const double right = list.mapToScene({list.width() - 4, 0}).x();
  const double top = middle.y() - list.height() / 2;
  list.setProperty("contentY", 0);
  rig.mouse(QEvent::MouseButtonPress, {right, top + 8});
  for (int step = 1; step <= 300; ++step)
    costs.step([&] { rig.mouse(QEvent::MouseMove, {right, top + 8 + (list.height() - 16) * step / 300}); });
  rig.mouse(QEvent::MouseButtonRelease, {right, top + list.height() - 8});
  costs.print("the scroll bar dragged from end to end in 300 steps");

  rig.select(0);
  list.forceActiveFocus(Qt::TabFocusReason);
  costs.step([&] { rig.press(Qt::Key_Home); });
  for (int page = 0; page < jobs / 11; ++page)
    costs.step([&] { rig.press(Qt::Key_PageDown); });
  costs.print("page down through all of them");

  costs.step([&] { rig.state().removeCompleted(); });
  costs.until([&] { return !rig.state().jobs()->hasDone(); });
  costs.step([] {});
  costs.print("clearing them, every second of which is done");
}

void measureSelection(TimedApplication& application, const UseOptions& options) {
  constexpr int jobs = 30;
  WindowRig rig(application, {.frames = 64, .answer = answerOf(100'000)}, options.size);
  rig.makeClips(jobs);
  rig.enqueue();
  rig.runToEnd(jobs);
  FrameCosts& costs = rig.costs();
  rig.item("queueList").forceActiveFocus(Qt::TabFocusReason);
  costs.print("30 jobs with results of 100 KB and 64 frames, run to their end");
  for (int row = 0; row < jobs; ++row)
    costs.step([&] { rig.press(Qt::Key_Down); });
  costs.print("selecting 30 jobs with results of 100 KB and 64 frames");
  const QSize size = rig.window().size();
  for (int step = 1; step <= 40; ++step)
    costs.step([&] { rig.window().resize(size + QSize(4 * step, 3 * step)); });
  costs.print("40 sizes of the window with one of those shown");
}

void measureRawResponse(TimedApplication& application, const UseOptions& options, std::size_t megabytes) {
  WindowRig rig(application, {.answer = chatterOf(megabytes * 1'000'000)}, options.size);
  rig.makeClips(1);
  rig.enqueue();
  rig.runToEnd(1);
  FrameCosts& costs = rig.costs();
  costs.step([] {});
  costs.print("a job that ends with a raw response of " + std::to_string(megabytes) + " MB, and is shown");
  QQuickItem& text = rig.item("rawResponseText");
  for (int turn = 0; turn < 100; ++turn)
    costs.step([&] { rig.wheel(text.mapToScene({text.width() / 2, text.height() / 2}), -15); });
  costs.print("100 turns of the wheel over it");
}

/// Memory while jobs that are done are shown one after the other with their frames.
void measureMemory(TimedApplication& application, const UseOptions& options) {
  constexpr int shownAtATime = 500;
  const int jobs = options.jobs;
  WindowRig rig(application, {.frames = 4}, options.size);
  rig.makeClips(jobs);
  rig.enqueue();
  rig.runToEnd(jobs);
  rig.item("queueList").forceActiveFocus(Qt::TabFocusReason);
  std::printf("\n%d jobs done; resident after", jobs);
  for (int shown = 0; shown <= 2000; shown += shownAtATime) {
    std::printf(" %d shown: %.0f MB;", shown, memoryOf(QCoreApplication::applicationPid(), "Rss"));
    std::fflush(stdout);
    for (int row = 0; row < shownAtATime; ++row)
      rig.costs().step([&] { rig.press(Qt::Key_Down); });
  }
  std::printf("\n");
}

struct Part {
  const char* name;
  std::function<void(TimedApplication&, const UseOptions&)> measure;
};

const Part parts[] = {
    {"queue", measureQueue},
    {"results", measureSelection},
    {"raw",
     [](TimedApplication& application, const UseOptions& options) {
       for (const std::size_t megabytes : {1, 8, 16})
         measureRawResponse(application, options, megabytes);
     }},
    {"memory", measureMemory},
};

[[noreturn]] void explain() {
  throw std::invalid_argument(
      "usage: measure-window start PROGRAM | use [--only queue|results|raw|memory] [--size WIDTHxHEIGHT] "
      "[--trace MS] [JOBS]");
}

QSize sizeOf(const std::string& words) {
  int width = 0;
  int height = 0;
  if (std::sscanf(words.c_str(), "%dx%d", &width, &height) != 2) explain();
  return {width, height};
}

UseOptions useOptions(std::span<char* const> arguments) {
  UseOptions options;
  for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
    const std::string word = *argument;
    if ((word == "--only" || word == "--size" || word == "--trace") && ++argument == arguments.end()) explain();
    if (word == "--only")
      options.only = *argument;
    else if (word == "--size")
      options.size = sizeOf(*argument);
    else if (word == "--trace")
      options.traced = std::atof(*argument);
    else if (word.starts_with("-"))
      explain();
    else
      options.jobs = std::max(100, std::atoi(word.c_str()));
  }
  return options;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  try {
    const std::string what = argumentCount > 1 ? arguments[1] : "";
    tq::prepareForApplication();
    if (what == "start" && argumentCount == 3) {
      const QCoreApplication application(argumentCount, arguments);
      measureStart(QString::fromLocal8Bit(arguments[2]), 15);
      return EXIT_SUCCESS;
    }
    if (what != "use") explain();
    const UseOptions options = useOptions(std::span(arguments, static_cast<std::size_t>(argumentCount)).subspan(2));
    TimedApplication application(argumentCount, arguments);
    tq::setAppearance(false);
    tq::compare::writeMachine(std::cout);
    FrameCosts::printHead();
    if (options.traced > 0) application.traceAbove(options.traced);
    for (const Part& part : parts)
      if (options.only.empty() || options.only == part.name) part.measure(application, options);
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::cerr << "measure-window: " << error.what() << "\n";
    return EXIT_FAILURE;
  }
}
