#pragma once

#include <QString>

class QWindow;

namespace tq {

/// Shows the window, out of its icon if need be, above the others and with the keyboard. Where a desktop lets programs
/// do that only on a user's behalf, the token of that user's action allows it; without one it may only ask for
/// attention.
void bringToFront(QWindow& window, const QString& activationToken);

}  // namespace tq
