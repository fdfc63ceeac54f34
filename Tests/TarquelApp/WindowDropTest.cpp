// What a user drops on the window.

#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QDragMoveEvent>
#include <QMimeData>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using test::expectSoon;
using test::turnUntil;
using testing::ElementsAre;
using testing::SizeIs;
using enum JobStatus;

class WindowDrop : public testing::Test, protected test::WindowHarness {
 protected:
  QUrl folder(const std::string& name) const { return qtFileURL(engine.folder / name); }
};

TEST_F(WindowDrop, IsReportedAsTakenAtOnceAndBecomesAJob) {
  launch();
  EXPECT_TRUE(letGo({clip("clips/a.mov")}));
  EXPECT_TRUE(state().jobList().empty()) << "nobody has looked at the disk yet";
  turnUntilStatus(0, done);
  EXPECT_TRUE(fs::exists(engine.folder / "clips/a.description.md"));
  EXPECT_TRUE(fs::exists(engine.folder / "clips/a.description.json"));
}

TEST_F(WindowDrop, IsTakenAnywhereInTheQueueView) {
  launch();
  EXPECT_TRUE(letGo({clip("sidebar.mov")}, {0.05, 0.9}));
  EXPECT_TRUE(letGo({clip("pane.mov")}, {0.95, 0.2}));
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre("sidebar.mov", "pane.mov"));
  EXPECT_TRUE(letGo({clip("beside a job.mov")}, {0.7, 0.5}));
}

TEST_F(WindowDrop, IsTakenOnTheMenuAndTheToolBarToo) {
  launch();
  constexpr QPointF onMenu(0.5, 0.015);
  constexpr QPointF onToolBar(0.5, 0.06);
  ASSERT_LT(onMenu.y() * window().height(), labelled("Queue").mapToScene({}).y());
  ASSERT_LT(onToolBar.y() * window().height(), item("dropZone").mapToScene({}).y());
  EXPECT_TRUE(dragOver({clip("menu.mov")}, onMenu));
  EXPECT_TRUE(item("dropZone").property("isTargeted").toBool());
  EXPECT_TRUE(letGo({clip("menu.mov")}, onMenu));
  EXPECT_FALSE(item("dropZone").property("isTargeted").toBool());
  EXPECT_TRUE(letGo({clip("tool bar.mov")}, onToolBar));
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre("menu.mov", "tool bar.mov"));
  EXPECT_TRUE(dragOver({clip("more.mov")}, onToolBar));
  EXPECT_EQ(item("dropHint").mapRectToScene(item("dropHint").boundingRect()),
            QRectF(QPointF(), window().size()).marginsRemoved(QMarginsF(4, 4, 4, 4)));
}

TEST_F(WindowDrop, NoPartOfTheWindowTakesFilesWhileTheLibraryShows) {
  launch();
  press(Qt::Key_2, Qt::ControlModifier);
  for (const double height : {0.015, 0.06, 0.5, 0.98}) {
    EXPECT_FALSE(dragOver({clip("a.mov")}, {0.5, height}));
    EXPECT_FALSE(shows("dropHint"));
    leave();
  }
}

TEST_F(WindowDrop, TakesAllThatIsDroppedTogether) {
  launch();
  letGo({clip("b.mov"), clip("a.MOV"), clip("c.webm")});
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre("b.mov", "a.MOV", "c.webm"));
}

TEST_F(WindowDrop, FilesStayWhereTheyAreWhateverTheOtherProgramWouldRatherDo) {
  launch();
  QMimeData data;
  data.setUrls({clip("a.mov")});
  QDragEnterEvent enter({300, 300}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
  enter.setDropAction(Qt::MoveAction);
  QCoreApplication::sendEvent(&window(), &enter);
  QDragMoveEvent move({310, 300}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
  move.setDropAction(Qt::MoveAction);
  QCoreApplication::sendEvent(&window(), &move);
  EXPECT_EQ(move.dropAction(), Qt::CopyAction);
  leave();
}

TEST_F(WindowDrop, AFolderStandsForTheClipsBelowIt) {
  launch();
  clip("trip/day 2/b.mp4");
  clip("trip/a.mov");
  clip("trip/.hidden.mov");
  clip("trip/notes.txt");
  letGo({folder("trip")});
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre("trip/a.mov", "trip/day 2/b.mp4"));
}

TEST_F(WindowDrop, AFolderAndAClipInItAreTakenOnceAtTheFirstPlace) {
  launch();
  const QUrl inside = clip("trip/b.mov");
  clip("trip/a.mov");
  letGo({inside, folder("trip")});
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre("trip/b.mov", "trip/a.mov"));
}

TEST_F(WindowDrop, AHiddenClipIsTakenWhenItIsDroppedByItself) {
  launch();
  letGo({clip(".hidden.mov")});
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre(".hidden.mov"));
}

TEST_F(WindowDrop, ItemsWithoutAFileURLAreSkipped) {
  launch();
  letGo({QUrl(QStringLiteral("https://localhost/b.mov")), clip("a.mov"), QUrl(QStringLiteral("mailto:b.mov"))});
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre("a.mov"));
}

TEST_F(WindowDrop, NothingUsableIsNoJobAndNoMessage) {
  launch();
  letGo({clip("notes.txt"), qtFileURL(engine.folder / "missing.mov")});
  fs::create_directories(engine.folder / "empty");
  letGo({folder("empty")});
  EXPECT_THAT(clipsOnceAllAreIn(), SizeIs(0));
  EXPECT_FALSE(shows("alertMessage"));
}

TEST_F(WindowDrop, TextThatIsNoFileIsRefused) {
  launch();
  QMimeData data;
  data.setText(QStringLiteral("/clips/a.mov"));
  EXPECT_FALSE(dragOver(data));
  EXPECT_FALSE(item("dropZone").property("isTargeted").toBool());
  EXPECT_FALSE(letGo(data));
}

TEST_F(WindowDrop, AClipThatIsDroppedTwiceIsTwoJobs) {
  launch();
  const QUrl file = clip("a.mov");
  letGo({file});
  letGo({file});
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre("a.mov", "a.mov"));
}

TEST_F(WindowDrop, AnOddNameKeepsEveryByte) {
  launch();
  const std::string name = "100% #1?\xff ä.mov";
  letGo({clip(name)});
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre(name));
}

TEST_F(WindowDrop, IsNotTakenWhileTheLibraryShows) {
  launch();
  press(Qt::Key_2, Qt::ControlModifier);
  EXPECT_FALSE(letGo({clip("a.mov")}));
  press(Qt::Key_1, Qt::ControlModifier);
  EXPECT_THAT(clipsOnceAllAreIn(), SizeIs(0));
}

TEST_F(WindowDrop, IsNotTakenOnTheFirstRunScreen) {
  save({});
  launch();
  ASSERT_TRUE(shows("useMockButton"));
  EXPECT_FALSE(letGo({clip("a.mov")}));
  click("useMockButton");
  EXPECT_THAT(clipsOnceAllAreIn(), SizeIs(0));
}

TEST_F(WindowDrop, TheFirstClipIsSelectedAndKeepsTheSelection) {
  launch();
  letGo({clip("a.mov"), clip("b.mov")});
  turnUntilCount(2);
  EXPECT_EQ(state().selectedJobID(), qtText(job("a.mov").id.text()));
  drop("c.mov");
  EXPECT_EQ(state().selectedJobID(), qtText(job("a.mov").id.text()));
}

TEST_F(WindowDrop, TheZoneSaysWhatToDo) {
  launch();
  EXPECT_EQ(text("dropText"), "Drop video files anywhere in this window");
  EXPECT_EQ(text("dropIcon", "name"), "stack");
  EXPECT_EQ(text("chooseButton"), "Choose Files…");
  EXPECT_TRUE(item("chooseButton").property("prominent").toBool());
}

TEST_F(WindowDrop, TheZoneIsHighlightedWhileFilesAreHeldOverTheWindow) {
  launch();
  const QImage before = picture();
  EXPECT_TRUE(dragOver({clip("a.mov")}, {0.05, 0.9}));
  EXPECT_TRUE(item("dropZone").property("isTargeted").toBool());
  EXPECT_NE(picture(), before);
  leave();
  EXPECT_FALSE(item("dropZone").property("isTargeted").toBool());
}

TEST_F(WindowDrop, AlsoBesideAJobTheWindowShowsThatItTakesFiles) {
  launch();
  drop("a.mov", done);
  EXPECT_FALSE(shows("dropHint"));
  dragOver({clip("b.mov")});
  EXPECT_TRUE(shows("dropHint"));
  leave();
  EXPECT_FALSE(shows("dropHint"));
}

}  // namespace
}  // namespace tq
