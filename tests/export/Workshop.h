#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "desktop/LocalFileManager.h"
#include "model/AudioEditorModel.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/TestAudio.h"

namespace quibel::test {

/// A main queue that other threads post to and the test empties by hand.
class PostedBlocks final : public platform::DispatchQueue {
 public:
  void async(std::function<void()> block) override;

  /// Waits for a block, without running it; throws where none comes.
  void awaitOne();

  /// Waits for a block and runs it.
  void runOne();

 private:
  std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<std::function<void()>> blocks_;
};

/// A machine whose songs, exports and files are real; all else is stepped by hand.
class Machine final : public fake::Platform {
 public:
  platform::Result<std::unique_ptr<platform::AudioFile>> openAudioFile(
      const platform::FileURL& url) override;
  std::shared_ptr<platform::ExportSession> makeExportSession(const platform::FileURL& url) override;
  platform::FileManager& fileManager() override { return disk_; }
  platform::DispatchQueue& mainQueue() override { return posted; }

  PostedBlocks posted;

 private:
  desktop::LocalFileManager disk_;
};

/// An editor on such a machine, with a folder of its own for its songs and
/// ringtones and another for its temporary files.
class Workshop {
 public:
  Workshop();
  Workshop(const Workshop&) = delete;
  Workshop& operator=(const Workshop&) = delete;
  ~Workshop();

  const std::filesystem::path& folder() const { return directory_.path(); }
  std::filesystem::path file(const std::string& name) const { return home() / name; }
  std::filesystem::path home() const { return folder() / "home"; }
  std::filesystem::path temporary() const { return folder() / "temporary"; }

  /// Writes `seconds` of a stereo song at 44.1 kHz as canción.wav.
  std::filesystem::path writeSong(double seconds) const;

  /// Loads a song to its end.
  void load(const std::filesystem::path& song);

  /// Begins the export of the fragment; the result is still to be seen to.
  void beginExport(const std::filesystem::path& to);

  /// Waits until the session has written all it will and sees to the result.
  void endExport() { machine.posted.runOne(); }

  void exportTo(const std::filesystem::path& to);

  /// The alert's text, or "" for none.
  std::string alert() const { return model->showAlert() ? model->alertText() : ""; }

  /// Names in a folder, in order.
  static std::vector<std::string> namesIn(const std::filesystem::path& folder);

 private:
  TemporaryDirectory directory_;

 public:
  Machine machine;
  std::shared_ptr<AudioEditorModel> model = std::make_shared<AudioEditorModel>(machine);
};

/// The bytes of the ringtone of a song's default fragment, made undisturbed.
std::vector<std::uint8_t> ringtoneOf(Workshop& workshop);

/// Tests of ringtones in a workshop where an 8 s song is loaded. Without a
/// destination of its own, a ringtone goes to tono.m4r.
class RingtoneTest : public testing::Test {
 protected:
  RingtoneTest();

  /// Nothing was saved, the song is what it was, and no temporary file is left.
  void expectNothingHappened() const;

  /// The whole ringtone is at `saved`, the status says so, and no temporary file
  /// is left.
  void expectSaved(const std::filesystem::path& saved) const;

  Workshop workshop;
  std::filesystem::path song = workshop.writeSong(8);
  std::filesystem::path tone = workshop.file("tono.m4r");
  std::vector<std::uint8_t> songBytes = readBytes(song);
  std::vector<std::uint8_t> whole;  ///< what the ringtone's bytes should be
};

}  // namespace quibel::test
