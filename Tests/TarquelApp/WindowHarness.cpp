#include "TarquelApp/WindowHarness.hpp"

#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QGuiApplication>
#include <QTest>
#include <algorithm>
#include <functional>
#include <stdexcept>

#include "Support/ClipMaker.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq::test {

namespace {

QPoint middleOf(const QQuickItem& item) {
  return item.mapToScene(QPointF(item.width() / 2, item.height() / 2)).toPoint();
}

/// Whatever is drawn below `item`, in the order of drawing.
void collect(const QQuickItem& item, const std::function<bool(const QQuickItem&)>& wanted,
             std::vector<QQuickItem*>& found) {
  for (QQuickItem* child : item.childItems()) {
    if (!child->isVisible()) continue;
    if (wanted(*child)) found.push_back(child);
    collect(*child, wanted, found);
  }
}

std::string propertyOf(const QQuickItem& item, const char* property) {
  return item.property(property).toString().toStdString();
}

/// A label without the mark of its shortcut.
QString plainLabel(const QQuickItem& item) {
  return item.property("text").toString().remove(QLatin1Char('&'));
}

}  // namespace

WindowHarness::WindowHarness()
    : desktop_([this](const std::filesystem::path& file) { shownInFileManager.push_back(file); },
               [this](const FileQuestion& question, const FileQuestion::Answer& answer) {
                 filePanel ? filePanel(question, answer) : answer(std::nullopt);
               }) {
  desktop_.setReducedMotion(true);
  save(engine.settings);
  engine.stages.clock = std::make_shared<SystemClock>();
  QObject::connect(&delegate, &AppDelegate::terminated, &delegate, [this] { ++terminations; });
}

WindowHarness::~WindowHarness() {
  quit();
}

void WindowHarness::launch() {
  quit();
  state_ = std::make_unique<AppState>(paths, engine.stages);
  main_ = std::make_unique<MainWindow>(*state_, delegate, desktop_, engine.stages.clock);
  window().releaseResources();  // pictures of a window before this one, whose frames had the same numbers
  if (!QTest::qWaitForWindowExposed(&window())) throw std::runtime_error("the window was never shown");
  window().requestActivate();
  turnUntil([this] { return window().isActive(); });
}

void WindowHarness::quit() {
  main_.reset();
  if (state_) state_->finish();
  clips.letAllGo();
  state_.reset();
}

std::vector<QQuickItem*> WindowHarness::items(const char* objectName) {
  std::vector<QQuickItem*> found;
  collect(
      *window().contentItem(),
      [name = QLatin1String(objectName)](const QQuickItem& item) { return item.objectName() == name; }, found);
  std::ranges::stable_sort(found, {}, [](const QQuickItem* item) {
    const QPointF place = item->mapToScene({});
    return std::pair(place.y(), place.x());
  });
  return found;
}

QQuickItem& WindowHarness::item(const char* objectName) {
  const auto found = items(objectName);
  if (found.empty()) throw std::runtime_error(std::string("the window shows no ") + objectName);
  return *found.front();
}

std::string WindowHarness::text(const char* objectName, const char* property) {
  return propertyOf(item(objectName), property);
}

std::vector<std::string> WindowHarness::texts(const char* objectName, const char* property) {
  std::vector<std::string> all;
  for (const QQuickItem* found : items(objectName))
    all.push_back(propertyOf(*found, property));
  return all;
}

QQuickItem& WindowHarness::labelled(const std::string& label) {
  return labelled(label, *window().contentItem());
}

QQuickItem& WindowHarness::labelled(const std::string& label, const QQuickItem& part) {
  std::vector<QQuickItem*> found;
  collect(
      part,
      [wanted = qtText(label)](const QQuickItem& item) {
        return item.inherits("QQuickAbstractButton") && plainLabel(item) == wanted;
      },
      found);
  if (found.empty()) throw std::runtime_error("nothing to click is labelled " + label);
  return *found.back();
}

void WindowHarness::openMenu(const std::string& title) {
  click(labelled(title));
  turnUntil([this] { return !menuEntries().empty(); });
}

void WindowHarness::openJobMenu(const std::string& clip) {
  click(row(clip), Qt::RightButton);
  turnUntil([this] { return !menuEntries().empty(); });
}

std::vector<std::string> WindowHarness::menuEntries() {
  std::vector<QQuickItem*> found;
  collect(
      *window().contentItem(), [](const QQuickItem& item) { return item.inherits("QQuickMenuItem"); }, found);
  std::vector<std::string> labels;
  for (const QQuickItem* entry : found) {
    const std::string label = textOf(plainLabel(*entry));
    labels.push_back(entry->isEnabled() ? label : "(" + label + ")");
  }
  return labels;
}

void WindowHarness::choose(const std::string& entry) {
  click(labelled(entry));
  turnUntil([this] { return menuEntries().empty(); });
}

QQuickItem& WindowHarness::row(const std::string& clip) {
  for (QQuickItem* shown : items("queueRow"))
    if (propertyOf(*shown, "fileName") == clip) return *shown;
  throw std::runtime_error("the sidebar shows no " + clip);
}

QQuickItem& WindowHarness::inside(const QQuickItem& whole, const char* objectName) {
  for (QQuickItem* found : items(objectName))
    if (whole.isAncestorOf(found)) return *found;
  throw std::runtime_error(std::string("there is no ") + objectName + " in there");
}

QQuickWindow* WindowHarness::otherWindow(const char* objectName) {
  for (QWindow* other : QGuiApplication::topLevelWindows())
    if (other->isVisible() && other->objectName() == QLatin1String(objectName))
      return qobject_cast<QQuickWindow*>(other);
  return nullptr;
}

void WindowHarness::click(QQuickItem& item, Qt::MouseButton button) {
  item.window()->grabWindow();  // so that everything stands where its user sees it
  QTest::mouseClick(item.window(), button, Qt::NoModifier, middleOf(item));
}

void WindowHarness::press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(&window(), key, modifiers);
}

bool WindowHarness::dragOver(const QMimeData& data, QPointF place) {
  const QPoint point(qRound(window().width() * place.x()), qRound(window().height() * place.y()));
  QDragEnterEvent enter(point, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(&window(), &enter);
  QDragMoveEvent move(point, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(&window(), &move);
  return move.isAccepted();
}

bool WindowHarness::letGo(const QMimeData& data, QPointF place) {
  const bool wouldTake = dragOver(data, place);
  QDropEvent drop(QPointF(window().width() * place.x(), window().height() * place.y()), Qt::CopyAction, &data,
                  Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(&window(), &drop);
  return wouldTake && drop.isAccepted();
}

bool WindowHarness::dragOver(const QList<QUrl>& urls, QPointF place) {
  QMimeData data;
  data.setUrls(urls);
  return dragOver(data, place);
}

bool WindowHarness::letGo(const QList<QUrl>& urls, QPointF place) {
  QMimeData data;
  data.setUrls(urls);
  return letGo(data, place);
}

void WindowHarness::leave() {
  QDragLeaveEvent leave;
  QCoreApplication::sendEvent(&window(), &leave);
}

QUrl WindowHarness::clip(const std::string& name) const {
  return qtFileURL(engine.folder.write(name, "clip"));
}

QUrl WindowHarness::realClip(const std::string& name) const {
  return qtFileURL(engine.folder.write(name, contentOf(makeVideo(movingPicture(1), h264(), "mp4"))));
}

void WindowHarness::drop(const std::string& name) {
  const std::size_t before = state_->jobList().size();
  letGo({clip(name)});
  turnUntilCount(before + 1);
}

void WindowHarness::drop(const std::string& name, JobStatus status) {
  drop(name);
  turnUntilStatus(name, status);
}

std::vector<std::string> WindowHarness::clipsOnceAllAreIn() {
  const std::string last = "last of all.mov";
  state_->enqueue({clip(last)});
  turnUntil(
      [&] { return !state_->jobList().empty() && state_->jobList().rows().back()->sourceURL.filename() == last; });
  std::vector<std::string> names;
  for (const JobList::Row& job : state_->jobList().rows())
    names.push_back(std::filesystem::relative(job->sourceURL, engine.folder.path()));
  names.pop_back();
  return names;
}

const Job* WindowHarness::find(const std::string& name) const {
  const auto& rows = state_->jobList().rows();
  const auto last = std::find_if(rows.rbegin(), rows.rend(),
                                 [&](const JobList::Row& job) { return job->sourceURL.filename() == name; });
  return last == rows.rend() ? nullptr : last->get();
}

const Job& WindowHarness::job(const std::string& name) const {
  if (const Job* found = find(name)) return *found;
  throw std::runtime_error("no job on " + name);
}

void WindowHarness::turnUntilStatus(std::size_t row, JobStatus status) {
  turnUntil([&] { return state_->jobList().size() > row && job(row).status == status; });
}

void WindowHarness::turnUntilStatus(const std::string& name, JobStatus status) {
  turnUntil([&] {
    const Job* found = find(name);
    return found && found->status == status;
  });
}

void WindowHarness::turnUntilCount(std::size_t count) {
  turnUntil([&] { return state_->jobList().size() >= count; });
}

QImage WindowHarness::picture() {
  return window().grabWindow();
}

}  // namespace tq::test
