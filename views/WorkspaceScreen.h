#pragma once

#include <QWidget>
#include <memory>

#include "model/AudioEditorModel.h"

namespace quibel {

class ActionButton;
class ReadOut;
class TextLabel;
class WaveformSelectionView;

/// The song being edited: its name and length, the waveform with the fragment's
/// handles, the fragment's times, and what can be done with it. It shows what
/// the model says at the last refresh.
class WorkspaceScreen : public QWidget {
  Q_OBJECT

 public:
  explicit WorkspaceScreen(std::shared_ptr<AudioEditorModel> editor, QWidget* parent = nullptr);

  /// Reads the model afresh.
  void refresh();

  WaveformSelectionView& waveform() { return *waveform_; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QWidget* makeFileRow();
  QWidget* makeReadOuts();
  QWidget* makeButtons();

  std::shared_ptr<AudioEditorModel> editor_;
  TextLabel* fileName_ = nullptr;
  TextLabel* length_ = nullptr;
  WaveformSelectionView* waveform_ = nullptr;
  ReadOut* start_ = nullptr;
  ReadOut* duration_ = nullptr;
  ReadOut* end_ = nullptr;
  ActionButton* loop_ = nullptr;
  ActionButton* export_ = nullptr;
};

}  // namespace quibel
