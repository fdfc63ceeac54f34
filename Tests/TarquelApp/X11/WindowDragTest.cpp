// Files that go from the window to another program and from another program to the window, with the mouse.

#include <QDrag>
#include <QQmlProperty>
#include <QTimer>
#include <QtQml>
#include <exception>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>

#include "TarquelApp/TalkingProcess.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using test::turnUntil;
using testing::ElementsAre;
using enum JobStatus;

/// A blank, an umlaut, signs that mean something in URLs and shells, and a byte that is no UTF-8.
const std::string oddName = "100% Übung #1?%41 &b+c \xff.mov";

/// Beside our window, which stands at the top left.
const QRect placeOfPartner(1250, 100, 300, 300);

/// The hand on the mouse, which the server moves as a real one.
class Hand {
 public:
  static void moveTo(QPoint place) { act({"mousemove", std::to_string(place.x()), std::to_string(place.y())}); }

  static void takeHold(QPoint place) {
    moveTo(place);
    act({"mousedown", "1"});
  }

  static void letGo() { act({"mouseup", "1"}); }

 private:
  static void act(const std::vector<std::string>& words) {
    QStringList arguments;
    for (const std::string& word : words)
      arguments.append(qtText(word));
    if (QProcess::execute(QStringLiteral("xdotool"), arguments) != 0) throw std::runtime_error("xdotool failed");
  }
};

/// A drag out of an item: follows what the program under the mouse says to it.
class DragOut : public QObject {
  Q_OBJECT

 public:
  /// @param during  what happens once the drag has begun; it is over when the mouse lets go
  DragOut(QQuickItem& carried, std::function<void(const DragOut&)> during)
      : carried_(carried), during_(std::move(during)) {
    connect(QQmlProperty(&carried, QStringLiteral("Drag.supportedActions"), qmlContext(&carried)).object(),
            SIGNAL(dragStarted()), this, SLOT(begin()));
  }

  /// The program under the mouse takes what is dragged.
  bool isWelcome() const { return isWelcome_; }

  /// Takes hold there and draws; gives back when the mouse has let go. Throws what `during` has thrown.
  void from(QPoint place) {
    Hand::takeHold(place);
    int steps = 0;
    turnUntil([&] {
      if (!hasBegun_) Hand::moveTo(place + QPoint(++steps % 2 == 0 ? 20 : 40, 0));
      return isOver_;
    });
    if (failure_) std::rethrow_exception(failure_);
  }

 private Q_SLOTS:
  void begin() {
    hasBegun_ = true;
    connect(carried_.findChild<QDrag*>(), &QDrag::actionChanged, this,
            [this](Qt::DropAction action) { isWelcome_ = action == Qt::CopyAction; });
    // The drag turns the event loop until it is over, and has not begun to yet.
    QTimer::singleShot(0, this, [this] {
      try {
        during_(*this);
      } catch (...) {
        failure_ = std::current_exception();
      }
      Hand::letGo();
      isOver_ = true;
    });
  }

 private:
  QQuickItem& carried_;
  const std::function<void(const DragOut&)> during_;
  bool hasBegun_ = false;
  bool isWelcome_ = false;
  bool isOver_ = false;
  std::exception_ptr failure_;
};

class WindowDragX11 : public testing::Test, protected test::WindowHarness {
 protected:
  void SetUp() override {
    launch();
    window().setPosition(0, 0);
    turnUntil([this] { return window().mapToGlobal(QPoint(0, 0)) == QPoint(0, 0); });
  }
  void TearDown() override { Hand::moveTo({1599, 899}); }

  void startPartner(const QList<QUrl>& files = {}) {
    QStringList arguments;
    for (const int number : {placeOfPartner.x(), placeOfPartner.y(), placeOfPartner.width(), placeOfPartner.height()})
      arguments.append(QString::number(number));
    for (const QUrl& file : files)
      arguments.append(QString::fromLatin1(file.toEncoded()));
    partner = std::make_unique<test::TalkingProcess>(TQ_DRAG_PARTNER_PROGRAM, arguments);
    EXPECT_EQ(partner->line(), "shown");
  }

  QPoint middleOf(const char* objectName) {
    picture();  // everything stands where its user sees it
    QQuickItem& target = item(objectName);
    return window().mapToGlobal(target.mapToScene({target.width() / 2, target.height() / 2})).toPoint();
  }

  std::unique_ptr<test::TalkingProcess> partner;
};

TEST_F(WindowDragX11, ARowIsItsFileForAnotherProgram) {
  drop(oddName, done);
  startPartner();
  for (const char* time : {"once", "and again"}) {
    SCOPED_TRACE(time);
    DragOut(item("rowFile"), [](const DragOut& begun) {
      Hand::moveTo(placeOfPartner.center());
      turnUntil([&] { return begun.isWelcome(); });
    }).from(middleOf("queueRow"));
    EXPECT_EQ(partner->line(), "dropped " + clip(oddName).toEncoded().toStdString());
    EXPECT_EQ(item("rowFile").position(), QPointF()) << "it is where it was";
  }
  EXPECT_TRUE(fs::exists(engine.folder / oddName)) << "it is a copy";
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre(oddName));
}

TEST_F(WindowDragX11, FilesOfAnotherProgramBecomeJobs) {
  startPartner({clip(oddName), clip("notes.txt"), clip("b.mkv")});
  Hand::takeHold(placeOfPartner.center());
  Hand::moveTo(placeOfPartner.center() + QPoint(20, 0));
  EXPECT_EQ(partner->line(), "drags");
  Hand::moveTo(middleOf("dropZone"));
  EXPECT_EQ(partner->line(), "welcome");
  EXPECT_TRUE(item("dropZone").property("isTargeted").toBool());
  Hand::letGo();
  EXPECT_EQ(partner->line(), "copied");
  turnUntilCount(1);  // the other program does not wait for that
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre(oddName, "b.mkv"));
  EXPECT_FALSE(shows("dropHint"));
}

}  // namespace
}  // namespace tq

#include "WindowDragTest.moc"
