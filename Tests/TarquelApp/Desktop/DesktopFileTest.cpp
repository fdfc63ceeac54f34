#include <QMimeDatabase>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

#include "Support/TemporaryFolder.hpp"
#include "TQCore/VideoExtensions.hpp"
#include "TarquelApp/Desktop/ApplicationID.hpp"
#include "TarquelApp/Text.hpp"

namespace tq {
namespace {

using testing::HasSubstr;
using testing::UnorderedElementsAreArray;

const std::filesystem::path packaging = TQ_PACKAGING_FOLDER;

std::string fileContent(const std::string& extension) {
  return test::contentOf(packaging / (textOf(ApplicationID::name()) + extension));
}

/// Value of a key in the desktop file.
std::string value(const std::string& key) {
  std::istringstream lines(fileContent(".desktop"));
  for (std::string line; std::getline(lines, line);)
    if (line.starts_with(key + "=")) return line.substr(key.size() + 1);
  return {};
}

std::string typeOf(std::string_view extension) {
  const QString name = QStringLiteral("clip.") + qtText(extension);
  return textOf(QMimeDatabase().mimeTypeForFile(name, QMimeDatabase::MatchExtension).name());
}

TEST(DesktopFile, OffersTheProgramForFoldersAndForEveryKindOfClipThatItTakesAndNoOther) {
  std::set<std::string> taken{"inode/directory"};
  for (const std::string_view extension : VideoExtensions::supported)
    taken.insert(typeOf(extension));
  std::vector<std::string> offered;
  std::istringstream types(value("MimeType"));
  for (std::string type; std::getline(types, type, ';');)
    offered.push_back(type);
  EXPECT_THAT(offered, UnorderedElementsAreArray(taken));
}

TEST(DesktopFile, BearsTheNameThatTheProgramHasOnTheDesktop) {
  EXPECT_EQ(value("Icon"), textOf(ApplicationID::name()));
  EXPECT_TRUE(exists(packaging / "icons" / (value("Icon") + ".svg")));
  EXPECT_EQ(ApplicationID::launcherURI(), QStringLiteral("application://%1.desktop").arg(ApplicationID::name()));
  EXPECT_EQ(ApplicationID::objectPath(),
            QStringLiteral("/") + ApplicationID::name().replace(QLatin1Char('.'), QLatin1Char('/')));
}

TEST(DesktopFile, HandsAnyNumberOfFilesToOneStart) {
  EXPECT_EQ(value("Exec"), "tarquel %U");
  EXPECT_EQ(value("DBusActivatable"), "false");
}

TEST(AppStreamMetadata, IsOfTheSameProgramWithTheSameKindsOfClip) {
  const std::string metadata = fileContent(".metainfo.xml");
  EXPECT_THAT(metadata, HasSubstr("<id>" + textOf(ApplicationID::name()) + "</id>"));
  EXPECT_THAT(metadata, HasSubstr(">" + textOf(ApplicationID::name()) + ".desktop</launchable>"));
  for (const std::string_view extension : VideoExtensions::supported)
    EXPECT_THAT(metadata, HasSubstr("<mediatype>" + typeOf(extension) + "</mediatype>"));
}

}  // namespace
}  // namespace tq
