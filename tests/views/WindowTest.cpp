#include <QMouseEvent>
#include <QToolTip>
#include <QWindow>
#include <map>

#include "app/ContentView.h"
#include "app/DesktopAppearance.h"
#include "app/Window.h"
#include "app/WindowControls.h"
#include "app/WindowDrag.h"
#include "app/WindowShadow.h"
#include "tests/views/EditorFixture.h"
#include "tests/views/Find.h"
#include "views/Theme.h"

namespace quibel {
namespace {

class WindowTest : public testing::Test {
 protected:
  WindowTest() {
    platform::Platform::setStandard(&machine);
    window = std::make_unique<Window>();
    window->show();
    QCoreApplication::processEvents();
  }

  WindowControl* control(const char* name) {
    for (auto* found : window->findChildren<WindowControl*>()) {
      if (found->accessibleName() == QString::fromUtf8(name)) return found;
    }
    return nullptr;
  }

  fake::Platform machine;
  std::unique_ptr<Window> window;
};

TEST_F(WindowTest, HasNoTitleBarAndItsContentReachesTheTop) {
  EXPECT_TRUE(window->windowFlags() & Qt::FramelessWindowHint);
  EXPECT_EQ(window->windowTitle().toStdString(), "Quibel");
  EXPECT_EQ(window->content().geometry(), window->rect());
}

TEST_F(WindowTest, CannotBeMadeSmallerThan780By580) {
  window->resize(100, 100);
  EXPECT_EQ(window->size(), QSize(780, 580));
  EXPECT_EQ(window->windowHandle()->minimumSize(), QSize(780, 580));
}

TEST_F(WindowTest, ItsControlsLieInTheStripAtTheTop) {
  for (const char* name : {"Minimizar", "Maximizar", "Cerrar"}) {
    ASSERT_NE(control(name), nullptr) << name;
    const auto place = placeIn(*window, control(name));
    EXPECT_GE(place.top(), 0);
    EXPECT_LT(place.bottom(), 28);
    EXPECT_LT(place.right(), window->width());
  }
  window->resize(1000, 700);
  EXPECT_GT(placeIn(*window, control("Cerrar")).right(), 980);
}

TEST_F(WindowTest, ItsControlsAreThoseThatTheDesktopWantsOnTheSideThatItWants) {
  window->arrangeButtons(buttonLayout(QStringLiteral("close,minimize:appmenu")));
  QCoreApplication::processEvents();
  EXPECT_LT(placeIn(*window, control("Cerrar")).right(), 40);
  EXPECT_LT(placeIn(*window, control("Cerrar")).right(),
            placeIn(*window, control("Minimizar")).left());
  EXPECT_LT(placeIn(*window, control("Minimizar")).right(), 70);
  EXPECT_FALSE(control("Maximizar")->isVisible());
  window->arrangeButtons({});
  QCoreApplication::processEvents();
  EXPECT_TRUE(control("Maximizar")->isVisible());
  EXPECT_GT(placeIn(*window, control("Cerrar")).left(), window->width() - 40);
}

TEST_F(WindowTest, BetweenItsControlsTheStripIsGround) {
  QTest::mouseDClick(window->childAt(390, 14), Qt::LeftButton, {}, QPoint(380, 10));
  EXPECT_TRUE(window->isMaximized());
}

/// Counts how often each view is painted.
class PaintCount : public QObject {
 public:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint) ++of[watched];
    return false;
  }
  std::map<QObject*, int> of;
};

TEST_F(WindowTest, AllItsControlsArePaintedAgainWhenItBecomesActiveOrInactive) {
  QWidget other;
  other.show();
  other.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
  QCoreApplication::processEvents();
  PaintCount paints;
  const auto controls = window->findChildren<WindowControl*>();
  ASSERT_EQ(controls.size(), 3);
  for (auto* found : controls) found->installEventFilter(&paints);
  const auto count = [&](QObject* found) { return paints.of[found]; };

  window->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
  QCoreApplication::processEvents();
  for (auto* found : controls) EXPECT_GT(count(found), 0) << found->accessibleName().toStdString();
  paints.of.clear();

  other.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
  QCoreApplication::processEvents();
  for (auto* found : controls) EXPECT_GT(count(found), 0) << found->accessibleName().toStdString();
}

TEST_F(WindowTest, TooltipsFollowItsPalette) {
  const auto before = QApplication::palette();
  EXPECT_EQ(QToolTip::palette().color(QPalette::ToolTipBase), colors(before).controlBackground);
  Appearance dark;
  dark.isDark = true;
  QApplication::setPalette(palette(dark, before));
  QCoreApplication::processEvents();
  EXPECT_EQ(QToolTip::palette().color(QPalette::ToolTipBase),
            colors(QApplication::palette()).controlBackground);
  EXPECT_NE(QToolTip::palette().color(QPalette::ToolTipBase), colors(before).controlBackground);
  QApplication::setPalette(before);
}

TEST_F(WindowTest, MaximisesAndRestores) {
  control("Maximizar")->click();
  EXPECT_TRUE(window->isMaximized());
  ASSERT_NE(control("Restaurar"), nullptr);
  control("Restaurar")->click();
  EXPECT_FALSE(window->isMaximized());
  EXPECT_NE(control("Maximizar"), nullptr);
}

TEST_F(WindowTest, ADoubleClickOnTheStripMaximisesAndOneBelowDoesNot) {
  QTest::mouseDClick(window.get(), Qt::LeftButton, {}, QPoint(300, 40));
  EXPECT_FALSE(window->isMaximized());
  QTest::mouseDClick(window.get(), Qt::LeftButton, {}, QPoint(300, 15));
  EXPECT_TRUE(window->isMaximized());
}

TEST_F(WindowTest, ClosingItEndsTheApplication) {
  QMetaObject::invokeMethod(control("Cerrar"), &QAbstractButton::click, Qt::QueuedConnection);
  EXPECT_EQ(QCoreApplication::exec(), 0);
  EXPECT_FALSE(window->isVisible());
}

TEST_F(WindowTest, ClosingItEndsTheLoopOfAnOpenPanelToo) {
  QMetaObject::invokeMethod(
      window.get(),
      [this] {
        QMetaObject::invokeMethod(window.get(), &QWidget::close, Qt::QueuedConnection);
        QEventLoop panel;
        panel.exec();
      },
      Qt::QueuedConnection);
  EXPECT_EQ(QCoreApplication::exec(), 0);
}

TEST_F(WindowTest, TheModelGoesWithIt) {
  auto& announcer = window->content().editor();
  const std::weak_ptr<AudioEditorModel> model = announcer.weak_from_this();
  EXPECT_FALSE(model.expired());
  window.reset();
  EXPECT_TRUE(model.expired());
}

/// The window where the compositor takes a shadow.
class ShadowedWindowTest : public testing::Test {
 protected:
  ShadowedWindowTest() {
    platform::Platform::setStandard(&machine);
    window = std::make_unique<Window>(Frame::shadowed);
    window->show();
    QCoreApplication::processEvents();
  }

  QRect body() const { return window->content().geometry(); }

  /// How opaque the window is at a place of it, 0 … 255.
  int opacityAt(QPoint place) {
    QImage image(window->size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    window->render(&image, {}, {}, QWidget::DrawChildren);
    return qAlpha(image.pixel(place));
  }

  fake::Platform machine;
  std::unique_ptr<Window> window;
};

TEST_F(ShadowedWindowTest, ItsShadowIsBesideTheContentAndNotPartOfItsSize) {
  EXPECT_EQ(body().size(), QSize(780, 580));
  EXPECT_EQ(body(), window->rect().marginsRemoved(shadowMargins));
  window->resize(100, 100);
  EXPECT_EQ(body().size(), QSize(780, 580));
}

TEST_F(ShadowedWindowTest, ItsCornersAreRound) {
  const auto inside = body();
  for (const auto& corner :
       {inside.topLeft(), inside.topRight(), inside.bottomLeft(), inside.bottomRight()})
    EXPECT_LT(opacityAt(corner), 128) << corner.x() << ',' << corner.y();
  // On the diagonal, the arc is 0.3 radii from the corner.
  EXPECT_LT(opacityAt(inside.topLeft() + QPoint(2, 2)), 128);
  EXPECT_EQ(opacityAt(inside.topLeft() + QPoint(5, 5)), 255);
  EXPECT_EQ(opacityAt({inside.center().x(), inside.top()}), 255);
}

TEST_F(ShadowedWindowTest, FillsTheScreenWithoutThemWhenMaximised) {
  window->showMaximized();
  QCoreApplication::processEvents();
  EXPECT_EQ(body(), window->rect());
  EXPECT_EQ(opacityAt({0, 0}), 255);
  window->showNormal();
  QCoreApplication::processEvents();
  EXPECT_EQ(body(), window->rect().marginsRemoved(shadowMargins));
}

TEST_F(ShadowedWindowTest, IsResizedAtItsBodysEdges) {
  const auto cursorAt = [this](QPoint place) {
    QMouseEvent moved(QEvent::MouseMove, place, window->mapToGlobal(place), Qt::NoButton, {}, {});
    QCoreApplication::sendEvent(window->windowHandle(), &moved);
    const auto* const cursor = QGuiApplication::overrideCursor();
    return cursor ? cursor->shape() : Qt::ArrowCursor;
  };
  EXPECT_EQ(cursorAt({body().left() + 2, body().center().y()}), Qt::SizeHorCursor);
  EXPECT_EQ(cursorAt({body().left() + 30, body().center().y()}), Qt::ArrowCursor);
  EXPECT_EQ(cursorAt({body().center().x(), body().bottom() - 2}), Qt::SizeVerCursor);
}

struct Written {
  const char* setting;
  ButtonLayout layout;
};

TEST(ButtonLayout, IsReadAsDesktopsWriteIt) {
  using enum WindowButton;
  for (const auto& [setting, layout] : std::vector<Written>{
           {"appmenu:minimize,maximize,close", {{}, {minimise, maximise, close}}},
           {"appmenu:close", {{}, {close}}},
           {"close,minimize,maximize:", {{close, minimise, maximise}, {}}},
           {"icon,close : shade,maximize,close,close", {{close}, {maximise, close}}},
           {":", {{}, {}}},
           {"", {}},
           {"close", {}}}) {
    EXPECT_EQ(buttonLayout(QString::fromLatin1(setting)), layout) << setting;
  }
}

struct Place {
  QPoint point;
  Qt::Edges edges;
};

TEST(EdgesAt, AreThoseWithinReachAndBothNearACorner) {
  const QSize window(800, 600);
  for (const auto& [point, edges] : std::vector<Place>{{{400, 300}, {}},
                                                       {{0, 300}, Qt::LeftEdge},
                                                       {{4, 300}, Qt::LeftEdge},
                                                       {{5, 300}, {}},
                                                       {{799, 300}, Qt::RightEdge},
                                                       {{795, 300}, Qt::RightEdge},
                                                       {{794, 300}, {}},
                                                       {{400, 0}, Qt::TopEdge},
                                                       {{400, 599}, Qt::BottomEdge},
                                                       {{0, 0}, Qt::LeftEdge | Qt::TopEdge},
                                                       {{13, 0}, Qt::LeftEdge | Qt::TopEdge},
                                                       {{0, 590}, Qt::LeftEdge | Qt::BottomEdge},
                                                       {{799, 599}, Qt::RightEdge | Qt::BottomEdge},
                                                       {{10, 10}, {}}}) {
    EXPECT_EQ(edgesAt(point, window, 5), edges) << point.x() << ',' << point.y();
  }
}

TEST(Resized, MovesOnlyTheDraggedEdges) {
  const QRect before(100, 100, 800, 600);
  const QSize minimum(780, 580);
  EXPECT_EQ(resized(before, Qt::RightEdge, {50, 70}, minimum), QRect(100, 100, 850, 600));
  EXPECT_EQ(resized(before, Qt::LeftEdge | Qt::TopEdge, {-50, -70}, minimum),
            QRect(50, 30, 850, 670));
  EXPECT_EQ(resized(before, Qt::BottomEdge, {50, 70}, minimum), QRect(100, 100, 800, 670));
}

TEST(Resized, StopsAtTheMinimumWithTheOppositeEdgeInPlace) {
  const QRect before(100, 100, 800, 600);
  const QSize minimum(780, 580);
  EXPECT_EQ(resized(before, Qt::RightEdge | Qt::BottomEdge, {-500, -500}, minimum),
            QRect(100, 100, 780, 580));
  EXPECT_EQ(resized(before, Qt::LeftEdge | Qt::TopEdge, {500, 500}, minimum),
            QRect(120, 120, 780, 580));
}

}  // namespace
}  // namespace quibel
