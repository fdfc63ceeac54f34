#include <QGuiApplication>
#include <gtest/gtest.h>

#include "TarquelApp/Appearance.hpp"
#include "TarquelApp/QtWarnings.hpp"
#include "TarquelApp/X11/VirtualScreen.hpp"

/// What stands here has an event loop under it, and an X server that it shares with the programs it starts.
int main(int argumentCount, char** arguments) {
  testing::InitGoogleTest(&argumentCount, arguments);
  const tq::test::VirtualScreen screen;
  qputenv("DISPLAY", screen.display().c_str());
  qputenv("QT_QPA_PLATFORM", "xcb");
  qputenv("QT_QUICK_BACKEND", "software");
  tq::prepareForApplication();
  const QGuiApplication application(argumentCount, arguments);
  tq::setAppearance(false);
  tq::test::failOnQtWarnings();
  return RUN_ALL_TESTS();
}
