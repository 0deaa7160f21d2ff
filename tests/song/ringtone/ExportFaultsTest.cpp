#include <csignal>

#include <sys/resource.h>

#include "tests/song/ringtone/ExportFixture.h"

namespace quibel::test {
namespace {

TEST_F(Export, RangeWithoutAnyFrameFails) {
  const auto path = wav(song(44'100, 2, 44'100));
  for (const double start : {-3.0, 1.0, 5.0}) {
    const auto session = exportSong(path, file("tone.m4a"), start, 1);
    EXPECT_EQ(session->status(), ExportStatus::failed);
    EXPECT_EQ(session->error()->localizedDescription(), "El fragmento elegido no contiene audio.");
    EXPECT_FALSE(std::filesystem::exists(file("tone.m4a")));
  }
}

TEST_F(Export, SongOfNoKnownKindGivesNoSession) {
  writeBytes(file("text.mp3"), std::vector<std::uint8_t>(5000, 'x'));
  EXPECT_EQ(song::makeExportSession(FileURL(file("text.mp3"))), nullptr);
}

TEST_F(Export, SongThatIsGoneFailsWithTheReason) {
  const auto session = exportSong(file("gone.mp3"), file("tone.m4a"), 0, 1);
  EXPECT_EQ(session->status(), ExportStatus::failed);
  EXPECT_EQ(session->error()->localizedDescription(), "El archivo no existe o se ha movido.");
}

TEST_F(Export, SongCutAfterTheSessionWasMadeFails) {
  const auto path = wav(noise(44'100, 2, std::size_t{20} * 44'100));
  const auto session = prepared(path, file("tone.m4a"), 5, 10);
  std::filesystem::resize_file(path, 100'000);
  finish(*session);
  EXPECT_EQ(session->status(), ExportStatus::failed);
  EXPECT_EQ(session->error()->localizedDescription(), "El archivo ha cambiado mientras se leía.");
}

TEST_F(Export, FolderThatIsNotThere) {
  const auto session = exportSong(wav(song(44'100, 1, 44'100)), file("no/tone.m4a"), 0, 1);
  EXPECT_EQ(session->status(), ExportStatus::failed);
  EXPECT_EQ(session->error()->localizedDescription(),
            "No se puede crear el archivo temporal (No such file or directory).");
}

TEST_F(Export, NameThatIsTakenIsLeftAlone) {
  writeBytes(file("tone.m4a"), {1, 2, 3});
  const auto session = exportSong(wav(song(44'100, 1, 44'100)), file("tone.m4a"), 0, 1);
  EXPECT_EQ(session->status(), ExportStatus::failed);
  EXPECT_EQ(readBytes(file("tone.m4a")), (std::vector<std::uint8_t>{1, 2, 3}));
}

TEST_F(Export, FileSizeLimitFailsAtEveryPlaceWhereItMayStrike) {
  const auto path = wav(noise(44'100, 2, std::size_t{8} * 44'100));
  ASSERT_NE(std::signal(SIGXFSZ, SIG_IGN), SIG_ERR);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  // A whole file takes some 230,000 bytes: the limit strikes at the header, in
  // the middle, at the last bytes, and at the index.
  static_cast<void>(exported(path, 0, 7));
  const auto size = std::filesystem::file_size(file("tone.m4a"));
  for (const rlim_t limit :
       {rlim_t{0}, rlim_t{10}, rlim_t{4'000}, rlim_t{size / 2}, rlim_t{size - 1}}) {
    std::filesystem::remove(file("tone.m4a"));
    rlimit less = before;
    less.rlim_cur = limit;
    setrlimit(RLIMIT_FSIZE, &less);
    const auto session = exportSong(path, file("tone.m4a"), 0, 7);
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(session->status(), ExportStatus::failed) << limit;
    ASSERT_TRUE(session->error()) << limit;
    EXPECT_EQ(session->error()->localizedDescription(),
              "El sistema no permite un archivo tan grande.");
  }
}

}  // namespace
}  // namespace quibel::test
