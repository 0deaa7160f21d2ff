#include <QAccessible>
#include <algorithm>

#include "model/Format.h"
#include "tests/views/EditorFixture.h"
#include "tests/views/Find.h"
#include "views/ActionButton.h"
#include "views/ReadOut.h"
#include "views/WaveformSelectionView.h"
#include "views/WorkspaceScreen.h"

namespace quibel {
namespace {

class Workspace : public EditorFixture {
 protected:
  void SetUp() override {
    screen.resize(724, screen.sizeHint().height());
    screen.show();
  }

  /// The times of the three read-outs, as shown.
  QStringList readOuts() {
    screen.refresh();
    QStringList times;
    auto columns = screen.findChildren<ReadOut*>();
    std::ranges::sort(columns, {}, [](const QWidget* w) { return w->x(); });
    for (const auto* column : columns) times.append(column->findChildren<QLabel*>().at(0)->text());
    return times;
  }

  /// The time beside the file's name.
  std::string lengthBeside(const char* name) {
    screen.refresh();
    turn();
    const auto* const shown = label(screen, name);
    if (!shown) return "no such name";
    for (const auto* beside : shown->parentWidget()->findChildren<QLabel*>()) {
      if (beside != shown) return beside->text().toStdString();
    }
    return "no length";
  }

  QAbstractButton* exportButton() { return button(screen, "Crear tono .m4r…"); }

  WorkspaceScreen screen{model};
};

QStringList list(std::initializer_list<const char*> items) {
  QStringList result;
  for (const char* item : items) result.append(QString::fromUtf8(item));
  return result;
}

TEST_F(Workspace, WhileTheFirstSongLoadsItShowsTheNewNameAndNoTimes) {
  model->load(addSong("/musica/Mi canción.mp3", 90));
  EXPECT_EQ(readOuts(), list({"00:00.0", "00:00.0", "00:00.0"}));
  EXPECT_EQ(lengthBeside("Mi canción.mp3"), "00:00.0");
  EXPECT_FALSE(exportButton()->isEnabled());
  machine.settle();
  screen.refresh();
  EXPECT_TRUE(exportButton()->isEnabled());
  EXPECT_EQ(lengthBeside("Mi canción.mp3"), "01:30.0");
}

TEST_F(Workspace, AnExportButtonThatIsDisabledLeavesItsFocusToItsNeighbour) {
  load(25);
  screen.refresh();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&screen));
  exportButton()->setFocus();
  ASSERT_TRUE(exportButton()->hasFocus());

  model->load(addSong("/musica/otra.mp3", 90));
  screen.refresh();

  EXPECT_TRUE(button(screen, "Escuchar en bucle")->hasFocus());
}

TEST_F(Workspace, WhileAnotherSongLoadsThePreviousTimesStay) {
  load(25);
  model->load(addSong("/musica/otra.mp3", 90));
  EXPECT_EQ(readOuts(), list({"00:00.0", "00:25.0", "00:25.0"}));
  EXPECT_EQ(lengthBeside("otra.mp3"), "00:25.0");
}

TEST_F(Workspace, AfterAFailedLoadTheNameAndThePreviousTimesStay) {
  load(25);
  model->load(platform::FileURL("/musica/rota.mp3"));
  machine.settle();
  EXPECT_EQ(readOuts(), list({"00:00.0", "00:25.0", "00:25.0"}));
  EXPECT_EQ(lengthBeside("rota.mp3"), "00:25.0");
  EXPECT_TRUE(exportButton()->isEnabled());
}

TEST_F(Workspace, TheDurationReadOutIsTheDifferenceOfTheHandlesAtEveryMoment) {
  load(180);
  for (const auto& [start, end, shown] :
       std::vector<std::tuple<double, double, const char*>>{{0, 40, "00:40.0"},
                                                            {12.5, 20, "00:07.5"},
                                                            {-0.2, 0.3, "00:00.5"},
                                                            {10, 90, "01:20.0"},
                                                            {5, 3.5, "00:-1.5"}}) {
    model->startBinding().set(start);
    model->endBinding().set(end);
    EXPECT_EQ(readOuts().at(1).toStdString(), shown);
  }
}

TEST_F(Workspace, TheLoopButtonFollowsTheModelsPlaying) {
  load(180);
  screen.refresh();
  auto* const loop = static_cast<ActionButton*>(button(screen, "Escuchar en bucle"));
  ASSERT_NE(loop, nullptr);
  EXPECT_EQ(loop->symbol(), Symbol::repeat);

  loop->click();
  screen.refresh();
  EXPECT_TRUE(model->isPlaying());
  EXPECT_EQ(loop->text().toStdString(), "Detener");
  EXPECT_EQ(loop->symbol(), Symbol::stopFill);

  model->load(addSong("/musica/otra.mp3", 90));  // stops it from inside
  screen.refresh();
  EXPECT_EQ(loop->text().toStdString(), "Escuchar en bucle");
  EXPECT_EQ(loop->symbol(), Symbol::repeat);
}

TEST_F(Workspace, TheLoopButtonIsNeverDisabled) {
  model->load(addSong("/musica/a.mp3", 90));
  screen.refresh();
  EXPECT_TRUE(button(screen, "Escuchar en bucle")->isEnabled());
}

TEST_F(Workspace, TheExportButtonExportsAndIsDisabledMeanwhile) {
  load(180);
  screen.refresh();
  machine.savePanelAnswer = platform::FileURL("/tonos/a.m4r");
  exportButton()->click();
  screen.refresh();
  EXPECT_TRUE(model->isExporting());
  EXPECT_FALSE(exportButton()->isEnabled());
  machine.sessions.back()->abandon();
}

TEST_F(Workspace, SaysItsTextsToTheLetter) {
  load(180, "/musica/canción.mp3");
  screen.refresh();
  for (const char* text : {"canción.mp3", "03:00.0", "INICIO", "DURACIÓN", "FINAL",
                           "Máximo compatible: 40 s", "00:40.0"}) {
    EXPECT_NE(label(screen, text), nullptr) << text;
  }
}

TEST_F(Workspace, TheReminderDoesNotChangeWithTheSelection) {
  load(180);
  model->endBinding().set(170);
  screen.refresh();
  EXPECT_NE(label(screen, "Máximo compatible: 40 s"), nullptr);
}

TEST_F(Workspace, TheRowsLieEighteenPointsApartIn22PointsOfPadding) {
  load(180);
  screen.refresh();
  turn();
  std::vector<QRect> rows;
  for (auto* child : screen.findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
    rows.push_back(child->geometry());
  }
  std::ranges::sort(rows, {}, &QRect::top);
  ASSERT_EQ(rows.size(), 4U);
  EXPECT_EQ(rows.front().top(), 22);
  EXPECT_EQ(screen.height() - 1 - rows.back().bottom(), 22);
  for (std::size_t i = 1; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].top() - (rows[i - 1].bottom() + 1), 18);
  }
  EXPECT_EQ(rows[1], QRect(22, rows[1].top(), 724 - 44, 220)) << "the waveform";
  EXPECT_EQ(rows[3].width(), 724 - 44);
}

TEST_F(Workspace, TheReadOutsStandSixtyPointsApartAndTheOuterOnesAtLeast110Wide) {
  load(180);
  screen.refresh();
  turn();
  std::vector<QRect> columns;
  for (auto* column : screen.findChildren<ReadOut*>()) columns.push_back(column->geometry());
  std::ranges::sort(columns, {}, &QRect::left);
  ASSERT_EQ(columns.size(), 3U);
  EXPECT_EQ(columns[1].left() - (columns[0].right() + 1), 60);
  EXPECT_EQ(columns[2].left() - (columns[1].right() + 1), 60);
  EXPECT_GE(columns[0].width(), 110);
  EXPECT_GE(columns[2].width(), 110);
}

TEST_F(Workspace, TheButtonsStandAtTheRowsEnds) {
  turn();
  EXPECT_EQ(placeIn(screen, button(screen, "Escuchar en bucle")).left(), 22);
  EXPECT_EQ(placeIn(screen, exportButton()).right(), 724 - 22 - 1);
}

TEST_F(Workspace, ALongNameIsElidedAndWholeInTheTooltipAndForAssistiveTechnology) {
  const std::string name = std::string(300, 'a') + " <b>x&amp;y.mp3";
  load(180, "/musica/" + name);
  screen.refresh();
  turn();
  EXPECT_EQ(screen.minimumSizeHint().width(),
            WorkspaceScreen(std::make_shared<AudioEditorModel>(machine)).minimumSizeHint().width());
  auto* const shown = label(screen, name.c_str());
  ASSERT_NE(shown, nullptr);
  EXPECT_EQ(shown->textFormat(), Qt::PlainText);
  EXPECT_LE(placeIn(screen, shown).right(), 724 - 22);
  EXPECT_TRUE(shown->toolTip().contains(QStringLiteral("&lt;b&gt;x&amp;amp;y.mp3")));
  auto* const accessible = QAccessible::queryAccessibleInterface(shown);
  EXPECT_EQ(accessible->text(QAccessible::Name).toStdString(), name);
  EXPECT_EQ(accessible->text(QAccessible::Description).toStdString(), name);
}

TEST_F(Workspace, TheMonospacedDigitsKeepTheTimesWidth) {
  const QFont uneven(QStringLiteral("Quicksand"));
  const QFontMetrics metrics(uneven);
  ASSERT_NE(metrics.horizontalAdvance(u'0'), metrics.horizontalAdvance(u'1'))
      << "a font whose digits are all as wide shows nothing";
  load(180);
  const auto before = QApplication::font();
  QApplication::setFont(uneven);
  WorkspaceScreen shown(model);
  std::set<int> widths;
  for (const double end : {11.1, 20.8, 34.5, 37.9}) {
    model->endBinding().set(end);
    shown.refresh();
    widths.insert(label(shown, format(end).c_str())->sizeHint().width());
  }
  QApplication::setFont(before);
  EXPECT_EQ(widths.size(), 1U);
}

}  // namespace
}  // namespace quibel
