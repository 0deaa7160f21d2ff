#include "model/AudioEditorModel.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "model/ExportRules.h"
#include "model/Waveform.h"

namespace quibel {
namespace {

/// The number of buckets asked of the envelope.
constexpr int bucketCount = 900;

/// Seconds between two readings of the player. It bounds how far past the
/// fragment's end the loop may play.
constexpr double tickInterval = 0.025;

/// The sentence for an exception that the platform let through.
std::string description(const std::exception& exception) {
  return dynamic_cast<const std::bad_alloc*>(&exception) ? "No hay memoria suficiente."
                                                         : "Ha ocurrido un error inesperado.";
}

}  // namespace

/// What an export's completion needs. The model is held weakly, so that an
/// export keeps no closed window's model alive.
struct AudioEditorModel::PendingExport {
  std::weak_ptr<AudioEditorModel> model;
  platform::FileURL temporaryURL;
  std::shared_ptr<platform::ExportSession> session;
  platform::FileURL destination;
};

AudioEditorModel::AudioEditorModel(platform::Platform& platform) : platform_(platform) {}

AudioEditorModel::~AudioEditorModel() {
  if (timer_) timer_->invalidate();
  if (scopedURL_) platform_.stopAccessingSecurityScopedResource(*scopedURL_);
}

void AudioEditorModel::fail(std::string message) {
  isLoading_ = false;
  isExporting_ = false;
  alertText_ = std::move(message);
  showAlert_ = true;
}

// Loading

void AudioEditorModel::chooseAudio() {
  const auto choice = platform_.runModal(platform::OpenPanel{
      .title = "Selecciona una canción",
      .allowedContentTypes = {platform::ContentType::audio()},
      .allowsMultipleSelection = false,
  });
  if (choice) load(*choice);
}

void AudioEditorModel::load(platform::FileURL url) {
  stopPreview();
  if (scopedURL_) platform_.stopAccessingSecurityScopedResource(*scopedURL_);
  scopedURL_.reset();
  if (platform_.startAccessingSecurityScopedResource(url)) scopedURL_ = url;
  audioURL_ = url;
  samples_ = {};
  isLoading_ = true;
  status_ = {};

  platform_.userInitiatedQueue().async([weak = weak_from_this(), &platform = platform_, url] {
    platform.mainQueue().async([weak, result = analyse(platform, url)] {
      if (const auto model = weak.lock()) model->finishLoad(result);
    });
  });
}

auto AudioEditorModel::analyse(platform::Platform& platform, const platform::FileURL& url)
    -> std::expected<LoadedSong, LoadError> {
  try {
    const auto file = platform.openAudioFile(url);
    if (!file) return std::unexpected(file.error());
    if ((*file)->length() <= 0) return std::unexpected(AudioError::invalid);

    const double duration =
        static_cast<double>((*file)->length()) / (*file)->processingFormat().sampleRate;
    auto samples = waveform(**file, bucketCount);
    if (!samples) return std::unexpected(std::move(samples).error());
    return LoadedSong{duration, *std::move(samples)};
  } catch (const std::exception& exception) {
    return std::unexpected(platform::Error(description(exception)));
  }
}

void AudioEditorModel::finishLoad(const std::expected<LoadedSong, LoadError>& result) {
  if (!result) {
    fail("No se ha podido abrir el audio. " + localizedDescription(result.error()));
    return;
  }
  duration_ = result->duration;
  start_ = 0.0;
  end_ = std::min(result->duration, maximumDuration);
  playhead_ = 0.0;
  samples_ = result->samples;
  isLoading_ = false;
  status_ = "Mueve los tiradores verde y naranja para escoger el fragmento.";
}

// Loop preview

void AudioEditorModel::togglePreview() {
  if (isPlaying_)
    stopPreview();
  else
    preview();
}

void AudioEditorModel::preview() try {
  const auto& url = audioURL();
  if (!url) return;
  auto player = platform_.openAudioPlayer(*url);
  if (!player) {
    fail("No se ha podido reproducir el audio. " + player.error().localizedDescription());
    return;
  }
  // The position comes before the preparation, so that the fragment's beginning
  // is what is prepared. A player that will not play yet is tried again by each tick.
  (*player)->setCurrentTime(start_);
  static_cast<void>((*player)->prepareToPlay());
  static_cast<void>((*player)->play());
  player_ = *std::move(player);
  playhead_ = start();
  isPlaying_ = true;
  if (timer_) timer_->invalidate();
  timer_ = platform_.scheduledTimer(tickInterval, [weak = weak_from_this()] {
    if (const auto model = weak.lock()) model->tick();
  });
} catch (const std::exception& exception) {
  stopPreview();
  fail("No se ha podido reproducir el audio. " + description(exception));
}

void AudioEditorModel::tick() {
  if (!player_) return;
  if (player_->currentTime() >= end_ || !player_->isPlaying()) {
    player_->setCurrentTime(start_);
    static_cast<void>(player_->play());
  }
  playhead_ = player_->currentTime();
}

void AudioEditorModel::stopPreview() {
  if (timer_) timer_->invalidate();
  timer_.reset();
  if (player_) player_->stop();
  player_.reset();
  isPlaying_ = false;
  playhead_ = start();
}

// Export

void AudioEditorModel::export_() {
  if (!audioURL()) return;
  stopPreview();

  const auto destination = platform_.runModal(platform::SavePanel{
      .title = "Guardar tono para iPhone",
      .nameFieldStringValue = proposedFileName(*audioURL()),
      .allowedContentTypes = {platform_.contentType("m4r").value_or(
          platform::ContentType::audio())},
  });
  if (!destination) return;
  isExporting_ = true;
  status_ = {};

  const auto temporaryURL = platform_.fileManager()
                                .temporaryDirectory()
                                .appendingPathComponent(platform_.uuidString())
                                .appendingPathExtension("m4a");
  try {
    beginExport(temporaryURL, *destination);
  } catch (const std::exception& exception) {
    fail("No se ha podido crear el tono. " + description(exception));
  }
}

void AudioEditorModel::beginExport(const platform::FileURL& temporaryURL,
                                   const platform::FileURL& destination) {
  const auto session = platform_.makeExportSession(*audioURL());
  if (!session) {
    fail("Este formato no se puede convertir a AAC.");
    return;
  }
  session->setOutputURL(temporaryURL);
  session->setOutputFileType(platform::FileType::appleM4A);
  session->setTimeRange(exportTimeRange(start_, end_, maximumDuration));
  session->exportAsynchronously(
      [pending = PendingExport{weak_from_this(), temporaryURL, session, destination},
       &mainQueue = platform_.mainQueue()] {
        mainQueue.async([pending] {
          if (const auto model = pending.model.lock()) model->finishExport(pending);
        });
      });
}

void AudioEditorModel::finishExport(const PendingExport& pending) {
  if (pending.session->status() == platform::ExportStatus::completed) {
    if (const auto saved = save(pending.temporaryURL, pending.destination)) {
      status_ = std::string(savedStatus) + pending.destination.lastPathComponent();
      platform_.activateFileViewerSelecting({pending.destination});
    } else {
      fail("No se ha podido guardar el tono. " + saved.error().localizedDescription());
    }
  } else {
    const auto error = pending.session->error();
    fail("No se ha podido crear el tono. " +
         (error ? error->localizedDescription() : "Error desconocido"));
  }
  isExporting_ = false;
  // A temporary file that cannot be removed, or was never made, is nobody's trouble.
  static_cast<void>(platform_.fileManager().removeItem(pending.temporaryURL));
}

platform::Result<void> AudioEditorModel::save(const platform::FileURL& temporaryURL,
                                              const platform::FileURL& destination) {
  auto& files = platform_.fileManager();
  if (!files.fileExists(destination)) return files.copyItem(temporaryURL, destination);

  // The old file is given up only when the new one is whole on the same disk.
  const auto beside = platform::FileURL(destination.path().parent_path())
                          .appendingPathComponent(replacementName(platform_.uuidString()));
  if (auto copied = files.copyItem(temporaryURL, beside); !copied) return copied;
  if (auto removed = files.removeItem(destination); !removed) {
    // One that cannot be removed either is whole, and its name says what it is.
    static_cast<void>(files.removeItem(beside));
    return removed;
  }
  if (auto moved = files.moveItem(beside, destination); !moved) {
    return std::unexpected(
        platform::Error(moved.error().localizedDescription() +
                        " El tono nuevo está en la misma carpeta con el nombre «" +
                        beside.lastPathComponent() + "»."));
  }
  return {};
}

}  // namespace quibel
