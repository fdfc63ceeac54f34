#pragma once

#include <chrono>

namespace tq {

/// Asks the session's and the system's message bus for a sign of life and leaves a bus that accepts a connection, but
/// gives none, out of this process and those it starts: its address becomes one to which nobody connects, so that every
/// use of it fails at once. Otherwise the first use of QDBusConnection::sessionBus() holds the start until such a bus
/// hangs up. To be called before the QGuiApplication is made, while the process has one thread.
///
/// A bus that cannot be reached at all, or not by a Unix socket, is left to its clients.
/// @param patience  for both together. A healthy bus answers within a millisecond; one on a machine that is hardly up
/// must not be left out, since a second start would not find the first any more.
void leaveOutMuteBuses(std::chrono::milliseconds patience = std::chrono::seconds(1));

}  // namespace tq
