#include <QString>

#include <gtest/gtest.h>

#include "desktop/FileTypes.h"

namespace quibel::desktop {
namespace {

using platform::ContentType;

TEST(FileTypes, AudioAdmitsTheUsualSongsInEitherCase) {
  const auto types = fileTypes({ContentType::audio()});
  EXPECT_EQ(types.name, QStringLiteral("Audio"));
  for (const char* const extension :
       {"mp3", "m4a", "wav", "aif", "aiff", "flac", "ogg", "oga", "opus", "wma", "mp4", "mkv",
        "webm", "m4r", "caf", "MP3", "WAV", "M4A"})
    EXPECT_TRUE(types.patterns.contains(QStringLiteral("*.") + QLatin1String(extension)))
        << extension;
}

TEST(FileTypes, AudioAdmitsNoListsOfSongs) {
  const auto patterns = fileTypes({ContentType::audio()}).patterns;
  for (const char* const extension : {"m3u", "m3u8", "pls", "mid", "txt", "jpg"})
    EXPECT_FALSE(patterns.contains(QStringLiteral("*.") + QLatin1String(extension))) << extension;
}

TEST(FileTypes, NoTypesAdmitAudio) {
  EXPECT_EQ(fileTypes({}).patterns, fileTypes({ContentType::audio()}).patterns);
}

TEST(FileTypes, AnExtensionAdmitsItsFilesOnly) {
  const auto types = fileTypes({{"m4r"}});
  EXPECT_EQ(types.name, QStringLiteral("Tono para iPhone"));
  EXPECT_EQ(types.patterns, QStringList{QStringLiteral("*.m4r")});
}

}  // namespace
}  // namespace quibel::desktop
