#include <cstdint>
#include <limits>
#include <new>

#include "model/ExportRules.h"
#include "tests/model/Fixture.h"

namespace quibel::test {
namespace {

using platform::ExportStatus;
using platform::Time;
using platform::TimeRange;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto destination = "/home/ana/Mi canción.m4r";
constexpr auto temporary = "/tmp/UUID-1.m4a";
constexpr auto beside = "/home/ana/Tono nuevo UUID-2.m4r";

class ExportTest : public ModelTest {
 protected:
  /// Exports 10 … 30 s of a song to the destination; its session is running.
  void startExport() {
    loadSong(60);
    model->startBinding().set(10);
    model->endBinding().set(30);
    machine.savePanelAnswer = url(destination);
    model->export_();
  }

  void finish(ExportStatus status, std::optional<platform::Error> error = {}) {
    machine.files.existing.insert(temporary);
    machine.sessions.back()->finish(status, std::move(error));
    machine.main.runAll();
  }

  bool temporaryFileIsGone() const { return !machine.files.existing.contains(temporary); }
};

TEST(ProposedFileNameTest, ReplacesOnlyTheLastExtension) {
  using platform::FileURL;
  EXPECT_EQ(proposedFileName(FileURL("/x/Mi canción.mp3")), "Mi canción.m4r");
  EXPECT_EQ(proposedFileName(FileURL("/x/tono")), "tono.m4r");
  EXPECT_EQ(proposedFileName(FileURL("/x/a.b.wav")), "a.b.m4r");
  EXPECT_EQ(proposedFileName(FileURL("/x.d/tono")), "tono.m4r");
  EXPECT_EQ(proposedFileName(FileURL("/x/.wav")), ".wav.m4r");
}

TEST(ExportTimeRangeTest, IsInUnitsOf600thsOfASecond) {
  EXPECT_EQ(exportTimeRange(12.5, 52.5, 40), (TimeRange{Time{7500, 600}, Time{24000, 600}}));
}

TEST(ExportTimeRangeTest, LastsAtMostTheMaximum) {
  EXPECT_EQ(exportTimeRange(10, 70, 40), (TimeRange{Time{6000, 600}, Time{24000, 600}}));
}

TEST(ExportTimeRangeTest, IsTruncatedTowardZero) {
  EXPECT_EQ(exportTimeRange(1.9999, 2.9999, 40).start, (Time{1199, 600}));
  EXPECT_EQ(exportTimeRange(-0.0049, 0.5, 40).start, (Time{-2, 600}));
}

TEST(MakeTimeTest, TimesThatAreNoUnitsGiveTheNearestThereIs) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(platform::makeTime(std::numeric_limits<double>::quiet_NaN(), 600), (Time{0, 600}));
  EXPECT_EQ(platform::makeTime(infinity, 600).value, std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(platform::makeTime(-infinity, 600).value, std::numeric_limits<std::int64_t>::min());
}

TEST_F(ExportTest, WithoutASongNothingHappens) {
  Recorder recorder(*model, machine.journal);
  model->export_();
  EXPECT_THAT(recorder.events(), IsEmpty());
}

TEST_F(ExportTest, RunningPreviewIsStoppedEvenWhenThePanelIsCancelled) {
  startLoop();
  player().currentTime = 20;
  tick();
  model->export_();
  EXPECT_FALSE(model->isPlaying());
  EXPECT_EQ(model->playhead(), 10);
  EXPECT_FALSE(player().isAlive);
}

TEST_F(ExportTest, PreviewIsStoppedBeforeThePanelOpens) {
  startLoop();
  machine.journal.entries.clear();
  model->export_();
  EXPECT_THAT(machine.journal.entries,
              ElementsAre("timer.invalidate", "player.stop", "player released", "save panel"));
}

TEST_F(ExportTest, SavePanelHasTitleProposedNameAndOneType) {
  loadSong(60, "/x/Mi canción.mp3");
  model->export_();
  EXPECT_EQ(machine.savePanel,
            (platform::SavePanel{.title = "Guardar tono para iPhone",
                                 .nameFieldStringValue = "Mi canción.m4r",
                                 .allowedContentTypes = {platform::ContentType{"m4r"}}}));
}

TEST_F(ExportTest, SavePanelFallsBackToAudioWhereTheExtensionHasNoType) {
  machine.knowsM4R = false;
  loadSong(60);
  model->export_();
  EXPECT_THAT(machine.savePanel->allowedContentTypes, ElementsAre(platform::ContentType::audio()));
}

TEST_F(ExportTest, CancelledPanelChangesNothingElse) {
  loadSong(60);
  Recorder recorder(*model, machine.journal);
  recorder.restart();
  model->export_();
  EXPECT_THAT(recorder.events(), ElementsAre("unchanged", "unchanged", "save panel"));
}

TEST_F(ExportTest, ConfirmedDestinationMakesItBusyWithAnEmptyStatusBeforeAnyResult) {
  startExport();
  EXPECT_TRUE(model->isExporting());
  EXPECT_EQ(model->status(), "");
}

TEST_F(ExportTest, SessionIsSetUpInItsOrderAndStarted) {
  loadSong(60);
  machine.savePanelAnswer = url(destination);
  Recorder recorder(*model, machine.journal);
  recorder.restart();

  model->export_();

  EXPECT_THAT(recorder.events(),
              ElementsAre("unchanged", "unchanged", "save panel", "isExporting = true",
                          "status = ", "make session /x/song.mp3",
                          std::string("session.outputURL = ") + temporary,
                          "session.outputFileType = appleM4A", "session.timeRange",
                          "session.exportAsynchronously"));
}

TEST_F(ExportTest, FragmentAbove40SecondsIsExportedFor40) {
  loadSong(120);
  model->startBinding().set(10);
  model->endBinding().set(70);
  machine.savePanelAnswer = url(destination);
  model->export_();
  EXPECT_EQ(machine.sessions.back()->timeRange, (TimeRange{Time{6000, 600}, Time{24000, 600}}));
}

TEST_F(ExportTest, FragmentIsReadOnceTheDestinationIsConfirmed) {
  machine.whileSavePanelIsOpen = [this] {
    model->startBinding().set(12.5);
    model->endBinding().set(22);
  };
  startExport();
  EXPECT_EQ(machine.sessions.back()->timeRange, (TimeRange{Time{7500, 600}, Time{5700, 600}}));
}

TEST_F(ExportTest, SongIsReadOnceTheDestinationIsConfirmed) {
  machine.songs["/x/other.mp3"] = fake::Song::lasting(30);
  machine.whileSavePanelIsOpen = [this] { model->load(url("/x/other.mp3")); };
  startExport();
  EXPECT_EQ(machine.savePanel->nameFieldStringValue, "song.m4r");
  EXPECT_THAT(machine.journal.entries, testing::Contains("make session /x/other.mp3"));
}

TEST_F(ExportTest, EachExportHasATemporaryFileOfItsOwn) {
  startExport();
  finish(ExportStatus::completed);
  model->export_();
  EXPECT_EQ(machine.sessions.back()->outputURL, url("/tmp/UUID-2.m4a"));
}

TEST_F(ExportTest, SongThatCannotBeConvertedIsReportedByTheFixedTextAlone) {
  loadSong(60);
  machine.songs["/x/song.mp3"].convertible = false;
  machine.savePanelAnswer = url(destination);
  model->export_();
  EXPECT_TRUE(model->showAlert());
  EXPECT_EQ(model->alertText(), "Este formato no se puede convertir a AAC.");
  EXPECT_FALSE(model->isExporting());
  EXPECT_EQ(model->status(), "");
  machine.settle();
  EXPECT_THAT(machine.sessions, IsEmpty());
}

TEST_F(ExportTest, AnExceptionOfThePlatformEndsItWithAReason) {
  loadSong(60);
  machine.savePanelAnswer = url(destination);
  machine.whileOpening = [] { throw std::bad_alloc(); };
  model->export_();
  EXPECT_EQ(model->alertText(), "No se ha podido crear el tono. No hay memoria suficiente.");
  EXPECT_FALSE(model->isExporting());
}

TEST_F(ExportTest, HandlerOnlyPostsToTheMainQueue) {
  startExport();
  machine.sessions.back()->finish(ExportStatus::completed);
  EXPECT_TRUE(model->isExporting());
  EXPECT_EQ(machine.main.size(), 1);
  machine.main.runAll();
  EXPECT_FALSE(model->isExporting());
}

TEST_F(ExportTest, SuccessCopiesNamesRevealsThenCleansUp) {
  startExport();
  Recorder recorder(*model, machine.journal);
  recorder.restart();

  finish(ExportStatus::completed);

  EXPECT_THAT(
      recorder.events(),
      ElementsAre(std::string("copy ") + temporary + " to " + destination,
                  "status = Tono guardado: Mi canción.m4r", std::string("reveal ") + destination,
                  "isExporting = false", std::string("remove ") + temporary));
  EXPECT_FALSE(model->showAlert());
}

TEST_F(ExportTest, ExistingDestinationIsRemovedOnceTheNewFileIsWholeBesideIt) {
  startExport();
  machine.files.existing.insert(destination);
  machine.journal.entries.clear();

  finish(ExportStatus::completed);

  EXPECT_THAT(
      machine.journal.entries,
      ElementsAre(std::string("copy ") + temporary + " to " + beside,
                  std::string("remove ") + destination,
                  std::string("move ") + beside + " to " + destination,
                  std::string("reveal ") + destination, std::string("remove ") + temporary));
  EXPECT_TRUE(machine.files.existing.contains(destination));
}

TEST_F(ExportTest, SuccessStatusHasTheFileNameWithoutItsFolder) {
  startExport();
  finish(ExportStatus::completed);
  EXPECT_EQ(model->status(), "Tono guardado: Mi canción.m4r");
}

TEST_F(ExportTest, FailureToRemoveTheOldFileIsReportedAndTheNewOneIsGivenUp) {
  startExport();
  machine.files.existing.insert(destination);
  machine.files.removeError = platform::Error("No tienes permiso.");
  machine.journal.entries.clear();

  finish(ExportStatus::completed);

  EXPECT_EQ(model->alertText(), "No se ha podido guardar el tono. No tienes permiso.");
  EXPECT_EQ(model->status(), "");
  EXPECT_FALSE(model->isExporting());
  EXPECT_THAT(machine.journal.entries,
              ElementsAre(std::string("copy ") + temporary + " to " + beside,
                          std::string("remove ") + destination, std::string("remove ") + beside,
                          std::string("remove ") + temporary));
}

TEST_F(ExportTest, FailureToMoveSaysWhereTheNewFileIs) {
  startExport();
  machine.files.existing.insert(destination);
  machine.files.moveError = platform::Error("El disco ha fallado.");

  finish(ExportStatus::completed);

  EXPECT_EQ(model->alertText(),
            "No se ha podido guardar el tono. El disco ha fallado. El tono nuevo está en la misma "
            "carpeta con el nombre «Tono nuevo UUID-2.m4r».");
  EXPECT_TRUE(machine.files.existing.contains(beside));
  EXPECT_EQ(model->status(), "");
}

TEST_F(ExportTest, FailureToCopyIsReportedWithoutReveal) {
  startExport();
  machine.files.existing.insert(destination);
  machine.files.copyError = platform::Error("El disco está lleno.");

  finish(ExportStatus::completed);

  EXPECT_EQ(model->alertText(), "No se ha podido guardar el tono. El disco está lleno.");
  EXPECT_EQ(model->status(), "");
  EXPECT_TRUE(machine.files.existing.contains(destination)) << "the old one";
  EXPECT_TRUE(temporaryFileIsGone());
  EXPECT_THAT(machine.journal.entries,
              testing::Not(testing::Contains(testing::StartsWith("reveal"))));
}

TEST_F(ExportTest, FailuresAreReportedThenTheTemporaryFileIsRemoved) {
  startExport();
  Recorder recorder(*model, machine.journal);
  recorder.restart();
  finish(ExportStatus::failed);
  EXPECT_THAT(recorder.events(),
              ElementsAre("unchanged", "isExporting = false",
                          "alertText = No se ha podido crear el tono. Error desconocido",
                          "showAlert = true", "unchanged", std::string("remove ") + temporary));
}

TEST_F(ExportTest, FailureIsReportedWithTheSessionsErrorText) {
  startExport();
  finish(ExportStatus::failed, platform::Error("El disco está lleno."));
  EXPECT_TRUE(model->showAlert());
  EXPECT_EQ(model->alertText(), "No se ha podido crear el tono. El disco está lleno.");
  EXPECT_EQ(model->status(), "");
}

TEST_F(ExportTest, FailureWithoutAnErrorIsReportedAsUnknown) {
  startExport();
  finish(ExportStatus::failed);
  EXPECT_EQ(model->alertText(), "No se ha podido crear el tono. Error desconocido");
}

TEST_F(ExportTest, CancelledSessionIsReportedLikeAFailure) {
  startExport();
  finish(ExportStatus::cancelled, platform::Error("Se ha cancelado."));
  EXPECT_EQ(model->alertText(), "No se ha podido crear el tono. Se ha cancelado.");
}

TEST_F(ExportTest, CancelledSessionWithoutAnErrorIsReportedAsUnknown) {
  startExport();
  finish(ExportStatus::cancelled);
  EXPECT_EQ(model->alertText(), "No se ha podido crear el tono. Error desconocido");
}

class ExportEndTest : public ExportTest, public testing::WithParamInterface<ExportStatus> {};

TEST_P(ExportEndTest, LeavesNoTemporaryFileAndIsNotExporting) {
  startExport();
  finish(GetParam());
  EXPECT_TRUE(temporaryFileIsGone());
  EXPECT_FALSE(model->isExporting());
}

INSTANTIATE_TEST_SUITE_P(EveryEnd, ExportEndTest,
                         testing::Values(ExportStatus::completed, ExportStatus::failed,
                                         ExportStatus::cancelled, ExportStatus::unknown));

TEST_F(ExportTest, ModelDestroyedDuringTheExportReportsNothingAndLeavesTheTemporaryFile) {
  startExport();
  const std::weak_ptr<AudioEditorModel> weak = model;
  model.reset();
  EXPECT_TRUE(weak.expired());
  machine.journal.entries.clear();

  finish(ExportStatus::completed);

  EXPECT_FALSE(temporaryFileIsGone());
  EXPECT_THAT(machine.journal.entries, IsEmpty());
}

TEST_F(ExportTest, ModelDestroyedBeforeTheCompletionReportsNothingAndLeavesTheTemporaryFile) {
  startExport();
  machine.files.existing.insert(temporary);
  machine.sessions.back()->finish(ExportStatus::completed);
  ASSERT_EQ(machine.main.size(), 1);
  const std::weak_ptr<AudioEditorModel> weak = model;
  model.reset();
  EXPECT_TRUE(weak.expired());
  machine.journal.entries.clear();

  machine.main.runAll();

  EXPECT_FALSE(temporaryFileIsGone());
  EXPECT_THAT(machine.journal.entries, IsEmpty());
}

TEST_F(ExportTest, SessionLivesUntilItsResultHasBeenReadAndNoLonger) {
  startExport();
  const std::weak_ptr<fake::ExportSession> session = machine.sessions.back();
  machine.sessions.back()->finish(ExportStatus::completed);
  machine.sessions.clear();
  EXPECT_FALSE(session.expired());
  machine.main.runAll();
  EXPECT_TRUE(session.expired());
}

}  // namespace
}  // namespace quibel::test
