#include <QAccessible>
#include <QPaintEvent>

#include "tests/views/EditorFixture.h"
#include "views/HandleView.h"
#include "views/Motion.h"
#include "views/Theme.h"
#include "views/WaveformSelectionView.h"

namespace quibel {
namespace {

/// A strip 720 points wide on a song, so that 4 points are a second of a song
/// of three minutes. Every change of the model refreshes it at once.
class SelectionView : public EditorFixture {
 protected:
  void SetUp() override {
    view.resize(720, 220);
    view.show();
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

  /// Presses at x, wherever that lands, and refreshes.
  void press(double x, Qt::MouseButton button = Qt::LeftButton) {
    pressOn(view.childAt(QPoint(static_cast<int>(x), 100)), x, button);
  }
  void pressOn(QWidget* widget, double x, Qt::MouseButton button = Qt::LeftButton) {
    target = widget;
    pressed = button;
    send(QEvent::MouseButtonPress, x, button);
  }
  void drag(double x) { send(QEvent::MouseMove, x, Qt::NoButton); }
  void release(double x) {
    pressed = Qt::NoButton;
    send(QEvent::MouseButtonRelease, x, Qt::LeftButton);
  }

  void send(QEvent::Type type, double x, Qt::MouseButton button) {
    if (!target) return;
    const QPointF inStrip(x, 100);
    QMouseEvent event(type, target->mapFrom(&view, inStrip), view.mapToGlobal(inStrip), button,
                      pressed, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &event);
    refresh();
  }

  HandleView* handleAt(int x) { return qobject_cast<HandleView*>(view.childAt(x, 100)); }

  WaveformSelectionView view{model->startBinding(), model->endBinding()};
  QWidget* target = nullptr;
  Qt::MouseButtons pressed = Qt::NoButton;
};

TEST_F(SelectionView, AHandleFollowsTheDragFromTheFirstPress) {
  show(180);
  press(165);  // the end handle stands at 160
  EXPECT_DOUBLE_EQ(model->end(), 41.25);
  drag(200);
  EXPECT_DOUBLE_EQ(model->end(), 50);
  drag(204);
  EXPECT_DOUBLE_EQ(model->end(), 51);
  release(400);
  EXPECT_DOUBLE_EQ(model->end(), 51);
}

TEST_F(SelectionView, OnlyTheLeftButtonDrags) {
  show(180);
  press(160, Qt::RightButton);
  drag(300);
  EXPECT_EQ(model->end(), 40);
}

TEST_F(SelectionView, WithoutADurationADragOfTheStartWritesTheEndsGapOrZero) {
  refresh();
  pressOn(&view.startHandle(), 5);  // itself, as the end handle lies above it
  EXPECT_EQ(model->start(), -0.5);
  select(0.25, 3);
  drag(500);
  EXPECT_EQ(model->start(), 0);
  select(0.25, 0.25);
  drag(-500);
  EXPECT_EQ(model->start(), -0.25);
}

TEST_F(SelectionView, WithoutADurationADragOfTheEndWritesTheStartsGapOrZero) {
  refresh();
  press(5);
  EXPECT_EQ(model->end(), 0.5);
  select(0.25, 3);
  drag(500);
  EXPECT_EQ(model->end(), 0.75);
  select(-3, 3);
  drag(-500);
  EXPECT_EQ(model->end(), 0);
}

TEST_F(SelectionView, WithoutADurationTheKeysMoveTheHandlesAsADragDoes) {
  select(0.25, 3);
  view.startHandle().moveTo(10);
  EXPECT_EQ(model->start(), 0);
  view.endHandle().moveTo(10);
  EXPECT_EQ(model->end(), 0.5);
}

TEST_F(SelectionView, WithoutADurationBothHandlesSitAtTheLeftEdge) {
  refresh();
  EXPECT_EQ(view.startHandle().x(), -14);
  EXPECT_EQ(view.endHandle().x(), -14);
}

TEST_F(SelectionView, ASongShorterThanTheGapIsWrittenAsComputed) {
  show(0.3);
  press(5);
  EXPECT_DOUBLE_EQ(model->start(), 0.3 - 0.5);
  drag(480);
  EXPECT_DOUBLE_EQ(model->start(), 0.3 - 0.5);
  release(480);
  select(0.1, 0.3);
  press(717);
  drag(480);
  EXPECT_DOUBLE_EQ(model->end(), 0.6);
}

TEST_F(SelectionView, DraggingPastTheEdgesGivesTheSongsBounds) {
  show(180);
  press(160);
  drag(5000);
  EXPECT_EQ(model->end(), 180);
  release(5000);
  select(20, 60);
  press(80);
  drag(-3000);
  EXPECT_EQ(model->start(), 0);
}

TEST_F(SelectionView, DraggingOntoTheOtherHandleStopsHalfASecondBeforeIt) {
  show(180);
  select(20, 60);
  press(80);
  drag(700);
  EXPECT_EQ(model->start(), 59.5);
  release(700);
  select(20, 60);
  press(240);
  drag(0);
  EXPECT_EQ(model->end(), 20.5);
}

TEST_F(SelectionView, APressAnywhereOnTheStripOfAHandleGrabsIt) {
  show(180);
  select(50, 150);  // at 200 and 600
  EXPECT_EQ(handleAt(200 - 14), &view.startHandle());
  EXPECT_EQ(handleAt(200 + 13), &view.startHandle());
  EXPECT_EQ(handleAt(200 - 15), nullptr);
  EXPECT_EQ(handleAt(200 + 14), nullptr);
  EXPECT_EQ(handleAt(600 - 14), &view.endHandle());
  EXPECT_EQ(handleAt(600 + 13), &view.endHandle());
  EXPECT_EQ(view.startHandle().height(), 220);
}

TEST_F(SelectionView, AtTheViewsEdgesHalfOfAHandlesStripIsCutOff) {
  show(30);  // the fragment is the whole song
  EXPECT_EQ(view.startHandle().geometry(), QRect(-14, 0, 28, 220));
  EXPECT_EQ(view.endHandle().geometry(), QRect(720 - 14, 0, 28, 220));
  EXPECT_EQ(handleAt(13), &view.startHandle());
  EXPECT_EQ(handleAt(719), &view.endHandle());
}

TEST_F(SelectionView, TheFragmentMayBeDraggedBeyondFortySeconds) {
  show(180);
  press(160);
  drag(400);
  EXPECT_EQ(model->start(), 0);
  EXPECT_EQ(model->end(), 100);
}

TEST_F(SelectionView, WhereTheStripsOverlapAPressGrabsTheEndHandle) {
  show(180);
  select(50, 54);  // at 200 and 216
  EXPECT_EQ(handleAt(205), &view.endHandle());
  EXPECT_EQ(handleAt(213), &view.endHandle());
  EXPECT_EQ(handleAt(201), &view.startHandle());
}

TEST_F(SelectionView, MovingTheStartDoesNotMoveTheEnd) {
  show(180);
  press(0);
  drag(100);
  EXPECT_EQ(model->start(), 25);
  EXPECT_EQ(model->end(), 40);
}

TEST_F(SelectionView, TheWidthOfTheMomentCounts) {
  show(180);
  view.resize(1440, 220);
  EXPECT_EQ(view.endHandle().x(), 320 - 14);
  press(320);
  drag(800);
  EXPECT_EQ(model->end(), 100);
}

TEST_F(SelectionView, ThePointersShapeSaysThatAHandleMovesSideways) {
  EXPECT_EQ(view.startHandle().cursor().shape(), Qt::SizeHorCursor);
  EXPECT_EQ(view.endHandle().cursor().shape(), Qt::SizeHorCursor);
}

struct Key {
  Qt::Key key;
  Qt::KeyboardModifiers modifiers;
  double end;
};

TEST_F(SelectionView, TheKeysMoveAHandleByTheRulesOfADrag) {
  show(180);
  for (const auto& [key, modifiers, end] : std::vector<Key>{{Qt::Key_Right, {}, 40.1},
                                                            {Qt::Key_Left, {}, 39.9},
                                                            {Qt::Key_Up, {}, 40.1},
                                                            {Qt::Key_Down, {}, 39.9},
                                                            {Qt::Key_Right, Qt::ShiftModifier, 41},
                                                            {Qt::Key_Left, Qt::ShiftModifier, 39},
                                                            {Qt::Key_PageUp, {}, 45},
                                                            {Qt::Key_PageDown, {}, 35},
                                                            {Qt::Key_Home, {}, 20.5},
                                                            {Qt::Key_End, {}, 180},
                                                            {Qt::Key_Left, Qt::AltModifier, 40},
                                                            {Qt::Key_A, {}, 40}}) {
    select(20, 40);
    QTest::keyClick(&view.endHandle(), key, modifiers);
    EXPECT_DOUBLE_EQ(model->end(), end) << key;
  }
  select(20, 40);
  QTest::keyClick(&view.startHandle(), Qt::Key_End);
  EXPECT_EQ(model->start(), 39.5);
  QTest::keyClick(&view.startHandle(), Qt::Key_Home);
  EXPECT_EQ(model->start(), 0);
}

TEST_F(SelectionView, EachHandleIsASpinButtonForAssistiveTechnology) {
  show(180);
  select(20, 60);
  auto* const start = QAccessible::queryAccessibleInterface(&view.startHandle());
  ASSERT_TRUE(start && start->valueInterface());
  EXPECT_EQ(start->role(), QAccessible::SpinBox);
  EXPECT_EQ(start->text(QAccessible::Name).toStdString(), "Inicio del fragmento");
  EXPECT_EQ(start->valueInterface()->currentValue().toDouble(), 20);
  EXPECT_EQ(start->valueInterface()->minimumValue().toDouble(), 0);
  EXPECT_EQ(start->valueInterface()->maximumValue().toDouble(), 59.5);

  auto* const end = QAccessible::queryAccessibleInterface(&view.endHandle());
  ASSERT_TRUE(end && end->valueInterface());
  EXPECT_EQ(end->text(QAccessible::Name).toStdString(), "Final del fragmento");
  EXPECT_EQ(end->valueInterface()->minimumValue().toDouble(), 20.5);
  EXPECT_EQ(end->valueInterface()->maximumValue().toDouble(), 180);
  end->valueInterface()->setCurrentValue(0);
  EXPECT_EQ(model->end(), 20.5);
}

TEST_F(SelectionView, AHandlesTextIsItsTimeAndTheFragmentsLengthInSpanish) {
  show(180);
  select(19.5, 70);
  auto* const start = QAccessible::queryAccessibleInterface(&view.startHandle());
  const std::string spoken =
      "19,5 segundos, fragmento de 50,5 segundos, solo se guardan 40 segundos";
  EXPECT_EQ(start->text(QAccessible::Value).toStdString(), spoken);
  ASSERT_TRUE(start->textInterface());
  EXPECT_EQ(start->textInterface()->text(0, start->textInterface()->characterCount()).toStdString(),
            spoken);
  EXPECT_EQ(start->textInterface()->text(0, 4).toStdString(), "19,5");
  auto* const end = QAccessible::queryAccessibleInterface(&view.endHandle());
  select(19.5, 40);
  EXPECT_EQ(end->text(QAccessible::Value).toStdString(), "40 segundos, fragmento de 20,5 segundos");
}

TEST_F(SelectionView, OnlyTheKeyboardsFocusIsShown) {
  view.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
  // One of them may have had the focus from the window's activation on.
  for (auto* handle : {&view.endHandle(), &view.startHandle()}) {
    handle->setFocus(Qt::MouseFocusReason);
    ASSERT_TRUE(handle->hasFocus());
    EXPECT_FALSE(handle->state().focused);
  }
  view.endHandle().setFocus(Qt::TabFocusReason);
  EXPECT_TRUE(view.endHandle().state().focused);
  view.startHandle().setFocus(Qt::TabFocusReason);
  EXPECT_TRUE(view.startHandle().state().focused);
  EXPECT_FALSE(view.endHandle().state().focused);
}

/// The colour of a handle's bar, as the strip shows it.
QRgb barColor(WaveformSelectionView& view, double x) {
  QImage image(view.size(), QImage::Format_RGB32);
  image.fill(Qt::white);
  view.render(&image, {}, {}, QWidget::DrawChildren);
  return image.pixel(static_cast<int>(x), 30);
}

TEST_F(SelectionView, AHandleHasAFaceUnderThePointer) {
  show(180);
  select(50, 150);  // at 200 and 600
  const auto palette = colors(view.palette());
  const auto pointer = [&](int to) {
    QMouseEvent move(QEvent::MouseMove, QPointF(to, 100), view.mapToGlobal(QPointF(to, 100)),
                     Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(view.windowHandle(), &move);
  };
  pointer(300);
  EXPECT_EQ(barColor(view, 200), palette.green.rgb());
  pointer(205);
  EXPECT_EQ(barColor(view, 200), palette.greenHovered.rgb());
  EXPECT_EQ(barColor(view, 600), palette.orange.rgb());
  pointer(605);
  EXPECT_EQ(barColor(view, 200), palette.green.rgb());
  EXPECT_EQ(barColor(view, 600), palette.orangeHovered.rgb());
}

/// Counts the areas that are painted again.
class PaintCount : public QObject {
 public:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Paint) region += static_cast<QPaintEvent*>(event)->region();
    return false;
  }
  QRegion region;
};

TEST_F(SelectionView, ALightSweepsOverTheStripOnlyWhileASongIsAnalysed) {
  turn();
  PaintCount paints;
  view.installEventFilter(&paints);
  const auto movesOn = [&] {
    paints.region = {};
    return QTest::qWaitFor([&] { return !paints.region.isEmpty(); });
  };
  EXPECT_FALSE(view.isSweeping());
  view.setLoading(true);
  EXPECT_TRUE(view.isSweeping());
  EXPECT_TRUE(movesOn());
  EXPECT_TRUE(movesOn());
  view.setLoading(false);
  EXPECT_FALSE(view.isSweeping());

  view.setLoading(true);
  view.hide();
  EXPECT_FALSE(view.isSweeping()) << "unseen";
  view.show();
  EXPECT_TRUE(view.isSweeping());
  setMotionReduced(true);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !view.isSweeping(); }));
  view.setLoading(false);
  view.setLoading(true);
  EXPECT_FALSE(view.isSweeping()) << "with less motion wanted";
  setMotionReduced(false);
}

TEST_F(SelectionView, ARefreshWithoutAChangePaintsNothing) {
  show(180);
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
  turn();
  PaintCount paints;
  view.installEventFilter(&paints);
  refresh();
  turn();
  EXPECT_TRUE(paints.region.isEmpty());
  select(20, 40);
  turn();
  EXPECT_FALSE(paints.region.isEmpty());
  EXPECT_LT(paints.region.boundingRect().width(), 720 / 2);
}

}  // namespace
}  // namespace quibel
