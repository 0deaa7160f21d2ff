#pragma once

#include <string>
#include <vector>

#include "model/AudioEditorModel.h"
#include "tests/support/FakePlatform.h"

namespace quibel::test {

/// Writes each assignment to the model into the machine's journal, as "name =
/// value", or "unchanged" for one that stored the value that stood there.
/// An announcement tells of a change before it is stored, so what one changed
/// is seen at the next event.
class Recorder {
 public:
  Recorder(AudioEditorModel& model, fake::Journal& journal);
  ~Recorder();
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  /// Forgets what has happened so far.
  void restart();

  /// All that has happened since the beginning or the last restart.
  std::vector<std::string> events();

 private:
  using Snapshot = std::vector<std::string>;

  Snapshot snapshot() const;
  void writePending();

  AudioEditorModel& model_;
  fake::Journal& journal_;
  Snapshot last_;
  bool isPending_ = false;
  ChangeAnnouncer::Subscription subscription_;
};

}  // namespace quibel::test
