#include <stdexcept>

#include "tests/model/Fixture.h"

namespace quibel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PreviewTest : public ModelTest {};

TEST_F(PreviewTest, WithoutASongNothingHappens) {
  Recorder recorder(*model, machine.journal);
  model->togglePreview();
  EXPECT_THAT(recorder.events(), IsEmpty());
}

TEST_F(PreviewTest, StartsInItsOrderWithThePositionSetBeforePreparing) {
  loadSong(60);
  model->startBinding().set(10);
  Recorder recorder(*model, machine.journal);
  recorder.restart();

  model->togglePreview();

  EXPECT_THAT(recorder.events(),
              ElementsAre("open player /x/song.mp3", "player.currentTime = 10.000000",
                          "player.prepareToPlay", "player.play", "playhead = 10",
                          "isPlaying = true", "schedule timer"));
  EXPECT_EQ(machine.timers.back()->interval, 0.025);
}

TEST_F(PreviewTest, IsPlayingWithThePlayheadAtTheStartBeforeTheFirstTick) {
  startLoop();
  EXPECT_TRUE(model->isPlaying());
  EXPECT_EQ(model->playhead(), 10);
}

TEST_F(PreviewTest, AnExceptionOfThePlatformIsReported) {
  loadSong(60);
  machine.whileOpening = [] { throw std::runtime_error("no"); };
  model->togglePreview();
  EXPECT_EQ(model->alertText(),
            "No se ha podido reproducir el audio. Ha ocurrido un error inesperado.");
  EXPECT_FALSE(model->isPlaying());
}

TEST_F(PreviewTest, ToggledTwiceReturnsToStoppedWithPlayerAndTimerGone) {
  startLoop();
  player().currentTime = 20;
  tick();
  model->togglePreview();
  EXPECT_FALSE(model->isPlaying());
  EXPECT_EQ(model->playhead(), 10);
  EXPECT_FALSE(player().isAlive);
  EXPECT_FALSE(machine.timers.back()->isValid);
}

TEST_F(PreviewTest, StopsInItsOrder) {
  startLoop();
  player().currentTime = 20;
  tick();
  Recorder recorder(*model, machine.journal);
  recorder.restart();

  model->stopPreview();

  EXPECT_THAT(recorder.events(), ElementsAre("timer.invalidate", "player.stop", "player released",
                                             "isPlaying = false", "playhead = 10"));
}

TEST_F(PreviewTest, StoppingWithNothingPlayingOnlySetsTheFlagAndThePlayhead) {
  loadSong(60);
  model->startBinding().set(4);
  Recorder recorder(*model, machine.journal);
  recorder.restart();

  model->stopPreview();

  EXPECT_THAT(recorder.events(), ElementsAre("unchanged", "playhead = 4"));
}

TEST_F(PreviewTest, StoppingTwiceEndsPlayerAndTimerOnce) {
  startLoop();
  model->stopPreview();
  Recorder recorder(*model, machine.journal);
  recorder.restart();

  model->stopPreview();

  EXPECT_THAT(recorder.events(), ElementsAre("unchanged", "unchanged"));
}

TEST_F(PreviewTest, TickMovesThePlayheadWithThePlayer) {
  startLoop();
  player().currentTime = 12.5;
  machine.journal.entries.clear();
  tick();
  EXPECT_EQ(model->playhead(), 12.5);
  EXPECT_THAT(machine.journal.entries, IsEmpty());
}

TEST_F(PreviewTest, PlayerThatStopsAtTheSongsEndIsRestartedAtTheStart) {
  startLoop();
  model->endBinding().set(60);
  player().currentTime = 59.99;
  player().isPlaying = false;
  tick();
  EXPECT_EQ(player().currentTime, 10);
  EXPECT_TRUE(player().isPlaying);
  EXPECT_EQ(model->playhead(), 10);
  EXPECT_TRUE(model->isPlaying());
}

TEST_F(PreviewTest, TickExactlyAtTheEndJumpsBackToTheStart) {
  startLoop();
  player().currentTime = 30;
  machine.journal.entries.clear();
  tick();
  EXPECT_THAT(machine.journal.entries,
              ElementsAre("player.currentTime = 10.000000", "player.play"));
  EXPECT_EQ(model->playhead(), 10);
}

TEST_F(PreviewTest, TickJustBeforeTheEndDoesNotJump) {
  startLoop();
  player().currentTime = 29.999;
  tick();
  EXPECT_EQ(model->playhead(), 29.999);
}

TEST_F(PreviewTest, EndMovedBelowThePositionJumpsBackOnTheNextTick) {
  startLoop();
  player().currentTime = 25;
  tick();
  model->endBinding().set(20);
  tick();
  EXPECT_EQ(model->playhead(), 10);
}

TEST_F(PreviewTest, StartMovedWhilePlayingIsUsedAtTheNextJump) {
  startLoop();
  model->startBinding().set(15);
  player().currentTime = 16;
  tick();
  EXPECT_EQ(model->playhead(), 16);
  player().currentTime = 31;
  tick();
  EXPECT_EQ(model->playhead(), 15);
}

TEST_F(PreviewTest, FileThatCannotBePlayedRaisesTheAlertAndSchedulesNoTimer) {
  loadSong(60);
  machine.songs["/x/song.mp3"].playError = platform::Error("No hay sonido.");
  model->togglePreview();
  EXPECT_FALSE(model->isPlaying());
  EXPECT_TRUE(model->showAlert());
  EXPECT_EQ(model->alertText(), "No se ha podido reproducir el audio. No hay sonido.");
  EXPECT_THAT(machine.timers, IsEmpty());
}

TEST_F(PreviewTest, PlayerThatWillNotPlayYetIsToldAgainByEachTick) {
  startLoop();
  player().playsWhenTold = false;
  player().isPlaying = false;
  tick();
  EXPECT_TRUE(model->isPlaying());
  player().playsWhenTold = true;
  tick();
  EXPECT_TRUE(player().isPlaying);
}

TEST_F(PreviewTest, FailureClearsALoadThatIsRunning) {
  loadSong(60);
  model->load(url("/x/song.mp3"));
  machine.songs["/x/song.mp3"].playError = platform::Error("No hay sonido.");
  model->togglePreview();
  EXPECT_FALSE(model->isLoading());
}

TEST_F(PreviewTest, TickAfterTheStopDoesNothing) {
  startLoop();
  model->stopPreview();
  Recorder recorder(*model, machine.journal);
  recorder.restart();
  tick();
  EXPECT_THAT(recorder.events(), IsEmpty());
}

TEST_F(PreviewTest, TickAfterTheModelsEndDoesNothing) {
  startLoop();
  const std::weak_ptr<AudioEditorModel> weak = model;
  model.reset();
  EXPECT_TRUE(weak.expired());
  machine.journal.entries.clear();
  tick();
  EXPECT_THAT(machine.journal.entries, IsEmpty());
}

}  // namespace
}  // namespace quibel::test
