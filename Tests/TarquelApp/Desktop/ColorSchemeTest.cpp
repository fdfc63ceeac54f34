#include <QDBusVariant>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/Desktop/ColorScheme.hpp"
#include "TarquelApp/Desktop/PrivateBus.hpp"

namespace tq {
namespace {

using test::FakeService;
using test::noBus;
using test::PrivateBus;
using testing::ElementsAre;
using enum ColorScheme::Preference;

constexpr std::chrono::minutes aLongTime(1);

class ColorSchemeTest : public testing::Test {
 protected:
  ColorSchemeTest() {
    QObject::connect(&scheme, &ColorScheme::changed, &scheme,
                     [this](auto preference) { changes.push_back(preference); });
  }

  FakeService& startPortal() {
    if (!portal_) portal_ = std::make_unique<FakeService>(bus, QStringLiteral("org.freedesktop.portal.Desktop"));
    return *portal_;
  }

  /// What the window is told when the portal answers so.
  ColorScheme::Preference answerOf(const QVariant& value) {
    FakeService& portal = startPortal();
    portal.answer = [&](const QDBusMessage& call) { return call.createReply(value); };
    return scheme.ask(aLongTime);
  }

  static QVariant wrapped(const QVariant& value) { return QVariant::fromValue(QDBusVariant(value)); }

  /// The portal says that a setting has changed.
  void tell(const QString& area, const QString& key, const QVariant& value) {
    FakeService& portal = startPortal();
    QDBusMessage news =
        QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/portal/desktop"),
                                   QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("SettingChanged"));
    news << area << key << wrapped(value);
    portal.send(news);
    portal.settle(connection);
  }

  PrivateBus bus;
  QDBusConnection connection = bus.connect();
  ColorScheme scheme{connection};
  std::vector<ColorScheme::Preference> changes;

 private:
  std::unique_ptr<FakeService> portal_;
};

TEST_F(ColorSchemeTest, IsWhatThePortalSays) {
  EXPECT_EQ(answerOf(wrapped(wrapped(1U))), dark);
  EXPECT_EQ(answerOf(wrapped(wrapped(2U))), light);
  EXPECT_EQ(answerOf(wrapped(1U)), dark) << "wrapped once, as newer portals do";
}

TEST_F(ColorSchemeTest, OfAnythingElseIsNoPreference) {
  EXPECT_EQ(answerOf(wrapped(wrapped(0U))), none);
  EXPECT_EQ(answerOf(wrapped(wrapped(7U))), none);
  EXPECT_EQ(answerOf(wrapped(wrapped(QStringLiteral("dark")))), none);
  EXPECT_EQ(answerOf(QStringLiteral("dark")), none);
}

TEST_F(ColorSchemeTest, WithoutAPortalIsNoPreference) {
  EXPECT_EQ(scheme.ask(aLongTime), none);
  EXPECT_EQ(ColorScheme(noBus()).ask(aLongTime), none);
}

TEST_F(ColorSchemeTest, DoesNotWaitForAPortalThatHangs) {
  startPortal();
  EXPECT_EQ(scheme.ask(std::chrono::milliseconds(20)), none);
}

TEST_F(ColorSchemeTest, TellsWhatChanges) {
  tell(QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme"), 1U);
  tell(QStringLiteral("org.freedesktop.appearance"), QStringLiteral("accent-color"), 1U);
  tell(QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("color-scheme"), 1U);
  tell(QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme"), 2U);
  tell(QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme"), 0U);
  EXPECT_THAT(changes, ElementsAre(dark, light, none));
}

}  // namespace
}  // namespace tq
