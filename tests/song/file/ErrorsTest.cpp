#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

#include "song/decoding/OpenSong.h"
#include "song/file/Errors.h"
#include "song/file/Input.h"
#include "tests/song/Songs.h"

namespace quibel::test {
namespace {

class Errors : public testing::Test {
 protected:
  std::filesystem::path file(const std::string& name) const { return directory_.path() / name; }

  std::filesystem::path write(const std::string& name, const std::string& text) const {
    writeBytes(file(name), {text.begin(), text.end()});
    return file(name);
  }

  TemporaryDirectory directory_;
};

TEST_F(Errors, MissingFile) {
  EXPECT_EQ(failureOf(file("song.mp3")), "El archivo no existe o se ha movido.");
  EXPECT_EQ(failureOf(file("folder/song.mp3")), "El archivo no existe o se ha movido.");
}

TEST_F(Errors, FileThatMayNotBeRead) {
  const auto song = write("song.mp3", "x");
  std::filesystem::permissions(directory_.path(), std::filesystem::perms::all);
  std::filesystem::permissions(song, std::filesystem::perms::none);
  // Root may read everything: then this thread looks at files as somebody else.
  const int before = setfsuid(65534);
  EXPECT_EQ(failureOf(song), "No tienes permiso para leer el archivo.");
  setfsuid(static_cast<uid_t>(before));
}

TEST_F(Errors, Folder) {
  EXPECT_EQ(failureOf(directory_.path()), "Es una carpeta, no un archivo de audio.");
}

TEST_F(Errors, FifoIsRefusedWithoutWaitingForItsWriter) {
  ASSERT_EQ(mkfifo(file("song.mp3").c_str(), 0600), 0);
  EXPECT_EQ(failureOf(file("song.mp3")),
            "No es un archivo normal, sino un dispositivo o un canal del sistema.");
}

TEST_F(Errors, Device) {
  EXPECT_EQ(failureOf("/dev/zero"),
            "No es un archivo normal, sino un dispositivo o un canal del sistema.");
}

TEST_F(Errors, EmptyFile) { EXPECT_EQ(failureOf(write("song.mp3", "")), "El archivo está vacío."); }

TEST_F(Errors, TextWithTheNameOfASong) {
  std::string text;
  for (int i = 0; i < 500; ++i) text += "Esto es un texto, no una canción.\n";
  for (const char* name : {"song.mp3", "song.wav", "song.m4a", "song.flac", "song.ogg"}) {
    EXPECT_EQ(failureOf(write(name, text)), "El archivo no es de un formato de audio conocido.");
  }
}

TEST_F(Errors, BytesWithoutMeaning) {
  const Sound sound = noise(44'100, 1, 100'000);
  std::string bytes;
  for (const float sample : sound.channels[0]) bytes += static_cast<char>(sample * 4e6F);
  EXPECT_EQ(failureOf(write("song.mp3", bytes)),
            "El archivo no es de un formato de audio conocido.");
}

TEST_F(Errors, Picture) {
  run({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc", "-frames:v", "1",
       file("picture.png").string()});
  run({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc", "-frames:v", "1",
       file("picture.jpg").string()});
  for (const char* name : {"picture.png", "picture.jpg"}) {
    std::filesystem::rename(file(name), file("song.mp3"));
    EXPECT_EQ(failureOf(file("song.mp3")), "El archivo no es de un formato de audio conocido.");
  }
}

TEST_F(Errors, VideoWithoutSound) {
  for (const char* name : {"film.mp4", "film.mkv"}) {
    run({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc=d=1", "-c:v", "mpeg4",
         file(name).string()});
    EXPECT_EQ(failureOf(file(name)), "El archivo no contiene ninguna pista de sonido.");
  }
}

TEST_F(Errors, MovieCutBeforeItsIndex) {
  writeWav(file("s.wav"), song(44'100, 2, 44'100));
  run({"ffmpeg", "-v", "error", "-i", file("s.wav").string(), file("song.m4a").string()});
  std::filesystem::resize_file(file("song.m4a"), 6000);
  EXPECT_EQ(failureOf(file("song.m4a")), "El archivo está dañado y no se puede decodificar.");
}

TEST_F(Errors, NothingThatDecodes) {
  writeWav(file("s.wav"), song(44'100, 2, 44'100));
  run({"flac", "-s", "-o", file("song.flac").string(), file("s.wav").string()});
  auto bytes = readBytes(file("song.flac"));
  // Every frame keeps its header and loses its contents.
  for (std::size_t i = 9000; i + 40 < bytes.size(); ++i) {
    if (bytes[i] == 0xFF && bytes[i + 1] == 0xF8) i += 20;
    bytes[i] = 0xA5;
  }
  bytes.resize(bytes.size() - 9000);
  std::fill(bytes.begin() + 8400, bytes.begin() + 9000, std::uint8_t{0xA5});
  writeBytes(file("song.flac"), bytes);
  EXPECT_EQ(failureOf(file("song.flac")), "El archivo está dañado y no se puede decodificar.");
}

TEST_F(Errors, UnknownCodec) {
  writeWav(file("song.wav"), song(44'100, 2, 44'100));
  auto bytes = readBytes(file("song.wav"));
  bytes[20] = 0x34;  // the format's number
  bytes[21] = 0x12;
  writeBytes(file("song.wav"), bytes);
  EXPECT_EQ(failureOf(file("song.wav")), "Falta el códec que necesita este archivo.");
}

TEST_F(Errors, FileThatCannotBeReadFromTheDisk) {
  // Every read from a descriptor that may only be written to fails.
  const auto path = write("song.mp3", "x");
  const int descriptor = open(path.c_str(), O_WRONLY);
  song::Input input(descriptor, {.size = 1}, {});
  std::uint8_t byte = 0;
  EXPECT_LT(input.readAt(0, std::span(&byte, 1)), 0);
  EXPECT_EQ(song::failureOf(input).localizedDescription(),
            "No se puede leer el archivo (Bad file descriptor).");
}

TEST_F(Errors, FileCutWhileItIsRead) {
  for (const char* name : {"song.wav", "song.flac"}) {
    writeWav(file("s.wav"), noise(44'100, 2, std::size_t{20} * 44'100));
    std::filesystem::remove(file(name));
    run({"ffmpeg", "-v", "error", "-i", file("s.wav").string(), file(name).string()});
    const auto song = openSong(file(name));
    const auto buffer = song->makeBuffer(4096);
    ASSERT_TRUE(song->read(*buffer, 4096));
    std::filesystem::resize_file(file(name), std::filesystem::file_size(file(name)) / 2);
    platform::Result<void> result;
    while (result && song->framePosition() < song->length()) result = song->read(*buffer, 4096);
    ASSERT_FALSE(result) << name;
    EXPECT_EQ(result.error().localizedDescription(), "El archivo ha cambiado mientras se leía.");
  }
}

TEST_F(Errors, FileRemovedWhileItIsReadGoesOn) {
  writeWav(file("song.wav"), noise(44'100, 2, 44'100));
  const auto song = openSong(file("song.wav"));
  std::filesystem::remove(file("song.wav"));
  EXPECT_EQ(readAll(*song).frames(), 44'100U);
}

TEST_F(Errors, StopRequestEndsOpening) {
  writeWav(file("song.wav"), noise(44'100, 2, 44'100));
  const std::stop_source stop;
  stop.request_stop();
  const auto song = song::openAudioFile(platform::FileURL(file("song.wav")), stop.get_token());
  ASSERT_FALSE(song);
  EXPECT_EQ(song.error().localizedDescription(), "La operación se ha cancelado.");
}

TEST_F(Errors, StopRequestEndsReading) {
  writeWav(file("s.wav"), noise(44'100, 2, std::size_t{30} * 44'100));
  run({"lame", "--quiet", file("s.wav").string(), file("s.mp3").string()});
  for (const char* name : {"s.wav", "s.mp3"}) {
    const std::stop_source stop;
    const auto song = song::openAudioFile(platform::FileURL(file(name)), stop.get_token());
    ASSERT_TRUE(song);
    const auto buffer = (*song)->makeBuffer(4096);
    ASSERT_TRUE((*song)->read(*buffer, 4096));
    stop.request_stop();
    platform::Result<void> result;
    while (result && (*song)->framePosition() < (*song)->length()) {
      result = (*song)->read(*buffer, 4096);
    }
    ASSERT_FALSE(result) << name;
    EXPECT_EQ(result.error().localizedDescription(), "La operación se ha cancelado.");
  }
}

TEST_F(Errors, SongOfNoFramesOpens) {
  writeWav(file("song.wav"), noise(44'100, 2, 0));
  const auto song = openSong(file("song.wav"));
  EXPECT_EQ(song->length(), 0);
  EXPECT_EQ(readAll(*song).frames(), 0U);
}

TEST(ErrorTable, EverySentenceIsSpanishAndWhole) {
  using song::Failure;
  for (int i = 0; i <= static_cast<int>(Failure::internal); ++i) {
    const auto text = song::sentence(static_cast<Failure>(i));
    EXPECT_GE(text.size(), 10U) << i;
    EXPECT_EQ(text.back(), '.') << text;
    for (int j = 0; j < i; ++j) EXPECT_NE(text, song::sentence(static_cast<Failure>(j)));
  }
}

TEST(ErrorTable, SystemsOwnDetailStandsInParentheses) {
  using namespace song;
  EXPECT_EQ(makeError(Failure::noCodec, "aac").localizedDescription(),
            "Falta el códec que necesita este archivo (aac).");
  EXPECT_EQ(openingError(EMFILE).localizedDescription(),
            "No se puede abrir el archivo (Too many open files).");
  EXPECT_EQ(readingError(EIO).localizedDescription(),
            "No se puede leer el archivo (Input/output error).");
}

TEST(ErrorTable, NumbersOfTheSystemHaveTheirSentences) {
  using namespace song;
  EXPECT_EQ(openingError(ENOENT), makeError(Failure::missing));
  EXPECT_EQ(openingError(EACCES), makeError(Failure::noPermission));
  EXPECT_EQ(openingError(EISDIR), makeError(Failure::folder));
  EXPECT_EQ(openingError(ENXIO), makeError(Failure::notRegular));
  EXPECT_EQ(creatingError(EROFS).localizedDescription(),
            "No tienes permiso para escribir en la carpeta temporal.");
  EXPECT_EQ(writingError(ENOSPC).localizedDescription(), "No queda espacio en el disco.");
  EXPECT_EQ(writingError(EDQUOT).localizedDescription(), "No queda espacio en el disco.");
  EXPECT_EQ(writingError(EFBIG).localizedDescription(),
            "El sistema no permite un archivo tan grande.");
  EXPECT_EQ(writingError(ENOMEM).localizedDescription(), "No hay memoria suficiente.");
}

}  // namespace
}  // namespace quibel::test
