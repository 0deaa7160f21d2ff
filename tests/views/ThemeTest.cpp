#include <QFontInfo>

#include <gtest/gtest.h>

#include "views/Theme.h"

namespace quibel {
namespace {

QPalette palette(const QColor& window, const QColor& base, const QColor& text,
                 const QColor& highlight) {
  QPalette p;
  p.setColor(QPalette::Window, window);
  p.setColor(QPalette::Base, base);
  p.setColor(QPalette::WindowText, text);
  p.setColor(QPalette::Highlight, highlight);
  return p;
}

const QColor builtIn(48, 140, 198);

std::vector<QPalette> palettes() {
  std::vector<QPalette> all;
  for (const QColor& accent : {builtIn, QColor(Qt::red), QColor(0xff, 0xd6, 0x0a),
                               QColor(0x35, 0x84, 0xe4), QColor(0x20, 0x20, 0x20)}) {
    all.push_back(palette(QColor(0xef, 0xef, 0xef), Qt::white, Qt::black, accent));
    all.push_back(palette(QColor(0x32, 0x32, 0x32), QColor(0x1e, 0x1e, 0x1e), Qt::white, accent));
    all.push_back(palette(Qt::black, Qt::black, Qt::white, accent));
    all.push_back(palette(QColor(0xf6, 0xf5, 0xf4), Qt::white, QColor(0x2e, 0x34, 0x36), accent));
  }
  return all;
}

TEST(Colors, EveryTextIsLegibleOnEveryBackground) {
  for (const auto& p : palettes()) {
    const auto c = colors(p);
    for (const QColor& background : {c.windowBackground, c.controlBackground,
                                     blended(c.controlBackground, 0.75, c.windowBackground),
                                     blended(c.accent, 0.09, c.windowBackground)}) {
      EXPECT_GE(contrastRatio(c.text, background), 4.5);
      EXPECT_GE(contrastRatio(c.secondary, background), 4.5);
    }
    EXPECT_GE(contrastRatio(c.onAccentFill, c.accentFill), 4.5);
  }
}

TEST(Colors, InBlackAndWhiteEveryTextHasAContrastOfSeven) {
  for (const QColor& accent : {builtIn, QColor(Qt::red), QColor(0xff, 0xd6, 0x0a)}) {
    for (const auto& p : {palette(Qt::white, Qt::white, Qt::black, accent),
                          palette(Qt::black, Qt::black, Qt::white, accent)}) {
      const auto c = colors(p);
      for (const QColor& background :
           {c.windowBackground, c.controlBackground, blended(c.accent, 0.09, c.windowBackground)}) {
        EXPECT_GE(contrastRatio(c.text, background), 7);
        EXPECT_GE(contrastRatio(c.secondary, background), 7);
      }
      EXPECT_GE(contrastRatio(c.onAccentFill, c.accentFill), 7);
    }
  }
}

TEST(Colors, SecondaryIsFainterThanTheText) {
  const auto c = colors(palettes().front());
  EXPECT_LT(contrastRatio(c.secondary, c.windowBackground),
            contrastRatio(c.text, c.windowBackground));
}

TEST(Colors, TheDesktopsAccentIsTaken) {
  const auto c = colors(palette(Qt::white, Qt::white, Qt::black, QColor(0xc0, 0x1c, 0x28)));
  EXPECT_EQ(c.accent, QColor(0xc0, 0x1c, 0x28));
}

TEST(Colors, QtsOwnHighlightIsNoAccentOfADesktop) {
  const auto c = colors(palette(Qt::white, Qt::white, Qt::black, builtIn));
  EXPECT_NE(c.accent, builtIn);
  EXPECT_GT(c.accent.blue(), c.accent.red());
}

TEST(Colors, TheTwoHandlesDifferInLightnessToo) {
  for (const auto& p : palettes()) {
    const auto c = colors(p);
    EXPECT_GE(contrastRatio(c.green, c.orange), 1.15);
  }
}

TEST(Colors, HandlesStandOutOnTheStripAndTheirLinesOnThem) {
  for (const auto& p : palettes()) {
    const auto c = colors(p);
    const auto [panel, strip, fragment] = stripGrounds(c);
    for (const QColor& handle : {c.green, c.greenHovered, c.orange, c.orangeHovered}) {
      SCOPED_TRACE(handle.name().toStdString() + " on " + strip.name().toStdString() + " and " +
                   fragment.name().toStdString());
      EXPECT_GE(contrastRatio(handle, strip), 3);
      EXPECT_GE(contrastRatio(handle, fragment), 3);
      EXPECT_GE(contrastRatio(handle, Qt::white), 3);
    }
  }
}

TEST(Colors, AHandleUnderThePointerIsSeenToBe) {
  for (const auto& p : palettes()) {
    const auto c = colors(p);
    EXPECT_GE(contrastRatio(c.green, c.greenHovered), 1.07);
    EXPECT_GE(contrastRatio(c.orange, c.orangeHovered), 1.07);
  }
}

TEST(Colors, TheStripStandsOutFromItsPanel) {
  for (const auto& p : palettes()) {
    const auto [panel, strip, fragment] = stripGrounds(colors(p));
    EXPECT_GE(contrastRatio(panel, strip), 1.2) << panel.name().toStdString();
  }
}

TEST(Colors, TheEdgesAndTheFocusOfButtonsStandOutOnAllThatLiesAroundThem) {
  for (const auto& p : palettes()) {
    const auto c = colors(p);
    const auto tinted = blended(c.accent, 0.09, c.windowBackground);
    for (const QColor& background : {c.windowBackground, tinted, stripGrounds(c).panel}) {
      EXPECT_GE(contrastRatio(c.edge, background), 3);
      EXPECT_GE(contrastRatio(c.accentEdge, background), 3);
      EXPECT_GE(contrastRatio(c.focusRing, background), 3);
    }
    EXPECT_GE(contrastRatio(c.focusRing, c.buttonFill), 3);
    EXPECT_GE(contrastRatio(c.text, c.buttonFill), 4.5);
  }
}

TEST(Colors, TooltipsHaveTheWindowsOwn) {
  for (const auto& p : palettes()) {
    const auto c = colors(p);
    const auto toolTips = toolTipPalette(p);
    EXPECT_EQ(toolTips.color(QPalette::ToolTipBase), c.controlBackground);
    EXPECT_EQ(toolTips.color(QPalette::ToolTipText), c.text);
  }
}

TEST(Blended, MixesByOpacity) {
  EXPECT_EQ(blended(Qt::black, 0.5, Qt::white).red(), 128);
  EXPECT_EQ(blended(Qt::black, 0, Qt::white), QColor(Qt::white));
}

TEST(ContrastRatio, IsThatOfBlackOnWhite) {
  EXPECT_NEAR(contrastRatio(Qt::black, Qt::white), 21, 1e-6);
  EXPECT_NEAR(contrastRatio(Qt::white, Qt::white), 1, 1e-6);
}

QFont body(int pixels) {
  QFont font;
  font.setPixelSize(pixels);
  return font;
}

TEST(Font, AtThirteenPointsEveryStyleHasItsOwnSize) {
  const auto size = [](TextStyle style) { return font(style, body(13)).pixelSize(); };
  EXPECT_EQ(size(TextStyle::largeTitle), 32);
  EXPECT_EQ(size(TextStyle::title2), 17);
  EXPECT_EQ(size(TextStyle::title3), 15);
  EXPECT_EQ(size(TextStyle::headline), 13);
  EXPECT_EQ(size(TextStyle::body), 13);
  EXPECT_EQ(size(TextStyle::callout), 12);
  EXPECT_EQ(size(TextStyle::caption), 10);
  EXPECT_EQ(size(TextStyle::caption2Bold), 10);
}

TEST(Font, TheStylesGrowWithTheDesktopsFont) {
  EXPECT_EQ(font(TextStyle::title2, body(26)).pixelSize(), 34);
  EXPECT_EQ(font(TextStyle::caption, body(26)).pixelSize(), 20);
  EXPECT_EQ(font(TextStyle::largeTitle, body(26)).pixelSize(), 52);
}

TEST(Font, SmallPrintDoesNotShrinkBelowTenPoints) {
  EXPECT_EQ(font(TextStyle::caption, body(11)).pixelSize(), 10);
}

TEST(Font, TheWeightsAreThoseOfTheirStyles) {
  const auto weight = [](TextStyle style) { return font(style, body(13)).weight(); };
  EXPECT_EQ(weight(TextStyle::largeTitle), QFont::Bold);
  EXPECT_EQ(weight(TextStyle::title2), QFont::DemiBold);
  EXPECT_EQ(weight(TextStyle::title3), QFont::Normal);
  EXPECT_EQ(weight(TextStyle::title3Bold), QFont::Bold);
  EXPECT_EQ(weight(TextStyle::headline), QFont::Bold);
  EXPECT_EQ(weight(TextStyle::caption2Bold), QFont::Bold);
}

}  // namespace
}  // namespace quibel
