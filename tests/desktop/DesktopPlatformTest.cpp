#include <atomic>
#include <cstdint>
#include <fstream>
#include <latch>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include <gmock/gmock.h>
#include <sys/resource.h>

#include "app/DesktopPlatform.h"
#include "model/AudioEditorModel.h"
#include "tests/desktop/Application.h"
#include "tests/desktop/TemporaryFolder.h"
#include "tests/support/TestAudio.h"

namespace quibel {
namespace {

using desktop::eventually;
using desktop::TemporaryFolder;
using platform::FileURL;

struct DesktopPlatformTest : testing::Test {
  TemporaryFolder folder;
  std::optional<DesktopPlatform> machine{std::in_place};

  FileURL song(int seconds) const {
    const auto url = folder.url("canción.wav");
    test::writeWav(url.path(),
                   test::sine(8'000, 1, std::size_t{8'000} * static_cast<unsigned>(seconds), 440));
    return url;
  }
};

TEST_F(DesktopPlatformTest, OpensASongAndSaysWhyItCannotOpenAnotherFile) {
  const auto opened = machine->openAudioFile(song(2));
  ASSERT_TRUE(opened) << opened.error().localizedDescription();
  EXPECT_EQ((*opened)->length(), 16'000);
  EXPECT_FALSE(machine->openAudioFile(folder.url("no existe.mp3")));
  EXPECT_FALSE(machine->openAudioPlayer(folder.url("no existe.mp3")));
  EXPECT_EQ(machine->makeExportSession(folder.write("texto.mp3", "esto no es audio")), nullptr);
}

/// The text with which the editor refuses a file on this machine.
struct RefusedSongTest : DesktopPlatformTest {
  std::string alertAbout(const FileURL& url) {
    const auto model = std::make_shared<AudioEditorModel>(*machine);
    model->load(url);
    EXPECT_TRUE(eventually([&] { return !model->isLoading(); }));
    EXPECT_TRUE(model->showAlert());
    EXPECT_TRUE(model->samples().empty());
    return model->alertText();
  }
};

TEST_F(RefusedSongTest, SongWithoutFramesHasNoValidAudio) {
  const auto url = folder.url("vacía.wav");
  test::writeWav(url.path(), {.rate = 8'000, .channels = {{}}});
  EXPECT_EQ(alertAbout(url),
            "No se ha podido abrir el audio. El archivo no contiene audio válido.");
}

TEST_F(RefusedSongTest, TextNamedLikeASongIsOfNoKnownFormat) {
  EXPECT_EQ(alertAbout(folder.write("texto.mp3", "esto no es audio")),
            "No se ha podido abrir el audio. El archivo no es de un formato de audio conocido.");
}

TEST_F(DesktopPlatformTest, EveryUUIDIsFreshRandomAndInUpperCase) {
  std::set<std::string> seen;
  for (int count = 0; count < 1'000; ++count) {
    const auto uuid = machine->uuidString();
    EXPECT_THAT(uuid, testing::MatchesRegex(
                          "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
    EXPECT_TRUE(seen.insert(uuid).second);
  }
}

TEST_F(DesktopPlatformTest, EveryExtensionHasAType) {
  EXPECT_EQ(machine->contentType("m4r"), platform::ContentType{"m4r"});
}

TEST_F(DesktopPlatformTest, AFileThatOutgrowsItsLimitIsAnErrorAndNotTheEnd) {
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  rlimit small = before;
  small.rlim_cur = 4'096;
  const auto from = folder.write("from", std::string(10'000, 'x'));
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  const auto copied = machine->fileManager().copyItem(from, folder.url("to"));
  ::setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_FALSE(copied);
}

TEST_F(DesktopPlatformTest, ExportsAndCallsBackThroughTheMainQueue) {
  const auto session = machine->makeExportSession(song(2));
  ASSERT_NE(session, nullptr);
  session->setOutputURL(folder.url("tono.m4a"));
  session->setOutputFileType(platform::FileType::appleM4A);
  session->setTimeRange({{0, 600}, {600, 600}});
  bool done = false;
  session->exportAsynchronously([&] { machine->mainQueue().async([&] { done = true; }); });
  ASSERT_TRUE(eventually([&] { return done; }));
  EXPECT_EQ(session->status(), platform::ExportStatus::completed);
  EXPECT_GT(std::filesystem::file_size(folder.url("tono.m4a").path()), 1'000U);
}

TEST_F(DesktopPlatformTest, EndsALoadThatItFindsUnderWay) {
  const auto url = song(600);
  std::latch started(1);
  std::atomic<int> ended = 0;
  machine->userInitiatedQueue().async([&, url] {
    auto opened = machine->openAudioFile(url);
    started.count_down();
    if (opened) {
      // Read again and again: only the platform's end makes it stop.
      const auto buffer = (*opened)->makeBuffer(1'024);
      while ((*opened)->seek(0) && (*opened)->read(*buffer, 1'024)) {
      }
    }
    ++ended;
  });
  started.wait();
  machine.reset();
  EXPECT_EQ(ended, 1);
}

TEST_F(DesktopPlatformTest, EndsAnExportThatItFindsUnderWayAndDropsItsCallback) {
  auto session = machine->makeExportSession(song(600));
  ASSERT_NE(session, nullptr);
  session->setOutputURL(folder.url("tono.m4a"));
  session->setOutputFileType(platform::FileType::appleM4A);
  session->setTimeRange({{0, 600}, {24'000, 600}});
  std::atomic<bool> handled = false;
  bool delivered = false;
  session->exportAsynchronously([&, kept = session] {
    machine->mainQueue().async([&, kept] { delivered = true; });
    handled = true;
  });
  session.reset();
  machine.reset();
  EXPECT_TRUE(handled) << "the queue outlives the handler that uses it";
  QCoreApplication::processEvents();
  EXPECT_FALSE(delivered);
}

}  // namespace
}  // namespace quibel
