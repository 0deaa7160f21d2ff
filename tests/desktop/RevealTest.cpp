#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QDesktopServices>
#include <QUrl>
#include <chrono>

#include <gtest/gtest.h>

#include "desktop/Reveal.h"
#include "desktop/Urls.h"
#include "tests/desktop/Application.h"
#include "tests/desktop/PrivateBus.h"

namespace quibel::desktop {
namespace {

/// A file manager that notes what it is asked to show, and answers as it is told.
class FakeFileManager final : public QDBusVirtualObject {
 public:
  enum class Answer { done, error, none };

  FakeFileManager(const QString& bus, Answer answer)
      : answer_(answer),
        connection_(QDBusConnection::connectToBus(bus, QStringLiteral("manager"))) {
    connection_.registerVirtualObject(QStringLiteral("/org/freedesktop/FileManager1"), this);
    connection_.registerService(QStringLiteral("org.freedesktop.FileManager1"));
  }
  ~FakeFileManager() override {
    connection_.unregisterService(QStringLiteral("org.freedesktop.FileManager1"));
    connection_.unregisterObject(QStringLiteral("/org/freedesktop/FileManager1"));
    QDBusConnection::disconnectFromBus(QStringLiteral("manager"));
  }

  QString introspect(const QString&) const override { return {}; }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    asked.append(message);
    if (answer_ == Answer::done) connection.send(message.createReply());
    if (answer_ == Answer::error)
      connection.send(
          message.createErrorReply(QStringLiteral("org.test.No"), QStringLiteral("no")));
    return true;
  }

  QList<QDBusMessage> asked;

 private:
  const Answer answer_;
  QDBusConnection connection_;
};

/// Stands in for the desktop's opening of a folder.
class FolderOpener final : public QObject {
  Q_OBJECT
 public:
  FolderOpener() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
  ~FolderOpener() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

  QList<QUrl> opened;

 public Q_SLOTS:
  void open(const QUrl& url) { opened.append(url); }
};

class Reveal : public testing::Test {
 protected:
  void SetUp() override {
    if (!bus_.isThere()) GTEST_SKIP() << "no D-Bus daemon is installed";
    ASSERT_TRUE(QDBusConnection::sessionBus().isConnected());
  }

  static constexpr std::chrono::milliseconds patience{300};
  const platform::FileURL file_{"/música nueva/a\xFF b%.m4r"};
  PrivateBus& bus_ = PrivateBus::ofTheProcess();
  FolderOpener opener_;
};

TEST_F(Reveal, AsksTheFileManagerToSelectTheFile) {
  const FakeFileManager manager(bus_.address(), FakeFileManager::Answer::done);
  reveal({file_}, patience);
  ASSERT_TRUE(eventually([&] { return !manager.asked.isEmpty(); }));
  const auto& message = manager.asked.front();
  EXPECT_EQ(message.interface(), QStringLiteral("org.freedesktop.FileManager1"));
  EXPECT_EQ(message.member(), QStringLiteral("ShowItems"));
  EXPECT_EQ(message.signature(), QStringLiteral("ass"));
  EXPECT_EQ(message.arguments().front().toStringList(),
            QStringList{QStringLiteral("file:///m%C3%BAsica%20nueva/a%FF%20b%25.m4r")});
}

TEST_F(Reveal, OpensNoFolderOnceTheFileManagerHasAnswered) {
  FakeFileManager manager(bus_.address(), FakeFileManager::Answer::done);
  reveal({file_}, patience);
  ASSERT_TRUE(eventually([&] { return !manager.asked.isEmpty(); }));
  // A second one that fails comes to its end after the first.
  reveal({platform::FileURL("/otra/b.m4r")}, patience);
  ASSERT_TRUE(eventually([&] { return manager.asked.size() == 2; }));
  for (int turn = 0; turn < 50; ++turn) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
  EXPECT_TRUE(opener_.opened.isEmpty());
}

TEST_F(Reveal, OpensTheFolderWhereThereIsNoFileManager) {
  reveal({file_}, patience);
  ASSERT_TRUE(eventually([&] { return !opener_.opened.isEmpty(); }));
  EXPECT_EQ(fileURL(opener_.opened.front()), platform::FileURL("/música nueva"));
}

TEST_F(Reveal, OpensTheFolderWhereTheFileManagerRefuses) {
  const FakeFileManager manager(bus_.address(), FakeFileManager::Answer::error);
  reveal({file_}, patience);
  ASSERT_TRUE(eventually([&] { return !opener_.opened.isEmpty(); }));
  EXPECT_EQ(manager.asked.size(), 1);
  EXPECT_EQ(opener_.opened.size(), 1);
}

TEST_F(Reveal, OpensTheFolderWhereTheFileManagerDoesNotAnswer) {
  const FakeFileManager manager(bus_.address(), FakeFileManager::Answer::none);
  reveal({file_}, patience);
  EXPECT_TRUE(opener_.opened.isEmpty()) << "without waiting for the answer";
  ASSERT_TRUE(eventually([&] { return !opener_.opened.isEmpty(); }));
  EXPECT_EQ(manager.asked.size(), 1);
}

TEST_F(Reveal, NothingToShowAsksNobody) {
  const FakeFileManager manager(bus_.address(), FakeFileManager::Answer::error);
  reveal({}, patience);
  reveal({file_}, patience);
  ASSERT_TRUE(eventually([&] { return !opener_.opened.isEmpty(); }));
  EXPECT_EQ(manager.asked.size(), 1);
}

}  // namespace
}  // namespace quibel::desktop

#include "RevealTest.moc"
