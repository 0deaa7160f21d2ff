#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include "views/TextLabel.h"

namespace quibel {
namespace {

constexpr int height = 20;

/// What a label of `width` points shows, on white.
QImage picture(TextLabel& label, int width) {
  label.resize(width, height);
  QImage image(width, height, QImage::Format_RGB32);
  image.fill(Qt::white);
  label.render(&image, {}, {}, QWidget::DrawChildren);
  return image;
}

/// The columns `left` … `right` of a picture.
QImage columns(const QImage& image, int left, int right) {
  return image.copy(left, 0, right - left, height);
}

class NamingLabel : public testing::Test {
 protected:
  NamingLabel() {
    wholePixels(label);
    leadWidth = QFontMetrics(label.font()).horizontalAdvance(lead);
  }

  /// Lets every glyph begin on a pixel, so that texts look alike wherever they begin.
  static void wholePixels(TextLabel& label) {
    auto font = label.font();
    font.setHintingPreference(QFont::PreferFullHinting);
    label.setFont(font);
    label.setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  }

  struct PlainLabel : TextLabel {
    explicit PlainLabel(const QString& text)
        : TextLabel(TextStyle::body, Role::primary, Feature::none, text) {
      wholePixels(*this);
    }
  };

  const QString lead = QStringLiteral("Tono guardado: ");
  TextLabel label{TextStyle::body, TextLabel::Role::primary, TextLabel::Feature::elided};
  int leadWidth = 0;
};

TEST_F(NamingLabel, ANameFromRightToLeftStandsInTheSentenceAsItDoesAlone) {
  const QString name = QStringLiteral(u"\u05e9\u05d9\u05e8 (1) - 2.m4r");
  label.showText({lead, name});
  PlainLabel leadAlone(lead);
  PlainLabel nameAlone(name);
  const auto whole = picture(label, 400);
  EXPECT_EQ(columns(whole, 0, leadWidth), columns(picture(leadAlone, 400), 0, leadWidth));
  EXPECT_EQ(columns(whole, leadWidth, 400), columns(picture(nameAlone, 400), 0, 400 - leadWidth));
}

TEST_F(NamingLabel, WithoutRoomTheNamesMiddleIsLeftOutAndItsExtensionAndTheSentenceStay) {
  const QString name = QString(200, u'x') + QStringLiteral(".m4r");
  label.showText({lead, name});
  const int width = leadWidth + 140;
  const auto cut = picture(label, width);
  PlainLabel leadAlone(lead);
  EXPECT_EQ(columns(cut, 0, leadWidth), columns(picture(leadAlone, width), 0, leadWidth));
  PlainLabel nameAlone(
      QFontMetrics(label.font()).elidedText(name, Qt::ElideMiddle, width - leadWidth));
  EXPECT_TRUE(nameAlone.text().endsWith(QStringLiteral(".m4r")));
  EXPECT_EQ(columns(cut, leadWidth, width), columns(picture(nameAlone, width), 0, 140));
}

TEST_F(NamingLabel, TheWholeIsInTheTooltipAndForAssistiveTechnology) {
  label.showText({lead, QStringLiteral("a<b>.m4r")});
  EXPECT_EQ(label.text().toStdString(), "Tono guardado: a<b>.m4r");
  EXPECT_EQ(label.toolTip().toStdString(), "<qt>Tono guardado: a&lt;b&gt;.m4r</qt>");
  EXPECT_EQ(label.accessibleDescription().toStdString(), "Tono guardado: a<b>.m4r");
}

}  // namespace
}  // namespace quibel
