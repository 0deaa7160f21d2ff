#include <QApplication>

#include "app/ContentView.h"
#include "app/DesktopAppearance.h"
#include "app/Window.h"
#include "tests/views/EditorFixture.h"
#include "tests/views/Find.h"
#include "views/ActionButton.h"
#include "views/TextLabel.h"
#include "views/Theme.h"

namespace quibel {
namespace {

/// The window while the desktop's scale of text changes.
class LargeTextTest : public testing::Test {
 protected:
  LargeTextTest() {
    platform::Platform::setStandard(&machine);
    machine.songs["/musica/canción.mp3"] = fake::Song::lasting(60);
    window = std::make_unique<Window>();
    window->show();
    settle();
  }
  ~LargeTextTest() override {
    window.reset();
    QApplication::setFont(font_);
  }

  static void settle() {
    for (int turn = 0; turn < 3; ++turn) QCoreApplication::processEvents();
  }

  void scaleText(double scale) {
    Q_EMIT settings_.read(
        {{settings::gnomeInterface, {{QStringLiteral("text-scaling-factor"), scale}}}});
    settle();
    const auto* const title = label(*window, "Tu canción favorita, convertida en tono para iPhone");
    EXPECT_EQ(title->font(), quibel::font(TextStyle::body));
  }

  void load() {
    window->content().editor().load(platform::FileURL("/musica/canción.mp3"));
    machine.settle();
    settle();
  }

  /// Every text and button that shows has the room that it needs, inside the window.
  void expectNothingCut() {
    int seen = 0;
    for (auto* view : window->findChildren<QWidget*>()) {
      const auto* const label = qobject_cast<TextLabel*>(view);
      if (!view->isVisible() || !(label || qobject_cast<ActionButton*>(view))) continue;
      ++seen;
      const auto text = label ? label->text() : view->accessibleName();
      const auto place = placeIn(*window, view);
      EXPECT_TRUE(window->rect().contains(place)) << text.toStdString();
      EXPECT_GE(view->width(), view->sizeHint().width()) << text.toStdString();
      EXPECT_GE(view->height(), view->sizeHint().height()) << text.toStdString();
    }
    EXPECT_GE(seen, 5);
  }

  fake::Platform machine;
  std::unique_ptr<Window> window;

 private:
  const QFont font_ = QApplication::font();
  DesktopSettings settings_{QDBusConnection(QStringLiteral("no bus"))};
  const DesktopAppearance appearance_{settings_};
};

TEST_F(LargeTextTest, CutsNothingOnTheWelcomeScreen) {
  for (const double scale : {1.5, 2.0}) {
    scaleText(scale);
    expectNothingCut();
  }
}

TEST_F(LargeTextTest, CutsNothingInTheWorkspace) {
  load();
  for (const double scale : {1.5, 2.0}) {
    scaleText(scale);
    expectNothingCut();
  }
}

TEST_F(LargeTextTest, ThatWasLargeBeforeASongCutsNothing) {
  scaleText(2);
  load();
  expectNothingCut();
}

TEST_F(LargeTextTest, LetsTheWindowBeAsSmallAsBeforeOnceItIsSmallAgain) {
  load();
  scaleText(2);
  EXPECT_GT(window->minimumSizeHint().height(), 580);
  scaleText(1);
  window->resize(100, 100);
  EXPECT_EQ(window->size(), QSize(780, 580));
}

}  // namespace
}  // namespace quibel
