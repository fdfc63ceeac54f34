#include <QWindow>
#include <gtest/gtest.h>

#include "Support/EnvironmentVariable.hpp"
#include "TarquelApp/Desktop/BringToFront.hpp"
#include "TarquelApp/QtWarnings.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq {
namespace {

using test::turnUntil;

class BringToFront : public testing::Test {
 private:
  /// Said where nobody sees the screen.
  const test::ExpectedQtWarning noOrder_{QStringLiteral("does not support raise()")};
};

TEST_F(BringToFront, AWindowBehindAnotherGetsTheKeyboard) {
  QWindow window, other;
  window.show();
  other.show();
  bringToFront(other, {});
  turnUntil([&] { return other.isActive(); });
  bringToFront(window, {});
  turnUntil([&] { return window.isActive(); });
}

TEST_F(BringToFront, AMinimizedWindowComesBackAsItWas) {
  QWindow window;
  window.showMaximized();
  window.setWindowStates(window.windowStates() | Qt::WindowMinimized);
  bringToFront(window, {});
  EXPECT_EQ(window.windowStates(), Qt::WindowMaximized);
  EXPECT_TRUE(window.isVisible());
}

TEST_F(BringToFront, AHiddenWindowIsShown) {
  QWindow window;
  bringToFront(window, QStringLiteral("token"));
  EXPECT_TRUE(window.isVisible());
}

TEST_F(BringToFront, NoTokenIsLeftToOtherProgramsWhereTheDesktopHasNone) {
  const test::EnvironmentVariable none("XDG_ACTIVATION_TOKEN", std::nullopt);
  QWindow window;
  bringToFront(window, QStringLiteral("token"));
  EXPECT_FALSE(qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN"));
}

}  // namespace
}  // namespace tq
