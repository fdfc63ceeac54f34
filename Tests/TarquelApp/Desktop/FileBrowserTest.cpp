#include <QDesktopServices>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/Desktop/FileBrowser.hpp"
#include "TarquelApp/Desktop/PrivateBus.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq {
namespace {

using test::FakeService;
using test::noBus;
using test::PrivateBus;
using test::turnUntil;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const QString fileManager = QStringLiteral("org.freedesktop.FileManager1");
const QString showItems = QStringLiteral("ShowItems");

/// Stands in for the desktop's handler of files while it lives, and keeps what it was told to open.
class Openings : public QObject {
  Q_OBJECT

 public:
  Openings() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
  ~Openings() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

  QList<QUrl> urls;

 public Q_SLOTS:
  void open(const QUrl& url) { urls.append(url); }
};

class FileBrowserTest : public testing::Test {
 protected:
  /// What the file manager was asked to show by the only call so far.
  static QString shownIn(const FakeService& service) {
    turnUntil([&] { return !service.callsOf(showItems).empty(); });
    const auto arguments = service.callsOf(showItems).at(0).arguments();
    EXPECT_EQ(arguments.at(1).toString(), QString());
    const auto uris = arguments.at(0).toStringList();
    EXPECT_THAT(uris, SizeIs(1));
    return uris.value(0);
  }

  static QDBusMessage done(const QDBusMessage& call) { return call.createReply(); }

  void expectFolderOpened() {
    turnUntil([&] { return !openings.urls.isEmpty(); });
    EXPECT_THAT(openings.urls, ElementsAre(QUrl(QStringLiteral("file:///clips/"))));
  }

  PrivateBus bus;
  Openings openings;
};

TEST_F(FileBrowserTest, AsksTheFileManagerToShowTheFile) {
  FakeService service(bus, fileManager);
  service.answer = done;
  const QDBusConnection connection = bus.connect();
  FileBrowser browser(connection);
  browser.show("/clips/harbour.mp4");
  EXPECT_EQ(shownIn(service), QStringLiteral("file:///clips/harbour.mp4"));
  service.settle(connection);
  EXPECT_THAT(openings.urls, IsEmpty());
}

TEST_F(FileBrowserTest, SpacesSignsAndBytesOfAnyNameArriveAsOneFileURI) {
  FakeService service(bus, fileManager);
  service.answer = done;
  FileBrowser browser(bus.connect());
  browser.show("/clips/a b#c?d%e,\xc3\xa9\xff\n.mp4");
  EXPECT_EQ(shownIn(service), QStringLiteral("file:///clips/a%20b%23c%3Fd%25e%2C%C3%A9%FF%0A.mp4"));
}

TEST_F(FileBrowserTest, ARelativePathCountsFromTheCurrentFolder) {
  FakeService service(bus, fileManager);
  service.answer = done;
  FileBrowser browser(bus.connect());
  browser.show("harbour.mp4");
  EXPECT_EQ(shownIn(service),
            QString::fromLatin1(qtFileURL(std::filesystem::current_path() / "harbour.mp4").toEncoded()));
}

TEST_F(FileBrowserTest, OpensTheFolderWithoutABus) {
  FileBrowser browser(noBus());
  browser.show("/clips/harbour.mp4");
  expectFolderOpened();
}

TEST_F(FileBrowserTest, OpensTheFolderWithoutAFileManagerOnTheBus) {
  FileBrowser browser(bus.connect());
  browser.show("/clips/harbour.mp4");
  expectFolderOpened();
}

TEST_F(FileBrowserTest, OpensTheFolderWhenTheFileManagerRefuses) {
  FakeService service(bus, fileManager);
  service.answer = [](const QDBusMessage& call) { return call.createErrorReply(QDBusError::Failed, QString()); };
  FileBrowser browser(bus.connect());
  browser.show("/clips/harbour.mp4");
  expectFolderOpened();
}

TEST_F(FileBrowserTest, OpensTheFolderWhenTheFileManagerDoesNotAnswerInTime) {
  FakeService service(bus, fileManager);
  FileBrowser browser(bus.connect(), std::chrono::milliseconds(1));
  browser.show("/clips/harbour.mp4");
  expectFolderOpened();
}

TEST_F(FileBrowserTest, OpensTheFolderWhenTheFileManagerEndsInsteadOfAnswering) {
  FakeService service(bus, fileManager);
  FileBrowser browser(bus.connect());
  browser.show("/clips/harbour.mp4");
  shownIn(service);
  service.vanish();
  expectFolderOpened();
}

TEST_F(FileBrowserTest, OpensTheFolderWhenTheBusEndsBeforeAnAnswer) {
  FakeService service(bus, fileManager);
  FileBrowser browser(bus.connect());
  browser.show("/clips/harbour.mp4");
  shownIn(service);
  bus.stop();
  expectFolderOpened();
}

TEST_F(FileBrowserTest, AnAnswerThatComesAfterItsEndIsNobodys) {
  FakeService service(bus, fileManager);
  const QDBusConnection connection = bus.connect();
  {
    FileBrowser browser(connection);
    browser.show("/clips/harbour.mp4");
    shownIn(service);
  }
  service.send(service.callsOf(showItems).at(0).createErrorReply(QDBusError::Failed, QString()));
  service.settle(connection);
  EXPECT_THAT(openings.urls, IsEmpty());
}

TEST_F(FileBrowserTest, AnEmptyPathShowsNothing) {
  FakeService service(bus, fileManager);
  const QDBusConnection connection = bus.connect();
  FileBrowser browser(connection);
  browser.show({});
  service.settle(connection);
  EXPECT_THAT(service.callsOf(showItems), IsEmpty());
}

}  // namespace
}  // namespace tq

#include "FileBrowserTest.moc"
