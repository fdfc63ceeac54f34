#pragma once

#include <chrono>

namespace tq {

/// Asks the session's and the system's message bus for a sign of life and leaves a bus that accepts a connection, but
/// gives none, out of this process and those it starts: its address becomes one to which nobody connects, so that every
/// use of it fails at once. A client of D-Bus waits up to 25 s for such a bus, and Qt's platform plug-ins are such
/// clients as well. To be called before the QGuiApplication is made, while the process has one thread.
///
/// A bus that cannot be reached at all, or not by a Unix socket, is left to its clients.
/// @param patience  for both together; a healthy bus answers within a millisecond
void leaveOutMuteBuses(std::chrono::milliseconds patience = std::chrono::milliseconds(150));

}  // namespace tq
