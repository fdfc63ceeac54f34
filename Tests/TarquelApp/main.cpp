#include <QGuiApplication>
#include <gtest/gtest.h>

#include "TarquelApp/Appearance.hpp"
#include "TarquelApp/QtWarnings.hpp"

/// What stands here has an event loop under it, and a screen that nobody sees.
int main(int argumentCount, char** arguments) {
  testing::InitGoogleTest(&argumentCount, arguments);
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QML_IMPORT_PATH", TQ_QML_MODULES);
  tq::prepareForApplication();
  const QGuiApplication application(argumentCount, arguments);
  tq::setAppearance(false);
  tq::test::failOnQtWarnings();
  return RUN_ALL_TESTS();
}
