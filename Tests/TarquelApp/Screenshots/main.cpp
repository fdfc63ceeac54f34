// tarquel-screenshots [--dark] [--only SCENE] FOLDER: a picture of each main state of the window. The scale is Qt's:
// QT_SCALE_FACTOR=2 gives pictures of twice the size.

#include <QCommandLineParser>
#include <QGuiApplication>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>

#include "TarquelApp/Appearance.hpp"
#include "TarquelApp/Screenshots/Scenes.hpp"

int main(int argumentCount, char** arguments) {
  using namespace tq;
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QML_IMPORT_PATH", TQ_QML_MODULES);
  prepareForApplication();
  const QGuiApplication application(argumentCount, arguments);
  QCommandLineParser parser;
  const QCommandLineOption dark(QStringLiteral("dark"), QStringLiteral("The dark look."));
  const QCommandLineOption only(QStringLiteral("only"), QStringLiteral("This scene alone."), QStringLiteral("scene"));
  parser.addOptions({dark, only});
  parser.addPositionalArgument(QStringLiteral("folder"), QStringLiteral("Where the pictures go."));
  parser.addHelpOption();
  parser.process(application);
  if (parser.positionalArguments().size() != 1) parser.showHelp(EXIT_FAILURE);
  setAppearance(parser.isSet(dark));
  const std::filesystem::path folder = parser.positionalArguments().first().toStdString();
  try {
    std::filesystem::create_directories(folder);
    for (const test::Scene& scene : test::scenes()) {
      if (parser.isSet(only) && parser.value(only) != QLatin1String(scene.name)) continue;
      test::WindowHarness harness;
      const std::string name = std::string(scene.name) + (parser.isSet(dark) ? "-dark" : "-light") + "-" +
                               std::to_string(static_cast<int>(qRound(qGuiApp->devicePixelRatio()))) + "x.png";
      const QImage picture = scene.stage(harness);
      if (picture.isNull() || !picture.save(QString::fromStdString((folder / name).string())))
        throw std::runtime_error("no picture of " + name);
      std::cout << name << std::endl;
    }
  } catch (const std::exception& error) {
    std::cerr << "tarquel-screenshots: " << error.what() << "\n";
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
