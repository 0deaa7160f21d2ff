#include <QLayout>
#include <set>

#include "app/ContentView.h"
#include "model/Format.h"
#include "tests/views/ContentFixture.h"
#include "views/DisplayText.h"
#include "views/HandleView.h"

namespace quibel {
namespace {

using Content = ContentFixture;

TEST_F(Content, AtLaunchTheWelcomeScreenShowsWithoutAnotherButtonAndNoStatus) {
  EXPECT_TRUE(showsWelcome());
  EXPECT_FALSE(showsWorkspace());
  EXPECT_EQ(button(view, "Cambiar canción…"), nullptr);
  EXPECT_EQ(statusLine(), QString());
  EXPECT_NE(label(view, "Quibel"), nullptr);
  EXPECT_NE(label(view, "Tu canción favorita, convertida en tono para iPhone"), nullptr);
}

TEST_F(Content, TheScreenFollowsTheSongAlone) {
  model->load(addSong("/a.mp3", 90));
  turn();
  EXPECT_TRUE(showsWorkspace()) << "also while it is being analysed";
  EXPECT_FALSE(showsWelcome());
  machine.settle();
  turn();
  EXPECT_TRUE(showsWorkspace());
}

TEST_F(Content, AFailedLoadStaysOnTheWorkspace) {
  model->load(platform::FileURL("/falta.mp3"));
  machine.settle();
  turn();
  EXPECT_TRUE(showsWorkspace());
  EXPECT_NE(alert(), nullptr);
}

TEST_F(Content, TheSongCanBeChangedOnceThereIsOneAlsoWhileBusy) {
  model->load(addSong("/a.mp3", 90));
  turn();
  auto* const change = button(view, "Cambiar canción…");
  ASSERT_NE(change, nullptr);
  EXPECT_TRUE(change->isEnabled());
  change->click();
  EXPECT_TRUE(machine.openPanel);
}

TEST_F(Content, WhileASongLoadsTheStatusLineSaysSo) {
  model->load(addSong("/a.mp3", 90));
  EXPECT_EQ(statusLine().toStdString(), "Analizando audio…");
  EXPECT_TRUE(showsProgress());
  machine.settle();
  EXPECT_EQ(statusLine().toStdString(),
            "Mueve los tiradores verde y naranja para escoger el fragmento.");
  EXPECT_FALSE(showsProgress());
}

TEST_F(Content, WhileAToneIsExportedTheStatusLineSaysSo) {
  load(90);
  startExport();
  EXPECT_EQ(statusLine().toStdString(), "Creando tono…");
  EXPECT_TRUE(showsProgress());
}

TEST_F(Content, WhileBothGoOnTheStatusLineSpeaksOfTheExport) {
  load(90);
  startExport();
  model->load(addSong("/otra.mp3", 90));
  EXPECT_TRUE(model->isLoading());
  EXPECT_EQ(statusLine().toStdString(), "Creando tono…");
}

/// Counts the refreshes that reach a view through the event loop.
class RefreshCount : public QObject {
 public:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::MetaCall) ++count;
    if (event->type() == QEvent::LayoutRequest) ++layouts;
    return false;
  }
  int count = 0;
  int layouts = 0;
};

TEST_F(Content, HoweverMuchChangesInATurnTheViewsAreRefreshedOnce) {
  RefreshCount refreshes;
  view.installEventFilter(&refreshes);
  model->load(addSong("/a.mp3", 60));
  machine.settle();
  model->endBinding().set(30);
  EXPECT_EQ(label(view, "00:30.0"), nullptr) << "not before the next turn";
  turn();
  EXPECT_EQ(refreshes.count, 1);
  EXPECT_NE(label(view, "00:30.0"), nullptr);
  turn();
  EXPECT_EQ(refreshes.count, 1);
  model->endBinding().set(31);
  turn();
  EXPECT_EQ(refreshes.count, 2);
}

TEST_F(Content, TheReadOutsFollowEachHandleWhileItIsDragged) {
  load(90);
  model->startBinding().set(10);
  turn();
  for (auto* handle : view.findChildren<HandleView*>()) {
    const QPoint middle = handle->rect().center();
    QTest::mousePress(handle, Qt::LeftButton, {}, middle);
    std::set<double> values;
    for (int step = 0; step < 3; ++step) {
      QTest::mouseMove(handle, middle + QPoint(30, 0));
      turn();
      EXPECT_TRUE(values.insert(handle->value()).second) << "it moves at every step";
      const auto start = model->start();
      const auto end = model->end();
      for (const double time : {start, end - start, end}) {
        EXPECT_EQ(texts(view).count(displayText(format(time))), 1) << time;
      }
    }
    QTest::mouseRelease(handle, Qt::LeftButton, {}, middle);
  }
}

TEST_F(Content, ATickOfTheLoopLaysNothingOut) {
  load(60);
  model->togglePreview();
  layOut();
  RefreshCount refreshes;
  view.installEventFilter(&refreshes);
  machine.players.back()->currentTime = 1.5;
  machine.timers.back()->fire();
  layOut();
  EXPECT_EQ(model->playhead(), 1.5);
  EXPECT_EQ(refreshes.count, 1);
  EXPECT_EQ(refreshes.layouts, 0);
}

TEST_F(Content, ThreeRowsTwentyPointsApartIn28PointsOfPadding) {
  const auto rows = [this] {
    std::vector<QRect> places;
    for (int i = 0; i < view.layout()->count(); ++i) {
      if (auto* row = view.layout()->itemAt(i)->widget()) places.push_back(row->geometry());
    }
    return places;
  };
  const auto welcome = rows();
  ASSERT_EQ(welcome.size(), 3U);
  EXPECT_EQ(welcome[0].topLeft(), QPoint(28, 28));
  EXPECT_EQ(welcome[0].right(), view.width() - 28 - 1);
  EXPECT_EQ(welcome[1].top() - (welcome[0].bottom() + 1), 20);
  EXPECT_EQ(welcome[2].top() - (welcome[1].bottom() + 1), 20);
  EXPECT_EQ(welcome[2].bottom(), view.height() - 28 - 1);
}

TEST_F(Content, InATallWindowTheWorkspaceKeepsItsHeightInTheMiddle) {
  load(90);
  turn();
  auto* const workspace = view.findChild<WorkspaceScreen*>();
  view.resize(1000, 1000);
  turn();
  EXPECT_EQ(workspace->height(), workspace->sizeHint().height());
  const int top = view.layout()->itemAt(1)->widget()->y();
  auto* const status = view.layout()->itemAt(3)->widget();
  EXPECT_NEAR(top, view.height() - 1 - status->geometry().bottom(), 1);
}

TEST_F(Content, InATallWindowTheWelcomeScreenTakesTheRoom) {
  view.resize(1000, 1000);
  turn();
  EXPECT_GT(view.findChild<WelcomeScreen*>()->height(), 800);
}

TEST_F(Content, InTheSmallestWindowNothingMovesWhenTheScreenChanges) {
  const auto before = QApplication::font();
  for (const double points : {6.0, 7.0, 8.0, 8.5, 9.0, 9.5, 10.0, 14.0}) {
    auto font = before;
    font.setPointSizeF(points);
    QApplication::setFont(font);
    auto own = std::make_shared<AudioEditorModel>(machine);
    ContentView content(own);
    content.resize(content.minimumSizeHint());
    content.show();
    turn();
    const auto place = [&](int row) { return content.layout()->itemAt(row)->widget()->geometry(); };
    const auto header = place(1);
    const int top = place(2).top();
    own->load(addSong("/musica/canción.mp3", 90));
    turn();
    EXPECT_EQ(header, place(1)) << points;
    EXPECT_EQ(top, place(2).top()) << points;
    machine.settle();
  }
  QApplication::setFont(before);
}

TEST_F(Content, TheStatusLineShowsTheNameOfASavedRingtoneWithoutMarksThatReorder) {
  load(90);
  machine.savePanelAnswer = platform::FileURL(
      "/tonos/\xe2\x80\xae"
      "3pm.m4r");
  model->export_();
  machine.sessions.back()->finish(platform::ExportStatus::completed);
  machine.settle();
  EXPECT_EQ(statusLine().toStdString(),
            "Tono guardado: \xef\xbf\xbd"
            "3pm.m4r");
}

TEST_F(Content, TheMinimumIs780By580) {
  EXPECT_EQ(view.minimumSizeHint(), QSize(780, 580));
  load(90);
  turn();
  EXPECT_EQ(view.minimumSizeHint(), QSize(780, 580)) << "with both screens, in the usual font";
}

TEST_F(Content, ThePaletteIsFollowedWhileRunning) {
  const auto before = QApplication::palette();
  QPalette dark = before;
  dark.setColor(QPalette::Window, Qt::black);
  dark.setColor(QPalette::WindowText, Qt::white);
  dark.setColor(QPalette::Base, Qt::black);
  QApplication::setPalette(dark);
  turn();
  EXPECT_LT(view.grab().toImage().pixelColor(5, 1).lightness(), 30);
  QApplication::setPalette(before);
}

TEST_F(Content, TheFontIsFollowedWhileRunningAndNothingOverlaps) {
  load(90);
  turn();
  const auto before = QApplication::font();
  auto doubled = before;
  doubled.setPointSizeF(2 * before.pointSizeF());
  QApplication::setFont(doubled);
  turn();
  view.resize(view.minimumSizeHint());
  turn();
  std::vector<QRect> places;
  for (auto* found : view.findChildren<QLabel*>()) {
    if (found->isVisible() && !found->text().isEmpty()) {
      places.push_back(placeIn(view, found));
      EXPECT_GE(found->height(), found->fontMetrics().ascent()) << found->text().toStdString();
    }
  }
  for (std::size_t i = 0; i < places.size(); ++i) {
    EXPECT_TRUE(view.rect().contains(places[i]));
    for (std::size_t j = 0; j < i; ++j) EXPECT_FALSE(places[i].intersects(places[j]));
  }
  QApplication::setFont(before);
}

}  // namespace
}  // namespace quibel
