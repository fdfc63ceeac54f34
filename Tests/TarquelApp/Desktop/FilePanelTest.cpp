#include <QDBusArgument>
#include <QDBusObjectPath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/Desktop/FakeDesktop.hpp"
#include "TarquelApp/Desktop/FilePanel.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq {
namespace {

using namespace std::chrono_literals;
using test::noBus;
using test::Portal;
using test::PrivateBus;
using test::turnUntil;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const QString openFile = QStringLiteral("OpenFile");
const QString closeRequest = QStringLiteral("Close");

QVariantMap chosen(const QStringList& uris) {
  return {{QStringLiteral("uris"), uris}};
}

class FilePanelTest : public testing::Test {
 protected:
  using Answers = std::vector<std::optional<QList<QUrl>>>;

  FileQuestion clips() const {
    return {.title = QStringLiteral("Open Video…"),
            .namePatterns = {QStringLiteral("*.mov"), QStringLiteral("*.MOV")},
            .folder = QUrl(QStringLiteral("file:///my%20clips"))};
  }

  /// Asks, and gives the call that the portal got.
  QDBusMessage ask(const FileQuestion& question) {
    const std::size_t before = portal.callsOf(openFile).size();
    panel->ask(question, [this](const auto& answer) { answers.push_back(answer); });
    turnUntil([&] { return portal.callsOf(openFile).size() > before; });
    return portal.callsOf(openFile).back();
  }

  void settle() {
    portal.settle(toBus);
    portal.settle(toBus);
  }

  static QList<QUrl> urls(std::initializer_list<const char*> texts) {
    QList<QUrl> list;
    for (const char* text : texts)
      list.append(QUrl::fromEncoded(text));
    return list;
  }

  PrivateBus bus;
  Portal portal{bus};
  QDBusConnection toBus = bus.connect();
  std::unique_ptr<FilePanel> panel = std::make_unique<FilePanel>(toBus);
  Answers answers;
};

TEST_F(FilePanelTest, AsksThePortalForAnyNumberOfClips) {
  const auto call = ask(clips());
  EXPECT_EQ(call.path(), QStringLiteral("/org/freedesktop/portal/desktop"));
  EXPECT_EQ(call.interface(), QStringLiteral("org.freedesktop.portal.FileChooser"));
  EXPECT_EQ(call.signature(), QStringLiteral("ssa{sv}"));
  EXPECT_EQ(call.arguments().at(0).toString(), QString()) << "no window";
  EXPECT_EQ(call.arguments().at(1).toString(), QStringLiteral("Open Video…"));
  const auto options = Portal::optionsOf(call);
  EXPECT_TRUE(options.value(QStringLiteral("multiple")).toBool());
  EXPECT_FALSE(options.value(QStringLiteral("directory")).toBool());
  EXPECT_EQ(options.value(QStringLiteral("current_folder")).toByteArray(), QByteArray("/my clips\0", 10));
}

TEST_F(FilePanelTest, ShowsClipsAtFirstAndAllFilesOnDemand) {
  const QVariant filters = Portal::optionsOf(ask(clips())).value(QStringLiteral("filters"));
  const auto argument = filters.value<QDBusArgument>();
  EXPECT_EQ(argument.currentSignature(), QStringLiteral("a(sa(us))"));
  QStringList said;
  argument.beginArray();
  while (!argument.atEnd()) {
    QString title;
    argument.beginStructure();
    argument >> title;
    said << title;
    argument.beginArray();
    while (!argument.atEnd()) {
      uint kind = 9;
      QString pattern;
      argument.beginStructure();
      argument >> kind >> pattern;
      argument.endStructure();
      said << QString::number(kind) + pattern;
    }
    argument.endArray();
    argument.endStructure();
  }
  argument.endArray();
  EXPECT_EQ(said.join(u' '), QStringLiteral("Video files 0*.mov 0*.MOV All files 0*"));
}

TEST_F(FilePanelTest, AsksForOneFolder) {
  const auto options =
      Portal::optionsOf(ask({.title = QStringLiteral("Open Folder…"), .wantsFolder = true, .folder = {}}));
  EXPECT_FALSE(options.value(QStringLiteral("multiple")).toBool());
  EXPECT_TRUE(options.value(QStringLiteral("directory")).toBool());
  EXPECT_FALSE(options.contains(QStringLiteral("filters")));
  EXPECT_FALSE(options.contains(QStringLiteral("current_folder")));
}

TEST_F(FilePanelTest, GivesWhatWasChosenWithEveryByteOfItsNames) {
  portal.respond(Portal::handleOf(ask(clips())), 0,
                 chosen({QStringLiteral("file:///a%20b.mov"), QStringLiteral("file:///%FF%25.mov")}));
  turnUntil([&] { return !answers.empty(); });
  ASSERT_THAT(answers, ElementsAre(urls({"file:///a%20b.mov", "file:///%FF%25.mov"})));
  EXPECT_EQ(pathOf(answers.front()->at(1)), "/\xff%.mov");
}

TEST_F(FilePanelTest, BeginsWhereTheLastChoiceWas) {
  portal.respond(Portal::handleOf(ask(clips())), 0, chosen({QStringLiteral("file:///trip/a.mov")}));
  turnUntil([&] { return !answers.empty(); });
  const auto options = Portal::optionsOf(ask(clips()));
  EXPECT_EQ(options.value(QStringLiteral("current_folder")).toByteArray(), QByteArray("/trip\0", 6));
}

TEST_F(FilePanelTest, ADismissedPanelChoosesNothing) {
  portal.respond(Portal::handleOf(ask(clips())), 1);
  turnUntil([&] { return !answers.empty(); });
  EXPECT_THAT(answers, ElementsAre(QList<QUrl>()));
}

TEST_F(FilePanelTest, APanelThatEndsInAnotherWayIsNone) {
  portal.respond(Portal::handleOf(ask(clips())), 2);
  turnUntil([&] { return !answers.empty(); });
  EXPECT_THAT(answers, ElementsAre(std::nullopt));
}

TEST_F(FilePanelTest, APortalWithoutPanelsIsNone) {
  portal.answer = [](const QDBusMessage& call) {
    return call.createErrorReply(QDBusError::UnknownInterface, QString());
  };
  ask(clips());
  turnUntil([&] { return !answers.empty(); });
  EXPECT_THAT(answers, ElementsAre(std::nullopt));
}

TEST_F(FilePanelTest, AnAnswerThatNamesNoRequestIsNone) {
  portal.answer = [](const QDBusMessage& call) { return call.createReply(QStringLiteral("yes")); };
  ask(clips());
  turnUntil([&] { return !answers.empty(); });
  EXPECT_THAT(answers, ElementsAre(std::nullopt));
}

TEST_F(FilePanelTest, ThereIsNoneWithoutAPortal) {
  portal.vanish();
  panel->ask(clips(), [this](const auto& answer) { answers.push_back(answer); });
  EXPECT_THAT(answers, IsEmpty()) << "never before the question has been asked";
  turnUntil([&] { return !answers.empty(); });
  EXPECT_THAT(answers, ElementsAre(std::nullopt));
}

TEST_F(FilePanelTest, ThereIsNoneWithoutABus) {
  FilePanel lonely(noBus());
  lonely.ask(clips(), [this](const auto& answer) { answers.push_back(answer); });
  turnUntil([&] { return !answers.empty(); });
  EXPECT_THAT(answers, ElementsAre(std::nullopt));
}

TEST_F(FilePanelTest, APortalThatSaysNothingIsGivenUpAndAskedToCloseWhatItMayOpenYet) {
  panel = std::make_unique<FilePanel>(toBus, 1ms);
  portal.answer = nullptr;
  const auto call = ask(clips());
  turnUntil([&] { return !answers.empty() && !portal.callsOf(closeRequest).empty(); });
  EXPECT_THAT(answers, ElementsAre(std::nullopt));
  EXPECT_EQ(portal.callsOf(closeRequest).front().path(), Portal::handleOf(call));
  portal.respond(Portal::handleOf(call), 0, chosen({QStringLiteral("file:///late.mov")}));
  settle();
  EXPECT_THAT(answers, SizeIs(1));
}

TEST_F(FilePanelTest, APortalThatCrashesWithItsPanelOpenIsNone) {
  ask(clips());
  settle();
  portal.vanish();
  turnUntil([&] { return !answers.empty(); });
  EXPECT_THAT(answers, ElementsAre(std::nullopt));
}

TEST_F(FilePanelTest, AnAnswerMayComeBeforeThePortalSaysThatItHasTheRequest) {
  portal.answer = [this](const QDBusMessage& call) {
    portal.respond(Portal::handleOf(call), 0, chosen({QStringLiteral("file:///quick.mov")}));
    return Portal::grant(call);
  };
  ask(clips());
  settle();
  EXPECT_THAT(answers, ElementsAre(urls({"file:///quick.mov"})));
}

TEST_F(FilePanelTest, AnOldPortalChoosesThePathOfTheRequest) {
  const QString own = QStringLiteral("/org/freedesktop/portal/desktop/request/its/own");
  portal.answer = [own](const QDBusMessage& call) {
    return call.createReply(QVariant::fromValue(QDBusObjectPath(own)));
  };
  ask(clips());
  settle();
  portal.respond(own, 0, chosen({QStringLiteral("file:///a.mov")}));
  turnUntil([&] { return !answers.empty(); });
  EXPECT_THAT(answers, ElementsAre(urls({"file:///a.mov"})));
}

TEST_F(FilePanelTest, AskingAgainReplacesThePanelThatIsOpen) {
  const auto first = ask(clips());
  const auto second = ask(clips());
  settle();
  ASSERT_THAT(portal.callsOf(closeRequest), SizeIs(1));
  EXPECT_EQ(portal.callsOf(closeRequest).front().path(), Portal::handleOf(first));
  portal.respond(Portal::handleOf(first), 0, chosen({QStringLiteral("file:///old.mov")}));
  portal.respond(Portal::handleOf(second), 0, chosen({QStringLiteral("file:///new.mov")}));
  settle();
  EXPECT_THAT(answers, ElementsAre(urls({"file:///new.mov"})));
}

TEST_F(FilePanelTest, AQuestionMayFollowFromItsAnswer) {
  portal.answer = [this](const QDBusMessage& call) {
    portal.respond(Portal::handleOf(call), 1);
    return Portal::grant(call);
  };
  panel->ask(clips(),
             [this](const auto&) { panel->ask(clips(), [this](const auto& answer) { answers.push_back(answer); }); });
  turnUntil([&] { return !answers.empty(); });
  EXPECT_THAT(portal.callsOf(openFile), SizeIs(2));
  settle();
  EXPECT_THAT(portal.callsOf(closeRequest), IsEmpty());
}

TEST_F(FilePanelTest, ThePanelGoesWithTheProgram) {
  const auto call = ask(clips());
  panel.reset();
  turnUntil([&] { return !portal.callsOf(closeRequest).empty(); });
  EXPECT_EQ(portal.callsOf(closeRequest).front().path(), Portal::handleOf(call));
  EXPECT_THAT(answers, IsEmpty());
}

TEST_F(FilePanelTest, NothingIsTakenBackOnceItHasBeenAnswered) {
  portal.respond(Portal::handleOf(ask(clips())), 1);
  turnUntil([&] { return !answers.empty(); });
  panel.reset();
  settle();
  EXPECT_THAT(portal.callsOf(closeRequest), IsEmpty());
}

}  // namespace
}  // namespace tq
