#include "tests/export/Workshop.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "song/decoding/OpenSong.h"
#include "song/ringtone/RingtoneSession.h"

namespace quibel::test {

using platform::FileURL;

void PostedBlocks::async(std::function<void()> block) {
  const std::lock_guard lock(mutex_);
  blocks_.push_back(std::move(block));
  posted_.notify_one();
}

void PostedBlocks::awaitOne() {
  std::unique_lock lock(mutex_);
  if (!posted_.wait_for(lock, std::chrono::minutes(2), [this] { return !blocks_.empty(); }))
    throw std::runtime_error("nothing came back to the main queue");
}

void PostedBlocks::runOne() {
  awaitOne();
  std::function<void()> block;
  {
    const std::lock_guard lock(mutex_);
    block = std::move(blocks_.front());
    blocks_.pop_front();
  }
  block();
}

platform::Result<std::unique_ptr<platform::AudioFile>> Machine::openAudioFile(const FileURL& url) {
  return song::openAudioFile(url);
}

std::shared_ptr<platform::ExportSession> Machine::makeExportSession(const FileURL& url) {
  return song::makeExportSession(url);
}

Workshop::Workshop() {
  std::filesystem::create_directory(home());
  std::filesystem::create_directory(temporary());
  // Open to the user without rights whom some tests become.
  for (const auto& each : {folder(), home(), temporary()})
    std::filesystem::permissions(each, std::filesystem::perms::all);
  ::setenv("TMPDIR", temporary().c_str(), 1);
}

Workshop::~Workshop() { ::unsetenv("TMPDIR"); }

std::filesystem::path Workshop::writeSong(double seconds) const {
  const auto song = file("canción.wav");
  writeWav(song, noise(44'100, 2, static_cast<std::size_t>(seconds * 44'100)));
  return song;
}

void Workshop::load(const std::filesystem::path& song) {
  model->load(FileURL(song));
  machine.background.runAll();
  machine.posted.runOne();
  if (!alert().empty()) throw std::runtime_error(alert());
}

void Workshop::beginExport(const std::filesystem::path& to) {
  machine.savePanelAnswer = FileURL(to);
  model->export_();
}

void Workshop::exportTo(const std::filesystem::path& to) {
  beginExport(to);
  if (model->isExporting()) endExport();
}

std::vector<std::string> Workshop::namesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    names.push_back(entry.path().filename().string());
  std::ranges::sort(names);
  return names;
}

std::vector<std::uint8_t> ringtoneOf(Workshop& workshop) {
  const auto to = workshop.file("reference.m4r");
  workshop.exportTo(to);
  if (!workshop.alert().empty()) throw std::runtime_error(workshop.alert());
  auto bytes = readBytes(to);
  std::filesystem::remove(to);
  return bytes;
}

RingtoneTest::RingtoneTest() {
  workshop.load(song);
  whole = ringtoneOf(workshop);
}

void RingtoneTest::expectNothingHappened() const {
  EXPECT_EQ(workshop.model->status(), "");
  EXPECT_FALSE(workshop.model->isExporting());
  EXPECT_EQ(Workshop::namesIn(workshop.home()), std::vector<std::string>{"canción.wav"});
  EXPECT_TRUE(readBytes(song) == songBytes);
  if (std::filesystem::exists(workshop.temporary())) {
    EXPECT_TRUE(Workshop::namesIn(workshop.temporary()).empty());
  }
}

void RingtoneTest::expectSaved(const std::filesystem::path& saved) const {
  EXPECT_EQ(workshop.alert(), "");
  EXPECT_EQ(workshop.model->status(), "Tono guardado: " + saved.filename().string());
  EXPECT_FALSE(workshop.model->isExporting());
  EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(saved)));
  EXPECT_TRUE(readBytes(saved) == whole);
  EXPECT_TRUE(Workshop::namesIn(workshop.temporary()).empty());
}

}  // namespace quibel::test
