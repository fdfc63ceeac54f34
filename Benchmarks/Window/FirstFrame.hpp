#pragma once

#include <QByteArray>
#include <QString>

namespace tq::window {

/// Starts the program so many times, each in a new home folder, and prints how long it took from the start of the
/// process to its first picture, and the memory it took then. The program says itself, by Qt's logging of the scene
/// graph, when it has drawn. The session bus must not be the user's: a Tarquel that runs there would take over. Needs a
/// QCoreApplication; throws `std::runtime_error` for a program that never draws.
void measureStart(const QString& program, int rounds);

/// A field of proc_pid_smaps_rollup(5), such as "Rss" or "Pss", in MB; 0 for a process that is not there.
double memoryOf(qint64 process, const QByteArray& field);

}  // namespace tq::window
