#include <QDialog>

#include "app/Window.h"
#include "app/WindowControls.h"
#include "tests/views/ContentFixture.h"
#include "views/ActionButton.h"

namespace quibel {
namespace {

class Focus : public ContentFixture {
 protected:
  void SetUp() override {
    ContentFixture::SetUp();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
  }

  ActionButton* action(const char* title) { return static_cast<ActionButton*>(find(title)); }
  void type(Qt::Key key) {
    QTest::keyClick(view.windowHandle(), key);
    turn();
  }
};

TEST_F(Focus, AtTheStartTheMainButtonHasItAndShowsIt) {
  EXPECT_TRUE(action("Seleccionar canción…")->hasFocus());
  EXPECT_TRUE(action("Seleccionar canción…")->isKeyboardFocused());
}

TEST_F(Focus, AClickOnTheButtonThatHasItHidesItAndAKeyShowsItAgain) {
  auto* const choose = action("Seleccionar canción…");
  QTest::mouseClick(choose, Qt::LeftButton);
  EXPECT_FALSE(choose->isKeyboardFocused());
  type(Qt::Key_Space);
  EXPECT_TRUE(choose->isKeyboardFocused());
}

TEST_F(Focus, GoesOnToTheFirstHandleAsItWasShown) {
  auto* const choose = action("Seleccionar canción…");
  load(90);
  turn();
  auto* const start = static_cast<HandleView*>(handle("Inicio del fragmento"));
  EXPECT_TRUE(start->hasFocus());
  EXPECT_TRUE(start->isKeyboardFocused());
  EXPECT_FALSE(choose->isVisible());
}

TEST_F(Focus, IsNotShownOnTheHandleAfterADrag) {
  view.findChild<WelcomeScreen*>()->setDropping(true);
  view.findChild<WelcomeScreen*>()->setDropping(false);
  load(90);
  turn();
  auto* const start = static_cast<HandleView*>(handle("Inicio del fragmento"));
  EXPECT_TRUE(start->hasFocus());
  EXPECT_FALSE(start->isKeyboardFocused());
}

/// The export button, pressed by a key, and its export under way.
class FocusOfAnExport : public Focus {
 protected:
  void SetUp() override {
    Focus::SetUp();
    load(90);
    turn();
    machine.savePanelAnswer = platform::FileURL("/tonos/a.m4r");
    create = action("Crear tono .m4r…");
    loop = action("Escuchar en bucle");
    create->setFocus(Qt::TabFocusReason);
    type(Qt::Key_Return);
    ASSERT_TRUE(model->isExporting());
  }

  void finish(platform::ExportStatus status = platform::ExportStatus::completed) {
    machine.sessions.back()->finish(status);
    machine.settle();
    turn();
  }

  ActionButton* create = nullptr;
  ActionButton* loop = nullptr;
};

TEST_F(FocusOfAnExport, ComesBackToTheButtonAfterwards) {
  EXPECT_TRUE(loop->hasFocus());
  EXPECT_TRUE(loop->isKeyboardFocused());
  finish();
  EXPECT_TRUE(create->hasFocus());
  EXPECT_TRUE(create->isKeyboardFocused());
}

TEST_F(FocusOfAnExport, ComesBackAfterTheAlertOfAFailureToo) {
  finish(platform::ExportStatus::failed);
  ASSERT_NE(alert(), nullptr);
  type(Qt::Key_Return);
  EXPECT_EQ(alert(), nullptr);
  EXPECT_TRUE(create->hasFocus());
}

TEST_F(FocusOfAnExport, StaysWhereItWasMovedMeanwhile) {
  handle("Inicio del fragmento")->setFocus(Qt::TabFocusReason);
  loop->setFocus(Qt::TabFocusReason);
  finish();
  EXPECT_TRUE(loop->hasFocus());
}

TEST_F(FocusOfAnExport, StaysOnTheLoopButtonThatWasPressedMeanwhile) {
  type(Qt::Key_Return);
  EXPECT_TRUE(model->isPlaying());
  finish();
  EXPECT_TRUE(loop->hasFocus());
}

/// The whole window, with its own controls.
class WindowFocus : public testing::Test {
 protected:
  WindowFocus() {
    platform::Platform::setStandard(&machine);
    window = std::make_unique<Window>();
    window->show();
  }

  void SetUp() override { ASSERT_TRUE(QTest::qWaitForWindowActive(window.get())); }

  fake::Platform machine;
  std::unique_ptr<Window> window;
};

TEST_F(WindowFocus, TabPassesTheWindowsControlsBy) {
  auto* const choose = button(*window, "Seleccionar canción…");
  for (const auto key : {Qt::Key_Tab, Qt::Key_Backtab}) {
    QTest::keyClick(window->windowHandle(), key);
    EXPECT_TRUE(choose->hasFocus());
  }
}

TEST_F(WindowFocus, TheControlsLieAboveTheAlertAndTheAlertAboveTheRest) {
  auto& editor = window->content().editor();
  editor.load(platform::FileURL("/falta.mp3"));
  machine.settle();
  QCoreApplication::processEvents();
  const auto* const sheet = window->findChild<AlertSheet*>();
  ASSERT_TRUE(sheet && sheet->isVisible());
  for (const auto* control : window->findChildren<WindowControl*>()) {
    EXPECT_EQ(window->childAt(placeIn(*window, control).center()), control);
  }
  const auto* const change = button(*window, "Cambiar canción…");
  EXPECT_EQ(window->childAt(placeIn(*window, change).center()), sheet);
  ASSERT_EQ(QTest::qWaitForWindowActive(window.get()), true);
  QTest::mouseClick(window->findChildren<WindowControl*>().first(), Qt::LeftButton);
  EXPECT_TRUE(sheet->isAncestorOf(window->focusWidget()));
}

TEST_F(WindowFocus, IsTheWindowsAgainAfterAPanel) {
  QDialog panel(window.get());
  panel.setWindowModality(Qt::WindowModal);
  panel.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&panel));
  // Nothing here gives the focus back by itself to a window that is not asked for.
  QWidget other;
  other.show();
  other.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
  panel.hide();
  EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
  EXPECT_TRUE(button(*window, "Seleccionar canción…")->hasFocus());
}

TEST_F(WindowFocus, IsTheWindowsAgainAfterAPanelWhoseCompletionsStillShow) {
  QDialog panel(window.get());
  panel.setWindowModality(Qt::WindowModal);
  panel.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&panel));
  QWidget completions(&panel, Qt::Popup);
  completions.show();
  ASSERT_EQ(QApplication::activePopupWidget(), &completions);
  panel.hide();
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
  EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
}

}  // namespace
}  // namespace quibel
