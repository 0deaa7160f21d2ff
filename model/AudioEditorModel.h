#pragma once

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/AudioError.h"
#include "model/Published.h"
#include "platform/Platform.h"

namespace quibel {

/// The song being edited: its envelope, the chosen fragment, the loop preview
/// and the export, and every text about them. One for each window, held by
/// std::shared_ptr; background work holds it weakly.
///
/// Main thread only. No operation throws or returns a failure: what goes wrong
/// ends in `alertText` and `showAlert`. All times are in seconds of the song.
class AudioEditorModel : public std::enable_shared_from_this<AudioEditorModel> {
 public:
  /// The longest ringtone: it bounds a new song's first selection and what is exported.
  static constexpr double maximumDuration = 40.0;

  /// What the status says before the name of a ringtone that was saved.
  static constexpr std::string_view savedStatus = "Tono guardado: ";

  explicit AudioEditorModel(platform::Platform& platform = platform::Platform::standard());
  AudioEditorModel(const AudioEditorModel&) = delete;
  AudioEditorModel& operator=(const AudioEditorModel&) = delete;
  ~AudioEditorModel();

  /// Announces every assignment to a published property, before it is stored.
  ChangeAnnouncer& objectWillChange() { return objectWillChange_; }

  /// The song being edited, from the beginning of its load on; kept when the load fails.
  const std::optional<platform::FileURL>& audioURL() const { return audioURL_; }
  /// The envelope, see waveform(). Empty while a song loads and after a failed load.
  const std::vector<double>& samples() const { return samples_; }
  double duration() const { return duration_; }
  /// The fragment. Nothing but a drag's own rules keeps it inside the song or
  /// below maximumDuration.
  double start() const { return start_; }
  double end() const { return end_; }
  double playhead() const { return playhead_; }
  bool isPlaying() const { return isPlaying_; }
  bool isLoading() const { return isLoading_; }
  bool isExporting() const { return isExporting_; }
  bool isBusy() const { return isLoading_ || isExporting_; }
  /// One line of guidance or result.
  const std::string& status() const { return status_; }
  bool showAlert() const { return showAlert_; }
  const std::string& alertText() const { return alertText_; }

  Binding<double> startBinding() { return Binding<double>(start_); }
  Binding<double> endBinding() { return Binding<double>(end_); }
  Binding<bool> showAlertBinding() { return Binding<bool>(showAlert_); }

  /// Asks for a song and loads it. Nothing happens if the panel is cancelled.
  void chooseAudio();

  /// Makes `url` the song being edited and returns; it is decoded in the
  /// background. Loads are not cancelled: of two that overlap, the one that
  /// ends last decides what is shown.
  void load(platform::FileURL url);

  /// Starts the loop preview of the fragment, or stops it.
  void togglePreview();
  void stopPreview();

  /// Asks where to write the fragment, at most maximumDuration of it, and
  /// returns once the writing has begun. Then the file is copied into place and
  /// shown in the file manager. The caller sees to it that no export is running.
  void export_();

 private:
  struct LoadedSong {
    double duration;
    std::vector<double> samples;
  };
  struct PendingExport;

  static std::expected<LoadedSong, LoadError> analyse(platform::Platform& platform,
                                                      const platform::FileURL& url);
  void finishLoad(const std::expected<LoadedSong, LoadError>& result);
  void preview();
  void tick();
  void beginExport(const platform::FileURL& temporaryURL, const platform::FileURL& destination);
  void finishExport(const PendingExport& pending);
  platform::Result<void> save(const platform::FileURL& temporaryURL,
                              const platform::FileURL& destination);
  void fail(std::string message);

  platform::Platform& platform_;
  ChangeAnnouncer objectWillChange_;

  Published<std::optional<platform::FileURL>> audioURL_{objectWillChange_, std::nullopt};
  Published<std::vector<double>> samples_{objectWillChange_, {}};
  Published<double> duration_{objectWillChange_, 0.0};
  Published<double> start_{objectWillChange_, 0.0};
  Published<double> end_{objectWillChange_, 0.0};
  Published<double> playhead_{objectWillChange_, 0.0};
  Published<bool> isPlaying_{objectWillChange_, false};
  Published<bool> isLoading_{objectWillChange_, false};
  Published<bool> isExporting_{objectWillChange_, false};
  Published<std::string> status_{objectWillChange_, {}};
  Published<bool> showAlert_{objectWillChange_, false};
  Published<std::string> alertText_{objectWillChange_, {}};

  std::unique_ptr<platform::AudioPlayer> player_;
  std::unique_ptr<platform::Timer> timer_;
  std::optional<platform::FileURL> scopedURL_;
};

}  // namespace quibel
