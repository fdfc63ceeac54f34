#include "TarquelApp/Desktop/BringToFront.hpp"

#include <QGuiApplication>
#include <QWindow>

namespace tq {

void bringToFront(QWindow& window, const QString& activationToken) {
  // Where Qt's Wayland plugin looks for the token; it takes the variable away again.
  if (!activationToken.isEmpty() && QGuiApplication::platformName().startsWith(QStringLiteral("wayland")))
    qputenv("XDG_ACTIVATION_TOKEN", activationToken.toUtf8());
  window.setVisible(true);
  window.setWindowStates(window.windowStates() & ~Qt::WindowMinimized);
  window.raise();
  window.requestActivate();
}

}  // namespace tq
