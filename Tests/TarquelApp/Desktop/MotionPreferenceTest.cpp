#include <QDBusVariant>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/Desktop/MotionPreference.hpp"
#include "TarquelApp/Desktop/PrivateBus.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq {
namespace {

using test::FakeService;
using test::PrivateBus;
using test::turnUntil;
using testing::ElementsAre;

const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString gnome = QStringLiteral("org.gnome.desktop.interface");

/// A portal that knows some settings, and a window that asks it.
class MotionPreferenceTest : public testing::Test {
 protected:
  void start(const QString& area, const QVariant& value) {
    portal.answer = [area, value](const QDBusMessage& call) {
      if (call.arguments().value(0).toString() != area)
        return call.createErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"), QString());
      const auto inner = QVariant::fromValue(QDBusVariant(value));
      return call.createReply(QVariant::fromValue(QDBusVariant(inner)));
    };
    const auto questions = [&] { return portal.callsOf(QStringLiteral("Read")).size(); };
    const std::size_t before = questions();
    motion = std::make_unique<MotionPreference>(connection);
    QObject::connect(motion.get(), &MotionPreference::changed, motion.get(),
                     [this](bool isReduced) { changes.push_back(isReduced); });
    turnUntil([&] { return questions() == before + 2; });
    portal.settle(connection);
  }

  void tell(const QString& area, const QString& key, const QVariant& value) {
    QDBusMessage news =
        QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/portal/desktop"),
                                   QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("SettingChanged"));
    news << area << key << QVariant::fromValue(QDBusVariant(value));
    portal.send(news);
    portal.settle(connection);
  }

  PrivateBus bus;
  QDBusConnection connection = bus.connect();
  FakeService portal{bus, QStringLiteral("org.freedesktop.portal.Desktop")};
  std::unique_ptr<MotionPreference> motion;
  std::vector<bool> changes;
};

TEST_F(MotionPreferenceTest, IsWhatEitherSettingSays) {
  start(gnome, false);
  turnUntil([&] { return motion->isReduced(); });
  changes.clear();
  start(appearance, 1U);
  turnUntil([&] { return motion->isReduced(); });
  EXPECT_THAT(changes, ElementsAre(true));
}

TEST_F(MotionPreferenceTest, OfAnythingElseIsNoWish) {
  start(gnome, true);
  EXPECT_FALSE(motion->isReduced());
  start(gnome, QStringLiteral("false"));
  EXPECT_FALSE(motion->isReduced());
  start(appearance, 0U);
  EXPECT_FALSE(motion->isReduced());
  EXPECT_THAT(changes, testing::IsEmpty());
}

TEST_F(MotionPreferenceTest, WithoutAPortalIsNoWish) {
  EXPECT_FALSE(MotionPreference(test::noBus()).isReduced());
}

TEST_F(MotionPreferenceTest, TellsWhatChanges) {
  start(gnome, true);
  tell(gnome, QStringLiteral("enable-animations"), false);
  tell(gnome, QStringLiteral("font-name"), false);
  tell(appearance, QStringLiteral("reduced-motion"), 1U);
  tell(gnome, QStringLiteral("enable-animations"), true);
  tell(appearance, QStringLiteral("reduced-motion"), 0U);
  EXPECT_THAT(changes, ElementsAre(true, false));
}

}  // namespace
}  // namespace tq
