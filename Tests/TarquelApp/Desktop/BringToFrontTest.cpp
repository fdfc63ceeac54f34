#include <QWindow>
#include <gtest/gtest.h>

#include "Support/EnvironmentVariable.hpp"
#include "TarquelApp/Desktop/BringToFront.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq {
namespace {

using test::turnUntil;

TEST(BringToFront, AWindowBehindAnotherGetsTheKeyboard) {
  QWindow window, other;
  window.show();
  other.show();
  bringToFront(other, {});
  turnUntil([&] { return other.isActive(); });
  bringToFront(window, {});
  turnUntil([&] { return window.isActive(); });
}

TEST(BringToFront, AMinimizedWindowComesBackAsItWas) {
  QWindow window;
  window.showMaximized();
  window.setWindowStates(window.windowStates() | Qt::WindowMinimized);
  bringToFront(window, {});
  EXPECT_EQ(window.windowStates(), Qt::WindowMaximized);
  EXPECT_TRUE(window.isVisible());
}

TEST(BringToFront, AHiddenWindowIsShown) {
  QWindow window;
  bringToFront(window, QStringLiteral("token"));
  EXPECT_TRUE(window.isVisible());
}

TEST(BringToFront, NoTokenIsLeftToOtherProgramsWhereTheDesktopHasNone) {
  const test::EnvironmentVariable none("XDG_ACTIVATION_TOKEN", std::nullopt);
  QWindow window;
  bringToFront(window, QStringLiteral("token"));
  EXPECT_FALSE(qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN"));
}

}  // namespace
}  // namespace tq
