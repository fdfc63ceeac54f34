#include "TarquelApp/MainWindow.hpp"

#include <QCoreApplication>
#include <QEvent>
#include <QVariantMap>
#include <stdexcept>
#include <utility>

#include "TarquelApp/Pictures/ClipPosters.hpp"
#include "TarquelApp/Pictures/FramePictures.hpp"
#include "TarquelApp/Pictures/IconPictures.hpp"

extern void qml_register_types_Tarquel();

/// The views and what they are made of lie in a static library, of which the linker takes only what is asked for.
static void linkViews() {
  qml_register_types_Tarquel();
  Q_INIT_RESOURCE(qmlcache_TarquelApp);
}

namespace tq {

MainWindow::MainWindow(AppState& app, AppDelegate& delegate, DesktopActions& desktop,
                       std::shared_ptr<const Clock> clock)
    : delegate_(delegate), detail_(app, shelf_, std::move(clock)) {
  linkViews();
  engine_.addImportPath(QCoreApplication::applicationDirPath() + QStringLiteral("/" TQ_INSTALLED_MODULES));
  engine_.addImportPath(QStringLiteral(":/qt/qml"));
  engine_.addImageProvider(QStringLiteral("icons"), new IconPictures);
  engine_.addImageProvider(QStringLiteral("frames"), new FramePictures(shelf_));
  engine_.addImageProvider(QStringLiteral("posters"), new ClipPosters);
  engine_.setInitialProperties({{QStringLiteral("app"), QVariant::fromValue(&app)},
                                {QStringLiteral("delegate"), QVariant::fromValue(&delegate)},
                                {QStringLiteral("detail"), QVariant::fromValue(&detail_)},
                                {QStringLiteral("desktop"), QVariant::fromValue(&desktop)},
                                {QStringLiteral("updater"), QVariant::fromValue(&updater_)}});
  engine_.load(QUrl(QStringLiteral("qrc:/qt/qml/Tarquel/Views/Main.qml")));
  if (!engine_.rootObjects().isEmpty()) window_ = qobject_cast<QQuickWindow*>(engine_.rootObjects().first());
  if (!window_) throw std::runtime_error("The window's views could not be loaded.");

  delegate_.onOpenURLs = [&app](const QList<QUrl>& urls) { app.enqueue(urls); };
  delegate_.activeJobCount = [&app] { return app.workingJobCount(); };
  app.bootstrap();
}

MainWindow::~MainWindow() {
  delegate_.onOpenURLs = nullptr;
  delegate_.activeJobCount = nullptr;
  // The views, and rows of theirs that have gone, let go of what is still being made for them before the engine ends.
  delete window_;
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

}  // namespace tq
