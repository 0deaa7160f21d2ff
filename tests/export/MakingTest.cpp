#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "tests/export/Hardships.h"
#include "tests/export/Workshop.h"
#include "tests/support/WithoutRights.h"

namespace quibel::test {
namespace {

class TemporaryFolderTest : public RingtoneTest {
 protected:
  /// The alert of an export whose ringtone could not be made.
  static std::string notMade(const std::string& reason) {
    return "No se ha podido crear el tono. " + reason;
  }
};

using TemporaryFolder = TemporaryFolderTest;

TEST_F(TemporaryFolder, ThatIsMissingGivesWayToTheSystemsOwn) {
  std::filesystem::remove(workshop.temporary());
  workshop.exportTo(tone);
  std::filesystem::create_directory(workshop.temporary());
  expectSaved(tone);
}

TEST_F(TemporaryFolder, WithoutPermission) {
  std::filesystem::permissions(workshop.temporary(), std::filesystem::perms::owner_read |
                                                         std::filesystem::perms::owner_exec);
  {
    const WithoutRights somebody;
    workshop.exportTo(tone);
  }
  EXPECT_EQ(workshop.alert(), notMade("No tienes permiso para escribir en la carpeta temporal."));
  expectNothingHappened();
}

TEST_F(TemporaryFolder, ThatIsFull) {
  const SmallDisk disk(workshop.folder() / "disk");
  if (!disk.isThere()) GTEST_SKIP() << "no disk can be mounted: " << std::strerror(errno);
  ::setenv("TMPDIR", disk.path().c_str(), 1);
  workshop.exportTo(tone);
  EXPECT_EQ(workshop.alert(), notMade("No queda espacio en el disco."));
  EXPECT_TRUE(std::filesystem::is_empty(disk.path()));
  expectNothingHappened();
}

TEST_F(TemporaryFolder, ThatIsReadOnly) {
  const SmallDisk disk(workshop.folder() / "disk");
  if (!disk.isThere()) GTEST_SKIP() << "no disk can be mounted: " << std::strerror(errno);
  ASSERT_TRUE(disk.makeReadOnly());
  ::setenv("TMPDIR", disk.path().c_str(), 1);
  workshop.exportTo(tone);
  EXPECT_EQ(workshop.alert(), notMade("No tienes permiso para escribir en la carpeta temporal."));
  expectNothingHappened();
}

TEST_F(TemporaryFolder, WhereFilesAreLimitedInSize) {
  ASSERT_NE(std::signal(SIGXFSZ, SIG_IGN), SIG_ERR);
  {
    const SizeLimit limit(whole.size() / 2);
    workshop.exportTo(tone);
  }
  EXPECT_EQ(workshop.alert(), notMade("El sistema no permite un archivo tan grande."));
  expectNothingHappened();
}

TEST_F(TemporaryFolder, WhoseFileIsCutBeforeItIsCopied) {
  workshop.beginExport(tone);
  workshop.machine.posted.awaitOne();
  for (const auto& name : Workshop::namesIn(workshop.temporary()))
    std::filesystem::remove(workshop.temporary() / name);
  workshop.endExport();
  EXPECT_EQ(workshop.alert(),
            "No se ha podido guardar el tono. El archivo o su carpeta no existe.");
  expectNothingHappened();
}

class Source : public TemporaryFolderTest {};

TEST_F(Source, ThatWasDeletedMeanwhile) {
  std::filesystem::remove(song);
  workshop.exportTo(tone);
  EXPECT_EQ(workshop.alert(), notMade("El archivo no existe o se ha movido."));
  EXPECT_TRUE(Workshop::namesIn(workshop.home()).empty());
  EXPECT_TRUE(Workshop::namesIn(workshop.temporary()).empty());
}

TEST_F(Source, ThatWasCutBeforeTheFragment) {
  workshop.model->startBinding().set(6);
  std::filesystem::resize_file(song, 100'000);
  workshop.exportTo(tone);
  EXPECT_EQ(workshop.alert(), notMade("El fragmento elegido no contiene audio."));
  songBytes = readBytes(song);
  expectNothingHappened();
}

TEST_F(Source, ThatWasReplacedByWhatIsNoSong) {
  writeBytes(song, std::vector<std::uint8_t>(5'000, 'x'));
  workshop.exportTo(tone);
  EXPECT_EQ(workshop.alert(), "Este formato no se puede convertir a AAC.");
  songBytes = readBytes(song);
  expectNothingHappened();
}

class Exporting : public RingtoneTest {};

TEST_F(Exporting, TwiceInARowGivesTheSameFileTwice) {
  workshop.exportTo(tone);
  expectSaved(tone);
  const auto second = workshop.file("otro.m4r");
  workshop.exportTo(second);
  expectSaved(second);
}

TEST_F(Exporting, GoesOnWhileTheLoopPlaysTheSong) {
  workshop.machine.songs[song.string()] = fake::Song::lasting(8);
  workshop.beginExport(tone);
  workshop.model->togglePreview();
  ASSERT_TRUE(workshop.model->isPlaying());
  workshop.machine.timers.back()->fire();
  workshop.endExport();
  EXPECT_TRUE(workshop.model->isPlaying());
  expectSaved(tone);
}

TEST_F(Exporting, KeepsToItsSongWhileAnotherOneLoads) {
  const auto other = workshop.file("otra.wav");
  writeWav(other, sine(8'000, 1, 16'000, 440));
  workshop.beginExport(tone);
  workshop.machine.posted.awaitOne();
  workshop.model->load(platform::FileURL(other));
  workshop.endExport();
  expectSaved(tone);
  workshop.machine.background.runAll();
  workshop.machine.posted.runOne();
  EXPECT_EQ(workshop.model->duration(), 2);
}

TEST_F(Exporting, ReportsNothingOnceTheModelIsGoneAndLeavesTheTemporaryFile) {
  workshop.beginExport(tone);
  workshop.model.reset();
  workshop.endExport();
  EXPECT_EQ(Workshop::namesIn(workshop.home()), std::vector<std::string>{"canción.wav"});
  EXPECT_TRUE(readBytes(song) == songBytes);
  EXPECT_EQ(Workshop::namesIn(workshop.temporary()).size(), 1U);
}

}  // namespace
}  // namespace quibel::test
