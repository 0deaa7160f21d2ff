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
/// the model says at the last refresh. Space presses the loop button where what
/// has the focus takes no Space itself, as the handles.
class WorkspaceScreen : public QWidget {
  Q_OBJECT

 public:
  explicit WorkspaceScreen(std::shared_ptr<AudioEditorModel> editor, QWidget* parent = nullptr);

  /// Reads the model afresh.
  void refresh();

  WaveformSelectionView& waveform() { return *waveform_; }

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  QWidget* makeFileRow();
  QWidget* makeReadOuts();
  QWidget* makeButtons();
  void setCanExport(bool canExport);

  std::shared_ptr<AudioEditorModel> editor_;
  TextLabel* fileName_ = nullptr;
  TextLabel* length_ = nullptr;
  WaveformSelectionView* waveform_ = nullptr;
  ReadOut* start_ = nullptr;
  ReadOut* duration_ = nullptr;
  ReadOut* end_ = nullptr;
  ActionButton* loop_ = nullptr;
  ActionButton* export_ = nullptr;
  bool focusIsLent_ = false;  // by the export button to the loop button
};

}  // namespace quibel
