#include "tests/song/ringtone/ExportFixture.h"

#include <future>
#include <stdexcept>
#include <utility>

namespace quibel::test {

std::filesystem::path Export::wav(const Sound& sound) const {
  writeWav(file("song.wav"), sound);
  return file("song.wav");
}

std::shared_ptr<platform::ExportSession> Export::prepared(const std::filesystem::path& song,
                                                          const std::filesystem::path& to,
                                                          double start, double duration,
                                                          std::stop_token stop) {
  auto session = song::makeExportSession(FileURL(song), std::move(stop));
  if (!session) throw std::runtime_error("no session");
  session->setOutputURL(FileURL(to));
  session->setOutputFileType(platform::FileType::appleM4A);
  session->setTimeRange({platform::makeTime(start, 600), platform::makeTime(duration, 600)});
  return session;
}

void Export::finish(platform::ExportSession& session) {
  std::promise<void> ended;
  session.exportAsynchronously([&] { ended.set_value(); });
  ended.get_future().wait();
}

std::shared_ptr<platform::ExportSession> Export::exportSong(const std::filesystem::path& song,
                                                            const std::filesystem::path& to,
                                                            double start, double duration) {
  auto session = prepared(song, to, start, duration);
  finish(*session);
  return session;
}

std::filesystem::path Export::exported(const std::filesystem::path& song, double start,
                                       double duration) const {
  const auto to = file("tone.m4a");
  std::filesystem::remove(to);
  const auto session = exportSong(song, to, start, duration);
  if (session->status() != ExportStatus::completed) {
    throw std::runtime_error(session->error()->localizedDescription());
  }
  return to;
}

Sound cut(const Sound& sound, std::size_t begin, std::size_t count) {
  Sound part{sound.rate, {}};
  for (const auto& channel : sound.channels) {
    const auto from = channel.begin() + static_cast<std::ptrdiff_t>(begin);
    part.channels.emplace_back(from, from + static_cast<std::ptrdiff_t>(count));
  }
  return part;
}

}  // namespace quibel::test
