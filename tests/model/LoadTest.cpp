#include <stdexcept>

#include "tests/model/Fixture.h"

namespace quibel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr auto guidance = "Mueve los tiradores verde y naranja para escoger el fragmento.";

class LoadTest : public ModelTest {};

TEST_F(LoadTest, OpenPanelAsksForOneAudioFileUnderItsTitle) {
  model->chooseAudio();
  EXPECT_EQ(machine.openPanel,
            (platform::OpenPanel{.title = "Selecciona una canción",
                                 .allowedContentTypes = {platform::ContentType::audio()},
                                 .allowsMultipleSelection = false}));
}

TEST_F(LoadTest, ChosenFileIsLoaded) {
  machine.openPanelAnswer = url("/x/song.mp3");
  machine.songs["/x/song.mp3"] = fake::Song::lasting(25);
  model->chooseAudio();
  EXPECT_TRUE(model->isLoading());
  machine.settle();
  EXPECT_EQ(model->duration(), 25);
}

TEST_F(LoadTest, CancelledPanelChangesNothing) {
  Recorder recorder(*model, machine.journal);
  model->chooseAudio();
  EXPECT_THAT(recorder.events(), ElementsAre("open panel"));
}

TEST_F(LoadTest, LoadSetsTheStateInItsOrderAndReturns) {
  machine.grantsAccess = true;
  loadSong(60, "/x/old.mp3");
  Recorder recorder(*model, machine.journal);
  recorder.restart();

  model->load(url("/x/new.mp3"));

  EXPECT_THAT(recorder.events(),
              ElementsAre("unchanged",  // not playing
                          "unchanged",  // the playhead at the start
                          "stop access /x/old.mp3", "start access /x/new.mp3",
                          "audioURL = /x/new.mp3", "samples = 0", "isLoading = true", "status = "));
  EXPECT_EQ(machine.background.size(), 1);
  EXPECT_EQ(machine.main.size(), 0);
}

TEST_F(LoadTest, LoadingWhileAPreviewPlaysStopsItBeforeAnythingElseChanges) {
  startLoop();
  player().currentTime = 12;
  tick();
  Recorder recorder(*model, machine.journal);
  recorder.restart();

  model->load(url("/x/new.mp3"));

  auto events = recorder.events();
  events.resize(6);
  EXPECT_THAT(events, ElementsAre("timer.invalidate", "player.stop", "player released",
                                  "isPlaying = false", "playhead = 10", "start access /x/new.mp3"));
}

TEST_F(LoadTest, SuccessPublishesTheSongInItsOrder) {
  loadSong(60);
  model->startBinding().set(5);
  model->stopPreview();  // takes the playhead to 5
  machine.songs["/x/new.mp3"] = fake::Song::lasting(90);
  model->load(url("/x/new.mp3"));
  machine.background.runAll();
  Recorder recorder(*model, machine.journal);
  recorder.restart();

  machine.main.runAll();

  EXPECT_THAT(recorder.events(),
              ElementsAre("duration = 90", "start = 0", "unchanged",  // the end at 40
                          "playhead = 0", "samples = 36", "isLoading = false",
                          std::string("status = ") + guidance));
}

TEST_F(LoadTest, SongOf25SecondsIsSelectedWholeWithTheGuidance) {
  loadSong(25);
  EXPECT_EQ(model->start(), 0);
  EXPECT_EQ(model->end(), 25);
  EXPECT_EQ(model->playhead(), 0);
  EXPECT_EQ(model->status(), guidance);
  EXPECT_FALSE(model->isLoading());
}

TEST_F(LoadTest, SongOf3MinutesEndsTheSelectionAt40) {
  loadSong(180);
  EXPECT_EQ(model->end(), 40);
}

TEST_F(LoadTest, EnvelopeIsAskedForIn900Buckets) {
  loadSong(8100);  // 810,000 frames, a whole number of 900 for each bucket
  EXPECT_THAT(model->samples(), SizeIs(900));
}

TEST_F(LoadTest, DecodingIsDoneInTheBackgroundAndPublishedOnTheMainQueue) {
  machine.songs["/x/song.mp3"] = fake::Song::lasting(25);
  model->load(url("/x/song.mp3"));
  EXPECT_EQ(machine.main.size(), 0);
  machine.background.runAll();
  EXPECT_EQ(model->duration(), 0);
  EXPECT_EQ(machine.main.size(), 1);
  machine.main.runAll();
  EXPECT_EQ(model->duration(), 25);
}

TEST_F(LoadTest, EmptyAudioFileIsReportedAsInvalid) {
  machine.songs["/x/empty.wav"] = {.channels = {{}}};
  model->load(url("/x/empty.wav"));
  machine.settle();
  EXPECT_TRUE(model->showAlert());
  EXPECT_EQ(model->alertText(),
            "No se ha podido abrir el audio. El archivo no contiene audio válido.");
  EXPECT_FALSE(model->isLoading());
  EXPECT_THAT(model->samples(), IsEmpty());
  EXPECT_EQ(model->audioURL(), url("/x/empty.wav"));
}

TEST_F(LoadTest, FileThatIsNoAudioIsReportedWithThePlatformsDescription) {
  machine.songs["/x/text.mp3"] = {.openError = platform::Error("No es un archivo de audio.")};
  model->load(url("/x/text.mp3"));
  machine.settle();
  EXPECT_TRUE(model->showAlert());
  EXPECT_EQ(model->alertText(), "No se ha podido abrir el audio. No es un archivo de audio.");
}

TEST_F(LoadTest, ReadErrorIsReportedWithThePlatformsDescription) {
  machine.songs["/x/song.mp3"] = fake::Song::lasting(25);
  machine.songs["/x/song.mp3"].readError = platform::Error("El disco falla.");
  model->load(url("/x/song.mp3"));
  machine.settle();
  EXPECT_EQ(model->alertText(), "No se ha podido abrir el audio. El disco falla.");
}

TEST_F(LoadTest, NoBufferIsReportedAsInvalidAudio) {
  machine.songs["/x/song.mp3"] = fake::Song::lasting(25);
  machine.songs["/x/song.mp3"].makesBuffers = false;
  model->load(url("/x/song.mp3"));
  machine.settle();
  EXPECT_EQ(model->alertText(),
            "No se ha podido abrir el audio. El archivo no contiene audio válido.");
}

TEST_F(LoadTest, FailedLoadKeepsTheNewSongAndThePreviousSelection) {
  loadSong(60, "/x/old.mp3");
  model->startBinding().set(7);
  model->load(url("/x/missing.mp3"));
  machine.settle();
  EXPECT_EQ(model->audioURL(), url("/x/missing.mp3"));
  EXPECT_THAT(model->samples(), IsEmpty());
  EXPECT_EQ(model->duration(), 60);
  EXPECT_EQ(model->start(), 7);
  EXPECT_EQ(model->end(), 40);
  EXPECT_EQ(model->status(), "");
}

TEST_F(LoadTest, SameFileTwiceGivesUpItsAccessAndAsksAgain) {
  machine.grantsAccess = true;
  loadSong(25);
  machine.journal.entries.clear();
  model->load(*model->audioURL());
  EXPECT_THAT(machine.journal.entries,
              ElementsAre("stop access /x/song.mp3", "start access /x/song.mp3"));
}

TEST_F(LoadTest, AccessGivenUpForASongThatIsRefusedItIsNotGivenUpAgain) {
  machine.grantsAccess = true;
  loadSong(25);
  machine.grantsAccess = false;
  loadSong(30, "/x/next.mp3");
  machine.journal.entries.clear();
  model.reset();
  EXPECT_THAT(machine.journal.entries, IsEmpty());
}

TEST_F(LoadTest, RefusedAccessIsNoErrorAndIsNeverGivenUp) {
  loadSong(25);
  EXPECT_FALSE(model->showAlert());
  loadSong(30, "/x/next.mp3");
  model.reset();
  EXPECT_THAT(machine.journal.entries,
              ElementsAre("start access /x/song.mp3", "start access /x/next.mp3"));
}

TEST_F(LoadTest, OfTwoLoadsTheLaterCompletionOverwritesTheEarlierOnes) {
  machine.songs["/x/first.mp3"] = fake::Song::lasting(10);
  machine.songs["/x/second.mp3"] = fake::Song::lasting(20);
  model->load(url("/x/first.mp3"));
  model->load(url("/x/second.mp3"));

  machine.background.run(1);  // the second song is ready first
  machine.main.runAll();
  EXPECT_EQ(model->duration(), 20);
  EXPECT_FALSE(model->isLoading());

  machine.settle();
  EXPECT_EQ(model->duration(), 10);
  EXPECT_EQ(model->end(), 10);
  EXPECT_EQ(model->audioURL(), url("/x/second.mp3"));
}

TEST_F(LoadTest, ModelDestroyedDuringALoadIsLeftInPeace) {
  machine.songs["/x/song.mp3"] = fake::Song::lasting(25);
  model->load(url("/x/song.mp3"));
  const std::weak_ptr<AudioEditorModel> weak = model;
  model.reset();
  EXPECT_TRUE(weak.expired());
  machine.settle();
}

TEST_F(LoadTest, AnExceptionOfThePlatformIsReported) {
  machine.songs["/x/song.mp3"] = fake::Song::lasting(1);
  machine.whileOpening = [] { throw std::runtime_error("no"); };
  model->load(url("/x/song.mp3"));
  machine.settle();
  EXPECT_EQ(model->alertText(), "No se ha podido abrir el audio. Ha ocurrido un error inesperado.");
  EXPECT_FALSE(model->isLoading());
}

TEST_F(LoadTest, ModelDestroyedBeforeTheCompletionIsLeftInPeace) {
  machine.songs["/x/song.mp3"] = fake::Song::lasting(25);
  for (const auto* path : {"/x/song.mp3", "/x/missing.mp3"}) {
    model = std::make_shared<AudioEditorModel>(machine);
    model->load(url(path));
    machine.background.runAll();
    ASSERT_EQ(machine.main.size(), 1) << path;
    const std::weak_ptr<AudioEditorModel> weak = model;
    model.reset();
    EXPECT_TRUE(weak.expired()) << path;
    machine.main.runAll();
  }
}

}  // namespace
}  // namespace quibel::test
