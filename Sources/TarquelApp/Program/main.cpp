// tarquel: the window.

#include <QDBusConnection>
#include <QGuiApplication>
#include <QIcon>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <span>
#include <utility>

#include "TQPersistence/AppSupportPaths.hpp"
#include "TQPipeline/JobStages.hpp"
#include "TQPlatform/Concurrency/Clock.hpp"
#include "TQPlatform/Network/CurlSession.hpp"
#include "TQPlatform/Process/ChildProcess.hpp"
#include "TQPlatform/Process/Interrupts.hpp"
#include "TarquelApp/AppDelegate.hpp"
#include "TarquelApp/AppState.hpp"
#include "TarquelApp/Appearance.hpp"
#include "TarquelApp/Desktop/ApplicationID.hpp"
#include "TarquelApp/Desktop/BringToFront.hpp"
#include "TarquelApp/Desktop/ColorScheme.hpp"
#include "TarquelApp/Desktop/FileBrowser.hpp"
#include "TarquelApp/Desktop/FilePanel.hpp"
#include "TarquelApp/Desktop/LaunchRequest.hpp"
#include "TarquelApp/Desktop/LauncherEntry.hpp"
#include "TarquelApp/Desktop/MotionPreference.hpp"
#include "TarquelApp/Desktop/MuteBuses.hpp"
#include "TarquelApp/Desktop/SingleInstance.hpp"
#include "TarquelApp/Desktop/SuspendInhibitor.hpp"
#include "TarquelApp/DesktopActions.hpp"
#include "TarquelApp/DesktopStatus.hpp"
#include "TarquelApp/MainWindow.hpp"
#include "TarquelApp/Renderer.hpp"

namespace {

using namespace tq;

int run(QGuiApplication& application, const LaunchRequest& request) {
  const QDBusConnection session = QDBusConnection::sessionBus();
  SingleInstance instance(session);
  if (instance.start(request) == SingleInstance::Role::handedOver) return EXIT_SUCCESS;

  chooseRenderer();
  ColorScheme scheme(session);
  const bool isDarkOtherwise = desktopLooksDark();
  const auto follow = [isDarkOtherwise](ColorScheme::Preference preference) {
    setAppearance(preference == ColorScheme::Preference::none ? isDarkOtherwise
                                                              : preference == ColorScheme::Preference::dark);
  };
  follow(scheme.ask());
  QObject::connect(&scheme, &ColorScheme::changed, &application, follow);

  AppDelegate delegate;
  FileBrowser files(session);
  FilePanel panel(session);
  DesktopActions desktop(
      [&files](const std::filesystem::path& file) { files.show(file); },
      [&panel](const FileQuestion& question, FileQuestion::Answer answer) { panel.ask(question, std::move(answer)); });
  const MotionPreference motion(session);
  QObject::connect(&motion, &MotionPreference::changed, &desktop, &DesktopActions::setReducedMotion);
  AppState state(AppSupportPaths::ofUser(), standardJobStages(std::make_shared<CurlSession>()));
  LauncherEntry launcher(session);
  SuspendInhibitor inhibitor(session, QDBusConnection::systemBus());
  const DesktopStatus status(state, launcher, inhibitor);
  MainWindow window(state, delegate, desktop, std::make_shared<SystemClock>());

  QObject::connect(&instance, &SingleInstance::filesOpened, &delegate, &AppDelegate::openURLs);
  QObject::connect(&instance, &SingleInstance::activated, &delegate,
                   [&window](const QString& token) { bringToFront(window.window(), token); });
  QObject::connect(&delegate, &AppDelegate::terminated, &application, [&state] {
    state.finish();
    // A run under way may take long to stop, and there is nothing of it to keep.
    killRunningChildren();
    leaveAtOnce(EXIT_SUCCESS);
  });
  delegate.openURLs(request.files);
  return QGuiApplication::exec();
}

}  // namespace

int main(int argumentCount, char** arguments) {
  try {
    const auto named = std::span(arguments, static_cast<std::size_t>(argumentCount)).subspan(1);
    const LaunchRequest request = LaunchRequest::read(named, std::filesystem::current_path());
    prepareForApplication();
    leaveOutMuteBuses();
    QGuiApplication application(argumentCount, arguments);
    QGuiApplication::setApplicationName(QStringLiteral("tarquel"));
    QGuiApplication::setApplicationVersion(QStringLiteral(TQ_VERSION));
    QGuiApplication::setDesktopFileName(ApplicationID::name());
    const QIcon ownIcon(QStringLiteral(":/%1.svg").arg(ApplicationID::name()));
    QGuiApplication::setWindowIcon(QIcon::fromTheme(ApplicationID::name(), ownIcon));
    return run(application, request);
  } catch (const std::exception& error) {
    std::cerr << "tarquel: " << error.what() << "\n";
    return EXIT_FAILURE;
  }
}
