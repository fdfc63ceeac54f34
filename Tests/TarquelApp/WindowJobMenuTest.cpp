// What a user does with one job: select it, choose from its menu, look at its clip, drag it out.

#include <QGuiApplication>
#include <QQmlProperty>
#include <QTest>
#include <QtQml>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/QtWarnings.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

using test::expectSoon;
using test::turnUntil;
using testing::ElementsAre;
using testing::IsEmpty;
using enum JobStatus;

using Labels = std::vector<std::string>;

class WindowJobMenu : public testing::Test, protected test::WindowHarness {
 protected:
  QString idOf(const std::string& clip) const { return qtText(job(clip).id.text()); }

  /// The clip whose row is marked as selected; empty: none.
  std::string highlighted() {
    for (const QQuickItem* shown : items("queueRow"))
      if (shown->property("highlighted").toBool()) return shown->property("fileName").toString().toStdString();
    return "";
  }

  void turnUntilRowsAre(std::size_t count) {
    turnUntil([&] { return items("queueRow").size() == count; });
  }

  /// Three failed clips, the second of which is selected.
  void launchWithThree() {
    launch();
    for (const char* clip : {"a.mov", "b.mov", "c.mov"}) {
      clips.fail(clip, "no");
      drop(clip, failed);
    }
    turnUntilRowsAre(3);
    click(row("b.mov"));
  }

  QQuickWindow& preview() {
    turnUntil([&] { return otherWindow("quickLook") != nullptr; });
    return *otherWindow("quickLook");
  }

  void expectNoPicture() {
    expectSoon([&] { return preview().findChild<QQuickItem*>(QStringLiteral("noPicture"))->isVisible(); }, true);
  }

  /// Opens the menu of the selected row with its key, goes down so many entries, and chooses that one.
  void chooseByKeyboard(const std::string& entry, int down) {
    press(Qt::Key_Menu);
    turnUntil([&] { return !menuEntries().empty(); });
    for (int time = 0; time < down; ++time)
      press(Qt::Key_Down);
    EXPECT_TRUE(labelled(entry).property("highlighted").toBool()) << entry;
    press(Qt::Key_Return);
    expectSoon([&] { return menuEntries(); }, IsEmpty());
  }

  /// Puts the keyboard into the main window.
  void comeBack() {
    window().requestActivate();
    turnUntil([&] { return QGuiApplication::focusWindow() == &window(); });
  }

  void expectNoPreview() {
    expectSoon([&] { return otherWindow("quickLook"); }, nullptr);
  }
};

TEST_F(WindowJobMenu, AClickSelectsTheJobThatThePaneShows) {
  launchWithThree();
  EXPECT_EQ(state().selectedJobID(), idOf("b.mov"));
  expectSoon([&] { return highlighted(); }, "b.mov");
  EXPECT_EQ(text("detailName"), "b.mov");
}

TEST_F(WindowJobMenu, TheSelectionStaysWithTheJobWhileItsRowMoves) {
  engine.settings.maxConcurrentJobs = 1;
  save(engine.settings);
  launch();
  clips.hold("a.mov", calling);
  clips.hold("b.mov", calling);
  drop("a.mov", calling);
  drop("b.mov");
  drop("c.mov");
  turnUntilRowsAre(3);
  click(row("b.mov"));
  for (const char* done : {"a.mov", "b.mov"}) {
    clips.letGo(done);
    turnUntilStatus(done, JobStatus::done);
    expectSoon([&] { return highlighted(); }, "b.mov");
    EXPECT_EQ(text("detailName"), "b.mov");
  }
}

TEST_F(WindowJobMenu, TheArrowKeysGoThroughTheRowsAsTheyStand) {
  launchWithThree();
  clips.hold("c.mov", calling);
  state().retry(idOf("c.mov"));
  turnUntilStatus("c.mov", calling);  // and stands first
  const auto selected = [&] {
    for (const JobList::Row& job : state().jobList().rows())
      if (job->id == state().selection()) return job->sourceURL.filename().string();
    return std::string();
  };
  press(Qt::Key_Up);
  EXPECT_EQ(selected(), "a.mov");
  press(Qt::Key_Up);
  EXPECT_EQ(selected(), "c.mov");
  press(Qt::Key_Up);
  EXPECT_EQ(selected(), "c.mov") << "there is none above";
  press(Qt::Key_Down);
  EXPECT_EQ(selected(), "a.mov");
  press(Qt::Key_End);
  EXPECT_EQ(selected(), "b.mov");
  press(Qt::Key_Down);
  EXPECT_EQ(selected(), "b.mov") << "there is none below";
  press(Qt::Key_Home);
  EXPECT_EQ(selected(), "c.mov");
  press(Qt::Key_PageDown);
  EXPECT_EQ(selected(), "b.mov");
  press(Qt::Key_PageUp);
  EXPECT_EQ(selected(), "c.mov");
}

TEST_F(WindowJobMenu, TheKeyboardBringsARowIntoSight) {
  launch();
  QList<QUrl> many;
  for (int number = 0; number < 60; ++number)
    many.append(clip(std::to_string(number) + ".mov"));
  letGo(many);
  turnUntil([&] { return state().jobList().size() == 60 && state().activeJobCount() == 0; });
  picture();  // the rows stand where they stay
  click(item("queueRow"));
  press(Qt::Key_End);
  expectSoon([&] { return highlighted(); }, "59.mov");
  const QQuickItem& list = item("queueList");
  const QQuickItem& last = row("59.mov");
  EXPECT_LE(last.mapToItem(&list, {0, last.height()}).y(), list.height());
}

TEST_F(WindowJobMenu, KeysInAnEmptyQueueDoNothing) {
  launch();
  for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Down, Qt::Key_Home, Qt::Key_End, Qt::Key_Space, Qt::Key_Menu})
    press(key);
  EXPECT_EQ(state().selectedJobID(), QString());
  expectNoPreview();
  EXPECT_THAT(menuEntries(), IsEmpty());
}

TEST_F(WindowJobMenu, OffersWhatTheStatusAllows) {
  engine.settings.maxConcurrentJobs = 3;
  save(engine.settings);
  launch();
  drop("done.mov", done);
  clips.fail("failed.mov", "no");
  drop("failed.mov", failed);
  clips.hold("cancelled.mov", calling);
  drop("cancelled.mov", calling);
  state().cancel(idOf("cancelled.mov"));
  turnUntilStatus("cancelled.mov", cancelled);
  clips.hold("extracting.mov", extracting);
  drop("extracting.mov", extracting);
  clips.hold("calling.mov", calling);
  drop("calling.mov", calling);
  clips.hold("writing.mov", writing);
  drop("writing.mov", writing);
  drop("queued.mov");
  turnUntilRowsAre(7);
  const Labels again{"Retry", "Quick Look", "Show in Finder"};
  const Labels stop{"Cancel", "Quick Look", "Show in Finder"};
  const Labels neither{"Quick Look", "Show in Finder"};
  for (const auto& [clip, entries] : std::vector<std::pair<const char*, Labels>>{{"queued.mov", stop},
                                                                                 {"extracting.mov", stop},
                                                                                 {"calling.mov", stop},
                                                                                 {"writing.mov", stop},
                                                                                 {"done.mov", neither},
                                                                                 {"failed.mov", again},
                                                                                 {"cancelled.mov", again}}) {
    openJobMenu(clip);
    EXPECT_EQ(menuEntries(), entries) << clip;
    EXPECT_EQ(state().selectedJobID(), idOf(clip)) << "it is the row that was clicked";
    press(Qt::Key_Escape);
    turnUntil([&] { return menuEntries().empty(); });
  }
}

TEST_F(WindowJobMenu, CancelTakesAWaitingJobOutOfTheLine) {
  engine.settings.maxConcurrentJobs = 1;
  save(engine.settings);
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  drop("b.mov");
  turnUntilRowsAre(2);
  openJobMenu("b.mov");
  choose("Cancel");
  turnUntilStatus("b.mov", cancelled);
  EXPECT_EQ(job("a.mov").status, calling);
}

TEST_F(WindowJobMenu, FollowsAJobThatEndsWhileItIsOpen) {
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  turnUntilRowsAre(1);
  openJobMenu("a.mov");
  EXPECT_THAT(menuEntries(), ElementsAre("Cancel", "Quick Look", "Show in Finder"));
  clips.letGo("a.mov");
  turnUntilStatus("a.mov", done);
  expectSoon([&] { return menuEntries(); }, ElementsAre("Quick Look", "Show in Finder"));
}

TEST_F(WindowJobMenu, ShowInFinderShowsTheClipInItsFolder) {
  launchWithThree();
  openJobMenu("c.mov");
  choose("Show in Finder");
  EXPECT_THAT(shownInFileManager, ElementsAre(engine.folder / "c.mov"));
}

TEST_F(WindowJobMenu, OpensByTheKeyboardToo) {
  launchWithThree();
  press(Qt::Key_Menu);
  expectSoon([&] { return menuEntries(); }, ElementsAre("Retry", "Quick Look", "Show in Finder"));
  press(Qt::Key_Escape);
  expectSoon([&] { return menuEntries(); }, IsEmpty());
  press(Qt::Key_F10, Qt::ShiftModifier);
  expectSoon([&] { return menuEntries(); }, ElementsAre("Retry", "Quick Look", "Show in Finder"));
}

TEST_F(WindowJobMenu, RetryRunsTheJobAgain) {
  launchWithThree();
  clips.answer("a.mov", test::goodAnswer());
  openJobMenu("a.mov");
  choose("Retry");
  turnUntilStatus("a.mov", done);
  EXPECT_EQ(state().jobList().size(), 3U) << "the same job";
  EXPECT_EQ(job("b.mov").status, failed);
  EXPECT_EQ(job("c.mov").status, failed);
}

TEST_F(WindowJobMenu, RetryIsThereForACancelledJobToo) {
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  turnUntilRowsAre(1);
  openJobMenu("a.mov");
  choose("Cancel");
  turnUntilStatus("a.mov", cancelled);
  clips.letGo("a.mov");
  openJobMenu("a.mov");
  choose("Retry");
  turnUntilStatus("a.mov", done);
}

TEST_F(WindowJobMenu, QuickLookLooksAtTheClipOfTheRow) {
  launchWithThree();
  const test::ExpectedQtWarning noClip(QStringLiteral("no picture"));
  openJobMenu("c.mov");
  choose("Quick Look");
  EXPECT_EQ(preview().title(), QStringLiteral("c.mov"));
  expectNoPicture();
  QTest::keyClick(&preview(), Qt::Key_Escape);
  expectNoPreview();
}

TEST_F(WindowJobMenu, IsGoneThroughWithTheArrowKeysAndReturnChooses) {
  launchWithThree();
  clips.answer("b.mov", test::goodAnswer());
  chooseByKeyboard("Show in Finder", 3);
  EXPECT_THAT(shownInFileManager, ElementsAre(engine.folder / "b.mov"));
  const test::ExpectedQtWarning noClip(QStringLiteral("no picture"));
  chooseByKeyboard("Quick Look", 2);
  EXPECT_EQ(preview().title(), QStringLiteral("b.mov"));
  expectNoPicture();
  QTest::keyClick(&preview(), Qt::Key_Space);
  expectNoPreview();
  comeBack();
  chooseByKeyboard("Retry", 1);
  turnUntilStatus("b.mov", done);
}

TEST_F(WindowJobMenu, TheArrowKeysPassOverWhatTheStatusDoesNotOffer) {
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  turnUntilRowsAre(1);
  click(row("a.mov"));
  chooseByKeyboard("Cancel", 1);
  turnUntilStatus("a.mov", cancelled);
}

TEST_F(WindowJobMenu, ALeftClickOpensNoMenu) {
  launchWithThree();
  click(row("a.mov"));
  picture();
  EXPECT_THAT(menuEntries(), IsEmpty());
}

/// The look at a clip whose picture cannot be had, or can.
class WindowQuickLook : public WindowJobMenu {
 protected:
  void lookAt(const QUrl& clip) {
    launch();
    letGo({clip});
    turnUntilCount(1);
    turnUntil([&] { return isTerminal(job(0).status); });
    turnUntilRowsAre(1);
    click("queueRow");
    press(Qt::Key_Space);
    preview();
  }
};

TEST_F(WindowQuickLook, ShowsAClipOfAnyName) {
  lookAt(realClip("100% #1?\xff %41 ä.mp4"));
  expectSoon([&] { return preview().findChild<QQuickItem*>(QStringLiteral("poster"))->property("status").toInt(); },
             1);  // Image.Ready
  EXPECT_EQ(preview().title(), QStringLiteral("100% #1?\uFFFD %41 ä.mp4"));
}

TEST_F(WindowQuickLook, SaysThatThereIsNoPictureOfAnEmptyClip) {
  const test::ExpectedQtWarning noClip(QStringLiteral("no picture"));
  lookAt(qtFileURL(engine.folder.write("empty.mp4", "")));
  expectNoPicture();
}

TEST_F(WindowQuickLook, SaysThatThereIsNoPictureOfWhatIsNoVideo) {
  const test::ExpectedQtWarning noClip(QStringLiteral("no picture"));
  lookAt(qtFileURL(engine.folder.write("text.mp4", std::string(4096, 'x'))));
  expectNoPicture();
}

TEST_F(WindowQuickLook, SaysThatThereIsNoPictureOfAClipThatIsGone) {
  const test::ExpectedQtWarning noClip(QStringLiteral("no picture"));
  launch();
  clips.hold("gone.mp4", calling);
  letGo({realClip("gone.mp4")});
  turnUntilCount(1);
  turnUntilStatus(0, calling);
  std::filesystem::remove(engine.folder / "gone.mp4");
  turnUntilRowsAre(1);
  click("queueRow");
  press(Qt::Key_Space);
  expectNoPicture();
}

TEST_F(WindowQuickLook, TheSpaceBarIsForTheSelectedJobAloneAndClosesWhatIsOpen) {
  const test::ExpectedQtWarning noClip(QStringLiteral("no picture"));
  launchWithThree();
  press(Qt::Key_Space);
  EXPECT_EQ(preview().title(), QStringLiteral("b.mov"));
  expectNoPicture();
  comeBack();
  press(Qt::Key_Space);
  expectNoPreview();
}

TEST_F(WindowQuickLook, WithNothingSelectedNothingHappens) {
  launchWithThree();
  state().setSelectedJobID({});
  press(Qt::Key_Space);
  expectNoPreview();
  press(Qt::Key_Menu);
  EXPECT_THAT(menuEntries(), IsEmpty());
}

}  // namespace
}  // namespace tq
