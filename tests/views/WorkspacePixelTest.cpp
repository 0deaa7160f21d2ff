#include <QApplication>

#include "tests/views/EditorFixture.h"
#include "tests/views/Find.h"
#include "tests/views/Pixels.h"
#include "views/HandleView.h"
#include "views/Motion.h"
#include "views/TextLabel.h"
#include "views/WaveformSelectionView.h"
#include "views/WorkspaceScreen.h"

namespace quibel {
namespace {

/// What the workspace paints, in both schemes and at every usual ratio. The song's
/// envelope is ten full values, in columns 68 points wide with lines of 42; the fragment
/// goes from the middle of the third line to that of the eighth.
class WorkspacePixels : public EditorFixture, public testing::WithParamInterface<Display> {
 protected:
  static constexpr double seconds = 25.6;
  static constexpr double column = 68;
  static constexpr double width = 680;
  static constexpr double mid = 110;

  void SetUp() override {
    setMotionReduced(true);  // nothing sweeps over a strip that is looked at
    screen.setPalette(GetParam().palette());
    screen.resize(724, screen.sizeHint().height());
    screen.show();
  }

  void TearDown() override { setMotionReduced(false); }

  void loadSelected() {
    load(seconds);
    model->startBinding().set(seconds / 4);
    model->endBinding().set(seconds * 3 / 4);
  }

  Picture picture() {
    screen.refresh();
    turn();
    return {screen, GetParam().ratio, ground};
  }

  QPointF inStrip(double x, double y) {
    return placeIn(screen, &screen.waveform()).topLeft() + QPointF(x, y);
  }

  /// Whether a button paints this symbol anywhere in its left half.
  bool carries(const char* title, Symbol symbol, const QColor& color) {
    auto* const found = button(screen, title);
    if (!found) return false;
    const Picture seen(*found, GetParam().ratio, panel);
    for (int side = 14; side <= 20; ++side) {
      for (int x = 4; x < found->width() / 2; ++x) {
        const QRect place(x, (found->height() - side) / 2, side, side);
        if (seen.shows(symbol, place, color)) return true;
      }
    }
    return false;
  }

  /// Expects a strip that shows the envelope.
  void expectWaveform() {
    EXPECT_ALIKE(picture().at(inStrip(column * 4.5, mid + 30)), colors.accent);
  }

  /// Expects the strip with the fragment and none of the envelope.
  void expectEmptyWaveform() {
    const auto seen = picture();
    EXPECT_ALIKE(seen.at(inStrip(column * 0.5, mid + 30)), background);
    EXPECT_ALIKE(seen.at(inStrip(column * 4.5, mid)), highlighted);
    EXPECT_ALIKE(seen.at(inStrip(column * 9.5, mid)), background);
  }

  QColor ground = Qt::magenta;  // shows how much of it the panel lets through
  Colors colors = GetParam().colors();
  QColor panel = blended(colors.controlBackground, 0.8, ground);
  QColor background =
      blended(Qt::black, 0.09, colors.stripGround.alpha() == 0 ? panel : colors.stripGround);
  QColor highlighted = blended(colors.accent, 0.17, background);
  QColor grey = blended(colors.secondary, 0.4, background);
  WorkspaceScreen screen{model};
};

INSTANTIATE_TEST_SUITE_P(Displays, WorkspacePixels, displays(), displayName);

TEST_P(WorkspacePixels, TheStripShowsTheSongsEnvelopeAndItsFragment) {
  loadSelected();
  const auto seen = picture();
  for (const int line : {0, 1, 8, 9}) {
    EXPECT_ALIKE(seen.at(inStrip(column * (line + 0.5), mid + 30)), grey) << line;
  }
  for (const int line : {3, 4, 5, 6}) {
    EXPECT_ALIKE(seen.at(inStrip(column * (line + 0.5), mid + 30)), colors.accent) << line;
  }
  EXPECT_ALIKE(seen.at(inStrip(column, mid)), background);
  EXPECT_ALIKE(seen.at(inStrip(column * 4, mid)), highlighted);
  EXPECT_ALIKE(seen.at(inStrip(column * 9, mid)), background);
}

TEST_P(WorkspacePixels, TheStripShowsBothHandles) {
  loadSelected();
  const auto seen = picture();
  EXPECT_ALIKE(seen.at(inStrip(width / 4, 20)), colors.green);
  EXPECT_ALIKE(seen.at(inStrip(width * 3 / 4, 20)), colors.orange);
}

TEST_P(WorkspacePixels, ThePlayheadIsWhereTheLoopPlays) {
  loadSelected();
  model->togglePreview();
  for (const double played : {5, 6}) {
    machine.players.back()->currentTime = seconds * played / 10;
    machine.timers.back()->fire();
    const auto seen = picture();
    const double x = column * played;
    EXPECT_ALIKE(seen.at(inStrip(x - 1.2, 20)), highlighted) << played;
    EXPECT_ALIKE(seen.at(inStrip(x + 1, 20)), Qt::white) << played;
    EXPECT_ALIKE(seen.at(inStrip(x + 3.5, 20)), highlighted) << played;
  }
}

TEST_P(WorkspacePixels, AfterALoadThePlayheadIsAtTheLeftEdge) {
  loadSelected();
  model->stopPreview();
  ASSERT_GT(model->playhead(), 0);
  load(seconds, "/musica/otra.mp3");
  // Out of the way: the start handle lies above the playhead.
  model->startBinding().set(-10);
  const auto seen = picture();
  EXPECT_ALIKE(seen.at(inStrip(1.5, mid + 40)), Qt::white);
  EXPECT_ALIKE(seen.at(inStrip(4, mid + 40)), highlighted);
}

TEST_P(WorkspacePixels, WhileAnotherSongLoadsTheWaveformIsEmpty) {
  loadSelected();
  expectWaveform();
  model->load(addSong("/musica/otra.mp3", seconds));
  expectEmptyWaveform();
}

TEST_P(WorkspacePixels, AfterAFailedLoadTheWaveformIsEmpty) {
  loadSelected();
  expectWaveform();
  model->load(platform::FileURL("/musica/rota.mp3"));
  machine.settle();
  expectEmptyWaveform();
}

TEST_P(WorkspacePixels, HandlesAtTheEdgesAreCutAtTheStripsRoundedBorder) {
  load(seconds);
  const auto seen = picture();
  EXPECT_ALIKE(seen.at(inStrip(5, mid + 12)), colors.green);
  EXPECT_ALIKE(seen.at(inStrip(width - 5, mid + 12)), colors.orange);
  for (const double x : {-3.0, 0.5, width - 1, width + 2}) {
    for (const double y : {0.5, 219.0}) EXPECT_ALIKE(seen.at(inStrip(x, y)), panel);
    EXPECT_EQ(qobject_cast<HandleView*>(screen.childAt(inStrip(x, mid).toPoint())) != nullptr,
              x > 0 && x < width)
        << x;
  }
}

TEST_P(WorkspacePixels, ThePanelIsTheControlBackgroundAtFourFifthsWithRoundCorners) {
  const auto seen = picture();
  EXPECT_ALIKE(seen.at({11, screen.height() / 2.0}), panel);
  EXPECT_ALIKE(seen.at({screen.width() / 2.0, 11}), panel);
  // On a line 45 degrees into the corner, the arc runs through 6.4 points.
  EXPECT_ALIKE(seen.at({4, 4}), ground);
  EXPECT_ALIKE(seen.at({9, 9}), panel);
}

TEST_P(WorkspacePixels, EveryTextIsPainted) {
  loadSelected();
  const auto seen = picture();
  for (const auto* text : screen.findChildren<TextLabel*>()) {
    EXPECT_GT(distance(seen.inkIn(placeIn(screen, text)), panel), 60) << text->text().toStdString();
  }
}

TEST_P(WorkspacePixels, ANoteInTheAccentColourStandsBeforeTheName) {
  loadSelected();
  const auto seen = picture();
  const auto name = placeIn(screen, label(screen, "canción.mp3"));
  auto* const note = symbolView(screen);
  ASSERT_NE(note, nullptr);
  const auto place = placeIn(screen, note);
  EXPECT_EQ(place.left(), 22);
  EXPECT_LT(place.right(), name.left());
  EXPECT_NEAR(place.center().y(), name.center().y(), 1);
  EXPECT_TRUE(seen.shows(Symbol::musicNote, place, colors.accent));
}

TEST_P(WorkspacePixels, TheButtonsCarryTheirSymbolsBeforeTheirTitles) {
  loadSelected();
  screen.refresh();
  EXPECT_TRUE(carries("Escuchar en bucle", Symbol::repeat, colors.text));
  EXPECT_TRUE(carries("Crear tono .m4r…", Symbol::squareAndArrowDown, colors.onAccentFill));
  model->togglePreview();
  screen.refresh();
  EXPECT_TRUE(carries("Detener", Symbol::stopFill, colors.text));
}

}  // namespace
}  // namespace quibel
