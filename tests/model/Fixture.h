#pragma once

#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/AudioEditorModel.h"
#include "tests/model/Recorder.h"
#include "tests/support/FakePlatform.h"

namespace quibel::test {

/// A model on a machine that is stepped by hand.
class ModelTest : public testing::Test {
 protected:
  static platform::FileURL url(const char* path) { return platform::FileURL(path); }

  /// Puts a song of `seconds` at `path` and loads it to the end.
  void loadSong(double seconds, const char* path = "/x/song.mp3") {
    machine.songs[path] = fake::Song::lasting(seconds);
    model->load(url(path));
    machine.settle();
  }

  /// A song is loaded, its fragment is 10 … 30 s, and the loop plays it.
  void startLoop() {
    loadSong(60);
    model->startBinding().set(10);
    model->endBinding().set(30);
    model->togglePreview();
  }

  void tick() { machine.timers.back()->fire(); }
  fake::Player& player() { return *machine.players.back(); }

  fake::Platform machine;
  std::shared_ptr<AudioEditorModel> model = std::make_shared<AudioEditorModel>(machine);
};

}  // namespace quibel::test
