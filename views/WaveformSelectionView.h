#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QWidget>
#include <vector>

#include "model/Published.h"
#include "views/StripPainter.h"

namespace quibel {

class HandleView;

/// The strip that shows a song's envelope, the chosen fragment and the
/// playhead, and whose two handles change the fragment. It holds no times of its
/// own: a drag writes straight through the bindings, and what is shown follows
/// with the next refresh. Main thread only.
class WaveformSelectionView : public QWidget {
  Q_OBJECT

 public:
  /// `start` and `end` in seconds; what they bind outlives the view.
  WaveformSelectionView(Binding<double> start, Binding<double> end, QWidget* parent = nullptr);

  /// Shows a song and where it plays, in seconds, with the bindings' values of
  /// now. Repaints only what has changed.
  void refresh(const std::vector<double>& samples, double duration, double playhead);

  /// Whether the song is being analysed: a light sweeps over the strip meanwhile.
  void setLoading(bool loading);
  bool isSweeping() const { return sweepTimer_.isActive(); }

  HandleView& startHandle() { return *startHandle_; }
  HandleView& endHandle() { return *endHandle_; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void timerEvent(QTimerEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  void placeHandles();
  void display(const StripState& state);
  void showHandles();
  void sweep();

  Binding<double> start_;
  Binding<double> end_;
  StripState shown_;
  StripPainter painter_;
  HandleView* startHandle_;
  HandleView* endHandle_;
  bool loading_ = false;
  QBasicTimer sweepTimer_;
  QElapsedTimer sweepClock_;
};

}  // namespace quibel
