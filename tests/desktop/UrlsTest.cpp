#include <QMimeData>
#include <QSysInfo>
#include <string>

#include <gtest/gtest.h>

#include "desktop/Urls.h"
#include "tests/desktop/TemporaryFolder.h"

namespace quibel::desktop {
namespace {

using platform::FileURL;

class EveryName : public testing::TestWithParam<std::string> {};

TEST_P(EveryName, SurvivesTheWayToAURIAndBack) {
  const FileURL url("/música/" + GetParam());
  EXPECT_EQ(fileURL(QUrl::fromEncoded(fileURI(url))), url);
}

TEST_P(EveryName, SurvivesADrop) {
  const FileURL url("/música/" + GetParam());
  QMimeData data;
  data.setData(QStringLiteral("text/uri-list"), fileURI(url) + "\r\n");
  ASSERT_EQ(data.urls().size(), 1);
  EXPECT_EQ(fileURL(data.urls().front()), url);
}

INSTANTIATE_TEST_SUITE_P(Names, EveryName,
                         testing::Values("Mi canción.mp3", "a b  c.wav", " .mp3", "100%.flac",
                                         "%41%FF.ogg", "uno\ndos.mp3", "a\xFF\xFE.mp3", "\xC3.mp3",
                                         "a#b?c;d.mp3", "comillas \"'`.mp3", "a\\b.mp3",
                                         "日本語.mp3", "cafe\xCC\x81.mp3", ".oculto"));

TEST(Urls, AURIIsPercentEncodedByteByByte) {
  EXPECT_EQ(fileURI(FileURL("/a b/ñ\xFF%#.mp3")), "file:///a%20b/%C3%B1%FF%25%23.mp3");
}

TEST(Urls, AFileOfThisMachineMayNameIt) {
  QUrl url(QStringLiteral("file:///a.mp3"));
  url.setHost(QSysInfo::machineHostName());
  EXPECT_EQ(fileURL(url), FileURL("/a.mp3"));
}

TEST(Urls, OnlyLocalFilesAreFiles) {
  const auto parse = [](const char* text) { return fileURL(QUrl::fromEncoded(text)); };
  EXPECT_EQ(parse("https://example.org/a.mp3"), std::nullopt);
  EXPECT_EQ(parse("smb://server/a.mp3"), std::nullopt);
  EXPECT_EQ(parse("file://server/a.mp3"), std::nullopt);
  EXPECT_EQ(parse("a.mp3"), std::nullopt);
  EXPECT_EQ(parse("file:a.mp3"), std::nullopt);
  EXPECT_EQ(parse(""), std::nullopt);
  EXPECT_EQ(parse("file:///a%00b.mp3"), std::nullopt);
  EXPECT_EQ(parse("file:///a.mp3"), FileURL("/a.mp3"));
  EXPECT_EQ(parse("file://localhost/a.mp3"), FileURL("/a.mp3"));
}

TEST(Urls, ANameThatQtCannotShowIsFoundByHowItShowsIt) {
  const TemporaryFolder folder;
  const auto file = folder.write("a\xFF.mp3", "");
  const auto shown = QString::fromStdString(folder.path().string()) + QStringLiteral("/a") +
                     QChar(QChar::ReplacementCharacter) + QStringLiteral(".mp3");
  EXPECT_EQ(fileShownAs(shown), file);
  folder.write("a\xFE.mp3", "");
  EXPECT_NE(fileShownAs(shown), file) << "one of two is not guessed";
}

TEST(Urls, ANameThatQtShowsAsItIsIsTakenAsItIs) {
  EXPECT_EQ(fileShownAs(QStringLiteral("/no existe/ñ.m4r")), FileURL("/no existe/ñ.m4r"));
}

}  // namespace
}  // namespace quibel::desktop
