// tarquel: the window.

#include <QGuiApplication>
#include <QList>
#include <QUrl>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <span>

#include "TQPersistence/AppSupportPaths.hpp"
#include "TQPipeline/JobStages.hpp"
#include "TQPlatform/ChildProcess.hpp"
#include "TQPlatform/Clock.hpp"
#include "TQPlatform/CurlSession.hpp"
#include "TQPlatform/Interrupts.hpp"
#include "TarquelApp/AppDelegate.hpp"
#include "TarquelApp/AppState.hpp"
#include "TarquelApp/Appearance.hpp"
#include "TarquelApp/DesktopActions.hpp"
#include "TarquelApp/MainWindow.hpp"
#include "TarquelApp/Text.hpp"

namespace {

using namespace tq;

/// The clips and folders that the program was started with.
QList<QUrl> namedFiles(std::span<char* const> arguments) {
  QList<QUrl> files;
  for (const char* argument : arguments) {
    const QUrl url = QUrl::fromEncoded(argument, QUrl::StrictMode);
    files.append(url.isLocalFile() ? url : qtFileURL(std::filesystem::absolute(argument)));
  }
  return files;
}

int run(QGuiApplication& application, const QList<QUrl>& files) {
  setAppearance(desktopLooksDark());
  AppDelegate delegate;
  DesktopActions desktop([](const std::filesystem::path&) {});
  AppState state(AppSupportPaths::ofUser(), standardJobStages(std::make_shared<CurlSession>()));
  MainWindow window(state, delegate, desktop, std::make_shared<SystemClock>());
  QObject::connect(&delegate, &AppDelegate::terminated, &application, [&] {
    state.finish();
    // A run under way may take long to stop, and there is nothing of it to keep.
    killRunningChildren();
    leaveAtOnce(EXIT_SUCCESS);
  });
  delegate.openURLs(files);
  return QGuiApplication::exec();
}

}  // namespace

int main(int argumentCount, char** arguments) {
  prepareForApplication();
  QGuiApplication application(argumentCount, arguments);
  QGuiApplication::setApplicationName(QStringLiteral("tarquel"));
  QGuiApplication::setApplicationVersion(QStringLiteral(TQ_VERSION));
  try {
    return run(application, namedFiles(std::span(arguments, static_cast<std::size_t>(argumentCount)).subspan(1)));
  } catch (const std::exception& error) {
    std::cerr << "tarquel: " << error.what() << "\n";
    return EXIT_FAILURE;
  }
}
