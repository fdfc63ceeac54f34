#include <QDBusPendingCallWatcher>
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

#include "TarquelApp/Desktop/PrivateBus.hpp"
#include "TarquelApp/Desktop/SingleInstance.hpp"
#include "TarquelApp/TalkingProcess.hpp"

namespace tq {
namespace {

using test::FakeService;
using test::noBus;
using test::PrivateBus;
using test::turnUntil;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

constexpr int patient = 50'000;
constexpr int impatient = 50;

const QString programName = QStringLiteral("org.tarquel.Tarquel");

/// A start of the program: a process of its own.
class Start : public test::TalkingProcess {
 public:
  Start(const QString& busAddress, const std::filesystem::path& folder, const QStringList& files = {},
        int patience = patient, const QMap<QString, QString>& variables = {})
      : TalkingProcess(TQ_SINGLE_START_PROGRAM, QStringList(QString::number(patience)) + files,
                       environment(busAddress, folder, variables), folder) {}

 private:
  static QProcessEnvironment environment(const QString& busAddress, const std::filesystem::path& folder,
                                         const QMap<QString, QString>& variables) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"})
      environment.remove(QString::fromLatin1(name));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), QString::fromStdString(folder));
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress);
    if (busAddress.isEmpty()) environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    for (auto variable = variables.begin(); variable != variables.end(); ++variable)
      environment.insert(variable.key(), variable.value());
    return environment;
  }
};

class SingleInstanceTest : public testing::Test {
 protected:
  std::unique_ptr<Start> start(const QStringList& files = {}, int patience = patient,
                               const QMap<QString, QString>& variables = {}) {
    return std::make_unique<Start>(bus.address(), folder.path(), files, patience, variables);
  }

  std::string urlOf(const std::string& name) const { return "file://" + (folder / name).string(); }

  PrivateBus bus;
  test::TemporaryFolder folder;
};

TEST_F(SingleInstanceTest, ASecondStartHandsItsFilesOverAndEndsWell) {
  const auto first = start();
  EXPECT_EQ(first->line(), "first");
  const auto second =
      start({QStringLiteral("a b.mp4"), QStringLiteral("https://example.com/c.mp4"), QStringLiteral("/d")});
  EXPECT_EQ(second->line(), "handed over");
  EXPECT_EQ(second->status(), 0);
  EXPECT_EQ(first->line(), "open " + urlOf("a%20b.mp4"));
  EXPECT_EQ(first->line(), "open file:///d");
  EXPECT_EQ(first->line(), "activate");
}

TEST_F(SingleInstanceTest, ASecondStartWithoutFilesBringsTheFirstToTheFront) {
  const auto first = start();
  EXPECT_EQ(first->line(), "first");
  const auto second = start({}, patient, {{QStringLiteral("XDG_ACTIVATION_TOKEN"), QStringLiteral("token-7")}});
  EXPECT_EQ(second->status(), 0);
  EXPECT_EQ(first->line(), "activate token-7");
}

TEST_F(SingleInstanceTest, TheStartupIDOfAnOlderDesktopIsHandedOverToo) {
  const auto first = start();
  EXPECT_EQ(first->line(), "first");
  const auto second =
      start({QStringLiteral("/a")}, patient, {{QStringLiteral("DESKTOP_STARTUP_ID"), QStringLiteral("id-7")}});
  EXPECT_EQ(first->line(), "open file:///a");
  EXPECT_EQ(first->line(), "activate id-7");
}

TEST_F(SingleInstanceTest, OfManyStartsAtOnceOneIsFirstAndGetsAllFiles) {
  std::vector<std::unique_ptr<Start>> starts;
  std::vector<std::string> handed, opened;
  for (int number = 0; number < 8; ++number)
    starts.push_back(start({QString::number(number)}));

  Start* first = nullptr;
  for (int number = 0; number < 8; ++number) {
    const std::string role = starts[static_cast<std::size_t>(number)]->line();
    if (role == "first") {
      EXPECT_EQ(first, nullptr);
      first = starts[static_cast<std::size_t>(number)].get();
    } else {
      EXPECT_EQ(role, "handed over");
      handed.push_back("open " + urlOf(std::to_string(number)));
    }
  }
  ASSERT_NE(first, nullptr);
  while (opened.size() < handed.size())
    if (const std::string line = first->line(); line != "activate") opened.push_back(line);
  EXPECT_THAT(opened, UnorderedElementsAreArray(handed));
}

TEST_F(SingleInstanceTest, AStartAfterTheFirstHasQuitIsFirst) {
  const auto first = start();
  EXPECT_EQ(first->line(), "first");
  EXPECT_EQ(first->quit(), 0);
  EXPECT_EQ(start()->line(), "first");
}

TEST_F(SingleInstanceTest, AStartAfterTheFirstHasCrashedIsFirst) {
  const auto first = start();
  EXPECT_EQ(first->line(), "first");
  first->kill();
  EXPECT_EQ(start()->line(), "first");
}

TEST_F(SingleInstanceTest, AStartThatTheFirstDoesNotAnswerStandsAlone) {
  const auto first = start();
  EXPECT_EQ(first->line(), "first");
  first->signal(SIGSTOP);
  EXPECT_EQ(start({QStringLiteral("/a")}, impatient)->line(), "alone");
  first->signal(SIGCONT);
}

TEST_F(SingleInstanceTest, AFirstThatIsSlowToAnswerIsWaitedFor) {
  FakeService first(bus, programName);
  const auto second = start({QStringLiteral("/a")});
  turnUntil([&] { return !first.callsOf(QStringLiteral("Open")).empty(); });
  const auto third = start({QStringLiteral("/b")});  // a whole start goes by meanwhile
  turnUntil([&] { return first.callsOf(QStringLiteral("Open")).size() == 2; });
  for (const QDBusMessage& call : first.callsOf(QStringLiteral("Open")))
    first.send(call.createReply());
  EXPECT_EQ(second->line(), "handed over");
  EXPECT_EQ(third->line(), "handed over");
}

TEST_F(SingleInstanceTest, AStartTakesThePlaceOfAFirstThatEndsInsteadOfAnswering) {
  FakeService first(bus, programName);
  const auto second = start({QStringLiteral("/a")});
  turnUntil([&] { return !first.callsOf(QStringLiteral("Open")).empty(); });
  first.vanish();
  EXPECT_EQ(second->line(), "first");
}

TEST_F(SingleInstanceTest, AStartStandsAloneWhereTheNameIsSomeoneElses) {
  FakeService stranger(bus, programName);
  stranger.answer = [](const QDBusMessage& call) {
    return call.createErrorReply(QDBusError::UnknownMethod, QString());
  };
  EXPECT_EQ(start({QStringLiteral("/a")})->line(), "alone");
}

TEST_F(SingleInstanceTest, WithoutABusEveryStartStandsAlone) {
  for (const QString& address : {QString(), QStringLiteral("unix:path=/nowhere/bus"), QStringLiteral("nonsense")}) {
    Start one(address, folder.path()), another(address, folder.path());
    EXPECT_EQ(one.line(), "alone");
    EXPECT_EQ(another.line(), "alone");
  }
}

TEST_F(SingleInstanceTest, TheFirstOutlivesItsBus) {
  const auto first = start();
  EXPECT_EQ(first->line(), "first");
  bus.stop();
  EXPECT_EQ(first->quit(), 0);
}

/// The first in this process, and another program that talks to it.
class FirstInstanceTest : public testing::Test {
 protected:
  FirstInstanceTest() {
    QObject::connect(&instance, &SingleInstance::filesOpened, [this](const QList<QUrl>& files) {
      for (const QUrl& file : files)
        told.push_back(file.toEncoded().toStdString());
    });
    QObject::connect(&instance, &SingleInstance::activated,
                     [this](const QString& token) { told.push_back("activated " + token.toStdString()); });
    EXPECT_EQ(instance.start({}), SingleInstance::Role::first);
  }

  /// What it answers.
  QDBusMessage ask(const QString& method, const QVariantList& arguments) {
    auto call = QDBusMessage::createMethodCall(programName, QStringLiteral("/org/tarquel/Tarquel"),
                                               QStringLiteral("org.freedesktop.Application"), method);
    call.setArguments(arguments);
    const QDBusPendingCall asked = other.asyncCall(call);
    turnUntil([&] { return asked.isFinished(); });
    return asked.reply();
  }

  PrivateBus bus;
  QDBusConnection other = bus.connect();
  SingleInstance instance{bus.connect()};
  std::vector<std::string> told;
};

TEST_F(FirstInstanceTest, TakesLocalFilesAloneFromAStranger) {
  const QStringList uris{QStringLiteral("https://example.com/a.mp4"), QStringLiteral("file:///b.mp4"),
                         QStringLiteral("file://server/c.mp4"), QStringLiteral("file:///d%00.mp4")};
  EXPECT_EQ(ask(QStringLiteral("Open"), {uris, QVariantMap()}).type(), QDBusMessage::ReplyMessage);
  EXPECT_THAT(told, ElementsAre("file:///b.mp4", "activated "));
}

TEST_F(FirstInstanceTest, FilesThatAreAllRefusedStillBringItToTheFront) {
  ask(QStringLiteral("Open"), {QStringList(QStringLiteral("https://example.com/a.mp4")), QVariantMap()});
  EXPECT_THAT(told, ElementsAre("activated "));
}

TEST_F(FirstInstanceTest, AnActionOfTheDesktopBringsItToTheFront) {
  const auto answer =
      ask(QStringLiteral("ActivateAction"), {QStringLiteral("new-window"), QVariantList(), QVariantMap()});
  EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage);
  EXPECT_THAT(told, ElementsAre("activated "));
}

TEST_F(FirstInstanceTest, WrongArgumentsAreAnError) {
  EXPECT_EQ(ask(QStringLiteral("Open"), {42}).type(), QDBusMessage::ErrorMessage);
  EXPECT_EQ(ask(QStringLiteral("Delete"), {}).type(), QDBusMessage::ErrorMessage);
  EXPECT_EQ(ask(QStringLiteral("activated"), {QStringLiteral("token")}).type(), QDBusMessage::ErrorMessage);
  EXPECT_THAT(told, IsEmpty());
}

TEST(SingleInstanceInAProcess, ItsEndGivesTheNameBack) {
  PrivateBus bus;
  const QDBusConnection one = bus.connect(), another = bus.connect();
  {
    SingleInstance first(one);
    EXPECT_EQ(first.start({}), SingleInstance::Role::first);
  }
  PrivateBus::flush(one);
  SingleInstance next(another);
  EXPECT_EQ(next.start({}), SingleInstance::Role::first);
}

/// It has said hello, and then nothing more.
TEST(SingleInstanceInAProcess, StandsAloneOnABusThatHasFallenSilent) {
  PrivateBus bus;
  SingleInstance instance(bus.connect(), std::chrono::milliseconds(impatient));
  bus.signal(SIGSTOP);
  EXPECT_EQ(instance.start({}), SingleInstance::Role::alone);
  bus.signal(SIGCONT);
}

TEST(SingleInstanceInAProcess, StandsAloneWithoutAConnection) {
  SingleInstance instance(noBus());
  EXPECT_EQ(instance.start({}), SingleInstance::Role::alone);
}

}  // namespace
}  // namespace tq
