#include "Benchmarks/Window/FirstFrame.hpp"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <vector>

#include "Benchmarks/Shared/Measure.hpp"

namespace tq::window {

namespace {

constexpr int patienceMilliseconds = 30'000;

struct Start {
  double seconds = 0;
  double residentMegabytes = 0;
  double proportionalMegabytes = 0;
};

/// Both of Qt's render loops end such a line with what the picture took; nothing was drawn in no time at all.
bool hasDrawn(const QByteArray& log) {
  return std::ranges::any_of(log.split('\n'), [](const QByteArray& line) {
    return line.contains("rame rendered") && line.contains("ms,") && !line.contains(" in 0ms");
  });
}

Start startOnce(const QString& program) {
  const QTemporaryDir home;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  for (const char* name : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
    environment.insert(QLatin1String(name), home.path());
  environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("qt.scenegraph.time.renderloop=true"));
  environment.insert(QStringLiteral("QT_FORCE_STDERR_LOGGING"), QStringLiteral("1"));
  QProcess process;
  process.setProcessEnvironment(environment);
  process.setProcessChannelMode(QProcess::MergedChannels);
  QElapsedTimer elapsed;
  elapsed.start();
  process.start(program, QStringList());
  QByteArray said;
  while (!hasDrawn(said)) {
    if (!process.waitForReadyRead(patienceMilliseconds))
      throw std::runtime_error("the program never drew: " + said.toStdString());
    said += process.readAll();
  }
  const Start start{.seconds = static_cast<double>(elapsed.nsecsElapsed()) * 1e-9,
                    .residentMegabytes = memoryOf(process.processId(), "Rss"),
                    .proportionalMegabytes = memoryOf(process.processId(), "Pss")};
  process.kill();
  process.waitForFinished();
  return start;
}

double median(const std::vector<Start>& starts, double Start::*part) {
  std::vector<double> values;
  for (const Start& start : starts)
    values.push_back(start.*part);
  return compare::quantile(values, 0.5);
}

}  // namespace

double memoryOf(qint64 process, const QByteArray& field) {
  QFile file(QStringLiteral("/proc/%1/smaps_rollup").arg(process));
  if (!file.open(QIODevice::ReadOnly)) return 0;
  for (const QByteArray& line : file.readAll().split('\n'))
    if (line.startsWith(field + ":")) return line.simplified().split(' ').value(1).toDouble() / 1024;
  return 0;
}

void measureStart(const QString& program, int rounds) {
  startOnce(program);  // from now on the files are in memory
  std::vector<Start> starts;
  for (int round = 0; round < rounds; ++round)
    starts.push_back(startOnce(program));
  std::vector<double> seconds;
  for (const Start& start : starts)
    seconds.push_back(start.seconds);
  std::printf("first picture (%s): %.0f ms, longest of %d %.0f ms; memory then: %.0f MB resident, %.0f MB of its own\n",
              qEnvironmentVariable("QT_QPA_PLATFORM").toUtf8().constData(), median(starts, &Start::seconds) * 1e3,
              rounds, compare::quantile(seconds, 1) * 1e3, median(starts, &Start::residentMegabytes),
              median(starts, &Start::proportionalMegabytes));
}

}  // namespace tq::window
