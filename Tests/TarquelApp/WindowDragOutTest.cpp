// A row that is dragged out of the window with the mouse. The screen of the tests takes no drag anywhere, so what other
// programs are offered is read as the drag begins.

#include <QDrag>
#include <QMimeData>
#include <QQmlProperty>
#include <QTest>
#include <QtQml>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

using test::turnUntil;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::UnorderedElementsAre;
using enum JobStatus;

/// What the drags of an item have offered to other programs.
class Offers : public QObject {
  Q_OBJECT

 public:
  explicit Offers(QQuickItem& carried) : carried_(carried) {
    const QObject* drag =
        QQmlProperty(&carried, QStringLiteral("Drag.supportedActions"), qmlContext(&carried)).object();
    connect(drag, SIGNAL(dragStarted()), this, SLOT(note()));
  }

  std::vector<std::map<std::string, std::string>> contents;  ///< of each drag, by format
  std::vector<std::filesystem::path> files;                  ///< as a program reads them that is made with Qt

 public Q_SLOTS:
  void note() {
    const auto* drag = carried_.findChild<QDrag*>();
    ASSERT_NE(drag, nullptr);
    auto& content = contents.emplace_back();
    for (const QString& format : drag->mimeData()->formats())
      content[textOf(format)] = drag->mimeData()->data(format).toStdString();
    for (const QUrl& url : drag->mimeData()->urls())
      files.push_back(pathOf(url));
  }

 private:
  QQuickItem& carried_;
};

constexpr const char* uriList = "text/uri-list";
constexpr const char* ownRow = "application/x-tarquel-job";

class WindowDragOut : public testing::Test, protected test::WindowHarness {
 protected:
  void launchWith(const std::string& clip) {
    launch();
    drop(clip, done);
    turnUntil([&] { return shows("queueRow"); });
    picture();  // the row stands where it stays
  }

  /// Takes hold of the only row, and draws it so far to the right, a step at a time.
  void drag(int far, Qt::MouseButton button = Qt::LeftButton) {
    const QQuickItem& row = item("queueRow");
    const QPoint hold = row.mapToScene({row.width() / 2, row.height() / 2}).toPoint();
    QTest::mousePress(&window(), button, Qt::NoModifier, hold);
    for (int way = 0; way <= far; way += 3)
      QTest::mouseMove(&window(), hold + QPoint(way, 0));
    QTest::mouseRelease(&window(), button, Qt::NoModifier, hold + QPoint(far, 0));
  }
};

TEST_F(WindowDragOut, OffersItsFileToOtherPrograms) {
  launchWith("a.mov");
  Offers offers(item("rowFile"));
  drag(60);
  ASSERT_EQ(offers.contents.size(), 1U);
  EXPECT_THAT(offers.contents[0], UnorderedElementsAre(Key(uriList), Key(ownRow)));
  EXPECT_EQ(offers.contents[0][uriList], "file://" + (engine.folder / "a.mov").string() + "\r\n");
  EXPECT_THAT(offers.files, ElementsAre(engine.folder / "a.mov"));
}

TEST_F(WindowDragOut, KeepsEveryByteOfAName) {
  const std::string name = "100% #1?%41 \xff ä&b+c.mov";
  launchWith(name);
  Offers offers(item("rowFile"));
  drag(60);
  EXPECT_THAT(offers.files, ElementsAre(engine.folder / name));
  EXPECT_THAT(offers.contents.at(0)[uriList],
              testing::EndsWith("/100%25%20%231%3F%2541%20%FF%20%C3%A4%26b%2Bc.mov\r\n"));
}

TEST_F(WindowDragOut, IsForCopiesAlone) {
  launchWith("a.mov");
  QQuickItem& carried = item("rowFile");
  const auto actions = QQmlProperty(&carried, QStringLiteral("Drag.supportedActions"), qmlContext(&carried)).read();
  EXPECT_EQ(actions.toInt(), Qt::CopyAction) << "nobody may move the clip away";
}

TEST_F(WindowDragOut, AHandThatTremblesDragsNothing) {
  launchWith("a.mov");
  Offers offers(item("rowFile"));
  drag(6);
  EXPECT_THAT(offers.contents, IsEmpty());
}

TEST_F(WindowDragOut, ComesAgainAfterADragThatNobodyTook) {
  launchWith("a.mov");
  Offers offers(item("rowFile"));
  drag(60);
  drag(60);
  EXPECT_EQ(offers.contents.size(), 2U);
  EXPECT_EQ(item("rowFile").position(), QPointF()) << "it is where it was";
}

TEST_F(WindowDragOut, IsNoClipForTheQueueItCameFrom) {
  launchWith("a.mov");
  QMimeData row;
  row.setUrls({qtFileURL(engine.folder / "a.mov")});
  row.setData(QString::fromLatin1(ownRow), {});
  EXPECT_FALSE(letGo(row));
  EXPECT_FALSE(shows("dropHint"));
  drop("b.mov", done);
  EXPECT_EQ(state().jobList().size(), 2U);
}

}  // namespace
}  // namespace tq

#include "WindowDragOutTest.moc"
