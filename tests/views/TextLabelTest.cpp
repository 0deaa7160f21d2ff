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
  NamingLabel() { label.setAlignment(Qt::AlignLeft | Qt::AlignVCenter); }

  TextLabel labelOf(const QString& text) {
    return TextLabel(TextStyle::body, TextLabel::Role::primary, TextLabel::Feature::none, text);
  }

  const QString lead = QStringLiteral("Tono guardado: ");
  TextLabel label{TextStyle::body, TextLabel::Role::primary, TextLabel::Feature::elided};
  int leadWidth = QFontMetrics(label.font()).horizontalAdvance(lead);
};

TEST_F(NamingLabel, ANameFromRightToLeftStandsInTheSentenceAsItDoesAlone) {
  const QString name = QStringLiteral(u"\u05e9\u05d9\u05e8 (1) - 2.m4r");
  label.showText({lead, name});
  auto leadAlone = labelOf(lead);
  auto nameAlone = labelOf(name);
  const auto whole = picture(label, 400);
  EXPECT_EQ(columns(whole, 0, leadWidth), columns(picture(leadAlone, 400), 0, leadWidth));
  EXPECT_EQ(columns(whole, leadWidth, 400), columns(picture(nameAlone, 400), 0, 400 - leadWidth));
}

TEST_F(NamingLabel, WithoutRoomTheNamesMiddleIsLeftOutAndItsExtensionAndTheSentenceStay) {
  const QString name = QString(200, u'x') + QStringLiteral(".m4r");
  label.showText({lead, name});
  const int width = leadWidth + 60;
  const auto cut = picture(label, width);
  auto leadAlone = labelOf(lead);
  EXPECT_EQ(columns(cut, 0, leadWidth), columns(picture(leadAlone, width), 0, leadWidth));
  auto nameAlone =
      labelOf(QFontMetrics(label.font()).elidedText(name, Qt::ElideMiddle, width - leadWidth));
  EXPECT_TRUE(nameAlone.text().endsWith(QStringLiteral(".m4r")));
  EXPECT_EQ(columns(cut, leadWidth, width), columns(picture(nameAlone, width), 0, 60));
}

TEST_F(NamingLabel, TheWholeIsInTheTooltipAndForAssistiveTechnology) {
  label.showText({lead, QStringLiteral("a<b>.m4r")});
  EXPECT_EQ(label.text().toStdString(), "Tono guardado: a<b>.m4r");
  EXPECT_EQ(label.toolTip().toStdString(), "<qt>Tono guardado: a&lt;b&gt;.m4r</qt>");
  EXPECT_EQ(label.accessibleDescription().toStdString(), "Tono guardado: a<b>.m4r");
}

}  // namespace
}  // namespace quibel
