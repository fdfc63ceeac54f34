#include "TarquelApp/WindowStates.hpp"

#include <QGuiApplication>
#include <algorithm>
#include <stdexcept>

#include "TarquelApp/QtWarnings.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq::test {

namespace {

using enum JobStatus;

constexpr const char* first = "clips/harbour.mov";
constexpr const char* second = "clips/pier.mov";

/// Two clips, the first of which has come so far.
void takeIn(WindowHarness& harness, JobStatus status) {
  harness.engine.settings.maxConcurrentJobs = 1;
  harness.save(harness.engine.settings);
  harness.launch();
  if (!isTerminal(status)) harness.clips.hold("harbour.mov", status);
  harness.letGo({harness.clip(first), harness.clip(second)});
  harness.turnUntilCount(2);
  harness.turnUntilStatus("harbour.mov", status);
}

void select(WindowHarness& harness, const std::string& clip) {
  harness.state().setSelectedJobID(qtText(harness.job(clip).id.text()));
  turnUntil([&] { return harness.shows("jobDetail") && harness.text("detailName") == clip; });
}

void working(WindowHarness& harness, JobStatus status) {
  takeIn(harness, status);
  select(harness, "harbour.mov");
}

void showDone(WindowHarness& harness) {
  takeIn(harness, done);
  harness.turnUntilStatus("pier.mov", done);
  select(harness, "harbour.mov");
  turnUntil([&] { return harness.items("frameThumbnail").size() == 2; });
}

void showFailure(WindowHarness& harness) {
  harness.clips.answer("harbour.mov", "I cannot say anything about this.");
  takeIn(harness, failed);
  harness.turnUntilStatus("pier.mov", done);
  select(harness, "harbour.mov");
  turnUntil([&] { return harness.shows("rawResponseText"); });
}

/// The tab that stands so many places behind the first one.
void showTab(WindowHarness& harness, const char* label) {
  showDone(harness);
  harness.click(harness.labelled(label));
}

void turnUntilModal(WindowHarness& harness) {
  turnUntil([&] { return modalPopup(harness.window()) != nullptr; });
}

/// Opens the menu of that mnemonic.
void openMenu(WindowHarness& harness, Qt::Key mnemonic) {
  showDone(harness);
  harness.press(mnemonic, Qt::AltModifier);
  turnUntil([&] { return shownMenu(harness.window()) != nullptr; });
}

void turnUntilOtherWindow(WindowHarness& harness) {
  turnUntil([&] { return &windowInFront(harness) != &harness.window(); });
}

}  // namespace

const std::vector<WindowState>& windowStates() {
  static const std::vector<WindowState> states{
      {"Empty", [](WindowHarness& harness) { harness.launch(); }},
      {"Onboarding",
       [](WindowHarness& harness) {
         harness.save({});
         harness.launch();
       }},
      {"Extracting", [](WindowHarness& harness) { working(harness, extracting); }},
      {"Calling", [](WindowHarness& harness) { working(harness, calling); }},
      {"Writing", [](WindowHarness& harness) { working(harness, writing); }},
      {"Queued",
       [](WindowHarness& harness) {
         takeIn(harness, extracting);
         select(harness, "pier.mov");
       }},
      {"Cancelled",
       [](WindowHarness& harness) {
         working(harness, extracting);
         harness.state().cancelAll();
         harness.turnUntilStatus("harbour.mov", cancelled);
         harness.turnUntilStatus("pier.mov", cancelled);
       }},
      {"DoneMarkdown", showDone},
      {"DoneJSON", [](WindowHarness& harness) { showTab(harness, "JSON"); }},
      {"DoneSource", [](WindowHarness& harness) { showTab(harness, "Source"); }},
      {"DoneWithFramesFolded",
       [](WindowHarness& harness) {
         showDone(harness);
         harness.click("framesTitle");
       }},
      {"DoneAndToBeReviewed",
       [](WindowHarness& harness) {
         harness.clips.answer(
             "harbour.mov",
             R"({"schema_version": "1.0", "summary": "Dark.", "shots": [{"shot_type": "wide"}, {"shot_type": "wide"}],
             "global": {"overall_summary_one_line": "A lens cap."}, "review_flag": true, "review_reason": "lens cap"})");
         showDone(harness);
       }},
      {"FailedWithRawResponse", showFailure},
      {"FailedWithoutRawResponse",
       [](WindowHarness& harness) {
         harness.clips.fail("harbour.mov", "The clip could not be read.");
         takeIn(harness, failed);
         select(harness, "harbour.mov");
       }},
      {"ErrorAlert",
       [](WindowHarness& harness) {
         showDone(harness);
         harness.state().setLastError(QStringLiteral("The queue could not be saved."));
         turnUntilModal(harness);
       }},
      {"QuitAlert",
       [](WindowHarness& harness) {
         working(harness, extracting);
         harness.press(Qt::Key_Q, Qt::ControlModifier);
         turnUntilModal(harness);
       }},
      {"FramePreview",
       [](WindowHarness& harness) {
         showDone(harness);
         harness.click("frameThumbnail");
         turnUntilModal(harness);
       }},
      {"FileMenu", [](WindowHarness& harness) { openMenu(harness, Qt::Key_F); }},
      {"JobMenu", [](WindowHarness& harness) { openMenu(harness, Qt::Key_J); }},
      {"ContextMenu",
       [](WindowHarness& harness) {
         showFailure(harness);
         harness.item("queueList").forceActiveFocus(Qt::TabFocusReason);
         harness.press(Qt::Key_Menu);
         turnUntil([&] { return shownMenu(harness.window()) != nullptr; });
       }},
      {"QuickLook",
       [](WindowHarness& harness) {
         showDone(harness);
         harness.item("queueList").forceActiveFocus(Qt::TabFocusReason);
         const ExpectedQtWarning noClip(QStringLiteral("no picture"));
         harness.press(Qt::Key_Space);
         turnUntilOtherWindow(harness);
         turnUntil([&] { return visibleItem(windowInFront(harness), "noPicture") != nullptr; });
       }},
      {"Library",
       [](WindowHarness& harness) {
         harness.launch();
         harness.press(Qt::Key_2, Qt::ControlModifier);
         turnUntil([&] { return harness.shows("library"); });
       }},
      {"Preferences",
       [](WindowHarness& harness) {
         harness.launch();
         harness.press(Qt::Key_Comma, Qt::ControlModifier);
         turnUntilOtherWindow(harness);
       }},
  };
  return states;
}

const WindowState& windowState(const std::string& name) {
  const auto found = std::ranges::find_if(windowStates(), [&](const WindowState& state) { return state.name == name; });
  if (found == windowStates().end()) throw std::invalid_argument("no state of the window is called " + name);
  return *found;
}

QQuickWindow& windowInFront(WindowHarness& harness) {
  auto* focused = qobject_cast<QQuickWindow*>(QGuiApplication::focusWindow());
  return focused ? *focused : harness.window();
}

QQuickItem* modalPopup(QQuickWindow& window) {
  for (QQuickItem* item : visibleItems(*window.contentItem()))
    if (item->inherits("QQuickPopupItem") && item->parent() && item->parent()->property("modal").toBool() &&
        item->parent()->property("opened").toBool())
      return item;
  return nullptr;
}

QQuickItem* shownMenu(QQuickWindow& window) {
  for (QQuickItem* item : visibleItems(*window.contentItem()))
    if (item->inherits("QQuickPopupItem") && item->parent() && item->parent()->inherits("QQuickMenu")) return item;
  return nullptr;
}

std::vector<QQuickItem*> visibleItems(QQuickItem& root) {
  if (!root.isVisible()) return {};
  std::vector<QQuickItem*> items{&root};
  for (QQuickItem* child : root.childItems())
    for (QQuickItem* item : visibleItems(*child))
      items.push_back(item);
  return items;
}

QQuickItem* visibleItem(QQuickWindow& window, const char* objectName) {
  for (QQuickItem* item : visibleItems(*window.contentItem()))
    if (item->objectName() == QLatin1String(objectName)) return item;
  return nullptr;
}

}  // namespace tq::test
