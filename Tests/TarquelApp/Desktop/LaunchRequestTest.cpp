#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "Support/EnvironmentVariable.hpp"
#include "TarquelApp/Desktop/LaunchRequest.hpp"

namespace tq {
namespace {

using test::EnvironmentVariable;
using testing::ElementsAre;
using testing::IsEmpty;

LaunchRequest started(std::vector<std::string> arguments) {
  std::vector<char*> pointers;
  for (std::string& argument : arguments)
    pointers.push_back(argument.data());
  return LaunchRequest::read(pointers, "/home/ada");
}

std::vector<std::string> textsOf(const QStringList& uris) {
  std::vector<std::string> texts;
  for (const QString& uri : uris)
    texts.push_back(uri.toStdString());
  return texts;
}

std::vector<std::string> filesOf(const std::vector<std::string>& arguments) {
  return textsOf(started(arguments).uris());
}

std::vector<std::string> filesReceived(const QStringList& uris) {
  return textsOf(LaunchRequest::received(uris, {}).uris());
}

class LaunchRequestTest : public testing::Test {
 protected:
  const EnvironmentVariable noToken{"XDG_ACTIVATION_TOKEN", std::nullopt};
  const EnvironmentVariable noID{"DESKTOP_STARTUP_ID", std::nullopt};
};

TEST_F(LaunchRequestTest, ARelativePathCountsFromTheWorkingFolder) {
  EXPECT_THAT(filesOf({"clips/a.mp4", "./b.mp4"}),
              ElementsAre("file:///home/ada/clips/a.mp4", "file:///home/ada/./b.mp4"));
}

TEST_F(LaunchRequestTest, AnAbsolutePathIsTakenAsItIs) {
  EXPECT_THAT(filesOf({"/clips/a.mp4"}), ElementsAre("file:///clips/a.mp4"));
}

TEST_F(LaunchRequestTest, EveryByteOfANameIsKept) {
  EXPECT_THAT(filesOf({"/a b%41#?\xff.mp4"}), ElementsAre("file:///a%20b%2541%23%3F%FF.mp4"));
}

TEST_F(LaunchRequestTest, FileURLsOfTheDesktopAreTaken) {
  EXPECT_THAT(filesOf({"file:///clips/a%20b.mp4", "file://localhost/c.mp4", "file:/d.mp4"}),
              ElementsAre("file:///clips/a%20b.mp4", "file:///c.mp4", "file:///d.mp4"));
}

TEST_F(LaunchRequestTest, AddressesAreDropped) {
  EXPECT_THAT(filesOf({"https://example.com/a.mp4", "smb://server/a.mp4", "file://server/a.mp4", ""}), IsEmpty());
}

TEST_F(LaunchRequestTest, ANameWithAColonIsAName) {
  EXPECT_THAT(filesOf({"take 1: harbour.mp4", "file:harbour.mp4", ":.mp4"}),
              ElementsAre("file:///home/ada/take%201%3A%20harbour.mp4", "file:///home/ada/file%3Aharbour.mp4",
                          "file:///home/ada/%3A.mp4"));
}

TEST_F(LaunchRequestTest, TheTokenIsThatOfTheEnvironment) {
  const EnvironmentVariable id("DESKTOP_STARTUP_ID", "files-1_TIME42");
  EXPECT_EQ(started({}).activationToken, QStringLiteral("files-1_TIME42"));
  const EnvironmentVariable token("XDG_ACTIVATION_TOKEN", "9b0c");
  EXPECT_EQ(started({}).activationToken, QStringLiteral("9b0c"));
}

TEST_F(LaunchRequestTest, ATokenThatNoDesktopMakesIsNone) {
  for (const std::string& text : {std::string("a\nb"), std::string("\xff"), std::string(1025, 'a')}) {
    const EnvironmentVariable token("XDG_ACTIVATION_TOKEN", text);
    EXPECT_TRUE(started({}).activationToken.isEmpty());
  }
}

TEST_F(LaunchRequestTest, WhatIsSentArrivesAsItWas) {
  const EnvironmentVariable token("XDG_ACTIVATION_TOKEN", "9b0c");
  const LaunchRequest sent = started({"/a b.mp4", "c\xff.mp4"});
  EXPECT_EQ(LaunchRequest::received(sent.uris(), sent.platformData()), sent);
}

TEST_F(LaunchRequestTest, OfReceivedURIsOnlyLocalFilesAreTaken) {
  const QStringList hostile{QStringLiteral("https://example.com/a.mp4"),
                            QStringLiteral("file://server/a.mp4"),
                            QStringLiteral("file:a.mp4"),
                            QStringLiteral("a.mp4"),
                            QStringLiteral("/a.mp4"),
                            QStringLiteral("file:///a%00b.mp4"),
                            QStringLiteral("file://"),
                            QStringLiteral("javascript:alert(1)"),
                            QStringLiteral("//server/a.mp4"),
                            QString(),
                            QString(QChar(0xd800))};
  EXPECT_THAT(filesReceived(hostile), IsEmpty());
  EXPECT_THAT(filesReceived(hostile + QStringList(QStringLiteral("file:///b.mp4"))), ElementsAre("file:///b.mp4"));
}

TEST_F(LaunchRequestTest, QueryAndFragmentOfAReceivedURIAreNoPartOfTheName) {
  EXPECT_THAT(filesReceived({QStringLiteral("file:///a.mp4?b#c")}), ElementsAre("file:///a.mp4"));
}

TEST_F(LaunchRequestTest, AReceivedTokenOfAnotherTypeIsNone) {
  const QVariantMap data{{QStringLiteral("activation-token"), QStringList{QStringLiteral("a"), QStringLiteral("b")}},
                         {QStringLiteral("desktop-startup-id"), QStringLiteral("id")}};
  EXPECT_EQ(LaunchRequest::received({}, data).activationToken, QStringLiteral("id"));
}

}  // namespace
}  // namespace tq
