#include <QApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QTest>

#include <gtest/gtest.h>

#include "app/DesktopAppearance.h"
#include "views/Theme.h"

namespace quibel {
namespace {

/// A session bus of the test's own.
class Bus {
 public:
  Bus() {
    daemon_.start(QStringLiteral("dbus-daemon"),
                  {QStringLiteral("--session"), QStringLiteral("--nofork"),
                   QStringLiteral("--print-address")});
    if (daemon_.waitForStarted() && daemon_.waitForReadyRead()) {
      address = QString::fromLatin1(daemon_.readLine()).trimmed();
    }
  }
  ~Bus() {
    daemon_.terminate();
    daemon_.waitForFinished();
  }

  QString address;

 private:
  QProcess daemon_;
};

/// A settings portal with one group, as the test fills it.
class Portal : public QDBusVirtualObject {
 public:
  explicit Portal(const QString& bus)
      : connection_(QDBusConnection::connectToBus(bus, QStringLiteral("portal"))) {
    connection_.registerVirtualObject(QStringLiteral("/org/freedesktop/portal/desktop"), this);
    connection_.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
  }
  ~Portal() override { QDBusConnection::disconnectFromBus(QStringLiteral("portal")); }

  QString introspect(const QString&) const override { return {}; }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    if (message.member() != QLatin1String("ReadAll")) return false;
    ++asked;
    QDBusArgument groups;
    groups.beginMap(QMetaType::fromType<QString>(), QMetaType::fromType<QVariantMap>());
    groups.beginMapEntry();
    groups << QStringLiteral("org.freedesktop.appearance") << settings;
    groups.endMapEntry();
    groups.endMap();
    connection.send(message.createReply(QVariant::fromValue(groups)));
    return true;
  }

  void change(const QString& key, const QVariant& value) {
    settings.insert(key, value);
    auto signal = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/portal/desktop"),
                                             QStringLiteral("org.freedesktop.portal.Settings"),
                                             QStringLiteral("SettingChanged"));
    signal.setArguments({QStringLiteral("org.freedesktop.appearance"), key,
                         QVariant::fromValue(QDBusVariant(value))});
    connection_.send(signal);
  }

  QVariantMap settings;
  int asked = 0;

 private:
  QDBusConnection connection_;
};

QVariant accent(double red, double green, double blue) {
  QDBusArgument argument;
  argument.beginStructure();
  argument << red << green << blue;
  argument.endStructure();
  return QVariant::fromValue(argument);
}

class DesktopAppearanceTest : public testing::Test {
 protected:
  void SetUp() override {
    if (bus_.address.isEmpty()) GTEST_SKIP() << "no dbus-daemon";
    portal_ = std::make_unique<Portal>(bus_.address);
  }
  void TearDown() override {
    QApplication::setPalette(before_);
    QDBusConnection::disconnectFromBus(QStringLiteral("application"));
  }

  QDBusConnection connection() const {
    return QDBusConnection::connectToBus(bus_.address, QStringLiteral("application"));
  }

  static Colors shown() { return colors(QApplication::palette()); }

  const QPalette before_ = QApplication::palette();
  Bus bus_;
  std::unique_ptr<Portal> portal_;
};

TEST_F(DesktopAppearanceTest, ADarkDesktopGetsADarkWindow) {
  portal_->settings = {{QStringLiteral("color-scheme"), 1U}};
  const DesktopAppearance appearance(connection());
  EXPECT_TRUE(QTest::qWaitFor([] { return shown().isDark; }));
  EXPECT_GE(contrastRatio(shown().text, shown().windowBackground), 4.5);
}

TEST_F(DesktopAppearanceTest, TheDesktopsAccentIsTaken) {
  portal_->settings = {{QStringLiteral("accent-color"), accent(1, 0, 0)}};
  const DesktopAppearance appearance(connection());
  EXPECT_TRUE(QTest::qWaitFor([] { return shown().accent == QColor(Qt::red); }));
  EXPECT_FALSE(shown().isDark);
}

TEST_F(DesktopAppearanceTest, ChangesAreFollowedWhileRunningBothWays) {
  const DesktopAppearance appearance(connection());
  ASSERT_TRUE(QTest::qWaitFor([this] { return portal_->asked > 0; }));
  EXPECT_FALSE(shown().isDark);
  portal_->change(QStringLiteral("color-scheme"), 1U);
  EXPECT_TRUE(QTest::qWaitFor([] { return shown().isDark; }));
  portal_->change(QStringLiteral("color-scheme"), 2U);
  EXPECT_TRUE(QTest::qWaitFor([] { return !shown().isDark; }));
}

TEST_F(DesktopAppearanceTest, HighContrastIsFollowedInBothSchemesWhileRunning) {
  portal_->settings = {{QStringLiteral("contrast"), 1U}};
  const DesktopAppearance appearance(connection());
  const auto contrast = [] { return contrastRatio(shown().text, shown().windowBackground); };
  EXPECT_TRUE(QTest::qWaitFor([&] { return contrast() > 20.9; }));
  EXPECT_FALSE(shown().isDark);
  portal_->change(QStringLiteral("color-scheme"), 1U);
  EXPECT_TRUE(QTest::qWaitFor([&] { return shown().isDark && contrast() > 20.9; }));
  portal_->change(QStringLiteral("contrast"), 0U);
  EXPECT_TRUE(QTest::qWaitFor([&] { return shown().isDark && contrast() < 20; }));
}

TEST_F(DesktopAppearanceTest, APaletteThatTheDesktopGaveQtIsLeftAlone) {
  auto given = before_;
  given.setColor(QPalette::Highlight, Qt::darkGreen);
  QApplication::setPalette(given);
  portal_->settings = {{QStringLiteral("color-scheme"), 1U}};
  {
    const DesktopAppearance quiet(connection());
    QApplication::setPalette(before_);
    const DesktopAppearance asking(connection());
    ASSERT_TRUE(QTest::qWaitFor([] { return shown().isDark; }));
  }
  EXPECT_EQ(portal_->asked, 1);
}

TEST_F(DesktopAppearanceTest, WithoutAPortalEverythingStays) {
  portal_.reset();
  const DesktopAppearance appearance(connection());
  // Answered after the portal's call, whose failure has then come in as well.
  connection().call(QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
  QCoreApplication::processEvents();
  EXPECT_EQ(QApplication::palette(), before_);
}

TEST(Appearance, WhatMakesNoSenseIsNoWish) {
  EXPECT_EQ(appearance({}), Appearance());
  EXPECT_EQ(appearance({{QStringLiteral("color-scheme"), QStringLiteral("dark")},
                        {QStringLiteral("accent-color"), 7}}),
            Appearance());
}

TEST(Palette, EveryTextIsLegibleInTheDark) {
  const auto dark = palette({.isDark = true, .isHighContrast = false, .accent = {}}, QPalette());
  for (const auto& [text, ground] :
       std::vector<std::pair<QPalette::ColorRole, QPalette::ColorRole>>{
           {QPalette::WindowText, QPalette::Window},
           {QPalette::Text, QPalette::Base},
           {QPalette::ButtonText, QPalette::Button},
           {QPalette::ToolTipText, QPalette::ToolTipBase},
           {QPalette::Link, QPalette::Base}}) {
    EXPECT_GE(contrastRatio(dark.color(text), dark.color(ground)), 4.5) << text;
  }
}

}  // namespace
}  // namespace quibel
