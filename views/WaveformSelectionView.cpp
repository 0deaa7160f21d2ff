#include "views/WaveformSelectionView.h"

#include <QMouseEvent>
#include <QPaintEvent>

#include "views/HandleView.h"
#include "views/Motion.h"
#include "views/SelectionGeometry.h"

namespace quibel {

WaveformSelectionView::WaveformSelectionView(Binding<double> start, Binding<double> end,
                                             QWidget* parent)
    : QWidget(parent), start_(start), end_(end) {
  setAccessibleName(tr("Forma de onda"));
  // A drag is held to the song that the strip shows.
  const auto time = [this](double x) { return toTime(x, width(), shown_.duration); };
  const auto startRule = [this](double t) { return draggedStart(t, end_.get()); };
  const auto endRule = [this](double t) { return draggedEnd(t, start_.get()); };
  const auto songDuration = [this] { return shown_.duration; };
  const auto fragment = [this] { return end_.get() - start_.get(); };

  startHandle_ = new HandleView(
      tr("Inicio del fragmento"),
      {.value = [this] { return start_.get(); },
       .songDuration = songDuration,
       .fragment = fragment,
       .dragTo = [this, time, startRule](double x) { start_.set(startRule(time(x))); },
       .rule = startRule,
       .set = [this](double t) { start_.set(t); }},
      this);
  // Made second, it lies above the start handle where the two overlap.
  endHandle_ =
      new HandleView(tr("Final del fragmento"),
                     {.value = [this] { return end_.get(); },
                      .songDuration = songDuration,
                      .fragment = fragment,
                      .dragTo = [this, time, endRule](double x) { end_.set(endRule(time(x))); },
                      .rule = endRule,
                      .set = [this](double t) { end_.set(t); }},
                     this);
  for (auto* handle : {startHandle_, endHandle_}) {
    connect(handle, &HandleView::metOtherwise, this, &WaveformSelectionView::showHandles);
  }
}

void WaveformSelectionView::refresh(const std::vector<double>& samples, double duration,
                                    double playhead) {
  if (samples != painter_.samples()) {
    painter_.setSamples(samples);
    update();
  }
  auto state = shown_;
  state.duration = duration;
  state.start = start_.get();
  state.end = end_.get();
  state.playhead = playhead;
  display(state);
  placeHandles();
  startHandle_->announceValue();
  endHandle_->announceValue();
}

void WaveformSelectionView::display(const StripState& state) {
  update(painter_.changed(shown_, state, size()));
  shown_ = state;
}

void WaveformSelectionView::showHandles() {
  auto state = shown_;
  state.startHandle = startHandle_->state();
  state.endHandle = endHandle_->state();
  display(state);
}

void WaveformSelectionView::setLoading(bool loading) {
  if (loading == loading_) return;
  loading_ = loading;
  sweep();
}

void WaveformSelectionView::sweep() {
  auto state = shown_;
  state.sweep.reset();
  if (!loading_ || !isVisible() || isMotionReduced()) {
    sweepTimer_.stop();
    return display(state);
  }
  constexpr int turnMilliseconds = 1600;
  constexpr int frameMilliseconds = 33;
  if (!sweepTimer_.isActive()) {
    sweepTimer_.start(frameMilliseconds, this);
    sweepClock_.start();
  }
  state.sweep = static_cast<double>(sweepClock_.elapsed() % turnMilliseconds) / turnMilliseconds;
  display(state);
}

void WaveformSelectionView::timerEvent(QTimerEvent*) { sweep(); }
void WaveformSelectionView::showEvent(QShowEvent*) { sweep(); }
void WaveformSelectionView::hideEvent(QHideEvent*) { sweep(); }

void WaveformSelectionView::placeHandles() {
  const auto geometry = stripGeometry(shown_, size());
  startHandle_->place(startHandleColumns(geometry.startX));
  endHandle_->place(endHandleColumns(geometry.endX));
}

void WaveformSelectionView::paintEvent(QPaintEvent* event) {
  QPainter painter(this);
  painter_.paint(painter, shown_, size(), colors(palette()), event->region());
}

void WaveformSelectionView::resizeEvent(QResizeEvent*) { placeHandles(); }

void WaveformSelectionView::mousePressEvent(QMouseEvent* event) {
  // A press beside a handle is not a press on the window's ground.
  event->accept();
}

}  // namespace quibel
