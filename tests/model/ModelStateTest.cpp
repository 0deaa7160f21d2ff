#include "tests/model/Fixture.h"

namespace quibel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ModelStateTest : public ModelTest {};

TEST_F(ModelStateTest, FreshModelHasEmptyTextsAndIsNotBusy) {
  EXPECT_EQ(model->status(), "");
  EXPECT_EQ(model->alertText(), "");
  EXPECT_FALSE(model->isBusy());
  EXPECT_EQ(AudioEditorModel::maximumDuration, 40.0);
}

TEST_F(ModelStateTest, FreshModelHasNoSongAndAllElseAtZero) {
  EXPECT_FALSE(model->audioURL());
  EXPECT_THAT(model->samples(), IsEmpty());
  EXPECT_EQ(model->duration(), 0);
  EXPECT_EQ(model->start(), 0);
  EXPECT_EQ(model->end(), 0);
  EXPECT_EQ(model->playhead(), 0);
  EXPECT_FALSE(model->isPlaying());
  EXPECT_FALSE(model->isLoading());
  EXPECT_FALSE(model->isExporting());
  EXPECT_FALSE(model->showAlert());
}

TEST_F(ModelStateTest, MakingAModelTouchesNothingOfTheMachine) {
  EXPECT_THAT(machine.journal.entries, IsEmpty());
  EXPECT_EQ(machine.main.size() + machine.background.size(), 0);
}

TEST_F(ModelStateTest, NewSongOf25SecondsIsSelectedWhole) {
  loadSong(25);
  EXPECT_EQ(model->start(), 0);
  EXPECT_EQ(model->end(), 25);
}

TEST_F(ModelStateTest, NewSongOf3MinutesIsSelectedUpTo40Seconds) {
  loadSong(180);
  EXPECT_EQ(model->start(), 0);
  EXPECT_EQ(model->end(), 40);
}

TEST_F(ModelStateTest, NewSongOfExactly40SecondsIsSelectedWhole) {
  loadSong(40);
  EXPECT_EQ(model->duration(), 40);
  EXPECT_EQ(model->end(), 40);
}

TEST_F(ModelStateTest, StartAndEndAreStoredExactlyAsWritten) {
  loadSong(180);
  model->startBinding().set(10);
  model->endBinding().set(70);
  EXPECT_EQ(model->start(), 10);
  EXPECT_EQ(model->end(), 70);
}

TEST_F(ModelStateTest, SelectionIsNeitherClampedNorOrdered) {
  model->startBinding().set(500);
  model->endBinding().set(-2);
  EXPECT_EQ(model->start(), 500);
  EXPECT_EQ(model->end(), -2);
}

TEST_F(ModelStateTest, IsBusyWhileLoadingOrExportingAndOnlyThen) {
  loadSong(60);
  EXPECT_FALSE(model->isBusy());

  machine.savePanelAnswer = url("/x/tone.m4r");
  model->export_();
  EXPECT_TRUE(model->isExporting());
  EXPECT_FALSE(model->isLoading());
  EXPECT_TRUE(model->isBusy());

  model->load(url("/x/song.mp3"));
  EXPECT_TRUE(model->isExporting() && model->isLoading() && model->isBusy());

  machine.sessions.back()->finish(platform::ExportStatus::completed);
  machine.main.runAll();
  EXPECT_FALSE(model->isExporting());
  EXPECT_TRUE(model->isLoading());
  EXPECT_TRUE(model->isBusy());

  machine.settle();
  EXPECT_FALSE(model->isBusy());
}

TEST_F(ModelStateTest, FailureWhileLoadingAndExportingEndsBothAndRaisesTheAlert) {
  loadSong(60);
  machine.savePanelAnswer = url("/x/tone.m4r");
  model->export_();
  machine.songs["/x/bad.mp3"] = {.openError = platform::Error("Está dañado.")};
  model->load(url("/x/bad.mp3"));
  machine.background.runAll();
  Recorder recorder(*model, machine.journal);
  recorder.restart();

  machine.main.runAll();

  EXPECT_THAT(
      recorder.events(),
      ElementsAre("isLoading = false", "isExporting = false",
                  "alertText = No se ha podido abrir el audio. Está dañado.", "showAlert = true"));
  EXPECT_EQ(model->status(), "");
}

TEST_F(ModelStateTest, FailureLeavesStatusSongAndSelectionAlone) {
  loadSong(60);
  model->startBinding().set(10);
  const auto status = model->status();
  const auto samples = model->samples();
  machine.songs["/x/song.mp3"].playError = platform::Error("No hay sonido.");

  model->togglePreview();

  EXPECT_TRUE(model->showAlert());
  EXPECT_EQ(model->status(), status);
  EXPECT_EQ(model->samples(), samples);
  EXPECT_EQ(model->start(), 10);
  EXPECT_EQ(model->audioURL(), url("/x/song.mp3"));
}

TEST_F(ModelStateTest, DismissingTheAlertThroughItsBindingKeepsTheText) {
  model->load(url("/x/missing.mp3"));
  machine.settle();
  ASSERT_TRUE(model->showAlert());
  const auto text = model->alertText();

  model->showAlertBinding().set(false);

  EXPECT_FALSE(model->showAlert());
  EXPECT_EQ(model->alertText(), text);
}

TEST_F(ModelStateTest, InvalidAudioHasItsDescription) {
  EXPECT_EQ(localizedDescription(AudioError::invalid), "El archivo no contiene audio válido.");
}

TEST_F(ModelStateTest, DestructionEndsTimerThenAccessThenReleasesThePlayerUnstopped) {
  machine.grantsAccess = true;
  startLoop();
  machine.journal.entries.clear();

  model.reset();

  EXPECT_THAT(machine.journal.entries,
              ElementsAre("timer.invalidate", "stop access /x/song.mp3", "player released"));
}

TEST_F(ModelStateTest, DestructionOfAnIdleModelTouchesNothing) {
  model.reset();
  EXPECT_THAT(machine.journal.entries, IsEmpty());
}

}  // namespace
}  // namespace quibel::test
