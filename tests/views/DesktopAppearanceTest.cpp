#include <QApplication>
#include <QTest>

#include <gtest/gtest.h>

#include "app/DesktopAppearance.h"
#include "tests/views/FakePortal.h"
#include "views/Motion.h"
#include "views/Theme.h"

namespace quibel {
namespace {

QVariant accent(double red, double green, double blue) {
  QDBusArgument argument;
  argument.beginStructure();
  argument << red << green << blue;
  argument.endStructure();
  return QVariant::fromValue(argument);
}

/// The application's looks on a desktop whose portal the test fills.
class DesktopAppearanceTest : public testing::Test {
 protected:
  void SetUp() override {
    if (bus_.address.isEmpty()) GTEST_SKIP() << "no dbus-daemon";
    portal_ = std::make_unique<fake::Portal>(bus_.address);
  }
  void TearDown() override {
    following_.reset();
    QApplication::setPalette(palette_);
    QApplication::setFont(font_);
    setMotionReduced(false);
    QDBusConnection::disconnectFromBus(QStringLiteral("application"));
  }

  /// Follows the portal from here on.
  void follow() { following_ = std::make_unique<Following>(connection()); }

  QDBusConnection connection() const {
    return QDBusConnection::connectToBus(bus_.address, QStringLiteral("application"));
  }

  void set(const char* key, const QVariant& value) {
    portal_->groups[settings::appearance].insert(QLatin1String(key), value);
  }
  void change(const char* key, const QVariant& value) {
    portal_->change(settings::appearance, QLatin1String(key), value);
  }
  void changeInGnome(const char* key, const QVariant& value) {
    portal_->change(settings::gnomeInterface, QLatin1String(key), value);
  }

  /// Waits until the portal has been asked and its answer has arrived.
  void settle() {
    ASSERT_TRUE(QTest::qWaitFor([this] { return portal_->asked > 0; }));
    QObject here;
    bool arrived = false;
    QObject::connect(&following_->settings, &DesktopSettings::read, &here, [&] { arrived = true; });
    change("another", 1U);
    ASSERT_TRUE(QTest::qWaitFor([&] { return arrived; }));
  }

  static Colors shown() { return colors(QApplication::palette()); }

  struct Following {
    explicit Following(const QDBusConnection& bus) : settings(bus) {}
    DesktopSettings settings;
    DesktopAppearance appearance{settings};
  };

  const QPalette palette_ = QApplication::palette();
  const QFont font_ = QApplication::font();
  fake::Bus bus_;
  std::unique_ptr<fake::Portal> portal_;
  std::unique_ptr<Following> following_;
};

TEST_F(DesktopAppearanceTest, ADarkDesktopGetsADarkWindow) {
  set("color-scheme", 1U);
  follow();
  EXPECT_TRUE(QTest::qWaitFor([] { return shown().isDark; }));
  EXPECT_GE(contrastRatio(shown().text, shown().windowBackground), 4.5);
}

TEST_F(DesktopAppearanceTest, TheDesktopsAccentIsTaken) {
  set("accent-color", accent(1, 0, 0));
  follow();
  EXPECT_TRUE(QTest::qWaitFor([] { return shown().accent == QColor(Qt::red); }));
  EXPECT_FALSE(shown().isDark);
}

TEST_F(DesktopAppearanceTest, NumbersThatAreNoColourAreNoAccent) {
  set("color-scheme", 1U);
  set("accent-color", accent(-1, -1, -1));
  follow();
  ASSERT_TRUE(QTest::qWaitFor([] { return shown().isDark; }));
  EXPECT_EQ(QApplication::palette().color(QPalette::Highlight),
            palette_.color(QPalette::Highlight));
}

TEST_F(DesktopAppearanceTest, ChangesAreFollowedWhileRunningBothWays) {
  follow();
  settle();
  EXPECT_FALSE(shown().isDark);
  change("color-scheme", 1U);
  EXPECT_TRUE(QTest::qWaitFor([] { return shown().isDark; }));
  change("color-scheme", 2U);
  EXPECT_TRUE(QTest::qWaitFor([] { return !shown().isDark; }));
}

TEST_F(DesktopAppearanceTest, HighContrastIsFollowedInBothSchemesWhileRunning) {
  set("contrast", 1U);
  follow();
  const auto contrast = [] { return contrastRatio(shown().text, shown().windowBackground); };
  EXPECT_TRUE(QTest::qWaitFor([&] { return contrast() > 20.9; }));
  EXPECT_FALSE(shown().isDark);
  change("color-scheme", 1U);
  EXPECT_TRUE(QTest::qWaitFor([&] { return shown().isDark && contrast() > 20.9; }));
  change("contrast", 0U);
  EXPECT_TRUE(QTest::qWaitFor([&] { return shown().isDark && contrast() < 20; }));
}

TEST_F(DesktopAppearanceTest, LessMotionIsFollowedWhileRunning) {
  follow();
  settle();
  EXPECT_FALSE(isMotionReduced());
  change("reduced-motion", 1U);
  EXPECT_TRUE(QTest::qWaitFor([] { return isMotionReduced(); }));
  change("reduced-motion", 0U);
  EXPECT_TRUE(QTest::qWaitFor([] { return !isMotionReduced(); }));
  changeInGnome("enable-animations", false);
  EXPECT_TRUE(QTest::qWaitFor([] { return isMotionReduced(); }));
}

TEST_F(DesktopAppearanceTest, LargeTextIsFollowedWhileRunning) {
  QFont own;
  own.setPointSizeF(10);
  QApplication::setFont(own);
  portal_->groups[settings::gnomeInterface].insert(QStringLiteral("text-scaling-factor"), 2.0);
  follow();
  EXPECT_TRUE(QTest::qWaitFor([] { return QApplication::font().pointSizeF() == 20; }));
  changeInGnome("text-scaling-factor", 1.5);
  EXPECT_TRUE(QTest::qWaitFor([] { return QApplication::font().pointSizeF() == 15; }));
  changeInGnome("text-scaling-factor", 1.0);
  EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::font() == own; }));
}

TEST_F(DesktopAppearanceTest, AnotherFontOfKdesIsFollowedWhileRunning) {
  follow();
  portal_->change(settings::kdeGeneral, QStringLiteral("font"),
                  QStringLiteral("DejaVu Serif,17,-1,5,50,0,0,0,0,0"));
  EXPECT_TRUE(QTest::qWaitFor([] { return QApplication::font().pointSize() == 17; }));
  EXPECT_EQ(QApplication::font().family(), QStringLiteral("DejaVu Serif"));
}

TEST_F(DesktopAppearanceTest, APaletteThatTheDesktopGaveQtTakesTheAccentAlone) {
  auto given = palette_;
  given.setColor(QPalette::Highlight, Qt::darkGreen);
  QApplication::setPalette(given);
  set("color-scheme", 1U);
  follow();
  settle();
  EXPECT_EQ(QApplication::palette(), given);
  change("accent-color", accent(1, 0, 0));
  EXPECT_TRUE(QTest::qWaitFor([] { return shown().accent == QColor(Qt::red); }));
  EXPECT_FALSE(shown().isDark);
}

TEST_F(DesktopAppearanceTest, WithoutAPortalEverythingStays) {
  portal_.reset();
  follow();
  // Answered after the portal's call, whose failure has then come in as well.
  connection().call(QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
  QCoreApplication::processEvents();
  EXPECT_EQ(QApplication::palette(), palette_);
  EXPECT_EQ(QApplication::font(), font_);
}

TEST(Appearance, WhatMakesNoSenseIsNoWish) {
  EXPECT_EQ(appearance({}), Appearance());
  EXPECT_EQ(appearance({{settings::appearance,
                         {{QStringLiteral("color-scheme"), QStringLiteral("dark")},
                          {QStringLiteral("accent-color"), 7}}},
                        {settings::gnomeInterface, {{QStringLiteral("text-scaling-factor"), 40.0}}},
                        {settings::kdeGeneral, {{QStringLiteral("font"), 7}}}}),
            Appearance());
}

TEST(Palette, EveryTextIsLegibleInTheDark) {
  Appearance darkDesktop;
  darkDesktop.isDark = true;
  const auto dark = palette(darkDesktop, QPalette());
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
