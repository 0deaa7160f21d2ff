#include <gtest/gtest.h>

#include "views/DisplayText.h"

namespace quibel {
namespace {

TEST(DisplayFileName, KeepsAccentsBlanksPercentSignsAndMarkup) {
  EXPECT_EQ(displayFileName("Canción 100% <b>x&amp;y.mp3").toStdString(),
            "Canción 100% <b>x&amp;y.mp3");
}

TEST(DisplayFileName, ShowsControlCharactersAsSymbolsOnOneLine) {
  EXPECT_EQ(displayFileName("una\ndos\ttres\x7f.mp3").toStdString(), "una␊dos␉tres␡.mp3");
  EXPECT_FALSE(displayFileName("a\xe2\x80\xa8"
                               "b")
                   .contains(QChar(QChar::LineSeparator)));
}

TEST(DisplayFileName, ShowsBytesThatAreNoUTF8AsReplacementCharacters) {
  EXPECT_EQ(displayFileName("a\xff\xfe.mp3").toStdString(), "a\xef\xbf\xbd\xef\xbf\xbd.mp3");
}

TEST(DisplayFileName, DoesNotLetANameReorderItself) {
  EXPECT_FALSE(displayFileName("gpj.\xe2\x80\xae"
                               "3pm")
                   .contains(QChar(0x202e)));
}

TEST(DisplayText, KeepsLinesAsTheyAre) {
  EXPECT_EQ(displayText("uno\ndos").toStdString(), "uno\ndos");
}

TEST(DisplayStatus, SetsTheNameOfASavedRingtoneApart) {
  const auto [text, name] = displayStatus("Tono guardado: Tono guardado: \xe2\x80\xae.m4r");
  EXPECT_EQ(text.toStdString(), "Tono guardado: ");
  EXPECT_EQ(name.toStdString(), "Tono guardado: \xef\xbf\xbd.m4r");
}

TEST(DisplayStatus, HasNoNameInAnythingElse) {
  const auto [text, name] = displayStatus("Mueve los tiradores");
  EXPECT_EQ(text.toStdString(), "Mueve los tiradores");
  EXPECT_TRUE(name.isEmpty());
}

TEST(PlainToolTip, ShowsMarkupLiterally) {
  EXPECT_EQ(plainToolTip(QStringLiteral("<b>&")).toStdString(), "<qt>&lt;b&gt;&amp;</qt>");
  EXPECT_TRUE(plainToolTip({}).isEmpty());
}

}  // namespace
}  // namespace quibel
