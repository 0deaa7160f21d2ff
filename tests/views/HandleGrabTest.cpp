#include <QMouseEvent>
#include <QWindow>
#include <algorithm>
#include <cmath>

#include "tests/views/EditorFixture.h"
#include "views/HandleView.h"
#include "views/SelectionGeometry.h"
#include "views/WaveformSelectionView.h"

namespace quibel {
namespace {

/// A strip in a window of its own, and a pointer that stands on whole device pixels.
class HandleGrab : public EditorFixture {
 protected:
  void SetUp() override {
    view.resize(724, 220);
    view.show();
    for (auto* handle : {&view.startHandle(), &view.endHandle()}) handle->installEventFilter(&log);
  }

  void show(double songSeconds) {
    load(songSeconds);
    refresh();
  }

  void refresh() { view.refresh(model->samples(), model->duration(), model->playhead()); }

  void select(double start, double end) {
    model->startBinding().set(start);
    model->endBinding().set(end);
    refresh();
  }

  double ratio() const { return view.devicePixelRatioF(); }
  int columnCount() const { return static_cast<int>(std::floor(view.width() * ratio())); }
  double x(int column) const { return column / ratio(); }

  /// What the window system says to the window, which finds the view itself.
  void send(QEvent::Type type, double x) {
    const bool up = type == QEvent::MouseButtonRelease;
    const QPointF at(x, 100);
    QMouseEvent event(type, at, view.mapToGlobal(at),
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                      up ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(view.windowHandle(), &event);
    refresh();
  }

  void drag(double from, double to) {
    send(QEvent::MouseButtonPress, from);
    send(QEvent::MouseMove, to);
    send(QEvent::MouseButtonRelease, to);
  }

  /// The handle that a press on a column of device pixels grabs, or null. The
  /// fragment is as before afterwards.
  QObject* grabbed(int column) {
    const double start = model->start();
    const double end = model->end();
    log.pressed = nullptr;
    send(QEvent::MouseButtonPress, x(column));
    send(QEvent::MouseButtonRelease, x(column));
    select(start, end);
    return log.pressed;
  }

  /// The first column that grabs `handle`, or -1.
  int firstColumnOf(HandleView& handle) {
    for (int column = 0; column < columnCount(); ++column) {
      if (grabbed(column) == &handle) return column;
    }
    return -1;
  }

  class PressLog : public QObject {
   public:
    bool eventFilter(QObject* watched, QEvent* event) override {
      if (event->type() == QEvent::MouseButtonPress) pressed = watched;
      return false;
    }
    QObject* pressed = nullptr;
  };

  PressLog log;
  WaveformSelectionView view{model->startBinding(), model->endBinding()};
};

const double songs[] = {0.6, 1, 4, 30, 90, 180, 600, 719, 720, 725, 1000, 2000, 3600, 9000, 36000};

TEST_F(HandleGrab, FromTheSongsEndTheStartAndThenTheEndCanBeDraggedBack) {
  for (const double seconds : songs) {
    SCOPED_TRACE(seconds);
    show(seconds);
    drag(x(firstColumnOf(view.endHandle())), 5000);
    ASSERT_EQ(model->end(), seconds);
    drag(x(firstColumnOf(view.startHandle())), 5000);
    ASSERT_EQ(model->start(), seconds - minimumFragment);

    const int sliver = firstColumnOf(view.startHandle());
    ASSERT_GE(sliver, 0) << "nothing grabs the start";
    drag(x(sliver), 100);
    EXPECT_DOUBLE_EQ(model->start(), std::min(100.0 / 724 * seconds, seconds - minimumFragment));
    const int end = firstColumnOf(view.endHandle());
    ASSERT_GE(end, 0);
    drag(x(end), 400);
    EXPECT_DOUBLE_EQ(model->end(),
                     std::max(400.0 / 724 * seconds, model->start() + minimumFragment));
  }
}

TEST_F(HandleGrab, WithTheHandlesTogetherOnlyASliverLeftOfTheEndGrabsTheStart) {
  show(3600);  // half a second is a tenth of a point
  for (int i = 0; i < 60; ++i) {
    const double start = 1000 + i * 0.31;
    select(start, start + minimumFragment);
    const int sliver = firstColumnOf(view.startHandle());
    const int end = firstColumnOf(view.endHandle());
    ASSERT_GE(sliver, 0) << start;
    EXPECT_GT(end, sliver) << start;
    EXPECT_LE(x(end) - x(sliver), 2 + 1 / ratio()) << start;
    for (int column = end; column < end + static_cast<int>(27 * ratio()); ++column) {
      ASSERT_EQ(grabbed(column), &view.endHandle()) << start << " at " << x(column);
    }
  }
}

TEST_F(HandleGrab, APressOnAnyPixelOfAHandlesStripGrabsIt) {
  show(180);
  for (const double start : {50.0, 50.1, 50.2, 61.7, 80.0}) {
    select(start, start + 60);
    const double startX = position(model->start(), 180, view.width());
    const double endX = position(model->end(), 180, view.width());
    for (int column = 0; column < columnCount(); ++column) {
      const auto within = [&](double handle, double reach) {
        return std::abs(x(column) + 0.5 / ratio() - handle) <= reach;
      };
      // Which side of an edge a pixel across it falls on is the toolkit's.
      if (within(startX, 13)) {
        EXPECT_EQ(grabbed(column), &view.startHandle()) << x(column);
      } else if (within(endX, 13)) {
        EXPECT_EQ(grabbed(column), &view.endHandle()) << x(column);
      } else if (!within(startX, 15.5) && !within(endX, 15.5)) {
        EXPECT_EQ(grabbed(column), nullptr) << x(column);
      }
    }
  }
}

}  // namespace
}  // namespace quibel
