#pragma once

#include <filesystem>
#include <memory>
#include <stop_token>
#include <string>

#include <gtest/gtest.h>

#include "song/ringtone/RingtoneSession.h"
#include "tests/song/Songs.h"

namespace quibel::test {

using platform::ExportStatus;
using platform::FileURL;

/// Exports songs of a directory of its own into that directory.
class Export : public testing::Test {
 protected:
  std::filesystem::path file(const std::string& name) const { return directory_.path() / name; }

  /// The directory's song.wav, made of a sound.
  std::filesystem::path wav(const Sound& sound) const;

  /// A session that will write `duration` seconds from `start` to `to`. Throws
  /// where the song gives none.
  static std::shared_ptr<platform::ExportSession> prepared(const std::filesystem::path& song,
                                                           const std::filesystem::path& to,
                                                           double start, double duration,
                                                           std::stop_token stop = {});

  /// Starts a session and waits for its end.
  static void finish(platform::ExportSession& session);

  /// A session that has ended, well or not.
  static std::shared_ptr<platform::ExportSession> exportSong(const std::filesystem::path& song,
                                                             const std::filesystem::path& to,
                                                             double start, double duration);

  /// The ringtone file of a stretch of a song; throws where it fails.
  std::filesystem::path exported(const std::filesystem::path& song, double start,
                                 double duration) const;

 private:
  TemporaryDirectory directory_;
};

/// `count` frames of a sound from frame `begin` on.
Sound cut(const Sound& sound, std::size_t begin, std::size_t count);

}  // namespace quibel::test
