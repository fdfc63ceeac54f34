#include <QCoreApplication>
#include <QDBusConnection>
#include <QSocketNotifier>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

#include "TarquelApp/Desktop/MuteBuses.hpp"
#include "TarquelApp/Desktop/SingleInstance.hpp"

namespace {

void say(const QByteArray& what, const QByteArray& more = {}) {
  std::printf("%s%s\n", what.constData(), more.constData());
  std::fflush(stdout);
}

}  // namespace

/// A program that does what every start of Tarquel does about the others, and says so line by line:
///   SingleStart PATIENCE_MILLISECONDS [FILE...]
/// First "first", "alone" or "handed over"; then what comes in, until its standard input ends.
int main(int argumentCount, char** arguments) {
  using namespace tq;
  const auto request = LaunchRequest::read({arguments + 2, arguments + argumentCount}, std::filesystem::current_path());
  leaveOutMuteBuses();
  QCoreApplication application(argumentCount, arguments);
  SingleInstance instance(QDBusConnection::sessionBus(), std::chrono::milliseconds(std::atoi(arguments[1])));
  QObject::connect(&instance, &SingleInstance::filesOpened, [](const QList<QUrl>& files) {
    for (const QUrl& file : files)
      say("open ", file.toEncoded());
  });
  QObject::connect(&instance, &SingleInstance::activated,
                   [](const QString& token) { say("activate ", token.toUtf8()); });

  switch (instance.start(request)) {
    case SingleInstance::Role::first: say("first"); break;
    case SingleInstance::Role::alone: say("alone"); break;
    case SingleInstance::Role::handedOver: say("handed over"); return 0;
  }
  QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
  return application.exec();
}
