#include "TarquelApp/WindowHarness.hpp"

#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QTest>
#include <stdexcept>

#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq::test {

namespace {

QPoint middleOf(const QQuickItem& item) {
  return item.mapToScene(QPointF(item.width() / 2, item.height() / 2)).toPoint();
}

}  // namespace

WindowHarness::WindowHarness()
    : desktop_([this](const std::filesystem::path& file) { shownInFileManager.push_back(file); }) {
  SettingsStore(paths).save(engine.settings);
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
  if (!QTest::qWaitForWindowExposed(&window())) throw std::runtime_error("the window was never shown");
  window().requestActivate();
  turnUntil([this] { return window().isActive(); });
}

void WindowHarness::quit() {
  main_.reset();
  if (state_) state_->finish();
  state_.reset();
}

QQuickItem& WindowHarness::item(const char* objectName) {
  for (auto* found : window().findChildren<QQuickItem*>(QLatin1String(objectName)))
    if (found->isVisible()) return *found;
  throw std::runtime_error(std::string("the window shows no ") + objectName);
}

std::string WindowHarness::text(const char* objectName, const char* property) {
  return item(objectName).property(property).toString().toStdString();
}

void WindowHarness::click(QQuickItem& item, Qt::MouseButton button) {
  QTest::mouseClick(item.window(), button, Qt::NoModifier, middleOf(item));
}

void WindowHarness::press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(&window(), key, modifiers);
}

void WindowHarness::dragOver(const QList<QUrl>& urls) {
  QMimeData data;
  data.setUrls(urls);
  const QPoint place(window().width() / 2, window().height() / 2);
  QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(&window(), &enter);
  QDragMoveEvent move(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(&window(), &move);
}

void WindowHarness::letGo(const QList<QUrl>& urls) {
  dragOver(urls);
  QMimeData data;
  data.setUrls(urls);
  QDropEvent drop(QPointF(window().width() / 2.0, window().height() / 2.0), Qt::CopyAction, &data, Qt::LeftButton,
                  Qt::NoModifier);
  QCoreApplication::sendEvent(&window(), &drop);
}

QUrl WindowHarness::clip(const std::string& name) const {
  return qtFileURL(engine.folder.write(name, "clip"));
}

void WindowHarness::turnUntilStatus(std::size_t row, JobStatus status) {
  turnUntil([&] { return state_->jobList().size() > row && job(row).status == status; });
}

void WindowHarness::turnUntilCount(std::size_t count) {
  turnUntil([&] { return state_->jobList().size() >= count; });
}

QImage WindowHarness::picture() {
  return window().grabWindow();
}

}  // namespace tq::test
