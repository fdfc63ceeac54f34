#pragma once

#include <QProcess>
#include <csignal>
#include <filesystem>
#include <string>
#include <sys/types.h>

#include "TarquelApp/Turning.hpp"

namespace tq::test {

/// A program that says line by line what it does. Killed when the test ends before it does.
class TalkingProcess {
 public:
  explicit TalkingProcess(const char* program, const QStringList& arguments = {},
                          const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment(),
                          const std::filesystem::path& folder = std::filesystem::current_path()) {
    process_.setProcessEnvironment(environment);
    process_.setWorkingDirectory(QString::fromStdString(folder));
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.start(QString::fromLocal8Bit(program), arguments);
  }

  ~TalkingProcess() { kill(); }
  TalkingProcess(const TalkingProcess&) = delete;
  TalkingProcess& operator=(const TalkingProcess&) = delete;

  /// The next line that it says; turns the event loop meanwhile.
  std::string line() {
    turnUntil([&] { return process_.canReadLine(); });
    return process_.readLine().trimmed().toStdString();
  }

  void signal(int number) { ::kill(static_cast<pid_t>(process_.processId()), number); }

  /// Its exit status, once it has ended of itself.
  int status() {
    turnUntil([&] { return process_.state() == QProcess::NotRunning; });
    return process_.exitStatus() == QProcess::NormalExit ? process_.exitCode() : -1;
  }

  /// Ends its standard input, and waits until it has ended.
  int quit() {
    process_.closeWriteChannel();
    return status();
  }

  void kill() {
    process_.kill();
    process_.waitForFinished();
  }

 private:
  QProcess process_;
};

}  // namespace tq::test
