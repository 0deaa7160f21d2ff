#include <cerrno>
#include <csignal>
#include <cstring>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/export/Hardships.h"
#include "tests/export/Workshop.h"
#include "tests/support/WithoutRights.h"

namespace quibel::test {
namespace {

class Destination : public RingtoneTest {
 protected:
  /// The alert of an export that could be made but not be saved.
  static std::string notSaved(const std::string& reason) {
    return "No se ha podido guardar el tono. " + reason;
  }
};

TEST_F(Destination, InAFolderWithoutPermission) {
  const auto folder = workshop.file("cerrada");
  std::filesystem::create_directory(folder);
  std::filesystem::permissions(folder, std::filesystem::perms::owner_read);
  {
    const WithoutRights somebody;
    workshop.exportTo(folder / "tono.m4r");
  }
  EXPECT_EQ(workshop.alert(), notSaved("No hay permiso para acceder al archivo o a su carpeta."));
  std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
  EXPECT_TRUE(std::filesystem::is_empty(folder));
  std::filesystem::remove(folder);
  expectNothingHappened();
}

TEST_F(Destination, OnAReadOnlyDisk) {
  const SmallDisk disk(workshop.folder() / "disk");
  if (!disk.isThere()) GTEST_SKIP() << "no disk can be mounted: " << std::strerror(errno);
  ASSERT_TRUE(disk.makeReadOnly());
  workshop.exportTo(disk.path() / "tono.m4r");
  EXPECT_EQ(workshop.alert(), notSaved("El disco es de solo lectura."));
  EXPECT_TRUE(std::filesystem::is_empty(disk.path()));
  expectNothingHappened();
}

TEST_F(Destination, OnAFullDisk) {
  const SmallDisk disk(workshop.folder() / "disk");
  if (!disk.isThere()) GTEST_SKIP() << "no disk can be mounted: " << std::strerror(errno);
  workshop.exportTo(disk.path() / "tono.m4r");
  EXPECT_EQ(workshop.alert(), notSaved("No queda espacio en el disco."));
  EXPECT_TRUE(std::filesystem::is_empty(disk.path()));
  expectNothingHappened();
}

TEST_F(Destination, OnAnotherDisk) {
  const SmallDisk disk(workshop.folder() / "disk");
  if (!disk.isThere()) GTEST_SKIP() << "no disk can be mounted: " << std::strerror(errno);
  workshop.model->endBinding().set(1);
  whole = ringtoneOf(workshop);
  workshop.exportTo(disk.path() / "tono.m4r");
  expectSaved(disk.path() / "tono.m4r");
}

TEST_F(Destination, InAFolderThatVanishesMeanwhile) {
  const auto folder = workshop.file("fugaz");
  std::filesystem::create_directory(folder);
  workshop.beginExport(folder / "tono.m4r");
  std::filesystem::remove(folder);
  workshop.endExport();
  EXPECT_EQ(workshop.alert(), notSaved("El archivo o su carpeta no existe."));
  expectNothingHappened();
}

TEST_F(Destination, OverTheSizeLimit) {
  ASSERT_NE(std::signal(SIGXFSZ, SIG_IGN), SIG_ERR);
  workshop.beginExport(tone);
  workshop.machine.posted.awaitOne();
  {
    const SizeLimit limit(whole.size() - 1);
    workshop.endExport();
  }
  EXPECT_EQ(workshop.alert(), notSaved("El archivo supera el tamaño máximo permitido."));
  expectNothingHappened();
}

TEST_F(Destination, ThatIsTheSongItselfIsReplacedByTheWholeRingtone) {
  workshop.exportTo(song);
  expectSaved(song);
}

TEST_F(Destination, ThatIsALinkIsReplacedAndWhatItNamesIsKept) {
  std::filesystem::create_symlink(song, tone);
  workshop.exportTo(tone);
  expectSaved(tone);
  EXPECT_TRUE(readBytes(song) == songBytes);
}

TEST_F(Destination, ThatIsALinkToNothingIsReplaced) {
  std::filesystem::create_symlink("nada", tone);
  workshop.exportTo(tone);
  expectSaved(tone);
  EXPECT_FALSE(std::filesystem::exists(workshop.file("nada")));
}

TEST_F(Destination, ThatIsAFolderKeepsAllItHolds) {
  std::filesystem::create_directory(tone);
  writeBytes(tone / "otra", {1, 2, 3});
  workshop.exportTo(tone);
  EXPECT_EQ(workshop.alert(), notSaved("Hay una carpeta con ese nombre."));
  EXPECT_EQ(readBytes(tone / "otra"), (std::vector<std::uint8_t>{1, 2, 3}));
  std::filesystem::remove_all(tone);
  expectNothingHappened();
}

TEST_F(Destination, ThatIsAPipeIsReplacedWithoutWaitingForAReader) {
  ASSERT_EQ(::mkfifo(tone.c_str(), 0600), 0);
  workshop.exportTo(tone);
  expectSaved(tone);
}

TEST_F(Destination, ThatExistsIsReplacedByTheWholeRingtone) {
  writeBytes(tone, std::vector<std::uint8_t>(1'000'000, 'x'));
  workshop.exportTo(tone);
  expectSaved(tone);
}

TEST_F(Destination, ThatExistsIsKeptWhereTheRingtoneCannotBeMade) {
  writeBytes(tone, {1, 2, 3});
  std::filesystem::remove(song);
  workshop.exportTo(tone);
  EXPECT_EQ(workshop.alert(),
            "No se ha podido crear el tono. El archivo no existe o se ha movido.");
  EXPECT_EQ(readBytes(tone), (std::vector<std::uint8_t>{1, 2, 3}));
}

TEST_F(Destination, MayHaveAnyName) {
  for (const std::string& name :
       {std::string("Canción del ñandú.m4r"), std::string("dos  blancos.m4r"),
        std::string(" al principio y al final "), std::string(".oculto.m4r"), std::string("...m4r"),
        std::string("cami\xF3n.m4r"), std::string("uno\ndos.m4r"),
        std::string(251, 'a') + ".m4r"}) {
    workshop.exportTo(workshop.file(name));
    expectSaved(workshop.file(name));
  }
}

TEST_F(Destination, OfANameThatIsTooLong) {
  workshop.exportTo(workshop.file(std::string(252, 'a') + ".m4r"));
  EXPECT_EQ(workshop.alert(), notSaved("El nombre del archivo es demasiado largo."));
  expectNothingHappened();
}

TEST_F(Destination, GetsThePermissionsThatTheUmaskLeaves) {
  for (const mode_t mask : {mode_t{0}, mode_t{022}, mode_t{027}, mode_t{077}}) {
    const mode_t before = ::umask(mask);
    workshop.exportTo(tone);
    ::umask(before);
    struct stat status{};
    ASSERT_EQ(::stat(tone.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0666U & ~mask);
  }
}

}  // namespace
}  // namespace quibel::test
