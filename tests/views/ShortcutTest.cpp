#include "tests/views/ContentFixture.h"

namespace quibel {
namespace {

/// Keys that do what a button does, wherever the focus is.
class Shortcut : public ContentFixture {
 protected:
  void SetUp() override {
    ContentFixture::SetUp();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
  }

  void type(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(view.windowHandle(), key, modifiers);
    turn();
  }
  void typeOpen() { type(Qt::Key_O, Qt::ControlModifier); }
  void typeSave() { type(Qt::Key_S, Qt::ControlModifier); }
};

TEST_F(Shortcut, ControlOAsksForASongOnBothScreens) {
  typeOpen();
  EXPECT_EQ(machine.openPanel->title, "Selecciona una canción");
  load(90);
  turn();
  machine.openPanel.reset();
  typeOpen();
  EXPECT_TRUE(machine.openPanel);
}

TEST_F(Shortcut, ControlOIsThereAlsoWhileASongLoads) {
  model->load(addSong("/a.mp3", 90));
  turn();
  typeOpen();
  EXPECT_TRUE(machine.openPanel);
}

TEST_F(Shortcut, ControlSCreatesTheRingtoneAtOnce) {
  load(90);
  turn();
  machine.savePanelAnswer = platform::FileURL("/tonos/a.m4r");
  QTest::keyClick(view.windowHandle(), Qt::Key_S, Qt::ControlModifier);
  EXPECT_TRUE(model->isExporting());
}

TEST_F(Shortcut, ControlSDoesNothingWithoutASongAndWhileBusy) {
  typeSave();
  EXPECT_FALSE(machine.savePanel) << "no song";
  model->load(addSong("/a.mp3", 90));
  turn();
  typeSave();
  EXPECT_FALSE(machine.savePanel) << "loading";
  machine.settle();
  turn();
  startExport();
  turn();
  machine.savePanel.reset();
  typeSave();
  EXPECT_FALSE(machine.savePanel) << "exporting";
}

TEST_F(Shortcut, SpaceOnAHandlePlaysAndStops) {
  load(90);
  turn();
  for (const char* name : {"Inicio del fragmento", "Final del fragmento"}) {
    handle(name)->setFocus();
    type(Qt::Key_Space);
    EXPECT_TRUE(model->isPlaying()) << name;
    type(Qt::Key_Space);
    EXPECT_FALSE(model->isPlaying()) << name;
  }
}

TEST_F(Shortcut, SpaceHeldDownOnAHandlePlaysOnce) {
  load(90);
  turn();
  handle("Inicio del fragmento")->setFocus();
  type(Qt::Key_Space);
  QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Space, {}, QStringLiteral(" "), true);
  QCoreApplication::sendEvent(view.windowHandle(), &repeated);
  EXPECT_TRUE(model->isPlaying());
}

TEST_F(Shortcut, SpaceOnAButtonPressesThatButtonAlone) {
  load(90);
  turn();
  find("Cambiar canción…")->setFocus();
  type(Qt::Key_Space);
  EXPECT_TRUE(machine.openPanel);
  EXPECT_FALSE(model->isPlaying());
}

TEST_F(Shortcut, WhileTheAlertShowsNoneDoesAnything) {
  load(90);
  turn();
  handle("Inicio del fragmento")->setFocus();
  ASSERT_NE(failToLoad(), nullptr);
  typeOpen();
  typeSave();
  EXPECT_FALSE(machine.openPanel);
  EXPECT_FALSE(machine.savePanel);
  QKeyEvent space(QEvent::KeyPress, Qt::Key_Space, {}, QStringLiteral(" "));
  QCoreApplication::sendEvent(view.windowHandle(), &space);
  EXPECT_FALSE(model->isPlaying());
  EXPECT_TRUE(model->showAlert());
}

}  // namespace
}  // namespace quibel
