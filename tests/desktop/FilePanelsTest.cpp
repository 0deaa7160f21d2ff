#include <QAbstractButton>
#include <QApplication>
#include <QDBusConnection>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>
#include <algorithm>
#include <filesystem>
#include <functional>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "desktop/FilePanels.h"
#include "tests/desktop/TemporaryFolder.h"
#include "tests/support/WithoutRights.h"

namespace quibel::desktop {
namespace {

using platform::ContentType;
using platform::FileURL;

/// Answers one dialog after the other, as each becomes the active one.
class Person {
 public:
  using Answer = std::function<void(QDialog&)>;

  explicit Person(std::vector<Answer> answers) : answers_(std::move(answers)) {
    QObject::connect(&timer_, &QTimer::timeout, [this] { look(); });
    timer_.start(1);
  }
  ~Person() { EXPECT_EQ(next_, answers_.size()) << "not every dialog came"; }
  Person(const Person&) = delete;
  Person& operator=(const Person&) = delete;

 private:
  void look() {
    auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (dialog == nullptr || !dialog->isVisible()) return;
    if (std::ranges::find(answering_, dialog) != answering_.end()) return;
    if (next_ == answers_.size()) {
      ADD_FAILURE() << "an unexpected dialog";
      return dialog->reject();
    }
    // Not from the timer itself, which stands still while it is answered: the
    // next dialog may come before this one's answer returns.
    answering_.push_back(dialog);
    QTimer::singleShot(0, dialog, [this, dialog] {
      answers_[next_++](*dialog);
      std::erase(answering_, dialog);
    });
  }

  QTimer timer_;
  std::vector<Answer> answers_;
  std::size_t next_ = 0;
  std::vector<QDialog*> answering_;
};

void type(QDialog& dialog, const QString& name) {
  dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(name);
}

struct FilePanelsTest : testing::Test {
  // Without a bus there is no portal.
  FilePanels panels{QDBusConnection(QStringLiteral("none"))};
  TemporaryFolder folder;
  const platform::OpenPanel open{"Selecciona una canción", {ContentType::audio()}, false};
  const platform::SavePanel save{"Guardar tono para iPhone", "Mi canción.m4r", {{"m4r"}}};

  /// Goes to the folder and accepts that name in it.
  Person::Answer accept(const QString& name) const {
    return [this, name](QDialog& dialog) {
      dynamic_cast<QFileDialog&>(dialog).setDirectory(
          QString::fromStdString(folder.path().string()));
      type(dialog, name);
      dialog.accept();
    };
  }

  static Person::Answer press(QMessageBox::StandardButton button) {
    return
        [button](QDialog& dialog) { dynamic_cast<QMessageBox&>(dialog).button(button)->click(); };
  }

  static void cancel(QDialog& dialog) { dialog.reject(); }
};

TEST_F(FilePanelsTest, AnOpenPanelHasItsTitleAndTakesOneExistingFile) {
  const auto song = folder.write("Mi canción.mp3", "");
  const Person person({[&](QDialog& dialog) {
    const auto& panel = dynamic_cast<QFileDialog&>(dialog);
    EXPECT_EQ(panel.windowTitle(), QStringLiteral("Selecciona una canción"));
    EXPECT_EQ(panel.fileMode(), QFileDialog::ExistingFile);
    EXPECT_EQ(panel.acceptMode(), QFileDialog::AcceptOpen);
    EXPECT_TRUE(panel.nameFilters().join(QString()).startsWith(QStringLiteral("Audio (")));
    accept(QStringLiteral("Mi canción.mp3"))(dialog);
  }});
  EXPECT_EQ(panels.runModal(open), song);
}

TEST_F(FilePanelsTest, ACancelledPanelChoosesNothing) {
  const Person person({cancel, cancel});
  EXPECT_EQ(panels.runModal(open), std::nullopt);
  EXPECT_EQ(panels.runModal(save), std::nullopt);
}

TEST_F(FilePanelsTest, ASavePanelProposesItsName) {
  const Person person({[&](QDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Guardar tono para iPhone"));
    EXPECT_EQ(dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text(),
              QStringLiteral("Mi canción.m4r"));
    cancel(dialog);
  }});
  panels.runModal(save);
}

TEST_F(FilePanelsTest, ANameThatEndsOtherwiseGetsTheRingtonesExtension) {
  const Person person({accept(QStringLiteral("tono")), accept(QStringLiteral("tono.m4r")),
                       accept(QStringLiteral(".tono")), accept(QStringLiteral("tono.m4a")),
                       accept(QStringLiteral("TONO.M4R"))});
  EXPECT_EQ(panels.runModal(save), folder.url("tono.m4r"));
  EXPECT_EQ(panels.runModal(save), folder.url("tono.m4r"));
  EXPECT_EQ(panels.runModal(save), folder.url(".tono.m4r"));
  EXPECT_EQ(panels.runModal(save), folder.url("tono.m4a.m4r"));
  EXPECT_EQ(panels.runModal(save), folder.url("TONO.M4R"));
}

/// Where panels open, for a person whose home holds a music folder.
struct PanelFolderTest : FilePanelsTest {
  void SetUp() override {
    std::filesystem::create_directories(music);
    openToAll(folder.path());
    openToAll(home);
    openToAll(music);
    qputenv("HOME", home.c_str());
    qputenv("XDG_CONFIG_HOME", (home / ".config").c_str());
  }
  void TearDown() override {
    qputenv("HOME", homeBefore);
    configBefore.isNull() ? qunsetenv("XDG_CONFIG_HOME") : qputenv("XDG_CONFIG_HOME", configBefore);
  }

  static void openToAll(const std::filesystem::path& path) {
    std::filesystem::permissions(path, std::filesystem::perms::all);
  }

  /// Sees where the panel opens, and leaves it.
  static Person::Answer look(std::filesystem::path& there) {
    return [&there](QDialog& dialog) {
      there = dynamic_cast<QFileDialog&>(dialog).directory().path().toStdString();
      dialog.reject();
    };
  }

  std::filesystem::path opensFrom() {
    std::filesystem::path there;
    const Person person({look(there)});
    panels.runModal(open);
    return there;
  }

  std::filesystem::path savesIn() {
    std::filesystem::path there;
    const Person person({look(there)});
    panels.runModal(save);
    return there;
  }

  /// Has a song chosen in the test's own folder.
  void choose() {
    folder.write("canción.mp3", "");
    const Person person({accept(QStringLiteral("canción.mp3"))});
    ASSERT_TRUE(panels.runModal(open));
  }

  const QByteArray homeBefore = qgetenv("HOME");
  const QByteArray configBefore = qgetenv("XDG_CONFIG_HOME");
  const std::filesystem::path home = folder.path() / "home";
  const std::filesystem::path music = home / "Music";
};

TEST_F(PanelFolderTest, TheFirstPanelOpensInTheMusicFolderAndWithoutOneAtHome) {
  EXPECT_EQ(opensFrom(), music);
  EXPECT_EQ(savesIn(), music);
  std::filesystem::remove(music);
  EXPECT_EQ(opensFrom(), home);
}

TEST_F(PanelFolderTest, QtsOwnPanelIsLargeAndHasThePersonsFoldersAtItsSide) {
  const auto downloads = home / "Downloads";
  std::filesystem::create_directory(downloads);
  const auto url = [](const std::filesystem::path& path) {
    return QUrl::fromLocalFile(QString::fromStdString(path.string()));
  };
  const auto looks = [&](QDialog& dialog) {
    EXPECT_EQ(dynamic_cast<QFileDialog&>(dialog).sidebarUrls(),
              (QList<QUrl>{url(home), url(music), url(downloads), QUrl(QStringLiteral("file:"))}));
    EXPECT_GE(dialog.width(), 780);
    EXPECT_GE(dialog.height(), 500);
    dialog.reject();
  };
  const Person person({looks, looks});
  panels.runModal(open);
  panels.runModal(save);
}

TEST_F(PanelFolderTest, ALaterPanelOpensWhereTheLastWasConfirmed) {
  choose();
  EXPECT_EQ(opensFrom(), folder.path());
  EXPECT_EQ(savesIn(), folder.path());
}

TEST_F(PanelFolderTest, TheWorkingFolderStaysWhatItWas) {
  const auto before = std::filesystem::current_path();
  choose();
  EXPECT_EQ(std::filesystem::current_path(), before);
}

TEST_F(PanelFolderTest, ASavePanelProposesAFolderThatCanBeWrittenTo) {
  choose();
  std::filesystem::permissions(folder.path(), std::filesystem::perms(0555));
  {
    const test::WithoutRights ordinary;
    EXPECT_EQ(opensFrom(), folder.path());
    EXPECT_EQ(savesIn(), music);
  }
  std::filesystem::permissions(music, std::filesystem::perms(0555));
  {
    const test::WithoutRights ordinary;
    EXPECT_EQ(savesIn(), home);
  }
}

TEST_F(PanelFolderTest, AFolderThatHasGoneIsNotProposed) {
  {
    const TemporaryFolder stick;
    stick.write("canción.mp3", "");
    const Person person({[&](QDialog& dialog) {
      dynamic_cast<QFileDialog&>(dialog).setDirectory(
          QString::fromStdString(stick.path().string()));
      type(dialog, QStringLiteral("canción.mp3"));
      dialog.accept();
    }});
    ASSERT_TRUE(panels.runModal(open));
  }
  EXPECT_EQ(opensFrom(), music);
  EXPECT_EQ(savesIn(), music);
}

TEST_F(FilePanelsTest, AnExistingFileIsChosenOnlyOnceThePersonAgrees) {
  folder.write("tono.m4r", "viejo");
  const Person person({accept(QStringLiteral("tono.m4r")), press(QMessageBox::No), cancel,
                       accept(QStringLiteral("tono.m4r")), press(QMessageBox::Yes)});
  EXPECT_EQ(panels.runModal(save), std::nullopt);
  EXPECT_EQ(panels.runModal(save), folder.url("tono.m4r"));
}

TEST_F(FilePanelsTest, AnExistingFileIsAskedForUnderTheNameItGets) {
  folder.write("tono.m4r", "viejo");
  folder.write(".tono.m4r", "viejo");
  folder.write("vol. 2.m4r", "viejo");
  const Person person({accept(QStringLiteral("tono")), press(QMessageBox::No), cancel,
                       accept(QStringLiteral("vol. 2")), press(QMessageBox::No), cancel,
                       accept(QStringLiteral(".tono")), press(QMessageBox::No), cancel,
                       accept(QStringLiteral(".tono")), press(QMessageBox::Yes)});
  EXPECT_EQ(panels.runModal(save), std::nullopt);
  EXPECT_EQ(panels.runModal(save), std::nullopt);
  EXPECT_EQ(panels.runModal(save), std::nullopt);
  EXPECT_EQ(panels.runModal(save), folder.url(".tono.m4r"));
}

TEST_F(FilePanelsTest, AnExistingFileWhoseNameIsNoUtf8IsAskedFor) {
  const auto old = folder.write("caf\xE8.m4r", "viejo");
  const auto asItShows = QStringLiteral("caf%1.m4r").arg(QChar(QChar::ReplacementCharacter));
  const Person person({accept(asItShows), press(QMessageBox::No), cancel, accept(asItShows),
                       press(QMessageBox::Yes)});
  EXPECT_EQ(panels.runModal(save), std::nullopt);
  EXPECT_EQ(panels.runModal(save), old);
}

TEST(WithExtension, IsAddedUnlessTheNameEndsInIt) {
  EXPECT_EQ(withExtension(FileURL("/x/tono"), "m4r"), FileURL("/x/tono.m4r"));
  EXPECT_EQ(withExtension(FileURL("/x/tono.m4r"), "m4r"), FileURL("/x/tono.m4r"));
  EXPECT_EQ(withExtension(FileURL("/x/a.b"), "m4r"), FileURL("/x/a.b.m4r"));
  EXPECT_EQ(withExtension(FileURL("/x/Mi canción vol. 2"), "m4r"),
            FileURL("/x/Mi canción vol. 2.m4r"));
  EXPECT_EQ(withExtension(FileURL("/x/tono.m4a"), "m4r"), FileURL("/x/tono.m4a.m4r"));
  EXPECT_EQ(withExtension(FileURL("/x/TONO.M4R"), "m4r"), FileURL("/x/TONO.M4R"));
  EXPECT_EQ(withExtension(FileURL("/x/.tono"), "m4r"), FileURL("/x/.tono.m4r"));
  EXPECT_EQ(withExtension(FileURL("/x/tono "), "m4r"), FileURL("/x/tono .m4r"));
  EXPECT_EQ(withExtension(FileURL("/x/\xFF"), "m4r"), FileURL("/x/\xFF.m4r"));
  EXPECT_EQ(withExtension(FileURL("/x.y/tono"), ""), FileURL("/x.y/tono"));
}

}  // namespace
}  // namespace quibel::desktop
