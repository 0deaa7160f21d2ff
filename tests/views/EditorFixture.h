#pragma once

#include <QCoreApplication>
#include <QTest>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "model/AudioEditorModel.h"
#include "tests/support/FakePlatform.h"

namespace quibel {

/// A model on a machine that the test steps by hand.
class EditorFixture : public testing::Test {
 protected:
  /// Puts a song on the machine.
  platform::FileURL addSong(const std::string& path, double seconds) {
    machine.songs[path] = fake::Song::lasting(seconds);
    return platform::FileURL(path);
  }

  /// Loads a new song to its end.
  void load(double seconds, const std::string& path = "/musica/canción.mp3") {
    model->load(addSong(path, seconds));
    machine.settle();
  }

  /// Lets the event loop take its turns until nothing is posted.
  static void turn() { QCoreApplication::processEvents(); }

  fake::Platform machine;
  std::shared_ptr<AudioEditorModel> model = std::make_shared<AudioEditorModel>(machine);
};

}  // namespace quibel
