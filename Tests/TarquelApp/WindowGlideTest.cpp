// The sidebar's list while jobs go from section to section: nothing jumps, and what somebody looks at stays.

#include <QTest>
#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

using test::expectSoon;
using test::turnUntil;
using testing::DoubleNear;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using enum JobStatus;

class WindowGlide : public testing::Test, protected test::WindowHarness {
 protected:
  /// One job at work and others that wait behind it.
  void takeIn(int count) {
    engine.settings.maxConcurrentJobs = 1;
    save(engine.settings);
    launch();
    QList<QUrl> urls;
    for (int number = 0; number < count; ++number)
      urls.append(clip(nameOf(number)));
    clips.hold(nameOf(0), calling);
    clips.hold(nameOf(1), calling);
    state().enqueue(urls);
    turnUntilCount(static_cast<std::size_t>(count));
    turnUntilStatus(nameOf(0), calling);
    turnUntil([&] { return shows("queueRow"); });
    turnUntilStill();
  }

  static std::string nameOf(int number) { return "clip " + std::to_string(number) + ".mov"; }

  QQuickItem& glide() { return item("queueGlide"); }
  double ahead() { return glide().property("ahead").toDouble(); }
  void turnUntilStill() {
    picture();
    turnUntil([&] { return ahead() == 0; });
    picture();
  }

  double seenAt(const std::string& clip) { return row(clip).mapToScene({}).y(); }

  /// The first clip is done, the second one at work.
  void goOn() {
    clips.letGo(nameOf(0));
    turnUntilStatus(nameOf(1), calling);
    turnUntilStill();
  }

  /// Something of every picture that is drawn from now on.
  template <class Value>
  std::shared_ptr<std::vector<Value>> inEveryPicture(std::function<Value()> read) {
    auto values = std::make_shared<std::vector<Value>>();
    QObject::connect(&window(), &QQuickWindow::frameSwapped, &window(),
                     [values, read = std::move(read)] { values->push_back(read()); });
    return values;
  }

  void scrollTo(double place) {
    item("queueList").setProperty("contentY", place);
    picture();
  }

  QPoint middleOf(const std::string& clip) {
    QQuickItem& shown = row(clip);
    return shown.mapToScene(QPointF(shown.width() / 2, shown.height() / 2)).toPoint();
  }
};

TEST_F(WindowGlide, ARowStartsWhereItStoodAndGoesToItsPlaceWithoutTurningBack) {
  letThingsMove();
  takeIn(4);
  const double before = seenAt(nameOf(2));
  const auto places = inEveryPicture<double>([&] { return seenAt(nameOf(2)); });
  const auto moving = inEveryPicture<double>([&] { return ahead(); });
  goOn();
  const double after = seenAt(nameOf(2));
  ASSERT_LT(after, before);
  const auto first = std::ranges::find_if(*moving, [](double part) { return part > 0; });
  ASSERT_NE(first, moving->end()) << "it glides";
  EXPECT_THAT((*places)[static_cast<std::size_t>(first - moving->begin())], DoubleNear(before, 0.5));
  EXPECT_TRUE(std::ranges::is_sorted(*places, std::ranges::greater())) << testing::PrintToString(*places);
  EXPECT_EQ(row(nameOf(2)).mapToItem(&item("queueList"), QPointF()).y(),
            row(nameOf(2)).y() - item("queueList").property("contentY").toDouble());
}

TEST_F(WindowGlide, ARowThatGoesToAnotherSectionTravelsOverTheOthers) {
  letThingsMove();
  takeIn(4);
  const double before = seenAt(nameOf(0));
  const auto places = inEveryPicture<double>([&] { return seenAt(nameOf(0)); });
  goOn();
  const double after = seenAt(nameOf(0));
  ASSERT_GT(after, before + 100);
  EXPECT_THAT(places->front(), DoubleNear(before, 0.5));
  EXPECT_TRUE(std::ranges::is_sorted(*places)) << testing::PrintToString(*places);
}

TEST_F(WindowGlide, TitlesGlideAndFadeAndAreOneForEachSectionInTheEnd) {
  letThingsMove();
  takeIn(4);
  const auto oldTitles = items("sectionTitle");
  ASSERT_EQ(oldTitles.size(), 2U);
  const auto titles = inEveryPicture<std::size_t>([&] { return items("sectionTitle").size(); });
  goOn();
  EXPECT_THAT(*titles, Not(IsEmpty()));
  EXPECT_THAT(texts("sectionTitle"), ElementsAre("Running", "Queued", "Done"));
  for (const QQuickItem* title : items("sectionTitle"))
    EXPECT_EQ(title->parentItem()->opacity(), 1.0);
}

TEST_F(WindowGlide, NothingMovesGraduallyForAUserWhoWantsThatSo) {
  takeIn(4);
  const double before = seenAt(nameOf(2));
  const auto moving = inEveryPicture<double>([&] { return ahead(); });
  goOn();
  EXPECT_LT(seenAt(nameOf(2)), before);
  EXPECT_THAT(*moving, Each(0.0));
}

TEST_F(WindowGlide, NothingGlidesWhereTooMuchChangesToBeFollowed) {
  letThingsMove();
  takeIn(60);
  const auto moving = inEveryPicture<double>([&] { return ahead(); });
  state().cancelAll();
  expectSoon([&] { return texts("sectionTitle"); }, ElementsAre("Failed"));
  turnUntilStill();
  EXPECT_THAT(*moving, Each(0.0));
}

TEST_F(WindowGlide, TheRowUnderThePointerStaysThere) {
  letThingsMove();
  takeIn(40);
  scrollTo(100);
  const QPoint place = middleOf(nameOf(6));
  QTest::mouseMove(&window(), place - QPoint(0, 1));  // Qt passes over a move to where a test before left the pointer
  QTest::mouseMove(&window(), place);
  expectSoon([&] { return row(nameOf(6)).property("hovered").toBool(); }, true);
  const auto hovered = inEveryPicture<bool>([&] { return row(nameOf(6)).property("hovered").toBool(); });
  const auto places = inEveryPicture<QPoint>([&] { return middleOf(nameOf(6)); });
  goOn();
  EXPECT_THAT(*hovered, testing::AllOf(Not(IsEmpty()), Each(true)));
  EXPECT_THAT(*places, Each(place));
}

TEST_F(WindowGlide, WhoeverWorksInTheListKeepsTheSelectedRowInView) {
  letThingsMove();
  takeIn(40);
  click(row(nameOf(0)));
  QTest::mouseMove(&window(), QPoint(900, 500));
  goOn();
  EXPECT_EQ(state().selectedJobID(), qtText(job(nameOf(0)).id.text()));
  QQuickItem& selected = row(nameOf(0));
  EXPECT_TRUE(selected.property("highlighted").toBool());
  EXPECT_TRUE(selected.hasActiveFocus());
  const QQuickItem& list = item("queueList");
  const double top = selected.mapToItem(&list, QPointF()).y();
  EXPECT_GE(top, 0);
  EXPECT_LE(top + selected.height(), list.height());
}

TEST_F(WindowGlide, ASelectionThatNobodyWorksWithTakesNobodyAlong) {
  takeIn(40);
  ASSERT_FALSE(item("queueList").hasActiveFocus());
  ASSERT_EQ(state().selectedJobID(), qtText(job(nameOf(0)).id.text()));
  goOn();
  EXPECT_EQ(texts("rowName").front(), nameOf(1));
}

}  // namespace
}  // namespace tq
