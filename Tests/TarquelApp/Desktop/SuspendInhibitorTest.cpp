#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <poll.h>
#include <unistd.h>

#include "TQPlatform/FileSystem/Descriptor.hpp"
#include "TarquelApp/Desktop/PrivateBus.hpp"
#include "TarquelApp/Desktop/SuspendInhibitor.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq {
namespace {

using test::FakeService;
using test::noBus;
using test::PrivateBus;
using test::turnUntil;
using testing::IsEmpty;
using testing::SizeIs;

const QString inhibit = QStringLiteral("Inhibit");
const QString closeRequest = QStringLiteral("Close");

QDBusMessage refusal(const QDBusMessage& call) {
  return call.createErrorReply(QDBusError::AccessDenied, QString());
}

/// A portal on the session bus. Unless told otherwise it gives an inhibitor at once.
class Portal : public FakeService {
 public:
  explicit Portal(PrivateBus& bus) : FakeService(bus, QStringLiteral("org.freedesktop.portal.Desktop")) {
    answer = grant;
  }

  static QDBusMessage grant(const QDBusMessage& call) {
    return call.createReply(QVariant::fromValue(QDBusObjectPath(handle)));
  }

  /// How many inhibitors it has given that were not closed.
  std::size_t heldAmong(std::size_t given) const { return given - callsOf(closeRequest).size(); }

  static inline const QString handle = QStringLiteral("/org/freedesktop/portal/desktop/request/1_5/t");
};

/// A login manager on the system bus, which knows by the other end of a pipe whether its inhibitor is held.
class LoginManager : public FakeService {
 public:
  explicit LoginManager(PrivateBus& bus) : FakeService(bus, QStringLiteral("org.freedesktop.login1")) {
    answer = [this](const QDBusMessage& call) { return grant(call); };
  }

  QDBusMessage grant(const QDBusMessage& call) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    lastGiven_ = Descriptor(ends[0]);
    const Descriptor given(ends[1]);
    return call.createReply(QVariant::fromValue(QDBusUnixFileDescriptor(given.get())));
  }

  /// The bus and the connections to it let go of their copies of a descriptor a little after it has been passed on.
  void turnUntilReleased() const {
    turnUntil([this] { return !isHeld(); });
  }

  /// Whether somebody holds the inhibitor that was given last.
  bool isHeld() const {
    pollfd end{.fd = lastGiven_.get(), .events = POLLIN, .revents = 0};
    return ::poll(&end, 1, 0) == 0;
  }

 private:
  Descriptor lastGiven_;
};

class SuspendInhibitorTest : public testing::Test {
 protected:
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
  inhibitor.setActive(true);
  turnUntilAsked(portal);
  const auto call = portal.callsOf(inhibit).at(0);
  EXPECT_EQ(call.path(), QStringLiteral("/org/freedesktop/portal/desktop"));
  EXPECT_EQ(call.interface(), QStringLiteral("org.freedesktop.portal.Inhibit"));
  EXPECT_EQ(call.signature(), QStringLiteral("sua{sv}"));
  EXPECT_EQ(call.arguments().at(1).toUInt(), 4u);
}

TEST_F(SuspendInhibitorTest, ReleasesThePortalsInhibitorWhenIdle) {
  Portal portal(session);
  inhibitor.setActive(true);
  turnUntilAsked(portal);
  portal.settle(toSession);
  EXPECT_THAT(portal.callsOf(closeRequest), IsEmpty());
  inhibitor.setActive(false);
  portal.settle(toSession);
  ASSERT_THAT(portal.callsOf(closeRequest), SizeIs(1));
  EXPECT_EQ(portal.callsOf(closeRequest).at(0).path(), Portal::handle);
  EXPECT_EQ(portal.callsOf(closeRequest).at(0).interface(), QStringLiteral("org.freedesktop.portal.Request"));
}

TEST_F(SuspendInhibitorTest, LeavesTheLoginManagerAloneWhereThePortalHelps) {
  Portal portal(session);
  LoginManager login(system);
  inhibitor.setActive(true);
  turnUntilAsked(portal);
  portal.settle(toSession);
  inhibitor.setActive(false);
  login.settle(toSystem);
  EXPECT_THAT(login.callsOf(inhibit), IsEmpty());
}

TEST_F(SuspendInhibitorTest, AsksTheLoginManagerWithoutAPortal) {
  LoginManager login(system);
  inhibitor.setActive(true);
  turnUntilAsked(login);
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
  inhibitor.setActive(true);
  turnUntilAsked(login);
}

TEST_F(SuspendInhibitorTest, AsksTheLoginManagerWhenThePortalAnswersSomethingElse) {
  Portal portal(session);
  portal.answer = [](const QDBusMessage& call) { return call.createReply(QStringLiteral("/not/a/handle")); };
  LoginManager login(system);
  inhibitor.setActive(true);
  turnUntilAsked(login);
  inhibitor.setActive(false);
  portal.settle(toSession);
  EXPECT_THAT(portal.callsOf(closeRequest), IsEmpty());
}

TEST_F(SuspendInhibitorTest, AsksTheLoginManagerWhenThePortalEndsInsteadOfAnswering) {
  Portal portal(session);
  portal.answer = nullptr;
  LoginManager login(system);
  inhibitor.setActive(true);
  turnUntilAsked(portal);
  portal.vanish();
  turnUntilAsked(login);
}

TEST_F(SuspendInhibitorTest, AsksTheLoginManagerWhenThePortalEndsWithItsInhibitor) {
  Portal portal(session);
  LoginManager login(system);
  inhibitor.setActive(true);
  turnUntilAsked(portal);
  portal.settle(toSession);
  portal.vanish();
  turnUntilAsked(login);
  login.settle(toSystem);
  EXPECT_TRUE(login.isHeld());
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
  portal.send(Portal::grant(portal.callsOf(inhibit).at(0)));
  portal.settle(toSession);
  EXPECT_EQ(portal.heldAmong(1), 1u);
  impatient.setActive(false);
  login.turnUntilReleased();
  portal.settle(toSession);
  EXPECT_EQ(portal.heldAmong(1), 0u);
}

TEST_F(SuspendInhibitorTest, AnAnswerOfThePortalThatComesWhenIdleIsGivenBack) {
  Portal portal(session);
  portal.answer = nullptr;
  inhibitor.setActive(true);
  turnUntilAsked(portal);
  inhibitor.setActive(false);
  portal.send(Portal::grant(portal.callsOf(inhibit).at(0)));
  portal.settle(toSession);
  portal.settle(toSession);
  EXPECT_EQ(portal.heldAmong(1), 0u);
}

TEST_F(SuspendInhibitorTest, AnAnswerOfTheLoginManagerThatComesWhenIdleIsGivenBack) {
  LoginManager login(system);
  login.answer = nullptr;
  inhibitor.setActive(true);
  turnUntilAsked(login);
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
  portal.send(Portal::grant(portal.callsOf(inhibit).at(0)));
  portal.settle(toSession);
  portal.settle(toSession);
  EXPECT_EQ(portal.heldAmong(1), 0u);
}

TEST_F(SuspendInhibitorTest, QuickTogglesAskOnceAndHoldOne) {
  Portal portal(session);
  portal.answer = nullptr;
  for (const bool active : {true, false, true, false, true})
    inhibitor.setActive(active);
  turnUntilAsked(portal);
  portal.send(Portal::grant(portal.callsOf(inhibit).at(0)));
  portal.settle(toSession);
  EXPECT_THAT(portal.callsOf(inhibit), SizeIs(1));
  EXPECT_EQ(portal.heldAmong(1), 1u);
  inhibitor.setActive(false);
  portal.settle(toSession);
  EXPECT_EQ(portal.heldAmong(1), 0u);
}

TEST_F(SuspendInhibitorTest, ARefusalThatComesWhenIdleAsksNobodyElse) {
  Portal portal(session);
  portal.answer = nullptr;
  LoginManager login(system);
  inhibitor.setActive(true);
  turnUntilAsked(portal);
  inhibitor.setActive(false);
  portal.send(refusal(portal.callsOf(inhibit).at(0)));
  portal.settle(toSession);
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
  inhibitor.setActive(true);
  turnUntilAsked(portal);
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
