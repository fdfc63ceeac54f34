#include <QDBusObjectPath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/Desktop/FakeDesktop.hpp"
#include "TarquelApp/Desktop/SuspendInhibitor.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq {
namespace {

using test::FakeService;
using test::LoginManager;
using test::noBus;
using test::Portal;
using test::PrivateBus;
using test::turnUntil;
using testing::IsEmpty;
using testing::SizeIs;

const QString inhibit = QStringLiteral("Inhibit");
const QString closeRequest = QStringLiteral("Close");

QDBusMessage refusal(const QDBusMessage& call) {
  return call.createErrorReply(QDBusError::AccessDenied, QString());
}

/// How many inhibitors that portal has given, of so many, that were not closed.
std::size_t heldAmong(std::size_t given, const Portal& portal) {
  return given - portal.callsOf(closeRequest).size();
}

class SuspendInhibitorTest : public testing::Test {
 protected:
  /// The inhibitor is wanted, and this service is asked for it.
  void activate(const FakeService& asked) {
    inhibitor.setActive(true);
    turnUntilAsked(asked);
  }

  /// The portal answers the only question so far, and all that follows from it has happened.
  void answerLate(Portal& portal, const QDBusMessage& answer) {
    portal.send(answer);
    portal.settle(toSession);
    portal.settle(toSession);
  }

  static void turnUntilAsked(const FakeService& service, std::size_t times = 1) {
    turnUntil([&] { return service.callsOf(inhibit).size() >= times; });
  }

  PrivateBus session, system;
  QDBusConnection toSession = session.connect();
  QDBusConnection toSystem = system.connect();
  SuspendInhibitor inhibitor{toSession, toSystem};
};

TEST_F(SuspendInhibitorTest, AsksThePortalNotToSuspendAndLeavesTheScreenAlone) {
  Portal portal(session);
  activate(portal);
  const auto call = portal.callsOf(inhibit).at(0);
  EXPECT_EQ(call.path(), QStringLiteral("/org/freedesktop/portal/desktop"));
  EXPECT_EQ(call.interface(), QStringLiteral("org.freedesktop.portal.Inhibit"));
  EXPECT_EQ(call.signature(), QStringLiteral("sua{sv}"));
  EXPECT_EQ(call.arguments().at(1).toUInt(), 4u);
}

TEST_F(SuspendInhibitorTest, ReleasesThePortalsInhibitorWhenIdle) {
  Portal portal(session);
  activate(portal);
  portal.settle(toSession);
  EXPECT_THAT(portal.callsOf(closeRequest), IsEmpty());
  inhibitor.setActive(false);
  portal.settle(toSession);
  ASSERT_THAT(portal.callsOf(closeRequest), SizeIs(1));
  EXPECT_EQ(portal.callsOf(closeRequest).at(0).path(), Portal::handleOf(portal.callsOf(inhibit).at(0)));
  EXPECT_EQ(portal.callsOf(closeRequest).at(0).interface(), QStringLiteral("org.freedesktop.portal.Request"));
}

TEST_F(SuspendInhibitorTest, LeavesTheLoginManagerAloneWhereThePortalHelps) {
  Portal portal(session);
  LoginManager login(system);
  activate(portal);
  portal.settle(toSession);
  inhibitor.setActive(false);
  login.settle(toSystem);
  EXPECT_THAT(login.callsOf(inhibit), IsEmpty());
}

TEST_F(SuspendInhibitorTest, AsksTheLoginManagerWithoutAPortal) {
  LoginManager login(system);
  activate(login);
  const auto call = login.callsOf(inhibit).at(0);
  EXPECT_EQ(call.path(), QStringLiteral("/org/freedesktop/login1"));
  EXPECT_EQ(call.interface(), QStringLiteral("org.freedesktop.login1.Manager"));
  EXPECT_EQ(call.signature(), QStringLiteral("ssss"));
  EXPECT_EQ(call.arguments().at(0).toString(), QStringLiteral("sleep"));
  EXPECT_EQ(call.arguments().at(3).toString(), QStringLiteral("block"));
  login.settle(toSystem);
  EXPECT_TRUE(login.isHeld());
  inhibitor.setActive(false);
  login.turnUntilReleased();
}

TEST_F(SuspendInhibitorTest, AsksTheLoginManagerWithoutASessionBus) {
  LoginManager login(system);
  SuspendInhibitor alone(noBus(), toSystem);
  alone.setActive(true);
  turnUntilAsked(login);
  login.settle(toSystem);
  EXPECT_TRUE(login.isHeld());
}

TEST_F(SuspendInhibitorTest, AsksTheLoginManagerWhenThePortalRefuses) {
  Portal portal(session);
  portal.answer = refusal;
  LoginManager login(system);
  activate(login);
}

TEST_F(SuspendInhibitorTest, AsksTheLoginManagerWhenThePortalAnswersSomethingElse) {
  Portal portal(session);
  portal.answer = [](const QDBusMessage& call) { return call.createReply(QStringLiteral("/not/a/handle")); };
  LoginManager login(system);
  activate(login);
  inhibitor.setActive(false);
  portal.settle(toSession);
  EXPECT_THAT(portal.callsOf(closeRequest), IsEmpty());
}

TEST_F(SuspendInhibitorTest, AsksTheLoginManagerWhenThePortalEndsInsteadOfAnswering) {
  Portal portal(session);
  portal.answer = nullptr;
  LoginManager login(system);
  activate(portal);
  portal.vanish();
  turnUntilAsked(login);
}

TEST_F(SuspendInhibitorTest, AsksTheLoginManagerWhenThePortalEndsWithItsInhibitor) {
  Portal portal(session);
  LoginManager login(system);
  activate(portal);
  portal.settle(toSession);
  portal.vanish();
  turnUntilAsked(login);
  login.settle(toSystem);
  EXPECT_TRUE(login.isHeld());
}

TEST_F(SuspendInhibitorTest, AsksTheLoginManagerWhenTheDesktopBehindThePortalCannot) {
  Portal portal(session);
  LoginManager login(system);
  activate(portal);
  portal.settle(toSession);
  portal.respond(Portal::handleOf(portal.callsOf(inhibit).at(0)), 2);
  turnUntilAsked(login);
  login.settle(toSystem);
  EXPECT_TRUE(login.isHeld());
  turnUntil([&] { return heldAmong(1, portal) == 0; });
}

TEST_F(SuspendInhibitorTest, ThePortalMaySayThatBeforeItAnswers) {
  Portal portal(session);
  portal.answer = [&](const QDBusMessage& call) {
    if (call.member() == inhibit) portal.respond(Portal::handleOf(call), 2);
    return Portal::grant(call);
  };
  LoginManager login(system);
  activate(login);
  turnUntil([&] { return heldAmong(1, portal) == 0; });
  inhibitor.setActive(false);
  portal.answer = Portal::grant;
  inhibitor.setActive(true);
  turnUntilAsked(portal, 2);
  portal.settle(toSession);
  login.settle(toSystem);
  EXPECT_THAT(login.callsOf(inhibit), SizeIs(1)) << "asked anew, it is believed anew";
}

TEST_F(SuspendInhibitorTest, ThePortalSaysThatTheDesktopCan) {
  Portal portal(session);
  LoginManager login(system);
  activate(portal);
  portal.respond(Portal::handleOf(portal.callsOf(inhibit).at(0)), 0);
  portal.settle(toSession);
  login.settle(toSystem);
  EXPECT_THAT(login.callsOf(inhibit), IsEmpty());
  EXPECT_EQ(heldAmong(1, portal), 1u);
}

TEST_F(SuspendInhibitorTest, AsksTheLoginManagerTooWhenThePortalIsSlowAndGivesBothBack) {
  Portal portal(session);
  portal.answer = nullptr;
  LoginManager login(system);
  SuspendInhibitor impatient(toSession, toSystem, std::chrono::milliseconds(1));
  impatient.setActive(true);
  turnUntilAsked(login);
  login.settle(toSystem);
  EXPECT_TRUE(login.isHeld());
  turnUntilAsked(portal);
  answerLate(portal, Portal::grant(portal.callsOf(inhibit).at(0)));
  EXPECT_EQ(heldAmong(1, portal), 1u);
  impatient.setActive(false);
  login.turnUntilReleased();
  portal.settle(toSession);
  EXPECT_EQ(heldAmong(1, portal), 0u);
}

TEST_F(SuspendInhibitorTest, AnAnswerOfThePortalThatComesWhenIdleIsGivenBack) {
  Portal portal(session);
  portal.answer = nullptr;
  activate(portal);
  inhibitor.setActive(false);
  answerLate(portal, Portal::grant(portal.callsOf(inhibit).at(0)));
  EXPECT_EQ(heldAmong(1, portal), 0u);
}

TEST_F(SuspendInhibitorTest, AnAnswerOfTheLoginManagerThatComesWhenIdleIsGivenBack) {
  LoginManager login(system);
  login.answer = nullptr;
  activate(login);
  inhibitor.setActive(false);
  login.send(login.grant(login.callsOf(inhibit).at(0)));
  login.settle(toSystem);
  login.turnUntilReleased();
}

TEST_F(SuspendInhibitorTest, AnAnswerThatComesAfterItsEndIsGivenBack) {
  Portal portal(session);
  portal.answer = nullptr;
  {
    SuspendInhibitor shortLived(toSession, toSystem);
    shortLived.setActive(true);
    turnUntilAsked(portal);
  }
  answerLate(portal, Portal::grant(portal.callsOf(inhibit).at(0)));
  EXPECT_EQ(heldAmong(1, portal), 0u);
}

TEST_F(SuspendInhibitorTest, QuickTogglesAskOnceAndHoldOne) {
  Portal portal(session);
  portal.answer = nullptr;
  for (const bool active : {true, false, true, false, true})
    inhibitor.setActive(active);
  turnUntilAsked(portal);
  answerLate(portal, Portal::grant(portal.callsOf(inhibit).at(0)));
  EXPECT_THAT(portal.callsOf(inhibit), SizeIs(1));
  EXPECT_EQ(heldAmong(1, portal), 1u);
  inhibitor.setActive(false);
  portal.settle(toSession);
  EXPECT_EQ(heldAmong(1, portal), 0u);
}

TEST_F(SuspendInhibitorTest, ARefusalThatComesWhenIdleAsksNobodyElse) {
  Portal portal(session);
  portal.answer = nullptr;
  LoginManager login(system);
  activate(portal);
  inhibitor.setActive(false);
  answerLate(portal, refusal(portal.callsOf(inhibit).at(0)));
  login.settle(toSystem);
  EXPECT_THAT(login.callsOf(inhibit), IsEmpty());
}

TEST_F(SuspendInhibitorTest, EveryTimeOfWorkAsksAnewAlsoAfterRefusals) {
  Portal portal(session);
  portal.answer = refusal;
  LoginManager login(system);
  login.answer = refusal;
  for (std::size_t time = 1; time <= 3; ++time) {
    inhibitor.setActive(true);
    inhibitor.setActive(true);
    turnUntilAsked(login, time);
    login.settle(toSystem);
    inhibitor.setActive(false);
  }
  portal.settle(toSession);
  EXPECT_THAT(portal.callsOf(inhibit), SizeIs(3));
  EXPECT_THAT(login.callsOf(inhibit), SizeIs(3));
}

TEST_F(SuspendInhibitorTest, ItsEndGivesBackWhatItHolds) {
  LoginManager login(system);
  {
    SuspendInhibitor shortLived(noBus(), toSystem);
    shortLived.setActive(true);
    turnUntilAsked(login);
    login.settle(toSystem);
    EXPECT_TRUE(login.isHeld());
  }
  login.turnUntilReleased();
}

TEST_F(SuspendInhibitorTest, BothBusesMayEnd) {
  Portal portal(session);
  portal.answer = nullptr;
  LoginManager login(system);
  login.answer = nullptr;
  activate(portal);
  session.stop();
  turnUntilAsked(login);
  system.stop();
  turnUntil([&] { return !toSystem.isConnected(); });
  inhibitor.setActive(false);
  inhibitor.setActive(true);
  QCoreApplication::processEvents();
}

TEST(SuspendInhibitorWithoutABus, IsSilent) {
  SuspendInhibitor inhibitor(noBus(), noBus());
  for (const bool active : {true, false, true}) {
    inhibitor.setActive(active);
    QCoreApplication::processEvents();
  }
}

}  // namespace
}  // namespace tq
