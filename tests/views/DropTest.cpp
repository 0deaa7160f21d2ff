#include <QDragEnterEvent>
#include <QMimeData>

#include "tests/views/ContentFixture.h"
#include "tests/views/Pixels.h"
#include "views/Theme.h"
#include "views/WaveformSelectionView.h"

namespace quibel {
namespace {

/// What a drag source offers, as its text/uri-list.
class Drop : public ContentFixture {
 protected:
  static std::unique_ptr<QMimeData> uris(const QByteArray& list) {
    auto data = std::make_unique<QMimeData>();
    data->setData(QStringLiteral("text/uri-list"), list);
    return data;
  }

  bool enter(const QMimeData& data) {
    QDragEnterEvent event(QPoint(5, 5), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton,
                          Qt::NoModifier);
    event.ignore();
    QCoreApplication::sendEvent(&view, &event);
    return event.isAccepted();
  }

  /// Enters and drops, as every drag does.
  Qt::DropAction drop(const QMimeData& data) {
    enter(data);
    QDropEvent event(QPointF(5, 5), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton,
                     Qt::NoModifier);
    event.ignore();
    QCoreApplication::sendEvent(&view, &event);
    return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
  }

  void leave() {
    QDragLeaveEvent event;
    QCoreApplication::sendEvent(&view, &event);
  }

  std::string loaded() {
    turn();
    return model->audioURL() ? model->audioURL()->path().string() : "";
  }

  bool isHighlighted() {
    auto* const welcome = view.findChild<WelcomeScreen*>();
    const auto image = welcome->grab().toImage();
    const auto accent = colors(view.palette()).accent;
    int found = 0;
    for (int x = 100; x < 300; ++x) found += alike(image.pixelColor(x, 1), accent);
    return found > 50;
  }
};

TEST_F(Drop, AFileIsLoadedOnceTheDropHasReturned) {
  EXPECT_EQ(drop(*uris("file:///musica/a.mp3\r\n")), Qt::CopyAction);
  EXPECT_FALSE(model->audioURL()) << "not from inside the drop";
  EXPECT_EQ(loaded(), "/musica/a.mp3");
}

TEST_F(Drop, OfTwoFilesOnlyTheFirstIsLoaded) {
  drop(*uris("file:///musica/a.mp3\r\nfile:///musica/b.mp3\r\n"));
  EXPECT_EQ(loaded(), "/musica/a.mp3");
  EXPECT_EQ(machine.background.size(), 1U);
  EXPECT_TRUE(model->status().empty());
  EXPECT_FALSE(model->showAlert());
}

TEST_F(Drop, OfSeveralItemsOnlyTheFirstCountsEvenWhereItIsNoFile) {
  const auto items = uris("https://example.org/a.mp3\r\nfile:///musica/b.mp3\r\n");
  EXPECT_EQ(drop(*items), Qt::CopyAction);
  EXPECT_EQ(loaded(), "");
}

TEST_F(Drop, AFileThatIsNoAudioIsAcceptedAndEndsInTheAlertOnTheWorkspace) {
  EXPECT_EQ(drop(*uris("file:///notas.txt\r\n")), Qt::CopyAction);
  EXPECT_EQ(loaded(), "/notas.txt");
  machine.settle();
  EXPECT_NE(alert(), nullptr);
  EXPECT_TRUE(showsWorkspace());
}

TEST_F(Drop, AFileReplacesTheLoadedSong) {
  load(90, "/a.mp3");
  addSong("/b.mp3", 30);
  drop(*uris("file:///b.mp3\r\n"));
  EXPECT_EQ(loaded(), "/b.mp3");
  machine.settle();
  EXPECT_NEAR(model->duration(), 30, 1e-6);
}

TEST_F(Drop, RightAfterADropTheWaveformIsEmptyAndThePreviousLengthStands) {
  load(25.6, "/a.mp3");  // ten full values
  turn();
  const auto showsLines = [this] {
    const Picture seen(*view.findChild<WaveformSelectionView*>(), 1, Qt::white);
    const double column = seen.image().width() / 10.0;
    return distance(seen.at({column * 4.5, 140}), seen.at({column * 5, 140})) > 60;
  };
  EXPECT_TRUE(showsLines());
  addSong("/b.mp3", 90);
  drop(*uris("file:///b.mp3\r\n"));
  EXPECT_EQ(loaded(), "/b.mp3");
  turn();
  EXPECT_FALSE(showsLines());
  const auto* const name = label(view, "b.mp3");
  ASSERT_NE(name, nullptr);
  EXPECT_NE(label(*name->parentWidget(), "00:25.6"), nullptr);
}

TEST_F(Drop, AFileDroppedDuringAnExportStartsALoadAtTheSameTime) {
  load(90, "/a.mp3");
  startExport();
  addSong("/b.mp3", 30);
  drop(*uris("file:///b.mp3\r\n"));
  EXPECT_EQ(loaded(), "/b.mp3");
  EXPECT_TRUE(model->isLoading());
  EXPECT_TRUE(model->isExporting());
}

TEST_F(Drop, TextWebAddressesAndNothingAreRefused) {
  QMimeData text;
  text.setText(QStringLiteral("/musica/a.mp3"));
  EXPECT_FALSE(enter(text));
  EXPECT_EQ(drop(text), Qt::IgnoreAction);
  EXPECT_FALSE(enter(*uris("https://example.org/a.mp3\r\n")));
  EXPECT_EQ(drop(*uris("https://example.org/a.mp3\r\n")), Qt::IgnoreAction);
  EXPECT_FALSE(enter(*uris("")));
  EXPECT_FALSE(enter(QMimeData()));
  EXPECT_EQ(loaded(), "");
  EXPECT_TRUE(model->status().empty());
  EXPECT_FALSE(model->showAlert());
}

TEST_F(Drop, EveryByteOfANameSurvives) {
  drop(*uris("file:///m/a%20%25%0Ac%C3%B3n%FF.mp3\r\n"));
  EXPECT_EQ(loaded(), "/m/a %\nc\xc3\xb3n\xff.mp3");
}

TEST_F(Drop, TheHighlightFollowsADragOverTheWindow) {
  EXPECT_FALSE(isHighlighted());
  EXPECT_TRUE(enter(*uris("file:///a.mp3\r\n")));
  EXPECT_TRUE(isHighlighted());
  leave();
  EXPECT_FALSE(isHighlighted());
  enter(*uris("file:///a.mp3\r\n"));
  drop(*uris("file:///a.mp3\r\n"));
  EXPECT_FALSE(isHighlighted());
}

TEST_F(Drop, TheHighlightDoesNotShowForWhatIsRefused) {
  enter(*uris("https://example.org/a.mp3\r\n"));
  EXPECT_FALSE(isHighlighted());
}

}  // namespace
}  // namespace quibel
